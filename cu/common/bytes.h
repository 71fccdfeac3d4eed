/// @file
/// The shape of kernels that are functions of a byte: mapBytes. On the host a kernel makes tables of them first, so
/// that a pixel costs the same whatever the function is; threads of the device compute it.

#pragma once

#include "kernels.h"

#if !defined(__CUDACC__)
#include "lookup.h"
#endif

namespace vexa {

#if defined(__CUDACC__)

namespace detail {

/// A function for each slot of a pixel.
template <typename Function>
struct ForEachSlot {
    Function first;
    Function second;
    Function third;

    VEXA_DEVICE Pixel<u8, 3> operator()(Pixel<u8, 3> pixel) const
    {
        return {{first(pixel.element[0]), second(pixel.element[1]), third(pixel.element[2])}};
    }
};

}  // namespace detail

/// dst = function(src) for every element of C-channel pixels.
template <int C, typename Function>
VEXA_DEVICE void mapBytes(int width, int height, Plane<u8> dst, Plane<u8> src, const Function& function)
{
    mapElements<C>(width, height, dst, function, src);
}

/// The same with a function for each channel.
template <int C, typename Function>
VEXA_DEVICE void mapBytes(int width, int height, Plane<u8> dst, Plane<u8> src, const Function& first,
                          const Function& second, const Function& third)
{
    static_assert(C == 3);
    mapPixels(width, height, Interleaved<u8, 3>{dst.pixels, dst.pitch},
              detail::ForEachSlot<Function>{first, second, third}, Interleaved<u8, 3>{src.pixels, src.pitch});
}

#else

namespace detail {

template <typename Function>
inline void tabulate(unsigned char (&values)[256], const Function& function)
{
#pragma omp simd
    for (int byte = 0; byte < 256; ++byte) values[byte] = function(static_cast<u8>(byte));
}

}  // namespace detail

/// dst = function(src) for every element of C-channel pixels, by one function or one for each channel.
template <int C, typename... Function>
inline void mapBytes(int width, int height, Plane<u8> dst, Plane<u8> src, const Function&... functions)
{
    constexpr int tableCount = sizeof...(Function);
    static_assert(tableCount == 1 || tableCount == C);
    if (width < 1 || height < 1) return;
    platform::ByteTables<tableCount> tables;
    int i = 0;
    (detail::tabulate(tables.value[i++], functions), ...);
    const std::size_t rowBytes = static_cast<std::size_t>(width) * C;
    const auto body = [=, &tables](std::size_t begin, std::size_t end) {
        for (std::size_t row = begin; row < end; ++row) {
            const int y = static_cast<int>(row);
            platform::lookUp(tables, src.row(y), dst.row(y), rowBytes);
        }
    };
    platform::parallelRanges(static_cast<std::size_t>(height), 2 * rowBytes, body);
}

#endif

}  // namespace vexa
