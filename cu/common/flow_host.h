/// @file
/// Dense flow on the host, tile by tile. Most pixels of a tile move about alike, by displacements that differ in their
/// fractions alone. For the whole displacements that many of them share, the sums over all windows of the tile are made
/// at once, by adding and dropping rows and columns, at a cost that does not grow with the window; rounds then take
/// them from there. Pixels that go their own way sum their windows themselves.

#pragma once

#include <limits>

namespace vexa {

namespace detail {

constexpr int flowTileWidth = 64;
constexpr int flowTileHeight = 32;
constexpr int flowTilePixels = flowTileWidth * flowTileHeight;

/// Columns of a window that are summed at a time, side by side.
constexpr int windowLanes = 16;

/// A number for each pixel of a tile, or each of the eight sums.
template <typename T>
struct PerTilePixel {
    alignas(64) T at[flowTilePixels];
};

/// The sums of gradient times difference for all pixels of a tile at one whole displacement.
struct ErrorSums {
    PerTilePixel<int> x;
    PerTilePixel<int> y;
};

/// A whole displacement.
struct Shift {
    int x;
    int y;

    bool operator==(const Shift& other) const { return (x == other.x) & (y == other.y); }
};

/// The four texels of a displacement.
constexpr int texels = 4;
constexpr Shift texelOffsets[texels] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};

/// What a task needs for its tiles: fixed room, and rows of windows that grow with the radii.
struct FlowMemory {
    static constexpr int mostSums = 96;
    ErrorSums sums[mostSums];

    PerTilePixel<float> flowX, flowY;
    PerTilePixel<float> xx, xy, yy, inverse;
    PerTilePixel<float> right, lower;  ///< weights
    PerTilePixel<int> shiftX, shiftY;
    PerTilePixel<int> moves;
};

/// A tile of the interior and all that its windows reach.
class FlowTile {
public:
    FlowTile(const LucasKanade& level, FlowMemory& memory, int* pixels, int* columns, u8* line)
        : _level(level), _memory(memory), _columns(columns), _line(line)
    {
        const std::ptrdiff_t size = static_cast<std::ptrdiff_t>(pitch(level)) * reachedRows(level);
        _gradientX = pixels;
        _gradientY = pixels + size;
        _from = pixels + 2 * size;
    }

    /// Room that a tile takes from its task: elements of each array.
    static int pitch(const LucasKanade& level) { return flowTileWidth + 2 * level.radiusX + windowLanes; }
    static int reachedRows(const LucasKanade& level) { return flowTileHeight + 2 * level.radiusY; }
    static constexpr int images = 3;
    static constexpr int columnSums = 3;

    void refine(const Tile& tile)
    {
        _tile = tile;
        load();
        if (_level.iterations > 0) {
            sumStructures();
            _knownSums = 0;
            _knownMoves = 0;
            for (int round = 0; round < _level.iterations; ++round)
                if (!moveAll()) break;
        }
        store();
    }

private:
    int width() const { return _tile.right - _tile.left; }
    int height() const { return _tile.bottom - _tile.top; }
    int windowWidth() const { return 2 * _level.radiusX + 1; }
    int windowHeight() const { return 2 * _level.radiusY + 1; }
    std::ptrdiff_t offset(int row) const { return static_cast<std::ptrdiff_t>(row) * pitch(_level); }

    void load()
    {
        const int count = width() + 2 * _level.radiusX;
        const int left = _tile.left - _level.radiusX;
        for (int row = 0; row < height() + 2 * _level.radiusY; ++row) {
            const int y = _tile.top - _level.radiusY + row;
            const float* const p = _level.gradientX.row(y) + left;
            const float* const q = _level.gradientY.row(y) + left;
            const u8* const from = _level.from.row(y) + left;
            int* const toP = _gradientX + offset(row);
            int* const toQ = _gradientY + offset(row);
            int* const to = _from + offset(row);
#pragma omp simd
            for (int x = 0; x < count; ++x) {
                toP[x] = static_cast<int>(p[x]);
                toQ[x] = static_cast<int>(q[x]);
                to[x] = from[x];
            }
            std::fill_n(to + count, pitch(_level) - count, 0);
            std::fill_n(toP + count, pitch(_level) - count, 0);
            std::fill_n(toQ + count, pitch(_level) - count, 0);
        }
        for (int row = 0; row < height(); ++row) {
            const int first = row * flowTileWidth;
            std::copy_n(_level.flowX.row(_tile.top + row) + _tile.left, width(), _memory.flowX.at + first);
            std::copy_n(_level.flowY.row(_tile.top + row) + _tile.left, width(), _memory.flowY.at + first);
            std::fill_n(_memory.moves.at + first, width(), 1);
        }
    }

    void store() const
    {
        for (int row = 0; row < height(); ++row) {
            const int y = _tile.top + row;
            const int first = row * flowTileWidth;
            float* const toX = _level.flowX.row(y) + _tile.left;
            float* const toY = _level.flowY.row(y) + _tile.left;
            const float* const flowX = _memory.flowX.at + first;
            const float* const flowY = _memory.flowY.at + first;
#pragma omp simd
            for (int x = 0; x < width(); ++x) {
                toX[x] = keptInside(flowX[x], _tile.left + x, _level.width());
                toY[x] = keptInside(flowY[x], y, _level.height());
            }
        }
    }

    // ---- sums over all windows ----

    /// Adds N products of each column to their sums, or subtracts them.
    template <int sign, int N, typename Products>
    void addRow(const Products& products) const
    {
        const int count = width() + 2 * _level.radiusX;
        int* const columns = _columns;
        const int stride = pitch(_level);
#pragma omp simd
        for (int x = 0; x < count; ++x) {
            const Pixel<int, N> product = products(x);
            for (int i = 0; i < N; ++i) columns[i * stride + x] += sign * product.element[i];
        }
    }

    /// Sums of the windows of a row, from the sums of its columns: write(x, sums).
    template <int N, typename Write>
    void sumColumns(const Write& write) const
    {
        const int behind = windowWidth() - 1;
        const int stride = pitch(_level);
        Pixel<int, N> sum{};
        for (int x = 0; x < behind; ++x)
            for (int i = 0; i < N; ++i) sum.element[i] += _columns[i * stride + x];
        for (int x = 0; x < width(); ++x) {
            for (int i = 0; i < N; ++i) sum.element[i] += _columns[i * stride + x + behind];
            write(x, sum);
            for (int i = 0; i < N; ++i) sum.element[i] -= _columns[i * stride + x];
        }
    }

    /// Sums of products over the windows of all pixels: rows(row) gives those of a row, write(pixel, sums) takes them.
    template <int N, typename Rows, typename Write>
    void sumWindows(const Rows& rows, const Write& write) const
    {
        std::fill_n(_columns, N * pitch(_level), 0);
        const int behind = windowHeight() - 1;
        for (int row = 0; row < behind; ++row) addRow<1, N>(rows(row));
        for (int row = 0; row < height(); ++row) {
            addRow<1, N>(rows(row + behind));
            sumColumns<N>([&](int x, const Pixel<int, N>& sum) { write(row * flowTileWidth + x, sum); });
            addRow<-1, N>(rows(row));
        }
    }

    void sumStructures()
    {
        FlowMemory& memory = _memory;
        sumWindows<3>(
            [&](int row) {
                return [p = _gradientX + offset(row), q = _gradientY + offset(row)](int x) {
                    return Pixel<int, 3>{{p[x] * p[x], p[x] * q[x], q[x] * q[x]}};
                };
            },
            [&](int i, const Pixel<int, 3>& sum) {
                memory.xx.at[i] = static_cast<float>(sum.element[0]);
                memory.xy.at[i] = static_cast<float>(sum.element[1]);
                memory.yy.at[i] = static_cast<float>(sum.element[2]);
            });
        for (int row = 0; row < height(); ++row) {
            const int first = row * flowTileWidth;
#pragma omp simd
            for (int i = first; i < first + width(); ++i)
                memory.inverse.at[i] =
                    Structure{memory.xx.at[i], memory.xy.at[i], memory.yy.at[i]}.inverseDeterminant();
        }
    }

    /// `count` texels of the row y from column x on, with the edges repeated.
    const u8* texelRow(int x, int y, int count) const
    {
        const FetchClamped<u8> to = _level.to;
        const u8* const row = to.row(y);
        if (x >= 0 && x + count <= to.width) return row + x;
        for (int i = 0; i < count; ++i) _line[i] = to(x + i, y);
        return _line;
    }

    void sumErrors(const Shift& shift, ErrorSums& sums) const
    {
        const int count = width() + 2 * _level.radiusX;
        sumWindows<2>(
            [&](int row) {
                const u8* const to =
                    texelRow(_tile.left - _level.radiusX + shift.x, _tile.top - _level.radiusY + row + shift.y, count);
                return [p = _gradientX + offset(row), q = _gradientY + offset(row), from = _from + offset(row),
                        to](int x) {
                    const int difference = from[x] - to[x];
                    return Pixel<int, 2>{{p[x] * difference, q[x] * difference}};
                };
            },
            [&](int i, const Pixel<int, 2>& sum) {
                sums.x.at[i] = sum.element[0];
                sums.y.at[i] = sum.element[1];
            });
    }

    // ---- rounds ----

    /// A whole displacement that pixels of the tile make, and the sums at its texels where they are known.
    struct Move {
        Shift shift;
        int pixels;
        bool isKnown;
        int sums[texels];
    };

    /// Displacements in fewer pixels at a run are not counted.
    static constexpr int shortestRun = 4;
    /// Sums of all windows cost as much as those of so many pixels one by one.
    static constexpr int worthSums = 48;
    static constexpr int mostMoves = 64;

    /// One more round for all that move; false if none is left.
    bool moveAll()
    {
        place();
        countMoves();
        for (int i = 0; i < _knownMoves; ++i)
            if (!_moves[i].isKnown && _moves[i].pixels >= worthSums) learn(_moves[i]);
        bool moves = false;
        for (int row = 0; row < height(); ++row) moves |= moveRow(row);
        return moves;
    }

    /// The displacements of all pixels.
    void place() const
    {
        FlowMemory& memory = _memory;
        const LucasKanade level = _level;
        for (int row = 0; row < height(); ++row) {
            const int first = row * flowTileWidth;
#pragma omp simd
            for (int i = first; i < first + width(); ++i) {
                const Displacement across = displacementOf(memory.flowX.at[i], level.width(), level.interpolates);
                const Displacement down = displacementOf(memory.flowY.at[i], level.height(), level.interpolates);
                memory.shiftX.at[i] = across.whole;
                memory.shiftY.at[i] = down.whole;
                memory.right.at[i] = across.weight;
                memory.lower.at[i] = down.weight;
            }
        }
    }

    Shift shiftOf(int i) const
    {
        return {_memory.shiftX.at[i], _memory.shiftY.at[i]};
    }

    /// work(first, count) for the runs of pixels of a row that share their whole displacement.
    template <typename Work>
    void forEachRun(int row, const Work& work) const
    {
        const int end = row * flowTileWidth + width();
        for (int first = row * flowTileWidth; first < end;) {
            int next = first + 1;
            while (next < end && shiftOf(next) == shiftOf(first)) ++next;
            work(first, next - first);
            first = next;
        }
    }

    Move* find(const Shift& shift)
    {
        for (int i = 0; i < _knownMoves; ++i)
            if (_moves[i].shift == shift) return &_moves[i];
        return nullptr;
    }

    void countMoves()
    {
        for (int i = 0; i < _knownMoves; ++i) _moves[i].pixels = 0;
        for (int row = 0; row < height(); ++row)
            forEachRun(row, [&](int first, int count) {
                if (count < shortestRun) return;
                int moving = 0;
                for (int i = first; i < first + count; ++i) moving += _memory.moves.at[i];
                Move* move = find(shiftOf(first));
                if (move == nullptr && _knownMoves < mostMoves) {
                    move = &_moves[_knownMoves++];
                    *move = {shiftOf(first), 0, false, {}};
                }
                if (move != nullptr) move->pixels += moving;
            });
    }

    void learn(Move& move)
    {
        int missing = 0;
        for (const Shift& offset : texelOffsets)
            missing += indexOf({move.shift.x + offset.x, move.shift.y + offset.y}) < 0 ? 1 : 0;
        if (_knownSums + missing > FlowMemory::mostSums) return;
        for (int k = 0; k < texels; ++k) {
            const Shift shift{move.shift.x + texelOffsets[k].x, move.shift.y + texelOffsets[k].y};
            int index = indexOf(shift);
            if (index < 0) {
                index = _knownSums++;
                _shifts[index] = shift;
                sumErrors(shift, _memory.sums[index]);
            }
            move.sums[k] = index;
        }
        move.isKnown = true;
    }

    int indexOf(const Shift& shift) const
    {
        for (int i = 0; i < _knownSums; ++i)
            if (_shifts[i] == shift) return i;
        return -1;
    }

    /// One more round for the pixels of a row; whether any goes on to move.
    bool moveRow(int row)
    {
        const int first = row * flowTileWidth;
        if (!isMoving(first, width())) return false;
        forEachRun(row, [&](int from, int count) {
            if (isMoving(from, count)) loadErrors(from, count, from - first);
        });
        return step(first);
    }

    bool isMoving(int first, int count) const
    {
        int moving = 0;
        for (int i = first; i < first + count; ++i) moving += _memory.moves.at[i];
        return moving != 0;
    }

    /// The sums of a run of pixels that share their whole displacement, to those of the row from a column on.
    void loadErrors(int first, int count, int column)
    {
        const Move* const move = find(shiftOf(first));
        if (move == nullptr || !move->isKnown) {
            for (int i = 0; i < count; ++i)
                if (_memory.moves.at[first + i] != 0) sumWindow(first + i, column + i);
            return;
        }
        for (int k = 0; k < texels; ++k) {
            const ErrorSums& sums = _memory.sums[move->sums[k]];
            std::copy_n(sums.x.at + first, count, _errorX[k] + column);
            std::copy_n(sums.y.at + first, count, _errorY[k] + column);
        }
    }

    bool step(int first) const
    {
        const auto& x = _errorX;
        const auto& y = _errorY;
        float* const flowX = _memory.flowX.at + first;
        float* const flowY = _memory.flowY.at + first;
        int* const moves = _memory.moves.at + first;
        const float* const right = _memory.right.at + first;
        const float* const lower = _memory.lower.at + first;
        const float* const xx = _memory.xx.at + first;
        const float* const xy = _memory.xy.at + first;
        const float* const yy = _memory.yy.at + first;
        const float* const inverse = _memory.inverse.at + first;
        const float threshold = _level.errorThreshold;
        const int count = width();
        const auto real = [](int sum) { return static_cast<float>(sum); };
        int moving = 0;
#pragma omp simd reduction(+ : moving)
        for (int i = 0; i < count; ++i) {
            const float errorX = meanOf(real(x[0][i]), real(x[1][i]), real(x[2][i]), real(x[3][i]), right[i], lower[i]);
            const float errorY = meanOf(real(y[0][i]), real(y[1][i]), real(y[2][i]), real(y[3][i]), right[i], lower[i]);
            const bool moved = moves[i] != 0;
            const Flow before{flowX[i], flowY[i], moved};
            const Flow next = before.moved(Structure{xx[i], xy[i], yy[i]}, inverse[i], errorX, errorY, threshold);
            flowX[i] = moved ? next.x : before.x;
            flowY[i] = moved ? next.y : before.y;
            moves[i] = (moved & next.moves) ? 1 : 0;
            moving += moves[i];
        }
        return moving != 0;
    }

    // ---- the window of one pixel ----

    /// The sums of a pixel of the tile, to a column of those of its row.
    void sumWindow(int pixel, int to)
    {
        const int row = pixel / flowTileWidth;
        const int column = pixel % flowTileWidth;
        const Shift shift = shiftOf(pixel);
        const int left = _tile.left + column - _level.radiusX + shift.x;
        const int top = _tile.top + row - _level.radiusY + shift.y;
        for (int k = 0; k < texels; ++k) _errorX[k][to] = _errorY[k][to] = 0;
        for (int first = 0; first < windowWidth(); first += windowLanes) {
            Lanes lanes(windowWidth() - first);
            Texels rows[2];
            loadTexels(left + first, top, rows[0]);
            for (int i = 0; i < windowHeight(); ++i) {
                const std::ptrdiff_t at = offset(row + i) + column + first;
                loadTexels(left + first, top + i + 1, rows[(i + 1) % 2]);
                lanes.add(_gradientX + at, _gradientY + at, _from + at, rows[i % 2], rows[(i + 1) % 2]);
            }
            for (int k = 0; k < texels; ++k) {
                _errorX[k][to] += sum(lanes.x[k]);
                _errorY[k][to] += sum(lanes.y[k]);
            }
        }
    }

    /// Texels of a row of the window, and the one behind.
    struct Texels {
        int at[windowLanes + 1];
    };

    void loadTexels(int x, int y, Texels& texel) const
    {
        const FetchClamped<u8> to = _level.to;
        const u8* const row = to.row(y) + x;
        if (x >= 0 && x + windowLanes < to.width)
            for (int i = 0; i <= windowLanes; ++i) texel.at[i] = row[i];
        else
            for (int i = 0; i <= windowLanes; ++i) texel.at[i] = to(x + i, y);
    }

    /// Sums of products, side by side.
    struct Lanes {
        int mask[windowLanes];
        int x[texels][windowLanes] = {};
        int y[texels][windowLanes] = {};

        explicit Lanes(int count)
        {
            for (int i = 0; i < windowLanes; ++i) mask[i] = i < count ? -1 : 0;
        }

        void add(const int* gradientX, const int* gradientY, const int* from, const Texels& upper, const Texels& lower)
        {
#pragma omp simd
            for (int i = 0; i < windowLanes; ++i) {
                const int p = gradientX[i] & mask[i];
                const int q = gradientY[i] & mask[i];
                const int difference[texels] = {from[i] - upper.at[i], from[i] - upper.at[i + 1], from[i] - lower.at[i],
                                                from[i] - lower.at[i + 1]};
                for (int k = 0; k < texels; ++k) {
                    x[k][i] += p * difference[k];
                    y[k][i] += q * difference[k];
                }
            }
        }
    };

    static int sum(const int (&lanes)[windowLanes])
    {
        int total = 0;
        for (const int lane : lanes) total += lane;
        return total;
    }

    const LucasKanade _level;
    FlowMemory& _memory;
    int* _gradientX;
    int* _gradientY;
    int* _from;
    int* const _columns;
    u8* const _line;
    Tile _tile{};
    int _errorX[texels][flowTileWidth] = {};  ///< of a row, at the texels of its pixels
    int _errorY[texels][flowTileWidth] = {};
    Move _moves[mostMoves];
    int _knownMoves = 0;
    Shift _shifts[FlowMemory::mostSums];
    int _knownSums = 0;
};

/// All pixels of the interior, by tiles; a task takes a row of these.
inline void refineTiles(const LucasKanade& level)
{
    const Tiling tiles{level.interior(), flowTileWidth, flowTileHeight};
    const auto columns = static_cast<std::size_t>(tiles.columns());
    const auto body = [=](std::size_t begin, std::size_t end) {
        const int pitch = FlowTile::pitch(level);
        const auto memory = taskMemory<FlowMemory>(1, 1);
        const auto pixels = taskMemory<int>(FlowTile::images * FlowTile::reachedRows(level), pitch);
        const auto sums = taskMemory<int>(FlowTile::columnSums, pitch);
        const auto line = taskMemory<u8>(1, pitch);
        if (!memory || !pixels || !sums || !line) return;
        FlowTile tile(level, *memory.get(), pixels.get(), sums.get(), line.get());
        for (std::size_t i = begin * columns; i < end * columns; ++i) tile.refine(tiles[i]);
    };
    constexpr std::size_t bytesPerTile = std::size_t{flowTilePixels} * 64;
    platform::parallelRanges(static_cast<std::size_t>(tiles.rows()), columns * bytesPerTile, body);
}

}  // namespace detail

/// Moves the flow of all pixels whose windows lie inside; that of the others stays.
inline void refineFlow(const LucasKanade& level)
{
    const Interior interior = level.interior();
    if (interior.left >= interior.right || interior.top >= interior.bottom) return;
    if (level.radiusX >= 0 && level.radiusY >= 0 && detail::isNarrow(level.radiusX, level.radiusY)) {
        detail::refineTiles(level);
        return;
    }
    const detail::PixelFlow<long long> pixelFlow{level};
    forEachPixel(level.width(), level.height(), [=](int x, int y) {
        if (interior.contains(x, y)) pixelFlow(x, y);
    });
}

}  // namespace vexa
