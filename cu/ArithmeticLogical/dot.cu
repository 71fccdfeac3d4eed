/// @file
/// The dot product of two images, for each channel.

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "pixels.h"
#include "temporaries.h"

using namespace vexa;
using platform::Pixels;

namespace {

using FloatTypes = Table<Row<f32>>;

struct Dot {
    const VexaImage& src1;
    const VexaImage& src2;
    VexaScalar& values;
    platform::Stream stream;

    template <int C>
    VexaStatus operator()(ChannelCount<C>, Row<f32>) const
    {
        // Both images are addressed by the pitch of the first, as far as the second goes.
        Pixels<f32> first = pixelsOf<f32>(src1);
        first.height = rowsInside(src2, src1);

        constexpr std::size_t resultBytes = C * sizeof(Vexa64f);
        std::size_t bytes = 0;
        void* scratch = nullptr;
        Vexa64f* result = nullptr;
        (void)platform::Statistics<f32, C>::scratchSize(platform::Statistic::dot, first.width, first.height, bytes,
                                                        stream);
        if (const VexaStatus failed = platform::allocate(scratch, bytes)) return failed;
        (void)allocateElements(result, C);
        // What fails here goes unreported; the result is 0 then.
        (void)platform::setBytes({result, resultBytes}, 0, {resultBytes, 1}, stream);
        (void)platform::dot<C>(first, src2.ptr<f32>(), scratch, result, stream);
        if (const VexaStatus failed = platform::copyToHost(values.vals(), result, resultBytes, stream)) return failed;
        return releaseAll({scratch, result});
    }
};

}  // namespace

namespace vexa::arithmeticLogical {

VexaStatus dot(const VexaImage& src1, const VexaImage& src2, VexaScalar& result, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src1, src2)) return failed;
    if (const VexaStatus failed = match(src2, src1, {same::width, same::height, same::type})) return failed;
    return dispatch(FloatTypes{}, Channels<1, 3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    Dot{src1, src2, result, handle(stream)}, src1);
}

}  // namespace vexa::arithmeticLogical
