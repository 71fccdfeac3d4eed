/// @file
/// Resizing against its sampling grids: shrinking reads position d * s of the source for destination pixel d, s being
/// the ratio of their sizes, enlarging d * s - 1/4, an axis of equal sizes d.

#include "sampling.h"

namespace {

using namespace kit;
namespace gt = vexa::geometryTransforms;

constexpr VexaStatus success = VEXA_SUCCESS;

const VexaInterpolationType types[] = {VEXA_INTER_NEAREST, VEXA_INTER_LINEAR, VEXA_INTER_CUBIC};

double positionOf(int d, int from, int to)
{
    const double scaled = d * static_cast<double>(from) / to;
    return from < to ? scaled - 0.25 : scaled;
}

template <typename T>
void expectResized(VexaSize from, VexaSize to, int channels)
{
    const VexaImage src = noise<T>(from, channels, 51);
    const Sampled<T> sampled(src);
    for (const VexaInterpolationType type : types) {
        SCOPED_TRACE(testing::Message() << from.width << "x" << from.height << " to " << to.width << "x" << to.height
                                        << ", " << channels << " channels of " << 8 * sizeof(T) << " bits, mode "
                                        << type);
        VexaImage dst(to, formatOf<T>(channels));
        fillBuffer(dst, 0xA5);
        ASSERT_EQ(gt::resize(src, dst, type), success);
        const std::vector<T> elements = download<T>(dst);
        for (std::size_t i = 0; i < elements.size(); ++i) {
            const int pixel = static_cast<int>(i) / channels;
            const double u = positionOf(pixel % to.width, from.width, to.width);
            const double v = positionOf(pixel / to.width, from.height, to.height);
            ASSERT_LT(errorOf(elements[i], sampled.interpolated(type, u, v, static_cast<int>(i) % channels)),
                      sampleTolerance<T>)
                << pixel % to.width << ", " << pixel / to.width;
        }
        expectGaps(dst, 0xA5);
    }
}

TEST(Resize, SamplesOnItsGrids)
{
    const struct {
        VexaSize from, to;
    } sizes[] = {{{4, 4}, {16, 16}},     {{4, 4}, {5, 5}},       {{7, 7}, {3, 3}},    {{5, 5}, {8, 8}},
                 {{8, 8}, {4, 4}},       {{9, 4}, {9, 16}},      {{8, 5}, {4, 8}},    {{2, 2}, {1, 1}},
                 {{2, 3}, {640, 7}},     {{67, 5}, {31, 9}},     {{17, 33}, {17, 8}}, {{640, 3}, {161, 3}},
                 {{211, 97}, {315, 61}}, {{300, 70}, {100, 280}}};
    for (const auto& [from, to] : sizes)
        for (const int channels : {1, 3}) {
            expectResized<u8>(from, to, channels);
            expectResized<u16>(from, to, channels);
            expectResized<f32>(from, to, channels);
        }
}

/// A ramp gives its own positions back where no edge repeats.
TEST(Resize, PositionsByHand)
{
    std::vector<f32> ramp;
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) ramp.push_back(static_cast<f32>(x));
    const VexaImage src = imageOf<f32>({4, 4}, 1, ramp);
    VexaImage larger(16, 4, VEXA_32FC1);
    ASSERT_EQ(gt::resize(src, larger, VEXA_INTER_LINEAR), success);
    const std::vector<f32> linear = download<f32>(larger);
    const std::vector<f32> positions = {0,     0, 0.25F, 0.5F, 0.75F, 1, 1.25F, 1.5F,
                                        1.75F, 2, 2.25F, 2.5F, 2.75F, 3, 3,     3};
    EXPECT_EQ(std::vector<f32>(linear.begin(), linear.begin() + 16), positions);
    VexaImage bytes(4, 2, VEXA_8UC1);
    ASSERT_EQ(gt::resize(imageOf<u8>({2, 2}, 1, {0, 2, 0, 2}), bytes, VEXA_INTER_LINEAR), success);
    EXPECT_EQ(download<u8>(bytes), (std::vector<u8>{0, 1, 2, 2, 0, 1, 2, 2}));
}

/// The values of 16-bit images have their whole range, whatever their data bits.
TEST(Resize, KeepsTheRange)
{
    VexaImage src = constant<u16>({4, 4}, 1, 65535);
    src.setDataBits(12);
    VexaImage dst(9, 3, VEXA_16UC1);
    ASSERT_EQ(gt::resize(src, dst, VEXA_INTER_CUBIC), success);
    EXPECT_EQ(download<u16>(dst), std::vector<u16>(27, 65535));
}

TEST(Resize, Checks)
{
    VexaImage src = noise<u8>({8, 6}, 1, 52);
    VexaImage empty;
    EXPECT_EQ(gt::resize(empty, src, VEXA_INTER_LINEAR), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(gt::resize(src, empty, VEXA_INTER_LINEAR), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(gt::resize(src, src, VEXA_INTER_LINEAR), VEXA_INPLACE_OP_NOT_SUPPORTED);
    for (VexaImage other : {VexaImage(4, 3, VEXA_8UC3), VexaImage(4, 3, VEXA_16UC1)})
        EXPECT_EQ(gt::resize(src, other, VEXA_INTER_LINEAR), VEXA_NOT_SUPPORTED_MODE_ERROR);
    for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
        const auto type = static_cast<VexaType>(t);
        VexaImage dst(4, 3, type);
        const bool isServed = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 ||
                              type == VEXA_32FC1 || type == VEXA_32FC3;
        EXPECT_EQ(gt::resize(VexaImage(8, 6, type), dst, VEXA_INTER_LINEAR),
                  isServed ? success : VEXA_TYPE_NOT_SUPPORTED_ERROR)
            << t;
    }

    // Equal sizes are a copy, whatever the mode; others refuse a mode that is none, and a side of one pixel.
    for (const int modeNumber : {0, 99}) {
        const auto type = static_cast<VexaInterpolationType>(modeNumber);
        VexaImage same(8, 6, VEXA_8UC1);
        EXPECT_EQ(gt::resize(src, same, type), success);
        EXPECT_EQ(download<u8>(same), download<u8>(src));
        VexaImage other = constant<u8>({4, 3}, 1, 77);
        EXPECT_EQ(gt::resize(src, other, type), VEXA_INTERNAL_CALL_ERROR);
        EXPECT_EQ(download<u8>(other), std::vector<u8>(12, 77));
    }
    VexaImage dst(4, 3, VEXA_8UC1);
    EXPECT_EQ(gt::resize(VexaImage(1, 6, VEXA_8UC1), dst, VEXA_INTER_LINEAR), VEXA_INTERNAL_CALL_ERROR);
}

}  // namespace
