/// @file
/// Mosaics on the GPU: each thread reads its neighbours through the caches.

#pragma once

namespace vexa {

/// dst = rule(Parity, window) for every pixel, window(dx, dy) being the element so far away, as an S.
template <typename Reach, typename S, typename Fetch, typename T, typename Rule>
VEXA_DEVICE void forEachMosaicPixel(const Fetch& src, Interleaved<T, 3> dst, const Rule& rule)
{
    forEachWindow<Reach, S>(src, [&](int x, int y, const auto& window) {
        const bool oddColumn = x % 2 != 0;
        const auto pixel =
            y % 2 != 0 ? (oddColumn ? rule(Parity<true, true>{}, window) : rule(Parity<false, true>{}, window))
                       : (oddColumn ? rule(Parity<true, false>{}, window) : rule(Parity<false, false>{}, window));
        dst.row(y).store(x, pixel);
    });
}

}  // namespace vexa
