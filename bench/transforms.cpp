/// @file
/// Benchmarks of the Fourier transform, the Haar wavelet and pyramids.

#include "bench.h"
#include "images.h"
#include "peer.h"

namespace bench {
namespace {

namespace it = vexa::imageTransforms;
using Images = std::vector<Shared>;

/// Sums of millions of pixels, so both are off by their rounding, which is small beside the largest.
Benchmark fourier(VexaSize size)
{
    constexpr double tolerance = 1;
    const auto call = [](const Images& src, VexaImage& dst) { return it::fft2(*src[0], dst); };
    return pair({"fft2", "dft", {VEXA_8UC1}, VEXA_COMPLEX32, call, {}, tolerance}, size);
}

Benchmark shift(VexaType type, VexaSize size)
{
    const auto call = [](const Images& src, VexaImage& dst) { return it::fftShift(*src[0], dst); };
    return pair({"fftShift", "", {type}, type, call}, size);
}

/// Of a source of one channel, whose rows hold half as many complex values as pixels.
Benchmark property(const char* name, VexaFFTProp prop, VexaSize size)
{
    const auto call = [=](const Images& src, VexaImage& dst) { return it::fftGetProperty(*src[0], dst, prop); };
    Benchmark row = pair({name, "", {VEXA_32FC1}, VEXA_32FC1, call}, size);
    row.bytes += bytesOf(VEXA_32FC1, size);
    return row;
}

Images subbands(VexaType type, VexaSize size, Shared (*make)(VexaType, VexaSize, int))
{
    Images images;
    for (int number = 1; number <= 4; ++number) images.push_back(make(type, {size.width / 2, size.height / 2}, number));
    return images;
}

Benchmark haarForward(VexaType type, VexaSize size)
{
    const Shared src = noise(type, size, 1);
    const Images to = subbands(type, size, blank);
    const Work work = [=] { (void)it::haarFwd(*src, *to[0], *to[1], *to[2], *to[3]); };
    return {"haarFwd", type, size, 2 * bytesOf(type, size), work, {}, {}};
}

Benchmark haarInverse(VexaType type, VexaSize size)
{
    const Images from = subbands(type, size, noise);
    const Shared dst = blank(type, size, 1);
    const Work work = [=] { (void)it::haarInv(*from[0], *from[1], *from[2], *from[3], *dst); };
    return {"haarInv", type, size, 2 * bytesOf(type, size), work, {}, {}};
}

/// Five levels, each of half the size. The opponent's windows have other weights.
Benchmark gaussianPyramid(VexaType type, VexaSize size)
{
    constexpr int levels = 5;
    const Shared src = noise(type, size, 1);
    const auto pyramid = std::make_shared<VexaPyramid>();
    const Work work = [=] { (void)pyramid->createGaussian(*src, levels, 0.5F, {5, 5}, 1.0F, VEXA_INTER_LINEAR); };
    const Peer peer = peerOf({"Gaussian pyramid", {src}, blank(type, size, 1), {levels - 1}});
    return {"Gaussian pyramid", type, size, 2.67 * bytesOf(type, size), work, peer.work, peer.name};
}

}  // namespace

std::vector<Benchmark> transformBenchmarks(VexaSize size)
{
    std::vector<Benchmark> benchmarks;
    benchmarks.push_back(fourier(size));
    benchmarks.push_back(shift(VEXA_32FC1, size));
    benchmarks.push_back(shift(VEXA_COMPLEX32, size));
    benchmarks.push_back(property("magnitude", VEXA_FFT_MAGNITUDE, size));
    benchmarks.push_back(property("phase", VEXA_FFT_PHASE, size));
    benchmarks.push_back(property("real part scaled", VEXA_FFT_SCALED_REAL, size));
    for (const VexaType type : {VEXA_8UC1, VEXA_8UC3}) {
        benchmarks.push_back(haarForward(type, size));
        benchmarks.push_back(haarInverse(type, size));
    }
    for (const VexaType type : {VEXA_8UC1, VEXA_8UC3, VEXA_32FC1}) benchmarks.push_back(gaussianPyramid(type, size));
    return benchmarks;
}

std::vector<Benchmark> fourierBenchmarks()
{
    std::vector<Benchmark> benchmarks;
    for (const VexaSize& size : {VexaSize(256, 256), VexaSize(1000, 1000), VexaSize(1024, 1024)})
        benchmarks.push_back(fourier(size));
    return benchmarks;
}

}  // namespace bench
