/// @file
/// Figures of the quality of the photometric operations.

#pragma once

#include <string>
#include <vector>

#include "picture.h"

/// What an operation makes of a photograph that a model has spoilt. Ratios are in dB, against the original.
struct Figure {
    std::string operation;
    std::string model;
    double psnrBefore;
    double psnrAfter;
    Picture before;
    Picture after;
};

/// `photograph`: 8 bits, blue, green, red.
std::vector<Figure> photometricFigures(const VexaImage& photograph);
