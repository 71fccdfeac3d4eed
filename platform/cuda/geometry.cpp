/// @file
/// Geometry at the seam by NPP, where CMake finds it.

#include <cuda_runtime.h>
#include <nppi_data_exchange_and_initialization.h>
#include <nppi_geometry_transforms.h>

#include "npp.h"
#include "platform.h"

namespace vexa::platform {
namespace {

// ---- NPP's names, by element type and channels ----

template <typename T, int C>
struct Npp;

// clang-format off
template <>
struct Npp<Vexa8u, 1> {
    static constexpr auto resize = nppiResize_8u_C1R_Ctx;
    static constexpr auto warpAffine = nppiWarpAffine_8u_C1R_Ctx;
    static constexpr auto warpAffineBack = nppiWarpAffineBack_8u_C1R_Ctx;
    static constexpr auto warpPerspective = nppiWarpPerspective_8u_C1R_Ctx;
    static constexpr auto warpPerspectiveBack = nppiWarpPerspectiveBack_8u_C1R_Ctx;
    static constexpr auto transpose = nppiTranspose_8u_C1R_Ctx;
};
template <>
struct Npp<Vexa8u, 3> {
    static constexpr auto resize = nppiResize_8u_C3R_Ctx;
    static constexpr auto warpAffine = nppiWarpAffine_8u_C3R_Ctx;
    static constexpr auto warpAffineBack = nppiWarpAffineBack_8u_C3R_Ctx;
    static constexpr auto warpPerspective = nppiWarpPerspective_8u_C3R_Ctx;
    static constexpr auto warpPerspectiveBack = nppiWarpPerspectiveBack_8u_C3R_Ctx;
    static constexpr auto transpose = nppiTranspose_8u_C3R_Ctx;
};
template <>
struct Npp<Vexa16u, 1> {
    static constexpr auto resize = nppiResize_16u_C1R_Ctx;
    static constexpr auto warpAffine = nppiWarpAffine_16u_C1R_Ctx;
    static constexpr auto warpAffineBack = nppiWarpAffineBack_16u_C1R_Ctx;
    static constexpr auto warpPerspective = nppiWarpPerspective_16u_C1R_Ctx;
    static constexpr auto warpPerspectiveBack = nppiWarpPerspectiveBack_16u_C1R_Ctx;
    static constexpr auto transpose = nppiTranspose_16u_C1R_Ctx;
};
template <>
struct Npp<Vexa16u, 3> {
    static constexpr auto resize = nppiResize_16u_C3R_Ctx;
    static constexpr auto warpAffine = nppiWarpAffine_16u_C3R_Ctx;
    static constexpr auto warpAffineBack = nppiWarpAffineBack_16u_C3R_Ctx;
    static constexpr auto warpPerspective = nppiWarpPerspective_16u_C3R_Ctx;
    static constexpr auto warpPerspectiveBack = nppiWarpPerspectiveBack_16u_C3R_Ctx;
    static constexpr auto transpose = nppiTranspose_16u_C3R_Ctx;
};
template <>
struct Npp<Vexa32f, 1> {
    static constexpr auto resize = nppiResize_32f_C1R_Ctx;
    static constexpr auto warpAffine = nppiWarpAffine_32f_C1R_Ctx;
    static constexpr auto warpAffineBack = nppiWarpAffineBack_32f_C1R_Ctx;
    static constexpr auto warpPerspective = nppiWarpPerspective_32f_C1R_Ctx;
    static constexpr auto warpPerspectiveBack = nppiWarpPerspectiveBack_32f_C1R_Ctx;
    static constexpr auto transpose = nppiTranspose_32f_C1R_Ctx;
};
template <>
struct Npp<Vexa32f, 3> {
    static constexpr auto resize = nppiResize_32f_C3R_Ctx;
    static constexpr auto warpAffine = nppiWarpAffine_32f_C3R_Ctx;
    static constexpr auto warpAffineBack = nppiWarpAffineBack_32f_C3R_Ctx;
    static constexpr auto warpPerspective = nppiWarpPerspective_32f_C3R_Ctx;
    static constexpr auto warpPerspectiveBack = nppiWarpPerspectiveBack_32f_C3R_Ctx;
    static constexpr auto transpose = nppiTranspose_32f_C3R_Ctx;
};
// clang-format on

// ---- calls ----

NppiRect all(NppiSize size)
{
    return {0, 0, size.width, size.height};
}

}  // namespace

template <typename T, int C>
VexaStatus resize(Pixels<T> src, Destination<T> dst, Interpolation interpolation, Stream stream)
{
    const NppiSize from{src.width, src.height};
    const NppiSize to{dst.width, dst.height};
    return answer(Npp<T, C>::resize(src.first, src.pitch, from, all(from), dst.first, dst.pitch, to, all(to),
                                    static_cast<int>(interpolation), contextOf(stream)));
}

template <typename T, int C>
VexaStatus warp(Transform transform, Pixels<T> src, Destination<T> dst, const Vexa64f (*coefficients)[3],
                Interpolation interpolation, Stream stream)
{
    if (coefficients == nullptr) return VEXA_INTERNAL_CALL_ERROR;
    const NppiSize from{src.width, src.height};
    const NppiSize to{dst.width, dst.height};
    const auto call = [&](auto* function) {
        return answer(function(src.first, from, src.pitch, all(from), dst.first, dst.pitch, all(to), coefficients,
                               static_cast<int>(interpolation), contextOf(stream)));
    };
    switch (transform) {
        case Transform::affine:
            return call(Npp<T, C>::warpAffine);
        case Transform::affineBack:
            return call(Npp<T, C>::warpAffineBack);
        case Transform::perspective:
            return call(Npp<T, C>::warpPerspective);
        case Transform::perspectiveBack:
            return call(Npp<T, C>::warpPerspectiveBack);
    }
    return VEXA_INTERNAL_CALL_ERROR;
}

template <typename T, int C>
VexaStatus transpose(Pixels<T> src, T* dst, int pitch, Stream stream)
{
    return answer(Npp<T, C>::transpose(src.first, src.pitch, dst, pitch, {src.width, src.height}, contextOf(stream)));
}

// clang-format off
template VexaStatus resize<Vexa8u, 1>(Pixels<Vexa8u>, Destination<Vexa8u>, Interpolation, Stream);
template VexaStatus resize<Vexa8u, 3>(Pixels<Vexa8u>, Destination<Vexa8u>, Interpolation, Stream);
template VexaStatus resize<Vexa16u, 1>(Pixels<Vexa16u>, Destination<Vexa16u>, Interpolation, Stream);
template VexaStatus resize<Vexa16u, 3>(Pixels<Vexa16u>, Destination<Vexa16u>, Interpolation, Stream);
template VexaStatus resize<Vexa32f, 1>(Pixels<Vexa32f>, Destination<Vexa32f>, Interpolation, Stream);
template VexaStatus resize<Vexa32f, 3>(Pixels<Vexa32f>, Destination<Vexa32f>, Interpolation, Stream);
template VexaStatus warp<Vexa8u, 1>(Transform, Pixels<Vexa8u>, Destination<Vexa8u>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus warp<Vexa8u, 3>(Transform, Pixels<Vexa8u>, Destination<Vexa8u>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus warp<Vexa16u, 1>(Transform, Pixels<Vexa16u>, Destination<Vexa16u>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus warp<Vexa16u, 3>(Transform, Pixels<Vexa16u>, Destination<Vexa16u>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus warp<Vexa32f, 1>(Transform, Pixels<Vexa32f>, Destination<Vexa32f>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus warp<Vexa32f, 3>(Transform, Pixels<Vexa32f>, Destination<Vexa32f>, const Vexa64f (*)[3], Interpolation, Stream);
template VexaStatus transpose<Vexa8u, 1>(Pixels<Vexa8u>, Vexa8u*, int, Stream);
template VexaStatus transpose<Vexa8u, 3>(Pixels<Vexa8u>, Vexa8u*, int, Stream);
template VexaStatus transpose<Vexa16u, 1>(Pixels<Vexa16u>, Vexa16u*, int, Stream);
template VexaStatus transpose<Vexa16u, 3>(Pixels<Vexa16u>, Vexa16u*, int, Stream);
template VexaStatus transpose<Vexa32f, 1>(Pixels<Vexa32f>, Vexa32f*, int, Stream);
template VexaStatus transpose<Vexa32f, 3>(Pixels<Vexa32f>, Vexa32f*, int, Stream);
// clang-format on

}  // namespace vexa::platform
