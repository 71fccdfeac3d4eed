/// @file
/// Hue and Lab of all 16.7 million 8-bit colours in one image, and the same in floats, against double precision.

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <thread>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

/// Of pixels: colours are red, green, blue from 0 to 1, Lab as it is, hue from 0 to 1.
using Formula = void (*)(const double* in, double* out);

void hsvOf(const double* in, double* out)
{
    const double max = std::max({in[0], in[1], in[2]});
    const double delta = max - std::min({in[0], in[1], in[2]});
    const double sixths = max == in[0]   ? (in[1] - in[2]) / delta
                          : max == in[1] ? 2 + (in[2] - in[0]) / delta
                                         : 4 + (in[0] - in[1]) / delta;
    out[0] = delta == 0 ? 0 : (sixths < 0 ? sixths + 6 : sixths) / 6;
    out[1] = delta == 0 ? 0 : delta / max;
    out[2] = max;
}

void labOf(const double* in, double* out)
{
    double linear[3];
    for (int c = 0; c < 3; ++c) linear[c] = in[c] > 0.04045 ? std::pow((in[c] + 0.055) / 1.055, 2.4) : in[c] / 12.92;
    const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116; };
    const double x = f((0.412453 * linear[0] + 0.35758 * linear[1] + 0.180423 * linear[2]) / 0.95047);
    const double y = f(0.212671 * linear[0] + 0.71516 * linear[1] + 0.072169 * linear[2]);
    const double z = f((0.019334 * linear[0] + 0.119193 * linear[1] + 0.950227 * linear[2]) / 1.08883);
    out[0] = 116 * y - 16;
    out[1] = 500 * (x - y);
    out[2] = 200 * (y - z);
}

void colorOf(const double* in, double* out)
{
    const auto inverse = [](double f) { return f * f * f > 0.008856 ? f * f * f : (f - 16.0 / 116) / 7.787; };
    const double fy = (in[0] + 16) / 116;
    const double x = 0.95047 * inverse(fy + in[1] / 500);
    const double y = inverse(fy);
    const double z = 1.08883 * inverse(fy - in[2] / 200);
    const double linear[] = {3.2406 * x - 1.5372 * y - 0.4986 * z, -0.9689 * x + 1.8758 * y + 0.0415 * z,
                             0.0557 * x - 0.204 * y + 1.057 * z};
    for (int c = 0; c < 3; ++c)
        out[c] = linear[c] > 0.0031308 ? 1.055 * std::pow(linear[c], 1 / 2.4) - 0.055 : 12.92 * linear[c];
}

/// The bytes that stand for a pixel: byte = value * scale + offset.
struct Coding {
    double scale[3];
    double offset[3];
};
const Coding unitCoding = {{255, 255, 255}, {0, 0, 0}};
const Coding labCoding = {{2.55, 1, 1}, {0, 128, 128}};

/// Colours by their number: red in the low byte, then green, then blue.
VexaImage allColors()
{
    std::vector<u8> elements(3 << 24);
    for (std::size_t i = 0; i < elements.size(); ++i) elements[i] = static_cast<u8>(i / 3 >> (8 * (i % 3)));
    VexaImage colors = imageOf<u8>({4096, 4096}, 3, elements);
    colors.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    return colors;
}

/// The largest difference in each element between the bytes of `result` and those of the formula.
std::array<int, 3> largestDifferences(const VexaImage& src, const Coding& from, const VexaImage& result,
                                      const Coding& to, Formula formula)
{
    const std::vector<u8> in = download<u8>(src);
    const std::vector<u8> out = download<u8>(result);
    std::array<int, 3> largest{};
    std::mutex mutex;
    const auto compare = [&](std::size_t first, std::size_t last) {
        std::array<int, 3> mine{};
        for (std::size_t i = first; i < last; ++i) {
            double pixel[3];
            double exact[3];
            for (std::size_t c = 0; c < 3; ++c) pixel[c] = (in[3 * i + c] - from.offset[c]) / from.scale[c];
            formula(pixel, exact);
            for (std::size_t c = 0; c < 3; ++c) {
                // Above the rounding of the formula: a byte that it gives exactly must not be truncated to the next.
                const double byte = std::clamp(exact[c] * to.scale[c] + to.offset[c] + 1e-9, 0.0, 255.0);
                const int difference = std::abs(out[3 * i + c] - static_cast<int>(byte));
                // On the circle of hue, 255 is next to 0.
                const bool isHue = c == 0 && formula == hsvOf;
                mine[c] = std::max(mine[c], isHue ? std::min(difference, 256 - difference) : difference);
            }
        }
        const std::lock_guard<std::mutex> lock(mutex);
        for (std::size_t c = 0; c < 3; ++c) largest[c] = std::max(largest[c], mine[c]);
    };
    std::vector<std::thread> threads;
    const std::size_t count = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t pixels = in.size() / 3;
    for (std::size_t t = 0; t < count; ++t) threads.emplace_back(compare, pixels * t / count, pixels * (t + 1) / count);
    for (std::thread& thread : threads) thread.join();
    return largest;
}

TEST(AllColors, Hsv)
{
    const VexaImage colors = allColors();
    VexaImage hsv;
    ASSERT_EQ(co::rgb2hsv(colors, hsv), VEXA_SUCCESS);
    const std::array<int, 3> differences = largestDifferences(colors, unitCoding, hsv, unitCoding, hsvOf);
    EXPECT_LE(std::max(differences[0], differences[1]), 1);
    EXPECT_EQ(differences[2], 0);
}

TEST(AllColors, LabAndBack)
{
    const VexaImage colors = allColors();
    VexaImage lab;
    ASSERT_EQ(co::rgb2Lab(colors, lab), VEXA_SUCCESS);
    for (const int difference : largestDifferences(colors, unitCoding, lab, labCoding, labOf)) EXPECT_LE(difference, 1);
    VexaImage back({4096, 4096}, VEXA_8UC3);
    back.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    ASSERT_EQ(co::Lab2rgb(lab, back), VEXA_SUCCESS);
    for (const int difference : largestDifferences(lab, labCoding, back, unitCoding, colorOf)) EXPECT_LE(difference, 1);

    // A saturated colour of 8-bit Lab may be 40 levels off, but not many are.
    const std::vector<u8> before = download<u8>(colors);
    const std::vector<u8> after = download<u8>(back);
    double sum = 0;
    for (std::size_t i = 0; i < before.size(); ++i) sum += std::abs(before[i] - after[i]);
    EXPECT_LE(sum / static_cast<double>(before.size()), 2);
}

VexaImage floats(double low, double high)
{
    std::vector<f32> elements = download<f32>(noise<f32>({255, 63}, 3, 3));
    for (f32& element : elements) element = static_cast<f32>(low + (high - low) / 256 * (double{element} + 64));
    VexaImage image = imageOf<f32>({255, 63}, 3, elements);
    image.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    return image;
}

void expectFloats(const VexaImage& src, const VexaImage& result, Formula formula, double error)
{
    const std::vector<f32> in = download<f32>(src);
    expectElements<f32>(
        result,
        [&](std::size_t i) {
            const f32* const pixel = &in[i / 3 * 3];
            const double exactly[] = {pixel[0], pixel[1], pixel[2]};
            double out[3];
            formula(exactly, out);
            return out[i % 3];
        },
        error);
}

TEST(FloatColors, HsvAndLab)
{
    const VexaImage colors = floats(0, 1);
    VexaImage hsv;
    ASSERT_EQ(co::rgb2hsv(colors, hsv), VEXA_SUCCESS);
    expectFloats(colors, hsv, hsvOf, 2e-6);
    VexaImage lab;
    ASSERT_EQ(co::rgb2Lab(colors, lab), VEXA_SUCCESS);
    expectFloats(colors, lab, labOf, 1e-3);
    VexaImage back(colors);
    ASSERT_EQ(co::Lab2rgb(lab, back), VEXA_SUCCESS);
    const std::vector<f32> elements = download<f32>(colors);
    expectElements<f32>(
        back, [&](std::size_t i) { return elements[i]; }, 2e-3);

    const VexaImage anyLab = floats(-60, 100);
    ASSERT_EQ(co::Lab2rgb(anyLab, back), VEXA_SUCCESS);
    expectFloats(anyLab, back, colorOf, 2e-4);
}

}  // namespace
