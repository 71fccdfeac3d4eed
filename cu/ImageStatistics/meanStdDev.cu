/// @file
/// Mean and standard deviation of an image, or of the pixels that a mask selects.

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

/// The pixels of an image that count: all, or those of a mask.
template <typename T, int C>
struct AllPixels {
    Pixels<T> src;

    static constexpr Statistic statistic = Statistic::meanStdDev;

    VexaStatus operator()(void* scratch, Vexa64f* mean, Vexa64f* stdDev, platform::Stream stream) const
    {
        return Statistics<T, C>::meanStdDev(src, scratch, mean, stdDev, stream);
    }
    void wait(platform::Stream /*stream*/) const {}
};

template <typename T, int C>
struct MaskedPixels {
    Pixels<T> src;
    Pixels<u8> mask;

    static constexpr Statistic statistic = Statistic::maskedMeanStdDev;

    VexaStatus operator()(void* scratch, Vexa64f* mean, Vexa64f* stdDev, platform::Stream stream) const
    {
        return Statistics<T, C>::meanStdDev(src, mask, scratch, mean, stdDev, stream);
    }
    void wait(platform::Stream stream) const { (void)platform::synchronize(stream); }
};

/// The body of the workers.
template <template <typename, int> class Selection, typename T, int C>
VexaStatus moments(const Selection<T, C>& selection, Vexa64f* meanValues, Vexa64f* stdDevValues,
                   platform::Stream stream)
{
    const Pixels<T>& src = selection.src;
    std::size_t bytes = 0;
    if (Statistics<T, C>::scratchSize(selection.statistic, src.width, src.height, bytes, stream))
        return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    void* scratch = nullptr;
    Vexa64f* mean = nullptr;
    Vexa64f* stdDev = nullptr;
    if (const VexaStatus failed = platform::allocate(scratch, bytes)) return failed;
    if (const VexaStatus failed = allocateElements(mean, C)) return failed;
    if (const VexaStatus failed = allocateElements(stdDev, C)) return failed;
    if (selection(scratch, mean, stdDev, stream)) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    constexpr std::size_t resultBytes = C * sizeof(Vexa64f);
    if (const VexaStatus failed = platform::copyToHost(meanValues, mean, resultBytes, stream)) return failed;
    if (const VexaStatus failed = platform::copyToHost(stdDevValues, stdDev, resultBytes, stream)) return failed;
    selection.wait(stream);
    return releaseAll({mean, stdDev, scratch});
}

}  // namespace

template <int C>
VexaStatus vexa_mean_stdev_8u(Vexa8u* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width, Vexa32s height, Vexa32s pitch,
                              cudaStream_t stream)
{
    return moments(AllPixels<u8, C>{{pSrc, width, height, pitch}}, mean, stDev, stream);
}

template <int C>
VexaStatus vexa_mean_stdev_16u(Vexa16u* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width, Vexa32s height,
                               Vexa32s pitch, cudaStream_t stream)
{
    return moments(AllPixels<u16, C>{{pSrc, width, height, pitch}}, mean, stDev, stream);
}

template <int C>
VexaStatus vexa_mean_stdev_32f(Vexa32f* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width, Vexa32s height,
                               Vexa32s pitch, cudaStream_t stream)
{
    return moments(AllPixels<f32, C>{{pSrc, width, height, pitch}}, mean, stDev, stream);
}

template <int C>
VexaStatus vexa_mean_stdev_8u_masked(Vexa8u* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width, Vexa32s height,
                                     Vexa32s pitch, Vexa8u* mask, int maskPitch, cudaStream_t stream)
{
    return moments(MaskedPixels<u8, C>{{pSrc, width, height, pitch}, {mask, width, height, maskPitch}}, mean, stDev,
                   stream);
}

template <int C>
VexaStatus vexa_mean_stdev_16u_masked(Vexa16u* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width, Vexa32s height,
                                      Vexa32s pitch, Vexa8u* mask, int maskPitch, cudaStream_t stream)
{
    return moments(MaskedPixels<u16, C>{{pSrc, width, height, pitch}, {mask, width, height, maskPitch}}, mean, stDev,
                   stream);
}

template <int C>
VexaStatus vexa_mean_stdev_32f_masked(Vexa32f* pSrc, Vexa64f* mean, Vexa64f* stDev, Vexa32s width, Vexa32s height,
                                      Vexa32s pitch, Vexa8u* mask, int maskPitch, cudaStream_t stream)
{
    return moments(MaskedPixels<f32, C>{{pSrc, width, height, pitch}, {mask, width, height, maskPitch}}, mean, stDev,
                   stream);
}

namespace {

template <typename T>
using ToMoments = VexaStatus(T*, Vexa64f*, Vexa64f*, Vexa32s, Vexa32s, Vexa32s, cudaStream_t);
template <typename T>
using ToMaskedMoments = VexaStatus(T*, Vexa64f*, Vexa64f*, Vexa32s, Vexa32s, Vexa32s, Vexa8u*, int, cudaStream_t);

}  // namespace

template ToMoments<u8> vexa_mean_stdev_8u<1>;
template ToMoments<u8> vexa_mean_stdev_8u<3>;
template ToMoments<u16> vexa_mean_stdev_16u<1>;
template ToMoments<u16> vexa_mean_stdev_16u<3>;
template ToMoments<f32> vexa_mean_stdev_32f<1>;
template ToMoments<f32> vexa_mean_stdev_32f<3>;
template ToMaskedMoments<u8> vexa_mean_stdev_8u_masked<1>;
template ToMaskedMoments<u8> vexa_mean_stdev_8u_masked<3>;
template ToMaskedMoments<u16> vexa_mean_stdev_16u_masked<1>;
template ToMaskedMoments<u16> vexa_mean_stdev_16u_masked<3>;
template ToMaskedMoments<f32> vexa_mean_stdev_32f_masked<1>;
template ToMaskedMoments<f32> vexa_mean_stdev_32f_masked<3>;

namespace {

using StatisticTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

struct MomentsOfAll {
    const VexaImage& src;
    VexaScalar& mean;
    VexaScalar& stdDev;
    platform::Stream stream;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        return moments(AllPixels<T, C>{pixelsOf<T>(src)}, mean.vals(), stdDev.vals(), stream);
    }
};

struct MomentsOfMasked {
    const VexaImage& src;
    VexaScalar& mean;
    VexaScalar& stdDev;
    const VexaImage& mask;
    platform::Stream stream;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        // The mask is not compared with the image, but it is not read beyond its end.
        if (rowsInside(mask, src.height(), src.width(), mask.pitch()) < src.height())
            return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
        const Pixels<u8> selection{mask.ptr<u8>(), src.width(), src.height(), mask.pitch()};
        return moments(MaskedPixels<T, C>{pixelsOf<T>(src), selection}, mean.vals(), stdDev.vals(), stream);
    }
};

}  // namespace

namespace vexa::imageStatistics {

VexaStatus meanStdDev(const VexaImage& src, VexaScalar& meanValue, VexaScalar& stdDevValue, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    return dispatch(StatisticTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    MomentsOfAll{src, meanValue, stdDevValue, handle(stream)}, src);
}

VexaStatus meanStdDev(const VexaImage& src, VexaScalar& meanValue, VexaScalar& stdDevValue, const VexaImage& mask,
                      const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src, mask)) return failed;
    return dispatch(StatisticTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    MomentsOfMasked{src, meanValue, stdDevValue, mask, handle(stream)}, src);
}

}  // namespace vexa::imageStatistics
