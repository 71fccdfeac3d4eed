/// @file
/// vexa::dataExchange: changing how pixels are represented.

#pragma once

#include "vexaCore.h"

namespace vexa {
namespace dataExchange {

/// Every element as `value * scale + offset` in 32-bit float, one fused step. Integer destinations saturate and
/// truncate toward zero (add 0.5 by `offset` to round), a NaN stores 0; float destinations store the value as it is.
///
/// Between any two of 8u, 16u and 32f, with 1 or 3 channels. An empty `dst` is created with the size and type of `src`;
/// a change of type needs a destination made beforehand, or VexaImage::convertTo. Runs in place where the types are
/// equal, returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty source; VEXA_NOT_SUPPORTED_MODE_ERROR for images that differ in
///         width, height or channels and for other types
VEXA_API VexaStatus convertScale(const VexaImage& src, VexaImage& dst, const Vexa32f scale, const Vexa32f offset,
                                 const VexaStream& stream = VexaStream(false));

/// Rescales elements from the data bits of `src` to those of `dst` (VexaImage::setDataBits), by the ratio of the two
/// largest values, truncated: a 12-bit camera frame in 16-bit elements becomes an 8-bit image. Values above the data
/// bits of `src` count as the largest one. Only the buffer of `dst` changes.
///
/// Any channels; both images have depth 8 or 16, any sign. The sizes are not compared: what both images hold is
/// converted. Images of one depth are addressed by the pitch of `src` alone. Runs in place where the depths are equal,
/// returns without waiting.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src` or `dst`; VEXA_DEPTH_NOT_SUPPORTED_ERROR for other depths
VEXA_API VexaStatus bitConversion(const VexaImage& src, const VexaImage& dst,
                                  const VexaStream& stream = VexaStream(false));

}  // namespace dataExchange
}  // namespace vexa

/// @name Workers of bitConversion, on device pointers
/// Widths are in pixels, pitches in bytes; FROM and TO are data bits.
/// @return VEXA_INVALID_ARG_ERROR for data bits above the depth of their elements
/// @{
VEXA_API VexaStatus vexa_bitConversion_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s srcWidth, Vexa32s srcPitch,
                                          Vexa32s srcHeight, Vexa32s nChannels, Vexa8u FROM, Vexa8u TO,
                                          cudaStream_t internal_stream);
VEXA_API VexaStatus vexa_bitConversion_16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa32s srcWidth, Vexa32s srcPitch,
                                           Vexa32s srcHeight, Vexa32s nChannels, Vexa8u FROM, Vexa8u TO,
                                           cudaStream_t internal_stream);
VEXA_API VexaStatus vexa_bitConversion_8u_16u(Vexa8u* pSrc, Vexa16u* pDst, Vexa32s srcWidth, Vexa32s srcPitch,
                                              Vexa32s srcHeight, Vexa32s nChannels, Vexa32s dstPitch, Vexa8u FROM,
                                              Vexa8u TO, cudaStream_t internal_stream);
VEXA_API VexaStatus vexa_bitConversion_16u_8u(Vexa16u* pSrc, Vexa8u* pDst, Vexa32s srcWidth, Vexa32s srcPitch,
                                              Vexa32s srcHeight, Vexa32s nChannels, Vexa32s dstPitch, Vexa8u FROM,
                                              Vexa8u TO, cudaStream_t internal_stream);
/// @}
