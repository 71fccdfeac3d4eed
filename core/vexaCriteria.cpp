/// @file
/// What feature detection and tracking are asked for.

#include "clear.h"
#include "vexaComputerVision.h"

using vexa::clear;

VexaFeaturesCriteria::VexaFeaturesCriteria(VexaFeaturesAlgorithm algorithm, Vexa32f featureQuality,
                                           Vexa32s minimumDistance, Vexa32s blockSize, Vexa32f k)
    : algorithm(algorithm), featureQuality(featureQuality), minimumDistance(minimumDistance), blockSize(blockSize), k(k)
{}

VexaFeaturesCriteria::~VexaFeaturesCriteria()
{
    clear(featureQuality);
    clear(minimumDistance);
    clear(blockSize);
    clear(k);
}

VexaTrackingCriteria::VexaTrackingCriteria(Vexa32s pyramidLevels, const VexaSize& windowSize, Vexa32s iterations,
                                           Vexa32f maxResidue, Vexa32f errorThreshold, Vexa32f subSampling)
    : pyramidLevels(pyramidLevels),
      windowSize(windowSize),
      iterations(iterations),
      maxResidue(maxResidue),
      errorThreshold(errorThreshold),
      subSampling(subSampling)
{}

/// The size clears itself.
VexaTrackingCriteria::~VexaTrackingCriteria()
{
    clear(pyramidLevels);
    clear(iterations);
    clear(maxResidue);
    clear(errorThreshold);
    clear(subSampling);
}
