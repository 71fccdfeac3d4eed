/// @file
/// Minimum, maximum, and the two filters whose names are crossed: medianFilter gives the most frequent value of the
/// window, modeFilter the middle one.

#include <array>
#include <functional>

#include "flat_rows.h"

namespace {

using namespace kit;
namespace filtering = vexa::imageFiltering;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;

using RankFilter = VexaStatus (*)(const VexaImage&, VexaImage&, const VexaRect&, const VexaSize&, const VexaStream&);

VexaStatus apply(RankFilter filter, const VexaImage& src, VexaImage& dst, const VexaRect& roi, const VexaSize& size)
{
    return filter(src, dst, roi, size, VexaStream(false));
}

VexaRect whole(const VexaImage& image)
{
    return {0, 0, image.width(), image.height()};
}

/// Noise of a few values, so that some are more frequent than others.
VexaImage fewValues(VexaSize size, int channels, int values)
{
    VexaImage image = noise<u8>(size, channels, 41);
    std::vector<u8> elements = download<u8>(image);
    for (u8& element : elements) element = static_cast<u8>(element % values * (255 / values));
    upload(image, elements);
    return image;
}

// ---- minimum and maximum ----

struct Extreme {
    RankFilter filter;
    u8 start;
    const u8& (*pick)(const u8&, const u8&);
};

const Extreme extremes[] = {{filtering::minFilter, 255, std::min<u8>}, {filtering::maxFilter, 0, std::max<u8>}};

/// Only the rectangle is read, and its own edges repeat. The window counts columns by its height, from an anchor that
/// comes from its width.
u8 extremeAt(const Extreme& extreme, const FlatRows<u8>& rectangle, VexaSize window, int x, int y)
{
    u8 result = extreme.start;
    for (int i = 0; i < window.height; ++i)
        for (int j = 0; j < window.width; ++j)
            result = extreme.pick(result, rectangle(x + rectangle.channels * ((1 - window.width) / 2 + i),
                                                    y + (1 - window.height) / 2 + j));
    return result;
}

void expectExtremes(VexaSize size, int channels, const VexaRect& roi, VexaSize window)
{
    SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << ", " << channels << " channels, rectangle "
                                    << roi.x << ", " << roi.y << ", " << roi.width << ", " << roi.height << ", window "
                                    << window.width << "x" << window.height);
    const VexaImage src = noise<u8>(size, channels, 42);
    const FlatRows<u8> all(src);
    VexaImage part(VexaSize(roi.width, roi.height), src.type());
    ASSERT_EQ(src.copyTo(part, {0, 0}, roi), success);
    const FlatRows<u8> rectangle(part);
    for (const Extreme& extreme : extremes) {
        VexaImage inPlace(src);
        VexaImage dst;
        ASSERT_EQ(apply(extreme.filter, src, dst, roi, window), success);
        ASSERT_EQ(apply(extreme.filter, inPlace, inPlace, roi, window), success);
        expectElements<u8>(dst, [&](std::size_t i) {
            const int x = all.column(i) - channels * roi.x;
            const int y = all.row(i) - roi.y;
            const bool inside = x >= 0 && y >= 0 && x < channels * roi.width && y < roi.height;
            return double(inside ? extremeAt(extreme, rectangle, window, x, y) : all(all.column(i), all.row(i)));
        });
        EXPECT_EQ(download<u8>(inPlace), download<u8>(dst));
    }
}

TEST(MinAndMaxFilter, SeeTheRectangleAlone)
{
    const VexaSize windows[] = {{1, 1}, {3, 3}, {2, 2}, {5, 3}, {3, 8}, {15, 15}, {31, 31}, {1, 90}, {0, 3}, {3, -1}};
    for (const int channels : {1, 3})
        for (const VexaSize& window : windows) {
            for (const VexaSize& size : edgeSizes())
                expectExtremes(size, channels, {0, 0, size.width, size.height}, window);
            expectExtremes({67, 45}, channels, {5, 7, 40, 30}, window);
            expectExtremes({67, 45}, channels, {66, 44, 1, 1}, window);
        }
    expectExtremes({700, 150}, 3, {11, 3, 681, 140}, {7, 7});
}

TEST(MinAndMaxFilter, Checks)
{
    const VexaImage src = constant<u8>({8, 6}, 1, 9);
    const VexaRect outside[] = {{-1, 0, 2, 2}, {0, -1, 2, 2}, {8, 0, 1, 1}, {0, 6, 1, 1}, {1, 0, 8, 6}, {0, 1, 8, 6}};
    for (const Extreme& extreme : extremes) {
        for (const VexaRect& roi : outside) {
            VexaImage dst;
            EXPECT_EQ(apply(extreme.filter, src, dst, roi, {3, 3}), VEXA_INVALID_ROI_ERROR);
            EXPECT_EQ(dst.type(), VEXA_8UC1);
        }
    }
}

// ---- the most frequent and the middle value ----

struct Ranked {
    RankFilter filter;
    u8 (*pick)(const std::vector<u8>& sorted);
};

u8 middle(const std::vector<u8>& sorted)
{
    return sorted[sorted.size() / 2];
}

u8 mostFrequent(const std::vector<u8>& sorted)
{
    std::array<int, 256> counts = {};
    for (const u8 value : sorted) ++counts[value];
    return static_cast<u8>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

const Ranked ranked[] = {{filtering::medianFilter, mostFrequent}, {filtering::modeFilter, middle}};

void expectRanked(const VexaImage& src, int side)
{
    SCOPED_TRACE(testing::Message() << src.width() << "x" << src.height() << ", " << src.channels()
                                    << " channels, window of " << side);
    const FlatRows<u8> rows(src);
    for (const Ranked& filter : ranked) {
        VexaImage dst(src.size(), src.type());
        fillBuffer(dst, 0xA5);
        ASSERT_EQ(apply(filter.filter, src, dst, whole(src), {side, side}), success);
        expectElements<u8>(dst, [&](std::size_t index) {
            std::vector<u8> window;
            for (int dx = -(side / 2); dx <= side / 2; ++dx)
                for (int dy = -(side / 2); dy <= side / 2; ++dy)
                    window.push_back(rows(rows.column(index) + rows.channels * dx, rows.row(index) + dy));
            std::sort(window.begin(), window.end());
            return double(filter.pick(window));
        });
        expectGaps(dst, 0xA5);
    }
}

TEST(MedianAndModeFilter, AreCrossed)
{
    std::vector<VexaSize> sizes = edgeSizes();
    sizes.push_back({530, 66});
    for (const VexaSize& size : sizes)
        for (const int channels : {1, 3})
            for (const int side : {3, 5, 7, 9}) {
                expectRanked(noise<u8>(size, channels, 43), side);
                expectRanked(fewValues(size, channels, 7), side);
            }
}

TEST(MedianAndModeFilter, WindowsByHand)
{
    const struct {
        std::vector<u8> window;
        u8 median, mode;
    } windows[] = {{{7, 2, 1, 6, 2, 5, 1, 3, 4}, 1, 3}, {{90, 20, 30, 80, 50, 60, 70, 40, 10}, 10, 50}};
    for (const auto& expected : windows) {
        const VexaImage src = imageOf<u8>({3, 3}, 1, expected.window);
        VexaImage dst;
        ASSERT_EQ(apply(filtering::medianFilter, src, dst, whole(src), {3, 3}), success);
        EXPECT_EQ(download<u8>(dst)[4], expected.median);
        ASSERT_EQ(apply(filtering::modeFilter, src, dst, whole(src), {3, 3}), success);
        EXPECT_EQ(download<u8>(dst)[4], expected.mode);
    }
}

/// The rectangle has no effect; the channel sequence travels.
TEST(MedianAndModeFilter, Checks)
{
    VexaImage src = noise<u8>({8, 6}, 3, 44);
    src.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    for (const Ranked& filter : ranked) {
        for (const VexaSize& size : {VexaSize(11, 11), VexaSize(3, 5), VexaSize(1, 1), VexaSize(4, 4)}) {
            VexaImage dst;
            EXPECT_EQ(apply(filter.filter, src, dst, whole(src), size), mode);
        }
        VexaImage all, elsewhere;
        EXPECT_EQ(apply(filter.filter, src, all, whole(src), {3, 3}), success);
        EXPECT_EQ(apply(filter.filter, src, elsewhere, {-50, 70, 3, 900}, {3, 3}), success);
        EXPECT_EQ(download<u8>(all), download<u8>(elsewhere));
        EXPECT_EQ(all.channelSeq(), VEXA_CHANNEL_SEQ_RGB);
    }
}

TEST(RankFilters, ServeBytesOfOneAndThreeChannels)
{
    const struct {
        RankFilter filter;
        VexaStatus refused;
    } filters[] = {{filtering::minFilter, mode},
                   {filtering::maxFilter, mode},
                   {filtering::medianFilter, VEXA_TYPE_NOT_SUPPORTED_ERROR},
                   {filtering::modeFilter, VEXA_TYPE_NOT_SUPPORTED_ERROR}};
    for (const auto& [filter, refused] : filters) {
        VexaImage dst;
        EXPECT_EQ(apply(filter, VexaImage(), dst, {0, 0, 1, 1}, {3, 3}), VEXA_IMAGE_NOT_INITIALIZED);
        const VexaImage src(5, 3, VEXA_8UC1);
        for (VexaImage other : {VexaImage(6, 3, VEXA_8UC1), VexaImage(5, 4, VEXA_8UC1), VexaImage(5, 3, VEXA_16UC1),
                                VexaImage(5, 3, VEXA_8UC3)})
            EXPECT_EQ(apply(filter, src, other, {0, 0, 1, 1}, {3, 3}), mode);
        for (int t = VEXA_8UC1; t <= VEXA_64FC4; ++t) {
            const auto type = static_cast<VexaType>(t);
            VexaImage created;
            EXPECT_EQ(apply(filter, VexaImage(5, 3, type), created, {0, 0, 1, 1}, {3, 3}),
                      type == VEXA_8UC1 || type == VEXA_8UC3 ? success : refused)
                << t;
            EXPECT_EQ(created.type(), type);
        }
    }
}

}  // namespace
