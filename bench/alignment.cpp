/// @file
/// Benchmarks of image alignment and focus stacking.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <future>

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

/// Rows of a map one after the other.
using Map = std::array<double, 6>;

/// A picture with edges of some pixels' width, as steps of an alignment need them.
Shared blots(VexaSize size)
{
    const Shared picture = blank(VEXA_8UC1, size, 10);
    VexaImage smooth;
    (void)vexa::imageFiltering::imageFilter(*noise(VEXA_32FC1, size, 1), smooth,
                                            VexaSpecialFilters::gaussian({21, 21}, 4));
    constexpr float contrast = 8;
    (void)smooth.convertTo(*picture, VEXA_8UC1, contrast, 127.5F * (1 - contrast));
    return picture;
}

/// As many steps from one start, near the true map. The opponent weighs pixels in steps of 1/32.
Benchmark alignment(VexaSize size)
{
    constexpr int steps = 5;
    const Map truth = {1.01, -0.012, 12.3, 0.009, 0.99, 9.6};
    const Map start = {1, 0, 11.5, 0, 1, 10.5};
    const Shared input = blots(size);
    const Shared templ = blank(VEXA_8UC1, {size.width - 32, size.height - 32}, 11);
    Vexa64f map[2][3];
    std::copy(truth.begin(), truth.end(), map[0]);
    (void)vexa::geometryTransforms::warpAffineBack(*input, *templ, map, VEXA_INTER_CUBIC);

    const Shared result = blank(VEXA_32FC1, {3, 2}, 1);
    const Shared expected = blank(VEXA_32FC1, {3, 2}, 2);
    const Work vexa = [=] {
        Vexa64f found[2][3];
        std::copy(start.begin(), start.end(), found[0]);
        (void)vexa::computerVision::findTransformECC(*templ, *input, found, steps, -1);
        for (int i = 0; i < 6; ++i) (void)result->set(i % 3, i / 3, 0, found[i / 3][i % 3]);
    };
    std::vector<double> parameters(start.begin(), start.end());
    parameters.push_back(steps);
    const Peer peer = peerOf({"findTransformECC", {templ, input}, expected, parameters});
    compare(vexa, peer.work, *result, *expected, 0.02, "findTransformECC");
    const double bytes = bytesOf(VEXA_8UC1, size) + bytesOf(VEXA_8UC1, templ->size());
    return {"findTransformECC x5", VEXA_8UC1, size, bytes, vexa, peer.work, peer.name};
}

/// Keeps standard output silent while it lives.
class Silence {
public:
    Silence()
    {
        std::fflush(stdout);
        const int nowhere = open("/dev/null", O_WRONLY);
        (void)dup2(nowhere, STDOUT_FILENO);
        (void)close(nowhere);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence()
    {
        std::fflush(stdout);
        (void)dup2(_output, STDOUT_FILENO);
        (void)close(_output);
    }

private:
    int _output = dup(STDOUT_FILENO);
};

/// On a thread of its own: the runtime keeps an error of every call, which others on its thread would print.
Benchmark stacking(VexaSize size)
{
    const Shared result = blank(VEXA_8UC3, size, 1);
    const std::shared_ptr<VexaImage[]> frames(new VexaImage[2]);
    for (int i = 0; i < 2; ++i) frames[i] = *noise(VEXA_8UC3, size, i + 1);
    const Work vexa = [=] {
        const Silence silence;
        std::async(std::launch::async, [&] {
            (void)vexa::computerVision::focusStack(frames.get(), 2, *result, VexaFilter());
        }).wait();
    };
    return {"focusStack x2", VEXA_8UC3, size, 3 * bytesOf(VEXA_8UC3, size), vexa, {}, {}};
}

}  // namespace

std::vector<Benchmark> alignmentBenchmarks(VexaSize size)
{
    constexpr int widest = 1920;
    if (size.width > widest) return {};
    return {alignment(size), stacking(size)};
}

}  // namespace bench
