/// @file
/// The shape of kernels that sample an image anywhere: a map gives every pixel of the result a position in the source,
/// a sampler says what stands there. A position may be infinite or undefined: it is compared and clamped before it
/// becomes an integer.
///
/// A sampler has `bounded`, which brings far positions near, `place`, which turns these into spots, and `careful`,
/// which makes the pixel of any spot that reaches the source. The host makes runs of pixels, whose spots need no care,
/// faster. Conditions of a place are joined without branches: it is computed in vector registers.

#pragma once

#include "interpolation.h"

namespace vexa {

/// How much of what a pixel is made of the source has: nothing, a part, or all of it and what is loaded with it.
enum class Share : int { none = 0, part = 1, all = 2 };

/// Where a pixel is sampled: the tap before the position, and the way to the next one.
template <typename Way>
struct Spot {
    Share share;
    int x;
    int y;
    Way tx;
    Way ty;
};

/// An image to sample.
template <typename T, int C>
struct Sampled {
    const T* pixels;
    int width;
    int height;
    int pitch;  ///< elements

    VEXA_DEVICE const T* at(int x, int y) const
    {
        return pixels + static_cast<std::ptrdiff_t>(y) * pitch + static_cast<std::ptrdiff_t>(C) * x;
    }
};

namespace detail {

/// The host loads taps of three-channel pixels as four elements, so the pixel behind the last tap must exist.
template <int C>
inline constexpr int spareTaps = C == 3 ? 1 : 0;

VEXA_DEVICE Share shareOf(bool touches, bool isInterior)
{
    return static_cast<Share>(static_cast<int>(touches) + static_cast<int>(touches & isInterior));
}

}  // namespace detail

/// A position in pixels, with integers at their centres.
struct Position {
    double x;
    double y;
};

namespace detail {

/// Whether the source has a pixel at a position.
template <typename T, int C>
VEXA_DEVICE bool contains(const Sampled<T, C>& src, Position position)
{
    return (position.x >= -0.5) & (position.y >= -0.5) & (position.x < src.width - 0.5) &
           (position.y < src.height - 0.5);
}

/// A position not further outside than a pixel.
template <typename T, int C>
VEXA_DEVICE Position bounded(const Sampled<T, C>& src, Position position)
{
    return {clamp<double>(position.x, -1, src.width), clamp<double>(position.y, -1, src.height)};
}

}  // namespace detail

/// The nearest pixel, halves up.
template <typename T, int C>
struct SampleNearest {
    Sampled<T, C> src;

    VEXA_DEVICE Position bounded(Position position) const { return detail::bounded(src, position); }

    VEXA_DEVICE Spot<float> place(Position position) const
    {
        const int x = static_cast<int>(floor(position.x + 0.5));
        const int y = static_cast<int>(floor(position.y + 0.5));
        const bool touches = (x >= 0) & (y >= 0) & (x < src.width) & (y < src.height);
        return {detail::shareOf(touches, x < src.width - detail::spareTaps<C>), x, y, 0, 0};
    }

    VEXA_DEVICE void careful(const Spot<float>& spot, T* to) const
    {
        const T* const from = src.at(spot.x, spot.y);
        for (int c = 0; c < C; ++c) to[c] = from[c];
    }
};

/// Interpolation between N by N pixels. Taps outside repeat the edge. Columns of taps are summed first.
template <typename T, int C, int N>
struct SampleBetween {
    Sampled<T, C> src;
    Range range;

    VEXA_DEVICE Position bounded(Position position) const { return detail::bounded(src, position); }

    VEXA_DEVICE Spot<float> place(Position position) const
    {
        constexpr int before = N / 2 - 1;
        constexpr int behind = N / 2 + detail::spareTaps<C>;
        const bool touches = detail::contains(src, position);
        const double left = floor(position.x);
        const double upper = floor(position.y);
        const int x = static_cast<int>(left);
        const int y = static_cast<int>(upper);
        const bool isInterior = (x >= before) & (y >= before) & (x < src.width - behind) & (y < src.height - N / 2);
        return {detail::shareOf(touches, isInterior), x, y, static_cast<float>(position.x - left),
                static_cast<float>(position.y - upper)};
    }

    VEXA_DEVICE void careful(const Spot<float>& spot, T* to) const
    {
        constexpr int before = N / 2 - 1;
        const Weights<N> across = weightsAt<N>(spot.tx);
        const Weights<N> down = weightsAt<N>(spot.ty);
        for (int c = 0; c < C; ++c) {
            float value = 0;
            for (int j = 0; j < N; ++j) {
                const int x = clampedTo(spot.x + j - before, src.width);
                float column = 0;
                for (int i = 0; i < N; ++i) {
                    const int y = clampedTo(spot.y + i - before, src.height);
                    column = column + down.weight[i] * static_cast<float>(src.at(x, y)[c]);
                }
                value = value + across.weight[j] * column;
            }
            to[c] = rounded<T, N>(value, range);
        }
    }
};

/// Positions as texture hardware takes them: pixels are centred at halves, positions between them count in steps of
/// 1/256, and outside everything is 0.
struct TexturePosition {
    float x;
    float y;
};

/// The bilinear mean as texture hardware makes it. Of integers it is exact, and truncated.
template <typename T, int C>
struct SampleTexture {
    /// What the mean is computed in: 16 bits with two weights of 8 fit into 32.
    using Wide = std::conditional_t<std::is_integral_v<T>, unsigned, float>;

    Sampled<T, C> src;

    /// Between pixels that are centred at integers. Far outside is as good as just outside.
    VEXA_DEVICE TexturePosition bounded(TexturePosition position) const
    {
        return {bounded(position.x, src.width), bounded(position.y, src.height)};
    }

    VEXA_DEVICE Spot<int> place(TexturePosition position) const
    {
        const BetweenTexels x = betweenTexels(position.x);
        const BetweenTexels y = betweenTexels(position.y);
        constexpr int behind = 1 + detail::spareTaps<C>;
        const bool touches = (x.before >= -1) & (y.before >= -1) & (x.before < src.width) & (y.before < src.height);
        const bool isInterior =
            (x.before >= 0) & (y.before >= 0) & (x.before < src.width - behind) & (y.before < src.height - 1);
        return {detail::shareOf(touches, isInterior), x.before, y.before, x.steps, y.steps};
    }

    VEXA_DEVICE void careful(const Spot<int>& spot, T* to) const
    {
        for (int c = 0; c < C; ++c)
            to[c] = static_cast<T>(mean(tap(spot.x, spot.y, c), tap(spot.x + 1, spot.y, c), tap(spot.x, spot.y + 1, c),
                                        tap(spot.x + 1, spot.y + 1, c), spot.tx, spot.ty));
    }

    /// Of the four neighbours: their values as 32-bit integers or as floats, or several in lanes.
    template <typename Value>
    static VEXA_DEVICE Value mean(Value upperLeft, Value upperRight, Value lowerLeft, Value lowerRight, int tx, int ty)
    {
        if constexpr (std::is_integral_v<T>) {
            const auto right = static_cast<unsigned>(tx);
            const auto lower = static_cast<unsigned>(ty);
            constexpr unsigned steps = textureSteps;
            const Value upperRow = (steps - right) * upperLeft + right * upperRight;
            const Value lowerRow = (steps - right) * lowerLeft + right * lowerRight;
            return ((steps - lower) * upperRow + lower * lowerRow) / (steps * steps);
        } else {
            constexpr float step = 1.0F / textureSteps;
            const float right = static_cast<float>(tx) * step;
            const float lower = static_cast<float>(ty) * step;
            const Value upperRow = (1.0F - right) * upperLeft + right * upperRight;
            const Value lowerRow = (1.0F - right) * lowerLeft + right * lowerRight;
            return (1.0F - lower) * upperRow + lower * lowerRow;
        }
    }

private:
    static VEXA_DEVICE float bounded(float position, int size)
    {
        // A float holds no int between this and the largest.
        constexpr float largest = 2147483520.0F;
        const float end = static_cast<float>(size) + 1.0F;
        return detail::clamp(position - 0.5F, -2.0F, end < largest ? end : largest);
    }

    VEXA_DEVICE Wide tap(int x, int y, int c) const
    {
        const bool inside = x >= 0 && y >= 0 && x < src.width && y < src.height;
        return inside ? static_cast<Wide>(src.at(x, y)[c]) : Wide(0);
    }
};

}  // namespace vexa

#if defined(__CUDACC__)
#include "sample_device.h"
#else
#include "sample_host.h"
#endif
