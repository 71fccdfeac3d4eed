/// @file
/// Scaling to the size of the destination, by the platform's primitive.

#include "checks.h"
#include "dispatch.h"
#include "modes.h"
#include "streams.h"

using namespace vexa;

namespace {

/// The body of the workers.
template <int C, typename T>
VexaStatus scale(const platform::Pixels<T>& src, const platform::Destination<T>& dst, VexaInterpolationType mode,
                 platform::Stream stream)
{
    // Between equal sizes nothing else is looked at, neither the mode nor how the copy went.
    if (src.width == dst.width && src.height == dst.height) {
        const auto rowBytes = static_cast<std::size_t>(src.width) * C * sizeof(T);
        (void)platform::copyOnDevice({dst.first, static_cast<std::size_t>(dst.pitch)},
                                     {src.first, static_cast<std::size_t>(src.pitch)},
                                     {rowBytes, static_cast<std::size_t>(src.height)}, stream);
        return VEXA_SUCCESS;
    }
    return platform::resize<T, C>(src, dst, interpolationOf(mode), stream);
}

}  // namespace

VexaStatus vexa_resize_8u_c1(Vexa8u* src, Vexa8u* dst, int srcWidth, int srcHeight, int srcPitch, int dstWidth,
                             int dstHeight, int dstPitch, VexaInterpolationType mode, cudaStream_t stream)
{
    return scale<1, u8>({src, srcWidth, srcHeight, srcPitch}, {dst, dstWidth, dstHeight, dstPitch}, mode, stream);
}

VexaStatus vexa_resize_8u_c3(Vexa8u* src, Vexa8u* dst, int srcWidth, int srcHeight, int srcPitch, int dstWidth,
                             int dstHeight, int dstPitch, VexaInterpolationType mode, cudaStream_t stream)
{
    return scale<3, u8>({src, srcWidth, srcHeight, srcPitch}, {dst, dstWidth, dstHeight, dstPitch}, mode, stream);
}

VexaStatus vexa_resize_16u_c1(Vexa16u* src, Vexa16u* dst, int srcWidth, int srcHeight, int srcPitch, int dstWidth,
                              int dstHeight, int dstPitch, VexaInterpolationType mode, cudaStream_t stream)
{
    return scale<1, u16>({src, srcWidth, srcHeight, srcPitch}, {dst, dstWidth, dstHeight, dstPitch}, mode, stream);
}

VexaStatus vexa_resize_16u_c3(Vexa16u* src, Vexa16u* dst, int srcWidth, int srcHeight, int srcPitch, int dstWidth,
                              int dstHeight, int dstPitch, VexaInterpolationType mode, cudaStream_t stream)
{
    return scale<3, u16>({src, srcWidth, srcHeight, srcPitch}, {dst, dstWidth, dstHeight, dstPitch}, mode, stream);
}

VexaStatus vexa_resize_32f_c1(Vexa32f* src, Vexa32f* dst, int srcWidth, int srcHeight, int srcPitch, int dstWidth,
                              int dstHeight, int dstPitch, VexaInterpolationType mode, cudaStream_t stream)
{
    return scale<1, f32>({src, srcWidth, srcHeight, srcPitch}, {dst, dstWidth, dstHeight, dstPitch}, mode, stream);
}

VexaStatus vexa_resize_32f_c3(Vexa32f* src, Vexa32f* dst, int srcWidth, int srcHeight, int srcPitch, int dstWidth,
                              int dstHeight, int dstPitch, VexaInterpolationType mode, cudaStream_t stream)
{
    return scale<3, f32>({src, srcWidth, srcHeight, srcPitch}, {dst, dstWidth, dstHeight, dstPitch}, mode, stream);
}

namespace {

using ScaledTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

struct Scaling {
    const VexaImage& src;
    VexaImage& dst;
    VexaInterpolationType mode;
    platform::Stream stream;

    VexaStatus operator()(ChannelCount<1>, Row<u8>) const { return call(vexa_resize_8u_c1); }
    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return call(vexa_resize_8u_c3); }
    VexaStatus operator()(ChannelCount<1>, Row<u16>) const { return call(vexa_resize_16u_c1); }
    VexaStatus operator()(ChannelCount<3>, Row<u16>) const { return call(vexa_resize_16u_c3); }
    VexaStatus operator()(ChannelCount<1>, Row<f32>) const { return call(vexa_resize_32f_c1); }
    VexaStatus operator()(ChannelCount<3>, Row<f32>) const { return call(vexa_resize_32f_c3); }

    template <typename T>
    VexaStatus call(VexaStatus (*worker)(T*, T*, int, int, int, int, int, int, VexaInterpolationType,
                                         cudaStream_t)) const
    {
        return worker(src.ptr<T>(), dst.ptr<T>(), src.width(), src.height(), src.pitch(), dst.width(), dst.height(),
                      dst.pitch(), mode, stream);
    }
};

}  // namespace

namespace vexa::geometryTransforms {

VexaStatus resize(const VexaImage& src, VexaImage& dst, VexaInterpolationType inter, const VexaStream& stream)
{
    // The size of the destination is the request: an empty one is not created.
    if (const VexaStatus failed = initialized(src, dst)) return failed;
    if (const VexaStatus failed = notInPlace(src, dst)) return failed;
    if (const VexaStatus failed = match(dst, src, {same::channels, same::depth})) return failed;
    return dispatch(ScaledTypes{}, Channels<1, 3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    Scaling{src, dst, inter, handle(stream)}, src);
}

}  // namespace vexa::geometryTransforms
