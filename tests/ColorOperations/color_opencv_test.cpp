/// @file
/// Colour operations beside OpenCV on a photograph, where both mean the same.

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

cv::Mat photograph()
{
    const cv::Mat photo = cv::imread(VEXA_IMAGES "/coffee.png", cv::IMREAD_COLOR);
    EXPECT_FALSE(photo.empty());
    return photo;
}

template <typename T>
VexaImage imageOf(const cv::Mat& mat)
{
    VexaImage image({mat.cols, mat.rows}, kit::formatOf<T>(mat.channels()));
    EXPECT_EQ(image.upload(mat.data, static_cast<int>(mat.step)), VEXA_SUCCESS);
    return image;
}

template <typename T>
void expectNear(const VexaImage& image, const cv::Mat& expected, double tolerance)
{
    const cv::Mat dense = expected.isContinuous() ? expected : expected.clone();
    const T* const elements = dense.ptr<T>();
    expectElements<T>(
        image, [=](std::size_t i) { return static_cast<double>(elements[i]); }, tolerance);
}

TEST(ColorBesideOpenCV, Gray)
{
    const cv::Mat photo = photograph();
    cv::Mat expected;
    cv::cvtColor(photo, expected, cv::COLOR_BGR2GRAY);
    VexaImage gray;
    ASSERT_EQ(co::rgb2gray(imageOf<u8>(photo), gray), VEXA_SUCCESS);
    expectNear<u8>(gray, expected, 1);
}

/// Both have tables or polynomials of their own for powers and roots; that of 8 bits is off by 3 in dark colours there.
TEST(ColorBesideOpenCV, Lab)
{
    const cv::Mat photo = photograph();
    cv::Mat expected;
    cv::cvtColor(photo, expected, cv::COLOR_BGR2Lab);
    VexaImage lab;
    ASSERT_EQ(co::rgb2Lab(imageOf<u8>(photo), lab), VEXA_SUCCESS);
    expectNear<u8>(lab, expected, 4);

    cv::Mat floats;
    photo.convertTo(floats, CV_32F, 1 / 255.0);
    cv::cvtColor(floats, expected, cv::COLOR_BGR2Lab);
    VexaImage floatLab;
    ASSERT_EQ(co::rgb2Lab(imageOf<f32>(floats), floatLab), VEXA_SUCCESS);
    expectNear<f32>(floatLab, expected, 0.5);
}

TEST(ColorBesideOpenCV, SplitAndMerge)
{
    const cv::Mat photo = photograph();
    cv::Mat planes[3];
    cv::split(photo, planes);
    VexaImage red, green, blue, merged;
    ASSERT_EQ(co::channelSplit(imageOf<u8>(photo), red, green, blue), VEXA_SUCCESS);
    expectNear<u8>(blue, planes[0], 0);
    expectNear<u8>(green, planes[1], 0);
    expectNear<u8>(red, planes[2], 0);
    ASSERT_EQ(co::channelMerge(red, green, blue, merged), VEXA_SUCCESS);
    expectNear<u8>(merged, photo, 0);
}

}  // namespace
