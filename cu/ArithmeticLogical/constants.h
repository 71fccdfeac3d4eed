/// @file
/// The kernels of an image and a constant, one for all channels or one for each. With `rev` the constant is the left
/// operand.

#pragma once

#include "kernels.h"
#include "operations.h"

namespace vexa {

/// An element and a constant, as an element: the value function of the general case.
template <typename D, int op, bool saturates, bool reversed>
struct CombineConstant {
    Range range;

    template <typename S>
    VEXA_DEVICE D operator()(S element, float constant) const
    {
        const auto value = static_cast<float>(element);
        return store<D, saturates>(reversed ? combine<op>(constant, value) : combine<op>(value, constant), range);
    }
};

/// What add, subtract and multiply do with a whole constant, in integers: D is an element of the destination. Bytes
/// then fill vector registers, as in combineInIntegers.
template <typename D, int op>
struct CombineWholeConstant {
    /// The constant in two parts that D can hold; beyond them the result saturates anyway.
    static VEXA_DEVICE D firstPart(float constant) { return saturate<D>(constant, {0, Element<D>::max}); }
    static VEXA_DEVICE D secondPart(float constant)
    {
        if constexpr (op == operation::add)
            return saturate<D>(-constant, {0, Element<D>::max});
        else
            return saturate<D>(constant - Element<D>::max, {0, Element<D>::max});
    }

    template <typename S>
    VEXA_DEVICE D operator()(S element, D first, D second) const
    {
        const D a = element;
        if constexpr (op == operation::add)
            return combineInIntegers<operation::subtract, D>(combineInIntegers<op, D>(a, first), second);
        else if constexpr (op == operation::subtract)
            return combineInIntegers<op, D>(first, combineInIntegers<op, D>(a, second));
        else
            return combineInIntegers<op, D>(a, first);
    }
};

template <int N>
VEXA_DEVICE bool areWhole(const PerChannel<float, N>& constants)
{
    bool whole = true;
    for (const float constant : constants.values) whole = whole && floorf(constant) == constant;
    return whole;
}

/// dst = src op constants, or constants op src if reversed.
template <int C, int op, bool sat, bool reversed, typename S, typename D, int N>
VEXA_DEVICE void mapWithConstants(int width, int height, Plane<D> dst, Range range, Plane<S> src,
                                  const PerChannel<float, N>& constants)
{
    if constexpr (isExactInIntegers<op, S, S, D>) {
        if (areWhole(constants)) {
            using Combine = CombineWholeConstant<D, op>;
            PerChannel<D, N> first;
            PerChannel<D, N> second;
            for (int c = 0; c < N; ++c) {
                first.values[c] = Combine::firstPart(constants.values[c]);
                second.values[c] = Combine::secondPart(constants.values[c]);
            }
            mapElements<C>(width, height, dst, Combine{}, src, first, second);
            return;
        }
    }
    mapElements<C>(width, height, dst, CombineConstant<D, op, sat, reversed>{range}, src, constants);
}

/// The constants of C channels out of the four that a launch passes.
template <int C>
VEXA_DEVICE PerChannel<float, C> constantsOf(float value0, float value1, float value2)
{
    if constexpr (C == 1)
        return {{value0}};
    else
        return {{value0, value1, value2}};
}

}  // namespace vexa

template <typename T, int C, int min, int max, int op, bool sat, bool rev>
VEXA_KERNEL kernel_arithmetic_constant_st(T* src, float value, T* dst, int width, int height, int pitch)
{
    using namespace vexa;
    mapWithConstants<C, op, sat, rev>(width, height, Plane<T>{dst, pitch}, {min, max}, Plane<T>{src, pitch},
                                      PerChannel<float, 1>{{value}});
}

template <typename S, typename D, int C, int min, int max, int op, bool sat, bool rev>
VEXA_KERNEL kernel_arithmetic_constant_dt(S* src, float value, D* dst, int width, int height, int srcPitch,
                                          int dstPitch)
{
    using namespace vexa;
    mapWithConstants<C, op, sat, rev>(width, height, Plane<D>{dst, dstPitch}, {min, max}, Plane<S>{src, srcPitch},
                                      PerChannel<float, 1>{{value}});
}

template <typename T, int C, int min, int max, int op, bool sat, bool rev>
VEXA_KERNEL kernel_arithmetic_scalar_st(T* src, float value0, float value1, float value2, float /*value3*/, T* dst,
                                        int width, int height, int pitch)
{
    using namespace vexa;
    mapWithConstants<C, op, sat, rev>(width, height, Plane<T>{dst, pitch}, {min, max}, Plane<T>{src, pitch},
                                      constantsOf<C>(value0, value1, value2));
}

template <typename S, typename D, int C, int min, int max, int op, bool sat, bool rev>
VEXA_KERNEL kernel_arithmetic_scalar_dt(S* src, float value0, float value1, float value2, float /*value3*/, D* dst,
                                        int width, int height, int srcPitch, int dstPitch)
{
    using namespace vexa;
    mapWithConstants<C, op, sat, rev>(width, height, Plane<D>{dst, dstPitch}, {min, max}, Plane<S>{src, srcPitch},
                                      constantsOf<C>(value0, value1, value2));
}
