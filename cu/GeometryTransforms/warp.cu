/// @file
/// Affine and perspective warps, by the platform's primitive. The four operations differ in its argument alone.

#include "checks.h"
#include "dispatch.h"
#include "modes.h"
#include "pixels.h"
#include "streams.h"

using namespace vexa;
using platform::Transform;

namespace {

using WarpedTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

struct Warping {
    Transform transform;
    const VexaImage& src;
    VexaImage& dst;
    const Vexa64f (*coefficients)[3];
    VexaInterpolationType interpolation;
    platform::Stream stream;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        // Pixels that the source doesn't reach are 0. One image as both is lost here; that is meant.
        const auto rowBytes = static_cast<std::size_t>(dst.width()) * C * sizeof(T);
        (void)platform::setBytes({dst.ptr(), static_cast<std::size_t>(dst.pitch())}, 0,
                                 {rowBytes, static_cast<std::size_t>(dst.height())}, stream);
        const platform::Destination<T> destination{dst.ptr<T>(), dst.width(), dst.height(), dst.pitch()};
        return platform::warp<T, C>(transform, pixelsOf<T>(src), destination, coefficients,
                                    interpolationOf(interpolation), stream);
    }
};

/// The body of the operations.
VexaStatus warp(Transform transform, const VexaImage& src, VexaImage& dst, const Vexa64f (*coeffs)[3],
                VexaInterpolationType interp, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::depth, same::channels}, src.size(), src.depth(), src.channels()))
        return failed;
    return dispatch(WarpedTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    Warping{transform, src, dst, coeffs, interp, handle(stream)}, src);
}

}  // namespace

namespace vexa::geometryTransforms {

VexaStatus warpAffine(const VexaImage& src, VexaImage& dst, Vexa64f (*coeffs)[3], VexaInterpolationType interp,
                      const VexaStream& stream)
{
    return warp(Transform::affine, src, dst, coeffs, interp, stream);
}

VexaStatus warpAffineBack(const VexaImage& src, VexaImage& dst, Vexa64f (*coeffs)[3], VexaInterpolationType interp,
                          const VexaStream& stream)
{
    return warp(Transform::affineBack, src, dst, coeffs, interp, stream);
}

VexaStatus warpPerspective(const VexaImage& src, VexaImage& dst, Vexa64f (*coeffs)[3], VexaInterpolationType interp,
                           const VexaStream& stream)
{
    return warp(Transform::perspective, src, dst, coeffs, interp, stream);
}

VexaStatus warpPerspectiveBack(const VexaImage& src, VexaImage& dst, Vexa64f (*coeffs)[3], VexaInterpolationType interp,
                               const VexaStream& stream)
{
    return warp(Transform::perspectiveBack, src, dst, coeffs, interp, stream);
}

}  // namespace vexa::geometryTransforms
