/// @file
/// The shape of kernels that map the three elements of a pixel linearly: mapLinearly.

#pragma once

#include "arithmetic.h"
#include "kernels.h"

#if !defined(__CUDACC__)
#include "mix.h"
#endif

namespace vexa {

/// For each slot of the result the weights of slots 0, 1 and 2, and an offset.
struct LinearCoefficients {
    float row[3][4];
};

namespace detail {

/// Each row is summed from the second slot on.
template <typename T, bool saturates>
struct LinearMap {
    LinearCoefficients coefficients;
    Range range;

    VEXA_DEVICE Pixel<T, 3> operator()(Pixel<T, 3> pixel) const
    {
        const auto s0 = static_cast<float>(pixel.element[0]);
        const auto s1 = static_cast<float>(pixel.element[1]);
        const auto s2 = static_cast<float>(pixel.element[2]);
        return {{mapped(coefficients.row[0], s0, s1, s2), mapped(coefficients.row[1], s0, s1, s2),
                 mapped(coefficients.row[2], s0, s1, s2)}};
    }

private:
    VEXA_DEVICE T mapped(const float (&row)[4], float s0, float s1, float s2) const
    {
        return store<T, saturates>(multiplyAdd(row[2], s2, multiplyAdd(row[0], s0, row[1] * s1)) + row[3], range);
    }
};

}  // namespace detail

#if defined(__CUDACC__)

/// dst = the map of src, bounded to the range and truncated if it saturates.
template <typename T, bool saturates>
VEXA_DEVICE void mapLinearly(int width, int height, Interleaved<T, 3> dst, Interleaved<T, 3> src,
                             const LinearCoefficients& coefficients, Range range)
{
    mapPixels(width, height, dst, detail::LinearMap<T, saturates>{coefficients, range}, src);
}

#else

namespace detail {

/// By whole registers, row by row, from 0 to the highest value.
template <typename T>
void mixRows(int width, int height, Interleaved<T, 3> dst, Interleaved<T, 3> src,
             const LinearCoefficients& coefficients, T highest)
{
    if (width < 1 || height < 1) return;
    const auto pixels = static_cast<std::size_t>(width);
    const auto body = [=](std::size_t begin, std::size_t end) {
        for (std::size_t row = begin; row < end; ++row) {
            const int y = static_cast<int>(row);
            platform::mixRow(coefficients.row, highest, src.row(y).first, dst.row(y).first, pixels);
        }
    };
    platform::parallelRanges(static_cast<std::size_t>(height), pixels * 6 * sizeof(T), body);
}

}  // namespace detail

/// dst = the map of src, bounded to the range and truncated if it saturates.
template <typename T, bool saturates>
inline void mapLinearly(int width, int height, Interleaved<T, 3> dst, Interleaved<T, 3> src,
                        const LinearCoefficients& coefficients, Range range)
{
    if constexpr (saturates) {
        if (range.lowest == 0.0F && platform::mixesRows(coefficients.row, Element<T>::max))
            return detail::mixRows(width, height, dst, src, coefficients, static_cast<T>(range.highest));
    }
    mapPixels(width, height, dst, detail::LinearMap<T, saturates>{coefficients, range}, src);
}

#endif

}  // namespace vexa
