/// @file
/// Demosaicing by one stencil for each slot of each parity class: the plain kernels average direct neighbours, the HQ
/// ones weigh 5 by 5. Which stencil goes where is a table, uneven on purpose: the layouts are no rotations of one
/// another, HQ layouts need not be what their names say, and the weights of some stencils don't sum to one. Sums are
/// integers in quarters or sixteenths; that is exact, so it is what float arithmetic gives.

#include "arguments.h"
#include "dataBits.h"
#include "mosaic.h"
#include "mosaics.h"
#include "narrow.h"

using namespace vexa;

namespace {

/// The pixel itself. `fraction` is how many fractional bits a stencil's result has.
struct C {
    static constexpr int fraction = 0;
    template <typename Window>
    VEXA_DEVICE auto operator()(const Window& at) const
    {
        return at(0, 0);
    }
};

/// Left and right.
struct H2 {
    static constexpr int fraction = 1;
    template <typename Window>
    VEXA_DEVICE auto operator()(const Window& at) const
    {
        return at(-1, 0) + at(1, 0);
    }
};

/// Above and below.
struct V2 {
    static constexpr int fraction = 1;
    template <typename Window>
    VEXA_DEVICE auto operator()(const Window& at) const
    {
        return at(0, -1) + at(0, 1);
    }
};

/// The diagonal neighbours.
struct D4 {
    static constexpr int fraction = 2;
    template <typename Window>
    VEXA_DEVICE auto operator()(const Window& at) const
    {
        return at(-1, -1) + at(1, -1) + at(-1, 1) + at(1, 1);
    }
};

/// All four neighbours, or those above and below where the raw values fall from left to right.
struct G4 {
    static constexpr int fraction = 2;
    template <typename Window>
    VEXA_DEVICE auto operator()(const Window& at) const
    {
        const auto vertical = at(0, -1) + at(0, 1);
        return vertical + choose(at(2, 0) < at(-2, 0), vertical, at(-1, 0) + at(1, 0));
    }
};

/// Weights in sixteenths: of the pixel, above and below, left and right, the diagonal neighbours, and the pixels two
/// steps up, down, left and right.
template <int center, int vertical, int horizontal, int diagonal, int up2, int down2, int left2, int right2>
struct Weighted {
    static constexpr int fraction = 4;
    template <typename Window>
    VEXA_DEVICE auto operator()(const Window& at) const
    {
        auto sum = center * at(0, 0);
        if constexpr (vertical != 0) sum = sum + vertical * (at(0, -1) + at(0, 1));
        if constexpr (horizontal != 0) sum = sum + horizontal * (at(-1, 0) + at(1, 0));
        if constexpr (diagonal != 0) sum = sum + diagonal * (at(-1, -1) + at(1, -1) + at(-1, 1) + at(1, 1));
        if constexpr (up2 != 0) sum = sum + up2 * at(0, -2);
        if constexpr (down2 != 0) sum = sum + down2 * at(0, 2);
        if constexpr (left2 != 0) sum = sum + left2 * at(-2, 0);
        if constexpr (right2 != 0) sum = sum + right2 * at(2, 0);
        return sum;
    }
};

// clang-format off
//                    C  N+S  W+E  diagonal  N2  S2  W2  E2
using Q1 = Weighted<  8,  4,   4,    0,      -2, -2, -2, -2>;
using Q2 = Weighted< 12,  0,   0,    4,      -2, -2, -2, -2>;
using Q3 = Weighted< 12,  0,   0,    4,      -3, -3, -3, -3>;
using Q4 = Weighted< 12,  0,   0,    4,      -3, -2, -2, -3>;
using Q5 = Weighted< 10,  8,   0,   -2,      -2, -2,  0,  0>;
using Q6 = Weighted< 10,  0,   8,   -2,       0,  0, -2, -2>;
using Q7 = Weighted< 10,  0,   8,   -2,       1,  0, -2, -2>;
using Q8 = Weighted< 10,  8,   0,   -2,      -2, -2,  1,  1>;
using Q9 = Weighted< 10,  0,   8,   -2,       1,  1, -2, -2>;
// clang-format on

/// A stencil centred one column to the right and one row up.
template <typename Stencil>
struct UpRight {
    static constexpr int fraction = Stencil::fraction;
    template <typename Window>
    VEXA_DEVICE auto operator()(const Window& at) const
    {
        return Stencil{}([&](int dx, int dy) { return at(dx + 1, dy - 1); });
    }
};

/// A slot that is left 0.
struct None {
    static constexpr int fraction = 0;
    template <typename Window>
    VEXA_DEVICE auto operator()(const Window& at) const
    {
        return 0 * at(0, 0);
    }
};

/// The stencils of the three slots of a pixel.
template <typename Slot0, typename Slot1, typename Slot2>
struct Cell {
    /// Their values, each stored by `store`.
    template <typename Window, typename Store>
    VEXA_DEVICE auto operator()(const Window& at, const Store& store) const
    {
        return store(Slot0{}(at) >> Slot0::fraction, Slot1{}(at) >> Slot1::fraction, Slot2{}(at) >> Slot2::fraction);
    }
};

/// How far the stencils of a kernel reach.
using PlainReach = Reach<2, 2, 1, 1>;
using WideReach = Reach<2, 3, 3, 2>;

/// The cells of a kernel by the parity of column and row.
template <typename ReachOfAll, typename EvenEven, typename OddEven, typename EvenOdd, typename OddOdd>
struct Stencils {
    using Reach = ReachOfAll;
    static VEXA_DEVICE EvenEven cell(Parity<false, false>) { return {}; }
    static VEXA_DEVICE OddEven cell(Parity<true, false>) { return {}; }
    static VEXA_DEVICE EvenOdd cell(Parity<false, true>) { return {}; }
    static VEXA_DEVICE OddOdd cell(Parity<true, true>) { return {}; }
};

template <typename... Cells>
using Plain = Stencils<PlainReach, Cells...>;
template <typename... Cells>
using HighQuality = Stencils<WideReach, Cells...>;

using Q5Up = UpRight<Q5>;
using Q6Up = UpRight<Q6>;

// Every cell is as it must be: the layouts are no rotations of one another, and two cells have gaps.
// clang-format off
//                             even column, even row   odd column, even row    even column, odd row    odd column, odd row
using Rggb      = Plain<       Cell<D4,   G4, C   >,   Cell<V2,   C,  H2  >,   Cell<H2,   C,  V2  >,   Cell<C,    G4, D4  >>;
using Bggr      = Plain<       Cell<C,    G4, D4  >,   Cell<H2,   C,  V2  >,   Cell<V2,   C,  H2  >,   Cell<D4,   G4, C   >>;
using Grbg      = Plain<       Cell<H2,   C,  V2  >,   Cell<C,    G4, D4  >,   Cell<D4,   G4, C   >,   Cell<V2,   C,  H2  >>;
using Gbrg      = Plain<       Cell<C,    G4, D4  >,   Cell<None, None, None>, Cell<D4,   G4, C   >,   Cell<V2,   C,  H2  >>;

using RggbHq    = HighQuality< Cell<Q4,   Q1, C   >,   Cell<Q5,   C,  Q7  >,   Cell<Q7,   C,  Q5  >,   Cell<C,    Q1, Q2  >>;
using BggrHq    = HighQuality< Cell<Q6Up, C,  Q5Up>,   Cell<C,    Q1, Q2  >,   Cell<Q2,   Q1, C   >,   Cell<Q5Up, C,  Q6Up>>;
using GrbgHq    = HighQuality< Cell<Q2,   Q1, C   >,   Cell<Q5Up, C,  Q6Up>,   Cell<Q6Up, C,  Q5Up>,   Cell<C,    Q1, Q2  >>;
using GbrgHq    = HighQuality< Cell<Q2,   Q1, C   >,   Cell<Q6Up, C,  Q5Up>,   Cell<None, C,  None>,   Cell<C,    Q1, Q2  >>;

using RggbHq16u = HighQuality< Cell<Q3,   Q1, C   >,   Cell<Q8,   C,  Q9  >,   Cell<Q9,   C,  Q8  >,   Cell<C,    Q1, Q3  >>;
using BggrHq16u = HighQuality< Cell<Q6,   C,  Q5  >,   Cell<C,    Q1, Q2  >,   Cell<Q2,   Q1, C   >,   Cell<Q5,   C,  Q6  >>;
using GrbgHq16u = HighQuality< Cell<Q2,   Q1, C   >,   Cell<Q5,   C,  Q6  >,   Cell<Q6,   C,  Q5  >,   Cell<C,    Q1, Q2  >>;
using GbrgHq16u = HighQuality< Cell<Q2,   Q1, C   >,   Cell<Q6,   C,  Q5  >,   Cell<None, C,  None>,   Cell<C,    Q1, Q2  >>;
// clang-format on

/// 8 bits: a negative value is 0, of one above 255 the low bits stay. Overshoots of the HQ stencils wrap on purpose.
struct LowBits {
    template <typename... Value>
    VEXA_DEVICE Pixel<u8, 3> operator()(Value... value) const
    {
        return {{static_cast<u8>(larger(value, Value(0)).value)...}};
    }
};

/// 16 bits: clamped to what the data bits can hold.
struct Clamped {
    int highest;

    template <typename... Value>
    VEXA_DEVICE Pixel<u16, 3> operator()(Value... value) const
    {
        return {{static_cast<u16>(smaller(larger(value, Value(0)), Value(highest)).value)...}};
    }
};

template <typename Table, typename T, typename Store>
VEXA_DEVICE void interpolate(const T* src, T* dst, int width, int height, int srcPitch, int dstPitch,
                             const Store& store)
{
    forEachMosaicPixel<typename Table::Reach, Sum<T>>(
        FetchClamped<T>{src, width, height, srcPitch}, Interleaved<T, 3>{dst, dstPitch},
        [=](auto parity, const auto& window) { return Table::cell(parity)(window, store); });
}

}  // namespace

VEXA_KERNEL bayer2rgb_BGGR_8u(u8* src, u8* dst, int width, int height, int srcPitch, int dstPitch)
{
    interpolate<Bggr>(src, dst, width, height, srcPitch, dstPitch, LowBits{});
}

VEXA_KERNEL bayer2rgb_GBRG_8u(u8* src, u8* dst, int width, int height, int srcPitch, int dstPitch)
{
    interpolate<Gbrg>(src, dst, width, height, srcPitch, dstPitch, LowBits{});
}

VEXA_KERNEL bayer2rgb_GRBG_8u(u8* src, u8* dst, int width, int height, int srcPitch, int dstPitch)
{
    interpolate<Grbg>(src, dst, width, height, srcPitch, dstPitch, LowBits{});
}

VEXA_KERNEL bayer2rgb_RGGB_8u(u8* src, u8* dst, int width, int height, int srcPitch, int dstPitch)
{
    interpolate<Rggb>(src, dst, width, height, srcPitch, dstPitch, LowBits{});
}

VEXA_KERNEL bayer2rgb_BGGR_HQ(u8* src, u8* dst, int width, int height, int srcPitch, int dstPitch)
{
    interpolate<BggrHq>(src, dst, width, height, srcPitch, dstPitch, LowBits{});
}

VEXA_KERNEL bayer2rgb_GRBG_HQ(u8* src, u8* dst, int width, int height, int srcPitch, int dstPitch)
{
    interpolate<GrbgHq>(src, dst, width, height, srcPitch, dstPitch, LowBits{});
}

VEXA_KERNEL bayer2rgb_RGGB_HQ(u8* src, u8* dst, int width, int height, int srcPitch, int dstPitch)
{
    interpolate<RggbHq>(src, dst, width, height, srcPitch, dstPitch, LowBits{});
}

VEXA_KERNEL bayer2rgb_GBRG_HQ(u8* src, u8* dst, int width, int height, int srcPitch, int dstPitch)
{
    interpolate<GbrgHq>(src, dst, width, height, srcPitch, dstPitch, LowBits{});
}

VEXA_KERNEL bayer2rgb_BGGR_16u(u16* src, u16* dst, int width, int height, int srcPitch, int dstPitch, int maxVal)
{
    interpolate<Bggr>(src, dst, width, height, srcPitch, dstPitch, Clamped{maxVal});
}

VEXA_KERNEL bayer2rgb_GBRG_16u(u16* src, u16* dst, int width, int height, int srcPitch, int dstPitch, int maxVal)
{
    interpolate<Gbrg>(src, dst, width, height, srcPitch, dstPitch, Clamped{maxVal});
}

VEXA_KERNEL bayer2rgb_GRBG_16u(u16* src, u16* dst, int width, int height, int srcPitch, int dstPitch, int maxVal)
{
    interpolate<Grbg>(src, dst, width, height, srcPitch, dstPitch, Clamped{maxVal});
}

VEXA_KERNEL bayer2rgb_RGGB_16u(u16* src, u16* dst, int width, int height, int srcPitch, int dstPitch, int maxVal)
{
    interpolate<Rggb>(src, dst, width, height, srcPitch, dstPitch, Clamped{maxVal});
}

VEXA_KERNEL bayer2rgb_BGGR_HQ_16u(u16* src, u16* dst, int width, int height, int srcPitch, int dstPitch, int maxVal)
{
    interpolate<BggrHq16u>(src, dst, width, height, srcPitch, dstPitch, Clamped{maxVal});
}

VEXA_KERNEL bayer2rgb_GRBG_HQ_16u(u16* src, u16* dst, int width, int height, int srcPitch, int dstPitch, int maxVal)
{
    interpolate<GrbgHq16u>(src, dst, width, height, srcPitch, dstPitch, Clamped{maxVal});
}

VEXA_KERNEL bayer2rgb_RGGB_HQ_16u(u16* src, u16* dst, int width, int height, int srcPitch, int dstPitch, int maxVal)
{
    interpolate<RggbHq16u>(src, dst, width, height, srcPitch, dstPitch, Clamped{maxVal});
}

VEXA_KERNEL bayer2rgb_GBRG_HQ_16u(u16* src, u16* dst, int width, int height, int srcPitch, int dstPitch, int maxVal)
{
    interpolate<GbrgHq16u>(src, dst, width, height, srcPitch, dstPitch, Clamped{maxVal});
}

namespace {

/// The kernels in the order of VexaBayerSeq, from BGGR on.
void (*const kernels8u[])(u8*, u8*, int, int, int, int) = {
    bayer2rgb_BGGR_8u, bayer2rgb_GBRG_8u, bayer2rgb_GRBG_8u, bayer2rgb_RGGB_8u,
    bayer2rgb_BGGR_HQ, bayer2rgb_GRBG_HQ, bayer2rgb_RGGB_HQ, bayer2rgb_GBRG_HQ,
};
void (*const kernels16u[])(u16*, u16*, int, int, int, int, int) = {
    bayer2rgb_BGGR_16u,    bayer2rgb_GBRG_16u,    bayer2rgb_GRBG_16u,    bayer2rgb_RGGB_16u,
    bayer2rgb_BGGR_HQ_16u, bayer2rgb_GRBG_HQ_16u, bayer2rgb_RGGB_HQ_16u, bayer2rgb_GBRG_HQ_16u,
};

/// Launches the kernel that `seq` names, with the arguments that only its family has.
template <typename T, std::size_t count, typename... P, typename... A>
VexaStatus launchOneOf(void (*const (&kernels)[count])(P...), T* pSrc, T* pDst, const VexaSize& imgSize, int srcPitch,
                       int dstPitch, VexaBayerSeq seq, cudaStream_t stream, A... own)
{
    if (pSrc == nullptr) return VEXA_NULL_POINTER_ERROR;
    if (imgSize.width < 1 || imgSize.height < 1) return VEXA_SIZE_ERROR;
    if (seq < VEXA_BAYER_BGGR || seq > VEXA_BAYER_GBRG_HQ) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    launch(kernels[seq - VEXA_BAYER_BGGR], Extent{imgSize.width, imgSize.height}, stream, pSrc, pDst, imgSize.width,
           imgSize.height, elements<T>(srcPitch), elements<T>(dstPitch), own...);
    return VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexa_bayerToRgb_8u_C1(Vexa8u* pSrc, Vexa8u* pDst, VexaSize imgSize, Vexa32s srcPitch, Vexa32s dstPitch,
                                 VexaBayerSeq seq, cudaStream_t stream)
{
    return launchOneOf(kernels8u, pSrc, pDst, imgSize, srcPitch, dstPitch, seq, stream);
}

VexaStatus vexa_bayerToRgb_16u_C1(Vexa16u* pSrc, Vexa16u* pDst, VexaSize imgSize, Vexa32s srcPitch, Vexa32s dstPitch,
                                  VexaBayerSeq seq, Vexa32s dataBits, cudaStream_t stream)
{
    return launchOneOf(kernels16u, pSrc, pDst, imgSize, srcPitch, dstPitch, seq, stream, int{highestOf<u16>(dataBits)});
}

namespace vexa::colorOperations {

VexaStatus demosaic(const VexaImage& src, VexaImage& dst, const VexaBayerSeq sensorAlignment, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreateColors(dst, src)) return failed;
    if (src.depth() == 8)
        return vexa_bayerToRgb_8u_C1(src.ptr<u8>(), dst.ptr<u8>(), src.size(), src.pitch(), dst.pitch(),
                                     sensorAlignment, handle(stream));
    if (src.depth() == 16)
        return vexa_bayerToRgb_16u_C1(src.ptr<u16>(), dst.ptr<u16>(), src.size(), src.pitch(), dst.pitch(),
                                      sensorAlignment, src.dataBits(), handle(stream));
    return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
}

}  // namespace vexa::colorOperations
