/// @file
/// Filled rectangles.

#include <algorithm>
#include <utility>

#include "arguments.h"
#include "checks.h"
#include "kernels.h"

using namespace vexa;

template <typename T>
VEXA_KERNEL kernel_rectangle_c3(T* img, int width, int height, int pitch, T c0, T c1, T c2)
{
    fillPixels<3>(width, height, Plane<T>{img, pitch}, PerChannel<T, 3>{{c0, c1, c2}});
}

namespace {

/// The pixel that a rectangle starts with.
u8* pixelAt(u8* img, int pitch, int channels, const VexaRect& rect)
{
    return img + static_cast<std::ptrdiff_t>(rect.y) * pitch + channels * rect.x;
}

}  // namespace

VexaStatus vexa_rectangle_8u_c1(Vexa8u* img, const VexaRect& rect, const int pitch, const double value,
                                cudaStream_t stream)
{
    const platform::Target first{pixelAt(img, pitch, 1, rect), static_cast<std::size_t>(pitch)};
    (void)platform::setBytes(first, saturated<u8>(value),
                             {static_cast<std::size_t>(rect.width), static_cast<std::size_t>(rect.height)}, stream);
    return VEXA_SUCCESS;
}

VexaStatus vexa_rectangle_8u_c3(Vexa8u* img, const VexaRect& rect, const int pitch, const VexaScalar& color,
                                cudaStream_t stream)
{
    u8* const first = pixelAt(img, pitch, 3, rect);
    launch(kernel_rectangle_c3<u8>, elementExtent<3, u8>(rect.width, rect.height), stream, first, rect.width,
           rect.height, pitch, saturated<u8>(color[0]), saturated<u8>(color[1]), saturated<u8>(color[2]));
    return VEXA_SUCCESS;
}

namespace {

/// The part of a run of `length` pixels from `start` on that lies in an image of `size`: its start and length.
std::pair<int, int> clipped(int start, int length, int size)
{
    const int begin = std::clamp(start, 0, size);
    const long long end = std::min(static_cast<long long>(start) + length, static_cast<long long>(size));
    return {begin, static_cast<int>(std::max(end - begin, 0LL))};
}

VexaRect clipped(const VexaRect& rect, const VexaImage& image)
{
    const auto [x, width] = clipped(rect.x, rect.width, image.width());
    const auto [y, height] = clipped(rect.y, rect.height, image.height());
    return {x, y, width, height};
}

}  // namespace

namespace vexa::dataExchange {

VexaStatus rectangle(VexaImage& image, const VexaRect& rect, const VexaScalar& color, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(image)) return failed;
    const VexaRect inside = clipped(rect, image);
    if (image.depth() == 8 && image.channels() == 1)
        return vexa_rectangle_8u_c1(image.ptr<u8>(), inside, image.pitch(), color[0], handle(stream));
    if (image.depth() == 8 && image.channels() == 3)
        return vexa_rectangle_8u_c3(image.ptr<u8>(), inside, image.pitch(), color, handle(stream));
    return VEXA_NOT_SUPPORTED_MODE_ERROR;
}

}  // namespace vexa::dataExchange
