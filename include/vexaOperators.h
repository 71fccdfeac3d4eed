/// @file
/// Arithmetic and logic of images in the notation of C++: `image + 1`, `0.5 * image`, `a & b`.
///
/// Each operator is an operation of vexa::arithmeticLogical into a new image. The result has the type that the
/// operation gives an empty destination, but 32-bit floats where the constant is a floating-point number or a
/// VexaScalar that is not integer: `image8u + 1` stays 8-bit and saturates, `image8u + 0.5` keeps the fraction. All
/// return without waiting.
///
/// Constants are int, double (float too) or VexaScalar; other integers need a cast.
///
/// Statuses are dropped. Where an operation fails, the result is empty, or floats with undefined pixels where the
/// constant made it float.

#pragma once

#include "vexaCore.h"

/// @name Sum
/// @{
VEXA_API VexaImage operator+(const VexaImage& a, const VexaImage& b);
VEXA_API VexaImage operator+(Vexa32s value, const VexaImage& image);
VEXA_API VexaImage operator+(const VexaImage& image, Vexa32s value);
VEXA_API VexaImage operator+(Vexa64f value, const VexaImage& image);
VEXA_API VexaImage operator+(const VexaImage& image, Vexa64f value);
VEXA_API VexaImage operator+(const VexaScalar& values, const VexaImage& image);
VEXA_API VexaImage operator+(const VexaImage& image, const VexaScalar& values);
/// @}

/// @name Difference
/// `image - c` is the sum with the negated constant.
/// @{
VEXA_API VexaImage operator-(const VexaImage& a, const VexaImage& b);
VEXA_API VexaImage operator-(Vexa32s value, const VexaImage& image);
VEXA_API VexaImage operator-(const VexaImage& image, Vexa32s value);
VEXA_API VexaImage operator-(Vexa64f value, const VexaImage& image);
VEXA_API VexaImage operator-(const VexaImage& image, Vexa64f value);
VEXA_API VexaImage operator-(const VexaScalar& values, const VexaImage& image);
VEXA_API VexaImage operator-(const VexaImage& image, const VexaScalar& values);
/// @}

/// @name Product
/// @{
VEXA_API VexaImage operator*(const VexaImage& a, const VexaImage& b);
VEXA_API VexaImage operator*(Vexa32s value, const VexaImage& image);
VEXA_API VexaImage operator*(const VexaImage& image, Vexa32s value);
VEXA_API VexaImage operator*(Vexa64f value, const VexaImage& image);
VEXA_API VexaImage operator*(const VexaImage& image, Vexa64f value);
VEXA_API VexaImage operator*(const VexaScalar& values, const VexaImage& image);
VEXA_API VexaImage operator*(const VexaImage& image, const VexaScalar& values);
/// @}

/// @name Quotient
/// `image / c` is the product with the reciprocal, truncated on integer images: 7 / 2 is 3.
/// @{
VEXA_API VexaImage operator/(const VexaImage& a, const VexaImage& b);
VEXA_API VexaImage operator/(Vexa32s value, const VexaImage& image);
VEXA_API VexaImage operator/(const VexaImage& image, Vexa32s value);
VEXA_API VexaImage operator/(Vexa64f value, const VexaImage& image);
VEXA_API VexaImage operator/(const VexaImage& image, Vexa64f value);
VEXA_API VexaImage operator/(const VexaScalar& values, const VexaImage& image);
VEXA_API VexaImage operator/(const VexaImage& image, const VexaScalar& values);
/// @}

/// @name Logic and shifts
/// Of 8u and 16u images.
/// @{
VEXA_API VexaImage operator&(const VexaImage& a, const VexaImage& b);
VEXA_API VexaImage operator&(Vexa32s value, const VexaImage& image);
VEXA_API VexaImage operator&(const VexaImage& image, Vexa32s value);
VEXA_API VexaImage operator|(const VexaImage& a, const VexaImage& b);
VEXA_API VexaImage operator|(Vexa32s value, const VexaImage& image);
VEXA_API VexaImage operator|(const VexaImage& image, Vexa32s value);
VEXA_API VexaImage operator^(const VexaImage& a, const VexaImage& b);
VEXA_API VexaImage operator^(Vexa32s value, const VexaImage& image);
VEXA_API VexaImage operator^(const VexaImage& image, Vexa32s value);
VEXA_API VexaImage operator~(const VexaImage& image);
VEXA_API VexaImage operator<<(const VexaImage& image, Vexa32s bits);
VEXA_API VexaImage operator>>(const VexaImage& image, Vexa32s bits);
/// @}
