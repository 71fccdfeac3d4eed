/// @file
/// vexa::imageTransforms: Fourier transform and Haar wavelet.

#pragma once

#include "vexaCore.h"

namespace vexa {
namespace imageTransforms {

/// @name Fourier transform
/// Complex pixels are VEXA_COMPLEX32: real part, imaginary part.
/// @{

/// The discrete Fourier transform of an 8u image with one channel at its own size, not normalised: pixel (0, 0) is the
/// sum of all pixels. An empty `dst` is created as VEXA_COMPLEX32. Blocks.
///
/// @return VEXA_NOT_SUPPORTED_MODE_ERROR for an empty source and for a `dst` that differs in width or height;
///         VEXA_CHANNEL_NOT_SUPPORTED_ERROR for a source with more than 1 channel and a `dst` without 2;
///         VEXA_DEPTH_NOT_SUPPORTED_ERROR for a `dst` whose depth is not 32 and, when `dst` has been created, for a
///         source whose depth is not 8; VEXA_MEM_ALLOC_ERR, VEXA_MEMFREE_ERR
VEXA_API VexaStatus fft2(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// Swaps the quadrants of an image of depth 32, whatever its channels: the zero frequency moves to
/// (width / 2, height / 2). Quadrants are half the width and height, truncated, so that with odd sizes the last column
/// or row of `dst` is left as it is. Both images are addressed by the pitch of `src`. An empty `dst` is created like
/// `src`; then what is not written is 0. Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_DEPTH_NOT_SUPPORTED_ERROR for other depths;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ in width, height, depth or channels
VEXA_API VexaStatus fftShift(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// Magnitude, phase in radians, real or imaginary part of complex values; the scaled properties are divided by the
/// height. The source counts as an image of one channel and depth 32, while each of its pixels stands for two floats:
/// pixel x of a row is made of the floats 2 * x and 2 * x + 1 of that row, which may lie in the next one. What would
/// be read past the end of the image is not written. An empty `dst` is created like `src` and cleared. An unknown
/// property does nothing. Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_DEPTH_NOT_SUPPORTED_ERROR for other depths;
///         VEXA_CHANNEL_NOT_SUPPORTED_ERROR for more channels, as the result of fft2 has;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ in width, height, depth or channels
VEXA_API VexaStatus fftGetProperty(const VexaImage& src, VexaImage& dst, const VexaFFTProp prop,
                                   const VexaStream& stream = VexaStream(false));
/// @}

/// @name Haar wavelet
/// One level of the transform of 8u images with 1 or 3 channels. Subbands have half the width and height. Of each
/// block of 2 by 2 pixels the approximation is the average, the details are differences of its columns (X), rows (Y)
/// and diagonals (XY), divided by 4. All are 8u and truncated; a negative detail is 0 and does not come back.
/// @{

/// Splits an image. Empty subbands are created; of others neither size nor type is compared. All four are addressed by
/// the pitch of `dstApprox`. Runs in place.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for an odd width or height,
///         and for subbands that differ in channels from the source; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types,
///         when the subbands have been created; VEXA_MEMCPY_D2D_ERROR for a subband whose buffer is too small;
///         VEXA_MEM_ALLOC_ERR, VEXA_MEMFREE_ERR
VEXA_API VexaStatus haarFwd(const VexaImage& src, VexaImage& dstApprox, VexaImage& dstDetailX, VexaImage& dstDetailY,
                            VexaImage& dstDetailXY, const VexaStream& stream = VexaStream(false));

/// Joins four subbands. Of sums above 255 the low eight bits are stored; negative ones are 0. The details are not
/// compared with the approximation; all four are addressed by its pitch. In place of a subband whose buffer is too
/// small for that the quadrant of `dst` counts: top right for X, bottom left for Y, bottom right for XY. An empty `dst`
/// is created; the height of any other is not compared.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty subband; VEXA_INVALID_ARG_ERROR for a `dst` that is not twice as
///         wide as `srcApprox`; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` of another type than `srcApprox`, and for
///         other types; VEXA_MEM_ALLOC_ERR, VEXA_MEMFREE_ERR
VEXA_API VexaStatus haarInv(const VexaImage& srcApprox, const VexaImage& srcDetailX, const VexaImage& srcDetailY,
                            const VexaImage& srcDetailXY, VexaImage& dst, const VexaStream& stream = VexaStream(false));
/// @}

}  // namespace imageTransforms
}  // namespace vexa

/// @name Workers, on device pointers
/// Sizes in pixels, pitches in bytes.
/// @return as the public functions
/// @{
VEXA_API VexaStatus vexa_fft2_8u32f_c1(Vexa8u* src, Vexa32f* dst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                       Vexa32s dstPitch, cudaStream_t stream);
VEXA_API VexaStatus vexa_fftshift2_32f(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                       Vexa32s channels, cudaStream_t stream);
VEXA_API VexaStatus vexa_get_fft_property(Vexa32f* pSrc, Vexa32f* pDst, Vexa32u srcWidth, Vexa32u srcHeight,
                                          Vexa32u srcPitch, Vexa32u dstPitch, VexaFFTProp prop,
                                          cudaStream_t internal_stream);

/// @return VEXA_TEXTURE_BIND_ERROR for a source that can't be read, else as haarFwd
template <int channels>
VEXA_API VexaStatus vexa_haar_8u(Vexa8u* pSrc, Vexa32s srcWidth, Vexa32s srcHeight, Vexa32s srcPitch, Vexa8u* pApprox,
                                 Vexa8u* pDetailX, Vexa8u* pDetailY, Vexa8u* pDetailXY, Vexa32s dstPitch,
                                 cudaStream_t stream);

/// The sizes are those of a subband. `dst` may overlap none of them.
/// @return VEXA_TEXTURE_BIND_ERROR for a destination that can't be written, else as haarInv
template <int channels>
VEXA_API VexaStatus vexa_haar_inv_8u(Vexa8u* pApprox, Vexa8u* pDetailX, Vexa8u* pDetailY, Vexa8u* pDetailXY,
                                     Vexa32s srcWidth, Vexa32s srcHeight, Vexa32s srcPitch, Vexa8u* dst,
                                     Vexa32s dstPitch, cudaStream_t stream);
/// @}
