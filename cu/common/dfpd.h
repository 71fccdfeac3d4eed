/// @file
/// Directional filtering with a posteriori decision, beside its kernels: where the colours of a layout lie, and the
/// three passes in one where the platform has that.

#pragma once

#include "mosaics.h"
#include "narrow.h"

namespace vexa {

/// Where the colours of a layout lie. Each row holds green and either red or blue.
template <VexaBayerSeq seq>
struct Sites {
    static constexpr bool redInOddColumns = seq == VEXA_BAYER_BGGR || seq == VEXA_BAYER_GRBG;
    static constexpr bool redInOddRows = seq == VEXA_BAYER_BGGR || seq == VEXA_BAYER_GBRG;

    static VEXA_DEVICE bool isRed(int y) { return (y % 2 != 0) == redInOddRows; }

    /// The slot of the colour that row y holds beside green.
    static VEXA_DEVICE int slot(int y) { return isRed(y) ? 2 : 0; }

    /// Whether row y is green in odd columns.
    static VEXA_DEVICE bool isGreenInOddColumns(int y) { return isRed(y) != redInOddColumns; }

    static VEXA_DEVICE bool isGreen(int x, int y) { return (x % 2 != 0) == isGreenInOddColumns(y); }
};

}  // namespace vexa

#if defined(__CUDACC__)

namespace vexa {

/// A GPU takes its passes one by one.
template <typename Sites, typename T>
bool demosaicAtOnce(const FetchZero<T>& /*src*/, Interleaved<T, 3> /*dst*/, int /*maxVal*/)
{
    return false;
}

}  // namespace vexa

#else
#include "dfpd_host.h"
#endif
