/// @file
/// The shape of kernels that turn columns into rows, by tiles: rows of a tile are read side by side, and rows of its
/// transpose are written side by side.

#pragma once

#include "kernels.h"

#if !defined(__CUDACC__)
#include "moves.h"
#endif

namespace vexa {

#if defined(__CUDACC__)

/// dst = the transpose of src, whose size is given. Launched in blocks of 16 by 16 threads.
template <int C, typename T>
VEXA_DEVICE void transposePixels(int width, int height, Plane<T> dst, Plane<const T> src)
{
    // One column more, so that the threads of a column read from different banks.
    struct Tile {
        Pixel<T, C> pixel[blockSide][blockSide + 1];
    };
    forEachBlock<Tile>(width, height, [=](const auto& block) {
        const int left = block.x * blockSide;
        const int top = block.y * blockSide;
        block.phase([&](int x, int y) {
            if (left + x >= width || top + y >= height) return;
            const T* const from = src.row(top + y) + static_cast<std::ptrdiff_t>(C) * (left + x);
            for (int c = 0; c < C; ++c) block.shared.pixel[y][x].element[c] = from[c];
        });
        block.phase([&](int x, int y) {
            if (left + y >= width || top + x >= height) return;
            T* const to = dst.row(left + y) + static_cast<std::ptrdiff_t>(C) * (top + x);
            for (int c = 0; c < C; ++c) to[c] = block.shared.pixel[x][y].element[c];
        });
    });
}

#else

namespace detail {

/// The elements of a register, and as many registers.
template <typename T>
struct Square {
    static constexpr int side = 16 / static_cast<int>(sizeof(T));
    typedef T Row __attribute__((vector_size(16)));
    Row row[side];

    void load(const T* from, std::ptrdiff_t pitch)
    {
        for (int y = 0; y < side; ++y) std::memcpy(&row[y], from + y * pitch, sizeof(Row));
    }

    void store(T* to, std::ptrdiff_t pitch) const
    {
        for (int y = 0; y < side; ++y) std::memcpy(to + y * pitch, &row[y], sizeof(Row));
    }

    /// Shuffles the upper half of the rows into the lower, which turns the bits of an element's place by one. After as
    /// many rounds as a column has bits, rows and columns have changed places.
    void transpose()
    {
        for (int round = 1; round < side; round *= 2)
            shuffle(std::make_index_sequence<static_cast<std::size_t>(side)>());
    }

private:
    template <std::size_t... I>
    void shuffle(std::index_sequence<I...>)
    {
        Row shuffled[side];
        for (int y = 0; y < side / 2; ++y) {
            shuffled[2 * y] = __builtin_shufflevector(row[y], row[y + side / 2], (I / 2 + I % 2 * side)...);
            shuffled[2 * y + 1] =
                __builtin_shufflevector(row[y], row[y + side / 2], (I / 2 + I % 2 * side + side / 2)...);
        }
        std::memcpy(row, shuffled, sizeof row);
    }
};

/// A rectangle of the source.
struct TransposedTile {
    int left;
    int right;
    int top;
    int bottom;
};

/// Pixel by pixel.
template <int C, typename T>
inline void transposeTile(TransposedTile tile, Plane<T> dst, Plane<const T> src)
{
    for (int x = tile.left; x < tile.right; ++x) {
        T* const to = dst.row(x);
        for (int y = tile.top; y < tile.bottom; ++y)
            copyPixel<C>(to + static_cast<std::ptrdiff_t>(C) * y, src.row(y) + static_cast<std::ptrdiff_t>(C) * x);
    }
}

/// In squares of registers, and what is left pixel by pixel.
template <typename T>
inline void transposeSquares(TransposedTile tile, Plane<T> dst, Plane<const T> src)
{
    constexpr int side = Square<T>::side;
    int y = tile.top;
    for (; y + side <= tile.bottom; y += side) {
        int x = tile.left;
        for (; x + side <= tile.right; x += side) {
            Square<T> square;
            square.load(src.row(y) + x, src.pitch);
            square.transpose();
            square.store(dst.row(x) + y, dst.pitch);
        }
        transposeTile<1>({x, tile.right, y, y + side}, dst, src);
    }
    transposeTile<1>({tile.left, tile.right, y, tile.bottom}, dst, src);
}

}  // namespace detail

/// dst = the transpose of src, whose size is given.
template <int C, typename T>
inline void transposePixels(int width, int height, Plane<T> dst, Plane<const T> src)
{
    if (width < 1 || height < 1) return;
    constexpr int side = 64;
    const std::size_t across = (static_cast<std::size_t>(width) + side - 1) / side;
    const std::size_t down = (static_cast<std::size_t>(height) + side - 1) / side;
    constexpr std::size_t bytesPerTile = 4 * side * side * C * sizeof(T);
    platform::parallelRanges(across * down, bytesPerTile, [=](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            const int left = static_cast<int>(i / down) * side;
            const int top = static_cast<int>(i % down) * side;
            const detail::TransposedTile tile{left, std::min(left + side, width), top, std::min(top + side, height)};
            if constexpr (C == 1)
                detail::transposeSquares(tile, dst, src);
            else
                detail::transposeTile<C>(tile, dst, src);
        }
    });
}

#endif

}  // namespace vexa
