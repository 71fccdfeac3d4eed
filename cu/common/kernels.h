/// @file
/// The shapes of kernels. A kernel is a function template whose body is a call of a shape with a lambda or a function
/// object as its rule. Under nvcc that call does this thread's share of the image; on the host it does the whole image,
/// on all cores. A kernel is complete under any grid of threads (forEachBlock wants blocks of 16 by 16); `launch` picks
/// one and stands for every launch.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "target.h"

namespace vexa {

/// Rows of elements: a pointer to the first and the pitch, in elements, from one row to the next.
template <typename T>
struct Plane {
    T* pixels;
    int pitch;

    VEXA_DEVICE T* row(int y) const { return pixels + static_cast<std::ptrdiff_t>(y) * pitch; }
};

/// A source of mapElements that gives each channel one value, the same for all pixels. One value for all channels has
/// N = 1.
template <typename T, int N>
struct PerChannel {
    T values[N];
};

/// A rectangle of an image, its right and bottom ends excluded.
struct Interior {
    int left;
    int right;
    int top;
    int bottom;

    VEXA_DEVICE bool contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
};

/// How many threads a launch wants in each direction; the host needs none.
struct Extent {
    int width;
    int height;
};

/// The side of the standard block of threads.
inline constexpr int blockSide = 16;

/// Elements that one thread of mapElements handles at a time: 16 bytes of the widest type.
template <typename... T>
inline constexpr int elementsPerThread = 16 / static_cast<int>(std::max({sizeof(T)...}));

/// The extent of a mapElements kernel over C-channel pixels of elements T.
template <int C, typename... T>
constexpr Extent elementExtent(int width, int height)
{
    const int perThread = elementsPerThread<T...>;
    return {static_cast<int>((static_cast<long long>(width) * C + perThread - 1) / perThread), height};
}

namespace detail {

template <typename T>
bool isNull(const T& argument)
{
    if constexpr (std::is_pointer_v<T>)
        return argument == nullptr;
    else
        return false;
}

}  // namespace detail

}  // namespace vexa

#if defined(__CUDACC__)
#include "kernels_device.h"
#else
#include "kernels_host.h"
#endif

namespace vexa {

/// Every pixel = values.
template <int C, typename T>
VEXA_DEVICE void fillPixels(int width, int height, Plane<T> dst, const PerChannel<T, C>& values)
{
    mapElements<C>(
        width, height, dst, [](T value) { return value; }, values);
}

}  // namespace vexa
