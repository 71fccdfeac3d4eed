/// @file
/// Memory and copies on the CUDA runtime.

#include <cuda_runtime.h>

#include "platform.h"

namespace vexa::platform {
namespace {

VexaStatus answer(cudaError_t result, VexaStatus failure)
{
    return result == cudaSuccess ? VEXA_SUCCESS : failure;
}

VexaStatus copyRows(Target to, Source from, Extent2D extent, cudaMemcpyKind kind, VexaStatus failure)
{
    return answer(cudaMemcpy2D(to.first, to.pitch, from.first, from.pitch, extent.rowBytes, extent.rows, kind),
                  failure);
}

VexaStatus copyRows(Target to, Source from, Extent2D extent, cudaMemcpyKind kind, VexaStatus failure, Stream stream)
{
    return answer(
        cudaMemcpy2DAsync(to.first, to.pitch, from.first, from.pitch, extent.rowBytes, extent.rows, kind, stream),
        failure);
}

}  // namespace

VexaStatus allocate(void*& block, std::size_t bytes)
{
    if (bytes == 0) {
        block = nullptr;
        return VEXA_SUCCESS;
    }
    return answer(cudaMalloc(&block, bytes), VEXA_MEM_ALLOC_ERR);
}

VexaStatus allocateRows(void*& block, std::size_t& pitch, std::size_t rowBytes, std::size_t rows)
{
    if (rowBytes == 0) {
        block = nullptr;
        pitch = 0;
        return VEXA_SUCCESS;
    }
    return answer(cudaMallocPitch(&block, &pitch, rowBytes, rows), VEXA_MEM_ALLOC_ERR);
}

VexaStatus release(void* block)
{
    return answer(cudaFree(block), VEXA_MEMFREE_ERR);
}

void* allocatePinned(std::size_t bytes)
{
    void* block = nullptr;
    return cudaHostAlloc(&block, bytes, 0) == cudaSuccess ? block : nullptr;
}

void releasePinned(void* block)
{
    (void)cudaFreeHost(block);
}

VexaStatus pin(void* memory, std::size_t bytes)
{
    return answer(cudaHostRegister(memory, bytes, cudaHostRegisterDefault), VEXA_MEMORY_PINNING_ERROR);
}

void unpin(void* memory)
{
    (void)cudaHostUnregister(memory);
}

VexaStatus copyToDevice(void* device, const void* host, std::size_t bytes)
{
    return answer(cudaMemcpy(device, host, bytes, cudaMemcpyHostToDevice), VEXA_MEMCPY_H2D_ERROR);
}

VexaStatus copyToDevice(void* device, const void* host, std::size_t bytes, Stream stream)
{
    return answer(cudaMemcpyAsync(device, host, bytes, cudaMemcpyHostToDevice, stream), VEXA_MEMCPY_H2D_ERROR);
}

VexaStatus copyToDevice(Target device, Source host, Extent2D extent)
{
    return copyRows(device, host, extent, cudaMemcpyHostToDevice, VEXA_MEMCPY_H2D_ERROR);
}

VexaStatus copyToDevice(Target device, Source host, Extent2D extent, Stream stream)
{
    return copyRows(device, host, extent, cudaMemcpyHostToDevice, VEXA_MEMCPY_H2D_ERROR, stream);
}

VexaStatus copyToHost(void* host, const void* device, std::size_t bytes)
{
    return answer(cudaMemcpy(host, device, bytes, cudaMemcpyDeviceToHost), VEXA_MEMCPY_D2H_ERROR);
}

VexaStatus copyToHost(void* host, const void* device, std::size_t bytes, Stream stream)
{
    return answer(cudaMemcpyAsync(host, device, bytes, cudaMemcpyDeviceToHost, stream), VEXA_MEMCPY_D2H_ERROR);
}

VexaStatus copyToHost(Target host, Source device, Extent2D extent)
{
    return copyRows(host, device, extent, cudaMemcpyDeviceToHost, VEXA_MEMCPY_D2H_ERROR);
}

VexaStatus copyToHost(Target host, Source device, Extent2D extent, Stream stream)
{
    return copyRows(host, device, extent, cudaMemcpyDeviceToHost, VEXA_MEMCPY_D2H_ERROR, stream);
}

VexaStatus copyOnDevice(Target to, Source from, Extent2D extent)
{
    return copyRows(to, from, extent, cudaMemcpyDeviceToDevice, VEXA_MEMCPY_D2D_ERROR);
}

VexaStatus copyOnDevice(Target to, Source from, Extent2D extent, Stream stream)
{
    return copyRows(to, from, extent, cudaMemcpyDeviceToDevice, VEXA_MEMCPY_D2D_ERROR, stream);
}

VexaStatus setBytes(Target device, unsigned char value, Extent2D extent, Stream stream)
{
    return answer(cudaMemset2DAsync(device.first, device.pitch, value, extent.rowBytes, extent.rows, stream),
                  VEXA_MEMSET_ERR);
}

}  // namespace vexa::platform
