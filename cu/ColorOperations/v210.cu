/// @file
/// V210, the packing of 10-bit 4:2:2 video: four little-endian 32-bit words hold the twelve samples of six pixels,
/// three fields of 10 bits a word, in the order Cb, Y, Cr, Y. Packed images and linear 4:2:2 samples are flat runs
/// without rows; runs are clipped to the buffers they lie in.

#include <algorithm>

#include "arguments.h"
#include "checks.h"
#include "kernels.h"

using namespace vexa;

namespace {

constexpr int wordsPerGroup = 4;
constexpr int samplesPerGroup = 12;
constexpr int bytesPerGroup = wordsPerGroup * 4;

}  // namespace

VEXA_KERNEL v210_to_yuv422_unpack_kernel(Vexa32u* src, Vexa16u* dst, int words)
{
    forEachItem((words + wordsPerGroup - 1) / wordsPerGroup, [=](long long group) {
        const Vexa32u* const from = src + wordsPerGroup * group;
        Vexa16u* const to = dst + samplesPerGroup * group;
        constexpr Vexa32u sample = 0x3FF;
        for (int i = 0; i < wordsPerGroup; ++i) {
            to[3 * i] = static_cast<Vexa16u>(from[i] & sample);
            to[3 * i + 1] = static_cast<Vexa16u>((from[i] >> 10) & sample);
            to[3 * i + 2] = static_cast<Vexa16u>((from[i] >> 20) & sample);
        }
    });
}

/// Samples above 1023 carry into the next field.
VEXA_KERNEL k422_v210(Vexa16u* src, Vexa32u* dst, int words)
{
    forEachItem((words + wordsPerGroup - 1) / wordsPerGroup, [=](long long group) {
        const Vexa16u* const from = src + samplesPerGroup * group;
        Vexa32u* const to = dst + wordsPerGroup * group;
        for (int i = 0; i < wordsPerGroup; ++i) {
            const Vexa32u low = from[3 * i];
            const Vexa32u middle = from[3 * i + 1];
            const Vexa32u high = from[3 * i + 2];
            to[i] = low + (middle << 10) + (high << 20);
        }
    });
}

/// Both pixels of a pair get its chroma: Y0, Cr, Cb, Y1, Cr, Cb. Widths count pairs.
VEXA_KERNEL yuv422_to_444_16u_c2_kernel(Vexa16u* src, Vexa16u* dst, int width, int height, int dstPitch, int srcWidth)
{
    const Interleaved<u16, 4> from{src, 4 * srcWidth};
    const Interleaved<u16, 6> to{dst, dstPitch};
    forEachPixel(width, height, [=](int x, int y) {
        const Pixel<u16, 4> pair = from.row(y).load(x);
        const u16 cb = pair.element[0];
        const u16 cr = pair.element[2];
        to.row(y).store(x, {{pair.element[1], cr, cb, pair.element[3], cr, cb}});
    });
}

/// A pair gets the chroma of its even pixel. Widths count pairs.
VEXA_KERNEL k444_422(Vexa16u* src, Vexa16u* dst, int width, int srcPitch, int height)
{
    const Interleaved<u16, 6> from{src, srcPitch};
    const Interleaved<u16, 4> to{dst, 4 * width};
    forEachPixel(width, height, [=](int x, int y) {
        const Pixel<u16, 6> pair = from.row(y).load(x);
        to.row(y).store(x, {{pair.element[2], pair.element[0], pair.element[1], pair.element[3]}});
    });
}

namespace {

long long ceilDivide(long long value, long long divisor)
{
    return (value + divisor - 1) / divisor;
}

/// A temporary of linear 4:2:2 samples, in whole groups.
struct Linear {
    void* block = nullptr;
    long long groups;

    Linear(int width, int height) : groups(ceilDivide(2LL * std::max(width, 0) * std::max(height, 0), samplesPerGroup))
    {
        if (platform::allocate(block, groupBytes * static_cast<std::size_t>(groups))) block = nullptr;
    }

    Vexa16u* samples() const { return static_cast<Vexa16u*>(block); }

    /// For samples that no source reaches.
    void clear(cudaStream_t stream) const
    {
        (void)platform::setBytes({block, groupBytes}, 0, {groupBytes, static_cast<std::size_t>(groups)}, stream);
    }

private:
    static constexpr std::size_t groupBytes = samplesPerGroup * sizeof(Vexa16u);
};

int wordsOf(long long groups)
{
    return static_cast<int>(wordsPerGroup * groups);
}

/// `bytes` of packed words are there. `rows` of 4:4:4 pixels are written, each from its place in the linear samples.
VexaStatus unpack(Vexa32u* src, long long bytes, Vexa16u* dst, int width, int height, int rows, int dstPitch,
                  cudaStream_t stream)
{
    const Linear linear(width, height);
    const long long groups = std::min(bytes / bytesPerGroup, linear.groups);
    if (groups < linear.groups) linear.clear(stream);
    launch(v210_to_yuv422_unpack_kernel, itemExtent(groups), stream, src, linear.samples(), wordsOf(groups));
    const int pairs = width / 2;
    launch(yuv422_to_444_16u_c2_kernel, Extent{pairs, rows}, stream, linear.samples(), dst, pairs, rows,
           elements<u16>(dstPitch), pairs);
    if (platform::synchronizeDevice()) return VEXA_CUDA_KERNEL_EXECUTION_ERROR;
    (void)platform::release(linear.block);
    return VEXA_SUCCESS;
}

/// `rows` of 4:4:4 pixels are read, `bytes` of packed words are written.
VexaStatus pack(Vexa16u* src, int width, int height, int rows, int srcPitch, Vexa32u* dst, long long bytes,
                cudaStream_t stream)
{
    const Linear linear(width, height);
    const int pairs = width / 2;
    if (4LL * pairs * rows < samplesPerGroup * linear.groups) linear.clear(stream);
    launch(k444_422, Extent{pairs, rows}, stream, src, linear.samples(), pairs, elements<u16>(srcPitch), rows);
    const long long groups = std::min(bytes / bytesPerGroup, linear.groups);
    launch(k422_v210, itemExtent(groups), stream, linear.samples(), dst, wordsOf(groups));
    return platform::release(linear.block);
}

/// Rows of pairs of 4:4:4 pixels that an image holds; it may have any channels.
int rowsOfPairs(const VexaImage& image)
{
    constexpr long long pairBytes = 6 * sizeof(Vexa16u);
    return rowsInside(image, image.height(), image.width() / 2 * pairBytes, image.pitch());
}

/// Bytes of a flat run as the pitch of one image and the height of another count them, as far as the first holds them.
long long runBytes(const VexaImage& packed, int height)
{
    return std::min(static_cast<long long>(packed.pitch()) * height, bytesOf(packed));
}

Vexa32u* wordsIn(const VexaImage& packed)
{
    return static_cast<Vexa32u*>(packed.ptr());
}

}  // namespace

VexaStatus vexa_v210_to_yuv444(Vexa32u* pSrc, Vexa16u* pDst, Vexa32s width, Vexa32s pitch, Vexa32s height,
                               Vexa32s raw_pitch, cudaStream_t stream)
{
    return unpack(pSrc, static_cast<long long>(raw_pitch) * height, pDst, width, height, height, pitch, stream);
}

VexaStatus vexa_yuv444_to_v210(Vexa16u* d_444, Vexa32u* image_raw, Vexa32s srcWidth, Vexa32s srcPitch,
                               Vexa32s srcHeight, Vexa32s dstPitch, cudaStream_t stream)
{
    return pack(d_444, srcWidth, srcHeight, srcHeight, srcPitch, image_raw,
                static_cast<long long>(dstPitch) * srcHeight, stream);
}

namespace vexa::colorOperations {

VexaStatus V210TOYUV444(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (dst.depth() != 16) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    return unpack(wordsIn(src), runBytes(src, dst.height()), dst.ptr<u16>(), dst.width(), dst.height(),
                  rowsOfPairs(dst), dst.pitch(), handle(stream));
}

VexaStatus YUV444TOV210(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (src.depth() != 16) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    return pack(src.ptr<u16>(), src.width(), src.height(), rowsOfPairs(src), src.pitch(), wordsIn(dst),
                runBytes(dst, src.height()), handle(stream));
}

VexaStatus YUV422TOV210(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (src.depth() != 16) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    const long long held = bytesOf(src) / (samplesPerGroup * static_cast<int>(sizeof(Vexa16u)));
    const long long groups = std::min(runBytes(dst, src.height()) / bytesPerGroup, held);
    launch(k422_v210, itemExtent(groups), handle(stream), src.ptr<u16>(), wordsIn(dst), wordsOf(groups));
    return platform::synchronizeDevice() ? VEXA_CUDA_KERNEL_EXECUTION_ERROR : VEXA_SUCCESS;
}

}  // namespace vexa::colorOperations
