/// @file
/// Random numbers by cuRAND.

#include <curand.h>

#include "platform.h"

namespace vexa::platform {

VexaStatus uniform(float* values, std::size_t count, Stream stream)
{
    curandGenerator_t generator = nullptr;
    if (curandCreateGenerator(&generator, CURAND_RNG_PSEUDO_DEFAULT) != CURAND_STATUS_SUCCESS)
        return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    const bool done = curandSetStream(generator, stream) == CURAND_STATUS_SUCCESS &&
                      curandGenerateUniform(generator, values, count) == CURAND_STATUS_SUCCESS;
    (void)curandDestroyGenerator(generator);
    return done ? VEXA_SUCCESS : VEXA_INTERNAL_FUNCTION_CALL_ERROR;
}

}  // namespace vexa::platform
