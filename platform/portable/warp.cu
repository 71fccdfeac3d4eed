/// @file
/// Affine and perspective warps at the seam, written with kernels. Every pixel of the destination is looked up in the
/// source, so transforms that tell where the source goes are inverted first.

#include <cmath>

#include "arguments.h"
#include "fault.h"
#include "platform.h"
#include "sample.h"

using namespace vexa;

namespace {

/// A transform of the plane in homogeneous coordinates.
struct Matrix {
    double at[3][3];
};

/// Where an affine transform takes a pixel.
struct AffineMap {
    Matrix matrix;

    VEXA_DEVICE Position operator()(int x, int y) const
    {
        const auto coordinate = [&](int i) { return matrix.at[i][0] * x + (matrix.at[i][1] * y + matrix.at[i][2]); };
        return {coordinate(0), coordinate(1)};
    }
};

/// Where a perspective transform takes a pixel. On the horizon that is no position.
struct PerspectiveMap {
    Matrix matrix;

    VEXA_DEVICE Position operator()(int x, int y) const
    {
        const auto coordinate = [&](int i) { return matrix.at[i][0] * x + (matrix.at[i][1] * y + matrix.at[i][2]); };
        const double scale = 1.0 / coordinate(2);
        return {coordinate(0) * scale, coordinate(1) * scale};
    }
};

template <int C, typename T, typename Map, typename Sampler>
VEXA_LOCAL_KERNEL kernel_warp(T* dst, int width, int height, int pitch, Map map, Sampler sampler)
{
    samplePixels<C>(width, height, Plane<T>{dst, pitch}, map, sampler);
}

bool isAffine(platform::Transform transform)
{
    return transform == platform::Transform::affine || transform == platform::Transform::affineBack;
}

bool isFinite(const Matrix& matrix)
{
    for (const auto& row : matrix.at)
        for (const double element : row)
            if (!std::isfinite(element)) return false;
    return true;
}

Matrix matrixOf(bool affine, const Vexa64f (*coefficients)[3])
{
    Matrix matrix{{{}, {}, {0, 0, 1}}};
    for (int i = 0; i < (affine ? 2 : 3); ++i)
        for (int j = 0; j < 3; ++j) matrix.at[i][j] = coefficients[i][j];
    return matrix;
}

/// By cofactors; not finite if there is none.
Matrix inverseOf(const Matrix& matrix)
{
    const auto cofactor = [&](int i, int j) {
        const double* const a = matrix.at[(i + 1) % 3];
        const double* const b = matrix.at[(i + 2) % 3];
        const int k = (j + 1) % 3;
        const int l = (j + 2) % 3;
        return a[k] * b[l] - a[l] * b[k];
    };
    double determinant = 0;
    for (int j = 0; j < 3; ++j) determinant += matrix.at[0][j] * cofactor(0, j);
    Matrix inverse;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) inverse.at[i][j] = cofactor(j, i) / determinant;
    return inverse;
}

/// Whether the rectangle around the corners of the transformed source lies beside the destination.
bool misses(const Matrix& forward, int srcWidth, int srcHeight, int dstWidth, int dstHeight)
{
    double lowest[2] = {HUGE_VAL, HUGE_VAL};
    double highest[2] = {-HUGE_VAL, -HUGE_VAL};
    for (int corner = 0; corner < 4; ++corner) {
        const double x = corner % 2 == 0 ? -0.5 : srcWidth - 0.5;
        const double y = corner < 2 ? -0.5 : srcHeight - 0.5;
        const auto coordinate = [&](int i) { return forward.at[i][0] * x + forward.at[i][1] * y + forward.at[i][2]; };
        const double scale = coordinate(2);
        // A source that crosses the horizon goes everywhere.
        if (!(scale > 0)) return false;
        for (int i = 0; i < 2; ++i) {
            lowest[i] = std::fmin(lowest[i], coordinate(i) / scale);
            highest[i] = std::fmax(highest[i], coordinate(i) / scale);
        }
    }
    return highest[0] < 0 || highest[1] < 0 || lowest[0] > dstWidth - 1 || lowest[1] > dstHeight - 1;
}

template <int C, typename T, typename Sampler>
VexaStatus launchWarp(platform::Destination<T> dst, bool affine, const Matrix& back, const Sampler& sampler,
                      platform::Stream stream)
{
    const Extent extent{dst.width, dst.height};
    const int pitch = elements<T>(dst.pitch);
    if (affine)
        launch(kernel_warp<C, T, AffineMap, Sampler>, extent, stream, dst.first, dst.width, dst.height, pitch,
               AffineMap{back}, sampler);
    else
        launch(kernel_warp<C, T, PerspectiveMap, Sampler>, extent, stream, dst.first, dst.width, dst.height, pitch,
               PerspectiveMap{back}, sampler);
    return VEXA_SUCCESS;
}

}  // namespace

namespace vexa::platform {

template <typename T, int C>
VexaStatus warp(Transform transform, Pixels<T> src, Destination<T> dst, const Vexa64f (*coefficients)[3],
                Interpolation interpolation, Stream stream)
{
    if (fault::strikes(fault::Call::warp)) return VEXA_INTERNAL_CALL_ERROR;
    if (src.first == nullptr || dst.first == nullptr || coefficients == nullptr) return VEXA_INTERNAL_CALL_ERROR;
    if (src.width < 2 || src.height < 2) return VEXA_INTERNAL_CALL_ERROR;
    const bool affine = isAffine(transform);
    const bool isBack = transform == Transform::affineBack || transform == Transform::perspectiveBack;
    const Matrix given = matrixOf(affine, coefficients);
    const Matrix inverse = inverseOf(given);
    if (!isFinite(given) || !isFinite(inverse)) return VEXA_INTERNAL_CALL_ERROR;
    const Matrix& back = isBack ? given : inverse;
    if (misses(isBack ? inverse : given, src.width, src.height, dst.width, dst.height)) return VEXA_INTERNAL_CALL_ERROR;

    const Sampled<T, C> sampled{src.first, src.width, src.height, elements<T>(src.pitch)};
    const Range range = rangeOf<T>;
    switch (interpolation) {
        case Interpolation::nearest:
            return launchWarp<C>(dst, affine, back, SampleNearest<T, C>{sampled}, stream);
        case Interpolation::linear:
            return launchWarp<C>(dst, affine, back, SampleBetween<T, C, 2>{sampled, range}, stream);
        case Interpolation::cubic:
            return launchWarp<C>(dst, affine, back, SampleBetween<T, C, 4>{sampled, range}, stream);
        case Interpolation::undefined:
            break;
    }
    return VEXA_INTERNAL_CALL_ERROR;
}

// clang-format off
template VexaStatus warp<Vexa8u, 1>(Transform, Pixels<Vexa8u>, Destination<Vexa8u>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus warp<Vexa8u, 3>(Transform, Pixels<Vexa8u>, Destination<Vexa8u>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus warp<Vexa16u, 1>(Transform, Pixels<Vexa16u>, Destination<Vexa16u>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus warp<Vexa16u, 3>(Transform, Pixels<Vexa16u>, Destination<Vexa16u>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus warp<Vexa32f, 1>(Transform, Pixels<Vexa32f>, Destination<Vexa32f>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus warp<Vexa32f, 3>(Transform, Pixels<Vexa32f>, Destination<Vexa32f>, const Vexa64f (*)[3], Interpolation, Stream);
// clang-format on

}  // namespace vexa::platform
