/// @file
/// What a launch passes of images, constants and streams.

#pragma once

#include <algorithm>
#include <limits>
#include <type_traits>

#include "layout.h"
#include "platform.h"
#include "streams.h"
#include "vexaCore.h"

namespace vexa {

/// A pitch in bytes as elements of type T.
template <typename T>
constexpr int elements(int pitch)
{
    return pitch / static_cast<int>(sizeof(T));
}

/// The pitch of an image in elements of type T.
template <typename T>
int pitchOf(const VexaImage& image)
{
    return elements<T>(image.pitch());
}

/// Elements of a row, of an image whose elements have at least a byte.
inline int elementsOf(const VexaImage& image)
{
    return image.width() * image.channels();
}

/// Bytes of the buffer of an image.
inline long long bytesOf(const VexaImage& image)
{
    if (!image.isInitialized()) return 0;
    return bufferBytes(image.pitch(), image.height(), static_cast<long long>(elementsOf(image)) * (image.depth() / 8));
}

/// How many of `rows` rows of `rowBytes`, `pitch` bytes apart, lie inside the buffer of an image.
inline int rowsInside(const VexaImage& image, long long rows, long long rowBytes, long long pitch)
{
    const long long bytes = bytesOf(image);
    if (rowBytes > bytes) return 0;
    return static_cast<int>(pitch > 0 ? std::min(rows, (bytes - rowBytes) / pitch + 1) : rows);
}

/// How many rows of `layout`, with its width and pitch, lie inside the buffer of an image of its size. Some kernels
/// address all their images by the pitch of the first; this clips their work on images that were made with a smaller
/// pitch of their own.
inline int rowsInside(const VexaImage& image, const VexaImage& layout)
{
    const long long rowBytes = static_cast<long long>(elementsOf(layout)) * (layout.depth() / 8);
    return rowsInside(image, layout.height(), rowBytes, layout.pitch());
}

/// A constant as an element: saturated to the range of an integer type and truncated, a NaN as 0.
template <typename T>
T saturated(double value)
{
    if constexpr (std::is_integral_v<T>)
        return __vexaSaturate<double, T>(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
    else
        return static_cast<T>(value);
}

/// A constant as an element: truncated to an unsigned 32-bit integer, of which an integer type takes the low bits.
template <typename T>
T lowBits(double value)
{
    if constexpr (std::is_integral_v<T>)
        return static_cast<T>(saturated<unsigned>(value));
    else
        return static_cast<T>(value);
}

}  // namespace vexa
