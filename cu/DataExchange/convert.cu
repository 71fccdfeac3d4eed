/// @file
/// Conversion between element types by scale and offset.

#include "arguments.h"
#include "arithmetic.h"
#include "checks.h"
#include "dispatch.h"
#include "kernels.h"

using namespace vexa;

template <typename S, typename D, int C, bool sat>
VEXA_KERNEL kernel_convert_scale(S* src, D* dst, int width, int height, int srcPitch, int dstPitch, float scale,
                                 float offset, D min, D max)
{
    const Range range{static_cast<float>(min), static_cast<float>(max)};
    const auto convert = [=](S value) {
        return store<D, sat>(multiplyAdd(static_cast<float>(value), scale, offset), range);
    };
    mapElements<C>(width, height, Plane<D>{dst, dstPitch}, convert, Plane<S>{src, srcPitch});
}

namespace {

// clang-format off
using ConversionTypes = Table<
    //  src  dst
    Row<u8,  u8 >,
    Row<u16, u16>,
    Row<f32, f32>,
    Row<u8,  f32>,
    Row<u16, f32>,
    Row<u8,  u16>,
    Row<f32, u8 >,
    Row<f32, u16>,
    Row<u16, u8 >>;
// clang-format on

struct ScaleAndOffset {
    const VexaImage& src;
    VexaImage& dst;
    float scale;
    float offset;
    platform::Stream stream;

    template <int C, typename S, typename D>
    void operator()(ChannelCount<C>, Row<S, D>) const
    {
        launch(kernel_convert_scale<S, D, C, Element<D>::saturates>, elementExtent<C, S, D>(src.width(), src.height()),
               stream, src.ptr<S>(), dst.ptr<D>(), src.width(), src.height(), pitchOf<S>(src), pitchOf<D>(dst), scale,
               offset, static_cast<D>(Element<D>::min), static_cast<D>(Element<D>::max));
    }
};

}  // namespace

namespace vexa::dataExchange {

VexaStatus convertScale(const VexaImage& src, VexaImage& dst, const Vexa32f scale, const Vexa32f offset,
                        const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::channels}, src.size(), src.type()))
        return failed;
    return dispatch(ConversionTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    ScaleAndOffset{src, dst, scale, offset, handle(stream)}, src, dst);
}

}  // namespace vexa::dataExchange
