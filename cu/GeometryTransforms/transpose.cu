/// @file
/// Columns as rows, by the platform's primitive.

#include "checks.h"
#include "dispatch.h"
#include "pixels.h"
#include "streams.h"

using namespace vexa;

namespace {

using TransposedTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

struct Transposition {
    const VexaImage& src;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        // How it went is not looked at; that is meant.
        (void)platform::transpose<T, C>(pixelsOf<T>(src), dst.ptr<T>(), dst.pitch(), stream);
    }
};

}  // namespace

namespace vexa::geometryTransforms {

VexaStatus transpose(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    constexpr Comparison isWidthOf{[](const VexaImage& a, const VexaImage& b) { return a.height() == b.width(); },
                                   VEXA_INVALID_ARG_ERROR};
    constexpr Comparison isHeightOf{[](const VexaImage& a, const VexaImage& b) { return a.width() == b.height(); },
                                    VEXA_INVALID_ARG_ERROR};
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = notInPlace(src, dst)) return failed;
    if (const VexaStatus failed = matchOrCreate(dst, src, {isWidthOf, isHeightOf, same::depth, same::channels},
                                                src.height(), src.width(), src.depth(), src.channels()))
        return failed;
    return dispatch(TransposedTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    Transposition{src, dst, handle(stream)}, src);
}

}  // namespace vexa::geometryTransforms
