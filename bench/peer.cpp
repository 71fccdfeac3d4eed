/// @file
/// Pairs an operation with its opponent.

#include "peer.h"

namespace bench {

Benchmark pair(const Case& pairing, VexaSize size, std::vector<Shared> sources)
{
    if (sources.empty()) {
        int number = 1;
        for (const VexaType type : pairing.sources) sources.push_back(noise(type, size, number++));
    }
    const Shared result = blank(pairing.dst, size, 1);
    const Shared expected = blank(pairing.dst, size, 2);
    const Work vexa = [=, call = pairing.call] { (void)call(sources, *result); };
    const Peer peer = peerOf({pairing.opponent, sources, expected, pairing.parameters});
    if (pairing.tolerance >= 0) compare(vexa, peer.work, *result, *expected, pairing.tolerance, pairing.name);
    double bytes = bytesOf(pairing.dst, size);
    for (const VexaType type : pairing.sources) bytes += bytesOf(type, size);
    const VexaType type = pairing.sources.empty() ? pairing.dst : pairing.sources.front();
    return {pairing.name, type, size, bytes, vexa, peer.work, peer.name};
}

}  // namespace bench
