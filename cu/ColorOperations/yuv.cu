/// @file
/// YUV of 8 and 16 bits. The two are not one conversion at two scales: the 16-bit U and V have no offset on the way
/// there, and one of 128 on the way back. That is meant.

#include "arithmetic.h"
#include "bt601.h"
#include "checks.h"
#include "conversion.h"

using namespace vexa;

namespace {

template <VexaChannelSeq seq>
struct YuvOf8 {
    VEXA_DEVICE Pixel<u8, 3> operator()(Pixel<u8, 3> pixel) const
    {
        const Color<int> color = widened(colorOf<seq>(pixel));
        return {{lumaOf(color), blueDifferenceOf(color), redDifferenceOf(color)}};
    }
};

template <VexaChannelSeq seq>
struct ColorOf8 {
    VEXA_DEVICE Pixel<u8, 3> operator()(Pixel<u8, 3> pixel) const
    {
        const int c = 298 * (pixel.element[0] - 16) + 128;
        const int d = pixel.element[1] - 128;
        const int e = pixel.element[2] - 128;
        return pixelOf<seq>(Color<u8>{static_cast<u8>(bounded((c + 409 * e) >> 8)),
                                      static_cast<u8>(bounded((c - 100 * d - 208 * e) >> 8)),
                                      static_cast<u8>(bounded((c + 516 * d) >> 8))});
    }
};

template <VexaChannelSeq seq>
struct YuvOf16 {
    Range range;

    VEXA_DEVICE Pixel<u16, 3> operator()(Pixel<u16, 3> pixel) const
    {
        const Color<u16> color = colorOf<seq>(pixel);
        const auto red = static_cast<float>(color.red);
        const auto green = static_cast<float>(color.green);
        const auto blue = static_cast<float>(color.blue);
        const float y = multiplyAdd(0.114F, blue, multiplyAdd(0.587F, green, 0.299F * red));
        const float u = multiplyAdd(0.5F, blue, multiplyAdd(-0.331264F, green, -0.168736F * red));
        // V alone is summed in double.
        const double v =
            multiplyAdd(-0.081312, static_cast<double>(blue),
                        multiplyAdd(-0.418688, static_cast<double>(green), static_cast<double>(0.5F * red)));
        return {{saturate<u16>(y, range), saturate<u16>(u, range), saturate<u16>(static_cast<float>(v), range)}};
    }
};

template <VexaChannelSeq seq>
struct ColorOf16 {
    Range range;

    VEXA_DEVICE Pixel<u16, 3> operator()(Pixel<u16, 3> pixel) const
    {
        const auto y = static_cast<float>(pixel.element[0]);
        const auto d = static_cast<float>(pixel.element[1] - 128);
        const auto e = static_cast<float>(pixel.element[2] - 128);
        const float green = multiplyAdd(-0.7169F, e, multiplyAdd(-0.3455F, d, y));
        return pixelOf<seq>(Color<u16>{saturate<u16>(multiplyAdd(1.4075F, e, y), range), saturate<u16>(green, range),
                                       saturate<u16>(multiplyAdd(1.779F, d, y), range)});
    }
};

}  // namespace

template <VexaChannelSeq seq>
VEXA_KERNEL kernel_rgb2yuv(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch)
{
    convertPixels(src, dst, width, height, pitch, YuvOf8<seq>{});
}

template <VexaChannelSeq seq>
VEXA_KERNEL kernel_yuv2rgb(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch)
{
    convertPixels(src, dst, width, height, pitch, ColorOf8<seq>{});
}

template <VexaChannelSeq seq>
VEXA_KERNEL kernel_rgb2yuv_16(Vexa16u* src, Vexa16u* dst, int width, int height, int pitch)
{
    convertPixels(src, dst, width, height, pitch, YuvOf16<seq>{{0, Element<u16>::max}});
}

template <VexaChannelSeq seq>
VEXA_KERNEL kernel_yuv2rgb_16(Vexa16u* src, Vexa16u* dst, int width, int height, int pitch)
{
    convertPixels(src, dst, width, height, pitch, ColorOf16<seq>{{0, Element<u16>::max}});
}

VexaStatus vexa_rgbToYuv_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               VexaChannelSeq sequence, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        launch(kernel_rgb2yuv<seq()>, pixelExtent(width, height), stream, pSrc, pDst, width, height, pitch);
    });
}

VexaStatus vexa_rgbToYuv_16u_C3(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                VexaChannelSeq sequence, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        launch(kernel_rgb2yuv_16<seq()>, pixelExtent(width, height), stream, pSrc, pDst, width, height,
               elements<u16>(pitch));
    });
}

VexaStatus vexa_yuvToRgb_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               VexaChannelSeq sequence, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        launch(kernel_yuv2rgb<seq()>, pixelExtent(width, height), stream, pSrc, pDst, width, height, pitch);
    });
}

VexaStatus vexa_yuvToRgb_16u_C3(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                VexaChannelSeq sequence, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        launch(kernel_yuv2rgb_16<seq()>, pixelExtent(width, height), stream, pSrc, pDst, width, height,
               elements<u16>(pitch));
    });
}

namespace {

/// By depth alone: signed elements are taken as unsigned.
VexaStatus byDepth(const Conversion& conversion, ColorWorker<u8> worker8, ColorWorker<u16> worker16)
{
    if (conversion.src.depth() == 8) return conversion.by(worker8);
    if (conversion.src.depth() == 16) return conversion.by(worker16);
    return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
}

}  // namespace

namespace vexa::colorOperations {

VexaStatus rgb2yuv(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::channels, same::width, same::height, same::depth}, src.size(), src.type()))
        return failed;
    return byDepth({src, dst, src.channelSeq(), handle(stream)}, vexa_rgbToYuv_8u_C3, vexa_rgbToYuv_16u_C3);
}

VexaStatus yuv2rgb(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    if (const VexaStatus failed = matchOrCreate(dst, src, {same::channels, same::width, same::height, same::depth},
                                                src.size(), src.depth(), src.channels()))
        return failed;
    return byDepth({src, dst, dst.channelSeq(), handle(stream)}, vexa_yuvToRgb_8u_C3, vexa_yuvToRgb_16u_C3);
}

}  // namespace vexa::colorOperations
