/// @file
/// A smooth picture that is known between its pixels: a sum of waves of many directions.

#pragma once

#include <cmath>

#include "images.h"

namespace kit {

/// From 0 to 255. The shortest wave is 11 pixels long.
inline double wavesAt(double x, double y)
{
    return 127.5 + 30 * std::sin(0.31 * x + 0.12 * y) + 30 * std::sin(-0.17 * x + 0.36 * y + 1) +
           25 * std::sin(0.43 * x - 0.33 * y + 2) + 25 * std::cos(0.21 * x + 0.47 * y + 3) +
           15 * std::sin(0.05 * x + 0.07 * y);
}

/// The picture whose pixel (x, y) is the wave at position(x, y), a pair.
template <typename Position>
VexaImage waves(VexaSize size, const Position& position)
{
    std::vector<u8> pixels;
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const auto at = position(x, y);
            pixels.push_back(static_cast<u8>(std::lround(wavesAt(at.first, at.second))));
        }
    return imageOf<u8>(size, 1, pixels);
}

inline VexaImage waves(VexaSize size, double dx = 0, double dy = 0)
{
    return waves(size, [=](int x, int y) { return std::pair<double, double>(x - dx, y - dy); });
}

}  // namespace kit
