/// @file
/// generateRandomImage: the distribution of its values, and that they are the same on each call.

#include <cmath>

#include "images.h"

namespace {

using namespace kit;
namespace de = vexa::dataExchange;

std::vector<f32> randomElements(const VexaSize& size, int channels)
{
    VexaImage image(size, formatOf<f32>(channels));
    fillBuffer(image, 0xFF);
    EXPECT_EQ(de::generateRandomImage(image), VEXA_SUCCESS);
    expectGaps(image, 0xFF);
    return download<f32>(image);
}

/// Within six standard deviations of mean, variance, correlation of neighbours, and the chi-square of a histogram.
TEST(Random, IsUniform)
{
    for (const int channels : {1, 2, 3, 4}) {
        const std::vector<f32> x = randomElements({509, 263}, channels);
        const auto count = static_cast<double>(x.size());
        constexpr int bins = 64;
        double histogram[bins] = {};
        double sum = 0;
        double squares = 0;
        for (const f32 value : x) {
            ASSERT_GT(value, 0.0F);
            ASSERT_LE(value, 1.0F);
            const double centred = static_cast<double>(value) - 0.5;
            sum += centred;
            squares += centred * centred;
            ++histogram[static_cast<int>(std::ceil(value * bins)) - 1];
        }
        EXPECT_NEAR(sum / count, 0, 6 * std::sqrt(1 / 12.0 / count));
        EXPECT_NEAR(squares / count, 1 / 12.0, 6 * std::sqrt(1 / 180.0 / count));
        double chiSquare = 0;
        for (const double bin : histogram) chiSquare += (bin - count / bins) * (bin - count / bins) / (count / bins);
        EXPECT_LT(chiSquare, bins + 6 * std::sqrt(2.0 * bins));

        for (const std::size_t lag : {1, 2, 3, 4, 509 * channels}) {
            double products = 0;
            for (std::size_t i = lag; i < x.size(); ++i)
                products += (static_cast<double>(x[i]) - 0.5) * (static_cast<double>(x[i - lag]) - 0.5);
            EXPECT_NEAR(products / count, 0, 6 / 12.0 / std::sqrt(count))
                << "elements correlate at a distance of " << lag;
        }
    }
}

TEST(Random, IsTheSameOnEachCall)
{
    for (const VexaSize& size : edgeSizes())
        for (const int channels : {1, 3, 4}) EXPECT_EQ(randomElements(size, channels), randomElements(size, channels));
}

TEST(Random, Supports32BitElements)
{
    VexaImage empty;
    EXPECT_EQ(de::generateRandomImage(empty), VEXA_IMAGE_NOT_INITIALIZED);
    for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
        VexaImage image(5, 3, static_cast<VexaType>(row));
        const bool has32Bits = row >= VEXA_32FC1 && row <= VEXA_32SC4;
        EXPECT_EQ(de::generateRandomImage(image), has32Bits ? VEXA_SUCCESS : VEXA_DEPTH_NOT_SUPPORTED_ERROR) << row;
    }
}

/// On a part of an image of integers, which take the bits of the floats.
TEST(Random, Worker)
{
    VexaImage image(6, 4, VEXA_32SC3);
    fillBuffer(image, 0);
    EXPECT_EQ(vexa_rand_32f(static_cast<float*>(image.ptr()), 5, 3, static_cast<Vexa32u>(image.pitch()), 3, nullptr),
              VEXA_SUCCESS);
    const std::vector<f32> expected = randomElements({5, 3}, 3);
    expectElements<f32>(image, [&](auto i) { return i % 18 < 15 && i / 18 < 3 ? expected[i / 18 * 15 + i % 18] : 0; });
}

}  // namespace
