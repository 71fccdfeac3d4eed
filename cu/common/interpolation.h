/// @file
/// Interpolation between pixels: weights of the taps, and the grid on which an image is sampled when it is resized. No
/// step is fused, so that all platforms round alike.

#pragma once

#include "arithmetic.h"
#include "kernels.h"

namespace vexa {

/// The pixels that a sample is made of along one axis: 2 for linear, 4 for cubic interpolation.
template <int N>
struct Weights {
    float weight[N];
};

/// Weights at `t` behind the tap before the position, from 0 to 1: of the two neighbours, or of the cubic polynomial
/// through four (Lagrange).
template <int N>
VEXA_DEVICE Weights<N> weightsAt(float t)
{
    static_assert(N == 2 || N == 4);
    if constexpr (N == 2) {
        return {{1.0F - t, t}};
    } else {
        constexpr float sixth = 1.0F / 6.0F;
        const float before = t + 1.0F;
        const float next = t - 1.0F;
        const float after = t - 2.0F;
        return {{t * next * after * -sixth, before * next * after * 0.5F, before * t * after * -0.5F,
                 before * t * next * sixth}};
    }
}

/// A value interpolated between N pixels a row as an element: integers are rounded, halves up. Cubic polynomials leave
/// the range of their pixels and saturate.
template <typename T, int N>
VEXA_DEVICE T rounded(float value, Range range)
{
    if constexpr (!std::is_integral_v<T>)
        return value;
    else if constexpr (N == 4)
        return saturate<T>(value + 0.5F, range);
    else
        return truncate<T>(value + 0.5F);
}

/// The range of an element type.
template <typename T>
inline constexpr Range rangeOf{static_cast<float>(Element<T>::min), static_cast<float>(Element<T>::max)};

namespace detail {

/// A NaN comes to the upper bound.
template <typename Number>
VEXA_DEVICE Number clamp(Number value, Number lowest, Number highest)
{
    const Number below = value < highest ? value : highest;
    return below > lowest ? below : lowest;
}

}  // namespace detail

/// A position on an axis of so many pixels, the edge where it lies outside.
VEXA_DEVICE int clampedTo(int position, int size)
{
    return position < 0 ? 0 : (position < size ? position : size - 1);
}

/// Positions that texture hardware tells apart between two pixels.
inline constexpr int textureSteps = 256;

/// The pixel before a position along one axis, and the steps to it.
struct BetweenTexels {
    int before;
    int steps;
};

/// For a position near the image, in pixels that are centred at integers.
VEXA_DEVICE BetweenTexels betweenTexels(float centred)
{
    const float before = floorf(centred);
    return {static_cast<int>(before), static_cast<int>((centred - before) * static_cast<float>(textureSteps) + 0.5F)};
}

/// A position between pixels of a source.
struct GridPosition {
    int whole;
    float fraction;
};

/// One axis of an image that is resized: pixels before and after. Pixel d samples the source at d * from / to, a
/// quarter of a pixel less where it enlarges.
struct Axis {
    int from;
    int to;

    /// Whether all samples fall on pixels.
    constexpr bool isWhole() const { return from % to == 0; }

    VEXA_DEVICE GridPosition operator()(int d) const
    {
        const auto product = static_cast<unsigned long long>(d) * static_cast<unsigned>(from);
        const auto divisor = static_cast<unsigned>(to);
        // Narrow divisions are several times as fast.
        const unsigned narrow = static_cast<unsigned>(product);
        const unsigned whole = narrow == product ? narrow / divisor : static_cast<unsigned>(product / divisor);
        const auto rest = static_cast<unsigned>(product - static_cast<unsigned long long>(whole) * divisor);
        const float fraction = static_cast<float>(rest) / static_cast<float>(divisor) - (from < to ? 0.25F : 0.0F);
        const int first = static_cast<int>(whole);
        return fraction < 0.0F ? GridPosition{first - 1, fraction + 1.0F} : GridPosition{first, fraction};
    }

    /// The pixel nearest to the sample, halves up.
    VEXA_DEVICE int nearest(int d) const
    {
        const GridPosition position = (*this)(d);
        return clampedTo(position.fraction < 0.5F ? position.whole : position.whole + 1, from);
    }
};

}  // namespace vexa
