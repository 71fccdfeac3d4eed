/// @file
/// Transposition at the seam, written with kernels.

#include "arguments.h"
#include "fault.h"
#include "platform.h"
#include "transpose.h"

using namespace vexa;

namespace {

template <int C, typename T>
VEXA_LOCAL_KERNEL kernel_transpose(const T* src, T* dst, int width, int height, int srcPitch, int dstPitch)
{
    transposePixels<C>(width, height, Plane<T>{dst, dstPitch}, Plane<const T>{src, srcPitch});
}

}  // namespace

namespace vexa::platform {

template <typename T, int C>
VexaStatus transpose(Pixels<T> src, T* dst, int pitch, Stream stream)
{
    if (fault::strikes(fault::Call::transpose)) return VEXA_INTERNAL_CALL_ERROR;
    if (src.first == nullptr || dst == nullptr) return VEXA_INTERNAL_CALL_ERROR;
    launch(kernel_transpose<C, T>, Extent{src.width, src.height}, stream, src.first, dst, src.width, src.height,
           elements<T>(src.pitch), elements<T>(pitch));
    return VEXA_SUCCESS;
}

template VexaStatus transpose<Vexa8u, 1>(Pixels<Vexa8u>, Vexa8u*, int, Stream);
template VexaStatus transpose<Vexa8u, 3>(Pixels<Vexa8u>, Vexa8u*, int, Stream);
template VexaStatus transpose<Vexa16u, 1>(Pixels<Vexa16u>, Vexa16u*, int, Stream);
template VexaStatus transpose<Vexa16u, 3>(Pixels<Vexa16u>, Vexa16u*, int, Stream);
template VexaStatus transpose<Vexa32f, 1>(Pixels<Vexa32f>, Vexa32f*, int, Stream);
template VexaStatus transpose<Vexa32f, 3>(Pixels<Vexa32f>, Vexa32f*, int, Stream);

}  // namespace vexa::platform
