/// @file
/// vexa::geometryTransforms: images scaled, rotated, warped, mirrored, cropped, transposed and framed.

#pragma once

#include "vexaCore.h"

/// Pixels of four elements, declared as CUDA declares them, so that callers need no CUDA header.
struct uchar4;
struct ushort4;
struct float4;

namespace vexa {
namespace geometryTransforms {

/// Scales `src` to the size of `dst`, which must exist; each axis by its own factor. 8u, 16u and 32f with 1 or 3
/// channels. Nothing is averaged or filtered beforehand. Images of one size are copied, whatever `inter` says. Returns
/// without waiting.
///
/// Along an axis pixel d samples the source at d * s, s being the size of `src` over that of `dst`, a quarter of a
/// pixel less where s is below 1. Positions outside repeat the edge. Cubic interpolation is the Lagrange polynomial
/// through 4 pixels. Integers are rounded, halves up, and saturate.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src` or `dst`; VEXA_INPLACE_OP_NOT_SUPPORTED for one image as both;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ in channels or depth; VEXA_TYPE_NOT_SUPPORTED_ERROR for
///         other types; VEXA_INTERNAL_CALL_ERROR for another value of `inter` and for a `src` less than 2 pixels wide
///         or high (`dst` stays as it is)
VEXA_API VexaStatus resize(const VexaImage& src, VexaImage& dst, VexaInterpolationType inter,
                           const VexaStream& stream = VexaStream(false));

/// @name Rotation
/// Of 8u, 16u and 32f images with 1 or 3 channels, counter-clockwise as seen on a screen, by degrees. Pixels are
/// interpolated linearly, in steps of 1/256 of their distance, at positions that are half a pixel further to the left
/// and upwards than the rotation says; integers are truncated. What comes from outside is 0.
/// @{

/// About a pixel of `src`, into the frame of `dst`. An empty `dst` is created with the size and type of `src`; the size
/// of any other is not compared. Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_INVALID_ARG_ERROR for a centre outside `src`;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in depth or channels and for other types (an empty
///         `dst` has been created by then)
VEXA_API VexaStatus rotate(const VexaImage& src, VexaImage& dst, const Vexa32f angle, const VexaPoint2D<int> center,
                           const VexaStream& stream = VexaStream(false));

/// A rectangle of the image inside a copy of it, about a pixel that counts from the corner of the rectangle. `dst` is
/// made anew as a copy of `src`. What turns out of the rectangle is cut off. Blocks.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in
///         depth or channels; as VexaImage::create, VexaImage::copyTo and the form above (`dst` is a copy by then)
VEXA_API VexaStatus rotate(const VexaImage& src, VexaImage& dst, const Vexa32f angle, const VexaPoint2D<int> center,
                           const VexaRect& roi, const VexaStream& stream = VexaStream(false));

/// About the middle, into a frame that holds all of the image and a pixel more in each direction. `dst` is made anew,
/// whatever it was, so it must not be `src`.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_MEM_ALLOC_ERR; VEXA_NOT_SUPPORTED_MODE_ERROR for other
///         types (`dst` is of that type by then)
VEXA_API VexaStatus rotateNoCrop(const VexaImage& src, VexaImage& dst, const Vexa32f angle,
                                 const VexaStream& stream = VexaStream(false));
/// @}

/// @name Warps
/// Of 8u, 16u and 32f images with 1 or 3 channels, by a matrix: two rows of three for affine transforms, three for
/// perspective ones, which divide by the third coordinate. Positions (x, y) are in pixels, with integers at their
/// centres. `warpAffine` and `warpPerspective` take the way from `src` to `dst`, the `Back` forms that from `dst` to
/// `src`.
///
/// A pixel is interpolated as in resize if its position lies on a pixel of `src`; else it is 0. An empty `dst` is
/// created with the size and type of `src`; the size of any other is not compared. `dst` is cleared first, so it must
/// not be `src`. They return without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in
///         depth or channels and for other types; VEXA_INTERNAL_CALL_ERROR for another value of `interp`, a matrix that
///         has no inverse, a `src` less than 2 pixels wide or high, or one that misses `dst` (all of `dst` is 0 then)
/// @{
VEXA_API VexaStatus warpAffine(const VexaImage& src, VexaImage& dst, Vexa64f (*coeffs)[3], VexaInterpolationType interp,
                               const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus warpAffineBack(const VexaImage& src, VexaImage& dst, Vexa64f (*coeffs)[3],
                                   VexaInterpolationType interp, const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus warpPerspective(const VexaImage& src, VexaImage& dst, Vexa64f (*coeffs)[3],
                                    VexaInterpolationType interp, const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus warpPerspectiveBack(const VexaImage& src, VexaImage& dst, Vexa64f (*coeffs)[3],
                                        VexaInterpolationType interp, const VexaStream& stream = VexaStream(false));
/// @}

/// Mirrors an 8u, 16u or 32f image with 1 or 3 channels. An empty `dst` is created with the size and type of `src`.
/// Both are addressed by the pitch of `src`. Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_INPLACE_OP_NOT_SUPPORTED for one image as both;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in width, height, depth or channels, and for another
///         value of `type`; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types (an empty `dst` has been created by then)
VEXA_API VexaStatus flipImage(const VexaImage& src, VexaImage& dst, const VexaFlipType type,
                              const VexaStream& stream = VexaStream(false));

/// Cuts margins of so many pixels off. Depths 8, 16 and 32, any channels. An empty `dst` is created; the size of any
/// other is not compared: it takes what fits. Pixels that a negative margin asks for are left as they are. Returns
/// without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_INPLACE_OP_NOT_SUPPORTED for one image as both;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in depth or channels; VEXA_TYPE_NOT_SUPPORTED_ERROR
///         for other depths; VEXA_INVALID_ARG_ERROR for margins that leave nothing
VEXA_API VexaStatus crop(const VexaImage& src, VexaImage& dst, const Vexa32s top, const Vexa32s bottom,
                         const Vexa32s left, const Vexa32s right, const VexaStream& stream = VexaStream(false));

/// Turns columns into rows, of 8u, 16u and 32f images with 1 or 3 channels. An empty `dst` is created. Returns without
/// waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_INPLACE_OP_NOT_SUPPORTED for one image as both;
///         VEXA_INVALID_ARG_ERROR for a `dst` whose width is not the height of `src` or the other way round;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in depth or channels and for other types
VEXA_API VexaStatus transpose(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// An image in a frame that fades from the edge of the image to its mean; 8-bit with 1 or 3 channels, of sequence RGB
/// or BGR. The share of the mean grows with the distance from the edge, on the left and at the top with that from the
/// outer end of the frame plus the margin, and is complete at half the width of the image. An empty `dst` is created
/// with the size of `src` and its margins; the size of any other is not compared: what fits is placed. Blocks.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in
///         channels or depth; as vexa::imageStatistics::mean; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types
VEXA_API VexaStatus taper(const VexaImage& src, VexaImage& dst, Vexa32u taperLeft, Vexa32u taperRight, Vexa32u taperTop,
                          Vexa32u taperBottom, const VexaStream& stream = VexaStream(false));

}  // namespace geometryTransforms
}  // namespace vexa

/// @name Workers of resize, on device pointers
/// Sizes in pixels, pitches in bytes.
/// @return VEXA_INTERNAL_CALL_ERROR
/// @{
VEXA_API VexaStatus vexa_resize_8u_c1(Vexa8u* src, Vexa8u* dst, int srcWidth, int srcHeight, int srcPitch, int dstWidth,
                                      int dstHeight, int dstPitch, VexaInterpolationType mode, cudaStream_t stream);
VEXA_API VexaStatus vexa_resize_8u_c3(Vexa8u* src, Vexa8u* dst, int srcWidth, int srcHeight, int srcPitch, int dstWidth,
                                      int dstHeight, int dstPitch, VexaInterpolationType mode, cudaStream_t stream);
VEXA_API VexaStatus vexa_resize_16u_c1(Vexa16u* src, Vexa16u* dst, int srcWidth, int srcHeight, int srcPitch,
                                       int dstWidth, int dstHeight, int dstPitch, VexaInterpolationType mode,
                                       cudaStream_t stream);
VEXA_API VexaStatus vexa_resize_16u_c3(Vexa16u* src, Vexa16u* dst, int srcWidth, int srcHeight, int srcPitch,
                                       int dstWidth, int dstHeight, int dstPitch, VexaInterpolationType mode,
                                       cudaStream_t stream);
VEXA_API VexaStatus vexa_resize_32f_c1(Vexa32f* src, Vexa32f* dst, int srcWidth, int srcHeight, int srcPitch,
                                       int dstWidth, int dstHeight, int dstPitch, VexaInterpolationType mode,
                                       cudaStream_t stream);
VEXA_API VexaStatus vexa_resize_32f_c3(Vexa32f* src, Vexa32f* dst, int srcWidth, int srcHeight, int srcPitch,
                                       int dstWidth, int dstHeight, int dstPitch, VexaInterpolationType mode,
                                       cudaStream_t stream);
/// @}

/// @name Workers of the rotation, on device pointers
/// For 8, 16 and 32 bits. Sizes in pixels, pitches in bytes, the angle in degrees, the centre in pixels of the source;
/// it comes to lie at itself plus the offset. `c4`, unless it is null, takes the source with a fourth channel of 0.
/// @return VEXA_TEXTURE_BIND_ERROR for a source that can't be read
/// @{
template <typename T, int bits>
VEXA_API VexaStatus vexa_rotate_c1(T* src, T* dst, int srcWidth, int srcHeight, int srcPitch, int dstWidth,
                                   int dstHeight, int dstPitch, float angle, const VexaPoint2D<int>& center,
                                   const VexaPoint2D<float>& rotationOffset, cudaStream_t stream);
template <typename T, typename T4, int bits>
VEXA_API VexaStatus vexa_rotate_c3(T* src, T4* c4, T* dst, int srcWidth, int srcHeight, int srcPitch, int c4Pitch,
                                   int dstWidth, int dstHeight, int dstPitch, float angle,
                                   const VexaPoint2D<int>& center, const VexaPoint2D<float>& rotationOffset,
                                   cudaStream_t stream);
/// @}

/// @name Workers of flipImage, on device pointers
/// For 1 and 3 channels. Sizes in pixels; the pitch, in bytes, is that of both images.
/// @return VEXA_NOT_SUPPORTED_MODE_ERROR for another value of `type`
/// @{
template <int channels>
VEXA_API VexaStatus vexa_flip_16u(Vexa16u* src, Vexa16u* dst, int width, int height, int pitch, VexaFlipType type,
                                  cudaStream_t stream);
template <int channels>
VEXA_API VexaStatus vexa_flip_32f(Vexa32f* src, Vexa32f* dst, int width, int height, int pitch, VexaFlipType type,
                                  cudaStream_t stream);
/// @}

/// The worker of taper, on device pointers: one plane, sizes in pixels, pitches in bytes. Blocks.
/// @return VEXA_SUCCESS
VEXA_API VexaStatus vexa_taper_8uC1(Vexa8u* src, Vexa32s srcWidth, Vexa32s srcHeight, Vexa32s srcPitch, Vexa8u* dst,
                                    Vexa32s dstWidth, Vexa32s dstHeight, Vexa32s dstPitch, Vexa32u left, Vexa32u right,
                                    Vexa32u top, Vexa32u bottom, Vexa64f mean, cudaStream_t stream);
