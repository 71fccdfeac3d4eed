/// @file
/// vexa::computerVision: corner-like features, and following them from one image to the next.

#pragma once

#include "vexaCore.h"

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
///         images differ in size, depth or channels; VEXA_INVALID_ARG_ERROR for a `subSampling` that does not lie
///         between 0 and 1; VEXA_INTERNAL_CALL_ERROR for a pyramid with a level of less than a pixel and images of less
///         than 2 by 2; VEXA_INTERNAL_FUNCTION_CALL_ERROR if a level fails, as for windows of more than 2^24 pixels;
///         VEXA_MEM_ALLOC_ERR, VEXA_MEMCPY_H2D_ERROR, VEXA_MEMCPY_D2D_ERROR, VEXA_MEMCPY_D2H_ERROR, VEXA_MEMFREE_ERR
///
/// Prints two lines to standard output for each level.
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
