/// @file
/// Temporary device blocks of workers. There is no owner that frees them: workers that give up on a failure leave
/// theirs allocated, as work on them may still be queued. That is the contract, and tested.

#pragma once

#include <initializer_list>

#include "platform.h"

namespace vexa {

/// A block of `count` elements. VEXA_MEM_ALLOC_ERR
template <typename T>
[[nodiscard]] VexaStatus allocateElements(T*& block, std::size_t count)
{
    void* memory = nullptr;
    const VexaStatus status = platform::allocate(memory, count * sizeof(T));
    block = static_cast<T*>(memory);
    return status;
}

/// Releases all blocks in this order, also after one that can't be. VEXA_MEMFREE_ERR
[[nodiscard]] inline VexaStatus releaseAll(std::initializer_list<void*> blocks)
{
    VexaStatus status = VEXA_SUCCESS;
    for (void* const block : blocks)
        if (platform::release(block)) status = VEXA_MEMFREE_ERR;
    return status;
}

}  // namespace vexa
