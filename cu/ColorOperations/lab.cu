/// @file
/// CIE L*a*b* of sRGB colours (IEC 61966-2-1) under the white of D65.

#include "arithmetic.h"
#include "checks.h"
#include "conversion.h"
#include "dispatch.h"

using namespace vexa;

namespace {

/// a * x + b * y + c * z
VEXA_DEVICE float weighted(float a, float x, float b, float y, float c, float z)
{
    return multiplyAdd(c, z, multiplyAdd(b, y, a * x));
}

/// The linear light of an sRGB value from 0 to 1, in percent.
VEXA_DEVICE float linearized(float value)
{
    const auto base = static_cast<float>(static_cast<double>(value + 0.055F) * (1.0 / 1.055));
    return 100.0F * (value > 0.04045F ? power(base, 2.4F) : value * 0.077399381F);
}

/// The sRGB value of linear light from 0 to 1.
VEXA_DEVICE float encoded(float light)
{
    return light > 0.0031308F ? multiplyAdd(1.055F, power(light, 1.0F / 2.4F), -0.055F) : 12.92F * light;
}

/// The cube root of a share of white, and its tangent near black.
VEXA_DEVICE float lightnessOf(float share)
{
    return share > 0.008856F ? power(share, 0.333333343F) : multiplyAdd(7.787F, share, 0.137931034F);
}

/// The inverse of lightnessOf.
VEXA_DEVICE float shareOf(float lightness)
{
    const float cube = lightness * lightness * lightness;
    return static_cast<double>(cube) > 0.008856 ? cube : (lightness - 0.137931034F) * 0.128419161F;
}

/// L from 0 to 100, a and b around 0, of linear light in percent.
VEXA_DEVICE Pixel<float, 3> labOf(Color<float> light)
{
    const float x =
        lightnessOf(weighted(0.412453F, light.red, 0.35758F, light.green, 0.180423F, light.blue) * 0.010521111F);
    const float y = lightnessOf(weighted(0.212671F, light.red, 0.71516F, light.green, 0.072169F, light.blue) * 0.01F);
    const float z =
        lightnessOf(weighted(0.019334F, light.red, 0.119193F, light.green, 0.950227F, light.blue) * 0.00918417F);
    return {{multiplyAdd(116.0F, y, -16.0F), 500.0F * (x - y), 200.0F * (y - z)}};
}

/// The linear light of an element.
struct LightOf {
    float inverse;  ///< of the scale

    template <typename T>
    VEXA_DEVICE float operator()(T element) const
    {
        return linearized(static_cast<float>(element) * inverse);
    }
};

template <typename T>
using Light = std::conditional_t<std::is_same_v<T, u8>, ByteFunction<LightOf>, LightOf>;

template <typename T, VexaChannelSeq seq>
struct LabOf {
    Light<T> light;
    float scale;
    float offset;
    Range range;

    VEXA_DEVICE Pixel<T, 3> operator()(Pixel<T, 3> pixel) const
    {
        const Color<T> c = colorOf<seq>(pixel);
        const Pixel<float, 3> lab = labOf({light(c.red), light(c.green), light(c.blue)});
        if constexpr (Element<T>::saturates)
            return {{saturate<T>(lab.element[0] * scale * 0.01F, range), saturate<T>(lab.element[1] + offset, range),
                     saturate<T>(lab.element[2] + offset, range)}};
        else
            return lab;
    }
};

template <typename T, VexaChannelSeq seq>
struct ColorOf {
    float inverse;
    float offset;
    Range range;

    VEXA_DEVICE T element(float light) const
    {
        const float value = encoded(light);
        return store<T, Element<T>::saturates>(Element<T>::saturates ? value * 255.0F : value, range);
    }

    VEXA_DEVICE Pixel<T, 3> operator()(Pixel<T, 3> pixel) const
    {
        const float fy = multiplyAdd(static_cast<float>(pixel.element[0]), inverse, 16.0F) * 0.00862069F;
        const float fx = multiplyAdd(static_cast<float>(pixel.element[1]) - offset, 0.002F, fy);
        const float fz = multiplyAdd(static_cast<float>(pixel.element[2]) - offset, -0.005F, fy);
        const float x = shareOf(fx) * 0.95047F;
        const float y = shareOf(fy);
        const float z = shareOf(fz) * 1.08883F;
        return pixelOf<seq>(Color<T>{element(weighted(3.2406F, x, -1.5372F, y, -0.4986F, z)),
                                     element(weighted(-0.9689F, x, 1.8758F, y, 0.0415F, z)),
                                     element(weighted(0.0557F, x, -0.204F, y, 1.057F, z))});
    }
};

}  // namespace

template <typename T, VexaChannelSeq seq>
VEXA_KERNEL kernel_rgb2lab(T* src, T* dst, int width, int height, int pitch, float scale, float offset)
{
    const Range range{Element<T>::min, Element<T>::max};
    convertPixels(src, dst, width, height, pitch, LabOf<T, seq>{Light<T>(LightOf{1.0F / scale}), scale, offset, range});
}

template <typename T, VexaChannelSeq seq>
VEXA_KERNEL kernel_lab2rgb(T* src, T* dst, int width, int height, int pitch, float scale, float offset)
{
    const Range range{Element<T>::min, Element<T>::max};
    convertPixels(src, dst, width, height, pitch, ColorOf<T, seq>{1.0F / scale, offset, range});
}

namespace {

template <typename T>
VexaStatus launchToLab(T* pSrc, T* pDst, int width, int height, int pitch, VexaChannelSeq sequence, float scale,
                       float offset, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        launch(kernel_rgb2lab<T, seq()>, pixelExtent(width, height), stream, pSrc, pDst, width, height,
               elements<T>(pitch), scale, offset);
    });
}

template <typename T>
VexaStatus launchFromLab(T* pSrc, T* pDst, int width, int height, int pitch, VexaChannelSeq sequence, float scale,
                         float offset, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        launch(kernel_lab2rgb<T, seq()>, pixelExtent(width, height), stream, pSrc, pDst, width, height,
               elements<T>(pitch), scale, offset);
    });
}

}  // namespace

VexaStatus vexa_rgbToLab_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchToLab(pSrc, pDst, width, height, pitch, sequence, 255.0F, 128.0F, stream);
}

VexaStatus vexa_rgbToLab_32f_C3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchToLab(pSrc, pDst, width, height, pitch, sequence, 1.0F, 0.0F, stream);
}

VexaStatus vexa_LabToRgb_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchFromLab(pSrc, pDst, width, height, pitch, sequence, 2.55F, 128.0F, stream);
}

VexaStatus vexa_LabToRgb_32f_C3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchFromLab(pSrc, pDst, width, height, pitch, sequence, 1.0F, 0.0F, stream);
}

namespace {

using LabTypes = Table<Row<u8>, Row<f32>>;

struct ToLab {
    Conversion conversion;

    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return conversion.by(vexa_rgbToLab_8u_C3); }
    VexaStatus operator()(ChannelCount<3>, Row<f32>) const { return conversion.by(vexa_rgbToLab_32f_C3); }
};

struct FromLab {
    Conversion conversion;

    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return conversion.by(vexa_LabToRgb_8u_C3); }
    VexaStatus operator()(ChannelCount<3>, Row<f32>) const { return conversion.by(vexa_LabToRgb_32f_C3); }
};

}  // namespace

namespace vexa::colorOperations {

VexaStatus rgb2Lab(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = notInPlace(src, dst)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    if (const VexaStatus failed = dispatch(LabTypes{}, Channels<3>{}, VEXA_DEPTH_NOT_SUPPORTED_ERROR,
                                           ToLab{{src, dst, src.channelSeq(), handle(stream)}}, src))
        return failed;
    dst.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    return VEXA_SUCCESS;
}

VexaStatus Lab2rgb(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    return dispatch(LabTypes{}, Channels<3>{}, VEXA_DEPTH_NOT_SUPPORTED_ERROR,
                    FromLab{{src, dst, dst.channelSeq(), handle(stream)}}, src);
}

}  // namespace vexa::colorOperations
