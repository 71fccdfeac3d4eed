/// @file
/// Arithmetic of an image and a constant: image + c, c - image, image * c, c / image. One body serves all four.

#include "arguments.h"
#include "checks.h"
#include "constants.h"
#include "dispatch.h"

using namespace vexa;

namespace {

// clang-format off
using ConstantTypes = Table<
    //  src  dst
    Row<u8,  u8 >,
    Row<u16, u16>,
    Row<f32, f32>,
    Row<u8,  u16>,
    Row<u8,  f32>,
    Row<u16, f32>>;
// clang-format on

/// With one value for all channels.
template <int op, bool reversed>
struct WithConstant {
    const VexaImage& src;
    float value;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T, T>) const
    {
        const int rows = rowsInside(dst, src);
        launch(
            kernel_arithmetic_constant_st<T, C, Element<T>::min, Element<T>::max, op, Element<T>::saturates, reversed>,
            elementExtent<C, T>(src.width(), rows), stream, src.ptr<T>(), value, dst.ptr<T>(), src.width(), rows,
            pitchOf<T>(src));
    }

    template <int C, typename S, typename D>
    void operator()(ChannelCount<C>, Row<S, D>) const
    {
        launch(kernel_arithmetic_constant_dt<S, D, C, Element<D>::min, Element<D>::max, op, Element<D>::saturates,
                                             reversed>,
               elementExtent<C, S, D>(src.width(), src.height()), stream, src.ptr<S>(), value, dst.ptr<D>(),
               src.width(), src.height(), pitchOf<S>(src), pitchOf<D>(dst));
    }
};

/// With one value a channel.
template <int op, bool reversed>
struct WithScalar {
    const VexaImage& src;
    float values[4];
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T, T>) const
    {
        const int rows = rowsInside(dst, src);
        launch(kernel_arithmetic_scalar_st<T, C, Element<T>::min, Element<T>::max, op, Element<T>::saturates, reversed>,
               elementExtent<C, T>(src.width(), rows), stream, src.ptr<T>(), values[0], values[1], values[2], values[3],
               dst.ptr<T>(), src.width(), rows, pitchOf<T>(src));
    }

    template <int C, typename S, typename D>
    void operator()(ChannelCount<C>, Row<S, D>) const
    {
        launch(
            kernel_arithmetic_scalar_dt<S, D, C, Element<D>::min, Element<D>::max, op, Element<D>::saturates, reversed>,
            elementExtent<C, S, D>(src.width(), src.height()), stream, src.ptr<S>(), values[0], values[1], values[2],
            values[3], dst.ptr<D>(), src.width(), src.height(), pitchOf<S>(src), pitchOf<D>(dst));
    }
};

/// `format` tells an empty destination what to become besides its size: a type, or a depth and channels, which drops
/// the sign.
template <typename Work, typename... Format>
VexaStatus combineImage(const VexaImage& src, VexaImage& dst, const Work& work, const Format&... format)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::channels}, src.size(), format...))
        return failed;
    return dispatch(ConstantTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR, work, src, dst);
}

template <int op, bool reversed>
WithConstant<op, reversed> work(const VexaImage& src, Vexa64f value, VexaImage& dst, const VexaStream& stream)
{
    return {src, static_cast<float>(value), dst, handle(stream)};
}

template <int op, bool reversed>
WithScalar<op, reversed> work(const VexaImage& src, const VexaScalar& values, VexaImage& dst, const VexaStream& stream)
{
    return {src,
            {static_cast<float>(values[0]), static_cast<float>(values[1]), static_cast<float>(values[2]),
             static_cast<float>(values[3])},
            dst,
            handle(stream)};
}

}  // namespace

namespace vexa::arithmeticLogical {

VexaStatus add(const VexaImage& src, const Vexa64f value, VexaImage& dst, const VexaStream& stream)
{
    return combineImage(src, dst, work<operation::add, false>(src, value, dst, stream), src.depth(), src.channels());
}

VexaStatus subtract(const Vexa64f value, const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return combineImage(src, dst, work<operation::subtract, true>(src, value, dst, stream), src.type());
}

VexaStatus multiply(const VexaImage& src, const Vexa64f value, VexaImage& dst, const VexaStream& stream)
{
    return combineImage(src, dst, work<operation::multiply, false>(src, value, dst, stream), src.depth(),
                        src.channels());
}

VexaStatus divide(const Vexa64f value, const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return combineImage(src, dst, work<operation::divide, true>(src, value, dst, stream), src.depth(), src.channels());
}

VexaStatus add(const VexaImage& src, const VexaScalar& values, VexaImage& dst, const VexaStream& stream)
{
    return combineImage(src, dst, work<operation::add, false>(src, values, dst, stream), src.type());
}

VexaStatus subtract(const VexaScalar& values, const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return combineImage(src, dst, work<operation::subtract, true>(src, values, dst, stream), src.type());
}

VexaStatus multiply(const VexaImage& src, const VexaScalar& values, VexaImage& dst, const VexaStream& stream)
{
    return combineImage(src, dst, work<operation::multiply, false>(src, values, dst, stream), src.type());
}

VexaStatus divide(const VexaScalar& values, const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return combineImage(src, dst, work<operation::divide, true>(src, values, dst, stream), src.type());
}

}  // namespace vexa::arithmeticLogical
