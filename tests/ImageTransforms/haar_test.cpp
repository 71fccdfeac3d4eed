/// @file
/// The Haar transform against its formulas in whole numbers, round trips that work and those that lose, and the checks.

#include "images.h"

namespace {

using namespace kit;
namespace it = vexa::imageTransforms;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;

struct Subbands {
    VexaImage approx, x, y, xy;
};

Subbands forward(const VexaImage& src)
{
    Subbands bands;
    EXPECT_EQ(it::haarFwd(src, bands.approx, bands.x, bands.y, bands.xy), success);
    return bands;
}

VexaImage inverse(const Subbands& bands)
{
    VexaImage dst;
    EXPECT_EQ(it::haarInv(bands.approx, bands.x, bands.y, bands.xy, dst), success);
    return dst;
}

/// The element of an image at a column of pixels, a row and a channel.
struct Elements {
    explicit Elements(const VexaImage& image)
        : width(image.width()), channels(image.channels()), values(download<u8>(image))
    {}
    int operator()(int x, int y, int c) const
    {
        return values[static_cast<std::size_t>((y * width + x) * channels + c)];
    }

    int width, channels;
    std::vector<u8> values;
};

/// expected(x, y, c) for every element.
template <typename Formula>
void expectPixels(const VexaImage& image, const Formula& expected)
{
    const int channels = image.channels(), width = image.width();
    expectElements<u8>(image, [&](std::size_t i) -> double {
        const int pixel = static_cast<int>(i) / channels;
        return expected(pixel % width, pixel / width, static_cast<int>(i) % channels);
    });
}

const VexaSize evenSizes[] = {{2, 2}, {16, 18}, {34, 66}, {640, 4}, {2, 130}, {1030, 66}};

/// Four pixels at a time, by the signs of the second column and the second row. Quarters are dropped, and so is what is
/// negative.
TEST(HaarFwd, SplitsIntoSubbands)
{
    for (const VexaSize& size : evenSizes)
        for (const int channels : {1, 3}) {
            SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << "x" << channels);
            const VexaImage src = noise<u8>(size, channels, 11);
            const Elements from(src);
            const VexaSize half(size.width / 2, size.height / 2);
            VexaImage bands[4];
            for (VexaImage& band : bands) {
                band.create(half, src.type());
                fillBuffer(band, 0xA5);
            }
            ASSERT_EQ(it::haarFwd(src, bands[0], bands[1], bands[2], bands[3]), success);
            for (int i = 0; i < 4; ++i) {
                const int signX = i % 2 == 1 ? -1 : 1, signY = i / 2 == 1 ? -1 : 1;
                expectPixels(bands[i], [&](int x, int y, int c) {
                    const int sum = from(2 * x, 2 * y, c) + signX * from(2 * x + 1, 2 * y, c) +
                                    signY * (from(2 * x, 2 * y + 1, c) + signX * from(2 * x + 1, 2 * y + 1, c));
                    return sum < 0 ? 0 : sum / 4;
                });
                expectGaps(bands[i], 0xA5);
            }
        }
}

/// Sums wrap at 256, and what is negative is 0.
TEST(HaarInv, JoinsSubbands)
{
    for (const VexaSize& size : evenSizes)
        for (const int channels : {1, 3}) {
            SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << "x" << channels);
            const VexaSize half(size.width / 2, size.height / 2);
            const Subbands bands = {noise<u8>(half, channels, 12), noise<u8>(half, channels, 13),
                                    noise<u8>(half, channels, 14), noise<u8>(half, channels, 15)};
            const Elements approx(bands.approx), detailX(bands.x), detailY(bands.y), detailXY(bands.xy);
            VexaImage dst(size, bands.approx.type());
            fillBuffer(dst, 0xA5);
            ASSERT_EQ(it::haarInv(bands.approx, bands.x, bands.y, bands.xy, dst), success);
            expectPixels(dst, [&](int x, int y, int c) {
                const int signX = x % 2 == 1 ? -1 : 1, signY = y % 2 == 1 ? -1 : 1;
                const int sum = approx(x / 2, y / 2, c) + signX * detailX(x / 2, y / 2, c) +
                                signY * (detailY(x / 2, y / 2, c) + signX * detailXY(x / 2, y / 2, c));
                return sum < 0 ? 0 : sum % 256;
            });
            expectGaps(dst, 0xA5);
        }
}

TEST(Haar, PairsByHand)
{
    const Subbands rising = forward(imageOf<u8>({2, 2}, 1, {10, 20, 10, 20}));
    EXPECT_EQ(download<u8>(rising.approx)[0], 15);
    EXPECT_EQ(download<u8>(rising.x)[0], 0);
    const Subbands falling = forward(imageOf<u8>({2, 2}, 1, {20, 10, 20, 10}));
    EXPECT_EQ(download<u8>(falling.approx)[0], 15);
    EXPECT_EQ(download<u8>(falling.x)[0], 5);
}

/// Constants and slopes down to the right and to the bottom come back; slopes up lose their details.
TEST(Haar, RestoresWhatHasNoNegativeDetail)
{
    const auto slope = [](int step) {
        std::vector<u8> pixels;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x)
                for (int c = 0; c < 3; ++c) pixels.push_back(static_cast<u8>(128 + step * (x + 2 * y)));
        return imageOf<u8>({16, 16}, 3, pixels);
    };
    for (const VexaImage& kept : {constant<u8>({16, 16}, 3, 77), slope(-2)})
        EXPECT_EQ(download<u8>(inverse(forward(kept))), download<u8>(kept));
    const Subbands lost = forward(slope(2));
    EXPECT_EQ(download<u8>(lost.x), std::vector<u8>(8 * 8 * 3, 0));
    EXPECT_NE(download<u8>(inverse(lost)), download<u8>(slope(2)));
}

/// Only what a subband of the right size would hold is written.
TEST(Haar, LargerDestinationsKeepTheirRest)
{
    const VexaImage src = noise<u8>({8, 8}, 1, 16);
    Subbands bands;
    bands.x = constant<u8>({9, 6}, 1, 200);
    ASSERT_EQ(it::haarFwd(src, bands.approx, bands.x, bands.y, bands.xy), success);
    const Elements expected(forward(src).x);
    expectPixels(bands.x, [&](int x, int y, int c) { return x < 4 && y < 4 ? expected(x, y, c) : 200; });

    VexaImage tall = constant<u8>({8, 11}, 1, 200);
    const Subbands exact = forward(src);
    ASSERT_EQ(it::haarInv(exact.approx, exact.x, exact.y, exact.xy, tall), success);
    const Elements joined(inverse(exact));
    expectPixels(tall, [&](int x, int y, int c) { return y < 8 ? joined(x, y, c) : 200; });
}

/// Sizes that nobody compares must do no harm: smaller subbands and destinations, to write to and to read from.
TEST(Haar, SmallerImagesAreNotOverrun)
{
    const VexaImage src = noise<u8>({66, 34}, 3, 17);
    Subbands bands;
    bands.approx.create(33, 17, VEXA_8UC3);
    bands.x.create(1, 1, VEXA_8UC3);
    bands.xy.create(33, 2, 99, 8, 3);
    (void)it::haarFwd(src, bands.approx, bands.x, bands.y, bands.xy);
    VexaImage low(66, 5, VEXA_8UC3);
    (void)it::haarInv(bands.approx, bands.x, bands.y, bands.xy, low);
    VexaImage dst;
    (void)it::haarInv(bands.approx, bands.x, bands.xy, bands.x, dst);
    EXPECT_EQ(dst.width(), 66);
    EXPECT_EQ(dst.height(), 34);
}

TEST(HaarFwd, RefusesWhatItDoesNotServe)
{
    Subbands bands;
    const auto split = [&](const VexaImage& src) { return it::haarFwd(src, bands.approx, bands.x, bands.y, bands.xy); };
    EXPECT_EQ(split(VexaImage()), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(split(VexaImage(7, 8, VEXA_8UC1)), mode);
    EXPECT_EQ(split(VexaImage(8, 7, VEXA_8UC1)), mode);
    EXPECT_FALSE(bands.approx.isInitialized());
    EXPECT_EQ(split(VexaImage(8, 6, VEXA_16UC1)), VEXA_TYPE_NOT_SUPPORTED_ERROR);
    for (const VexaImage* band : {&bands.approx, &bands.x, &bands.y, &bands.xy}) {
        ASSERT_TRUE(band->isInitialized());
        EXPECT_EQ(band->type(), VEXA_16UC1);
        EXPECT_EQ(band->width(), 4);
        EXPECT_EQ(band->height(), 3);
    }
    for (int wrong = 0; wrong < 4; ++wrong) {
        VexaImage images[4];
        images[wrong].create(4, 3, VEXA_8UC1);
        EXPECT_EQ(it::haarFwd(VexaImage(8, 6, VEXA_8UC3), images[0], images[1], images[2], images[3]), mode);
        for (int i = 0; i < 4; ++i) EXPECT_EQ(images[i].isInitialized(), i <= wrong);
    }
}

TEST(HaarInv, RefusesWhatItDoesNotServe)
{
    const VexaImage band = constant<u8>({4, 3}, 1, 1);
    const VexaImage deep(4, 3, VEXA_16UC1);
    const VexaImage none;
    VexaImage dst;
    for (int missing = 0; missing < 4; ++missing) {
        const auto or_ = [&](int i) -> const VexaImage& { return i == missing ? none : band; };
        EXPECT_EQ(it::haarInv(or_(0), or_(1), or_(2), or_(3), dst), VEXA_IMAGE_NOT_INITIALIZED);
    }
    VexaImage narrow(7, 6, VEXA_16UC1), other(8, 6, VEXA_8UC3);
    EXPECT_EQ(it::haarInv(band, band, band, band, narrow), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(it::haarInv(band, band, band, band, other), mode);
    EXPECT_EQ(it::haarInv(deep, band, band, band, dst), mode);
    ASSERT_TRUE(dst.isInitialized());
    EXPECT_EQ(dst.type(), VEXA_16UC1);
    EXPECT_EQ(dst.width(), 8);
}

}  // namespace
