/// @file
/// What a sensor behind a Bayer mosaic would have seen of a photograph, for programs that need a raw frame.

#pragma once

#include <cstddef>
#include <vector>

#include "vexaCore.h"

/// The slot of the colour (0 blue, 1 green, 2 red) that a sensor of this plain layout sees at a pixel.
inline int slotAt(VexaBayerSeq layout, int x, int y)
{
    const bool redColumn = (x % 2 != 0) == (layout == VEXA_BAYER_BGGR || layout == VEXA_BAYER_GRBG);
    const bool redRow = (y % 2 != 0) == (layout == VEXA_BAYER_BGGR || layout == VEXA_BAYER_GBRG);
    return redColumn == redRow ? (redRow ? 2 : 0) : 1;
}

/// One colour of each pixel of an 8-bit photograph in blue, green, red.
inline VexaStatus mosaic(const VexaImage& photo, VexaBayerSeq layout, VexaImage& raw)
{
    const int width = photo.width();
    const int height = photo.height();
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<unsigned char> colors(3 * pixels);
    std::vector<unsigned char> seen(pixels);
    if (const VexaStatus failed = photo.download(colors.data(), 3 * width)) return failed;
    std::size_t i = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x, ++i) seen[i] = colors[3 * i + static_cast<std::size_t>(slotAt(layout, x, y))];
    if (const VexaStatus failed = raw.create(width, height, VEXA_8UC1)) return failed;
    return raw.upload(seen.data(), width);
}
