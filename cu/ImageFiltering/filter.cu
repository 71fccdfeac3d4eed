/// @file
/// Linear filters. The two kernels walk the taps of filters that are not square differently: that of the whole image
/// takes the width of the filter across the image and its height down, that of a rectangle the other way round. That is
/// meant.

#include "arguments.h"
#include "checks.h"
#include "correlate.h"
#include "dataBits.h"
#include "dispatch.h"
#include "pitch.h"

using namespace vexa;

namespace {

/// The elements of an area of an image of C-channel pixels = their correlation with a filter, 0 if it is empty in
/// either direction.
template <bool saturates, int C, typename T>
VEXA_DEVICE void filterArea(const FetchClamped<T>& src, Plane<T> dst, Interior area, const Footprint& window,
                            const Coefficients& coefficients, int minVal, int maxVal)
{
    const Footprint taps = window.isEmpty() ? Footprint{0, 0, 0, 0} : window;
    const Range range{static_cast<float>(minVal), static_cast<float>(maxVal)};
    correlate<C>(src, area, taps, coefficients,
                 [=](int x, int y, float sum) { dst.row(y)[x] = store<T, saturates>(sum, range); });
}

VEXA_DEVICE int position(int value, int size)
{
    return value < 0 ? 0 : (value < size ? value : size);
}

/// The part of a rectangle inside an image, in elements of C-channel pixels; its last column and row belong to it.
template <int C>
VEXA_DEVICE Interior areaOf(int offX1, int offY1, int offX2, int offY2, int width, int height)
{
    const int right = offX2 < width ? offX2 + 1 : width;
    const int bottom = offY2 < height ? offY2 + 1 : height;
    return {C * position(offX1, width), C * position(right, width), position(offY1, height), position(bottom, height)};
}

}  // namespace

template <typename T, int bits, int C, bool saturates>
VEXA_KERNEL kernel_filter(const T* src, T* dst, int width, int height, int pitch, int fWidth, int fHeight, int anchorX,
                          int anchorY, int minVal, int maxVal, Coefficients coeffs)
{
    const FetchClamped<T> fetch{src, C * width, height, pitch};
    filterArea<saturates, C>(fetch, Plane<T>{dst, pitch}, {0, C * width, 0, height},
                             {anchorX, anchorY, fWidth, fHeight}, coeffs, minVal, maxVal);
}

template <typename T, int bits, int C, bool saturates>
VEXA_KERNEL kernel_filter_r(const T* src, T* dst, int width, int height, int pitch, int fWidth, int fHeight,
                            int anchorX, int anchorY, int offX1, int offY1, int offX2, int offY2, int minVal,
                            int maxVal, bool copyOutliers, Coefficients coeffs)
{
    const FetchClamped<T> fetch{src, C * width, height, pitch};
    const Plane<T> to{dst, pitch};
    const Interior area = areaOf<C>(offX1, offY1, offX2, offY2, width, height);
    filterArea<saturates, C>(fetch, to, area, {anchorX, anchorY, fHeight, fWidth}, coeffs, minVal, maxVal);
    if (copyOutliers) forEachPixelOutside(area, C * width, height, [=](int x, int y) { to.row(y)[x] = fetch(x, y); });
}

namespace {

/// Number of taps; a side below 1 has none.
long long tapsOf(const VexaFilter& filter)
{
    return filter.width() < 1 || filter.height() < 1 ? 0 : static_cast<long long>(filter.width()) * filter.height();
}

/// Coefficients are parameters of a launch, which has no room for more.
[[nodiscard]] VexaStatus fits(const VexaFilter& filter)
{
    return tapsOf(filter) <= Coefficients::most ? VEXA_SUCCESS : VEXA_INVALID_ARG_ERROR;
}

Coefficients coefficientsOf(const VexaFilter& filter)
{
    Coefficients coefficients{};
    std::copy_n(filter.coeffs(), tapsOf(filter), coefficients.value);
    return coefficients;
}

/// An anchor no farther out than it need be for all taps of all pixels to read the edge, so that positions stay
/// integers.
int withinReach(int anchor, int size)
{
    return static_cast<int>(std::clamp<long long>(anchor, -static_cast<long long>(size) - Coefficients::most, size));
}

/// The last position of a run, or one outside an image of `size` as well.
int lastOf(int start, int length, int size)
{
    return static_cast<int>(std::clamp<long long>(static_cast<long long>(start) + length - 1, -1, size));
}

/// What a worker is asked for; pitch in bytes.
template <typename T>
struct Filtering {
    T* src;
    T* dst;
    int width;
    int height;
    int pitch;
    Vexa32s dataBits;
    const VexaFilter& filter;
    cudaStream_t stream;

    static constexpr int bits = 8 * static_cast<int>(sizeof(T));
    static constexpr bool saturates = Element<T>::saturates;

    int maxVal() const { return saturates ? highestOf<std::conditional_t<saturates, T, u16>>(dataBits) : 0; }
    int anchorX() const { return withinReach(filter.anchor().x, width); }
    int anchorY() const { return withinReach(filter.anchor().y, height); }

    template <int C>
    VexaStatus wholeImage() const
    {
        if (const VexaStatus failed = fits(filter)) return failed;
        launch(kernel_filter<T, bits, C, saturates>, Extent{C * width, height}, stream, src, dst, width, height,
               elements<T>(pitch), filter.width(), filter.height(), anchorX(), anchorY(), 0, maxVal(),
               coefficientsOf(filter));
        return VEXA_SUCCESS;
    }

    template <int C>
    VexaStatus rectangle(const VexaRect& roi, bool copyOutliers) const
    {
        if (const VexaStatus failed = fits(filter)) return failed;
        launch(kernel_filter_r<T, bits, C, saturates>, Extent{C * width, height}, stream, src, dst, width, height,
               elements<T>(pitch), filter.width(), filter.height(), anchorX(), anchorY(), roi.x, roi.y,
               lastOf(roi.x, roi.width, width), lastOf(roi.y, roi.height, height), 0, maxVal(), copyOutliers,
               coefficientsOf(filter));
        return VEXA_SUCCESS;
    }
};

}  // namespace

template <int C>
VexaStatus vexa_filter_8u(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, Vexa32s dataBits,
                          const VexaFilter& filter, cudaStream_t stream)
{
    return Filtering<u8>{src, dst, width, height, pitch, dataBits, filter, stream}.wholeImage<C>();
}

template <int C>
VexaStatus vexa_filter_16u(Vexa16u* src, Vexa16u* dst, int width, int height, int pitch, Vexa32s dataBits,
                           const VexaFilter& filter, cudaStream_t stream)
{
    return Filtering<u16>{src, dst, width, height, pitch, dataBits, filter, stream}.wholeImage<C>();
}

template <int C>
VexaStatus vexa_filter_32f(Vexa32f* src, Vexa32f* dst, int width, int height, int pitch, Vexa32s dataBits,
                           const VexaFilter& filter, cudaStream_t stream)
{
    return Filtering<f32>{src, dst, width, height, pitch, dataBits, filter, stream}.wholeImage<C>();
}

template <int C>
VexaStatus vexa_filter_8u_r(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, Vexa32s dataBits,
                            const VexaFilter& filter, const VexaRect& roi, bool copyOutliers, cudaStream_t stream)
{
    return Filtering<u8>{src, dst, width, height, pitch, dataBits, filter, stream}.rectangle<C>(roi, copyOutliers);
}

template <int C>
VexaStatus vexa_filter_16u_r(Vexa16u* src, Vexa16u* dst, int width, int height, int pitch, Vexa32s dataBits,
                             const VexaFilter& filter, const VexaRect& roi, bool copyOutliers, cudaStream_t stream)
{
    return Filtering<u16>{src, dst, width, height, pitch, dataBits, filter, stream}.rectangle<C>(roi, copyOutliers);
}

template <int C>
VexaStatus vexa_filter_32f_r(Vexa32f* src, Vexa32f* dst, int width, int height, int pitch, Vexa32s dataBits,
                             const VexaFilter& filter, const VexaRect& roi, bool copyOutliers, cudaStream_t stream)
{
    return Filtering<f32>{src, dst, width, height, pitch, dataBits, filter, stream}.rectangle<C>(roi, copyOutliers);
}

namespace {

template <typename T>
using ToFilter = VexaStatus(T*, T*, int, int, int, Vexa32s, const VexaFilter&, cudaStream_t);
template <typename T>
using ToFilterRectangle = VexaStatus(T*, T*, int, int, int, Vexa32s, const VexaFilter&, const VexaRect&, bool,
                                     cudaStream_t);

}  // namespace

template ToFilter<u8> vexa_filter_8u<1>;
template ToFilter<u8> vexa_filter_8u<3>;
template ToFilter<u16> vexa_filter_16u<1>;
template ToFilter<u16> vexa_filter_16u<3>;
template ToFilter<f32> vexa_filter_32f<1>;
template ToFilter<f32> vexa_filter_32f<3>;
template ToFilterRectangle<u8> vexa_filter_8u_r<1>;
template ToFilterRectangle<u8> vexa_filter_8u_r<3>;
template ToFilterRectangle<u16> vexa_filter_16u_r<1>;
template ToFilterRectangle<u16> vexa_filter_16u_r<3>;
template ToFilterRectangle<f32> vexa_filter_32f_r<1>;
template ToFilterRectangle<f32> vexa_filter_32f_r<3>;

namespace {

using FilterTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

template <typename T>
Filtering<T> filtering(const VexaImage& src, VexaImage& dst, const VexaFilter& filter, const VexaStream& stream)
{
    return {src.ptr<T>(), dst.ptr<T>(), src.width(), src.height(), src.pitch(), src.dataBits(), filter, handle(stream)};
}

struct FilterWhole {
    const VexaImage& src;
    VexaImage& dst;
    const VexaFilter& filter;
    const VexaStream& stream;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        return withPitch(dst, src.pitch(), stream,
                         [&](VexaImage& to) { return filtering<T>(src, to, filter, stream).template wholeImage<C>(); });
    }
};

struct FilterRectangle {
    const VexaImage& src;
    VexaImage& dst;
    const VexaRect& roi;
    const VexaFilter& filter;
    bool copyOutliers;
    const VexaStream& stream;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        return withPitch(dst, src.pitch(), stream, [&](VexaImage& to) {
            return filtering<T>(src, to, filter, stream).template rectangle<C>(roi, copyOutliers);
        });
    }
};

[[nodiscard]] VexaStatus check(const VexaImage& src, VexaImage& dst, const VexaFilter& filter)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = notInPlace(src, dst)) return failed;
    if (const VexaStatus failed = fits(filter)) return failed;
    return matchOrCreateLike(dst, src);
}

}  // namespace

namespace vexa::imageFiltering {

VexaStatus imageFilter(const VexaImage& src, VexaImage& dst, const VexaFilter& filter, const VexaStream& stream)
{
    if (const VexaStatus failed = check(src, dst, filter)) return failed;
    return dispatch(FilterTypes{}, Channels<1, 3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    FilterWhole{src, dst, filter, stream}, src);
}

VexaStatus imageFilter(const VexaImage& src, VexaImage& dst, const VexaRect& roi, const VexaFilter& filter,
                       bool copyOutliers, const VexaStream& stream)
{
    if (const VexaStatus failed = check(src, dst, filter)) return failed;
    return dispatch(FilterTypes{}, Channels<1, 3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    FilterRectangle{src, dst, roi, filter, copyOutliers, stream}, src);
}

}  // namespace vexa::imageFiltering
