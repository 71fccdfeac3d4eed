/// @file
/// Bitwise logic and shifts, of unsigned integer elements as they are.

#include <algorithm>

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "kernels.h"
#include "operations.h"

using namespace vexa;

namespace {

/// a op b, bit by bit.
template <typename T, int op>
struct Bitwise {
    VEXA_DEVICE T operator()(T a, T b) const
    {
        if constexpr (op == operation::bitAnd)
            return static_cast<T>(a & b);
        else if constexpr (op == operation::bitOr)
            return static_cast<T>(a | b);
        else
            return static_cast<T>(a ^ b);
    }
};

/// An element shifted as a 32-bit word. Shifts outside 0 to 31 empty the word.
template <typename T, int op, int max>
struct Shift {
    unsigned bits;
    unsigned mask;

    static VEXA_DEVICE Shift by(int bits)
    {
        const auto count = static_cast<unsigned>(bits);
        return {count & 31U, count < 32U ? ~0U : 0U};
    }

    VEXA_DEVICE T operator()(T element) const
    {
        const unsigned word = element;
        if constexpr (op == operation::shiftRight) return static_cast<T>((word >> bits) & mask);
        // Read as signed, so that a word with its top bit set stores 0.
        const int shifted = static_cast<int>((word << bits) & mask);
        const int notNegative = shifted < 0 ? 0 : shifted;
        return static_cast<T>(notNegative > max ? max : notNegative);
    }
};

}  // namespace

template <typename T, int C, int op, int max>
VEXA_KERNEL kernel_logical_b(T* src1, T* src2, T* dst, int width, int height, int pitch)
{
    mapElements<C>(width, height, Plane<T>{dst, pitch}, Bitwise<T, op>{}, Plane<T>{src1, pitch}, Plane<T>{src2, pitch});
}

template <typename T, int C, int op, int max>
VEXA_KERNEL kernel_logical_constant(T* src, int value, T* dst, int width, int height, int pitch)
{
    const Plane<T> from{src, pitch};
    const Plane<T> to{dst, pitch};
    if constexpr (op == operation::shiftLeft || op == operation::shiftRight)
        mapElements<C>(width, height, to, Shift<T, op, max>::by(value), from);
    else
        mapElements<C>(width, height, to, Bitwise<T, op>{}, from, PerChannel<T, 1>{{static_cast<T>(value)}});
}

template <typename T, int C>
VEXA_KERNEL kernel_not(T* src, T* dst, int width, int height, int pitch)
{
    mapElements<C>(
        width, height, Plane<T>{dst, pitch}, [](T value) { return static_cast<T>(~value); }, Plane<T>{src, pitch});
}

namespace {

using LogicTypes = Table<Row<u8>, Row<u16>>;

template <int op>
struct LogicOfTwo {
    const VexaImage& src1;
    const VexaImage& src2;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        const int rows = std::min(rowsInside(src2, src1), rowsInside(dst, src1));
        launch(kernel_logical_b<T, C, op, Element<T>::max>, elementExtent<C, T>(src1.width(), rows), stream,
               src1.ptr<T>(), src2.ptr<T>(), dst.ptr<T>(), src1.width(), rows, pitchOf<T>(src1));
    }
};

template <int op>
struct LogicWithConstant {
    const VexaImage& src;
    int value;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        const int rows = rowsInside(dst, src);
        launch(kernel_logical_constant<T, C, op, Element<T>::max>, elementExtent<C, T>(src.width(), rows), stream,
               src.ptr<T>(), value, dst.ptr<T>(), src.width(), rows, pitchOf<T>(src));
    }
};

struct Complement {
    const VexaImage& src;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        const int rows = rowsInside(dst, src);
        launch(kernel_not<T, C>, elementExtent<C, T>(src.width(), rows), stream, src.ptr<T>(), dst.ptr<T>(),
               src.width(), rows, pitchOf<T>(src));
    }
};

template <int op>
VexaStatus combineBits(const VexaImage& src1, const VexaImage& src2, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src1, src2)) return failed;
    if (const VexaStatus failed = match(src2, src1, {same::width, same::height, same::depth, same::channels}))
        return failed;
    if (const VexaStatus failed = matchOrCreate(dst, src1, {same::width, same::height, same::depth, same::channels},
                                                src1.size(), src1.depth(), src1.channels()))
        return failed;
    return dispatch(LogicTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    LogicOfTwo<op>{src1, src2, dst, handle(stream)}, src1);
}

template <int op>
VexaStatus dispatchConstant(const VexaImage& src, int value, VexaImage& dst, const VexaStream& stream)
{
    return dispatch(LogicTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    LogicWithConstant<op>{src, value, dst, handle(stream)}, src);
}

template <int op>
VexaStatus combineBits(const VexaImage& src, int value, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreate(dst, src, {same::width, same::height, same::depth, same::channels},
                                                src.size(), src.depth(), src.channels()))
        return failed;
    return dispatchConstant<op>(src, value, dst, stream);
}

}  // namespace

namespace vexa::arithmeticLogical {

VexaStatus AND(const VexaImage& src1, const VexaImage& src2, VexaImage& dst, const VexaStream& stream)
{
    return combineBits<operation::bitAnd>(src1, src2, dst, stream);
}

VexaStatus OR(const VexaImage& src1, const VexaImage& src2, VexaImage& dst, const VexaStream& stream)
{
    return combineBits<operation::bitOr>(src1, src2, dst, stream);
}

VexaStatus XOR(const VexaImage& src1, const VexaImage& src2, VexaImage& dst, const VexaStream& stream)
{
    return combineBits<operation::bitXor>(src1, src2, dst, stream);
}

VexaStatus AND(const VexaImage& src, const int value, VexaImage& dst, const VexaStream& stream)
{
    return combineBits<operation::bitAnd>(src, value, dst, stream);
}

VexaStatus OR(const VexaImage& src, const int value, VexaImage& dst, const VexaStream& stream)
{
    return combineBits<operation::bitOr>(src, value, dst, stream);
}

VexaStatus XOR(const VexaImage& src, const int value, VexaImage& dst, const VexaStream& stream)
{
    return combineBits<operation::bitXor>(src, value, dst, stream);
}

VexaStatus NOT(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::type}, src.size(), src.type()))
        return failed;
    return dispatch(LogicTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR, Complement{src, dst, handle(stream)},
                    src);
}

// The shifts differ in what they compare and in what an empty destination becomes; that is meant.

VexaStatus SHL(const VexaImage& src, const int value, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    return dispatchConstant<operation::shiftLeft>(src, value, dst, stream);
}

VexaStatus SHR(const VexaImage& src, const int value, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::type}, src.size(), src.depth(), src.channels()))
        return failed;
    return dispatchConstant<operation::shiftRight>(src, value, dst, stream);
}

}  // namespace vexa::arithmeticLogical
