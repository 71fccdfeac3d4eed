/// @file
/// Windows whose size is known when a kernel runs, and what host tasks that walk over tiles share.

#pragma once

#include "windows.h"

#if !defined(__CUDACC__)
#include <memory>
#include <new>
#endif

namespace vexa {

/// The pixels of a window: how far the first lies from the pixel that the window belongs to, and how many there are
/// across and down.
struct Footprint {
    int x;
    int y;
    int columns;
    int rows;

    VEXA_DEVICE bool isEmpty() const { return columns < 1 || rows < 1; }
};

#if !defined(__CUDACC__)

namespace detail {

/// Room of a task for so many elements; null if there is no memory, and then the task does nothing.
template <typename T>
std::unique_ptr<T[]> taskMemory(int rows, int pitch)
{
    const std::size_t count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(pitch);
    return std::unique_ptr<T[]>(new (std::nothrow) T[count]);
}

/// A tile of an image, of whole elements.
struct Tile {
    int left;
    int top;
    int right;
    int bottom;
};

/// The rectangle of an image that is worked on, cut into tiles.
struct Tiling {
    Interior area;
    int tileWidth;
    int tileHeight;

    int columns() const { return (area.right - area.left - 1) / tileWidth + 1; }
    int rows() const { return (area.bottom - area.top - 1) / tileHeight + 1; }
    std::size_t count() const { return static_cast<std::size_t>(columns()) * static_cast<std::size_t>(rows()); }

    Tile operator[](std::size_t i) const
    {
        const auto across = static_cast<std::size_t>(columns());
        const int left = area.left + static_cast<int>(i % across) * tileWidth;
        const int top = area.top + static_cast<int>(i / across) * tileHeight;
        return {left, top, left + std::min(tileWidth, area.right - left),
                top + std::min(tileHeight, area.bottom - top)};
    }
};

}  // namespace detail

#endif

}  // namespace vexa
