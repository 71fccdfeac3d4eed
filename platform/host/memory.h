/// @file
/// The table of live device allocations of the host platform.

#pragma once

#include <cstddef>

namespace vexa::platform {

/// Whether `bytes` from `first` on lie inside one live allocation.
bool isInsideAllocation(const void* first, std::size_t bytes);

/// How many allocations are live.
std::size_t liveAllocations();

/// Whether the calling thread has tried to release what is no allocation.
bool hasRefusedRelease();

}  // namespace vexa::platform
