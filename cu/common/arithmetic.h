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

/// value clamped to [min, max] and truncated toward zero. A NaN gives min.
template <typename T>
VEXA_DEVICE T saturate(float value, float min, float max)
{
    // In this order a NaN passes the first comparison and stops at the second, and no conversion is out of range.
    const float below = value > max ? max : value;
    const float inside = below > min ? below : min;
    return static_cast<T>(static_cast<int>(inside));
}

/// A result as an element: saturated if the type says so, else as it is.
template <typename T, int min, int max, bool saturates>
VEXA_DEVICE T store(float value)
{
    if constexpr (saturates)
        return saturate<T>(value, static_cast<float>(min), static_cast<float>(max));
    else
        return static_cast<T>(value);
}

}  // namespace vexa
