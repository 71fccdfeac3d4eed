/// @file
/// The shape of kernels that resize an image: separable interpolation, along the rows first, then across them.

#pragma once

#include "interpolation.h"

#if !defined(__CUDACC__)
#include "scale_host.h"
#endif

namespace vexa {

#if defined(__CUDACC__)

/// dst = the nearest pixels of src.
template <int C, typename T>
VEXA_DEVICE void scaleNearest(Axis columns, Axis rows, Plane<T> dst, Plane<const T> src)
{
    forEachPixel(columns.to, rows.to, [=](int x, int y) {
        const T* const from = src.row(rows.nearest(y)) + static_cast<std::ptrdiff_t>(C) * columns.nearest(x);
        T* const to = dst.row(y) + static_cast<std::ptrdiff_t>(C) * x;
        for (int c = 0; c < C; ++c) to[c] = from[c];
    });
}

/// dst = src, interpolated between N pixels of N rows. Rows of weight 0 don't count.
template <int C, int N, typename T>
VEXA_DEVICE void scaleBetween(Axis columns, Axis rows, Plane<T> dst, Plane<const T> src)
{
    const Range range = rangeOf<T>;
    forEachPixel(columns.to, rows.to, [=](int x, int y) {
        const GridPosition column = columns(x);
        const GridPosition row = rows(y);
        const Weights<N> across = weightsAt<N>(column.fraction);
        const Weights<N> down = weightsAt<N>(row.fraction);
        float sum[C] = {};
        for (int i = 0; i < N; ++i) {
            if (down.weight[i] == 0.0F) continue;
            const T* const from = src.row(clampedTo(row.whole + i - (N / 2 - 1), rows.from));
            for (int c = 0; c < C; ++c) {
                float value = 0;
                for (int j = 0; j < N; ++j) {
                    const int tap = clampedTo(column.whole + j - (N / 2 - 1), columns.from);
                    value =
                        value + across.weight[j] * static_cast<float>(from[static_cast<std::ptrdiff_t>(C) * tap + c]);
                }
                sum[c] = sum[c] + down.weight[i] * value;
            }
        }
        T* const to = dst.row(y) + static_cast<std::ptrdiff_t>(C) * x;
        for (int c = 0; c < C; ++c) to[c] = rounded<T, N>(sum[c], range);
    });
}

#endif

}  // namespace vexa
