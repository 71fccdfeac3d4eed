/// @file
/// meanStdDev with and without mask, and countInRange.

#include <cmath>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace st = vexa::imageStatistics;

/// Mean and deviation in two passes over the elements whose byte in the mask is not 0.
template <typename T>
std::pair<double, double> momentsOf(const VexaImage& image, const std::vector<u8>& mask, int channel)
{
    const auto channels = static_cast<std::size_t>(image.channels());
    const std::vector<T> elements = download<T>(image);
    std::vector<long double> selected;
    for (std::size_t i = 0; i < mask.size(); ++i)
        if (mask[i] != 0) selected.push_back(elements[i * channels + static_cast<std::size_t>(channel)]);
    const auto count = static_cast<long double>(selected.size());
    long double sum = 0;
    for (const long double value : selected) sum += value;
    long double about = 0;
    for (const long double value : selected) about += (value - sum / count) * (value - sum / count);
    return {static_cast<double>(sum / count), static_cast<double>(std::sqrt(about / count))};
}

template <typename T>
void expectMoments(const VexaImage& image, const VexaImage& mask)
{
    SCOPED_TRACE(testing::Message() << image.width() << "x" << image.height() << ", " << image.channels()
                                    << " channels of " << sizeof(T) << " bytes");
    const std::vector<u8> selection = download<u8>(mask);
    const std::vector<u8> all(selection.size(), 1);
    VexaScalar mean(-7), deviation(-7), maskedMean(-7), maskedDeviation(-7);
    ASSERT_EQ(st::meanStdDev(image, mean, deviation), VEXA_SUCCESS);
    ASSERT_EQ(st::meanStdDev(image, maskedMean, maskedDeviation, mask), VEXA_SUCCESS);
    for (int c = 0; c < image.channels(); ++c) {
        const auto [m, s] = momentsOf<T>(image, all, c);
        EXPECT_NEAR(mean[c], m, 1e-12 * std::fabs(m) + 1e-12);
        EXPECT_NEAR(deviation[c], s, 1e-9 * std::fabs(s) + 1e-9);
        const auto [mm, ms] = momentsOf<T>(image, selection, c);
        EXPECT_NEAR(maskedMean[c], mm, 1e-12 * std::fabs(mm) + 1e-12);
        EXPECT_NEAR(maskedDeviation[c], ms, 1e-9 * std::fabs(ms) + 1e-9);
    }
    for (int c = image.channels(); c < 4; ++c)
        for (const VexaScalar* const scalar : {&mean, &deviation, &maskedMean, &maskedDeviation})
            EXPECT_EQ((*scalar)[c], -7) << "past the channels";
}

/// Noise with a third of its bytes 0; the first is not, so that the mask is never empty.
VexaImage maskOf(VexaSize size)
{
    std::vector<u8> bytes = download<u8>(noise<u8>(size, 1, 11));
    for (std::size_t i = 0; i < bytes.size(); ++i)
        if (bytes[i] % 3 == 0) bytes[i] = i == 0 ? 1 : 0;
    return imageOf<u8>(size, 1, bytes);
}

TEST(MeanStdDev, AgreesWithTwoPasses)
{
    std::vector<VexaSize> sizes = edgeSizes();
    sizes.push_back({1021, 403});
    sizes.push_back({40001, 3});
    for (const VexaSize& size : sizes)
        for (const int channels : {1, 3}) {
            const VexaImage mask = maskOf(size);
            expectMoments<u8>(noise<u8>(size, channels, 1), mask);
            expectMoments<u16>(noise<u16>(size, channels, 1), mask);
            expectMoments<f32>(noise<f32>(size, channels, 1), mask);
        }
}

TEST(MeanStdDev, SmallDeviationFromALargeMean)
{
    VexaScalar mean, deviation;
    const VexaSize size(640, 480);
    std::vector<u16> words(640 * 480, 65000);
    words[1000] = 65001;
    ASSERT_EQ(st::meanStdDev(imageOf<u16>(size, 1, words), mean, deviation), VEXA_SUCCESS);
    const double part = 1.0 / (640 * 480);
    EXPECT_NEAR(mean[0], 65000 + part, 1e-9);
    EXPECT_NEAR(deviation[0], std::sqrt(part * (1 - part)), 1e-6);

    ASSERT_EQ(st::meanStdDev(constant<u8>(size, 3, 77), mean, deviation), VEXA_SUCCESS);
    ASSERT_EQ(mean[2], 77);
    EXPECT_EQ(deviation[2], 0);
    ASSERT_EQ(st::meanStdDev(constant<f32>(size, 3, 1234.567F), mean, deviation), VEXA_SUCCESS);
    EXPECT_NEAR(mean[1], static_cast<double>(1234.567F), 1e-9);
    EXPECT_NEAR(deviation[1], 0, 1e-4);
}

/// What the mask leaves out does not count, be it huge or no number, in the first pixel or later.
TEST(MeanStdDev, IgnoresWhatTheMaskLeavesOut)
{
    std::vector<f32> elements(300, 1.5F);
    std::vector<u8> mask(300, 255);
    for (const std::size_t i : {0, 7, 299}) mask[i] = 0;
    elements[0] = 1e30F;
    elements[7] = std::numeric_limits<f32>::quiet_NaN();
    elements[299] = std::numeric_limits<f32>::infinity();
    elements[8] = 3.5F;
    VexaScalar mean, deviation;
    ASSERT_EQ(st::meanStdDev(imageOf<f32>({30, 10}, 1, elements), mean, deviation, imageOf<u8>({30, 10}, 1, mask)),
              VEXA_SUCCESS);
    const double part = 1.0 / 297;
    EXPECT_NEAR(mean[0], 1.5 + 2 * part, 1e-12);
    EXPECT_NEAR(deviation[0], 2 * std::sqrt(part * (1 - part)), 1e-9);
    EXPECT_EQ(st::meanStdDev(constant<u8>({30, 10}, 1, 9), mean, deviation, constant<u8>({30, 10}, 1, 0)),
              VEXA_SUCCESS);
}

/// A mask is read by its own pitch, at the size of the image, and not beyond its end.
TEST(MeanStdDev, MasksOfOtherSizes)
{
    const VexaImage image = noise<u8>({100, 20}, 3, 1);
    VexaScalar mean, deviation, expectedMean, expectedDeviation;
    ASSERT_EQ(st::meanStdDev(image, expectedMean, expectedDeviation), VEXA_SUCCESS);
    for (const VexaSize& size : {VexaSize(100, 20), VexaSize(640, 31), VexaSize(900, 20)}) {
        ASSERT_EQ(st::meanStdDev(image, mean, deviation, constant<u8>(size, 1, 1)), VEXA_SUCCESS);
        EXPECT_DOUBLE_EQ(mean[1], expectedMean[1]);
        EXPECT_DOUBLE_EQ(deviation[1], expectedDeviation[1]);
    }
    EXPECT_EQ(st::meanStdDev(image, mean, deviation, constant<u8>({100, 19}, 1, 1)), VEXA_INTERNAL_FUNCTION_CALL_ERROR);
    EXPECT_EQ(st::meanStdDev(image, mean, deviation, VexaImage(99, 20, 99, 8, 1)), VEXA_INTERNAL_FUNCTION_CALL_ERROR);
}

TEST(MeanStdDev, SupportsExactlyItsTypes)
{
    VexaScalar mean(-7), deviation(-7);
    const VexaImage mask = constant<u8>({5, 3}, 1, 1);
    EXPECT_EQ(st::meanStdDev(VexaImage(), mean, deviation), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(st::meanStdDev(VexaImage(), mean, deviation, mask), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(st::meanStdDev(mask, mean, deviation, VexaImage()), VEXA_IMAGE_NOT_INITIALIZED);
    for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
        const auto type = static_cast<VexaType>(row);
        const bool supported = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 ||
                               type == VEXA_32FC1 || type == VEXA_32FC3;
        const VexaStatus expected = supported ? VEXA_SUCCESS : VEXA_NOT_SUPPORTED_MODE_ERROR;
        const VexaImage image(5, 3, type);
        EXPECT_EQ(st::meanStdDev(image, mean, deviation), expected) << row;
        EXPECT_EQ(st::meanStdDev(image, mean, deviation, mask), expected) << row;
    }
}

template <typename T>
void expectCounts(VexaSize size, int channels, const VexaScalar& lowest, const VexaScalar& highest)
{
    const VexaImage image = noise<T>(size, channels, 3);
    VexaScalar count(-7);
    ASSERT_EQ(st::countInRange(image, count, lowest, highest), VEXA_SUCCESS);
    const std::vector<T> elements = download<T>(image);
    std::vector<int> expected(static_cast<std::size_t>(channels), 0);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const auto channel = static_cast<int>(i) % channels;
        const auto value = static_cast<double>(elements[i]);
        expected[static_cast<std::size_t>(channel)] += value >= lowest[channel] && value <= highest[channel];
    }
    for (int c = 0; c < 4; ++c) EXPECT_EQ(count[c], c < channels ? expected[static_cast<std::size_t>(c)] : -7);
}

TEST(CountInRange, CountsEachChannelWithinItsBounds)
{
    for (const VexaSize& size : {VexaSize(1, 1), VexaSize(67, 5), VexaSize(1021, 403)})
        for (const int channels : {1, 3}) {
            expectCounts<u8>(size, channels, {10, 0, 255}, {20, 128, 255});
            expectCounts<f32>(size, channels, {-10.5, 0.0, 64.25}, {20.25, 128.0, 64.5});
        }
}

TEST(CountInRange, NarrowsTheBoundsOfBytes)
{
    const VexaImage image = rowOf<u8>({0, 9, 10, 11, 20, 21, 44, 45, 255});
    struct Row {
        double lowest, highest;
        int count;
    };
    for (const Row& row : {Row{10.7, 20.2, 3}, Row{0, 300, 7}, Row{-5, 9, 2}, Row{45, 45, 1}, Row{256, 9.9, 2}}) {
        VexaScalar count;
        EXPECT_EQ(st::countInRange(image, count, VexaScalar(row.lowest), VexaScalar(row.highest)), VEXA_SUCCESS);
        EXPECT_EQ(count[0], row.count) << row.lowest << " to " << row.highest;
    }
}

TEST(CountInRange, Statuses)
{
    VexaScalar count(-7);
    const VexaScalar one(1), two(2);
    EXPECT_EQ(st::countInRange(VexaImage(), count, one, two), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_EQ(st::countInRange(constant<u8>({5, 3}, 1, 1), count, two, one), VEXA_INTERNAL_FUNCTION_CALL_ERROR);
    for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
        const auto type = static_cast<VexaType>(row);
        const bool supported = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_32FC1 || type == VEXA_32FC3;
        EXPECT_EQ(st::countInRange(VexaImage(5, 3, type), count, one, two),
                  supported ? VEXA_SUCCESS : VEXA_DEPTH_NOT_SUPPORTED_ERROR)
            << row;
    }
}

}  // namespace
