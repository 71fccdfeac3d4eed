/// @file
/// Channels as weighted sums of all three, and the mix that takes a colour cast off.

#include "arguments.h"
#include "checks.h"
#include "colorCast.h"
#include "dataBits.h"
#include "dispatch.h"
#include "linearMap.h"

using namespace vexa;

template <typename T, int bits, bool clamps>
VEXA_KERNEL kernel_colorTwist(T* src, T* dst, int width, int height, int pitch, LinearCoefficients coefficients,
                              T minVal, T maxVal)
{
    static_assert(bits == 8 * sizeof(T));
    mapLinearly<T, clamps>(width, height, {dst, pitch}, {src, pitch}, coefficients,
                           {static_cast<float>(minVal), static_cast<float>(maxVal)});
}

namespace {

template <typename T>
VexaStatus launchMix(T* pSrc, T* pDst, int width, int height, int pitch, const float* coeffs, T maxVal,
                     cudaStream_t stream)
{
    if (coeffs == nullptr) return VEXA_NULL_POINTER_ERROR;
    LinearCoefficients coefficients;
    std::copy_n(coeffs, 12, &coefficients.row[0][0]);
    launch(kernel_colorTwist<T, 8 * sizeof(T), Element<T>::saturates>, pixelExtent(width, height), stream, pSrc, pDst,
           width, height, elements<T>(pitch), coefficients, T(0), maxVal);
    return VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexa_colorTwist_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch, float* coeffs,
                              Vexa32s dataBits, cudaStream_t stream)
{
    return launchMix(pSrc, pDst, width, height, pitch, coeffs, highestOf<u8>(dataBits), stream);
}

VexaStatus vexa_colorTwist_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               float* coeffs, Vexa32s dataBits, cudaStream_t stream)
{
    return launchMix(pSrc, pDst, width, height, pitch, coeffs, highestOf<u16>(dataBits), stream);
}

/// Floats have no bound.
VexaStatus vexa_colorTwist_32f(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                               float* coeffs, Vexa32s /*dataBits*/, cudaStream_t stream)
{
    return launchMix(pSrc, pDst, width, height, pitch, coeffs, 0.0F, stream);
}

namespace {

using AllTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

/// Picks the worker.
struct MixChannels {
    const VexaImage& src;
    VexaImage& dst;
    float* coeffs;
    platform::Stream stream;

    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return call(vexa_colorTwist_8u); }
    VexaStatus operator()(ChannelCount<3>, Row<u16>) const { return call(vexa_colorTwist_16u); }
    VexaStatus operator()(ChannelCount<3>, Row<f32>) const { return call(vexa_colorTwist_32f); }

    template <typename T>
    VexaStatus call(VexaStatus (*worker)(T*, T*, int, int, int, float*, int, cudaStream_t)) const
    {
        return worker(src.ptr<T>(), dst.ptr<T>(), src.width(), rowsInside(dst, src), src.pitch(), coeffs,
                      src.dataBits(), stream);
    }
};

}  // namespace

namespace vexa::colorOperations {

VexaStatus channelMix(const VexaImage& src, VexaImage& dst, float* coeffs, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    return dispatch(AllTypes{}, Channels<3>{}, VEXA_DEPTH_NOT_SUPPORTED_ERROR,
                    MixChannels{src, dst, coeffs, handle(stream)}, src);
}

VexaStatus autoColor(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    LinearCoefficients balance = balanceOf(src);
    return channelMix(src, dst, balance.row[0], stream);
}

}  // namespace vexa::colorOperations
