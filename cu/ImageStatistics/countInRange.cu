/// @file
/// Counting the elements of each channel that lie between two bounds.

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "pixels.h"
#include "temporaries.h"
#include "vexaImageStatistics.h"

using namespace vexa;
using platform::Pixels;
using platform::Statistic;
using platform::Statistics;

namespace {

/// The body of the workers. What of query and allocations fails shows in the primitive, which refuses null blocks.
template <int C, typename T>
VexaStatus count(const Pixels<T>& src, VexaScalar& count, const VexaScalar& rangeMin, const VexaScalar& rangeMax,
                 platform::Stream stream)
{
    std::size_t bytes = 0;
    void* scratch = nullptr;
    Vexa32s* result = nullptr;
    (void)Statistics<T, C>::scratchSize(Statistic::countInRange, src.width, src.height, bytes, stream);
    (void)platform::allocate(scratch, bytes);
    (void)allocateElements(result, C);
    T lowest[C];
    T highest[C];
    for (int c = 0; c < C; ++c) {
        lowest[c] = lowBits<T>(rangeMin[c]);
        highest[c] = lowBits<T>(rangeMax[c]);
    }
    if (platform::countInRange<T, C>(src, scratch, result, lowest, highest, stream))
        return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    Vexa32s counts[C] = {};
    if (const VexaStatus failed = platform::copyToHost(counts, result, sizeof counts, stream)) return failed;
    (void)platform::synchronize(stream);
    for (int c = 0; c < C; ++c) count[c] = counts[c];
    return releaseAll({scratch, result});
}

}  // namespace

template <int C>
VexaStatus vexa_countInRange_8u(Vexa8u* pSrc, VexaScalar& count, int width, int height, int pitch,
                                const VexaScalar& rangeMin, const VexaScalar& rangeMax, cudaStream_t stream)
{
    return ::count<C>(Pixels<u8>{pSrc, width, height, pitch}, count, rangeMin, rangeMax, stream);
}

template <int C>
VexaStatus vexa_countInRange_32f(Vexa32f* pSrc, VexaScalar& count, int width, int height, int pitch,
                                 const VexaScalar& rangeMin, const VexaScalar& rangeMax, cudaStream_t stream)
{
    return ::count<C>(Pixels<f32>{pSrc, width, height, pitch}, count, rangeMin, rangeMax, stream);
}

namespace {

template <typename T>
using Counter = VexaStatus(T*, VexaScalar&, int, int, int, const VexaScalar&, const VexaScalar&, cudaStream_t);

}  // namespace

template Counter<u8> vexa_countInRange_8u<1>;
template Counter<u8> vexa_countInRange_8u<3>;
template Counter<f32> vexa_countInRange_32f<1>;
template Counter<f32> vexa_countInRange_32f<3>;

namespace {

using CountedTypes = Table<Row<u8>, Row<f32>>;

struct CountInRange {
    const VexaImage& src;
    VexaScalar& result;
    const VexaScalar& rangeMin;
    const VexaScalar& rangeMax;
    platform::Stream stream;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        return count<C>(pixelsOf<T>(src), result, rangeMin, rangeMax, stream);
    }
};

}  // namespace

namespace vexa::imageStatistics {

VexaStatus countInRange(const VexaImage& src, VexaScalar& count, const VexaScalar& rangeMin, const VexaScalar& rangeMax,
                        const VexaStream& stream)
{
    // An empty image and other types have statuses of their own here.
    if (initialized(src)) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    return dispatch(CountedTypes{}, Channels<1, 3>{}, VEXA_DEPTH_NOT_SUPPORTED_ERROR,
                    CountInRange{src, count, rangeMin, rangeMax, handle(stream)}, src);
}

}  // namespace vexa::imageStatistics
