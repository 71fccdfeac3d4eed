/// @file
/// What a kernel and a device function are on each platform. Only the headers of this folder ask whether nvcc compiles.

#pragma once

#include "vexaDefs.h"

#if defined(__CUDACC__)

/// A kernel: callers on raw pointers know it by name, so its host stub is exported.
#define VEXA_KERNEL __attribute__((visibility("default"))) __global__ void

/// A kernel that the library alone launches.
#define VEXA_LOCAL_KERNEL __global__ void

/// A function that kernels call for every element.
#define VEXA_DEVICE __device__ __forceinline__

#else

#define VEXA_KERNEL __attribute__((visibility("default"), used)) void
#define VEXA_LOCAL_KERNEL void
#define VEXA_DEVICE inline __attribute__((always_inline))

#endif

namespace vexa {

using u8 = Vexa8u;
using u16 = Vexa16u;
using f32 = Vexa32f;

}  // namespace vexa
