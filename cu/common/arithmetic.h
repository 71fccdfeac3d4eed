/// @file
/// Device arithmetic: the vocabulary of the kernels' formulas, alone in asking for the device's own instructions. Both
/// platforms are compiled without implicit contraction, so a step is fused where it says multiplyAdd and nowhere else,
/// and integer results agree bit for bit except where an approximation is named. Denormals count as zero.
///
/// Host forms are branch-free, so that loops over them vectorise.

#pragma once

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "elements.h"

namespace vexa {

/// a * b + c, rounded once.
VEXA_DEVICE float multiplyAdd(float a, float b, float c)
{
    return fmaf(a, b, c);
}

VEXA_DEVICE double multiplyAdd(double a, double b, double c)
{
    return fma(a, b, c);
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

/// The square root; not a number for negative values. The device's approximation is within 1 unit in the last place.
VEXA_DEVICE float squareRoot(float x)
{
#if defined(__CUDA_ARCH__)
    float result;
    asm("sqrt.approx.ftz.f32 %0, %1;" : "=f"(result) : "f"(x));
    return result;
#else
    return std::sqrt(x);
#endif
}

#if !defined(__CUDA_ARCH__)

namespace detail {

VEXA_DEVICE unsigned bitsOf(float value)
{
    unsigned bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

VEXA_DEVICE float floatOf(unsigned bits)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// 2 to the power of a whole exponent from -126 to 127.
VEXA_DEVICE float powerOfTwo(int exponent)
{
    return floatOf(static_cast<unsigned>(exponent + 127) << 23);
}

}  // namespace detail

#endif

/// 2 to the power of x, to within 2 units in the last place.
VEXA_DEVICE float exp2(float x)
{
#if defined(__CUDA_ARCH__)
    float result;
    asm("ex2.approx.ftz.f32 %0, %1;" : "=f"(result) : "f"(x));
    return result;
#else
    // Outside these bounds the result is infinite or flushed to zero just as well.
    const float below = x > 130.0F ? 130.0F : x;
    const float inside = below < -130.0F ? -130.0F : below;
    // Adding 1.5 * 2^23 leaves the nearest whole number in the low bits; a NaN passes through.
    constexpr float shift = 12582912.0F;
    const float shifted = inside + shift;
    const int whole = static_cast<int>(detail::bitsOf(shifted) - detail::bitsOf(shift));
    const float t = inside - (shifted - shift);
    // Minimax polynomial for |t| <= 1/2; coefficients of the Cephes library (Moshier), exp2f.
    float p = 1.535336188319500E-4F;
    p = multiplyAdd(p, t, 1.339887440266574E-3F);
    p = multiplyAdd(p, t, 9.618437357674640E-3F);
    p = multiplyAdd(p, t, 5.550332471162809E-2F);
    p = multiplyAdd(p, t, 2.402264791363012E-1F);
    p = multiplyAdd(p, t, 6.931472028550421E-1F);
    p = multiplyAdd(p, t, 1.0F);
    // By two factors, as the whole power may leave the range where the result does not.
    const int half = whole >> 1;
    return p * detail::powerOfTwo(half) * detail::powerOfTwo(whole - half);
#endif
}

/// The logarithm to base 2, to within 4 units in the last place, on the device near 1 to within 2^-22. Minus infinity
/// for 0, not a number below.
VEXA_DEVICE float log2(float x)
{
#if defined(__CUDA_ARCH__)
    float result;
    asm("lg2.approx.ftz.f32 %0, %1;" : "=f"(result) : "f"(x));
    return result;
#else
    // x = m * 2^e with m from sqrt(1/2) to sqrt(2).
    constexpr unsigned lowest = 0x3f3504f3;
    const unsigned bits = detail::bitsOf(x);
    const int exponent = static_cast<int>(bits - lowest) >> 23;
    const float m = detail::floatOf(bits - (static_cast<unsigned>(exponent) << 23));
    // ln m = 2 artanh((m - 1) / (m + 1)), whose series converges fast here.
    const float s = (m - 1.0F) / (m + 1.0F);
    const float s2 = s * s;
    constexpr float scale = 2.885390082F;  // 2 / ln 2
    float p = scale / 9.0F;
    p = multiplyAdd(p, s2, scale / 7.0F);
    p = multiplyAdd(p, s2, scale / 5.0F);
    p = multiplyAdd(p, s2, scale / 3.0F);
    p = multiplyAdd(p, s2, scale);
    const float result = multiplyAdd(p, s, static_cast<float>(exponent));
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const float upToInfinity = x == infinity ? infinity : result;
    const float atZero = x == 0.0F ? -infinity : std::numeric_limits<float>::quiet_NaN();
    return x > 0.0F ? upToInfinity : atZero;
#endif
}

/// base to the power of exponent; not a number for negative bases.
VEXA_DEVICE float power(float base, float exponent)
{
    return exp2(exponent * log2(base));
}

/// The nearest whole number, ties to even.
VEXA_DEVICE float roundToEven(float x)
{
    return rintf(x);
}

/// value truncated toward zero: 0 for a negative value and a NaN, the largest integer for one that is too large.
VEXA_DEVICE unsigned truncateToUnsigned(float value)
{
    constexpr float top = 4294967296.0F;
    const float notNegative = value > 0.0F ? value : 0.0F;
    return notNegative < top ? static_cast<unsigned>(notNegative) : ~0U;
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

/// value truncated toward zero, which the type must hold, or as it is.
template <typename T>
VEXA_DEVICE T truncate(float value)
{
    if constexpr (std::is_integral_v<T>)
        return static_cast<T>(static_cast<int>(value));
    else
        return value;
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
