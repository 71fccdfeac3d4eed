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

/// Where the taps of a filter lie in such lines, from the first sample of a window on.
struct TapOffsets {
    int count;
    std::ptrdiff_t value[Coefficients::most];

    TapOffsets(const Footprint& taps, int channels, int pitch) : count(taps.columns * taps.rows)
    {
        for (int i = 0; i < taps.columns; ++i)
            for (int j = 0; j < taps.rows; ++j)
                value[i * taps.rows + j] = static_cast<std::ptrdiff_t>(2 * j + i % 2) * pitch +
                                           static_cast<std::ptrdiff_t>(channels) * (i / 2);
    }
};

/// A block of chains, of results in two rows.
inline constexpr int halvedRows = 2;
inline constexpr int halvedColumns = 32;

/// rule(x, y, sum) for a block of at most halvedRows rows and halvedColumns columns from (x, y) on, whose first window
/// starts at `first`. There is one loop over all taps, as GCC keeps the chains of nested ones in memory.
template <typename Rule>
inline void correlateHalvedBlock(const float* first, int pitch, const TapOffsets& offsets,
                                 const Coefficients& coefficients, int x, int y, int columns, int rows,
                                 const Rule& rule)
{
    float sum[halvedRows][halvedColumns] = {};
    for (int tap = 0; tap < offsets.count; ++tap) {
        const float* line = first + offsets.value[tap];
        const float factor = coefficients.value[tap];
        for (int r = 0; r < halvedRows; ++r, line += 4 * static_cast<std::ptrdiff_t>(pitch))
            for (int k = 0; k < halvedColumns; ++k) sum[r][k] = multiplyAdd(line[k], factor, sum[r][k]);
    }
    for (int r = 0; r < rows; ++r) {
#pragma omp simd
        for (int k = 0; k < columns; ++k) rule(x + k, y + r, sum[r][k]);
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
    // Whole blocks, as what the last one computes too much must be there to read.
    const int pairs = tiling.tileWidth + halvedColumns + taps.columns / 2 + 1;
    const TapOffsets offsets(taps, C, C * pairs);
    const auto body = [=](std::size_t begin, std::size_t end) {
        const Rule own = rule;
        const auto memory = taskMemory<float>(2 * (rows + 1), C * pairs);
        if (!memory) return;
        const HalvedLines lines{memory.get(), C * pairs};
        for (std::size_t t = begin; t < end; ++t) {
            const Tile tile = tiling[t];
            const int first = C * (2 * tile.left + taps.x);
            const int reached = tile.right - tile.left + halvedColumns + taps.columns / 2 + 1;
            for (int row = 0; row < 2 * roundUp(tile.bottom - tile.top, halvedRows) + taps.rows; ++row) {
                fetchLine(lines.spare(rows), src, first, first + 2 * C * reached, 2 * tile.top + taps.y + row);
                separate<C>(reached, lines.spare(rows), lines.even(row), lines.odd(row));
            }
            for (int y = tile.top; y < tile.bottom; y += halvedRows)
                for (int x = C * tile.left; x < C * tile.right; x += halvedColumns)
                    correlateHalvedBlock(lines.even(2 * (y - tile.top)) + x - C * tile.left, lines.pitch, offsets,
                                         coefficients, x, y, std::min(halvedColumns, C * tile.right - x),
                                         std::min(halvedRows, tile.bottom - y), own);
        }
    };
    const std::size_t steps = static_cast<std::size_t>(taps.columns * taps.rows) + 64;
    const std::size_t elements =
        static_cast<std::size_t>(C * tiling.tileWidth) * static_cast<std::size_t>(tiling.tileHeight);
    platform::parallelRanges(tiling.count(), elements * steps / 4, body);
}

#endif

}  // namespace vexa
