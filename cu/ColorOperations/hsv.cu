/// @file
/// Hue, saturation, value. The way there is in floats, the way back in 8-bit integers, for floats too, and it writes
/// blue, green, red whatever the sequence. That is meant.

#include "arithmetic.h"
#include "checks.h"
#include "conversion.h"
#include "dispatch.h"

using namespace vexa;

namespace {

constexpr float perByte = 0.003921569F;  // 1 / 255

/// Hue, saturation and value of a colour from 0 to 1, each from 0 to 1.
VEXA_DEVICE Pixel<float, 3> hsvOf(Color<float> c)
{
    const float redGreen = c.red > c.green ? c.red : c.green;
    const float max = redGreen > c.blue ? redGreen : c.blue;
    const float lessOfTwo = c.red < c.green ? c.red : c.green;
    const float min = lessOfTwo < c.blue ? lessOfTwo : c.blue;
    const float delta = max - min;

    // A sixth of a circle from the primary that is largest; of equal ones red comes first, then green.
    const bool isRed = c.red == max;
    const bool isGreen = c.green == max;
    const float start = isRed ? 0.0F : isGreen ? 1.0F / 3.0F : 2.0F / 3.0F;
    const float ahead = isRed ? c.green : isGreen ? c.blue : c.red;
    const float behind = isRed ? c.blue : isGreen ? c.red : c.green;
    const float angle = multiplyAdd(ahead - behind, reciprocal(delta) * (1.0F / 6.0F), start);
    const float notBelow = angle < 0.0F ? angle + 1.0F : angle;
    const float hue = notBelow > 1.0F ? notBelow - 1.0F : notBelow;

    const bool isGray = delta == 0.0F;
    return {{isGray ? 0.0F : hue, isGray ? 0.0F : delta * reciprocal(max), max}};
}

template <VexaChannelSeq seq>
struct HsvOf8 {
    Range range;

    VEXA_DEVICE Pixel<u8, 3> operator()(Pixel<u8, 3> pixel) const
    {
        const Color<u8> c = colorOf<seq>(pixel);
        const Pixel<float, 3> hsv = hsvOf({static_cast<float>(c.red) * perByte, static_cast<float>(c.green) * perByte,
                                           static_cast<float>(c.blue) * perByte});
        return {{saturate<u8>(hsv.element[0] * 255.0F, range), saturate<u8>(hsv.element[1] * 255.0F, range),
                 saturate<u8>(hsv.element[2] * 255.0F, range)}};
    }
};

template <VexaChannelSeq seq>
struct HsvOfFloat {
    VEXA_DEVICE Pixel<float, 3> operator()(Pixel<float, 3> pixel) const { return hsvOf(colorOf<seq>(pixel)); }
};

/// (a * b) / 256 of bytes, in 16 bits: twice as many fill a vector register as in 32.
VEXA_DEVICE u16 scaled(u16 a, u16 b)
{
    return static_cast<u16>(static_cast<u16>(a * b) >> 8);
}

/// Blue, green and red of hue, saturation and value in bytes: six regions of 43 steps of hue each.
VEXA_DEVICE Pixel<u8, 3> bgrOf(u16 h, u16 s, u16 v)
{
    const u16 full = 255;
    const auto region = static_cast<u16>(static_cast<u16>(h * 191) >> 13);  // h / 43 for every byte
    const auto rest = static_cast<u16>((h - 43 * region) * 6);
    const u16 p = scaled(v, static_cast<u16>(full - s));
    const u16 q = scaled(v, static_cast<u16>(full - scaled(s, rest)));
    const u16 t = scaled(v, static_cast<u16>(full - scaled(s, static_cast<u16>(full - rest))));
    const u16 red = region == 1 ? q : region == 2 || region == 3 ? p : region == 4 ? t : v;
    const u16 green = region == 0 ? t : region == 1 || region == 2 ? v : region == 3 ? q : p;
    const u16 blue = region == 0 || region == 1 ? p : region == 2 ? t : region == 3 || region == 4 ? v : q;
    const bool isGray = s == 0;
    return {
        {static_cast<u8>(isGray ? v : blue), static_cast<u8>(isGray ? v : green), static_cast<u8>(isGray ? v : red)}};
}

struct BgrOf8 {
    VEXA_DEVICE Pixel<u8, 3> operator()(Pixel<u8, 3> hsv) const
    {
        return bgrOf(hsv.element[0], hsv.element[1], hsv.element[2]);
    }
};

struct BgrOfFloat {
    static VEXA_DEVICE u8 byteOf(float value) { return static_cast<u8>(truncateToUnsigned(value * 255.0F)); }

    VEXA_DEVICE Pixel<float, 3> operator()(Pixel<float, 3> hsv) const
    {
        const Pixel<u8, 3> bgr = bgrOf(byteOf(hsv.element[0]), byteOf(hsv.element[1]), byteOf(hsv.element[2]));
        return {{static_cast<float>(bgr.element[0]) * perByte, static_cast<float>(bgr.element[1]) * perByte,
                 static_cast<float>(bgr.element[2]) * perByte}};
    }
};

}  // namespace

template <typename T, VexaChannelSeq seq>
VEXA_KERNEL kernel_rgb2hsv(T* src, T* dst, int width, int height, int pitch)
{
    if constexpr (std::is_integral_v<T>)
        convertPixels(src, dst, width, height, pitch, HsvOf8<seq>{{0, Element<u8>::max}});
    else
        convertPixels(src, dst, width, height, pitch, HsvOfFloat<seq>{});
}

template <typename T>
VEXA_KERNEL kernel_hsv2bgr(T* src, T* dst, int width, int height, int pitch)
{
    using Op = std::conditional_t<std::is_integral_v<T>, BgrOf8, BgrOfFloat>;
    convertPixels(src, dst, width, height, pitch, Op{});
}

namespace {

template <typename T>
VexaStatus launchToHsv(T* pSrc, T* pDst, int width, int height, int pitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return withSequence(sequence, ColorSequences{}, [&](auto seq) {
        launch(kernel_rgb2hsv<T, seq()>, pixelExtent(width, height), stream, pSrc, pDst, width, height,
               elements<T>(pitch));
    });
}

template <typename T>
VexaStatus launchToBgr(T* pSrc, T* pDst, int width, int height, int pitch, cudaStream_t stream)
{
    launch(kernel_hsv2bgr<T>, pixelExtent(width, height), stream, pSrc, pDst, width, height, elements<T>(pitch));
    return VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexa_rgbToHsv_8u_c3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchToHsv(pSrc, pDst, width, height, pitch, sequence, stream);
}

VexaStatus vexa_rgbToHsv_32f_c3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchToHsv(pSrc, pDst, width, height, pitch, sequence, stream);
}

VexaStatus vexa_hsvToBgr_8u_c3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               cudaStream_t stream)
{
    return launchToBgr(pSrc, pDst, width, height, pitch, stream);
}

VexaStatus vexa_hsvToBgr_32f_c3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                cudaStream_t stream)
{
    return launchToBgr(pSrc, pDst, width, height, pitch, stream);
}

namespace {

using HsvTypes = Table<Row<u8, u8>, Row<f32, f32>>;

struct ToHsv {
    Conversion conversion;

    VexaStatus operator()(ChannelCount<3>, Row<u8, u8>) const { return conversion.by(vexa_rgbToHsv_8u_c3); }
    VexaStatus operator()(ChannelCount<3>, Row<f32, f32>) const { return conversion.by(vexa_rgbToHsv_32f_c3); }
};

struct ToBgr {
    const VexaImage& src;
    VexaImage& dst;
    platform::Stream stream;

    VexaStatus operator()(ChannelCount<3>, Row<u8, u8>) const { return call(vexa_hsvToBgr_8u_c3); }
    VexaStatus operator()(ChannelCount<3>, Row<f32, f32>) const { return call(vexa_hsvToBgr_32f_c3); }

    template <typename T>
    VexaStatus call(VexaStatus (*worker)(T*, T*, int, int, int, cudaStream_t)) const
    {
        return worker(src.ptr<T>(), dst.ptr<T>(), src.width(), rowsInside(dst, src), src.pitch(), stream);
    }
};

[[nodiscard]] VexaStatus checked(const VexaImage& src, VexaImage& dst)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    return matchOrCreate(dst, src, {same::width, same::height, same::channels}, src.size(), src.type());
}

}  // namespace

namespace vexa::colorOperations {

VexaStatus rgb2hsv(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = checked(src, dst)) return failed;
    return dispatch(HsvTypes{}, Channels<3>{}, VEXA_DEPTH_NOT_SUPPORTED_ERROR,
                    ToHsv{{src, dst, src.channelSeq(), handle(stream)}}, src, dst);
}

VexaStatus hsv2rgb(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = checked(src, dst)) return failed;
    return dispatch(HsvTypes{}, Channels<3>{}, VEXA_DEPTH_NOT_SUPPORTED_ERROR, ToBgr{src, dst, handle(stream)}, src,
                    dst);
}

}  // namespace vexa::colorOperations
