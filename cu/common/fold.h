/// @file
/// The shape of kernels that fold an image into a few numbers. The image is cut into tiles by its size alone; every
/// tile is folded into a partial result, and the partial results are merged in their order. So rounding is the same on
/// every run, whatever the threads.

#pragma once

#include <algorithm>

#include "kernels.h"

namespace vexa {

/// A part of an image.
struct Tile {
    int x;
    int y;
    int width;
    int height;
};

/// An image in tiles of rows, or of parts of a very long row.
struct Tiles {
    int width;  ///< of the image
    int height;
    int tileWidth;
    int tileHeight;
    int columns;
    int count;

    VEXA_DEVICE Tile operator[](int i) const
    {
        const int x = i % columns * tileWidth;
        const int y = i / columns * tileHeight;
        return {x, y, width - x < tileWidth ? width - x : tileWidth, height - y < tileHeight ? height - y : tileHeight};
    }
};

/// Pixels of a tile at most. So many squares of bytes, and so many 16-bit elements, have a sum of 32 bits.
inline constexpr int pixelsPerTile = 1 << 14;

inline Tiles tilesOf(int width, int height)
{
    const auto parts = [](int whole, int part) { return (whole - 1) / part + 1; };
    const int tileWidth = std::min(width, pixelsPerTile);
    const int tileHeight = pixelsPerTile / tileWidth;
    const int columns = parts(width, tileWidth);
    return {width, height, tileWidth, tileHeight, columns, columns * parts(height, tileHeight)};
}

}  // namespace vexa

#if defined(__CUDACC__)
#include "fold_device.h"
#else
#include "fold_host.h"
#endif

namespace vexa {

/// fold.take(lane, element...) for every element of a row of `width` pixels, of those in the share. Lanes are
/// independent of each other, so that a fold over them fills vector registers. A row gives the elements of a pixel, or
/// of n at once.
template <int C, typename Fold, typename... Row>
VEXA_DEVICE void foldRow(Fold& fold, int width, Share share, const Row&... row)
{
    constexpr int lanes = Fold::lanes;
    const auto take = [&fold](int lane, int i, const auto&... elements) { fold.take(lane, elements(i)...); };
    const auto takeSome = [&](const auto&... elements) {
        forEachLane<lanes * C>([&](int i) { take(i, i, elements...); });
    };
    int x = share.column;
    for (; x <= width - lanes; x += lanes * Share::columns) takeSome(row.template pixels<lanes>(x)...);
    for (int lane = 0; x < width; ++x, ++lane)
        for (int i = 0; i < C; ++i) take(lane * C + i, i, row.pixel(x)...);
}

/// The same for the rows of a tile. An input gives its row by `row(x, y)`.
template <int C, typename Fold, typename... Input>
VEXA_DEVICE void foldTile(Fold& fold, Tile tile, Share share, const Input&... input)
{
    for (int y = share.row; y < tile.height; y += Share::rows) {
        foldRow<C>(fold, tile.width, share, input.row(tile.x, tile.y + y)...);
        fold.endRow();
    }
}

/// How many pixels of a tile are in a share.
VEXA_DEVICE int pixelsIn(Tile tile, Share share)
{
    const int columns = (tile.width - share.column + Share::columns - 1) / Share::columns;
    const int rows = (tile.height - share.row + Share::rows - 1) / Share::rows;
    return columns > 0 && rows > 0 ? columns * rows : 0;
}

}  // namespace vexa
