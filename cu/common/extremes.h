/// @file
/// The least or greatest element of the window around each element. Spans are doubled: the extremes of two pixels side
/// by side give those of four, and so on, first across and then down, so that the cost grows with the logarithm of the
/// window's sides.

#pragma once

#include "footprint.h"

namespace vexa {

struct Least {
    template <typename T>
    VEXA_DEVICE T operator()(T a, T b) const
    {
        return a < b ? a : b;
    }
};

struct Greatest {
    template <typename T>
    VEXA_DEVICE T operator()(T a, T b) const
    {
        return a > b ? a : b;
    }
};

namespace detail {

/// How far the next step of doubling looks, from a span of `span` toward one of `size`.
VEXA_DEVICE int nextStep(int span, int size)
{
    return span < size - span ? span : size - span;
}

}  // namespace detail

#if defined(__CUDACC__)

namespace detail {

/// What the threads of a block share: the elements that a part of their windows covers, twice, as a step of doubling
/// must not overwrite what others still read.
template <int C, typename T>
struct Patch {
    static constexpr int side = 32;  ///< pixels of the window
    static constexpr int width = blockSide + C * (side - 1);
    static constexpr int height = blockSide + side - 1;
    T element[2][height][width];
    T result[blockSide][blockSide];
};

/// rule(x, y) for every element of a patch, spread over the threads of the block.
template <typename Shared, typename Rule>
VEXA_DEVICE void forEachOfPatch(const Block<Shared>& block, const Rule& rule)
{
    block.phase([&](int threadX, int threadY) {
        for (int y = threadY; y < Shared::height; y += blockSide)
            for (int x = threadX; x < Shared::width; x += blockSide) rule(x, y);
    });
}

/// Doubles spans of a patch from 1 to `size`, across or down by the distance of two neighbours in either direction.
/// Returns which of the two holds the result. Beyond the patch there is nothing that a result needs.
template <typename Shared, typename Pick>
VEXA_DEVICE int doubleSpans(const Block<Shared>& block, int from, int size, int across, int down, const Pick& pick)
{
    for (int span = 1, step = 0; span < size; span += step, from = 1 - from) {
        step = nextStep(span, size);
        forEachOfPatch(block, [&](int x, int y) {
            const int otherX = x + step * across;
            const int otherY = y + step * down;
            if (otherX >= Shared::width || otherY >= Shared::height) return;
            const auto& element = block.shared.element[from];
            block.shared.element[1 - from][y][x] = pick(element[y][x], element[otherY][otherX]);
        });
    }
    return from;
}

}  // namespace detail

/// dst = the pick of the window around each element of an image of C-channel pixels, `start` for an empty window. A
/// block goes over parts of its windows whose elements it can share.
template <int C, typename T, typename Pick>
VEXA_DEVICE void pickEach(const FetchClamped<T>& src, Plane<T> dst, const Footprint& window, T start, const Pick& pick)
{
    using Shared = detail::Patch<C, T>;
    forEachBlock<Shared>(src.width, src.height, [&](const auto& block) {
        const int left = block.x * blockSide;
        const int top = block.y * blockSide;
        auto& shared = block.shared;
        block.phase([&](int x, int y) { shared.result[y][x] = start; });
        for (int row = 0; row < window.rows; row += Shared::side)
            for (int column = 0; column < window.columns; column += Shared::side) {
                const int firstX = left + C * (window.x + column);
                const int firstY = top + window.y + row;
                detail::forEachOfPatch(block,
                                       [&](int x, int y) { shared.element[0][y][x] = src(firstX + x, firstY + y); });
                const int columns = window.columns - column < Shared::side ? window.columns - column : Shared::side;
                const int rows = window.rows - row < Shared::side ? window.rows - row : Shared::side;
                int last = detail::doubleSpans(block, 0, columns, C, 0, pick);
                last = detail::doubleSpans(block, last, rows, 0, 1, pick);
                block.phase(
                    [&](int x, int y) { shared.result[y][x] = pick(shared.result[y][x], shared.element[last][y][x]); });
            }
        block.phase([&](int x, int y) {
            if (left + x < src.width && top + y < src.height) dst.row(top + y)[left + x] = shared.result[y][x];
        });
    });
}

#else

namespace detail {

template <typename T, typename Pick>
inline void pickRow(int count, T* to, const T* a, const T* b, Pick pick)
{
#pragma omp simd
    for (int x = 0; x < count; ++x) to[x] = pick(a[x], b[x]);
}

/// The rows that the windows of a tile reach.
template <typename T>
struct TileLines {
    T* first;
    int pitch;
    T* operator[](int y) const { return first + static_cast<std::ptrdiff_t>(y) * pitch; }
};

/// Doubles the spans of a line from 1 to `size`, in place; `count` results are wanted, of neighbours C elements apart.
template <int C, typename T, typename Pick>
inline void doubleAcross(T* line, int count, int size, const Pick& pick)
{
    for (int span = 1, step = 0; span < size; span += step) {
        step = nextStep(span, size);
        pickRow(count + C * (size - span - step), line, line, line + C * step, pick);
    }
}

/// The same for lines. Their last step goes to `dst`.
template <typename T, typename Pick>
inline void doubleDown(const TileLines<T>& lines, Plane<T> dst, const Tile& tile, int size, const Pick& pick)
{
    const int width = tile.right - tile.left;
    const int height = tile.bottom - tile.top;
    int span = 1;
    for (int step = nextStep(span, size); span + step < size; step = nextStep(span, size)) {
        for (int y = 0; y < height + size - span - step; ++y) pickRow(width, lines[y], lines[y], lines[y + step], pick);
        span += step;
    }
    for (int y = 0; y < height; ++y)
        pickRow(width, dst.row(tile.top + y) + tile.left, lines[y], lines[y + size - span], pick);
}

}  // namespace detail

/// dst = the pick of the window around each element of an image of C-channel pixels, `start` for an empty window.
template <int C, typename T, typename Pick>
inline void pickEach(const FetchClamped<T>& src, Plane<T> dst, const Footprint& window, T start, const Pick& pick)
{
    using namespace detail;
    if (src.width < 1 || src.height < 1) return;
    if (window.isEmpty()) {
        forEachPixel(src.width, src.height, [=](int x, int y) { dst.row(y)[x] = start; });
        return;
    }
    const int reachAcross = C * (window.columns - 1);
    const int reachDown = window.rows - 1;
    // Tiles grow with the window, as neighbours do the work for what they share twice.
    const Tiling tiling{
        {0, src.width, 0, src.height}, std::clamp(reachAcross, 512, 4096), std::clamp(reachDown, 32, 1024)};
    const auto body = [=](std::size_t begin, std::size_t end) {
        const int pitch = tiling.tileWidth + reachAcross;
        const auto memory = taskMemory<T>(tiling.tileHeight + reachDown, pitch);
        if (!memory) return;
        const TileLines<T> lines{memory.get(), pitch};
        for (std::size_t i = begin; i < end; ++i) {
            const Tile tile = tiling[i];
            const int width = tile.right - tile.left;
            const int from = tile.left + C * window.x;
            for (int y = 0; y < tile.bottom - tile.top + reachDown; ++y) {
                fetchLine(lines[y], src, from, from + width + reachAcross, tile.top + window.y + y);
                doubleAcross<C>(lines[y], width, window.columns, pick);
            }
            doubleDown(lines, dst, tile, window.rows, pick);
        }
    };
    constexpr std::size_t bytesPerElement = 2 * sizeof(T);
    platform::parallelRanges(
        tiling.count(),
        static_cast<std::size_t>(tiling.tileWidth) * static_cast<std::size_t>(tiling.tileHeight) * bytesPerElement,
        body);
}

#endif

}  // namespace vexa
