/// @file
/// Copying an image to a place of another, as far as both reach.

#pragma once

#include <algorithm>

#include "platform.h"
#include "vexaCore.h"

namespace vexa {

/// The pixels of an image of any format, `bytesPerPixel` each.
struct Surface {
    void* pixels;
    int width;
    int height;
    int pitch;  ///< bytes
    int bytesPerPixel;
};

inline Surface surfaceOf(const VexaImage& image)
{
    return {image.ptr(), image.width(), image.height(), image.pitch(), image.channels() * (image.depth() / 8)};
}

namespace detail {

/// The part of a run that a run of another surface covers: where it begins in each, and its length.
struct Covered {
    long long from;
    long long to;
    long long count;
};

/// Of `size` pixels whose first stands at `offset` of `otherSize`.
inline Covered covered(int size, long long offset, int otherSize)
{
    const long long begin = std::max(0LL, -offset);
    const long long end = std::min<long long>(size, otherSize - offset);
    return {begin, begin + offset, std::max(0LL, end - begin)};
}

}  // namespace detail

/// Copies `src` to `dst` with its first pixel at (x, y), which may lie outside; so may a part of the pixels, which is
/// left out. The formats must have pixels of one size. VEXA_MEMCPY_D2D_ERROR
[[nodiscard]] inline VexaStatus place(const Surface& src, const Surface& dst, long long x, long long y,
                                      platform::Stream stream)
{
    if (src.pixels == nullptr || dst.pixels == nullptr) return VEXA_MEMCPY_D2D_ERROR;
    const detail::Covered columns = detail::covered(src.width, x, dst.width);
    const detail::Covered rows = detail::covered(src.height, y, dst.height);
    if (columns.count == 0 || rows.count == 0) return VEXA_SUCCESS;
    const auto at = [](const Surface& surface, long long column, long long row) {
        return static_cast<char*>(surface.pixels) + row * surface.pitch + column * surface.bytesPerPixel;
    };
    const platform::Target to{at(dst, columns.to, rows.to), static_cast<std::size_t>(dst.pitch)};
    const platform::Source from{at(src, columns.from, rows.from), static_cast<std::size_t>(src.pitch)};
    return platform::copyOnDevice(
        to, from, {static_cast<std::size_t>(columns.count * src.bytesPerPixel), static_cast<std::size_t>(rows.count)},
        stream);
}

}  // namespace vexa
