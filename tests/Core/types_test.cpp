/// @file
/// Pixel formats, status texts, selector values, value records and VexaScalar. The tables are retyped by hand.

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <map>
#include <new>
#include <string>
#include <type_traits>

#include "images.h"

namespace {

struct Format {
    VexaType type;
    int value;
    int depth;  ///< negative for signed integers
    int channels;
};

constexpr Format formats[] = {
    {VEXA_8UC1, 0, 8, 1},     {VEXA_8UC2, 1, 8, 2},     {VEXA_8UC3, 2, 8, 3},     {VEXA_8UC4, 3, 8, 4},
    {VEXA_8SC1, 4, -8, 1},    {VEXA_8SC2, 5, -8, 2},    {VEXA_8SC3, 6, -8, 3},    {VEXA_8SC4, 7, -8, 4},
    {VEXA_16UC1, 8, 16, 1},   {VEXA_16UC2, 9, 16, 2},   {VEXA_16UC3, 10, 16, 3},  {VEXA_16UC4, 11, 16, 4},
    {VEXA_16SC1, 12, -16, 1}, {VEXA_16SC2, 13, -16, 2}, {VEXA_16SC3, 14, -16, 3}, {VEXA_16SC4, 15, -16, 4},
    {VEXA_32FC1, 16, 32, 1},  {VEXA_32FC2, 17, 32, 2},  {VEXA_32FC3, 18, 32, 3},  {VEXA_32FC4, 19, 32, 4},
    {VEXA_32SC1, 20, -32, 1}, {VEXA_32SC2, 21, -32, 2}, {VEXA_32SC3, 22, -32, 3}, {VEXA_32SC4, 23, -32, 4},
    {VEXA_64FC1, 24, 64, 1},  {VEXA_64FC2, 25, 64, 2},  {VEXA_64FC3, 26, 64, 3},  {VEXA_64FC4, 27, 64, 4},
};
static_assert(VEXA_COMPLEX32 == 17 && VEXA_COMPLEX64 == 25 && VEXA_NO_TYPE == -1 && VEXA_UNKNOWN_TYPE == -2);

TEST(Formats, DepthAndChannelsBothWays)
{
    for (const Format& format : formats) {
        SCOPED_TRACE(format.value);
        EXPECT_EQ(static_cast<int>(format.type), format.value);
        int depth = 99;
        int channels = 99;
        getParameters(format.type, depth, channels);
        EXPECT_EQ(depth, format.depth);
        EXPECT_EQ(channels, format.channels);
        EXPECT_EQ(getType(std::abs(format.depth), format.channels, format.depth < 0), format.type);
    }
}

TEST(Formats, EverythingElseIsNoType)
{
    for (int depth = -130; depth <= 130; ++depth)
        for (int channels = -1; channels <= 6; ++channels) {
            const bool isUnsigned =
                (depth == 8 || depth == 16 || depth == 32 || depth == 64) && channels >= 1 && channels <= 4;
            EXPECT_EQ(getType(depth, channels, false) != VEXA_NO_TYPE, isUnsigned) << depth << " " << channels;
            EXPECT_EQ(getType(depth, channels, true) != VEXA_NO_TYPE, isUnsigned && depth != 64)
                << depth << " " << channels;
        }
    for (const int extreme : {INT_MIN, INT_MAX}) {
        EXPECT_EQ(getType(extreme, 1, true), VEXA_NO_TYPE);
        EXPECT_EQ(getType(8, extreme, false), VEXA_NO_TYPE);
    }
    for (const int value : {-1, -2, -3, 28, 31, 1000, INT_MIN, INT_MAX}) {
        int depth = 99;
        int channels = 99;
        getParameters(static_cast<VexaType>(value), depth, channels);
        EXPECT_EQ(depth, 0) << value;
        EXPECT_EQ(channels, 0) << value;
    }
}

TEST(Status, Texts)
{
    const std::map<int, std::string> texts = {
        {0, "No Error"},
        {-1, "Device Memory Allocation Failed"},
        {-2, "Device Array Allocation Failed"},
        {-3, "Device Memset Failed"},
        {-4, "Memory Copy From Host To Device Failed"},
        {-5, "Memory Copy From Device To Host Failed"},
        {-6, "Memory Copy From Device To Device Failed"},
        {-7, "Memory Copy From Device To Device Array Failed"},
        {-8, "Memory Copy From Host To Device Symbol Failed"},
        {-9, "Memory Copy Failed"},
        {-10, "Failed To Release Device Memory"},
        {-11, "Failed To Release Device Array"},
        {-12, "Texture Binding Failed"},
        {-13, "Texture Unbinding Failed"},
        {-21, "Internal Function Calling Failed"},
        {-22, "NPP Function Call Failed"},
        {-23, "Specified Number Of Channels Not Supported For Current Operation"},
        {-25, "Specified Image Depth Not Supported For Current Operation"},
        {-26, "Failed To Register Host Memory"},
        {-27, "Failed To Unregister Host Memory"},
    };
    for (int value = -60; value <= 60; ++value) {
        const auto text = texts.find(value);
        EXPECT_EQ(vexaStatusString(static_cast<VexaStatus>(value)),
                  "VEXA: " + (text != texts.end() ? text->second : "Unknown Error"))
            << value;
    }
}

/// Code compiled against the library finds the fields by their place.
static_assert(offsetof(VexaDeviceProperties, multiProcessorCount) == 256 &&
              offsetof(VexaDeviceProperties, totalCores) == 264 &&
              offsetof(VexaDeviceProperties, asyncEngineCount) == 272 &&
              offsetof(VexaDeviceProperties, totalGlobalMem) == 280 &&
              offsetof(VexaDeviceProperties, reserved) == 288 && offsetof(VexaDeviceProperties, clockRate) == 308 &&
              sizeof(VexaDeviceProperties) == 312);

/// The bytes of a T in memory that held 0xAA: after its construction, then after its destruction if `destroy`.
template <typename T, typename... A>
std::vector<kit::u8> bytesOf(bool destroy, A... arguments)
{
    alignas(T) kit::u8 memory[sizeof(T)];
    std::memset(memory, 0xAA, sizeof memory);
    T* const object = new (memory) T(arguments...);
    if (destroy) object->~T();
    std::vector<kit::u8> bytes(sizeof(T));
    std::memcpy(bytes.data(), memory, sizeof memory);
    if (!destroy) object->~T();
    return bytes;
}

template <typename T>
std::vector<kit::u8> zeros()
{
    return std::vector<kit::u8>(sizeof(T), 0);
}

TEST(Records, StartFromZeroAndClearThemselves)
{
    EXPECT_EQ(bytesOf<VexaSize>(false), zeros<VexaSize>());
    EXPECT_EQ(bytesOf<VexaPoint2D<int>>(false), zeros<VexaPoint2D<int>>());
    EXPECT_EQ(bytesOf<VexaPoint2D<float>>(false), zeros<VexaPoint2D<float>>());
    EXPECT_EQ(bytesOf<VexaRect>(false), zeros<VexaRect>());
    EXPECT_EQ((bytesOf<VexaPointValue2D<float, float>>(false)), (zeros<VexaPointValue2D<float, float>>()));

    EXPECT_EQ(bytesOf<VexaSize>(true, 640, 480), zeros<VexaSize>());
    EXPECT_EQ(bytesOf<VexaPoint2D<int>>(true, 640, 480), zeros<VexaPoint2D<int>>());
    EXPECT_EQ(bytesOf<VexaPoint2D<float>>(true, 0.5F, 1.5F), zeros<VexaPoint2D<float>>());
    const std::vector<kit::u8> scalar = bytesOf<VexaScalar>(true, 1.0);
    EXPECT_EQ(std::vector<kit::u8>(scalar.begin(), scalar.begin() + sizeof(Vexa64f*)), zeros<Vexa64f*>());
}

void expectScalar(const VexaScalar& scalar, std::vector<double> values, bool isInteger)
{
    EXPECT_EQ(scalar.isInteger(), isInteger);
    ASSERT_NE(scalar.vals(), nullptr);
    EXPECT_EQ(std::vector<double>(scalar.vals(), scalar.vals() + 4), values);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(&scalar[i], scalar.vals() + i);
}

TEST(Scalar, Constructors)
{
    expectScalar(VexaScalar(), {0, 0, 0, 0}, true);
    expectScalar(VexaScalar(2.5), {2.5, 2.5, 2.5, 2.5}, false);
    expectScalar(VexaScalar(INT_MIN), {-2147483648.0, -2147483648.0, -2147483648.0, -2147483648.0}, true);
    expectScalar(VexaScalar(1.5, 2.5, 3.5), {1.5, 2.5, 3.5, 0}, false);
    expectScalar(VexaScalar(1, 2, 3), {1, 2, 3, 0}, true);
    expectScalar(VexaScalar(1.5, 2.5, 3.5, 4.5), {1.5, 2.5, 3.5, 4.5}, false);
    expectScalar(VexaScalar(1, 2, 3, INT_MAX), {1, 2, 3, 2147483647.0}, true);
    expectScalar(-VexaScalar(1, -2, 3, 4), {-1, 2, -3, -4}, false);
}

TEST(Scalar, CopiesAreDeep)
{
    static_assert(std::is_copy_constructible_v<VexaScalar> && !std::is_assignable_v<VexaScalar&, VexaScalar> &&
                  !std::is_assignable_v<VexaScalar&, const VexaScalar&>);
    VexaScalar source(1, 2, 3, 4);
    VexaScalar copy(source);
    copy.vals()[0] = 7;
    source[3] = 9;
    expectScalar(source, {1, 2, 3, 9}, true);
    expectScalar(copy, {7, 2, 3, 4}, true);
    expectScalar(VexaScalar(VexaScalar(0.5)), {0.5, 0.5, 0.5, 0.5}, false);
}

TEST(Scalar, ElementsOutsideReadZero)
{
    VexaScalar scalar(7);
    const VexaScalar& reader = scalar;
    for (const int i : {-1, 4, 5, INT_MIN, INT_MAX}) {
        scalar[i] = 3;
        EXPECT_EQ(scalar[i], 0) << i;
        scalar[i] = 3;
        EXPECT_EQ(reader[i], 0) << i;
    }
    expectScalar(scalar, {7, 7, 7, 7}, true);
}

template <typename T>
void expectSaturated(std::vector<std::pair<double, T>> cases, T min = std::numeric_limits<T>::min(),
                     T max = std::numeric_limits<T>::max())
{
    for (const auto& [value, result] : cases) EXPECT_EQ((__vexaSaturate<Vexa64f, T>(value, min, max)), result) << value;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ((__vexaSaturate<Vexa64f, T>(infinity, min, max)), max);
    EXPECT_EQ((__vexaSaturate<Vexa64f, T>(-infinity, min, max)), min);
    EXPECT_EQ((__vexaSaturate<Vexa64f, T>(std::nan(""), min, max)), T(0));
}

TEST(Saturate, ClampsAndTruncatesTowardZero)
{
    expectSaturated<unsigned char>({{255.9, 255}, {254.9, 254}, {-0.5, 0}, {0.99, 0}, {300, 255}, {-300, 0}});
    expectSaturated<signed char>({{127.1, 127}, {126.9, 126}, {-127.9, -127}, {-128.1, -128}, {-0.9, 0}});
    expectSaturated<unsigned short>({{65535.5, 65535}, {65534.9, 65534}, {-1e-9, 0}, {255.9, 255}});
    expectSaturated<short>({{32768, 32767}, {32766.9, 32766}, {-32767.9, -32767}, {-32769, -32768}});
    expectSaturated<int>({{2147483647.5, INT_MAX},
                          {2147483646.9, INT_MAX - 1},
                          {2147483648.0, INT_MAX},
                          {-2147483648.0, INT_MIN},
                          {-2147483648.9, INT_MIN},
                          {-2147483647.9, INT_MIN + 1},
                          {1e300, INT_MAX},
                          {-1e300, INT_MIN}});
    expectSaturated<int>({{9.9, 10}, {20.1, 20}, {15.9, 15}}, 10, 20);
}

}  // namespace
