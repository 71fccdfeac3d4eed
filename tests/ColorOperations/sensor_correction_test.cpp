/// @file
/// Corrections of sensors, masks, and the mixing of channels.

#include <array>
#include <cmath>
#include <functional>

#include "images.h"
#include "truncated.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaStatus invalid = VEXA_INVALID_ARG_ERROR;
constexpr VexaStatus badDepth = VEXA_DEPTH_NOT_SUPPORTED_ERROR;
constexpr VexaStatus badChannels = VEXA_CHANNEL_NOT_SUPPORTED_ERROR;

// ---- fixed pattern noise ----

/// References whose differences are powers of two, so that everything is exact.
template <typename T>
void expectCorrected(int channels, int dataBits)
{
    SCOPED_TRACE(testing::Message() << channels << " channels of " << dataBits << " bits");
    const VexaSize size(67, 5);
    VexaImage src = noise<T>(size, channels, 121);
    ASSERT_EQ(src.setDataBits(dataBits), success);
    const std::vector<T> p = download<T>(src);
    std::vector<T> black, white;
    for (std::size_t i = 0; i < p.size(); ++i) {
        black.push_back(static_cast<T>(i * 5 % 90));
        white.push_back(static_cast<T>(black.back() + (1 << i % 7)));
    }
    VexaImage dst(size, src.type());
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(co::FPNCorrection(src, dst, imageOf<T>(size, channels, white), imageOf<T>(size, channels, black), 2.5F),
              success);
    const int bound = (1 << dataBits) - 1;
    expectElements<T>(dst, [&](std::size_t i) {
        const double value = (p[i] - black[i]) * 2.5 / (white[i] - black[i]);
        // Low bits first, then the bound.
        return double(std::min(static_cast<int>(static_cast<T>(static_cast<unsigned>(std::fmax(value, 0.0)))), bound));
    });
    expectGaps(dst, 0xA5);
}

TEST(FPNCorrection, WrapsBeforeItBounds)
{
    expectCorrected<u8>(1, 8);
    expectCorrected<u16>(1, 16);
    expectCorrected<u16>(3, 12);
}

TEST(FPNCorrection, SmallReferencesAreNotReadOutside)
{
    const VexaImage src = constant<u16>({67, 40}, 1, 9);
    for (const VexaSize& size : {VexaSize(5, 4), VexaSize(67, 3), VexaSize(300, 2)}) {
        VexaImage dst;
        EXPECT_EQ(co::FPNCorrection(src, dst, constant<u16>(size, 1, 3), constant<u16>({67, 40}, 1, 1), 4.0F), success);
        EXPECT_EQ(download<u16>(dst)[0], 16);
        EXPECT_EQ(co::FPNCorrection(src, dst, constant<u16>({67, 40}, 1, 3), constant<u16>(size, 1, 1), 4.0F), success);
        EXPECT_EQ(co::FPNCorrection(src, dst, VexaImage(), VexaImage(), 4.0F), success);
    }
}

TEST(FPNCorrection, Checks)
{
    const auto call = [](const VexaImage& src, VexaImage& dst) { return co::FPNCorrection(src, dst, src, src, 1.0F); };
    VexaImage none, other(9, 6, VEXA_8UC1), ofFloat, ofTwo;
    EXPECT_EQ(call(VexaImage(), none), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(call(VexaImage(8, 6, VEXA_8UC1), other), mode);
    EXPECT_EQ(call(VexaImage(8, 6, VEXA_32FC1), ofFloat), badDepth);
    EXPECT_EQ(ofFloat.type(), VEXA_32FC1);
    EXPECT_EQ(call(VexaImage(8, 6, VEXA_16UC2), ofTwo), badChannels);
}

/// Whole buffers are added, and sums wrap; nothing is printed where nothing is wrong.
TEST(Fpn, AddsAndWraps)
{
    const VexaImage input = noise<u8>({67, 5}, 1, 122);
    const VexaImage black = noise<u8>({67, 5}, 1, 123);
    VexaImage output(67, 5, VEXA_8UC1);
    testing::internal::CaptureStdout();
    EXPECT_EQ(co::fpn(output, input, black), success);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    const std::vector<u8> a = download<u8>(input);
    const std::vector<u8> b = download<u8>(black);
    expectElements<u8>(output, [&](std::size_t i) { return double((a[i] + b[i]) % 256); });

    EXPECT_EQ(co::fpn(output, VexaImage(3, 2, VEXA_8UC1), VexaImage()), success);
}

// ---- border mask ----

template <typename T>
void expectMasked(int channels, const std::array<int, 4>& margins)
{
    const VexaSize size(33, 17);
    const VexaImage src = noise<T>(size, channels, 124);
    const float mask[] = {7.9F, 100, 33.2F};
    const auto [top, bottom, left, right] = margins;
    VexaImage dst(size, src.type());
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(co::borderMask(src, dst, top, bottom, left, right, mask), success);
    const std::vector<T> before = download<T>(src);
    expectElements<T>(dst, [&, top = top, bottom = bottom, left = left, right = right](std::size_t i) {
        const int x = static_cast<int>(i) / channels % size.width;
        const int y = static_cast<int>(i) / channels / size.width;
        const bool inside = x >= left && x < size.width - right && y >= top && y < size.height - bottom;
        return inside ? double(before[i]) : std::trunc(double(mask[i % static_cast<std::size_t>(channels)]));
    });
    expectGaps(dst, 0xA5);
}

TEST(BorderMask, CoversTheMargins)
{
    for (const int channels : {1, 3})
        for (const std::array<int, 4>& margins :
             {std::array<int, 4>{0, 0, 0, 0}, {3, 1, 4, 15}, {0, 0, 20, 13}, {17, 0, 0, 0}, {-2, 5, -1, 0}}) {
            expectMasked<u8>(channels, margins);
            expectMasked<u16>(channels, margins);
        }
}

TEST(BorderMask, Checks)
{
    const float mask[] = {1, 2, 3};
    const VexaImage src(8, 6, VEXA_8UC1);
    VexaImage dst;
    EXPECT_EQ(co::borderMask(VexaImage(), dst, 0, 0, 0, 0, nullptr), VEXA_NULL_POINTER_ERROR);
    EXPECT_EQ(co::borderMask(VexaImage(), dst, 0, 0, 0, 0, mask), VEXA_IMAGE_NOT_INITIALIZED);
    for (VexaImage other : {VexaImage(9, 6, VEXA_8UC1), VexaImage(8, 7, VEXA_8UC1), VexaImage(8, 6, VEXA_16UC1),
                            VexaImage(8, 6, VEXA_8UC3)})
        EXPECT_EQ(co::borderMask(src, other, 0, 0, 0, 0, mask), mode);
    EXPECT_EQ(co::borderMask(src, dst, 0, 0, 5, 4, mask), invalid);
    EXPECT_EQ(co::borderMask(src, dst, 3, 4, 0, 0, mask), invalid);
    VexaImage ofTwo, ofFloat;
    EXPECT_EQ(co::borderMask(VexaImage(8, 6, VEXA_8UC2), ofTwo, 0, 0, 0, 0, mask), badChannels);
    EXPECT_EQ(co::borderMask(VexaImage(8, 6, VEXA_32FC1), ofFloat, 0, 0, 0, 0, mask), badDepth);
}

// ---- channel mix ----

template <typename T>
void expectMixed(int dataBits)
{
    VexaImage src = noise<T>({67, 5}, 3, 125);
    ASSERT_EQ(src.setDataBits(dataBits), success);
    float coeffs[] = {0.3F, 0.8F, -0.4F, 5.5F, 1.5F, -0.25F, 0.125F, -30, 0.2F, 0.7F, 0.3F, 2000};
    VexaImage dst(src.size(), src.type());
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(co::channelMix(src, dst, coeffs), success);
    const std::vector<T> s = download<T>(src);
    const std::vector<T> mixed = download<T>(dst);
    for (std::size_t i = 0; i < mixed.size(); ++i) {
        const float* const row = coeffs + 4 * (i % 3);
        const T* const pixel = s.data() + i / 3 * 3;
        double exact = double(row[3]);
        for (std::size_t c = 0; c < 3; ++c) exact += double(row[c]) * double(pixel[c]);
        if (sizeof(T) == 4)
            ASSERT_NEAR(double(mixed[i]), exact, 1e-3);
        else
            ASSERT_TRUE(isTruncated(double(mixed[i]), exact, double((1 << dataBits) - 1), 0.02)) << i;
    }
    expectGaps(dst, 0xA5);

    VexaImage inPlace(src);
    ASSERT_EQ(inPlace.setDataBits(dataBits), success);
    ASSERT_EQ(co::channelMix(inPlace, inPlace, coeffs), success);
    EXPECT_EQ(download<T>(inPlace), mixed);

    float identity[] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
    ASSERT_EQ(src.setDataBits(8 * static_cast<int>(sizeof(T))), success);
    ASSERT_EQ(co::channelMix(src, dst, identity), success);
    EXPECT_EQ(download<T>(dst), s);
}

TEST(ChannelMix, IsAnAffineMap)
{
    expectMixed<u8>(8);
    expectMixed<u16>(12);
    expectMixed<f32>(32);
}

/// Weights past every integer, and a NaN, which stores 0.
TEST(ChannelMix, WeightsOfAnySize)
{
    float coeffs[] = {3e38F, 0, 0, 0, 0, -3e38F, 0, 0, NAN, 0, 0, 0};
    VexaImage dst;
    ASSERT_EQ(co::channelMix(constant<u8>({5, 1}, 3, 9), dst, coeffs), success);
    const std::vector<u8> mixed = download<u8>(dst);
    for (std::size_t i = 0; i < mixed.size(); ++i) EXPECT_EQ(mixed[i], i % 3 == 0 ? 255 : 0);
}

TEST(ChannelMix, Checks)
{
    float coeffs[12] = {};
    VexaImage dst, ofSigned;
    EXPECT_EQ(co::channelMix(VexaImage(), dst, coeffs), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::channelMix(VexaImage(8, 6, VEXA_8UC1), dst, coeffs), badChannels);
    EXPECT_EQ(co::channelMix(VexaImage(8, 6, VEXA_8SC3), ofSigned, coeffs), badDepth);
    for (VexaImage other : {VexaImage(9, 6, VEXA_8UC3), VexaImage(8, 7, VEXA_8UC3), VexaImage(8, 6, VEXA_16UC3),
                            VexaImage(8, 6, VEXA_8UC1)})
        EXPECT_EQ(co::channelMix(VexaImage(8, 6, VEXA_8UC3), other, coeffs), mode);
}

// ---- colour pick ----

VexaImage bgrNoise(VexaSize size)
{
    VexaImage image = noise<u8>(size, 3, 126);
    image.setChannelSequence(VEXA_CHANNEL_SEQ_BGR);
    return image;
}

void expectPicked(int color, float threshold)
{
    SCOPED_TRACE(testing::Message() << "colour " << color << ", threshold " << threshold);
    const VexaImage src = bgrNoise({67, 5});
    VexaImage dst;
    ASSERT_EQ(co::colorPick(src, dst, static_cast<VexaColor>(color), threshold), success);
    const std::vector<u8> before = download<u8>(src);
    const std::vector<u8> after = download<u8>(dst);
    const int slot = color >= 0 && color <= 2 ? 2 - color : -1;
    for (std::size_t i = 0; i < before.size(); i += 3) {
        const u8* const s = before.data() + i;
        bool kept = slot >= 0;
        for (int other = 0; other < 3 && kept; ++other)
            if (other != slot) kept = s[slot] > s[other] && s[slot] - s[other] > double(threshold);
        const double gray = 0.59 * s[2] + 0.3 * s[1] + 0.11 * s[0];
        for (std::size_t c = 0; c < 3; ++c) {
            if (kept)
                ASSERT_EQ(after[i + c], s[c]);
            else
                ASSERT_TRUE(isTruncated(after[i + c], gray, 255)) << i;
        }
    }
}

TEST(ColorPick, KeepsOneColor)
{
    for (const int color : {int{VEXA_COLOR_RED}, int{VEXA_COLOR_GREEN}, int{VEXA_COLOR_BLUE}, 3})
        for (const float threshold : {0.0F, 40.5F, -20.0F, 300.0F}) expectPicked(color, threshold);
}

TEST(ColorPick, Checks)
{
    const auto call = [](const VexaImage& src, VexaImage& dst) {
        return co::colorPick(src, dst, VEXA_COLOR_RED, 3.0F);
    };
    VexaImage none, ofWords, ofRgb;
    EXPECT_EQ(call(VexaImage(), none), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(call(VexaImage(8, 6, VEXA_16UC1), none), badChannels);
    EXPECT_EQ(call(VexaImage(8, 6, VEXA_16UC3), ofWords), badDepth);
    VexaImage rgb(8, 6, VEXA_8UC3);
    rgb.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    EXPECT_EQ(call(rgb, ofRgb), mode);
    for (VexaImage other : {VexaImage(9, 6, VEXA_8UC3), VexaImage(8, 7, VEXA_8UC3), VexaImage(8, 6, VEXA_16UC3),
                            VexaImage(8, 6, VEXA_8UC1)})
        EXPECT_EQ(call(bgrNoise({8, 6}), other), mode);
}

// ---- binary images ----

TEST(ImageBinary, ComparesWithTheThreshold)
{
    const VexaImage src = noise<u8>({67, 5}, 1, 127);
    const std::vector<u8> before = download<u8>(src);
    const struct {
        float threshold;
        int level;
    } levels[] = {{0, 0}, {-3, 0}, {0.5F, 127}, {1, 255}, {2, 255}};
    for (const auto& [threshold, level] : levels) {
        VexaImage dst;
        ASSERT_EQ(co::imageBinary(src, dst, threshold), success);
        expectElements<u8>(dst, [&, level = level](std::size_t i) { return before[i] >= level ? 255.0 : 0.0; });
    }
}

TEST(ImageBinary, WeighsColorsByTheirSequence)
{
    for (const VexaChannelSeq sequence : {VEXA_CHANNEL_SEQ_RGB, VEXA_CHANNEL_SEQ_BGR}) {
        VexaImage src = noise<u8>({67, 5}, 3, 128);
        src.setChannelSequence(sequence);
        const std::vector<u8> before = download<u8>(src);
        VexaImage dst;
        ASSERT_EQ(co::imageBinary(src, dst, 0.5F), success);
        ASSERT_EQ(dst.type(), VEXA_8UC1);
        const std::vector<u8> after = download<u8>(dst);
        const std::size_t red = sequence == VEXA_CHANNEL_SEQ_RGB ? 0 : 2;
        for (std::size_t i = 0; i < after.size(); ++i) {
            const u8* const s = before.data() + 3 * i;
            const double gray = 0.59 * s[1] + 0.3 * s[red] + 0.11 * s[2 - red];
            const bool isClose = std::abs(gray - 127) < 1e-3;
            EXPECT_TRUE(isClose || after[i] == (gray >= 127 ? 255 : 0)) << i;
        }
    }
    VexaImage gray = noise<u8>({8, 6}, 3, 129);
    gray.setChannelSequence(VEXA_CHANNEL_SEQ_NONE);
    VexaImage untouched = constant<u8>({8, 6}, 1, 77);
    EXPECT_EQ(co::imageBinary(gray, untouched, 0.5F), success);
    EXPECT_EQ(download<u8>(untouched), std::vector<u8>(48, 77));
}

TEST(ImageBinary, Checks)
{
    const VexaImage src(8, 6, VEXA_8UC1);
    VexaImage none, ofWords, three(9, 6, VEXA_16UC3);
    EXPECT_EQ(co::imageBinary(VexaImage(), none, 0.5F), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::imageBinary(src, three, 0.5F), badChannels);
    for (VexaImage other : {VexaImage(9, 6, VEXA_8UC1), VexaImage(8, 7, VEXA_8UC1), VexaImage(8, 6, VEXA_16UC1)})
        EXPECT_EQ(co::imageBinary(src, other, 0.5F), mode);
    EXPECT_EQ(co::imageBinary(VexaImage(8, 6, VEXA_16UC3), ofWords, 0.5F), mode);
    EXPECT_EQ(ofWords.type(), VEXA_16UC1);
}

}  // namespace
