/// @file
/// 8-bit colours as packed 4:2:2. A chroma sample comes from its own pixel alone: U from the even one, V from the odd.

#include <algorithm>

#include "arguments.h"
#include "bt601.h"
#include "checks.h"
#include "kernels.h"

using namespace vexa;

VEXA_KERNEL kernel_rgb2uyvy(Vexa8u* src, Vexa8u* dst, int width, int height, int srcPitch, int dstPitch)
{
    const Interleaved<u8, 3> from{src, srcPitch};
    const Interleaved<u8, 2> to{dst, dstPitch};
    forEachPixel(width, height, [=](int x, int y) {
        const Color<int> color = widened(colorOf<VEXA_CHANNEL_SEQ_BGR>(from.row(y).load(x)));
        const u8 chroma = (x & 1) == 0 ? blueDifferenceOf(color) : redDifferenceOf(color);
        to.row(y).store(x, {{chroma, lumaOf(color)}});
    });
}

VexaStatus vexa_rgb2yuv422_8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                              Vexa32s dstPitch, cudaStream_t stream)
{
    launch(kernel_rgb2uyvy, Extent{width, height}, stream, pSrc, pDst, width, height, srcPitch, dstPitch);
    return VEXA_SUCCESS;
}

namespace vexa::colorOperations {

VexaStatus rgb2yuv422(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = hasThreeChannels(src)) return failed;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::depth}, src.size(), VEXA_8UC2))
        return failed;
    if (src.type() != VEXA_8UC3) return VEXA_TYPE_NOT_SUPPORTED_ERROR;
    // The channels of a destination are not compared: a row of one channel holds half the pixels.
    const int width = std::min(src.width(), elementsOf(dst) / 2);
    return vexa_rgb2yuv422_8u(src.ptr<u8>(), dst.ptr<u8>(), width, src.height(), src.pitch(), dst.pitch(),
                              handle(stream));
}

}  // namespace vexa::colorOperations
