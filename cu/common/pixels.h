/// @file
/// An image as the primitives of the seam take it.

#pragma once

#include "platform.h"
#include "vexaCore.h"

namespace vexa {

template <typename T>
platform::Pixels<T> pixelsOf(const VexaImage& image)
{
    return {image.ptr<T>(), image.width(), image.height(), image.pitch()};
}

}  // namespace vexa
