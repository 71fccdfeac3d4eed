/// @file
/// The checks of images that the demosaicing operations share.

#pragma once

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

}  // namespace vexa
