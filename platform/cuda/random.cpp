/// @file
/// Random numbers by cuRAND.

#include <curand.h>

#include "platform.h"

namespace vexa::platform {
namespace {

VexaStatus generate(float* values, std::size_t count, Stream stream)
{
    curandGenerator_t generator = nullptr;
    if (curandCreateGenerator(&generator, CURAND_RNG_PSEUDO_DEFAULT) != CURAND_STATUS_SUCCESS)
        return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    const bool done = curandSetStream(generator, stream) == CURAND_STATUS_SUCCESS &&
                      curandGenerateUniform(generator, values, count) == CURAND_STATUS_SUCCESS;
    (void)curandDestroyGenerator(generator);
    return done ? VEXA_SUCCESS : VEXA_INTERNAL_FUNCTION_CALL_ERROR;
}

}  // namespace

/// The generator knows no rows: it fills a block without gaps.
VexaStatus uniform(Target device, Extent2D extent, Stream stream)
{
    const std::size_t bytes = extent.rowBytes * extent.rows;
    void* dense = nullptr;
    if (const VexaStatus failed = allocate(dense, bytes)) return failed;
    VexaStatus status = generate(static_cast<float*>(dense), bytes / sizeof(float), stream);
    if (status == VEXA_SUCCESS) status = copyOnDevice(device, {dense, extent.rowBytes}, extent, stream);
    const VexaStatus released = release(dense);
    return status == VEXA_SUCCESS ? released : status;
}

}  // namespace vexa::platform
