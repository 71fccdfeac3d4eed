/// @file
/// Mathematical functions of one image, in 32-bit float by fast approximations. All but abs write floats, and do not
/// compare the size of the destination: they compute what both images hold.

#include <algorithm>
#include <type_traits>

#include "arguments.h"
#include "checks.h"
#include "constants.h"
#include "dispatch.h"

using namespace vexa;

namespace {

template <int op>
struct Apply {
    template <typename S>
    VEXA_DEVICE float operator()(S element) const
    {
        return apply<op>(static_cast<float>(element));
    }
};

/// Unsigned elements are their own absolute value.
template <typename T>
struct Absolute {
    VEXA_DEVICE T operator()(T element) const
    {
        if constexpr (std::is_integral_v<T>)
            return element;
        else
            return fabsf(element);
    }
};

}  // namespace

/// The types are one, and so are the pitches.
template <typename T, int C, int min, int max, int op, bool sat>
VEXA_KERNEL kernel_arithmetic_siso(T* src, T* dst, int width, int height, int pitch)
{
    static_assert(op == operation::abs);
    mapElements<C>(width, height, Plane<T>{dst, pitch}, Absolute<T>{}, Plane<T>{src, pitch});
}

template <typename T, int C, int op>
VEXA_KERNEL kernel_arithmetic_siso(T* src, float* dst, int width, int height, int srcPitch, int dstPitch)
{
    mapElements<C>(width, height, Plane<float>{dst, dstPitch}, Apply<op>{}, Plane<T>{src, srcPitch});
}

namespace {

using SameTypes = Table<Row<u8, u8>, Row<u16, u16>, Row<f32, f32>>;
using ToFloat = Table<Row<u8, f32>, Row<u16, f32>, Row<f32, f32>>;
using FloatToFloat = Table<Row<f32, f32>>;

struct AbsoluteValues {
    const VexaImage& src;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T, T>) const
    {
        const int rows = rowsInside(dst, src);
        launch(kernel_arithmetic_siso<T, C, Element<T>::min, Element<T>::max, operation::abs, Element<T>::saturates>,
               elementExtent<C, T>(src.width(), rows), stream, src.ptr<T>(), dst.ptr<T>(), src.width(), rows,
               pitchOf<T>(src));
    }
};

/// What both images hold.
VexaSize commonSize(const VexaImage& a, const VexaImage& b)
{
    return {std::min(a.width(), b.width()), std::min(a.height(), b.height())};
}

template <int op>
struct Function {
    const VexaImage& src;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename S>
    void operator()(ChannelCount<C>, Row<S, f32>) const
    {
        const VexaSize size = commonSize(src, dst);
        launch(kernel_arithmetic_siso<S, C, op>, elementExtent<C, S, f32>(size.width, size.height), stream,
               src.ptr<S>(), dst.ptr<f32>(), size.width, size.height, pitchOf<S>(src), pitchOf<f32>(dst));
    }
};

struct Power {
    const VexaImage& src;
    float power;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename S>
    void operator()(ChannelCount<C>, Row<S, f32>) const
    {
        const VexaSize size = commonSize(src, dst);
        launch(kernel_arithmetic_constant_dt<S, f32, C, 0, 0, operation::power, false, false>,
               elementExtent<C, S, f32>(size.width, size.height), stream, src.ptr<S>(), power, dst.ptr<f32>(),
               size.width, size.height, pitchOf<S>(src), pitchOf<f32>(dst));
    }
};

/// The checks of all that write floats. `format` tells an empty destination what to become besides its size.
template <typename Types, typename Work, typename... Format>
VexaStatus computeFloats(Types types, const VexaImage& src, VexaImage& dst, const Work& work, const Format&... format)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreate(
            dst, src, {same::channels, isFloat.giving(VEXA_DEPTH_NOT_SUPPORTED_ERROR)}, src.size(), format...))
        return failed;
    return dispatch(types, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR, work, src, dst);
}

template <int op>
VexaStatus computeFunction(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return computeFloats(ToFloat{}, src, dst, Function<op>{src, dst, handle(stream)}, 32, src.channels());
}

template <int op>
VexaStatus roundElements(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return computeFloats(FloatToFloat{}, src, dst, Function<op>{src, dst, handle(stream)}, src.type());
}

}  // namespace

namespace vexa::arithmeticLogical {

VexaStatus abs(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::type, same::width, same::height}, src.size(), src.type()))
        return failed;
    return dispatch(SameTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    AbsoluteValues{src, dst, handle(stream)}, src, dst);
}

VexaStatus exp(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return computeFunction<operation::exponential>(src, dst, stream);
}

VexaStatus sqrt(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return computeFunction<operation::squareRoot>(src, dst, stream);
}

VexaStatus cbrt(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return computeFunction<operation::cubeRoot>(src, dst, stream);
}

VexaStatus pow(const VexaImage& src, const Vexa64f power, VexaImage& dst, const VexaStream& stream)
{
    return computeFloats(ToFloat{}, src, dst, Power{src, static_cast<float>(power), dst, handle(stream)}, 32,
                         src.channels());
}

VexaStatus floor(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return roundElements<operation::floor>(src, dst, stream);
}

VexaStatus ceil(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return roundElements<operation::ceil>(src, dst, stream);
}

VexaStatus round(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    return roundElements<operation::round>(src, dst, stream);
}

}  // namespace vexa::arithmeticLogical
