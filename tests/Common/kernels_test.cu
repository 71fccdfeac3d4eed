/// @file
/// The shapes of kernels, by way of small kernels: what they visit, what they leave alone, and how launches treat
/// shapes without pixels and images without memory.

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "device_array.h"
#include "kernels.h"

using namespace vexa;

VEXA_KERNEL test_visit(int* visits, int width, int height, int pitch)
{
    forEachPixel(width, height, [=](int x, int y) { visits[y * pitch + x] += 1; });
}

template <int C, typename A, typename B, typename D>
VEXA_KERNEL test_mix(A* a, B* b, D* dst, int width, int height, int pitchA, int pitchB, int pitchD)
{
    mapElements<C>(
        width, height, Plane<D>{dst, pitchD}, [](A first, B second) { return static_cast<D>(2 * first + second); },
        Plane<A>{a, pitchA}, Plane<B>{b, pitchB});
}

VEXA_KERNEL test_mixWithConstants(u8* a, u16* dst, int width, int height, int pitchA, int pitchD,
                                  PerChannel<u16, 3> channels, PerChannel<float, 1> all)
{
    mapElements<3>(
        width, height, Plane<u16>{dst, pitchD},
        [](u8 first, u16 channel, float factor) {
            return static_cast<u16>(first * static_cast<int>(factor) + channel);
        },
        Plane<u8>{a, pitchA}, channels, all);
}

VEXA_KERNEL test_visitOutside(int* visits, Interior interior, int width, int height, int pitch)
{
    forEachPixelOutside(interior, width, height, [=](int x, int y) { visits[y * pitch + x] += 1; });
}

/// Sums of neighbouring elements, from side by side to planes and back.
struct NeighbourSums {
    template <typename T>
    VEXA_DEVICE Pixel<T, 3> operator()(Pixel<T, 3> p) const
    {
        return {{static_cast<T>(p.element[0] + p.element[1]), static_cast<T>(p.element[1] + p.element[2]),
                 static_cast<T>(p.element[2] + p.element[0])}};
    }
};

template <typename T>
VEXA_KERNEL test_toPlanes(T* src, T* a, T* b, T* c, int width, int height, int srcPitch, int dstPitch)
{
    mapPixels(width, height, Planar<T, 3>{{a, b, c}, dstPitch}, NeighbourSums{}, Interleaved<T, 3>{src, srcPitch});
}

template <typename T>
VEXA_KERNEL test_fromPlanes(T* a, T* b, T* c, T* dst, int width, int height, int srcPitch, int dstPitch)
{
    mapPixels(width, height, Interleaved<T, 3>{dst, dstPitch}, NeighbourSums{}, Planar<T, 3>{{a, b, c}, srcPitch});
}

VEXA_KERNEL test_visitItems(int* visits, int count)
{
    forEachItem(count, [=](long long i) { visits[i] += 1; });
}

struct PartialSums {
    int of[blockSide * blockSide];
};

/// The sum of each block's pixels, halving the number of partial sums from phase to phase.
VEXA_KERNEL test_blockSum(const int* src, int* sums, int width, int height, int pitch)
{
    forEachBlock<PartialSums>(width, height, [=](const Block<PartialSums>& block) {
        block.phase([&](int threadX, int threadY) {
            const int x = block.x * blockSide + threadX;
            const int y = block.y * blockSide + threadY;
            block.shared.of[threadY * blockSide + threadX] = x < width && y < height ? src[y * pitch + x] : 0;
        });
        for (int half = blockSide * blockSide / 2; half > 0; half /= 2)
            block.phase([&](int threadX, int threadY) {
                const int thread = threadY * blockSide + threadX;
                if (thread < half) block.shared.of[thread] += block.shared.of[thread + half];
            });
        block.phase([&](int threadX, int threadY) {
            const int columns = (width + blockSide - 1) / blockSide;
            if (threadX == 0 && threadY == 0) sums[block.y * columns + block.x] = block.shared.of[0];
        });
    });
}

namespace {

/// The edge sizes, and one that takes all cores.
std::vector<VexaSize> sizes()
{
    std::vector<VexaSize> all = kit::edgeSizes();
    all.emplace_back(2049, 1537);
    return all;
}

/// Launches that cover the image, and one that leaves most of it to the stride.
std::vector<Extent> extents(VexaSize size)
{
    return {{size.width, size.height}, {1, 1}, {17, 40}};
}

constexpr int untouched = 1000;

TEST(ForEachPixel, VisitsEveryPixelOnce)
{
    for (const VexaSize& size : sizes())
        for (const Extent& extent : extents(size)) {
            SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << " by " << extent.width);
            const Layout layout{size.width, size.height, 5, 3};
            const DeviceArray<int> visits(layout.count(), untouched);
            launch(test_visit, extent, nullptr, visits.ptr() + layout.shift, size.width, size.height, layout.pitch());
            const std::vector<int> result = visits.download();
            int x = 0;
            int y = 0;
            for (std::size_t i = 0; i < result.size(); ++i)
                ASSERT_EQ(result[i], layout.contains(i, x, y) ? untouched + 1 : untouched) << "at " << i;
        }
}

/// dst = 2 * a + b on rows of their own pitches, with everything around the rows kept. With a shift rows start off the
/// alignment of 16 elements, with a skew they don't return to it.
template <int C, typename A, typename B, typename D>
void expectMix(VexaSize size, Extent extent, int shift, int skew)
{
    SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << " shift " << shift << " skew " << skew);
    const int width = C * size.width;
    const int toAlignment = (width + 15) / 16 * 16 - width;
    const Layout a{width, size.height, shift, toAlignment + 2 * skew};
    const Layout b{width, size.height, 2 * shift, toAlignment};
    const Layout dst{width, size.height, shift, toAlignment + 16 + skew};
    const auto valueA = [](int x, int y) { return static_cast<A>(x % 90 + y % 8); };
    const auto valueB = [](int x, int y) { return static_cast<B>(x % 16 + 3 * (y % 11)); };
    int x = 0;
    int y = 0;
    std::vector<A> elementsA(a.count(), A(200));
    for (std::size_t i = 0; i < elementsA.size(); ++i)
        if (a.contains(i, x, y)) elementsA[i] = valueA(x, y);
    std::vector<B> elementsB(b.count(), B(201));
    for (std::size_t i = 0; i < elementsB.size(); ++i)
        if (b.contains(i, x, y)) elementsB[i] = valueB(x, y);

    const DeviceArray<A> deviceA(elementsA);
    const DeviceArray<B> deviceB(elementsB);
    const DeviceArray<D> deviceDst(dst.count(), D(255));
    launch(test_mix<C, A, B, D>, extent, nullptr, deviceA.ptr() + a.shift, deviceB.ptr() + b.shift,
           deviceDst.ptr() + dst.shift, size.width, size.height, a.pitch(), b.pitch(), dst.pitch());
    const std::vector<D> result = deviceDst.download();
    for (std::size_t i = 0; i < result.size(); ++i)
        ASSERT_EQ(result[i], dst.contains(i, x, y) ? D(2 * valueA(x, y) + valueB(x, y)) : D(255)) << "at " << i;
}

template <int C, typename A, typename B, typename D>
void expectMixes()
{
    for (const VexaSize& size : sizes()) {
        const Extent extent = elementExtent<C, A, B, D>(size.width, size.height);
        expectMix<C, A, B, D>(size, extent, 16, 0);
        expectMix<C, A, B, D>(size, {1, 1}, 0, 0);
        if (size.width > 1000) continue;
        expectMix<C, A, B, D>(size, extent, 1, 0);
        expectMix<C, A, B, D>(size, extent, 0, 1);
    }
}

TEST(MapElements, MapsEveryElementWhateverAlignmentPitchAndSize)
{
    expectMixes<1, u8, u8, u8>();
    expectMixes<3, u8, u16, f32>();
    expectMixes<3, f32, u8, u8>();
    expectMixes<4, u16, u16, u16>();
}

TEST(MapElements, GivesEachChannelItsConstant)
{
    for (const VexaSize& size : sizes())
        for (const int shift : {0, 1}) {
            const Layout a{3 * size.width, size.height, shift, 5};
            const Layout dst{3 * size.width, size.height, 2 * shift, 11};
            const DeviceArray<u8> src(a.count(), 7);
            const DeviceArray<u16> result(dst.count(), 9);
            launch(test_mixWithConstants, elementExtent<3, u8, u16>(size.width, size.height), nullptr,
                   src.ptr() + a.shift, result.ptr() + dst.shift, size.width, size.height, a.pitch(), dst.pitch(),
                   PerChannel<u16, 3>{{1000, 2000, 3000}}, PerChannel<float, 1>{{10}});
            const std::vector<u16> elements = result.download();
            int x = 0;
            int y = 0;
            for (std::size_t i = 0; i < elements.size(); ++i)
                ASSERT_EQ(elements[i], dst.contains(i, x, y) ? 70 + 1000 * (x % 3 + 1) : 9) << "at " << i;
        }
}

TEST(ForEachPixelOutside, LeavesTheInteriorAlone)
{
    const VexaSize size(37, 20);
    const Interior interiors[] = {{3, 30, 2, 15},  {0, 37, 0, 20},  {-5, 40, 4, 9},      {36, 37, 19, 20},
                                  {30, 3, 2, 15},  {3, 30, 15, 2},  {-9, -2, 0, 20},     {40, 50, 0, 20},
                                  {3, 99, -4, 40}, {10, 10, 5, 10}, {-100, 100, 21, 50}, {0, 1, 0, 1}};
    for (const Interior& interior : interiors) {
        const DeviceArray<int> visits(740, 0);
        launch(test_visitOutside, {size.width, size.height}, nullptr, visits.ptr(), interior, size.width, size.height,
               size.width);
        const std::vector<int> result = visits.download();
        for (int i = 0; i < 740; ++i) {
            const int x = i % size.width;
            const int y = i / size.width;
            const bool inside = x >= interior.left && x < interior.right && y >= interior.top && y < interior.bottom;
            ASSERT_EQ(result[static_cast<std::size_t>(i)], inside ? 0 : 1) << x << ", " << y;
        }
    }
}

/// `shift` and `gap` move rows off the alignment of runs.
template <typename T>
void expectPixels(VexaSize size, int shift, int gap)
{
    SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << " shift " << shift << " gap " << gap);
    const Layout pixels{3 * size.width, size.height, shift, (16 - 3 * size.width % 16) % 16 + gap};
    const Layout plane{size.width, size.height, shift, (16 - size.width % 16) % 16 + gap};
    const auto value = [](int x, int y) { return (7 * x + y) % 80; };
    std::vector<T> elements(pixels.count(), T(99));
    int x = 0;
    int y = 0;
    for (std::size_t i = 0; i < elements.size(); ++i)
        if (pixels.contains(i, x, y)) elements[i] = static_cast<T>(value(x, y));

    const DeviceArray<T> src(elements);
    const DeviceArray<T> a(plane.count(), T(200));
    const DeviceArray<T> b(plane.count(), T(200));
    const DeviceArray<T> c(plane.count(), T(200));
    launch(test_toPlanes<T>, pixelExtent(size.width, size.height), nullptr, src.ptr() + shift, a.ptr() + shift,
           b.ptr() + shift, c.ptr() + shift, size.width, size.height, pixels.pitch(), plane.pitch());
    int channel = 0;
    for (const DeviceArray<T>* result : {&a, &b, &c}) {
        const std::vector<T> sums = result->download();
        for (std::size_t i = 0; i < sums.size(); ++i)
            ASSERT_EQ(sums[i], plane.contains(i, x, y)
                                   ? T(value(3 * x + channel, y) + value(3 * x + (channel + 1) % 3, y))
                                   : T(200))
                << "channel " << channel << " at " << i;
        ++channel;
    }

    // From planes of constants back: neighbours add up to 3, 5 and 4.
    const DeviceArray<T> ones(plane.count(), T(1));
    const DeviceArray<T> twos(plane.count(), T(2));
    const DeviceArray<T> threes(plane.count(), T(3));
    launch(test_fromPlanes<T>, {1, 1}, nullptr, ones.ptr() + shift, twos.ptr() + shift, threes.ptr() + shift,
           src.ptr() + shift, size.width, size.height, plane.pitch(), pixels.pitch());
    const std::vector<T> merged = src.download();
    const T sums[] = {3, 5, 4};
    for (std::size_t i = 0; i < merged.size(); ++i)
        ASSERT_EQ(merged[i], pixels.contains(i, x, y) ? sums[x % 3] : T(99)) << "at " << i;
}

TEST(MapPixels, TakesPixelsApartWhateverTheirLayout)
{
    for (const VexaSize& size : sizes())
        for (const int offset : {0, 1, 4}) {
            if (size.width > 1000 && offset > 0) continue;
            expectPixels<u8>(size, offset, offset);
            expectPixels<u16>(size, offset, 0);
            expectPixels<f32>(size, 0, offset);
        }
    // Large enough that the host writes past the caches.
    expectPixels<f32>({2101, 1811}, 0, 0);
    expectPixels<f32>({2101, 1811}, 1, 1);
}

TEST(ForEachItem, VisitsEveryItemOnce)
{
    for (const int count : {1, 15, 256, 257, 5000, 300000})
        for (const Extent& extent : {itemExtent(count), Extent{1, 1}, Extent{40, 50}}) {
            const DeviceArray<int> visits(static_cast<std::size_t>(count) + 9, untouched);
            launch(test_visitItems, extent, nullptr, visits.ptr(), count);
            const std::vector<int> result = visits.download();
            for (int i = 0; i < count + 9; ++i)
                ASSERT_EQ(result[static_cast<std::size_t>(i)], i < count ? untouched + 1 : untouched) << i;
        }
}

TEST(ForEachBlock, SharesMemoryAcrossPhases)
{
    for (const VexaSize& size : sizes()) {
        const int columns = (size.width + 15) / 16;
        const int rows = (size.height + 15) / 16;
        const Layout layout{size.width, size.height, 0, 2};
        std::vector<int> elements(layout.count(), 1 << 20);
        std::vector<int> expected(static_cast<std::size_t>(columns * rows));
        int x = 0;
        int y = 0;
        for (std::size_t i = 0; i < elements.size(); ++i) {
            if (!layout.contains(i, x, y)) continue;
            elements[i] = (31 * x + 17 * y) % 1009;
            expected[static_cast<std::size_t>(y / 16 * columns + x / 16)] += elements[i];
        }
        const DeviceArray<int> src(elements);
        for (const Extent& extent : extents(size)) {
            SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << " by " << extent.width);
            const DeviceArray<int> sums(expected.size(), -1);
            launch(test_blockSum, extent, nullptr, src.ptr(), sums.ptr(), size.width, size.height, layout.pitch());
            EXPECT_EQ(sums.download(), expected);
        }
    }
}

TEST(Launch, ShapesWithoutPixelsDoNothing)
{
    const DeviceArray<int> visits(64, untouched);
    const DeviceArray<u8> bytes(64, 7);
    const std::vector<VexaSize> empty = {{0, 5}, {5, 0}, {0, 0}, {-1, 5}, {5, -1}, {-300, -300}, {INT_MIN / 4, 5}};
    for (const VexaSize& size : empty) {
        launch(test_visit, {1, 1}, nullptr, visits.ptr(), size.width, size.height, 8);
        launch(test_mix<3, u8, u8, u8>, {1, 1}, nullptr, bytes.ptr(), bytes.ptr(), bytes.ptr(), size.width, size.height,
               8, 8, 8);
        launch(test_blockSum, {1, 1}, nullptr, visits.ptr(), visits.ptr(), size.width, size.height, 8);
    }
    EXPECT_EQ(visits.download(), std::vector<int>(64, untouched));
    EXPECT_EQ(bytes.download(), std::vector<u8>(64, 7));
}

TEST(Launch, NullPointersAreNotLaunchedOn)
{
    const DeviceArray<u8> bytes(64, 7);
    u8* const null = nullptr;
    launch(test_mix<1, u8, u8, u8>, {8, 8}, nullptr, null, bytes.ptr(), bytes.ptr(), 8, 8, 8, 8, 8);
    launch(test_mix<1, u8, u8, u8>, {8, 8}, nullptr, bytes.ptr(), null, bytes.ptr(), 8, 8, 8, 8, 8);
    launch(test_mix<1, u8, u8, u8>, {8, 8}, nullptr, bytes.ptr(), bytes.ptr(), null, 8, 8, 8, 8, 8);
    launch(test_visit, {8, 8}, nullptr, static_cast<int*>(nullptr), 8, 8, 8);
    EXPECT_EQ(platform::synchronizeDevice(), VEXA_SUCCESS);
    EXPECT_EQ(bytes.download(), std::vector<u8>(64, 7));
}

}  // namespace
