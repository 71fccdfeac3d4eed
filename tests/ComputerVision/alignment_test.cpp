/// @file
/// Alignment: affine warps of a known picture are found again from a perturbed start, the end of the iteration, the
/// projections by sums in double, and the checks.

#include <algorithm>
#include <limits>

#include "waves.h"

namespace {

using namespace kit;
namespace cv = vexa::computerVision;

constexpr VexaStatus success = VEXA_SUCCESS;

struct Affine {
    double m[2][3];

    std::pair<double, double> operator()(double x, double y) const
    {
        return {m[0][0] * x + m[0][1] * y + m[0][2], m[1][0] * x + m[1][1] * y + m[1][2]};
    }
};

bool operator==(const Affine& a, const Affine& b)
{
    return std::equal(&a.m[0][0], &a.m[0][0] + 6, &b.m[0][0]);
}

/// The largest distance between where two warps put the corners of an image.
double cornerError(const Affine& a, const Affine& b, VexaSize size)
{
    double error = 0;
    for (const double x : {0.0, size.width - 1.0})
        for (const double y : {0.0, size.height - 1.0})
            error = std::max(error, std::hypot(a(x, y).first - b(x, y).first, a(x, y).second - b(x, y).second));
    return error;
}

const VexaSize frame(160, 120);
const Affine identity = {{{1, 0, 0}, {0, 1, 0}}};

VexaImage warped(const Affine& warp, VexaSize size = frame)
{
    return waves(size, [&](int x, int y) { return warp(x, y); });
}

TEST(FindTransformEcc, FindsAffineWarps)
{
    const Affine warps[] = {identity,
                            {{{1, 0, 1.7}, {0, 1, -2.3}}},
                            {{{1.02, 0.01, 0.5}, {-0.015, 0.99, 1.0}}},
                            {{{0.995, -0.03, 2.0}, {0.03, 0.995, -1.5}}}};
    VexaImage input = warped(identity);
    for (const Affine& warp : warps) {
        VexaImage templ = warped(warp);
        Affine found = identity;
        ASSERT_EQ(cv::findTransformECC(templ, input, found.m, 60, 1e-7), success);
        EXPECT_LT(cornerError(found, warp, frame), 0.1) << warp.m[0][2];
    }
}

/// From a start that is off by up to two pixels, for a template that is a part of the image.
TEST(FindTransformEcc, RefinesAStart)
{
    VexaImage input = warped(identity, {200, 150});
    const VexaSize part(90, 70);
    const Affine warp = {{{1.01, 0.02, 40}, {-0.02, 1.01, 35}}};
    VexaImage templ = warped(warp, part);
    Affine found = {{{1.0, 0.01, 41.5}, {-0.01, 1.02, 34}}};
    ASSERT_EQ(cv::findTransformECC(templ, input, found.m, 80, 1e-7), success);
    EXPECT_LT(cornerError(found, warp, part), 0.1);
}

/// No pass is made without iterations, or where the first difference, 1 less the bound, is below the bound.
TEST(FindTransformEcc, StopsAtItsBounds)
{
    VexaImage input = warped(identity), templ = warped({{{1, 0, 1}, {0, 1, 1}}});
    const auto after = [&](int iterations, double epsilon) {
        Affine warp = identity;
        EXPECT_EQ(cv::findTransformECC(templ, input, warp.m, iterations, epsilon), success);
        return warp;
    };
    EXPECT_EQ(after(0, 0), identity);
    EXPECT_EQ(after(-5, 0), identity);
    EXPECT_EQ(after(10, 0.51), identity);
    EXPECT_FALSE(after(10, 0.49) == identity);
    EXPECT_EQ(after(10, std::numeric_limits<double>::quiet_NaN()), identity);
    // Each pass goes on from the last; a bound of 0 makes all of them.
    const Affine one = after(1, 0);
    Affine two = one;
    EXPECT_EQ(cv::findTransformECC(templ, input, two.m, 1, 0), success);
    EXPECT_LT(cornerError(two, after(2, 0), frame), 1e-3);
    EXPECT_GT(cornerError(one, after(2, 0), frame), 1e-3);
}

/// The negative of an image: the line, the status, and the map of the start.
TEST(FindTransformEcc, SaysThatItWouldDiverge)
{
    VexaImage input = warped(identity);
    std::vector<u8> negative = download<u8>(input);
    for (u8& pixel : negative) pixel = static_cast<u8>(255 - pixel);
    VexaImage templ = imageOf<u8>(frame, 1, negative);
    Affine warp = identity;
    testing::internal::CaptureStdout();
    EXPECT_EQ(cv::findTransformECC(templ, input, warp.m, 10, 1e-6), VEXA_UNKNOWN_ERROR);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "The algorithm stopped before its convergence. The correlation is going to be minimized. Images may be "
              "uncorrelated or non-overlapped\n");
    EXPECT_EQ(warp, identity);
}

TEST(FindTransformEcc, RefusesWhatItDoesNotServe)
{
    Affine warp = identity;
    VexaImage none, bytes = warped(identity), colour(16, 16, VEXA_8UC3), deep(16, 16, VEXA_16UC1);
    EXPECT_EQ(cv::findTransformECC(none, bytes, warp.m, 1, 0), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(cv::findTransformECC(bytes, none, warp.m, 1, 0), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(cv::findTransformECC(bytes, deep, warp.m, 1, 0), VEXA_NOT_SUPPORTED_MODE_ERROR);
    for (VexaImage* const other : {&colour, &deep})
        EXPECT_EQ(cv::findTransformECC(*other, *other, warp.m, 1, 0), VEXA_TYPE_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(warp, identity);
}

/// Constant images, images of a pixel, maps that miss the image, that are singular or not numbers.
TEST(FindTransformEcc, AbsurdArgumentsDoNoHarm)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    VexaImage picture = warped(identity), flat = constant<u8>(frame, 1, 9), pixel = constant<u8>({1, 1}, 1, 9);
    testing::internal::CaptureStdout();
    for (VexaImage* const one : {&picture, &flat, &pixel})
        for (VexaImage* const other : {&picture, &flat, &pixel})
            for (const Affine& start : {identity, Affine{{{1, 0, 1e6}, {0, 1, 0}}}, Affine{{{0, 0, 0}, {0, 0, 0}}},
                                        Affine{{{nan, nan, nan}, {nan, nan, nan}}}}) {
                Affine warp = start;
                (void)cv::findTransformECC(*one, *other, warp.m, 3, 1e-6);
            }
    testing::internal::GetCapturedStdout();
}

/// Blocks side by side, each as wide as the second image, or, of equal widths, against each other.
TEST(ProjectOntoJacobian, SumsProductsOfBlocks)
{
    const int width = 23, height = 17;
    const VexaImage jacobian = noise<f32>({6 * width, height}, 1, 1), image = noise<f32>({width, height}, 1, 2);
    const std::vector<f32> blocks = download<f32>(jacobian), pixels = download<f32>(image);
    const auto at = [&](int block, int x, int y) -> double {
        return blocks[static_cast<std::size_t>(y * 6 * width + block * width + x)];
    };
    VexaImage vector(1, 6, VEXA_32FC1), matrix(6, 6, VEXA_32FC1);
    vexa_project_onto_jacobian_ECC(jacobian, image, vector);
    vexa_project_onto_jacobian_ECC(jacobian, jacobian, matrix);
    const auto sum = [&](const auto& product) {
        double result = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) result += product(x, y);
        return result;
    };
    expectElements<f32>(
        vector,
        [&](std::size_t i) {
            return sum([&](int x, int y) {
                return at(static_cast<int>(i), x, y) * pixels[static_cast<std::size_t>(y * width + x)];
            });
        },
        5.0);
    expectElements<f32>(
        matrix,
        [&](std::size_t i) {
            const int row = static_cast<int>(i) / 6, column = static_cast<int>(i) % 6;
            return sum([&](int x, int y) { return at(row, x, y) * at(column, x, y); });
        },
        5.0);
}

}  // namespace
