/// @file
/// Tone curves by their formulas in double, over all values of bytes and most of 16 bits.

#include <array>
#include <cmath>
#include <functional>
#include <numeric>

#include "images.h"
#include "truncated.h"

namespace {

using namespace kit;
namespace co = vexa::colorOperations;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr VexaStatus invalid = VEXA_INVALID_ARG_ERROR;
constexpr VexaStatus badDepth = VEXA_DEPTH_NOT_SUPPORTED_ERROR;
constexpr VexaStatus badType = VEXA_TYPE_NOT_SUPPORTED_ERROR;

/// All values of a type, in a frame of 256 columns.
template <typename T>
VexaImage allValues(int channels)
{
    const int count = sizeof(T) == 1 ? 256 : 65536;
    std::vector<T> elements;
    for (int i = 0; i < count * channels; ++i) elements.push_back(static_cast<T>(i));
    return imageOf<T>({256, count / 256}, channels, elements);
}

// ---- gamma, logarithm ----

template <typename T>
void expectGamma(int channels, float gamma)
{
    SCOPED_TRACE(testing::Message() << "gamma " << gamma << ", " << channels << " channels of " << 8 * sizeof(T)
                                    << " bits");
    const double top = sizeof(T) == 1 ? 255 : 65535;
    const VexaImage src = allValues<T>(channels);
    VexaImage dst(src.size(), src.type());
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(co::gammaCorrect(src, dst, gamma), success);
    const std::vector<T> before = download<T>(src);
    const std::vector<T> after = download<T>(dst);
    for (std::size_t i = 0; i < after.size(); ++i) {
        const double exact = top * std::pow(before[i] / top, 1 / double(gamma));
        ASSERT_TRUE(isTruncated(after[i], exact, top, 1e-5 * exact + 1e-3)) << before[i] << " gives " << after[i];
    }
    expectGaps(dst, 0xA5);
}

TEST(Gamma, IsThePower)
{
    for (const int channels : {1, 3})
        for (const float gamma : {1.0F, 2.2F, 0.45F}) {
            expectGamma<u8>(channels, gamma);
            expectGamma<u16>(channels, gamma);
        }
}

template <typename T>
void expectLog(const VexaImage& src)
{
    VexaImage dst;
    ASSERT_EQ(co::logTransform(src, dst, 12.5F), success);
    ASSERT_EQ(dst.depth(), 32);
    const std::vector<T> before = download<T>(src);
    const std::vector<f32> after = download<f32>(dst);
    for (std::size_t i = 0; i < before.size(); ++i) {
        const double exact = 12.5 * std::log(1 + static_cast<double>(before[i]));
        if (std::isnan(exact))
            ASSERT_TRUE(std::isnan(after[i])) << before[i];
        else
            ASSERT_NEAR(double(after[i]), exact, 1e-6 * std::abs(exact) + 1e-5) << before[i];
    }
}

TEST(Log, AddsOne)
{
    for (const int channels : {1, 3}) {
        expectLog<u8>(allValues<u8>(channels));
        expectLog<u16>(allValues<u16>(channels));
        expectLog<f32>(noise<f32>({67, 5}, channels, 111));
    }
}

// ---- levels ----

struct Levels {
    double lowIn, highIn, lowOut, highOut;
};

u8 fractionOf255(double fraction)
{
    return static_cast<u8>(std::trunc(std::fmin(std::fmax(255 * fraction, 0.0), 255.0)));
}

/// Only what lies inside the band is stretched, from the range of the image to the range asked for.
void expectAdjusted(int channels, const std::vector<Levels>& levels)
{
    std::vector<u8> before;
    for (int i = 0; i < 300; ++i)
        for (int c = 0; c < channels; ++c) before.push_back(static_cast<u8>(30 + 10 * c + i * 11 % (180 + c)));
    VexaScalar lowIn, highIn, lowOut, highOut;
    for (int c = 0; c < channels; ++c) {
        const Levels& level = levels[static_cast<std::size_t>(c)];
        lowIn[c] = level.lowIn;
        highIn[c] = level.highIn;
        lowOut[c] = level.lowOut;
        highOut[c] = level.highOut;
    }
    VexaImage image = imageOf<u8>({20, 15}, channels, before);
    ASSERT_EQ(co::adjust(image, lowIn, highIn, lowOut, highOut), success);
    const std::vector<u8> after = download<u8>(image);
    for (std::size_t i = 0; i < after.size(); ++i) {
        const int c = static_cast<int>(i) % channels;
        const Levels& level = levels[static_cast<std::size_t>(c)];
        const double least = 30 + 10 * c, range = 179 + c;
        const double low = fractionOf255(level.lowOut), high = fractionOf255(level.highOut);
        if (before[i] >= fractionOf255(level.highIn) || before[i] <= fractionOf255(level.lowIn))
            ASSERT_EQ(after[i], before[i]);
        else
            ASSERT_TRUE(isTruncated(after[i], low + (high - low) * (before[i] - least) / range, 255))
                << int{before[i]} << " gives " << int{after[i]};
    }
}

TEST(Adjust, StretchesInsideTheBand)
{
    expectAdjusted(1, {{0, 1, 0, 1}});
    expectAdjusted(1, {{0.2, 0.6, 0.1, 0.9}});
    expectAdjusted(1, {{-3, 7, -1, 2}});
    expectAdjusted(3, {{0, 1, 0, 1}, {0.3, 0.5, 0.2, 0.4}, {0.5, 0.1, 0, 1}});
}

// ---- tables ----

template <typename T>
void expectLookedUp(int channels, int tableChannels, int stride)
{
    const VexaImage src = noise<T>({67, 5}, channels, 112);
    const int values = sizeof(T) == 1 ? 256 : 65536;
    const VexaImage table = noise<T>({tableChannels == 1 ? values : 3 * values, 1}, tableChannels, 113);
    VexaImage dst(src.size(), src.type());
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(co::LUT(src, table, dst), success);
    const std::vector<T> before = download<T>(src);
    const std::vector<T> entries = download<T>(table);
    expectElements<T>(dst, [&](std::size_t i) {
        return double(entries[static_cast<std::size_t>(before[i] * stride) + (stride == 3 ? i % 3 : 0)]);
    });
    expectGaps(dst, 0xA5);
}

/// One channel reads the first 256 bytes of a table of three.
TEST(LookUp, EveryRowOfItsTable)
{
    expectLookedUp<u8>(1, 1, 1);
    expectLookedUp<u8>(1, 3, 1);
    expectLookedUp<u8>(3, 1, 1);
    expectLookedUp<u8>(3, 3, 3);
    expectLookedUp<u16>(1, 1, 1);
}

TEST(LookUp, Checks)
{
    VexaImage dst;
    const VexaImage bytes = constant<u8>({8, 6}, 1, 3);
    const VexaImage table(256, 1, VEXA_8UC1);
    EXPECT_EQ(co::LUT(VexaImage(), table, dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::LUT(bytes, VexaImage(), dst), VEXA_IMAGE_NOT_INITIALIZED);
    const struct {
        VexaType src, table;
        int width, height;
        VexaStatus status;
    } calls[] = {{VEXA_8UC1, VEXA_8UC1, 256, 2, invalid},     {VEXA_8UC1, VEXA_8UC1, 255, 1, invalid},
                 {VEXA_8UC1, VEXA_8UC3, 256, 1, invalid},     {VEXA_8UC1, VEXA_16UC1, 256, 1, mode},
                 {VEXA_8UC1, VEXA_32FC1, 256, 1, invalid},    {VEXA_16UC1, VEXA_16UC3, 65536, 1, invalid},
                 {VEXA_16UC3, VEXA_16UC1, 65536, 1, badType}, {VEXA_16UC1, VEXA_16UC3, 3 << 16, 1, invalid},
                 {VEXA_8UC2, VEXA_8UC1, 256, 1, badType}};
    for (const auto& call : calls) {
        VexaImage created;
        EXPECT_EQ(co::LUT(VexaImage(8, 6, call.src), VexaImage(call.width, call.height, call.table), created),
                  call.status)
            << call.src << ", " << call.table;
    }
    for (VexaImage other : {VexaImage(9, 6, VEXA_8UC1), VexaImage(8, 7, VEXA_8UC1), VexaImage(8, 6, VEXA_8SC1)})
        EXPECT_EQ(co::LUT(bytes, table, other), mode);
    // Entries that a short table of 16 bits lacks are not read.
    VexaImage looked;
    EXPECT_EQ(co::LUT(constant<u16>({8, 6}, 1, 60000), VexaImage(16, 1, VEXA_16UC1), looked), success);
}

template <typename T>
void expectBlackGamma(int dataBits)
{
    VexaImage src = noise<T>({67, 5}, 3, 114);
    ASSERT_EQ(src.setDataBits(dataBits), success);
    std::vector<T> before = download<T>(src);
    for (T& element : before) element = static_cast<T>(element % (1 << dataBits));
    upload(src, before);
    std::array<std::vector<u16>, 3> tables;
    for (std::size_t c = 0; c < 3; ++c)
        for (int i = 0; i < 1 << dataBits; ++i)
            tables[c].push_back(static_cast<u16>(static_cast<std::size_t>(i) * (3 + c) % 5000));
    VexaImage dst;
    ASSERT_EQ(co::blackGammaLUT(src, dst, tables[0].data(), tables[1].data(), tables[2].data()), success);
    EXPECT_EQ(dst.dataBits(), dataBits);
    expectElements<T>(
        dst, [&](std::size_t i) { return std::fmin(double(tables[i % 3][before[i]]), double((1 << dataBits) - 1)); });
}

TEST(BlackGamma, BoundsItsTables)
{
    expectBlackGamma<u8>(8);
    expectBlackGamma<u16>(12);
    expectBlackGamma<u16>(16);
}

TEST(BlackGamma, Checks)
{
    std::vector<u16> table(65536);
    const auto call = [&](const VexaImage& src, VexaImage& dst) {
        return co::blackGammaLUT(src, dst, table.data(), table.data(), table.data());
    };
    VexaImage dst, other(9, 6, VEXA_8UC3), created;
    EXPECT_EQ(call(VexaImage(), dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(call(VexaImage(8, 6, VEXA_8UC3), other), mode);
    EXPECT_EQ(call(VexaImage(8, 6, VEXA_32FC3), created), badDepth);
    EXPECT_EQ(created.type(), VEXA_32FC3);
    // Three channels are addressed whatever the images have: the work stays inside them.
    for (const VexaType type : {VEXA_8UC1, VEXA_16UC1, VEXA_8UC4}) {
        VexaImage image;
        EXPECT_EQ(call(VexaImage(640, 3, type), image), success) << type;
    }
}

// ---- equalisation ----

void expectEqualized(const VexaImage& src)
{
    VexaImage dst(src.size(), src.type());
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(co::histEq(src, dst), success);
    const std::vector<u8> before = download<u8>(src);
    const std::vector<u8> after = download<u8>(dst);
    std::array<double, 256> share = {};
    for (const u8 value : before) share[value] += 1.0 / static_cast<double>(before.size());
    std::partial_sum(share.begin(), share.end(), share.begin());
    for (std::size_t i = 0; i < after.size(); ++i)
        ASSERT_TRUE(isTruncated(after[i], 255 * share[before[i]] + 0.5, 255)) << int{before[i]};
    expectGaps(dst, 0xA5);
}

TEST(HistEq, IsTheShareOfPixelsUpToTheValue)
{
    for (const VexaSize& size : edgeSizes()) expectEqualized(noise<u8>(size, 1, 115));
    expectEqualized(allValues<u8>(1));
    expectEqualized(constant<u8>({17, 33}, 1, 9));
}

// ---- statuses ----

TEST(ToneCurves, Checks)
{
    const VexaImage src = constant<u8>({8, 6}, 1, 3);
    const auto gamma = [](const VexaImage& from, VexaImage& to) { return co::gammaCorrect(from, to, 2.2F); };
    const auto log = [](const VexaImage& from, VexaImage& to) { return co::logTransform(from, to, 1.0F); };
    const auto equalize = [](const VexaImage& from, VexaImage& to) { return co::histEq(from, to); };
    using Operation = std::function<VexaStatus(const VexaImage&, VexaImage&)>;
    const struct {
        Operation operation;
        VexaStatus otherDepth, forFloat, forSigned;
    } operations[] = {
        {gamma, mode, mode, mode}, {log, badDepth, success, badDepth}, {equalize, mode, badType, badType}};
    for (const auto& [operation, otherDepth, forFloat, forSigned] : operations) {
        VexaImage dst, ofFloat, ofSigned;
        EXPECT_EQ(operation(VexaImage(), dst), VEXA_IMAGE_NOT_INITIALIZED);
        EXPECT_EQ(operation(VexaImage(8, 6, VEXA_32FC1), ofFloat), forFloat);
        EXPECT_EQ(operation(VexaImage(8, 6, VEXA_8SC1), ofSigned), forSigned);
        VexaImage depth(8, 6, VEXA_16UC1);
        EXPECT_EQ(operation(src, depth), otherDepth);
        const int kept = otherDepth == badDepth ? 32 : 8;
        for (VexaImage other :
             {VexaImage(9, 6, getType(kept, 1, kept == 32)), VexaImage(8, 7, getType(kept, 1, kept == 32)),
              VexaImage(8, 6, getType(kept, 3, kept == 32))})
            EXPECT_EQ(operation(src, other), mode);
    }
    VexaScalar any;
    VexaImage none, color(8, 6, VEXA_16UC3);
    EXPECT_EQ(co::adjust(none, any, any, any, any), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(co::adjust(color, any, any, any, any), mode);
}

}  // namespace
