/// @file
/// Enhancement of underwater images against its pipeline of public operations.

#include <array>
#include <cmath>
#include <numeric>

#include "images.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;
namespace filtering = vexa::imageFiltering;

constexpr VexaStatus success = VEXA_SUCCESS;

const VexaEnhancementParams params(true, 3, 0.5);

/// Channels of few values, the strongest in slot `strongest`.
VexaImage tinted(int strongest)
{
    VexaImage image = noise<u8>({67, 45}, 3, 131);
    std::vector<u8> elements = download<u8>(image);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const std::size_t c = i % 3;
        elements[i] =
            static_cast<u8>(20 + 10 * c + elements[i] % (c == static_cast<std::size_t>(strongest) ? 150 : 60));
    }
    upload(image, elements);
    return image;
}

/// Column 1 of the rows that belong to the weaker channels grows by their distance from the strongest.
void compensate(const VexaScalar& means, int strongest, float (&mix)[12])
{
    for (int c = 0; c < 3; ++c)
        if (c != strongest)
            mix[4 * c + 1] += (static_cast<float>(means[strongest]) - static_cast<float>(means[c])) / 255.0F;
}

std::vector<u8> stretched(const std::vector<u8>& plane, double highShare)
{
    std::array<float, 256> count = {};
    for (const u8 value : plane) count[value] += 1;
    std::partial_sum(count.begin(), count.end(), count.begin());
    const float pixels = static_cast<float>(plane.size());
    int low = 0;
    while (low < 255 && !(count[static_cast<std::size_t>(low)] > pixels * 1.01F / 100.0F)) ++low;
    int high = 255;
    while (high >= 0 && count[static_cast<std::size_t>(high)] > pixels * static_cast<float>(highShare)) --high;
    std::vector<u8> result;
    for (const u8 value : plane)
        result.push_back(value < low     ? 0
                         : value >= high ? 255
                                         : static_cast<u8>((value - low) * 255 / (high - low + 0.5)));
    return result;
}

TEST(Underwater, IsItsPipeline)
{
    for (const int strongest : {0, 1, 2}) {
        const VexaImage src = tinted(strongest);
        VexaScalar means;
        ASSERT_EQ(vexa::imageStatistics::mean(src, means), success);
        float mix[12] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
        compensate(means, strongest, mix);
        VexaImage corrected;
        ASSERT_EQ(co::channelMix(src, corrected, mix), success);
        const std::vector<u8> elements = download<u8>(corrected);
        std::vector<u8> expected(elements.size());
        for (std::size_t c = 0; c < 3; ++c) {
            std::vector<u8> plane;
            for (std::size_t i = c; i < elements.size(); i += 3) plane.push_back(elements[i]);
            plane = stretched(plane, c == 2 ? 0.9899 : 0.9699);
            for (std::size_t i = 0; i < plane.size(); ++i) expected[3 * i + c] = plane[i];
        }
        VexaImage dst, withOthers, narrow(src.width(), src.height(), 3 * src.width(), 8, 3);
        ASSERT_EQ(filtering::underwaterFilter(src, narrow, params), success);
        EXPECT_EQ(download<u8>(narrow), expected);
        ASSERT_EQ(filtering::underwaterFilter(src, dst, params), success);
        ASSERT_EQ(filtering::underwaterFilter(src, withOthers, VexaEnhancementParams(false, 0, -1)), success);
        EXPECT_EQ(download<u8>(dst), expected) << "strongest channel " << strongest;
        EXPECT_EQ(download<u8>(withOthers), expected);
    }
}

/// A channel without contrast leaves the destination as it was, without a sign.
TEST(Underwater, FlatChannelsChangeNothing)
{
    VexaImage dst = constant<u8>({8, 6}, 3, 77);
    EXPECT_EQ(filtering::underwaterFilter(constant<u8>({8, 6}, 3, 9), dst, params), success);
    EXPECT_EQ(download<u8>(dst), std::vector<u8>(144, 77));
    VexaImage created;
    EXPECT_EQ(filtering::underwaterFilter(constant<u8>({8, 6}, 3, 9), created, params), success);
    EXPECT_EQ(download<u8>(created), std::vector<u8>(144, 0));
}

TEST(Underwater, Checks)
{
    VexaImage dst;
    EXPECT_EQ(filtering::underwaterFilter(VexaImage(), dst, params), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(filtering::underwaterFilter(VexaImage(8, 6, VEXA_8UC1), dst, params), VEXA_TYPE_NOT_SUPPORTED_ERROR);
    EXPECT_FALSE(dst.isInitialized());
    for (VexaImage other : {VexaImage(9, 6, VEXA_8UC3), VexaImage(8, 7, VEXA_8UC3), VexaImage(8, 6, VEXA_16UC3)})
        EXPECT_EQ(filtering::underwaterFilter(VexaImage(8, 6, VEXA_8UC3), other, params),
                  VEXA_NOT_SUPPORTED_MODE_ERROR);
}

}  // namespace
