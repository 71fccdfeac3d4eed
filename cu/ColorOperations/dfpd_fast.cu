/// @file
/// DFPD: directional filtering with a posteriori decision (Menon, Andriani and Calvagno, "Demosaicing with directional
/// filtering and a posteriori decision", IEEE Transactions on Image Processing 16(1), 2007), without its refinement
/// step. Three passes work in place on the destination. Every value is a whole number of quarters or halves of raw
/// values, which float holds exactly; so integers give what float arithmetic gives, in any order.

#include "dfpd.h"

#include "arguments.h"
#include "dataBits.h"
#include "mosaic.h"

using namespace vexa;

namespace {

/// The range of a stored value; values between are truncated.
struct Bounds {
    int lowest;
    int highest;

    template <typename T>
    VEXA_DEVICE T store(int value) const
    {
        const int below = value < highest ? value : highest;
        return static_cast<T>(below > lowest ? below : lowest);
    }
};

VEXA_DEVICE Bounds boundsOf(unsigned minVal, unsigned maxVal)
{
    return {static_cast<int>(minVal), static_cast<int>(maxVal)};
}

/// Four times the raw value of a site less the green that the filter (-1/4, 1/2, 1/2, 1/2, -1/4) estimates there, along
/// the column.
template <typename Window>
VEXA_DEVICE int verticalChrominance(const Window& at, int dx, int dy)
{
    return 2 * (at(dx, dy) - at(dx, dy - 1) - at(dx, dy + 1)) + at(dx, dy - 2) + at(dx, dy + 2);
}

/// The same along the row.
template <typename Window>
VEXA_DEVICE int horizontalChrominance(const Window& at, int dx, int dy)
{
    return 2 * (at(dx, dy) - at(dx - 1, dy) - at(dx + 1, dy)) + at(dx - 2, dy) + at(dx + 2, dy);
}

/// How much it changes to the next site of the same colour: below, or to the right.
template <typename Window>
VEXA_DEVICE int changeDown(const Window& at, int dx, int dy)
{
    return abs(verticalChrominance(at, dx, dy) - verticalChrominance(at, dx, dy + 2));
}

template <typename Window>
VEXA_DEVICE int changeRight(const Window& at, int dx, int dy)
{
    return abs(horizontalChrominance(at, dx, dy) - horizontalChrominance(at, dx + 2, dy));
}

/// The sum of changes at a site and its four neighbours of the same colour. Changes look down and right, so the sums
/// are not centred; that is meant.
template <typename Change>
VEXA_DEVICE int aroundSite(const Change& change)
{
    return change(-2, 0) + change(0, -2) + change(0, 0) + change(0, 2) + change(2, 0);
}

/// A colour of a pixel from another: their difference is the mean of the differences at two neighbours.
template <typename T>
VEXA_DEVICE T byDifferences(const Pixel<T, 3>& pixel, const Pixel<T, 3>& a, const Pixel<T, 3>& b, int slot, int from,
                            Bounds bounds)
{
    const int differences = (a.element[slot] - a.element[from]) + (b.element[slot] - b.element[from]);
    return bounds.store<T>((2 * pixel.element[from] + differences) >> 1);
}

/// All but the outermost pixels.
VEXA_DEVICE bool isInside(int x, int y, int width, int height)
{
    return x >= 1 && x < width - 1 && y >= 1 && y < height - 1;
}

}  // namespace

/// Pass 1: the raw value in all slots; at red and blue sites green by the filter along the column or the row, and in
/// sigmaV a true for the column. Nothing else is written there, so it starts cleared.
template <VexaBayerSeq seq, int bits, typename T>
VEXA_KERNEL kernel_dfpd_1(T* src, T* dst, bool* sigmaV, int width, int height, int srcPitch, int dstPitch,
                          int sigma_pitch, unsigned minVal, unsigned maxVal)
{
    const Interleaved<T, 3> pixels{dst, dstPitch};
    const Plane<bool> isVertical{sigmaV, sigma_pitch};
    const Bounds bounds = boundsOf(minVal, maxVal);
    forEachWindow<Reach<4, 6, 4, 6>, int>(FetchZero<T>{src, width, height, srcPitch}, [=](int x, int y,
                                                                                          const auto& window) {
        const auto raw = bounds.store<T>(window(0, 0));
        T green = raw;
        if (!Sites<seq>::isGreen(x, y)) {
            const int alongColumn = aroundSite([&](int dx, int dy) { return changeDown(window, dx, dy); });
            const int alongRow = aroundSite([&](int dx, int dy) { return changeRight(window, dx, dy); });
            const bool vertical = alongColumn < alongRow;
            const int chrominance = vertical ? verticalChrominance(window, 0, 0) : horizontalChrominance(window, 0, 0);
            green = bounds.store<T>((4 * window(0, 0) - chrominance) >> 2);
            if (vertical) isVertical.row(y)[x] = true;
        }
        pixels.row(y).store(x, {{raw, green, raw}});
    });
}

/// Pass 2: red and blue at green sites, from the neighbours that hold them.
template <VexaBayerSeq seq, typename T>
VEXA_KERNEL kernel_dfpd_2(T* dst, int width, int height, int dstPitch, unsigned minVal, unsigned maxVal)
{
    const Interleaved<T, 3> pixels{dst, dstPitch};
    const Bounds bounds = boundsOf(minVal, maxVal);
    forEachPixel(width, height, [=](int x, int y) {
        if (!Sites<seq>::isGreen(x, y) || !isInside(x, y, width, height)) return;
        const int ofRow = Sites<seq>::slot(y);
        const int ofColumn = 2 - ofRow;
        const auto row = pixels.row(y);
        const Pixel<T, 3> pixel = row.load(x);
        T* const to = row.first + 3 * x;
        to[ofRow] = byDifferences(pixel, row.load(x - 1), row.load(x + 1), ofRow, 1, bounds);
        to[ofColumn] = byDifferences(pixel, pixels.row(y - 1).load(x), pixels.row(y + 1).load(x), ofColumn, 1, bounds);
    });
}

/// Pass 3: blue at red sites and red at blue ones, from the green sites in the direction that pass 1 chose.
template <VexaBayerSeq seq, typename T>
VEXA_KERNEL kernel_dfpd_3(T* dst, bool* sigmaV, int width, int height, int dstPitch, int sigma_pitch, unsigned minVal,
                          unsigned maxVal)
{
    const Interleaved<T, 3> pixels{dst, dstPitch};
    const Plane<bool> isVertical{sigmaV, sigma_pitch};
    const Bounds bounds = boundsOf(minVal, maxVal);
    forEachPixel(width, height, [=](int x, int y) {
        if (Sites<seq>::isGreen(x, y) || !isInside(x, y, width, height)) return;
        const int own = Sites<seq>::slot(y);
        const int other = 2 - own;
        const int dx = isVertical.row(y)[x] ? 0 : 1;
        const int dy = 1 - dx;
        const auto row = pixels.row(y);
        row.first[3 * x + other] = byDifferences(row.load(x), pixels.row(y - dy).load(x - dx),
                                                 pixels.row(y + dy).load(x + dx), other, own, bounds);
    });
}

namespace {

template <VexaBayerSeq seq, typename T>
VexaStatus demosaicPasses(T* src, T* dst, int width, int height, int spitch, int dpitch, int databits,
                          cudaStream_t stream)
{
    const int maxVal = highestOf<T>(databits);
    const int srcPitch = elements<T>(spitch);
    const int dstPitch = elements<T>(dpitch);
    if (demosaicAtOnce<Sites<seq>>(FetchZero<T>{src, width, height, srcPitch}, Interleaved<T, 3>{dst, dstPitch},
                                   maxVal))
        return VEXA_SUCCESS;

    const auto rowBytes = static_cast<std::size_t>(std::max(width, 0));
    const auto rows = static_cast<std::size_t>(std::max(height, 0));
    void* directions = nullptr;
    std::size_t pitch = 0;
    // A failure shows in the device's own state alone; passes that miss the plane of directions are not launched.
    if (platform::allocateRows(directions, pitch, rowBytes, rows)) return VEXA_SUCCESS;
    (void)platform::setBytes({directions, pitch}, 0, {rowBytes, rows}, stream);

    auto* const sigmaV = static_cast<bool*>(directions);
    const auto sigmaPitch = static_cast<int>(pitch);
    const Extent extent{width, height};
    constexpr int bits = 8 * static_cast<int>(sizeof(T));
    launch(kernel_dfpd_1<seq, bits, T>, extent, stream, src, dst, sigmaV, width, height, srcPitch, dstPitch, sigmaPitch,
           0U, static_cast<unsigned>(maxVal));
    launch(kernel_dfpd_2<seq, T>, extent, stream, dst, width, height, dstPitch, 0U, static_cast<unsigned>(maxVal));
    launch(kernel_dfpd_3<seq, T>, extent, stream, dst, sigmaV, width, height, dstPitch, sigmaPitch, 0U,
           static_cast<unsigned>(maxVal));
    (void)platform::release(directions);
    return VEXA_SUCCESS;
}

}  // namespace

template <VexaBayerSeq seq>
VexaStatus vexa_demosaic_DFPD_simple_8u_fast(Vexa8u* src, Vexa8u* dst, Vexa32s width, Vexa32s height, Vexa32s spitch,
                                             Vexa32s dpitch, Vexa32s databits, bool /*refine*/, cudaStream_t stream)
{
    return demosaicPasses<seq>(src, dst, width, height, spitch, dpitch, databits, stream);
}

template <VexaBayerSeq seq>
VexaStatus vexa_demosaic_DFPD_simple_16u_fast(Vexa16u* src, Vexa16u* dst, Vexa32s width, Vexa32s height, Vexa32s spitch,
                                              Vexa32s dpitch, Vexa32s databits, bool /*refine*/, cudaStream_t stream)
{
    return demosaicPasses<seq>(src, dst, width, height, spitch, dpitch, databits, stream);
}

namespace {

template <typename T>
using OfLayout = VexaStatus(T* src, T* dst, Vexa32s width, Vexa32s height, Vexa32s spitch, Vexa32s dpitch,
                            Vexa32s databits, bool refine, cudaStream_t stream);

}  // namespace

template OfLayout<u8> vexa_demosaic_DFPD_simple_8u_fast<VEXA_BAYER_BGGR>;
template OfLayout<u8> vexa_demosaic_DFPD_simple_8u_fast<VEXA_BAYER_GBRG>;
template OfLayout<u8> vexa_demosaic_DFPD_simple_8u_fast<VEXA_BAYER_GRBG>;
template OfLayout<u8> vexa_demosaic_DFPD_simple_8u_fast<VEXA_BAYER_RGGB>;
template OfLayout<u16> vexa_demosaic_DFPD_simple_16u_fast<VEXA_BAYER_BGGR>;
template OfLayout<u16> vexa_demosaic_DFPD_simple_16u_fast<VEXA_BAYER_GBRG>;
template OfLayout<u16> vexa_demosaic_DFPD_simple_16u_fast<VEXA_BAYER_GRBG>;
template OfLayout<u16> vexa_demosaic_DFPD_simple_16u_fast<VEXA_BAYER_RGGB>;

namespace {

/// worker(layout) for a plain layout, which becomes a constant.
template <typename Worker>
VexaStatus withLayout(VexaBayerSeq seq, const Worker& worker)
{
    switch (seq) {
        case VEXA_BAYER_BGGR:
            return worker(std::integral_constant<VexaBayerSeq, VEXA_BAYER_BGGR>{});
        case VEXA_BAYER_GBRG:
            return worker(std::integral_constant<VexaBayerSeq, VEXA_BAYER_GBRG>{});
        case VEXA_BAYER_GRBG:
            return worker(std::integral_constant<VexaBayerSeq, VEXA_BAYER_GRBG>{});
        case VEXA_BAYER_RGGB:
            return worker(std::integral_constant<VexaBayerSeq, VEXA_BAYER_RGGB>{});
        default:
            return VEXA_INVALID_ARG_ERROR;
    }
}

}  // namespace

VexaStatus vexa_demosaic_dfpd_8u_fast(Vexa8u* src, Vexa8u* dst, Vexa32s width, Vexa32s height, Vexa32s spitch,
                                      Vexa32s dpitch, Vexa32s databits, VexaBayerSeq seq, bool refine,
                                      cudaStream_t stream)
{
    return withLayout(seq, [&](auto layout) {
        return vexa_demosaic_DFPD_simple_8u_fast<layout()>(src, dst, width, height, spitch, dpitch, databits, refine,
                                                           stream);
    });
}

VexaStatus vexa_demosaic_dfpd_16u_fast(Vexa16u* src, Vexa16u* dst, Vexa32s width, Vexa32s height, Vexa32s spitch,
                                       Vexa32s dpitch, Vexa32s databits, VexaBayerSeq seq, bool refine,
                                       cudaStream_t stream)
{
    return withLayout(seq, [&](auto layout) {
        return vexa_demosaic_DFPD_simple_16u_fast<layout()>(src, dst, width, height, spitch, dpitch, databits, refine,
                                                            stream);
    });
}

namespace vexa::colorOperations {

VexaStatus demosaicDFPD(const VexaImage& src, VexaImage& dst, const VexaBayerSeq sensorAlignment, const bool refine,
                        const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreateColors(dst, src)) return failed;
    if (src.depth() == 8)
        return vexa_demosaic_dfpd_8u_fast(src.ptr<u8>(), dst.ptr<u8>(), src.width(), src.height(), src.pitch(),
                                          dst.pitch(), src.dataBits(), sensorAlignment, refine, handle(stream));
    if (src.depth() == 16)
        return vexa_demosaic_dfpd_16u_fast(src.ptr<u16>(), dst.ptr<u16>(), src.width(), src.height(), src.pitch(),
                                           dst.pitch(), src.dataBits(), sensorAlignment, refine, handle(stream));
    return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
}

}  // namespace vexa::colorOperations
