/// @file
/// vexa::imageFiltering: enhancement of pictures taken under water.

#pragma once

#include "vexaCore.h"

/// What underwaterFilter is asked for. It reads none of it.
struct VEXA_API VexaEnhancementParams {
    bool autoColor;
    Vexa32u filterStrength;
    Vexa64f deGalreAmount;

    VexaEnhancementParams(bool autoColor, Vexa32u filterStrength, Vexa64f deGalreAmount);
    VexaEnhancementParams(const VexaEnhancementParams&) = default;
    VexaEnhancementParams& operator=(const VexaEnhancementParams&) = default;
    ~VexaEnhancementParams();
};

namespace vexa {
namespace imageFiltering {

/// Takes off the colour cast of an 8u image with 3 channels and stretches the contrast of each channel between the
/// hundredth of its pixels that is darkest and the hundredth (of the first two channels, the thirtieth) that is
/// brightest. The result does not depend on `p`. An empty `dst` is created; any other must have the size and type of
/// `src`, and its sequence, RGB or BGR, tells the order of the result. Where a channel has no such range, as on a
/// constant image, `dst` is left as it is, which is no failure. Runs in place and waits for the device.
///
/// @return VEXA_IMAGE_NOT_INITIALIZED for an empty `src`; VEXA_TYPE_NOT_SUPPORTED_ERROR for other types;
///         VEXA_NOT_SUPPORTED_MODE_ERROR for a `dst` that does not match
VEXA_API VexaStatus underwaterFilter(const VexaImage& src, VexaImage& dst, VexaEnhancementParams p,
                                     const VexaStream& stream = VexaStream(false));

}  // namespace imageFiltering
}  // namespace vexa
