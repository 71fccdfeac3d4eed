/// @file
/// Figures of the quality of dense flow.

#pragma once

#include <string>
#include <vector>

#include "../wheel.h"

/// How a method estimates the flow of a pair of 8UC1 images. It may leave pixels NaN.
struct FlowMethod {
    std::string name;
    void (*estimate)(const VexaImage& previous, const VexaImage& next, FlowField& flow);
};

/// Of OpenCV, where its module is there; else none.
std::vector<FlowMethod> flowMethodsOfOpenCv();

/// Distances between the estimated and the true end of the flow, in pixels, away from the border of the image.
struct FlowFigure {
    std::string method;
    double mean;
    double median;
    double above1;     ///< share of pixels that are off by more than a pixel
    double undefined;  ///< share of pixels without a flow, which the others leave out
    FlowField flow;
};

/// Of a photograph that turns, grows and shifts a little.
std::vector<FlowFigure> flowFigures(const VexaImage& photograph);
