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

/// Pixels whose neighbours are all there.
struct Unguarded {
    const u8* first;

    VEXA_DEVICE int operator()(long long i) const { return first[i]; }
};

/// The differences of the cube of two by two pixels in two images, whole numbers.
struct Differences {
    int y;
    int x;
    int time;
};

/// Of the cube at i, whose rows lie `width` apart. Quarters are truncated.
template <typename Image>
VEXA_DEVICE Differences differencesAt(const Image& A, const Image& B, long long i, int width)
{
    const int a0 = A(i), a1 = A(i + width), a2 = A(i + 1), a3 = A(i + width + 1);
    const int b0 = B(i), b1 = B(i + width), b2 = B(i + 1), b3 = B(i + width + 1);
    return {((a1 + b1 + a3 + b3) - (a0 + b0 + a2 + b2)) / 4, ((a2 + b2 + a3 + b3) - (a0 + b0 + a1 + b1)) / 4,
            ((b0 + b1 + b2 + b3) - (a0 + a1 + a2 + a3)) / 4};
}

/// The flow of a run of pixels, round by round for all of them.
template <typename Image>
struct Relaxation {
    Image A;
    Image B;
    int width;
    int rounds;
    float lambda;
    float* u;
    float* v;

    VEXA_DEVICE void operator()(long long first, int pixels) const
    {
        float ey[itemsPerRun];
        float ex[itemsPerRun];
        float et[itemsPerRun];
        float r[itemsPerRun];
        float flowU[itemsPerRun];
        float flowV[itemsPerRun];
#pragma omp simd
        for (int i = 0; i < pixels; ++i) {
            const Differences e = differencesAt(A, B, first + i, width);
            ey[i] = static_cast<float>(e.y);
            ex[i] = static_cast<float>(e.x);
            et[i] = static_cast<float>(e.time);
            r[i] = reciprocal(lambda * lambda + ey[i] * ey[i] + ex[i] * ex[i]);
            flowU[i] = 0;
            flowV[i] = 0;
        }
        for (int round = 0; round < rounds; ++round) {
#pragma omp simd
            for (int i = 0; i < pixels; ++i) {
                const float nextU = flowU[i] - ey[i] * (et[i] + ey[i] * flowU[i] + ex[i] * flowV[i]) * r[i];
                flowV[i] = flowV[i] - ex[i] * (et[i] + ey[i] * nextU + ex[i] * flowV[i]) * r[i];
                flowU[i] = nextU;
            }
        }
        for (int i = 0; i < pixels; ++i) {
            u[first + i] = flowU[i];
            v[first + i] = flowV[i];
        }
    }
};

}  // namespace

/// The flow of `count` pixels; those from `readable` on are 0. `u` is the part along y and `v` the one along x: that is
/// meant.
VEXA_KERNEL derivatives(const Vexa8u* imgA, const Vexa8u* imgB, long long readableA, long long readableB,
                        long long count, float* u, float* v, unsigned short width, int criteria, float lambda)
{
    const long long readable = readableA < readableB ? readableA : readableB;
    const long long whole = readable - width - 1;
    const long long unguarded = whole < 0 ? 0 : (whole < count ? whole : count);
    forEachItemRun(unguarded, Relaxation<Unguarded>{{imgA}, {imgB}, width, criteria, lambda, u, v});
    const Relaxation<Bytes> guarded{{imgA, readableA}, {imgB, readableB}, width, criteria, lambda, u, v};
    forEachItemRun(count - unguarded, [=](long long behind, int pixels) { guarded(unguarded + behind, pixels); });
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
