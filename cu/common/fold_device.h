/// @file
/// Folding on the GPU: a block folds a tile. Each of its threads takes a share of the pixels, neighbours in a warp, and
/// the shares are merged by halves in shared memory.

#pragma once

namespace vexa {

/// The pixels of a tile that one thread folds.
struct Share {
    static constexpr int count = blockSide * blockSide;
    static constexpr int columns = 32;
    static constexpr int rows = count / columns;
    int index;
    int column;
    int row;
};

/// A thread has one lane: lanes are what threads are for.
template <typename T>
inline constexpr int laneCount = 1;

/// Alignment of lanes; of no matter in registers.
inline constexpr std::size_t laneAlignment = 16;

/// rule(i) for every lane.
template <int lanes, typename Rule>
VEXA_DEVICE void forEachLane(const Rule& rule)
{
#pragma unroll
    for (int i = 0; i < lanes; ++i) rule(i);
}

/// store(i, fold(i, share)) for every i below count, where the results of all shares are merged into one.
template <typename Total, typename Fold, typename Store>
VEXA_DEVICE void foldEach(int count, std::size_t /*bytes*/, const Fold& fold, const Store& store)
{
    __shared__ Total totals[Share::count];
    const int thread = static_cast<int>(threadIdx.y * blockDim.x + threadIdx.x);
    const Share share{thread, thread % Share::columns, thread / Share::columns};
    for (int i = static_cast<int>(blockIdx.x); i < count; i += static_cast<int>(gridDim.x)) {
        totals[thread] = fold(i, share);
        __syncthreads();
        for (int half = Share::count / 2; half > 0; half /= 2) {
            if (thread < half) totals[thread].merge(totals[thread + half]);
            __syncthreads();
        }
        if (thread == 0) store(i, totals[0]);
        __syncthreads();
    }
}

}  // namespace vexa
