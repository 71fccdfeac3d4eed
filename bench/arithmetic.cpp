/// @file
/// Benchmarks of arithmetic and logic of images.

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace al = vexa::arithmeticLogical;

using Operation = VexaStatus (*)(const VexaImage&, const VexaImage&, VexaImage&, const VexaStream&);

struct Named {
    const char* name;
    Operation vexa;
};
const Named operations[] = {{"add", al::add},
                            {"subtract", al::subtract},
                            {"multiply", al::multiply},
                            {"divide", al::divide},
                            {"absDiff", al::absDiff}};

struct Types {
    VexaType src1;
    VexaType src2;
    VexaType dst;
};
const Types sameTypes[] = {{VEXA_8UC1, VEXA_8UC1, VEXA_8UC1},    {VEXA_8UC3, VEXA_8UC3, VEXA_8UC3},
                           {VEXA_16UC1, VEXA_16UC1, VEXA_16UC1}, {VEXA_16UC3, VEXA_16UC3, VEXA_16UC3},
                           {VEXA_32FC1, VEXA_32FC1, VEXA_32FC1}, {VEXA_32FC3, VEXA_32FC3, VEXA_32FC3}};
const Types mixedTypes[] = {{VEXA_8UC1, VEXA_8UC1, VEXA_16UC1},
                            {VEXA_8UC1, VEXA_8UC1, VEXA_32FC1},
                            {VEXA_8UC1, VEXA_16UC1, VEXA_16UC1},
                            {VEXA_8UC1, VEXA_32FC1, VEXA_32FC1},
                            {VEXA_16UC1, VEXA_32FC1, VEXA_32FC1}};

Benchmark make(const Named& named, const Types& types, VexaSize size, const std::string& name)
{
    const Shared a = noise(types.src1, size, 1);
    const Shared b = noise(types.src2, size, 2);
    const Shared result = blank(types.dst, size, 1);
    const Shared expected = blank(types.dst, size, 2);
    const Work vexa = [=, call = named.vexa] { (void)call(*a, *b, *result, VexaStream(false)); };
    const Peer peer = peerOf({named.name, {a, b}, expected});
    // A quotient over zero is infinite here and zero in the opponent.
    if (named.vexa != static_cast<Operation>(al::divide)) compare(vexa, peer.work, *result, *expected, 0, name);
    const double bytes = bytesOf(types.src1, size) + bytesOf(types.src2, size) + bytesOf(types.dst, size);
    return {name, types.src1, size, bytes, vexa, peer.work, peer.name};
}

Benchmark makeNot(VexaType type, VexaSize size)
{
    const Shared src = noise(type, size, 1);
    const Shared result = blank(type, size, 1);
    const Shared expected = blank(type, size, 2);
    const Work vexa = [=] { (void)al::NOT(*src, *result); };
    const Peer peer = peerOf({"NOT", {src}, expected});
    compare(vexa, peer.work, *result, *expected, 0, "NOT");
    return {"NOT", type, size, 2 * bytesOf(type, size), vexa, peer.work, peer.name};
}

}  // namespace

std::vector<Benchmark> arithmeticBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    for (const Named& named : operations)
        for (const Types& types : sameTypes) benchmarks.push_back(make(named, types, size, named.name));
    for (const Types& types : mixedTypes)
        benchmarks.push_back(
            make(operations[0], types, size, "add " + nameOf(types.src2) + " to " + nameOf(types.dst)));
    for (const VexaType type : {VEXA_8UC1, VEXA_8UC3, VEXA_16UC1, VEXA_16UC3})
        benchmarks.push_back(makeNot(type, size));
    return benchmarks;
}

}  // namespace bench
