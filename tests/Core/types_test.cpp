/// @file
/// Pixel formats, status texts, selector values, value records and VexaScalar. The tables are retyped by hand.

#include <climits>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
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

TEST(Status, ValuesAndTexts)
{
    struct Row {
        VexaStatus status;
        int value;
        const char* text;  ///< null where it has none of its own
    };
    const Row rows[] = {
        {VEXA_NO_ERROR, 0, "VEXA: No Error"},
        {VEXA_SUCCESS, 0, "VEXA: No Error"},
        {VEXA_MEM_ALLOC_ERR, -1, "VEXA: Device Memory Allocation Failed"},
        {VEXA_ARRAY_ALLOC_ERR, -2, "VEXA: Device Array Allocation Failed"},
        {VEXA_MEMSET_ERR, -3, "VEXA: Device Memset Failed"},
        {VEXA_MEMCPY_H2D_ERROR, -4, "VEXA: Memory Copy From Host To Device Failed"},
        {VEXA_MEMCPY_D2H_ERROR, -5, "VEXA: Memory Copy From Device To Host Failed"},
        {VEXA_MEMCPY_D2D_ERROR, -6, "VEXA: Memory Copy From Device To Device Failed"},
        {VEXA_MEMCPY_D2A_ERROR, -7, "VEXA: Memory Copy From Device To Device Array Failed"},
        {VEXA_MEMCPY_H2S_ERROR, -8, "VEXA: Memory Copy From Host To Device Symbol Failed"},
        {VEXA_MEMCPY_ERROR, -9, "VEXA: Memory Copy Failed"},
        {VEXA_MEMFREE_ERR, -10, "VEXA: Failed To Release Device Memory"},
        {VEXA_MEMFREE_ARRAY_ERR, -11, "VEXA: Failed To Release Device Array"},
        {VEXA_TEXTURE_BIND_ERROR, -12, "VEXA: Texture Binding Failed"},
        {VEXA_TEXTURE_UNBIND_ERROR, -13, "VEXA: Texture Unbinding Failed"},
        {VEXA_IMAGE_NOT_INITIALIZED, -14, nullptr},
        {VEXA_NULL_POINTER_ERROR, -15, nullptr},
        {VEXA_INVALID_ARG_ERROR, -16, nullptr},
        {VEXA_NOT_SUPPORTED_MODE_ERROR, -17, nullptr},
        {VEXA_SIZE_ERROR, -18, nullptr},
        {VEXA_INVALID_ROI_ERROR, -19, nullptr},
        {VEXA_CUDA_KERNEL_EXECUTION_ERROR, -20, nullptr},
        {VEXA_INTERNAL_FUNCTION_CALL_ERROR, -21, "VEXA: Internal Function Calling Failed"},
        {VEXA_INTERNAL_CALL_ERROR, -22, "VEXA: NPP Function Call Failed"},
        {VEXA_CHANNEL_NOT_SUPPORTED_ERROR, -23,
         "VEXA: Specified Number Of Channels Not Supported For Current Operation"},
        {static_cast<VexaStatus>(-24), -24, nullptr},
        {VEXA_DEPTH_NOT_SUPPORTED_ERROR, -25, "VEXA: Specified Image Depth Not Supported For Current Operation"},
        {VEXA_MEMORY_PINNING_ERROR, -26, "VEXA: Failed To Register Host Memory"},
        {VEXA_MEMORY_UNPINNING_ERROR, -27, "VEXA: Failed To Unregister Host Memory"},
        {VEXA_STREAM_CREATE_ERROR, -28, nullptr},
        {VEXA_STREAM_DESTROY_ERROR, -29, nullptr},
        {VEXA_OPENCL_ERROR, -30, nullptr},
        {VEXA_DIFFERENT_IMAGE_SIZE_ERROR, -31, nullptr},
        {VEXA_DEVICE_NOT_FOUND_ERROR, -32, nullptr},
        {VEXA_INVALID_DEVICE_ERROR, -33, nullptr},
        {VEXA_DRIVER_NOT_FOUND_ERROR, -34, nullptr},
        {VEXA_DRIVER_NOT_SUPPORTED_ERROR, -35, nullptr},
        {VEXA_UNKNOWN_ERROR, -36, nullptr},
        {VEXA_TYPE_NOT_SUPPORTED_ERROR, -37, nullptr},
        {VEXA_INPLACE_OP_NOT_SUPPORTED, -38, nullptr},
        {VEXA_SINGULAR_MATRIX_ERROR, -39, nullptr},
        {VEXA_JPEG_PARAM_ERROR, -40, nullptr},
        {VEXA_JPEG_ENCODE_ERROR, -41, nullptr},
        {VEXA_JPEG_DECODE_ERROR, -42, nullptr},
        {static_cast<VexaStatus>(-43), -43, nullptr},
        {VEXA_WARP_AFFINE_INCORRECT_QUAD_WARNING, 1, nullptr},
        {static_cast<VexaStatus>(2), 2, nullptr},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(static_cast<int>(row.status), row.value);
        EXPECT_STREQ(vexaStatusString(row.status), row.text != nullptr ? row.text : "VEXA: Unknown Error") << row.value;
    }
}

/// What callers have stored in files and passed from other languages.
static_assert(VEXA_CHANNEL_SEQ_RGB == 0 && VEXA_CHANNEL_SEQ_BGR == 1 && VEXA_CHANNEL_SEQ_BGRA == 2 &&
              VEXA_CHANNEL_SEQ_RGBA == 3 && VEXA_CHANNEL_SEQ_LUMINANCE == 4 && VEXA_CHANNEL_SEQ_NONE == 5);
static_assert(VEXA_LOAD_IMAGE_DEFAULT == -1 && VEXA_LOAD_IMAGE_GRAYSCALE == 0 && VEXA_LOAD_IMAGE_COLOR == 1 &&
              VEXA_LOAD_IMAGE_GRAYSCALE_KEEP_DEPTH == 2 && VEXA_LOAD_IMAGE_COLOR_KEEP_DEPTH == 3);
static_assert(VEXA_PTR_NONE == -1 && VEXA_PTR_DEVICE == 0 && VEXA_PTR_HOST == 1 && VEXA_PTR_HOST_PAGE_LOCKED == 2);
static_assert(VEXA_INTER_NEAREST == 1 && VEXA_INTER_LINEAR == 2 && VEXA_INTER_CUBIC == 3);
static_assert(VEXA_FLIP_UP_DOWN == 0 && VEXA_FLIP_LEFT_RIGHT == 1 && VEXA_FLIP_BOTH_DIRECTIONS == 2);
static_assert(VEXA_GRADIENT_CENTRAL_DIFFERENCE == 0 && VEXA_GRADIENT_SOBEL_3x3 == 1 &&
              VEXA_GRADIENT_SCHARR_3x3 == 2 && VEXA_GRADIENT_PREWITT_3x3 == 3);
static_assert(VEXA_BAYER_BLANK == 0 && VEXA_BAYER_BGGR == 1 && VEXA_BAYER_GBRG == 2 && VEXA_BAYER_GRBG == 3 &&
              VEXA_BAYER_RGGB == 4 && VEXA_BAYER_BGGR_HQ == 5 && VEXA_BAYER_GRBG_HQ == 6 && VEXA_BAYER_RGGB_HQ == 7 &&
              VEXA_BAYER_GBRG_HQ == 8);
static_assert(VEXA_COLOR_RED == 0 && VEXA_COLOR_GREEN == 1 && VEXA_COLOR_BLUE == 2);
static_assert(VEXA_FEATURES_KLT == 0 && VEXA_FEATURES_HARRIS == 1 && VEXA_FEATURES_HARRIS_PETER == 2);
static_assert(VEXA_FFT_MAGNITUDE == 0 && VEXA_FFT_SCALED_MAGNITUDE == 1 && VEXA_FFT_PHASE == 2 &&
              VEXA_FFT_SCALED_PHASE == 3 && VEXA_FFT_REAL == 4 && VEXA_FFT_SCALED_REAL == 5 &&
              VEXA_FFT_IMAGINARY == 6 && VEXA_FFT_SCALED_IMAGINARY == 7);
static_assert(sizeof(Vexa8u) == 1 && sizeof(Vexa16u) == 2 && sizeof(Vexa32u) == 4 && sizeof(Vexa32s) == 4 &&
              sizeof(Vexa32f) == 4 && sizeof(Vexa64f) == 8);
static_assert(offsetof(VexaDeviceProperties, multiProcessorCount) == 256 &&
              offsetof(VexaDeviceProperties, totalCores) == 264 &&
              offsetof(VexaDeviceProperties, asyncEngineCount) == 272 &&
              offsetof(VexaDeviceProperties, totalGlobalMem) == 280 && offsetof(VexaDeviceProperties, reserved) == 288 &&
              offsetof(VexaDeviceProperties, clockRate) == 308 && sizeof(VexaDeviceProperties) == 312);

TEST(Records, FieldsInOrder)
{
    const VexaSize size(3, -4);
    EXPECT_EQ(size.width, 3);
    EXPECT_EQ(size.height, -4);
    const VexaRect rect(1, -2, 3, 4);
    EXPECT_EQ(rect.origin().x, 1);
    EXPECT_EQ(rect.origin().y, -2);
    EXPECT_EQ(rect.width, 3);
    EXPECT_EQ(rect.height, 4);
    const VexaPoint2D<float> point(0.5F, -1.5F);
    EXPECT_EQ(point.x, 0.5F);
    EXPECT_EQ(point.y, -1.5F);
    const VexaPointValue2D<float, float> corner(1.5F, 2.5F, 3.5F);
    EXPECT_EQ(corner.x, 1.5F);
    EXPECT_EQ(corner.y, 2.5F);
    EXPECT_EQ(corner.val, 3.5F);
}

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
    expectSaturated<int>({{2147483647.5, INT_MAX}, {2147483646.9, INT_MAX - 1}, {2147483648.0, INT_MAX},
                          {-2147483648.0, INT_MIN}, {-2147483648.9, INT_MIN}, {-2147483647.9, INT_MIN + 1},
                          {1e300, INT_MAX}, {-1e300, INT_MIN}});
    expectSaturated<int>({{9.9, 10}, {20.1, 20}, {15.9, 15}}, 10, 20);
}

}  // namespace
