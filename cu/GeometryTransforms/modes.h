/// @file
/// The interpolation of a call, as the seam takes it.

#pragma once

#include "platform.h"

namespace vexa {

inline platform::Interpolation interpolationOf(VexaInterpolationType type)
{
    switch (type) {
        case VEXA_INTER_NEAREST:
            return platform::Interpolation::nearest;
        case VEXA_INTER_LINEAR:
            return platform::Interpolation::linear;
        case VEXA_INTER_CUBIC:
            return platform::Interpolation::cubic;
    }
    return platform::Interpolation::undefined;
}

}  // namespace vexa
