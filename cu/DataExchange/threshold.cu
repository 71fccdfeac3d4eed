/// @file
/// Clamps elements between a lower and an upper bound for each channel.

#include "arguments.h"
#include "arithmetic.h"
#include "checks.h"
#include "dispatch.h"
#include "kernels.h"

using namespace vexa;

namespace {

/// Bounds that clamp integer elements as the floats do, one after the other and truncated to the low bits of T.
template <typename T>
struct Bounds {
    T lowest;
    T highest;

    static VEXA_DEVICE Bounds of(float min, float max)
    {
        const Range all{0, Element<T>::max};
        // A bound that is not a number is none.
        const float ceiling = max == max ? max : all.highest;
        if (!(min > all.highest)) return {saturate<T>(min, all), saturate<T>(ceiling, all)};
        // Every element is below the minimum and becomes it, or the maximum where that is less still.
        const T only = static_cast<T>(truncateToUnsigned(min > max ? max : min));
        return {only, only};
    }
};

struct Clamp {
    template <typename T>
    VEXA_DEVICE T operator()(T element, T lowest, T highest) const
    {
        const T notBelow = element < lowest ? lowest : element;
        return notBelow > highest ? highest : notBelow;
    }
};

}  // namespace

template <typename T>
VEXA_KERNEL kernel_thresh_c1(T* src, T* dst, int width, int height, int pitch, float minThresh, float maxThresh)
{
    const auto bounds = Bounds<T>::of(minThresh, maxThresh);
    mapElements<1>(width, height, Plane<T>{dst, pitch}, Clamp{}, Plane<T>{src, pitch},
                   PerChannel<T, 1>{{bounds.lowest}}, PerChannel<T, 1>{{bounds.highest}});
}

template <typename T>
VEXA_KERNEL kernel_thresh_c3(T* src, T* dst, int width, int height, int pitch, float min0, float max0, float min1,
                             float max1, float min2, float max2)
{
    const Bounds<T> bounds[] = {Bounds<T>::of(min0, max0), Bounds<T>::of(min1, max1), Bounds<T>::of(min2, max2)};
    mapElements<3>(width, height, Plane<T>{dst, pitch}, Clamp{}, Plane<T>{src, pitch},
                   PerChannel<T, 3>{{bounds[0].lowest, bounds[1].lowest, bounds[2].lowest}},
                   PerChannel<T, 3>{{bounds[0].highest, bounds[1].highest, bounds[2].highest}});
}

namespace {

template <typename T>
VexaStatus launchC1(T* pSrc, T* pDst, int width, int height, int pitch, Vexa64f minThresh, Vexa64f maxThresh,
                    cudaStream_t stream)
{
    launch(kernel_thresh_c1<T>, elementExtent<1, T>(width, height), stream, pSrc, pDst, width, height,
           elements<T>(pitch), static_cast<float>(minThresh), static_cast<float>(maxThresh));
    return VEXA_SUCCESS;
}

template <typename T>
VexaStatus launchC3(T* pSrc, T* pDst, int width, int height, int pitch, const Vexa64f* minThresh,
                    const Vexa64f* maxThresh, cudaStream_t stream)
{
    // A scalar without memory reads as zeros.
    const auto bound = [](const Vexa64f* bounds, int channel) {
        return bounds == nullptr ? 0.0F : static_cast<float>(bounds[channel]);
    };
    launch(kernel_thresh_c3<T>, elementExtent<3, T>(width, height), stream, pSrc, pDst, width, height,
           elements<T>(pitch), bound(minThresh, 0), bound(maxThresh, 0), bound(minThresh, 1), bound(maxThresh, 1),
           bound(minThresh, 2), bound(maxThresh, 2));
    return VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexa_thresh_8u_c1(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                             Vexa64f minThresh, Vexa64f maxThresh, cudaStream_t stream)
{
    return launchC1(pSrc, pDst, width, height, pitch, minThresh, maxThresh, stream);
}

VexaStatus vexa_thresh_8u_c3(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                             const Vexa64f* minThresh, const Vexa64f* maxThresh, cudaStream_t stream)
{
    return launchC3(pSrc, pDst, width, height, pitch, minThresh, maxThresh, stream);
}

VexaStatus vexa_thresh_16u_c1(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                              Vexa64f minThresh, Vexa64f maxThresh, cudaStream_t stream)
{
    return launchC1(pSrc, pDst, width, height, pitch, minThresh, maxThresh, stream);
}

VexaStatus vexa_thresh_16u_c3(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                              const Vexa64f* minThresh, const Vexa64f* maxThresh, cudaStream_t stream)
{
    return launchC3(pSrc, pDst, width, height, pitch, minThresh, maxThresh, stream);
}

namespace {

using ThresholdTypes = Table<Row<u8>, Row<u16>>;

/// Picks the worker.
struct Threshold {
    const VexaImage& src;
    VexaImage& dst;
    const VexaScalar& min;
    const VexaScalar& max;
    platform::Stream stream;

    VexaStatus operator()(ChannelCount<1>, Row<u8>) const { return call(vexa_thresh_8u_c1, min[0], max[0]); }
    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return call(vexa_thresh_8u_c3, min.vals(), max.vals()); }
    VexaStatus operator()(ChannelCount<1>, Row<u16>) const { return call(vexa_thresh_16u_c1, min[0], max[0]); }
    VexaStatus operator()(ChannelCount<3>, Row<u16>) const { return call(vexa_thresh_16u_c3, min.vals(), max.vals()); }

    template <typename T, typename Bound>
    VexaStatus call(VexaStatus (*worker)(T*, T*, int, int, int, Bound, Bound, cudaStream_t), Bound lowest,
                    Bound highest) const
    {
        return worker(src.ptr<T>(), dst.ptr<T>(), src.width(), rowsInside(dst, src), src.pitch(), lowest, highest,
                      stream);
    }
};

}  // namespace

namespace vexa::dataExchange {

VexaStatus threshold(const VexaImage& src, VexaImage& dst, const VexaScalar& minThresh, const VexaScalar& maxThresh,
                     const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    return dispatch(ThresholdTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    Threshold{src, dst, minThresh, maxThresh, handle(stream)}, src);
}

}  // namespace vexa::dataExchange
