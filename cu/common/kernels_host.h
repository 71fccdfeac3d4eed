/// @file
/// The shapes of kernels on the host. Rows are spread over the cores and columns over vector registers. Rules are
/// copied into each task, so that what they capture stays in registers and stores of bytes can't alias it: that is
/// worth a factor of 20.

#pragma once

#include "parallel.h"

namespace vexa {

template <typename... P, typename... A>
void launch(void (*kernel)(P...), Extent /*extent*/, cudaStream_t /*stream*/, A... arguments)
{
    // A null image is left by an allocation that failed; such a launch does nothing.
    if ((detail::isNull(arguments) || ...)) return;
    kernel(static_cast<P>(arguments)...);
}

/// rule(x, y) for every pixel.
template <typename Rule>
inline void forEachPixel(int width, int height, const Rule& rule)
{
    if (width < 1 || height < 1) return;
    constexpr std::size_t bytesPerPixel = 8;
    platform::parallelRanges(static_cast<std::size_t>(height), static_cast<std::size_t>(width) * bytesPerPixel,
                             [=](std::size_t begin, std::size_t end) {
                                 const Rule own = rule;
                                 for (std::size_t y = begin; y < end; ++y) {
#pragma omp simd
                                     for (int x = 0; x < width; ++x) own(x, static_cast<int>(y));
                                 }
                             });
}

/// dst = op(src...) for every element of C-channel pixels.
template <int C, typename D, typename Op, typename... S>
inline void mapElements(int width, int height, Plane<D> dst, const Op& op, Plane<S>... src)
{
    if (width < 1 || height < 1) return;
    const int elements = width * C;
    constexpr std::size_t bytesPerElement = (sizeof(D) + ... + sizeof(S));
    const auto mapRow = [elements](const Op& own, D* to, const S*... from) {
#pragma omp simd
        for (int x = 0; x < elements; ++x) to[x] = own(from[x]...);
    };
    platform::parallelRanges(static_cast<std::size_t>(height), static_cast<std::size_t>(elements) * bytesPerElement,
                             [=](std::size_t begin, std::size_t end) {
                                 const Op own = op;
                                 for (std::size_t y = begin; y < end; ++y)
                                     mapRow(own, dst.row(static_cast<int>(y)), src.row(static_cast<int>(y))...);
                             });
}

/// One block of threads that share memory.
template <typename Shared>
struct Block {
    int x;  ///< of the block in the grid
    int y;
    Shared& shared;

    /// rule(x, y) for every thread of the block; all have done so when it returns.
    template <typename Rule>
    void phase(const Rule& rule) const
    {
        for (int threadY = 0; threadY < blockSide; ++threadY)
            for (int threadX = 0; threadX < blockSide; ++threadX) rule(threadX, threadY);
    }
};

/// body(block) for every block of the standard grid over width and height. What is shared starts undefined.
template <typename Shared, typename Body>
inline void forEachBlock(int width, int height, const Body& body)
{
    if (width < 1 || height < 1) return;
    const std::size_t columns = (static_cast<std::size_t>(width) + blockSide - 1) / blockSide;
    const std::size_t rows = (static_cast<std::size_t>(height) + blockSide - 1) / blockSide;
    constexpr std::size_t bytesPerBlock = 64 * blockSide * blockSide;
    platform::parallelRanges(columns * rows, bytesPerBlock, [=](std::size_t begin, std::size_t end) {
        Shared shared;
        for (std::size_t i = begin; i < end; ++i)
            body(Block<Shared>{static_cast<int>(i % columns), static_cast<int>(i / columns), shared});
    });
}

}  // namespace vexa
