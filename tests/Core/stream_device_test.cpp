/// @file
/// Streams, the timer, and what the library tells of its devices. Holds on a GPU and on the CPU.

#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <type_traits>

#include "images.h"

namespace {

static_assert(!std::is_copy_constructible_v<VexaStream> && !std::is_copy_assignable_v<VexaStream> &&
              std::is_standard_layout_v<VexaStream> && sizeof(VexaStream) == 16 && sizeof(VexaTimer) == 32);

TEST(Stream, DefaultStaysDefault)
{
    for (const bool byArgument : {false, true}) {
        VexaStream stream = byArgument ? VexaStream(false) : VexaStream();
        for (int i = 0; i < 2; ++i) {
            EXPECT_TRUE(stream.isDefault());
            EXPECT_EQ(stream.id(), 0);
            EXPECT_EQ(stream.ptr(), nullptr);
            stream.sync();
            EXPECT_TRUE(stream.finished());
            stream.create();
            stream.destroy();
        }
    }
}

TEST(Stream, NumbersOfCreatedStreamsRise)
{
    Vexa32s last = 0;
    {
        VexaStream first(true);
        EXPECT_GE(first.id(), 1);
        VexaStream second(true);
        EXPECT_EQ(second.id(), first.id() + 1);
        EXPECT_FALSE(second.isDefault());
        EXPECT_EQ(second.ptr(), nullptr);
        second.sync();
        EXPECT_TRUE(second.finished());

        second.create();
        EXPECT_EQ(second.id(), first.id() + 1);
        // The null handle that it holds can't be destroyed, so it stays what it is and its number is not given away.
        second.destroy();
        second.create();
        EXPECT_FALSE(second.isDefault());
        EXPECT_EQ(second.id(), first.id() + 1);
        last = second.id();
    }
    const VexaStream defaultStream(false);
    EXPECT_EQ(VexaStream(true).id(), last + 1);
    EXPECT_EQ(VexaStream(true).id(), last + 2);
}

TEST(Timer, MeasuresWallClockTime)
{
    const auto wait = [] { std::this_thread::sleep_for(std::chrono::milliseconds(40)); };
    VexaTimer timer;
    EXPECT_EQ(timer.GetElapsedTime(), 0.0);
    timer.Start();
    wait();
    timer.Stop();
    const Vexa64f elapsed = timer.GetElapsedTime();
    EXPECT_GE(elapsed, 0.039);
    EXPECT_LT(elapsed, 10.0);
    wait();
    timer.Reset();
    EXPECT_EQ(timer.GetElapsedTime(), elapsed);
    timer.Start();
    EXPECT_LE(timer.GetElapsedTime(), -0.039);
}

TEST(Device, OneIsCurrent)
{
    const int current = vexa::device::getCurentDevice();
    EXPECT_GE(vexa::device::getDeviceCount(), 1);
    EXPECT_GE(current, 0);
    EXPECT_LT(current, vexa::device::getDeviceCount());
    for (const int unknown : {1000, -1}) {
        EXPECT_EQ(vexa::device::setCurrentDevice(unknown), VEXA_INVALID_DEVICE_ERROR);
        EXPECT_EQ(vexa::device::getCurentDevice(), current);
    }
    EXPECT_EQ(vexa::device::setCurrentDevice(current), VEXA_SUCCESS);
    EXPECT_EQ(vexa::device::syncCurrentDevice(), VEXA_SUCCESS);
    EXPECT_EQ(vexa::device::resetCurrentDevice(), VEXA_SUCCESS);
    EXPECT_TRUE(VexaImage(4, 4, VEXA_8UC1).isInitialized());
}

TEST(Device, Properties)
{
    VexaDeviceProperties properties;
    properties.coresPerMultiProcessor = 7;
    properties.reserved = 12345;
    EXPECT_EQ(vexa::device::getDeviceProperties(vexa::device::getCurentDevice(), properties), VEXA_SUCCESS);
    EXPECT_GT(std::strlen(properties.name), 0U);
    EXPECT_GT(properties.multiProcessorCount, 0);
    EXPECT_GT(properties.totalGlobalMem, 0U);
    EXPECT_GT(properties.textureAlignment, 0);
    EXPECT_EQ(properties.reserved, 12345U);
    const bool coresAreKnown = properties.computeCapability >= 1 && properties.computeCapability < 4;
    EXPECT_EQ(properties.coresPerMultiProcessor == 7, !coresAreKnown);
    EXPECT_EQ(properties.totalCores, properties.multiProcessorCount * properties.coresPerMultiProcessor);
}

TEST(Device, UnknownOneIsAllZeros)
{
    for (const int unknown : {1000, -1}) {
        VexaDeviceProperties properties;
        std::memset(static_cast<void*>(&properties), 'x', sizeof properties);
        properties.coresPerMultiProcessor = 7;
        properties.reserved = 12345;
        EXPECT_EQ(vexa::device::getDeviceProperties(unknown, properties), VEXA_SUCCESS);
        EXPECT_EQ(std::string(properties.name, sizeof properties.name), std::string(sizeof properties.name, '\0'));
        EXPECT_EQ(properties.multiProcessorCount, 0);
        EXPECT_EQ(properties.coresPerMultiProcessor, 7);
        EXPECT_EQ(properties.totalCores, 0);
        EXPECT_EQ(properties.computeCapability, 0);
        EXPECT_EQ(properties.asyncEngineCount, 0);
        EXPECT_EQ(properties.totalGlobalMem, 0U);
        EXPECT_EQ(properties.reserved, 12345U);
        EXPECT_EQ(properties.totalConstMem, 0U);
        EXPECT_EQ(properties.textureAlignment, 0);
        EXPECT_EQ(properties.clockRate, 0);
    }
}

}  // namespace
