/// @file
/// Dehazing pixel by pixel in double, and the two operations that are made of others: low light, automatic colour.

#include <algorithm>
#include <array>
#include <numeric>

#include "images.h"
#include "truncated.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaStatus badType = VEXA_TYPE_NOT_SUPPORTED_ERROR;
constexpr VexaStatus badChannels = VEXA_CHANNEL_NOT_SUPPORTED_ERROR;

template <typename T>
constexpr double top = sizeof(T) == 1 ? 255.0 : 65535.0;

using Light = std::array<int, 3>;

template <typename T>
class Hazy {
public:
    Hazy(const VexaImage& image, const Light& light)
        : _width(image.width()), _height(image.height()), _light(light), _elements(download<T>(image))
    {}

    bool isOnRing(std::size_t index) const
    {
        const int x = static_cast<int>(index / 3) % _width;
        const int y = static_cast<int>(index / 3) / _width;
        return x < 1 || y < 1 || x >= _width - 1 || y >= _height - 1;
    }

    /// Whether `stored` is the element with its haze removed. Where the pixel is as dark as the mean of its neighbours,
    /// rounding decides between that and their minimum.
    bool isClear(T stored, std::size_t index) const
    {
        const std::size_t pixel = index / 3;
        double least = top<T>;
        double mean = 0;
        for (const int row : {-_width, 0, _width})
            for (const int column : {-1, 0, 1}) {
                const double dark = darkAt(pixel + static_cast<std::size_t>(row + column));
                least = std::min(least, dark);
                mean += dark / 9;
            }
        const double lead = darkAt(pixel) - mean;
        return (lead > -1e-5 && isClearBy(mean, stored, index)) || (lead < 1e-5 && isClearBy(least, stored, index));
    }

private:
    double darkAt(std::size_t pixel) const
    {
        double dark = INFINITY;
        for (std::size_t c = 0; c < 3; ++c) dark = std::min(dark, _elements[3 * pixel + c] / double(_light[c]));
        return dark;
    }
    bool isClearBy(double dark, T stored, std::size_t index) const
    {
        const double transmission = std::min(1 - 0.8 * dark, 1.0);
        const double light = _light[index % 3];
        const double exact = (_elements[index] - light) / transmission + light;
        return isTruncated(stored, exact, top<T>, 1e-5 * std::abs(exact - light) / transmission + 1e-3);
    }

    int _width;
    int _height;
    Light _light;
    std::vector<T> _elements;
};

template <typename T>
void expectDehazed(VexaSize size, const Light& light)
{
    SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << " of " << 8 * sizeof(T) << " bits, light "
                                    << light[0]);
    const VexaImage src = noise<T>(size, 3, 101);
    VexaImage dst(size, src.type());
    fillBuffer(dst, 0x25);
    const T mark = download<T>(dst)[0];
    ASSERT_EQ(co::dehaze(src, dst, light[0], light[1], light[2]), success);
    const Hazy<T> hazy(src, light);
    const std::vector<T> elements = download<T>(dst);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (hazy.isOnRing(i))
            ASSERT_EQ(elements[i], mark) << "the ring at " << i;
        else
            ASSERT_TRUE(hazy.isClear(elements[i], i)) << i << " is " << elements[i];
    }
    expectGaps(dst, 0x25);
}

TEST(Dehaze, PixelByPixel)
{
    std::vector<VexaSize> sizes = edgeSizes();
    sizes.push_back({2, 9});
    sizes.push_back({530, 70});
    for (const VexaSize& size : sizes) {
        expectDehazed<u8>(size, {255, 255, 255});
        expectDehazed<u8>(size, {250, 271, 300});
        expectDehazed<u16>(size, {65535, 64000, 70001});
    }
}

TEST(Dehaze, FlatImagesByHand)
{
    const struct {
        u8 value;
        int light;
        u8 expected;
    } flats[] = {{100, 200, 33}, {200, 200, 200}, {0, 200, 0}, {255, 200, 0}, {80, 64, 255}, {10, 0, 0}};
    for (const auto& flat : flats) {
        VexaImage dst;
        ASSERT_EQ(co::dehaze(constant<u8>({3, 3}, 3, flat.value), dst, flat.light, flat.light, flat.light), success);
        std::vector<u8> expected(27, 0);
        std::fill_n(expected.begin() + 12, 3, flat.expected);
        EXPECT_EQ(download<u8>(dst), expected) << int{flat.value} << " in light of " << flat.light;
    }
}

// ---- low light ----

/// Outside the ring dark images are brightened; on it they come out inverted.
template <typename T>
void expectBrightened(VexaSize size)
{
    const VexaImage src = noise<T>(size, 3, 102);
    VexaImage inverse;
    ASSERT_EQ(vexa::arithmeticLogical::subtract(top<T>, src, inverse), success);
    VexaImage clear(src);
    const int light = static_cast<int>(top<T>);
    ASSERT_EQ(co::dehaze(inverse, clear, light, light, light), success);
    VexaImage dst, inPlace(src);
    ASSERT_EQ(co::lowlight(src, dst), success);
    ASSERT_EQ(co::lowlight(inPlace, inPlace), success);
    const std::vector<T> cleared = download<T>(clear);
    expectElements<T>(dst, [&](std::size_t i) { return top<T> - cleared[i]; });
    EXPECT_EQ(download<T>(inPlace), download<T>(dst));
}

TEST(LowLight, IsDehazingOfTheInverse)
{
    for (const VexaSize& size : edgeSizes()) {
        expectBrightened<u8>(size);
        expectBrightened<u16>(size);
    }
    VexaImage black;
    ASSERT_EQ(co::lowlight(constant<u8>({3, 3}, 3, 0), black), success);
    std::vector<u8> expected(27, 255);
    std::fill_n(expected.begin() + 12, 3, static_cast<u8>(0));
    EXPECT_EQ(download<u8>(black), expected);
}

// ---- automatic colour ----

/// Channel 1 is what is added, whichever channel is the strongest.
template <typename T>
void expectBalanced(const std::array<T, 3>& color, const std::array<double, 3>& added)
{
    const VexaSize size(17, 5);
    std::vector<T> elements;
    for (int i = 0; i < size.width * size.height; ++i) elements.insert(elements.end(), color.begin(), color.end());
    VexaImage dst;
    ASSERT_EQ(co::autoColor(imageOf<T>(size, 3, elements), dst), success);
    const std::vector<T> balanced = download<T>(dst);
    for (std::size_t i = 0; i < balanced.size(); ++i) {
        const double exact = color[i % 3] + added[i % 3] / 255 * color[1];
        if (sizeof(T) == 4)
            ASSERT_NEAR(double(balanced[i]), exact, 1e-3);
        else
            ASSERT_TRUE(isTruncated(double(balanced[i]), exact, top<T>, 0.01)) << i << " is " << balanced[i];
    }
}

TEST(AutoColor, AddsTheMiddleChannel)
{
    expectBalanced<u8>({50, 50, 50}, {0, 0, 0});
    expectBalanced<u8>({40, 90, 61}, {50, 0, 29});
    expectBalanced<u8>({40, 90, 200}, {160, 110, 0});
    expectBalanced<u8>({200, 90, 40}, {0, 110, 160});
    expectBalanced<u8>({200, 90, 200}, {0, 110, 0});
    expectBalanced<u16>({400, 1900, 1000}, {1500, 0, 900});
    expectBalanced<u16>({40000, 30000, 20000}, {0, 10000, 20000});
    expectBalanced<f32>({10.5F, 20.25F, 70}, {59.5, 49.75, 0});
}

// ---- statuses ----

using Operation = VexaStatus (*)(const VexaImage& src, VexaImage& dst);

void expectChecks(Operation operation, VexaStatus notServed, VexaStatus forFloat)
{
    VexaImage dst;
    EXPECT_EQ(operation(VexaImage(), dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(operation(VexaImage(8, 6, VEXA_8UC1), dst), badChannels);
    EXPECT_FALSE(dst.isInitialized());
    for (VexaImage other : {VexaImage(9, 6, VEXA_8UC3), VexaImage(8, 7, VEXA_8UC3), VexaImage(8, 6, VEXA_16UC3),
                            VexaImage(8, 6, VEXA_8UC1)})
        EXPECT_EQ(operation(VexaImage(8, 6, VEXA_8UC3), other), mode);
    const struct {
        VexaType type;
        VexaStatus status;
    } sources[] = {{VEXA_8UC3, success}, {VEXA_16UC3, success}, {VEXA_32FC3, forFloat}, {VEXA_8SC3, notServed}};
    for (const auto& source : sources) {
        VexaImage created;
        EXPECT_EQ(operation(VexaImage(8, 6, source.type), created), source.status) << source.type;
        EXPECT_EQ(created.type(), source.type);
    }
}

TEST(DehazeLowLightAutoColor, Checks)
{
    expectChecks([](const VexaImage& src, VexaImage& dst) { return co::dehaze(src, dst, 255, 255, 255); }, badType,
                 badType);
    expectChecks([](const VexaImage& src, VexaImage& dst) { return co::lowlight(src, dst); }, badType, badType);
    expectChecks([](const VexaImage& src, VexaImage& dst) { return co::autoColor(src, dst); },
                 VEXA_DEPTH_NOT_SUPPORTED_ERROR, success);
}

}  // namespace
