/// @file
/// The seam between the library and what it runs on. platform/cuda answers these calls with an NVIDIA GPU,
/// platform/host with the CPU; exactly one of them is built in. Each call answers with the status that its failure
/// means; callers whose contract names another status map it themselves.

#pragma once

#include <cstddef>

#include "vexaDefs.h"

namespace vexa::platform {

using Stream = cudaStream_t;

/// @name Memory
/// @{

/// Device memory. No bytes are a null block and a success. VEXA_MEM_ALLOC_ERR
[[nodiscard]] VexaStatus allocate(void*& block, std::size_t bytes);

/// Device memory for rows at a pitch that suits the device. VEXA_MEM_ALLOC_ERR
[[nodiscard]] VexaStatus allocateRows(void*& block, std::size_t& pitch, std::size_t rowBytes, std::size_t rows);

/// Waits for the device. A null block is a success. VEXA_MEMFREE_ERR
[[nodiscard]] VexaStatus release(void* block);

/// Page-locked host memory, null on failure.
void* allocatePinned(std::size_t bytes);
void releasePinned(void* block);
/// @}

/// @name Copies and fills
/// Those without a stream block. A row must fit both pitches. The host platform refuses a copy that would leave an
/// allocation; a GPU's runtime sees that only roughly, so callers that know how far a block goes say so by a null.
/// @{

/// Bytes of a rectangle: the start of its first row and the distance from one row to the next.
template <typename Byte>
struct Rows {
    Byte* first;
    std::size_t pitch;
};
using Source = Rows<const void>;
using Target = Rows<void>;

struct Extent2D {
    std::size_t rowBytes;
    std::size_t rows;
};

/// VEXA_MEMCPY_H2D_ERROR
[[nodiscard]] VexaStatus copyToDevice(void* device, const void* host, std::size_t bytes);
[[nodiscard]] VexaStatus copyToDevice(void* device, const void* host, std::size_t bytes, Stream stream);
[[nodiscard]] VexaStatus copyToDevice(Target device, Source host, Extent2D extent);
[[nodiscard]] VexaStatus copyToDevice(Target device, Source host, Extent2D extent, Stream stream);

/// VEXA_MEMCPY_D2H_ERROR
[[nodiscard]] VexaStatus copyToHost(void* host, const void* device, std::size_t bytes);
[[nodiscard]] VexaStatus copyToHost(void* host, const void* device, std::size_t bytes, Stream stream);
[[nodiscard]] VexaStatus copyToHost(Target host, Source device, Extent2D extent);
[[nodiscard]] VexaStatus copyToHost(Target host, Source device, Extent2D extent, Stream stream);

/// VEXA_MEMCPY_D2D_ERROR
[[nodiscard]] VexaStatus copyOnDevice(Target to, Source from, Extent2D extent);
[[nodiscard]] VexaStatus copyOnDevice(Target to, Source from, Extent2D extent, Stream stream);

/// Sets every byte of a rectangle of device memory. VEXA_MEMSET_ERR
[[nodiscard]] VexaStatus setBytes(Target device, unsigned char value, Extent2D extent, Stream stream);
/// @}

/// Uniformly distributed random floats in device memory, above 0 and at most 1, the same for the same count.
/// VEXA_INTERNAL_FUNCTION_CALL_ERROR
[[nodiscard]] VexaStatus uniform(float* values, std::size_t count, Stream stream);

/// @name Streams
/// @{

/// VEXA_STREAM_CREATE_ERROR
[[nodiscard]] VexaStatus createStream(Stream& stream);

/// The default stream can't be destroyed. VEXA_STREAM_DESTROY_ERROR
[[nodiscard]] VexaStatus destroyStream(Stream stream);

void synchronize(Stream stream);
bool finished(Stream stream);
/// @}

/// @name Devices
/// @{

int currentDevice();  ///< -1 without one
int deviceCount();

/// What a device says of itself; compute capability apart by major and minor.
struct Device {
    VexaDeviceProperties properties;
    int major = 0;
    int minor = 0;
};
Device describeDevice(int device);  ///< zeros if it can't be asked

[[nodiscard]] VexaStatus selectDevice(int device);  ///< VEXA_INVALID_DEVICE_ERROR
void resetDevice();
[[nodiscard]] VexaStatus synchronizeDevice();  ///< VEXA_UNKNOWN_ERROR
/// @}

}  // namespace vexa::platform
