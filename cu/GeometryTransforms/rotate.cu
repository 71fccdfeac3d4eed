/// @file
/// Rotation about a point: every pixel of the destination is looked up in the source, as texture hardware samples it.
/// Coordinates are used as they stand, without the half pixel to the centre of a texel: that is meant, and a rotation
/// by 0 degrees blurs towards the upper left.

#include <algorithm>
#include <cmath>
#include <limits>

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "sample.h"
#include "vectors.h"

using namespace vexa;

namespace {

/// Where a pixel of the destination comes from.
struct Rotation {
    float a;
    float b;
    float tx;
    float ty;

    VEXA_DEVICE TexturePosition operator()(int x, int y) const
    {
        const float fromX = static_cast<float>(x) - tx;
        const float fromY = static_cast<float>(y) - ty;
        return {a * fromX - b * fromY, b * fromX + a * fromY};
    }
};

}  // namespace

template <typename T, int bits>
VEXA_KERNEL kernel_rotate_c1(Sampled<T, 1> src, T* dst, int width, int height, int pitch, float a, float b, float tx,
                             float ty)
{
    samplePixelsOrClear<1>(width, height, Plane<T>{dst, pitch}, Rotation{a, b, tx, ty}, SampleTexture<T, 1>{src});
}

/// Reads three channels. A texture would need four.
template <typename T, int bits>
VEXA_KERNEL kernel_rotate_c3(Sampled<T, 3> src, T* dst, int width, int height, int pitch, float a, float b, float tx,
                             float ty)
{
    samplePixelsOrClear<3>(width, height, Plane<T>{dst, pitch}, Rotation{a, b, tx, ty}, SampleTexture<T, 3>{src});
}

/// Pixels of three elements with a fourth, 0. `spitch` is in elements, `dpitch` in pixels of four.
template <typename T, typename T4>
VEXA_KERNEL kernel_append_channel(T* src, T4* c4, int width, int height, int spitch, int dpitch)
{
    const Plane<T> from{src, spitch};
    const Plane<T4> to{c4, dpitch};
    forEachPixel(width, height, [=](int x, int y) {
        const T* const pixel = from.row(y) + static_cast<std::ptrdiff_t>(3) * x;
        to.row(y)[x] = {pixel[0], pixel[1], pixel[2], T(0)};
    });
}

namespace {

struct SineAndCosine {
    float sine;
    float cosine;
};

SineAndCosine sineAndCosine(float degrees)
{
    const float radians = degrees * 0.017453292F;
    return {std::sin(radians), std::cos(radians)};
}

/// The inverse of x' = c x + s y + tx, y' = -s x + c y + ty, which takes the centre to itself plus the offset.
Rotation rotationBy(float angle, const VexaPoint2D<int>& center, const VexaPoint2D<float>& offset)
{
    const auto [s, c] = sineAndCosine(angle);
    const auto cx = static_cast<float>(center.x);
    const auto cy = static_cast<float>(center.y);
    const float d = 1.0F / (s * s + c * c);
    return {c * d, s * d, offset.x + (1.0F - c) * cx - s * cy, offset.y + s * cx + (1.0F - c) * cy};
}

/// What cannot be read is refused as a texture that cannot be bound.
template <typename T, int C, typename Kernel>
VexaStatus launchRotation(Kernel kernel, const platform::Pixels<T>& src, const platform::Destination<T>& dst,
                          const Rotation& rotation, platform::Stream stream)
{
    if (src.first == nullptr || src.width < 1 || src.height < 1) return VEXA_TEXTURE_BIND_ERROR;
    const Sampled<T, C> sampled{src.first, src.width, src.height, elements<T>(src.pitch)};
    launch(kernel, Extent{dst.width, dst.height}, stream, sampled, dst.first, dst.width, dst.height,
           elements<T>(dst.pitch), rotation.a, rotation.b, rotation.tx, rotation.ty);
    return VEXA_SUCCESS;
}

}  // namespace

template <typename T, int bits>
VexaStatus vexa_rotate_c1(T* src, T* dst, int srcWidth, int srcHeight, int srcPitch, int dstWidth, int dstHeight,
                          int dstPitch, float angle, const VexaPoint2D<int>& center,
                          const VexaPoint2D<float>& rotationOffset, cudaStream_t stream)
{
    return launchRotation<T, 1>(kernel_rotate_c1<T, bits>, {src, srcWidth, srcHeight, srcPitch},
                                {dst, dstWidth, dstHeight, dstPitch}, rotationBy(angle, center, rotationOffset),
                                stream);
}

template <typename T, typename T4, int bits>
VexaStatus vexa_rotate_c3(T* src, T4* c4, T* dst, int srcWidth, int srcHeight, int srcPitch, int c4Pitch, int dstWidth,
                          int dstHeight, int dstPitch, float angle, const VexaPoint2D<int>& center,
                          const VexaPoint2D<float>& rotationOffset, cudaStream_t stream)
{
    launch(kernel_append_channel<T, T4>, Extent{srcWidth, srcHeight}, stream, src, c4, srcWidth, srcHeight,
           elements<T>(srcPitch), elements<T4>(c4Pitch));
    return launchRotation<T, 3>(kernel_rotate_c3<T, bits>, {src, srcWidth, srcHeight, srcPitch},
                                {dst, dstWidth, dstHeight, dstPitch}, rotationBy(angle, center, rotationOffset),
                                stream);
}

namespace {

template <typename T>
using RotateC1 = VexaStatus(T*, T*, int, int, int, int, int, int, float, const VexaPoint2D<int>&,
                            const VexaPoint2D<float>&, cudaStream_t);
template <typename T, typename T4>
using RotateC3 = VexaStatus(T*, T4*, T*, int, int, int, int, int, int, int, float, const VexaPoint2D<int>&,
                            const VexaPoint2D<float>&, cudaStream_t);

}  // namespace

template RotateC1<u8> vexa_rotate_c1<u8, 8>;
template RotateC1<u16> vexa_rotate_c1<u16, 16>;
template RotateC1<f32> vexa_rotate_c1<f32, 32>;
// Exported one by one: CUDA's vector types are hidden, and templates with them.
template VEXA_API RotateC3<u8, uchar4> vexa_rotate_c3<u8, uchar4, 8>;
template VEXA_API RotateC3<u16, ushort4> vexa_rotate_c3<u16, ushort4, 16>;
template VEXA_API RotateC3<f32, float4> vexa_rotate_c3<f32, float4, 32>;
template VEXA_KERNEL kernel_append_channel(u8*, uchar4*, int, int, int, int);
template VEXA_KERNEL kernel_append_channel(u16*, ushort4*, int, int, int, int);
template VEXA_KERNEL kernel_append_channel(f32*, float4*, int, int, int, int);

namespace {

using RotatedTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

/// A pixel of four elements.
template <typename T>
struct FourElements;
template <>
struct FourElements<u8> {
    using Type = uchar4;
};
template <>
struct FourElements<u16> {
    using Type = ushort4;
};
template <>
struct FourElements<f32> {
    using Type = float4;
};

struct Rotating {
    const VexaImage& src;
    VexaImage& dst;
    float angle;
    const VexaPoint2D<int>& center;
    const VexaPoint2D<float>& offset;
    platform::Stream stream;

    template <typename T>
    VexaStatus operator()(ChannelCount<1>, Row<T>) const
    {
        return vexa_rotate_c1<T, 8 * static_cast<int>(sizeof(T))>(src.ptr<T>(), dst.ptr<T>(), src.width(), src.height(),
                                                                  src.pitch(), dst.width(), dst.height(), dst.pitch(),
                                                                  angle, center, offset, stream);
    }

    template <typename T>
    VexaStatus operator()(ChannelCount<3>, Row<T>) const
    {
        return vexa_rotate_c3<T, typename FourElements<T>::Type, 8 * static_cast<int>(sizeof(T))>(
            src.ptr<T>(), nullptr, dst.ptr<T>(), src.width(), src.height(), src.pitch(), 0, dst.width(), dst.height(),
            dst.pitch(), angle, center, offset, stream);
    }
};

VexaStatus rotateInto(const VexaImage& src, VexaImage& dst, float angle, const VexaPoint2D<int>& center,
                      const VexaPoint2D<float>& offset, const VexaStream& stream)
{
    // In place pixels would be overwritten that others still read.
    if (&src == &dst) return rotateInto(VexaImage(src), dst, angle, center, offset, stream);
    return dispatch(RotatedTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    Rotating{src, dst, angle, center, offset, handle(stream)}, src);
}

/// The pixels from the smaller end of an extent to the other, and one more: that is meant. Ends are `a` and `b` and
/// their opposites. 0, which no image has, past all sizes.
int pixelsAcross(float a, float b)
{
    const float end = std::max(std::fabs(a), std::fabs(b));
    const double pixels = std::ceil(static_cast<double>(end)) - (std::floor(static_cast<double>(-end)) - 1);
    return pixels <= std::numeric_limits<int>::max() ? static_cast<int>(pixels) : 0;
}

/// The frame that holds all of a rotated image.
VexaSize frameOf(int width, int height, float angle)
{
    const auto [s, c] = sineAndCosine(angle);
    const auto w = static_cast<float>(width);
    const auto h = static_cast<float>(height);
    return {pixelsAcross(-c * w / 2 - s * h / 2, -c * w / 2 + s * h / 2),
            pixelsAcross(-s * w / 2 + c * h / 2, -s * w / 2 - c * h / 2)};
}

}  // namespace

namespace vexa::geometryTransforms {

VexaStatus rotate(const VexaImage& src, VexaImage& dst, const Vexa32f angle, const VexaPoint2D<int> center,
                  const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (center.x < 0 || center.y < 0 || center.y >= src.height() || center.x >= src.width())
        return VEXA_INVALID_ARG_ERROR;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::depth, same::channels}, src.size(), src.depth(), src.channels()))
        return failed;
    return rotateInto(src, dst, angle, center, {0.0F, 0.0F}, stream);
}

VexaStatus rotate(const VexaImage& src, VexaImage& dst, const Vexa32f angle, const VexaPoint2D<int> center,
                  const VexaRect& roi, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (dst.isInitialized())
        if (const VexaStatus failed = match(dst, src, {same::depth, same::channels})) return failed;
    dst = src;
    VexaImage part;
    if (const VexaStatus failed = part.create(roi.width, roi.height, src.type())) return failed;
    if (const VexaStatus failed = src.copyTo(part, {0, 0}, roi, VexaStream(false))) return failed;
    VexaImage rotated;
    if (const VexaStatus failed = rotate(part, rotated, angle, center, stream)) return failed;
    return rotated.copyTo(dst, roi.origin(), {0, 0, roi.width, roi.height}, stream);
}

VexaStatus rotateNoCrop(const VexaImage& src, VexaImage& dst, const Vexa32f angle, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    const int width = src.width();
    const int height = src.height();
    const VexaSize frame = frameOf(width, height, angle);
    // One image as both loses its pixels here; that is meant.
    if (dst.isInitialized() && dst.release()) return VEXA_MEM_ALLOC_ERR;
    if (dst.create(frame, src.type())) return VEXA_MEM_ALLOC_ERR;
    const VexaPoint2D<int> center(static_cast<int>(static_cast<float>(width) * 0.5F),
                                  static_cast<int>(static_cast<float>(height) * 0.5F));
    const VexaPoint2D<float> offset(static_cast<float>(frame.width - width) * 0.5F,
                                    static_cast<float>(frame.height - height) * 0.5F);
    return rotateInto(src, dst, angle, center, offset, stream);
}

}  // namespace vexa::geometryTransforms
