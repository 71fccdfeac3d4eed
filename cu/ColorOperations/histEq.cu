/// @file
/// Equalisation of a histogram: each value becomes the share of the pixels up to it.

#include "arguments.h"
#include "arithmetic.h"
#include "bytes.h"
#include "checks.h"
#include "count.h"
#include "pitch.h"
#include "streams.h"
#include "temporaries.h"
#include "vexaImageStatistics.h"

using namespace vexa;

/// One block of 256 threads. `scale` is the share of one pixel.
VEXA_KERNEL kernel_equalize(Vexa32u* hist, Vexa8u* lut, float scale)
{
    struct Shares {
        float upTo[byteValues];
    };
    forEachBlock<Shares>(blockSide, blockSide, [=](const auto& block) {
        float* const upTo = block.shared.upTo;
        block.phase([&](int threadX, int threadY) {
            const int i = threadY * blockSide + threadX;
            upTo[i] = static_cast<float>(hist[i]) * scale;
        });
        // In the order of the values, so that sums round alike. One thread is done as soon as the last of many would.
        block.phase([&](int threadX, int threadY) {
            if (threadX != 0 || threadY != 0) return;
            for (int i = 1; i < byteValues; ++i) upTo[i] += upTo[i - 1];
        });
        block.phase([&](int threadX, int threadY) {
            const int i = threadY * blockSide + threadX;
            lut[i] = static_cast<Vexa8u>(roundf(upTo[i] * 255.0F));
        });
    });
}

VEXA_KERNEL kernel_remap(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, Vexa8u* lut)
{
    mapBytes<1>(width, height, Plane<u8>{dst, pitch}, Plane<u8>{src, pitch}, [=](u8 byte) { return lut[byte]; });
}

VexaStatus vexa_histEq_8u_C1(Vexa8u* src, Vexa8u* dst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                             cudaStream_t stream)
{
    VexaHistogram counts(VEXA_8UC1, VEXA_PTR_DEVICE);
    Vexa8u* lut = nullptr;
    (void)allocateElements(lut, byteValues);
    (void)platform::setBytes({lut, byteValues}, 0, {byteValues, 1}, stream);
    (void)vexa_get_hist_8u(src, counts, width, height, pitch, 1, stream);
    const float pixels = static_cast<float>(width) * static_cast<float>(height);
    launch(kernel_equalize, Extent{blockSide, blockSide}, stream, counts.hist(), lut, 1.0F / pixels);
    launch(kernel_remap, elementExtent<1, u8>(width, height), stream, src, dst, width, height, pitch, lut);
    (void)platform::release(lut);
    return VEXA_SUCCESS;
}

namespace vexa::colorOperations {

VexaStatus histEq(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (src.type() != VEXA_8UC1) return VEXA_TYPE_NOT_SUPPORTED_ERROR;
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    return withPitch(dst, src.pitch(), stream, [&](VexaImage& to) {
        return vexa_histEq_8u_C1(src.ptr<u8>(), to.ptr<u8>(), src.width(), src.height(), src.pitch(), handle(stream));
    });
}

}  // namespace vexa::colorOperations
