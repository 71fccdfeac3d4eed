/// @file
/// An image in a larger one, with a border of constants. The two kernels differ in what they take for the interior:
/// that of one channel counts the first column of the right border and the first row of the bottom border in, and
/// leaves them as they were. That is meant.

#include <algorithm>

#include "arguments.h"
#include "arithmetic.h"
#include "checks.h"
#include "kernels.h"

using namespace vexa;

namespace {

/// A position of an image of `size`, or the nearest of its ends: margins may be anything.
VEXA_DEVICE int position(long long value, int size)
{
    return static_cast<int>(value < 0 ? 0 : (value < size ? value : size));
}

/// The interior of an image with margins; `excess` columns and rows more on the right and at the bottom.
VEXA_DEVICE Interior interiorOf(int width, int height, int top, int bottom, int left, int right, int excess)
{
    return {position(left, width), position(static_cast<long long>(width) - right + excess, width),
            position(top, height), position(static_cast<long long>(height) - bottom + excess, height)};
}

}  // namespace

template <typename T>
VEXA_KERNEL kernel_pad_C1(T* dst, int width, int height, int pitch, int top, int bottom, int left, int right, T value)
{
    const Plane<T> plane{dst, pitch};
    forEachPixelOutside(interiorOf(width, height, top, bottom, left, right, 1), width, height,
                        [=](int x, int y) { plane.row(y)[x] = value; });
}

template <typename T>
VEXA_KERNEL kernel_pad_C3(T* dst, int width, int height, int pitch, int top, int bottom, int left, int right, T value0,
                          T value1, T value2)
{
    const Plane<T> plane{dst, pitch};
    forEachPixelOutside(interiorOf(width, height, top, bottom, left, right, 0), width, height, [=](int x, int y) {
        T* const pixel = plane.row(y) + 3 * x;
        pixel[0] = value0;
        pixel[1] = value1;
        pixel[2] = value2;
    });
}

namespace {

/// The size of an image with its margins; 0, which no image has, if it is past all sizes.
int padded(int size, int before, int after)
{
    const long long sum = static_cast<long long>(size) + before + after;
    return sum == static_cast<int>(sum) ? static_cast<int>(sum) : 0;
}

struct Margins {
    int top;
    int bottom;
    int left;
    int right;
};

/// Where a run of source pixels begins and how many of them are seen, of `size` that start at `offset` of a larger run.
struct Visible {
    int offset;
    int first;
    int count;
};

Visible visible(int size, int offset, int total)
{
    const long long begin = std::max(offset, 0);
    const long long end = std::min(static_cast<long long>(offset) + size, static_cast<long long>(total));
    if (end <= begin) return {0, 0, 0};
    return {static_cast<int>(begin), static_cast<int>(begin - offset), static_cast<int>(end - begin)};
}

/// The images of a call, pitches in bytes.
template <typename T>
struct Padding {
    T* src;
    T* dst;
    int width;   ///< of the result
    int height;  ///< of the result
    int srcPitch;
    int dstPitch;
    int channels;
    Margins margins;

    /// Copies the source to its place. Where a margin is negative a part of it is outside.
    VexaStatus copyInterior(int srcWidth, int srcHeight, cudaStream_t stream) const
    {
        if (src == nullptr || dst == nullptr) return VEXA_MEMCPY_D2D_ERROR;
        const Visible columns = visible(srcWidth, margins.left, width);
        const Visible rows = visible(srcHeight, margins.top, height);
        if (columns.count == 0 || rows.count == 0) return VEXA_SUCCESS;
        const std::size_t pixelBytes = sizeof(T) * static_cast<std::size_t>(channels);
        const auto at = [&](T* pixels, int pitch, int x, int y) {
            return platform::Target{reinterpret_cast<char*>(pixels) + static_cast<std::ptrdiff_t>(y) * pitch +
                                        static_cast<std::size_t>(x) * pixelBytes,
                                    static_cast<std::size_t>(pitch)};
        };
        const platform::Target to = at(dst, dstPitch, columns.offset, rows.offset);
        const platform::Target from = at(src, srcPitch, columns.first, rows.first);
        const platform::Extent2D extent{static_cast<std::size_t>(columns.count) * pixelBytes,
                                        static_cast<std::size_t>(rows.count)};
        return platform::copyOnDevice(to, {from.first, from.pitch}, extent, stream);
    }

    template <typename Kernel, typename... Value>
    VexaStatus fillBorder(Kernel kernel, cudaStream_t stream, Value... values) const
    {
        launch(kernel, Extent{width, height}, stream, dst, width, height, elements<T>(dstPitch), margins.top,
               margins.bottom, margins.left, margins.right, values...);
        return VEXA_SUCCESS;
    }
};

template <typename T>
VexaStatus pad(const Padding<T>& padding, int srcWidth, int srcHeight, const float* values, int highest,
               cudaStream_t stream)
{
    if (const VexaStatus failed = padding.copyInterior(srcWidth, srcHeight, stream)) return failed;
    if (padding.channels != 1 && padding.channels != 3) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (values == nullptr) return VEXA_INVALID_ARG_ERROR;
    const auto value = [=](int channel) {
        const auto constant = static_cast<double>(values[channel]);
        return saturated<T>(std::min(constant, static_cast<double>(highest)));
    };
    if (padding.channels == 1) return padding.fillBorder(kernel_pad_C1<T>, stream, value(0));
    return padding.fillBorder(kernel_pad_C3<T>, stream, value(0), value(1), value(2));
}

}  // namespace

VexaStatus vexa_pad_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s srcWidth, Vexa32s srcHeight, Vexa32s srcPitch,
                       Vexa32s dstPitch, Vexa32s channels, int top, int bottom, int left, int right,
                       const float* values, cudaStream_t stream)
{
    const Padding<u8> padding{
        pSrc,     pDst,     padded(srcWidth, left, right), padded(srcHeight, top, bottom), srcPitch,
        dstPitch, channels, {top, bottom, left, right}};
    return pad(padding, srcWidth, srcHeight, values, Element<u8>::max, stream);
}

VexaStatus vexa_pad_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s srcWidth, Vexa32s srcHeight, Vexa32s srcPitch,
                        Vexa32s dstPitch, Vexa32s channels, int top, int bottom, int left, int right,
                        const float* values, int dataBits, cudaStream_t stream)
{
    const Padding<u16> padding{
        pSrc,     pDst,     padded(srcWidth, left, right), padded(srcHeight, top, bottom), srcPitch,
        dstPitch, channels, {top, bottom, left, right}};
    const int highest = (1 << std::clamp(dataBits, 0, 16)) - 1;
    return pad(padding, srcWidth, srcHeight, values, highest, stream);
}

namespace vexa::dataExchange {

VexaStatus padImage(const VexaImage& src, VexaImage& dst, const Vexa32s top, const Vexa32s bottom, const Vexa32s left,
                    const Vexa32s right, const Vexa32f* values, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    const int width = padded(src.width(), left, right);
    const int height = padded(src.height(), top, bottom);
    if (dst.isInitialized() && (width != dst.width() || height != dst.height())) return VEXA_INVALID_ARG_ERROR;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::channels, same::depth}, width, height, src.depth(), src.channels()))
        return failed;
    if (src.depth() != 8 && src.depth() != 16) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    if (src.depth() == 8)
        return vexa_pad_8u(src.ptr<u8>(), dst.ptr<u8>(), src.width(), src.height(), src.pitch(), dst.pitch(),
                           src.channels(), top, bottom, left, right, values, handle(stream));
    return vexa_pad_16u(src.ptr<u16>(), dst.ptr<u16>(), src.width(), src.height(), src.pitch(), dst.pitch(),
                        src.channels(), top, bottom, left, right, values, src.dataBits(), handle(stream));
}

}  // namespace vexa::dataExchange
