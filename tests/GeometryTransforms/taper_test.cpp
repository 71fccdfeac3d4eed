/// @file
/// The frame of a tapered image, pixel by pixel in double.

#include <algorithm>
#include <cmath>
#include <numeric>

#include "images.h"

namespace {

using namespace kit;
namespace gt = vexa::geometryTransforms;

constexpr VexaStatus success = VEXA_SUCCESS;

struct Margins {
    int left, right, top, bottom;
};

VexaStatus taper(const VexaImage& src, VexaImage& dst, const Margins& m)
{
    return gt::taper(src, dst, static_cast<Vexa32u>(m.left), static_cast<Vexa32u>(m.right), static_cast<Vexa32u>(m.top),
                     static_cast<Vexa32u>(m.bottom));
}

/// One channel of the framed image. The four tests follow each other, each may overwrite what an earlier one wrote; the
/// left one compares rows with the width, and distances grow toward the image on the left and at the top.
std::vector<u8> framed(const std::vector<u8>& plane, double mean, VexaSize size, const Margins& m)
{
    const int W = size.width + m.left + m.right;
    const int H = size.height + m.top + m.bottom;
    const double A = (size.width / 2) * (size.width / 2);
    const auto edge = [&](int x, int y) {
        return double(plane[static_cast<std::size_t>((y - m.top) * size.width + x - m.left)]);
    };
    const auto fade = [&](double e, double p) {
        return static_cast<u8>(A >= e * e ? p - (p - mean) * std::sqrt(e * e / A) : mean);
    };
    std::vector<u8> result;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            u8 value = 0;
            if (x >= m.left && x < W - m.right && y >= m.top && y < H - m.bottom) {
                result.push_back(static_cast<u8>(edge(x, y)));
                continue;
            }
            if (x < m.left && y < W - m.bottom)
                value = fade(m.left + x, edge(m.left, std::clamp(y, m.top, H - m.bottom - 1)));
            if (x >= W - m.right && y >= m.top)
                value = fade(x - W + m.right, edge(W - m.right - 1, std::min(y, H - m.bottom - 1)));
            if (y >= H - m.bottom && x <= W - m.right)
                value = fade(y - H + m.bottom, edge(std::clamp(x, m.left, W - m.right - 1), H - m.bottom - 1));
            if (y < m.top && x >= m.left) value = fade(y + m.top, edge(std::min(x, W - m.right - 1), m.top));
            result.push_back(value);
        }
    return result;
}

double meanOf(const std::vector<u8>& plane)
{
    return std::accumulate(plane.begin(), plane.end(), 0.0) / static_cast<double>(plane.size());
}

std::vector<u8> channelOf(const std::vector<u8>& elements, int channels, int c)
{
    std::vector<u8> plane;
    for (std::size_t i = static_cast<std::size_t>(c); i < elements.size(); i += static_cast<std::size_t>(channels))
        plane.push_back(elements[i]);
    return plane;
}

const Margins margins[] = {{4, 4, 4, 4}, {0, 0, 0, 0}, {3, 9, 5, 2}, {40, 0, 30, 1}, {0, 25, 0, 31}};

/// Red fades to the mean of slot 0, wherever red lies, and blue to that of slot 2.
void expectFramed(VexaSize size, int channels, VexaChannelSeq sequence, const Margins& m)
{
    SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << ", " << channels << " channels, sequence "
                                    << sequence << ", margins " << m.left << ", " << m.right << ", " << m.top << ", "
                                    << m.bottom);
    VexaImage src = noise<u8>(size, channels, 91);
    VexaImage dst(size.width + m.left + m.right, size.height + m.top + m.bottom, src.type());
    src.setChannelSequence(sequence);
    dst.setChannelSequence(sequence);
    ASSERT_EQ(taper(src, dst, m), success);
    const std::vector<u8> pixels = download<u8>(src);
    const std::vector<u8> frame = download<u8>(dst);
    for (int c = 0; c < channels; ++c) {
        const int meanSlot = channels == 3 && sequence == VEXA_CHANNEL_SEQ_BGR ? 2 - c : c;
        EXPECT_EQ(channelOf(frame, channels, c),
                  framed(channelOf(pixels, channels, c), meanOf(channelOf(pixels, channels, meanSlot)), size, m));
    }
}

TEST(Taper, FadesByItsFourTests)
{
    for (const VexaSize& size : {VexaSize(20, 13), VexaSize(9, 31), VexaSize(2, 1)})
        for (const Margins& m : margins) {
            expectFramed(size, 1, VEXA_CHANNEL_SEQ_NONE, m);
            expectFramed(size, 3, VEXA_CHANNEL_SEQ_RGB, m);
            expectFramed(size, 3, VEXA_CHANNEL_SEQ_BGR, m);
        }
}

/// The first column behind the image equals its edge, the one before it has faded for twice the margin less one.
TEST(Taper, DistancesByHand)
{
    std::vector<u8> rows(40, 0);
    std::fill(rows.begin() + 20, rows.end(), static_cast<u8>(200));
    const VexaImage src = imageOf<u8>({20, 2}, 1, rows);
    VexaImage dst;
    ASSERT_EQ(taper(src, dst, {4, 4, 0, 0}), success);
    const std::vector<u8> pixels = download<u8>(dst);
    EXPECT_EQ(pixels[24], 0);
    EXPECT_EQ(pixels[28 + 24], 200);
    EXPECT_EQ(pixels[3], 70);  // 0 + 100 * 7 / 10
    EXPECT_EQ(pixels[28 + 3], 130);
}

TEST(Taper, FrameOfAnotherSizeIsClipped)
{
    const VexaImage src = noise<u8>({20, 13}, 1, 92);
    const std::vector<u8> pixels = download<u8>(src);
    for (const VexaSize& size : {VexaSize(11, 9), VexaSize(60, 50), VexaSize(3, 3), VexaSize(1, 1)}) {
        VexaImage dst(size, VEXA_8UC1);
        fillBuffer(dst, 0xA5);
        ASSERT_EQ(taper(src, dst, {4, 3, 2, 6}), success);
        const std::vector<u8> frame = download<u8>(dst);
        for (int y = 2; y < std::min(size.height - 6, 15); ++y)
            for (int x = 4; x < std::min(size.width - 3, 24); ++x)
                EXPECT_EQ(frame[static_cast<std::size_t>(y * size.width + x)],
                          pixels[static_cast<std::size_t>((y - 2) * 20 + x - 4)]);
        expectGaps(dst, 0xA5);
    }
}

TEST(Taper, Checks)
{
    VexaImage dst;
    EXPECT_EQ(taper(VexaImage(), dst, {1, 1, 1, 1}), VEXA_IMAGE_NOT_INITIALIZED);
    const VexaImage src = noise<u8>({8, 6}, 1, 93);
    for (VexaImage other : {VexaImage(10, 8, VEXA_8UC3), VexaImage(10, 8, VEXA_16UC1)})
        EXPECT_EQ(taper(src, other, {1, 1, 1, 1}), VEXA_NOT_SUPPORTED_MODE_ERROR);
    VexaImage created;
    EXPECT_EQ(taper(VexaImage(8, 6, VEXA_16UC1), created, {1, 1, 1, 1}), VEXA_TYPE_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(created.width(), 10);
    VexaScalar unused;
    const VexaImage twoChannels(8, 6, VEXA_8UC2);
    VexaImage createdToo;
    EXPECT_EQ(taper(twoChannels, createdToo, {1, 1, 1, 1}), vexa::imageStatistics::mean(twoChannels, unused));
}

}  // namespace
