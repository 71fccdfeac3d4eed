/// @file
/// The host platform: its table of allocations, its threads, and by fault injection what every public call answers when
/// the platform fails.

#include <climits>
#include <cstdint>
#include <functional>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "../Core/transfers.h"
#include "fault.h"
#include "memory.h"
#include "parallel.h"
#include "platform.h"

namespace platform = vexa::platform;
namespace fault = platform::fault;
using fault::Call;
using kit::u8;

namespace {

constexpr std::size_t huge = std::numeric_limits<std::size_t>::max();

/// Whether an image's buffer, by an address kept from before, is still allocated.
bool isLive(const void* block)
{
    return platform::isInsideAllocation(block, 1);
}

TEST(Allocations, BlocksAndPitches)
{
    for (const std::size_t rowBytes : {1, 511, 512, 513, 1000}) {
        void* block = nullptr;
        std::size_t pitch = 0;
        ASSERT_EQ(platform::allocateRows(block, pitch, rowBytes, 3), VEXA_SUCCESS);
        EXPECT_EQ(pitch, rowBytes <= 512 ? 512U : 1024U);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 512, 0U);
        EXPECT_TRUE(platform::isInsideAllocation(block, 3 * pitch));
        EXPECT_FALSE(platform::isInsideAllocation(block, 3 * pitch + 1));
        EXPECT_EQ(platform::release(block), VEXA_SUCCESS);
        EXPECT_FALSE(isLive(block));
    }
    int anything = 0;
    void* block = &anything;
    EXPECT_EQ(platform::allocate(block, 0), VEXA_SUCCESS);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(platform::release(nullptr), VEXA_SUCCESS);
    block = &anything;
    std::size_t pitch = 77;
    EXPECT_EQ(platform::allocate(block, huge), VEXA_MEM_ALLOC_ERR);
    EXPECT_EQ(platform::allocateRows(block, pitch, huge, 1), VEXA_MEM_ALLOC_ERR);
    EXPECT_EQ(platform::allocateRows(block, pitch, huge / 2, 4), VEXA_MEM_ALLOC_ERR);
    EXPECT_EQ(block, &anything);
    EXPECT_EQ(pitch, 77U);
}

TEST(Allocations, OnlyLiveBlocksAreReleased)
{
    void* block = nullptr;
    ASSERT_EQ(platform::allocate(block, 100), VEXA_SUCCESS);
    u8 onTheStack[8] = {};
    EXPECT_EQ(platform::release(onTheStack), VEXA_MEMFREE_ERR);
    EXPECT_EQ(platform::release(static_cast<u8*>(block) + 16), VEXA_MEMFREE_ERR);
    EXPECT_TRUE(isLive(block));
    EXPECT_EQ(platform::release(block), VEXA_SUCCESS);
    EXPECT_EQ(platform::release(block), VEXA_MEMFREE_ERR);
}

TEST(Allocations, CopiesStayInsideTheirBlock)
{
    struct Row {
        std::ptrdiff_t offset;
        std::size_t pitch, rowBytes, rows;
        bool fits;
    };
    // In a block of 4 rows of 512 bytes.
    // clang-format off
    const Row rows[] = {
        {0, 512, 512, 4, true}, {412, 512, 100, 4, true}, {413, 512, 100, 4, false}, {1948, 512, 100, 1, true},
        {1949, 512, 100, 1, false}, {0, 512, 100, 5, false}, {-1, 512, 100, 1, false}, {-512, 512, 100, 4, false},
        {2048, 512, 1, 1, false}, {0, 100, 101, 1, false}, {0, 1024, 512, 2, true}, {0, 1024, 512, 3, false},
        {0, huge, 100, 1, false}, {0, huge, 100, 2, false}, {0, std::size_t{INT_MAX} + 1, 100, 1, false},
        {0, 512, 1, huge / 512 + 1, false}, {0, 512, 1, huge, false}, {0, huge, huge, 1, false},
        {5000, 512, 0, 4, true}, {5000, 512, 4, 0, true}
    };
    // clang-format on
    void* memory = nullptr;
    void* other = nullptr;
    ASSERT_EQ(platform::allocate(memory, 2048), VEXA_SUCCESS);
    ASSERT_EQ(platform::allocate(other, 4096), VEXA_SUCCESS);
    std::vector<u8> host = kit::noiseBytes(4096, 1);
    ASSERT_EQ(platform::copyToDevice(memory, host.data(), 2048), VEXA_SUCCESS);
    ASSERT_EQ(platform::copyToDevice(other, host.data(), 4096), VEXA_SUCCESS);
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.offset << " " << row.pitch << " " << row.rowBytes << " " << row.rows);
        void* const device = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(memory) + row.offset);
        const platform::Extent2D extent{row.rowBytes, row.rows};
        const platform::Target target{device, row.pitch};
        const platform::Source source{device, row.pitch};
        const platform::Target hostTarget{host.data(), 1024};
        const platform::Source hostSource{host.data(), 1024};
        const platform::Target otherTarget{other, 1024};
        const platform::Source otherSource{other, 1024};
        const auto answer = [&](VexaStatus failure) { return row.fits ? VEXA_SUCCESS : failure; };
        for (const bool onStream : {false, true}) {
            const auto copy = [&](auto call, auto to, auto from) {
                return onStream ? call(to, from, extent, nullptr) : call(to, from, extent);
            };
            const auto toDevice = [](auto... a) { return platform::copyToDevice(a...); };
            const auto toHost = [](auto... a) { return platform::copyToHost(a...); };
            const auto onDevice = [](auto... a) { return platform::copyOnDevice(a...); };
            EXPECT_EQ(copy(toDevice, target, hostSource), answer(VEXA_MEMCPY_H2D_ERROR));
            EXPECT_EQ(copy(toHost, hostTarget, source), answer(VEXA_MEMCPY_D2H_ERROR));
            EXPECT_EQ(copy(onDevice, target, otherSource), answer(VEXA_MEMCPY_D2D_ERROR));
            EXPECT_EQ(copy(onDevice, otherTarget, source), answer(VEXA_MEMCPY_D2D_ERROR));
        }
    }
    // Runs of bytes.
    const std::tuple<int, int, bool> runs[] = {{0, 2048, true}, {1, 2048, false}, {2047, 1, true}, {2048, 1, false},
                                               {-1, 1, false},  {0, 2049, false}, {5000, 0, true}};
    for (const auto& [offset, bytes, fits] : runs) {
        SCOPED_TRACE(testing::Message() << offset << " " << bytes);
        void* const device = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(memory) + offset);
        const VexaStatus toDevice = fits ? VEXA_SUCCESS : VEXA_MEMCPY_H2D_ERROR;
        const VexaStatus toHost = fits ? VEXA_SUCCESS : VEXA_MEMCPY_D2H_ERROR;
        EXPECT_EQ(platform::copyToDevice(device, host.data(), bytes), toDevice);
        EXPECT_EQ(platform::copyToDevice(device, host.data(), bytes, nullptr), toDevice);
        EXPECT_EQ(platform::copyToHost(host.data(), device, bytes), toHost);
        EXPECT_EQ(platform::copyToHost(host.data(), device, bytes, nullptr), toHost);
    }
    EXPECT_EQ(platform::copyToDevice(memory, nullptr, 4), VEXA_MEMCPY_H2D_ERROR);
    EXPECT_EQ(platform::copyToDevice(nullptr, host.data(), 4), VEXA_MEMCPY_H2D_ERROR);
    EXPECT_EQ(platform::copyToHost(nullptr, memory, 4), VEXA_MEMCPY_D2H_ERROR);
    EXPECT_EQ(platform::copyToHost(host.data(), nullptr, 4), VEXA_MEMCPY_D2H_ERROR);
    EXPECT_EQ(platform::copyToDevice(nullptr, nullptr, 0), VEXA_SUCCESS);
    EXPECT_EQ(platform::release(memory), VEXA_SUCCESS);
    EXPECT_EQ(platform::copyToHost(host.data(), memory, 4), VEXA_MEMCPY_D2H_ERROR);
    EXPECT_EQ(platform::release(other), VEXA_SUCCESS);
}

TEST(Images, RectanglesThatLeaveTheBuffer)
{
    // clang-format off
    const VexaRect rectangles[] = {
        {0, -1, 3, 2}, {-1, 0, 3, 2}, {0, 4, 3, 2}, {254, 4, 3, 1}, {0, 0, 300, 1}, {0, 0, 3, 6}, {0, 0, -3, 2},
        {0, 0, 3, -2}, {INT_MIN, 0, 3, 2}, {0, INT_MIN, 3, 2}, {INT_MAX, 0, 3, 2}, {0, INT_MAX, 3, 2},
        {0, 0, INT_MAX, 1}, {0, 0, 1, INT_MAX}, {0, 0, INT_MIN, 1}, {0, 0, 1, INT_MIN},
        {INT_MIN, INT_MIN, INT_MIN, INT_MIN}
    };
    // clang-format on
    VexaImage image(7, 5, VEXA_16UC1);
    kit::fillBuffer(image, 0x5A);
    const std::vector<u8> before = kit::bufferOf(image);
    for (const VexaRect& rectangle : rectangles) {
        SCOPED_TRACE(testing::Message() << rectangle.x << "," << rectangle.y << " " << rectangle.width << "x"
                                        << rectangle.height);
        const kit::Region region{{0, 0}, rectangle.origin(), {rectangle.width, rectangle.height}};
        std::vector<u8> host(8192, 1);
        for (const kit::Transfer& transfer : kit::transfers()) {
            if (transfer.moves != kit::Moves::region) continue;
            EXPECT_EQ(transfer.run(image, host.data(), 1024, region), VEXA_MEMCPY_D2H_ERROR) << transfer.name;
        }
        EXPECT_EQ(host, std::vector<u8>(host.size(), 1));
        VexaImage other(300, 9, VEXA_16UC1);
        EXPECT_EQ(image.copyTo(other, {0, 0}, rectangle, VexaStream(false)), VEXA_MEMCPY_D2H_ERROR);
        EXPECT_EQ(other.copyTo(image, rectangle.origin(), {0, 0, rectangle.width, rectangle.height}, VexaStream(false)),
                  VEXA_MEMCPY_D2H_ERROR);
        EXPECT_EQ(kit::bufferOf(image), before);
    }
    VexaImage fresh;
    EXPECT_EQ(image.copyTo(fresh, {0, 0}, {5, 4, 3, 2}, VexaStream(false)), VEXA_MEMCPY_D2H_ERROR);
    EXPECT_EQ(fresh.width(), 3);
    EXPECT_EQ(fresh.height(), 2);
}

/// Nothing fails before or after a test, and no allocation outlives it.
class Faults : public testing::Test {
protected:
    void SetUp() override
    {
        fault::disarm();
        _allocations = platform::liveAllocations();
    }
    void TearDown() override
    {
        fault::disarm();
        EXPECT_EQ(platform::liveAllocations(), _allocations);
    }

private:
    std::size_t _allocations = 0;
};

TEST_F(Faults, StrikeTheNthCallOnce)
{
    fault::arm(Call::allocate, 3);
    for (const bool made : {true, true, false, true}) EXPECT_EQ(VexaImage(4, 4, VEXA_8UC1).isInitialized(), made);
    fault::arm(Call::allocate);
    EXPECT_EQ(platform::release(nullptr), VEXA_SUCCESS);
    fault::disarm();
    EXPECT_TRUE(VexaImage(4, 4, VEXA_8UC1).isInitialized());
}

TEST_F(Faults, Create)
{
    const std::function<VexaStatus(VexaImage&)> forms[] = {
        [](VexaImage& image) { return image.create(4, 3, 8, 1); },
        [](VexaImage& image) { return image.create(4, 3, 64, 8, 1); },
        [](VexaImage& image) {
            return image.create({4, 3}, 8, 1);
        },
        [](VexaImage& image) { return image.create(4, 3, VEXA_8UC1); },
        [](VexaImage& image) {
            return image.create({4, 3}, VEXA_8UC1);
        },
    };
    for (const auto& create : forms) {
        VexaImage fresh;
        VexaImage released(9, 9, VEXA_16SC3);
        EXPECT_EQ(released.release(), VEXA_SUCCESS);
        fault::arm(Call::allocate);
        // Arguments are checked first.
        EXPECT_EQ(fresh.create(0, 3, 8, 1), VEXA_INVALID_ARG_ERROR);
        EXPECT_EQ(fresh.create(4, 3, 12, 1), VEXA_DEPTH_NOT_SUPPORTED_ERROR);
        EXPECT_EQ(create(fresh), VEXA_MEM_ALLOC_ERR);
        kit::expectEmpty(fresh);
        fault::arm(Call::allocate);
        EXPECT_EQ(create(released), VEXA_MEM_ALLOC_ERR);
        kit::expectEmpty(released, VEXA_16SC3, true);
        EXPECT_EQ(create(released), VEXA_SUCCESS);
    }
}

TEST_F(Faults, Release)
{
    VexaImage image(4, 3, VEXA_16SC3);
    const kit::Fields fields = kit::fieldsOf(image);
    void* const data = image.ptr();
    fault::arm(Call::release);
    EXPECT_EQ(image.release(), VEXA_MEMFREE_ERR);
    EXPECT_EQ(kit::fieldsOf(image), fields);
    EXPECT_EQ(image.release(), VEXA_SUCCESS);
    EXPECT_FALSE(isLive(data));
}

TEST_F(Faults, Transfers)
{
    VexaImage image = kit::noise<u8>({7, 5}, 3, 1);
    const std::vector<u8> before = kit::bufferOf(image);
    std::vector<u8> host(8192, 9);
    for (const kit::Transfer& transfer : kit::transfers()) {
        SCOPED_TRACE(transfer.name);
        const Call call = transfer.toImage ? Call::copyToDevice : Call::copyToHost;
        fault::arm(call);
        EXPECT_EQ(transfer.run(image, host.data(), 21, {{0, 0}, {0, 0}, {7, 5}}), transfer.whenCopyFails);
        EXPECT_FALSE(fault::strikes(call)) << "the copy was not asked for";
        fault::disarm();
        EXPECT_EQ(kit::bufferOf(image), before);
        EXPECT_EQ(host, std::vector<u8>(host.size(), 9));
    }
}

TEST_F(Faults, CopyTo)
{
    const VexaImage source = kit::noise<u8>({7, 5}, 3, 1);
    VexaImage dst;
    fault::arm(Call::allocate);
    EXPECT_EQ(source.copyTo(dst, {1, 1}, {0, 0, 2, 2}, VexaStream(false)), VEXA_MEMCPY_D2H_ERROR);
    kit::expectEmpty(dst);
    fault::arm(Call::copyOnDevice);
    EXPECT_EQ(source.copyTo(dst, {0, 0}, {0, 0, 2, 2}, VexaStream(false)), VEXA_MEMCPY_D2H_ERROR);
    EXPECT_TRUE(dst.isInitialized());
    EXPECT_EQ(source.copyTo(dst, {0, 0}, {0, 0, 2, 2}, VexaStream(false)), VEXA_SUCCESS);
}

TEST_F(Faults, SinglePixels)
{
    VexaImage image = kit::constant<u8>({3, 2}, 3, 50);
    fault::arm(Call::copyToHost);
    EXPECT_EQ(image.get(1, 1, 1), 0.0);
    fault::arm(Call::copyToDevice);
    EXPECT_EQ(image.set(1, 1, 1, 7), VEXA_SUCCESS);
    fault::arm(Call::copyToDevice, 2);
    EXPECT_EQ(image.set(1, 1, VexaScalar(60)), VEXA_SUCCESS);
    EXPECT_EQ(image.get(1, 1, 0), 60);
    EXPECT_EQ(image.get(1, 1, 1), 50);
    EXPECT_EQ(image.get(1, 1, 2), 60);
}

TEST_F(Faults, Copies)
{
    VexaImage source = kit::noise<kit::u16>({7, 5}, 3, 1);
    source.setChannelSequence(VEXA_CHANNEL_SEQ_RGB);
    fault::arm(Call::allocate);
    kit::expectEmpty(VexaImage(source));
    fault::arm(Call::copyOnDevice);
    const VexaImage withoutPixels(source);
    EXPECT_TRUE(withoutPixels.isInitialized());
    EXPECT_EQ(withoutPixels.channelSeq(), VEXA_CHANNEL_SEQ_RGB);

    VexaImage assigned(4, 4, VEXA_8SC1);
    void* const old = assigned.ptr();
    fault::arm(Call::allocate);
    assigned = source;
    kit::expectEmpty(assigned, VEXA_8SC1, true);
    EXPECT_FALSE(isLive(old));

    // A buffer that can't be released is kept, and what does not fit into it is not copied.
    ASSERT_EQ(assigned.create(4, 1, VEXA_8UC1), VEXA_SUCCESS);
    void* const kept = assigned.ptr();
    fault::arm(Call::release);
    assigned = source;
    EXPECT_EQ(assigned.ptr(), kept);
    EXPECT_EQ(assigned.width(), 4);
    EXPECT_EQ(assigned.type(), VEXA_8UC1);
}

TEST_F(Faults, ConvertTo)
{
    VexaImage image = kit::constant<kit::u16>({7, 5}, 3, 300);
    fault::arm(Call::allocate);
    EXPECT_NE(image.convertTo(image, VEXA_8UC3, 1, 0), VEXA_SUCCESS);
    EXPECT_EQ(kit::download<kit::u16>(image), std::vector<kit::u16>(105, 300));
    // The image itself can't be made anew in the other type; its pixels live on in the temporary.
    fault::arm(Call::allocate, 2);
    EXPECT_EQ(image.convertTo(image, VEXA_8UC3, 1, 0), VEXA_SUCCESS);
    EXPECT_EQ(kit::download<kit::u16>(image), std::vector<kit::u16>(105, 300));
    VexaImage dst(2, 2, VEXA_8UC1);
    fault::arm(Call::allocate);
    EXPECT_EQ(image.convertTo(dst, VEXA_8UC3, 1, 0), VEXA_SUCCESS);
    EXPECT_EQ(kit::download<kit::u16>(dst), std::vector<kit::u16>(105, 300));
}

TEST_F(Faults, OperationsWithoutDestination)
{
    const VexaImage bytes = kit::noise<u8>({640, 480}, 3, 1);
    const std::function<VexaStatus(VexaImage&)> operations[] = {
        [&](VexaImage& dst) { return vexa::arithmeticLogical::NOT(bytes, dst); },
        [&](VexaImage& dst) { return vexa::arithmeticLogical::add(bytes, bytes, dst); },
        [&](VexaImage& dst) { return vexa::dataExchange::convertScale(bytes, dst, 2, 1); },
        [&](VexaImage& dst) { return vexa::arithmeticLogical::add(bytes, VexaScalar(1, 2, 3), dst); },
        [&](VexaImage& dst) { return vexa::arithmeticLogical::XOR(bytes, bytes, dst); },
        [&](VexaImage& dst) { return vexa::arithmeticLogical::abs(bytes, dst); },
        [&](VexaImage& dst) { return vexa::dataExchange::threshold(bytes, dst, 5, 100); },
    };
    for (const auto& operate : operations) {
        VexaImage fresh;
        fault::arm(Call::allocate);
        const VexaStatus status = operate(fresh);
        EXPECT_TRUE(&operate != &operations[0] || status == VEXA_SUCCESS) << status;
        kit::expectEmpty(fresh);
        // A released image still names its type, so the operation goes as far as its kernel.
        VexaImage released(640, 480, VEXA_8UC3);
        EXPECT_EQ(released.release(), VEXA_SUCCESS);
        fault::arm(Call::allocate);
        EXPECT_EQ(operate(released), VEXA_SUCCESS);
        kit::expectEmpty(released, VEXA_8UC3);
        EXPECT_EQ(operate(released), VEXA_SUCCESS);
        EXPECT_TRUE(released.isInitialized());
    }
}

TEST_F(Faults, OperationsAllocateTheirDestinationAndNothingElse)
{
    const VexaImage bytes = kit::noise<u8>({640, 480}, 3, 1);
    VexaImage words(640, 480, VEXA_16UC3);
    const std::function<VexaStatus(VexaImage&)> operations[] = {
        [&](VexaImage& dst) { return vexa::arithmeticLogical::NOT(bytes, dst); },
        [&](VexaImage& dst) { return vexa::arithmeticLogical::divide(bytes, bytes, dst); },
        [&](VexaImage& dst) { return vexa::arithmeticLogical::add(bytes, words, dst); },
        [&](VexaImage& dst) { return vexa::dataExchange::convertScale(bytes, dst, 2, 1); },
        [&](VexaImage& dst) { return vexa::arithmeticLogical::multiply(bytes, 0.5, dst); },
        [&](VexaImage& dst) { return vexa::arithmeticLogical::exp(bytes, dst); },
        [&](VexaImage& dst) { return vexa::dataExchange::getChannel(bytes, dst, 1); },
        [&](VexaImage& dst) {
            return dst.isInitialized() ? vexa::dataExchange::bitConversion(bytes, dst)
                                       : dst.create(bytes.size(), VEXA_8UC3);
        },
    };
    for (const auto& operate : operations) {
        VexaImage dst;
        fault::arm(Call::allocate, 2);
        EXPECT_EQ(operate(dst), VEXA_SUCCESS);
        EXPECT_EQ(operate(dst), VEXA_SUCCESS);
        EXPECT_TRUE(fault::strikes(Call::allocate)) << "something was allocated beyond the destination";
    }
}

TEST_F(Faults, FillsTellNothing)
{
    VexaImage image = kit::constant<u8>({7, 5}, 1, 50);
    fault::arm(Call::setBytes);
    EXPECT_EQ(image.set(9.0), VEXA_SUCCESS);
    fault::arm(Call::setBytes);
    EXPECT_EQ(vexa::dataExchange::rectangle(image, {0, 0, 3, 3}, VexaScalar(9)), VEXA_SUCCESS);
    EXPECT_EQ(kit::download<u8>(image), std::vector<u8>(35, 50));

    VexaImage random = kit::constant<kit::f32>({7, 5}, 1, 50);
    fault::arm(Call::uniform);
    EXPECT_EQ(vexa::dataExchange::generateRandomImage(random), VEXA_SUCCESS);
    EXPECT_EQ(kit::download<kit::f32>(random), std::vector<kit::f32>(35, 50));
}

TEST_F(Faults, PadImage)
{
    const VexaImage src = kit::constant<u8>({2, 2}, 1, 50);
    const float border = 9;
    VexaImage dst;
    fault::arm(Call::allocate);
    EXPECT_EQ(vexa::dataExchange::padImage(src, dst, 1, 1, 1, 1, &border), VEXA_MEMCPY_D2D_ERROR);
    kit::expectEmpty(dst);
    fault::arm(Call::copyOnDevice);
    EXPECT_EQ(vexa::dataExchange::padImage(src, dst, 1, 1, 1, 1, &border), VEXA_MEMCPY_D2D_ERROR);
    EXPECT_EQ(dst.width(), 4);
    EXPECT_EQ(vexa::dataExchange::padImage(src, dst, 1, 1, 1, 1, &border), VEXA_SUCCESS);
}

TEST_F(Faults, OperatorsWithoutMemory)
{
    VexaImage image = kit::constant<u8>({7, 5}, 3, 50);
    fault::arm(Call::allocate);
    EXPECT_FALSE((image + 1).isInitialized());
    fault::arm(Call::allocate);
    EXPECT_FALSE(image[1].isInitialized());
    fault::arm(Call::allocate);
    EXPECT_FALSE((image++).isInitialized());
    EXPECT_EQ(kit::download<u8>(image), std::vector<u8>(105, 51));
}

TEST_F(Faults, Streams)
{
    fault::arm(Call::createStream);
    VexaStream stream(true);
    EXPECT_TRUE(stream.isDefault());
    EXPECT_EQ(stream.id(), 0);
    EXPECT_EQ(stream.ptr(), nullptr);
    stream.destroy();
    stream.create();
    EXPECT_FALSE(stream.isDefault());
    EXPECT_GE(stream.id(), 1);
    EXPECT_EQ(VexaStream(true).id(), stream.id() + 1);

    platform::Stream handle = nullptr;
    ASSERT_EQ(platform::createStream(handle), VEXA_SUCCESS);
    fault::arm(Call::destroyStream);
    EXPECT_EQ(platform::destroyStream(handle), VEXA_STREAM_DESTROY_ERROR);
    EXPECT_EQ(platform::destroyStream(handle), VEXA_SUCCESS);
    EXPECT_EQ(platform::destroyStream(nullptr), VEXA_STREAM_DESTROY_ERROR);
}

TEST_F(Faults, Devices)
{
    fault::arm(Call::currentDevice);
    EXPECT_EQ(vexa::device::getCurentDevice(), -1);
    EXPECT_EQ(vexa::device::getCurentDevice(), 0);
    fault::arm(Call::deviceCount);
    EXPECT_EQ(vexa::device::getDeviceCount(), 0);
    EXPECT_EQ(vexa::device::getDeviceCount(), 1);
    fault::arm(Call::synchronizeDevice);
    EXPECT_EQ(vexa::device::syncCurrentDevice(), VEXA_UNKNOWN_ERROR);
    EXPECT_EQ(vexa::device::syncCurrentDevice(), VEXA_SUCCESS);
    fault::arm(Call::describeDevice);
    VexaDeviceProperties properties;
    properties.multiProcessorCount = properties.coresPerMultiProcessor = properties.totalCores = 5;
    EXPECT_EQ(vexa::device::getDeviceProperties(0, properties), VEXA_SUCCESS);
    EXPECT_EQ(properties.multiProcessorCount, 0);
    EXPECT_EQ(properties.coresPerMultiProcessor, 5);
    EXPECT_EQ(properties.totalCores, 0);
}

TEST_F(Faults, ScalarsWithoutMemory)
{
    fault::arm(Call::allocatePinned);
    VexaScalar scalar(1, 2, 3, 4);
    EXPECT_EQ(scalar.vals(), nullptr);
    scalar[2] = 5;
    const VexaScalar copy(scalar);
    const VexaScalar negated = -scalar;
    ASSERT_NE(copy.vals(), nullptr);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(scalar[i], 0);
        EXPECT_EQ(copy[i], 0);
        EXPECT_EQ(negated[i], 0);
    }
    VexaImage image = kit::constant<u8>({3, 2}, 3, 50);
    EXPECT_EQ(image.set(1, 1, scalar), VEXA_SUCCESS);
    EXPECT_EQ(image.get(1, 1, 1), 0);
    fault::arm(Call::allocatePinned);
    EXPECT_EQ(image.get(0, 0)[0], 0);
    EXPECT_EQ(image.get(0, 0)[0], 50);
}

/// Whether a denormal result and a denormal operand count, in the mode of the thread that asks.
std::pair<bool, bool> keepsDenormals()
{
    volatile float normal = 1e-38F;
    volatile float denormal = 1e-40F;
    return {normal * 0.01F != 0, denormal * 1e30F != 0};
}

TEST(ParallelRanges, EveryItemOnceWithDenormalsFlushed)
{
    for (const std::size_t count : {0, 1, 7, 4000})
        for (const std::size_t bytesPerItem : {1, 1000, 1000000}) {
            SCOPED_TRACE(testing::Message() << count << " items of " << bytesPerItem);
            std::vector<int> visits(count, 0);
            std::vector<char> flushed(count, 0);
            platform::parallelRanges(count, bytesPerItem, [&](std::size_t begin, std::size_t end) {
                for (std::size_t i = begin; i < end; ++i) ++visits[i];
                // Work inside work leaves the mode of its caller as it is.
                platform::parallelRanges(1, 1, [](std::size_t, std::size_t) {});
                for (std::size_t i = begin; i < end; ++i) flushed[i] = keepsDenormals() == std::pair(false, false);
            });
            EXPECT_EQ(visits, std::vector<int>(count, 1));
            EXPECT_EQ(flushed, std::vector<char>(count, 1));
            EXPECT_EQ(keepsDenormals(), std::pair(true, true));
        }
}

}  // namespace
