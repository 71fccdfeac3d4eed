/// @file
/// Pixels kept or replaced: borderMask by where they are, colorPick by their colour, imageBinary by their brightness.

#include "arguments.h"
#include "arithmetic.h"
#include "border.h"
#include "checks.h"
#include "clip.h"
#include "dispatch.h"
#include "pitch.h"
#include "sequence.h"

using namespace vexa;

namespace {

/// A position of an image of `size`, or the nearest of its ends.
VEXA_DEVICE int position(long long value, int size)
{
    return static_cast<int>(value < 0 ? 0 : (value < size ? value : size));
}

/// A pixel that is not picked. Green has the weight that red has elsewhere, which is meant.
VEXA_DEVICE u8 grayOf(float blue, float green, float red)
{
    return truncate<u8>(multiplyAdd(0.11F, blue, multiplyAdd(0.3F, green, 0.59F * red)));
}

/// Keeps a pixel whose `picked` slot exceeds both others by more than `margin`.
template <int picked>
struct Pick {
    u8 margin;

    VEXA_DEVICE Pixel<u8, 3> operator()(Pixel<u8, 3> pixel) const
    {
        const u8 primary = pixel.element[picked];
        const u8 one = pixel.element[(picked + 1) % 3];
        const u8 two = pixel.element[(picked + 2) % 3];
        const u8 larger = one > two ? one : two;
        const u8 ahead = primary > larger ? static_cast<u8>(primary - larger) : u8(0);
        const bool keeps = ahead > margin;
        const u8 gray = grayOf(pixel.element[0], pixel.element[1], pixel.element[2]);
        return {{keeps ? pixel.element[0] : gray, keeps ? pixel.element[1] : gray, keeps ? pixel.element[2] : gray}};
    }
};

/// The margin by which bytes exceed a threshold. By 255 none does, nor any by what is not a number.
VEXA_DEVICE u8 marginOf(float threshold)
{
    return threshold < 255.0F ? saturate<u8>(threshold, {0, 255}) : u8(255);
}

struct ToGray {
    VEXA_DEVICE Pixel<u8, 3> operator()(Pixel<u8, 3> pixel) const
    {
        const u8 gray = grayOf(pixel.element[0], pixel.element[1], pixel.element[2]);
        return {{gray, gray, gray}};
    }
};

VEXA_DEVICE u8 binary(u8 element, u8 threshold)
{
    return element >= threshold ? 255 : 0;
}

template <VexaChannelSeq seq>
struct BinaryOfColor {
    u8 threshold;

    VEXA_DEVICE Pixel<u8, 1> operator()(Pixel<u8, 3> pixel) const
    {
        const Color<u8> color = colorOf<seq>(pixel);
        const float green = 0.59F * static_cast<float>(color.green);
        const float yellow = multiplyAdd(0.3F, static_cast<float>(color.red), green);
        const float gray = multiplyAdd(0.11F, static_cast<float>(color.blue), yellow);
        return {{binary(truncate<u8>(gray), threshold)}};
    }
};

}  // namespace

template <typename T, int C>
VEXA_KERNEL kernel_borderMask(T* src, T* dst, int width, int height, int pitch, int top, int bottom, int left,
                              int right, T mask_r, T mask_g, T mask_b)
{
    const int first = position(left, width);
    const int end = position(static_cast<long long>(width) - right, width);
    const Interior interior{first, end < first ? first : end, position(top, height),
                            position(static_cast<long long>(height) - bottom, height)};
    const Plane<T> from{src, pitch};
    const Plane<T> to{dst, pitch};
    if constexpr (C == 1)
        copyInside<1>(interior, width, height, to, from, {{mask_r}});
    else
        copyInside<3>(interior, width, height, to, from, {{mask_r, mask_g, mask_b}});
}

VEXA_KERNEL kernel_colorpick_bgr_8u(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, VexaColor color,
                                    float threshold)
{
    const Interleaved<u8, 3> from{src, pitch};
    const Interleaved<u8, 3> to{dst, pitch};
    const u8 margin = marginOf(threshold);
    switch (color) {
        case VEXA_COLOR_RED:
            return mapPixels(width, height, to, Pick<2>{margin}, from);
        case VEXA_COLOR_GREEN:
            return mapPixels(width, height, to, Pick<1>{margin}, from);
        case VEXA_COLOR_BLUE:
            return mapPixels(width, height, to, Pick<0>{margin}, from);
        default:
            return mapPixels(width, height, to, ToGray{}, from);
    }
}

VEXA_KERNEL imageBinary_8u_c1_kernel(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, Vexa8u threshold)
{
    mapElements<1>(
        width, height, Plane<u8>{dst, pitch}, [=](u8 element) { return binary(element, threshold); },
        Plane<u8>{src, pitch});
}

template <VexaChannelSeq seq>
VEXA_KERNEL imageBinary_8u_c3_kernel(Vexa8u* src, Vexa8u* dst, int width, int height, int srcPitch, int dstPitch,
                                     Vexa8u threshold)
{
    mapPixels(width, height, Interleaved<u8, 1>{dst, dstPitch}, BinaryOfColor<seq>{threshold},
              Interleaved<u8, 3>{src, srcPitch});
}

namespace {

struct Margins {
    int top;
    int bottom;
    int left;
    int right;

    /// Whether they leave an interior, empty at least.
    bool fit(int width, int height) const
    {
        return static_cast<long long>(left) + right <= width && static_cast<long long>(top) + bottom <= height;
    }
};

template <typename T>
VexaStatus launchBorderMask(T* src, T* dst, int width, int height, int pitch, int channels, Margins margins,
                            const float* mask, cudaStream_t stream)
{
    if (!margins.fit(width, height)) return VEXA_INVALID_ARG_ERROR;
    if (channels != 1 && channels != 3) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    const auto run = [&](auto kernel, T first, T second, T third) {
        launch(kernel, Extent{width, height}, stream, src, dst, width, height, elements<T>(pitch), margins.top,
               margins.bottom, margins.left, margins.right, first, second, third);
        return VEXA_SUCCESS;
    };
    const T first = lowBits<T>(mask[0]);
    if (channels == 1) return run(kernel_borderMask<T, 1>, first, first, first);
    return run(kernel_borderMask<T, 3>, first, lowBits<T>(mask[1]), lowBits<T>(mask[2]));
}

/// The threshold in units of an element.
u8 byteThreshold(float fraction)
{
    return saturated<u8>(fraction * 255.0F);
}

}  // namespace

VexaStatus vexa_borderMask_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                              Vexa32s channels, Vexa32s top, Vexa32s bottom, Vexa32s left, Vexa32s right,
                              const Vexa32f* mask, cudaStream_t stream)
{
    return launchBorderMask(pSrc, pDst, width, height, pitch, channels, {top, bottom, left, right}, mask, stream);
}

VexaStatus vexa_borderMask_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               Vexa32s channels, Vexa32s top, Vexa32s bottom, Vexa32s left, Vexa32s right,
                               const Vexa32f* mask, cudaStream_t stream)
{
    return launchBorderMask(pSrc, pDst, width, height, pitch, channels, {top, bottom, left, right}, mask, stream);
}

VexaStatus vexa_colorPick_8u_c3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                VexaColor color, Vexa32f threshold, VexaChannelSeq sequence, cudaStream_t stream)
{
    if (sequence != VEXA_CHANNEL_SEQ_BGR) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    launch(kernel_colorpick_bgr_8u, pixelExtent(width, height), stream, pSrc, pDst, width, height, pitch, color,
           threshold);
    return VEXA_SUCCESS;
}

VexaStatus vexa_imageBinary_8u_C1(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                  Vexa32f threshold, cudaStream_t stream)
{
    launch(imageBinary_8u_c1_kernel, elementExtent<1, u8>(width, height), stream, pSrc, pDst, width, height, pitch,
           byteThreshold(threshold));
    return VEXA_SUCCESS;
}

VexaStatus vexa_imageBinary_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                  Vexa32s dstPitch, Vexa32f threshold, VexaChannelSeq sequence, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        launch(imageBinary_8u_c3_kernel<seq()>, pixelExtent(width, height), stream, pSrc, pDst, width, height, srcPitch,
               dstPitch, byteThreshold(threshold));
    });
}

namespace vexa::colorOperations {

VexaStatus borderMask(const VexaImage& src, VexaImage& dst, const Vexa32s top, const Vexa32s bottom, const Vexa32s left,
                      const Vexa32s right, const Vexa32f* mask, const VexaStream& stream)
{
    if (mask == nullptr) return VEXA_NULL_POINTER_ERROR;
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreate(dst, src, {same::width, same::height, same::depth, same::channels},
                                                src.size(), src.depth(), src.channels()))
        return failed;
    return withPitch(dst, src.pitch(), stream, [&](VexaImage& to) {
        const auto call = [&](auto worker, auto* from, auto* into) {
            return worker(from, into, src.width(), src.height(), src.pitch(), src.channels(), top, bottom, left, right,
                          mask, handle(stream));
        };
        if (src.depth() == 8) return call(vexa_borderMask_8u, src.ptr<u8>(), to.ptr<u8>());
        if (src.depth() == 16) return call(vexa_borderMask_16u, src.ptr<u16>(), to.ptr<u16>());
        return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    });
}

VexaStatus colorPick(const VexaImage& src, VexaImage& dst, const VexaColor color, const Vexa32f threshold,
                     const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    if (const VexaStatus failed = matchOrCreate(dst, src, {same::channels, same::width, same::height, same::depth},
                                                src.size(), src.depth(), src.channels()))
        return failed;
    if (src.depth() != 8) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    return vexa_colorPick_8u_c3(src.ptr<u8>(), dst.ptr<u8>(), src.width(), rowsInside(dst, src), src.pitch(), color,
                                threshold, src.channelSeq(), handle(stream));
}

VexaStatus imageBinary(const VexaImage& src, VexaImage& dst, const Vexa32f threshold, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (dst.isInitialized() && dst.channels() != 1) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    const bool creates = !dst.isInitialized();
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::depth}, src.size(), src.depth(), 1))
        return failed;
    const bool isServed = src.channelSeq() == VEXA_CHANNEL_SEQ_RGB || src.channelSeq() == VEXA_CHANNEL_SEQ_BGR;
    if (creates && !isServed && src.type() == VEXA_8UC3) clear(dst, handle(stream));
    const float fraction = std::clamp(threshold, 0.0F, 1.0F);
    if (src.type() == VEXA_8UC1)
        return vexa_imageBinary_8u_C1(src.ptr<u8>(), dst.ptr<u8>(), src.width(), rowsInside(dst, src), src.pitch(),
                                      fraction, handle(stream));
    if (src.type() == VEXA_8UC3)
        return vexa_imageBinary_8u_C3(src.ptr<u8>(), dst.ptr<u8>(), src.width(), src.height(), src.pitch(), dst.pitch(),
                                      fraction, src.channelSeq(), handle(stream));
    return VEXA_NOT_SUPPORTED_MODE_ERROR;
}

}  // namespace vexa::colorOperations
