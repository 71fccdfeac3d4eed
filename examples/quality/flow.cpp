/// @file
/// How well the flow of a photograph under a known motion is found.

#include "flow.h"

#include <algorithm>
#include <cmath>

#include "picture.h"

namespace {

constexpr int levels = 3;
constexpr int radius = 7;
constexpr int iterations = 10;
constexpr float threshold = 0.01F;

void bySecondDriver(const VexaImage& previous, const VexaImage& next, FlowField& flow)
{
    require(vexa_opticalFlowPyramidLK2(previous, next, flow.x.data(), flow.y.data(), VexaSize(radius, radius), levels,
                                       0.5F, iterations, threshold, nullptr),
            "vexa_opticalFlowPyramidLK2");
    toPixels(flow);
}

void byFirstDriver(const VexaImage& previous, const VexaImage& next, FlowField& flow)
{
    require(denseFlow(previous, next,
                      VexaTrackingCriteria(levels, VexaSize(radius, radius), iterations, 0.0F, threshold), flow),
            "opticalFlowPyrLKDense");
}

/// x' = a x - b y + tx, y' = b x + a y + ty.
struct Motion {
    double a;
    double b;
    double tx;
    double ty;

    double x(double fromX, double fromY) const { return a * fromX - b * fromY + tx; }
    double y(double fromX, double fromY) const { return b * fromX + a * fromY + ty; }
};

/// About the middle: 1 degree, 1 percent, and 2.6 pixels to the right and 1.3 up.
Motion motionOf(const VexaImage& image)
{
    const double angle = std::acos(-1.0) / 180;
    const double a = 1.01 * std::cos(angle);
    const double b = 1.01 * std::sin(angle);
    const double x = image.width() / 2.0;
    const double y = image.height() / 2.0;
    return {a, b, x + 2.6 - a * x + b * y, y - 1.3 - b * x - a * y};
}

FlowFigure figureOf(const FlowMethod& method, const VexaImage& previous, const VexaImage& next, const Motion& motion)
{
    FlowField flow(previous.width(), previous.height());
    method.estimate(previous, next, flow);
    constexpr int border = 24;
    std::vector<double> errors;
    double sum = 0;
    double above1 = 0;
    double undefined = 0;
    for (int y = border; y < flow.height - border; ++y)
        for (int x = border; x < flow.width - border; ++x) {
            const std::size_t i =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(flow.width) + static_cast<std::size_t>(x);
            const double error = std::hypot(x + static_cast<double>(flow.x[i]) - motion.x(x, y),
                                            y + static_cast<double>(flow.y[i]) - motion.y(x, y));
            if (!std::isfinite(error)) {
                ++undefined;
                continue;
            }
            errors.push_back(error);
            sum += error;
            if (error > 1) ++above1;
        }
    const auto count = static_cast<double>(errors.size());
    const auto middle = errors.begin() + static_cast<std::ptrdiff_t>(errors.size() / 2);
    std::nth_element(errors.begin(), middle, errors.end());
    return {method.name, sum / count, *middle, above1 / count, undefined / (count + undefined), flow};
}

}  // namespace

std::vector<FlowFigure> flowFigures(const VexaImage& photograph)
{
    const Motion motion = motionOf(photograph);
    VexaImage moved(photograph);
    Vexa64f matrix[2][3] = {{motion.a, -motion.b, motion.tx}, {motion.b, motion.a, motion.ty}};
    require(vexa::geometryTransforms::warpAffine(photograph, moved, matrix, VEXA_INTER_CUBIC), "warpAffine");
    std::vector<FlowMethod> methods{{"`opticalFlowPyrLKDense`", byFirstDriver},
                                    {"`vexa_opticalFlowPyramidLK2`", bySecondDriver}};
    for (const FlowMethod& method : flowMethodsOfOpenCv()) methods.push_back(method);
    std::vector<FlowFigure> figures;
    for (const FlowMethod& method : methods) figures.push_back(figureOf(method, photograph, moved, motion));
    return figures;
}
