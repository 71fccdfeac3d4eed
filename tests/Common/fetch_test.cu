/// @file
/// Reading images at positions that may lie outside. Everything around the image, gaps included, is NaN or 99, so that
/// an element read from there shows.

#include <gtest/gtest.h>

#include <climits>
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

namespace {

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

}  // namespace
