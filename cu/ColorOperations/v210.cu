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

/// A temporary of linear 4:2:2 samples for a band of rows at a time. Three rows of pairs fill whole groups, so bands
/// can be converted one by one; they stay in the caches.
class Linear {
public:
    Linear(int pairs, int height) : _pairs(std::max(pairs, 0)), _height(std::max(height, 0))
    {
        constexpr long long bandBytes = 4 << 20;
        const long long threeRows = static_cast<long long>(groupBytes) * std::max(_pairs, 1);
        _rows = static_cast<int>(std::min<long long>(3 * std::max(bandBytes / threeRows, 1LL), _height));
        if (platform::allocate(_block, groupBytes * static_cast<std::size_t>(groupsOf(_rows)))) _block = nullptr;
    }

    Vexa16u* samples() const { return static_cast<Vexa16u*>(_block); }

    /// Samples that no source reaches are 0.
    void clear(cudaStream_t stream) const
    {
        (void)platform::setBytes({_block, groupBytes}, 0, {groupBytes, static_cast<std::size_t>(groupsOf(_rows))},
                                 stream);
    }

    [[nodiscard]] VexaStatus release() const { return platform::release(_block); }

    /// band(first row, rows, first group, groups) for one band after the other.
    template <typename Band>
    void forEachBand(const Band& band) const
    {
        for (int y = 0; y < _height; y += _rows) {
            const int rows = std::min(_rows, _height - y);
            band(y, rows, groupsOf(y), groupsOf(rows));
        }
    }

private:
    static constexpr std::size_t groupBytes = samplesPerGroup * sizeof(Vexa16u);

    /// Three pairs fill a group.
    long long groupsOf(int rows) const { return (static_cast<long long>(_pairs) * rows + 2) / 3; }

    void* _block = nullptr;
    int _pairs;
    int _height;
    int _rows;
};

/// How many of `groups` groups from `first` on lie in packed memory of `bytes`.
long long groupsInside(long long first, long long groups, long long bytes)
{
    return std::clamp(bytes / bytesPerGroup - first, 0LL, groups);
}

int wordsOf(long long groups)
{
    return static_cast<int>(wordsPerGroup * groups);
}

/// `bytes` of packed words are there; `rows` of the 4:4:4 pixels are written.
VexaStatus unpack(Vexa32u* src, long long bytes, Vexa16u* dst, int width, int height, int rows, int dstPitch,
                  cudaStream_t stream)
{
    const int pairs = width / 2;
    const int pitch = elements<u16>(dstPitch);
    const Linear linear(pairs, height);
    linear.forEachBand([&](int y, int bandRows, long long first, long long groups) {
        const long long present = groupsInside(first, groups, bytes);
        if (present < groups) linear.clear(stream);
        launch(v210_to_yuv422_unpack_kernel, itemExtent(present), stream, src + wordsPerGroup * first, linear.samples(),
               wordsOf(present));
        const int written = std::min(bandRows, rows - y);
        launch(yuv422_to_444_16u_c2_kernel, Extent{pairs, written}, stream, linear.samples(),
               dst + static_cast<std::ptrdiff_t>(y) * pitch, pairs, written, pitch, pairs);
    });
    if (platform::synchronizeDevice()) return VEXA_CUDA_KERNEL_EXECUTION_ERROR;
    (void)linear.release();
    return VEXA_SUCCESS;
}

/// `rows` of the 4:4:4 pixels are read; `bytes` of packed words are written.
VexaStatus pack(Vexa16u* src, int width, int height, int rows, int srcPitch, Vexa32u* dst, long long bytes,
                cudaStream_t stream)
{
    const int pairs = width / 2;
    const int pitch = elements<u16>(srcPitch);
    const Linear linear(pairs, height);
    linear.forEachBand([&](int y, int bandRows, long long first, long long groups) {
        const int read = std::min(bandRows, rows - y);
        if (static_cast<long long>(pairs) * read < 3 * groups) linear.clear(stream);
        launch(k444_422, Extent{pairs, read}, stream, src + static_cast<std::ptrdiff_t>(y) * pitch, linear.samples(),
               pairs, pitch, read);
        const long long present = groupsInside(first, groups, bytes);
        launch(k422_v210, itemExtent(present), stream, linear.samples(), dst + wordsPerGroup * first, wordsOf(present));
    });
    return linear.release();
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
