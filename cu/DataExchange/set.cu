/// @file
/// The whole-image fills of VexaImage, with their workers. Two saturate the value; the one of a single channel takes
/// its low bits. That is meant.

#include <algorithm>

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "kernels.h"

using namespace vexa;

template <typename T, int C>
VEXA_KERNEL kernel_set_channel(T* dst, int width, int height, int pitch, int channel, T value)
{
    const Plane<T> plane{dst, pitch};
    forEachPixel(width, height, [=](int x, int y) { plane.row(y)[C * x + channel] = value; });
}

namespace {

template <typename T, int C>
VEXA_LOCAL_KERNEL setPixels(T* dst, int width, int height, int pitch, PerChannel<T, C> values)
{
    fillPixels<C>(width, height, Plane<T>{dst, pitch}, values);
}

template <typename T, int C>
VexaStatus launchSet(T* dst, int width, int height, int pitch, const PerChannel<T, C>& values, cudaStream_t stream)
{
    launch(setPixels<T, C>, elementExtent<C, T>(width, height), stream, dst, width, height, elements<T>(pitch), values);
    return VEXA_SUCCESS;
}

template <typename T>
PerChannel<T, 3> colorOf(const VexaScalar& values)
{
    return {{saturated<T>(values[0]), saturated<T>(values[1]), saturated<T>(values[2])}};
}

}  // namespace

VexaStatus vexa_set_8uc1(Vexa8u* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const Vexa64f value,
                         cudaStream_t stream)
{
    (void)platform::setBytes({dst, static_cast<std::size_t>(pitch)}, saturated<u8>(value),
                             {static_cast<std::size_t>(width), static_cast<std::size_t>(height)}, stream);
    return VEXA_SUCCESS;
}

VexaStatus vexa_set_8uc3(Vexa8u* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const VexaScalar& values,
                         cudaStream_t stream)
{
    return launchSet(dst, width, height, pitch, colorOf<u8>(values), stream);
}

VexaStatus vexa_set_16uc1(Vexa16u* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const Vexa64f value,
                          cudaStream_t stream)
{
    return launchSet(dst, width, height, pitch, PerChannel<u16, 1>{{saturated<u16>(value)}}, stream);
}

VexaStatus vexa_set_16uc3(Vexa16u* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const VexaScalar& values,
                          cudaStream_t stream)
{
    return launchSet(dst, width, height, pitch, colorOf<u16>(values), stream);
}

VexaStatus vexa_set_32fc1(Vexa32f* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const Vexa64f value,
                          cudaStream_t stream)
{
    return launchSet(dst, width, height, pitch, PerChannel<f32, 1>{{static_cast<f32>(value)}}, stream);
}

VexaStatus vexa_set_32fc3(Vexa32f* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const VexaScalar& values,
                          cudaStream_t stream)
{
    return launchSet(dst, width, height, pitch, colorOf<f32>(values), stream);
}

namespace {

using SetTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

/// Picks the worker.
struct Set {
    const VexaImage& image;
    platform::Stream stream;

    template <typename T, typename Value>
    VexaStatus with(VexaStatus (*worker)(T*, int, int, int, Value, cudaStream_t), Value value) const
    {
        return worker(image.ptr<T>(), image.width(), image.height(), image.pitch(), value, stream);
    }
};

struct SetGray {
    Set set;
    Vexa64f value;

    VexaStatus operator()(ChannelCount<1>, Row<u8>) const { return set.with(vexa_set_8uc1, value); }
    VexaStatus operator()(ChannelCount<1>, Row<u16>) const { return set.with(vexa_set_16uc1, value); }
    VexaStatus operator()(ChannelCount<1>, Row<f32>) const { return set.with(vexa_set_32fc1, value); }
};

struct SetColor {
    Set set;
    const VexaScalar& values;

    VexaStatus operator()(ChannelCount<3>, Row<u8>) const
    {
        return set.with<u8, const VexaScalar&>(vexa_set_8uc3, values);
    }
    VexaStatus operator()(ChannelCount<3>, Row<u16>) const
    {
        return set.with<u16, const VexaScalar&>(vexa_set_16uc3, values);
    }
    VexaStatus operator()(ChannelCount<3>, Row<f32>) const
    {
        return set.with<f32, const VexaScalar&>(vexa_set_32fc3, values);
    }
};

struct SetChannel {
    const VexaImage& image;
    Vexa32s channel;
    Vexa64f value;
    platform::Stream stream;

    /// The channel may lie outside the pixel. Stores that would leave their row fall away.
    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        const long long wide = channel;
        const auto first = static_cast<int>(wide < 0 ? std::min<long long>((C - 1 - wide) / C, image.width()) : 0);
        const auto beyond = static_cast<int>(wide < 0 ? 0 : std::min<long long>(wide / C, image.width()));
        const int count = image.width() - first - beyond;
        launch(kernel_set_channel<T, C>, Extent{count, image.height()}, stream, image.ptr<T>() + C * first, count,
               image.height(), pitchOf<T>(image), channel, lowBits<T>(value));
    }
};

}  // namespace

VexaStatus VexaImage::set(const Vexa64f value, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(*this)) return failed;
    if (_channels == 3) return set(VexaScalar(value), stream);
    return dispatch(SetTypes{}, Channels<1>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR, SetGray{{*this, handle(stream)}, value},
                    *this);
}

VexaStatus VexaImage::set(const VexaScalar& values, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(*this)) return failed;
    if (_channels != 3) return set(values[0], stream);
    return dispatch(SetTypes{}, Channels<3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR, SetColor{{*this, handle(stream)}, values},
                    *this);
}

VexaStatus VexaImage::set(const Vexa32s channel, const Vexa64f value, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(*this)) return failed;
    return dispatch(SetTypes{}, Channels<1, 3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    SetChannel{*this, channel, value, handle(stream)}, *this);
}
