/// @file
/// Reductions of an image to one number a channel: max, min, minMax, sum, mean, norm. The workers are one body over the
/// primitives of the platform.

#include "checks.h"
#include "dispatch.h"
#include "pixels.h"
#include "streams.h"
#include "temporaries.h"
#include "vexaImageStatistics.h"

using namespace vexa;
using platform::Pixels;
using platform::Statistic;
using platform::Statistics;

namespace {

/// What a failed primitive gives; norm has a status of its own.
VexaStatus failureOf(Statistic statistic)
{
    return statistic == Statistic::norm ? VEXA_INTERNAL_FUNCTION_CALL_ERROR : VEXA_INTERNAL_CALL_ERROR;
}

/// Brings the result for C channels to the host. Doubles go straight into the scalar.
template <int C>
VexaStatus fetch(Vexa64f* values, const Vexa64f* result, platform::Stream stream)
{
    return platform::copyToHost(values, result, C * sizeof(Vexa64f), stream);
}

template <int C, typename T>
VexaStatus fetch(Vexa64f* values, const T* result, platform::Stream stream)
{
    T elements[C] = {};
    if (const VexaStatus failed = platform::copyToHost(elements, result, sizeof elements, stream)) return failed;
    if (values == nullptr) return VEXA_MEMCPY_D2H_ERROR;
    for (int c = 0; c < C; ++c) values[c] = static_cast<Vexa64f>(elements[c]);
    return VEXA_SUCCESS;
}

/// Asks for the size of the scratch block and allocates it.
template <int C, typename T>
VexaStatus allocateScratch(void*& scratch, Statistic statistic, const Pixels<T>& src, platform::Stream stream)
{
    std::size_t bytes = 0;
    if (Statistics<T, C>::scratchSize(statistic, src.width, src.height, bytes, stream)) return failureOf(statistic);
    return platform::allocate(scratch, bytes);
}

template <Statistic statistic, typename T, int C>
constexpr auto primitiveOf()
{
    if constexpr (statistic == Statistic::max)
        return Statistics<T, C>::max;
    else if constexpr (statistic == Statistic::min)
        return Statistics<T, C>::min;
    else if constexpr (statistic == Statistic::sum)
        return Statistics<T, C>::sum;
    else if constexpr (statistic == Statistic::mean)
        return Statistics<T, C>::mean;
    else
        return Statistics<T, C>::norm;
}

template <int C, typename T, typename Result>
VexaStatus reduceBy(VexaStatus (*primitive)(Pixels<T>, void*, Result*, platform::Stream), Statistic statistic,
                    const Pixels<T>& src, Vexa64f* values, platform::Stream stream)
{
    void* scratch = nullptr;
    Result* result = nullptr;
    if (const VexaStatus failed = allocateScratch<C>(scratch, statistic, src, stream)) return failed;
    if (const VexaStatus failed = allocateElements(result, C)) return failed;
    if (primitive(src, scratch, result, stream)) return failureOf(statistic);
    if (const VexaStatus failed = fetch<C>(values, result, stream)) return failed;
    return releaseAll({scratch, result});
}

/// The body of the workers with one result.
template <Statistic statistic, int C, typename T>
VexaStatus reduce(const Pixels<T>& src, Vexa64f* values, platform::Stream stream)
{
    return reduceBy<C>(primitiveOf<statistic, T, C>(), statistic, src, values, stream);
}

/// The body of the workers with two.
template <int C, typename T>
VexaStatus reduceToMinMax(const Pixels<T>& src, Vexa64f* minValues, Vexa64f* maxValues, platform::Stream stream)
{
    void* scratch = nullptr;
    T* min = nullptr;
    T* max = nullptr;
    if (const VexaStatus failed = allocateScratch<C>(scratch, Statistic::minMax, src, stream)) return failed;
    if (const VexaStatus failed = allocateElements(min, C)) return failed;
    if (const VexaStatus failed = allocateElements(max, C)) return failed;
    if (Statistics<T, C>::minMax(src, scratch, min, max, stream)) return failureOf(Statistic::minMax);
    if (const VexaStatus failed = fetch<C>(minValues, min, stream)) return failed;
    if (const VexaStatus failed = fetch<C>(maxValues, max, stream)) return failed;
    return releaseAll({scratch, min, max});
}

}  // namespace

template <int C>
VexaStatus vexa_max_8u(Vexa8u* pSrc, Vexa64f* maxVal, Vexa32s width, Vexa32s height, Vexa32s pitch, cudaStream_t stream)
{
    return reduce<Statistic::max, C>(Pixels<u8>{pSrc, width, height, pitch}, maxVal, stream);
}

template <int C>
VexaStatus vexa_max_16u(Vexa16u* pSrc, Vexa64f* maxVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                        cudaStream_t stream)
{
    return reduce<Statistic::max, C>(Pixels<u16>{pSrc, width, height, pitch}, maxVal, stream);
}

template <int C>
VexaStatus vexa_max_32f(Vexa32f* pSrc, Vexa64f* maxVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                        cudaStream_t stream)
{
    return reduce<Statistic::max, C>(Pixels<f32>{pSrc, width, height, pitch}, maxVal, stream);
}

template <int C>
VexaStatus vexa_min_8u(Vexa8u* pSrc, Vexa64f* minVal, Vexa32s width, Vexa32s height, Vexa32s pitch, cudaStream_t stream)
{
    return reduce<Statistic::min, C>(Pixels<u8>{pSrc, width, height, pitch}, minVal, stream);
}

template <int C>
VexaStatus vexa_min_16u(Vexa16u* pSrc, Vexa64f* minVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                        cudaStream_t stream)
{
    return reduce<Statistic::min, C>(Pixels<u16>{pSrc, width, height, pitch}, minVal, stream);
}

template <int C>
VexaStatus vexa_min_32f(Vexa32f* pSrc, Vexa64f* minVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                        cudaStream_t stream)
{
    return reduce<Statistic::min, C>(Pixels<f32>{pSrc, width, height, pitch}, minVal, stream);
}

template <int C>
VexaStatus vexa_sum_8u(Vexa8u* pSrc, Vexa64f* sumVal, Vexa32s width, Vexa32s height, Vexa32s pitch, cudaStream_t stream)
{
    return reduce<Statistic::sum, C>(Pixels<u8>{pSrc, width, height, pitch}, sumVal, stream);
}

template <int C>
VexaStatus vexa_sum_16u(Vexa16u* pSrc, Vexa64f* sumVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                        cudaStream_t stream)
{
    return reduce<Statistic::sum, C>(Pixels<u16>{pSrc, width, height, pitch}, sumVal, stream);
}

template <int C>
VexaStatus vexa_sum_32f(Vexa32f* pSrc, Vexa64f* sumVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                        cudaStream_t stream)
{
    return reduce<Statistic::sum, C>(Pixels<f32>{pSrc, width, height, pitch}, sumVal, stream);
}

template <int C>
VexaStatus vexa_mean_8u(Vexa8u* pSrc, Vexa64f* meanVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                        cudaStream_t stream)
{
    return reduce<Statistic::mean, C>(Pixels<u8>{pSrc, width, height, pitch}, meanVal, stream);
}

template <int C>
VexaStatus vexa_mean_16u(Vexa16u* pSrc, Vexa64f* meanVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                         cudaStream_t stream)
{
    return reduce<Statistic::mean, C>(Pixels<u16>{pSrc, width, height, pitch}, meanVal, stream);
}

template <int C>
VexaStatus vexa_mean_32f(Vexa32f* pSrc, Vexa64f* meanVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                         cudaStream_t stream)
{
    return reduce<Statistic::mean, C>(Pixels<f32>{pSrc, width, height, pitch}, meanVal, stream);
}

template <int C>
VexaStatus vexa_norm_8u(Vexa8u* pSrc, Vexa64f* normVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                        cudaStream_t stream)
{
    return reduce<Statistic::norm, C>(Pixels<u8>{pSrc, width, height, pitch}, normVal, stream);
}

template <int C>
VexaStatus vexa_norm_16u(Vexa16u* pSrc, Vexa64f* normVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                         cudaStream_t stream)
{
    return reduce<Statistic::norm, C>(Pixels<u16>{pSrc, width, height, pitch}, normVal, stream);
}

template <int C>
VexaStatus vexa_norm_32f(Vexa32f* pSrc, Vexa64f* normVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                         cudaStream_t stream)
{
    return reduce<Statistic::norm, C>(Pixels<f32>{pSrc, width, height, pitch}, normVal, stream);
}

template <int C>
VexaStatus vexa_minMax_8u(Vexa8u* pSrc, Vexa64f* minVal, Vexa64f* maxVal, Vexa32s width, Vexa32s height, Vexa32s pitch,
                          cudaStream_t stream)
{
    return reduceToMinMax<C>(Pixels<u8>{pSrc, width, height, pitch}, minVal, maxVal, stream);
}

template <int C>
VexaStatus vexa_minMax_16u(Vexa16u* pSrc, Vexa64f* minVal, Vexa64f* maxVal, Vexa32s width, Vexa32s height,
                           Vexa32s pitch, cudaStream_t stream)
{
    return reduceToMinMax<C>(Pixels<u16>{pSrc, width, height, pitch}, minVal, maxVal, stream);
}

template <int C>
VexaStatus vexa_minMax_32f(Vexa32f* pSrc, Vexa64f* minVal, Vexa64f* maxVal, Vexa32s width, Vexa32s height,
                           Vexa32s pitch, cudaStream_t stream)
{
    return reduceToMinMax<C>(Pixels<f32>{pSrc, width, height, pitch}, minVal, maxVal, stream);
}

VexaStatus vexa_minMax_8uC1(Vexa8u* pSrc, Vexa64f* minVal, Vexa64f* maxVal, Vexa32s width, Vexa32s height,
                            Vexa32s pitch, cudaStream_t stream)
{
    return vexa_minMax_8u<1>(pSrc, minVal, maxVal, width, height, pitch, stream);
}

VexaStatus vexa_minMax_8uC3(Vexa8u* pSrc, Vexa64f* minVal, Vexa64f* maxVal, Vexa32s width, Vexa32s height,
                            Vexa32s pitch, cudaStream_t stream)
{
    return vexa_minMax_8u<3>(pSrc, minVal, maxVal, width, height, pitch, stream);
}

namespace {

template <typename T>
using ToValue = VexaStatus(T*, Vexa64f*, Vexa32s, Vexa32s, Vexa32s, cudaStream_t);
template <typename T>
using ToTwoValues = VexaStatus(T*, Vexa64f*, Vexa64f*, Vexa32s, Vexa32s, Vexa32s, cudaStream_t);

}  // namespace

// clang-format off
template ToValue<u8> vexa_max_8u<1>; template ToValue<u8> vexa_max_8u<3>;
template ToValue<u16> vexa_max_16u<1>; template ToValue<u16> vexa_max_16u<3>;
template ToValue<f32> vexa_max_32f<1>; template ToValue<f32> vexa_max_32f<3>;
template ToValue<u8> vexa_min_8u<1>; template ToValue<u8> vexa_min_8u<3>;
template ToValue<u16> vexa_min_16u<1>; template ToValue<u16> vexa_min_16u<3>;
template ToValue<f32> vexa_min_32f<1>; template ToValue<f32> vexa_min_32f<3>;
template ToTwoValues<u8> vexa_minMax_8u<1>; template ToTwoValues<u8> vexa_minMax_8u<3>;
template ToTwoValues<u16> vexa_minMax_16u<1>; template ToTwoValues<u16> vexa_minMax_16u<3>;
template ToTwoValues<f32> vexa_minMax_32f<1>; template ToTwoValues<f32> vexa_minMax_32f<3>;
template ToValue<u8> vexa_sum_8u<1>; template ToValue<u8> vexa_sum_8u<3>;
template ToValue<u16> vexa_sum_16u<1>; template ToValue<u16> vexa_sum_16u<3>;
template ToValue<f32> vexa_sum_32f<1>; template ToValue<f32> vexa_sum_32f<3>;
template ToValue<u8> vexa_mean_8u<1>; template ToValue<u8> vexa_mean_8u<3>;
template ToValue<u16> vexa_mean_16u<1>; template ToValue<u16> vexa_mean_16u<3>;
template ToValue<f32> vexa_mean_32f<1>; template ToValue<f32> vexa_mean_32f<3>;
template ToValue<u8> vexa_norm_8u<1>; template ToValue<u8> vexa_norm_8u<3>;
template ToValue<u16> vexa_norm_16u<1>; template ToValue<u16> vexa_norm_16u<3>;
template ToValue<f32> vexa_norm_32f<1>; template ToValue<f32> vexa_norm_32f<3>;
// clang-format on

namespace {

using StatisticTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

template <Statistic statistic>
struct Reduce {
    const VexaImage& src;
    Vexa64f* values;
    platform::Stream stream;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        return reduce<statistic, C>(pixelsOf<T>(src), values, stream);
    }
};

template <Statistic statistic>
VexaStatus reduceImage(const VexaImage& src, VexaScalar& values, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    return dispatch(StatisticTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    Reduce<statistic>{src, values.vals(), handle(stream)}, src);
}

struct ReduceToMinMax {
    const VexaImage& src;
    Vexa64f* minValues;
    Vexa64f* maxValues;
    platform::Stream stream;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        return reduceToMinMax<C>(pixelsOf<T>(src), minValues, maxValues, stream);
    }
};

}  // namespace

namespace vexa::imageStatistics {

VexaStatus max(const VexaImage& src, VexaScalar& maxValue, const VexaStream& stream)
{
    return reduceImage<Statistic::max>(src, maxValue, stream);
}

VexaStatus min(const VexaImage& src, VexaScalar& minValue, const VexaStream& stream)
{
    return reduceImage<Statistic::min>(src, minValue, stream);
}

VexaStatus sum(const VexaImage& src, VexaScalar& sumValue, const VexaStream& stream)
{
    return reduceImage<Statistic::sum>(src, sumValue, stream);
}

VexaStatus mean(const VexaImage& src, VexaScalar& meanValue, const VexaStream& stream)
{
    return reduceImage<Statistic::mean>(src, meanValue, stream);
}

VexaStatus norm(const VexaImage& src, VexaScalar& normValue, const VexaStream& stream)
{
    return reduceImage<Statistic::norm>(src, normValue, stream);
}

VexaStatus minMax(const VexaImage& src, VexaScalar& minValue, VexaScalar& maxValue, const VexaStream& stream)
{
    // An empty image has a status of its own here.
    if (initialized(src)) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    return dispatch(StatisticTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    ReduceToMinMax{src, minValue.vals(), maxValue.vals(), handle(stream)}, src);
}

}  // namespace vexa::imageStatistics
