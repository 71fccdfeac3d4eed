/// @file
/// Operations that only move pixels: flips, crops, transposition.

#include <functional>

#include "sampling.h"

namespace {

using namespace kit;
namespace gt = vexa::geometryTransforms;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaStatus invalid = VEXA_INVALID_ARG_ERROR;

/// Where the pixel at (x, y) of the result comes from.
using Origin = std::function<VexaPoint2D<int>(int x, int y)>;

template <typename T>
void expectMoved(const VexaImage& dst, const VexaImage& src, const Origin& origin)
{
    const Sampled<T> sampled(src);
    const int channels = src.channels();
    expectElements<T>(dst, [&](std::size_t i) {
        const int pixel = static_cast<int>(i) / channels;
        const VexaPoint2D<int> from = origin(pixel % dst.width(), pixel / dst.width());
        return sampled.clamped(from.x, from.y, static_cast<int>(i) % channels);
    });
}

template <typename T>
void expectFlips(VexaSize size, int channels)
{
    SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << ", " << channels << " channels of "
                                    << 8 * sizeof(T) << " bits");
    const VexaImage src = noise<T>(size, channels, 81);
    const int right = size.width - 1;
    const int bottom = size.height - 1;
    const Origin origins[] = {[=](int x, int y) { return VexaPoint2D<int>(x, bottom - y); },
                              [=](int x, int y) { return VexaPoint2D<int>(right - x, y); },
                              [=](int x, int y) { return VexaPoint2D<int>(right - x, bottom - y); }};
    for (int type = VEXA_FLIP_UP_DOWN; type <= VEXA_FLIP_BOTH_DIRECTIONS; ++type) {
        VexaImage dst(size, src.type());
        fillBuffer(dst, 0xA5);
        ASSERT_EQ(gt::flipImage(src, dst, static_cast<VexaFlipType>(type)), success);
        expectMoved<T>(dst, src, origins[type]);
        expectGaps(dst, 0xA5);
    }
}

template <typename T>
void expectTransposed(VexaSize size, int channels)
{
    const VexaImage src = noise<T>(size, channels, 82);
    VexaImage dst(size.height, size.width, src.type());
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(gt::transpose(src, dst), success);
    expectMoved<T>(dst, src, [](int x, int y) { return VexaPoint2D<int>(y, x); });
    expectGaps(dst, 0xA5);
}

TEST(FlipAndTranspose, MovePixels)
{
    std::vector<VexaSize> sizes = edgeSizes();
    sizes.push_back({130, 70});
    for (const VexaSize& size : sizes)
        for (const int channels : {1, 3}) {
            expectFlips<u8>(size, channels);
            expectFlips<u16>(size, channels);
            expectFlips<f32>(size, channels);
            expectTransposed<u8>(size, channels);
            expectTransposed<u16>(size, channels);
            expectTransposed<f32>(size, channels);
        }
}

bool isServed(VexaType type)
{
    return type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 || type == VEXA_32FC1 ||
           type == VEXA_32FC3;
}

TEST(Flip, Checks)
{
    VexaImage dst;
    EXPECT_EQ(gt::flipImage(VexaImage(), dst, VEXA_FLIP_UP_DOWN), VEXA_IMAGE_NOT_INITIALIZED);
    VexaImage src(8, 6, VEXA_8UC1);
    EXPECT_EQ(gt::flipImage(src, src, VEXA_FLIP_UP_DOWN), VEXA_INPLACE_OP_NOT_SUPPORTED);
    for (VexaImage other : {VexaImage(9, 6, VEXA_8UC1), VexaImage(8, 7, VEXA_8UC1), VexaImage(8, 6, VEXA_16UC1),
                            VexaImage(8, 6, VEXA_8UC3)})
        EXPECT_EQ(gt::flipImage(src, other, VEXA_FLIP_UP_DOWN), mode);
    for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
        const auto type = static_cast<VexaType>(t);
        VexaImage created;
        EXPECT_EQ(gt::flipImage(VexaImage(5, 3, type), created, static_cast<VexaFlipType>(5)),
                  isServed(type) ? mode : VEXA_TYPE_NOT_SUPPORTED_ERROR)
            << t;
        EXPECT_EQ(created.type(), type);
    }
}

TEST(Transpose, Checks)
{
    VexaImage dst;
    EXPECT_EQ(gt::transpose(VexaImage(), dst), VEXA_IMAGE_NOT_INITIALIZED);
    VexaImage src(4, 3, VEXA_8UC1);
    EXPECT_EQ(gt::transpose(src, src), VEXA_INPLACE_OP_NOT_SUPPORTED);
    for (VexaImage other : {VexaImage(4, 3, VEXA_16UC1), VexaImage(3, 3, VEXA_8UC1), VexaImage(4, 4, VEXA_8UC1)})
        EXPECT_EQ(gt::transpose(src, other), invalid);
    for (VexaImage other : {VexaImage(3, 4, VEXA_16UC1), VexaImage(3, 4, VEXA_8UC3)})
        EXPECT_EQ(gt::transpose(src, other), mode);
    for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
        const auto type = static_cast<VexaType>(t);
        VexaImage created;
        EXPECT_EQ(gt::transpose(VexaImage(5, 3, type), created), isServed(type) ? success : mode) << t;
        EXPECT_EQ(created.width(), 3);
    }
}

// ---- crop ----

TEST(Crop, CutsMarginsOff)
{
    const VexaImage src = noise<u16>({33, 21}, 3, 83);
    VexaImage dst;
    ASSERT_EQ(gt::crop(src, dst, 2, 5, 7, 11), success);
    ASSERT_EQ(dst.width(), 15);
    ASSERT_EQ(dst.height(), 14);
    expectMoved<u16>(dst, src, [](int x, int y) { return VexaPoint2D<int>(x + 7, y + 2); });

    // A larger destination keeps what the result does not cover, a smaller one gets what it can hold.
    VexaImage larger = constant<u16>({20, 20}, 3, 9);
    ASSERT_EQ(gt::crop(src, larger, 2, 5, 7, 11), success);
    const Sampled<u16> cropped(dst);
    expectElements<u16>(larger, [&](std::size_t i) {
        const int x = static_cast<int>(i / 3) % 20;
        const int y = static_cast<int>(i / 3) / 20;
        return x < 15 && y < 14 ? cropped.clamped(x, y, static_cast<int>(i % 3)) : 9.0;
    });
    VexaImage smaller(5, 4, VEXA_16UC3);
    fillBuffer(smaller, 0xA5);
    EXPECT_EQ(gt::crop(src, smaller, 2, 5, 7, 11), success);
    expectMoved<u16>(smaller, src, [](int x, int y) { return VexaPoint2D<int>(x + 7, y + 2); });
    expectGaps(smaller, 0xA5);
}

/// Margins that reach outside are not refused; what they would read from there is left.
TEST(Crop, NegativeMarginsReadNothingOutside)
{
    const VexaImage src = noise<u8>({33, 21}, 1, 84);
    VexaImage dst;
    EXPECT_EQ(gt::crop(src, dst, -4, -1000, -7, -9), success);
    EXPECT_EQ(dst.width(), 49);
}

TEST(Crop, Checks)
{
    VexaImage dst;
    EXPECT_EQ(gt::crop(VexaImage(), dst, 0, 0, 0, 0), VEXA_IMAGE_NOT_INITIALIZED);
    VexaImage src = noise<u8>({8, 6}, 1, 85);
    EXPECT_EQ(gt::crop(src, src, 0, 0, 0, 0), VEXA_INPLACE_OP_NOT_SUPPORTED);
    for (VexaImage other : {VexaImage(8, 6, VEXA_16UC1), VexaImage(8, 6, VEXA_8UC3)})
        EXPECT_EQ(gt::crop(src, other, 0, 0, 0, 0), mode);
    VexaImage same(8, 6, VEXA_8UC1);
    EXPECT_EQ(gt::crop(src, same, 0, 0, 4, 4), invalid);
    EXPECT_EQ(gt::crop(src, same, 6, 0, 0, 0), invalid);
    EXPECT_EQ(gt::crop(src, same, 0, 0, 0, 0), success);
    EXPECT_EQ(download<u8>(same), download<u8>(src));
    for (const VexaType type : {VEXA_8SC2, VEXA_16UC4, VEXA_32SC1}) {
        VexaImage created;
        EXPECT_EQ(gt::crop(VexaImage(8, 6, type), created, 1, 1, 1, 1), success);
    }
    VexaImage wide;
    EXPECT_EQ(gt::crop(VexaImage(8, 6, VEXA_64FC1), wide, 6, 0, 0, 0), VEXA_TYPE_NOT_SUPPORTED_ERROR);
}

}  // namespace
