/// @file
/// vexa::dataExchange: changing how pixels are represented, filling and marking images.

#pragma once

#include "vexaCore.h"

namespace vexa {
namespace dataExchange {

/// Every element as `value * scale + offset` in 32-bit float, one fused step. Integer destinations saturate and
/// truncate toward zero (add 0.5 by `offset` to round), a NaN stores 0; float destinations store the value as it is.
///
/// Between any two of 8u, 16u and 32f, with 1 or 3 channels. An empty `dst` is created with the size and type of `src`;
/// a change of type needs a destination made beforehand, or VexaImage::convertTo. Runs in place where the types are
/// equal, returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ in
///         width, height or channels and for other types
VEXA_API VexaStatus convertScale(const VexaImage& src, VexaImage& dst, const Vexa32f scale, const Vexa32f offset,
                                 const VexaStream& stream = VexaStream(false));

/// Rescales elements from the data bits of `src` to those of `dst` (VexaImage::setDataBits), by the ratio of the two
/// largest values, truncated: a 12-bit camera frame in 16-bit elements becomes an 8-bit image. Values above the data
/// bits of `src` count as the largest one. Only the buffer of `dst` changes.
///
/// Any channels; both images have depth 8 or 16, any sign. The sizes are not compared: what both images hold is
/// converted. Images of one depth are addressed by the pitch of `src` alone. Runs in place where the depths are equal,
/// returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src` or `dst`; VEXA_DEPTH_NOT_SUPPORTED_ERROR for other depths
VEXA_API VexaStatus bitConversion(const VexaImage& src, const VexaImage& dst,
                                  const VexaStream& stream = VexaStream(false));

/// One channel of an image as an image of its own; 8u, 16u or 32f with 3 or 4 channels. An empty `dst` is created with
/// the size and depth of `src` and 1 channel. The size and depth of any other are not compared: as much as its rows
/// hold is stored, in elements of `src`. Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_INVALID_ARG_ERROR for a channel that `src` lacks;
///         VEXA_CHANNEL_NOT_SUPPORTED_ERROR for a `dst` of more than 1 channel; VEXA_TYPE_NOT_SUPPORTED_ERROR for other
///         types (an empty `dst` has been created by then)
VEXA_API VexaStatus getChannel(const VexaImage& src, VexaImage& dst, const int channel,
                               const VexaStream& stream = VexaStream(false));

/// `src` in a larger image, with a border of a constant for each channel; 8u or 16u with 1 or 3 channels. An empty
/// `dst` is created; it may be `src` only where all margins are 0. Where a margin is negative, `src` is cropped.
/// Returns without waiting.
///
/// Constants are saturated, for 16u to the data bits of `src`, and truncated. On 1-channel images the first column of
/// the right border and the first row of the bottom border are not filled: they keep what `dst` held.
///
/// @param values one constant a channel, on the host
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_INVALID_ARG_ERROR for a `dst` that is not as large as
///         `src` with its margins, or no values; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in channels or
///         depth; VEXA_DEPTH_NOT_SUPPORTED_ERROR; VEXA_CHANNEL_NOT_SUPPORTED_ERROR for 2 or 4 channels;
///         VEXA_MEMCPY_D2D_ERROR
VEXA_API VexaStatus padImage(const VexaImage& src, VexaImage& dst, const Vexa32s top, const Vexa32s bottom,
                             const Vexa32s left, const Vexa32s right, const Vexa32f* values,
                             const VexaStream& stream = VexaStream(false));

/// Clamps every element between two bounds a channel, of 8u and 16u images with 1 or 3 channels: an element below its
/// minimum becomes the minimum, one above its maximum the maximum, truncated to the low bits of the element. An empty
/// `dst` is created with the size and type of `src`. Runs in place, returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that differs in
///         width, height, depth or channels and for other types (an empty `dst` has been created by then)
VEXA_API VexaStatus threshold(const VexaImage& src, VexaImage& dst, const VexaScalar& minThresh,
                              const VexaScalar& maxThresh, const VexaStream& stream = VexaStream(false));

/// Fills a rectangle of an 8-bit image of 1 or 3 channels with a colour, saturated. Of a rectangle that leaves the
/// image the part inside is drawn. Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED; VEXA_NOT_SUPPORTED_MODE_ERROR for other images
VEXA_API VexaStatus rectangle(VexaImage& image, const VexaRect& rect, const VexaScalar& color,
                              const VexaStream& stream = VexaStream(false));

/// Fills an image of 32-bit elements with floats, uniformly distributed above 0 and up to 1. Images of one size get the
/// same values, on each call and each machine of one platform. Blocks.
///
/// @param src the image to fill
/// @return VEXA_IMAGE_NOT_INITIALIZED; VEXA_DEPTH_NOT_SUPPORTED_ERROR for elements that don't have 32 bits
VEXA_API VexaStatus generateRandomImage(VexaImage& src, const VexaStream& stream = VexaStream(false));

}  // namespace dataExchange
}  // namespace vexa

/// @name Workers of bitConversion, on device pointers
/// Widths are in pixels, pitches in bytes; FROM and TO are data bits.
/// @return VEXA_INVALID_ARG_ERROR for data bits above the depth of their elements
/// @{
VEXA_API VexaStatus vexa_bitConversion_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s srcWidth, Vexa32s srcPitch,
                                          Vexa32s srcHeight, Vexa32s nChannels, Vexa8u FROM, Vexa8u TO,
                                          cudaStream_t internal_stream);
VEXA_API VexaStatus vexa_bitConversion_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s srcWidth, Vexa32s srcPitch,
                                           Vexa32s srcHeight, Vexa32s nChannels, Vexa8u FROM, Vexa8u TO,
                                           cudaStream_t internal_stream);
VEXA_API VexaStatus vexa_bitConversion_8u_16u(Vexa8u* pSrc, Vexa16u* pDst, Vexa32s srcWidth, Vexa32s srcPitch,
                                              Vexa32s srcHeight, Vexa32s nChannels, Vexa32s dstPitch, Vexa8u FROM,
                                              Vexa8u TO, cudaStream_t internal_stream);
VEXA_API VexaStatus vexa_bitConversion_16u_8u(Vexa16u* pSrc, Vexa8u* pDst, Vexa32s srcWidth, Vexa32s srcPitch,
                                              Vexa32s srcHeight, Vexa32s nChannels, Vexa32s dstPitch, Vexa8u FROM,
                                              Vexa8u TO, cudaStream_t internal_stream);
/// @}

/// @name Workers of the fills, on device pointers
/// Width in pixels, pitch in bytes. For integer elements values saturate and are truncated.
/// @return VEXA_SUCCESS
/// @{
VEXA_API VexaStatus vexa_set_8uc1(Vexa8u* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const Vexa64f value,
                                  cudaStream_t stream);
VEXA_API VexaStatus vexa_set_8uc3(Vexa8u* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const VexaScalar& values,
                                  cudaStream_t stream);
VEXA_API VexaStatus vexa_set_16uc1(Vexa16u* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const Vexa64f value,
                                   cudaStream_t stream);
VEXA_API VexaStatus vexa_set_16uc3(Vexa16u* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const VexaScalar& values,
                                   cudaStream_t stream);
VEXA_API VexaStatus vexa_set_32fc1(Vexa32f* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const Vexa64f value,
                                   cudaStream_t stream);
VEXA_API VexaStatus vexa_set_32fc3(Vexa32f* dst, Vexa32s width, Vexa32s height, Vexa32s pitch, const VexaScalar& values,
                                   cudaStream_t stream);
/// @}

/// @name Workers of padImage, on device pointers
/// Sizes and margins in pixels, pitches in bytes, one of `values` for each channel.
/// @return VEXA_MEMCPY_D2D_ERROR; VEXA_CHANNEL_NOT_SUPPORTED_ERROR for channels other than 1 and 3;
///         VEXA_INVALID_ARG_ERROR for no values
/// @{
VEXA_API VexaStatus vexa_pad_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s srcWidth, Vexa32s srcHeight, Vexa32s srcPitch,
                                Vexa32s dstPitch, Vexa32s channels, int top, int bottom, int left, int right,
                                const float* values, cudaStream_t stream);
VEXA_API VexaStatus vexa_pad_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s srcWidth, Vexa32s srcHeight, Vexa32s srcPitch,
                                 Vexa32s dstPitch, Vexa32s channels, int top, int bottom, int left, int right,
                                 const float* values, int dataBits, cudaStream_t stream);
/// @}

/// @name Workers of threshold, on device pointers
/// Width in pixels; the pitch, in bytes, is that of both images. Three bounds where there are three channels.
/// @return VEXA_SUCCESS
/// @{
VEXA_API VexaStatus vexa_thresh_8u_c1(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                      Vexa64f minThresh, Vexa64f maxThresh, cudaStream_t stream);
VEXA_API VexaStatus vexa_thresh_8u_c3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                      const Vexa64f* minThresh, const Vexa64f* maxThresh, cudaStream_t stream);
VEXA_API VexaStatus vexa_thresh_16u_c1(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                       Vexa64f minThresh, Vexa64f maxThresh, cudaStream_t stream);
VEXA_API VexaStatus vexa_thresh_16u_c3(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                       const Vexa64f* minThresh, const Vexa64f* maxThresh, cudaStream_t stream);
/// @}

/// @name Workers of rectangle, on device pointers
/// The pitch in bytes. The rectangle is taken as it is: it must lie inside the buffer.
/// @return VEXA_SUCCESS
/// @{
VEXA_API VexaStatus vexa_rectangle_8u_c1(Vexa8u* img, const VexaRect& rect, const int pitch, const double value,
                                         cudaStream_t stream);
VEXA_API VexaStatus vexa_rectangle_8u_c3(Vexa8u* img, const VexaRect& rect, const int pitch, const VexaScalar& color,
                                         cudaStream_t stream);
/// @}

/// The worker of generateRandomImage, on a device pointer: width in pixels, pitch in bytes.
/// @return VEXA_SUCCESS
VEXA_API VexaStatus vexa_rand_32f(float* pDst, Vexa32u dstWidth, Vexa32u dstHeight, Vexa32u dstPitch, Vexa32u channels,
                                  cudaStream_t internal_stream);
