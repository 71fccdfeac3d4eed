/// @file
/// Figures of the quality of focus stacking.

#pragma once

#include "vexaCore.h"

/// How near a stack comes to the photograph that its frames were made of, away from the seam between them. Ratios are
/// in dB, of the whole picture.
struct StackFigure {
    double equal;      ///< share of pixels that are those of the photograph
    double alike;      ///< share of pixels that differ by 4 levels at most
    double psnrFrame;  ///< of the better one of the frames
    double psnrStack;
};

/// Of two frames of an 8UC3 photograph, each of which is blurred on one side.
StackFigure stackFigure(const VexaImage& photograph);
