/// @file
/// vexa::computerVision: image alignment and focus stacking.

#pragma once

#include "vexaCore.h"

class VexaFilter;

/// @name Alignment and focus stacking: functions for callers and workers
/// @{

/// The affine map that leaves every point where it is, as a start value of findTransformECC: two rows of three.
VEXA_API void initEye(Vexa64f map[][3]);

/// The index of the first image of a series whose size differs from that of the others, or -1. Nothing is compared: it
/// is always -1.
VEXA_API int validateImages(const VexaImage* ImgArr, const int numImages);

/// The worker of findTransformECC: `src` is the template and `dst` the input.
/// @return as findTransformECC
VEXA_API VexaStatus vexa_ecc_8u_c1(VexaImage& src, VexaImage& dst, Vexa64f (*map)[3], const int numberOfIterations,
                                   const double termination_eps);

/// Dot products of parts of 32f images with 1 channel that lie side by side, in double, rounded to float. Blocks.
///
/// Images of different widths: element (0, i) of `dst` is the product of part i of `src1`, as wide as `src2`, and
/// `src2`. Images of one width: they have as many parts as `dst` has columns, and element (j, i), and (i, j) with it,
/// is the product of part i of `src1` and part j of `src2` for j from i on. Other elements of `dst` stay.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED; VEXA_TYPE_NOT_SUPPORTED_ERROR; VEXA_NOT_SUPPORTED_MODE_ERROR for images of
///         different heights or without all parts; VEXA_MEM_ALLOC_ERR, VEXA_MEMFREE_ERR
VEXA_API VexaStatus vexa_project_onto_jacobian_ECC(const VexaImage& src1, const VexaImage& src2, VexaImage& dst);

/// The coordinates of every pixel, into two planes of floats on the device with one pitch in bytes.
/// @return VEXA_SUCCESS
VEXA_API VexaStatus vexa_generate_grid_32fc1(Vexa32f* xGrid, Vexa32f* yGrid, const int width, const int height,
                                             const int pitch, cudaStream_t stream);

/// Where a measure is larger than the best one so far, it becomes that and `i` its index, on planes of floats on the
/// device. `step32`, bytes, is the pitch of all three; `step` is not read. Blocks.
/// @return VEXA_INTERNAL_FUNCTION_CALL_ERROR if the device fails
VEXA_API VexaStatus vexa_order_stack_32fc1(const Vexa32f* ImgBW, Vexa32f* StackVal, Vexa32f* Stack, const int i,
                                           const int width, const int height, const int step, const int step32,
                                           cudaStream_t stream);

/// The stack map with index `NoImage` where the best measure is below `LowCont`, on planes of floats on the device with
/// one pitch in bytes. Blocks.
/// @return VEXA_INTERNAL_FUNCTION_CALL_ERROR if the device fails
VEXA_API VexaStatus vexa_clip_stack(const Vexa32f* StackVal, const Vexa32f* Stack, Vexa32f* StackClip,
                                    const int NoImage, const int LowCont, const int width, const int height,
                                    const int step, cudaStream_t stream);
/// @}

namespace vexa {
namespace computerVision {

using ::initEye;
using ::validateImages;

/// Refines an affine map from the template to the input, x' = t[0][0] * x + t[0][1] * y + t[0][2] and y' likewise by
/// row 1, so that the enhanced correlation coefficient of the template and the warped input grows (Evangelidis and
/// Psarakis, 2008): Gauss-Newton steps on six parameters, from the map that is given. Both images are 8u with 1
/// channel; their sizes may differ.
///
/// Ends after `iterations` steps, or when a step changes the coefficient by less than `epsilon`, or by nothing that is
/// a number. An epsilon above 0.5 allows no step at all; 0 runs them all. The map keeps its last complete step.
///
/// `stream` is not used. Blocks.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED; VEXA_NOT_SUPPORTED_MODE_ERROR for images of different types;
///         VEXA_TYPE_NOT_SUPPORTED_ERROR for other types; VEXA_INVALID_ARG_ERROR without a map; VEXA_UNKNOWN_ERROR,
///         with a line on standard output, if the correlation would fall: the images may not be alike or not overlap
VEXA_API VexaStatus findTransformECC(VexaImage& templ, VexaImage& input, Vexa64f (*t)[3], Vexa32s iterations,
                                     Vexa64f epsilon, const VexaStream& stream = VexaStream(false));

/// Merges images of one scene that are focused at different distances into one that is sharp everywhere: each pixel
/// comes from the image whose neighbourhood has the strongest Laplacian of Gaussian there, the first of equals. With
/// more than one coefficient, `denoiseFilter` smooths the map of their indices, which are rounded and clamped
/// afterwards. 8u and 16u with 3 channels; an empty `sharpImage` is created like the first image.
///
/// Tells its progress, and an error that the device's runtime holds, on standard output. The images should have one
/// size and type. What an image lacks of the first does not compete and is never read: where a smoothed index names it,
/// the pixel comes from the first image. Blocks.
///
/// @return VEXA_INVALID_ARG_ERROR without images; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types of the first image,
///         after all other work; VEXA_IMAGE_NOT_INITIALIZED if it has been released; VEXA_NOT_SUPPORTED_MODE_ERROR for
///         a `sharpImage` of another type; VEXA_MEM_ALLOC_ERR, VEXA_MEMCPY_H2D_ERROR
VEXA_API VexaStatus focusStack(VexaImage* ImgArr, const int numImages, VexaImage& sharpImage, VexaFilter denoiseFilter,
                               const VexaStream& stream = VexaStream(false));

}  // namespace computerVision
}  // namespace vexa
