/// @file
/// Correlation of an image with a filter: each result is one ascending chain of fused steps over the taps, so that
/// every platform gives the same bits. On the host the chains of a block of pixels run side by side in registers, and
/// four rows share what they load: a filter of 19 by 19 takes half the time that one row at a time takes.

#pragma once

#include "arithmetic.h"
#include "footprint.h"

namespace vexa {

/// The coefficients of a filter as they travel with a launch; the tap in column i and row j has number i * rows + j.
struct Coefficients {
    static constexpr int most = 512;
    float value[most];
};

#if defined(__CUDACC__)

/// rule(x, y, sum) for every element of an area of an image of C-channel pixels.
template <int C, typename T, typename Rule>
VEXA_DEVICE void correlate(const FetchClamped<T>& src, Interior area, const Footprint& taps,
                           const Coefficients& coefficients, const Rule& rule)
{
    forEachPixel(area.right - area.left, area.bottom - area.top, [&](int column, int row) {
        const int x = area.left + column;
        const int y = area.top + row;
        float sum = 0;
        for (int i = 0; i < taps.columns; ++i)
            for (int j = 0; j < taps.rows; ++j) {
                const auto sample = static_cast<float>(src(x + C * (taps.x + i), y + taps.y + j));
                sum = multiplyAdd(sample, coefficients.value[i * taps.rows + j], sum);
            }
        rule(x, y, sum);
    });
}

#else

namespace detail {

/// A block of chains: sixteen vectors of 64 bytes, which hides the time that a fused step takes and leaves registers
/// for what is loaded.
inline constexpr int chainRows = 4;
inline constexpr int chainColumns = 64;
using Chains = float[chainRows][chainColumns];

/// Rows of a tile; the lines that windows reach below are made twice.
inline constexpr int correlationRows = 16;

/// A step of the rows first to last for the samples of one line: the tap of row r is coefficient[-r].
template <int first, int last>
inline void addLine(const float* line, const float* coefficient, Chains& sum)
{
    for (int r = first; r <= last; ++r) {
        const float factor = coefficient[-r];
        for (int x = 0; x < chainColumns; ++x) sum[r][x] = multiplyAdd(line[x], factor, sum[r][x]);
    }
}

/// The taps of one column of the filter. Each line serves all rows that it is a tap of, fewer for the first and last.
template <int... r>
inline void addColumn(const float* line, int pitch, int rows, const float* coefficient, Chains& sum,
                      std::integer_sequence<int, r...>)
{
    constexpr int lastRow = chainRows - 1;
    if (rows < lastRow) {
        for (int j = 0; j < rows; ++j, line += pitch, ++coefficient) {
            (addLine<r, r>(line + r * pitch, coefficient + r, sum), ...);
            addLine<lastRow, lastRow>(line + lastRow * pitch, coefficient + lastRow, sum);
        }
        return;
    }
    (addLine<0, r>(line + r * pitch, coefficient + r, sum), ...);
    for (int j = lastRow; j < rows; ++j) addLine<0, lastRow>(line + j * pitch, coefficient + j, sum);
    (addLine<r + 1, lastRow>(line + (rows + r) * pitch, coefficient + rows + r, sum), ...);
}

/// rule(x, y, sum) for a block of at most chainRows rows and chainColumns columns from (x, y) on.
template <int C, typename Rule>
inline void correlateBlock(const float* line, int pitch, const Footprint& taps, const Coefficients& coefficients, int x,
                           int y, int columns, int rows, const Rule& rule)
{
    Chains sum = {};
    for (int i = 0; i < taps.columns; ++i)
        addColumn(line + i * C, pitch, taps.rows, coefficients.value + i * taps.rows, sum,
                  std::make_integer_sequence<int, chainRows - 1>());
    for (int r = 0; r < rows; ++r) {
#pragma omp simd
        for (int column = 0; column < columns; ++column) rule(x + column, y + r, sum[r][column]);
    }
}

inline int roundUp(int value, int step)
{
    return (value + step - 1) / step * step;
}

/// The elements that the windows of a tile reach, from its first window's first tap on: where they lie, if nothing is
/// to convert and all are inside, else in `lines`.
template <typename T>
inline Plane<const float> reachedBy(const FetchClamped<T>& src, int left, int top, int width, int height,
                                    Plane<float> lines)
{
    if constexpr (std::is_same_v<T, float>) {
        const bool inside = left >= 0 && top >= 0 && left + width <= src.width && top + height <= src.height;
        // Rows of larger filters would compete for places in the cache, if the pitch is a power of two.
        if (inside && height <= correlationRows + 4) return {src.row(top) + left, src.pitch};
    }
    for (int y = 0; y < height; ++y) fetchLine(lines.row(y), src, left, left + width, top + y);
    return {lines.pixels, lines.pitch};
}

/// rule(x, y, sum) for every element of a tile; `lines` has room for the rows that its windows reach.
template <int C, typename T, typename Rule>
inline void correlateTile(const FetchClamped<T>& src, const Tile& tile, const Footprint& taps,
                          const Coefficients& coefficients, Plane<float> lines, const Rule& rule)
{
    // Whole blocks, as what the last one computes too much must be there to read.
    const int width = roundUp(tile.right - tile.left, chainColumns) + C * std::max(taps.columns - 1, 0);
    const int height = roundUp(tile.bottom - tile.top, chainRows) + std::max(taps.rows - 1, 0);
    const Plane<const float> from = reachedBy(src, tile.left + C * taps.x, tile.top + taps.y, width, height, lines);
    for (int y = tile.top; y < tile.bottom; y += chainRows)
        for (int x = tile.left; x < tile.right; x += chainColumns)
            correlateBlock<C>(from.row(y - tile.top) + x - tile.left, from.pitch, taps, coefficients, x, y,
                              std::min(chainColumns, tile.right - x), std::min(chainRows, tile.bottom - y), rule);
}

}  // namespace detail

/// rule(x, y, sum) for every element of an area of an image of C-channel pixels.
template <int C, typename T, typename Rule>
inline void correlate(const FetchClamped<T>& src, Interior area, const Footprint& taps,
                      const Coefficients& coefficients, const Rule& rule)
{
    using namespace detail;
    if (area.left >= area.right || area.top >= area.bottom) return;
    const Tiling tiling{area, 2048, correlationRows};
    const auto body = [=](std::size_t begin, std::size_t end) {
        const Rule own = rule;
        const int pitch = tiling.tileWidth + C * std::max(taps.columns, 1);
        const auto memory = taskMemory<float>(tiling.tileHeight + std::max(taps.rows, 1), pitch);
        if (!memory) return;
        for (std::size_t i = begin; i < end; ++i)
            correlateTile<C>(src, tiling[i], taps, coefficients, Plane<float>{memory.get(), pitch}, own);
    };
    // A byte is moved in about the time of four fused steps.
    const std::size_t steps = static_cast<std::size_t>(taps.columns * taps.rows) + 16;
    const std::size_t elements =
        static_cast<std::size_t>(tiling.tileWidth) * static_cast<std::size_t>(tiling.tileHeight);
    platform::parallelRanges(tiling.count(), elements * steps / 4, body);
}

#endif

}  // namespace vexa
