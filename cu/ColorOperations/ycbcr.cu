/// @file
/// Y'CbCr of ITU-R BT.601 in studio range: one linear map, whose coefficients travel with the launch. The three element
/// types share the coefficients and have offsets of their own.

#include "arithmetic.h"
#include "checks.h"
#include "conversion.h"
#include "dispatch.h"

using namespace vexa;

namespace vexa {

/// Three rows of three coefficients and an offset.
struct LinearMap {
    float row[3][4];
};

}  // namespace vexa

namespace {

constexpr LinearMap toYCbCr(float lumaOffset, float chromaOffset)
{
    return {{{0.256788254F, 0.50412941F, 0.0979058892F, lumaOffset},
             {-0.148223537F, -0.2909922F, 0.43921572F, chromaOffset},
             {0.43921572F, -0.367788255F, -0.0714274570F, chromaOffset}}};
}

constexpr LinearMap fromYCbCr(float redOffset, float greenOffset, float blueOffset)
{
    return {{{1.16438103F, 0.0F, 1.59601951F, redOffset},
             {1.16438103F, -0.391756505F, -0.812965512F, greenOffset},
             {1.16438103F, 2.01722836F, 0.0F, blueOffset}}};
}

constexpr LinearMap toYCbCr8 = toYCbCr(16.0F, 128.0F);
constexpr LinearMap toYCbCr16 = toYCbCr(4112.0F, 32896.0F);
constexpr LinearMap toYCbCrFloat = toYCbCr(0.0627451017F, 0.501960814F);
constexpr LinearMap fromYCbCr8 = fromYCbCr(-222.9216F, 135.575394F, -276.836304F);
constexpr LinearMap fromYCbCr16 = fromYCbCr(-57290.8516F, 34842.875F, -71146.9297F);
constexpr LinearMap fromYCbCrFloat = fromYCbCr(-0.874202371F, 0.531668186F, -1.08563256F);

/// The map on three values, each row summed from the second on.
template <typename T, bool saturates>
struct Apply {
    LinearMap map;
    Range range;

    VEXA_DEVICE T row(int i, Color<float> v) const
    {
        const float* const c = map.row[i];
        const float sum = multiplyAdd(c[2], v.blue, multiplyAdd(c[0], v.red, c[1] * v.green));
        return store<T, saturates>(sum + c[3], range);
    }
};

template <typename T>
VEXA_DEVICE Color<float> floatsOf(Color<T> c)
{
    return {static_cast<float>(c.red), static_cast<float>(c.green), static_cast<float>(c.blue)};
}

template <typename T, bool saturates, VexaChannelSeq seq>
struct YCbCrOf {
    Apply<T, saturates> apply;

    VEXA_DEVICE Pixel<T, 3> operator()(Pixel<T, 3> pixel) const
    {
        const Color<float> color = floatsOf(colorOf<seq>(pixel));
        return {{apply.row(0, color), apply.row(1, color), apply.row(2, color)}};
    }
};

template <typename T, bool saturates, VexaChannelSeq seq>
struct ColorOf {
    Apply<T, saturates> apply;

    VEXA_DEVICE Pixel<T, 3> operator()(Pixel<T, 3> pixel) const
    {
        const Color<float> yCbCr = floatsOf(colorOf<VEXA_CHANNEL_SEQ_RGB>(pixel));
        return pixelOf<seq>(Color<T>{apply.row(0, yCbCr), apply.row(1, yCbCr), apply.row(2, yCbCr)});
    }
};

}  // namespace

template <typename T, int min, int max, bool sat, VexaChannelSeq seq>
VEXA_KERNEL kernel_rgb2YCbCr(T* src, T* dst, int width, int height, int pitch, LinearMap ycbcr)
{
    convertPixels(src, dst, width, height, pitch, YCbCrOf<T, sat, seq>{{ycbcr, {min, max}}});
}

template <typename T, int min, int max, bool sat, VexaChannelSeq seq>
VEXA_KERNEL kernel_YCbCr2rgb(T* src, T* dst, int width, int height, int pitch, LinearMap ycbcr)
{
    convertPixels(src, dst, width, height, pitch, ColorOf<T, sat, seq>{{ycbcr, {min, max}}});
}

namespace {

template <typename T>
VexaStatus launchToYCbCr(T* pSrc, T* pDst, int width, int height, int pitch, VexaChannelSeq sequence,
                         const LinearMap& map, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        launch(kernel_rgb2YCbCr<T, Element<T>::min, Element<T>::max, Element<T>::saturates, seq()>,
               pixelExtent(width, height), stream, pSrc, pDst, width, height, elements<T>(pitch), map);
    });
}

template <typename T>
VexaStatus launchFromYCbCr(T* pSrc, T* pDst, int width, int height, int pitch, VexaChannelSeq sequence,
                           const LinearMap& map, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        launch(kernel_YCbCr2rgb<T, Element<T>::min, Element<T>::max, Element<T>::saturates, seq()>,
               pixelExtent(width, height), stream, pSrc, pDst, width, height, elements<T>(pitch), map);
    });
}

/// The inverse for 8 bits, which callers on raw pointers don't have.
VexaStatus fromYCbCr_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                        VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchFromYCbCr(pSrc, pDst, width, height, pitch, sequence, fromYCbCr8, stream);
}

}  // namespace

VexaStatus vexa_rgbToYCbCr_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                              VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchToYCbCr(pSrc, pDst, width, height, pitch, sequence, toYCbCr8, stream);
}

VexaStatus vexa_rgbToYCbCr_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchToYCbCr(pSrc, pDst, width, height, pitch, sequence, toYCbCr16, stream);
}

VexaStatus vexa_rgbToYCbCr_32f(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchToYCbCr(pSrc, pDst, width, height, pitch, sequence, toYCbCrFloat, stream);
}

VexaStatus vexa_YCbCr2rgb_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                              VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchFromYCbCr(pSrc, pDst, width, height, pitch, sequence, fromYCbCr16, stream);
}

VexaStatus vexa_YCbCr2rgb_32f(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                              VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchFromYCbCr(pSrc, pDst, width, height, pitch, sequence, fromYCbCrFloat, stream);
}

namespace {

using YCbCrTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

struct ToYCbCr {
    Conversion conversion;

    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return conversion.by(vexa_rgbToYCbCr_8u); }
    VexaStatus operator()(ChannelCount<3>, Row<u16>) const { return conversion.by(vexa_rgbToYCbCr_16u); }
    VexaStatus operator()(ChannelCount<3>, Row<f32>) const { return conversion.by(vexa_rgbToYCbCr_32f); }
};

struct FromYCbCr {
    Conversion conversion;

    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return conversion.by(fromYCbCr_8u); }
    VexaStatus operator()(ChannelCount<3>, Row<u16>) const { return conversion.by(vexa_YCbCr2rgb_16u); }
    VexaStatus operator()(ChannelCount<3>, Row<f32>) const { return conversion.by(vexa_YCbCr2rgb_32f); }
};

[[nodiscard]] VexaStatus checked(const VexaImage& src, VexaImage& dst)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    return matchOrCreate(dst, src, {same::width, same::height, same::channels, same::depth}, src.size(), src.type());
}

}  // namespace

namespace vexa::colorOperations {

VexaStatus rgb2ycbcr(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = checked(src, dst)) return failed;
    // Read before the destination is marked, which may be the same image. It is marked even if its type is refused.
    const VexaChannelSeq sequence = src.channelSeq();
    dst.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    return dispatch(YCbCrTypes{}, Channels<3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    ToYCbCr{{src, dst, sequence, handle(stream)}}, src);
}

VexaStatus ycbcr2rgb(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = checked(src, dst)) return failed;
    return dispatch(YCbCrTypes{}, Channels<3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    FromYCbCr{{src, dst, dst.channelSeq(), handle(stream)}}, src);
}

}  // namespace vexa::colorOperations
