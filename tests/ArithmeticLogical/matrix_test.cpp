/// @file
/// matMul, matMulTrans, invert, dot and inRange.

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace al = vexa::arithmeticLogical;

/// A matrix of whole numbers from -8 to 8 and halves between: their products and sums are exact in float.
VexaImage matrix(int width, int height, unsigned seed)
{
    std::vector<f32> elements(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (f32& element : elements) {
        seed = seed * 1664525U + 1013904223U;
        element = static_cast<f32>(seed >> 27) / 2 - 8;
    }
    return imageOf<f32>({width, height}, 1, elements);
}

using Element = std::function<double(int y, int x)>;

Element elementsOf(const VexaImage& image)
{
    return [elements = download<f32>(image), width = image.width()](int y, int x) {
        return static_cast<double>(
            elements[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)]);
    };
}

Element transposed(const Element& a)
{
    return [a](int y, int x) { return a(x, y); };
}

void expectProduct(const VexaImage& product, const Element& a, const Element& b, int terms, double tolerance = 0)
{
    expectElements<f32>(
        product,
        [&](std::size_t i) {
            const auto y = static_cast<int>(i) / product.width();
            const auto x = static_cast<int>(i) % product.width();
            double sum = 0;
            for (int term = 0; term < terms; ++term) sum += a(y, term) * b(term, x);
            return sum;
        },
        tolerance);
}

struct Shape {
    int m, n, k;
};
constexpr Shape shapes[] = {{1, 1, 1}, {3, 2, 5}, {4, 32, 32}, {17, 33, 31}, {131, 300, 65}, {5, 700, 3}};

TEST(MatMul, SumsProducts)
{
    for (const auto& [m, n, k] : shapes) {
        SCOPED_TRACE(testing::Message() << m << " by " << n << " by " << k);
        const VexaImage a = matrix(n, m, 1);
        const VexaImage b = matrix(k, n, 2);
        VexaImage c(k, m, VEXA_32FC1);
        fillBuffer(c, 0xA5);
        ASSERT_EQ(al::matMul(a, b, c), VEXA_SUCCESS);
        expectProduct(c, elementsOf(a), elementsOf(b), n);
        expectGaps(c, 0xA5);
    }
}

/// Rounding shows the order of the terms, and that each step is fused.
TEST(MatMul, AddsTermsInAscendingFusedSteps)
{
    const int m = 9, n = 611, k = 37;
    const VexaImage a = noise<f32>({n, m}, 1, 1);
    const VexaImage b = noise<f32>({k, n}, 1, 2);
    VexaImage c;
    ASSERT_EQ(al::matMul(a, b, c), VEXA_SUCCESS);
    const std::vector<f32> x = download<f32>(a);
    const std::vector<f32> y = download<f32>(b);
    expectElements<f32>(c, [&](std::size_t i) {
        f32 sum = 0;
        for (std::size_t term = 0; term < n; ++term) sum = std::fma(x[i / k * n + term], y[term * k + i % k], sum);
        return sum;
    });
}

TEST(MatMulTrans, MultipliesWithTheTranspose)
{
    for (const auto& [m, n, k] : shapes) {
        SCOPED_TRACE(testing::Message() << m << " by " << n);
        const VexaImage a = matrix(n, m, 1);
        VexaImage ata;
        ASSERT_EQ(al::matMulTrans(a, ata, true), VEXA_SUCCESS);
        EXPECT_EQ(ata.width(), n);
        EXPECT_EQ(ata.height(), n);
        expectProduct(ata, transposed(elementsOf(a)), elementsOf(a), m);
        VexaImage aat;
        ASSERT_EQ(al::matMulTrans(a, aat, false), VEXA_SUCCESS);
        EXPECT_EQ(aat.width(), m);
        EXPECT_EQ(aat.height(), m);
        expectProduct(aat, elementsOf(a), transposed(elementsOf(a)), n);
    }
}

TEST(MatMul, ChecksInOrder)
{
    const VexaImage a(3, 2, VEXA_32FC1);
    const VexaImage b(5, 3, VEXA_32FC1);
    const VexaImage bytes(3, 2, VEXA_8UC1);
    VexaImage c;
    EXPECT_EQ(al::matMul(VexaImage(), b, c), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(al::matMul(a, VexaImage(), c), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(al::matMul(bytes, bytes, c), VEXA_SIZE_ERROR) << "sizes come before types";
    EXPECT_EQ(al::matMul(bytes, VexaImage(5, 3, VEXA_8UC1), c), VEXA_TYPE_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(al::matMul(a, VexaImage(5, 3, VEXA_8UC1), c), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_FALSE(c.isInitialized());
    VexaImage small(5, 1, VEXA_8UC1);
    EXPECT_EQ(al::matMul(a, b, small), VEXA_SIZE_ERROR);
    VexaImage other(5, 2, VEXA_32FC3);
    EXPECT_EQ(al::matMul(a, b, other), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_EQ(al::matMul(a, b, c), VEXA_SUCCESS);
    EXPECT_EQ(c.width(), 5);
    EXPECT_EQ(c.height(), 2);

    VexaImage square;
    EXPECT_EQ(al::matMulTrans(VexaImage(), square, true), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(al::matMulTrans(bytes, square, true), VEXA_TYPE_NOT_SUPPORTED_ERROR);
    VexaImage typed(2, 2, VEXA_32SC1);
    EXPECT_EQ(al::matMulTrans(a, typed, true), VEXA_NOT_SUPPORTED_MODE_ERROR) << "types come before sizes";
    VexaImage sized(2, 2, VEXA_32FC1);
    EXPECT_EQ(al::matMulTrans(a, sized, true), VEXA_SIZE_ERROR);
    EXPECT_EQ(al::matMulTrans(a, sized, false), VEXA_SUCCESS);
}

/// An n by n matrix far from singular, with rows that need pivoting, at a pitch without gaps.
VexaImage regular(int n)
{
    VexaImage image(n, n, n * 4, 32, 1);
    std::vector<f32> elements = download<f32>(noise<f32>({n, n}, 1, 3));
    for (f32& element : elements) element /= 64;
    for (int i = 0; i < n; ++i) elements[static_cast<std::size_t>(i * n + (i + 1) % n)] += static_cast<f32>(2 * n);
    upload(image, elements);
    return image;
}

TEST(Invert, ProductWithTheOriginalIsTheUnitMatrix)
{
    for (const int n : {1, 2, 5, 33, 128}) {
        SCOPED_TRACE(n);
        const VexaImage src = regular(n);
        const std::vector<f32> before = download<f32>(src);
        VexaImage inverse;
        ASSERT_EQ(al::invert(src, inverse), VEXA_SUCCESS);
        EXPECT_EQ(inverse.pitch(), 4 * n);
        EXPECT_EQ(download<f32>(src), before);
        VexaImage unit;
        ASSERT_EQ(al::matMul(src, inverse, unit), VEXA_SUCCESS);
        const auto expected = [n](std::size_t i) { return i % static_cast<std::size_t>(n + 1) == 0 ? 1.0 : 0.0; };
        expectElements<f32>(unit, expected, 1e-4);
        // A destination of another pitch.
        VexaImage pitched(n, n, VEXA_32FC1);
        fillBuffer(pitched, 0xA5);
        ASSERT_EQ(al::invert(src, pitched), VEXA_SUCCESS);
        EXPECT_EQ(download<f32>(pitched), download<f32>(inverse));
        expectGaps(pitched, 0xA5);
    }
    // Rows of 128 floats fill the pitch that images get by themselves.
    const VexaImage filled(regular(128));
    VexaImage inverse, unit;
    if (filled.pitch() != 512) GTEST_SKIP() << "rows are aligned otherwise here";
    ASSERT_EQ(al::invert(filled, inverse), VEXA_SUCCESS);
    ASSERT_EQ(al::matMul(inverse, filled, unit), VEXA_SUCCESS);
    expectElements<f32>(
        unit, [](std::size_t i) { return i % 129 == 0 ? 1.0 : 0.0; }, 1e-4);
}

/// The solver is told the pitch of the source even where its copy has none. The result is the caller's affair then, but
/// no row is read or written outside the copy and the result.
TEST(Invert, RowsThatDoNotFillTheirPitch)
{
    for (const int n : {2, 5, 127, 129}) {
        VexaImage src(n, n, VEXA_32FC1);
        upload(src, download<f32>(regular(n)));
        VexaImage dst;
        const VexaStatus status = al::invert(src, dst);
        EXPECT_TRUE(status == VEXA_SUCCESS || status == VEXA_SINGULAR_MATRIX_ERROR) << status;
        EXPECT_EQ(dst.pitch(), 4 * n);
    }
    // A pitch below the length of a row.
    VexaImage dst;
    EXPECT_EQ(al::invert(VexaImage(5, 5, 8, 32, 1), dst), VEXA_INTERNAL_FUNCTION_CALL_ERROR);
    VexaImage narrow(5, 5, 8, 32, 1);
    EXPECT_EQ(al::invert(regular(5), narrow), VEXA_INTERNAL_FUNCTION_CALL_ERROR);
}

TEST(Invert, SeesOnlyTheLastPivot)
{
    VexaImage dst;
    EXPECT_EQ(al::invert(rowOf<f32>({0}), dst), VEXA_SINGULAR_MATRIX_ERROR);
    const auto square = [](const std::vector<f32>& elements) {
        VexaImage image(2, 2, 8, 32, 1);
        upload(image, elements);
        return image;
    };
    VexaImage result;
    EXPECT_EQ(al::invert(square({1, 2, 2, 4}), result), VEXA_SINGULAR_MATRIX_ERROR);
    EXPECT_EQ(al::invert(square({0, 0, 0, 1}), result), VEXA_SUCCESS) << "an earlier pivot goes unnoticed";
    ASSERT_EQ(al::invert(square({0, 4, 2, 0}), result), VEXA_SUCCESS);
    EXPECT_EQ(download<f32>(result), (std::vector<f32>{0, 0.5F, 0.25F, 0}));
}

TEST(Invert, ChecksInOrder)
{
    VexaImage dst;
    EXPECT_EQ(al::invert(VexaImage(), dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(al::invert(VexaImage(3, 2, VEXA_8UC1), dst), VEXA_TYPE_NOT_SUPPORTED_ERROR);
    EXPECT_EQ(al::invert(VexaImage(3, 2, VEXA_32FC1), dst), VEXA_SIZE_ERROR);
    EXPECT_FALSE(dst.isInitialized());
    VexaImage typed(2, 2, VEXA_8UC1);
    EXPECT_EQ(al::invert(regular(3), typed), VEXA_NOT_SUPPORTED_MODE_ERROR);
    VexaImage sized(3, 2, VEXA_32FC1);
    EXPECT_EQ(al::invert(regular(3), sized), VEXA_SIZE_ERROR);
}

TEST(Dot, SumsProductsOfEachChannel)
{
    for (const VexaSize& size : {VexaSize(1, 1), VexaSize(67, 5), VexaSize(1021, 403)})
        for (const int channels : {1, 3}) {
            const VexaImage a = noise<f32>(size, channels, 1);
            const VexaImage b = noise<f32>(size, channels, 2);
            const std::vector<f32> x = download<f32>(a);
            const std::vector<f32> y = download<f32>(b);
            VexaScalar dot(-7);
            ASSERT_EQ(al::dot(a, b, dot), VEXA_SUCCESS);
            for (int c = 0; c < channels; ++c) {
                double expected = 0, absolute = 0;
                for (auto i = static_cast<std::size_t>(c); i < x.size(); i += static_cast<std::size_t>(channels)) {
                    expected += static_cast<double>(x[i]) * static_cast<double>(y[i]);
                    absolute += std::fabs(static_cast<double>(x[i]) * static_cast<double>(y[i]));
                }
                EXPECT_NEAR(dot[c], expected, 1e-12 * absolute);
            }
            EXPECT_EQ(dot[3], -7);
        }
}

TEST(Dot, Statuses)
{
    const VexaImage a = constant<f32>({100, 20}, 1, 2);
    VexaScalar dot;
    EXPECT_EQ(al::dot(VexaImage(), a, dot), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(al::dot(a, VexaImage(), dot), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(al::dot(a, VexaImage(100, 19, VEXA_32FC1), dot), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_EQ(al::dot(a, VexaImage(99, 20, VEXA_32FC1), dot), VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_EQ(al::dot(a, VexaImage(100, 20, VEXA_32FC3), dot), VEXA_NOT_SUPPORTED_MODE_ERROR);
    const VexaImage bytes(100, 20, VEXA_8UC1);
    EXPECT_EQ(al::dot(bytes, bytes, dot), VEXA_TYPE_NOT_SUPPORTED_ERROR);
    // Both images are read at the pitch of the first, as far as the second goes.
    const VexaImage tight(100, 20, 400, 32, 1);
    EXPECT_EQ(al::dot(a, tight, dot), VEXA_SUCCESS);
}

template <typename T>
void expectBand(int channels, float lowest, float highest, double low, double high)
{
    for (const VexaSize& size : edgeSizes()) {
        const VexaImage src = noise<T>(size, channels, 1);
        VexaImage dst(size, VEXA_8UC1);
        fillBuffer(dst, 0xA5);
        ASSERT_EQ(al::inRange(src, lowest, highest, dst), VEXA_SUCCESS);
        const std::vector<T> elements = download<T>(src);
        const auto pixel = static_cast<std::size_t>(channels);
        expectElements<u8>(dst, [&](std::size_t i) {
            for (std::size_t c = 0; c < pixel; ++c) {
                const auto value = static_cast<double>(elements[i * pixel + c]);
                if (value >= low && value <= high) return 255;
            }
            return 0;
        });
        expectGaps(dst, 0xA5);
    }
}

TEST(InRange, MarksPixelsWithAChannelInTheBand)
{
    for (const int channels : {1, 3}) {
        expectBand<u8>(channels, 10, 20, 10, 20);
        expectBand<u8>(channels, 100.9F, 300, 100, 44);
        expectBand<u8>(channels, -5, 99.9F, 0, 99);
        expectBand<u16>(channels, 1000, 30000.5F, 1000, 30000);
        expectBand<u16>(channels, 0, 65536 + 500, 0, 500);
        expectBand<f32>(channels, -10.25F, 100.5F, -10.25, 100.5);
        expectBand<f32>(channels, 20, 10, 20, 10);
    }
    VexaImage mask;
    ASSERT_EQ(al::inRange(imageOf<u8>({2, 1}, 3, {15, 200, 200, 5, 200, 200}), 10, 20, mask), VEXA_SUCCESS);
    EXPECT_EQ(download<u8>(mask), (std::vector<u8>{255, 0}));
    VexaImage ofNumbers;
    const f32 notANumber = std::numeric_limits<f32>::quiet_NaN();
    ASSERT_EQ(al::inRange(rowOf<f32>({notANumber, 0}), -1e30F, 1e30F, ofNumbers), VEXA_SUCCESS);
    EXPECT_EQ(download<u8>(ofNumbers), (std::vector<u8>{0, 255}));
}

TEST(InRange, Destinations)
{
    VexaImage dst;
    EXPECT_EQ(al::inRange(VexaImage(), 1, 2, dst), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_FALSE(dst.isInitialized());
    const VexaImage src = noise<u8>({100, 20}, 1, 1);
    for (const VexaSize& size : {VexaSize(99, 20), VexaSize(100, 19)}) {
        VexaImage misfit(size, VEXA_8UC1);
        EXPECT_EQ(al::inRange(src, 1, 2, misfit), VEXA_NOT_SUPPORTED_MODE_ERROR);
    }
    // The type is not compared: bytes are stored one after the other.
    VexaImage floats(100, 20, VEXA_32FC1);
    VexaImage bytes;
    ASSERT_EQ(al::inRange(src, 50, 100, floats), VEXA_SUCCESS);
    ASSERT_EQ(al::inRange(src, 50, 100, bytes), VEXA_SUCCESS);
    const std::vector<f32> stored = download<f32>(floats);
    const std::vector<u8> expected = download<u8>(bytes);
    for (std::size_t y = 0; y < 20; ++y)
        EXPECT_EQ(std::memcmp(&stored[100 * y], &expected[100 * y], 100), 0) << "row " << y;
    VexaImage overlapping(100, 20, 3, 8, 1);
    EXPECT_EQ(al::inRange(src, 50, 100, overlapping), VEXA_SUCCESS);
    for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
        const auto type = static_cast<VexaType>(row);
        const bool supported = type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 ||
                               type == VEXA_32FC1 || type == VEXA_32FC3;
        VexaImage fresh;
        EXPECT_EQ(al::inRange(VexaImage(5, 3, type), 1, 2, fresh),
                  supported ? VEXA_SUCCESS : VEXA_TYPE_NOT_SUPPORTED_ERROR)
            << row;
        EXPECT_EQ(fresh.type(), VEXA_8UC1);
    }
}

}  // namespace
