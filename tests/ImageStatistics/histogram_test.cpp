/// @file
/// VexaHistogram and calcHist.

#include <numeric>

#include "images.h"

namespace {

using namespace kit;
namespace st = vexa::imageStatistics;

constexpr VexaPointerType locations[] = {VEXA_PTR_DEVICE, VEXA_PTR_HOST, VEXA_PTR_HOST_PAGE_LOCKED};

/// Bins on the host. Those in device memory are fetched as pixels.
std::vector<Vexa32u> binsOf(const VexaHistogram& hist)
{
    const auto count = static_cast<std::size_t>(hist.binCount());
    if (hist.location() != VEXA_PTR_DEVICE) return std::vector<Vexa32u>(hist.hist(), hist.hist() + count);
    std::vector<Vexa32u> bins(count);
    // A bin at a time, by the sum of a row of 16-bit halves: the library has no copy from a plain device pointer.
    for (std::size_t i = 0; i < count; ++i) {
        VexaScalar low, high;
        auto* const halves = reinterpret_cast<Vexa16u*>(const_cast<Vexa32u*>(hist.hist() + i));
        EXPECT_EQ(vexa_sum_16u<1>(halves, low.vals(), 1, 1, 2, nullptr), VEXA_SUCCESS);
        EXPECT_EQ(vexa_sum_16u<1>(halves + 1, high.vals(), 1, 1, 2, nullptr), VEXA_SUCCESS);
        bins[i] = static_cast<Vexa32u>(low[0] + 65536 * high[0]);
    }
    return bins;
}

std::vector<Vexa32u> countsOf(const VexaImage& image)
{
    std::vector<Vexa32u> counts(static_cast<std::size_t>(256 * image.channels()), 0);
    const std::vector<u8> elements = download<u8>(image);
    for (std::size_t i = 0; i < elements.size(); ++i)
        ++counts[256 * (i % static_cast<std::size_t>(image.channels())) + elements[i]];
    return counts;
}

TEST(Histogram, StartsEmpty)
{
    VexaHistogram hist;
    EXPECT_FALSE(hist.isInitialized());
    EXPECT_EQ(hist.hist(), nullptr);
    EXPECT_EQ(hist.binCount(), 0);
    EXPECT_EQ(hist.release(), VEXA_SUCCESS);
}

TEST(Histogram, CreatesClearedBinsAndReleasesThem)
{
    struct Row {
        VexaType type;
        int bins;
    };
    for (const VexaPointerType location : locations) {
        for (const Row& row :
             {Row{VEXA_8UC1, 256}, Row{VEXA_8UC3, 768}, Row{VEXA_16UC1, 65536}, Row{VEXA_16UC3, 196608}}) {
            VexaHistogram hist(row.type, location);
            EXPECT_TRUE(hist.isInitialized());
            EXPECT_EQ(hist.binCount(), row.bins);
            EXPECT_EQ(hist.type(), row.type);
            EXPECT_EQ(hist.location(), location);
        }
        VexaHistogram hist(100, location);
        EXPECT_EQ(hist.type(), VEXA_UNKNOWN_TYPE);
        EXPECT_EQ(binsOf(hist), std::vector<Vexa32u>(100, 0));
        // The two forms differ on an initialised histogram.
        const Vexa32u* const bins = hist.hist();
        EXPECT_EQ(hist.create(VEXA_8UC1, VEXA_PTR_HOST), VEXA_SUCCESS);
        EXPECT_EQ(hist.create(256, VEXA_PTR_HOST), VEXA_INVALID_ARG_ERROR);
        EXPECT_EQ(hist.hist(), bins);
        EXPECT_EQ(hist.binCount(), 100);
        for (int time = 0; time < 2; ++time) {
            EXPECT_EQ(hist.release(), VEXA_SUCCESS);
            EXPECT_FALSE(hist.isInitialized());
            EXPECT_EQ(hist.hist(), nullptr);
            EXPECT_EQ(hist.binCount(), 0);
            EXPECT_EQ(hist.type(), VEXA_NO_TYPE);
            EXPECT_EQ(hist.location(), VEXA_PTR_NONE);
        }
        EXPECT_EQ(hist.create(7, location), VEXA_SUCCESS);
    }
}

TEST(Histogram, RefusesWhatItCannotHold)
{
    VexaHistogram hist;
    EXPECT_EQ(hist.create(0, VEXA_PTR_HOST), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(hist.create(-1, VEXA_PTR_DEVICE), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(hist.create(100, VEXA_PTR_NONE), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(hist.create(VEXA_8UC1, VEXA_PTR_NONE), VEXA_INVALID_ARG_ERROR);
    for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
        const auto type = static_cast<VexaType>(row);
        if (type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3) continue;
        EXPECT_EQ(hist.create(type, VEXA_PTR_HOST), VEXA_TYPE_NOT_SUPPORTED_ERROR) << row;
    }
    EXPECT_FALSE(hist.isInitialized());
}

TEST(CalcHist, CountsEveryValueOfEachChannel)
{
    std::vector<VexaSize> sizes = edgeSizes();
    sizes.push_back({1021, 403});
    for (const VexaSize& size : sizes)
        for (const int channels : {1, 3}) {
            const VexaImage image = noise<u8>(size, channels, 1);
            VexaHistogram hist;
            ASSERT_EQ(st::calcHist(image, hist), VEXA_SUCCESS);
            EXPECT_EQ(hist.type(), image.type());
            EXPECT_EQ(hist.location(), VEXA_PTR_HOST);
            EXPECT_EQ(binsOf(hist), countsOf(image));
        }
    // All pixels meet in one bin.
    VexaHistogram hist;
    ASSERT_EQ(st::calcHist(constant<u8>({1021, 403}, 3, 200), hist), VEXA_SUCCESS);
    EXPECT_EQ(hist.hist()[200], 1021U * 403U);
    EXPECT_EQ(hist.hist()[512 + 200], 1021U * 403U);
    EXPECT_EQ(std::accumulate(hist.hist(), hist.hist() + 768, 0U), 3U * 1021U * 403U);
}

TEST(CalcHist, AddsUpInDeviceMemoryAlone)
{
    const VexaImage image = noise<u8>({67, 50}, 1, 1);
    std::vector<Vexa32u> expected = countsOf(image);
    for (const VexaPointerType location : locations) {
        VexaHistogram hist(VEXA_8UC1, location);
        ASSERT_EQ(st::calcHist(image, hist), VEXA_SUCCESS);
        EXPECT_EQ(binsOf(hist), expected);
        ASSERT_EQ(st::calcHist(image, hist), VEXA_SUCCESS);
        std::vector<Vexa32u> twice = expected;
        for (Vexa32u& bin : twice) bin *= location == VEXA_PTR_DEVICE ? 2 : 1;
        EXPECT_EQ(binsOf(hist), twice);
    }
}

/// More bins than the image needs are left alone; fewer are refused instead of written past their end.
TEST(CalcHist, BinsAndChannels)
{
    const VexaImage gray = noise<u8>({67, 50}, 1, 1);
    const VexaImage colour = noise<u8>({67, 50}, 3, 1);
    for (const VexaPointerType location : locations) {
        VexaHistogram large(VEXA_8UC3, location);
        EXPECT_EQ(st::calcHist(gray, large), VEXA_SUCCESS);
        std::vector<Vexa32u> expected = countsOf(gray);
        expected.resize(768, 0);
        EXPECT_EQ(binsOf(large), expected);
        VexaHistogram small(VEXA_8UC1, location);
        EXPECT_EQ(st::calcHist(colour, small), VEXA_NOT_SUPPORTED_MODE_ERROR);
        EXPECT_EQ(vexa_get_hist_8u(colour.ptr<u8>(), small, 67, 50, colour.pitch(), 3, nullptr),
                  VEXA_NOT_SUPPORTED_MODE_ERROR);
        VexaHistogram other(255, location);
        EXPECT_EQ(st::calcHist(gray, other), VEXA_NOT_SUPPORTED_MODE_ERROR);
        EXPECT_EQ(st::calcHist(VexaImage(5, 3, VEXA_8UC2), small), VEXA_CHANNEL_NOT_SUPPORTED_ERROR);
        EXPECT_EQ(st::calcHist(VexaImage(5, 3, VEXA_8UC4), large), VEXA_CHANNEL_NOT_SUPPORTED_ERROR);
    }
}

TEST(CalcHist, Statuses)
{
    VexaHistogram hist;
    EXPECT_EQ(st::calcHist(VexaImage(), hist), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(st::calcHist(VexaImage(5, 3, VEXA_16UC1), hist), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(st::calcHist(VexaImage(5, 3, VEXA_8UC2), hist), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_EQ(st::calcHist(VexaImage(5, 3, VEXA_8SC1), hist), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_FALSE(hist.isInitialized());
}

}  // namespace
