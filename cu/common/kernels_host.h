/// @file
/// The shapes of kernels on the host. Rows are spread over the cores and columns over vector registers. Rules are
/// copied into each task, so that what they capture stays in registers and stores of bytes can't alias it: that is
/// worth a factor of 20.

#pragma once

#include "parallel.h"
#include "streaming.h"

namespace vexa {

template <typename... P, typename... A>
void launch(void (*kernel)(P...), Extent /*extent*/, cudaStream_t /*stream*/, A... arguments)
{
    // A null image is left by an allocation that failed; such a launch does nothing.
    if ((detail::isNull(arguments) || ...)) return;
    kernel(static_cast<P>(arguments)...);
}

/// A function of a byte, by a table of its values: kernels make one before they go over their pixels.
template <typename Function>
class ByteFunction {
public:
    explicit ByteFunction(const Function& function)
    {
#pragma omp simd
        for (int byte = 0; byte < 256; ++byte) _values[byte] = function(static_cast<u8>(byte));
    }

    float operator()(u8 byte) const
    {
        return _values[byte];
    }

private:
    float _values[256];
};

/// rule(x, y) for every pixel.
template <typename Rule>
inline void forEachPixel(int width, int height, const Rule& rule)
{
    if (width < 1 || height < 1) return;
    constexpr std::size_t bytesPerPixel = 8;
    platform::parallelRanges(static_cast<std::size_t>(height), static_cast<std::size_t>(width) * bytesPerPixel,
                             [=](std::size_t begin, std::size_t end) {
                                 const Rule own = rule;
                                 for (std::size_t y = begin; y < end; ++y) {
#pragma omp simd
                                     for (int x = 0; x < width; ++x) own(x, static_cast<int>(y));
                                 }
                             });
}

namespace detail {

/// Pixels after which values per channel repeat in memory, so that they load like elements.
constexpr int pixelsPerPattern = 512;

/// A source as the inner loop reads it: from(y, x) is what it indexes from there on.
template <typename T>
struct PlaneReader {
    explicit PlaneReader(Plane<T> plane) : plane(plane) {}
    const T* from(int y, int x) const { return plane.row(y) + x; }

    Plane<T> plane;
};

/// One value for all channels stays in a register.
template <typename T>
struct Uniform {
    T value;
    T operator[](int /*x*/) const { return value; }
};

template <typename T>
struct UniformReader {
    explicit UniformReader(const PerChannel<T, 1>& constants) : uniform{constants.values[0]} {}
    Uniform<T> from(int /*y*/, int /*x*/) const { return uniform; }

    Uniform<T> uniform;
};

template <typename T, int N>
struct PatternReader {
    explicit PatternReader(const PerChannel<T, N>& constants)
    {
        for (int pixel = 0; pixel < pixelsPerPattern; ++pixel)
            for (int c = 0; c < N; ++c) pattern[pixel * N + c] = constants.values[c];
    }
    const T* from(int /*y*/, int /*x*/) const { return pattern; }

    T pattern[pixelsPerPattern * N];
};

/// For each kind of source its reader, whether it is a pattern, and the bytes of an element that come from memory.
template <typename Source>
struct SourceTraits;

template <typename T>
struct SourceTraits<Plane<T>> {
    using Reader = PlaneReader<T>;
    static constexpr bool isPattern = false;
    static constexpr std::size_t loadedBytes = sizeof(T);
};

template <typename T, int N>
struct SourceTraits<PerChannel<T, N>> {
    using Reader = std::conditional_t<N == 1, UniformReader<T>, PatternReader<T, N>>;
    static constexpr bool isPattern = N > 1;
    static constexpr std::size_t loadedBytes = 0;
};

template <typename D, typename Op, typename... From>
inline void mapRun(int count, D* to, const Op& op, const From&... from)
{
#pragma omp simd
    for (int x = 0; x < count; ++x) to[x] = op(from[x]...);
}

/// All rows, in runs of at most `run` elements.
template <typename D, typename Op, typename... Reader>
inline void mapRows(int elements, int height, int run, std::size_t bytesPerElement, Plane<D> dst, const Op& op,
                    const Reader&... readers)
{
    const auto body = [=, &readers...](std::size_t begin, std::size_t end) {
        const Op own = op;
        for (std::size_t row = begin; row < end; ++row) {
            const int y = static_cast<int>(row);
            for (int x = 0; x < elements;) {
                const int count = std::min(run, elements - x);
                mapRun(count, dst.row(y) + x, own, readers.from(y, x)...);
                x += count;
            }
        }
    };
    platform::parallelRanges(static_cast<std::size_t>(height), static_cast<std::size_t>(elements) * bytesPerElement,
                             body);
}

}  // namespace detail

/// dst = op(src...) for every element of C-channel pixels. A source is a Plane or PerChannel.
template <int C, typename D, typename Op, typename... Source>
inline void mapElements(int width, int height, Plane<D> dst, const Op& op, const Source&... src)
{
    if (width < 1 || height < 1) return;
    const int elements = width * C;
    constexpr bool hasPattern = (detail::SourceTraits<Source>::isPattern || ...);
    const int run = hasPattern ? detail::pixelsPerPattern * C : elements;
    constexpr std::size_t bytesPerElement = (sizeof(D) + ... + detail::SourceTraits<Source>::loadedBytes);
    detail::mapRows(elements, height, run, bytesPerElement, dst, op,
                    typename detail::SourceTraits<Source>::Reader(src)...);
}

namespace detail {

template <typename Image>
inline constexpr std::size_t bytesPerPixel = sizeof(std::declval<const Image&>().row(0).load(0));

/// Rows by value, so that stores of bytes can't alias them.
template <typename Op, typename ToRow, typename... FromRow>
inline void mapRow(int width, Op op, ToRow to, FromRow... from)
{
#pragma omp simd
    for (int x = 0; x < width; ++x) to.store(x, op(from.load(x)...));
}

/// Pixels of a row on their way past the caches; a larger stage costs a tenth of the speed.
template <typename T, int N>
struct Stage {
    static constexpr int bytes = 1536;
    static constexpr int pixels = bytes / (N * static_cast<int>(sizeof(T)));
    alignas(64) T element[N * pixels];

    InterleavedRow<T, N> rowLike(const InterleavedRow<T, N>& /*row*/) { return {element}; }
    PlanarRow<T, N> rowLike(const PlanarRow<T, N>& /*row*/) { return planes(std::make_index_sequence<N>()); }

    /// The first `count` pixels to their place.
    void write(const InterleavedRow<T, N>& to, int count) const { write(to.first, element, N * count); }
    void write(const PlanarRow<T, N>& to, int count) const
    {
        for (int i = 0; i < N; ++i) write(to.first[i], element + i * pixels, count);
    }

private:
    template <std::size_t... I>
    PlanarRow<T, N> planes(std::index_sequence<I...>)
    {
        return {{(element + I * pixels)...}};
    }
    static void write(T* to, const T* from, int count)
    {
        platform::writePastCaches(to, from, static_cast<std::size_t>(count) * sizeof(T));
    }
};

template <typename T, int N>
Stage<T, N> stageOf(const Interleaved<T, N>&);
template <typename T, int N>
Stage<T, N> stageOf(const Planar<T, N>&);

}  // namespace detail

/// dst = op(src...) for every pixel; images are Interleaved or Planar.
template <typename Dst, typename Op, typename... Src>
inline void mapPixels(int width, int height, const Dst& dst, const Op& op, const Src&... src)
{
    if (width < 1 || height < 1) return;
    constexpr std::size_t written = detail::bytesPerPixel<Dst>;
    constexpr std::size_t moved = (written + ... + detail::bytesPerPixel<Src>);
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const bool staged = platform::outgrowsCaches(pixels * written);
    using Stage = decltype(detail::stageOf(dst));
    const auto body = [=](std::size_t begin, std::size_t end) {
        Stage stage;
        for (std::size_t row = begin; row < end; ++row) {
            const int y = static_cast<int>(row);
            if (!staged) {
                detail::mapRow(width, op, dst.row(y), src.row(y)...);
                continue;
            }
            for (int x = 0; x < width; x += Stage::pixels) {
                const int count = std::min(Stage::pixels, width - x);
                detail::mapRow(count, op, stage.rowLike(dst.row(y)), src.row(y).from(x)...);
                stage.write(dst.row(y).from(x), count);
            }
        }
        if (staged) platform::finishPastCaches();
    };
    platform::parallelRanges(static_cast<std::size_t>(height), static_cast<std::size_t>(width) * moved, body);
}

/// rule(i) for every item of a flat run.
template <typename Rule>
inline void forEachItem(long long count, const Rule& rule)
{
    if (count < 1) return;
    constexpr std::size_t bytesPerItem = 32;
    platform::parallelRanges(static_cast<std::size_t>(count), bytesPerItem, [=](std::size_t begin, std::size_t end) {
        const Rule own = rule;
#pragma omp simd
        for (std::size_t i = begin; i < end; ++i) own(static_cast<long long>(i));
    });
}

/// Items that forEachItemRun hands out at a time: a few vectors, so that one waits for its results while others work.
inline constexpr int itemsPerRun = 64;

/// rule(first, items) for runs of a flat run of items; for rules whose loops lie outside those over items.
template <typename Rule>
inline void forEachItemRun(long long count, const Rule& rule)
{
    if (count < 1) return;
    constexpr std::size_t bytesPerRun = 64 * itemsPerRun;
    const auto runs = static_cast<std::size_t>((count + itemsPerRun - 1) / itemsPerRun);
    platform::parallelRanges(runs, bytesPerRun, [=](std::size_t begin, std::size_t end) {
        const Rule own = rule;
        for (std::size_t run = begin; run < end; ++run) {
            const long long first = static_cast<long long>(run) * itemsPerRun;
            own(first, static_cast<int>(std::min<long long>(itemsPerRun, count - first)));
        }
    });
}

/// rule(x, y) for every pixel outside the interior, row by row in runs on either side of it.
template <typename Rule>
inline void forEachPixelOutside(Interior interior, int width, int height, const Rule& rule)
{
    if (width < 1 || height < 1) return;
    const int left = std::clamp(interior.left, 0, width);
    const int right = std::clamp(interior.right, left, width);
    const auto body = [=](std::size_t begin, std::size_t end) {
        const Rule own = rule;
        const auto run = [&own](int from, int to, int y) {
#pragma omp simd
            for (int x = from; x < to; ++x) own(x, y);
        };
        for (std::size_t row = begin; row < end; ++row) {
            const int y = static_cast<int>(row);
            const bool crosses = y >= interior.top && y < interior.bottom;
            run(0, crosses ? left : width, y);
            if (crosses) run(right, width, y);
        }
    };
    const int perRow = interior.top < interior.bottom ? width - (right - left) : width;
    platform::parallelRanges(static_cast<std::size_t>(height), static_cast<std::size_t>(perRow) * 4, body);
}

/// One block of threads that share memory.
template <typename Shared>
struct Block {
    int x;  ///< of the block in the grid
    int y;
    Shared& shared;

    /// rule(x, y) for every thread of the block; all have done so when it returns.
    template <typename Rule>
    void phase(const Rule& rule) const
    {
        for (int threadY = 0; threadY < blockSide; ++threadY)
            for (int threadX = 0; threadX < blockSide; ++threadX) rule(threadX, threadY);
    }
};

/// body(block) for every block of the standard grid over width and height. What is shared starts undefined.
template <typename Shared, typename Body>
inline void forEachBlock(int width, int height, const Body& body)
{
    if (width < 1 || height < 1) return;
    const std::size_t columns = (static_cast<std::size_t>(width) + blockSide - 1) / blockSide;
    const std::size_t rows = (static_cast<std::size_t>(height) + blockSide - 1) / blockSide;
    constexpr std::size_t bytesPerBlock = 64 * blockSide * blockSide;
    platform::parallelRanges(columns * rows, bytesPerBlock, [=](std::size_t begin, std::size_t end) {
        Shared shared;
        for (std::size_t i = begin; i < end; ++i)
            body(Block<Shared>{static_cast<int>(i % columns), static_cast<int>(i / columns), shared});
    });
}

}  // namespace vexa
