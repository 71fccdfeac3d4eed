/// @file
/// The least or greatest element of the window around each element. Spans grow fourfold: the extremes of four spans
/// side by side give that of a span four times as long, first across and then down, so that the cost grows with the
/// logarithm of the window's sides.

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

/// A step from a span to one up to four times as long, but no longer than `size`: the distances from the first span to
/// the others that it is made of. They may overlap.
struct Growth {
    int second;
    int third;
    int fourth;

    VEXA_DEVICE Growth(int span, int size)
        : second(atMost(span, size - span)), third(atMost(2 * span, size - span)), fourth(atMost(3 * span, size - span))
    {}

private:
    static VEXA_DEVICE int atMost(int value, int limit) { return value < limit ? value : limit; }
};

}  // namespace detail

#if defined(__CUDACC__)

namespace detail {

/// What the threads of a block share: the elements that a part of their windows covers, twice, as a step
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

/// Spans of a patch from 1 to `size`, across or down by the distance of two neighbours in either direction. Returns
/// which of the two holds the result. What would lie beyond the patch is part of no result.
template <typename Shared, typename Pick>
VEXA_DEVICE int growSpans(const Block<Shared>& block, int from, int size, int across, int down, const Pick& pick)
{
    for (int span = 1; span < size; from = 1 - from) {
        const Growth growth(span, size);
        forEachOfPatch(block, [&](int x, int y) {
            if (x + growth.fourth * across >= Shared::width || y + growth.fourth * down >= Shared::height) return;
            const auto at = [&](int step) { return block.shared.element[from][y + step * down][x + step * across]; };
            block.shared.element[1 - from][y][x] =
                pick(pick(at(0), at(growth.second)), pick(at(growth.third), at(growth.fourth)));
        });
        span += growth.fourth;
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
                int last = detail::growSpans(block, 0, columns, C, 0, pick);
                last = detail::growSpans(block, last, rows, 0, 1, pick);
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

/// A step for a run of elements that lie `distance` apart from their neighbours. It may be in place.
template <typename T, typename Pick>
inline void growRun(int count, T* to, const T* from, std::ptrdiff_t distance, Growth growth, Pick pick)
{
    const T* const second = from + growth.second * distance;
    const T* const third = from + growth.third * distance;
    const T* const fourth = from + growth.fourth * distance;
#pragma omp simd
    for (int x = 0; x < count; ++x) to[x] = pick(pick(from[x], second[x]), pick(third[x], fourth[x]));
}

/// The extremes of `size` elements from each of `count` on, that lie C apart. All steps but the last go to a line of
/// their own, which may be where the elements are.
template <int C, typename T, typename Pick>
inline void growAcross(T* to, T* line, const T* from, int count, int size, const Pick& pick)
{
    int span = 1;
    do {
        const Growth growth(span, size);
        span += growth.fourth;
        growRun(count + C * (size - span), span == size ? to : line, from, C, growth, pick);
        from = line;
    } while (span < size);
}

/// The extremes of `size` lines from each on, for all of a tile of dst.
template <typename T, typename Pick>
inline void growDown(Plane<T> dst, const Tile& tile, Plane<T> lines, int size, const Pick& pick)
{
    int span = 1;
    do {
        const Growth growth(span, size);
        span += growth.fourth;
        for (int y = 0; y < tile.bottom - tile.top + size - span; ++y)
            growRun(tile.right - tile.left, span == size ? dst.row(tile.top + y) + tile.left : lines.row(y),
                    lines.row(y), lines.pitch, growth, pick);
    } while (span < size);
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
        {0, src.width, 0, src.height}, std::clamp(2 * reachAcross, 512, 4096), std::clamp(2 * reachDown, 64, 1024)};
    const auto body = [=](std::size_t begin, std::size_t end) {
        // No power of two: stores would be taken for what lies 4096 bytes away and is read.
        const int pitch = tiling.tileWidth + 64;
        const auto line = taskMemory<T>(1, tiling.tileWidth + reachAcross);
        const auto memory = taskMemory<T>(tiling.tileHeight + reachDown, pitch);
        if (!line || !memory) return;
        const Plane<T> lines{memory.get(), pitch};
        for (std::size_t i = begin; i < end; ++i) {
            const Tile tile = tiling[i];
            const int width = tile.right - tile.left;
            const int from = tile.left + C * window.x;
            const int to = from + width + reachAcross;
            const bool hasBorder = from < 0 || to > src.width;
            for (int y = 0; y < tile.bottom - tile.top + reachDown; ++y) {
                const int row = tile.top + window.y + y;
                if (hasBorder) fetchLine(line.get(), src, from, to, row);
                const T* const elements = hasBorder ? line.get() : src.row(row) + from;
                growAcross<C>(lines.row(y), line.get(), elements, width, window.columns, pick);
            }
            growDown(dst, tile, lines, window.rows, pick);
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
