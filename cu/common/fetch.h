/// @file
/// Reading an image at positions that may lie outside it. A fetch is a value that travels with a launch; it addresses
/// rows of elements, so on an interleaved image of C channels its width is C times the pixels.

#pragma once

#include <cstddef>

#include "arithmetic.h"

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

namespace detail {

/// A position between two elements: the one before it, and the weight of the next with 8 fractional bits.
struct Between {
    int before;
    float weight;
};

/// Where u lies between elements that are centred at halves. Far outside is as good as just outside, and a NaN too.
VEXA_DEVICE Between between(float u, int size)
{
    const float position = u - 0.5F;
    const float reach = static_cast<float>(size) + 1.0F;
    const float below = position < reach ? position : reach;
    const float inside = below > -2.0F ? below : -2.0F;
    const float floor = floorf(inside);
    constexpr float steps = 256.0F;
    return {static_cast<int>(floor), floorf((inside - floor) * steps + 0.5F) / steps};
}

}  // namespace detail

/// The bilinear mean of the four elements around (u, v), whose centres lie at halves, with weights of 8 fractional
/// bits as texture hardware has.
template <typename Fetch>
VEXA_DEVICE float fetchLinear(const Fetch& fetch, float u, float v)
{
    const detail::Between x = detail::between(u, fetch.width);
    const detail::Between y = detail::between(v, fetch.height);
    const auto row = [&](int line) {
        const float left = static_cast<float>(fetch(x.before, line));
        const float right = static_cast<float>(fetch(x.before + 1, line));
        return multiplyAdd(x.weight, right, (1.0F - x.weight) * left);
    };
    return multiplyAdd(y.weight, row(y.before + 1), (1.0F - y.weight) * row(y.before));
}

}  // namespace vexa
