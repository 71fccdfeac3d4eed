/// @file
/// Test images for benchmarks and the comparison of their results.

#pragma once

#include <memory>
#include <string>

#include "bench.h"

namespace bench {

std::string nameOf(VexaType type);
std::string nameOf(VexaSize size);

/// Bytes of the pixels of an image of this format.
double bytesOf(VexaType type, VexaSize size);

/// Images live as long as the work on them. The same type, size and number are the same image: benchmarks share them.
using Shared = std::shared_ptr<VexaImage>;

Shared blank(VexaType type, VexaSize size, int number);

/// An image of noise over the whole range of its elements, floats from 0 to 255.
Shared noise(VexaType type, VexaSize size, int number);

/// Runs both and ends the program unless the results agree to within `tolerance`, relative above 1, everywhere.
/// Without an opponent nothing is compared.
void compare(const Work& vexa, const Work& peer, const VexaImage& result, const VexaImage& expected, double tolerance,
             const std::string& what);

}  // namespace bench
