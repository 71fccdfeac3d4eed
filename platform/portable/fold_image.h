/// @file
/// Folding an image: a kernel folds its tiles into partial results in a scratch block, a second one merges these.

#pragma once

#include "folds.h"
#include "platform.h"

namespace vexa::statistics {

/// How a fold begins on a tile, from what the inputs hold there: from nothing.
template <typename Fold>
struct FromNothing {
    template <typename... Input>
    VEXA_DEVICE Fold operator()(Tile, Share, const Input&...) const
    {
        return {};
    }
};

/// One partial result a tile.
template <int C, typename Fold, typename Begin, typename... Input>
VEXA_LOCAL_KERNEL kernel_foldTiles(Tiles tiles, Begin begin, typename Fold::Total* partials, Input... input)
{
    using Total = typename Fold::Total;
    const std::size_t bytesPerTile = static_cast<std::size_t>(tiles.tileWidth) *
                                     static_cast<std::size_t>(tiles.tileHeight) * (Input::bytesPerPixel + ...);
    const auto foldOne = [=](int i, Share share) {
        const Tile tile = tiles[i];
        Fold fold = begin(tile, share, input...);
        foldTile<C>(fold, tile, share, input...);
        return fold.total();
    };
    foldEach<Total>(tiles.count, bytesPerTile, foldOne, [=](int i, const Total& total) { partials[i] = total; });
}

/// Merges the partial results, and stores what the finish makes of them.
template <typename Total, typename Finish>
VEXA_LOCAL_KERNEL kernel_merge(const Total* partials, int count, Finish finish)
{
    const auto mergeShare = [=](int, Share share) {
        Total total = Total::none();
        for (int i = share.index; i < count; i += Share::count) total.merge(partials[i]);
        return total;
    };
    foldEach<Total>(1, 0, mergeShare, [=](int, const Total& total) { finish(total); });
}

/// Launches both kernels. A failure on the device shows when the results are fetched.
template <typename Fold, int C, typename Begin, typename Finish, typename... Input>
void fold(int width, int height, void* scratch, platform::Stream stream, const Begin& begin, const Finish& finish,
          const Input&... input)
{
    using Total = typename Fold::Total;
    const Tiles tiles = tilesOf(width, height);
    auto* const partials = static_cast<Total*>(scratch);
    constexpr int largestGrid = 1 << 20;
    launch(kernel_foldTiles<C, Fold, Begin, Input...>, {blockSide * std::min(tiles.count, largestGrid), blockSide},
           stream, tiles, begin, partials, input...);
    launch(kernel_merge<Total, Finish>, {blockSide, blockSide}, stream, partials, tiles.count, finish);
}

}  // namespace vexa::statistics
