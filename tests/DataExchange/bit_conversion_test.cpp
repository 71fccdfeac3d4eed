/// @file
/// bitConversion: rescaling between numbers of data bits, its workers, and images that do not fit each other.

#include <cmath>

#include "images.h"

namespace {

using namespace kit;
namespace de = vexa::dataExchange;

/// Whether `result` is the value scaled by the ratio of the tops and truncated, give or take what float rounding does
/// to a quotient that is almost whole. The top, and what is above it, is exactly the top.
bool isRescaled(double result, double value, int from, int to)
{
    const double fromTop = (1 << from) - 1;
    const double toTop = (1 << to) - 1;
    if (value >= fromTop) return result == toTop;
    const double exact = value * toTop / fromTop;
    return result >= std::floor(exact * (1 - 2e-7)) && result <= std::floor(exact * (1 + 2e-7));
}

template <typename S, typename D>
void expectBits(int from, int to)
{
    for (const int channels : {1, 2, 3, 4})
        for (const VexaSize& size : edgeSizes()) {
            VexaImage src = noise<S>(size, channels, 1);
            VexaImage dst(size, formatOf<D>(channels));
            fillBuffer(dst, 0xA5);
            ASSERT_EQ(src.setDataBits(from), VEXA_SUCCESS);
            ASSERT_EQ(dst.setDataBits(to), VEXA_SUCCESS);
            ASSERT_EQ(de::bitConversion(src, dst), VEXA_SUCCESS);
            const std::vector<S> x = download<S>(src);
            const std::vector<D> y = download<D>(dst);
            for (std::size_t i = 0; i < x.size(); ++i)
                ASSERT_TRUE(isRescaled(y[i], x[i], from, to)) << x[i] << " of " << from << " bits gives " << y[i];
            expectGaps(dst, 0xA5);
        }
}

TEST(BitConversion, AllPairsOfDepths)
{
    expectBits<u8, u8>(8, 5);
    expectBits<u8, u8>(3, 8);
    expectBits<u8, u16>(8, 10);
    expectBits<u8, u16>(8, 16);
    expectBits<u16, u8>(10, 8);
    expectBits<u16, u8>(16, 1);
    expectBits<u16, u16>(12, 16);
    expectBits<u16, u16>(16, 12);
}

TEST(BitConversion, KnownValues)
{
    VexaImage tenBits = rowOf<u16>({0, 512, 1023, 5000});
    VexaImage bytes(tenBits.size(), VEXA_8UC1);
    ASSERT_EQ(tenBits.setDataBits(10), VEXA_SUCCESS);
    ASSERT_EQ(de::bitConversion(tenBits, bytes), VEXA_SUCCESS);
    EXPECT_EQ(download<u8>(bytes), (std::vector<u8>{0, 127, 255, 255}));

    VexaImage back(tenBits.size(), VEXA_16UC1);
    ASSERT_EQ(de::bitConversion(bytes, back), VEXA_SUCCESS);
    EXPECT_EQ(download<u16>(back)[2], 65535);
    ASSERT_EQ(back.setDataBits(10), VEXA_SUCCESS);
    ASSERT_EQ(de::bitConversion(bytes, back), VEXA_SUCCESS);
    EXPECT_EQ(download<u16>(back)[2], 1023);
}

TEST(BitConversion, KeepsTheTopOfEveryRange)
{
    VexaImage src = constant<u16>({3, 2}, 1, 65535);
    VexaImage dst(3, 2, VEXA_16UC1);
    for (int from = 1; from <= 16; ++from)
        for (int to = 1; to <= 16; ++to) {
            ASSERT_EQ(src.setDataBits(from), VEXA_SUCCESS);
            ASSERT_EQ(dst.setDataBits(to), VEXA_SUCCESS);
            ASSERT_EQ(de::bitConversion(src, dst), VEXA_SUCCESS);
            ASSERT_EQ(dst.get(2, 1, 0), (1 << to) - 1) << from << " to " << to;
        }
}

/// Without data bits every value is 0, though the factor between the ranges is infinite.
TEST(BitConversion, NoDataBits)
{
    VexaImage src = rowOf<u8>({0, 1, 255});
    VexaImage dst(src.size(), VEXA_16UC1);
    ASSERT_EQ(src.setDataBits(0), VEXA_SUCCESS);
    ASSERT_EQ(de::bitConversion(src, dst), VEXA_SUCCESS);
    EXPECT_EQ(download<u16>(dst), (std::vector<u16>{0, 0, 0}));
}

TEST(BitConversion, Statuses)
{
    const VexaImage image(4, 2, VEXA_8UC1);
    EXPECT_EQ(de::bitConversion(VexaImage(), image), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(de::bitConversion(image, VexaImage()), VEXA_IMAGE_NOT_INITIALIZED);
    for (const VexaType type : {VEXA_32FC1, VEXA_32SC1, VEXA_64FC1}) {
        EXPECT_EQ(de::bitConversion(image, VexaImage(4, 2, type)), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
        EXPECT_EQ(de::bitConversion(VexaImage(4, 2, type), image), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
    }
    EXPECT_EQ(de::bitConversion(VexaImage(4, 2, VEXA_16SC3), VexaImage(4, 2, VEXA_8UC3)), VEXA_SUCCESS)
        << "depths decide, signs and channels do not";
}

TEST(BitConversion, WorkersRefuseTooManyBits)
{
    VexaImage bytes = constant<u8>({4, 2}, 1, 200);
    VexaImage words = constant<u16>({4, 2}, 1, 200);
    u8* const b = bytes.ptr<u8>();
    u16* const w = words.ptr<u16>();
    const int bp = bytes.pitch();
    const int wp = words.pitch();
    EXPECT_EQ(vexa_bitConversion_8u(b, b, 4, bp, 2, 1, 9, 8, nullptr), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(vexa_bitConversion_8u(b, b, 4, bp, 2, 1, 8, 9, nullptr), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(vexa_bitConversion_16u(w, w, 4, wp, 2, 1, 17, 16, nullptr), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(vexa_bitConversion_16u(w, w, 4, wp, 2, 1, 16, 17, nullptr), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(vexa_bitConversion_8u_16u(b, w, 4, bp, 2, 1, wp, 9, 16, nullptr), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(vexa_bitConversion_8u_16u(b, w, 4, bp, 2, 1, wp, 8, 17, nullptr), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(vexa_bitConversion_16u_8u(w, b, 4, wp, 2, 1, bp, 17, 8, nullptr), VEXA_INVALID_ARG_ERROR);
    EXPECT_EQ(vexa_bitConversion_16u_8u(w, b, 4, wp, 2, 1, bp, 16, 9, nullptr), VEXA_INVALID_ARG_ERROR);
    expectElements<u8>(bytes, [](std::size_t) { return 200; });
    expectElements<u16>(words, [](std::size_t) { return 200; });
    EXPECT_EQ(vexa_bitConversion_8u(b, b, 4, bp, 2, 1, 8, 7, nullptr), VEXA_SUCCESS);
    expectElements<u8>(bytes, [](std::size_t) { return 99; });
}

/// The sizes of the images are not compared. Only what both hold is converted.
TEST(BitConversion, SmallerDestinationIsNotOverrun)
{
    const VexaImage src = constant<u16>({40, 30}, 3, 65535);
    VexaImage narrow(7, 5, VEXA_8UC1);
    fillBuffer(narrow, 1);
    ASSERT_EQ(de::bitConversion(src, narrow), VEXA_SUCCESS);
    expectElements<u8>(narrow, [](std::size_t) { return 255; });
    expectGaps(narrow, 1);

    const VexaImage tight(7, 5, 14, 16, 1);
    ASSERT_EQ(de::bitConversion(src, tight), VEXA_SUCCESS);
    EXPECT_EQ(tight.get(6, 0, 0), 65535);

    VexaImage larger = constant<u8>({50, 40}, 3, 9);
    ASSERT_EQ(de::bitConversion(src, larger), VEXA_SUCCESS);
    EXPECT_EQ(larger.get(39, 29, 2), 255);
    EXPECT_EQ(larger.get(40, 29, 0), 9);
    EXPECT_EQ(larger.get(39, 30, 0), 9);
}

}  // namespace
