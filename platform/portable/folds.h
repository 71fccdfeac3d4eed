/// @file
/// What statistics are made of: the inputs that a fold takes of a pixel, the folds, whose lanes take elements, and the
/// totals that the lanes of a tile come to and that are merged.

#pragma once

#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "arithmetic.h"
#include "fold.h"

namespace vexa::statistics {

/// What sums of many elements are kept in: exact for integers.
template <typename T>
using Wide = std::conditional_t<std::is_integral_v<T>, unsigned long long, double>;

/// What holds the sum of a tile's elements, or of their squares.
template <typename T>
using TileSum = std::conditional_t<std::is_integral_v<T>, unsigned, double>;
template <typename T>
using TileSquares = std::conditional_t<std::is_same_v<T, u16>, unsigned long long, TileSum<T>>;

// ---- inputs: what a fold takes of a pixel ----

/// The elements of an image of C channels.
template <typename T, int C>
struct Elements {
    static constexpr int bytesPerPixel = sizeof(T) * C;

    struct Some {
        const T* first;
        VEXA_DEVICE T operator()(int i) const { return first[i]; }
    };

    struct Row {
        const T* first;

        VEXA_DEVICE Some pixel(int x) const { return {first + static_cast<std::ptrdiff_t>(x) * C}; }

        template <int n>
        VEXA_DEVICE Some pixels(int x) const
        {
            return pixel(x);
        }
    };

    Plane<const T> plane;

    VEXA_DEVICE Row row(int x, int y) const { return {plane.row(y) + static_cast<std::ptrdiff_t>(x) * C}; }
};

/// Whether a mask selects the pixel of an element.
template <int C>
struct Mask {
    static constexpr int bytesPerPixel = 1;

    /// Spread to the elements of n pixels beforehand, as a loop that divides by C has no vector form.
    template <int n>
    struct Some {
        alignas(laneAlignment) u8 byte[n * C];
        VEXA_DEVICE bool operator()(int i) const { return byte[i] != 0; }
    };

    struct One {
        bool selected;
        VEXA_DEVICE bool operator()(int /*i*/) const { return selected; }
    };

    struct Row {
        const u8* first;

        VEXA_DEVICE One pixel(int x) const { return {first[x] != 0}; }

        template <int n>
        VEXA_DEVICE Some<n> pixels(int x) const
        {
            Some<n> some;
            for (int i = 0; i < n; ++i)
                for (int c = 0; c < C; ++c) some.byte[i * C + c] = first[x + i];
            return some;
        }
    };

    Plane<const u8> plane;

    VEXA_DEVICE Row row(int x, int y) const { return {plane.row(y) + x}; }
};

/// The mask that selects every pixel.
struct Everywhere {
    static constexpr int bytesPerPixel = 0;

    struct Row {
        VEXA_DEVICE bool operator()(int /*i*/) const { return true; }
        VEXA_DEVICE Row pixel(int /*x*/) const { return {}; }

        template <int n>
        VEXA_DEVICE Row pixels(int /*x*/) const
        {
            return {};
        }
    };

    VEXA_DEVICE Row row(int /*x*/, int /*y*/) const { return {}; }
};

// ---- folds: lanes that take elements, and the totals that they come to ----

template <typename T>
inline constexpr T least = std::is_integral_v<T> ? std::numeric_limits<T>::lowest()
                                                 : -std::numeric_limits<T>::infinity();
template <typename T>
inline constexpr T most = std::is_integral_v<T> ? std::numeric_limits<T>::max() : std::numeric_limits<T>::infinity();

/// A fold to which the end of a row means nothing.
struct RowsDontMatter {
    VEXA_DEVICE void endRow() {}
};

/// The smallest and the largest element; a NaN is neither.
template <typename T, int C>
struct Extremes : RowsDontMatter {
    static constexpr int lanes = laneCount<T>;

    struct Total {
        T min[C];
        T max[C];

        VEXA_DEVICE static Total none()
        {
            Total total;
            for (int c = 0; c < C; ++c) {
                total.min[c] = most<T>;
                total.max[c] = least<T>;
            }
            return total;
        }

        VEXA_DEVICE void merge(const Total& other)
        {
            for (int c = 0; c < C; ++c) {
                min[c] = other.min[c] < min[c] ? other.min[c] : min[c];
                max[c] = other.max[c] > max[c] ? other.max[c] : max[c];
            }
        }
    };

    alignas(laneAlignment) T min[lanes * C];
    alignas(laneAlignment) T max[lanes * C];

    VEXA_DEVICE Extremes()
    {
        for (int i = 0; i < lanes * C; ++i) {
            min[i] = most<T>;
            max[i] = least<T>;
        }
    }

    VEXA_DEVICE void take(int lane, T element)
    {
        min[lane] = element < min[lane] ? element : min[lane];
        max[lane] = element > max[lane] ? element : max[lane];
    }

    VEXA_DEVICE Total total() const
    {
        Total total = Total::none();
        for (int i = 0; i < lanes * C; i += C) {
            Total lane;
            for (int c = 0; c < C; ++c) {
                lane.min[c] = min[i + c];
                lane.max[c] = max[i + c];
            }
            total.merge(lane);
        }
        return total;
    }
};

/// One number a channel that adds up.
template <typename Number, int C>
struct Numbers {
    Number sum[C];

    VEXA_DEVICE static Numbers none() { return {}; }

    VEXA_DEVICE void merge(const Numbers& other)
    {
        for (int c = 0; c < C; ++c) sum[c] += other.sum[c];
    }
};

/// The sum of the lanes of each channel, in their order.
template <typename Number, int C, typename Word, std::size_t N>
VEXA_DEVICE Numbers<Number, C> sumOfLanes(const Word (&lane)[N])
{
    Numbers<Number, C> total = {};
    for (int i = 0; i < static_cast<int>(N); ++i) total.sum[i % C] += lane[i];
    return total;
}

/// Whether lanes of bytes can be summed up in 16 bits from one end of a row to the next. A row of a tile then gives at
/// most 256 of them to a lane. Widening each to 32 bits takes twice as long.
template <typename T>
inline constexpr bool fitRows = sizeof(T) == 1 && pixelsPerTile / laneCount<T> <= 256;

/// Sums of N lanes of elements.
template <typename T, int N, bool byRows = fitRows<T>>
struct LaneSums {
    alignas(laneAlignment) TileSum<T> sum[N] = {};

    VEXA_DEVICE void add(int lane, TileSum<T> value) { sum[lane] += value; }
    VEXA_DEVICE void endRow() {}
};

template <typename T, int N>
struct LaneSums<T, N, true> {
    alignas(laneAlignment) u16 row[N] = {};
    alignas(laneAlignment) TileSum<T> sum[N] = {};

    VEXA_DEVICE void add(int lane, unsigned value) { row[lane] = static_cast<u16>(row[lane] + value); }

    VEXA_DEVICE void endRow()
    {
        for (int i = 0; i < N; ++i) {
            sum[i] += row[i];
            row[i] = 0;
        }
    }
};

/// Sums of the squares of N lanes of elements. Where a row of a tile fits, each half of a square is summed up in as
/// many bits as a square has.
template <typename T, int N, bool byRows = fitRows<T> || (std::is_same_v<T, u16> && laneCount<T> > 1)>
struct LaneSquares {
    alignas(laneAlignment) TileSquares<T> sum[N] = {};

    VEXA_DEVICE void add(int lane, TileSquares<T> value) { sum[lane] += value * value; }
    VEXA_DEVICE void endRow() {}
};

template <typename T, int N>
struct LaneSquares<T, N, true> {
    using Square = std::conditional_t<sizeof(T) == 1, u16, unsigned>;
    static constexpr int half = 8 * sizeof(T);

    alignas(laneAlignment) Square low[N] = {};
    alignas(laneAlignment) Square high[N] = {};
    alignas(laneAlignment) TileSquares<T> sum[N] = {};

    VEXA_DEVICE void add(int lane, unsigned value)
    {
        const auto square = static_cast<Square>(value * value);
        low[lane] = static_cast<Square>(low[lane] + (square & Element<T>::max));
        high[lane] = static_cast<Square>(high[lane] + (square >> half));
    }

    VEXA_DEVICE void endRow()
    {
        for (int i = 0; i < N; ++i) {
            sum[i] += low[i] + (static_cast<TileSquares<T>>(high[i]) << half);
            low[i] = 0;
            high[i] = 0;
        }
    }
};

/// The sum of the elements.
template <typename T, int C>
struct Sum {
    static constexpr int lanes = laneCount<T>;
    using Total = Numbers<Wide<T>, C>;

    LaneSums<T, lanes* C> sums = {};

    VEXA_DEVICE void take(int lane, T element) { sums.add(lane, static_cast<TileSum<T>>(element)); }
    VEXA_DEVICE void endRow() { sums.endRow(); }
    VEXA_DEVICE Total total() const { return sumOfLanes<Wide<T>, C>(sums.sum); }
};

/// The sum of the squares of the elements.
template <typename T, int C>
struct Squares {
    static constexpr int lanes = laneCount<T>;
    using Total = Numbers<Wide<T>, C>;

    LaneSquares<T, lanes* C> squares = {};

    VEXA_DEVICE void take(int lane, T element) { squares.add(lane, static_cast<TileSquares<T>>(element)); }
    VEXA_DEVICE void endRow() { squares.endRow(); }
    VEXA_DEVICE Total total() const { return sumOfLanes<Wide<T>, C>(squares.sum); }
};

/// The sum of the products of the elements of two float images.
template <int C>
struct Products : RowsDontMatter {
    static constexpr int lanes = laneCount<f32>;
    using Total = Numbers<double, C>;

    alignas(laneAlignment) double sum[lanes * C] = {};

    VEXA_DEVICE void take(int lane, f32 a, f32 b) { sum[lane] += static_cast<double>(a) * static_cast<double>(b); }
    VEXA_DEVICE Total total() const { return sumOfLanes<double, C>(sum); }
};

/// Bounds for each channel.
template <typename T, int C>
struct Bounds {
    T lowest[C];
    T highest[C];
};

/// How many elements lie within bounds.
template <typename T, int C>
struct CountWithin : RowsDontMatter {
    static constexpr int lanes = laneCount<T>;
    using Total = Numbers<unsigned, C>;

    alignas(laneAlignment) T lowest[lanes * C];
    alignas(laneAlignment) T highest[lanes * C];
    alignas(laneAlignment) unsigned count[lanes * C] = {};

    VEXA_DEVICE explicit CountWithin(const Bounds<T, C>& bounds)
    {
        for (int i = 0; i < lanes * C; ++i) {
            lowest[i] = bounds.lowest[i % C];
            highest[i] = bounds.highest[i % C];
        }
    }

    VEXA_DEVICE void take(int lane, T element)
    {
        count[lane] += static_cast<unsigned>(element >= lowest[lane]) & static_cast<unsigned>(element <= highest[lane]);
    }
    VEXA_DEVICE Total total() const { return sumOfLanes<unsigned, C>(count); }
};

/// How many pixels are selected.
struct CountSelected : RowsDontMatter {
    static constexpr int lanes = laneCount<u8>;

    alignas(laneAlignment) unsigned count[lanes] = {};

    VEXA_DEVICE void take(int lane, bool selected) { count[lane] += static_cast<unsigned>(selected); }
    VEXA_DEVICE unsigned total() const { return sumOfLanes<unsigned, 1>(count).sum[0]; }
};

/// All bits or none. A condition becomes a branch, which misses on every other pixel and has no vector form; this does
/// not.
VEXA_DEVICE unsigned bitsIf(bool condition)
{
    return 0U - static_cast<unsigned>(condition);
}

VEXA_DEVICE f32 choose(bool condition, f32 value, f32 otherwise)
{
    unsigned bits = 0;
    unsigned otherBits = 0;
    memcpy(&bits, &value, sizeof bits);
    memcpy(&otherBits, &otherwise, sizeof otherBits);
    bits = (bits & bitsIf(condition)) | (otherBits & ~bitsIf(condition));
    memcpy(&value, &bits, sizeof value);
    return value;
}

/// Mean and deviation of whole numbers, from exact sums.
template <typename T, int C>
struct IntegerMoments {
    static constexpr int lanes = laneCount<T>;

    struct Total {
        unsigned long long count;
        Numbers<unsigned long long, C> sum;
        Numbers<unsigned long long, C> squares;

        VEXA_DEVICE static Total none() { return {}; }

        VEXA_DEVICE void merge(const Total& other)
        {
            count += other.count;
            sum.merge(other.sum);
            squares.merge(other.squares);
        }

        VEXA_DEVICE double mean(int c) const
        {
            return count == 0 ? 0 : static_cast<double>(sum.sum[c]) / static_cast<double>(count);
        }

        /// The moments about the whole number next to the mean are exact too, and small: nothing cancels. Terms on the
        /// way may pass 64 bits, but the difference is right modulo 2^64.
        VEXA_DEVICE double variance(int c) const
        {
            if (count == 0) return 0;
            const auto n = static_cast<double>(count);
            const auto centre = static_cast<unsigned long long>(mean(c) + 0.5);
            const auto rest = static_cast<long long>(sum.sum[c] - count * centre);
            const unsigned long long about = squares.sum[c] - 2 * centre * sum.sum[c] + count * centre * centre;
            const double offset = static_cast<double>(rest) / n;
            return static_cast<double>(about) / n - offset * offset;
        }
    };

    unsigned count = 0;
    LaneSums<T, lanes* C> sums = {};
    LaneSquares<T, lanes* C> squares = {};

    VEXA_DEVICE void take(int lane, T element, bool selected)
    {
        const unsigned value = element & bitsIf(selected);
        sums.add(lane, value);
        squares.add(lane, value);
    }

    VEXA_DEVICE void endRow()
    {
        sums.endRow();
        squares.endRow();
    }

    VEXA_DEVICE Total total() const
    {
        using Number = unsigned long long;
        return {count, sumOfLanes<Number, C>(sums.sum), sumOfLanes<Number, C>(squares.sum)};
    }
};

/// Mean and deviation of floats. A tile's elements are taken relative to the first of them, so that a small deviation
/// from a large mean keeps its digits and a constant image deviates by exactly 0; tiles are merged by the formula of
/// Chan, Golub and LeVeque.
template <int C>
struct FloatMoments : RowsDontMatter {
    static constexpr int lanes = laneCount<f32>;

    struct Total {
        double count;
        double centre[C];
        double about[C];  ///< sum of the squared differences from the centre

        VEXA_DEVICE static Total none() { return {}; }

        VEXA_DEVICE void merge(const Total& other)
        {
            if (other.count == 0) return;
            const double weight = other.count / (count + other.count);
            for (int c = 0; c < C; ++c) {
                const double apart = other.centre[c] - centre[c];
                about[c] += other.about[c] + (count == 0 ? 0 : apart * apart * count * weight);
                centre[c] += apart * weight;
            }
            count += other.count;
        }

        VEXA_DEVICE double mean(int c) const { return centre[c]; }
        VEXA_DEVICE double variance(int c) const { return count == 0 ? 0 : about[c] / count; }
    };

    alignas(laneAlignment) f32 first[lanes * C] = {};
    unsigned count = 0;
    alignas(laneAlignment) double sum[lanes * C] = {};
    alignas(laneAlignment) double squares[lanes * C] = {};

    VEXA_DEVICE void take(int lane, f32 element, bool selected)
    {
        const f32 origin = first[lane];
        const f32 value = choose(selected, element, origin);
        const double difference = static_cast<double>(value) - static_cast<double>(origin);
        sum[lane] += difference;
        squares[lane] += difference * difference;
    }

    VEXA_DEVICE Total total() const
    {
        const double n = count;
        Total total = {n, {}, {}};
        if (count == 0) return total;
        const Numbers<double, C> sums = sumOfLanes<double, C>(sum);
        const Numbers<double, C> squared = sumOfLanes<double, C>(squares);
        for (int c = 0; c < C; ++c) {
            const double offset = sums.sum[c] / n;
            const double about = squared.sum[c] - sums.sum[c] * offset;
            total.centre[c] = first[c] + offset;
            total.about[c] = about < 0 ? 0 : about;
        }
        return total;
    }
};

template <typename T, int C>
using Moments = std::conditional_t<std::is_integral_v<T>, IntegerMoments<T, C>, FloatMoments<C>>;

}  // namespace vexa::statistics
