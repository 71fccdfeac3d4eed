/// @file
/// Linear algebra of the host platform, through LAPACK's Fortran interface.

#include <algorithm>
#include <memory>
#include <new>

#include "fault.h"
#include "platform.h"

extern "C" {
void sgetrf_(const int* m, const int* n, float* a, const int* lda, int* pivots, int* info);
void sgetri_(const int* n, float* a, const int* lda, const int* pivots, float* work, const int* workSize, int* info);
}

namespace vexa::platform {
namespace {

/// Whether there are blocks for all arguments, and columns that lie apart.
template <typename... Block>
bool isSound(int n, int leadingDimension, const Block*... blocks)
{
    return n > 0 && leadingDimension >= n && ((blocks != nullptr) && ...);
}

}  // namespace

VexaStatus createSolver(Solver& solver, Stream /*stream*/)
{
    solver = nullptr;
    return VEXA_SUCCESS;
}

void destroySolver(Solver /*solver*/) {}

VexaStatus luFactor(Solver /*solver*/, int n, Vexa32f* const* matrix, int lda, Vexa32s* pivots, Vexa32s* info)
{
    if (fault::strikes(fault::Call::luFactor) || !isSound(n, lda, matrix, pivots, info))
        return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    sgetrf_(&n, &n, *matrix, &lda, pivots, info);
    return VEXA_SUCCESS;
}

VexaStatus luInvert(Solver /*solver*/, int n, const Vexa32f* const* factors, int lda, const Vexa32s* pivots,
                    Vexa32f* const* inverse, int ldc, Vexa32s* info)
{
    if (fault::strikes(fault::Call::luInvert) || !isSound(n, std::min(lda, ldc), factors, pivots, inverse, info))
        return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    constexpr int columnsAtATime = 64;
    const int workSize = n * columnsAtATime;
    const std::unique_ptr<float[]> work(new (std::nothrow) float[static_cast<std::size_t>(workSize)]);
    if (work == nullptr) return VEXA_INTERNAL_FUNCTION_CALL_ERROR;
    // LAPACK inverts in place.
    const auto step = static_cast<std::ptrdiff_t>(n);
    for (int column = 0; column < n; ++column)
        std::copy_n(*factors + static_cast<std::ptrdiff_t>(column) * lda, step,
                    *inverse + static_cast<std::ptrdiff_t>(column) * ldc);
    sgetri_(&n, *inverse, &ldc, pivots, work.get(), &workSize, info);
    return VEXA_SUCCESS;
}

}  // namespace vexa::platform
