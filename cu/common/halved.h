/// @file
/// Correlation with a filter at every second pixel of every second row, in the chains of correlate. On the host even
/// and odd pixels lie in lines of their own, so that the samples of neighbouring results lie side by side.

#pragma once

#include "correlate.h"
#include "quads.h"
#include "windows.h"

namespace vexa {

#if defined(__CUDACC__)

/// rule(x, y, sum) for every element of an image of C-channel pixels that has half the size of the source.
template <int C, typename T, typename Rule>
VEXA_DEVICE void correlateHalved(const FetchClamped<T>& src, int width, int height, const Footprint& taps,
                                 const Coefficients& coefficients, const Rule& rule)
{
    forEachPixel(C * width, height, [&](int column, int y) {
        const int x = 2 * (column / C) * C + column % C;
        float sum = 0;
        for (int i = 0; i < taps.columns; ++i)
            for (int j = 0; j < taps.rows; ++j) {
                const auto sample = static_cast<float>(src(x + C * (taps.x + i), 2 * y + taps.y + j));
                sum = multiplyAdd(sample, coefficients.value[i * taps.rows + j], sum);
            }
        rule(column, y, sum);
    });
}

#else

namespace detail {

/// The rows that the results of a tile reach, each as a line of its even pixels and one of its odd ones.
struct HalvedLines {
    float* memory;
    int pitch;

    float* even(int row) const { return memory + static_cast<std::ptrdiff_t>(2 * row) * pitch; }
    float* odd(int row) const { return even(row) + pitch; }
    float* spare(int rows) const { return even(rows); }
};

/// The chains of a run of results.
inline void correlateRun(const HalvedLines& lines, int row, int x, int channels, const Footprint& taps,
                         const Coefficients& coefficients, float (&sum)[chainColumns])
{
    std::fill_n(sum, chainColumns, 0.0F);
    for (int i = 0; i < taps.columns; ++i) {
        const float* line = (i % 2 == 0 ? lines.even(row) : lines.odd(row)) + x + channels * (i / 2);
        for (int j = 0; j < taps.rows; ++j, line += 2 * lines.pitch) {
            const float factor = coefficients.value[i * taps.rows + j];
            for (int k = 0; k < chainColumns; ++k) sum[k] = multiplyAdd(line[k], factor, sum[k]);
        }
    }
}

}  // namespace detail

/// rule(x, y, sum) for every element of an image of C-channel pixels that has half the size of the source.
template <int C, typename T, typename Rule>
inline void correlateHalved(const FetchClamped<T>& src, int width, int height, const Footprint& taps,
                            const Coefficients& coefficients, const Rule& rule)
{
    using namespace detail;
    if (width < 1 || height < 1) return;
    const Tiling tiling{{0, width, 0, height}, 512, correlationRows};
    const int rows = 2 * tiling.tileHeight + taps.rows;
    // Whole runs, as what the last one computes too much must be there to read.
    const int pairs = tiling.tileWidth + chainColumns + taps.columns / 2 + 1;
    const auto body = [=](std::size_t begin, std::size_t end) {
        const Rule own = rule;
        const auto memory = taskMemory<float>(2 * (rows + 1), C * pairs);
        if (!memory) return;
        const HalvedLines lines{memory.get(), C * pairs};
        float sum[chainColumns];
        for (std::size_t t = begin; t < end; ++t) {
            const Tile tile = tiling[t];
            const int first = C * (2 * tile.left + taps.x);
            const int reached = std::min(pairs, tile.right - tile.left + chainColumns + taps.columns / 2 + 1);
            for (int row = 0; row < 2 * (tile.bottom - tile.top) + taps.rows; ++row) {
                fetchLine(lines.spare(rows), src, first, first + 2 * C * reached, 2 * tile.top + taps.y + row);
                separate<C>(reached, lines.spare(rows), lines.even(row), lines.odd(row));
            }
            for (int y = tile.top; y < tile.bottom; ++y)
                for (int x = C * tile.left; x < C * tile.right; x += chainColumns) {
                    correlateRun(lines, 2 * (y - tile.top), x - C * tile.left, C, taps, coefficients, sum);
                    const int count = std::min(chainColumns, C * tile.right - x);
#pragma omp simd
                    for (int k = 0; k < count; ++k) own(x + k, y, sum[k]);
                }
        }
    };
    const std::size_t steps = static_cast<std::size_t>(taps.columns * taps.rows) + 64;
    const std::size_t elements =
        static_cast<std::size_t>(C * tiling.tileWidth) * static_cast<std::size_t>(tiling.tileHeight);
    platform::parallelRanges(tiling.count(), elements * steps / 4, body);
}

#endif

}  // namespace vexa
