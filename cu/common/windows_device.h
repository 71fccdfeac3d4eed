/// @file
/// Windows on the GPU: each thread reads its neighbours through the caches.

#pragma once

namespace vexa {

/// The neighbourhood of an element, converted to S.
template <typename S, typename Fetch>
struct Window {
    const Fetch& fetch;
    int x;
    int y;

    VEXA_DEVICE S operator()(int dx, int dy) const { return static_cast<S>(fetch(x + dx, y + dy)); }
};

/// rule(x, y, window) for every element of an image, window(dx, dy) being the element so far away, as an S.
template <typename Reach, typename S, typename Fetch, typename Rule>
VEXA_DEVICE void forEachWindow(const Fetch& src, const Rule& rule)
{
    forEachPixel(src.width, src.height, [&](int x, int y) { rule(x, y, Window<S, Fetch>{src, x, y}); });
}

}  // namespace vexa
