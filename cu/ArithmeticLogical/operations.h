/// @file
/// The formulas of elementwise arithmetic, by the operation code that kernels carry as a template parameter.

#pragma once

#include <type_traits>

#include "arithmetic.h"

namespace vexa {

/// Operation codes; one numbering serves all arithmetic and logic kernels.
namespace operation {

inline constexpr int add = 0;
inline constexpr int subtract = 1;
inline constexpr int multiply = 2;
inline constexpr int divide = 3;
inline constexpr int bitAnd = 4;
inline constexpr int bitOr = 5;
inline constexpr int bitXor = 6;
inline constexpr int power = 8;
inline constexpr int absDiff = 9;
inline constexpr int shiftLeft = 10;
inline constexpr int shiftRight = 11;
inline constexpr int exponential = 12;
inline constexpr int abs = 13;
inline constexpr int squareRoot = 14;
inline constexpr int cubeRoot = 15;
inline constexpr int floor = 20;
inline constexpr int ceil = 21;
inline constexpr int round = 22;

}  // namespace operation

/// a op b in 32-bit float.
template <int op>
VEXA_DEVICE float combine(float a, float b)
{
    if constexpr (op == operation::add)
        return a + b;
    else if constexpr (op == operation::subtract)
        return a - b;
    else if constexpr (op == operation::multiply)
        return a * b;
    else if constexpr (op == operation::divide)
        return a * reciprocal(b);
    else if constexpr (op == operation::absDiff)
        return fabsf(a - b);
    else if constexpr (op == operation::power)
        return power(a, b);
}

/// The cube root: a first guess by logarithm, one step of Newton's iteration.
VEXA_DEVICE float cubeRoot(float x)
{
    constexpr float third = 0.333333343F;
    const float magnitude = fabsf(x);
    const float guess = power(magnitude, third);
    const float root = guess - (guess - magnitude * reciprocal(guess * guess)) * third;
    const float withSign = x < 0.0F ? -root : root;
    // Only zero and the infinities equal their double; they are their own roots.
    const float twice = x + x;
    return twice == x ? twice : withSign;
}

/// A function of one element, in 32-bit float.
template <int op>
VEXA_DEVICE float apply(float a)
{
    if constexpr (op == operation::exponential)
        return exp2(a * 1.442695022F);
    else if constexpr (op == operation::squareRoot)
        return squareRoot(a);
    else if constexpr (op == operation::cubeRoot)
        return cubeRoot(a);
    else if constexpr (op == operation::floor)
        return floorf(a);
    else if constexpr (op == operation::ceil)
        return ceilf(a);
    else if constexpr (op == operation::round)
        return roundToEven(a);
}

/// Whether integer arithmetic in D gives what the float rule gives for elements A and B: D holds both, and the result
/// is whole and, where it does not saturate, exact in float.
template <int op, typename A, typename B, typename D>
inline constexpr bool isExactInIntegers =
    std::conjunction_v<std::is_integral<A>, std::is_integral<B>, std::is_integral<D>,
                       std::bool_constant<op != operation::divide && sizeof(D) >= sizeof(A) && sizeof(D) >= sizeof(B)>>;

/// a op b saturated to the whole range of an unsigned type, without leaving its width where that is possible: bytes
/// then fill vector registers, which makes 8-bit add three times as fast as by way of float.
template <int op, typename D>
VEXA_DEVICE D combineInIntegers(D a, D b)
{
    if constexpr (op == operation::add) {
        const D room = static_cast<D>(~b);
        return static_cast<D>((a < room ? a : room) + b);
    } else if constexpr (op == operation::subtract) {
        return static_cast<D>((a > b ? a : b) - b);
    } else if constexpr (op == operation::multiply) {
        const unsigned product = static_cast<unsigned>(a) * static_cast<unsigned>(b);
        return static_cast<D>(product < Element<D>::max ? product : Element<D>::max);
    } else if constexpr (op == operation::absDiff) {
        return static_cast<D>((a > b ? a : b) - (a < b ? a : b));
    }
}

/// a op b as an element: the value function of the arithmetic kernels.
template <typename D, int op, bool saturates>
struct Combine {
    Range range;

    template <typename A, typename B>
    VEXA_DEVICE D operator()(A a, B b) const
    {
        if constexpr (isExactInIntegers<op, A, B, D>)
            return combineInIntegers<op, D>(a, b);
        else
            return store<D, saturates>(combine<op>(static_cast<float>(a), static_cast<float>(b)), range);
    }
};

}  // namespace vexa
