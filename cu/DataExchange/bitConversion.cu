/// @file
/// Conversion between numbers of data bits. Kernels and workers see rows of elements, whatever the channels; the ones
/// of equal types have one pitch for both images.

#include <algorithm>
#include <cmath>

#include "arguments.h"
#include "arithmetic.h"
#include "checks.h"
#include "kernels.h"

using namespace vexa;

namespace {

/// The value function: clamps to the largest source value, rescales and truncates.
template <typename S, typename D>
struct Rescale {
    float scale;
    float from_max;
    Range to;

    VEXA_DEVICE D operator()(S element) const
    {
        const auto value = static_cast<float>(element);
        return saturate<D>((value > from_max ? from_max : value) * scale, to);
    }
};

template <typename S, typename D>
VEXA_DEVICE Rescale<S, D> rescale(float scale, Vexa32u from_max, Vexa32u to_max)
{
    return {scale, static_cast<float>(from_max), {0.0F, static_cast<float>(to_max)}};
}

}  // namespace

VEXA_KERNEL kernel_bitConversion_8u8u(Vexa8u* src, Vexa8u* dst, Vexa32s width, Vexa32s pitch, Vexa32s height,
                                      float scale, Vexa32u from_max, Vexa32u to_max)
{
    mapElements<1>(width, height, Plane<u8>{dst, pitch}, rescale<u8, u8>(scale, from_max, to_max),
                   Plane<u8>{src, pitch});
}

VEXA_KERNEL kernel_bitConversion_16u16u(Vexa16u* src, Vexa16u* dst, Vexa32s width, Vexa32s pitch, Vexa32s height,
                                        float scale, Vexa32u from_max, Vexa32u to_max)
{
    mapElements<1>(width, height, Plane<u16>{dst, pitch}, rescale<u16, u16>(scale, from_max, to_max),
                   Plane<u16>{src, pitch});
}

VEXA_KERNEL kernel_bitConversion_8u16u(Vexa8u* src, Vexa16u* dst, Vexa32s width, Vexa32s srcPitch, Vexa32s height,
                                       Vexa32s dstPitch, float scale, Vexa32u from_max, Vexa32u to_max)
{
    mapElements<1>(width, height, Plane<u16>{dst, dstPitch}, rescale<u8, u16>(scale, from_max, to_max),
                   Plane<u8>{src, srcPitch});
}

VEXA_KERNEL kernel_bitConversion_16u8u(Vexa16u* src, Vexa8u* dst, Vexa32s width, Vexa32s srcPitch, Vexa32s height,
                                       Vexa32s dstPitch, float scale, Vexa32u from_max, Vexa32u to_max)
{
    mapElements<1>(width, height, Plane<u8>{dst, dstPitch}, rescale<u16, u8>(scale, from_max, to_max),
                   Plane<u16>{src, srcPitch});
}

namespace {

/// The largest values of the two ranges and the factor between them.
struct Ranges {
    Vexa32u from_max;
    Vexa32u to_max;
    float scale;
};

Ranges ranges(Vexa8u from, Vexa8u to)
{
    const Vexa32u from_max = (1U << from) - 1;
    const Vexa32u to_max = (1U << to) - 1;
    float scale = static_cast<float>(to_max) / static_cast<float>(from_max);
    // Where rounding would leave the largest value just below its place, the next factor up puts it there: white stays
    // white, as from 8 to 10 bits, where 255 times the rounded quotient is 1022.9999.
    if (static_cast<float>(from_max) * scale < static_cast<float>(to_max)) scale = std::nextafter(scale, 2 * scale);
    return {from_max, to_max, scale};
}

[[nodiscard]] VexaStatus bitsWithin(Vexa8u from, int fromDepth, Vexa8u to, int toDepth)
{
    return from > fromDepth || to > toDepth ? VEXA_INVALID_ARG_ERROR : VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexa_bitConversion_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s srcWidth, Vexa32s srcPitch, Vexa32s srcHeight,
                                 Vexa32s nChannels, Vexa8u FROM, Vexa8u TO, cudaStream_t internal_stream)
{
    if (const VexaStatus failed = bitsWithin(FROM, 8, TO, 8)) return failed;
    const Ranges range = ranges(FROM, TO);
    const int elements = srcWidth * nChannels;
    launch(kernel_bitConversion_8u8u, elementExtent<1, u8>(elements, srcHeight), internal_stream, pSrc, pDst, elements,
           srcPitch, srcHeight, range.scale, range.from_max, range.to_max);
    return VEXA_SUCCESS;
}

VexaStatus vexa_bitConversion_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s srcWidth, Vexa32s srcPitch, Vexa32s srcHeight,
                                  Vexa32s nChannels, Vexa8u FROM, Vexa8u TO, cudaStream_t internal_stream)
{
    if (const VexaStatus failed = bitsWithin(FROM, 16, TO, 16)) return failed;
    const Ranges range = ranges(FROM, TO);
    const int elements = srcWidth * nChannels;
    launch(kernel_bitConversion_16u16u, elementExtent<1, u16>(elements, srcHeight), internal_stream, pSrc, pDst,
           elements, srcPitch >> 1, srcHeight, range.scale, range.from_max, range.to_max);
    return VEXA_SUCCESS;
}

VexaStatus vexa_bitConversion_8u_16u(Vexa8u* pSrc, Vexa16u* pDst, Vexa32s srcWidth, Vexa32s srcPitch, Vexa32s srcHeight,
                                     Vexa32s nChannels, Vexa32s dstPitch, Vexa8u FROM, Vexa8u TO,
                                     cudaStream_t internal_stream)
{
    if (const VexaStatus failed = bitsWithin(FROM, 8, TO, 16)) return failed;
    const Ranges range = ranges(FROM, TO);
    const int elements = srcWidth * nChannels;
    launch(kernel_bitConversion_8u16u, elementExtent<1, u8, u16>(elements, srcHeight), internal_stream, pSrc, pDst,
           elements, srcPitch, srcHeight, dstPitch >> 1, range.scale, range.from_max, range.to_max);
    return VEXA_SUCCESS;
}

VexaStatus vexa_bitConversion_16u_8u(Vexa16u* pSrc, Vexa8u* pDst, Vexa32s srcWidth, Vexa32s srcPitch, Vexa32s srcHeight,
                                     Vexa32s nChannels, Vexa32s dstPitch, Vexa8u FROM, Vexa8u TO,
                                     cudaStream_t internal_stream)
{
    if (const VexaStatus failed = bitsWithin(FROM, 16, TO, 8)) return failed;
    const Ranges range = ranges(FROM, TO);
    const int elements = srcWidth * nChannels;
    launch(kernel_bitConversion_16u8u, elementExtent<1, u16, u8>(elements, srcHeight), internal_stream, pSrc, pDst,
           elements, srcPitch >> 1, srcHeight, dstPitch, range.scale, range.from_max, range.to_max);
    return VEXA_SUCCESS;
}

namespace {

bool hasWorker(const VexaImage& image)
{
    return image.depth() == 8 || image.depth() == 16;
}

/// What both images hold, as elements of a row and rows. Equal depths address the destination by the source's pitch.
struct CommonExtent {
    int elements;
    int rows;
};

CommonExtent commonExtent(const VexaImage& src, const VexaImage& dst)
{
    const int elements = std::min(elementsOf(src), elementsOf(dst));
    const int rows = std::min(src.height(), dst.height());
    if (src.depth() != dst.depth()) return {elements, rows};
    return {elements, rowsInside(dst, rows, static_cast<long long>(elements) * (dst.depth() / 8), src.pitch())};
}

}  // namespace

namespace vexa::dataExchange {

VexaStatus bitConversion(const VexaImage& src, const VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src, dst)) return failed;
    if (!hasWorker(src) || !hasWorker(dst)) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    const auto from = static_cast<Vexa8u>(src.dataBits());
    const auto to = static_cast<Vexa8u>(dst.dataBits());
    const CommonExtent extent = commonExtent(src, dst);
    constexpr int elementwise = 1;

    if (src.depth() == 8 && dst.depth() == 8)
        return vexa_bitConversion_8u(src.ptr<u8>(), dst.ptr<u8>(), extent.elements, src.pitch(), extent.rows,
                                     elementwise, from, to, handle(stream));
    if (src.depth() == 8 && dst.depth() == 16)
        return vexa_bitConversion_8u_16u(src.ptr<u8>(), dst.ptr<u16>(), extent.elements, src.pitch(), extent.rows,
                                         elementwise, dst.pitch(), from, to, handle(stream));
    if (src.depth() == 16 && dst.depth() == 8)
        return vexa_bitConversion_16u_8u(src.ptr<u16>(), dst.ptr<u8>(), extent.elements, src.pitch(), extent.rows,
                                         elementwise, dst.pitch(), from, to, handle(stream));
    return vexa_bitConversion_16u(src.ptr<u16>(), dst.ptr<u16>(), extent.elements, src.pitch(), extent.rows,
                                  elementwise, from, to, handle(stream));
}

}  // namespace vexa::dataExchange
