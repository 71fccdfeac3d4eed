/// @file
/// Streams and devices on the CUDA runtime.

#include <cuda_runtime.h>

#include <algorithm>
#include <iterator>

#include "platform.h"

namespace vexa::platform {
namespace {

/// An attribute, where toolkits from 13 on have dropped the field of the properties.
int attribute(cudaDeviceAttr name, int device)
{
    int value = 0;
    return cudaDeviceGetAttribute(&value, name, device) == cudaSuccess ? value : 0;
}

}  // namespace

VexaStatus createStream(Stream& stream)
{
    return cudaStreamCreate(&stream) == cudaSuccess ? VEXA_SUCCESS : VEXA_STREAM_CREATE_ERROR;
}

VexaStatus destroyStream(Stream stream)
{
    return cudaStreamDestroy(stream) == cudaSuccess ? VEXA_SUCCESS : VEXA_STREAM_DESTROY_ERROR;
}

VexaStatus synchronize(Stream stream)
{
    return cudaStreamSynchronize(stream) == cudaSuccess ? VEXA_SUCCESS : VEXA_UNKNOWN_ERROR;
}

bool finished(Stream stream)
{
    return cudaStreamQuery(stream) == cudaSuccess;
}

int currentDevice()
{
    int device = -1;
    return cudaGetDevice(&device) == cudaSuccess ? device : -1;
}

int deviceCount()
{
    int count = 0;
    return cudaGetDeviceCount(&count) == cudaSuccess ? count : 0;
}

Device describeDevice(int device)
{
    Device described;
    cudaDeviceProp asked = {};
    if (cudaGetDeviceProperties(&asked, device) != cudaSuccess) return described;
    VexaDeviceProperties& properties = described.properties;
    std::copy(std::begin(asked.name), std::end(asked.name), properties.name);
    properties.multiProcessorCount = asked.multiProcessorCount;
    properties.asyncEngineCount = asked.asyncEngineCount;
    properties.totalGlobalMem = asked.totalGlobalMem;
    properties.totalConstMem = asked.totalConstMem;
    properties.textureAlignment = static_cast<int>(asked.textureAlignment);
    properties.clockRate = attribute(cudaDevAttrClockRate, device);
    described.major = asked.major;
    described.minor = asked.minor;
    return described;
}

VexaStatus selectDevice(int device)
{
    return cudaSetDevice(device) == cudaSuccess ? VEXA_SUCCESS : VEXA_INVALID_DEVICE_ERROR;
}

void resetDevice()
{
    (void)cudaDeviceReset();
}

VexaStatus synchronizeDevice()
{
    return cudaDeviceSynchronize() == cudaSuccess ? VEXA_SUCCESS : VEXA_UNKNOWN_ERROR;
}

PendingError pendingError()
{
    const cudaError_t error = cudaPeekAtLastError();
    return {static_cast<int>(error), cudaGetErrorString(error)};
}

}  // namespace vexa::platform
