/// @file
/// The part of an image inside margins.

#include <limits>

#include "checks.h"
#include "placement.h"
#include "streams.h"

using namespace vexa;

namespace {

/// A size less two margins; 0, which no image has, if it is past all sizes.
int within(int size, int before, int after)
{
    const long long rest = static_cast<long long>(size) - before - after;
    return rest > 0 && rest <= std::numeric_limits<int>::max() ? static_cast<int>(rest) : 0;
}

}  // namespace

namespace vexa::geometryTransforms {

VexaStatus crop(const VexaImage& src, VexaImage& dst, const Vexa32s top, const Vexa32s bottom, const Vexa32s left,
                const Vexa32s right, const VexaStream& stream)
{
    const int width = within(src.width(), left, right);
    const int height = within(src.height(), top, bottom);
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = notInPlace(src, dst)) return failed;
    if (const VexaStatus failed = matchOrCreate(dst, src, {same::depth, same::channels}, width, height, src.type()))
        return failed;
    if (src.depth() != 8 && src.depth() != 16 && src.depth() != 32) return VEXA_TYPE_NOT_SUPPORTED_ERROR;
    if (width == 0 || height == 0) return VEXA_INVALID_ARG_ERROR;
    // The destination may be of any size, and margins may be negative: what both images have is copied. How that went
    // is not looked at.
    Surface part = surfaceOf(dst);
    part.width = std::min(width, dst.width());
    part.height = std::min(height, dst.height());
    (void)place(surfaceOf(src), part, -static_cast<long long>(left), -static_cast<long long>(top), handle(stream));
    return VEXA_SUCCESS;
}

}  // namespace vexa::geometryTransforms
