/// @file
/// Device arithmetic: the vocabulary of the kernels' formulas, alone in asking for the device's own instructions. Both
/// platforms are compiled without implicit contraction, so a step is fused where it says multiplyAdd and nowhere else,
/// and integer results agree bit for bit except where an approximation is named. Denormals count as zero.
///
/// Host forms are branch-free, so that loops over them vectorise.

#pragma once

#include <cmath>

#include "elements.h"

namespace vexa {

/// a * b + c, rounded once.
VEXA_DEVICE float multiplyAdd(float a, float b, float c)
{
    return fmaf(a, b, c);
}

/// 1 / x. The device's approximation is within 1 unit in the last place; the host's is rounded correctly.
VEXA_DEVICE float reciprocal(float x)
{
#if defined(__CUDA_ARCH__)
    float result;
    asm("rcp.approx.ftz.f32 %0, %1;" : "=f"(result) : "f"(x));
    return result;
#else
    return 1.0F / x;
#endif
}

/// The range that a saturating store clamps to. Value functions carry it as data even where it is a constant: GCC
/// unrolls comparisons with constants into a maze of masks, which halves the speed of a vector loop.
struct Range {
    float lowest;
    float highest;
};

/// value clamped to the range and truncated toward zero. A NaN gives the lowest.
template <typename T>
VEXA_DEVICE T saturate(float value, Range range)
{
    // In this order a NaN passes the first comparison and stops at the second, and no conversion is out of range.
    const float below = value > range.highest ? range.highest : value;
    const float inside = below > range.lowest ? below : range.lowest;
    return static_cast<T>(static_cast<int>(inside));
}

/// A result as an element: saturated if the type says so, else as it is.
template <typename T, bool saturates>
VEXA_DEVICE T store(float value, Range range)
{
    if constexpr (saturates)
        return saturate<T>(value, range);
    else
        return static_cast<T>(value);
}

}  // namespace vexa
