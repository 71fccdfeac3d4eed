/// @file
/// The bits of an element that carry data.

#pragma once

#include <algorithm>

#include "target.h"

namespace vexa {

/// The highest value of so many bits.
template <typename T>
T highestOf(int dataBits)
{
    constexpr int bits = 8 * static_cast<int>(sizeof(T));
    return static_cast<T>((1 << std::clamp(dataBits, 0, bits)) - 1);
}

}  // namespace vexa
