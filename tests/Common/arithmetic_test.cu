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
