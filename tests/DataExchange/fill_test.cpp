/// @file
/// The fills of VexaImage, rectangle, and their workers.

#include <climits>
#include <cmath>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace de = vexa::dataExchange;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// What a value becomes: saturated by a fill of whole pixels, its low bits by that of one channel.
struct Row {
    double value;
    u8 byte, lowByte;
    u16 word, lowWord;
};
// clang-format off
const Row rows[] = {
    {3.9, 3, 3, 3, 3}, {254.999, 254, 254, 254, 254}, {300.0, 255, 44, 300, 300}, {-1.0, 0, 0, 0, 0},
    {65535.5, 255, 255, 65535, 65535}, {65580.0, 255, 44, 65535, 44}, {1e9, 255, 0, 65535, 51712},
    {1e12, 255, 255, 65535, 65535}, {-1e12, 0, 0, 0, 0}, {infinity, 255, 255, 65535, 65535}, {nan, 0, 0, 0, 0},
};
// clang-format on

template <typename T>
T stored(const Row& row, bool lowBits)
{
    if constexpr (sizeof(T) == 1)
        return lowBits ? row.lowByte : row.byte;
    else if constexpr (sizeof(T) == 2)
        return lowBits ? row.lowWord : row.word;
    else
        return static_cast<T>(row.value);
}

template <typename T>
void expectFills(const VexaSize& size, std::size_t channels)
{
    VexaImage image(size, formatOf<T>(static_cast<int>(channels)));
    fillBuffer(image, 0x11);
    for (const Row& row : rows) {
        if (sizeof(T) == 4 && !std::isfinite(row.value)) continue;
        SCOPED_TRACE(std::to_string(row.value));
        ASSERT_EQ(image.set(row.value), VEXA_SUCCESS);
        expectElements<T>(image, [&](auto) { return stored<T>(row, false); });
        const double pixel[] = {static_cast<double>(stored<T>(row, false)), 1, 7};
        ASSERT_EQ(image.set(VexaScalar(row.value, 1.0, 7.0)), VEXA_SUCCESS);
        expectElements<T>(image, [&](auto i) { return pixel[i % channels]; });
        const std::size_t last = channels - 1;
        ASSERT_EQ(image.set(static_cast<int>(last), row.value), VEXA_SUCCESS);
        expectElements<T>(image, [&](auto i) {
            return i % channels == last ? static_cast<double>(stored<T>(row, true)) : pixel[i % channels];
        });
    }
    expectGaps(image, 0x11);
}

TEST(Fill, ValuesAndSizes)
{
    for (const VexaSize& size : edgeSizes())
        for (const std::size_t channels : {1, 3}) {
            expectFills<u8>(size, channels);
            expectFills<u16>(size, channels);
            expectFills<f32>(size, channels);
        }
    VexaImage image(2, 2, VEXA_32FC3);
    ASSERT_EQ(image.set(nan), VEXA_SUCCESS);
    EXPECT_TRUE(std::isnan(image.get(1, 1, 2)));
    ASSERT_EQ(image.set(2, -infinity), VEXA_SUCCESS);
    EXPECT_EQ(image.get(1, 1, 2), -infinity);
}

/// A channel that the image lacks counts on along the row and never leaves it.
TEST(Fill, ChannelOutOfRange)
{
    for (const int channels : {1, 3})
        for (const int channel : {INT_MIN, -40, -4, -1, 3, 5, 40, INT_MAX}) {
            VexaImage image(7, 5, 16, channels);
            fillBuffer(image, 0x11);
            ASSERT_EQ(image.set(channel, 9.0), VEXA_SUCCESS);
            expectElements<u16>(image, [&](auto i) {
                const long long offset = static_cast<long long>(i) % (7 * channels) - channel;
                return offset >= 0 && offset < 7 * channels && offset % channels == 0 ? 9 : 0x1111;
            });
            expectGaps(image, 0x11);
        }
}

TEST(Fill, SupportsExactlyItsTypes)
{
    const auto expectStatus = [](VexaImage image, VexaStatus status) {
        EXPECT_EQ(image.set(1.0), status) << image.type();
        EXPECT_EQ(image.set(VexaScalar(1)), status) << image.type();
        EXPECT_EQ(image.set(0, 1.0), status) << image.type();
    };
    expectStatus(VexaImage(), VEXA_IMAGE_NOT_INITIALIZED);
    for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
        const auto type = static_cast<VexaType>(row);
        const bool served = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 ||
                            type == VEXA_32FC1 || type == VEXA_32FC3;
        expectStatus(VexaImage(5, 3, type), served ? VEXA_SUCCESS : VEXA_TYPE_NOT_SUPPORTED_ERROR);
    }
}

/// Fills 3 by 2 pixels of 4 by 3.
template <typename T, typename Worker, typename Value>
void expectCorner(std::size_t channels, Worker worker, const Value& value, const std::vector<T>& pixel)
{
    VexaImage image = constant<T>({4, 3}, static_cast<int>(channels), 99);
    EXPECT_EQ(worker(image.ptr<T>(), 3, 2, image.pitch(), value, nullptr), VEXA_SUCCESS);
    expectElements<T>(
        image, [&](auto i) { return i / channels % 4 < 3 && i / channels / 4 < 2 ? pixel[i % channels] : T{99}; });
}

TEST(Fill, Workers)
{
    const VexaScalar values(300, -4, 7);
    expectCorner<u8>(1, vexa_set_8uc1, 300, {255});
    expectCorner<u8>(3, vexa_set_8uc3, values, {255, 0, 7});
    expectCorner<u16>(1, vexa_set_16uc1, 300, {300});
    expectCorner<u16>(3, vexa_set_16uc3, values, {300, 0, 7});
    expectCorner<f32>(1, vexa_set_32fc1, 300, {300});
    expectCorner<f32>(3, vexa_set_32fc3, values, {300, -4, 7});
}

/// The pixels inside `rect`, and no others, have this colour.
void expectRectangle(const VexaImage& image, const VexaRect& rect, const std::vector<u8>& color)
{
    const int channels = image.channels();
    const auto isWithin = [](long long at, long long start, long long length) {
        return at >= start && at < start + length;
    };
    expectElements<u8>(image, [&](auto i) {
        const int pixel = static_cast<int>(i) / channels;
        const bool inside =
            isWithin(pixel % image.width(), rect.x, rect.width) && isWithin(pixel / image.width(), rect.y, rect.height);
        return inside ? color[i % static_cast<std::size_t>(channels)] : 0x11;
    });
    expectGaps(image, 0x11);
}

TEST(Rectangle, TypesAndClipping)
{
    // clang-format off
    const VexaRect rects[] = {
        {3, 2, 7, 5}, {0, 0, 20, 12}, {19, 11, 1, 1}, {0, 0, 17, 12},                // inside
        {-3, 2, 7, 5}, {3, -2, 7, 5}, {15, 2, 7, 5}, {3, 9, 7, 5}, {-5, -5, 30, 30}, // over the sides
        {-7, 2, 7, 5}, {20, 2, 7, 5}, {3, -5, 7, 5}, {3, 12, 7, 5},                  // outside
        {3, 2, 0, 5}, {3, 2, 5, 0}, {3, 2, -2, 5}, {3, 2, 5, -1}, {9, 9, -20, -20},  // empty
        {0, 0, INT_MAX, INT_MAX}, {1, 1, INT_MAX, INT_MAX}, {-1000000000, -1000000000, 2000000000, 2000000000},
        {INT_MIN, INT_MIN, INT_MAX, INT_MAX}, {INT_MAX, INT_MAX, INT_MAX, INT_MAX}, {INT_MIN, 3, INT_MIN, INT_MIN},
    };
    // clang-format on
    VexaImage empty;
    EXPECT_EQ(de::rectangle(empty, rects[0], VexaScalar(1)), VEXA_IMAGE_NOT_INITIALIZED);
    for (int type = VEXA_8UC1; type <= VEXA_64FC4; ++type)
        for (const VexaRect& rect : rects) {
            SCOPED_TRACE(::testing::Message() << rect.x << " " << rect.y << " " << rect.width << " " << rect.height);
            const bool served = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_8SC1 || type == VEXA_8SC3;
            VexaImage image(20, 12, static_cast<VexaType>(type));
            fillBuffer(image, 0x11);
            ASSERT_EQ(de::rectangle(image, rect, VexaScalar(300.0, -7.0, 44.9)),
                      served ? VEXA_SUCCESS : VEXA_NOT_SUPPORTED_MODE_ERROR);
            if (served) expectRectangle(image, rect, {255, 0, 44});
        }
}

TEST(Rectangle, Workers)
{
    const VexaRect rect(3, 2, 7, 5);
    VexaImage gray(20, 12, VEXA_8UC1);
    VexaImage color(20, 12, VEXA_8UC3);
    fillBuffer(gray, 0x11);
    fillBuffer(color, 0x11);
    EXPECT_EQ(vexa_rectangle_8u_c1(gray.ptr<u8>(), rect, gray.pitch(), 300, nullptr), VEXA_SUCCESS);
    EXPECT_EQ(vexa_rectangle_8u_c3(color.ptr<u8>(), rect, color.pitch(), VexaScalar(44, -1, 300), nullptr),
              VEXA_SUCCESS);
    expectRectangle(gray, rect, {255});
    expectRectangle(color, rect, {44, 0, 255});
}

}  // namespace
