/// @file
/// The mix that takes a colour cast off, for vexa::colorOperations::channelMix.

#pragma once

#include "linearMap.h"
#include "vexaCore.h"

namespace vexa {

/// Which mean is the highest, of several equal ones first 1, then 2; -1 where that can't be told.
inline int strongestOf(const float (&mean)[3])
{
    if (mean[0] <= mean[1] && mean[1] >= mean[2]) return 1;
    if (mean[1] <= mean[2] && mean[0] <= mean[2]) return 2;
    return mean[0] >= mean[1] && mean[0] >= mean[2] ? 0 : -1;
}

/// The mix that adds to each of the weaker channels what its mean lacks of the strongest one, always as a share of
/// channel 1, also where that is the weakest or the channel itself. That is meant. Shares are differences over 255
/// whatever the type of the image.
inline LinearCoefficients balanceOf(const VexaImage& src)
{
    VexaScalar means;
    (void)imageStatistics::mean(src, means, VexaStream(false));
    const float mean[] = {static_cast<float>(means[0]), static_cast<float>(means[1]), static_cast<float>(means[2])};
    const int strongest = strongestOf(mean);
    LinearCoefficients mix = {{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}}};
    for (int i = 0; i < 3; ++i)
        if (strongest >= 0 && i != strongest) mix.row[i][1] += (mean[strongest] - mean[i]) / 255.0F;
    return mix;
}

}  // namespace vexa
