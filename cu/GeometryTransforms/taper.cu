/// @file
/// An image in a larger frame that fades from the edge of the image to its mean. The distances on the left and at the
/// top grow towards the image, and the left margin ends where the width, not the height, says so: that is meant.

#include <cmath>
#include <limits>

#include "checks.h"
#include "kernels.h"
#include "placement.h"
#include "streams.h"

using namespace vexa;

namespace {

/// The image inside the frame, and how a distance from its edge fades.
struct Taper {
    Interior image;
    int width;     ///< of the frame
    int height;    ///< of the frame
    double reach;  ///< squared; the height has no part in it
    double mean;

    VEXA_DEVICE Taper(int width, int height, int left, int right, int top, int bottom, double mean)
        : image{left, width - right, top, height - bottom}, width(width), height(height), mean(mean)
    {
        const double half = (width - left - right) / 2;
        reach = half * half;
    }

    /// Without an image there is nothing to fade from.
    VEXA_DEVICE bool hasImage() const
    {
        return image.left < width && image.right > 0 && image.left < image.right && image.top < height &&
               image.bottom > 0 && image.top < image.bottom;
    }

    /// Truncated, of an edge pixel at a distance.
    VEXA_DEVICE u8 operator()(u8 edge, double distance) const
    {
        const double square = distance * distance;
        // At the edge itself nothing has faded, however narrow the image is.
        const double share = square > 0 ? sqrt(square / reach) : 0;
        const double value = reach >= square ? edge - (edge - mean) * share : mean;
        const double notNegative = value > 0 ? value : 0;
        return static_cast<u8>(notNegative < 255 ? notNegative : 255);
    }
};

}  // namespace

VEXA_KERNEL taperKernel(Vexa8u* dst, int width, int height, int pitch, short left, short right, short top, short bottom,
                        double mean)
{
    const Taper taper(width, height, left, right, top, bottom, mean);
    if (!taper.hasImage()) return;
    const Interior image = taper.image;
    const Plane<u8> frame{dst, pitch};
    // Of the margins that a pixel lies in the last one counts: top, bottom, right, left. The bottom margin has one
    // column of the right one, whose pixels continue the edge.
    const auto fade = [=](int x, int y) {
        const bool isTop = y < image.top && x >= image.left;
        const bool isBottom = y >= image.bottom && x <= image.right;
        const bool isRight = x >= image.right && y >= image.top;
        const bool isLeft = x < image.left && y < width - bottom;
        if (!isTop && !isBottom && !isRight && !isLeft) return;
        const int column = x < image.left ? image.left : (x < image.right ? x : image.right - 1);
        const int row = y < image.top ? image.top : (y < image.bottom ? y : image.bottom - 1);
        const int distance = isTop ? y + top : isBottom ? y - image.bottom : isRight ? x - image.right : left + x;
        frame.row(y)[x] = taper(frame.row(row)[column], distance);
    };
    forEachPixelOutside(image, width, height, fade);
}

VexaStatus vexa_taper_8uC1(Vexa8u* src, Vexa32s srcWidth, Vexa32s srcHeight, Vexa32s srcPitch, Vexa8u* dst,
                           Vexa32s dstWidth, Vexa32s dstHeight, Vexa32s dstPitch, Vexa32u left, Vexa32u right,
                           Vexa32u top, Vexa32u bottom, Vexa64f mean, cudaStream_t stream)
{
    // The frame is put together apart, as an image may be its own destination. A failure leaves the destination as it
    // is, and is not told.
    const auto rowBytes = static_cast<std::size_t>(dstWidth);
    const auto rows = static_cast<std::size_t>(dstHeight);
    void* block = nullptr;
    std::size_t pitch = 0;
    if (platform::allocateRows(block, pitch, rowBytes, rows) == VEXA_SUCCESS && block != nullptr) {
        const Surface frame{block, dstWidth, dstHeight, static_cast<int>(pitch), 1};
        (void)platform::setBytes({block, pitch}, 0, {rowBytes, rows}, stream);
        (void)place({src, srcWidth, srcHeight, srcPitch, 1}, frame, left, top, stream);
        (void)place(frame, {dst, dstWidth, dstHeight, dstPitch, 1}, 0, 0, stream);
        (void)platform::synchronizeDevice();
        (void)platform::release(block);
    }
    // The kernel takes the low bits of the margins; that is meant.
    launch(taperKernel, Extent{dstWidth, dstHeight}, stream, dst, dstWidth, dstHeight, dstPitch,
           static_cast<short>(left), static_cast<short>(right), static_cast<short>(top), static_cast<short>(bottom),
           mean);
    return VEXA_SUCCESS;
}

namespace {

struct Margins {
    Vexa32u left;
    Vexa32u right;
    Vexa32u top;
    Vexa32u bottom;
};

/// A size with two margins; 0, which no image has, if it is past all sizes.
int framed(int size, Vexa32u before, Vexa32u after)
{
    const long long sum = size + static_cast<long long>(before) + after;
    return sum <= std::numeric_limits<int>::max() ? static_cast<int>(sum) : 0;
}

VexaStatus taperPlane(const VexaImage& src, VexaImage& dst, const Margins& margins, Vexa64f mean,
                      platform::Stream stream)
{
    return vexa_taper_8uC1(src.ptr<u8>(), src.width(), src.height(), src.pitch(), dst.ptr<u8>(), dst.width(),
                           dst.height(), dst.pitch(), margins.left, margins.right, margins.top, margins.bottom, mean,
                           stream);
}

VexaStatus taperColor(const VexaImage& src, VexaImage& dst, const Margins& margins, const VexaScalar& mean,
                      const VexaStream& stream)
{
    const VexaStream own(stream.ptr() != nullptr);
    VexaImage planes[3];
    VexaImage frames[3];
    for (VexaImage& plane : planes)
        // A sequence that is neither RGB nor BGR is not split.
        if (plane.create(src.size(), VEXA_8UC1) == VEXA_SUCCESS) (void)plane.set(0.0, stream);
    if (const VexaStatus failed = colorOperations::channelSplit(src, planes[0], planes[1], planes[2], own))
        return failed;
    for (VexaImage& frame : frames) (void)frame.create(dst.size(), VEXA_8UC1);
    // Planes are in the order red, green, blue and means in that of the pixel; that is meant.
    for (const int i : {0, 2, 1})
        if (const VexaStatus failed = taperPlane(planes[i], frames[i], margins, mean[i], handle(stream))) return failed;
    return colorOperations::channelMerge(frames[0], frames[1], frames[2], dst, own);
}

}  // namespace

namespace vexa::geometryTransforms {

VexaStatus taper(const VexaImage& src, VexaImage& dst, Vexa32u taperLeft, Vexa32u taperRight, Vexa32u taperTop,
                 Vexa32u taperBottom, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::channels, same::depth}, framed(src.width(), taperLeft, taperRight),
                          framed(src.height(), taperTop, taperBottom), src.type()))
        return failed;
    VexaScalar mean;
    if (const VexaStatus failed = imageStatistics::mean(src, mean, VexaStream(false))) return failed;
    const Margins margins{taperLeft, taperRight, taperTop, taperBottom};
    if (src.type() == VEXA_8UC1) return taperPlane(src, dst, margins, mean[0], handle(stream));
    if (src.type() == VEXA_8UC3) return taperColor(src, dst, margins, mean, stream);
    return VEXA_TYPE_NOT_SUPPORTED_ERROR;
}

}  // namespace vexa::geometryTransforms
