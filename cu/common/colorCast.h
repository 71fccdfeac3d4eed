/// @file
/// The mix that takes a colour cast off, for vexa::colorOperations::channelMix.

#pragma once

#include <algorithm>

#include "vexaCore.h"

namespace vexa {

/// Three rows of the weights of slots 0, 1 and 2 and an offset.
using MixRows = float[3][4];

/// Adds to each channel what its mean lacks of the highest one, always as a share of channel 1, also where that is
/// itself the channel or the weakest. That is meant. Shares are differences over 255 whatever the type of the image.
inline void setToBalance(MixRows& mix, const VexaImage& src)
{
    VexaScalar means;
    (void)imageStatistics::mean(src, means, VexaStream(false));
    const float mean[] = {static_cast<float>(means[0]), static_cast<float>(means[1]), static_cast<float>(means[2])};
    const float highest = std::max({mean[0], mean[1], mean[2]});
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 4; ++j) mix[i][j] = i == j ? 1.0F : 0.0F;
        mix[i][1] += (highest - mean[i]) / 255.0F;
    }
}

}  // namespace vexa
