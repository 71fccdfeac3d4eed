/// @file
/// The test kit: images from values or formulas, their elements back on the host, and comparison with a formula. Rows
/// are uploaded and downloaded by pitch, so the kit works for any platform.

#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <ostream>
#include <vector>

#include "vexaCore.h"

/// Statuses print as their number.
inline std::ostream& operator<<(std::ostream& out, VexaStatus status)
{
    return out << static_cast<int>(status) << " (" << vexaStatusString(status) << ")";
}

namespace kit {

using u8 = unsigned char;
using u16 = unsigned short;
using f32 = float;

/// The pixel format of C elements of type T.
template <typename T>
VexaType formatOf(int channels)
{
    return getType(8 * static_cast<int>(sizeof(T)), channels, false);
}

/// Sizes at the edges: single pixels, one off the blocks of threads, odd ones, a few long rows.
inline const std::vector<VexaSize>& edgeSizes()
{
    static const std::vector<VexaSize> sizes = {{1, 1}, {15, 16}, {17, 33}, {67, 5}, {640, 3}};
    return sizes;
}

/// The elements of an image, row by row without gaps.
template <typename T>
std::vector<T> download(const VexaImage& image)
{
    const int rowElements = image.width() * image.channels();
    std::vector<T> elements(static_cast<std::size_t>(rowElements) * static_cast<std::size_t>(image.height()));
    EXPECT_EQ(image.depth(), 8 * static_cast<int>(sizeof(T)));
    EXPECT_EQ(image.download(elements.data(), rowElements * static_cast<int>(sizeof(T))), VEXA_SUCCESS);
    return elements;
}

template <typename T>
void upload(VexaImage& image, const std::vector<T>& elements)
{
    const int rowBytes = image.width() * image.channels() * static_cast<int>(sizeof(T));
    ASSERT_EQ(image.upload(elements.data(), rowBytes), VEXA_SUCCESS);
}

/// An image of these elements, as many as width times height times channels.
template <typename T>
VexaImage imageOf(VexaSize size, int channels, const std::vector<T>& elements)
{
    VexaImage image(size, formatOf<T>(channels));
    EXPECT_EQ(elements.size(), static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
                                   static_cast<std::size_t>(channels));
    upload(image, elements);
    return image;
}

/// A row of one-channel pixels.
template <typename T>
VexaImage rowOf(const std::vector<T>& elements)
{
    return imageOf<T>({static_cast<int>(elements.size()), 1}, 1, elements);
}

template <typename T>
VexaImage constant(VexaSize size, int channels, T value)
{
    const auto count = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
                       static_cast<std::size_t>(channels);
    return imageOf<T>(size, channels, std::vector<T>(count, value));
}

/// Reproducible noise: elements over the whole range of an integer type, floats from -64 to 192.
template <typename T>
VexaImage noise(VexaSize size, int channels, std::uint32_t seed)
{
    std::vector<T> elements(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) *
                            static_cast<std::size_t>(channels));
    for (T& element : elements) {
        seed = seed * 1664525U + 1013904223U;
        if constexpr (sizeof(T) == 4)
            element = static_cast<T>(seed >> 16) / 256.0F - 64.0F;
        else
            element = static_cast<T>(seed >> (32 - 8 * sizeof(T)));
    }
    return imageOf<T>(size, channels, elements);
}

/// Fills the whole buffer, the gaps behind the rows too, with one byte.
inline void fillBuffer(VexaImage& image, u8 byte)
{
    const std::vector<u8> bytes(static_cast<std::size_t>(image.pitch()) * static_cast<std::size_t>(image.height()),
                                byte);
    ASSERT_EQ(image.upload(bytes.data()), VEXA_SUCCESS);
}

/// The bytes behind the pixels of each row all have this value.
inline void expectGaps(const VexaImage& image, u8 byte)
{
    std::vector<u8> bytes(static_cast<std::size_t>(image.pitch()) * static_cast<std::size_t>(image.height()));
    ASSERT_EQ(image.download(bytes.data()), VEXA_SUCCESS);
    const int rowBytes = image.width() * image.channels() * image.depth() / 8;
    for (int y = 0; y < image.height(); ++y)
        for (int x = rowBytes; x < image.pitch(); ++x)
            ASSERT_EQ(bytes[static_cast<std::size_t>(y) * static_cast<std::size_t>(image.pitch()) +
                            static_cast<std::size_t>(x)],
                      byte)
                << "behind row " << y << " at byte " << x;
}

/// Every element of `result` is expected(i), the formula at its index, to within `tolerance`.
template <typename T>
void expectElements(const VexaImage& result, const std::function<double(std::size_t)>& expected, double tolerance = 0)
{
    const std::vector<T> elements = download<T>(result);
    for (std::size_t i = 0; i < elements.size(); ++i)
        ASSERT_NEAR(static_cast<double>(elements[i]), expected(i), tolerance) << "element " << i;
}

}  // namespace kit
