/// @file
/// Mirror images.

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "mirror.h"
#include "pitch.h"

using namespace vexa;

template <typename T, int C>
VEXA_KERNEL kernel_fliplr(T* src, T* dst, int width, int height, int pitch)
{
    mirrorPixels<C>(width, height, Plane<T>{dst, pitch}, Plane<const T>{src, pitch}, {true, false});
}

template <typename T, int C>
VEXA_KERNEL kernel_flipud(T* src, T* dst, int width, int height, int pitch)
{
    mirrorPixels<C>(width, height, Plane<T>{dst, pitch}, Plane<const T>{src, pitch}, {false, true});
}

template <typename T, int C>
VEXA_KERNEL kernel_flipboth(T* src, T* dst, int width, int height, int pitch)
{
    mirrorPixels<C>(width, height, Plane<T>{dst, pitch}, Plane<const T>{src, pitch}, {true, true});
}

namespace {

/// The body of the workers; the pitch of both images in bytes.
template <int C, typename T>
VexaStatus flip(T* src, T* dst, int width, int height, int pitch, VexaFlipType type, platform::Stream stream)
{
    const auto run = [&](auto* kernel) {
        launch(kernel, Extent{width, height}, stream, src, dst, width, height, elements<T>(pitch));
        return VEXA_SUCCESS;
    };
    switch (type) {
        case VEXA_FLIP_LEFT_RIGHT:
            return run(kernel_fliplr<T, C>);
        case VEXA_FLIP_BOTH_DIRECTIONS:
            return run(kernel_flipboth<T, C>);
        case VEXA_FLIP_UP_DOWN:
            return run(kernel_flipud<T, C>);
    }
    return VEXA_NOT_SUPPORTED_MODE_ERROR;
}

}  // namespace

template <int channels>
VexaStatus vexa_flip_16u(Vexa16u* src, Vexa16u* dst, int width, int height, int pitch, VexaFlipType type,
                         cudaStream_t stream)
{
    return flip<channels>(src, dst, width, height, pitch, type, stream);
}

template <int channels>
VexaStatus vexa_flip_32f(Vexa32f* src, Vexa32f* dst, int width, int height, int pitch, VexaFlipType type,
                         cudaStream_t stream)
{
    return flip<channels>(src, dst, width, height, pitch, type, stream);
}

namespace {

template <typename T>
using Flip = VexaStatus(T*, T*, int, int, int, VexaFlipType, cudaStream_t);

}  // namespace

template Flip<u16> vexa_flip_16u<1>;
template Flip<u16> vexa_flip_16u<3>;
template Flip<f32> vexa_flip_32f<1>;
template Flip<f32> vexa_flip_32f<3>;

namespace {

using FlippedTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

struct Flipping {
    const VexaImage& src;
    VexaImage& dst;
    VexaFlipType type;
    const VexaStream& stream;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        return withPitch(dst, src.pitch(), stream, [&](VexaImage& to) {
            return flip<C>(src.ptr<T>(), to.ptr<T>(), src.width(), src.height(), src.pitch(), type, handle(stream));
        });
    }
};

}  // namespace

namespace vexa::geometryTransforms {

VexaStatus flipImage(const VexaImage& src, VexaImage& dst, const VexaFlipType type, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = notInPlace(src, dst)) return failed;
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    return dispatch(FlippedTypes{}, Channels<1, 3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR, Flipping{src, dst, type, stream},
                    src);
}

}  // namespace vexa::geometryTransforms
