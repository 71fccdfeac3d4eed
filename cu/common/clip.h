/// @file
/// What several images of a call have in common, where their sizes are not compared.

#pragma once

#include <algorithm>
#include <initializer_list>

#include "arguments.h"

namespace vexa {

/// The part of `size`, from the first pixel on, that all images hold, in pixels of `pixelBytes` and rows `pitch` bytes
/// apart. An empty image holds nothing.
inline VexaSize commonSize(const VexaSize& size, long long pixelBytes, long long pitch,
                           std::initializer_list<const VexaImage*> images)
{
    long long width = size.width;
    long long height = size.height;
    for (const VexaImage* const image : images) {
        const long long rowBytes = static_cast<long long>(elementsOf(*image)) * (image->depth() / 8);
        width = std::min(width, rowBytes / pixelBytes);
        height = std::min<long long>(height, image->height());
    }
    for (const VexaImage* const image : images)
        height = std::min<long long>(height, rowsInside(*image, height, width * pixelBytes, pitch));
    return {static_cast<int>(width), static_cast<int>(height)};
}

/// Makes all pixels 0.
inline void clear(VexaImage& image, platform::Stream stream)
{
    const auto rowBytes = static_cast<std::size_t>(elementsOf(image)) * static_cast<std::size_t>(image.depth() / 8);
    (void)platform::setBytes({image.ptr(), static_cast<std::size_t>(image.pitch())}, 0,
                             {rowBytes, static_cast<std::size_t>(image.height())}, stream);
}

}  // namespace vexa
