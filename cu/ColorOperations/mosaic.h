/// @file
/// What the demosaicing operations share: the checks of their images, and the range of a raw value.

#pragma once

#include <algorithm>

#include "checks.h"

namespace vexa {

/// A source must have one channel. A destination must have three and the size and depth of the source; an empty one is
/// created so.
[[nodiscard]] inline VexaStatus matchOrCreateColors(VexaImage& dst, const VexaImage& src)
{
    if (src.channels() != 1) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (dst.isInitialized() && dst.channels() != 3) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    return matchOrCreate(dst, src, {same::width, same::height, same::depth}, src.size(), src.depth(), 3);
}

/// The largest value of so many bits.
inline int largestValue(int dataBits)
{
    constexpr int bitsOfAnInt = 30;
    return (1 << std::clamp(dataBits, 0, bitsOfAnInt)) - 1;
}

}  // namespace vexa
