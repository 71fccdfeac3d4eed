/// @file
/// Work on ranges of items, usually rows, spread over the cores. The threads are oneTBB's: on a busy machine its work
/// stealing beats a static split, which waits a scheduler quantum for the slowest thread. They start with the first
/// call that is large enough, not when the library is loaded.

#pragma once

#include <cstddef>

namespace vexa::platform {

using RangeTask = void (*)(const void* body, std::size_t begin, std::size_t end);

/// Calls the task on consecutive parts of [0, count), each of at least `grain` items, with denormals flushed to zero.
/// Fewer than two grains are done by the calling thread.
void runRanges(std::size_t count, std::size_t grain, RangeTask task, const void* body);

/// body(begin, end) on consecutive parts of [0, count), where an item costs about as much as moving `bytesPerItem`.
template <typename Body>
void parallelRanges(std::size_t count, std::size_t bytesPerItem, const Body& body)
{
    constexpr std::size_t bytesPerTask = 1 << 17;
    const RangeTask task = [](const void* erased, std::size_t begin, std::size_t end) {
        (*static_cast<const Body*>(erased))(begin, end);
    };
    runRanges(count, bytesPerTask / (bytesPerItem + 1) + 1, task, &body);
}

}  // namespace vexa::platform
