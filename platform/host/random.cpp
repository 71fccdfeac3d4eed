/// @file
/// Random numbers of the host platform: Philox4x32-10 (Salmon, Moraes, Dror, Shaw: "Parallel random numbers: as easy as
/// 1, 2, 3", 2011). Each number is a function of its index, so threads need no state and results are the same
/// everywhere.

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "fault.h"
#include "memory.h"
#include "parallel.h"
#include "platform.h"

namespace vexa::platform {
namespace {

/// A counter gives four words. Counters go side by side, so that they fill vector registers.
constexpr int wordsPerCounter = 4;
constexpr int counters = 16;

struct Block {
    std::uint32_t word[wordsPerCounter][counters];
};
constexpr std::size_t wordsPerBlock = sizeof(Block) / sizeof(std::uint32_t);

/// The words of consecutive counters; the key is 0.
Block philox(std::uint64_t first)
{
    constexpr std::uint32_t multipliers[] = {0xD2511F53, 0xCD9E8D57};
    constexpr std::uint32_t weyl[] = {0x9E3779B9, 0xBB67AE85};
    constexpr int rounds = 10;
    Block block = {};
    auto& word = block.word;
    for (int i = 0; i < counters; ++i) {
        const std::uint64_t counter = first + static_cast<std::uint64_t>(i);
        word[0][i] = static_cast<std::uint32_t>(counter);
        word[1][i] = static_cast<std::uint32_t>(counter >> 32);
    }
    std::uint32_t key[] = {0, 0};
    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < counters; ++i) {
            const std::uint64_t product0 = std::uint64_t{multipliers[0]} * word[0][i];
            const std::uint64_t product1 = std::uint64_t{multipliers[1]} * word[2][i];
            word[0][i] = static_cast<std::uint32_t>(product1 >> 32) ^ word[1][i] ^ key[0];
            word[2][i] = static_cast<std::uint32_t>(product0 >> 32) ^ word[3][i] ^ key[1];
            word[1][i] = static_cast<std::uint32_t>(product1);
            word[3][i] = static_cast<std::uint32_t>(product0);
        }
        key[0] += weyl[0];
        key[1] += weyl[1];
    }
    return block;
}

/// Above 0 and at most 1, in steps of 2^-24, which floats hold exactly.
float uniformOf(std::uint32_t word)
{
    return static_cast<float>(static_cast<std::int32_t>(word >> 8) + 1) * 0x1p-24F;
}

void toFloats(const Block& block, float (&values)[wordsPerBlock])
{
    for (int w = 0; w < wordsPerCounter; ++w)
        for (int i = 0; i < counters; ++i) values[w * counters + i] = uniformOf(block.word[w][i]);
}

}  // namespace

VexaStatus uniform(Target device, Extent2D extent, Stream /*stream*/)
{
    if (fault::strikes(fault::Call::uniform)) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    if (extent.rowBytes == 0 || extent.rows == 0) return VEXA_SUCCESS;
    const std::size_t span = device.pitch * (extent.rows - 1) + extent.rowBytes;
    if (extent.rowBytes > device.pitch || !isInsideAllocation(device.first, span))
        return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    const std::size_t count = extent.rowBytes / sizeof(float);
    // Each row has counters of its own.
    const std::size_t blocks = (count + wordsPerBlock - 1) / wordsPerBlock;
    constexpr std::size_t bytesPerBlock = wordsPerBlock * 16;
    parallelRanges(extent.rows, blocks * bytesPerBlock, [=](std::size_t begin, std::size_t end) {
        for (std::size_t y = begin; y < end; ++y) {
            auto* const row = reinterpret_cast<float*>(static_cast<char*>(device.first) + y * device.pitch);
            for (std::size_t i = 0; i < blocks; ++i) {
                float values[wordsPerBlock];
                toFloats(philox((y * blocks + i) * counters), values);
                const std::size_t first = i * wordsPerBlock;
                std::memcpy(row + first, values, std::min(wordsPerBlock, count - first) * sizeof(float));
            }
        }
    });
    return VEXA_SUCCESS;
}

}  // namespace vexa::platform
