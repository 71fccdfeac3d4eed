/// @file
/// Filtering and shrinking to half the size at once.

#include "halve.h"

#include "arguments.h"
#include "dataBits.h"
#include "dispatch.h"
#include "halved.h"

using namespace vexa;

namespace {

template <typename T, int C>
VEXA_LOCAL_KERNEL filterHalf(const T* src, T* dst, int width, int height, int srcPitch, int dstPitch, Footprint taps,
                             float highest, Coefficients coefficients)
{
    const FetchClamped<T> fetch{src, 2 * C * width, 2 * height, srcPitch};
    const Plane<T> to{dst, dstPitch};
    const Range range{0.0F, highest};
    correlateHalved<C>(fetch, width, height, taps, coefficients,
                       [=](int x, int y, float sum) { to.row(y)[x] = store<T, Element<T>::saturates>(sum, range); });
}

struct FilterHalf {
    const VexaImage& src;
    VexaImage& dst;
    const VexaFilter& filter;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        const VexaPoint2D<int> anchor = filter.anchor();
        Coefficients coefficients{};
        std::copy_n(filter.coeffs(), filter.width() * filter.height(), coefficients.value);
        using Bits = std::conditional_t<Element<T>::saturates, T, u16>;
        launch(filterHalf<T, C>, Extent{C * dst.width(), dst.height()}, cudaStream_t{}, src.ptr<T>(), dst.ptr<T>(),
               dst.width(), dst.height(), pitchOf<T>(src), pitchOf<T>(dst),
               Footprint{anchor.x, anchor.y, filter.width(), filter.height()},
               static_cast<float>(highestOf<Bits>(src.dataBits())), coefficients);
        return VEXA_SUCCESS;
    }
};

bool isHalf(const VexaImage& src, const VexaImage& dst)
{
    return dst.isInitialized() && src.type() == dst.type() && src.width() == 2LL * dst.width() &&
           src.height() == 2LL * dst.height();
}

bool fits(const VexaFilter& filter)
{
    return filter.isInitialized() && filter.width() > 0 && filter.height() > 0 &&
           static_cast<long long>(filter.width()) * filter.height() <= Coefficients::most;
}

}  // namespace

namespace vexa {

bool filterToHalf(const VexaImage& src, VexaImage& dst, const VexaFilter& filter)
{
    if (!isHalf(src, dst) || !fits(filter)) return false;
    return dispatch(Table<Row<u8>, Row<u16>, Row<f32>>{}, Channels<1, 3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    FilterHalf{src, dst, filter}, src) == VEXA_SUCCESS;
}

}  // namespace vexa
