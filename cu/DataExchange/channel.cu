/// @file
/// One channel out of several, as an image of its own.

#include <algorithm>

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "kernels.h"

using namespace vexa;

template <typename T, int C>
VEXA_KERNEL kernel_get_channel(T* src, T* dst, int width, int height, int srcPitch, int dstPitch, int channel)
{
    const Plane<T> from{src, srcPitch};
    const Plane<T> to{dst, dstPitch};
    forEachPixel(width, height, [=](int x, int y) { to.row(y)[x] = from.row(y)[C * x + channel]; });
}

namespace {

using ChannelTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

struct Extract {
    const VexaImage& src;
    VexaImage& dst;
    int channel;
    platform::Stream stream;

    /// The destination may have another size and depth. What its rows can hold is stored.
    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        const long long held =
            static_cast<long long>(elementsOf(dst)) * (dst.depth() / 8) / static_cast<int>(sizeof(T));
        const auto width = static_cast<int>(std::min<long long>(src.width(), held));
        const int height = std::min(src.height(), dst.height());
        launch(kernel_get_channel<T, C>, Extent{width, height}, stream, src.ptr<T>(), dst.ptr<T>(), width, height,
               pitchOf<T>(src), pitchOf<T>(dst), channel);
    }
};

}  // namespace

namespace vexa::dataExchange {

VexaStatus getChannel(const VexaImage& src, VexaImage& dst, const int channel, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (channel < 0 || channel >= src.channels()) return VEXA_INVALID_ARG_ERROR;
    if (!dst.isInitialized())
        (void)dst.create(src.size(), src.depth(), 1);
    else if (dst.channels() != 1)
        return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    return dispatch(ChannelTypes{}, Channels<3, 4>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    Extract{src, dst, channel, handle(stream)}, src);
}

}  // namespace vexa::dataExchange
