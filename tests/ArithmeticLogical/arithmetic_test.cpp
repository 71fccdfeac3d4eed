/// @file
/// Arithmetic of two images against a formula in double, over every supported combination of types.

#include <algorithm>
#include <cmath>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace al = vexa::arithmeticLogical;

using Operation = VexaStatus (*)(const VexaImage&, const VexaImage&, VexaImage&, const VexaStream&);

struct Named {
    const char* name;
    Operation call;
    double (*exact)(double a, double b);
};

/// divide has tests of its own: its quotient is an approximation.
const Named exactOperations[] = {
    {"add", al::add, [](double a, double b) { return a + b; }},
    {"subtract", al::subtract, [](double a, double b) { return a - b; }},
    {"multiply", al::multiply, [](double a, double b) { return a * b; }},
    {"absDiff", al::absDiff, [](double a, double b) { return std::fabs(a - b); }},
};
const Operation allOperations[] = {al::add, al::subtract, al::multiply, al::divide, al::absDiff};

template <typename T>
struct Limits {
    /// What a result in double becomes as an element of type T, where the sum, difference or product is exact in float
    /// or saturates.
    static T store(double value)
    {
        if constexpr (std::is_integral_v<T>) {
            return static_cast<T>(std::min(std::max(value, 0.0), static_cast<double>(std::numeric_limits<T>::max())));
        } else {
            return static_cast<T>(value);
        }
    }
};

template <typename S1, typename S2, typename D>
void expectRow(const Named& operation, int channels, const VexaSize& size)
{
    SCOPED_TRACE(std::string(operation.name) + " to " + std::to_string(8 * sizeof(D)) + " bits, " +
                 std::to_string(channels) + " channels, " + std::to_string(size.width));
    const VexaImage a = noise<S1>(size, channels, 1);
    const VexaImage b = noise<S2>(size, channels, 2);
    VexaImage dst(size, formatOf<D>(channels));
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(operation.call(a, b, dst, VexaStream(false)), VEXA_SUCCESS);
    const std::vector<S1> x = download<S1>(a);
    const std::vector<S2> y = download<S2>(b);
    expectElements<D>(dst, [&](std::size_t i) {
        return static_cast<double>(
            Limits<D>::store(operation.exact(static_cast<double>(x[i]), static_cast<double>(y[i]))));
    });
    expectGaps(dst, 0xA5);
}

template <typename S1, typename S2, typename D>
void expectRowAtAllSizes()
{
    for (const Named& operation : exactOperations)
        for (const int channels : {1, 3})
            for (const VexaSize& size : edgeSizes()) expectRow<S1, S2, D>(operation, channels, size);
}

TEST(Arithmetic, EqualTypes)
{
    expectRowAtAllSizes<u8, u8, u8>();
    expectRowAtAllSizes<u16, u16, u16>();
    expectRowAtAllSizes<f32, f32, f32>();
}

TEST(Arithmetic, WiderDestination)
{
    expectRowAtAllSizes<u8, u8, u16>();
    expectRowAtAllSizes<u8, u8, f32>();
    expectRowAtAllSizes<u16, u16, f32>();
}

TEST(Arithmetic, MixedSources)
{
    expectRowAtAllSizes<u8, u16, u16>();
    expectRowAtAllSizes<u16, u8, u16>();
    expectRowAtAllSizes<u8, f32, f32>();
    expectRowAtAllSizes<f32, u8, f32>();
    expectRowAtAllSizes<u8, u16, f32>();
    expectRowAtAllSizes<u16, u8, f32>();
    expectRowAtAllSizes<u16, f32, f32>();
    expectRowAtAllSizes<f32, u16, f32>();
}

/// Every triple of formats is tried: a row of the table works, everything else is refused, and images that differ in
/// channels are refused before.
TEST(Arithmetic, SupportsExactlyItsTable)
{
    struct Triple {
        int src1, src2, dst;
    };
    const Triple rows[] = {{8, 8, 8},    {16, 16, 16}, {32, 32, 32}, {8, 8, 16},  {8, 8, 32},
                           {16, 16, 32}, {8, 16, 16},  {16, 8, 16},  {8, 32, 32}, {32, 8, 32},
                           {8, 16, 32},  {16, 8, 32},  {16, 32, 32}, {32, 16, 32}};
    const auto isRow = [&](int src1, int src2, int dst) {
        return std::any_of(std::begin(rows), std::end(rows),
                           [&](const Triple& row) { return row.src1 == src1 && row.src2 == src2 && row.dst == dst; });
    };
    const int depths[] = {8, -8, 16, -16, 32, -32, 64};
    for (const Operation operation : allOperations)
        for (const int src1 : depths)
            for (const int src2 : depths)
                for (const int dst : depths)
                    for (const int channels : {1, 2, 3, 4}) {
                        const VexaImage a(4, 2, src1, channels);
                        const VexaImage b(4, 2, src2, channels);
                        VexaImage c(4, 2, dst, channels);
                        const bool supported = isRow(src1, src2, dst) && channels % 2 == 1;
                        ASSERT_EQ(operation(a, b, c, VexaStream(false)),
                                  supported ? VEXA_SUCCESS : VEXA_NOT_SUPPORTED_MODE_ERROR)
                            << src1 << " " << src2 << " " << dst << ", channels " << channels;
                    }
}

TEST(Arithmetic, CreatesTheWiderType)
{
    const int depths[] = {8, 16, 32};
    for (const int src1 : depths)
        for (const int src2 : depths)
            for (const int channels : {1, 3}) {
                VexaImage dst;
                ASSERT_EQ(al::add(VexaImage(5, 3, src1, channels), VexaImage(5, 3, src2, channels), dst), VEXA_SUCCESS);
                EXPECT_EQ(dst.type(), getType(std::max(src1, src2), channels, false));
                EXPECT_EQ(dst.width(), 5);
                EXPECT_EQ(dst.height(), 3);
            }
}

TEST(Arithmetic, ChecksInOrder)
{
    const VexaImage empty;
    const VexaImage image(5, 3, VEXA_8UC1);
    for (const Operation operation : allOperations) {
        VexaImage dst;
        EXPECT_EQ(operation(empty, image, dst, VexaStream(false)), VEXA_IMAGE_NOT_INITIALIZED);
        EXPECT_EQ(operation(image, empty, dst, VexaStream(false)), VEXA_IMAGE_NOT_INITIALIZED);
        for (const VexaImage& other :
             {VexaImage(4, 3, VEXA_8UC1), VexaImage(5, 4, VEXA_8UC1), VexaImage(5, 3, VEXA_8UC3)})
            EXPECT_EQ(operation(image, other, dst, VexaStream(false)), VEXA_NOT_SUPPORTED_MODE_ERROR);
        EXPECT_FALSE(dst.isInitialized()) << "a mismatch of the sources leaves the destination alone";

        VexaImage narrow(4, 3, VEXA_8UC1);
        const void* const buffer = narrow.ptr();
        EXPECT_EQ(operation(image, image, narrow, VexaStream(false)), VEXA_NOT_SUPPORTED_MODE_ERROR);
        EXPECT_EQ(narrow.ptr(), buffer);

        VexaImage created;
        const VexaImage four(5, 3, VEXA_8UC4);
        EXPECT_EQ(operation(four, four, created, VexaStream(false)), VEXA_NOT_SUPPORTED_MODE_ERROR);
        EXPECT_EQ(created.type(), VEXA_8UC4) << "created before its type is refused";
    }
}

TEST(Arithmetic, DivideIntegers)
{
    const VexaImage a = rowOf<u8>({7, 0, 7, 255, 200, 1});
    const VexaImage b = rowOf<u8>({0, 0, 2, 1, 100, 255});
    VexaImage dst;
    ASSERT_EQ(al::divide(a, b, dst), VEXA_SUCCESS);
    const std::vector<u8> quotients = download<u8>(dst);
    EXPECT_EQ(quotients[0], 255) << "infinity saturates";
    EXPECT_EQ(quotients[1], 0) << "not a number stores 0";
    EXPECT_EQ(quotients[2], 3);
    EXPECT_EQ(quotients[3], 255);
    EXPECT_EQ(quotients[5], 0);
}

/// Every byte with every byte: two images of 256 by 256, a constant down the columns and along the rows.
std::pair<VexaImage, VexaImage> allPairsOfBytes()
{
    std::vector<u8> a(256 * 256);
    std::vector<u8> b(256 * 256);
    for (std::size_t i = 0; i < a.size(); ++i) {
        a[i] = static_cast<u8>(i % 256);
        b[i] = static_cast<u8>(i / 256);
    }
    return {imageOf<u8>({256, 256}, 1, a), imageOf<u8>({256, 256}, 1, b)};
}

TEST(Arithmetic, AllPairsOfBytes)
{
    const auto& [a, b] = allPairsOfBytes();
    for (const Named& operation : exactOperations) {
        VexaImage dst;
        ASSERT_EQ(operation.call(a, b, dst, VexaStream(false)), VEXA_SUCCESS);
        expectElements<u8>(dst, [&](std::size_t i) {
            return static_cast<double>(
                Limits<u8>::store(operation.exact(static_cast<double>(i % 256), static_cast<double>(i / 256))));
        });
    }
}

/// Where sums, differences and products of words meet the ends of their range.
TEST(Arithmetic, PairsOfWordsAtEdges)
{
    const u16 edges[] = {0, 1, 2, 3, 127, 128, 255, 256, 257, 4097, 32767, 32768, 32769, 65279, 65534, 65535};
    std::vector<u16> a;
    std::vector<u16> b;
    for (const u16 x : edges)
        for (const u16 y : edges) {
            a.push_back(x);
            b.push_back(y);
        }
    for (const Named& operation : exactOperations) {
        VexaImage dst;
        ASSERT_EQ(operation.call(rowOf<u16>(a), rowOf<u16>(b), dst, VexaStream(false)), VEXA_SUCCESS);
        expectElements<u16>(
            dst, [&](std::size_t i) { return static_cast<double>(Limits<u16>::store(operation.exact(a[i], b[i]))); });
    }
}

/// Quotients are truncated, or one less where they are whole: division goes by the reciprocal.
TEST(Arithmetic, DivideAllPairsOfBytes)
{
    const auto& [a, b] = allPairsOfBytes();
    VexaImage dst;
    ASSERT_EQ(al::divide(a, b, dst), VEXA_SUCCESS);
    const std::vector<u8> quotients = download<u8>(dst);
    for (std::size_t i = 256; i < quotients.size(); ++i) {
        const int x = static_cast<int>(i % 256);
        const int y = static_cast<int>(i / 256);
        const bool mayBeLess = x > 0 && x % y == 0;
        ASSERT_TRUE(quotients[i] == x / y || (mayBeLess && quotients[i] == x / y - 1))
            << x << " / " << y << " gives " << int{quotients[i]};
    }
}

TEST(Arithmetic, DivideFloats)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    VexaImage dst;
    ASSERT_EQ(al::divide(rowOf<f32>({1, -1, 0, 10, 1}), rowOf<f32>({0, 0, 0, 4, infinity}), dst), VEXA_SUCCESS);
    const std::vector<f32> quotients = download<f32>(dst);
    EXPECT_EQ(quotients[0], infinity);
    EXPECT_EQ(quotients[1], -infinity);
    EXPECT_TRUE(std::isnan(quotients[2]));
    EXPECT_NEAR(quotients[3], 2.5F, 1e-6);
    EXPECT_EQ(quotients[4], 0.0F);

    const VexaImage a = noise<u16>({67, 5}, 3, 1);
    const VexaImage b = noise<f32>({67, 5}, 3, 2);
    VexaImage mixed;
    ASSERT_EQ(al::divide(a, b, mixed), VEXA_SUCCESS);
    const std::vector<u16> x = download<u16>(a);
    const std::vector<f32> y = download<f32>(b);
    const std::vector<f32> z = download<f32>(mixed);
    for (std::size_t i = 0; i < z.size(); ++i) {
        const double quotient = x[i] / static_cast<double>(y[i]);
        if (y[i] == 0) continue;
        ASSERT_NEAR(z[i], quotient, std::fabs(quotient) * 4e-7) << x[i] << " / " << y[i];
    }
}

/// A float difference that is not whole reaches an integer destination only by way of conversion, but NaN and
/// infinities pass through float rows unchanged.
TEST(Arithmetic, FloatsAreNotClamped)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const VexaImage a = rowOf<f32>({1e30F, infinity, infinity, -5.25F});
    const VexaImage b = rowOf<f32>({1e30F, 1, infinity, 2});
    VexaImage product;
    ASSERT_EQ(al::multiply(a, b, product), VEXA_SUCCESS);
    EXPECT_EQ(download<f32>(product), (std::vector<f32>{infinity, infinity, infinity, -10.5F}));
    VexaImage difference;
    ASSERT_EQ(al::subtract(a, b, difference), VEXA_SUCCESS);
    EXPECT_TRUE(std::isnan(download<f32>(difference)[2]));
}

TEST(Arithmetic, FlushesDenormals)
{
    const float denormal = std::numeric_limits<float>::denorm_min() * 1000;
    const float small = std::numeric_limits<float>::min();
    VexaImage sum;
    ASSERT_EQ(al::add(rowOf<f32>({denormal}), rowOf<f32>({denormal}), sum), VEXA_SUCCESS);
    EXPECT_EQ(download<f32>(sum)[0], 0.0F) << "denormal operands";
    VexaImage product;
    ASSERT_EQ(al::multiply(rowOf<f32>({small}), rowOf<f32>({0.5F}), product), VEXA_SUCCESS);
    EXPECT_EQ(download<f32>(product)[0], 0.0F) << "denormal results";
}

TEST(Arithmetic, RunsInPlace)
{
    const VexaSize size(67, 5);
    const VexaImage b = noise<u8>(size, 3, 2);
    VexaImage a = noise<u8>(size, 3, 1);
    VexaImage expected;
    ASSERT_EQ(al::subtract(a, b, expected), VEXA_SUCCESS);
    ASSERT_EQ(al::subtract(a, b, a), VEXA_SUCCESS);
    EXPECT_EQ(download<u8>(a), download<u8>(expected));
    ASSERT_EQ(al::absDiff(a, a, a), VEXA_SUCCESS);
    expectElements<u8>(a, [](std::size_t) { return 0; });
}

/// Images of equal types are addressed by the pitch of the first. With one that was made at a smaller pitch the result
/// is the caller's affair, but nothing outside the buffers is touched.
TEST(Arithmetic, SmallerPitchStaysInside)
{
    const VexaSize size(100, 20);
    const VexaImage a = noise<u8>(size, 1, 1);
    const VexaImage tight(size.width, size.height, size.width, 8, 1);
    VexaImage dst(size.width, size.height, size.width, 8, 1);
    EXPECT_EQ(al::add(a, tight, dst), VEXA_SUCCESS);
    EXPECT_EQ(download<u8>(dst)[0], static_cast<u8>(std::min(255.0, a.get(0, 0, 0) + tight.get(0, 0, 0))));

    const VexaImage overlapping(size.width, size.height, 10, 8, 1);
    VexaImage wide(size, VEXA_16UC1);
    EXPECT_EQ(al::add(overlapping, overlapping, wide), VEXA_SUCCESS);
}

/// Large enough that all threads of the host take part.
TEST(Arithmetic, LargeImage)
{
    const VexaSize size(2051, 1003);
    const VexaImage a = noise<u16>(size, 3, 1);
    const VexaImage b = noise<u16>(size, 3, 2);
    VexaImage dst;
    ASSERT_EQ(al::add(a, b, dst), VEXA_SUCCESS);
    const std::vector<u16> x = download<u16>(a);
    const std::vector<u16> y = download<u16>(b);
    const std::vector<u16> z = download<u16>(dst);
    for (std::size_t i = 0; i < z.size(); ++i) ASSERT_EQ(z[i], std::min(65535, x[i] + y[i])) << i;
}

}  // namespace
