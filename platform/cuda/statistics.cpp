/// @file
/// The statistics of the seam by NPP, where CMake finds it. Only the forms that are told their stream in a context: the
/// others are gone from toolkit 13 on.

#include <cuda_runtime.h>
#include <nppi_statistics_functions.h>

#include "npp.h"
#include "platform.h"

namespace vexa::platform {
namespace {

// ---- NPP's names, by element type and channels ----

template <typename T, int C>
struct Npp;

// clang-format off
template <>
struct Npp<Vexa8u, 1> {
    static constexpr auto maxSize = nppiMaxGetBufferHostSize_8u_C1R_Ctx;
    static constexpr auto max = nppiMax_8u_C1R_Ctx;
    static constexpr auto minSize = nppiMinGetBufferHostSize_8u_C1R_Ctx;
    static constexpr auto min = nppiMin_8u_C1R_Ctx;
    static constexpr auto minMaxSize = nppiMinMaxGetBufferHostSize_8u_C1R_Ctx;
    static constexpr auto minMax = nppiMinMax_8u_C1R_Ctx;
    static constexpr auto sumSize = nppiSumGetBufferHostSize_8u_C1R_Ctx;
    static constexpr auto sum = nppiSum_8u_C1R_Ctx;
    static constexpr auto meanSize = nppiMeanGetBufferHostSize_8u_C1R_Ctx;
    static constexpr auto mean = nppiMean_8u_C1R_Ctx;
    static constexpr auto normSize = nppiNormL2GetBufferHostSize_8u_C1R_Ctx;
    static constexpr auto norm = nppiNorm_L2_8u_C1R_Ctx;
    static constexpr auto meanStdDevSize = nppiMeanStdDevGetBufferHostSize_8u_C1R_Ctx;
    static constexpr auto meanStdDev = nppiMean_StdDev_8u_C1R_Ctx;
    static constexpr auto maskedMeanStdDevSize = nppiMeanStdDevGetBufferHostSize_8u_C1MR_Ctx;
    static constexpr auto maskedMeanStdDev = nppiMean_StdDev_8u_C1MR_Ctx;
    static constexpr auto countInRangeSize = nppiCountInRangeGetBufferHostSize_8u_C1R_Ctx;
    static constexpr auto countInRange = nppiCountInRange_8u_C1R_Ctx;
};
template <>
struct Npp<Vexa8u, 3> {
    static constexpr auto maxSize = nppiMaxGetBufferHostSize_8u_C3R_Ctx;
    static constexpr auto max = nppiMax_8u_C3R_Ctx;
    static constexpr auto minSize = nppiMinGetBufferHostSize_8u_C3R_Ctx;
    static constexpr auto min = nppiMin_8u_C3R_Ctx;
    static constexpr auto minMaxSize = nppiMinMaxGetBufferHostSize_8u_C3R_Ctx;
    static constexpr auto minMax = nppiMinMax_8u_C3R_Ctx;
    static constexpr auto sumSize = nppiSumGetBufferHostSize_8u_C3R_Ctx;
    static constexpr auto sum = nppiSum_8u_C3R_Ctx;
    static constexpr auto meanSize = nppiMeanGetBufferHostSize_8u_C3R_Ctx;
    static constexpr auto mean = nppiMean_8u_C3R_Ctx;
    static constexpr auto normSize = nppiNormL2GetBufferHostSize_8u_C3R_Ctx;
    static constexpr auto norm = nppiNorm_L2_8u_C3R_Ctx;
    static constexpr auto meanStdDevSize = nppiMeanStdDevGetBufferHostSize_8u_C3CR_Ctx;
    static constexpr auto meanStdDev = nppiMean_StdDev_8u_C3CR_Ctx;
    static constexpr auto maskedMeanStdDevSize = nppiMeanStdDevGetBufferHostSize_8u_C3CMR_Ctx;
    static constexpr auto maskedMeanStdDev = nppiMean_StdDev_8u_C3CMR_Ctx;
    static constexpr auto countInRangeSize = nppiCountInRangeGetBufferHostSize_8u_C3R_Ctx;
    static constexpr auto countInRange = nppiCountInRange_8u_C3R_Ctx;
};
template <>
struct Npp<Vexa16u, 1> {
    static constexpr auto maxSize = nppiMaxGetBufferHostSize_16u_C1R_Ctx;
    static constexpr auto max = nppiMax_16u_C1R_Ctx;
    static constexpr auto minSize = nppiMinGetBufferHostSize_16u_C1R_Ctx;
    static constexpr auto min = nppiMin_16u_C1R_Ctx;
    static constexpr auto minMaxSize = nppiMinMaxGetBufferHostSize_16u_C1R_Ctx;
    static constexpr auto minMax = nppiMinMax_16u_C1R_Ctx;
    static constexpr auto sumSize = nppiSumGetBufferHostSize_16u_C1R_Ctx;
    static constexpr auto sum = nppiSum_16u_C1R_Ctx;
    static constexpr auto meanSize = nppiMeanGetBufferHostSize_16u_C1R_Ctx;
    static constexpr auto mean = nppiMean_16u_C1R_Ctx;
    static constexpr auto normSize = nppiNormL2GetBufferHostSize_16u_C1R_Ctx;
    static constexpr auto norm = nppiNorm_L2_16u_C1R_Ctx;
    static constexpr auto meanStdDevSize = nppiMeanStdDevGetBufferHostSize_16u_C1R_Ctx;
    static constexpr auto meanStdDev = nppiMean_StdDev_16u_C1R_Ctx;
    static constexpr auto maskedMeanStdDevSize = nppiMeanStdDevGetBufferHostSize_16u_C1MR_Ctx;
    static constexpr auto maskedMeanStdDev = nppiMean_StdDev_16u_C1MR_Ctx;
};
template <>
struct Npp<Vexa16u, 3> {
    static constexpr auto maxSize = nppiMaxGetBufferHostSize_16u_C3R_Ctx;
    static constexpr auto max = nppiMax_16u_C3R_Ctx;
    static constexpr auto minSize = nppiMinGetBufferHostSize_16u_C3R_Ctx;
    static constexpr auto min = nppiMin_16u_C3R_Ctx;
    static constexpr auto minMaxSize = nppiMinMaxGetBufferHostSize_16u_C3R_Ctx;
    static constexpr auto minMax = nppiMinMax_16u_C3R_Ctx;
    static constexpr auto sumSize = nppiSumGetBufferHostSize_16u_C3R_Ctx;
    static constexpr auto sum = nppiSum_16u_C3R_Ctx;
    static constexpr auto meanSize = nppiMeanGetBufferHostSize_16u_C3R_Ctx;
    static constexpr auto mean = nppiMean_16u_C3R_Ctx;
    static constexpr auto normSize = nppiNormL2GetBufferHostSize_16u_C3R_Ctx;
    static constexpr auto norm = nppiNorm_L2_16u_C3R_Ctx;
    static constexpr auto meanStdDevSize = nppiMeanStdDevGetBufferHostSize_16u_C3CR_Ctx;
    static constexpr auto meanStdDev = nppiMean_StdDev_16u_C3CR_Ctx;
    static constexpr auto maskedMeanStdDevSize = nppiMeanStdDevGetBufferHostSize_16u_C3CMR_Ctx;
    static constexpr auto maskedMeanStdDev = nppiMean_StdDev_16u_C3CMR_Ctx;
};
template <>
struct Npp<Vexa32f, 1> {
    static constexpr auto maxSize = nppiMaxGetBufferHostSize_32f_C1R_Ctx;
    static constexpr auto max = nppiMax_32f_C1R_Ctx;
    static constexpr auto minSize = nppiMinGetBufferHostSize_32f_C1R_Ctx;
    static constexpr auto min = nppiMin_32f_C1R_Ctx;
    static constexpr auto minMaxSize = nppiMinMaxGetBufferHostSize_32f_C1R_Ctx;
    static constexpr auto minMax = nppiMinMax_32f_C1R_Ctx;
    static constexpr auto sumSize = nppiSumGetBufferHostSize_32f_C1R_Ctx;
    static constexpr auto sum = nppiSum_32f_C1R_Ctx;
    static constexpr auto meanSize = nppiMeanGetBufferHostSize_32f_C1R_Ctx;
    static constexpr auto mean = nppiMean_32f_C1R_Ctx;
    static constexpr auto normSize = nppiNormL2GetBufferHostSize_32f_C1R_Ctx;
    static constexpr auto norm = nppiNorm_L2_32f_C1R_Ctx;
    static constexpr auto meanStdDevSize = nppiMeanStdDevGetBufferHostSize_32f_C1R_Ctx;
    static constexpr auto meanStdDev = nppiMean_StdDev_32f_C1R_Ctx;
    static constexpr auto maskedMeanStdDevSize = nppiMeanStdDevGetBufferHostSize_32f_C1MR_Ctx;
    static constexpr auto maskedMeanStdDev = nppiMean_StdDev_32f_C1MR_Ctx;
    static constexpr auto countInRangeSize = nppiCountInRangeGetBufferHostSize_32f_C1R_Ctx;
    static constexpr auto countInRange = nppiCountInRange_32f_C1R_Ctx;
    static constexpr auto dotSize = nppiDotProdGetBufferHostSize_32f64f_C1R_Ctx;
    static constexpr auto dot = nppiDotProd_32f64f_C1R_Ctx;
};
template <>
struct Npp<Vexa32f, 3> {
    static constexpr auto maxSize = nppiMaxGetBufferHostSize_32f_C3R_Ctx;
    static constexpr auto max = nppiMax_32f_C3R_Ctx;
    static constexpr auto minSize = nppiMinGetBufferHostSize_32f_C3R_Ctx;
    static constexpr auto min = nppiMin_32f_C3R_Ctx;
    static constexpr auto minMaxSize = nppiMinMaxGetBufferHostSize_32f_C3R_Ctx;
    static constexpr auto minMax = nppiMinMax_32f_C3R_Ctx;
    static constexpr auto sumSize = nppiSumGetBufferHostSize_32f_C3R_Ctx;
    static constexpr auto sum = nppiSum_32f_C3R_Ctx;
    static constexpr auto meanSize = nppiMeanGetBufferHostSize_32f_C3R_Ctx;
    static constexpr auto mean = nppiMean_32f_C3R_Ctx;
    static constexpr auto normSize = nppiNormL2GetBufferHostSize_32f_C3R_Ctx;
    static constexpr auto norm = nppiNorm_L2_32f_C3R_Ctx;
    static constexpr auto meanStdDevSize = nppiMeanStdDevGetBufferHostSize_32f_C3CR_Ctx;
    static constexpr auto meanStdDev = nppiMean_StdDev_32f_C3CR_Ctx;
    static constexpr auto maskedMeanStdDevSize = nppiMeanStdDevGetBufferHostSize_32f_C3CMR_Ctx;
    static constexpr auto maskedMeanStdDev = nppiMean_StdDev_32f_C3CMR_Ctx;
    static constexpr auto countInRangeSize = nppiCountInRangeGetBufferHostSize_32f_C3R_Ctx;
    static constexpr auto countInRange = nppiCountInRange_32f_C3R_Ctx;
    static constexpr auto dotSize = nppiDotProdGetBufferHostSize_32f64f_C3R_Ctx;
    static constexpr auto dot = nppiDotProd_32f64f_C3R_Ctx;
};
// clang-format on

// ---- calls ----

template <typename T>
NppiSize sizeOf(const Pixels<T>& pixels)
{
    return {pixels.width, pixels.height};
}

Npp8u* bufferOf(void* scratch)
{
    return static_cast<Npp8u*>(scratch);
}

/// Sizes are int before NPP 12.2.5.
template <typename Size>
VexaStatus ask(NppStatus (*query)(NppiSize, Size*, NppStreamContext), NppiSize size, std::size_t& bytes, Stream stream)
{
    Size answered = 0;
    const VexaStatus status = answer(query(size, &answered, contextOf(stream)));
    bytes = static_cast<std::size_t>(answered);
    return status;
}

/// Calls call(channel of interest) for each channel. Only the status of the last call counts; that is meant.
template <int C, typename ChannelCall>
VexaStatus forEachChannel(const ChannelCall& call)
{
    NppStatus status = NPP_NO_ERROR;
    for (int channel = 0; channel < C; ++channel) status = call(channel);
    return answer(status);
}

}  // namespace

template <typename T, int C>
VexaStatus Statistics<T, C>::scratchSize(Statistic statistic, int width, int height, std::size_t& bytes, Stream stream)
{
    using Names = Npp<T, C>;
    const NppiSize size{width, height};
    switch (statistic) {
        case Statistic::max:
            return ask(Names::maxSize, size, bytes, stream);
        case Statistic::min:
            return ask(Names::minSize, size, bytes, stream);
        case Statistic::minMax:
            return ask(Names::minMaxSize, size, bytes, stream);
        case Statistic::sum:
            return ask(Names::sumSize, size, bytes, stream);
        case Statistic::mean:
            return ask(Names::meanSize, size, bytes, stream);
        case Statistic::norm:
            return ask(Names::normSize, size, bytes, stream);
        case Statistic::meanStdDev:
            return ask(Names::meanStdDevSize, size, bytes, stream);
        case Statistic::maskedMeanStdDev:
            return ask(Names::maskedMeanStdDevSize, size, bytes, stream);
        case Statistic::countInRange:
            if constexpr (!std::is_same_v<T, Vexa16u>) return ask(Names::countInRangeSize, size, bytes, stream);
            break;
        case Statistic::dot:
            if constexpr (std::is_same_v<T, Vexa32f>) return ask(Names::dotSize, size, bytes, stream);
            break;
    }
    return VEXA_INTERNAL_CALL_ERROR;
}

template <typename T, int C>
VexaStatus Statistics<T, C>::max(Pixels<T> src, void* scratch, T* max, Stream stream)
{
    return answer(Npp<T, C>::max(src.first, src.pitch, sizeOf(src), bufferOf(scratch), max, contextOf(stream)));
}

template <typename T, int C>
VexaStatus Statistics<T, C>::min(Pixels<T> src, void* scratch, T* min, Stream stream)
{
    return answer(Npp<T, C>::min(src.first, src.pitch, sizeOf(src), bufferOf(scratch), min, contextOf(stream)));
}

template <typename T, int C>
VexaStatus Statistics<T, C>::sum(Pixels<T> src, void* scratch, Vexa64f* sum, Stream stream)
{
    return answer(Npp<T, C>::sum(src.first, src.pitch, sizeOf(src), bufferOf(scratch), sum, contextOf(stream)));
}

template <typename T, int C>
VexaStatus Statistics<T, C>::mean(Pixels<T> src, void* scratch, Vexa64f* mean, Stream stream)
{
    return answer(Npp<T, C>::mean(src.first, src.pitch, sizeOf(src), bufferOf(scratch), mean, contextOf(stream)));
}

template <typename T, int C>
VexaStatus Statistics<T, C>::norm(Pixels<T> src, void* scratch, Vexa64f* norm, Stream stream)
{
    return answer(Npp<T, C>::norm(src.first, src.pitch, sizeOf(src), norm, bufferOf(scratch), contextOf(stream)));
}

template <typename T, int C>
VexaStatus Statistics<T, C>::minMax(Pixels<T> src, void* scratch, T* min, T* max, Stream stream)
{
    return answer(Npp<T, C>::minMax(src.first, src.pitch, sizeOf(src), min, max, bufferOf(scratch), contextOf(stream)));
}

template <typename T, int C>
VexaStatus Statistics<T, C>::meanStdDev(Pixels<T> src, void* scratch, Vexa64f* mean, Vexa64f* stdDev, Stream stream)
{
    const NppStreamContext context = contextOf(stream);
    return forEachChannel<C>([&](int c) {
        if constexpr (C == 1)
            return Npp<T, C>::meanStdDev(src.first, src.pitch, sizeOf(src), bufferOf(scratch), mean, stdDev, context);
        else
            return Npp<T, C>::meanStdDev(src.first, src.pitch, sizeOf(src), c + 1, bufferOf(scratch), mean + c,
                                         stdDev + c, context);
    });
}

template <typename T, int C>
VexaStatus Statistics<T, C>::meanStdDev(Pixels<T> src, Pixels<Vexa8u> mask, void* scratch, Vexa64f* mean,
                                        Vexa64f* stdDev, Stream stream)
{
    const NppStreamContext context = contextOf(stream);
    return forEachChannel<C>([&](int c) {
        if constexpr (C == 1)
            return Npp<T, C>::maskedMeanStdDev(src.first, src.pitch, mask.first, mask.pitch, sizeOf(src),
                                               bufferOf(scratch), mean, stdDev, context);
        else
            return Npp<T, C>::maskedMeanStdDev(src.first, src.pitch, mask.first, mask.pitch, sizeOf(src), c + 1,
                                               bufferOf(scratch), mean + c, stdDev + c, context);
    });
}

template <typename T, int C>
VexaStatus countInRange(Pixels<T> src, void* scratch, Vexa32s* counts, const T* lowest, const T* highest, Stream stream)
{
    const NppStreamContext context = contextOf(stream);
    if constexpr (C == 1) {
        return answer(Npp<T, C>::countInRange(src.first, src.pitch, sizeOf(src), counts, lowest[0], highest[0],
                                              bufferOf(scratch), context));
    } else {
        T lower[C];
        T upper[C];
        for (int c = 0; c < C; ++c) {
            lower[c] = lowest[c];
            upper[c] = highest[c];
        }
        return answer(Npp<T, C>::countInRange(src.first, src.pitch, sizeOf(src), counts, lower, upper,
                                              bufferOf(scratch), context));
    }
}

template <int C>
VexaStatus dot(Pixels<Vexa32f> src1, const Vexa32f* src2, void* scratch, Vexa64f* result, Stream stream)
{
    return answer(Npp<Vexa32f, C>::dot(src1.first, src1.pitch, src2, src1.pitch, sizeOf(src1), result,
                                       bufferOf(scratch), contextOf(stream)));
}

template struct Statistics<Vexa8u, 1>;
template struct Statistics<Vexa8u, 3>;
template struct Statistics<Vexa16u, 1>;
template struct Statistics<Vexa16u, 3>;
template struct Statistics<Vexa32f, 1>;
template struct Statistics<Vexa32f, 3>;

template VexaStatus countInRange<Vexa8u, 1>(Pixels<Vexa8u>, void*, Vexa32s*, const Vexa8u*, const Vexa8u*, Stream);
template VexaStatus countInRange<Vexa8u, 3>(Pixels<Vexa8u>, void*, Vexa32s*, const Vexa8u*, const Vexa8u*, Stream);
template VexaStatus countInRange<Vexa32f, 1>(Pixels<Vexa32f>, void*, Vexa32s*, const Vexa32f*, const Vexa32f*, Stream);
template VexaStatus countInRange<Vexa32f, 3>(Pixels<Vexa32f>, void*, Vexa32s*, const Vexa32f*, const Vexa32f*, Stream);

template VexaStatus dot<1>(Pixels<Vexa32f>, const Vexa32f*, void*, Vexa64f*, Stream);
template VexaStatus dot<3>(Pixels<Vexa32f>, const Vexa32f*, void*, Vexa64f*, Stream);

}  // namespace vexa::platform
