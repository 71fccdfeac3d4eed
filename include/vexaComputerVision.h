/// @file
/// vexa::computerVision: corner-like features and following them from one image to the next, dense flow, alignment,
/// focus stacking.

#pragma once

#include "vexaCore.h"

class VexaFilter;

/// What goodFeaturesToTrack is asked for.
struct VEXA_API VexaFeaturesCriteria {
    VexaFeaturesAlgorithm algorithm;  ///< the corner measure
    Vexa32f featureQuality;           ///< candidates below this fraction of the best measure are dropped
    Vexa32s minimumDistance;          ///< pixels that two features are apart in x or in y
    Vexa32s blockSize;                ///< side of the window of the structure matrix; an even one counts one more
    Vexa32f k;                        ///< Harris' constant, read for VEXA_FEATURES_HARRIS

    VexaFeaturesCriteria(VexaFeaturesAlgorithm algorithm = VEXA_FEATURES_KLT, Vexa32f featureQuality = 0.01F,
                         Vexa32s minimumDistance = 10, Vexa32s blockSize = 3, Vexa32f k = 0.04F);
    VexaFeaturesCriteria(const VexaFeaturesCriteria&) = default;
    VexaFeaturesCriteria& operator=(const VexaFeaturesCriteria&) = default;
    /// Clears all but the measure.
    ~VexaFeaturesCriteria();
};

/// What trackFeatures and dense optical flow are asked for.
struct VEXA_API VexaTrackingCriteria {
    Vexa32s pyramidLevels;   ///< the coarsest level; level 0 is the image
    VexaSize windowSize;     ///< pixels; the window reaches half of it, truncated, to either side
    Vexa32s iterations;      ///< most steps on a level
    Vexa32f maxResidue;      ///< largest mean absolute difference in the window of a feature that counts as tracked
    Vexa32f errorThreshold;  ///< pixels of the level; a step smaller than this along both axes is the last
    Vexa32f subSampling;     ///< size of a level as a fraction of the next finer one, between 0 and 1

    VexaTrackingCriteria(Vexa32s pyramidLevels = 3, const VexaSize& windowSize = VexaSize(21, 21),
                         Vexa32s iterations = 30, Vexa32f maxResidue = 30.0F, Vexa32f errorThreshold = 0.01F,
                         Vexa32f subSampling = 0.5F);
    VexaTrackingCriteria(const VexaTrackingCriteria&) = default;
    VexaTrackingCriteria& operator=(const VexaTrackingCriteria&) = default;
    /// Clears all fields.
    ~VexaTrackingCriteria();
};

namespace vexa {
namespace computerVision {

/// The strongest corners in a rectangle of an 8UC1 image, best first, thinned out by quality and distance. A candidate
/// is the strongest pixel of a cell of 7 by 7 pixels. Gradients are central differences; inside the rectangle they
/// count pixels beside it, outside it they are 0.
///
/// Of a list of the truncation of width * height / 49 + 7 candidates, cells are stored by rows of whole blocks of 16;
/// those of the bottom rows that find no place in it are lost. The first candidate is always a feature. Another is one
/// if its measure is at least `featureQuality` times that of the first, and no better feature lies less than
/// `minimumDistance` pixels away along both axes. Waits for the result.
///
/// @param roi may reach beyond the image, whose edges then repeat
/// @param output takes a new array, made by new[], which the caller deletes; what it pointed to before is not freed.
///        `x` and `y` are pixels of the image, `val` is the measure: the smaller eigenvalue of the structure matrix
///        (Shi and Tomasi), Harris' response, or determinant over trace. Only the first `maxFeatures` mean something.
///        It is there too if copying into it or freeing device memory failed
/// @param maxFeatures how many features are wanted, and then how many there are
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty image; VEXA_NOT_SUPPORTED_MODE_ERROR for types other than 8UC1;
///         VEXA_MEM_ALLOC_ERR also for a rectangle that no memory holds, VEXA_INTERNAL_FUNCTION_CALL_ERROR if there is
///         none for its gradients, VEXA_MEMSET_ERR, VEXA_MEMCPY_D2H_ERROR, VEXA_MEMFREE_ERR
VEXA_API VexaStatus goodFeaturesToTrack(const VexaImage& src, const VexaRect& roi,
                                        VexaPointValue2D<float, float>*& output, Vexa32s& maxFeatures,
                                        const VexaFeaturesCriteria criteria,
                                        const VexaStream& stream = VexaStream(false));

/// Follows features from one 8-bit image of one channel to the next, by the symmetric form of the pyramidal method of
/// Lucas and Kanade: each step solves with the sum of both images' gradients. Levels of the pyramid are made from the
/// full image by linear interpolation. All positions are read between pixels whose centres lie at halves, without the
/// half pixel to the centre of a pixel. Waits for the result.
///
/// @param inputFeatures `featureCount` features of `previous`, in host memory. They are also the first guess of where
///        they are in `next`. One with a `val` of -2 or -4 is not followed and comes back as it is
/// @param trackedFeatures takes a new array of `featureCount` records, made by new[], which the caller deletes. `val`
///        tells how the feature fared: 0 tracked; -5 tracked, with a mean absolute difference above `maxResidue`; -2
///        there was no corner in the window, and -4 it left one of the images: then the position is that of the coarser
///        level; -3 no step was made
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty image; VEXA_DEPTH_NOT_SUPPORTED_ERROR and
///         VEXA_CHANNEL_NOT_SUPPORTED_ERROR for another format of `previous`; VEXA_NOT_SUPPORTED_MODE_ERROR if the
///         images differ in size, depth or channels, or the pitch of `previous` leads out of `next`;
///         VEXA_INVALID_ARG_ERROR for a `subSampling` that does not lie between 0 and 1; VEXA_INTERNAL_CALL_ERROR for a
///         pyramid with a level of less than a pixel and images of less than 2 by 2; VEXA_INTERNAL_FUNCTION_CALL_ERROR
///         if a level fails, as for windows of more than 2^24 pixels; VEXA_MEM_ALLOC_ERR, VEXA_MEMCPY_H2D_ERROR,
///         VEXA_MEMCPY_D2D_ERROR, VEXA_MEMCPY_D2H_ERROR, VEXA_MEMFREE_ERR
///
/// Prints two lines to standard output for each level, with the status of a resize each.
VEXA_API VexaStatus trackFeatures(const VexaImage& previous, const VexaImage& next,
                                  VexaPointValue2D<float, float>* inputFeatures,
                                  VexaPointValue2D<float, float>*& trackedFeatures, const Vexa32s featureCount,
                                  const VexaTrackingCriteria criteria, const VexaStream& stream = VexaStream(false));

}  // namespace computerVision
}  // namespace vexa

/// The workers of the operations above, for callers with raw device pointers. Sizes are in pixels, pitches in bytes.
/// @{
VEXA_API VexaStatus vexa_goodFeaturesToTrack(Vexa8u* pSrc, Vexa32s srcWidth, Vexa32s srcPitch, Vexa32s srcHeight,
                                             VexaRect roi, VexaPointValue2D<float, float>*& host_featureList,
                                             Vexa32s* featureCount, VexaFeaturesAlgorithm algo, Vexa32f quality,
                                             Vexa32s minimumDistance, Vexa32s blockSize, Vexa32f k,
                                             cudaStream_t stream);

/// The measure of every pixel of a rectangle. VEXA_MEM_ALLOC_ERR
VEXA_API VexaStatus _getFeatures(Vexa8u* pSrc, Vexa32s srcWidth, Vexa32s srcPitch, Vexa32s srcHeight,
                                 const VexaRect& roi, Vexa32f* eig, Vexa32s eigPitch, Vexa32s blockSize, bool useHarris,
                                 bool usePeter, Vexa32f k, cudaStream_t stream);

/// Central differences of a rectangle.
VEXA_API void _calculateGradients(Vexa8u* pSrc, Vexa32s srcWidth, Vexa32s srcPitch, Vexa32s srcHeight,
                                  const VexaRect& roi, Vexa32f* gradX, Vexa32f* gradY, Vexa32s gradPitch,
                                  cudaStream_t stream);

/// The strongest pixel of each cell of a rectangle's measures, into a list of zeros in device memory.
VEXA_API void _selectGoodFeatures(Vexa32f* eig, Vexa32s eigPitch, const VexaRect& roi,
                                  VexaPointValue2D<float, float>* list, Vexa32s listSize, cudaStream_t stream);

/// Whether a feature is stronger than another.
VEXA_API bool _VexaPointValueDescend(const VexaPointValue2D<float, float>& lhs,
                                     const VexaPointValue2D<float, float>& rhs);

/// Moves the features among `count` candidates in host memory, strongest first, to the head of the list, and sets
/// `count` to their number. VEXA_MEM_ALLOC_ERR
VEXA_API VexaStatus _selectBestFeatures(VexaPointValue2D<float, float>* host_featurelist, Vexa32s minimumDistance,
                                        Vexa32s* count, Vexa32f quality);

VEXA_API VexaStatus vexa_trackFeatures(Vexa8u* image1, Vexa8u* image2, Vexa32s width, Vexa32s widthStep, Vexa32s height,
                                       VexaPointValue2D<float, float>* features1,
                                       VexaPointValue2D<float, float>*& features2, Vexa32s featureCount,
                                       Vexa32s pyramidLevels, VexaSize windowSize, Vexa32f maxResidue,
                                       Vexa32s iterations, Vexa32f errorThreshold, Vexa32f subSampling,
                                       cudaStream_t internal_stream);

/// One level, of which `subSampling` is the scale. The lists are in device memory. VEXA_MEM_ALLOC_ERR also for windows
/// of more than 2^24 pixels, VEXA_MEMFREE_ERR
VEXA_API VexaStatus _vexaTrackFeatures(Vexa8u* image1, Vexa8u* image2, Vexa32s width, Vexa32s widthStep, Vexa32s height,
                                       VexaPointValue2D<float, float>* features1,
                                       VexaPointValue2D<float, float>* features2, Vexa32s featureCount,
                                       Vexa32s iterations, Vexa32f subSampling, VexaSize windowSize,
                                       Vexa32f errorThreshold, Vexa32f maxResidue, cudaStream_t internal_stream);

/// Gradients of both images of a level, in images of floats that share a pitch.
VEXA_API void _calculateTrackerGradients(Vexa8u* image1, Vexa8u* image2, Vexa32s width, Vexa32s widthStep,
                                         Vexa32s height, Vexa32f* img1X, Vexa32f* img1Y, Vexa32f* img2X, Vexa32f* img2Y,
                                         Vexa32s gradPitch, cudaStream_t internal_stream);

/// Follows features on one level, by the images and, on a GPU, the gradients. The host makes gradients of its own.
VEXA_API void _trackFeatures(Vexa8u* image1, Vexa8u* image2, Vexa32s width, Vexa32s widthStep, Vexa32s height,
                             Vexa32f* img1X, Vexa32f* img1Y, Vexa32f* img2X, Vexa32f* img2Y, Vexa32s gradPitch,
                             VexaPointValue2D<float, float>* features1, VexaPointValue2D<float, float>* features2,
                             Vexa32s featureCount, Vexa32s iterations, Vexa32f subSampling, VexaSize windowSize,
                             Vexa32f errorThreshold, Vexa32f maxResidue, cudaStream_t internal_stream);
/// @}

/// @name Dense optical flow
/// @{
namespace vexa {
namespace computerVision {

/// How far each pixel of an 8UC1 image moves to the next one, by relaxation after Horn and Schunck from the derivatives
/// of two times two pixels in both images: 0 at first, then `iterations` rounds in which a pixel takes its own flow for
/// that around it. Without gradients and with a `lambda` of 0 the flow is NaN.
///
/// The images are read as width * height bytes one after the other, whatever their pitch: give them one that is their
/// width, or the flow is that of skewed images. Pixels past the end are 0. Waits for the result.
///
/// @param flowX width * height floats in host memory, row by row: the flow along y, that is, between rows
/// @param flowY the same for the flow along x
/// @param usePrevious is not read: the flow starts at 0
/// @param lambda weight of smoothness, in gray levels; it counts by its square
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty image; VEXA_DEPTH_NOT_SUPPORTED_ERROR and
///         VEXA_CHANNEL_NOT_SUPPORTED_ERROR for another format of `previous`; VEXA_NOT_SUPPORTED_MODE_ERROR if the
///         images differ in width, height, depth or channels; VEXA_SIZE_ERROR for less than 256 pixels. Whatever fails
///         after that is not reported
VEXA_API VexaStatus opticalFlowHS(const VexaImage& previous, const VexaImage& next, Vexa32f* flowX, Vexa32f* flowY,
                                  const bool usePrevious, const Vexa32f lambda, const Vexa32s iterations,
                                  const VexaStream& stream = VexaStream(false));

/// How far each pixel of an 8UC1 image moves to the next one, by the method of Lucas and Kanade from coarse to fine: on
/// each level a pixel moves its window by up to `iterations` steps until one is shorter than `errorThreshold` along
/// both axes. A level has half the size of the next finer one, truncated, and is the image resized by linear
/// interpolation; it starts from twice the flow of the coarser one. Levels without pixels are left out.
///
/// Of the criteria `windowSize` means radii here: the window has 2 * width + 1 by 2 * height + 1 pixels. Pixels whose
/// window leaves the image keep the guess of the coarser level, which is 0 if there is none. `subSampling` and
/// `maxResidue` are not read.
///
/// `next` is sampled as a texture whose texels are centred at halves, so the flow holds half a pixel more along both
/// axes than the pixels move: subtract 0.5. Gradients are differences of pixels two apart, so a step goes half of the
/// way, and a handful of iterations is needed. Where the window has no structure in some direction the flow is NaN, or
/// 0 where it would be infinite or lead out of the image; a NaN is passed on to finer levels. Waits for the result.
///
/// @param flowX width * height floats in host memory, row by row: the flow along x. Page-locked for the copy
/// @param flowY the same for the flow along y
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty image; VEXA_NOT_SUPPORTED_MODE_ERROR if the images differ in width,
///         height or type; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types; VEXA_INVALID_ARG_ERROR for negative
///         `pyramidLevels`; VEXA_INTERNAL_FUNCTION_CALL_ERROR if a level fails; VEXA_MEMORY_PINNING_ERROR for arrays
///         that can't be page-locked, null ones too; VEXA_MEMCPY_D2H_ERROR
VEXA_API VexaStatus opticalFlowPyrLKDense(const VexaImage& previous, const VexaImage& next, Vexa32f* flowX,
                                          Vexa32f* flowY, const VexaTrackingCriteria criteria,
                                          const VexaStream& stream = VexaStream(false));

}  // namespace computerVision
}  // namespace vexa

/// The workers, on device pointers and arrays in host memory. `criteria` is the number of rounds; `imgWidthStep`, in
/// bytes, is the pitch of both images.
VEXA_API VexaStatus vexa_calcOpticalFlowHS_8u_C1(Vexa8u* imgA, Vexa8u* imgB, int imageWidth, int imageHeight,
                                                 Vexa32f* u, Vexa32f* v, bool usePrevious, Vexa32f lambda,
                                                 Vexa32s criteria, cudaStream_t stream);
VEXA_API VexaStatus vexa_opticalFlowPyramidLK(Vexa8u* prevImg, Vexa8u* nextImg, Vexa32u imgWidth, Vexa32u imgWidthStep,
                                              Vexa32u imgHeight, Vexa32f* dx, Vexa32f* dy, VexaSize windowSize,
                                              Vexa32s pyramidLevels, Vexa32f subsampling, Vexa32s maxIterations,
                                              Vexa32f errorThreshold, cudaStream_t internal_stream);

/// As vexa::computerVision::opticalFlowPyrLKDense on Gaussian pyramids, with a guess in proportion to the widths of the
/// levels. It takes the nearest pixel of `next`, so a step counts where it leads to another one; this flow, too, is
/// half a pixel larger in the mean. What fails on a level is not reported.
/// @return as opticalFlowPyrLKDense
VEXA_API VexaStatus vexa_opticalFlowPyramidLK2(const VexaImage& prev, const VexaImage& next, float* dx, float* dy,
                                               VexaSize windowSize, int pyramidLevels, float subsampling,
                                               int maxIterations, float errorThreshold, cudaStream_t stream);
/// @}

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
/// Tells its progress, and an error that the device's runtime holds, on standard output. Images that differ from the
/// first in size or type do not compete; where a smoothed index names one, the pixel comes from the first image.
/// Blocks.
///
/// @return VEXA_INVALID_ARG_ERROR without images; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types of the first image,
///         after all other work; VEXA_IMAGE_NOT_INITIALIZED if it has been released; VEXA_NOT_SUPPORTED_MODE_ERROR for
///         a `sharpImage` of another type or size; VEXA_MEM_ALLOC_ERR, VEXA_MEMCPY_H2D_ERROR
VEXA_API VexaStatus focusStack(VexaImage* ImgArr, const int numImages, VexaImage& sharpImage, VexaFilter denoiseFilter,
                               const VexaStream& stream = VexaStream(false));

}  // namespace computerVision
}  // namespace vexa
