/// @file
/// Flow as a picture: the direction is the hue, the length the saturation; what stands still is white, and where there
/// is no flow it is black.

#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "vexaCore.h"

/// The flow of an image in pixels, row by row.
struct FlowField {
    int width;
    int height;
    std::vector<float> x;
    std::vector<float> y;

    FlowField(int width, int height)
        : width(width),
          height(height),
          x(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)),
          y(x.size())
    {}
};

struct Color {
    unsigned char blue;
    unsigned char green;
    unsigned char red;
};

/// From 0 to 1 around the wheel: red, yellow, green, cyan, blue, magenta.
inline Color wheelColor(float hue, float saturation)
{
    const auto channel = [=](float center) {
        const float distance = std::fabs(std::remainder(hue - center, 1.0F));
        const float full = std::min(std::max(2.0F - 6.0F * distance, 0.0F), 1.0F);
        return static_cast<unsigned char>(255.0F * (1.0F - saturation * (1.0F - full)) + 0.5F);
    };
    return {channel(2.0F / 3.0F), channel(1.0F / 3.0F), channel(0.0F)};
}

/// `longest` is the length in full colour.
inline Color flowColor(float x, float y, float longest)
{
    if (!std::isfinite(x) || !std::isfinite(y)) return {0, 0, 0};
    constexpr float turn = 6.2831853F;
    return wheelColor(std::atan2(y, x) / turn, std::min(std::sqrt(x * x + y * y) / longest, 1.0F));
}

/// The length that 19 of 20 pixels stay below, and at least 1.
inline float usualLength(const FlowField& flow)
{
    std::vector<float> lengths;
    for (std::size_t i = 0; i < flow.x.size(); ++i) {
        const float length = std::sqrt(flow.x[i] * flow.x[i] + flow.y[i] * flow.y[i]);
        if (std::isfinite(length)) lengths.push_back(length);
    }
    if (lengths.empty()) return 1.0F;
    const auto usual = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() * 19 / 20);
    std::nth_element(lengths.begin(), usual, lengths.end());
    return std::max(*usual, 1.0F);
}

/// Blue, green, red. In the lower right corner stands the wheel: a pixel there has the colour of the flow that leads to
/// it from the middle.
inline std::vector<Color> flowPicture(const FlowField& flow, float longest)
{
    std::vector<Color> picture(flow.x.size());
    for (std::size_t i = 0; i < picture.size(); ++i) picture[i] = flowColor(flow.x[i], flow.y[i], longest);
    const int radius = std::min({24, flow.width / 8, flow.height / 8});
    const int gap = 4;
    for (int y = -radius; y <= radius; ++y)
        for (int x = -radius; x <= radius; ++x) {
            const auto length = static_cast<float>(radius);
            if (x * x + y * y > radius * radius) continue;
            const int column = flow.width - 1 - radius - gap + x;
            const int row = flow.height - 1 - radius - gap + y;
            if (column < 0 || row < 0) continue;
            picture[static_cast<std::size_t>(row) * static_cast<std::size_t>(flow.width) +
                    static_cast<std::size_t>(column)] = flowColor(static_cast<float>(x), static_cast<float>(y), length);
        }
    return picture;
}

/// The library's flow as pixels move: it holds half a pixel more, and 0 where there is none.
inline void toPixels(FlowField& flow)
{
    for (std::vector<float>* component : {&flow.x, &flow.y})
        for (float& value : *component) value = value == 0.0F ? std::numeric_limits<float>::quiet_NaN() : value - 0.5F;
}

/// The flow from one 8UC1 image to the next.
inline VexaStatus denseFlow(const VexaImage& previous, const VexaImage& next, const VexaTrackingCriteria& criteria,
                            FlowField& flow)
{
    const VexaStatus status =
        vexa::computerVision::opticalFlowPyrLKDense(previous, next, flow.x.data(), flow.y.data(), criteria);
    toPixels(flow);
    return status;
}
