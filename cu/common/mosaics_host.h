/// @file
/// Mosaics on the host. A line holds even and odd columns apart, so that the pixels of one parity class lie side by
/// side and the loop over them neither chooses nor clamps. A pair of pixels is written as three words of two elements:
/// the shuffles of single bytes took longer than the arithmetic.

#pragma once

#include <cstring>

namespace vexa {

namespace detail {

/// Two elements as one word, the first in the low half as in the memory of a little-endian processor.
template <typename T>
using PairWord = std::conditional_t<sizeof(T) == 1, std::uint16_t, std::uint32_t>;

template <typename T>
inline constexpr int elementBits = 8 * static_cast<int>(sizeof(T));

/// A row of a mosaic, even and odd columns apart, from an even column on; converted to S.
template <typename S, int pairs, int margin>
class HalfLines {
public:
    /// Pairs of columns from `margin` before `column` to `margin` behind `count` pairs.
    template <typename Fetch>
    void fill(const Fetch& src, int column, int count, int y)
    {
        using T = std::decay_t<decltype(src(0, 0))>;
        const T* const row = src.row(y);
        const int end = count + margin;
        // From 0 on, where lines are aligned: GCC would do those before it one by one, and as many at the end.
        const int inside = row ? std::clamp(-(column / 2), 0, end) : end;
        const int outside = row ? std::clamp((src.width - column) / 2, inside, end) : end;
        for (int i = -margin; i < inside; ++i) fetchPair(src, column, i, y);
#pragma omp simd
        for (int i = inside; i < outside; ++i) loadPair(row + column + 2 * i, i);
        for (int i = outside; i < end; ++i) fetchPair(src, column, i, y);
        prefetch(src, column, count, y + rowsAhead);
    }

    /// Column 2 * i + odd, from pair i on.
    const S* columns(bool odd) const
    {
        return (odd ? _odd : _even) + start;
    }

private:
    template <typename T>
    void loadPair(const T* first, int i)
    {
        PairWord<T> word;
        std::memcpy(&word, first, sizeof word);
        _even[start + i] = S(static_cast<T>(word));
        _odd[start + i] = S(static_cast<T>(word >> elementBits<T>));
    }
    /// The rows of a tile are too short for the processor to guess the next one: waiting took a tenth of the time.
    template <typename Fetch>
    static void prefetch(const Fetch& src, int column, int count, int y)
    {
        if (y < 0 || y >= src.height) return;
        const auto* const row = src.row(y);
        constexpr int elementsPerCacheLine = 64 / static_cast<int>(sizeof *row);
        const int end = std::min(column + 2 * count, src.width);
        for (int x = std::max(column, 0); x < end; x += elementsPerCacheLine) __builtin_prefetch(row + x);
    }

    template <typename Fetch>
    void fetchPair(const Fetch& src, int column, int i, int y)
    {
        _even[start + i] = S(src(column + 2 * i, y));
        _odd[start + i] = S(src(column + 2 * i + 1, y));
    }

    static constexpr int rowsAhead = 4;
    static constexpr int alignment = 64 / static_cast<int>(sizeof(S));
    static constexpr int start = (margin + alignment - 1) / alignment * alignment;
    static constexpr int length = start + pairs + start;

    alignas(64) S _even[length];
    alignas(64) S _odd[length];
};

/// The neighbourhood of an even or odd column.
template <typename Reach, typename S, bool odd>
struct HalfWindow {
    const S* even[Reach::rows];
    const S* other[Reach::rows];
    int pair;

    S operator()(int dx, int dy) const
    {
        const int column = dx + odd;
        return (column & 1 ? other : even)[Reach::up + dy][pair + (column >> 1)];
    }
};

/// Pairs of pixels that go to memory together.
template <typename T, int pairs>
class PairStage {
public:
    /// Elements are of type T, or wider with the value of one.
    template <typename Element>
    void store(int pair, Pixel<Element, 3> even, Pixel<Element, 3> odd)
    {
        const auto word = [](Element low, Element high) {
            return static_cast<PairWord<T>>(low | static_cast<int>(static_cast<unsigned>(high) << elementBits<T>));
        };
        _word[3 * pair] = word(even.element[0], even.element[1]);
        _word[3 * pair + 1] = word(even.element[2], odd.element[0]);
        _word[3 * pair + 2] = word(odd.element[1], odd.element[2]);
    }

    void write(T* to, int pixels) const { std::memcpy(to, _word, 3 * sizeof(T) * static_cast<std::size_t>(pixels)); }

private:
    alignas(64) PairWord<T> _word[3 * pairs];
};

/// Wider than the tiles of other windows: what is written is three times as wide as what is read, and rows in pieces of
/// 1536 bytes took twice the time on 3840x2160.
inline constexpr int pairsPerTile = 1024;

template <typename Reach>
inline constexpr int pairMargin = (std::max(Reach::left, Reach::right) + 1) / 2;

template <typename Reach, bool oddRow, typename T, typename S, typename Rule, std::size_t... I>
inline void runMosaicRow(const S* const (&even)[Reach::rows], const S* const (&odd)[Reach::rows], int pairs,
                         PairStage<T, pairsPerTile>& stage, const Rule& rule, std::index_sequence<I...>)
{
    const auto makePair = [=, &stage](int i) {
        stage.store(i, rule(Parity<false, oddRow>{}, HalfWindow<Reach, S, false>{{even[I]...}, {odd[I]...}, i}),
                    rule(Parity<true, oddRow>{}, HalfWindow<Reach, S, true>{{even[I]...}, {odd[I]...}, i}));
    };
#pragma omp simd
    for (int i = 0; i < pairs; ++i) makePair(i);
}

}  // namespace detail

/// dst = rule(Parity, window) for every pixel, window(dx, dy) being the element so far away, as an S.
template <typename Reach, typename S, typename Fetch, typename T, typename Rule>
inline void forEachMosaicPixel(const Fetch& src, Interleaved<T, 3> dst, const Rule& rule)
{
    if (src.width < 1 || src.height < 1) return;
    constexpr int tileWidth = 2 * detail::pairsPerTile;
    const int columns = (src.width - 1) / tileWidth + 1;
    const int tiles = (src.height - 1) / detail::tileHeight + 1;
    const auto body = [=](std::size_t begin, std::size_t end) {
        const Rule own = rule;
        detail::HalfLines<S, detail::pairsPerTile, detail::pairMargin<Reach>> lines[Reach::rows];
        detail::PairStage<T, detail::pairsPerTile> stage;
        for (std::size_t tile = begin; tile < end; ++tile) {
            const int column = static_cast<int>(tile % static_cast<std::size_t>(columns)) * tileWidth;
            const int top = static_cast<int>(tile / static_cast<std::size_t>(columns)) * detail::tileHeight;
            const int pixels = std::min(tileWidth, src.width - column);
            const int pairs = (pixels + 1) / 2;
            const int bottom = top + std::min(detail::tileHeight, src.height - top);
            const auto line = [&](int y) -> auto&
            {
                return lines[(y + Reach::rows) % Reach::rows];
            };
            for (int y = top - Reach::up; y < top + Reach::down; ++y) line(y).fill(src, column, pairs, y);
            for (int y = top; y < bottom; ++y) {
                line(y + Reach::down).fill(src, column, pairs, y + Reach::down);
                const S* even[Reach::rows];
                const S* odd[Reach::rows];
                for (int i = 0; i < Reach::rows; ++i) {
                    even[i] = line(y - Reach::up + i).columns(false);
                    odd[i] = line(y - Reach::up + i).columns(true);
                }
                constexpr auto rows = std::make_index_sequence<Reach::rows>();
                if (y % 2 != 0)
                    detail::runMosaicRow<Reach, true>(even, odd, pairs, stage, own, rows);
                else
                    detail::runMosaicRow<Reach, false>(even, odd, pairs, stage, own, rows);
                stage.write(dst.row(y).first + 3 * column, pixels);
            }
        }
    };
    constexpr std::size_t bytesPerTile = std::size_t{tileWidth} * detail::tileHeight * 4;
    platform::parallelRanges(static_cast<std::size_t>(columns) * static_cast<std::size_t>(tiles), bytesPerTile, body);
}

}  // namespace vexa
