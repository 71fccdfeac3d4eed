/// @file
/// Resizing at the seam, written with kernels. The grid is the one that the vendor's library samples on.

#include "arguments.h"
#include "fault.h"
#include "platform.h"
#include "scale.h"

using namespace vexa;

namespace {

template <int C, typename T>
VEXA_LOCAL_KERNEL kernel_scaleNearest(const T* src, T* dst, Axis columns, Axis rows, int srcPitch, int dstPitch)
{
    scaleNearest<C>(columns, rows, Plane<T>{dst, dstPitch}, Plane<const T>{src, srcPitch});
}

template <int C, int N, typename T>
VEXA_LOCAL_KERNEL kernel_scaleBetween(const T* src, T* dst, Axis columns, Axis rows, int srcPitch, int dstPitch)
{
    scaleBetween<C, N>(columns, rows, Plane<T>{dst, dstPitch}, Plane<const T>{src, srcPitch});
}

}  // namespace

namespace vexa::platform {

template <typename T, int C>
VexaStatus resize(Pixels<T> src, Destination<T> dst, Interpolation interpolation, Stream stream)
{
    if (fault::strikes(fault::Call::resize)) return VEXA_INTERNAL_CALL_ERROR;
    if (src.first == nullptr || dst.first == nullptr) return VEXA_INTERNAL_CALL_ERROR;
    if (src.width < 2 || src.height < 2 || dst.width < 1 || dst.height < 1) return VEXA_INTERNAL_CALL_ERROR;
    const Axis columns{src.width, dst.width};
    const Axis rows{src.height, dst.height};
    const auto run = [&](auto* kernel) {
        launch(kernel, Extent{dst.width, dst.height}, stream, src.first, dst.first, columns, rows,
               elements<T>(src.pitch), elements<T>(dst.pitch));
        return VEXA_SUCCESS;
    };
    const bool interpolates = !columns.isWhole() || !rows.isWhole();
    switch (interpolation) {
        case Interpolation::nearest:
            return run(kernel_scaleNearest<C, T>);
        case Interpolation::linear:
            return run(interpolates ? kernel_scaleBetween<C, 2, T> : kernel_scaleNearest<C, T>);
        case Interpolation::cubic:
            return run(interpolates ? kernel_scaleBetween<C, 4, T> : kernel_scaleNearest<C, T>);
        case Interpolation::undefined:
            break;
    }
    return VEXA_INTERNAL_CALL_ERROR;
}

template VexaStatus resize<Vexa8u, 1>(Pixels<Vexa8u>, Destination<Vexa8u>, Interpolation, Stream);
template VexaStatus resize<Vexa8u, 3>(Pixels<Vexa8u>, Destination<Vexa8u>, Interpolation, Stream);
template VexaStatus resize<Vexa16u, 1>(Pixels<Vexa16u>, Destination<Vexa16u>, Interpolation, Stream);
template VexaStatus resize<Vexa16u, 3>(Pixels<Vexa16u>, Destination<Vexa16u>, Interpolation, Stream);
template VexaStatus resize<Vexa32f, 1>(Pixels<Vexa32f>, Destination<Vexa32f>, Interpolation, Stream);
template VexaStatus resize<Vexa32f, 3>(Pixels<Vexa32f>, Destination<Vexa32f>, Interpolation, Stream);

}  // namespace vexa::platform
