/// @file
/// Device memory of the host platform: aligned host memory, entered into a table of live allocations so that a copy
/// that would leave its block, or the release of an unknown pointer, fails instead of corrupting the process.

#include "memory.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <map>
#include <mutex>
#include <new>

#include "fault.h"
#include "platform.h"

namespace vexa::platform {
namespace {

/// Rows start at multiples of this, as on a GPU.
constexpr std::size_t pitchAlignment = 512;

/// The size of a huge page, and of the blocks from which on they are asked for.
constexpr std::size_t hugePage = 2 << 20;
constexpr std::size_t largeBlock = 2 * hugePage;

class Allocations {
public:
    void add(const void* block, std::size_t bytes)
    {
        const std::lock_guard lock(_mutex);
        _sizes.emplace(address(block), bytes);
    }

    bool remove(const void* block)
    {
        const std::lock_guard lock(_mutex);
        return _sizes.erase(address(block)) == 1;
    }

    bool contain(const void* first, std::size_t bytes)
    {
        const std::lock_guard lock(_mutex);
        auto block = _sizes.upper_bound(address(first));
        if (block == _sizes.begin()) return false;
        --block;
        const std::size_t offset = address(first) - block->first;
        return offset <= block->second && bytes <= block->second - offset;
    }

    std::size_t count()
    {
        const std::lock_guard lock(_mutex);
        return _sizes.size();
    }

private:
    static std::uintptr_t address(const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }

    std::mutex _mutex;
    std::map<std::uintptr_t, std::size_t> _sizes;
};

/// Never destroyed: images with static storage duration may outlive any static of this library.
Allocations& allocations()
{
    static Allocations* const table = new Allocations;
    return *table;
}

thread_local bool refusedRelease = false;

bool roundUp(std::size_t& value, std::size_t step)
{
    if (value > std::numeric_limits<std::size_t>::max() - (step - 1)) return false;
    value = (value + step - 1) / step * step;
    return true;
}

/// Aligned memory; null if there is none. A large block asks for huge pages: without them a fresh 4K colour image costs
/// six thousand page faults, several times what an operation on it does.
void* allocateAligned(std::size_t bytes)
{
    const std::size_t alignment = bytes < largeBlock ? pitchAlignment : hugePage;
    if (!roundUp(bytes, alignment)) return nullptr;
    void* const memory = std::aligned_alloc(alignment, bytes);
    if (memory != nullptr && alignment == hugePage) (void)madvise(memory, bytes, MADV_HUGEPAGE);
    return memory;
}

}  // namespace

bool isInsideAllocation(const void* first, std::size_t bytes)
{
    return allocations().contain(first, bytes);
}

std::size_t liveAllocations()
{
    return allocations().count();
}

bool hasRefusedRelease()
{
    return refusedRelease;
}

VexaStatus allocate(void*& block, std::size_t bytes)
{
    if (fault::strikes(fault::Call::allocate)) return VEXA_MEM_ALLOC_ERR;
    if (bytes == 0) {
        block = nullptr;
        return VEXA_SUCCESS;
    }
    void* const memory = allocateAligned(bytes);
    if (memory == nullptr) return VEXA_MEM_ALLOC_ERR;
    try {
        allocations().add(memory, bytes);
    } catch (const std::bad_alloc&) {
        std::free(memory);
        return VEXA_MEM_ALLOC_ERR;
    }
    block = memory;
    return VEXA_SUCCESS;
}

VexaStatus allocateRows(void*& block, std::size_t& pitch, std::size_t rowBytes, std::size_t rows)
{
    std::size_t rounded = rowBytes;
    if (!roundUp(rounded, pitchAlignment)) return VEXA_MEM_ALLOC_ERR;
    if (rows != 0 && rounded > std::numeric_limits<std::size_t>::max() / rows) return VEXA_MEM_ALLOC_ERR;
    if (const VexaStatus failed = allocate(block, rounded * rows)) return failed;
    pitch = rounded;
    return VEXA_SUCCESS;
}

VexaStatus release(void* block)
{
    if (fault::strikes(fault::Call::release)) return VEXA_MEMFREE_ERR;
    if (block == nullptr) return VEXA_SUCCESS;
    if (!allocations().remove(block)) {
        refusedRelease = true;
        return VEXA_MEMFREE_ERR;
    }
    std::free(block);
    return VEXA_SUCCESS;
}

void* allocatePinned(std::size_t bytes)
{
    return fault::strikes(fault::Call::allocatePinned) ? nullptr : std::malloc(bytes);
}

void releasePinned(void* block)
{
    std::free(block);
}

VexaStatus pin(void* memory, std::size_t /*bytes*/)
{
    // Nothing moves the pages that a host kernel writes to.
    return fault::strikes(fault::Call::pin) || memory == nullptr ? VEXA_MEMORY_PINNING_ERROR : VEXA_SUCCESS;
}

void unpin(void* /*memory*/) {}

}  // namespace vexa::platform
