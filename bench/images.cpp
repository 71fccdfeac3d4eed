/// @file
/// Test images for benchmarks and the comparison of their results.

#include "images.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <tuple>
#include <vector>

namespace bench {
namespace {

int depthOf(VexaType type, int& channels)
{
    int depth = 0;
    getParameters(type, depth, channels);
    return depth;
}

/// The pixels of an image, row by row without gaps.
std::vector<unsigned char> pixelsOf(const VexaImage& image)
{
    const int rowBytes = image.width() * image.channels() * (image.depth() / 8);
    std::vector<unsigned char> pixels(static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(image.height()));
    if (image.download(pixels.data(), rowBytes) != VEXA_SUCCESS) std::abort();
    return pixels;
}

double elementAt(const std::vector<unsigned char>& pixels, int depth, std::size_t i)
{
    switch (depth) {
        case 8:
            return pixels[i];
        case 16:
            return reinterpret_cast<const std::uint16_t*>(pixels.data())[i];
        default:
            return static_cast<double>(reinterpret_cast<const float*>(pixels.data())[i]);
    }
}

template <typename T>
std::vector<T> randomElements(std::size_t count, unsigned seed)
{
    std::vector<T> elements(count);
    for (T& element : elements) {
        seed = seed * 1664525U + 1013904223U;
        element = static_cast<T>(sizeof(T) == 4 ? seed >> 24 : seed >> (32 - 8 * sizeof(T)));
    }
    return elements;
}

}  // namespace

std::string nameOf(VexaType type)
{
    int channels = 0;
    const int depth = depthOf(type, channels);
    return std::to_string(depth) + (depth < 32 ? "UC" : "FC") + std::to_string(channels);
}

std::string nameOf(VexaSize size)
{
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

double bytesOf(VexaType type, VexaSize size)
{
    int channels = 0;
    const int depth = depthOf(type, channels);
    return static_cast<double>(depth / 8 * channels) * size.width * size.height;
}

Shared blank(VexaType type, VexaSize size, int number)
{
    static std::map<std::tuple<int, int, int, int>, Shared> known;
    Shared& image = known[{type, size.width, size.height, number}];
    if (image == nullptr) image = std::make_shared<VexaImage>(size, type);
    if (!image->isInitialized()) {
        std::fprintf(stderr, "no memory for an image of %s\n", nameOf(size).c_str());
        std::exit(1);
    }
    return image;
}

Shared noise(VexaType type, VexaSize size, int number)
{
    constexpr int apartFromBlank = 1000;
    Shared image = blank(type, size, apartFromBlank + number);
    const int elementsPerRow = size.width * image->channels();
    const auto count = static_cast<std::size_t>(elementsPerRow) * static_cast<std::size_t>(size.height);
    const auto upload = [&](const auto& elements) {
        (void)image->upload(elements.data(), elementsPerRow * static_cast<int>(sizeof elements[0]));
    };
    const auto seed = static_cast<unsigned>(number);
    if (image->depth() == 8)
        upload(randomElements<unsigned char>(count, seed));
    else if (image->depth() == 16)
        upload(randomElements<std::uint16_t>(count, seed));
    else
        upload(randomElements<float>(count, seed));
    return image;
}

void compare(const Work& vexa, const Work& peer, const VexaImage& result, const VexaImage& expected, double tolerance,
             const std::string& what)
{
    if (!peer) return;
    vexa();
    peer();
    const std::vector<unsigned char> a = pixelsOf(result);
    const std::vector<unsigned char> b = pixelsOf(expected);
    const std::size_t elements = a.size() / (static_cast<std::size_t>(result.depth()) / 8);
    for (std::size_t i = 0; i < elements; ++i) {
        const double x = elementAt(a, result.depth(), i);
        const double y = elementAt(b, expected.depth(), i);
        if (std::fabs(x - y) <= tolerance * std::fmax(1.0, std::fabs(y))) continue;
        std::fprintf(stderr, "%s: element %zu is %g, the opponent has %g\n", what.c_str(), i, x, y);
        std::exit(1);
    }
}

}  // namespace bench
