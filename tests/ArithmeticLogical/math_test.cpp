/// @file
/// abs, exp, sqrt, cbrt, pow and rounding against the standard library in double. The tolerances hold for the
/// approximations of a graphics processor.

#include <algorithm>
#include <cmath>
#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace al = vexa::arithmeticLogical;

const VexaStream stream(false);
constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

using Call = std::function<VexaStatus(const VexaImage&, VexaImage&, const VexaStream&)>;

/// Results may be off by a few units in the last place and, where they are 2 to an exponent, by what the exponent lost:
/// a few units in its own last place, and a factor times the error of a logarithm.
struct Function {
    std::string name;
    Call call;
    double (*exact)(double x, double factor);
    double factor = 0;
};

Call power(double n)
{
    return [n](const VexaImage& src, VexaImage& dst, const VexaStream& s) { return al::pow(src, n, dst, s); };
}

std::vector<Function> approximations()
{
    std::vector<Function> all = {{"exp", al::exp, [](double x, double) { return std::exp(x); }, 1},
                                 {"sqrt", al::sqrt, [](double x, double) { return std::sqrt(x); }},
                                 {"cbrt", al::cbrt, [](double x, double) { return std::cbrt(x); }}};
    for (const double n : {0.5, 1.0, 2.5, 16.0, -1.0, -16.0, 1 / 3.0})
        all.push_back({"pow", power(n), [](double x, double factor) { return std::exp2(factor * std::log2(x)); }, n});
    return all;
}

const Function absolute = {"abs", al::abs, [](double x, double) { return std::fabs(x); }};
const Function roundings[] = {{"floor", al::floor, [](double x, double) { return std::floor(x); }},
                              {"ceil", al::ceil, [](double x, double) { return std::ceil(x); }},
                              {"round", al::round, [](double x, double) { return std::nearbyint(x); }}};

/// Whether a float is close to an exact value, which may lie past the ends of the range of normal floats.
bool isClose(double result, double exact, double factor)
{
    constexpr double largest = std::numeric_limits<float>::max();
    constexpr double smallest = std::numeric_limits<float>::min();
    const double magnitude = std::fabs(exact);
    const double exponent = std::fabs(std::log2(std::clamp(magnitude, smallest, largest)));
    const double tolerance = 0x1p-21 + (factor == 0 ? 0 : (std::fabs(factor) + exponent) * 0x1p-22);
    if (std::isnan(exact)) return std::isnan(result);
    if (std::isinf(result)) return magnitude * (1 + tolerance) > largest && std::signbit(result) == std::signbit(exact);
    return magnitude * (1 - tolerance) <= largest && std::fabs(result - exact) <= magnitude * tolerance + smallest;
}

template <typename S, typename D>
void expectClose(const Function& function, const VexaImage& src)
{
    VexaImage dst(src.size(), formatOf<D>(src.channels()));
    fillBuffer(dst, 0xA5);
    ASSERT_EQ(function.call(src, dst, stream), VEXA_SUCCESS);
    const std::vector<S> x = download<S>(src);
    const std::vector<D> y = download<D>(dst);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const auto value = static_cast<double>(x[i]);
        const double exact = function.exact(value, function.factor);
        ASSERT_TRUE(isClose(static_cast<double>(y[i]), exact, function.factor))
            << function.name << " of " << value << " gives " << y[i] << " for " << exact;
    }
    expectGaps(dst, 0xA5);
}

template <typename T>
void expectAll(const VexaImage& src)
{
    for (const Function& function : approximations()) expectClose<T, f32>(function, src);
    expectClose<T, T>(absolute, src);
    if constexpr (sizeof(T) == 4)
        for (const Function& function : roundings) expectClose<f32, f32>(function, src);
}

TEST(Math, AgreesWithDouble)
{
    std::vector<u8> bytes;
    for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<u8>(i));
    expectAll<u8>(rowOf<u8>(bytes));
    expectAll<u16>(rowOf<u16>({0, 1, 88, 89, 255, 256, 4096, 32767, 32768, 65534, 65535}));
    std::vector<f32> floats;  // all magnitudes, three to an octave
    for (double x = 0x1p-125; x < 0x1p127; x *= std::cbrt(2.0))
        for (const double sign : {1, -1}) floats.push_back(static_cast<f32>(sign * x));
    expectAll<f32>(rowOf<f32>(floats));
    for (const VexaSize& size : edgeSizes())
        for (const int channels : {1, 3}) {
            expectAll<u8>(noise<u8>(size, channels, 1));
            expectAll<u16>(noise<u16>(size, channels, 1));
            expectAll<f32>(noise<f32>(size, channels, 1));
        }
}

/// Results that no approximation may change, the signs of zeros among them.
TEST(Math, SpecialValues)
{
    constexpr float denormal = std::numeric_limits<float>::min() / 4;
    struct Row {
        const char* name;
        Call call;
        std::vector<f32> elements, expected;
    };
    // clang-format off
    const Row rows[] = {
        {"exp", al::exp, {0, 200, -200, infinity, -infinity, nan}, {1, infinity, 0, infinity, 0, nan}},
        {"sqrt", al::sqrt, {0, -0.0F, -1, infinity, -infinity, nan, denormal}, {0, -0.0F, nan, infinity, nan, nan, 0}},
        {"cbrt", al::cbrt, {0, -0.0F, infinity, -infinity, nan, denormal}, {0, -0.0F, infinity, -infinity, nan, 0}},
        {"abs", al::abs, {-0.0F, -2.5F, 2.5F, -infinity, nan, -3e38F}, {0, 2.5F, 2.5F, infinity, nan, 3e38F}},
        {"floor", al::floor, {2.5F, -0.5F, -0.0F, -1e30F, infinity, nan}, {2, -1, -0.0F, -1e30F, infinity, nan}},
        {"ceil", al::ceil, {2.5F, -0.5F, 8388607.5F, -infinity, nan}, {3, -0.0F, 8388608, -infinity, nan}},
        {"round", al::round, {2.5F, 3.5F, -0.5F, 0.49999997F, 8388609, infinity, nan},
                             {2, 4, -0.0F, 0, 8388609, infinity, nan}},
        {"pow 2", power(2), {0, -0.0F, -1, -infinity, infinity, nan, 1e30F, 1e-30F},
                            {0, 0, nan, nan, infinity, nan, infinity, 0}},
        {"pow -1", power(-1), {0, infinity, -8}, {infinity, 0, nan}},
        {"pow 0", power(0), {0, infinity, 5, 0.001F, -5}, {nan, nan, 1, 1, nan}},
        {"pow inf", power(static_cast<double>(infinity)), {2, 0.5F}, {infinity, 0}},
        {"pow nan", power(static_cast<double>(nan)), {2}, {nan}},
    };
    // clang-format on
    for (const Row& row : rows) {
        VexaImage dst;
        ASSERT_EQ(row.call(rowOf<f32>(row.elements), dst, stream), VEXA_SUCCESS);
        const std::vector<f32> results = download<f32>(dst);
        for (std::size_t i = 0; i < row.expected.size(); ++i) {
            const f32 expected = row.expected[i];
            const bool equal = results[i] == expected && std::signbit(results[i]) == std::signbit(expected);
            EXPECT_TRUE(std::isnan(expected) ? std::isnan(results[i]) : equal)
                << row.name << " of " << row.elements[i] << " gives " << results[i];
        }
    }
}

/// With a destination of each type and, at VEXA_NO_TYPE, an empty one.
TEST(Math, SupportsExactlyItsTypes)
{
    const auto isFloat = [](int type) { return type == VEXA_32FC1 || type == VEXA_32FC3; };
    const auto isServed = [&](int type) {
        return type == VEXA_8UC1 || type == VEXA_8UC3 || type == VEXA_16UC1 || type == VEXA_16UC3 || isFloat(type);
    };
    const auto when = [](bool supported) { return supported ? VEXA_SUCCESS : VEXA_NOT_SUPPORTED_MODE_ERROR; };
    const auto expectCall = [](const Function& function, VexaType from, VexaType to, VexaStatus status,
                               VexaType created) {
        VexaImage dst(5, 3, to);
        EXPECT_EQ(function.call(VexaImage(), dst, stream), VEXA_IMAGE_NOT_INITIALIZED);
        EXPECT_EQ(dst.type(), to);
        EXPECT_EQ(function.call(VexaImage(5, 3, from), dst, stream), status)
            << function.name << " from " << from << " to " << to;
        EXPECT_EQ(dst.type(), to == VEXA_NO_TYPE ? created : to) << function.name << " of " << from;
    };
    const std::vector<Function> all = approximations();
    for (int from = VEXA_8UC1; from <= VEXA_64FC4; ++from)
        for (int to = VEXA_NO_TYPE; to <= VEXA_64FC4; ++to) {
            const auto src = static_cast<VexaType>(from);
            const auto dst = static_cast<VexaType>(to);
            const auto intoFloats = [&](bool supported) {
                if (dst == VEXA_NO_TYPE) return when(supported);
                if (from % 4 != to % 4) return VEXA_NOT_SUPPORTED_MODE_ERROR;  // channels
                return isFloat(dst) ? when(supported) : VEXA_DEPTH_NOT_SUPPORTED_ERROR;
            };
            for (const Function& function : all)
                expectCall(function, src, dst, intoFloats(isServed(src)), getType(32, from % 4 + 1, false));
            for (const Function& function : roundings) expectCall(function, src, dst, intoFloats(isFloat(src)), src);
            expectCall(absolute, src, dst, when(isServed(src) && (dst == VEXA_NO_TYPE || src == dst)), src);
        }
}

/// abs alone compares sizes. The others compute what both images hold.
TEST(Math, DestinationOfAnotherSize)
{
    const VexaImage src = constant<f32>({40, 30}, 3, 2.25F);
    VexaImage tight(40, 30, 480, 32, 3);
    EXPECT_EQ(al::abs(src, tight), VEXA_SUCCESS) << "by the pitch of the source, but inside";
    for (const VexaSize& size : {VexaSize(7, 5), VexaSize(50, 20), VexaSize(20, 50), VexaSize(50, 50)}) {
        VexaImage dst(size, VEXA_32FC3);
        EXPECT_EQ(al::abs(src, dst), VEXA_NOT_SUPPORTED_MODE_ERROR);
        for (const Call& call : {Call(al::exp), Call(al::sqrt), Call(al::cbrt), power(2.5), Call(al::round)}) {
            VexaImage inPlace(src);
            ASSERT_EQ(call(inPlace, inPlace, stream), VEXA_SUCCESS);
            fillBuffer(dst, 0);
            ASSERT_EQ(call(src, dst, stream), VEXA_SUCCESS);
            const double value = inPlace.get(39, 29, 2);
            const auto isCommon = [&](int pixel) { return pixel % size.width < 40 && pixel / size.width < 30; };
            EXPECT_NE(value, 2.25);
            expectElements<f32>(
                dst, [&](auto i) { return isCommon(static_cast<int>(i) / 3) ? value : 0; }, 1e-5);
            expectGaps(dst, 0);
        }
    }
}

}  // namespace
