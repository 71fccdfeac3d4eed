/// @file
/// padImage, threshold, and their workers.

#include <algorithm>
#include <climits>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace de = vexa::dataExchange;

constexpr float values[] = {9, 300.7F, -5};

struct Margins {
    int top, bottom, left, right;
};

/// On one channel the column and the row right behind the pixels of the source are meant to stay as they were.
template <typename T>
void expectPadded(int channels, const Margins& m, const std::vector<T>& border, T kept)
{
    SCOPED_TRACE(::testing::Message() << m.top << " " << m.bottom << " " << m.left << " " << m.right);
    const VexaImage src = noise<T>({19, 18}, channels, 1);
    const std::vector<T> x = download<T>(src);
    const int width = 19 + (m.left + m.right);
    VexaImage dst(width, 18 + (m.top + m.bottom), src.type());
    fillBuffer(dst, 0x77);
    ASSERT_EQ(de::padImage(src, dst, m.top, m.bottom, m.left, m.right, values), VEXA_SUCCESS);
    expectElements<T>(dst, [&](auto index) {
        const int i = static_cast<int>(index);
        const int channel = i % channels;
        const int column = i / channels % width - m.left;
        const int row = i / channels / width - m.top;
        const auto isWithin = [&](int w, int h) { return column >= 0 && column < w && row >= 0 && row < h; };
        if (isWithin(19, 18)) return x[static_cast<std::size_t>((row * 19 + column) * channels + channel)];
        return channels == 1 && isWithin(20, 19) ? kept : border[static_cast<std::size_t>(channel)];
    });
    expectGaps(dst, 0x77);
}

TEST(Pad, MarginsOfAllKinds)
{
    // clang-format off
    const Margins margins[] = {
        {0, 0, 0, 0}, {1, 1, 1, 1}, {3, 0, 0, 0}, {0, 3, 0, 0}, {0, 0, 3, 0}, {0, 0, 0, 3}, {20, 17, 16, 33},
        {-2, 0, 0, 0}, {0, -2, 0, 0}, {0, 0, -2, 0}, {0, 0, 0, -2}, {-3, -4, -5, -6}, {-3, 4, 5, -6}, {3, -4, -5, 6},
        {INT_MAX - 5, 5 - INT_MAX, 0, 0}, {0, 0, -40, 40},
    };
    // clang-format on
    for (const Margins& m : margins)
        for (const int channels : {1, 3}) {
            expectPadded<u8>(channels, m, {9, 255, 0}, 0x77);
            expectPadded<u16>(channels, m, {9, 300, 0}, 0x7777);
        }
}

TEST(Pad, WordsSaturateToTheDataBits)
{
    VexaImage src = constant<u16>({2, 2}, 1, 60000);
    const float value = 5000.9F;
    for (const int bits : {0, 1, 12, 13, 16}) {
        ASSERT_EQ(src.setDataBits(bits), VEXA_SUCCESS);
        VexaImage dst;
        ASSERT_EQ(de::padImage(src, dst, 1, 0, 1, 0, &value), VEXA_SUCCESS);
        EXPECT_EQ(dst.get(2, 0, 0), std::min(5000, (1 << bits) - 1)) << bits << " bits";
        EXPECT_EQ(dst.get(2, 2, 0), 60000) << "only the border";
    }
}

TEST(Pad, ChecksInOrder)
{
    VexaImage dst;
    EXPECT_EQ(de::padImage(VexaImage(), dst, 1, 1, 1, 1, nullptr), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_FALSE(dst.isInitialized());
    EXPECT_EQ(de::padImage(VexaImage(5, 3, VEXA_8UC1), dst, 1, 1, 1, 1, nullptr), VEXA_INVALID_ARG_ERROR);
    for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
        const VexaImage src(5, 3, static_cast<VexaType>(row));
        VexaImage created;
        EXPECT_EQ(de::padImage(src, created, 1, 2, 3, 4, values), row > VEXA_16SC4 ? VEXA_DEPTH_NOT_SUPPORTED_ERROR
                                                                  : row % 2 == 1   ? VEXA_CHANNEL_NOT_SUPPORTED_ERROR
                                                                                   : VEXA_SUCCESS)
            << row;
        EXPECT_EQ(created.type(), getType(src.depth(), src.channels(), false)) << "created, even if it is refused";
        EXPECT_EQ(created.width(), 12);
        EXPECT_EQ(created.height(), 6);
        VexaImage narrow(11, 6, VEXA_64FC4);
        VexaImage low(12, 5, VEXA_64FC4);
        VexaImage otherChannels(12, 6, src.depth(), src.channels() % 4 + 1);
        VexaImage otherDepth(12, 6, src.depth() == 8 ? 16 : 8, src.channels());
        EXPECT_EQ(de::padImage(src, narrow, 1, 2, 3, 4, values), VEXA_INVALID_ARG_ERROR);
        EXPECT_EQ(de::padImage(src, low, 1, 2, 3, 4, values), VEXA_INVALID_ARG_ERROR);
        EXPECT_EQ(de::padImage(src, otherChannels, 1, 2, 3, 4, values), VEXA_NOT_SUPPORTED_MODE_ERROR);
        EXPECT_EQ(de::padImage(src, otherDepth, 1, 2, 3, 4, values), VEXA_NOT_SUPPORTED_MODE_ERROR);
    }
}

TEST(Pad, TwoChannelsAreCopiedThoughRefused)
{
    const VexaImage src = constant<u8>({5, 3}, 2, 9);
    VexaImage dst = constant<u8>({7, 5}, 2, 7);
    EXPECT_EQ(de::padImage(src, dst, 1, 1, 1, 1, values), VEXA_CHANNEL_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(dst.get(1, 1, 0), 9);
    EXPECT_EQ(dst.get(5, 3, 1), 9);
    EXPECT_EQ(dst.get(0, 0, 0), 7);
}

TEST(Pad, Workers)
{
    VexaImage bytes = imageOf<u8>({2, 2}, 1, {1, 2, 3, 4});
    VexaImage paddedBytes = constant<u8>({4, 4}, 1, 7);
    EXPECT_EQ(vexa_pad_8u(bytes.ptr<u8>(), paddedBytes.ptr<u8>(), 2, 2, bytes.pitch(), paddedBytes.pitch(), 1, 1, 1, 1,
                          1, values, nullptr),
              VEXA_SUCCESS);
    EXPECT_EQ(download<u8>(paddedBytes), (std::vector<u8>{9, 9, 9, 9, 9, 1, 2, 7, 9, 3, 4, 7, 9, 7, 7, 7}));
    VexaImage words = constant<u16>({1, 1}, 3, 500);
    VexaImage paddedWords = constant<u16>({2, 1}, 3, 7);
    EXPECT_EQ(vexa_pad_16u(words.ptr<u16>(), paddedWords.ptr<u16>(), 1, 1, words.pitch(), paddedWords.pitch(), 3, 0, 0,
                           0, 1, values, 8, nullptr),
              VEXA_SUCCESS);
    EXPECT_EQ(download<u16>(paddedWords), (std::vector<u16>{500, 500, 500, 9, 255, 0}));
}

/// By the public call and, in place, by its workers for 1 and 3 channels.
template <typename T, typename Gray, typename Color>
void expectClamped(const VexaSize& size, int channels, Gray gray, Color color)
{
    const double top = std::numeric_limits<T>::max();
    const double low[] = {top / 5, -1, top / 2};
    const double high[] = {top / 3, top / 7, top + 1000};
    VexaImage src = noise<T>(size, channels, 1);
    const std::vector<T> x = download<T>(src);
    VexaImage dst(size, src.type());
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(de::threshold(src, dst, VexaScalar(low[0], low[1], low[2]), VexaScalar(high[0], high[1], high[2])),
              VEXA_SUCCESS);
    expectElements<T>(dst, [&](auto i) {
        const std::size_t channel = i % static_cast<std::size_t>(channels);
        return static_cast<T>(std::clamp(static_cast<double>(x[i]), low[channel], high[channel]));
    });
    expectGaps(dst, 0xA5);
    T* const p = src.ptr<T>();
    EXPECT_EQ(channels == 1 ? gray(p, p, size.width, size.height, src.pitch(), low[0], high[0], nullptr)
                            : color(p, p, size.width, size.height, src.pitch(), low, high, nullptr),
              VEXA_SUCCESS);
    EXPECT_EQ(download<T>(src), download<T>(dst));
}

TEST(Threshold, ClampsEachChannel)
{
    for (const VexaSize& size : edgeSizes())
        for (const int channels : {1, 3}) {
            expectClamped<u8>(size, channels, vexa_thresh_8u_c1, vexa_thresh_8u_c3);
            expectClamped<u16>(size, channels, vexa_thresh_16u_c1, vexa_thresh_16u_c3);
        }
}

/// The minimum is applied first, then the maximum, and low bits are stored.
TEST(Threshold, KnownValues)
{
    struct Row {
        double low, high;
        std::vector<u8> bytes;
        std::vector<u16> words;
    };
    // clang-format off
    const Row rows[] = {
        {10, 20, {10, 10, 15, 20, 20}, {10, 10, 15, 20, 20}},
        {14.9, 15.5, {14, 14, 15, 15, 15}, {14, 14, 15, 15, 15}},
        {-5, 1e9, {0, 5, 15, 21, 255}, {0, 5, 15, 21, 255}},
        {20, 10, {10, 10, 10, 10, 10}, {10, 10, 10, 10, 10}},
        {300, 400, {44, 44, 44, 44, 44}, {300, 300, 300, 300, 300}},
        {65580, 70000, {44, 44, 44, 44, 44}, {44, 44, 44, 44, 44}},
        {-9, -5, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.low << " to " << row.high);
        VexaImage bytes = rowOf<u8>({0, 5, 15, 21, 255});
        VexaImage words = rowOf<u16>({0, 5, 15, 21, 255});
        ASSERT_EQ(de::threshold(bytes, bytes, VexaScalar(row.low), VexaScalar(row.high)), VEXA_SUCCESS);
        ASSERT_EQ(de::threshold(words, words, VexaScalar(row.low), VexaScalar(row.high)), VEXA_SUCCESS);
        EXPECT_EQ(download<u8>(bytes), row.bytes);
        EXPECT_EQ(download<u16>(words), row.words);
    }
}

TEST(Threshold, Checks)
{
    const VexaScalar bound(1.0);
    VexaImage untouched;
    EXPECT_EQ(de::threshold(VexaImage(), untouched, bound, bound), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_FALSE(untouched.isInitialized());
    for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
        const auto type = static_cast<VexaType>(row);
        const bool served = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3;
        VexaImage dst;
        EXPECT_EQ(de::threshold(VexaImage(5, 3, type), dst, bound, bound),
                  served ? VEXA_SUCCESS : VEXA_NOT_SUPPORTED_MODE_ERROR)
            << row;
        EXPECT_EQ(dst.type(), type) << "created, even if it is refused";
    }
    const VexaImage src(5, 3, VEXA_8UC1);
    for (VexaImage& misfit : std::vector<VexaImage>{{4, 3, 8, 1}, {5, 4, 8, 1}, {5, 3, 16, 1}, {5, 3, 8, 3}})
        EXPECT_EQ(de::threshold(src, misfit, bound, bound), VEXA_NOT_SUPPORTED_MODE_ERROR);
    VexaImage otherSign(5, 3, -8, 1);
    VexaImage tight(5, 3, 5, 8, 1);
    EXPECT_EQ(de::threshold(src, otherSign, bound, bound), VEXA_SUCCESS);
    EXPECT_EQ(de::threshold(src, tight, bound, bound), VEXA_SUCCESS) << "by the pitch of the source, but inside";
}

}  // namespace
