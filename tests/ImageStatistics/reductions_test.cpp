/// @file
/// max, min, minMax, sum, mean and norm against sums over the downloaded elements.

#include <algorithm>
#include <cmath>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace st = vexa::imageStatistics;

/// Sizes that are cut into several parts in either direction too.
std::vector<VexaSize> sizes()
{
    std::vector<VexaSize> sizes = edgeSizes();
    sizes.push_back({1021, 403});
    sizes.push_back({40001, 3});
    return sizes;
}

/// What is known of one channel of an image.
struct Channel {
    double min = std::numeric_limits<double>::infinity();
    double max = -std::numeric_limits<double>::infinity();
    long double sum = 0;
    long double squares = 0;
    long double absolutes = 0;
};

template <typename T>
std::vector<Channel> channelsOf(const VexaImage& image)
{
    const auto channels = static_cast<std::size_t>(image.channels());
    std::vector<Channel> known(channels);
    const std::vector<T> elements = download<T>(image);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        Channel& channel = known[i % channels];
        const auto value = static_cast<double>(elements[i]);
        channel.min = std::min(channel.min, value);
        channel.max = std::max(channel.max, value);
        channel.sum += value;
        channel.squares += static_cast<long double>(value) * value;
        channel.absolutes += std::fabs(value);
    }
    return known;
}

template <typename T>
void expectReductions(VexaSize size, int channels)
{
    SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << ", " << channels << " channels of "
                                    << sizeof(T) << " bytes");
    const VexaImage image = noise<T>(size, channels, 5);
    VexaScalar min(-7), max(-7), minOfBoth(-7), maxOfBoth(-7), sum(-7), mean(-7), norm(-7);
    ASSERT_EQ(st::min(image, min), VEXA_SUCCESS);
    ASSERT_EQ(st::max(image, max), VEXA_SUCCESS);
    ASSERT_EQ(st::minMax(image, minOfBoth, maxOfBoth), VEXA_SUCCESS);
    ASSERT_EQ(st::sum(image, sum), VEXA_SUCCESS);
    ASSERT_EQ(st::mean(image, mean), VEXA_SUCCESS);
    ASSERT_EQ(st::norm(image, norm), VEXA_SUCCESS);
    const std::vector<Channel> known = channelsOf<T>(image);
    const double pixels = static_cast<double>(size.width) * size.height;
    const double rounding = std::is_integral_v<T> ? 0 : 1e-12;
    for (int c = 0; c < channels; ++c) {
        const Channel& channel = known[static_cast<std::size_t>(c)];
        const auto expected = static_cast<double>(channel.sum);
        const double tolerance = rounding * static_cast<double>(channel.absolutes);
        EXPECT_EQ(min[c], channel.min);
        EXPECT_EQ(max[c], channel.max);
        EXPECT_EQ(minOfBoth[c], channel.min);
        EXPECT_EQ(maxOfBoth[c], channel.max);
        EXPECT_NEAR(sum[c], expected, tolerance);
        EXPECT_NEAR(mean[c], expected / pixels, tolerance / pixels + 1e-15 * std::fabs(expected / pixels));
        const auto root = static_cast<double>(std::sqrt(channel.squares));
        EXPECT_NEAR(norm[c], root, 1e-12 * root);
    }
    for (int c = channels; c < 4; ++c)
        for (const VexaScalar* const scalar : {&min, &max, &minOfBoth, &maxOfBoth, &sum, &mean, &norm})
            EXPECT_EQ((*scalar)[c], -7) << "past the channels";
}

TEST(Reductions, AgreeWithSumsOverTheElements)
{
    for (const VexaSize& size : sizes())
        for (const int channels : {1, 3}) {
            expectReductions<u8>(size, channels);
            expectReductions<u16>(size, channels);
            expectReductions<f32>(size, channels);
        }
}

/// Sums that a 32-bit counter, and squares that 53 bits of a double, would not hold on the way.
TEST(Reductions, LargeSums)
{
    const VexaSize size(3000, 2000);
    VexaScalar sum;
    VexaScalar norm;
    ASSERT_EQ(st::sum(constant<u16>(size, 1, 65535), sum), VEXA_SUCCESS);
    EXPECT_EQ(sum[0], 65535.0 * 6e6);
    ASSERT_EQ(st::norm(constant<u16>(size, 1, 65535), norm), VEXA_SUCCESS);
    EXPECT_DOUBLE_EQ(norm[0], 65535.0 * std::sqrt(6e6));
    ASSERT_EQ(st::norm(constant<u8>(size, 1, 255), norm), VEXA_SUCCESS);
    EXPECT_DOUBLE_EQ(norm[0], 255.0 * std::sqrt(6e6));
}

/// Large enough that all threads take part. Neither the threads nor where the rows lie change a bit.
TEST(Reductions, FloatSumsAreTheSameOnEveryRun)
{
    const VexaSize size(1921, 1083);
    const VexaImage image = noise<f32>(size, 3, 1);
    VexaImage elsewhere(size.width, size.height, size.width * 12 + 4, 32, 3);
    upload(elsewhere, download<f32>(image));
    const auto numbers = [](const VexaImage& of) {
        VexaScalar sum, norm, mean, deviation;
        EXPECT_EQ(st::sum(of, sum), VEXA_SUCCESS);
        EXPECT_EQ(st::norm(of, norm), VEXA_SUCCESS);
        EXPECT_EQ(st::meanStdDev(of, mean, deviation), VEXA_SUCCESS);
        std::vector<double> all;
        for (const VexaScalar* const scalar : {&sum, &norm, &mean, &deviation})
            all.insert(all.end(), scalar->vals(), scalar->vals() + 3);
        return all;
    };
    const std::vector<double> first = numbers(image);
    for (int run = 0; run < 10; ++run) ASSERT_EQ(numbers(image), first);
    EXPECT_EQ(numbers(elsewhere), first);
}

TEST(Reductions, SupportExactlyTheirTypes)
{
    using Reduction = VexaStatus (*)(const VexaImage&, VexaScalar&, const VexaStream&);
    for (const Reduction reduction : {st::max, st::min, st::sum, st::mean, st::norm}) {
        VexaScalar result(-7);
        EXPECT_EQ(reduction(VexaImage(), result, VexaStream(false)), VEXA_IMAGE_NOT_INITIALIZED);
        for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
            const auto type = static_cast<VexaType>(row);
            const bool supported = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 ||
                                   type == VEXA_32FC1 || type == VEXA_32FC3;
            const VexaStatus expected = supported ? VEXA_SUCCESS : VEXA_NOT_SUPPORTED_MODE_ERROR;
            VexaScalar first(-7), second(-7);
            const VexaImage image(5, 3, type);
            EXPECT_EQ(reduction(image, first, VexaStream(false)), expected) << row;
            EXPECT_EQ(st::minMax(image, first, second), expected) << row;
            if (!supported) {
                EXPECT_EQ(first[0], -7);
                EXPECT_EQ(second[0], -7);
            }
        }
    }
    VexaScalar min, max;
    EXPECT_EQ(st::minMax(VexaImage(), min, max), VEXA_NOT_SUPPORTED_MODE_ERROR);
}

TEST(Reductions, WorkersOnPointers)
{
    const VexaImage gray = noise<u8>({67, 5}, 1, 3);
    const VexaImage colour = noise<u8>({67, 5}, 3, 3);
    VexaScalar min, max, workerMin, workerMax;
    ASSERT_EQ(st::minMax(gray, min, max), VEXA_SUCCESS);
    ASSERT_EQ(vexa_minMax_8uC1(gray.ptr<u8>(), workerMin.vals(), workerMax.vals(), 67, 5, gray.pitch(), nullptr),
              VEXA_SUCCESS);
    EXPECT_EQ(workerMin[0], min[0]);
    EXPECT_EQ(workerMax[0], max[0]);
    ASSERT_EQ(st::minMax(colour, min, max), VEXA_SUCCESS);
    ASSERT_EQ(vexa_minMax_8uC3(colour.ptr<u8>(), workerMin.vals(), workerMax.vals(), 67, 5, colour.pitch(), nullptr),
              VEXA_SUCCESS);
    EXPECT_EQ(workerMin[2], min[2]);
    EXPECT_EQ(workerMax[2], max[2]);
    // A part of an image.
    ASSERT_EQ(vexa_sum_8u<1>(gray.ptr<u8>() + gray.pitch(), workerMax.vals(), 2, 1, gray.pitch(), nullptr),
              VEXA_SUCCESS);
    EXPECT_EQ(workerMax[0], gray.get(0, 1, 0) + gray.get(1, 1, 0));
    EXPECT_EQ(vexa_sum_8u<1>(nullptr, workerMax.vals(), 2, 1, 2, nullptr), VEXA_INTERNAL_CALL_ERROR);
    EXPECT_EQ(vexa_norm_8u<1>(gray.ptr<u8>(), workerMax.vals(), 0, 1, 2, nullptr), VEXA_INTERNAL_FUNCTION_CALL_ERROR);
}

}  // namespace
