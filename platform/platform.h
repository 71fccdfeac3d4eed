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

/// Page-locks host memory that others have allocated, so that the device copies to it by itself; null memory can't be.
/// VEXA_MEMORY_PINNING_ERROR
[[nodiscard]] VexaStatus pin(void* memory, std::size_t bytes);

/// Ends that. Copies must have finished.
void unpin(void* memory);
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

/// Uniformly distributed random floats in rows of device memory, above 0 and at most 1, the same for the same extent.
/// VEXA_INTERNAL_FUNCTION_CALL_ERROR, VEXA_MEM_ALLOC_ERR, VEXA_MEMCPY_D2D_ERROR, VEXA_MEMFREE_ERR
[[nodiscard]] VexaStatus uniform(Target device, Extent2D extent, Stream stream);

/// @name Streams
/// @{

/// VEXA_STREAM_CREATE_ERROR
[[nodiscard]] VexaStatus createStream(Stream& stream);

/// The default stream can't be destroyed. VEXA_STREAM_DESTROY_ERROR
[[nodiscard]] VexaStatus destroyStream(Stream stream);

/// VEXA_UNKNOWN_ERROR
[[nodiscard]] VexaStatus synchronize(Stream stream);

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

/// An error of an earlier call that the device's runtime keeps. Asking leaves it there.
struct PendingError {
    int number;  ///< 0 for none
    const char* text;
};
PendingError pendingError();
/// @}

/// @name Statistics
/// Primitives that reduce the pixels of an image to a few numbers in device memory, for each channel. Each works in a
/// block of scratch memory, whose size is asked for first. VEXA_INTERNAL_CALL_ERROR
/// @{

enum class Statistic { max, min, minMax, sum, mean, norm, meanStdDev, maskedMeanStdDev, countInRange, dot };

/// The rows of an image in device memory.
template <typename T>
struct Pixels {
    const T* first;
    int width;
    int height;
    int pitch;  ///< bytes
};

/// The statistics of images with elements T, 8u, 16u or 32f, and C channels, 1 or 3.
template <typename T, int C>
struct Statistics {
    [[nodiscard]] static VexaStatus scratchSize(Statistic statistic, int width, int height, std::size_t& bytes,
                                                Stream stream);

    [[nodiscard]] static VexaStatus max(Pixels<T> src, void* scratch, T* max, Stream stream);
    [[nodiscard]] static VexaStatus min(Pixels<T> src, void* scratch, T* min, Stream stream);
    [[nodiscard]] static VexaStatus minMax(Pixels<T> src, void* scratch, T* min, T* max, Stream stream);
    [[nodiscard]] static VexaStatus sum(Pixels<T> src, void* scratch, Vexa64f* sum, Stream stream);
    [[nodiscard]] static VexaStatus mean(Pixels<T> src, void* scratch, Vexa64f* mean, Stream stream);

    /// The root of the sum of squares.
    [[nodiscard]] static VexaStatus norm(Pixels<T> src, void* scratch, Vexa64f* norm, Stream stream);

    /// Mean and standard deviation of the population.
    [[nodiscard]] static VexaStatus meanStdDev(Pixels<T> src, void* scratch, Vexa64f* mean, Vexa64f* stdDev,
                                               Stream stream);

    /// The same over the pixels whose byte in the mask is not 0; of none, both are 0. The size is that of the source.
    [[nodiscard]] static VexaStatus meanStdDev(Pixels<T> src, Pixels<Vexa8u> mask, void* scratch, Vexa64f* mean,
                                               Vexa64f* stdDev, Stream stream);
};

/// How many elements of each channel lie between bounds that count as inside; for T 8u or 32f and C 1 or 3. A lower
/// bound above the upper is an error.
template <typename T, int C>
[[nodiscard]] VexaStatus countInRange(Pixels<T> src, void* scratch, Vexa32s* counts, const T* lowest, const T* highest,
                                      Stream stream);

/// The dot product of two float images that share width, height and pitch, for C 1 or 3.
template <int C>
[[nodiscard]] VexaStatus dot(Pixels<Vexa32f> src1, const Vexa32f* src2, void* scratch, Vexa64f* result, Stream stream);
/// @}

/// @name Geometry
/// Primitives that sample an image at other places; for T 8u, 16u or 32f and C 1 or 3. They return without waiting.
/// VEXA_INTERNAL_CALL_ERROR for what they refuse: then nothing is written.
/// @{

/// The values are those that NPP gives them.
enum class Interpolation { undefined = 0, nearest = 1, linear = 2, cubic = 4 };

/// The rows of an image in device memory, to write to.
template <typename T>
struct Destination {
    T* first;
    int width;
    int height;
    int pitch;  ///< bytes
};

/// Fills the destination from the whole source. The scale is taken for each axis from the two sizes. Refuses an
/// undefined interpolation and a source that is less than 2 pixels wide or high.
template <typename T, int C>
[[nodiscard]] VexaStatus resize(Pixels<T> src, Destination<T> dst, Interpolation interpolation, Stream stream);

/// How coefficients are meant: two rows for affine, three for perspective transforms, from source to destination or,
/// back, from destination to source.
enum class Transform { affine, affineBack, perspective, perspectiveBack };

/// Writes the destination pixels that the source reaches and leaves the others alone. Refuses what resize does, a
/// singular or infinite matrix, and a source that misses the destination.
template <typename T, int C>
[[nodiscard]] VexaStatus warp(Transform transform, Pixels<T> src, Destination<T> dst, const Vexa64f (*coefficients)[3],
                              Interpolation interpolation, Stream stream);

/// Writes the source's columns as rows of `dst`, `pitch` bytes apart.
template <typename T, int C>
[[nodiscard]] VexaStatus transpose(Pixels<T> src, T* dst, int pitch, Stream stream);
/// @}

/// @name Fourier transforms
/// @{

/// A complex number as vendor libraries have it.
struct alignas(8) Complex {
    Vexa32f real;
    Vexa32f imaginary;
};

/// The forward transform, not normalised, of a real image: in place, of packed rows whose imaginary parts are 0.
/// VEXA_INTERNAL_FUNCTION_CALL_ERROR
[[nodiscard]] VexaStatus fourierForward(Complex* values, int width, int height, Stream stream);
/// @}

/// @name Linear algebra
/// Of one matrix, by column: rows of pixels are the columns of the transpose. Matrices, pivots and infos lie in device
/// memory, and so do the pointers to the matrices. Leading dimensions are in elements.
/// VEXA_INTERNAL_FUNCTION_CALL_ERROR
/// @{

/// What a vendor library needs to be called.
using Solver = void*;
[[nodiscard]] VexaStatus createSolver(Solver& solver, Stream stream);
void destroySolver(Solver solver);

/// LU factors in place, by partial pivoting. `info` takes the place of the first pivot that is 0, from 1 on, or 0.
[[nodiscard]] VexaStatus luFactor(Solver solver, int n, Vexa32f* const* matrix, int lda, Vexa32s* pivots,
                                  Vexa32s* info);

/// The inverse from the factors. After a pivot of 0, `info` says so and the result is what the library leaves.
[[nodiscard]] VexaStatus luInvert(Solver solver, int n, const Vexa32f* const* factors, int lda, const Vexa32s* pivots,
                                  Vexa32f* const* inverse, int ldc, Vexa32s* info);
/// @}

}  // namespace vexa::platform
