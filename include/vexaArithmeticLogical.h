/// @file
/// vexa::arithmeticLogical: pixel by pixel arithmetic and logic on images.

#pragma once

#include "vexaCore.h"

namespace vexa {
namespace arithmeticLogical {

/// @name Arithmetic of two images
/// Every element goes to 32-bit float, is combined there and goes back saturated to the range of an integer
/// destination and truncated toward zero; 2.9 stores 2 and a NaN stores 0. Float destinations store the result as it
/// is. Runs in place, returns without waiting.
///
/// | src1 | src2 | dst       |
/// |------|------|-----------|
/// | 8u   | 8u   | 8u 16u 32f|
/// | 16u  | 16u  | 16u 32f   |
/// | 32f  | 32f  | 32f       |
/// | 8u   | 16u  | 16u 32f   |
/// | 16u  | 8u   | 16u 32f   |
/// | 8u   | 32f  | 32f       |
/// | 32f  | 8u   | 32f       |
/// | 16u  | 32f  | 32f       |
/// | 32f  | 16u  | 32f       |
///
/// All three images have 1 channel or all have 3, and one size. An empty `dst` is created with the larger of the two
/// depths.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ in
///         width, height or channels and for types that have no row (an empty `dst` has been created by then)
/// @{
VEXA_API VexaStatus add(const VexaImage& src1, const VexaImage& src2, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus subtract(const VexaImage& src1, const VexaImage& src2, VexaImage& dst,
                             const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus multiply(const VexaImage& src1, const VexaImage& src2, VexaImage& dst,
                             const VexaStream& stream = VexaStream(false));

/// src1 times the approximate reciprocal of src2: a whole quotient may store one less. On integer destinations a / 0
/// stores the largest value and 0 / 0 stores 0.
VEXA_API VexaStatus divide(const VexaImage& src1, const VexaImage& src2, VexaImage& dst,
                           const VexaStream& stream = VexaStream(false));

/// The absolute value of src1 - src2.
VEXA_API VexaStatus absDiff(const VexaImage& src1, const VexaImage& src2, VexaImage& dst,
                            const VexaStream& stream = VexaStream(false));
/// @}

/// Bitwise complement of 8u and 16u images with 1 or 3 channels. Runs in place, returns without waiting. An empty
/// `dst` is created with the size and type of `src`.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in
///         width, height or type and for other types
VEXA_API VexaStatus NOT(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

}  // namespace arithmeticLogical
}  // namespace vexa
