/// @file
/// What corner detection needs of the neighbourhood of a pixel: the structure matrix of a gradient image, and the
/// strongest pixel of a cell. On the device a thread looks at all of it; the host works by rows, column by column side
/// by side in vector registers. Both give the same bits.

#pragma once

#include "arithmetic.h"
#include "fetch.h"
#include "footprint.h"
#include "kernels.h"

namespace vexa {

/// Gradients of an image, of its size. Outside they are 0.
struct GradientPlanes {
    const float* x;
    const float* y;
    int width;
    int height;
    int pitch;  ///< elements
};

/// Sums of the products of gradients over a window.
struct StructureMatrix {
    float xx;
    float xy;
    float yy;
};

/// The pixel of a cell with the largest value.
struct Peak {
    int x;
    int y;
    float value;
};

/// The side of a cell.
inline constexpr int cellSide = 7;

namespace detail {

/// Positions around one, both ends included, without those outside, which add nothing.
struct Around {
    int first;
    int last;
};

VEXA_DEVICE Around around(int position, int reach, int size)
{
    return {position > reach ? position - reach : 0, reach < size - 1 - position ? position + reach : size - 1};
}

}  // namespace detail

#if defined(__CUDACC__)

/// rule(x, y, matrix) for every pixel and its window, which has `reach` pixels to either side. A negative reach makes
/// an empty window.
template <typename Rule>
VEXA_DEVICE void forEachStructure(const GradientPlanes& gradients, int reach, const Rule& rule)
{
    forEachPixel(gradients.width, gradients.height, [&](int x, int y) {
        StructureMatrix sum{0.0F, 0.0F, 0.0F};
        const detail::Around columns = detail::around(x, reach, gradients.width);
        const detail::Around rows = detail::around(y, reach, gradients.height);
        for (int i = columns.first; reach >= 0 && i <= columns.last; ++i) {
            StructureMatrix column{0.0F, 0.0F, 0.0F};
            for (int j = rows.first; j <= rows.last; ++j) {
                const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(j) * gradients.pitch + i;
                const float gx = gradients.x[at];
                const float gy = gradients.y[at];
                column.xx = multiplyAdd(gx, gx, column.xx);
                column.xy = multiplyAdd(gx, gy, column.xy);
                column.yy = multiplyAdd(gy, gy, column.yy);
            }
            sum = {sum.xx + column.xx, sum.xy + column.xy, sum.yy + column.yy};
        }
        rule(x, y, sum);
    });
}

/// rule(column, row, peak) for every cell whose centre lies in an image. Of equal values the first counts, columns one
/// after the other. Without a positive value the peak is the centre with value 0.
template <typename Rule>
VEXA_DEVICE void forEachPeak(const Plane<const float>& values, int width, int height, const Rule& rule)
{
    constexpr int half = cellSide / 2;
    const int columns = (width + half) / cellSide;
    const int rows = (height + half) / cellSide;
    forEachPixel(columns, rows, [&](int column, int row) {
        const int left = column * cellSide;
        const int top = row * cellSide;
        Peak peak{left + half, top + half, 0.0F};
        for (int x = left; x < left + cellSide && x < width; ++x)
            for (int y = top; y < top + cellSide && y < height; ++y) {
                const float value = values.row(y)[x];
                if (value > peak.value) peak = {x, y, value};
            }
        rule(column, row, peak);
    });
}

#else

namespace detail {

/// The width of what is worked on at a time.
inline constexpr int structureColumns = 512;

/// Lines of a task: sums of columns, with `border` zeros on either side, and sums of windows.
class StructureLines {
public:
    explicit StructureLines(int border)
        : _border(border), _pitch(structureColumns + 2 * border), _memory(taskMemory<float>(3, 2 * _pitch))
    {}

    bool isValid() const { return _memory != nullptr; }
    float* columns(int i) { return _memory.get() + static_cast<std::ptrdiff_t>(i) * _pitch + _border; }
    float* windows(int i) { return columns(3 + i); }

private:
    int _border;
    int _pitch;
    std::unique_ptr<float[]> _memory;
};

/// Adds the products of a row of gradients to sums of columns.
inline void addRow(const float* gradX, const float* gradY, int from, int to, float* xx, float* xy, float* yy)
{
#pragma omp simd
    for (int x = from; x < to; ++x) {
        const float gx = gradX[x];
        const float gy = gradY[x];
        xx[x] = multiplyAdd(gx, gx, xx[x]);
        xy[x] = multiplyAdd(gx, gy, xy[x]);
        yy[x] = multiplyAdd(gy, gy, yy[x]);
    }
}

/// Sums of 2 * reach + 1 neighbours.
inline void sumAlong(const float* from, float* to, int count, int reach)
{
    std::copy(from - reach, from - reach + count, to);
    for (int dx = -reach + 1; dx <= reach; ++dx)
#pragma omp simd
        for (int x = 0; x < count; ++x) to[x] += from[x + dx];
}

}  // namespace detail

template <typename Rule>
inline void forEachStructure(const GradientPlanes& gradients, int reach, const Rule& rule)
{
    const int width = gradients.width;
    const int height = gradients.height;
    if (width < 1 || height < 1) return;
    constexpr int columns = detail::structureColumns;
    constexpr int rowsOfTile = 16;
    const detail::Tiling tiling{{0, width, 0, height}, columns, rowsOfTile};
    // Beyond the image there is nothing to sum.
    const int across = std::clamp(reach, 0, width - 1);
    const auto body = [=](std::size_t begin, std::size_t end) {
        const Rule own = rule;
        detail::StructureLines lines(across);
        if (!lines.isValid()) return;
        for (std::size_t i = begin; i < end; ++i) {
            const detail::Tile tile = tiling[i];
            const int count = tile.right - tile.left;
            for (int y = tile.top; y < tile.bottom; ++y) {
                const detail::Around rows = detail::around(y, reach, height);
                const int from = std::max(-across, -tile.left);
                const int to = count + std::min(across, width - tile.right);
                for (int k = 0; k < 3; ++k)
                    std::fill(lines.columns(k) - across, lines.columns(k) + count + across, 0.0F);
                for (int j = rows.first; reach >= 0 && j <= rows.last; ++j) {
                    const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(j) * gradients.pitch + tile.left;
                    detail::addRow(gradients.x + row, gradients.y + row, from, to, lines.columns(0), lines.columns(1),
                                   lines.columns(2));
                }
                for (int k = 0; k < 3; ++k) detail::sumAlong(lines.columns(k), lines.windows(k), count, across);
                const float* const xx = lines.windows(0);
                const float* const xy = lines.windows(1);
                const float* const yy = lines.windows(2);
#pragma omp simd
                for (int x = 0; x < count; ++x) own(tile.left + x, y, StructureMatrix{xx[x], xy[x], yy[x]});
            }
        }
    };
    constexpr std::size_t bytesPerTile = std::size_t{columns} * rowsOfTile * 12;
    platform::parallelRanges(tiling.count(), bytesPerTile, body);
}

template <typename Rule>
inline void forEachPeak(const Plane<const float>& values, int width, int height, const Rule& rule)
{
    constexpr int half = cellSide / 2;
    constexpr int cellsAtATime = 64;
    constexpr int columnsAtATime = cellsAtATime * cellSide;
    const int columns = (width + half) / cellSide;
    const int rows = (height + half) / cellSide;
    if (columns < 1 || rows < 1) return;
    const auto body = [=](std::size_t begin, std::size_t end) {
        const Rule own = rule;
        float highest[columnsAtATime];
        int place[columnsAtATime];
        for (std::size_t i = begin; i < end; ++i) {
            const int row = static_cast<int>(i);
            const int top = row * cellSide;
            const int bottom = std::min(top + cellSide, height);
            for (int first = 0; first < columns; first += cellsAtATime) {
                const int left = first * cellSide;
                const int cells = std::min(cellsAtATime, columns - first);
                const int count = std::min(cells * cellSide, width - left);
                // The peak of each column, and then of the columns of each cell.
                std::fill_n(highest, cells * cellSide, 0.0F);
                for (int y = top; y < bottom; ++y) {
                    const float* const line = values.row(y) + left;
#pragma omp simd
                    for (int x = 0; x < count; ++x) {
                        const bool higher = line[x] > highest[x];
                        highest[x] = higher ? line[x] : highest[x];
                        place[x] = higher ? y : place[x];
                    }
                }
                for (int cell = 0; cell < cells; ++cell) {
                    Peak peak{left + cell * cellSide + half, top + half, 0.0F};
                    for (int x = cell * cellSide; x < (cell + 1) * cellSide; ++x)
                        if (highest[x] > peak.value) peak = {left + x, place[x], highest[x]};
                    own(first + cell, row, peak);
                }
            }
        }
    };
    platform::parallelRanges(static_cast<std::size_t>(rows), static_cast<std::size_t>(width) * cellSide * 8, body);
}

#endif

}  // namespace vexa
