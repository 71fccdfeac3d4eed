/// @file
/// Colour to gray and back.

#include "arguments.h"
#include "arithmetic.h"
#include "checks.h"
#include "dispatch.h"
#include "sequence.h"

using namespace vexa;

namespace {

/// Luma by the weights of ITU-R BT.601, summed from green on in the order of the slots.
template <typename T, VexaChannelSeq seq>
struct Luma {
    template <int C>
    VEXA_DEVICE Pixel<T, 1> operator()(Pixel<T, C> pixel) const
    {
        constexpr float red = 0.299F;
        constexpr float green = 0.587F;
        constexpr float blue = 0.114F;
        const auto first = static_cast<float>(pixel.element[0]);
        const auto second = static_cast<float>(pixel.element[1]);
        const auto third = static_cast<float>(pixel.element[2]);
        const float sum = multiplyAdd(redSlot<seq> == 0 ? red : blue, first, green * second);
        return {{truncate<T>(multiplyAdd(redSlot<seq> == 0 ? blue : red, third, sum))}};
    }
};

/// The weighted sum of the three slots.
template <typename T, bool saturates>
struct WeightedSum {
    float weight0;
    float weight1;
    float weight2;
    Range range;

    VEXA_DEVICE Pixel<T, 1> operator()(Pixel<T, 3> pixel) const
    {
        const float second = weight1 * static_cast<float>(pixel.element[1]);
        const float sum = multiplyAdd(weight0, static_cast<float>(pixel.element[0]), second);
        return {{store<T, saturates>(multiplyAdd(weight2, static_cast<float>(pixel.element[2]), sum), range)}};
    }
};

/// Gray in three channels. A fourth is 0: transparent, not opaque.
template <typename T, int C>
struct Replicate {
    VEXA_DEVICE Pixel<T, C> operator()(Pixel<T, 1> pixel) const
    {
        const T gray = pixel.element[0];
        if constexpr (C == 3)
            return {{gray, gray, gray}};
        else
            return {{gray, gray, gray, T(0)}};
    }
};

}  // namespace

template <typename T, int C, VexaChannelSeq seq>
VEXA_KERNEL kernel_rgb2gray(T* src, T* dst, int width, int height, int srcPitch, int dstPitch)
{
    mapPixels(width, height, Interleaved<T, 1>{dst, dstPitch}, Luma<T, seq>{}, Interleaved<T, C>{src, srcPitch});
}

template <typename T, int min, int max, bool sat>
VEXA_KERNEL kernel_grayscale(T* src, T* dst, int width, int height, int srcPitch, int dstPitch, float weight0,
                             float weight1, float weight2)
{
    mapPixels(width, height, Interleaved<T, 1>{dst, dstPitch},
              WeightedSum<T, sat>{weight0, weight1, weight2, {min, max}}, Interleaved<T, 3>{src, srcPitch});
}

template <typename T, int C>
VEXA_KERNEL kernel_gray2rgb(T* src, T* dst, int width, int height, int srcPitch, int dstPitch)
{
    mapPixels(width, height, Interleaved<T, C>{dst, dstPitch}, Replicate<T, C>{}, Interleaved<T, 1>{src, srcPitch});
}

namespace {

template <int C, typename Served, typename T>
VexaStatus launchLuma(Served served, T* pSrc, T* pDst, int width, int height, int srcPitch, int dstPitch,
                      VexaChannelSeq sequence, cudaStream_t stream)
{
    return withSequence(sequence, served, [&](auto seq) {
        launch(kernel_rgb2gray<T, C, seq()>, pixelExtent(width, height), stream, pSrc, pDst, width, height,
               elements<T>(srcPitch), elements<T>(dstPitch));
    });
}

template <typename T>
VexaStatus launchWeightedSum(T* pSrc, T* pDst, int width, int height, int srcPitch, int dstPitch, float red,
                             float green, float blue, VexaChannelSeq sequence, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        const float weights[] = {redSlot<seq()> == 0 ? red : blue, green, redSlot<seq()> == 0 ? blue : red};
        launch(kernel_grayscale<T, Element<T>::min, Element<T>::max, Element<T>::saturates>, pixelExtent(width, height),
               stream, pSrc, pDst, width, height, elements<T>(srcPitch), elements<T>(dstPitch), weights[0], weights[1],
               weights[2]);
    });
}

}  // namespace

VexaStatus vexa_rgbToGray_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchLuma<3>(ColorSequences{}, pSrc, pDst, width, height, srcPitch, dstPitch, sequence, stream);
}

VexaStatus vexa_rgbToGray_16u_C3(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                 Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchLuma<3>(ColorSequences{}, pSrc, pDst, width, height, srcPitch, dstPitch, sequence, stream);
}

VexaStatus vexa_rgbToGray_32f_C3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                 Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchLuma<3>(ColorSequences{}, pSrc, pDst, width, height, srcPitch, dstPitch, sequence, stream);
}

VexaStatus vexa_rgbaToGray_8u_C4(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                 Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchLuma<4>(AlphaSequences{}, pSrc, pDst, width, height, srcPitch, dstPitch, sequence, stream);
}

VexaStatus vexa_rgbaToGray_16u_C4(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                  Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchLuma<4>(AlphaSequences{}, pSrc, pDst, width, height, srcPitch, dstPitch, sequence, stream);
}

VexaStatus vexa_colorToGray_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                  Vexa32s dstPitch, Vexa32f red, Vexa32f green, Vexa32f blue, VexaChannelSeq sequence,
                                  cudaStream_t stream)
{
    return launchWeightedSum(pSrc, pDst, width, height, srcPitch, dstPitch, red, green, blue, sequence, stream);
}

VexaStatus vexa_colorToGray_16u_C3(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                   Vexa32s dstPitch, Vexa32f red, Vexa32f green, Vexa32f blue, VexaChannelSeq sequence,
                                   cudaStream_t stream)
{
    return launchWeightedSum(pSrc, pDst, width, height, srcPitch, dstPitch, red, green, blue, sequence, stream);
}

VexaStatus vexa_colorToGray_32f_C3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                   Vexa32s dstPitch, Vexa32f red, Vexa32f green, Vexa32f blue, VexaChannelSeq sequence,
                                   cudaStream_t stream)
{
    return launchWeightedSum(pSrc, pDst, width, height, srcPitch, dstPitch, red, green, blue, sequence, stream);
}

namespace {

using IntegerTypes = Table<Row<u8>, Row<u16>>;
using AllTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

/// Picks the worker of luma.
struct ToLuma {
    const VexaImage& src;
    VexaImage& dst;
    platform::Stream stream;

    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return call(vexa_rgbToGray_8u_C3); }
    VexaStatus operator()(ChannelCount<3>, Row<u16>) const { return call(vexa_rgbToGray_16u_C3); }
    VexaStatus operator()(ChannelCount<3>, Row<f32>) const { return call(vexa_rgbToGray_32f_C3); }
    VexaStatus operator()(ChannelCount<4>, Row<u8>) const { return call(vexa_rgbaToGray_8u_C4); }
    VexaStatus operator()(ChannelCount<4>, Row<u16>) const { return call(vexa_rgbaToGray_16u_C4); }

    template <typename T>
    VexaStatus call(VexaStatus (*worker)(T*, T*, int, int, int, int, VexaChannelSeq, cudaStream_t)) const
    {
        return worker(src.ptr<T>(), dst.ptr<T>(), src.width(), src.height(), src.pitch(), dst.pitch(), src.channelSeq(),
                      stream);
    }
};

/// Picks the worker of the weighted sum.
struct ToWeightedSum {
    const VexaImage& src;
    VexaImage& dst;
    const VexaScalar& weights;
    platform::Stream stream;

    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return call(vexa_colorToGray_8u_C3); }
    VexaStatus operator()(ChannelCount<3>, Row<u16>) const { return call(vexa_colorToGray_16u_C3); }
    VexaStatus operator()(ChannelCount<3>, Row<f32>) const { return call(vexa_colorToGray_32f_C3); }

    template <typename T>
    VexaStatus call(VexaStatus (*worker)(T*, T*, int, int, int, int, float, float, float, VexaChannelSeq,
                                         cudaStream_t)) const
    {
        return worker(src.ptr<T>(), dst.ptr<T>(), src.width(), src.height(), src.pitch(), dst.pitch(),
                      static_cast<float>(weights[0]), static_cast<float>(weights[1]), static_cast<float>(weights[2]),
                      src.channelSeq(), stream);
    }
};

struct ToColor {
    const VexaImage& src;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        launch(kernel_gray2rgb<T, C>, pixelExtent(src.width(), src.height()), stream, src.ptr<T>(), dst.ptr<T>(),
               src.width(), src.height(), pitchOf<T>(src), pitchOf<T>(dst));
    }
};

/// The checks that both forms share behind those of their source.
[[nodiscard]] VexaStatus matchOrCreateGray(VexaImage& dst, const VexaImage& src)
{
    if (dst.isInitialized() && dst.channels() != 1) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    return matchOrCreate(dst, src, {same::width, same::height, same::depth}, src.size(), src.depth(), 1);
}

}  // namespace

namespace vexa::colorOperations {

VexaStatus rgb2gray(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = notInPlace(src, dst)) return failed;
    if (src.channels() != 3 && src.channels() != 4) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (const VexaStatus failed = matchOrCreateGray(dst, src)) return failed;
    const ToLuma work{src, dst, handle(stream)};
    if (src.channels() == 4) return dispatch(IntegerTypes{}, Channels<4>{}, VEXA_NOT_SUPPORTED_MODE_ERROR, work, src);
    return dispatch(AllTypes{}, Channels<3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR, work, src);
}

VexaStatus rgb2gray(const VexaImage& src, VexaImage& dst, const VexaScalar& coeffs, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = notInPlace(src, dst)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    if (const VexaStatus failed = matchOrCreateGray(dst, src)) return failed;
    return dispatch(AllTypes{}, Channels<3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    ToWeightedSum{src, dst, coeffs, handle(stream)}, src);
}

VexaStatus gray2rgb(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = notInPlace(src, dst)) return failed;
    if (src.channels() != 1) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::depth}, src.size(), src.depth(), 3))
        return failed;
    // The rows are those of the destination. The source differs in channels alone, and has no sign either.
    if (src.isSigned()) return VEXA_TYPE_NOT_SUPPORTED_ERROR;
    return dispatch(AllTypes{}, Channels<3, 4>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR, ToColor{src, dst, handle(stream)},
                    dst);
}

VexaStatus gray2rgb(VexaImage& srcDst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(srcDst)) return failed;
    const VexaImage gray(srcDst);
    (void)srcDst.release();
    return gray2rgb(gray, srcDst, stream);
}

}  // namespace vexa::colorOperations
