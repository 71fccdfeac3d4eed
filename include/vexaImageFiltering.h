/// @file
/// Filters, and vexa::imageFiltering: linear filters, gradients, rank filters, enhancement of
/// underwater pictures.

#pragma once

#include "vexaCore.h"

/// The anchor of a centred filter: ((1 - w) / 2, (1 - h) / 2), truncated toward zero. A filter of even size has one
/// more tap on the high side.
VEXA_API VexaPoint2D<int> __vexaDefaultAnchor(int w, int h);

/// The coefficients of a two-dimensional filter, row by row in page-locked host memory, and an anchor: the offset from
/// an output pixel to its first tap, so negative for a centred filter.
///
/// Copies share the coefficients, which live as long as the last of them; moves are copies too. Copies may be made and
/// dropped by several threads at once.
class VEXA_API VexaFilter {
public:
    /// An empty filter.
    VexaFilter();

    /// Constructors with arguments call the create() of the same arguments; if that fails the filter stays empty.
    VexaFilter(Vexa32s w, Vexa32s h);
    VexaFilter(Vexa32s w, Vexa32s h, Vexa32f* coeffs);
    VexaFilter(Vexa32s w, Vexa32s h, const VexaPoint2D<int>& anchor);
    VexaFilter(Vexa32s w, Vexa32s h, const VexaPoint2D<int>& anchor, Vexa32f* coeffs);
    VexaFilter(const VexaSize& size);
    VexaFilter(const VexaSize& size, Vexa32f* coeffs);
    VexaFilter(const VexaSize& size, const VexaPoint2D<int>& anchor);
    VexaFilter(const VexaSize& size, const VexaPoint2D<int>& anchor, Vexa32f* coeffs);
    VexaFilter(const VexaFilter& other);
    VexaFilter& operator=(const VexaFilter& other);
    ~VexaFilter();

    /// Makes an empty filter one of w * h coefficients, a copy of `coeffs`, or zeros where there are none given. The
    /// anchor is __vexaDefaultAnchor unless given, and not checked.
    /// @return whether it was made; false for a filter that is not empty, and if there is no memory
    /// @{
    bool create(Vexa32s w, Vexa32s h, const VexaPoint2D<int>& anchor);
    bool create(Vexa32s w, Vexa32s h, const VexaPoint2D<int>& anchor, Vexa32f* coeffs);
    bool create(Vexa32s w, Vexa32s h);
    bool create(Vexa32s w, Vexa32s h, Vexa32f* coeffs);
    bool create(const VexaSize& size);
    bool create(const VexaSize& size, Vexa32f* coeffs);
    bool create(const VexaSize& size, const VexaPoint2D<int>& anchor);
    bool create(const VexaSize& size, const VexaPoint2D<int>& anchor, Vexa32f* coeffs);
    /// @}

    /// Empties the filter; copies keep the coefficients. The anchor stays.
    /// @return false for an empty filter
    bool release();

    Vexa32s width() const;
    Vexa32s height() const;
    bool isInitialized() const;
    VexaPoint2D<int> anchor() const;
    Vexa32f* coeffs() const;

    /// Coefficient i, row by row, or that of column x and row y. One that does not exist is a reference to a stand-in
    /// that reads 0.
    /// @{
    Vexa32f& operator[](int i);
    const Vexa32f& operator[](int i) const;
    Vexa32f& operator()(int x, int y);
    const Vexa32f& operator()(int x, int y) const;
    /// @}

private:
    Vexa32s _width;
    Vexa32s _height;
    Vexa32f* _coeffs;
    VexaPoint2D<int> _anchor;
    bool _init;
};

/// Filters for common tasks, with the default anchor. The derivatives are not normalised.
class VEXA_API VexaSpecialFilters {
public:
    static VexaFilter average(const VexaSize& size);

    /// Samples of a Gaussian around the middle of the filter, half a pixel apart from its pixels for an even size.
    /// Their sum is 1, unless all of them are too small to be divided by it.
    static VexaFilter gaussian(const VexaSize& size, float sigma);

    /// 3 by 3; alpha, clamped to 0..1, shifts weight from the edges to the corners.
    static VexaFilter laplacian(float alpha);

    static VexaFilter sobel();    ///< rows 1 2 1, 0 0 0, -1 -2 -1
    static VexaFilter scharr();   ///< rows 3 10 3, 0 0 0, -3 -10 -3
    static VexaFilter prewitt();  ///< rows 1 1 1, 0 0 0, -1 -1 -1

    /// The pixel minus laplacian(alpha).
    static VexaFilter unsharp(float alpha);
};

/// What underwaterFilter is asked for. It reads none of it.
struct VEXA_API VexaEnhancementParams {
    bool autoColor;
    Vexa32u filterStrength;
    Vexa64f deGalreAmount;

    VexaEnhancementParams(bool autoColor, Vexa32u filterStrength, Vexa64f deGalreAmount);
    VexaEnhancementParams(const VexaEnhancementParams&) = default;
    VexaEnhancementParams& operator=(const VexaEnhancementParams&) = default;
    ~VexaEnhancementParams();
};

namespace vexa {
namespace imageFiltering {

/// @name Linear filters
/// Correlation of an image with a filter of up to 512 coefficients, in 32-bit float: one fused sum in the order of the
/// coefficients. Integer results are clamped to 0 and the largest value of the data bits of `src` and truncated; a NaN
/// stores 0. Float results are stored as they are. Positions outside the image repeat the edge of the flat row of
/// elements, so that left and right of an image with 3 channels all of them read the first element of the row or the
/// last.
///
/// 8u, 16u and 32f with 1 or 3 channels. An empty `dst` is created like `src`. An empty filter gives 0. Both images are
/// addressed by the pitch of `src`. Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_INPLACE_OP_NOT_SUPPORTED if `dst` is `src`;
///         VEXA_INVALID_ARG_ERROR for more than 512 coefficients; VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ
///         in width, height, depth or channels; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types
/// @{

/// Coefficients go down the image first: number k = i * height + j of the filter weighs the pixel i to the right of the
/// first tap and j below it. So a square filter acts transposed: sobel() is a derivative along x.
VEXA_API VexaStatus imageFilter(const VexaImage& src, VexaImage& dst, const VexaFilter& filter,
                                const VexaStream& stream = VexaStream(false));

/// The same for the pixels of a rectangle, of which what lies inside the image counts. Other pixels are copied from
/// `src`, or left as they are. Here number k = i * width + j of the filter weighs the pixel i to the right and j below:
/// a filter of 5 by 1 runs along x over a whole image, and along y in a rectangle.
VEXA_API VexaStatus imageFilter(const VexaImage& src, VexaImage& dst, const VexaRect& roi, const VexaFilter& filter,
                                bool copyOutliers, const VexaStream& stream = VexaStream(false));
/// @}

/// Two derivatives of an 8u or 32f image with 1 or 3 channels, as 32f images, by differences of its neighbours without
/// a scale factor. VEXA_GRADIENT_CENTRAL_DIFFERENCE: `gradX` right minus left, `gradY` below minus above. The 3 by 3
/// stencils: `gradX` the row above minus the row below, `gradY` the right column minus the left one, weighted 1 2 1
/// (Sobel), 3 10 3 (Scharr) or 1 1 1 (Prewitt). Positions outside the image read as in imageFilter. An unknown type
/// does nothing.
///
/// Empty outputs are created. Those of a 32f source are addressed by its pitch, of an 8u source by that of `gradX`.
/// Returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for outputs that differ in
///         width, height or channels, and for other depths; VEXA_CHANNEL_NOT_SUPPORTED_ERROR for 2 or 4 channels
VEXA_API VexaStatus imageGradients(const VexaImage& src, VexaImage& gradX, VexaImage& gradY,
                                   const VexaGradientKernelType type, const VexaStream& stream = VexaStream(false));

/// @name Rank filters
/// Of 8-bit images with 1 or 3 channels. An empty `dst` is created like `src`; both are addressed by the pitch of
/// `src`.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ in
///         width, height, depth or channels
/// @{

/// The smallest or largest element of a window around each pixel of the rectangle, with the rectangle's edge
/// repeated, by elements as in imageFilter; other pixels are copied. The window is filterSize.height wide and
/// filterSize.width high, while its first pixel is
/// ((1 - filterSize.width) / 2, (1 - filterSize.height) / 2) away: the two differ where it is not square. A window
/// without pixels gives 255 or 0. Runs in place, by way of a copy of the rectangle; else returns without waiting.
///
/// @return VEXA_NOT_SUPPORTED_MODE_ERROR for other types; VEXA_INVALID_ROI_ERROR for a rectangle that is not inside;
///         VEXA_MEMCPY_ERROR; in place VEXA_MEM_ALLOC_ERR, VEXA_MEMCPY_D2A_ERROR, VEXA_MEMFREE_ARRAY_ERR
/// @{
VEXA_API VexaStatus minFilter(const VexaImage& src, VexaImage& dst, const VexaRect& roi, const VexaSize& filterSize,
                              const VexaStream& stream = VexaStream(false));
VEXA_API VexaStatus maxFilter(const VexaImage& src, VexaImage& dst, const VexaRect& roi, const VexaSize& filterSize,
                              const VexaStream& stream = VexaStream(false));
/// @}

/// The most frequent value of a window of 3 by 3, 5 by 5, 7 by 7 or 9 by 9 around each pixel, the smallest of those
/// that are equally frequent: the mode, whatever the name says. Positions outside the image read as in imageFilter.
/// `roi` is ignored. Not in place: pixels would be overwritten that others still read. Returns without waiting.
///
/// @return VEXA_TYPE_NOT_SUPPORTED_ERROR for other types; VEXA_NOT_SUPPORTED_MODE_ERROR for other windows
VEXA_API VexaStatus medianFilter(const VexaImage& src, VexaImage& dst, const VexaRect& roi, const VexaSize& filterSize,
                                 const VexaStream& stream = VexaStream(false));

/// The middle value of the window: the median, whatever the name says. Else as medianFilter.
VEXA_API VexaStatus modeFilter(const VexaImage& src, VexaImage& dst, const VexaRect& roi, const VexaSize& filterSize,
                               const VexaStream& stream = VexaStream(false));
/// @}

/// Takes off the colour cast of an 8u image with 3 channels and stretches the contrast of each channel between the
/// hundredth of its pixels that is darkest and the hundredth (of the first two channels, the thirtieth) that is
/// brightest. The result does not depend on `p`. An empty `dst` is created; any other must have the size and type of
/// `src`, and its sequence, RGB or BGR, tells the order of the result. Where a channel has no such range, as on a
/// constant image, `dst` is left as it is, which is no failure. Runs in place and waits for the device.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that does not match
VEXA_API VexaStatus underwaterFilter(const VexaImage& src, VexaImage& dst, VexaEnhancementParams p,
                                     const VexaStream& stream = VexaStream(false));

}  // namespace imageFiltering
}  // namespace vexa

/// @name Workers, on device pointers
/// Width in pixels, pitch in bytes, C channels, 1 or 3.
/// @return as the public functions
/// @{
template <int C>
VEXA_API VexaStatus vexa_filter_8u(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, Vexa32s dataBits,
                                   const VexaFilter& filter, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_filter_16u(Vexa16u* src, Vexa16u* dst, int width, int height, int pitch, Vexa32s dataBits,
                                    const VexaFilter& filter, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_filter_32f(Vexa32f* src, Vexa32f* dst, int width, int height, int pitch, Vexa32s dataBits,
                                    const VexaFilter& filter, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_filter_8u_r(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, Vexa32s dataBits,
                                     const VexaFilter& filter, const VexaRect& roi, bool copyOutliers,
                                     cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_filter_16u_r(Vexa16u* src, Vexa16u* dst, int width, int height, int pitch, Vexa32s dataBits,
                                      const VexaFilter& filter, const VexaRect& roi, bool copyOutliers,
                                      cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_filter_32f_r(Vexa32f* src, Vexa32f* dst, int width, int height, int pitch, Vexa32s dataBits,
                                      const VexaFilter& filter, const VexaRect& roi, bool copyOutliers,
                                      cudaStream_t stream);

VEXA_API VexaStatus vexa_grad_8u32f(Vexa8u* src, Vexa32f* dstX, Vexa32f* dstY, const int width, const int height,
                                    Vexa32s srcPitch, Vexa32s dstPitch, Vexa32s channels, VexaGradientKernelType type,
                                    cudaStream_t stream);
VEXA_API VexaStatus vexa_grad_32f(float* src, float* dstX, float* dstY, const int width, const int height,
                                  const int pitch, Vexa32s channels, VexaGradientKernelType type, cudaStream_t stream);

template <int C>
VEXA_API VexaStatus vexa_min_filter_8u_r(Vexa8u* input, Vexa8u* output, Vexa32u width, Vexa32u pitch, Vexa32u height,
                                         VexaRect roi, VexaSize filterSize, VexaPoint2D<int> anchor,
                                         cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_max_filter_8u_r(Vexa8u* input, Vexa8u* output, Vexa32u width, Vexa32u pitch, Vexa32u height,
                                         VexaRect roi, VexaSize filterSize, VexaPoint2D<int> anchor,
                                         cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_median_filter_8u(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch,
                                          const VexaSize& filterSize, cudaStream_t stream);
template <int C>
VEXA_API VexaStatus vexa_mode_filter_8u(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch,
                                        const VexaSize& filterSize, cudaStream_t stream);
/// @}
