/// @file
/// Kernels between an image and four planes of half its size. A quad is a block of 2 by 2 pixels: top left, top right,
/// bottom left, bottom right. Channels are worked on one by one.

#pragma once

#include "kernels.h"

#if defined(__CUDACC__)

namespace vexa {

/// planes = op(quad) for every quad of C-channel pixels and each channel.
template <int C, typename T, typename Op>
VEXA_DEVICE void splitQuads(int width, int height, Plane<T> src, Planar<T, 4> planes, const Op& op)
{
    forEachPixel(width, height, [=](int x, int y) {
        const T* const top = src.row(2 * y) + 2 * C * x;
        const T* const bottom = src.row(2 * y + 1) + 2 * C * x;
        for (int c = 0; c < C; ++c)
            planes.row(y).store(C * x + c, op(Pixel<T, 4>{{top[c], top[C + c], bottom[c], bottom[C + c]}}));
    });
}

/// quad = op(planes) for every quad of C-channel pixels and each channel.
template <int C, typename T, typename Op>
VEXA_DEVICE void joinQuads(int width, int height, Plane<T> dst, Planar<T, 4> planes, const Op& op)
{
    forEachPixel(width, height, [=](int x, int y) {
        T* const top = dst.row(2 * y) + 2 * C * x;
        T* const bottom = dst.row(2 * y + 1) + 2 * C * x;
        for (int c = 0; c < C; ++c) {
            const Pixel<T, 4> quad = op(planes.row(y).load(C * x + c));
            top[c] = quad.element[0];
            top[C + c] = quad.element[1];
            bottom[c] = quad.element[2];
            bottom[C + c] = quad.element[3];
        }
    });
}

}  // namespace vexa

#else

#include "moves.h"

namespace vexa {

namespace detail {

/// The even and the odd pixels of a run of pairs, apart.
template <int C, typename T>
inline void separate(int pairs, const T* from, T* even, T* odd)
{
    if constexpr (C == 1) {
#pragma omp simd
        for (int i = 0; i < pairs; ++i) {
            even[i] = from[2 * i];
            odd[i] = from[2 * i + 1];
        }
    } else {
        for (int i = 0; i < pairs - 1; ++i) {
            copyWide<C>(even + C * i, from + 2 * C * i);
            copyWide<C>(odd + C * i, from + 2 * C * i + C);
        }
        copyPixel<C>(even + C * (pairs - 1), from + 2 * C * (pairs - 1));
        copyPixel<C>(odd + C * (pairs - 1), from + 2 * C * (pairs - 1) + C);
    }
}

/// The reverse.
template <int C, typename T>
inline void interleave(int pairs, T* to, const T* even, const T* odd)
{
    if constexpr (C == 1) {
#pragma omp simd
        for (int i = 0; i < pairs; ++i) {
            to[2 * i] = even[i];
            to[2 * i + 1] = odd[i];
        }
    } else {
        for (int i = 0; i < pairs - 1; ++i) {
            copyWide<C>(to + 2 * C * i, even + C * i);
            copyWide<C>(to + 2 * C * i + C, odd + C * i);
        }
        copyPixel<C>(to + 2 * C * (pairs - 1), even + C * (pairs - 1));
        copyPixel<C>(to + 2 * C * (pairs - 1) + C, odd + C * (pairs - 1));
    }
}

/// A run of quads whose pixels lie in lines of their own: compilers make no vector code of pairs of pixels.
template <int C, typename T>
struct QuadLines {
    static constexpr int quads = 512;
    T line[4][C * quads];

    PlanarRow<T, 4> row() { return {{line[0], line[1], line[2], line[3]}}; }
};

/// run(lines, x, count, y) for runs of quads that cover all rows.
template <int C, typename T, typename Run>
inline void forEachRunOfQuads(int width, int height, const Run& run)
{
    if (width < 1 || height < 1) return;
    constexpr std::size_t bytesPerQuad = 8 * C * sizeof(T);
    platform::parallelRanges(static_cast<std::size_t>(height), static_cast<std::size_t>(width) * bytesPerQuad,
                             [=](std::size_t begin, std::size_t end) {
                                 QuadLines<C, T> lines;
                                 for (std::size_t y = begin; y < end; ++y)
                                     for (int x = 0; x < width; x += lines.quads)
                                         run(lines, x, std::min(lines.quads, width - x), static_cast<int>(y));
                             });
}

}  // namespace detail

/// planes = op(quad) for every quad of C-channel pixels and each channel.
template <int C, typename T, typename Op>
inline void splitQuads(int width, int height, Plane<T> src, Planar<T, 4> planes, const Op& op)
{
    detail::forEachRunOfQuads<C, T>(width, height, [=](detail::QuadLines<C, T>& lines, int x, int count, int y) {
        detail::separate<C>(count, src.row(2 * y) + 2 * C * x, lines.line[0], lines.line[1]);
        detail::separate<C>(count, src.row(2 * y + 1) + 2 * C * x, lines.line[2], lines.line[3]);
        detail::mapRow(C * count, op, planes.row(y).from(C * x), lines.row());
    });
}

/// quad = op(planes) for every quad of C-channel pixels and each channel.
template <int C, typename T, typename Op>
inline void joinQuads(int width, int height, Plane<T> dst, Planar<T, 4> planes, const Op& op)
{
    detail::forEachRunOfQuads<C, T>(width, height, [=](detail::QuadLines<C, T>& lines, int x, int count, int y) {
        detail::mapRow(C * count, op, lines.row(), planes.row(y).from(C * x));
        detail::interleave<C>(count, dst.row(2 * y) + 2 * C * x, lines.line[0], lines.line[1]);
        detail::interleave<C>(count, dst.row(2 * y + 1) + 2 * C * x, lines.line[2], lines.line[3]);
    });
}

}  // namespace vexa

#endif
