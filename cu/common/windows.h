/// @file
/// The shape of kernels that look at the neighbours of each element: forEachWindow. Positions outside the image read
/// what the fetch gives there. On an interleaved image of C channels a window counts elements, so the neighbour pixel
/// in the same channel is C elements away.

#pragma once

#include "fetch.h"
#include "kernels.h"

namespace vexa {

/// How far a window reaches from its element: elements to the sides, rows up and down.
template <int Left, int Right, int Up, int Down>
struct Reach {
    static constexpr int left = Left;
    static constexpr int right = Right;
    static constexpr int up = Up;
    static constexpr int down = Down;
    static constexpr int rows = Up + 1 + Down;
};

}  // namespace vexa

#if defined(__CUDACC__)
#include "windows_device.h"
#else
#include "windows_host.h"
#endif
