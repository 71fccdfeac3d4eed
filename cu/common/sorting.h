/// @file
/// Sorting networks: sorting by exchanges whose places are known when the library is compiled. So values stay in
/// registers, pixels side by side take the same steps, and exchanges that no result needs fall away.

#pragma once

#include <cstddef>
#include <utility>

#include "target.h"

namespace vexa {

namespace detail {

struct Exchange {
    int low;
    int high;
};

/// Exchanges that put N values in order, and in which place each rank then is.
template <int N>
struct Network {
    int count = 0;
    Exchange exchanges[16 * N] = {};
    int place[N] = {};
};

/// Writes a network. Places are merged by their numbers, so that nothing is moved between exchanges.
template <int N>
class NetworkBuilder {
public:
    constexpr void sort(const int* places, int count, int* sorted)
    {
        if (count == 1) sorted[0] = places[0];
        if (count <= 1) return;
        int halves[N] = {};
        const int half = count / 2;
        sort(places, half, halves);
        sort(places + half, count - half, halves + half);
        merge(halves, half, halves + half, count - half, sorted);
    }

    /// Batcher's odd-even merge of two sorted runs (Knuth, The Art of Computer Programming, 5.3.4).
    constexpr void merge(const int* a, int countA, const int* b, int countB, int* merged)
    {
        if (countA == 0 || countB == 0) {
            for (int i = 0; i < countA + countB; ++i) merged[i] = countA == 0 ? b[i] : a[i];
            return;
        }
        if (countA == 1 && countB == 1) {
            exchange(a[0], b[0]);
            merged[0] = a[0];
            merged[1] = b[0];
            return;
        }
        int even[N] = {};
        int odd[N] = {};
        const int evens = mergeEverySecond(a, countA, b, countB, 0, even);
        const int odds = mergeEverySecond(a, countA, b, countB, 1, odd);
        merged[0] = even[0];
        int i = 0;
        for (; i < odds && i + 1 < evens; ++i) {
            exchange(odd[i], even[i + 1]);
            merged[2 * i + 1] = odd[i];
            merged[2 * i + 2] = even[i + 1];
        }
        if (i < odds) merged[2 * i + 1] = odd[i];
        if (i + 1 < evens) merged[2 * i + 1] = even[i + 1];
    }

    Network<N> network;

private:
    constexpr void exchange(int low, int high) { network.exchanges[network.count++] = {low, high}; }

    constexpr int mergeEverySecond(const int* a, int countA, const int* b, int countB, int from, int* merged)
    {
        int ofA[N] = {};
        int ofB[N] = {};
        int sizeA = 0;
        int sizeB = 0;
        for (int i = from; i < countA; i += 2) ofA[sizeA++] = a[i];
        for (int i = from; i < countB; i += 2) ofB[sizeB++] = b[i];
        merge(ofA, sizeA, ofB, sizeB, merged);
        return sizeA + sizeB;
    }
};

template <int N>
constexpr Network<N> sortingNetwork()
{
    int places[N] = {};
    for (int i = 0; i < N; ++i) places[i] = i;
    NetworkBuilder<N> builder{};
    builder.sort(places, N, builder.network.place);
    return builder.network;
}

template <int A, int B>
constexpr Network<A + B> mergingNetwork()
{
    int places[A + B] = {};
    for (int i = 0; i < A + B; ++i) places[i] = i;
    NetworkBuilder<A + B> builder{};
    builder.merge(places, A, places + A, B, builder.network.place);
    return builder.network;
}

}  // namespace detail

/// Sorts N values.
template <int N>
struct Sorting {
    static constexpr detail::Network<N> network = detail::sortingNetwork<N>();
};

/// Merges A sorted values and B sorted values behind them.
template <int A, int B>
struct Merging {
    static constexpr detail::Network<A + B> network = detail::mergingNetwork<A, B>();
};

namespace detail {

template <typename T>
VEXA_DEVICE void exchange(T& low, T& high)
{
    const T a = low;
    const T b = high;
    low = a < b ? a : b;
    high = a < b ? b : a;
}

// Numbers of their own, as device code can't refer to an object of the host.
template <typename Steps, std::size_t i>
inline constexpr int low = Steps::network.exchanges[i].low;
template <typename Steps, std::size_t i>
inline constexpr int high = Steps::network.exchanges[i].high;
template <typename Steps, int rank>
inline constexpr int place = Steps::network.place[rank];

template <typename Steps, typename T, std::size_t... I>
VEXA_DEVICE void exchangeAll(T* value, std::index_sequence<I...>)
{
    // In the braces of an array, as compilers limit the length of a fold.
    const int done[] = {(exchange(value[low<Steps, I>], value[high<Steps, I>]), 0)...};
    (void)done;
}

}  // namespace detail

/// Values in order, where the steps of Sorting or Merging have left them. They are not moved: compilers keep arrays in
/// registers only if they are never copied as a whole.
template <typename Steps, typename T>
struct Ordered {
    T* value;

    VEXA_DEVICE explicit Ordered(T* values) : value(values)
    {
        detail::exchangeAll<Steps>(value, std::make_index_sequence<Steps::network.count>());
    }

    template <int rank>
    VEXA_DEVICE T at() const
    {
        return value[detail::place<Steps, rank>];
    }
};

}  // namespace vexa
