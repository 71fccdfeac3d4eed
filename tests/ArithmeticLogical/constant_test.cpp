/// @file
/// Arithmetic of an image and a constant, or a constant per channel, against a formula in double.

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "images.h"

namespace {

using namespace kit;
namespace al = vexa::arithmeticLogical;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// An operation in its two forms: with the first of the constants for all channels, and with one constant per channel.
struct Operation {
    const char* name;
    VexaStatus (*calls[2])(const VexaImage& a, const VexaScalar& k, VexaImage& dst);
    double (*formula)(double a, double k);
    double error;  ///< relative, of results in float: those of an approximate reciprocal
};

enum Index { ADD, SUBTRACT, MULTIPLY, DIVIDE };
const Operation operations[] = {
    {"a + k",
     {[](const VexaImage& a, const VexaScalar& k, VexaImage& dst) { return al::add(a, k[0], dst); },
      [](const VexaImage& a, const VexaScalar& k, VexaImage& dst) { return al::add(a, k, dst); }},
     [](double a, double k) { return a + k; },
     0},
    {"k - a",
     {[](const VexaImage& a, const VexaScalar& k, VexaImage& dst) { return al::subtract(k[0], a, dst); },
      [](const VexaImage& a, const VexaScalar& k, VexaImage& dst) { return al::subtract(k, a, dst); }},
     [](double a, double k) { return k - a; },
     0},
    {"a * k",
     {[](const VexaImage& a, const VexaScalar& k, VexaImage& dst) { return al::multiply(a, k[0], dst); },
      [](const VexaImage& a, const VexaScalar& k, VexaImage& dst) { return al::multiply(a, k, dst); }},
     [](double a, double k) { return a * k; },
     0},
    {"k / a",
     {[](const VexaImage& a, const VexaScalar& k, VexaImage& dst) { return al::divide(k[0], a, dst); },
      [](const VexaImage& a, const VexaScalar& k, VexaImage& dst) { return al::divide(k, a, dst); }},
     [](double a, double k) { return k / a; },
     4e-7},
};

/// What a result in double becomes as an element of type D.
template <typename D>
double stored(double exact)
{
    const double value = static_cast<float>(exact);
    if (std::is_floating_point_v<D>) return value;
    if (std::isnan(value)) return 0;
    return std::floor(std::clamp(value, 0.0, static_cast<double>(std::numeric_limits<D>::max())));
}

template <typename S, typename D>
void expectResult(const Operation& operation, const VexaImage& src, const VexaScalar& constants, bool perChannel,
                  const VexaImage& dst)
{
    const std::vector<S> a = download<S>(src);
    const std::vector<D> result = download<D>(dst);
    for (std::size_t i = 0; i < a.size(); ++i) {
        const int channel = static_cast<int>(i % static_cast<std::size_t>(src.channels()));
        const auto k = static_cast<float>(constants[perChannel ? channel : 0]);
        const double exact = operation.formula(static_cast<double>(a[i]), k);
        const auto [low, high] =
            std::minmax({stored<D>(exact * (1 - operation.error)), stored<D>(exact * (1 + operation.error))});
        const auto element = static_cast<double>(result[i]);
        ASSERT_TRUE(std::isnan(low) ? std::isnan(element) : low <= element && element <= high)
            << "a = " << double(a[i]) << ", k = " << k << " gives " << element << " and not " << low;
    }
}

/// Both forms of an operation, into a destination with marked gaps behind its rows.
template <typename S, typename D>
void expectOperation(const Operation& operation, const VexaImage& src, const VexaScalar& constants)
{
    for (const bool perChannel : {false, true}) {
        SCOPED_TRACE(testing::Message() << operation.name << (perChannel ? " per channel" : "") << " to "
                                        << 8 * sizeof(D) << " bits, width " << src.width() << ", channels "
                                        << src.channels());
        VexaImage dst(src.size(), formatOf<D>(src.channels()));
        fillBuffer(dst, 0xA5);
        ASSERT_EQ(operation.calls[perChannel](src, constants, dst), VEXA_SUCCESS);
        expectResult<S, D>(operation, src, constants, perChannel, dst);
        expectGaps(dst, 0xA5);
    }
}

template <typename S, typename D>
void expectRow()
{
    for (const VexaScalar& constants : {VexaScalar(40, 7, -2), VexaScalar(2.75), VexaScalar(3.0, -9.5, 200.0, nan)})
        for (const Operation& operation : operations)
            for (const int channels : {1, 3})
                for (const VexaSize& size : edgeSizes())
                    expectOperation<S, D>(operation, noise<S>(size, channels, 1), constants);
}

TEST(Constant, EveryRow)
{
    expectRow<u8, u8>();
    expectRow<u16, u16>();
    expectRow<f32, f32>();
    expectRow<u8, u16>();
    expectRow<u8, f32>();
    expectRow<u16, f32>();
}

/// Each value of an element, in every channel.
template <typename T>
VexaImage allElements(int channels)
{
    const int rows = 1 << (8 * sizeof(T) - 8);
    std::vector<T> elements(256 * static_cast<std::size_t>(rows * channels));
    for (std::size_t i = 0; i < elements.size(); ++i)
        elements[i] = static_cast<T>(i / static_cast<std::size_t>(channels));
    return imageOf<T>({256, rows}, channels, elements);
}

/// Whole constants, on which integer arithmetic may be used, meet the ends of the ranges of elements, of exact floats
/// and of 32-bit integers; fractions make use of float arithmetic, alone or in one channel.
template <typename S, typename D>
void expectAllElements()
{
    const double max = std::numeric_limits<D>::max();
    std::vector<double> whole;
    for (const double k : {0.0, 1.0, 2.0, 3.0, 16.0, max - 1, max, max + 1, 2 * max, 2 * max + 1, 65537.0, 16777215.0,
                           16777217.0, 2147483647.0, 2147483648.0, 4294967296.0, 1e30})
        whole.insert(whole.end(), {k, -k});
    const std::vector<double> fractions = {0.5, -0.5, 0.99999994, 1 / 3.0, 0.1, 0.29, max - 0.25, max + 0.5, 1 / max};

    const VexaImage gray = allElements<S>(1);
    const VexaImage color = allElements<S>(3);
    for (const Operation& operation : operations) {
        for (const double k : whole) expectOperation<S, D>(operation, gray, VexaScalar(k));
        for (const double k : fractions) expectOperation<S, D>(operation, gray, VexaScalar(k));
        for (std::size_t i = 0; i + 4 < whole.size(); i += 3) {
            expectOperation<S, D>(operation, color, VexaScalar(whole[i], whole[i + 1], whole[i + 4]));
            const double fraction = fractions[i % fractions.size()];
            expectOperation<S, D>(operation, color, VexaScalar(whole[i], fraction, whole[i + 1]));
        }
    }
}

TEST(Constant, AllElements)
{
    expectAllElements<u8, u8>();
    expectAllElements<u8, u16>();
    expectAllElements<u16, u16>();
}

/// On 8-bit images of one value, computed by hand.
TEST(Constant, Examples)
{
    const struct {
        Index operation;
        u8 a;
        double k;
        int expected;
    } examples[] = {
        // clang-format off
        {ADD, 200, 300, 255}, {ADD, 10, -4, 6}, {ADD, 10, -10.5, 0}, {ADD, 10, -0.5, 9}, {ADD, 0, -0.5, 0},
        {SUBTRACT, 11, 10, 0}, {SUBTRACT, 3, 10.75, 7}, {SUBTRACT, 45, 300, 255},
        {MULTIPLY, 5, 0.5, 2}, {MULTIPLY, 200, -1, 0},
        {DIVIDE, 2, 7.9, 3}, {DIVIDE, 0, 100, 255}, {DIVIDE, 0, -100, 0}, {DIVIDE, 0, 0, 0},
        // Results are rounded to float before they are truncated: in double, all but the first would store one less.
        {ADD, 0, 0.99999994, 0}, {ADD, 1, 0.99999994, 2}, {ADD, 100, 0.99999994, 101}, {MULTIPLY, 100, 0.29, 29},
        // A denormal constant counts as 0, a huge one as infinity.
        {DIVIDE, 0, 1e-40, 0}, {ADD, 1, 1e300, 255}, {SUBTRACT, 1, -1e300, 0}, {MULTIPLY, 0, 1e300, 0},
        {ADD, 1, infinity, 255}, {ADD, 1, -infinity, 0}, {SUBTRACT, 1, infinity, 255}, {MULTIPLY, 1, infinity, 255},
        {MULTIPLY, 0, infinity, 0}, {DIVIDE, 9, infinity, 255}, {DIVIDE, 0, -infinity, 0},
        {ADD, 9, nan, 0}, {SUBTRACT, 9, nan, 0}, {MULTIPLY, 9, nan, 0}, {DIVIDE, 0, nan, 0},
        // clang-format on
    };
    for (const auto& example : examples)
        for (const int channels : {1, 3})
            for (const auto call : operations[example.operation].calls) {
                VexaImage dst;
                ASSERT_EQ(call(constant<u8>({67, 2}, channels, example.a), VexaScalar(example.k), dst), VEXA_SUCCESS);
                for (const u8 element : download<u8>(dst))
                    ASSERT_EQ(element, example.expected)
                        << operations[example.operation].name << " of " << int{example.a} << " and " << example.k;
            }
}

TEST(Constant, FloatsAreNotClamped)
{
    VexaImage dst;
    ASSERT_EQ(al::divide(-2.0, rowOf<f32>({0, 4, 1e-40F}), dst), VEXA_SUCCESS);
    EXPECT_EQ(download<f32>(dst)[0], -infinity);
    EXPECT_NEAR(download<f32>(dst)[1], -0.5F, 1e-6);
    EXPECT_EQ(download<f32>(dst)[2], -infinity) << "denormals count as 0";
    ASSERT_EQ(al::add(rowOf<f32>({-3, 0, 1e30F}), 1e300, dst), VEXA_SUCCESS);
    EXPECT_EQ(download<f32>(dst), std::vector<f32>(3, static_cast<f32>(infinity)));
    ASSERT_EQ(al::multiply(constant<u8>({3, 1}, 1, 5), 1.5, dst), VEXA_SUCCESS);
    EXPECT_EQ(download<f32>(dst), std::vector<f32>(3, 7.5F));
}

const std::pair<VexaType, VexaType> rows[] = {
    {VEXA_8UC1, VEXA_8UC1},   {VEXA_8UC3, VEXA_8UC3},   {VEXA_16UC1, VEXA_16UC1}, {VEXA_16UC3, VEXA_16UC3},
    {VEXA_32FC1, VEXA_32FC1}, {VEXA_32FC3, VEXA_32FC3}, {VEXA_8UC1, VEXA_16UC1},  {VEXA_8UC3, VEXA_16UC3},
    {VEXA_8UC1, VEXA_32FC1},  {VEXA_8UC3, VEXA_32FC3},  {VEXA_16UC1, VEXA_32FC1}, {VEXA_16UC3, VEXA_32FC3}};

VexaStatus statusOf(VexaType src, VexaType dst)
{
    const bool isRow = std::find(std::begin(rows), std::end(rows), std::make_pair(src, dst)) != std::end(rows);
    return isRow ? VEXA_SUCCESS : VEXA_NOT_SUPPORTED_MODE_ERROR;
}

TEST(Constant, SupportsExactlyItsTable)
{
    for (const Operation& operation : operations)
        for (const auto call : operation.calls)
            for (int s = VEXA_8UC1; s <= VEXA_64FC4; ++s)
                for (int d = VEXA_8UC1; d <= VEXA_64FC4; ++d) {
                    const auto src = static_cast<VexaType>(s);
                    const auto dst = static_cast<VexaType>(d);
                    VexaImage result(4, 2, dst);
                    ASSERT_EQ(call(VexaImage(4, 2, src), VexaScalar(2), result), statusOf(src, dst))
                        << operation.name << " " << src << " to " << dst;
                }
}

/// Created before a type is refused. The sign of such a type gets lost in the forms that create by depth, which is
/// meant.
TEST(Constant, CreatesTheDestination)
{
    for (const Operation& operation : operations)
        for (const bool perChannel : {false, true})
            for (int row = VEXA_8UC1; row <= VEXA_64FC4; ++row) {
                const auto type = static_cast<VexaType>(row);
                const VexaImage src(5, 3, type);
                VexaImage dst;
                EXPECT_EQ(operation.calls[perChannel](src, VexaScalar(2), dst), statusOf(type, type));
                const bool keepsSign = perChannel || &operation == &operations[SUBTRACT];
                EXPECT_EQ(dst.type(), keepsSign ? type : getType(src.depth(), src.channels(), false))
                    << operation.name << (perChannel ? " per channel" : "");
                EXPECT_EQ(dst.width(), 5);
                EXPECT_EQ(dst.height(), 3);
            }
}

TEST(Constant, ChecksInOrder)
{
    const VexaImage src = constant<u8>({5, 3}, 1, 9);
    const VexaImage misfits[] = {constant<u8>({4, 3}, 1, 77), constant<u8>({5, 4}, 1, 77), constant<u8>({5, 3}, 3, 77)};
    for (const Operation& operation : operations)
        for (const auto call : operation.calls) {
            VexaImage untouched;
            EXPECT_EQ(call(VexaImage(), VexaScalar(2), untouched), VEXA_IMAGE_NOT_INITIALIZED);
            EXPECT_FALSE(untouched.isInitialized());
            for (const VexaImage& misfit : misfits) {
                VexaImage dst(misfit);
                const void* const buffer = dst.ptr();
                EXPECT_EQ(call(VexaImage(), VexaScalar(2), dst), VEXA_IMAGE_NOT_INITIALIZED);
                EXPECT_EQ(call(src, VexaScalar(2), dst), VEXA_NOT_SUPPORTED_MODE_ERROR);
                EXPECT_EQ(dst.ptr(), buffer);
                EXPECT_EQ(download<u8>(dst), download<u8>(misfit));
            }
        }
}

TEST(Constant, ChannelsInTheOrderOfTheImage)
{
    for (const VexaChannelSeq sequence : {VEXA_CHANNEL_SEQ_RGB, VEXA_CHANNEL_SEQ_BGR, VEXA_CHANNEL_SEQ_NONE}) {
        VexaImage src = constant<u8>({1, 1}, 3, 10);
        src.setChannelSequence(sequence);
        VexaImage dst;
        ASSERT_EQ(al::subtract(VexaScalar(11, 300, 9), src, dst), VEXA_SUCCESS);
        EXPECT_EQ(download<u8>(dst), (std::vector<u8>{1, 255, 0}));
        ASSERT_EQ(al::add(src, VexaScalar(nan, infinity, -0.5), dst), VEXA_SUCCESS);
        EXPECT_EQ(download<u8>(dst), (std::vector<u8>{0, 255, 9}));
    }
}

template <typename T>
void expectInPlace()
{
    const VexaImage src = noise<T>({67, 5}, 3, 1);
    for (const Operation& operation : operations)
        for (const VexaScalar& constants : {VexaScalar(40, 7, -2), VexaScalar(3.0, 2.5, 200.0)})
            for (const bool perChannel : {false, true}) {
                VexaImage image(src);
                ASSERT_EQ(operation.calls[perChannel](image, constants, image), VEXA_SUCCESS);
                expectResult<T, T>(operation, src, constants, perChannel, image);
            }
}

TEST(Constant, RunsInPlace)
{
    expectInPlace<u8>();
    expectInPlace<u16>();
    expectInPlace<f32>();
}

/// A destination of the source's type is addressed by the source's pitch, so one with a smaller pitch is the caller's
/// affair, but nothing outside its buffer is touched. One of another type is addressed by its own.
TEST(Constant, SmallerPitchStaysInside)
{
    const VexaSize size(100, 20);
    const VexaImage src = noise<u8>(size, 1, 1);
    const VexaImage overlapping(size.width, size.height, 10, 8, 1);
    for (const Operation& operation : operations)
        for (const bool perChannel : {false, true})
            for (const VexaScalar& k : {VexaScalar(2), VexaScalar(2.5)}) {
                VexaImage wide(size.width, size.height, 2 * size.width, 16, 1);
                EXPECT_EQ(operation.calls[perChannel](src, k, wide), VEXA_SUCCESS);
                expectResult<u8, u16>(operation, src, k, perChannel, wide);
                for (const int pitch : {size.width, 10}) {
                    VexaImage tight(size.width, size.height, pitch, 8, 1);
                    EXPECT_EQ(operation.calls[perChannel](src, k, tight), VEXA_SUCCESS);
                    EXPECT_EQ(operation.calls[perChannel](overlapping, k, tight), VEXA_SUCCESS);
                    EXPECT_EQ(operation.calls[perChannel](overlapping, k, wide), VEXA_SUCCESS);
                }
            }
}

}  // namespace
