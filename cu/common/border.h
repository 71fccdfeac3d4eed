/// @file
/// The shape of kernels that keep the interior of an image and paint the rest: copyInside.

#pragma once

#include <cstring>

#include "kernels.h"

namespace vexa {

#if defined(__CUDACC__)

/// dst = src inside the interior, and one colour outside.
template <int C, typename T>
VEXA_DEVICE void copyInside(Interior interior, int width, int height, Plane<T> dst, Plane<T> src, Pixel<T, C> outside)
{
    const Interleaved<T, C> from{src.pixels, src.pitch};
    const Interleaved<T, C> to{dst.pixels, dst.pitch};
    forEachPixel(width, height,
                 [=](int x, int y) { to.row(y).store(x, interior.contains(x, y) ? from.row(y).load(x) : outside); });
}

#else

/// dst = src inside the interior, which lies in the image, and one colour outside.
template <int C, typename T>
inline void copyInside(Interior interior, int width, int height, Plane<T> dst, Plane<T> src, Pixel<T, C> outside)
{
    if (width < 1 || height < 1) return;
    const int inside = interior.right - interior.left;
    const auto body = [=](std::size_t begin, std::size_t end) {
        const auto paint = [=](T* row, int from, int to) {
            const detail::InterleavedRow<T, C> pixels{row};
#pragma omp simd
            for (int x = from; x < to; ++x) pixels.store(x, outside);
        };
        for (std::size_t row = begin; row < end; ++row) {
            const int y = static_cast<int>(row);
            T* const to = dst.row(y);
            if (y < interior.top || y >= interior.bottom) {
                paint(to, 0, width);
                continue;
            }
            paint(to, 0, interior.left);
            // Not by a loop: copies of rows know how to write memory that is in no cache. In place they overlap.
            std::memmove(to + C * interior.left, src.row(y) + C * interior.left,
                         sizeof(T) * C * static_cast<std::size_t>(inside));
            paint(to, interior.right, width);
        }
    };
    platform::parallelRanges(static_cast<std::size_t>(height), static_cast<std::size_t>(width) * C * 2 * sizeof(T),
                             body);
}

#endif

}  // namespace vexa
