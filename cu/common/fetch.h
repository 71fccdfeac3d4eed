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

/// A rectangle of an image, which counts what lies around it and, beyond the image, its nearest pixel. The rectangle
/// may reach or lie anywhere.
template <typename T>
struct FetchRectangle {
    FetchClamped<T> image;
    int left;
    int top;
    int width;
    int height;

    VEXA_DEVICE T operator()(int x, int y) const
    {
        return image.row(clamped(top, y, image.height))[clamped(left, x, image.width)];
    }

    /// Null for one that does not lie in the image: its pixels are fetched one by one.
    VEXA_DEVICE const T* row(int y) const
    {
        const bool inside = left >= 0 && static_cast<long long>(left) + width <= image.width;
        return inside ? image.row(clamped(top, y, image.height)) + left : nullptr;
    }

private:
    static VEXA_DEVICE int clamped(int origin, int offset, int size)
    {
        const long long position = static_cast<long long>(origin) + offset;
        return position < 0 ? 0 : (position < size ? static_cast<int>(position) : size - 1);
    }
};

}  // namespace vexa
