/// @file
/// Fourier transforms on cuFFT.

#include <cufft.h>

#include "platform.h"

namespace vexa::platform {

VexaStatus fourierForward(Complex* values, int width, int height, Stream stream)
{
    cufftHandle plan = 0;
    // cuFFT would hand a null block to its kernels.
    if (values == nullptr || cufftPlan2d(&plan, height, width, CUFFT_C2C) != CUFFT_SUCCESS)
        return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    auto* const data = reinterpret_cast<cufftComplex*>(values);
    const bool done =
        cufftSetStream(plan, stream) == CUFFT_SUCCESS && cufftExecC2C(plan, data, data, CUFFT_FORWARD) == CUFFT_SUCCESS;
    (void)cufftDestroy(plan);
    return done ? VEXA_SUCCESS : VEXA_INTERNAL_FUNCTION_CALL_ERROR;
}

}  // namespace vexa::platform
