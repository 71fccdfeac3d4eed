/// @file
/// Windows against the fetch they read by, on images that end just before, at and after the host's tiles.

#include <gtest/gtest.h>

#include <vector>

#include "device_array.h"
#include "windows.h"

using namespace vexa;

namespace {

using Uneven = Reach<2, 5, 1, 3>;

/// Corners of the reach and the element itself, each with a weight of its own.
template <typename At>
VEXA_DEVICE int probe(const At& at)
{
    return at(0, 0) + 3 * at(-2, -1) + 5 * at(5, -1) + 7 * at(-2, 3) + 11 * at(5, 3) + 13 * at(1, -1);
}

}  // namespace

template <typename Fetch>
VEXA_KERNEL test_windows(Fetch src, int* results)
{
    forEachWindow<Uneven, int>(src,
                               [=](int x, int y, const auto& window) { results[y * src.width + x] = probe(window); });
}

template <typename Fetch>
VEXA_KERNEL test_fetches(Fetch src, int* results)
{
    forEachPixel(src.width, src.height, [=](int x, int y) {
        results[y * src.width + x] = probe([&](int dx, int dy) { return int{src(x + dx, y + dy)}; });
    });
}

namespace {

template <typename Fetch>
void expectFetched(int width, int height)
{
    const int pitch = width + 3;
    std::vector<u16> pixels(static_cast<std::size_t>(pitch) * static_cast<std::size_t>(height));
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<u16>(1 + i * i % 9973);
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const DeviceArray<u16> device(pixels);
    const DeviceArray<int> windows(std::vector<int>(count, -1));
    const DeviceArray<int> fetches(std::vector<int>(count, -2));
    const Fetch src{device.ptr(), width, height, pitch};
    launch(test_windows<Fetch>, Extent{width, height}, nullptr, src, windows.ptr());
    launch(test_fetches<Fetch>, Extent{width, height}, nullptr, src, fetches.ptr());
    EXPECT_EQ(windows.download(), fetches.download()) << width << "x" << height;
}

}  // namespace

TEST(Windows, ReadWhatTheFetchReads)
{
    const Extent sizes[] = {{1, 1}, {3, 2}, {511, 63}, {512, 64}, {513, 65}, {1030, 130}};
    for (const Extent size : sizes) {
        expectFetched<FetchClamped<u16>>(size.width, size.height);
        expectFetched<FetchZero<u16>>(size.width, size.height);
    }
}
