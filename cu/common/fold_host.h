/// @file
/// Folding on the host: a tile is one share, and its pixels go to lanes side by side.

#pragma once

namespace vexa {

/// The pixels of a tile that one thread folds.
struct Share {
    static constexpr int count = 1;
    static constexpr int columns = 1;
    static constexpr int rows = 1;
    int index = 0;
    int column = 0;
    int row = 0;
};

/// Lanes of pixels of elements T: GCC vectorises a row of lanes only as wide as its narrowest elements fill.
template <typename T>
inline constexpr int laneCount = 64 / static_cast<int>(sizeof(T));

/// Alignment of lanes. GCC aligns others by doing some at the front one by one, which takes up to four times as long.
inline constexpr std::size_t laneAlignment = 64;

/// rule(i) for every lane.
template <int lanes, typename Rule>
VEXA_DEVICE void forEachLane(const Rule& rule)
{
#pragma omp simd
    for (int i = 0; i < lanes; ++i) rule(i);
}

/// store(i, fold(i, share)) for every i below count, where the results of all shares are merged into one. An i costs
/// about as much as reading `bytes`.
template <typename Total, typename Fold, typename Store>
inline void foldEach(int count, std::size_t bytes, const Fold& fold, const Store& store)
{
    platform::parallelRanges(static_cast<std::size_t>(count), bytes, [=](std::size_t begin, std::size_t end) {
        const Fold ownFold = fold;
        const Store ownStore = store;
        for (std::size_t i = begin; i < end; ++i) ownStore(static_cast<int>(i), ownFold(static_cast<int>(i), Share{}));
    });
}

}  // namespace vexa
