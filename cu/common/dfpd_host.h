/// @file
/// The three passes at once on the host. A task walks down a tile with the last rows of every intermediate in rings of
/// lines. Lines hold only the sites that a pass works on, every second column, and what neighbours share, the
/// chrominances and their differences, is computed once; so a frame takes less than a tenth of the time of three
/// passes.

#pragma once

namespace vexa {

namespace detail {

/// A tile on its way. The green sites of a row are counted from the same column on as the others, by pairs.
template <typename Sites, typename T>
class DirectionalTile {
public:
    /// With what the passes reach to the sides it fills whole vectors.
    static constexpr int pairs = 1024 / static_cast<int>(sizeof(Sum<T>)) - 8;

    DirectionalTile(const FetchZero<T>& src, Interleaved<T, 3> dst, int maxVal) : _src(src), _dst(dst), _maxVal(maxVal)
    {}

    /// Rows `top` to `bottom`, from an even column on. Intermediates start as many rows above as they reach.
    void demosaic(int column, int top, int bottom)
    {
        _column = column;
        _pixels = std::min(2 * pairs, _src.width - column);
        _sites = ((_pixels + 1) / 2 + 2 * margin + 31) / 32 * 32;
        for (int y = top - 14; y < bottom; ++y) {
            _raw[y + 8].fill(_src, column - 2 * margin, _sites, y + 8);
            if (y >= top - 10) findChanges(y + 6);
            if (y >= top - 4) decide(y + 2);
            if (y >= top - 2) fillGreenSites(y + 1);
            if (y >= top) write(y);
        }
    }

private:
    using S = Sum<T>;

    /// Pairs that the passes reach to either side.
    static constexpr int margin = 4;

    /// From `margin` pairs before the tile on, where it is aligned.
    struct Line {
        alignas(64) S site[32 + pairs + 2 * margin + 32];
        S* first() { return site + 32; }
    };

    /// The last rows; none is further than 16 above the image.
    template <typename Row, int rows>
    struct Ring {
        Row row[rows];
        Row& operator[](int y) { return row[static_cast<unsigned>(y + 16 * rows) % rows]; }
    };

    template <int rows>
    struct Lines {
        Ring<Line, rows> line;
        S* operator[](int y) { return line[y].first(); }
    };

    /// rule(i) for the sites of a row and those beside them that others reach, in whole vectors.
    template <typename Rule>
    void forEachSite(const Rule& rule) const
    {
#pragma omp simd
        for (int i = 0; i < _sites; ++i) rule(i);
    }

    /// Raw and computed values as they are stored.
    static S storedRaw(S value, int highest)
    {
        return smaller(value, S(highest));
    }
    static S stored(S value, int highest)
    {
        return smaller(larger(value, S(0)), S(highest));
    }

    const S* rawGreen(int y)
    {
        return _raw[y].columns(Sites::isGreenInOddColumns(y));
    }
    const S* rawColor(int y)
    {
        return _raw[y].columns(!Sites::isGreenInOddColumns(y));
    }

    /// Four times the chrominances of row y, the raw values less the green that either direction estimates, at red and
    /// blue sites. Then it is known how much those of row y - 2 change downwards, less how much they change to the
    /// right.
    void findChanges(int y)
    {
        const S* const color = rawColor(y);
        const S* const left = rawGreen(y) - Sites::isGreenInOddColumns(y);
        const S* const right = left + 1;
        const S* const up = rawGreen(y - 1);
        const S* const down = rawGreen(y + 1);
        const S* const up2 = rawColor(y - 2);
        const S* const down2 = rawColor(y + 2);
        S* const vertical = _vertical[y];
        S* const horizontal = _horizontal[y];
        const S* const verticalAbove = _vertical[y - 2];
        const S* const horizontalAbove = _horizontal[y - 2];
        S* const change = _change[y - 2];
        forEachSite([=](int i) {
            const S here = 2 * (color[i] - up[i] - down[i]) + up2[i] + down2[i];
            vertical[i] = here;
            horizontal[i] = 2 * (color[i] - left[i] - right[i]) + color[i - 1] + color[i + 1];
            change[i] = distance(verticalAbove[i], here) - distance(horizontalAbove[i], horizontalAbove[i + 1]);
        });
    }

    /// Pass 1: the direction, negative for the column, and green at red and blue sites.
    void decide(int y)
    {
        const S* const color = rawColor(y);
        const S* const vertical = _vertical[y];
        const S* const horizontal = _horizontal[y];
        const S* const change = _change[y];
        const S* const changeAbove = _change[y - 2];
        const S* const changeBelow = _change[y + 2];
        S* const direction = _direction[y];
        S* const green = _green[y];
        S* const difference = _difference[y];
        const int highest = _maxVal;
        forEachSite([=](int i) {
            const S changes = change[i - 1] + change[i] + change[i + 1] + changeAbove[i] + changeBelow[i];
            const S chrominance = choose(changes < S(0), vertical[i], horizontal[i]);
            const S estimate = stored((4 * color[i] - chrominance) >> 2, highest);
            direction[i] = changes;
            green[i] = estimate;
            difference[i] = storedRaw(color[i], highest) - estimate;
        });
    }

    /// Pass 2: both colours at green sites, from the row and from the column.
    void fillGreenSites(int y)
    {
        const S* const green = rawGreen(y);
        const S* const left = _difference[y] - !Sites::isGreenInOddColumns(y);
        const S* const right = left + 1;
        const S* const up = _difference[y - 1];
        const S* const down = _difference[y + 1];
        S* const fromRow = _fromRow[y];
        S* const fromColumn = _fromColumn[y];
        S* const excess = _excess[y];
        const int highest = _maxVal;
        forEachSite([=](int i) {
            const S twice = 2 * storedRaw(green[i], highest);
            const S ofRow = stored((twice + left[i] + right[i]) >> 1, highest);
            const S ofColumn = stored((twice + up[i] + down[i]) >> 1, highest);
            fromRow[i] = ofRow;
            fromColumn[i] = ofColumn;
            excess[i] = ofColumn - ofRow;
        });
        // Sites of the outer ring have their raw value in all slots.
        if (isOuterRow(y)) forEachSite([=](int i) { excess[i] = S(0); });
        for (const int x : {0, _src.width - 1}) {
            const int i = (x - _column) / 2 + margin;
            if (Sites::isGreen(x, y) && x >= _column && i < _sites) excess[i] = S(0);
        }
    }

    /// Pass 3, the other colour at red and blue sites, and the pixels of the row. The outer ring stays as pass 1 left
    /// it.
    void write(int y)
    {
        if (isOuterRow(y))
            writePixels(
                y,
                [](S own, S /*other*/, S green) {
                    return Slots{own, green, own};
                },
                [](S /*ofRow*/, S /*ofColumn*/, S green) {
                    return Slots{green, green, green};
                });
        else if (Sites::isRed(y))
            writePixels(
                y,
                [](S own, S other, S green) {
                    return Slots{other, green, own};
                },
                [](S ofRow, S ofColumn, S green) {
                    return Slots{ofColumn, green, ofRow};
                });
        else
            writePixels(
                y,
                [](S own, S other, S green) {
                    return Slots{own, green, other};
                },
                [](S ofRow, S ofColumn, S green) {
                    return Slots{ofRow, green, ofColumn};
                });
        writeEnd(0, y);
        writeEnd(_src.width - 1, y);
    }

    struct Slots {
        S first, second, third;
    };
    static auto pixel(Slots slots)
    {
        return Pixel<decltype(S::value), 3>{{slots.first.value, slots.second.value, slots.third.value}};
    }

    template <typename Colored, typename Green>
    void writePixels(int y, const Colored& colored, const Green& green)
    {
        if (Sites::isGreenInOddColumns(y))
            stagePixels(
                y, [&](int i, auto atColor, auto atGreen) { _stage.store(i, atColor, atGreen); }, colored, green);
        else
            stagePixels(
                y, [&](int i, auto atColor, auto atGreen) { _stage.store(i, atGreen, atColor); }, colored, green);
        _stage.write(_dst.row(y).first + 3 * _column, _pixels);
    }

    template <typename Store, typename Colored, typename Green>
    void stagePixels(int y, const Store& store, const Colored& colored, const Green& green)
    {
        const S* const color = rawColor(y) + margin;
        const S* const rawGreens = rawGreen(y) + margin;
        const S* const estimate = _green[y] + margin;
        const S* const direction = _direction[y] + margin;
        const S* const left = _excess[y] + margin - Sites::isGreenInOddColumns(y);
        const S* const right = left + 1;
        // What the row has too much of its column's colour the rows above and below have of their row's.
        const S* const up = _excess[y - 1] + margin;
        const S* const down = _excess[y + 1] + margin;
        const S* const fromRow = _fromRow[y] + margin;
        const S* const fromColumn = _fromColumn[y] + margin;
        const int highest = _maxVal;
        forEachSite([=](int i) {
            const S own = storedRaw(color[i], highest);
            const S excess = choose(direction[i] < S(0), S(0) - up[i] - down[i], left[i] + right[i]);
            const S other = stored((2 * own + excess) >> 1, highest);
            store(i, pixel(colored(own, other, estimate[i])),
                  pixel(green(fromRow[i], fromColumn[i], storedRaw(rawGreens[i], highest))));
        });
    }

    /// The first or last pixel of a row, if it is here.
    void writeEnd(int x, int y)
    {
        if (x < _column || x >= _column + _pixels) return;
        const int i = (x - _column) / 2 + margin;
        const bool isGreen = Sites::isGreen(x, y);
        const S own = storedRaw((isGreen ? rawGreen(y) : rawColor(y))[i], _maxVal);
        const S green = isGreen ? own : _green[y][i];
        _dst.row(y).store(x, {{static_cast<T>(own.value), static_cast<T>(green.value), static_cast<T>(own.value)}});
    }

    bool isOuterRow(int y) const
    {
        return y <= 0 || y >= _src.height - 1;
    }

    FetchZero<T> _src;
    Interleaved<T, 3> _dst;
    int _maxVal;
    int _column = 0;
    int _pixels = 0;
    int _sites = 0;
    Ring<HalfLines<S, pairs + 2 * margin, 1>, 9> _raw{};
    Lines<5> _vertical{}, _horizontal{}, _change{};
    Lines<3> _direction{}, _green{}, _difference{}, _excess{};
    Lines<2> _fromRow{}, _fromColumn{};
    PairStage<T, pairs + 2 * margin> _stage{};
};

}  // namespace detail

/// Makes the whole image, if the platform has a way to.
template <typename Sites, typename T>
inline bool demosaicAtOnce(const FetchZero<T>& src, Interleaved<T, 3> dst, int maxVal)
{
    if (src.pixels == nullptr || dst.pixels == nullptr || src.width < 1 || src.height < 1) return true;
    using Tile = detail::DirectionalTile<Sites, T>;
    constexpr int tileWidth = 2 * Tile::pairs;
    constexpr int tileHeight = 128;
    const int columns = (src.width - 1) / tileWidth + 1;
    const int tiles = (src.height - 1) / tileHeight + 1;
    const auto body = [=](std::size_t begin, std::size_t end) {
        Tile tile(src, dst, maxVal);
        for (std::size_t i = begin; i < end; ++i) {
            const int top = static_cast<int>(i / static_cast<std::size_t>(columns)) * tileHeight;
            tile.demosaic(static_cast<int>(i % static_cast<std::size_t>(columns)) * tileWidth, top,
                          top + std::min(tileHeight, src.height - top));
        }
    };
    constexpr std::size_t bytesPerTile = std::size_t{tileWidth} * tileHeight * 4;
    platform::parallelRanges(static_cast<std::size_t>(columns) * static_cast<std::size_t>(tiles), bytesPerTile, body);
    return true;
}

}  // namespace vexa
