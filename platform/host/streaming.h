/// @file
/// Writing results past the caches. A store to memory that is in no cache reads its line first; large results are made
/// in a small stage and written from there without that.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vexa::platform {

/// Whether a result of so many bytes will hardly be in a cache when it is read. A constant, as what processors tell of
/// their last cache counts all of it, on shared machines too.
constexpr bool outgrowsCaches(std::size_t bytes)
{
    constexpr std::size_t usualShare = 40 << 20;
    return bytes > usualShare;
}

/// Copies from a stage to memory, without reading the lines of that into the caches where the processor can.
inline void writePastCaches(void* to, const void* from, std::size_t bytes)
{
    std::size_t done = 0;
#if defined(__SSE2__)
    constexpr std::size_t word = sizeof(__m128i);
    if (reinterpret_cast<std::uintptr_t>(to) % word == 0)
        for (; done + word <= bytes; done += word)
            _mm_stream_si128(reinterpret_cast<__m128i*>(static_cast<char*>(to) + done),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(static_cast<const char*>(from) + done)));
#endif
    std::memcpy(static_cast<char*>(to) + done, static_cast<const char*>(from) + done, bytes - done);
}

/// Makes what was written past the caches visible to other threads.
inline void finishPastCaches()
{
#if defined(__SSE2__)
    _mm_sfence();
#endif
}

}  // namespace vexa::platform
