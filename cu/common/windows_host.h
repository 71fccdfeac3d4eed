/// @file
/// Windows on the host. A task walks down a tile of the image with the rows that its windows reach in a ring of lines,
/// each with its border and already converted. So the loop over columns neither clamps nor converts, and what it reads
/// stays in the first cache.

#pragma once

namespace vexa {

namespace detail {

/// Elements `from` to `to` of row y as a window sees them.
template <typename S, typename Fetch>
inline void fetchLine(S* line, const Fetch& src, int from, int to, int y)
{
    const auto* const row = src.row(y);
    const int inside = row ? std::clamp(0, from, to) : to;
    const int end = row ? std::clamp(src.width, inside, to) : to;
    for (int x = from; x < inside; ++x) line[x - from] = static_cast<S>(src(x, y));
#pragma omp simd
    for (int x = inside; x < end; ++x) line[x - from] = static_cast<S>(row[x]);
    for (int x = end; x < to; ++x) line[x - from] = static_cast<S>(src(x, y));
}

/// Columns and rows of a tile; the lines above its first row are made once a tile.
inline constexpr int tileWidth = 512;
inline constexpr int tileHeight = 64;

/// The lines of a tile, of `rows` consecutive rows of the image.
template <typename Reach, typename S>
class Lines {
public:
    template <typename Fetch>
    void fill(const Fetch& src, int column, int count, int y)
    {
        fetchLine(_line[slot(y)] + before - Reach::left, src, column - Reach::left, column + count + Reach::right, y);
    }

    /// The row y + dy, from the first column of the tile on.
    const S* row(int y) const { return _line[slot(y)] + before; }

private:
    /// Lines start on a boundary of vectors.
    static constexpr int alignment = 64 / static_cast<int>(sizeof(S));
    static constexpr int before = (Reach::left + alignment - 1) / alignment * alignment;
    /// And end a vector later than they must, so that work on whole vectors may read past what is there.
    static constexpr int after = (Reach::right + alignment - 1) / alignment * alignment + alignment;

    /// y is at least -Reach::up.
    static int slot(int y) { return (y + Reach::rows) % Reach::rows; }

    alignas(64) S _line[Reach::rows][before + tileWidth + after];
};

}  // namespace detail

/// The neighbourhood of an element, converted to S.
template <typename Reach, typename S>
struct Window {
    const S* rows[Reach::rows];
    int x;

    S operator()(int dx, int dy) const { return rows[Reach::up + dy][x + dx]; }
};

namespace detail {

template <typename Reach, typename S, typename Rule, std::size_t... I>
inline void runWindows(const Lines<Reach, S>& lines, int column, int count, int y, const Rule& rule,
                       std::index_sequence<I...>)
{
    const Window<Reach, S> window{{lines.row(y + static_cast<int>(I) - Reach::up)...}, 0};
#pragma omp simd
    for (int i = 0; i < count; ++i) rule(column + i, y, Window<Reach, S>{{window.rows[I]...}, i});
}

/// work(lines, column, count, y) for every row y of every tile, whose `count` columns start at `column`; the lines are
/// those that its windows reach.
template <typename Reach, typename S, typename Fetch, typename Work>
inline void forEachTileRow(const Fetch& src, const Work& work)
{
    if (src.width < 1 || src.height < 1) return;
    using TileLines = Lines<Reach, S>;
    const int columns = (src.width - 1) / tileWidth + 1;
    const int tiles = (src.height - 1) / tileHeight + 1;
    const auto body = [=](std::size_t begin, std::size_t end) {
        const Work own = work;
        TileLines lines;
        for (std::size_t tile = begin; tile < end; ++tile) {
            const int column = static_cast<int>(tile % static_cast<std::size_t>(columns)) * tileWidth;
            const int top = static_cast<int>(tile / static_cast<std::size_t>(columns)) * tileHeight;
            const int count = std::min(tileWidth, src.width - column);
            const int bottom = top + std::min(tileHeight, src.height - top);
            for (int y = top - Reach::up; y < top + Reach::down; ++y) lines.fill(src, column, count, y);
            for (int y = top; y < bottom; ++y) {
                lines.fill(src, column, count, y + Reach::down);
                own(lines, column, count, y);
            }
        }
    };
    constexpr std::size_t bytesPerTile = std::size_t{tileWidth} * tileHeight * 4;
    platform::parallelRanges(static_cast<std::size_t>(columns) * static_cast<std::size_t>(tiles), bytesPerTile, body);
}

}  // namespace detail

/// rule(x, y, window) for every element of an image, window(dx, dy) being the element so far away, as an S.
template <typename Reach, typename S, typename Fetch, typename Rule>
inline void forEachWindow(const Fetch& src, const Rule& rule)
{
    detail::forEachTileRow<Reach, S>(src, [=](const detail::Lines<Reach, S>& lines, int column, int count, int y) {
        detail::runWindows(lines, column, count, y, rule, std::make_index_sequence<Reach::rows>());
    });
}

}  // namespace vexa
