/// @file
/// Work on ranges of items, usually rows, spread over the cores. The threads are oneTBB's: on a busy machine its work
/// stealing beats a static split, which waits a scheduler quantum for the slowest thread. They start with the first
/// call that is large enough, not when the library is loaded.

#pragma once

#include <cstddef>

// Whether tasks are compiled twice, the second time for wider vectors than the build asks for. Only GCC's `flatten`
// draws what a task calls into the second one.
#if defined(__AVX2__) && !defined(__AVX512F__) && defined(__GNUC__) && !defined(__clang__)
#define VEXA_WIDE_TASKS
#endif

namespace vexa::platform {

using RangeTask = void (*)(const void* body, std::size_t begin, std::size_t end);

/// Calls the task on consecutive parts of [0, count), of half a grain to a grain each, with denormals flushed to zero.
/// Fewer than two grains are done by the calling thread.
void runRanges(std::size_t count, std::size_t grain, RangeTask task, const void* body);

template <typename Body>
void task(const void* body, std::size_t begin, std::size_t end)
{
    (*static_cast<const Body*>(body))(begin, end);
}

#if defined(VEXA_WIDE_TASKS)

/// Whether the processor has the instructions that wideTask is compiled for.
bool hasWideVectors();

/// As task, for vectors of 64 bytes: 8-bit conversions and divisions take half the time.
template <typename Body>
__attribute__((flatten, target("avx512f,avx512bw,avx512dq,avx512vl,avx512cd,prefer-vector-width=512"))) void wideTask(
    const void* body, std::size_t begin, std::size_t end)
{
    (*static_cast<const Body*>(body))(begin, end);
}

template <typename Body>
RangeTask bestTask()
{
    return hasWideVectors() ? wideTask<Body> : task<Body>;
}

#else

template <typename Body>
RangeTask bestTask()
{
    return task<Body>;
}

#endif

/// body(begin, end) on consecutive parts of [0, count), where an item costs about as much as moving `bytesPerItem`.
template <typename Body>
void parallelRanges(std::size_t count, std::size_t bytesPerItem, const Body& body)
{
    constexpr std::size_t bytesPerTask = 1 << 17;
    runRanges(count, bytesPerTask / (bytesPerItem + 1) + 1, bestTask<Body>(), &body);
}

}  // namespace vexa::platform
