/// @file
/// All 16.7 million 8-bit colours in one image, against double precision.

#include <algorithm>
#include <cmath>
#include <thread>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

constexpr int side = 4096;

/// Colours by their number: red in the low byte, then green, then blue.
const VexaImage& allColors()
{
    static const VexaImage image = [] {
        std::vector<u8> elements(3 * std::size_t{side} * side);
        for (std::size_t i = 0; i < elements.size(); ++i) elements[i] = static_cast<u8>(i / 3 >> (8 * (i % 3)));
        VexaImage colors = imageOf<u8>({side, side}, 3, elements);
        colors.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
        return colors;
    }();
    return image;
}

/// The largest difference to reference(red, green, blue, expected), over all colours and the three elements.
template <typename Reference, typename Difference>
int largestDifference(const VexaImage& result, const Reference& reference, const Difference& difference)
{
    const std::vector<u8> elements = download<u8>(result);
    const std::size_t count = std::max(1U, std::thread::hardware_concurrency());
    std::vector<int> largest(count, 0);
    std::vector<std::thread> threads;
    const std::size_t colors = elements.size() / 3;
    for (std::size_t t = 0; t < count; ++t)
        threads.emplace_back([&, t] {
            int mine = 0;
            for (std::size_t i = colors * t / count; i < colors * (t + 1) / count; ++i) {
                double expected[3];
                reference(i & 255, i >> 8 & 255, i >> 16, expected);
                for (std::size_t c = 0; c < 3; ++c) {
                    const int truncated = static_cast<int>(std::clamp(expected[c], 0.0, 255.0));
                    mine = std::max(mine, difference(c, std::abs(elements[3 * i + c] - truncated)));
                }
            }
            largest[t] = mine;
        });
    for (std::thread& thread : threads) thread.join();
    return *std::max_element(largest.begin(), largest.end());
}

TEST(AllColors, Hsv)
{
    VexaImage hsv;
    ASSERT_EQ(co::rgb2hsv(allColors(), hsv), VEXA_SUCCESS);
    const auto reference = [](std::size_t r, std::size_t g, std::size_t b, double* out) {
        const auto red = static_cast<double>(r);
        const auto green = static_cast<double>(g);
        const auto blue = static_cast<double>(b);
        const double max = std::max({red, green, blue});
        const double delta = max - std::min({red, green, blue});
        const double sixths = max == red     ? (green - blue) / delta
                              : max == green ? 2 + (blue - red) / delta
                                             : 4 + (red - green) / delta;
        out[0] = delta == 0 ? 0 : (sixths < 0 ? sixths + 6 : sixths) * 255 / 6;
        out[1] = delta == 0 ? 0 : delta * 255 / max;
        out[2] = max;
    };
    // Hue is a circle, on which 255 is next to 0.
    const auto difference = [](std::size_t c, int d) { return c == 0 ? std::min(d, 256 - d) : d; };
    EXPECT_LE(largestDifference(hsv, reference, difference), 1);
}

TEST(AllColors, LabAndBack)
{
    VexaImage lab;
    ASSERT_EQ(co::rgb2Lab(allColors(), lab), VEXA_SUCCESS);
    double linear[256];
    for (int i = 0; i < 256; ++i) {
        const double value = i / 255.0;
        linear[i] = value > 0.04045 ? std::pow((value + 0.055) / 1.055, 2.4) : value / 12.92;
    }
    const auto reference = [&](std::size_t r, std::size_t g, std::size_t b, double* out) {
        const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116; };
        const double x = f((0.412453 * linear[r] + 0.35758 * linear[g] + 0.180423 * linear[b]) / 0.95047);
        const double y = f(0.212671 * linear[r] + 0.71516 * linear[g] + 0.072169 * linear[b]);
        const double z = f((0.019334 * linear[r] + 0.119193 * linear[g] + 0.950227 * linear[b]) / 1.08883);
        out[0] = (116 * y - 16) * 2.55;
        out[1] = 500 * (x - y) + 128;
        out[2] = 200 * (y - z) + 128;
    };
    const auto difference = [](std::size_t /*c*/, int d) { return d; };
    EXPECT_LE(largestDifference(lab, reference, difference), 1);

    VexaImage back({side, side}, VEXA_8UC3);
    back.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    ASSERT_EQ(co::Lab2rgb(lab, back), VEXA_SUCCESS);
    const auto identity = [](std::size_t r, std::size_t g, std::size_t b, double* out) {
        out[0] = static_cast<double>(r);
        out[1] = static_cast<double>(g);
        out[2] = static_cast<double>(b);
    };
    EXPECT_LE(largestDifference(back, identity, difference), 8);
}

}  // namespace
