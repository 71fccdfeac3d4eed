/// @file
/// The vector types that names of kernels carry: CUDA's, and the same where there is no CUDA.

#pragma once

#include "target.h"

#if defined(__CUDACC__)

#include <vector_types.h>

#else

struct alignas(4) uchar4 {
    vexa::u8 x, y, z, w;
};

struct alignas(8) ushort4 {
    vexa::u16 x, y, z, w;
};

struct alignas(16) float4 {
    vexa::f32 x, y, z, w;
};

#endif
