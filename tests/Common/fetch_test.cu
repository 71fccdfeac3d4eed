/// @file
/// Reading images at positions that may lie outside. Everything around the image, gaps included, is NaN or 99, so that
/// an element read from there shows.

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "device_array.h"
#include "fetch.h"
#include "kernels.h"

using namespace vexa;

template <typename Fetch, typename T>
VEXA_KERNEL test_fetch(Fetch fetch, const int* x, const int* y, T* results, int count)
{
    forEachPixel(count, 1, [=](int i, int) { results[i] = fetch(x[i], y[i]); });
}

template <typename Fetch>
VEXA_KERNEL test_fetchLinear(Fetch fetch, const float* u, const float* v, float* results, int count)
{
    forEachPixel(count, 1, [=](int i, int) { results[i] = fetchLinear(fetch, u[i], v[i]); });
}

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

/// 5x3 elements with the value 10 y + x + 1, surrounded.
template <typename T>
class Framed {
public:
    explicit Framed(T around) : _block(elements(around)) {}

    FetchClamped<T> clamped() const { return {_block.ptr() + layout.shift, width, height, layout.pitch()}; }
    FetchZero<T> zero() const { return {_block.ptr() + layout.shift, width, height, layout.pitch()}; }

    static constexpr int width = 5;
    static constexpr int height = 3;

private:
    static constexpr Layout layout{width, height, 32, 4};

    static std::vector<T> elements(T around)
    {
        std::vector<T> all(layout.count(), around);
        int x = 0;
        int y = 0;
        for (std::size_t i = 0; i < all.size(); ++i)
            if (layout.contains(i, x, y)) all[i] = static_cast<T>(10 * y + x + 1);
        return all;
    }

    DeviceArray<T> _block;
};

template <typename T, typename Fetch>
std::vector<T> fetched(const Fetch& fetch, const std::vector<int>& x, const std::vector<int>& y)
{
    const DeviceArray<int> deviceX(x);
    const DeviceArray<int> deviceY(y);
    const DeviceArray<T> results(x.size(), T(77));
    const int count = static_cast<int>(x.size());
    launch(test_fetch<Fetch, T>, {count, 1}, nullptr, fetch, deviceX.ptr(), deviceY.ptr(), results.ptr(), count);
    return results.download();
}

template <typename Fetch>
std::vector<float> fetchedLinear(const Fetch& fetch, const std::vector<float>& u, const std::vector<float>& v)
{
    const DeviceArray<float> deviceU(u);
    const DeviceArray<float> deviceV(v);
    const DeviceArray<float> results(u.size(), 77);
    const int count = static_cast<int>(u.size());
    launch(test_fetchLinear<Fetch>, {count, 1}, nullptr, fetch, deviceU.ptr(), deviceV.ptr(), results.ptr(), count);
    return results.download();
}

template <typename T>
void expectAddressing(T around)
{
    struct Position {
        int x, y;
        int clamped, zero;
    };
    const Position positions[] = {{0, 0, 1, 1},
                                  {4, 2, 25, 25},
                                  {2, 1, 13, 13},
                                  {-1, 0, 1, 0},
                                  {0, -1, 1, 0},
                                  {5, 0, 5, 0},
                                  {4, 3, 25, 0},
                                  {0, 3, 21, 0},
                                  {-1, 1, 11, 0},
                                  {INT_MIN, 1, 11, 0},
                                  {INT_MAX, 1, 15, 0},
                                  {2, INT_MIN, 3, 0},
                                  {2, INT_MAX, 23, 0},
                                  {INT_MIN, INT_MAX, 21, 0},
                                  {INT_MAX, INT_MIN, 5, 0}};
    std::vector<int> x, y;
    std::vector<T> clamped, zero;
    for (const Position& position : positions) {
        x.push_back(position.x);
        y.push_back(position.y);
        clamped.push_back(static_cast<T>(position.clamped));
        zero.push_back(static_cast<T>(position.zero));
    }
    const Framed<T> image(around);
    EXPECT_EQ(fetched<T>(image.clamped(), x, y), clamped);
    EXPECT_EQ(fetched<T>(image.zero(), x, y), zero);
}

TEST(Fetch, RepeatsTheEdgeOrReadsZeroOutside)
{
    expectAddressing<u8>(99);
    expectAddressing<u16>(99);
    expectAddressing<f32>(nan);
}

TEST(FetchLinear, MeetsElementsAtTheirCentresAndMeansBetween)
{
    const Framed<u8> image(99);
    const std::vector<float> u = {0.5F, 4.5F, 2.5F, 1.0F, 2.5F, 3.0F, 0.0F, 5.0F, 2.5F, 2.5F, 0.0F};
    const std::vector<float> v = {0.5F, 2.5F, 1.5F, 0.5F, 1.0F, 2.0F, 0.5F, 1.5F, 0.0F, 3.0F, 0.0F};
    EXPECT_EQ(fetchedLinear(image.clamped(), u, v), (std::vector<float>{1, 25, 13, 1.5F, 8, 18.5F, 1, 15, 3, 23, 1}));
    EXPECT_EQ(fetchedLinear(image.zero(), u, v),
              (std::vector<float>{1, 25, 13, 1.5F, 8, 18.5F, 0.5F, 7.5F, 1.5F, 11.5F, 0.25F}));
}

TEST(FetchLinear, WeighsInStepsOfA256th)
{
    const DeviceArray<f32> ramp(std::vector<f32>{0, 256, 1024, 1280});
    const FetchClamped<f32> fetch{ramp.ptr(), 2, 2, 2};
    std::vector<float> across, centre;
    for (int i = 0; i <= 2048; ++i) {
        across.push_back(0.5F + static_cast<float>(i) / 2048);
        centre.push_back(0.5F);
    }
    const std::vector<float> alongX = fetchedLinear(fetch, across, centre);
    const std::vector<float> alongY = fetchedLinear(fetch, centre, across);
    for (std::size_t i = 0; i < across.size(); ++i) {
        const float weight = static_cast<float>(i) / 8;
        ASSERT_EQ(alongX[i], std::floor(alongX[i])) << "a weight between two steps at " << across[i];
        ASSERT_LE(std::abs(alongX[i] - weight), 0.5F) << "not the nearest step at " << across[i];
        ASSERT_EQ(alongY[i], 4 * alongX[i]) << "at " << across[i];
    }
}

/// Nothing outside is read, however far the position: what lies there would turn the result into NaN.
TEST(FetchLinear, StaysInsideFromFarOutside)
{
    struct Position {
        float u, v;
        float clamped;  ///< NaN for any element of the image
    };
    const Position positions[] = {
        {1e30F, 1.5F, 15},         {-1e30F, 1.5F, 11},        {1.5F, 1e30F, 22},        {1.5F, -1e30F, 2},
        {infinity, 1.5F, 15},      {-infinity, -infinity, 1}, {infinity, infinity, 25}, {2147483648.0F, 0.5F, 5},
        {-2147483904.0F, 0.5F, 1}, {nan, 1.5F, nan},          {1.5F, nan, nan},         {nan, nan, nan},
    };
    std::vector<float> u, v;
    for (const Position& position : positions) {
        u.push_back(position.u);
        v.push_back(position.v);
    }
    const Framed<f32> image(nan);
    const std::vector<float> clamped = fetchedLinear(image.clamped(), u, v);
    const std::vector<float> zero = fetchedLinear(image.zero(), u, v);
    for (std::size_t i = 0; i < u.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "(" << u[i] << ", " << v[i] << ")");
        if (std::isnan(positions[i].clamped)) {
            EXPECT_TRUE(clamped[i] >= 1 && clamped[i] <= 25) << clamped[i];
            EXPECT_TRUE(zero[i] >= 0 && zero[i] <= 25) << zero[i];
        } else {
            EXPECT_EQ(clamped[i], positions[i].clamped);
            EXPECT_EQ(zero[i], 0);
        }
    }
}

}  // namespace
