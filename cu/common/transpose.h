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

/// As many pixels as a register takes, and as many registers. Pixels of three elements are widened to four.
template <typename T, int C>
class Square {
    static constexpr int pixelBytes = C * static_cast<int>(sizeof(T));
    static constexpr int wideBytes = wideElements<C> * static_cast<int>(sizeof(T));

public:
    static constexpr int side = 16 / wideBytes;

    /// Bytes that are loaded behind the pixels of a row.
    static constexpr int excessBytes = 16 - side * pixelBytes;

    void load(const T* from, std::ptrdiff_t pitch)
    {
        for (int y = 0; y < side; ++y) {
            Bytes bytes;
            std::memcpy(&bytes, from + y * pitch, sizeof bytes);
            _row[y] = reinterpret_cast<Row>(widened(bytes, std::make_index_sequence<16>()));
        }
    }

    void store(T* to, std::ptrdiff_t pitch) const
    {
        for (int y = 0; y < side; ++y) {
            const Bytes bytes = narrowed(reinterpret_cast<Bytes>(_row[y]), std::make_index_sequence<16>());
            std::memcpy(to + y * pitch, &bytes, side * pixelBytes);
        }
    }

    /// Shuffles the upper half of the rows into the lower, which turns the bits of a pixel's place by one. After as
    /// many rounds as a column has bits, rows and columns have changed places.
    void transpose()
    {
        for (int round = 1; round < side; round *= 2)
            shuffle(std::make_index_sequence<static_cast<std::size_t>(side)>());
    }

private:
    using Word =
        std::conditional_t<wideBytes == 1, std::uint8_t,
                           std::conditional_t<wideBytes == 2, std::uint16_t,
                                              std::conditional_t<wideBytes == 4, std::uint32_t, std::uint64_t> > >;
    typedef Word Row __attribute__((vector_size(16)));
    typedef unsigned char Bytes __attribute__((vector_size(16)));

    template <std::size_t... I>
    static Bytes widened(Bytes bytes, std::index_sequence<I...>)
    {
        if constexpr (pixelBytes == wideBytes)
            return bytes;
        else
            return __builtin_shufflevector(
                bytes, Bytes{}, (I % wideBytes < pixelBytes ? I / wideBytes * pixelBytes + I % wideBytes : 16)...);
    }

    template <std::size_t... I>
    static Bytes narrowed(Bytes bytes, std::index_sequence<I...>)
    {
        if constexpr (pixelBytes == wideBytes)
            return bytes;
        else
            return __builtin_shufflevector(
                bytes, Bytes{}, (I < side * pixelBytes ? I / pixelBytes * wideBytes + I % pixelBytes : 16)...);
    }

    template <std::size_t... I>
    void shuffle(std::index_sequence<I...>)
    {
        Row shuffled[side];
        for (int y = 0; y < side / 2; ++y) {
            const Row upper = _row[y];
            const Row lower = _row[y + side / 2];
            shuffled[2 * y] = __builtin_shufflevector(upper, lower, (I / 2 + I % 2 * side)...);
            shuffled[2 * y + 1] = __builtin_shufflevector(upper, lower, (I / 2 + I % 2 * side + side / 2)...);
        }
        for (int y = 0; y < side; ++y) _row[y] = shuffled[y];
    }

    Row _row[side];
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
inline void transposeOneByOne(TransposedTile tile, Plane<T> dst, Plane<const T> src)
{
    for (int x = tile.left; x < tile.right; ++x)
        for (int y = tile.top; y < tile.bottom; ++y)
            copyPixel<C>(dst.row(x) + static_cast<std::ptrdiff_t>(C) * y,
                         src.row(y) + static_cast<std::ptrdiff_t>(C) * x);
}

/// In squares of registers, and what is left pixel by pixel.
template <int C, typename T>
inline void transposeTile(TransposedTile tile, int width, Plane<T> dst, Plane<const T> src)
{
    if constexpr (C * sizeof(T) > 8) {
        transposeOneByOne<C>(tile, dst, src);
    } else {
        constexpr int side = Square<T, C>::side;
        constexpr int excess =
            (Square<T, C>::excessBytes + C * static_cast<int>(sizeof(T)) - 1) / (C * static_cast<int>(sizeof(T)));
        const int right = std::min(tile.right, width - excess);
        int y = tile.top;
        for (; y + side <= tile.bottom; y += side) {
            int x = tile.left;
            for (; x + side <= right; x += side) {
                Square<T, C> square;
                square.load(src.row(y) + static_cast<std::ptrdiff_t>(C) * x, src.pitch);
                square.transpose();
                square.store(dst.row(x) + static_cast<std::ptrdiff_t>(C) * y, dst.pitch);
            }
            transposeOneByOne<C>({x, tile.right, y, y + side}, dst, src);
        }
        transposeOneByOne<C>({tile.left, tile.right, y, tile.bottom}, dst, src);
    }
}

}  // namespace detail

/// dst = the transpose of src, whose size is given.
template <int C, typename T>
inline void transposePixels(int width, int height, Plane<T> dst, Plane<const T> src)
{
    if (width < 1 || height < 1) return;
    // As wide as a line of the cache is long: rows of the result that are many at a time push each other out where
    // their pitch is a power of two.
    constexpr int tileWidth = 64 / static_cast<int>(sizeof(Pixel<T, detail::wideElements<C> >));
    constexpr int tileHeight = 64;
    const std::size_t across = (static_cast<std::size_t>(width) + tileWidth - 1) / tileWidth;
    const std::size_t down = (static_cast<std::size_t>(height) + tileHeight - 1) / tileHeight;
    constexpr std::size_t bytesPerTile = 4 * tileWidth * tileHeight * C * sizeof(T);
    platform::parallelRanges(across * down, bytesPerTile, [=](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            const int left = static_cast<int>(i / down) * tileWidth;
            const int top = static_cast<int>(i % down) * tileHeight;
            const detail::TransposedTile tile{left, left + std::min(tileWidth, width - left), top,
                                              top + std::min(tileHeight, height - top)};
            detail::transposeTile<C>(tile, width, dst, src);
        }
    });
}

#endif

}  // namespace vexa
