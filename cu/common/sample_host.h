/// @file
/// Sampling on the host, by parts of rows: positions and weights in vector registers first, then the taps, pixel by
/// pixel, then what is made of them in vector registers again.

#pragma once

#include "moves.h"

namespace vexa {

namespace detail {

/// Pixels of a row at a time: all that is known of them stays in the cache next to the processor.
constexpr int spotsAtATime = 256;

template <typename Way>
struct Spots {
    Share share[spotsAtATime];
    int x[spotsAtATime];
    int y[spotsAtATime];
    Way tx[spotsAtATime];
    Way ty[spotsAtATime];

    Spot<Way> operator[](int i) const { return {share[i], x[i], y[i], tx[i], ty[i]}; }
};

/// A run of spots.
struct Run {
    int begin;
    int end;
};

// ---- four lanes ----

/// Four elements as lanes of a register.
template <typename T>
struct Lanes {
    typedef T Four __attribute__((vector_size(4 * sizeof(T))));
};
template <typename T>
using Four = typename Lanes<T>::Four;

/// As many as a register of 16 bytes has.
template <typename T>
struct LanesOfRegister {
    typedef T Type __attribute__((vector_size(16)));
};
using Bytes = unsigned char __attribute__((vector_size(16)));

// By shuffles of bytes: GCC converts vectors of small elements one by one.

/// Four elements, converted to type W: float or an integer of 32 bits.
template <typename W, typename T>
inline Four<W> loadFour(const T* from)
{
    if constexpr (std::is_same_v<T, W>) {
        Four<T> elements;
        std::memcpy(&elements, from, sizeof elements);
        return elements;
    } else {
        using Word = std::conditional_t<sizeof(T) == 1, std::uint32_t, std::uint64_t>;
        Word word;
        std::memcpy(&word, from, sizeof word);
        using Words = typename LanesOfRegister<Word>::Type;
        const Bytes bytes = reinterpret_cast<Bytes>(Words{word});
        const Bytes spread =
            sizeof(T) == 1
                ? __builtin_shufflevector(bytes, Bytes{}, 0, 16, 16, 16, 1, 16, 16, 16, 2, 16, 16, 16, 3, 16, 16, 16)
                : __builtin_shufflevector(bytes, Bytes{}, 0, 1, 16, 16, 2, 3, 16, 16, 4, 5, 16, 16, 6, 7, 16, 16);
        return __builtin_convertvector(reinterpret_cast<Four<int>>(spread), Four<W>);
    }
}

/// The first C lanes as elements, whose range they don't leave; or four, where the next may be overwritten.
template <int C, typename T, typename Wide>
inline void storeLanes(T* to, Wide lanes)
{
    if constexpr (sizeof(T) == sizeof lanes[0]) {
        std::memcpy(to, &lanes, C * sizeof(T));
    } else {
        const Bytes bytes = reinterpret_cast<Bytes>(lanes);
        const Bytes packed =
            sizeof(T) == 1 ? __builtin_shufflevector(bytes, bytes, 0, 4, 8, 12, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0)
                           : __builtin_shufflevector(bytes, bytes, 0, 1, 4, 5, 8, 9, 12, 13, 0, 0, 0, 0, 0, 0, 0, 0);
        std::memcpy(to, &packed, C * sizeof(T));
    }
}

/// As `rounded`, in lanes.
template <int C, typename T, int N>
inline void storeRounded(T* to, Four<float> value, Range range)
{
    if constexpr (std::is_integral_v<T>) {
        value = value + 0.5F;
        if constexpr (N == 4) {
            value = value > range.highest ? Four<float>{} + range.highest : value;
            value = value > range.lowest ? value : Four<float>{} + range.lowest;
        }
        storeLanes<C>(to, __builtin_convertvector(value, Four<int>));
    } else {
        storeLanes<C>(to, value);
    }
}

// ---- runs of pixels that need no care ----

template <typename T, int C>
inline void sampleRun(const SampleNearest<T, C>& sampler, const Spots<float>& spots, Run run, T* to)
{
    const Sampled<T, C> src = sampler.src;
    const int last = run.end - 1;
    for (int i = run.begin; i < last; ++i, to += C) copyWide<C>(to, src.at(spots.x[i], spots.y[i]));
    copyPixel<C>(to, src.at(spots.x[last], spots.y[last]));
}

/// The two by two taps of one-channel pixels, side by side.
template <typename T>
struct Neighbours {
    T upper[2 * spotsAtATime];
    T lower[2 * spotsAtATime];

    template <typename Way>
    void load(const Sampled<T, 1>& src, const Spots<Way>& spots, Run run)
    {
        for (int i = run.begin; i < run.end; ++i) {
            const T* const from = src.at(spots.x[i], spots.y[i]);
            std::memcpy(upper + 2 * i, from, 2 * sizeof(T));
            std::memcpy(lower + 2 * i, from + src.pitch, 2 * sizeof(T));
        }
    }
};

template <typename T>
inline void sampleRun(const SampleBetween<T, 1, 2>& sampler, const Spots<float>& spots, Run run, T* to)
{
    Neighbours<T> taps;
    taps.load(sampler.src, spots, run);
    const Range range = sampler.range;
    const float* const tx = spots.tx;
    const float* const ty = spots.ty;
    const T* const upper = taps.upper;
    const T* const lower = taps.lower;
    to -= run.begin;
#pragma omp simd
    for (int i = run.begin; i < run.end; ++i) {
        const float left = (1.0F - ty[i]) * static_cast<float>(upper[2 * i]) + ty[i] * static_cast<float>(lower[2 * i]);
        const float right =
            (1.0F - ty[i]) * static_cast<float>(upper[2 * i + 1]) + ty[i] * static_cast<float>(lower[2 * i + 1]);
        to[i] = rounded<T, 2>((1.0F - tx[i]) * left + tx[i] * right, range);
    }
}

/// Weights of a run, tap by tap.
template <int N>
struct WeightsOfRun {
    float across[N][spotsAtATime];
    float down[N][spotsAtATime];

    WeightsOfRun(const Spots<float>& spots, Run run)
    {
#pragma omp simd
        for (int i = run.begin; i < run.end; ++i) {
            const Weights<N> x = weightsAt<N>(spots.tx[i]);
            const Weights<N> y = weightsAt<N>(spots.ty[i]);
            for (int k = 0; k < N; ++k) {
                across[k][i] = x.weight[k];
                down[k][i] = y.weight[k];
            }
        }
    }
};

/// Four taps of a row are the lanes.
template <typename T>
inline void sampleRun(const SampleBetween<T, 1, 4>& sampler, const Spots<float>& spots, Run run, T* to)
{
    const Sampled<T, 1> src = sampler.src;
    const Range range = sampler.range;
    const WeightsOfRun<4> weights(spots, run);
    float column[4][spotsAtATime];
    for (int i = run.begin; i < run.end; ++i) {
        const T* const from = src.at(spots.x[i] - 1, spots.y[i] - 1);
        Four<float> columns = weights.down[0][i] * loadFour<float>(from);
        for (int k = 1; k < 4; ++k)
            columns = columns + weights.down[k][i] * loadFour<float>(from + static_cast<std::ptrdiff_t>(k) * src.pitch);
        for (int k = 0; k < 4; ++k) column[k][i] = columns[k];
    }
    to -= run.begin;
#pragma omp simd
    for (int i = run.begin; i < run.end; ++i) {
        float value = weights.across[0][i] * column[0][i];
        for (int k = 1; k < 4; ++k) value = value + weights.across[k][i] * column[k][i];
        to[i] = rounded<T, 4>(value, range);
    }
}

/// The channels of a tap are the lanes.
template <typename T, int N>
inline void sampleRun(const SampleBetween<T, 3, N>& sampler, const Spots<float>& spots, Run run, T* to)
{
    constexpr int before = N / 2 - 1;
    const Sampled<T, 3> src = sampler.src;
    const Range range = sampler.range;
    const WeightsOfRun<N> weights(spots, run);
    const auto pixel = [&](int i) {
        const T* const from = src.at(spots.x[i] - before, spots.y[i] - before);
        const auto column = [&](int j) {
            Four<float> sum = weights.down[0][i] * loadFour<float>(from + 3 * j);
            for (int k = 1; k < N; ++k)
                sum = sum +
                      weights.down[k][i] * loadFour<float>(from + static_cast<std::ptrdiff_t>(k) * src.pitch + 3 * j);
            return sum;
        };
        Four<float> value = weights.across[0][i] * column(0);
        for (int j = 1; j < N; ++j) value = value + weights.across[j][i] * column(j);
        return value;
    };
    const int last = run.end - 1;
    for (int i = run.begin; i < last; ++i, to += 3) storeRounded<4, T, N>(to, pixel(i), range);
    storeRounded<3, T, N>(to, pixel(last), range);
}

template <typename T>
inline void sampleRun(const SampleTexture<T, 1>& sampler, const Spots<int>& spots, Run run, T* to)
{
    Neighbours<T> taps;
    taps.load(sampler.src, spots, run);
    to -= run.begin;
#pragma omp simd
    for (int i = run.begin; i < run.end; ++i) {
        const auto wide = [](T tap) { return static_cast<typename SampleTexture<T, 1>::Wide>(tap); };
        to[i] =
            static_cast<T>(sampler.mean(wide(taps.upper[2 * i]), wide(taps.upper[2 * i + 1]), wide(taps.lower[2 * i]),
                                        wide(taps.lower[2 * i + 1]), spots.tx[i], spots.ty[i]));
    }
}

template <typename T>
inline void sampleRun(const SampleTexture<T, 3>& sampler, const Spots<int>& spots, Run run, T* to)
{
    using Wide = typename SampleTexture<T, 3>::Wide;
    const Sampled<T, 3> src = sampler.src;
    const auto pixel = [&](int i) {
        const T* const upper = src.at(spots.x[i], spots.y[i]);
        const T* const lower = upper + src.pitch;
        return sampler.mean(loadFour<Wide>(upper), loadFour<Wide>(upper + 3), loadFour<Wide>(lower),
                            loadFour<Wide>(lower + 3), spots.tx[i], spots.ty[i]);
    };
    const int last = run.end - 1;
    for (int i = run.begin; i < last; ++i, to += 3) storeLanes<4>(to, pixel(i));
    storeLanes<3>(to, pixel(last));
}

// ---- rows ----

/// The spots from `begin` on that share alike.
template <typename Way>
inline Run runFrom(const Spots<Way>& spots, int begin, int count)
{
    const Share share = spots.share[begin];
    // Mostly all that are left do, and to count them is faster than to find the first that doesn't.
    int alike = 0;
#pragma omp simd reduction(+ : alike)
    for (int i = begin; i < count; ++i) alike += spots.share[i] == share ? 1 : 0;
    if (alike == count - begin) return {begin, count};
    int end = begin + 1;
    while (spots.share[end] == share) ++end;
    return {begin, end};
}

template <int C, bool clears, typename T, typename Way, typename Sampler>
inline void sampleSpots(const Sampler& sampler, const Spots<Way>& spots, int count, T* to)
{
    for (Run run = runFrom(spots, 0, count);; run = runFrom(spots, run.end, count)) {
        T* const first = to + static_cast<std::ptrdiff_t>(C) * run.begin;
        switch (spots.share[run.begin]) {
            case Share::none:
                if (clears) std::memset(first, 0, static_cast<std::size_t>(C * (run.end - run.begin)) * sizeof(T));
                break;
            case Share::part:
                for (int i = run.begin; i < run.end; ++i)
                    sampler.careful(spots[i], to + static_cast<std::ptrdiff_t>(C) * i);
                break;
            case Share::all:
                sampleRun(sampler, spots, run, first);
                break;
        }
        if (run.end == count) return;
    }
}

/// The spots of pixels x to x + count of row y. Sampler and map by value, so that stores can't alias them.
template <typename Position, typename Way, typename Map, typename Sampler>
inline void placeSpots(int x, int y, int count, Map map, Sampler sampler, Spots<Way>& spots)
{
    // In two loops, as GCC would give clamped positions ways of their own. They are turned into vector code unasked;
    // clang can't do so for pairs of floats.
    Position position[spotsAtATime];
    for (int i = 0; i < count; ++i) position[i] = sampler.bounded(map(x + i, y));
    for (int i = 0; i < count; ++i) {
        const Spot<Way> spot = sampler.place(position[i]);
        spots.share[i] = spot.share;
        spots.x[i] = spot.x;
        spots.y[i] = spot.y;
        spots.tx[i] = spot.tx;
        spots.ty[i] = spot.ty;
    }
}

template <int C, bool clears, typename T, typename Map, typename Sampler>
inline void sampleRows(int width, int height, Plane<T> dst, const Map& map, const Sampler& sampler)
{
    if (width < 1 || height < 1) return;
    constexpr std::size_t bytesPerPixel = 8 * C * sizeof(T);
    using Position = decltype(map(0, 0));
    using Way = decltype(sampler.place(Position{}).tx);
    // Tiles, as rows of the result may run along columns of the source. Narrower ones halve the speed of other angles.
    constexpr int tileWidth = 4 * spotsAtATime;
    constexpr int tileHeight = 32;
    const std::size_t across = (static_cast<std::size_t>(width) + tileWidth - 1) / tileWidth;
    const std::size_t down = (static_cast<std::size_t>(height) + tileHeight - 1) / tileHeight;
    const auto body = [=](std::size_t begin, std::size_t end) {
        Spots<Way> spots;
        for (std::size_t i = begin; i < end; ++i) {
            const int left = static_cast<int>(i % across) * tileWidth;
            const int top = static_cast<int>(i / across) * tileHeight;
            const int right = left + std::min(tileWidth, width - left);
            const int bottom = top + std::min(tileHeight, height - top);
            for (int y = top; y < bottom; ++y)
                for (int x = left; x < right;) {
                    const int count = std::min(spotsAtATime, right - x);
                    placeSpots<Position>(x, y, count, map, sampler, spots);
                    sampleSpots<C, clears>(sampler, spots, count, dst.row(y) + static_cast<std::ptrdiff_t>(C) * x);
                    x += count;
                }
        }
    };
    platform::parallelRanges(across * down, tileWidth * tileHeight * bytesPerPixel, body);
}

}  // namespace detail

/// The pixels that the source reaches; the others stay as they are.
template <int C, typename T, typename Map, typename Sampler>
inline void samplePixels(int width, int height, Plane<T> dst, const Map& map, const Sampler& sampler)
{
    detail::sampleRows<C, false>(width, height, dst, map, sampler);
}

/// The same; pixels that the source doesn't share are 0.
template <int C, typename T, typename Map, typename Sampler>
inline void samplePixelsOrClear(int width, int height, Plane<T> dst, const Map& map, const Sampler& sampler)
{
    detail::sampleRows<C, true>(width, height, dst, map, sampler);
}

}  // namespace vexa
