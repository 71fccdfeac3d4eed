/// @file
/// The shape of kernels that make pixels of three elements from a mosaic, by the parity of their column and row:
/// forEachMosaicPixel.

#pragma once

#include "windows.h"

namespace vexa {

/// A class of positions: whether column and row are odd.
template <bool oddColumn, bool oddRow>
struct Parity {};

}  // namespace vexa

#if defined(__CUDACC__)
#include "mosaics_device.h"
#else
#include "mosaics_host.h"
#endif
