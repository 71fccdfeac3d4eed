/// @file
/// Dense flow on the GPU: a thread a pixel.

#pragma once

namespace vexa {

/// Moves the flow of all pixels whose windows lie inside; that of the others stays.
VEXA_DEVICE void refineFlow(const LucasKanade& level)
{
    forEachPixel(level.width(), level.height(), [&](int x, int y) {
        if (!level.interior().contains(x, y)) return;
        if (detail::isNarrow(level.radiusX, level.radiusY))
            detail::PixelFlow<int>{level}(x, y);
        else
            detail::PixelFlow<long long>{level}(x, y);
    });
}

}  // namespace vexa
