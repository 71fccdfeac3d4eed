/// @file
/// The shape of kernels that mirror an image.

#pragma once

#include "kernels.h"

#if !defined(__CUDACC__)
#include "moves.h"
#endif

namespace vexa {

/// What changes its end.
struct Mirrored {
    bool columns;
    bool rows;
};

#if defined(__CUDACC__)

/// dst = src with its columns or rows in the other order.
template <int C, typename T>
VEXA_DEVICE void mirrorPixels(int width, int height, Plane<T> dst, Plane<const T> src, Mirrored mirrored)
{
    forEachPixel(width, height, [=](int x, int y) {
        const T* const from = src.row(y) + static_cast<std::ptrdiff_t>(C) * x;
        T* const to = dst.row(mirrored.rows ? height - 1 - y : y) +
                      static_cast<std::ptrdiff_t>(C) * (mirrored.columns ? width - 1 - x : x);
        for (int c = 0; c < C; ++c) to[c] = from[c];
    });
}

#else

namespace detail {

/// A row with its pixels in the other order.
template <int C, typename T>
inline void mirrorRow(T* to, const T* from, int width)
{
    from += static_cast<std::ptrdiff_t>(C) * (width - 1);
    if constexpr (C == 1) {
#pragma omp simd
        for (int x = 0; x < width; ++x) to[x] = from[-x];
    } else {
        // Nothing may be read behind the last pixel, nor written behind it.
        copyPixel<C>(to, from);
        for (int x = 1; x + 1 < width; ++x) copyWide<C>(to + C * x, from - C * x);
        if (width > 1) copyPixel<C>(to + C * (width - 1), from - C * (width - 1));
    }
}

}  // namespace detail

/// dst = src with its columns or rows in the other order.
template <int C, typename T>
inline void mirrorPixels(int width, int height, Plane<T> dst, Plane<const T> src, Mirrored mirrored)
{
    if (width < 1 || height < 1) return;
    const std::size_t rowBytes = static_cast<std::size_t>(width) * C * sizeof(T);
    platform::parallelRanges(static_cast<std::size_t>(height), 2 * rowBytes, [=](std::size_t begin, std::size_t end) {
        for (std::size_t row = begin; row < end; ++row) {
            const int y = static_cast<int>(row);
            const T* const from = src.row(y);
            T* const to = dst.row(mirrored.rows ? height - 1 - y : y);
            if (mirrored.columns)
                detail::mirrorRow<C>(to, from, width);
            else
                std::memcpy(to, from, rowBytes);
        }
    });
}

#endif

}  // namespace vexa
