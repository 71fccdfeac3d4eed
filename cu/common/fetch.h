/// @file
/// Reading an image at positions that may lie outside it. A fetch is a value that travels with a launch; it addresses
/// rows of elements, so on an interleaved image of C channels its width is C times the pixels.

#pragma once

#include <cstddef>

#include "target.h"

namespace vexa {

/// Positions outside repeat the nearest element of the edge.
template <typename T>
struct FetchClamped {
    const T* pixels;
    int width;
    int height;
    int pitch;  ///< elements

    VEXA_DEVICE T operator()(int x, int y) const
    {
        const int column = x < 0 ? 0 : (x < width ? x : width - 1);
        return row(y)[column];
    }

    /// The row that positions of row y read.
    VEXA_DEVICE const T* row(int y) const
    {
        const int nearest = y < 0 ? 0 : (y < height ? y : height - 1);
        return pixels + static_cast<std::ptrdiff_t>(nearest) * pitch;
    }
};

/// Positions outside read 0.
template <typename T>
struct FetchZero {
    const T* pixels;
    int width;
    int height;
    int pitch;  ///< elements

    VEXA_DEVICE T operator()(int x, int y) const
    {
        const bool inside = x >= 0 && y >= 0 && x < width && y < height;
        return inside ? pixels[static_cast<std::ptrdiff_t>(y) * pitch + x] : T(0);
    }

    /// The row that positions of row y read; null where they all read 0.
    VEXA_DEVICE const T* row(int y) const
    {
        return y >= 0 && y < height ? pixels + static_cast<std::ptrdiff_t>(y) * pitch : nullptr;
    }
};

}  // namespace vexa
