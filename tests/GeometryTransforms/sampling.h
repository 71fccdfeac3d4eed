/// @file
/// Sampling in double: the kernels of interpolation over the elements of a downloaded image.

#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "images.h"

template <typename T>
class Sampled {
public:
    explicit Sampled(const VexaImage& image)
        : width(image.width()), height(image.height()), channels(image.channels()), _elements(kit::download<T>(image))
    {}

    double clamped(int x, int y, int c) const
    {
        return at(std::clamp(x, 0, width - 1), std::clamp(y, 0, height - 1), c);
    }
    double orZero(int x, int y, int c) const { return x >= 0 && y >= 0 && x < width && y < height ? at(x, y, c) : 0.0; }

    /// The value at (u, v), where elements lie at whole coordinates and the edge repeats.
    double interpolated(VexaInterpolationType type, double u, double v, int c) const
    {
        if (type == VEXA_INTER_NEAREST) return clamped(floorOf(u + 0.5), floorOf(v + 0.5), c);
        double sum = 0;
        for (int j = -1; j <= 2; ++j)
            for (int i = -1; i <= 2; ++i)
                sum += weight(type, u - std::floor(u), i) * weight(type, v - std::floor(v), j) *
                       clamped(floorOf(u) + i, floorOf(v) + j, c);
        return sum;
    }

    int width;
    int height;
    int channels;

private:
    static int floorOf(double x) { return static_cast<int>(std::floor(x)); }

    /// Of the element i steps from the one at or before the position, t behind it: linear, or Lagrange's cubic.
    static double weight(VexaInterpolationType type, double t, int i)
    {
        const double linear[] = {0, 1 - t, t, 0};
        const double cubic[] = {-t * (t - 1) * (t - 2) / 6, (t + 1) * (t - 1) * (t - 2) / 2, -(t + 1) * t * (t - 2) / 2,
                                (t + 1) * t * (t - 1) / 6};
        return type == VEXA_INTER_LINEAR ? linear[i + 1] : cubic[i + 1];
    }

    double at(int x, int y, int c) const
    {
        return static_cast<double>(_elements[static_cast<std::size_t>((y * width + x) * channels + c)]);
    }

    std::vector<T> _elements;
};

/// The distance of a stored element from an exact value, beyond rounding and saturation. Elements of noise in floats
/// are below 192.
template <typename T>
double errorOf(T stored, double exact)
{
    if (sizeof(T) == 4) return std::abs(static_cast<double>(stored) - exact);
    const double top = sizeof(T) == 1 ? 255.0 : 65535.0;
    return std::abs(static_cast<double>(stored) - std::clamp(exact, 0.0, top)) - 0.5;
}

/// How far a position in float, computed for images of these sizes, may be from the exact one, as a change of elements.
template <typename T>
constexpr double sampleTolerance = sizeof(T) == 2 ? 8.0 : 0.03;
