/// @file
/// convertScale against a formula in double, over every supported pair of types.

#include <cmath>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace de = vexa::dataExchange;

/// An element after the conversion. The fused step is exact in double for these values, before its one rounding.
template <typename D>
double converted(double value, double scale, double offset)
{
    const double exact = static_cast<double>(static_cast<float>(value * scale + offset));
    if constexpr (std::is_integral_v<D>) {
        const double top = std::numeric_limits<D>::max();
        return exact < 0 ? 0 : exact > top ? top : std::trunc(exact);
    }
    return exact;
}

template <typename S, typename D>
void expectPair()
{
    struct Map {
        float scale;
        float offset;
    };
    const Map maps[] = {{1, 0}, {0.5F, 0.5F}, {-1, 100}, {300, -20}, {1 / 256.0F, 0}};
    for (const Map& map : maps)
        for (const int channels : {1, 3})
            for (const VexaSize& size : edgeSizes()) {
                const VexaImage src = noise<S>(size, channels, 3);
                VexaImage dst(size, formatOf<D>(channels));
                fillBuffer(dst, 0x5A);
                ASSERT_EQ(de::convertScale(src, dst, map.scale, map.offset), VEXA_SUCCESS);
                const std::vector<S> x = download<S>(src);
                expectElements<D>(dst, [&](std::size_t i) {
                    return converted<D>(static_cast<double>(x[i]), static_cast<double>(map.scale),
                                        static_cast<double>(map.offset));
                });
                expectGaps(dst, 0x5A);
            }
}

TEST(ConvertScale, AllPairsOfTypes)
{
    expectPair<u8, u8>();
    expectPair<u16, u16>();
    expectPair<f32, f32>();
    expectPair<u8, f32>();
    expectPair<u16, f32>();
    expectPair<u8, u16>();
    expectPair<f32, u8>();
    expectPair<f32, u16>();
    expectPair<u16, u8>();
}

TEST(ConvertScale, SaturatesAndTruncates)
{
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const VexaImage src = rowOf<f32>({-3.0F, 300.0F, 2.9F, -0.9F, 255.0F, 254.999F, nan, infinity, -infinity, 3e38F});
    VexaImage dst(src.size(), VEXA_8UC1);
    ASSERT_EQ(de::convertScale(src, dst, 1, 0), VEXA_SUCCESS);
    EXPECT_EQ(download<u8>(dst), (std::vector<u8>{0, 255, 2, 0, 255, 254, 0, 255, 0, 255}));
    VexaImage wide(src.size(), VEXA_16UC1);
    ASSERT_EQ(de::convertScale(src, wide, 1, 0), VEXA_SUCCESS);
    EXPECT_EQ(download<u16>(wide), (std::vector<u16>{0, 300, 2, 0, 255, 254, 0, 65535, 0, 65535}));
}

/// 1 + 2^-12 squared, less 1 + 2^-11: all of it is lost when the product is rounded by itself.
TEST(ConvertScale, FusesItsStep)
{
    const float value = 1.0F + 0x1p-12F;
    VexaImage dst;
    ASSERT_EQ(de::convertScale(rowOf<f32>({value}), dst, value, -(1.0F + 0x1p-11F)), VEXA_SUCCESS);
    EXPECT_EQ(download<f32>(dst)[0], 0x1p-24F);
}

TEST(ConvertScale, SupportsExactlyItsTable)
{
    const auto isServed = [](VexaType type) {
        return type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 ||
               type == VEXA_32FC1 || type == VEXA_32FC3;
    };
    for (int from = VEXA_8UC1; from <= VEXA_64FC4; ++from)
        for (int to = VEXA_8UC1; to <= VEXA_64FC4; ++to) {
            const VexaImage src(3, 2, static_cast<VexaType>(from));
            VexaImage dst(3, 2, static_cast<VexaType>(to));
            const bool supported = isServed(src.type()) && isServed(dst.type()) && src.channels() == dst.channels();
            ASSERT_EQ(de::convertScale(src, dst, 1, 0), supported ? VEXA_SUCCESS : VEXA_NOT_SUPPORTED_MODE_ERROR)
                << from << " to " << to;
        }
}

TEST(ConvertScale, ChecksInOrder)
{
    const VexaImage src = constant<u8>({5, 3}, 1, 10);
    VexaImage dst;
    EXPECT_EQ(de::convertScale(VexaImage(), dst, 1, 0), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_FALSE(dst.isInitialized());
    ASSERT_EQ(de::convertScale(src, dst, 2, 1), VEXA_SUCCESS);
    EXPECT_EQ(dst.type(), VEXA_8UC1) << "an empty destination takes the type of the source";
    expectElements<u8>(dst, [](std::size_t) { return 21; });

    const VexaImage misfits[] = {VexaImage(4, 3, VEXA_8UC1), VexaImage(5, 4, VEXA_8UC1), VexaImage(5, 3, VEXA_8UC3)};
    for (const VexaImage& misfit : misfits) {
        VexaImage other(misfit);
        EXPECT_EQ(de::convertScale(src, other, 1, 0), VEXA_NOT_SUPPORTED_MODE_ERROR);
    }
    VexaImage created;
    EXPECT_EQ(de::convertScale(VexaImage(5, 3, VEXA_8UC4), created, 1, 0), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_EQ(created.type(), VEXA_8UC4);
}

TEST(ConvertScale, RunsInPlace)
{
    VexaImage image = noise<u16>({67, 5}, 3, 1);
    const std::vector<u16> before = download<u16>(image);
    ASSERT_EQ(de::convertScale(image, image, 0.5F, 7), VEXA_SUCCESS);
    expectElements<u16>(image, [&](std::size_t i) { return std::trunc(before[i] * 0.5 + 7); });
}

}  // namespace
