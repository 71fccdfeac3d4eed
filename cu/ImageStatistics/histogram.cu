/// @file
/// Histograms of 8-bit images.

#include "checks.h"
#include "count.h"
#include "streams.h"
#include "vexaImageStatistics.h"

using namespace vexa;

/// Launched in blocks of 16 by 16 threads.
template <int C>
VEXA_KERNEL kernel_getHist(Vexa8u* src, Vexa32u* hist, int width, int height, int pitch)
{
    countBytes<C>(width, height, Plane<const u8>{src, pitch}, hist);
}

namespace {

/// Counts into bins in device memory.
VexaStatus count(Vexa8u* src, Vexa32u* bins, int width, int height, int pitch, int channels, platform::Stream stream)
{
    const Extent extent{width, height};
    switch (channels) {
        case 1:
            launch(kernel_getHist<1>, extent, stream, src, bins, width, height, pitch);
            return VEXA_SUCCESS;
        case 3:
            launch(kernel_getHist<3>, extent, stream, src, bins, width, height, pitch);
            return VEXA_SUCCESS;
        default:
            return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    }
}

}  // namespace

VexaStatus vexa_get_hist_8u(Vexa8u* src, VexaHistogram& hist, const int width, const int height, const int pitch,
                            const int channels, cudaStream_t stream)
{
    const bool hasKernel = channels == 1 || channels == 3;
    if (hasKernel && hist.binCount() < channels * byteValues) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    // Bins in device memory add up over calls.
    if (hist.location() == VEXA_PTR_DEVICE) return count(src, hist.hist(), width, height, pitch, channels, stream);

    const std::size_t bytes = static_cast<std::size_t>(hist.binCount()) * sizeof(Vexa32u);
    void* bins = nullptr;
    (void)platform::allocate(bins, bytes);
    (void)platform::setBytes({bins, bytes}, 0, {bytes, 1}, stream);
    const VexaStatus status = count(src, static_cast<Vexa32u*>(bins), width, height, pitch, channels, stream);
    if (status == VEXA_SUCCESS)
        (void)platform::copyToHost(hist.hist(), bins, static_cast<std::size_t>(channels) * byteValues * sizeof(Vexa32u),
                                   stream);
    (void)platform::release(bins);
    return status;
}

namespace vexa::imageStatistics {

VexaStatus calcHist(const VexaImage& src, VexaHistogram& hist, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (src.depth() != 8) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    if (!hist.isInitialized()) (void)hist.create(src.type(), VEXA_PTR_HOST);
    if (hist.binCount() != byteValues && hist.binCount() != 3 * byteValues) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    return vexa_get_hist_8u(src.ptr<u8>(), hist, src.width(), src.height(), src.pitch(), src.channels(),
                            handle(stream));
}

}  // namespace vexa::imageStatistics
