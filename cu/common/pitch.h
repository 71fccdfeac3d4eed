/// @file
/// Destinations of kernels that address all their images by one pitch.

#pragma once

#include <algorithm>

#include "arguments.h"

namespace vexa {

/// work(image) with an image that may be addressed by `pitch`: dst itself, or, if its buffer ends too early for that, a
/// temporary one whose first rows go to dst, as many as it has room for. The kernels can't be clipped to these: a
/// window at the last of them reaches rows below.
template <typename Work>
VexaStatus withPitch(VexaImage& dst, int pitch, const VexaStream& stream, const Work& work)
{
    const long long rowBytes = static_cast<long long>(elementsOf(dst)) * (dst.depth() / 8);
    const int rows = rowsInside(dst, dst.height(), rowBytes, pitch);
    if (rows == dst.height()) return work(dst);
    VexaImage whole;
    (void)whole.create(dst.width(), dst.height(), pitch, dst.depth(), dst.channels());
    // One that could not be made is null, and null images are not launched on; the status is that of the work.
    if (!whole.isInitialized()) return work(whole);
    const auto bytes = static_cast<std::size_t>(pitch);
    const platform::Extent2D extent{std::min(static_cast<std::size_t>(rowBytes), bytes),
                                    static_cast<std::size_t>(rows)};
    (void)platform::copyOnDevice({whole.ptr(), bytes}, {dst.ptr(), bytes}, extent, handle(stream));
    const VexaStatus status = work(whole);
    (void)platform::copyOnDevice({dst.ptr(), bytes}, {whole.ptr(), bytes}, extent, handle(stream));
    return status;
}

}  // namespace vexa
