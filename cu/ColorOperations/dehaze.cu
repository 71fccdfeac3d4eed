/// @file
/// Haze off by the dark channel prior, with the atmospheric light given, and low light by haze off the negative.

#include "arguments.h"
#include "arithmetic.h"
#include "checks.h"
#include "dispatch.h"
#include "pitch.h"
#include "windows.h"

using namespace vexa;

namespace {

/// The atmospheric light of each slot.
struct Light {
    int slot[3];
};

/// An image as it is, or its negative.
template <typename T, bool negative>
struct Seen {
    VEXA_DEVICE T operator()(T element) const { return negative ? static_cast<T>(Element<T>::max - element) : element; }
};

/// The darkest channel of a pixel, as a share of the light.
template <typename T, bool negative>
struct DarkChannel {
    float share0;
    float share1;
    float share2;

    VEXA_DEVICE explicit DarkChannel(Light light)
        : share0(reciprocal(static_cast<float>(light.slot[0]))),
          share1(reciprocal(static_cast<float>(light.slot[1]))),
          share2(reciprocal(static_cast<float>(light.slot[2])))
    {}

    VEXA_DEVICE Pixel<float, 1> operator()(Pixel<T, 3> pixel) const
    {
        const Seen<T, negative> seen;
        const float first = static_cast<float>(seen(pixel.element[1])) * share1;
        const float second = static_cast<float>(seen(pixel.element[2])) * share2;
        const float third = static_cast<float>(seen(pixel.element[0])) * share0;
        const float darker = second < first ? second : first;
        return {{third < darker ? third : darker}};
    }
};

/// An image of which only the interior counts as such: a window reads the pixels around that.
struct Surrounded {
    const float* pixels;
    int width;
    int height;
    int pitch;

    VEXA_DEVICE float operator()(int x, int y) const { return row(y)[x]; }
    VEXA_DEVICE const float* row(int y) const { return pixels + static_cast<std::ptrdiff_t>(y) * pitch; }
};

/// The reciprocal of how much of the scene passes through the haze, from the dark channel around a pixel: its mean
/// where the pixel is flat or bright, its minimum where it is darker than its surroundings.
template <typename Window, std::size_t... I>
VEXA_DEVICE float perTransmission(const Window& dark, float highest, std::index_sequence<I...>)
{
    float sum = 0.0F;
    float least = highest;
    const auto take = [&](float value) {
        sum += value;
        least = value < least ? value : least;
    };
    // Column by column, in which order the sum is rounded.
    (take(dark(static_cast<int>(I / 3) - 1, static_cast<int>(I % 3) - 1)), ...);
    const float mean = sum * 0.111111112F;
    const float haze = dark(0, 0) >= mean ? mean : least;
    // Not fused: haze of 5/4 lets nothing through, neither a little nor less than that.
    const float transmission = 1.0F - 0.8F * haze;
    return reciprocal(transmission < 1.0F ? transmission : 1.0F);
}

/// Takes the light that the haze has added off an element.
template <typename T, bool negative>
struct Recover {
    Range range;

    VEXA_DEVICE T operator()(T element, int light, float perTransmission) const
    {
        const Seen<T, negative> seen;
        // Unsigned, as the light may be any integer.
        const auto below = static_cast<int>(static_cast<unsigned>(seen(element)) - static_cast<unsigned>(light));
        const float scene = multiplyAdd(static_cast<float>(below), perTransmission, static_cast<float>(light));
        return seen(saturate<T>(scene, range));
    }
};

template <bool negative, typename T>
VEXA_DEVICE void makeDark(T* src, float* dark, Light light, int width, int height, int pitch, int darkPitch)
{
    mapPixels(width, height, Interleaved<float, 1>{dark, darkPitch}, DarkChannel<T, negative>(light),
              Interleaved<T, 3>{src, pitch});
}

template <bool negative, typename T>
VEXA_DEVICE void recoverInterior(T* src, T* dst, float* dark, Light light, int width, int height, int pitch,
                                 int darkPitch)
{
    const Recover<T, negative> recover{{0, Element<T>::max}};
    const Interleaved<T, 3> from{src + pitch + 3, pitch};
    const Interleaved<T, 3> to{dst + pitch + 3, pitch};
    forEachWindow<Reach<1, 1, 1, 1>, float>(
        Surrounded{dark + darkPitch + 1, width - 2, height - 2, darkPitch}, [=](int x, int y, const auto& window) {
            const float scale = perTransmission(window, recover.range.highest, std::make_index_sequence<9>());
            const Pixel<T, 3> pixel = from.row(y).load(x);
            to.row(y).store(
                x, {{recover(pixel.element[0], light.slot[0], scale), recover(pixel.element[1], light.slot[1], scale),
                     recover(pixel.element[2], light.slot[2], scale)}});
        });
}

}  // namespace

VEXA_KERNEL dark_Krnl2(Vexa8u* src, float* dark, int max0, int max1, int max2, int width, int height, int pitch,
                       int darkPitch)
{
    makeDark<false>(src, dark, {{max0, max1, max2}}, width, height, pitch, darkPitch);
}

VEXA_KERNEL dark_Krnl2_16(Vexa16u* src, float* dark, int max0, int max1, int max2, int width, int height, int pitch,
                          int darkPitch)
{
    makeDark<false>(src, dark, {{max0, max1, max2}}, width, height, pitch, darkPitch);
}

VEXA_KERNEL dehazeKrnl2(Vexa8u* src, Vexa8u* dst, float* dark, int max0, int max1, int max2, int width, int height,
                        int pitch, int darkPitch)
{
    recoverInterior<false>(src, dst, dark, {{max0, max1, max2}}, width, height, pitch, darkPitch);
}

VEXA_KERNEL dehazeKrnl2_16(Vexa16u* src, Vexa16u* dst, float* dark, int max0, int max1, int max2, int width, int height,
                           int pitch, int darkPitch)
{
    recoverInterior<false>(src, dst, dark, {{max0, max1, max2}}, width, height, pitch, darkPitch);
}

namespace {

/// The light is white, and so is the negative of black.
template <typename T>
VEXA_LOCAL_KERNEL darkOfNegative(T* src, float* dark, int width, int height, int pitch, int darkPitch)
{
    constexpr int white = Element<T>::max;
    makeDark<true>(src, dark, {{white, white, white}}, width, height, pitch, darkPitch);
}

/// The negative of the recovered negative; of the ring that nothing is recovered for, the negative of the image. That
/// is meant.
template <typename T>
VEXA_LOCAL_KERNEL recoverNegative(T* src, T* dst, float* dark, int width, int height, int pitch, int darkPitch)
{
    constexpr int white = Element<T>::max;
    recoverInterior<true>(src, dst, dark, {{white, white, white}}, width, height, pitch, darkPitch);
    const Interleaved<T, 3> from{src, pitch};
    const Interleaved<T, 3> to{dst, pitch};
    forEachPixelOutside(Interior{1, width - 1, 1, height - 1}, width, height, [=](int x, int y) {
        const Seen<T, true> negative;
        const Pixel<T, 3> pixel = from.row(y).load(x);
        to.row(y).store(x, {{negative(pixel.element[0]), negative(pixel.element[1]), negative(pixel.element[2])}});
    });
}

template <typename T>
using DarkKernel = void (*)(T*, float*, int, int, int, int, int, int, int);
template <typename T>
using RecoveryKernel = void (*)(T*, T*, float*, int, int, int, int, int, int, int);

template <typename T>
VexaStatus launchDehaze(DarkKernel<T> makeDark, RecoveryKernel<T> recover, T* src, T* dst, Light light, int width,
                        int height, int pitch, cudaStream_t stream)
{
    const VexaImage dark(width, height, VEXA_32FC1);
    launch(makeDark, pixelExtent(width, height), stream, src, dark.ptr<f32>(), light.slot[0], light.slot[1],
           light.slot[2], width, height, elements<T>(pitch), pitchOf<f32>(dark));
    launch(recover, Extent{width, height}, stream, src, dst, dark.ptr<f32>(), light.slot[0], light.slot[1],
           light.slot[2], width, height, elements<T>(pitch), pitchOf<f32>(dark));
    return VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexa_dehaze_8u(Vexa8u* src, Vexa8u* dst, int max0, int max1, int max2, Vexa32s width, Vexa32s height,
                          Vexa32s pitch, cudaStream_t stream)
{
    return launchDehaze(dark_Krnl2, dehazeKrnl2, src, dst, {{max0, max1, max2}}, width, height, pitch, stream);
}

VexaStatus vexa_dehaze_16u(Vexa16u* src, Vexa16u* dst, int max0, int max1, int max2, Vexa32s width, Vexa32s height,
                           Vexa32s pitch, cudaStream_t stream)
{
    return launchDehaze(dark_Krnl2_16, dehazeKrnl2_16, src, dst, {{max0, max1, max2}}, width, height, pitch, stream);
}

namespace {

using IntegerTypes = Table<Row<u8>, Row<u16>>;

/// Picks the worker.
struct Dehaze {
    const VexaImage& src;
    VexaImage& dst;
    Light light;
    const VexaStream& stream;

    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return call(vexa_dehaze_8u); }
    VexaStatus operator()(ChannelCount<3>, Row<u16>) const { return call(vexa_dehaze_16u); }

    template <typename T>
    VexaStatus call(VexaStatus (*worker)(T*, T*, int, int, int, int, int, int, cudaStream_t)) const
    {
        return withPitch(dst, src.pitch(), stream, [&](VexaImage& to) {
            return worker(src.ptr<T>(), to.ptr<T>(), light.slot[0], light.slot[1], light.slot[2], src.width(),
                          src.height(), src.pitch(), handle(stream));
        });
    }
};

/// What inverting, dehazing and inverting again gives, without the two copies and passes of that.
struct Brighten {
    const VexaImage& src;
    VexaImage& dst;
    const VexaStream& stream;

    template <typename T>
    VexaStatus operator()(ChannelCount<3>, Row<T>) const
    {
        return withPitch(dst, src.pitch(), stream, [&](VexaImage& to) {
            const VexaImage dark(src.width(), src.height(), VEXA_32FC1);
            launch(darkOfNegative<T>, pixelExtent(src.width(), src.height()), handle(stream), src.ptr<T>(),
                   dark.ptr<f32>(), src.width(), src.height(), pitchOf<T>(src), pitchOf<f32>(dark));
            launch(recoverNegative<T>, Extent{src.width(), src.height()}, handle(stream), src.ptr<T>(), to.ptr<T>(),
                   dark.ptr<f32>(), src.width(), src.height(), pitchOf<T>(src), pitchOf<f32>(dark));
            return VEXA_SUCCESS;
        });
    }
};

/// The ring that dehaze does not write.
void clearRing(VexaImage& image, platform::Stream stream)
{
    const auto pitch = static_cast<std::size_t>(image.pitch());
    const std::size_t pixelBytes = static_cast<std::size_t>(image.channels()) * image.depth() / 8;
    const std::size_t rowBytes = static_cast<std::size_t>(image.width()) * pixelBytes;
    const auto height = static_cast<std::size_t>(image.height());
    auto* const first = static_cast<char*>(image.ptr());
    const auto clearAt = [&](std::size_t offset, platform::Extent2D extent) {
        (void)platform::setBytes({first + offset, pitch}, 0, extent, stream);
    };
    clearAt(0, {rowBytes, 1});
    clearAt((height - 1) * pitch, {rowBytes, 1});
    clearAt(0, {pixelBytes, height});
    clearAt(rowBytes - pixelBytes, {pixelBytes, height});
}

}  // namespace

namespace vexa::colorOperations {

VexaStatus dehaze(const VexaImage& src, VexaImage& dst, int max0, int max1, int max2, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    const bool creates = !dst.isInitialized();
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    if (creates && dst.isInitialized()) clearRing(dst, handle(stream));
    return dispatch(IntegerTypes{}, Channels<3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    Dehaze{src, dst, {{max0, max1, max2}}, stream}, src);
}

VexaStatus lowlight(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    return dispatch(IntegerTypes{}, Channels<3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR, Brighten{src, dst, stream}, src);
}

}  // namespace vexa::colorOperations
