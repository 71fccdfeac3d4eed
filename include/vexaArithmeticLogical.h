/// @file
/// vexa::arithmeticLogical: pixel by pixel arithmetic, logic and mathematical functions.

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

/// @name Arithmetic of an image and a constant
/// One value for all channels, or one per channel in the order in which the image holds them. The constant goes to
/// 32-bit float; arithmetic and stores are those of two images, so a negative constant subtracts and fractions work on
/// integer images: 5 times 0.5 stores 2. For `image - c` add the negated constant, for `image / c` multiply by the
/// reciprocal. Runs in place, returns without waiting.
///
/// | src | dst        |
/// |-----|------------|
/// | 8u  | 8u 16u 32f |
/// | 16u | 16u 32f    |
/// | 32f | 32f        |
///
/// Both images have 1 channel or both have 3, and one size. An empty `dst` is created with the type of `src`.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in
///         width, height or channels and for types that have no row (an empty `dst` has been created by then)
/// @{

/// src + value
VEXA_API VexaStatus add(const VexaImage& src, const Vexa64f value, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus add(const VexaImage& src, const VexaScalar& values, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));

/// value - src
VEXA_API VexaStatus subtract(const Vexa64f value, const VexaImage& src, VexaImage& dst,
                             const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus subtract(const VexaScalar& values, const VexaImage& src, VexaImage& dst,
                             const VexaStream& stream = VexaStream(false));

/// src * value
VEXA_API VexaStatus multiply(const VexaImage& src, const Vexa64f value, VexaImage& dst,
                             const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus multiply(const VexaImage& src, const VexaScalar& values, VexaImage& dst,
                             const VexaStream& stream = VexaStream(false));

/// value times the approximate reciprocal of src: over 0 an integer destination stores the largest value, and 0 for
/// 0 / 0.
VEXA_API VexaStatus divide(const Vexa64f value, const VexaImage& src, VexaImage& dst,
                           const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus divide(const VexaScalar& values, const VexaImage& src, VexaImage& dst,
                           const VexaStream& stream = VexaStream(false));
/// @}

/// @name Logic and shifts
/// Bit by bit on 8u and 16u images with 1 or 3 channels. Constants are cut to the low 8 or 16 bits. An empty `dst` is
/// created with the size and type of the source. Runs in place, returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ in
///         width, height, depth or channels and for other types (an empty `dst` has been created by then)
/// @{
VEXA_API VexaStatus AND(const VexaImage& src1, const VexaImage& src2, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus OR(const VexaImage& src1, const VexaImage& src2, VexaImage& dst,
                       const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus XOR(const VexaImage& src1, const VexaImage& src2, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));

VEXA_API VexaStatus AND(const VexaImage& src, const int value, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus OR(const VexaImage& src, const int value, VexaImage& dst,
                       const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus XOR(const VexaImage& src, const int value, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));

/// Complement. A `dst` must have the type of `src`, sign included.
VEXA_API VexaStatus NOT(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// Left by `value` bits in a 32-bit word, saturated: 200 by 1 stores 255. Words with the top bit set count as negative
/// and store 0, as 128 by 24 does; shifts outside 0 to 31 store 0.
VEXA_API VexaStatus SHL(const VexaImage& src, const int value, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));

/// Right by `value` bits; shifts outside 0 to 31 store 0. A `dst` must have the type of `src`, sign included.
VEXA_API VexaStatus SHR(const VexaImage& src, const int value, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));
/// @}

/// The absolute value of 8u, 16u and 32f images with 1 or 3 channels. An empty `dst` is created with the size and type
/// of `src`. Runs in place, returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in
///         type, width or height and for other types (an empty `dst` has been created by then)
VEXA_API VexaStatus abs(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// @name Mathematical functions
/// Of 8u, 16u and 32f images with 1 or 3 channels, into floats. They are fast approximations, off by a few units in the
/// last place of the result or, for `exp` and `pow`, of the exponent in base 2. An empty `dst` is created with 32-bit
/// floats and the size and channels of `src`. The size of any other is not compared: what both images hold is computed.
/// Runs in place on floats, returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in
///         channels and for other types (an empty `dst` has been created by then); VEXA_DEPTH_NOT_SUPPORTED_ERROR for a
///         `dst` that is not 32f with 1 or 3 channels
/// @{
VEXA_API VexaStatus exp(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus sqrt(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus cbrt(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// 2 ^ (power * log2(src)): not a number for negative elements, and for 0 to the power 0.
VEXA_API VexaStatus pow(const VexaImage& src, const Vexa64f power, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));
/// @}

/// @name Rounding
/// Of 32f images with 1 or 3 channels to whole numbers, in float. An empty `dst` is created with the size and type of
/// `src`. The size of any other is not compared: what both images hold is rounded. Runs in place, returns without
/// waiting.
///
/// @return as the mathematical functions
/// @{
VEXA_API VexaStatus floor(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus ceil(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// To the nearest, ties to even.
VEXA_API VexaStatus round(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));
/// @}

/// @name Products of matrices
/// A 32f image with 1 channel is a matrix, its rows those of the image. Every element is the sum of its products in
/// ascending order, each step fused, in 32-bit float. An empty result is created. It must not be one of the factors.
/// Returns without waiting.
/// @{

/// C = A * B
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty factor; VEXA_SIZE_ERROR if the width of A is not the height of B;
///         VEXA_TYPE_NOT_SUPPORTED_ERROR for another type of A; VEXA_NOT_SUPPORTED_MODE_ERROR for another type of B;
///         VEXA_SIZE_ERROR and VEXA_NOT_SUPPORTED_MODE_ERROR for a C of another size or type
VEXA_API VexaStatus matMul(const VexaImage& A, const VexaImage& B, VexaImage& C,
                           const VexaStream& stream = VexaStream(false));

/// B = transpose(A) * A if `trans`, else A * transpose(A): a square with the width or the height of A.
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty A; VEXA_TYPE_NOT_SUPPORTED_ERROR for another type of A;
///         VEXA_NOT_SUPPORTED_MODE_ERROR and VEXA_SIZE_ERROR for a B of another type or size
VEXA_API VexaStatus matMulTrans(const VexaImage& A, VexaImage& B, bool trans,
                                const VexaStream& stream = VexaStream(false));
/// @}

/// The inverse of a square matrix, a 32f image with 1 channel, by LU factors with partial pivoting. Blocks.
///
/// The result is that of `src` only if the rows of `src` fill its pitch: `width * 4` is a multiple of the alignment of
/// rows, or the image was made with that pitch. An empty `dst` is created without gaps between its rows.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_TYPE_NOT_SUPPORTED_ERROR; VEXA_SIZE_ERROR for a matrix
///         that is not square or a `dst` of another size; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` of another type;
///         VEXA_SINGULAR_MATRIX_ERROR where the last pivot is the first that is 0 (an earlier one goes unnoticed, and
///         the result is undefined); VEXA_INTERNAL_FUNCTION_CALL_ERROR; VEXA_MEM_ALLOC_ERR without memory for a copy
VEXA_API VexaStatus invert(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// The sum over all pixels of src1 * src2 for each channel, of 32f images with 1 or 3 channels, in double. Elements of
/// the scalar past the channels keep what they held. Both images are addressed by the pitch of `src1`. Blocks.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ in
///         width, height or type; VEXA_TYPE_NOT_SUPPORTED_ERROR; VEXA_MEM_ALLOC_ERR, VEXA_MEMCPY_D2H_ERROR,
///         VEXA_MEMFREE_ERR
VEXA_API VexaStatus dot(const VexaImage& src1, const VexaImage& src2, VexaScalar& result,
                        const VexaStream& stream = VexaStream(false));

/// A mask of the pixels in a band: 255 where an element lies between the bounds, which count as inside, else 0. With 3
/// channels one of them is enough. For 8u, 16u and 32f images with 1 or 3 channels; a NaN lies in no band. For integers
/// the bounds are truncated, negative ones to 0, and keep their low 8 or 16 bits: 300 acts as 44 on an 8u image.
///
/// An empty `dst` is created as 8u with 1 channel. The type of any other is not compared: a byte is stored for each
/// pixel. Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` of another width
///         or height; VEXA_TYPE_NOT_SUPPORTED_ERROR (an empty `dst` has been created by then)
VEXA_API VexaStatus inRange(const VexaImage& src, const Vexa32f rangeMin, const Vexa32f rangeMax, VexaImage& dst,
                            const VexaStream& stream = VexaStream(false));

}  // namespace arithmeticLogical
}  // namespace vexa

/// @name Workers of the matrix operations, on device pointers
/// Pitches in bytes. Matrices are m by n (height by width); the second factor of matmul is n by k.
/// @{
VEXA_API VexaStatus vexa_matmul_32fc1(float* a, float* b, float* c, int m, int n, int k, int ap, int bp, int cp,
                                      cudaStream_t stream);
VEXA_API VexaStatus vexa_mat_trans_mul_32fc1(float* a, float* b, int m, int n, int ap, int bp, cudaStream_t stream);
VEXA_API VexaStatus vexa_mat_mul_trans_32fc1(float* a, float* b, int m, int n, int ap, int bp, cudaStream_t stream);

/// The inverse of an n by n matrix, which is overwritten by its factors.
/// @return VEXA_SINGULAR_MATRIX_ERROR, VEXA_INTERNAL_FUNCTION_CALL_ERROR
VEXA_API VexaStatus vexa_invert_32fc1(float* src_d, float* dst_d, int n, int spitch, int dpitch, cudaStream_t stream);
/// @}
