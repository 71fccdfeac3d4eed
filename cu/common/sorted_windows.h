/// @file
/// The shape of kernels that take an element's neighbours by their order. On the host neighbouring windows share what
/// they sort: columns are sorted once, then merged to two, four and eight side by side, for 64 pixels at a time.

#pragma once

#include "sorting.h"
#include "windows.h"

namespace vexa {

/// The ranks that a rule looks at.
template <int Lowest, int Highest>
struct LooksAt {
    static constexpr int lowest = Lowest;
    static constexpr int highest = Highest;
};

#if defined(__CUDACC__)

namespace detail {

template <int side, typename T, typename Rule, std::size_t... I>
VEXA_DEVICE T pickFromWindow(int channels, const FetchClamped<T>& src, int x, int y, const Rule& rule,
                             std::index_sequence<I...>)
{
    constexpr int reach = side / 2;
    int value[] = {src(x + channels * (static_cast<int>(I) / side - reach), y + static_cast<int>(I) % side - reach)...};
    return static_cast<T>(rule(Ordered<Sorting<side * side>, int>(value)));
}

}  // namespace detail

/// dst = rule(values) for every element of an image, given the elements of the square window around
/// it in ascending order. The rule derives from LooksAt.
template <int side, typename T, typename Rule>
VEXA_DEVICE void forEachSortedWindow(int channels, const FetchClamped<T>& src, Plane<T> dst, const Rule& rule)
{
    forEachPixel(src.width, src.height, [&](int x, int y) {
        dst.row(y)[x] =
            detail::pickFromWindow<side>(channels, src, x, y, rule, std::make_index_sequence<side * side>());
    });
}

#else

namespace detail {

/// Which ranks of `columns` sorted columns of a window can have one of the ranks from lowest to highest in all of it.
template <int side, int columns, int lowestOfAll, int highestOfAll>
struct Ranks {
    static constexpr int count = side * columns;
    static constexpr int others = side * (side - columns);
    static constexpr int lowest = std::max(lowestOfAll - others, 0);
    static constexpr int highest = std::min(highestOfAll, count - 1);
};

/// Pixels side by side that take the same steps: a loop of constant length is vector code without a rest. What a row
/// has too many is worked on like the others and left out in the end.
inline constexpr int lanes = 64;

constexpr int wholeLanes(int count)
{
    return (count + lanes - 1) / lanes * lanes;
}

template <typename Rule>
inline void forEachLane(int count, const Rule& rule)
{
    for (int first = 0; first < count; first += lanes) {
#pragma omp simd
        for (int i = 0; i < lanes; ++i) rule(first + i);
    }
}

/// Distance of neighbouring pixels, in elements. It is no parameter of the templates, which are large.
inline constexpr int mostChannels = 3;

/// The columns of a row of windows, some neighbours sorted together: line[r][x] has rank r of those from x on.
template <int side, int columns, typename Rule>
struct ColumnGroup {
    using Ranks = detail::Ranks<side, columns, Rule::lowest, Rule::highest>;
    alignas(lanes)
        u8 line[Ranks::highest - Ranks::lowest + 1][wholeLanes(tileWidth + mostChannels * (side - columns)) + lanes];

    /// A rank that doesn't matter is as good as one at the end.
    template <int rank>
    VEXA_DEVICE u8 load(int x) const
    {
        if constexpr (rank < Ranks::lowest)
            return 0;
        else if constexpr (rank > Ranks::highest)
            return 255;
        else
            return line[rank - Ranks::lowest][x];
    }

    template <typename Values>
    VEXA_DEVICE void store(int x, const Values& values)
    {
        store(x, values, std::make_index_sequence<Ranks::highest - Ranks::lowest + 1>());
    }

private:
    template <typename Values, std::size_t... I>
    VEXA_DEVICE void store(int x, const Values& values, std::index_sequence<I...>)
    {
        ((line[I][x] = values.template at<Ranks::lowest + static_cast<int>(I)>()), ...);
    }
};

/// What a rule makes of whole windows.
template <typename Rule>
struct Results {
    explicit Results(const Rule& rule) : rule(rule) {}

    Rule rule;
    alignas(lanes) u8 value[tileWidth];

    template <typename Values>
    VEXA_DEVICE void store(int x, const Values& values)
    {
        value[x] = rule(values);
    }
};

// Values are put in order apart from the loops: OpenMP would give each lane of a loop an array of its own in memory.

template <typename Sink, typename... Value>
VEXA_DEVICE void sortTo(Sink& sink, int x, Value... values)
{
    u8 value[] = {values...};
    sink.store(x, Ordered<Sorting<sizeof...(values)>, u8>(value));
}

template <typename Sink, typename A, typename B, std::size_t... a, std::size_t... b>
VEXA_DEVICE void mergeTo(Sink& sink, int x, const A& first, const B& second, int nextX, std::index_sequence<a...>,
                         std::index_sequence<b...>)
{
    u8 value[] = {first.template load<a>(x)..., second.template load<b>(nextX)...};
    sink.store(x, Ordered<Merging<sizeof...(a), sizeof...(b)>, u8>(value));
}

/// How many columns the groups have that a window is merged from. Each is the one before it and another one.
template <int side>
struct Groups;
template <>
struct Groups<3> {
    using Columns = std::integer_sequence<int, 1, 2>;
};
template <>
struct Groups<5> {
    using Columns = std::integer_sequence<int, 1, 2, 4>;
};
template <>
struct Groups<7> {
    using Columns = std::integer_sequence<int, 1, 2, 4, 6>;
};
template <>
struct Groups<9> {
    using Columns = std::integer_sequence<int, 1, 2, 4, 8>;
};

/// Sorts and merges the windows of a row of a tile.
template <int side, typename Rule>
class RowOfWindows {
public:
    RowOfWindows(int channels, const Rule& rule) : _channels(channels), _results(rule) {}

    /// The results for `count` windows, of which the first begins where the rows do. Rows go by value, so that stores
    /// of bytes can't alias them.
    template <typename... Row>
    const u8* pick(int count, Row... row)
    {
        Group<1>& sorted = group<1>();
        forEachLane(count + _channels * (side - 1), [&, row...](int x) { sortTo(sorted, x, row[x]...); });
        mergeGroups(count, typename Groups<side>::Columns());
        mergeColumns<side - 1, 1>(count, _results);
        return _results.value;
    }

private:
    template <int columns>
    using Group = ColumnGroup<side, columns, Rule>;

    template <int columns>
    Group<columns>& group()
    {
        return _groups;
    }

    template <int last>
    void mergeGroups(int /*count*/, std::integer_sequence<int, last>)
    {}
    template <int last, int next, int... others>
    void mergeGroups(int count, std::integer_sequence<int, last, next, others...>)
    {
        mergeColumns<last, next - last>(count, group<next>());
        mergeGroups(count, std::integer_sequence<int, next, others...>());
    }

    /// Merges groups of A columns with the B columns that follow them.
    template <int A, int B, typename Sink>
    void mergeColumns(int count, Sink& sink)
    {
        const Group<A>& first = group<A>();
        const Group<B>& second = group<B>();
        const int distance = _channels * A;
        forEachLane(count + _channels * (side - A - B), [&, distance](int x) {
            mergeTo(sink, x, first, second, x + distance, std::make_index_sequence<side * A>(),
                    std::make_index_sequence<side * B>());
        });
    }

    template <typename Columns>
    struct AllGroups;
    template <int... columns>
    struct AllGroups<std::integer_sequence<int, columns...> > : Group<columns>... {};

    int _channels;
    AllGroups<typename Groups<side>::Columns> _groups;
    Results<Rule> _results;
};

template <int side, typename Rule, typename Lines, std::size_t... I>
inline void pickRow(int channels, const Lines& lines, int count, int y, u8* to, const Rule& rule,
                    std::index_sequence<I...>)
{
    constexpr int reach = side / 2;
    RowOfWindows<side, Rule> row(channels, rule);
    const u8* const result = row.pick(count, lines.row(y + static_cast<int>(I) - reach) - channels * reach...);
#pragma omp simd
    for (int x = 0; x < count; ++x) to[x] = result[x];
}

}  // namespace detail

/// dst = rule(values) for every element of an image, given the elements of the square window around
/// it in ascending order. The rule derives from LooksAt.
template <int side, typename Rule>
inline void forEachSortedWindow(int channels, const FetchClamped<u8>& src, Plane<u8> dst, const Rule& rule)
{
    constexpr int reach = side / 2;
    using Reach = vexa::Reach<detail::mostChannels * reach, detail::mostChannels * reach, reach, reach>;
    detail::forEachTileRow<Reach, u8>(src, [=](const auto& lines, int column, int count, int y) {
        detail::pickRow<side>(channels, lines, count, y, dst.row(y) + column, rule, std::make_index_sequence<side>());
    });
}

#endif

}  // namespace vexa
