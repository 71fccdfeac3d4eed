/// @file
/// Dense flow after Horn and Schunck, with the smoothed flow of a pixel taken for its own: no pixel asks another, and
/// one kernel makes all rounds. Images are read as runs of bytes, whatever their pitch, so that an image with a gap
/// between its rows is read skewed. That is meant.

#include "arguments.h"
#include "arithmetic.h"
#include "checks.h"
#include "kernels.h"
#include "temporaries.h"

using namespace vexa;

namespace {

/// A run of bytes, 0 past its end.
struct Bytes {
    const u8* first;
    long long count;

    VEXA_DEVICE int operator()(long long i) const { return i < count ? first[i] : 0; }
};

/// The differences of two times two pixels in both images, whole numbers.
struct Derivatives {
    float y;
    float x;
    float time;
};

/// a(k) and b(k) are pixel k of the four, by columns; quarters are truncated.
template <typename A, typename B>
VEXA_DEVICE Derivatives derive(const A& a, const B& b)
{
    const int upper = a(0) + b(0) + a(2) + b(2);
    const int lower = a(1) + b(1) + a(3) + b(3);
    const int left = a(0) + b(0) + a(1) + b(1);
    const int right = a(2) + b(2) + a(3) + b(3);
    const int before = a(0) + a(1) + a(2) + a(3);
    const int after = b(0) + b(1) + b(2) + b(3);
    return {static_cast<float>((lower - upper) / 4), static_cast<float>((right - left) / 4),
            static_cast<float>((after - before) / 4)};
}

struct Relaxation {
    float* u;
    float* v;
    int rounds;
    float lambda;

    VEXA_DEVICE void operator()(long long i, const Derivatives& e) const
    {
        const float r = reciprocal(lambda * lambda + e.y * e.y + e.x * e.x);
        float flowU = 0;
        float flowV = 0;
        for (int round = 0; round < rounds; ++round) {
            flowU = flowU - e.y * (e.time + e.y * flowU + e.x * flowV) * r;
            flowV = flowV - e.x * (e.time + e.y * flowU + e.x * flowV) * r;
        }
        u[i] = flowU;
        v[i] = flowV;
    }
};

}  // namespace

/// The flow of `count` pixels; those from `readable` on are 0. `u` is the part along y and `v` the one along x: that is
/// meant.
VEXA_KERNEL derivatives(const Vexa8u* imgA, const Vexa8u* imgB, long long readableA, long long readableB,
                        long long count, float* u, float* v, unsigned short width, int criteria, float lambda)
{
    const Relaxation relax{u, v, criteria, lambda};
    const long long w = width;
    const long long readable = readableA < readableB ? readableA : readableB;
    const long long whole = readable - w - 1;
    const long long unguarded = whole < 0 ? 0 : (whole < count ? whole : count);
    forEachItem(unguarded, [=](long long i) {
        const u8* const a = imgA + i;
        const u8* const b = imgB + i;
        relax(i, derive([=](int k) -> int { return a[k / 2 + k % 2 * w]; },
                        [=](int k) -> int { return b[k / 2 + k % 2 * w]; }));
    });
    const Bytes bytesA{imgA, readableA};
    const Bytes bytesB{imgB, readableB};
    forEachItem(count - unguarded, [=](long long behind) {
        const long long i = unguarded + behind;
        relax(i, derive([=](int k) { return bytesA(i + k / 2 + k % 2 * w); },
                        [=](int k) { return bytesB(i + k / 2 + k % 2 * w); }));
    });
}

namespace {

/// The steps of the worker, whose statuses pass unseen. No more is read than is there.
VexaStatus calculate(const Bytes& a, const Bytes& b, long long width, long long height, float* u, float* v, int rounds,
                     float lambda, platform::Stream stream)
{
    const long long count = width * height;
    constexpr long long fewestPixels = 256;
    if (count < fewestPixels) return VEXA_SIZE_ERROR;
    const auto elements = static_cast<std::size_t>(count);
    float* deviceU = nullptr;
    float* deviceV = nullptr;
    (void)allocateElements(deviceU, elements);
    (void)allocateElements(deviceV, elements);
    // The kernel takes the width as 16 bits: that of wider images wraps around, which is meant.
    launch(derivatives, itemExtent(count), stream, a.first, b.first, std::min(a.count, count), std::min(b.count, count),
           count, deviceU, deviceV, static_cast<unsigned short>(width), rounds, lambda);
    (void)platform::copyToHost(u, deviceU, elements * sizeof(float), stream);
    (void)platform::copyToHost(v, deviceV, elements * sizeof(float), stream);
    (void)releaseAll({deviceU, deviceV});
    return VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexa_calcOpticalFlowHS_8u_C1(Vexa8u* imgA, Vexa8u* imgB, int imageWidth, int imageHeight, Vexa32f* u,
                                        Vexa32f* v, bool /*usePrevious*/, Vexa32f lambda, Vexa32s criteria,
                                        cudaStream_t stream)
{
    const long long all = static_cast<long long>(imageWidth) * imageHeight;
    return calculate({imgA, all}, {imgB, all}, imageWidth, imageHeight, u, v, criteria, lambda, stream);
}

namespace vexa::computerVision {

VexaStatus opticalFlowHS(const VexaImage& previous, const VexaImage& next, Vexa32f* flowX, Vexa32f* flowY,
                         const bool /*usePrevious*/, const Vexa32f lambda, const Vexa32s iterations,
                         const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(previous, next)) return failed;
    if (previous.depth() != 8) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    if (previous.channels() != 1) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (const VexaStatus failed = match(next, previous, {same::width, same::height, same::depth, same::channels}))
        return failed;
    // Not the worker on raw pointers: an image with a small pitch of its own ends before as many bytes as it has
    // pixels.
    return calculate({previous.ptr<u8>(), bytesOf(previous)}, {next.ptr<u8>(), bytesOf(next)}, previous.width(),
                     previous.height(), flowX, flowY, iterations, lambda, handle(stream));
}

}  // namespace vexa::computerVision
