/// @file
/// Minimum and maximum over a window. Filter width and height are crossed in the size of the window, but not in its
/// anchor; that is meant.

#include "extremes.h"

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "pitch.h"

using namespace vexa;

template <typename T, int bits, int C, int start>
VEXA_KERNEL kernel_min_filter(const T* src, T* out, int width, int height, int srcPitch, int pitch, int fWidth,
                              int fHeight, int anchorX, int anchorY)
{
    pickEach<C>(FetchClamped<T>{src, C * width, height, srcPitch}, Plane<T>{out, pitch},
                Footprint{anchorX, anchorY, fHeight, fWidth}, static_cast<T>(start), Least());
}

template <typename T, int bits, int C, int start>
VEXA_KERNEL kernel_max_filter(const T* src, T* out, int width, int height, int srcPitch, int pitch, int fWidth,
                              int fHeight, int anchorX, int anchorY)
{
    pickEach<C>(FetchClamped<T>{src, C * width, height, srcPitch}, Plane<T>{out, pitch},
                Footprint{anchorX, anchorY, fHeight, fWidth}, static_cast<T>(start), Greatest());
}

namespace {

/// Some positions of a window in one direction.
struct Span {
    int first;
    int count;
};

/// The positions that make a difference to an image of `size`: all farther out read its edge.
Span withinReach(int first, int count, int size)
{
    if (count < 1) return {first, count};
    const auto limited = [=](long long position) {
        return static_cast<int>(std::clamp<long long>(position, -size, size));
    };
    const int from = limited(first);
    return {from, limited(static_cast<long long>(first) + count - 1) - from + 1};
}

bool isInside(const VexaRect& roi, long long width, long long height)
{
    return roi.x >= 0 && roi.y >= 0 && roi.x < width && roi.y < height &&
           static_cast<long long>(roi.x) + roi.width <= width && static_cast<long long>(roi.y) + roi.height <= height;
}

/// What a worker is asked for.
template <int C>
struct Extremes {
    Vexa8u* input;
    Vexa8u* output;
    Vexa32u width;
    Vexa32u pitch;
    Vexa32u height;
    VexaRect roi;
    VexaSize filterSize;
    VexaPoint2D<int> anchor;
    cudaStream_t stream;

    template <typename Kernel>
    VexaStatus start(Kernel kernel) const
    {
        if (!isInside(roi, width, height)) return VEXA_INVALID_ROI_ERROR;
        // No memory can have a negative size.
        if (roi.width < 0 || roi.height < 0) return VEXA_MEM_ALLOC_ERR;
        return input == output ? inPlace(kernel) : fromSource(kernel);
    }

private:
    std::size_t offset() const { return static_cast<std::size_t>(roi.y) * pitch + static_cast<std::size_t>(roi.x) * C; }

    platform::Extent2D extent() const
    {
        return {static_cast<std::size_t>(roi.width) * C, static_cast<std::size_t>(roi.height)};
    }

    /// The windows see the rectangle alone, so the source can be read where it lies.
    template <typename Kernel>
    VexaStatus fromSource(Kernel kernel) const
    {
        if (const VexaStatus failed = copyOutside()) return failed;
        filter(kernel, input + offset(), static_cast<int>(pitch));
        return VEXA_SUCCESS;
    }

    /// By way of a copy of the rectangle.
    template <typename Kernel>
    VexaStatus inPlace(Kernel kernel) const
    {
        void* copy = nullptr;
        std::size_t copyPitch = 0;
        if (const VexaStatus failed = platform::allocateRows(copy, copyPitch, extent().rowBytes, extent().rows))
            return failed;
        if (platform::copyOnDevice({copy, copyPitch}, {input + offset(), pitch}, extent(), stream))
            return VEXA_MEMCPY_D2A_ERROR;
        filter(kernel, static_cast<const Vexa8u*>(copy), static_cast<int>(copyPitch));
        return platform::release(copy) ? VEXA_MEMFREE_ARRAY_ERR : VEXA_SUCCESS;
    }

    /// The whole image, unless nothing of it would be left.
    VexaStatus copyOutside() const
    {
        if (output == nullptr) return VEXA_MEMCPY_ERROR;
        const platform::Extent2D whole{static_cast<std::size_t>(width) * C, height};
        if (extent().rowBytes == whole.rowBytes && extent().rows == whole.rows) return VEXA_SUCCESS;
        return platform::copyOnDevice({output, pitch}, {input, pitch}, whole, stream) ? VEXA_MEMCPY_ERROR
                                                                                      : VEXA_SUCCESS;
    }

    template <typename Kernel>
    void filter(Kernel kernel, const Vexa8u* src, int srcPitch) const
    {
        // The height of the filter counts columns, its width rows.
        const Span columns = withinReach(anchor.x, filterSize.height, roi.width);
        const Span rows = withinReach(anchor.y, filterSize.width, roi.height);
        launch(kernel, Extent{C * roi.width, roi.height}, stream, src, output + offset(), roi.width, roi.height,
               srcPitch, static_cast<int>(pitch), rows.count, columns.count, columns.first, rows.first);
    }
};

}  // namespace

template <int C>
VexaStatus vexa_min_filter_8u_r(Vexa8u* input, Vexa8u* output, Vexa32u width, Vexa32u pitch, Vexa32u height,
                                VexaRect roi, VexaSize filterSize, VexaPoint2D<int> anchor, cudaStream_t stream)
{
    return Extremes<C>{input, output, width, pitch, height, roi, filterSize, anchor, stream}.start(
        kernel_min_filter<u8, 8, C, 255>);
}

template <int C>
VexaStatus vexa_max_filter_8u_r(Vexa8u* input, Vexa8u* output, Vexa32u width, Vexa32u pitch, Vexa32u height,
                                VexaRect roi, VexaSize filterSize, VexaPoint2D<int> anchor, cudaStream_t stream)
{
    return Extremes<C>{input, output, width, pitch, height, roi, filterSize, anchor, stream}.start(
        kernel_max_filter<u8, 8, C, 0>);
}

namespace {

using ToPick = VexaStatus(Vexa8u*, Vexa8u*, Vexa32u, Vexa32u, Vexa32u, VexaRect, VexaSize, VexaPoint2D<int>,
                          cudaStream_t);

}  // namespace

template ToPick vexa_min_filter_8u_r<1>;
template ToPick vexa_min_filter_8u_r<3>;
template ToPick vexa_max_filter_8u_r<1>;
template ToPick vexa_max_filter_8u_r<3>;

namespace {

/// The body of both functions, which differ in their workers for 1 and 3 channels.
VexaStatus pick(ToPick* ofOne, ToPick* ofThree, const VexaImage& src, VexaImage& dst, const VexaRect& roi,
                const VexaSize& filterSize, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    if (src.type() != VEXA_8UC1 && src.type() != VEXA_8UC3) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    ToPick* const worker = src.type() == VEXA_8UC1 ? ofOne : ofThree;
    return withPitch(dst, src.pitch(), stream, [&](VexaImage& to) {
        return worker(src.ptr<u8>(), to.ptr<u8>(), static_cast<Vexa32u>(src.width()), static_cast<Vexa32u>(src.pitch()),
                      static_cast<Vexa32u>(src.height()), roi, filterSize,
                      __vexaDefaultAnchor(filterSize.width, filterSize.height), handle(stream));
    });
}

}  // namespace

namespace vexa::imageFiltering {

VexaStatus minFilter(const VexaImage& src, VexaImage& dst, const VexaRect& roi, const VexaSize& filterSize,
                     const VexaStream& stream)
{
    return pick(vexa_min_filter_8u_r<1>, vexa_min_filter_8u_r<3>, src, dst, roi, filterSize, stream);
}

VexaStatus maxFilter(const VexaImage& src, VexaImage& dst, const VexaRect& roi, const VexaSize& filterSize,
                     const VexaStream& stream)
{
    return pick(vexa_max_filter_8u_r<1>, vexa_max_filter_8u_r<3>, src, dst, roi, filterSize, stream);
}

}  // namespace vexa::imageFiltering
