/// @file
/// The size of the last cache.

#include "streaming.h"

#include <unistd.h>

namespace vexa::platform {
namespace {

std::size_t lastCacheBytes()
{
#if defined(_SC_LEVEL3_CACHE_SIZE)
    const long bytes = sysconf(_SC_LEVEL3_CACHE_SIZE);
    if (bytes > 0) return static_cast<std::size_t>(bytes);
#endif
    constexpr std::size_t usual = 32 << 20;
    return usual;
}

}  // namespace

bool outgrowsCaches(std::size_t bytes)
{
    static const std::size_t limit = lastCacheBytes() / 2;
    return bytes > limit;
}

}  // namespace vexa::platform
