/// @file
/// One level of the Haar wavelet. By its definition it is two passes over a working image of four quadrants: rows into
/// floats, then columns. All sums of bytes are whole numbers of quarters, so integers give the same in one pass from
/// image to subbands; the two passes are taken where images overlap or a subband has no room.

#include <algorithm>
#include <array>
#include <limits>

#include "arguments.h"
#include "checks.h"
#include "clip.h"
#include "quads.h"
#include "temporaries.h"
#include "vexaImageTransforms.h"

using namespace vexa;

namespace {

/// The two results of a step of the transform: even pixels and odd ones, or average and half difference.
struct Pair {
    float first;
    float second;
};

VEXA_DEVICE Pair analyse(float first, float second)
{
    return {(first + second) * 0.5F, (first - second) * 0.5F};
}

VEXA_DEVICE Pair synthesise(float average, float halfDifference)
{
    return {average + halfDifference, average - halfDifference};
}

/// The low eight bits of a value truncated toward zero, 0 for a negative one.
VEXA_DEVICE u8 lowByte(float value)
{
    return static_cast<u8>(value > 0.0F ? static_cast<int>(value) : 0);
}

}  // namespace

template <int bits, int C>
VEXA_KERNEL kernel_haar_row_32f(const u8* src, float* rfImage, int halfWidth, int height, int srcPitch, int pitch)
{
    forEachPixel(C * halfWidth, height, [=](int column, int y) {
        const int x = column / C;
        const u8* const from = Plane<const u8>{src, srcPitch}.row(y) + column + C * x;
        float* const to = Plane<float>{rfImage, pitch}.row(y) + column;
        const Pair pair = analyse(from[0], from[C]);
        to[0] = pair.first;
        to[C * halfWidth] = pair.second;
    });
}

template <typename T, int C>
VEXA_KERNEL kernel_haar_col_32f(const float* src, T* cfImage, int width, int halfHeight, int srcPitch, int pitch)
{
    const Plane<const float> from{src, srcPitch};
    const Plane<T> to{cfImage, pitch};
    forEachPixel(C * width, halfHeight, [=](int x, int y) {
        const Pair pair = analyse(from.row(2 * y)[x], from.row(2 * y + 1)[x]);
        to.row(y)[x] = lowByte(pair.first);
        to.row(y + halfHeight)[x] = lowByte(pair.second);
    });
}

template <int bits, int C>
VEXA_KERNEL kernel_haar_inv_row(const u8* src, float* rfImage, int halfWidth, int srcHeight, int srcPitch, int rfiPitch)
{
    forEachPixel(C * halfWidth, srcHeight, [=](int column, int y) {
        const int x = column / C;
        const u8* const from = Plane<const u8>{src, srcPitch}.row(y) + column;
        float* const to = Plane<float>{rfImage, rfiPitch}.row(y) + column + C * x;
        const Pair pair = synthesise(from[0], from[C * halfWidth]);
        to[0] = pair.first;
        to[C] = pair.second;
    });
}

template <typename T, int C>
VEXA_KERNEL kernel_haar_inv_col(const float* src, T* cfImage, int srcWidth, int halfHeight, int srcPitch, int cfiPitch)
{
    const Plane<const float> from{src, srcPitch};
    const Plane<T> to{cfImage, cfiPitch};
    forEachPixel(C * srcWidth, halfHeight, [=](int x, int y) {
        const Pair pair = synthesise(from.row(y)[x], from.row(y + halfHeight)[x]);
        to.row(2 * y)[x] = lowByte(pair.first);
        to.row(2 * y + 1)[x] = lowByte(pair.second);
    });
}

namespace {

/// A quarter of a sum, truncated, 0 for a negative one.
VEXA_DEVICE u8 quarter(int sum)
{
    return static_cast<u8>((sum > 0 ? sum : 0) >> 2);
}

/// The low eight bits, 0 for a negative value.
VEXA_DEVICE u8 lowByte(int value)
{
    return static_cast<u8>(value > 0 ? value : 0);
}

/// The subbands approximation, X, Y and XY at one place from four pixels.
struct SplitQuad {
    VEXA_DEVICE Pixel<u8, 4> operator()(Pixel<u8, 4> quad) const
    {
        const int left = quad.element[0] + quad.element[2];
        const int right = quad.element[1] + quad.element[3];
        const int leftChange = quad.element[0] - quad.element[2];
        const int rightChange = quad.element[1] - quad.element[3];
        return {{quarter(left + right), quarter(left - right), quarter(leftChange + rightChange),
                 quarter(leftChange - rightChange)}};
    }
};

/// The reverse, without the division.
struct JoinQuad {
    VEXA_DEVICE Pixel<u8, 4> operator()(Pixel<u8, 4> subband) const
    {
        const int left = subband.element[0] + subband.element[1];
        const int right = subband.element[0] - subband.element[1];
        const int leftChange = subband.element[2] + subband.element[3];
        const int rightChange = subband.element[2] - subband.element[3];
        return {{lowByte(left + leftChange), lowByte(right + rightChange), lowByte(left - leftChange),
                 lowByte(right - rightChange)}};
    }
};

template <int C>
VEXA_LOCAL_KERNEL splitImage(u8* src, u8* approx, u8* detailX, u8* detailY, u8* detailXY, int halfWidth, int halfHeight,
                             int srcPitch, int dstPitch)
{
    splitQuads<C>(halfWidth, halfHeight, Plane<u8>{src, srcPitch},
                  Planar<u8, 4>{{approx, detailX, detailY, detailXY}, dstPitch}, SplitQuad());
}

template <int C>
VEXA_LOCAL_KERNEL joinImage(u8* approx, u8* detailX, u8* detailY, u8* detailXY, u8* dst, int srcWidth, int srcHeight,
                            int srcPitch, int dstPitch)
{
    joinQuads<C>(srcWidth, srcHeight, Plane<u8>{dst, dstPitch},
                 Planar<u8, 4>{{approx, detailX, detailY, detailXY}, srcPitch}, JoinQuad());
}

/// The quadrants of a working image: approximation, X, Y and XY.
struct Quadrants {
    Vexa8u* first;
    std::size_t pitch;
    platform::Extent2D extent;

    platform::Rows<Vexa8u> operator[](std::size_t i) const
    {
        return {first + i % 2 * extent.rowBytes + i / 2 * extent.rows * pitch, pitch};
    }
};

platform::Extent2D extentOf(int width, int height, int channels)
{
    return {static_cast<std::size_t>(width) * static_cast<std::size_t>(channels), static_cast<std::size_t>(height)};
}

/// A block of rows of a working image, as elements. VEXA_MEM_ALLOC_ERR
template <typename T>
[[nodiscard]] VexaStatus allocateImage(Plane<T>& image, const platform::Extent2D& quadrant)
{
    void* block = nullptr;
    std::size_t pitch = 0;
    const VexaStatus status =
        platform::allocateRows(block, pitch, 2 * quadrant.rowBytes * sizeof(T), 2 * quadrant.rows);
    image = {static_cast<T*>(block), static_cast<int>(pitch / sizeof(T))};
    return status;
}

using Subbands = std::array<Vexa8u*, 4>;

/// Whether all subbands can be addressed, and none is the image itself: then a pass may write while it reads.
bool areApart(const Subbands& subbands, const Vexa8u* image)
{
    return std::none_of(subbands.begin(), subbands.end(),
                        [=](const Vexa8u* subband) { return subband == nullptr || subband == image; });
}

template <int C>
VexaStatus splitByPasses(const Vexa8u* src, int width, int height, int srcPitch, const Subbands& subbands, int dstPitch,
                         cudaStream_t stream)
{
    const platform::Extent2D quadrant = extentOf(width / 2, height / 2, C);
    Plane<float> rows{};
    Plane<Vexa8u> image{};
    if (const VexaStatus failed = allocateImage(rows, quadrant)) return failed;
    launch(kernel_haar_row_32f<8, C>, Extent{C * (width / 2), 2 * (height / 2)}, stream, src, rows.pixels, width / 2,
           2 * (height / 2), srcPitch, rows.pitch);
    if (const VexaStatus failed = allocateImage(image, quadrant)) return failed;
    launch(kernel_haar_col_32f<Vexa8u, C>, Extent{2 * C * (width / 2), height / 2}, stream, rows.pixels, image.pixels,
           2 * (width / 2), height / 2, rows.pitch, image.pitch);
    const Quadrants quadrants{image.pixels, static_cast<std::size_t>(image.pitch), quadrant};
    for (std::size_t i = 0; i < subbands.size(); ++i)
        if (const VexaStatus failed =
                platform::copyOnDevice({subbands[i], static_cast<std::size_t>(dstPitch)},
                                       {quadrants[i].first, quadrants[i].pitch}, quadrant, stream))
            return failed;
    return releaseAll({rows.pixels, image.pixels});
}

template <int C>
VexaStatus joinByPasses(const Subbands& subbands, int width, int height, int srcPitch, Vexa8u* dst, int dstPitch,
                        cudaStream_t stream)
{
    const platform::Extent2D quadrant = extentOf(width, height, C);
    const Quadrants quadrants{dst, static_cast<std::size_t>(dstPitch), quadrant};
    // In place of a subband that can't be copied the quadrant counts as it is.
    for (std::size_t i = 0; i < subbands.size(); ++i)
        (void)platform::copyOnDevice({quadrants[i].first, quadrants[i].pitch},
                                     {subbands[i], static_cast<std::size_t>(srcPitch)}, quadrant, stream);
    Plane<float> rows{};
    if (const VexaStatus failed = allocateImage(rows, quadrant)) return failed;
    launch(kernel_haar_inv_row<8, C>, Extent{C * width, 2 * height}, stream, dst, rows.pixels, width, 2 * height,
           dstPitch, rows.pitch);
    launch(kernel_haar_inv_col<Vexa8u, C>, Extent{2 * C * width, height}, stream, rows.pixels, dst, 2 * width, height,
           rows.pitch, dstPitch);
    return releaseAll({rows.pixels});
}

}  // namespace

template <int channels>
VexaStatus vexa_haar_8u(Vexa8u* pSrc, Vexa32s srcWidth, Vexa32s srcHeight, Vexa32s srcPitch, Vexa8u* pApprox,
                        Vexa8u* pDetailX, Vexa8u* pDetailY, Vexa8u* pDetailXY, Vexa32s dstPitch, cudaStream_t stream)
{
    if (pSrc == nullptr || srcWidth < 1 || srcHeight < 1) return VEXA_TEXTURE_BIND_ERROR;
    const Subbands subbands{pApprox, pDetailX, pDetailY, pDetailXY};
    if (!areApart(subbands, pSrc))
        return splitByPasses<channels>(pSrc, srcWidth, srcHeight, srcPitch, subbands, dstPitch, stream);
    launch(splitImage<channels>, Extent{srcWidth / 2, srcHeight / 2}, stream, pSrc, pApprox, pDetailX, pDetailY,
           pDetailXY, srcWidth / 2, srcHeight / 2, srcPitch, dstPitch);
    return VEXA_SUCCESS;
}

template <int channels>
VexaStatus vexa_haar_inv_8u(Vexa8u* pApprox, Vexa8u* pDetailX, Vexa8u* pDetailY, Vexa8u* pDetailXY, Vexa32s srcWidth,
                            Vexa32s srcHeight, Vexa32s srcPitch, Vexa8u* dst, Vexa32s dstPitch, cudaStream_t stream)
{
    if (dst == nullptr || srcWidth < 1 || srcHeight < 1) return VEXA_TEXTURE_BIND_ERROR;
    const Subbands subbands{pApprox, pDetailX, pDetailY, pDetailXY};
    if (!areApart(subbands, dst))
        return joinByPasses<channels>(subbands, srcWidth, srcHeight, srcPitch, dst, dstPitch, stream);
    launch(joinImage<channels>, Extent{srcWidth, srcHeight}, stream, pApprox, pDetailX, pDetailY, pDetailXY, dst,
           srcWidth, srcHeight, srcPitch, dstPitch);
    return VEXA_SUCCESS;
}

namespace {

using ToSplit = VexaStatus(Vexa8u*, Vexa32s, Vexa32s, Vexa32s, Vexa8u*, Vexa8u*, Vexa8u*, Vexa8u*, Vexa32s,
                           cudaStream_t);
using ToJoin = VexaStatus(Vexa8u*, Vexa8u*, Vexa8u*, Vexa8u*, Vexa32s, Vexa32s, Vexa32s, Vexa8u*, Vexa32s,
                          cudaStream_t);

}  // namespace

template ToSplit vexa_haar_8u<1>;
template ToSplit vexa_haar_8u<3>;
template ToJoin vexa_haar_inv_8u<1>;
template ToJoin vexa_haar_inv_8u<3>;

namespace {

/// A subband as the workers address it; null if its buffer is too small for that.
Vexa8u* subbandOf(const VexaImage& image, const platform::Extent2D& extent, int pitch)
{
    const auto rowBytes = static_cast<long long>(extent.rowBytes);
    const auto rows = static_cast<long long>(extent.rows);
    const bool fits = rowBytes <= pitch && rowsInside(image, rows, rowBytes, pitch) == rows;
    return fits ? static_cast<Vexa8u*>(image.ptr()) : nullptr;
}

VexaStatus split(ToSplit* worker, const VexaImage& src, const VexaImage& dstApprox, const VexaImage& dstDetailX,
                 const VexaImage& dstDetailY, const VexaImage& dstDetailXY, const VexaStream& stream)
{
    const platform::Extent2D extent = extentOf(src.width() / 2, src.height() / 2, src.channels());
    const int pitch = dstApprox.pitch();
    const auto subband = [&](const VexaImage& image) { return subbandOf(image, extent, pitch); };
    return worker(src.ptr<u8>(), src.width(), src.height(), src.pitch(), subband(dstApprox), subband(dstDetailX),
                  subband(dstDetailY), subband(dstDetailXY), pitch, handle(stream));
}

/// work(image) with an image that has at least so many rows: dst itself, or, if it has fewer, a temporary one whose
/// first rows are those of dst.
template <typename Work>
VexaStatus withRows(VexaImage& dst, int height, const VexaStream& stream, const Work& work)
{
    const long long rowBytes = elementsOf(dst);
    const int rows = rowsInside(dst, height, rowBytes, dst.pitch());
    if (rows == height || !dst.isInitialized()) return work(dst);
    VexaImage whole(dst.width(), height, dst.type());
    if (!whole.isInitialized()) return VEXA_MEM_ALLOC_ERR;
    clear(whole, handle(stream));
    const platform::Extent2D extent{static_cast<std::size_t>(rowBytes), static_cast<std::size_t>(rows)};
    const platform::Rows<void> held{dst.ptr(), static_cast<std::size_t>(dst.pitch())};
    const platform::Rows<void> first{whole.ptr(), static_cast<std::size_t>(whole.pitch())};
    (void)platform::copyOnDevice(first, {held.first, held.pitch}, extent, handle(stream));
    const VexaStatus status = work(whole);
    (void)platform::copyOnDevice(held, {first.first, first.pitch}, extent, handle(stream));
    return status;
}

VexaStatus join(ToJoin* worker, const VexaImage& srcApprox, const VexaImage& srcDetailX, const VexaImage& srcDetailY,
                const VexaImage& srcDetailXY, VexaImage& dst, bool isNew, const VexaStream& stream)
{
    const platform::Extent2D extent = extentOf(srcApprox.width(), srcApprox.height(), srcApprox.channels());
    const int pitch = srcApprox.pitch();
    const auto subband = [&](const VexaImage& image) { return subbandOf(image, extent, pitch); };
    const Subbands subbands{subband(srcApprox), subband(srcDetailX), subband(srcDetailY), subband(srcDetailXY)};
    // The quadrant of a subband that is missing counts instead.
    if (isNew && !areApart(subbands, nullptr)) clear(dst, handle(stream));
    return withRows(dst, 2 * srcApprox.height(), stream, [&](VexaImage& whole) {
        return worker(subbands[0], subbands[1], subbands[2], subbands[3], srcApprox.width(), srcApprox.height(), pitch,
                      whole.ptr<u8>(), whole.pitch(), handle(stream));
    });
}

constexpr Comparison isTwiceAsWide{
    [](const VexaImage& image, const VexaImage& model) { return image.width() == 2LL * model.width(); },
    VEXA_INVALID_ARG_ERROR};

}  // namespace

namespace vexa::imageTransforms {

VexaStatus haarFwd(const VexaImage& src, VexaImage& dstApprox, VexaImage& dstDetailX, VexaImage& dstDetailY,
                   VexaImage& dstDetailXY, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (src.width() % 2 != 0 || src.height() % 2 != 0) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    for (VexaImage* const subband : {&dstApprox, &dstDetailX, &dstDetailY, &dstDetailXY})
        if (const VexaStatus failed =
                matchOrCreate(*subband, src, {same::channels}, VexaSize(src.width() / 2, src.height() / 2), src.type()))
            return failed;
    if (src.type() == VEXA_8UC1)
        return split(vexa_haar_8u<1>, src, dstApprox, dstDetailX, dstDetailY, dstDetailXY, stream);
    if (src.type() == VEXA_8UC3)
        return split(vexa_haar_8u<3>, src, dstApprox, dstDetailX, dstDetailY, dstDetailXY, stream);
    return VEXA_TYPE_NOT_SUPPORTED_ERROR;
}

VexaStatus haarInv(const VexaImage& srcApprox, const VexaImage& srcDetailX, const VexaImage& srcDetailY,
                   const VexaImage& srcDetailXY, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(srcApprox, srcDetailX, srcDetailY, srcDetailXY)) return failed;
    const bool isNew = !dst.isInitialized();
    constexpr int longest = std::numeric_limits<int>::max() / 2;
    if (srcApprox.width() > longest || srcApprox.height() > longest) return VEXA_INVALID_ARG_ERROR;
    if (const VexaStatus failed =
            matchOrCreate(dst, srcApprox, {isTwiceAsWide, same::type},
                          VexaSize(2 * srcApprox.width(), 2 * srcApprox.height()), srcApprox.type()))
        return failed;
    if (srcApprox.type() == VEXA_8UC1)
        return join(vexa_haar_inv_8u<1>, srcApprox, srcDetailX, srcDetailY, srcDetailXY, dst, isNew, stream);
    if (srcApprox.type() == VEXA_8UC3)
        return join(vexa_haar_inv_8u<3>, srcApprox, srcDetailX, srcDetailY, srcDetailXY, dst, isNew, stream);
    return VEXA_NOT_SUPPORTED_MODE_ERROR;
}

}  // namespace vexa::imageTransforms
