/// @file
/// Focus stacking: the choice of frames by the definition, halves of a picture in and out of focus, the console, and
/// the checks.

#include <algorithm>
#include <cmath>

#include "images.h"

namespace {

using namespace kit;
namespace cv = vexa::computerVision;

constexpr VexaStatus success = VEXA_SUCCESS;

struct Stacked {
    VexaStatus status = VEXA_SUCCESS;
    VexaImage sharp;
    std::string output;
};

Stacked stack(std::vector<VexaImage>& frames, const VexaFilter& denoise = VexaFilter())
{
    Stacked result;
    testing::internal::CaptureStdout();
    result.status = cv::focusStack(frames.data(), static_cast<int>(frames.size()), result.sharp, denoise);
    result.output = testing::internal::GetCapturedStdout();
    return result;
}

VexaImage blurred(const VexaImage& image)
{
    VexaImage result;
    EXPECT_EQ(vexa::imageFiltering::imageFilter(image, result, VexaSpecialFilters::gaussian(VexaSize(9, 9), 2.5F)),
              success);
    return result;
}

/// The pixels of `left` up to a column, those of `right` from there on.
template <typename T>
VexaImage joined(const VexaImage& left, const VexaImage& right, int column)
{
    std::vector<T> elements = download<T>(left);
    const std::vector<T> other = download<T>(right);
    for (std::size_t i = 0; i < elements.size(); ++i)
        if (static_cast<int>(i) / 3 % left.width() >= column) elements[i] = other[i];
    return imageOf<T>(left.size(), 3, elements);
}

/// A kernel with its middle at this row and column.
template <typename Formula>
VexaFilter filterOf(int side, int row, int column, const Formula& formula)
{
    std::vector<float> coefficients;
    for (int a = 0; a < side; ++a)
        for (int b = 0; b < side; ++b) coefficients.push_back(static_cast<float>(formula(a - row, b - column)));
    return VexaFilter(side, side, coefficients.data());
}

/// How sharp a frame is at each pixel.
template <typename T>
std::vector<float> sharpness(const VexaImage& frame)
{
    const VexaFilter laplace = filterOf(11, 6, 5, [](int r, int c) {
        const double s = r * r + c * c;
        return -1 / M_PI * (1 - s / 2) * std::exp(-s / 2);
    });
    const VexaFilter gauss =
        filterOf(19, 10, 9, [](int r, int c) { return std::exp(-(r * r * 0.5 / 5.5 / 5.5 + c * c / 2 / 5.5 / 5.5)); });
    const std::vector<T> elements = download<T>(frame);
    std::vector<float> sums;
    for (std::size_t i = 0; i < elements.size(); i += 3)
        sums.push_back(static_cast<float>(elements[i]) + static_cast<float>(elements[i + 1]) +
                       static_cast<float>(elements[i + 2]));
    VexaImage response, smooth;
    EXPECT_EQ(vexa::imageFiltering::imageFilter(imageOf<float>(frame.size(), 1, sums), response, laplace), success);
    EXPECT_EQ(vexa::imageFiltering::imageFilter(response, smooth, gauss), success);
    std::vector<float> measure = download<float>(smooth);
    for (float& value : measure) value = std::abs(value);
    return measure;
}

/// Each pixel is that of the sharpest frame; where the best two are nearly equal either will do.
template <typename T>
void expectSharpestFrames()
{
    const VexaSize size(70, 45);
    std::vector<VexaImage> frames;
    for (std::uint32_t seed = 1; seed <= 4; ++seed) frames.push_back(noise<T>(size, 3, seed));
    Stacked stacked = stack(frames);
    ASSERT_EQ(stacked.status, success);
    ASSERT_EQ(stacked.sharp.type(), frames[0].type());
    const std::vector<T> sharp = download<T>(stacked.sharp);
    std::vector<std::vector<float>> measures;
    std::vector<std::vector<T>> elements;
    for (const VexaImage& frame : frames) {
        measures.push_back(sharpness<T>(frame));
        elements.push_back(download<T>(frame));
    }
    for (std::size_t pixel = 0; pixel < measures[0].size(); ++pixel) {
        float best = 0;
        for (const std::vector<float>& measure : measures) best = std::max(best, measure[pixel]);
        const auto comesFrom = [&](std::size_t frame) {
            return measures[frame][pixel] >= best * 0.9999F &&
                   std::equal(&sharp[3 * pixel], &sharp[3 * pixel] + 3, &elements[frame][3 * pixel]);
        };
        ASSERT_TRUE(comesFrom(0) || comesFrom(1) || comesFrom(2) || comesFrom(3)) << "pixel " << pixel;
    }
}

TEST(FocusStack, TakesPixelsFromTheSharpestFrame)
{
    expectSharpestFrames<u8>();
    expectSharpestFrames<u16>();
}

template <typename T>
void expectHalves()
{
    const VexaSize size(160, 90);
    const VexaImage sharp = noise<T>(size, 3, 7), soft = blurred(sharp);
    std::vector<VexaImage> frames = {joined<T>(sharp, soft, 80), joined<T>(soft, sharp, 80)};
    Stacked stacked = stack(frames, VexaSpecialFilters::average(VexaSize(17, 17)));
    ASSERT_EQ(stacked.status, success);
    const std::vector<T> result = download<T>(stacked.sharp), expected = download<T>(sharp);
    int pixels = 0, right = 0;
    for (std::size_t i = 0; i < result.size(); i += 3) {
        if (std::abs(static_cast<int>(i) / 3 % size.width - 80) < 25) continue;
        ++pixels;
        right += std::equal(&result[i], &result[i] + 3, &expected[i]);
    }
    EXPECT_GE(right, 0.99 * pixels);
}

TEST(FocusStack, JoinsWhatIsSharp)
{
    expectHalves<u8>();
    expectHalves<u16>();
}

TEST(FocusStack, OneFrameIsCopied)
{
    std::vector<VexaImage> frames = {noise<u8>({33, 21}, 3, 8)};
    const Stacked stacked = stack(frames);
    EXPECT_EQ(stacked.status, success);
    EXPECT_EQ(download<u8>(stacked.sharp), download<u8>(frames[0]));
}

/// A filter of the map moves indices: past the last they are the last, below the first the first. One of a single
/// coefficient is not applied.
TEST(FocusStack, IndicesStayAmongTheFrames)
{
    const VexaImage flat = constant<u8>({40, 40}, 3, 0), detail = noise<u8>({40, 40}, 3, 9);
    std::vector<VexaImage> frames = {flat, detail, flat};
    const auto denoisedBy = [&](float coefficient, int side) {
        VexaFilter filter(side, side);
        for (int i = 0; i < side * side; ++i) filter[i] = coefficient;
        return download<u8>(stack(frames, filter).sharp);
    };
    EXPECT_EQ(denoisedBy(10.0F, 1), download<u8>(detail));
    EXPECT_EQ(denoisedBy(0.11F, 3), download<u8>(detail));
    EXPECT_EQ(denoisedBy(1.0F, 3), download<u8>(flat));
    EXPECT_EQ(denoisedBy(-1.0F, 3), download<u8>(flat));
    frames[2] = noise<u8>({40, 40}, 3, 9);
    EXPECT_EQ(denoisedBy(1.0F, 3), download<u8>(frames[2]));
}

TEST(FocusStack, ReportsItsProgress)
{
    std::vector<VexaImage> frames;
    for (std::uint32_t seed = 0; seed < 11; ++seed) frames.push_back(noise<u8>({12, 10}, 3, seed));
    const std::string steps =
        "\nCreating stack map from image: 1\b1\b2\b3\b4\b5\b6\b7\b8\b9\b10\b\b11"
        "\nDenoising stack map..\nCreating final output from stack map..";
    const auto startsWith = [](const std::string& text, const std::string& start) {
        return text.compare(0, start.size(), start) == 0;
    };
    EXPECT_PRED2(startsWith, stack(frames).output, steps + "\nGenerating 8-bit Output\nError: ");
    std::vector<VexaImage> deep = {noise<u16>({12, 10}, 3, 1)};
    EXPECT_PRED2(startsWith, stack(deep).output,
                 "\nCreating stack map from image: 1\b1\nDenoising stack map..\nCreating final output from stack map.."
                 "\nGenerating 16-bit Output\nError: ");
}

TEST(FocusStack, RefusesWhatItDoesNotServe)
{
    std::vector<VexaImage> none;
    EXPECT_EQ(stack(none).status, VEXA_INVALID_ARG_ERROR);
    VexaImage sharp;
    VexaImage frame = noise<u8>({8, 8}, 3, 1);
    EXPECT_EQ(cv::focusStack(&frame, -1, sharp, VexaFilter()), VEXA_INVALID_ARG_ERROR);
    for (const VexaType type : {VEXA_8UC1, VEXA_32FC3, VEXA_16UC1}) {
        std::vector<VexaImage> other = {VexaImage(16, 16, type)};
        Stacked stacked = stack(other);
        EXPECT_EQ(stacked.status, VEXA_TYPE_NOT_SUPPORTED_ERROR);
        EXPECT_FALSE(stacked.sharp.isInitialized());
    }
}

/// Frames of other sizes and types, a destination of another size: nothing is read or written outside.
TEST(FocusStack, UnequalFramesDoNoHarm)
{
    std::vector<VexaImage> frames = {noise<u8>({40, 30}, 3, 1),  noise<u8>({8, 5}, 3, 2),   VexaImage(),
                                     noise<u16>({40, 30}, 3, 3), noise<u8>({90, 70}, 3, 4), noise<u8>({40, 30}, 1, 5)};
    (void)stack(frames);
    VexaImage small(10, 10, VEXA_8UC3), large(100, 100, VEXA_8UC3), other(40, 30, VEXA_8UC1);
    testing::internal::CaptureStdout();
    for (VexaImage* const dst : {&small, &large, &other})
        (void)cv::focusStack(frames.data(), static_cast<int>(frames.size()), *dst, VexaFilter());
    testing::internal::GetCapturedStdout();
}

/// By pointers: the order of frames, and the clip by contrast that callers may apply between.
TEST(FocusStack, StepsOnDeviceMemory)
{
    const VexaImage measure = imageOf<float>({4, 1}, 1, {1, 2, 3, 4});
    VexaImage best = imageOf<float>({4, 1}, 1, {2, 2, 2, 2}), map = imageOf<float>({4, 1}, 1, {9, 9, 9, 9});
    EXPECT_EQ(vexa_order_stack_32fc1(measure.ptr<float>(), best.ptr<float>(), map.ptr<float>(), 5, 4, 1, map.pitch(),
                                     best.pitch(), nullptr),
              success);
    EXPECT_EQ(download<float>(best), std::vector<float>({2, 2, 3, 4}));
    EXPECT_EQ(download<float>(map), std::vector<float>({9, 9, 5, 5}));
    VexaImage clipped = constant<float>({4, 1}, 1, 0.0F);
    EXPECT_EQ(
        vexa_clip_stack(best.ptr<float>(), map.ptr<float>(), clipped.ptr<float>(), 7, 3, 4, 1, best.pitch(), nullptr),
        success);
    EXPECT_EQ(download<float>(clipped), std::vector<float>({7, 7, 5, 5}));
}

}  // namespace
