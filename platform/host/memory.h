/// @file
/// The table of live device allocations of the host platform.

#pragma once

#include <cstddef>

namespace vexa::platform {

/// Whether `bytes` from `first` on lie inside one live allocation.
bool isInsideAllocation(const void* first, std::size_t bytes);

/// How many allocations are live.
std::size_t liveAllocations();

}  // namespace vexa::platform
