/// @file
/// A band test that makes a mask.

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "kernels.h"

using namespace vexa;

template <typename T, int C>
VEXA_KERNEL kernel_inRange_single(const T* src, Vexa8u* dst, int width, int height, int srcPitch, int dstPitch,
                                  T rangeMin, T rangeMax)
{
    const auto isInside = [=](T element) { return element >= rangeMin && element <= rangeMax; };
    const Plane<const T> from{src, srcPitch};
    const Plane<u8> to{dst, dstPitch};
    if constexpr (C == 1) {
        mapElements<1>(
            width, height, to, [=](T element) { return static_cast<u8>(isInside(element) ? 255 : 0); }, from);
    } else {
        // One channel in the band is enough; that is meant.
        forEachPixel(width, height, [=](int x, int y) {
            const T* const pixel = from.row(y) + static_cast<std::ptrdiff_t>(x) * C;
            bool any = false;
            for (int c = 0; c < C; ++c) any |= isInside(pixel[c]);
            to.row(y)[x] = static_cast<u8>(any ? 255 : 0);
        });
    }
}

namespace {

using BandTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

struct InRange {
    const VexaImage& src;
    Vexa32f rangeMin;
    Vexa32f rangeMax;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        // The destination's type is not compared.
        const int rows = rowsInside(dst, src.height(), src.width(), dst.pitch());
        const Extent extent = C == 1 ? elementExtent<1, T, u8>(src.width(), rows) : Extent{src.width(), rows};
        launch(kernel_inRange_single<T, C>, extent, stream, src.ptr<T>(), dst.ptr<u8>(), src.width(), rows,
               pitchOf<T>(src), dst.pitch(), lowBits<T>(rangeMin), lowBits<T>(rangeMax));
    }
};

}  // namespace

namespace vexa::arithmeticLogical {

VexaStatus inRange(const VexaImage& src, const Vexa32f rangeMin, const Vexa32f rangeMax, VexaImage& dst,
                   const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreate(dst, src, {same::width, same::height}, src.size(), VEXA_8UC1))
        return failed;
    return dispatch(BandTypes{}, Channels<1, 3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    InRange{src, rangeMin, rangeMax, dst, handle(stream)}, src);
}

}  // namespace vexa::arithmeticLogical
