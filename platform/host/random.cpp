/// @file
/// Random numbers of the host platform: Philox4x32-10 (Salmon, Moraes, Dror, Shaw: "Parallel random numbers: as easy as
/// 1, 2, 3", 2011). Each number is a function of its index, so threads need no state and results are the same
/// everywhere.

#include <algorithm>
#include <array>
#include <cstdint>

#include "fault.h"
#include "memory.h"
#include "parallel.h"
#include "platform.h"

namespace vexa::platform {
namespace {

using Words = std::array<std::uint32_t, 4>;

constexpr std::size_t wordsPerBlock = std::tuple_size_v<Words>;

/// Four random words of a counter; the key is 0.
Words philox(std::uint64_t counter)
{
    constexpr std::uint32_t multipliers[] = {0xD2511F53, 0xCD9E8D57};
    constexpr std::uint32_t weyl[] = {0x9E3779B9, 0xBB67AE85};
    constexpr int rounds = 10;
    Words words = {static_cast<std::uint32_t>(counter), static_cast<std::uint32_t>(counter >> 32), 0, 0};
    std::uint32_t key[] = {0, 0};
    for (int round = 0; round < rounds; ++round) {
        const std::uint64_t product0 = std::uint64_t{multipliers[0]} * words[0];
        const std::uint64_t product1 = std::uint64_t{multipliers[1]} * words[2];
        words = {static_cast<std::uint32_t>(product1 >> 32) ^ words[1] ^ key[0], static_cast<std::uint32_t>(product1),
                 static_cast<std::uint32_t>(product0 >> 32) ^ words[3] ^ key[1], static_cast<std::uint32_t>(product0)};
        key[0] += weyl[0];
        key[1] += weyl[1];
    }
    return words;
}

/// Above 0 and at most 1, in steps of 2^-24, which floats hold exactly.
float uniformOf(std::uint32_t word)
{
    return static_cast<float>((word >> 8) + 1) * 0x1p-24F;
}

}  // namespace

VexaStatus uniform(float* values, std::size_t count, Stream /*stream*/)
{
    if (fault::strikes(fault::Call::uniform)) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    if (count == 0) return VEXA_SUCCESS;
    if (!isInsideAllocation(values, count * sizeof(float))) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    constexpr std::size_t bytesPerBlock = 256;
    parallelRanges((count + wordsPerBlock - 1) / wordsPerBlock, bytesPerBlock, [=](std::size_t begin, std::size_t end) {
        for (std::size_t block = begin; block < end; ++block) {
            const Words words = philox(block);
            const std::size_t first = block * wordsPerBlock;
            std::transform(words.begin(), words.begin() + std::min(wordsPerBlock, count - first), values + first,
                           uniformOf);
        }
    });
    return VEXA_SUCCESS;
}

}  // namespace vexa::platform
