/// @file
/// Temporary device blocks of workers. Most have no owner that frees them: workers that give up on a failure leave
/// theirs allocated, as work on them may still be queued. That is the contract, and tested. Those of features and
/// tracking, which are many a call, have owners.

#pragma once

#include <initializer_list>
#include <memory>

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

struct ReleaseElements {
    void operator()(void* block) const { (void)platform::release(block); }
};

/// A block that goes with its owner.
template <typename T>
using OwnedElements = std::unique_ptr<T, ReleaseElements>;

/// A block of `count` elements. VEXA_MEM_ALLOC_ERR
template <typename T>
[[nodiscard]] VexaStatus allocateElements(OwnedElements<T>& block, std::size_t count)
{
    T* memory = nullptr;
    const VexaStatus status = allocateElements(memory, count);
    block.reset(memory);
    return status;
}

/// Releases a block before its owner goes. VEXA_MEMFREE_ERR
template <typename T>
[[nodiscard]] VexaStatus releaseElements(OwnedElements<T>& block)
{
    return platform::release(block.release());
}

}  // namespace vexa
