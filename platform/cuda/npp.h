/// @file
/// What calls of NPP have in common.

#pragma once

#include <cuda_runtime.h>
#include <nppdefs.h>

#include "platform.h"

namespace vexa::platform {

/// What NPP wants to know of the device and the stream.
inline NppStreamContext contextOf(Stream stream)
{
    NppStreamContext context = {};
    context.hStream = stream;
    int device = 0;
    (void)cudaGetDevice(&device);
    context.nCudaDeviceId = device;
    const auto attribute = [device](cudaDeviceAttr name) {
        int value = 0;
        (void)cudaDeviceGetAttribute(&value, name, device);
        return value;
    };
    context.nMultiProcessorCount = attribute(cudaDevAttrMultiProcessorCount);
    context.nMaxThreadsPerMultiProcessor = attribute(cudaDevAttrMaxThreadsPerMultiProcessor);
    context.nMaxThreadsPerBlock = attribute(cudaDevAttrMaxThreadsPerBlock);
    context.nSharedMemPerBlock = static_cast<std::size_t>(attribute(cudaDevAttrMaxSharedMemoryPerBlock));
    context.nCudaDevAttrComputeCapabilityMajor = attribute(cudaDevAttrComputeCapabilityMajor);
    context.nCudaDevAttrComputeCapabilityMinor = attribute(cudaDevAttrComputeCapabilityMinor);
    (void)cudaStreamGetFlags(stream, &context.nStreamFlags);
    return context;
}

/// A warning is a failure too.
inline VexaStatus answer(NppStatus status)
{
    return status == NPP_NO_ERROR ? VEXA_SUCCESS : VEXA_INTERNAL_CALL_ERROR;
}

}  // namespace vexa::platform
