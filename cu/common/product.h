/// @file
/// Products of float matrices whose elements are ascending fused sums: each is one chain of multiplyAdd from 0, so that
/// every platform gives the same bits. On the host the chains of a tile of the result run side by side in registers,
/// and the terms are cut into parts for the cache.

#pragma once

#include "arithmetic.h"
#include "kernels.h"

namespace vexa {

/// A factor as a product reads it: element (y, x) is first[y * down + x * across]. Either step may be 1.
struct Factor {
    const float* first;
    std::ptrdiff_t down;
    std::ptrdiff_t across;

    VEXA_DEVICE float operator()(int y, int x) const { return first[y * down + x * across]; }
};

#if defined(__CUDACC__)

/// result(y, x) = sum of a(y, i) * b(i, x) over i below `terms`.
VEXA_DEVICE void multiplyMatrices(int width, int height, int terms, Factor a, Factor b, Plane<float> result)
{
    forEachPixel(width, height, [=](int x, int y) {
        float sum = 0;
        for (int i = 0; i < terms; ++i) sum = multiplyAdd(a(y, i), b(i, x), sum);
        result.row(y)[x] = sum;
    });
}

#else

namespace detail {

/// A tile of the result: as many chains as hide the time that a fused step takes, side by side in vector registers.
inline constexpr int tileColumns = 32;
inline constexpr int tileRows = 4;

/// Terms for which the columns of a tile fit the cache next to the processor.
inline constexpr int termsAtATime = 256;

/// Rows that share the columns once they are copied.
inline constexpr int rowsAtATime = 128;

/// Columns x to x + width of rows `begin` to `end`, without gaps; the rest of the tile's columns is 0.
inline void copyColumns(const Factor& b, int x, int width, int begin, int end, float (*to)[tileColumns])
{
    for (int i = begin; i < end; ++i, ++to)
        for (int column = 0; column < tileColumns; ++column) (*to)[column] = column < width ? b(i, x + column) : 0;
}

/// Goes on with the chains of `rows` rows from what the result holds, or from 0.
template <int rows>
inline void addTerms(const Factor& a, int y, int begin, int end, const float (*b)[tileColumns], int width,
                     float* result, std::ptrdiff_t pitch)
{
    float sum[rows][tileColumns] = {};
    if (begin > 0)
        for (int r = 0; r < rows; ++r)
            for (int x = 0; x < width; ++x) sum[r][x] = result[r * pitch + x];
    for (int i = begin; i < end; ++i, ++b)
        for (int r = 0; r < rows; ++r) {
            const float factor = a(y + r, i);
            for (int x = 0; x < tileColumns; ++x) sum[r][x] = multiplyAdd(factor, (*b)[x], sum[r][x]);
        }
    for (int r = 0; r < rows; ++r)
        for (int x = 0; x < width; ++x) result[r * pitch + x] = sum[r][x];
}

}  // namespace detail

/// result(y, x) = sum of a(y, i) * b(i, x) over i below `terms`.
inline void multiplyMatrices(int width, int height, int terms, Factor a, Factor b, Plane<float> result)
{
    using namespace detail;
    if (width < 1 || height < 1) return;
    const int columns = (width - 1) / tileColumns + 1;
    const int rows = (height - 1) / rowsAtATime + 1;
    const std::size_t stepsPerPart =
        static_cast<std::size_t>(std::min(height, rowsAtATime)) * tileColumns * static_cast<std::size_t>(terms);
    // A byte is moved in about the time of four fused steps.
    platform::parallelRanges(
        static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows), stepsPerPart / 4,
        [=](std::size_t firstPart, std::size_t lastPart) {
            alignas(64) float panel[termsAtATime][tileColumns];
            for (std::size_t part = firstPart; part < lastPart; ++part) {
                const int x = static_cast<int>(part) / rows * tileColumns;
                const int top = static_cast<int>(part) % rows * rowsAtATime;
                const int bottom = std::min(height, top + rowsAtATime);
                const int tileWidth = std::min(width - x, tileColumns);
                for (int begin = 0; begin < terms; begin += termsAtATime) {
                    const int end = std::min(terms, begin + termsAtATime);
                    copyColumns(b, x, tileWidth, begin, end, panel);
                    int y = top;
                    for (; y + tileRows <= bottom; y += tileRows)
                        addTerms<tileRows>(a, y, begin, end, panel, tileWidth, result.row(y) + x, result.pitch);
                    for (; y < bottom; ++y)
                        addTerms<1>(a, y, begin, end, panel, tileWidth, result.row(y) + x, result.pitch);
                }
            }
        });
}

#endif

}  // namespace vexa
