/// @file
/// Rotation against bilinear samples in double, taken at coordinates that are not shifted by half a pixel, with zero
/// outside the image.

#include "sampling.h"

namespace {

using namespace kit;
namespace gt = vexa::geometryTransforms;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaStatus invalid = VEXA_INVALID_ARG_ERROR;

/// What weights of 8 fractional bits and truncation change at the most.
template <typename T>
constexpr double tolerance = sizeof(T) == 1 ? 2.1 : (sizeof(T) == 2 ? 300.0 : 1.1);

struct Turn {
    double degrees;
    VexaPoint2D<int> center;
    double offsetX = 0;
    double offsetY = 0;
};

template <typename T>
void expectTurned(const VexaImage& dst, const VexaImage& src, const Turn& turn)
{
    SCOPED_TRACE(testing::Message() << turn.degrees << " degrees about " << turn.center.x << ", " << turn.center.y
                                    << ", " << src.channels() << " channels of " << 8 * sizeof(T) << " bits");
    const Sampled<T> sampled(src);
    const std::vector<T> elements = download<T>(dst);
    const double s = std::sin(turn.degrees * std::acos(-1.0) / 180);
    const double c = std::cos(turn.degrees * std::acos(-1.0) / 180);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const int x = static_cast<int>(i) / sampled.channels % dst.width();
        const int y = static_cast<int>(i) / sampled.channels / dst.width();
        const int channel = static_cast<int>(i) % sampled.channels;
        const double dx = x - turn.center.x - turn.offsetX;
        const double dy = y - turn.center.y - turn.offsetY;
        const double u = c * dx - s * dy + turn.center.x - 0.5;
        const double v = s * dx + c * dy + turn.center.y - 0.5;
        double exact = 0;
        for (int k = 0; k < 4; ++k) {
            const double column = std::floor(u) + k % 2;
            const double row = std::floor(v) + k / 2;
            exact += (1 - std::abs(u - column)) * (1 - std::abs(v - row)) *
                     sampled.orZero(static_cast<int>(column), static_cast<int>(row), channel);
        }
        ASSERT_NEAR(static_cast<double>(elements[i]), exact, tolerance<T>) << x << ", " << y;
    }
}

template <typename T>
void expectRotated(VexaSize from, VexaSize to, int channels)
{
    const VexaImage src = noise<T>(from, channels, 71);
    const Turn turns[] = {{0, {0, 0}}, {17, {5, 3}}, {-30, {0, from.height - 1}}, {90, {4, 4}}, {200.5, {8, 2}}};
    for (const Turn& turn : turns) {
        VexaImage dst(to, formatOf<T>(channels));
        fillBuffer(dst, 0xA5);
        ASSERT_EQ(gt::rotate(src, dst, static_cast<float>(turn.degrees), turn.center), success);
        expectTurned<T>(dst, src, turn);
        expectGaps(dst, 0xA5);
    }
}

TEST(Rotate, SamplesUnshifted)
{
    for (const int channels : {1, 3}) {
        expectRotated<u8>({9, 9}, {9, 9}, channels);
        expectRotated<u8>({45, 30}, {60, 20}, channels);
        expectRotated<u16>({45, 30}, {45, 30}, channels);
        expectRotated<f32>({45, 30}, {70, 70}, channels);
        expectRotated<u8>({600, 40}, {610, 20}, channels);
    }
}

/// Without a turn each pixel is the mean of four, those of the border zero.
TEST(Rotate, ByZeroBlurs)
{
    VexaImage dst, words;
    const VexaImage src = imageOf<f32>({2, 2}, 1, {16, 32, 64, 128});
    ASSERT_EQ(gt::rotate(src, dst, 0.0F, {1, 1}), success);
    EXPECT_EQ(download<f32>(dst), (std::vector<f32>{4, 12, 20, 60}));
    ASSERT_EQ(gt::rotate(imageOf<u16>({2, 2}, 1, {16, 33, 66, 128}), words, 0.0F, {1, 1}), success);
    EXPECT_EQ(download<u16>(words), (std::vector<u16>{4, 12, 20, 60}));
    VexaImage white;
    ASSERT_EQ(gt::rotate(constant<u8>({2, 2}, 3, 255), white, 0.0F, {0, 0}), success);
    EXPECT_EQ(download<u8>(white)[9], 255);
}

template <typename T>
void expectNoCrop(VexaSize from, int channels, double degrees, VexaSize frame)
{
    const VexaImage src = noise<T>(from, channels, 72);
    VexaImage dst(3, 3, VEXA_64FC2);
    ASSERT_EQ(gt::rotateNoCrop(src, dst, static_cast<float>(degrees)), success);
    EXPECT_EQ(dst.type(), src.type());
    ASSERT_EQ(dst.width(), frame.width);
    ASSERT_EQ(dst.height(), frame.height);
    expectTurned<T>(dst, src,
                    {degrees,
                     {from.width / 2, from.height / 2},
                     (frame.width - from.width) / 2.0,
                     (frame.height - from.height) / 2.0});
}

TEST(RotateNoCrop, FrameHasAnExtraPixel)
{
    for (const int channels : {1, 3}) {
        expectNoCrop<u8>({100, 50}, channels, 0, {101, 51});
        expectNoCrop<u8>({100, 50}, channels, 30, {113, 95});
        expectNoCrop<u16>({100, 50}, channels, -30, {113, 95});
        expectNoCrop<f32>({31, 20}, channels, 45, {39, 39});
    }
}

TEST(RotateNoCrop, InPlaceLosesTheSource)
{
    VexaImage image = noise<u8>({8, 6}, 1, 73);
    VexaImage empty;
    EXPECT_EQ(gt::rotateNoCrop(empty, image, 5.0F), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_TRUE(image.isInitialized());
    (void)gt::rotateNoCrop(image, image, 5.0F);
}

/// A part of the image is turned like an image of its own, and put back.
TEST(RotateRectangle, TurnsThePartAlone)
{
    const VexaImage src = noise<u8>({40, 30}, 3, 74);
    const VexaRect roi(5, 8, 21, 13);
    VexaImage part(VexaSize(roi.width, roi.height), src.type());
    ASSERT_EQ(src.copyTo(part, {0, 0}, roi), success);
    VexaImage turned;
    ASSERT_EQ(gt::rotate(part, turned, 33.0F, {20, 12}), success);
    VexaImage expected(src);
    ASSERT_EQ(turned.copyTo(expected, {roi.x, roi.y}, {0, 0, roi.width, roi.height}), success);
    for (VexaImage dst : {VexaImage(), VexaImage(3, 4, VEXA_8UC3)}) {
        ASSERT_EQ(gt::rotate(src, dst, 33.0F, {20, 12}, roi), success);
        EXPECT_EQ(download<u8>(dst), download<u8>(expected));
    }
}

TEST(RotateRectangle, PassesFailuresOn)
{
    const VexaImage src = noise<u8>({40, 30}, 1, 75);
    VexaImage dst;
    EXPECT_EQ(gt::rotate(VexaImage(), dst, 9.0F, {0, 0}, VexaRect(0, 0, 2, 2)), VEXA_IMAGE_NOT_INITIALIZED);
    VexaImage other(40, 30, VEXA_16UC1);
    EXPECT_EQ(gt::rotate(src, other, 9.0F, {0, 0}, VexaRect(0, 0, 2, 2)), mode);
    EXPECT_EQ(gt::rotate(src, dst, 9.0F, {21, 0}, VexaRect(5, 5, 21, 13)), invalid);
    EXPECT_EQ(download<u8>(dst), download<u8>(src));
    VexaImage copied(41, 31, VEXA_8UC1);
    EXPECT_EQ(gt::rotate(src, dst, 9.0F, {0, 0}, VexaRect(0, 0, 41, 31)),
              src.copyTo(copied, {0, 0}, VexaRect(0, 0, 41, 31)));
}

TEST(Rotate, InPlace)
{
    for (const int channels : {1, 3}) {
        VexaImage image = noise<u8>({200, 150}, channels, 76);
        VexaImage apart;
        ASSERT_EQ(gt::rotate(image, apart, 33.0F, {100, 75}), success);
        ASSERT_EQ(gt::rotate(image, image, 33.0F, {100, 75}), success);
        EXPECT_EQ(download<u8>(image), download<u8>(apart));
    }
}

TEST(Rotate, Checks)
{
    VexaImage dst;
    EXPECT_EQ(gt::rotate(VexaImage(), dst, 9.0F, {-1, 0}), VEXA_IMAGE_NOT_INITIALIZED);
    const VexaImage src(8, 6, VEXA_8UC1);
    for (const VexaPoint2D<int>& outside :
         {VexaPoint2D<int>(-1, 0), VexaPoint2D<int>(0, -1), VexaPoint2D<int>(8, 0), VexaPoint2D<int>(0, 6)})
        EXPECT_EQ(gt::rotate(src, dst, 9.0F, outside), invalid);
    EXPECT_FALSE(dst.isInitialized());
    for (VexaImage other : {VexaImage(8, 6, VEXA_8UC3), VexaImage(8, 6, VEXA_16UC1)})
        EXPECT_EQ(gt::rotate(src, other, 9.0F, {7, 5}), mode);
    for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
        const auto type = static_cast<VexaType>(t);
        const bool isServed = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 ||
                              type == VEXA_32FC1 || type == VEXA_32FC3;
        VexaImage created, frame;
        EXPECT_EQ(gt::rotate(VexaImage(5, 3, type), created, 9.0F, {4, 2}), isServed ? success : mode) << t;
        EXPECT_EQ(created.depth(), VexaImage(5, 3, type).depth());
        EXPECT_EQ(gt::rotateNoCrop(VexaImage(5, 3, type), frame, 9.0F), isServed ? success : mode) << t;
        EXPECT_EQ(frame.type(), type);
    }
    // Angles that are no numbers read nothing.
    for (const float strange : {std::nanf(""), INFINITY, 3e38F})
        EXPECT_EQ(gt::rotate(src, dst, strange, {3, 3}), success);
}

}  // namespace
