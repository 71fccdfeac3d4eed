/// @file
/// vexa::imageStatistics: numbers and histograms that tell of a whole image. All of them wait for their result.

#pragma once

#include "vexaCore.h"

namespace vexa {
namespace imageStatistics {

/// @name Reductions
/// One number a channel, of 8u, 16u and 32f images with 1 or 3 channels. Element c of the scalar takes the number for
/// channel c; elements past the channels keep what they held. Sums of 8u and 16u images are exact up to 2^53; those of
/// 32f images are kept in double, in an order that makes every run give the same bits.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty image; VEXA_NOT_SUPPORTED_MODE_ERROR for other types;
///         VEXA_INTERNAL_CALL_ERROR if the platform's primitive fails, VEXA_MEM_ALLOC_ERR, VEXA_MEMCPY_D2H_ERROR,
///         VEXA_MEMFREE_ERR
/// @{

/// The largest element.
VEXA_API VexaStatus max(const VexaImage& src, VexaScalar& maxValue, const VexaStream& stream = VexaStream(false));

/// The smallest element.
VEXA_API VexaStatus min(const VexaImage& src, VexaScalar& minValue, const VexaStream& stream = VexaStream(false));

/// Both at once. An empty image gives VEXA_NOT_SUPPORTED_MODE_ERROR.
VEXA_API VexaStatus minMax(const VexaImage& src, VexaScalar& minValue, VexaScalar& maxValue,
                           const VexaStream& stream = VexaStream(false));

VEXA_API VexaStatus sum(const VexaImage& src, VexaScalar& sumValue, const VexaStream& stream = VexaStream(false));

/// The arithmetic mean.
VEXA_API VexaStatus mean(const VexaImage& src, VexaScalar& meanValue, const VexaStream& stream = VexaStream(false));

/// The L2 norm, the square root of the sum of squares. If the primitive fails, VEXA_INTERNAL_FUNCTION_CALL_ERROR.
VEXA_API VexaStatus norm(const VexaImage& src, VexaScalar& normValue, const VexaStream& stream = VexaStream(false));
/// @}

/// @name Mean and standard deviation
/// Of each channel of 8u, 16u and 32f images with 1 or 3 channels; the deviation is that of the population. Elements of
/// the scalars past the channels keep what they held.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty image or mask; VEXA_NOT_SUPPORTED_MODE_ERROR for other types;
///         VEXA_INTERNAL_FUNCTION_CALL_ERROR if the platform's primitive fails, VEXA_MEM_ALLOC_ERR,
///         VEXA_MEMCPY_D2H_ERROR, VEXA_MEMFREE_ERR
/// @{
VEXA_API VexaStatus meanStdDev(const VexaImage& src, VexaScalar& meanValue, VexaScalar& stdDevValue,
                               const VexaStream& stream = VexaStream(false));

/// The same over the pixels whose byte in `mask` is not 0, an 8-bit image with 1 channel and at least the size of
/// `src`. Its size is not compared; one whose buffer ends too early gives VEXA_INTERNAL_FUNCTION_CALL_ERROR.
VEXA_API VexaStatus meanStdDev(const VexaImage& src, VexaScalar& meanValue, VexaScalar& stdDevValue,
                               const VexaImage& mask, const VexaStream& stream = VexaStream(false));
/// @}

/// How many elements of each channel lie between two bounds, which count as inside; for 8u and 32f images with 1 or 3
/// channels. Element c of the bounds serves channel c. For 8u they are truncated, negative ones to 0, and keep their
/// low 8 bits: 10.7 acts as 10 and 300 as 44.
///
/// @return VEXA_NOT_SUPPORTED_MODE_ERROR for an empty image; VEXA_DEPTH_NOT_SUPPORTED_ERROR for other types;
///         VEXA_INTERNAL_FUNCTION_CALL_ERROR if the platform's primitive fails, as it does for a lower bound above the
///         upper; VEXA_MEMCPY_D2H_ERROR, VEXA_MEMFREE_ERR
VEXA_API VexaStatus countInRange(const VexaImage& src, VexaScalar& count, const VexaScalar& rangeMin,
                                 const VexaScalar& rangeMax, const VexaStream& stream = VexaStream(false));

/// Counts how often each value occurs in each channel of an 8-bit image with 1 or 3 channels: bin v of channel c is
/// element 256 * c + v. An empty histogram is created in host memory for the type of `src`. One in host memory holds
/// the counts of this call when it returns; one in device memory is not cleared, so that calls add up, and is complete
/// once the stream has finished.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty image; VEXA_DEPTH_NOT_SUPPORTED_ERROR for elements that don't have 8
///         bits; VEXA_NOT_SUPPORTED_MODE_ERROR for bins other than 256 and 768 or fewer than the channels need;
///         VEXA_CHANNEL_NOT_SUPPORTED_ERROR for 2 or 4 channels
VEXA_API VexaStatus calcHist(const VexaImage& src, VexaHistogram& hist, const VexaStream& stream = VexaStream(false));

}  // namespace imageStatistics
}  // namespace vexa

/// @name Workers of the reductions, on device pointers
/// For C channels, 1 or 3: width in pixels, pitch in bytes. The results are C numbers in host memory.
/// @return as the public functions
/// @{
template <int C>
VEXA_API VexaStatus vexa_max_8u(Vexa8u* pSrc, Vexa64f* maxVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_max_16u(Vexa16u* pSrc, Vexa64f* maxVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                 cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_max_32f(Vexa32f* pSrc, Vexa64f* maxVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                 cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_min_8u(Vexa8u* pSrc, Vexa64f* minVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_min_16u(Vexa16u* pSrc, Vexa64f* minVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                 cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_min_32f(Vexa32f* pSrc, Vexa64f* minVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                 cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_minMax_8u(Vexa8u* pSrc, Vexa64f* minVal, Vexa64f* maxVal, Vexa32s width, Vexa32s height,
                                   Vexa32s pitch, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_minMax_16u(Vexa16u* pSrc, Vexa64f* minVal, Vexa64f* maxVal, Vexa32s width, Vexa32s height,
                                    Vexa32s pitch, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_minMax_32f(Vexa32f* pSrc, Vexa64f* minVal, Vexa64f* maxVal, Vexa32s width, Vexa32s height,
                                    Vexa32s pitch, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_sum_8u(Vexa8u* pSrc, Vexa64f* sumVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_sum_16u(Vexa16u* pSrc, Vexa64f* sumVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                 cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_sum_32f(Vexa32f* pSrc, Vexa64f* sumVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                 cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_mean_8u(Vexa8u* pSrc, Vexa64f* meanVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                 cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_mean_16u(Vexa16u* pSrc, Vexa64f* meanVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                  cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_mean_32f(Vexa32f* pSrc, Vexa64f* meanVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                  cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_norm_8u(Vexa8u* pSrc, Vexa64f* normVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                 cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_norm_16u(Vexa16u* pSrc, Vexa64f* normVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                  cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_norm_32f(Vexa32f* pSrc, Vexa64f* normVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                  cudaStream_t stream);

VEXA_API VexaStatus vexa_minMax_8uC1(Vexa8u* pSrc, Vexa64f* minVal, Vexa64f* maxVal, Vexa32s width, Vexa32s height,
                                     Vexa32s pitch, cudaStream_t stream);
VEXA_API VexaStatus vexa_minMax_8uC3(Vexa8u* pSrc, Vexa64f* minVal, Vexa64f* maxVal, Vexa32s width, Vexa32s height,
                                     Vexa32s pitch, cudaStream_t stream);
/// @}

/// @name Workers of meanStdDev, on device pointers
/// For C channels, 1 or 3: width in pixels, pitches in bytes. The results are C numbers in host memory; a mask has the
/// width and height of the image.
/// @return as meanStdDev
/// @{
template <int C>
VEXA_API VexaStatus vexa_mean_stdev_8u(Vexa8u* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width, Vexa32s height,
                                       Vexa32s pitch, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_mean_stdev_16u(Vexa16u* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width, Vexa32s height,
                                        Vexa32s pitch, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_mean_stdev_32f(Vexa32f* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width, Vexa32s height,
                                        Vexa32s pitch, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_mean_stdev_8u_masked(Vexa8u* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width,
                                              Vexa32s height, Vexa32s pitch, Vexa8u* mask, int maskPitch,
                                              cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_mean_stdev_16u_masked(Vexa16u* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width,
                                               Vexa32s height, Vexa32s pitch, Vexa8u* mask, int maskPitch,
                                               cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_mean_stdev_32f_masked(Vexa32f* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width,
                                               Vexa32s height, Vexa32s pitch, Vexa8u* mask, int maskPitch,
                                               cudaStream_t stream);
/// @}

/// @name Workers of countInRange, on device pointers
/// For C channels, 1 or 3: width in pixels, pitch in bytes.
/// @return as countInRange
/// @{
template <int C>
VEXA_API VexaStatus vexa_countInRange_8u(Vexa8u* pSrc, VexaScalar& count, int width, int height, int pitch,
                                         const VexaScalar& rangeMin, const VexaScalar& rangeMax, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_countInRange_32f(Vexa32f* pSrc, VexaScalar& count, int width, int height, int pitch,
                                          const VexaScalar& rangeMin, const VexaScalar& rangeMax, cudaStream_t stream);
/// @}

/// The worker of calcHist, on a device pointer: width in pixels, pitch in bytes.
/// @return VEXA_CHANNEL_NOT_SUPPORTED_ERROR for channels other than 1 and 3; VEXA_NOT_SUPPORTED_MODE_ERROR for fewer
///         bins than they need
VEXA_API VexaStatus vexa_get_hist_8u(Vexa8u* src, VexaHistogram& hist, const int width, const int height,
                                     const int pitch, const int channels, cudaStream_t stream);
