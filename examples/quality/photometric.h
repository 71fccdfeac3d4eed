/// @file
/// Figures of the quality of the photometric operations.

#pragma once

#include <string>
#include <vector>

#include "vexaCore.h"

namespace quality {

/// What an operation makes of a photograph that a model has spoilt. Ratios are in decibels, against the original.
struct Figure {
    std::string operation;
    std::string model;
    double psnrBefore;
    double psnrAfter;
    VexaImage before;
    VexaImage after;
};

/// `photograph`: 8 bits, blue, green, red.
std::vector<Figure> photometricFigures(const VexaImage& photograph);

}  // namespace quality
