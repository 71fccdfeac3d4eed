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
            if (y >= top - 10) findChrominances(y + 6);
            if (y >= top - 8) findDifferences(y + 4);
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

    template <typename Row, int rows>
    struct Ring {
        Row row[rows];
        Row& operator[](int y) { return row[(y + 16 * rows) % rows]; }
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

    S stored(S value) const
    {
        return smaller(larger(value, S(0)), S(_maxVal));
    }

    const S* rawGreen(int y)
    {
        return _raw[y].columns(Sites::isGreenInOddColumns(y));
    }
    const S* rawColor(int y)
    {
        return _raw[y].columns(!Sites::isGreenInOddColumns(y));
    }

    /// Four times the raw value less the green that either direction estimates, at red and blue sites.
    void findChrominances(int y)
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
        forEachSite([=](int i) {
            vertical[i] = 2 * (color[i] - up[i] - down[i]) + up2[i] + down2[i];
            horizontal[i] = 2 * (color[i] - left[i] - right[i]) + color[i - 1] + color[i + 1];
        });
    }

    /// How much they change from a site to the next below or to the right.
    void findDifferences(int y)
    {
        const S* const vertical = _vertical[y];
        const S* const below = _vertical[y + 2];
        const S* const horizontal = _horizontal[y];
        S* const down = _down[y];
        S* const right = _right[y];
        forEachSite([=](int i) {
            down[i] = distance(vertical[i], below[i]);
            right[i] = distance(horizontal[i], horizontal[i + 1]);
        });
    }

    /// Pass 1: the direction and green at red and blue sites.
    void decide(int y)
    {
        const S* const color = rawColor(y);
        const S* const vertical = _vertical[y];
        const S* const horizontal = _horizontal[y];
        const S *const down = _down[y], *const downAbove = _down[y - 2], *const downBelow = _down[y + 2];
        const S *const right = _right[y], *const rightAbove = _right[y - 2], *const rightBelow = _right[y + 2];
        S* const isVertical = _isVertical[y];
        S* const own = _own[y];
        S* const green = _green[y];
        S* const difference = _difference[y];
        forEachSite([=](int i) {
            const S alongColumn = down[i - 1] + down[i] + down[i + 1] + downAbove[i] + downBelow[i];
            const S alongRow = right[i - 1] + right[i] + right[i + 1] + rightAbove[i] + rightBelow[i];
            isVertical[i] = choose(alongColumn < alongRow, S(1), S(0));
            own[i] = stored(color[i]);
            const S chrominance = choose(alongColumn < alongRow, vertical[i], horizontal[i]);
            green[i] = stored((4 * color[i] - chrominance) >> 2);
            difference[i] = own[i] - green[i];
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
        S* const own = _ownGreen[y];
        S* const fromRow = _fromRow[y];
        S* const fromColumn = _fromColumn[y];
        S* const excess = _excess[y];
        forEachSite([=](int i) {
            own[i] = stored(green[i]);
            fromRow[i] = stored((2 * own[i] + left[i] + right[i]) >> 1);
            fromColumn[i] = stored((2 * own[i] + up[i] + down[i]) >> 1);
            excess[i] = fromColumn[i] - fromRow[i];
        });
        if (isOuterRow(y)) forEachSite([=](int i) { excess[i] = S(0); });
        for (const int x : {0, _src.width - 1}) {
            const int i = (x - _column) / 2 + margin;
            if (Sites::isGreen(x, y) && x >= _column && i < _sites) excess[i] = S(0);
        }
    }

    /// Pass 3, the other colour at red and blue sites, and the pixels of the row. The outer ring is as pass 1 left it.
    void write(int y)
    {
        S* const other = _other.first();
        {
            const S* const own = _own[y];
            const S* const isVertical = _isVertical[y];
            const S* const left = _excess[y] - Sites::isGreenInOddColumns(y);
            const S* const right = left + 1;
            // What the row has too much of its column's colour the rows above and below have of their row's.
            const S* const up = _excess[y - 1];
            const S* const down = _excess[y + 1];
            forEachSite([=](int i) {
                const S change = choose(S(0) < isVertical[i], S(0) - up[i] - down[i], left[i] + right[i]);
                other[i] = stored((2 * own[i] + change) >> 1);
            });
        }
        if (isOuterRow(y))
            writePixels(y, {_own[y], _green[y], _own[y]}, {_ownGreen[y], _ownGreen[y], _ownGreen[y]});
        else if (Sites::isRed(y))
            writePixels(y, {other, _green[y], _own[y]}, {_fromColumn[y], _ownGreen[y], _fromRow[y]});
        else
            writePixels(y, {_own[y], _green[y], other}, {_fromRow[y], _ownGreen[y], _fromColumn[y]});
        writeEnd(0, y);
        writeEnd(_src.width - 1, y);
    }

    struct Slots {
        const S* slot[3];
    };

    void writePixels(int y, Slots colored, Slots green)
    {
        const Slots even = Sites::isGreenInOddColumns(y) ? colored : green;
        const Slots odd = Sites::isGreenInOddColumns(y) ? green : colored;
        const auto pixel = [](const Slots& from, int i) {
            return Pixel<T, 3>{{static_cast<T>(from.slot[0][i].value), static_cast<T>(from.slot[1][i].value),
                                static_cast<T>(from.slot[2][i].value)}};
        };
        const auto store = [&](int i) { _stage.store(i, pixel(even, i + margin), pixel(odd, i + margin)); };
        forEachSite(store);
        _stage.write(_dst.row(y).first + 3 * _column, _pixels);
    }

    /// The first or last pixel of a row, if it is here.
    void writeEnd(int x, int y)
    {
        if (x < _column || x >= _column + _pixels) return;
        const int i = (x - _column) / 2 + margin;
        const bool isGreen = Sites::isGreen(x, y);
        const auto own = static_cast<T>((isGreen ? _ownGreen : _own)[y][i].value);
        const auto green = static_cast<T>((isGreen ? _ownGreen : _green)[y][i].value);
        _dst.row(y).store(x, {{own, green, own}});
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
    Ring<HalfLines<S, pairs + 2 * margin, 1>, 8> _raw{};
    Lines<5> _vertical{}, _horizontal{}, _down{}, _right{};
    Lines<3> _isVertical{}, _own{}, _green{}, _difference{};
    Lines<3> _ownGreen{}, _fromRow{}, _fromColumn{}, _excess{};
    Line _other{};
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
