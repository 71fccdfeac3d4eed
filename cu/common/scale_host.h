/// @file
/// Resizing on the host. The result is cut into tiles, whose tables of taps and interpolated source rows stay in the
/// nearer caches. A source row is interpolated along its columns once and kept for all result rows that it has a part
/// in.

#pragma once

#include <climits>

#include "interpolation.h"
#include "moves.h"

// Columns of a tile can be picked out of registers: GCC has a shuffle with variable lanes for its vectors.
#if defined(__AVX2__) && defined(__GNUC__) && !defined(__clang__)
#define VEXA_PICKS_LANES
#endif

namespace vexa {

namespace detail {

/// A part of the result.
struct ScaledTile {
    int x;
    int width;
    int begin;  ///< row
    int end;
};

/// Rows of a tile: enough that few source rows are interpolated for two tiles.
constexpr int scaledRows = 64;

/// Elements of a tile: whole pixels, registers and lines of the caches. Rows of a quarter of them, which fit the cache
/// next to the processor, are a fifth slower on large images, as memory is read ahead along long rows.
constexpr int scaledElements = 2304;

/// Where a row of a tile is made: in its place, or in a stage from where it goes past the caches.
template <typename T, int size>
class RowOfResult {
public:
    explicit RowOfResult(bool pastCaches) : _pastCaches(pastCaches) {}

    T* place(T* to) { return _pastCaches ? _stage : to; }

    void finish(T* to, int count) const
    {
        if (_pastCaches) platform::writePastCaches(to, _stage, static_cast<std::size_t>(count) * sizeof(T));
    }

private:
    bool _pastCaches;
    alignas(64) T _stage[size];
};

template <int C, typename T>
inline bool outgrowsCaches(const Axis& columns, const Axis& rows)
{
    return platform::outgrowsCaches(static_cast<std::size_t>(columns.to) * static_cast<std::size_t>(rows.to) * C *
                                    sizeof(T));
}

/// body(tile) for all tiles of so many columns.
template <typename Body>
inline void forEachScaledTile(int width, int height, int tileWidth, std::size_t bytesPerPixel, const Body& body)
{
    const int across = (width - 1) / tileWidth + 1;
    const int down = (height - 1) / scaledRows + 1;
    const std::size_t bytesPerTile = static_cast<std::size_t>(std::min(width, tileWidth)) * bytesPerPixel *
                                     static_cast<std::size_t>(std::min(height, scaledRows));
    platform::parallelRanges(
        static_cast<std::size_t>(across) * static_cast<std::size_t>(down), bytesPerTile,
        [=](std::size_t first, std::size_t last) {
            for (std::size_t i = first; i < last; ++i) {
                const int x = static_cast<int>(i) % across * tileWidth;
                const int y = static_cast<int>(i) / across * scaledRows;
                body(ScaledTile{x, std::min(tileWidth, width - x), y, std::min(y + scaledRows, height)});
            }
        });
}

/// Pixels of a row at ascending columns, moved one by one.
template <int C, typename T>
inline void copyColumns(T* to, const T* from, const int* columns, int count, int width)
{
    int x = 0;
    if constexpr (C > 1)
        for (; x + 1 < count && columns[x] + 1 < width; ++x)
            copyWide<C>(to + C * x, from + static_cast<std::ptrdiff_t>(C) * columns[x]);
#pragma GCC unroll 8
    for (; x < count; ++x) copyPixel<C>(to + C * x, from + static_cast<std::ptrdiff_t>(C) * columns[x]);
}

#if defined(VEXA_PICKS_LANES)

/// The same with small elements picked out of one or two registers, where columns are near enough.
template <int C, typename T, int count>
class PickedColumns {
public:
    PickedColumns(const int* columns, int width, int rowWidth) : _groups(C * width / lanes), _count(C * width)
    {
        for (int i = 0; i < _count; ++i) _column[i] = C * columns[i / C] + i % C;
        for (_registers = 1; _registers <= 2 && !fits(C * rowWidth); ++_registers) continue;
    }

    bool works() const { return _registers <= 2; }

    void copy(T* to, const T* from) const
    {
        if (_registers == 1)
            pick(to, from, [](const T* first, Bytes lane) { return __builtin_shuffle(load(first), lane); });
        else
            pick(to, from,
                 [](const T* first, Bytes lane) { return __builtin_shuffle(load(first), load(first + lanes), lane); });
        for (int i = _groups * lanes; i < _count; ++i) to[i] = from[_column[i]];
    }

private:
    using Bytes = unsigned char __attribute__((vector_size(16)));
    static constexpr int elementBytes = static_cast<int>(sizeof(T));
    static constexpr int lanes = 16 / elementBytes;

    static Bytes load(const T* from)
    {
        Bytes bytes;
        std::memcpy(&bytes, from, sizeof bytes);
        return bytes;
    }

    /// Whether each group comes out of so many registers, which must lie inside the row.
    bool fits(int rowElements)
    {
        const int window = _registers * lanes;
        if (rowElements < window) return false;
        for (int group = 0; group < _groups; ++group) {
            const int* const column = _column + group * lanes;
            const int first = std::min(*std::min_element(column, column + lanes), rowElements - window);
            _first[group] = first;
            for (int i = 0; i < lanes; ++i) {
                if (column[i] - first >= window) return false;
                for (int byte = 0; byte < elementBytes; ++byte)
                    _lane[(group * lanes + i) * elementBytes + byte] =
                        static_cast<unsigned char>((column[i] - first) * elementBytes + byte);
            }
        }
        return true;
    }

    template <typename Pick>
    void pick(T* to, const T* from, const Pick& pickFrom) const
    {
        for (int group = 0; group < _groups; ++group) {
            Bytes lane;
            std::memcpy(&lane, _lane + group * 16, sizeof lane);
            const Bytes picked = pickFrom(from + _first[group], lane);
            std::memcpy(to + group * lanes, &picked, sizeof picked);
        }
    }

    int _groups;
    int _count;
    int _registers;
    int _column[C * count];
    int _first[C * count / lanes];
    unsigned char _lane[C * count * elementBytes];
};

#endif

/// The taps of a tile's columns, element by element, read one by one.
template <int C, int N>
class SingleTaps {
public:
    SingleTaps(const Axis& columns, int x, int width) : _count(C * width)
    {
        for (int i = 0; i < width; ++i) {
            const GridPosition position = columns(x + i);
            const Weights<N> weights = weightsAt<N>(position.fraction);
            for (int k = 0; k < N; ++k)
                for (int c = 0; c < C; ++c) {
                    _tap[k][C * i + c] = C * clampedTo(position.whole + k - (N / 2 - 1), columns.from) + c;
                    _weight[k][C * i + c] = weights.weight[k];
                }
        }
    }

    template <typename T>
    void interpolate(const T* row, float* result) const
    {
        // Moved as they are, and converted side by side.
        T element[N][scaledElements];
        for (int k = 0; k < N; ++k)
#pragma GCC unroll 8
            for (int i = 0; i < _count; ++i) element[k][i] = row[_tap[k][i]];
#pragma omp simd
        for (int i = 0; i < _count; ++i) {
            float value = _weight[0][i] * static_cast<float>(element[0][i]);
            for (int k = 1; k < N; ++k) value = value + _weight[k][i] * static_cast<float>(element[k][i]);
            result[i] = value;
        }
    }

private:
    int _count;
    int _tap[N][scaledElements];
    float _weight[N][scaledElements];
};

#if defined(VEXA_PICKS_LANES)

constexpr int lanes = 8;
using Floats = float __attribute__((vector_size(lanes * sizeof(float))));
using LaneNumbers = int __attribute__((vector_size(lanes * sizeof(int))));

inline Floats loadFloats(const float* from)
{
    Floats floats;
    std::memcpy(&floats, from, sizeof floats);
    return floats;
}

/// The same with the taps of neighbours picked out of one, two or four registers of a row in float. Two and a half
/// times as fast, where an image isn't made much narrower.
template <int C, int N>
class PickedTaps {
public:
    PickedTaps(const Axis& columns, int x, int width) : _width(columns.from), _count(C * width)
    {
        const int first = columns(x).whole - (N / 2 - 1);
        _begin = first;
        _end = columns(x + width - 1).whole - (N / 2 - 1) + N;
        if (static_cast<long long>(_end) - _begin > lineElements / C) {
            _end = _begin;
            return;
        }
        int tap[scaledElements];
        for (int i = 0; i < width; ++i) {
            const GridPosition position = columns(x + i);
            const Weights<N> weights = weightsAt<N>(position.fraction);
            for (int c = 0; c < C; ++c) {
                tap[C * i + c] = C * (position.whole - (N / 2 - 1) - first) + c;
                for (int k = 0; k < N; ++k) _weight[k][C * i + c] = weights.weight[k];
            }
        }
        int reach = 0;
        for (int i = 0; i < _count; i += lanes) {
            const int inUse = std::min(lanes, _count - i);
            int& base = _base[i / lanes];
            base = *std::min_element(tap + i, tap + i + inUse);
            for (int lane = 0; lane < inUse; ++lane) {
                _lane[i + lane] = tap[i + lane] - base;
                reach = std::max(reach, _lane[i + lane]);
            }
            for (int lane = inUse; lane < lanes; ++lane) {
                _lane[i + lane] = 0;
                for (int k = 0; k < N; ++k) _weight[k][i + lane] = 0;
            }
        }
        _registers = reach / lanes + 1;
    }

    /// Whether neighbours are near enough.
    bool works() const { return _registers > 0 && _registers <= mostRegisters; }

    /// `result` has room for whole registers.
    template <typename T>
    void interpolate(const T* row, float* result) const
    {
        // As far as any element is picked from, which may be behind what is set.
        alignas(64) float line[lineElements + mostRegisters * lanes];
        fill(row, line);
        const auto pickFromTwo = [](const float* from, LaneNumbers lane) {
            return __builtin_shuffle(loadFloats(from), loadFloats(from + lanes), lane);
        };
        if (_registers == 1)
            pick(line, result,
                 [](const float* from, LaneNumbers lane) { return __builtin_shuffle(loadFloats(from), lane); });
        else if (_registers == 2)
            pick(line, result, pickFromTwo);
        else
            pick(line, result, [=](const float* from, LaneNumbers lane) {
                return lane < 2 * lanes ? pickFromTwo(from, lane) : pickFromTwo(from + 2 * lanes, lane);
            });
    }

private:
    static constexpr int mostRegisters = 4;
    static constexpr int lineElements = mostRegisters * scaledElements;

    /// The source pixels of the tile in float, with the edge repeated.
    template <typename T>
    void fill(const T* row, float* line) const
    {
        const int first = std::max(_begin, 0);
        const int last = std::min(_end, _width);
        for (int x = _begin; x < first; ++x, line += C)
            for (int c = 0; c < C; ++c) line[c] = static_cast<float>(row[c]);
        const T* const from = row + static_cast<std::ptrdiff_t>(C) * first;
        const int inside = C * (last - first);
#pragma omp simd
        for (int i = 0; i < inside; ++i) line[i] = static_cast<float>(from[i]);
        line += inside;
        for (int x = last; x < _end; ++x, line += C)
            for (int c = 0; c < C; ++c) line[c] = static_cast<float>(from[inside - C + c]);
        std::fill_n(line, mostRegisters * lanes, 0.0F);
    }

    template <typename Pick>
    void pick(const float* line, float* result, const Pick& pickFrom) const
    {
        for (int i = 0; i < _count; i += lanes) {
            const float* const from = line + _base[i / lanes];
            LaneNumbers lane;
            std::memcpy(&lane, _lane + i, sizeof lane);
            Floats value = loadFloats(_weight[0] + i) * pickFrom(from, lane);
            for (int k = 1; k < N; ++k) value = value + loadFloats(_weight[k] + i) * pickFrom(from + k * C, lane);
            std::memcpy(result + i, &value, sizeof value);
        }
    }

    int _width;
    int _count;
    int _begin;
    int _end;
    int _registers = 0;
    int _base[scaledElements / lanes];
    alignas(64) int _lane[scaledElements];
    alignas(64) float _weight[N][scaledElements];
};

#endif

/// The last source rows of a tile, interpolated along their columns.
template <int N, typename T, typename Taps>
class KeptRows {
public:
    KeptRows(const Taps& taps, const Axis& rows, Plane<const T> src) : _taps(taps), _rows(rows), _src(src)
    {
        std::fill_n(_held, N, INT_MIN);
    }

    const float* operator[](int row)
    {
        const int slot = row & (N - 1);
        if (_held[slot] != row) {
            _taps.interpolate(_src.row(clampedTo(row, _rows.from)), _kept[slot]);
            _held[slot] = row;
        }
        return _kept[slot];
    }

private:
    const Taps& _taps;
    Axis _rows;
    Plane<const T> _src;
    int _held[N];
    alignas(64) float _kept[N][scaledElements];
};

/// The weighted sum of rows as elements.
template <int N, std::size_t... I, typename T>
inline void sumRows(std::index_sequence<I...>, const float* const (&row)[N], const float (&weight)[N], T* to, int count,
                    Range range)
{
    const float* const from[] = {row[I]...};
    const float by[] = {weight[I]...};
#pragma omp simd
    for (int i = 0; i < count; ++i) to[i] = rounded<T, N>((... + (by[I] * from[I][i])), range);
}

template <int C, int N, typename T, typename Taps>
inline void scaleTile(const ScaledTile& tile, const Taps& taps, const Axis& rows, Plane<T> dst, Plane<const T> src,
                      Range range, bool pastCaches)
{
    KeptRows<N, T, Taps> kept(taps, rows, src);
    RowOfResult<T, scaledElements> result(pastCaches);
    for (int y = tile.begin; y < tile.end; ++y) {
        const GridPosition position = rows(y);
        const Weights<N> weights = weightsAt<N>(position.fraction);
        const float* row[N];
        float weight[N];
        int used = 0;
        for (int k = 0; k < N; ++k) {
            if (weights.weight[k] == 0.0F) continue;
            row[used] = kept[position.whole + k - (N / 2 - 1)];
            weight[used++] = weights.weight[k];
        }
        for (int k = used; k < N; ++k) {
            row[k] = row[0];
            weight[k] = 0;
        }
        T* const to = dst.row(y) + static_cast<std::ptrdiff_t>(C) * tile.x;
        if (used == 1)
            sumRows<N>(std::make_index_sequence<1>(), row, weight, result.place(to), C * tile.width, range);
        else
            sumRows<N>(std::make_index_sequence<N>(), row, weight, result.place(to), C * tile.width, range);
        result.finish(to, C * tile.width);
    }
    if (pastCaches) platform::finishPastCaches();
}

/// The nearest rows of a tile, each made by copy(to, from) once.
template <int size, typename T, typename Copy>
inline void repeatRows(const ScaledTile& tile, int elements, std::ptrdiff_t first, const Axis& rows, Plane<T> dst,
                       Plane<const T> src, bool pastCaches, const Copy& copy)
{
    RowOfResult<T, size> result(pastCaches);
    int before = -1;
    for (int y = tile.begin; y < tile.end; ++y) {
        T* const to = dst.row(y) + first;
        const int row = rows.nearest(y);
        if (row != before)
            copy(result.place(to), src.row(row));
        else if (!pastCaches)
            std::memmove(to, to - dst.pitch, static_cast<std::size_t>(elements) * sizeof(T));
        result.finish(to, elements);
        before = row;
    }
    if (pastCaches) platform::finishPastCaches();
}

}  // namespace detail

/// dst = the nearest pixels of src.
template <int C, typename T>
inline void scaleNearest(Axis columns, Axis rows, Plane<T> dst, Plane<const T> src)
{
    using namespace detail;
    constexpr int tileWidth = 1024;
    const bool pastCaches = outgrowsCaches<C, T>(columns, rows);
    forEachScaledTile(columns.to, rows.to, tileWidth, C * sizeof(T) + 1, [=](const ScaledTile& tile) {
        int column[tileWidth];
        for (int i = 0; i < tile.width; ++i) column[i] = columns.nearest(tile.x + i);
#if defined(VEXA_PICKS_LANES)
        const PickedColumns<C, T, tileWidth> picked(column, tile.width, columns.from);
        if (picked.works()) {
            const auto copy = [&](T* to, const T* from) { picked.copy(to, from); };
            repeatRows<C * tileWidth>(tile, C * tile.width, C * tile.x, rows, dst, src, pastCaches, copy);
            return;
        }
#endif
        const auto copy = [&](T* to, const T* from) { copyColumns<C>(to, from, column, tile.width, columns.from); };
        repeatRows<C * tileWidth>(tile, C * tile.width, C * tile.x, rows, dst, src, pastCaches, copy);
    });
}

/// dst = src, interpolated between N pixels of N rows. Rows of weight 0 don't count.
template <int C, int N, typename T>
inline void scaleBetween(Axis columns, Axis rows, Plane<T> dst, Plane<const T> src)
{
    using namespace detail;
    constexpr std::size_t bytesPerPixel = C * sizeof(T) * N;
    const Range range = rangeOf<T>;
    const bool pastCaches = outgrowsCaches<C, T>(columns, rows);
    forEachScaledTile(columns.to, rows.to, scaledElements / C, bytesPerPixel, [=](const ScaledTile& tile) {
#if defined(VEXA_PICKS_LANES)
        const PickedTaps<C, N> picked(columns, tile.x, tile.width);
        if (picked.works()) {
            scaleTile<C, N>(tile, picked, rows, dst, src, range, pastCaches);
            return;
        }
#endif
        const SingleTaps<C, N> taps(columns, tile.x, tile.width);
        scaleTile<C, N>(tile, taps, rows, dst, src, range, pastCaches);
    });
}

}  // namespace vexa
