/// @file
/// Stretches the range that an image has to one that is given. The band of elements that take part has bounds of its
/// own, which do not enter the stretch, and what lies outside it stays as it is. That is meant.

#include "arguments.h"
#include "arithmetic.h"
#include "bytes.h"
#include "checks.h"
#include "dispatch.h"
#include "vexaImageStatistics.h"

using namespace vexa;

namespace {

/// The levels of a channel.
struct Stretch {
    u8 inMin;
    u8 inMax;
    u8 outMin;
    u8 outMax;
    u8 lowClip;
    u8 highClip;

    /// A constant image has no range: the quotient is not a number, which neither bound holds, and stores 0.
    VEXA_DEVICE u8 operator()(u8 element) const
    {
        if (element >= highClip || element <= lowClip) return element;
        const auto lowest = static_cast<float>(outMin);
        const auto highest = static_cast<float>(outMax);
        const float above = static_cast<float>(element) - static_cast<float>(inMin);
        const float range = static_cast<float>(inMax) - static_cast<float>(inMin);
        const float stretched = lowest + (highest - lowest) * above / range;
        if (stretched < lowest) return outMin;
        if (stretched > highest) return outMax;
        return static_cast<u8>(truncateToUnsigned(stretched));
    }
};

}  // namespace

VEXA_KERNEL adjust_8u_C1_kernel(Vexa8u* srcDst, int width, int height, int pitch, Vexa8u inMin, Vexa8u inMax,
                                Vexa8u outMin, Vexa8u outMax, Vexa8u lowClip, Vexa8u highClip)
{
    const Plane<u8> plane{srcDst, pitch};
    mapBytes<1>(width, height, plane, plane, Stretch{inMin, inMax, outMin, outMax, lowClip, highClip});
}

VEXA_KERNEL adjust_8u_C3_kernel(Vexa8u* srcDst, int width, int height, int pitch, Vexa8u inMin0, Vexa8u inMin1,
                                Vexa8u inMin2, Vexa8u inMax0, Vexa8u inMax1, Vexa8u inMax2, Vexa8u outMin0,
                                Vexa8u outMin1, Vexa8u outMin2, Vexa8u outMax0, Vexa8u outMax1, Vexa8u outMax2,
                                Vexa8u lowClip0, Vexa8u lowClip1, Vexa8u lowClip2, Vexa8u highClip0, Vexa8u highClip1,
                                Vexa8u highClip2)
{
    const Plane<u8> plane{srcDst, pitch};
    mapBytes<3>(width, height, plane, plane, Stretch{inMin0, inMax0, outMin0, outMax0, lowClip0, highClip0},
                Stretch{inMin1, inMax1, outMin1, outMax1, lowClip1, highClip1},
                Stretch{inMin2, inMax2, outMin2, outMax2, lowClip2, highClip2});
}

namespace {

/// A fraction of full scale as an element.
u8 level(double fraction)
{
    return saturated<u8>(fraction * Element<u8>::max);
}

/// The range of each channel, 0 to 0 where it can't be measured.
struct Measured {
    Vexa64f min[3] = {};
    Vexa64f max[3] = {};

    u8 inMin(int channel) const { return static_cast<u8>(min[channel]); }
    u8 inMax(int channel) const { return static_cast<u8>(max[channel]); }
};

}  // namespace

VexaStatus vexa_adjust_8u_C1(Vexa8u* pSrcDst, Vexa32s width, Vexa32s height, Vexa32s pitch, const VexaScalar& LOW_IN,
                             const VexaScalar& HIGH_IN, const VexaScalar& LOW_OUT, const VexaScalar& HIGH_OUT,
                             cudaStream_t stream)
{
    Measured measured;
    (void)vexa_minMax_8uC1(pSrcDst, measured.min, measured.max, width, height, pitch, stream);
    launch(adjust_8u_C1_kernel, elementExtent<1, u8>(width, height), stream, pSrcDst, width, height, pitch,
           measured.inMin(0), measured.inMax(0), level(LOW_OUT[0]), level(HIGH_OUT[0]), level(LOW_IN[0]),
           level(HIGH_IN[0]));
    return VEXA_SUCCESS;
}

VexaStatus vexa_adjust_8u_C3(Vexa8u* pSrcDst, Vexa32s width, Vexa32s height, Vexa32s pitch, const VexaScalar& LOW_IN,
                             const VexaScalar& HIGH_IN, const VexaScalar& LOW_OUT, const VexaScalar& HIGH_OUT,
                             cudaStream_t stream)
{
    Measured measured;
    (void)vexa_minMax_8uC3(pSrcDst, measured.min, measured.max, width, height, pitch, stream);
    launch(adjust_8u_C3_kernel, pixelExtent(width, height), stream, pSrcDst, width, height, pitch, measured.inMin(0),
           measured.inMin(1), measured.inMin(2), measured.inMax(0), measured.inMax(1), measured.inMax(2),
           level(LOW_OUT[0]), level(LOW_OUT[1]), level(LOW_OUT[2]), level(HIGH_OUT[0]), level(HIGH_OUT[1]),
           level(HIGH_OUT[2]), level(LOW_IN[0]), level(LOW_IN[1]), level(LOW_IN[2]), level(HIGH_IN[0]),
           level(HIGH_IN[1]), level(HIGH_IN[2]));
    return VEXA_SUCCESS;
}

namespace {

/// Picks the worker.
struct Adjust {
    VexaImage& srcDst;
    const VexaScalar& lowIn;
    const VexaScalar& highIn;
    const VexaScalar& lowOut;
    const VexaScalar& highOut;
    platform::Stream stream;

    template <int C>
    VexaStatus operator()(ChannelCount<C>, Row<u8>) const
    {
        const auto worker = C == 1 ? vexa_adjust_8u_C1 : vexa_adjust_8u_C3;
        return worker(srcDst.ptr<u8>(), srcDst.width(), srcDst.height(), srcDst.pitch(), lowIn, highIn, lowOut, highOut,
                      stream);
    }
};

}  // namespace

namespace vexa::colorOperations {

VexaStatus adjust(VexaImage& srcDst, const VexaScalar& LOW_IN, const VexaScalar& HIGH_IN, const VexaScalar& LOW_OUT,
                  const VexaScalar& HIGH_OUT, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(srcDst)) return failed;
    return dispatch(Table<Row<u8>>{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    Adjust{srcDst, LOW_IN, HIGH_IN, LOW_OUT, HIGH_OUT, handle(stream)}, srcDst);
}

}  // namespace vexa::colorOperations
