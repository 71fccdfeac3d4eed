/// @file
/// Images of random floats. A generator without a seed makes them, so images of one size are equal.

#include "arguments.h"
#include "checks.h"

using namespace vexa;

VexaStatus vexa_rand_32f(float* pDst, Vexa32u dstWidth, Vexa32u dstHeight, Vexa32u dstPitch, Vexa32u channels,
                         cudaStream_t internal_stream)
{
    // No failure is told. An image that could not be filled stays as it is.
    const std::size_t rowBytes = static_cast<std::size_t>(dstWidth) * channels * sizeof(float);
    (void)platform::uniform({pDst, dstPitch}, {rowBytes, dstHeight}, internal_stream);
    return VEXA_SUCCESS;
}

namespace vexa::dataExchange {

VexaStatus generateRandomImage(VexaImage& src, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (src.depth() != 32) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    return vexa_rand_32f(src.ptr<float>(), static_cast<Vexa32u>(src.width()), static_cast<Vexa32u>(src.height()),
                         static_cast<Vexa32u>(src.pitch()), static_cast<Vexa32u>(src.channels()), handle(stream));
}

}  // namespace vexa::dataExchange
