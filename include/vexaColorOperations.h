/// @file
/// vexa::colorOperations: colour spaces, raw frames, channels apart and together, haze and low light, tone curves,
/// sensor correction, packed video.

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

/// @name Haze and low light
/// 8u and 16u with 3 channels. An empty `dst` is created; any other must have the size, channels and depth of `src`.
/// Both run in place and wait for the device.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_CHANNEL_NOT_SUPPORTED_ERROR for other channels of `src`;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that does not match; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types
///         (an empty `dst` has been created by then)
/// @{

/// Removes haze by the dark channel: the transmission of a pixel is estimated from the darkest of its channels over 3 x
/// 3 pixels, and what the haze has added of the atmospheric light is taken off. That light is given for each channel,
/// by its slot, in units of the image. The outermost pixels have no full neighbourhood and are not written; in a `dst`
/// that the call has created they are 0.
VEXA_API VexaStatus dehaze(const VexaImage& src, VexaImage& dst, int max0, int max1, int max2,
                           const VexaStream& stream = VexaStream(false));

/// Brightens a dark image by removing the haze from its negative. The outermost pixels are the negative of `src`.
VEXA_API VexaStatus lowlight(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));
/// @}

/// @name Colour mixes
/// 8u, 16u and 32f with 3 channels, by their slots. An empty `dst` is created; any other must have the size, channels
/// and depth of `src`. Both run in place.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_CHANNEL_NOT_SUPPORTED_ERROR for other channels of `src`;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that does not match; VEXA_DEPTH_NOT_SUPPORTED_ERROR for other
///         types (an empty `dst` has been created by then)
/// @{

/// Each channel becomes a weighted sum of all three and an offset. Integers saturate to the data bits of `src` and are
/// truncated. Returns without waiting.
///
/// @param coeffs three rows of four floats in host memory, a row for each channel of the result: the weights of
///               channels 0, 1 and 2, and the offset
/// @return also VEXA_NULL_POINTER_ERROR for no `coeffs`
VEXA_API VexaStatus channelMix(const VexaImage& src, VexaImage& dst, float* coeffs,
                               const VexaStream& stream = VexaStream(false));

/// Takes off a colour cast: a mix that adds shares of channel 1, by how far the means of the channels lie apart.
/// Differences of means are divided by 255 whatever the type. Waits for the means.
VEXA_API VexaStatus autoColor(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));
/// @}

/// @name Tone curves
/// Functions of one element. An empty `dst` is created; any other must have the size, channels and depth of `src`,
/// where nothing else is told. All run in place where the types allow it.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that does not
///         match, and for other types where nothing else is told (an empty `dst` has been created by then)
/// @{

/// The power 1 / gamma of elements scaled to 0..1. 8u and 16u with 1 or 3 channels. Returns without waiting.
VEXA_API VexaStatus gammaCorrect(const VexaImage& src, VexaImage& dst, const Vexa32f gamma,
                                 const VexaStream& stream = VexaStream(false));

/// c * ln(1 + element) as 32f, of 8u, 16u or 32f with 1 or 3 channels. Returns without waiting.
/// @return VEXA_DEPTH_NOT_SUPPORTED_ERROR for other types, and for a `dst` of another depth than 32
VEXA_API VexaStatus logTransform(const VexaImage& src, VexaImage& dst, const Vexa32f c,
                                 const VexaStream& stream = VexaStream(false));

/// Stretches the range of each channel of an 8u image with 1 or 3 channels, from its own darkest and brightest element
/// to LOW_OUT..HIGH_OUT. Only elements strictly between LOW_IN and HIGH_IN take part; the others stay. All four are
/// fractions of full scale, one a channel. Waits for the device.
VEXA_API VexaStatus adjust(VexaImage& srcDst, const VexaScalar& LOW_IN, const VexaScalar& HIGH_IN,
                           const VexaScalar& LOW_OUT, const VexaScalar& HIGH_OUT,
                           const VexaStream& stream = VexaStream(false));

/// Replaces each element by the entry of a table in device memory, an image of one row. 8u with 1 or 3 channels, by a
/// table of 8u: with 1 channel 256 entries that serve all channels, with 3 channels a width of 768, of which pixel v
/// holds the entries of value v (an image of 1 channel reads the first 256 elements of it instead). 16u with 1 channel,
/// by a table of the same type, whose last entry serves the values past it. `dst` must have the type of `src`. Returns
/// without waiting.
///
/// @return VEXA_INVALID_ARG_ERROR for a `mapping` of another height, width or type; VEXA_NOT_SUPPORTED_MODE_ERROR
///         for one of another depth than `src`; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types of `src`
VEXA_API VexaStatus LUT(const VexaImage& src, const VexaImage& mapping, VexaImage& dst,
                        const VexaStream& stream = VexaStream(false));

/// Replaces the elements of three-channel pixels, 8u or 16u, by tables in host memory for slots 0, 1 and 2, bounded to
/// the data bits of `src`. Each table has 1 << dataBits entries, the last of which serves the values past it. Of `dst`
/// the size alone is compared; what does not fit both images is not mapped. Waits for the device.
/// @return VEXA_DEPTH_NOT_SUPPORTED_ERROR for other depths
VEXA_API VexaStatus blackGammaLUT(const VexaImage& src, VexaImage& dst, Vexa16u* redLUT, Vexa16u* greenLUT,
                                  Vexa16u* blueLUT, const VexaStream& stream = VexaStream(false));

/// Equalises the histogram of an 8u image with 1 channel: each element becomes the share of the elements up to it,
/// times 255 and rounded. Waits for the device.
/// @return VEXA_TYPE_NOT_SUPPORTED_ERROR for other types
VEXA_API VexaStatus histEq(const VexaImage& src, VexaImage& dst, const VexaStream& stream = VexaStream(false));
/// @}

/// @name Sensors and masks
/// An empty `dst` is created; any other must have the size, channels and depth of `src`, where nothing else is told.
/// They return without waiting and run in place where the types allow it.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that does not
///         match; for other types what the function tells (an empty `dst` has been created by then)
/// @{

/// Flat-field correction: (src - black) * gain / (white - black), truncated to the low bits of an element and then,
/// of 16u, bounded to the data bits of `src`. 8u with 1 channel (of others, the first elements of each row, as many as
/// the width counts) and 16u with 1 or 3. Of `dst` the size alone is compared. The references are read in the layout of
/// `src`; what does not fit all images is not written, and 0 in a `dst` that the call has created.
/// @return VEXA_CHANNEL_NOT_SUPPORTED_ERROR for other channels; VEXA_DEPTH_NOT_SUPPORTED_ERROR for other depths
VEXA_API VexaStatus FPNCorrection(const VexaImage& src, VexaImage& dst, const VexaImage& white, const VexaImage& black,
                                  const Vexa32f gain, const VexaStream& stream = VexaStream(false));

/// Adds a black image to an image, byte by byte over the buffers. Sums wrap. As many bytes as all three images hold. An
/// error that the device's runtime keeps before or after is told on the standard output.
/// @return VEXA_SUCCESS
VEXA_API VexaStatus fpn(VexaImage& output, const VexaImage& input, const VexaImage& blackImage);

/// Replaces what lies outside margins by a colour. 8u and 16u with 1 or 3 channels.
///
/// @param mask an element for each channel, in units of the image and truncated; one-channel images read the first
/// @return VEXA_NULL_POINTER_ERROR for no `mask`; VEXA_DEPTH_NOT_SUPPORTED_ERROR for other depths;
///         VEXA_INVALID_ARG_ERROR for margins that overlap; VEXA_CHANNEL_NOT_SUPPORTED_ERROR for other channels
VEXA_API VexaStatus borderMask(const VexaImage& src, VexaImage& dst, const Vexa32s top, const Vexa32s bottom,
                               const Vexa32s left, const Vexa32s right, const Vexa32f* mask,
                               const VexaStream& stream = VexaStream(false));

/// Keeps the pixels in which one primary exceeds both others by more than `threshold`, from 0 to 255, and turns all
/// others gray. 8 bits, 3 channels, of sequence BGR.
/// @return VEXA_CHANNEL_NOT_SUPPORTED_ERROR for other channels; VEXA_DEPTH_NOT_SUPPORTED_ERROR for other depths;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for another sequence
VEXA_API VexaStatus colorPick(const VexaImage& src, VexaImage& dst, const VexaColor color, const Vexa32f threshold,
                              const VexaStream& stream = VexaStream(false));

/// 255 where the element, or the gray of a colour, reaches `threshold` times 255, else 0, into 1 channel. 8u with 1
/// channel or 3; a colour image of another sequence than RGB and BGR leaves `dst` as it is. `threshold` is bounded to
/// 0..1.
/// @return VEXA_CHANNEL_NOT_SUPPORTED_ERROR for a `dst` of more than 1 channel; VEXA_NOT_SUPPORTED_MODE_ERROR for other
///         types
VEXA_API VexaStatus imageBinary(const VexaImage& src, VexaImage& dst, const Vexa32f threshold,
                                const VexaStream& stream = VexaStream(false));
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

/// @name Workers of the photometric operations, on device pointers
/// Width in pixels, pitches in bytes; one pitch serves all images. Tables, coefficients and masks are in host memory.
/// @return VEXA_SUCCESS, and what is told for the operation
/// @{
VEXA_API VexaStatus vexa_dehaze_8u(Vexa8u* src, Vexa8u* dst, int max0, int max1, int max2, Vexa32s width,
                                   Vexa32s height, Vexa32s pitch, cudaStream_t stream);
VEXA_API VexaStatus vexa_dehaze_16u(Vexa16u* src, Vexa16u* dst, int max0, int max1, int max2, Vexa32s width,
                                    Vexa32s height, Vexa32s pitch, cudaStream_t stream);
VEXA_API VexaStatus vexa_colorTwist_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                       float* coeffs, Vexa32s dataBits, cudaStream_t stream);
VEXA_API VexaStatus vexa_colorTwist_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        float* coeffs, Vexa32s dataBits, cudaStream_t stream);
VEXA_API VexaStatus vexa_colorTwist_32f(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        float* coeffs, Vexa32s dataBits, cudaStream_t stream);
VEXA_API VexaStatus vexa_adjust_8u_C1(Vexa8u* pSrcDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                      const VexaScalar& LOW_IN, const VexaScalar& HIGH_IN, const VexaScalar& LOW_OUT,
                                      const VexaScalar& HIGH_OUT, cudaStream_t stream);
VEXA_API VexaStatus vexa_adjust_8u_C3(Vexa8u* pSrcDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                      const VexaScalar& LOW_IN, const VexaScalar& HIGH_IN, const VexaScalar& LOW_OUT,
                                      const VexaScalar& HIGH_OUT, cudaStream_t stream);
VEXA_API VexaStatus vexaBlackGammaLUT8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa16u* redLUT, Vexa16u* greenLUT,
                                        Vexa16u* blueLUT, VexaSize imgSize, Vexa32s pitch, Vexa32s dataBits,
                                        cudaStream_t stream);
VEXA_API VexaStatus vexaBlackGammaLUT16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa16u* redLUT, Vexa16u* greenLUT,
                                         Vexa16u* blueLUT, VexaSize imgSize, Vexa32s pitch, Vexa32s dataBits,
                                         cudaStream_t stream);
VEXA_API VexaStatus vexa_histEq_8u_C1(Vexa8u* src, Vexa8u* dst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                      cudaStream_t stream);
VEXA_API VexaStatus vexaFPNCorrection8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa8u* whiteImage, Vexa8u* blackImage,
                                        VexaSize imgSize, Vexa32s pitch, Vexa32f gain, cudaStream_t stream);
VEXA_API VexaStatus vexaFPNCorrection16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa16u* whiteImage, Vexa16u* blackImage,
                                         VexaSize imgSize, Vexa32s pitch, Vexa32s channels, Vexa32f gain,
                                         Vexa32s dataBits, cudaStream_t stream);
VEXA_API VexaStatus vexa_borderMask_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                       Vexa32s channels, Vexa32s top, Vexa32s bottom, Vexa32s left, Vexa32s right,
                                       const Vexa32f* mask, cudaStream_t stream);
VEXA_API VexaStatus vexa_borderMask_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                        Vexa32s channels, Vexa32s top, Vexa32s bottom, Vexa32s left, Vexa32s right,
                                        const Vexa32f* mask, cudaStream_t stream);
VEXA_API VexaStatus vexa_colorPick_8u_c3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                         VexaColor color, Vexa32f threshold, VexaChannelSeq sequence,
                                         cudaStream_t stream);
VEXA_API VexaStatus vexa_imageBinary_8u_C1(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                           Vexa32f threshold, cudaStream_t stream);
VEXA_API VexaStatus vexa_imageBinary_8u_C3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                                           Vexa32s dstPitch, Vexa32f threshold, VexaChannelSeq sequence,
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
