/// @file
/// Device arithmetic, evaluated by a kernel and compared with plain arithmetic in double.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "arithmetic.h"
#include "device_array.h"
#include "kernels.h"

using namespace vexa;

struct Fused {
    VEXA_DEVICE float operator()(float a, float b, float c) const { return multiplyAdd(a, b, c); }
};

struct Unfused {
    VEXA_DEVICE float operator()(float a, float b, float c) const { return a * b + c; }
};

struct Reciprocal {
    VEXA_DEVICE float operator()(float x) const { return reciprocal(x); }
};

struct SquareRoot {
    VEXA_DEVICE float operator()(float x) const { return squareRoot(x); }
};

struct Exp2 {
    VEXA_DEVICE float operator()(float x) const { return vexa::exp2(x); }
};

struct Log2 {
    VEXA_DEVICE float operator()(float x) const { return vexa::log2(x); }
};

struct TruncateToUnsigned {
    VEXA_DEVICE unsigned operator()(float x) const { return truncateToUnsigned(x); }
};

template <typename T, bool saturates>
struct Store {
    Range range;
    VEXA_DEVICE T operator()(float value) const { return store<T, saturates>(value, range); }
};

template <typename Function, typename D, typename... S>
VEXA_KERNEL test_evaluate(Function function, D* results, int count, S*... arguments)
{
    forEachPixel(count, 1, [=](int i, int) { results[i] = function(arguments[i]...); });
}

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

/// The function on the device at the arguments.
template <typename D, typename Function, typename... S>
std::vector<D> evaluate(const Function& function, const std::vector<S>&... arguments)
{
    const std::size_t count = std::min({arguments.size()...});
    const DeviceArray<D> results(count, D());
    const auto run = [&](const DeviceArray<S>&... onDevice) {
        launch(test_evaluate<Function, D, S...>, {static_cast<int>(count), 1}, nullptr, function, results.ptr(),
               static_cast<int>(count), onDevice.ptr()...);
    };
    run(DeviceArray<S>(arguments)...);
    return results.download();
}

TEST(MultiplyAdd, RoundsOnceAndNothingElseIsFused)
{
    const float step = std::ldexp(1.0F, -12);
    const std::vector<float> a = {1 + step, 1 + step, 3, infinity, 0};
    const std::vector<float> c = {-(1 + 2 * step), -1, -9, 1, -2};
    const std::vector<float> fused = evaluate<float>(Fused{}, a, a, c);
    EXPECT_EQ(fused, (std::vector<float>{step * step, 2 * step + step * step, 0, infinity, -2}));
    const std::vector<float> unfused = evaluate<float>(Unfused{}, a, a, c);
    EXPECT_EQ(unfused, (std::vector<float>{0, 2 * step, 0, infinity, -2}));
}

/// `count` floats from lowest to highest.
std::vector<float> steps(float lowest, float highest, int count)
{
    std::vector<float> values(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        values[static_cast<std::size_t>(i)] =
            lowest + (highest - lowest) * static_cast<float>(i) / static_cast<float>(count - 1);
    return values;
}

/// The largest difference to the formula, in units of the last place of the larger of the result and `floor`.
template <typename Function>
double worstUlps(const Function& function, const std::vector<float>& x, double (*formula)(double), double floor)
{
    const std::vector<float> results = evaluate<float>(function, x);
    double worst = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double exact = formula(static_cast<double>(x[i]));
        const double ulp = std::ldexp(1.0, std::ilogb(std::fmax(std::fabs(exact), floor)) - 23);
        worst = std::fmax(worst, std::fabs(static_cast<double>(results[i]) - exact) / ulp);
    }
    return worst;
}

TEST(Approximations, AreWithinAFewUnitsInTheLastPlace)
{
    EXPECT_LE(worstUlps(Exp2{}, steps(-125.9F, 127.9F, 1 << 17), std::exp2, 0), 2.5);
    EXPECT_LE(worstUlps(Exp2{}, steps(-1.0F, 1.0F, 1 << 17), std::exp2, 0), 2.5);
    EXPECT_LE(worstUlps(Log2{}, steps(1e-3F, 1e3F, 1 << 17), std::log2, 0.5), 4);
    EXPECT_LE(worstUlps(Log2{}, steps(0.5F, 2.0F, 1 << 17), std::log2, 0.5), 4);
    EXPECT_LE(worstUlps(Log2{}, steps(1e-37F, 3e38F, 1 << 17), std::log2, 0.5), 4);
    EXPECT_LE(worstUlps(SquareRoot{}, steps(0, 1e9F, 1 << 17), std::sqrt, 1e-30), 1.5);
}

TEST(Approximations, AtTheEnds)
{
    const std::vector<float> powers = evaluate<float>(
        Exp2{}, std::vector<float>{0, 1, -1, 127, 128, 200, infinity, -126, -127, -200, -infinity, 1e30F, -1e30F, nan});
    EXPECT_EQ(
        std::vector<float>(powers.begin(), powers.end() - 1),
        (std::vector<float>{1, 2, 0.5F, 0x1p127F, infinity, infinity, infinity, 0x1p-126F, 0, 0, 0, infinity, 0}));
    EXPECT_TRUE(std::isnan(powers.back()));

    const std::vector<float> logarithms = evaluate<float>(
        Log2{}, std::vector<float>{1, 2, 0.5F, 0x1p-126F, 0x1p127F, 0, -0.0F, 1e-40F, infinity, -1, -infinity, nan});
    EXPECT_EQ(std::vector<float>(logarithms.begin(), logarithms.begin() + 9),
              (std::vector<float>{0, 1, -1, -126, 127, -infinity, -infinity, -infinity, infinity}));
    for (std::size_t i = 9; i < logarithms.size(); ++i) EXPECT_TRUE(std::isnan(logarithms[i])) << i;

    const std::vector<float> roots = evaluate<float>(SquareRoot{}, std::vector<float>{0, 4, infinity, -1, nan});
    EXPECT_EQ(std::vector<float>(roots.begin(), roots.begin() + 3), (std::vector<float>{0, 2, infinity}));
    EXPECT_TRUE(std::isnan(roots[3]) && std::isnan(roots[4]));

    EXPECT_EQ(evaluate<unsigned>(TruncateToUnsigned{}, std::vector<float>{0, 2.9F, -0.5F, -3e9F, 3e9F, 4294967040.0F,
                                                                          4294967296.0F, infinity, -infinity, nan}),
              (std::vector<unsigned>{0, 2, 0, 0, 3000000000U, 4294967040U, ~0U, ~0U, 0, 0}));
}

TEST(MultiplyAdd, FlushesDenormalsForKernelsAndNotForCallers)
{
    const std::vector<float> a = {1e-40F, 1e-20F, 1e-40F, -1e-20F};
    const std::vector<float> b = {1e20F, 1e-20F, 1, 1e-19F};
    const std::vector<float> result = evaluate<float>(Fused{}, a, b, std::vector<float>(4, 0.0F));
    EXPECT_EQ(result, (std::vector<float>{0, 0, 0, 0}));
    volatile float tiny = 1e-40F;
    EXPECT_GT(tiny * 1e20F, 0);
}

TEST(Reciprocal, IsWithinAnUlpAndKeepsTheSignsOfZeroAndInfinity)
{
    const std::vector<float> special =
        evaluate<float>(Reciprocal{}, std::vector<float>{0, -0.0F, infinity, -infinity, nan, 1, 1e-40F});
    EXPECT_EQ(special[0], infinity);
    EXPECT_EQ(special[1], -infinity);
    EXPECT_TRUE(special[2] == 0 && !std::signbit(special[2]));
    EXPECT_TRUE(special[3] == 0 && std::signbit(special[3]));
    EXPECT_TRUE(std::isnan(special[4]));
    EXPECT_EQ(special[5], 1);
    EXPECT_EQ(special[6], infinity) << "a denormal counts as 0";

    std::vector<float> sample;
    for (int exponent = -125; exponent <= 124; ++exponent)
        for (int i = 0; i < 128; ++i)
            sample.push_back(std::ldexp(
                static_cast<float>(i % 2 == 0 ? 1 : -1) * (1 + static_cast<float>(i * i) / 16384), exponent));
    const std::vector<float> result = evaluate<float>(Reciprocal{}, sample);
    for (std::size_t i = 0; i < sample.size(); ++i) {
        const double exact = 1.0 / static_cast<double>(sample[i]);
        const float rounded = std::abs(static_cast<float>(exact));
        const double ulp = static_cast<double>(std::nextafter(rounded, infinity)) - static_cast<double>(rounded);
        ASSERT_NEAR(static_cast<double>(result[i]), exact, ulp) << "1 / " << sample[i];
    }
}

TEST(Store, LeavesValuesAloneWithoutSaturation)
{
    const std::vector<float> values = {infinity, -infinity, -1e30F, 2.9F, 300};
    EXPECT_EQ(evaluate<float>(Store<float, false>{{0, 0}}, values), values);
    EXPECT_TRUE(std::isnan(evaluate<float>(Store<float, false>{{0, 0}}, std::vector<float>{nan})[0]));
    EXPECT_EQ(evaluate<u8>(Store<u8, false>{{0, 1}}, std::vector<float>{2.9F, 200}), (std::vector<u8>{2, 200}));
}

}  // namespace
