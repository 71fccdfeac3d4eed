/// @file
/// How the conversions between colour spaces reach their workers: 3 channels on both sides and one pitch.

#pragma once

#include "arguments.h"
#include "kernels.h"
#include "sequence.h"

namespace vexa {

/// A worker on device pointers.
template <typename T>
using ColorWorker = VexaStatus (*)(T* pSrc, T* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                                   VexaChannelSeq sequence, cudaStream_t stream);

/// The images of a call, and the sequence that the colours on one side have.
struct Conversion {
    const VexaImage& src;
    VexaImage& dst;
    VexaChannelSeq sequence;
    platform::Stream stream;

    template <typename T>
    VexaStatus by(ColorWorker<T> worker) const
    {
        return worker(src.ptr<T>(), dst.ptr<T>(), src.width(), rowsInside(dst, src), src.pitch(), sequence, stream);
    }
};

/// dst = op(src) on pixels of 3 elements: the body of the kernels.
template <typename T, typename Op>
VEXA_DEVICE void convertPixels(T* src, T* dst, int width, int height, int pitch, const Op& op)
{
    mapPixels(width, height, Interleaved<T, 3>{dst, pitch}, op, Interleaved<T, 3>{src, pitch});
}

}  // namespace vexa
