/// @file
/// Operations of two threads at once, each on images of its own, and the threads that the library itself starts.

#include <filesystem>
#include <iterator>
#include <thread>

#include "images.h"

namespace {

long threadsOfProcess()
{
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

/// Before main, with the library loaded and nothing called.
const long threadsAtStart = threadsOfProcess();

bool runsOnGpu()
{
    VexaDeviceProperties properties;
    (void)vexa::device::getDeviceProperties(0, properties);
    return properties.computeCapability > 0;
}

TEST(Threads, NoneForSmallWork)
{
    if (runsOnGpu()) GTEST_SKIP() << "the driver of a GPU has threads of its own";
    EXPECT_EQ(threadsAtStart, 1);
    const long before = threadsOfProcess();
    const VexaImage image = kit::noise<kit::u8>({17, 33}, 3, 1);
    VexaImage sum;
    EXPECT_EQ(vexa::arithmeticLogical::add(image, VexaImage(image), sum), VEXA_SUCCESS);
    EXPECT_EQ(sum.get(3, 4).vals()[3], 0);
    EXPECT_LE(threadsOfProcess(), before);
}

/// 8-bit sums of fresh images, whose sources are copied and assigned on the way.
std::vector<kit::u8> sums(std::uint32_t seed)
{
    const VexaSize size(640, 480);
    VexaImage first;
    first = kit::noise<kit::u8>(size, 3, seed);
    const VexaImage second(kit::noise<kit::u8>(size, 3, seed + 1));
    VexaImage sum;
    EXPECT_EQ(vexa::arithmeticLogical::add(first, second, sum), VEXA_SUCCESS);
    EXPECT_EQ(sum.set(1, 1, -VexaScalar(-1, -2, -3, 0)), VEXA_SUCCESS);
    return kit::download<kit::u8>(sum);
}

/// 32-bit floats scaled to 16 bits.
std::vector<kit::u16> scaled(std::uint32_t seed)
{
    const VexaImage source = kit::noise<kit::f32>({641, 479}, 1, seed);
    VexaImage result(source.size(), VEXA_16UC1);
    const VexaScalar scale(300.0);
    EXPECT_EQ(vexa::dataExchange::convertScale(source, result, static_cast<float>(scale[0]), 100.5F, VexaStream(true)),
              VEXA_SUCCESS);
    return kit::download<kit::u16>(result);
}

TEST(Threads, TwoAtOnceEqualOneAfterTheOther)
{
    constexpr std::uint32_t rounds = 12;
    std::vector<std::vector<kit::u8>> expectedSums;
    std::vector<std::vector<kit::u16>> expectedScaled;
    for (std::uint32_t i = 0; i < rounds; ++i) {
        expectedSums.push_back(sums(i));
        expectedScaled.push_back(scaled(i));
    }

    std::uint32_t equalSums = 0;
    std::uint32_t equalScaled = 0;
    std::thread adder([&] {
        for (std::uint32_t i = 0; i < rounds; ++i) equalSums += sums(i) == expectedSums[i] ? 1 : 0;
    });
    std::thread scaler([&] {
        for (std::uint32_t i = 0; i < rounds; ++i) equalScaled += scaled(i) == expectedScaled[i] ? 1 : 0;
    });
    adder.join();
    scaler.join();
    EXPECT_EQ(equalSums, rounds);
    EXPECT_EQ(equalScaled, rounds);
}

}  // namespace
