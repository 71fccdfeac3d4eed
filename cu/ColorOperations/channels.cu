/// @file
/// The channels of a colour image as images of their own, and back. The sequence decides the order of the planes, so
/// that the kernels know nothing of it.

#include <algorithm>

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "kernels.h"

using namespace vexa;

namespace {

struct Same {
    template <typename T>
    VEXA_DEVICE Pixel<T, 3> operator()(Pixel<T, 3> pixel) const
    {
        return pixel;
    }
};

}  // namespace

template <typename T>
VEXA_KERNEL kernel_split3(T* rgb, T* r, T* g, T* b, int width, int height, int srcPitch, int dstPitch)
{
    mapPixels(width, height, Planar<T, 3>{{r, g, b}, dstPitch}, Same{}, Interleaved<T, 3>{rgb, srcPitch});
}

template <typename T>
VEXA_KERNEL kernel_merge3(T* r, T* g, T* b, T* rgb, int width, int height, int srcPitch, int dstPitch)
{
    mapPixels(width, height, Interleaved<T, 3>{rgb, dstPitch}, Same{}, Planar<T, 3>{{r, g, b}, srcPitch});
}

namespace {

bool hasOrder(VexaChannelSeq sequence)
{
    return sequence == VEXA_CHANNEL_SEQ_RGB || sequence == VEXA_CHANNEL_SEQ_BGR;
}

template <typename T>
VexaStatus launchSplit(T* src, T* red, T* green, T* blue, int width, int height, int srcPitch, int dstPitch,
                       VexaChannelSeq sequence, cudaStream_t stream)
{
    if (!hasOrder(sequence)) return VEXA_SUCCESS;
    if (sequence == VEXA_CHANNEL_SEQ_BGR) std::swap(red, blue);
    launch(kernel_split3<T>, pixelExtent(width, height), stream, src, red, green, blue, width, height,
           elements<T>(srcPitch), elements<T>(dstPitch));
    return VEXA_SUCCESS;
}

template <typename T>
VexaStatus launchMerge(T* red, T* green, T* blue, T* dst, int width, int height, int srcPitch, int dstPitch,
                       VexaChannelSeq sequence, cudaStream_t stream)
{
    if (!hasOrder(sequence)) return VEXA_SUCCESS;
    if (sequence == VEXA_CHANNEL_SEQ_BGR) std::swap(red, blue);
    launch(kernel_merge3<T>, pixelExtent(width, height), stream, red, green, blue, dst, width, height,
           elements<T>(srcPitch), elements<T>(dstPitch));
    return VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexa_split_8u_C3(Vexa8u* src, Vexa8u* red, Vexa8u* green, Vexa8u* blue, Vexa32s width, Vexa32s height,
                            Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchSplit(src, red, green, blue, width, height, srcPitch, dstPitch, sequence, stream);
}

VexaStatus vexa_split_16u_C3(Vexa16u* src, Vexa16u* red, Vexa16u* green, Vexa16u* blue, Vexa32s width, Vexa32s height,
                             Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchSplit(src, red, green, blue, width, height, srcPitch, dstPitch, sequence, stream);
}

VexaStatus vexa_split_32f_C3(Vexa32f* src, Vexa32f* red, Vexa32f* green, Vexa32f* blue, Vexa32s width, Vexa32s height,
                             Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchSplit(src, red, green, blue, width, height, srcPitch, dstPitch, sequence, stream);
}

VexaStatus vexa_merge_8u_C3(Vexa8u* red, Vexa8u* green, Vexa8u* blue, Vexa8u* dst, Vexa32s width, Vexa32s height,
                            Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchMerge(red, green, blue, dst, width, height, srcPitch, dstPitch, sequence, stream);
}

VexaStatus vexa_merge_16u_C3(Vexa16u* red, Vexa16u* green, Vexa16u* blue, Vexa16u* dst, Vexa32s width, Vexa32s height,
                             Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchMerge(red, green, blue, dst, width, height, srcPitch, dstPitch, sequence, stream);
}

VexaStatus vexa_merge_32f_C3(Vexa32f* red, Vexa32f* green, Vexa32f* blue, Vexa32f* dst, Vexa32s width, Vexa32s height,
                             Vexa32s srcPitch, Vexa32s dstPitch, VexaChannelSeq sequence, cudaStream_t stream)
{
    return launchMerge(red, green, blue, dst, width, height, srcPitch, dstPitch, sequence, stream);
}

namespace {

using PlaneTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

/// Rows of one-channel pixels at the pitch of the first plane that all three planes hold: their pitches and channels
/// are not compared, nor are the depths of merged ones.
int rowsInAll(const VexaImage& first, const VexaImage& second, const VexaImage& third)
{
    const long long rowBytes = static_cast<long long>(first.width()) * (first.depth() / 8);
    const auto rows = [&](const VexaImage& plane) {
        return rowsInside(plane, first.height(), rowBytes, first.pitch());
    };
    return std::min({rows(first), rows(second), rows(third)});
}

struct Split {
    const VexaImage& src;
    VexaImage& red;
    VexaImage& green;
    VexaImage& blue;
    platform::Stream stream;

    VexaStatus operator()(ChannelCount<3>, Row<u8>) const { return call(vexa_split_8u_C3); }
    VexaStatus operator()(ChannelCount<3>, Row<u16>) const { return call(vexa_split_16u_C3); }
    VexaStatus operator()(ChannelCount<3>, Row<f32>) const { return call(vexa_split_32f_C3); }

    template <typename T>
    VexaStatus call(VexaStatus (*worker)(T*, T*, T*, T*, int, int, int, int, VexaChannelSeq, cudaStream_t)) const
    {
        return worker(src.ptr<T>(), red.ptr<T>(), green.ptr<T>(), blue.ptr<T>(), src.width(),
                      rowsInAll(red, green, blue), src.pitch(), red.pitch(), src.channelSeq(), stream);
    }
};

struct Merge {
    const VexaImage& red;
    const VexaImage& green;
    const VexaImage& blue;
    VexaImage& dst;
    platform::Stream stream;

    VexaStatus operator()(ChannelCount<1>, Row<u8>) const { return call(vexa_merge_8u_C3); }
    VexaStatus operator()(ChannelCount<1>, Row<u16>) const { return call(vexa_merge_16u_C3); }
    VexaStatus operator()(ChannelCount<1>, Row<f32>) const { return call(vexa_merge_32f_C3); }

    template <typename T>
    VexaStatus call(VexaStatus (*worker)(T*, T*, T*, T*, int, int, int, int, VexaChannelSeq, cudaStream_t)) const
    {
        return worker(red.ptr<T>(), green.ptr<T>(), blue.ptr<T>(), dst.ptr<T>(), red.width(),
                      rowsInAll(red, green, blue), red.pitch(), dst.pitch(), dst.channelSeq(), stream);
    }
};

}  // namespace

namespace vexa::colorOperations {

VexaStatus channelSplit(const VexaImage& src, VexaImage& red, VexaImage& green, VexaImage& blue,
                        const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    for (VexaImage* const channel : {&red, &green, &blue})
        if (const VexaStatus failed =
                matchOrCreate(*channel, src, {same::width, same::height, same::depth}, src.size(), src.depth(), 1))
            return failed;
    return dispatch(PlaneTypes{}, Channels<3>{}, VEXA_DEPTH_NOT_SUPPORTED_ERROR,
                    Split{src, red, green, blue, handle(stream)}, src);
}

VexaStatus channelMerge(const VexaImage& red, const VexaImage& green, const VexaImage& blue, VexaImage& dst,
                        const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(red, green, blue)) return failed;
    if (red.channels() != 1) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    for (const VexaImage* const channel : {&green, &blue})
        if (const VexaStatus failed = match(*channel, red, {same::width, same::height})) return failed;
    if (dst.isInitialized() && dst.channels() != 3) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (const VexaStatus failed =
            matchOrCreate(dst, red, {same::width, same::height, same::depth}, red.size(), red.depth(), 3))
        return failed;
    return dispatch(PlaneTypes{}, Channels<1>{}, VEXA_DEPTH_NOT_SUPPORTED_ERROR,
                    Merge{red, green, blue, dst, handle(stream)}, red);
}

}  // namespace vexa::colorOperations
