/// @file
/// Bounds that callers give as floating-point numbers, as elements.

#pragma once

#include <limits>
#include <type_traits>

namespace vexa {

/// A bound as an element. For integers it is truncated to 32 bits without sign, negative values and NaN to 0, and keeps
/// the low bits of that: 300 is 44 for 8-bit elements.
template <typename T>
T boundOf(double value)
{
    if constexpr (std::is_integral_v<T>) {
        constexpr double top = std::numeric_limits<unsigned>::max();
        const double inside = value > 0 ? (value < top ? value : top) : 0;
        return static_cast<T>(static_cast<unsigned>(inside));
    } else {
        return static_cast<T>(value);
    }
}

}  // namespace vexa
