/// @file
/// Sampling on the GPU: a thread a pixel.

#pragma once

namespace vexa {

/// The pixels that the source reaches; the others stay as they are.
template <int C, typename T, typename Map, typename Sampler>
VEXA_DEVICE void samplePixels(int width, int height, Plane<T> dst, const Map& map, const Sampler& sampler)
{
    forEachPixel(width, height, [=](int x, int y) {
        const auto spot = sampler.place(sampler.bounded(map(x, y)));
        if (spot.share != Share::none) sampler.careful(spot, dst.row(y) + static_cast<std::ptrdiff_t>(C) * x);
    });
}

/// The same; pixels that the source doesn't share are 0.
template <int C, typename T, typename Map, typename Sampler>
VEXA_DEVICE void samplePixelsOrClear(int width, int height, Plane<T> dst, const Map& map, const Sampler& sampler)
{
    forEachPixel(width, height, [=](int x, int y) {
        T* const to = dst.row(y) + static_cast<std::ptrdiff_t>(C) * x;
        const auto spot = sampler.place(sampler.bounded(map(x, y)));
        if (spot.share != Share::none)
            sampler.careful(spot, to);
        else
            for (int c = 0; c < C; ++c) to[c] = 0;
    });
}

}  // namespace vexa
