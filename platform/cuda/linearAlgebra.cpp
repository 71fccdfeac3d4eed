/// @file
/// Linear algebra on cuBLAS.

#include <cublas_v2.h>

#include "platform.h"

namespace vexa::platform {
namespace {

VexaStatus answer(cublasStatus_t result)
{
    return result == CUBLAS_STATUS_SUCCESS ? VEXA_SUCCESS : VEXA_INTERNAL_FUNCTION_CALL_ERROR;
}

/// Whether there are blocks for all arguments: cuBLAS would hand a null one to its kernels.
template <typename... Block>
bool areBlocks(const Block*... blocks)
{
    return ((blocks != nullptr) && ...);
}

}  // namespace

VexaStatus createSolver(Solver& solver, Stream stream)
{
    cublasHandle_t handle = nullptr;
    if (const VexaStatus failed = answer(cublasCreate(&handle))) return failed;
    solver = handle;
    return answer(cublasSetStream(handle, stream));
}

void destroySolver(Solver solver)
{
    (void)cublasDestroy(static_cast<cublasHandle_t>(solver));
}

VexaStatus luFactor(Solver solver, int n, Vexa32f* const* matrix, int lda, Vexa32s* pivots, Vexa32s* info)
{
    if (!areBlocks(matrix, pivots, info)) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    return answer(cublasSgetrfBatched(static_cast<cublasHandle_t>(solver), n, matrix, lda, pivots, info, 1));
}

VexaStatus luInvert(Solver solver, int n, const Vexa32f* const* factors, int lda, const Vexa32s* pivots,
                    Vexa32f* const* inverse, int ldc, Vexa32s* info)
{
    if (!areBlocks(factors, pivots, inverse, info)) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    return answer(
        cublasSgetriBatched(static_cast<cublasHandle_t>(solver), n, factors, lda, pivots, inverse, ldc, info, 1));
}

}  // namespace vexa::platform
