/// @file
/// vexa::colorOperations: colour spaces, raw frames, channels apart and together, packed video.

#pragma once

#include "vexaCore.h"

namespace vexa {
namespace colorOperations {

/// @name Colour spaces
/// Pixels are 3 elements side by side. Which of the first and third is red and which blue tells the channel sequence of
/// the image (VexaImage::setChannelSequence), RGB or BGR; an image of another sequence leaves the destination as it is,
/// which is no failure. Pixels of the converted space stand in the order of its name. Results for 8u and 16u are
/// truncated; those for 32f are stored as they are.
///
/// An empty `dst` is created; any other must have the size of `src` and, where nothing else is told, its depth and
/// channels. All return without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_INPLACE_OP_NOT_SUPPORTED for one image as `src` and
/// `dst`
///         where that is told; VEXA_CHANNEL_NOT_SUPPORTED_ERROR for other channels of `src`;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that does not match; for other types what the function tells (an
///         empty `dst` has been created by then)
/// @{

/// Luma by the weights of ITU-R BT.601: 0.299 red + 0.587 green + 0.114 blue, into 1 channel. 8u, 16u and 32f with 3
/// channels; 8u and 16u with 4, of sequence BGRA or RGBA, whose alpha is ignored. Not in place.
/// @return VEXA_CHANNEL_NOT_SUPPORTED_ERROR also for a `dst` of more than 1 channel; VEXA_NOT_SUPPORTED_MODE_ERROR for
///         other types
VEXA_API VexaStatus rgb2gray(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// The same by weights for red, green and blue, whatever the sequence. Saturates. 8u, 16u and 32f with 3 channels.
VEXA_API VexaStatus rgb2gray(const VexaImage& src, VexaImage& dst, const VexaScalar& coeffs,
                             const VexaStream& stream = VexaStream(false));

/// 1 channel of 8u, 16u or 32f into 3 equal ones, or into 4, of which the last is 0. An empty `dst` gets 3. Not in
/// place.
/// @return VEXA_TYPE_NOT_SUPPORTED_ERROR for other types
VEXA_API VexaStatus gray2rgb(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// The same in place: the image is made anew with 3 channels. Blocks.
VEXA_API VexaStatus gray2rgb(VexaImage& srcDst, const VexaStream& stream = VexaStream(false));

/// YUV. 8-bit: ITU-R BT.601 in studio range by integers of 8 fractional bits, Y from 16 to 235, U and V around 128.
/// 16-bit: Y over the full range, U and V without an offset, so that negative ones store 0. Runs in place.
/// @return VEXA_DEPTH_NOT_SUPPORTED_ERROR for other depths
VEXA_API VexaStatus rgb2yuv(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// Back, in the sequence of `dst`. At 16 bits U and V are taken around 128: this does not undo rgb2yuv. Runs in place.
VEXA_API VexaStatus yuv2rgb(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// Hue, saturation and value, each from 0 to 1 for 32f and from 0 to 255 for 8u (a full circle of hue is 255). Runs in
/// place.
/// @return VEXA_DEPTH_NOT_SUPPORTED_ERROR for other types, and for `src` and `dst` of different ones
VEXA_API VexaStatus rgb2hsv(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// Back, always as blue, green, red. Both types have the resolution of 8 bits. Runs in place.
VEXA_API VexaStatus hsv2rgb(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// CIE L*a*b* of sRGB under D65. 32f: colours from 0 to 1, L from 0 to 100, a and b signed. 8u: L from 0 to 255, a and
/// b around 128. Marks `dst` as RGB. Not in place.
/// @return VEXA_DEPTH_NOT_SUPPORTED_ERROR for other types
VEXA_API VexaStatus rgb2Lab(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// Back, in the sequence of `dst`. Runs in place.
VEXA_API VexaStatus Lab2rgb(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// Y'CbCr of ITU-R BT.601 in studio range: 8u, 16u, and 32f with colours from 0 to 1. Marks `dst` as RGB. Runs in
/// place.
/// @return VEXA_TYPE_NOT_SUPPORTED_ERROR for other types (`dst` has been marked by then)
VEXA_API VexaStatus rgb2ycbcr(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// Back, in the sequence of `dst`. Runs in place.
VEXA_API VexaStatus ycbcr2rgb(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// 8-bit blue, green, red, whatever the sequence, as packed 4:2:2 in the order U Y V Y: two bytes a pixel, the second
/// its Y, the first the U of an even pixel or the V of an odd one. An empty `dst` is created as VEXA_8UC2; of any other
/// size and depth are compared, and rows take as many pixels as they hold.
/// @return VEXA_TYPE_NOT_SUPPORTED_ERROR for other types
VEXA_API VexaStatus rgb2yuv422(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));
/// @}

/// The three channels of an 8u, 16u or 32f image as images of their own, by colour: the sequence of `src`, RGB or BGR,
/// tells which is which, and any other leaves them as they are. Empty ones are created. Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_CHANNEL_NOT_SUPPORTED_ERROR for other channels of `src`;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for a channel that differs in width, height or depth;
///         VEXA_DEPTH_NOT_SUPPORTED_ERROR for other types
VEXA_API VexaStatus channelSplit(const VexaImage& src, VexaImage& red, VexaImage& green, VexaImage& blue,
                                 const VexaStream& stream = VexaStream(false));

/// Three images of 1 channel as one of 3, in the sequence of `dst`; undoes channelSplit. The type is that of `red`; of
/// the others the size alone is compared. Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_CHANNEL_NOT_SUPPORTED_ERROR for other channels of `red`
///         or `dst`; VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ in size, or a `dst` in depth;
///         VEXA_DEPTH_NOT_SUPPORTED_ERROR for other types
VEXA_API VexaStatus channelMerge(const VexaImage& red, const VexaImage& green, const VexaImage& blue, VexaImage& dst,
                                 const VexaStream& stream = VexaStream(false));

/// @name Demosaicing
/// A raw frame of a sensor behind a Bayer mosaic, 1 channel of 8 or 16 bits, as an image of 3 channels. An empty `dst`
/// is created with the size and depth of `src`. Results of 16 bits are at most what the data bits of `src` hold.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_CHANNEL_NOT_SUPPORTED_ERROR for other channels of `src`
///         or `dst`; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` of another size or depth; then (an empty `dst` has been
///         created by then) VEXA_DEPTH_NOT_SUPPORTED_ERROR for other depths, and what the function tells
/// @{

/// One pass of stencils. The plain layouts average direct neighbours; the HQ ones weigh 5 by 5 pixels, and with 8 bits
/// an overshoot past 255 wraps. Which slot gets which colour depends on the layout and is uneven: VEXA_BAYER_RGGB gives
/// blue, green, red, VEXA_BAYER_GBRG leaves pixels of odd columns in even rows black, and a flat image need not stay
/// flat. demosaicDFPD is the one for pictures. Beyond the border the nearest pixel repeats. Returns without waiting.
/// @return VEXA_NOT_SUPPORTED_MODE_ERROR for any other layout
VEXA_API VexaStatus demosaic(const VexaImage& src, VexaImage& dst, const VexaBayerSeq sensorAlignment,
                             const VexaStream& stream = VexaStream(false));

/// Directional filtering with a posteriori decision (Menon, Andriani and Calvagno, 2007), without its refinement: at
/// each red or blue site green is interpolated along the column or the row, whichever has the smaller gradients of
/// chrominance, and the other colours follow from differences of colours in that direction. Gives blue, green, red for
/// the four plain layouts. Outside the image raw values count as 0; the outermost ring of pixels keeps its raw values
/// but for green at red and blue sites. `refine` has no effect. Blocks.
/// @return VEXA_INVALID_ARG_ERROR for any other layout
VEXA_API VexaStatus demosaicDFPD(const VexaImage& src, VexaImage& dst, const VexaBayerSeq sensorAlignment,
                                 const bool refine, const VexaStream& stream = VexaStream(false));
/// @}

/// @name Packed video
/// V210 holds six 10-bit 4:2:2 pixels in four little-endian 32-bit words. Its image is a flat run of pitch times height
/// bytes, whatever its type: give it a pitch without padding. 4:4:4 pixels are three 16-bit elements, Y, Cr, Cb, of
/// which the low 10 bits carry data; nothing is scaled. What does not fit the images is not converted.
/// @{

/// Both pixels of a pair get its chroma; an odd last column is left out. The size is that of `dst`, which must exist.
/// Waits for the device.
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_DEPTH_NOT_SUPPORTED_ERROR for a `dst` that has not 16
///         bits; VEXA_CUDA_KERNEL_EXECUTION_ERROR
VEXA_API VexaStatus V210TOYUV444(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// A pair gets the chroma of its even pixel. `dst` must exist. Samples above 1023 run into their neighbours. Waits.
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_DEPTH_NOT_SUPPORTED_ERROR for a `src` that has not 16
/// bits
VEXA_API VexaStatus YUV444TOV210(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));

/// From a flat run of 16-bit samples in the order Cb, Y, Cr, Y. `dst` must exist. Waits for the device.
/// @return as YUV444TOV210; VEXA_CUDA_KERNEL_EXECUTION_ERROR
VEXA_API VexaStatus YUV422TOV210(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));
/// @}

}  // namespace colorOperations
}  // namespace vexa

/// @name Workers of the colour spaces, on device pointers
/// Width in pixels, pitches in bytes; one pitch serves both images. A sequence that is not served launches nothing.
/// @return VEXA_SUCCESS
/// @{
VEXA_API VexaStatus vexa_rgbToGray_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                         Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToGray_16u_C3(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                          Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToGray_32f_C3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                          Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbaToGray_8u_C4(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                          Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbaToGray_16u_C4(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height,
                                           Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence,
                                           cudaStream_t stream);
VEXA_API VexaStatus vexa_colorToGray_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                           Vexa32s dstPitch, Vexa32f red, Vexa32f green, Vexa32f blue,
                                           VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_colorToGray_16u_C3(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height,
                                            Vexa32s srcPitch, Vexa32s dstPitch, Vexa32f red, Vexa32f green,
                                            Vexa32f blue, VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_colorToGray_32f_C3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height,
                                            Vexa32s srcPitch, Vexa32s dstPitch, Vexa32f red, Vexa32f green,
                                            Vexa32f blue, VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToYuv_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToYuv_16u_C3(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                         VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_yuvToRgb_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_yuvToRgb_16u_C3(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                         VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToHsv_8u_c3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToHsv_32f_c3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                         VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_hsvToBgr_8u_c3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        cudaStream_t stream);
VEXA_API VexaStatus vexa_hsvToBgr_32f_c3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                         cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToLab_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToLab_32f_C3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                         VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_LabToRgb_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_LabToRgb_32f_C3(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                         VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToYCbCr_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                       VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToYCbCr_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgbToYCbCr_32f(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_YCbCr2rgb_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                       VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_YCbCr2rgb_32f(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                       VexaChannelSeq sequence, cudaStream_t stream);
VEXA_API VexaStatus vexa_rgb2yuv422_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                       Vexa32s dstPitch, cudaStream_t stream);
/// @}

/// @name Workers of channelSplit and channelMerge, on device pointers
/// Width in pixels, pitches in bytes; the one-channel images share one. A sequence that is not served launches nothing.
/// @return VEXA_SUCCESS
/// @{
VEXA_API VexaStatus vexa_split_8u_C3(Vexa8u* src, Vexa8u* red, Vexa8u* green, Vexa8u* blue, Vexa32s width,
                                     Vexa32s height, Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence,
                                     cudaStream_t stream);
VEXA_API VexaStatus vexa_split_16u_C3(Vexa16u* src, Vexa16u* red, Vexa16u* green, Vexa16u* blue, Vexa32s width,
                                      Vexa32s height, Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence,
                                      cudaStream_t stream);
VEXA_API VexaStatus vexa_split_32f_C3(Vexa32f* src, Vexa32f* red, Vexa32f* green, Vexa32f* blue, Vexa32s width,
                                      Vexa32s height, Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence,
                                      cudaStream_t stream);
VEXA_API VexaStatus vexa_merge_8u_C3(Vexa8u* red, Vexa8u* green, Vexa8u* blue, Vexa8u* dst, Vexa32s width,
                                     Vexa32s height, Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence,
                                     cudaStream_t stream);
VEXA_API VexaStatus vexa_merge_16u_C3(Vexa16u* red, Vexa16u* green, Vexa16u* blue, Vexa16u* dst, Vexa32s width,
                                      Vexa32s height, Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence,
                                      cudaStream_t stream);
VEXA_API VexaStatus vexa_merge_32f_C3(Vexa32f* red, Vexa32f* green, Vexa32f* blue, Vexa32f* dst, Vexa32s width,
                                      Vexa32s height, Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence,
                                      cudaStream_t stream);
/// @}

/// @name Workers of demosaicing, on device pointers
/// Sizes in pixels, pitches in bytes. The templates are what the DFPD workers call for each layout.
/// @return VEXA_NULL_POINTER_ERROR, VEXA_SIZE_ERROR for a side below 1 and VEXA_NOT_SUPPORTED_MODE_ERROR for the layout
///         from the first two; VEXA_INVALID_ARG_ERROR for the layout from the next two
/// @{
VEXA_API VexaStatus vexa_bayerToRgb_8u_C1(Vexa8u* pSrc, Vexa8u* pDst, VexaSize imgSize, Vexa32s srcPitch,
                                          Vexa32s dstPitch, VexaBayerSeq seq, cudaStream_t stream);
VEXA_API VexaStatus vexa_bayerToRgb_16u_C1(Vexa16u* pSrc, Vexa16u* pDst, VexaSize imgSize, Vexa32s srcPitch,
                                           Vexa32s dstPitch, VexaBayerSeq seq, Vexa32s dataBits, cudaStream_t stream);
VEXA_API VexaStatus vexa_demosaic_dfpd_8u_fast(Vexa8u* src, Vexa8u* dst, Vexa32s width, Vexa32s height, Vexa32s spitch,
                                               Vexa32s dpitch, Vexa32s databits, VexaBayerSeq seq, bool refine,
                                               cudaStream_t stream);
VEXA_API VexaStatus vexa_demosaic_dfpd_16u_fast(Vexa16u* src, Vexa16u* dst, Vexa32s width, Vexa32s height,
                                                Vexa32s spitch, Vexa32s dpitch, Vexa32s databits, VexaBayerSeq seq,
                                                bool refine, cudaStream_t stream);
template <VexaBayerSeq seq>
VEXA_API VexaStatus vexa_demosaic_DFPD_simple_8u_fast(Vexa8u* src, Vexa8u* dst, Vexa32s width, Vexa32s height,
                                                      Vexa32s spitch, Vexa32s dpitch, Vexa32s databits, bool refine,
                                                      cudaStream_t stream);
template <VexaBayerSeq seq>
VEXA_API VexaStatus vexa_demosaic_DFPD_simple_16u_fast(Vexa16u* src, Vexa16u* dst, Vexa32s width, Vexa32s height,
                                                       Vexa32s spitch, Vexa32s dpitch, Vexa32s databits, bool refine,
                                                       cudaStream_t stream);
/// @}

/// @name Workers of packed video, on device pointers
/// Width in pixels, pitches in bytes; `raw_pitch` and the pitch of the packed image times the height are its bytes.
/// @return VEXA_CUDA_KERNEL_EXECUTION_ERROR for the first; VEXA_MEMFREE_ERR for the second
/// @{
VEXA_API VexaStatus vexa_v210_to_yuv444(Vexa32u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s pitch, Vexa32s height,
                                        Vexa32s raw_pitch, cudaStream_t stream);
VEXA_API VexaStatus vexa_yuv444_to_v210(Vexa16u* d_444, Vexa32u* image_raw, Vexa32s srcWidth, Vexa32s srcPitch,
                                        Vexa32s srcHeight, Vexa32s dstPitch, cudaStream_t stream);
/// @}
