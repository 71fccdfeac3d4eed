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
inline constexpr int absDiff = 9;

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
