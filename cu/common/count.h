/// @file
/// Counting the bytes of an image: bin v of channel c is counts[256 * c + v].

#pragma once

#include <utility>

#include "kernels.h"

namespace vexa {

/// Values of a byte, and threads of the standard block: each thread owns one bin of each channel.
inline constexpr int byteValues = 256;

#if defined(__CUDACC__)

/// Adds the counts of the pixels. A block counts in shared memory, so that global memory sees each bin of a block once,
/// whatever the image holds.
template <int C>
VEXA_DEVICE void countBytes(int width, int height, Plane<const u8> src, unsigned* counts)
{
    static_assert(byteValues == blockSide * blockSide);
    struct Bins {
        unsigned count[C * byteValues];
    };
    forEachBlock<Bins>(width, height, [=](const auto& block) {
        block.phase([&](int threadX, int threadY) {
            for (int c = 0; c < C; ++c) block.shared.count[c * byteValues + threadY * blockSide + threadX] = 0;
        });
        block.phase([&](int threadX, int threadY) {
            const int x = block.x * blockSide + threadX;
            const int y = block.y * blockSide + threadY;
            if (x >= width || y >= height) return;
            const u8* const pixel = src.row(y) + static_cast<std::ptrdiff_t>(x) * C;
            for (int c = 0; c < C; ++c) atomicAdd(&block.shared.count[c * byteValues + pixel[c]], 1U);
        });
        block.phase([&](int threadX, int threadY) {
            for (int c = 0; c < C; ++c) {
                const int bin = c * byteValues + threadY * blockSide + threadX;
                if (block.shared.count[bin] != 0) atomicAdd(&counts[bin], block.shared.count[bin]);
            }
        });
    });
}

#else

namespace detail {

/// One byte to each table. As a loop it would be turned into gathers and scatters, which take four times as long.
template <std::size_t N, std::size_t... i>
inline void countNeighbours(unsigned (&table)[N][byteValues], const u8* bytes, std::index_sequence<i...>)
{
    (++table[i][bytes[i]], ...);
}

}  // namespace detail

/// Adds the counts of the pixels. Neighbours count in tables of their own: on a constant image one table would wait for
/// its own last store at every pixel.
template <int C>
inline void countBytes(int width, int height, Plane<const u8> src, unsigned* counts)
{
    if (width < 1 || height < 1) return;
    constexpr int neighbours = C == 1 ? 8 : 4;
    constexpr int step = neighbours * C;
    const std::size_t rowBytes = static_cast<std::size_t>(width) * C;
    platform::parallelRanges(static_cast<std::size_t>(height), rowBytes, [=](std::size_t begin, std::size_t end) {
        unsigned table[step][byteValues] = {};
        for (std::size_t y = begin; y < end; ++y) {
            const u8* const row = src.row(static_cast<int>(y));
            std::size_t x = 0;
            for (; x + step <= rowBytes; x += step)
                detail::countNeighbours(table, row + x, std::make_index_sequence<step>());
            for (int i = 0; x < rowBytes; ++x, ++i) ++table[i][row[x]];
        }
        for (int i = C; i < step; ++i)
            for (int value = 0; value < byteValues; ++value) table[i % C][value] += table[i][value];
        for (int i = 0; i < C * byteValues; ++i)
            __atomic_fetch_add(&counts[i], table[i / byteValues][i % byteValues], __ATOMIC_RELAXED);
    });
}

#endif

}  // namespace vexa
