/// @file
/// The step of a Gaussian pyramid to half the size.

#pragma once

#include "vexaCore.h"

namespace vexa {

/// What imageFilter and then resize to `dst` give, if `dst` has exactly half the size of `src`: there a resize of any
/// interpolation takes every second pixel, so others need not be filtered. Returns without waiting.
/// @return false for anything else; then nothing is done
bool filterToHalf(const VexaImage& src, VexaImage& dst, const VexaFilter& filter);

}  // namespace vexa
