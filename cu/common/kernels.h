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
#include <utility>

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

/// The N elements of a pixel.
template <typename T, int N>
struct Pixel {
    T element[N];
};

namespace detail {

// Pixels are taken apart by their positions I, not in loops, and go by value: GCC turns loops over columns into vector
// code only where nothing else is left in them.

/// A row of pixels whose elements lie side by side.
template <typename T, int N>
struct InterleavedRow {
    T* first;

    VEXA_DEVICE InterleavedRow from(int x) const { return {first + N * x}; }
    VEXA_DEVICE Pixel<T, N> load(int x) const { return load(first + N * x, std::make_index_sequence<N>()); }
    VEXA_DEVICE void store(int x, Pixel<T, N> pixel) const
    {
        store(first + N * x, pixel, std::make_index_sequence<N>());
    }

private:
    template <std::size_t... I>
    static VEXA_DEVICE Pixel<T, N> load(const T* from, std::index_sequence<I...>)
    {
        return {{from[I]...}};
    }
    template <std::size_t... I>
    static VEXA_DEVICE void store(T* to, Pixel<T, N> pixel, std::index_sequence<I...>)
    {
        ((to[I] = pixel.element[I]), ...);
    }
};

/// A row of pixels whose elements lie in planes of their own.
template <typename T, int N>
struct PlanarRow {
    T* first[N];

    VEXA_DEVICE PlanarRow from(int x) const { return from(x, std::make_index_sequence<N>()); }
    VEXA_DEVICE Pixel<T, N> load(int x) const { return load(x, std::make_index_sequence<N>()); }
    VEXA_DEVICE void store(int x, Pixel<T, N> pixel) const { store(x, pixel, std::make_index_sequence<N>()); }

private:
    template <std::size_t... I>
    VEXA_DEVICE PlanarRow from(int x, std::index_sequence<I...>) const
    {
        return {{(first[I] + x)...}};
    }
    template <std::size_t... I>
    VEXA_DEVICE Pixel<T, N> load(int x, std::index_sequence<I...>) const
    {
        return {{first[I][x]...}};
    }
    template <std::size_t... I>
    VEXA_DEVICE void store(int x, Pixel<T, N> pixel, std::index_sequence<I...>) const
    {
        ((first[I][x] = pixel.element[I]), ...);
    }
};

}  // namespace detail

/// Pixels whose N elements lie side by side, and the pitch of their rows in elements.
template <typename T, int N>
struct Interleaved {
    T* pixels;
    int pitch;

    VEXA_DEVICE detail::InterleavedRow<T, N> row(int y) const
    {
        return {pixels + static_cast<std::ptrdiff_t>(y) * pitch};
    }
};

/// Pixels whose N elements lie in planes of their own, of one pitch.
template <typename T, int N>
struct Planar {
    T* planes[N];
    int pitch;

    VEXA_DEVICE detail::PlanarRow<T, N> row(int y) const { return row(y, std::make_index_sequence<N>()); }

private:
    template <std::size_t... I>
    VEXA_DEVICE detail::PlanarRow<T, N> row(int y, std::index_sequence<I...>) const
    {
        return {{(planes[I] + static_cast<std::ptrdiff_t>(y) * pitch)...}};
    }
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

/// Pixels that one thread of mapPixels handles at a time.
inline constexpr int pixelsPerThread = 4;

/// The extent of a mapPixels kernel.
inline Extent pixelExtent(int width, int height)
{
    return {static_cast<int>((static_cast<long long>(width) + pixelsPerThread - 1) / pixelsPerThread), height};
}

/// The extent of a forEachItem kernel.
inline Extent itemExtent(long long count)
{
    return {static_cast<int>((count + blockSide - 1) / blockSide), blockSide};
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
