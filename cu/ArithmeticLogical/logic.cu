/// @file
/// Bitwise logic. The smallest operation of the library: copy this file to begin another.

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "kernels.h"

using namespace vexa;

template <typename T, int C>
VEXA_KERNEL kernel_not(T* src, T* dst, int width, int height, int pitch)
{
    mapElements<C>(
        width, height, Plane<T>{dst, pitch}, [](T value) { return static_cast<T>(~value); }, Plane<T>{src, pitch});
}

namespace {

using LogicTypes = Table<Row<u8>, Row<u16>>;

struct Complement {
    const VexaImage& src;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        const int rows = rowsInside(dst, src);
        launch(kernel_not<T, C>, elementExtent<C, T>(src.width(), rows), stream, src.ptr<T>(), dst.ptr<T>(),
               src.width(), rows, pitchOf<T>(src));
    }
};

}  // namespace

namespace vexa::arithmeticLogical {

VexaStatus NOT(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::type}, src.size(), src.type()))
        return failed;
    return dispatch(LogicTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR, Complement{src, dst, handle(stream)},
                    src);
}

}  // namespace vexa::arithmeticLogical
