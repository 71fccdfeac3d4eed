/// @file
/// The threads of the host platform, and the floating point mode that kernels run in.

#include "parallel.h"

#include <cstdint>

#include <oneapi/tbb/blocked_range.h>
#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/partitioner.h>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace vexa::platform {
namespace {

/// Flushes denormals to zero while it lives, as device arithmetic does.
class FlushDenormals {
public:
    FlushDenormals() : _before(mode()) { setMode(_before | flush); }
    FlushDenormals(const FlushDenormals&) = delete;
    FlushDenormals& operator=(const FlushDenormals&) = delete;
    ~FlushDenormals() { setMode(_before); }

private:
#if defined(__SSE2__)
    using Mode = unsigned int;
    static constexpr Mode flush = 0x8040;  // results (FTZ) and operands (DAZ)
    static Mode mode()
    {
        return _mm_getcsr();
    }
    static void setMode(Mode mode)
    {
        _mm_setcsr(mode);
    }
#elif defined(__aarch64__)
    using Mode = std::uint64_t;
    static constexpr Mode flush = Mode{1} << 24;  // FZ: results and operands
    static Mode mode()
    {
        Mode mode = 0;
        asm volatile("mrs %0, fpcr" : "=r"(mode));
        return mode;
    }
    static void setMode(Mode mode)
    {
        asm volatile("msr fpcr, %0" : : "r"(mode) : "memory");
    }
#else
    using Mode = int;
    static constexpr Mode flush = 0;
    static Mode mode()
    {
        return 0;
    }
    static void setMode(Mode) {}
#endif

    Mode _before;
};

void runFlushed(RangeTask task, const void* body, std::size_t begin, std::size_t end)
{
    const FlushDenormals flushed;
    task(body, begin, end);
}

}  // namespace

#if defined(VEXA_WIDE_TASKS)

bool hasWideVectors()
{
    static const bool has = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                            __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                            __builtin_cpu_supports("avx512cd");
    return has;
}

#endif

void runRanges(std::size_t count, std::size_t grain, RangeTask task, const void* body)
{
    if (count < 2 * grain) {
        if (count > 0) runFlushed(task, body, 0, count);
        return;
    }
    using Range = oneapi::tbb::blocked_range<std::size_t>;
    oneapi::tbb::parallel_for(
        Range(0, count, grain), [=](const Range& range) { runFlushed(task, body, range.begin(), range.end()); },
        oneapi::tbb::simple_partitioner());
}

}  // namespace vexa::platform
