/// @file
/// The shapes of kernels on the GPU. Threads stride over the image by the size of the grid, so that a kernel is
/// complete whatever grid it is launched with.

#pragma once

namespace vexa {

namespace detail {

constexpr int largestGridHeight = 65535;

inline unsigned blocks(int threads)
{
    return (static_cast<unsigned>(threads) + blockSide - 1) / blockSide;
}

inline unsigned atMost(unsigned value, unsigned limit)
{
    return value < limit ? value : limit;
}

}  // namespace detail

template <typename... P, typename... A>
void launch(void (*kernel)(P...), Extent extent, cudaStream_t stream, A... arguments)
{
    // A null image is left by an allocation that failed. Such a launch does nothing: on the device its fault would
    // end the context and all images with it.
    if ((detail::isNull(arguments) || ...)) return;
    if (extent.width < 1 || extent.height < 1) return;
    const dim3 grid(detail::blocks(extent.width),
                    detail::atMost(detail::blocks(extent.height), detail::largestGridHeight));
    kernel<<<grid, dim3(blockSide, blockSide), 0, stream>>>(static_cast<P>(arguments)...);
}

namespace detail {

// Unsigned, as a position may pass the largest int by one stride before it is compared.

VEXA_DEVICE unsigned firstColumn()
{
    return blockIdx.x * blockDim.x + threadIdx.x;
}

VEXA_DEVICE unsigned columnStride()
{
    return gridDim.x * blockDim.x;
}

VEXA_DEVICE unsigned firstRow()
{
    return blockIdx.y * blockDim.y + threadIdx.y;
}

VEXA_DEVICE unsigned rowStride()
{
    return gridDim.y * blockDim.y;
}

VEXA_DEVICE unsigned atLeastZero(int size)
{
    return size < 0 ? 0U : static_cast<unsigned>(size);
}

/// V elements that move as one word.
template <typename T, int V>
struct alignas(sizeof(T) * V) Pack {
    T lane[V];
};

template <int V, typename T>
VEXA_DEVICE bool isAligned(Plane<T> plane)
{
    constexpr std::uintptr_t bytes = sizeof(T) * V;
    const auto address = reinterpret_cast<std::uintptr_t>(plane.pixels);
    return (address | static_cast<std::uintptr_t>(plane.pitch) * sizeof(T)) % bytes == 0;
}

/// Values per channel stay in registers.
template <int V, typename T, int N>
VEXA_DEVICE bool isAligned(const PerChannel<T, N>& /*constants*/)
{
    return true;
}

/// V elements from column x of row y on.
template <int V, typename T>
VEXA_DEVICE Pack<T, V> loadPack(Plane<T> plane, int y, unsigned x)
{
    return *reinterpret_cast<const Pack<T, V>*>(plane.row(y) + x);
}

template <int V, typename T, int N>
VEXA_DEVICE Pack<T, V> loadPack(const PerChannel<T, N>& constants, int /*y*/, unsigned x)
{
    Pack<T, V> pack;
#pragma unroll
    for (unsigned i = 0; i < V; ++i) pack.lane[i] = constants.values[(x + i) % N];
    return pack;
}

template <typename T>
VEXA_DEVICE T loadElement(Plane<T> plane, int y, unsigned x)
{
    return plane.row(y)[x];
}

template <typename T, int N>
VEXA_DEVICE T loadElement(const PerChannel<T, N>& constants, int /*y*/, unsigned x)
{
    return constants.values[x % N];
}

template <int V, typename D, typename Op, typename... S>
VEXA_DEVICE void mapPacks(D* to, const Op& op, Pack<S, V>... from)
{
    Pack<D, V> result;
#pragma unroll
    for (int i = 0; i < V; ++i) result.lane[i] = op(from.lane[i]...);
    *reinterpret_cast<Pack<D, V>*>(to) = result;
}

/// The elements of row y from column x on, V of them or what is left of `elements`.
template <int V, typename D, typename Op, typename... Source>
VEXA_DEVICE void mapRun(bool aligned, int y, unsigned x, unsigned elements, Plane<D> dst, const Op& op,
                        const Source&... src)
{
    D* const to = dst.row(y) + x;
    const unsigned count = elements - x;
    if (aligned && count >= V) {
        mapPacks<V>(to, op, loadPack<V>(src, y, x)...);
        return;
    }
    for (unsigned i = 0; i < V && i < count; ++i) to[i] = op(loadElement(src, y, x + i)...);
}

/// Bytes of an element that a source loads from memory.
template <typename Source>
inline constexpr std::size_t loadedBytes = 0;
template <typename T>
inline constexpr std::size_t loadedBytes<Plane<T>> = sizeof(T);

/// Elements that a thread handles at a time, as elementsPerThread counts them.
template <typename D, typename... Source>
inline constexpr int packSize = 16 / static_cast<int>(std::max({sizeof(D), loadedBytes<Source>...}));

}  // namespace detail

/// A function of a byte. Threads compute it: a table would cost more.
template <typename Function>
class ByteFunction {
public:
    VEXA_DEVICE explicit ByteFunction(const Function& function) : _function(function) {}
    VEXA_DEVICE float operator()(u8 byte) const { return _function(byte); }

private:
    Function _function;
};

/// rule(x, y) for every pixel, one a thread.
template <typename Rule>
VEXA_DEVICE void forEachPixel(int width, int height, const Rule& rule)
{
    for (unsigned y = detail::firstRow(); y < detail::atLeastZero(height); y += detail::rowStride())
        for (unsigned x = detail::firstColumn(); x < detail::atLeastZero(width); x += detail::columnStride())
            rule(static_cast<int>(x), static_cast<int>(y));
}

/// dst = op(src...) for every element of C-channel pixels, 16 bytes of the widest type a thread. A source is a Plane or
/// PerChannel.
template <int C, typename D, typename Op, typename... Source>
VEXA_DEVICE void mapElements(int width, int height, Plane<D> dst, const Op& op, const Source&... src)
{
    constexpr int V = detail::packSize<D, Source...>;
    const bool aligned = detail::isAligned<V>(dst) && (detail::isAligned<V>(src) && ...);
    const unsigned elements = detail::atLeastZero(width) * C;
    for (unsigned y = detail::firstRow(); y < detail::atLeastZero(height); y += detail::rowStride())
        for (unsigned x = V * detail::firstColumn(); x < elements; x += V * detail::columnStride())
            detail::mapRun<V>(aligned, static_cast<int>(y), x, elements, dst, op, src...);
}

namespace detail {

/// pixelsPerThread pixels, each at its place in a row of them.
template <typename T, int N>
struct Run {
    Pixel<T, N> pixel[pixelsPerThread];
};

/// What the elements of a run align to, if they lie side by side: they move as words of this size.
template <typename T, int N>
inline constexpr std::size_t runAlignment = N == 2 || N == 4 ? std::min<std::size_t>(16, N* pixelsPerThread * sizeof(T))
                                                             : pixelsPerThread * sizeof(T);

template <typename T, int N>
struct alignas(runAlignment<T, N>) RunInMemory {
    Run<T, N> run;
};

VEXA_DEVICE bool isMultiple(const void* address, std::size_t pitchBytes, std::size_t bytes)
{
    return (reinterpret_cast<std::uintptr_t>(address) | pitchBytes) % bytes == 0;
}

/// Whether runs of this image are aligned.
template <typename T, int N>
VEXA_DEVICE bool hasRuns(const Interleaved<T, N>& image)
{
    return isMultiple(image.pixels, image.pitch * sizeof(T), runAlignment<T, N>);
}

template <typename T, int N>
VEXA_DEVICE bool hasRuns(const Planar<T, N>& image)
{
    bool has = true;
    for (const T* const plane : image.planes)
        has = has && isMultiple(plane, image.pitch * sizeof(T), runAlignment<T, 1>);
    return has;
}

template <typename T, int N>
VEXA_DEVICE Run<T, N> loadRun(const InterleavedRow<T, N>& row, int x)
{
    return reinterpret_cast<const RunInMemory<T, N>*>(row.first + N * x)->run;
}

template <typename T, int N>
VEXA_DEVICE void storeRun(const InterleavedRow<T, N>& row, int x, const Run<T, N>& run)
{
    *reinterpret_cast<RunInMemory<T, N>*>(row.first + N * x) = {run};
}

template <typename T, int N>
VEXA_DEVICE Run<T, N> loadRun(const PlanarRow<T, N>& row, int x)
{
    Run<T, N> run;
#pragma unroll
    for (int c = 0; c < N; ++c) {
        const auto plane = *reinterpret_cast<const RunInMemory<T, 1>*>(row.first[c] + x);
#pragma unroll
        for (int i = 0; i < pixelsPerThread; ++i) run.pixel[i].element[c] = plane.run.pixel[i].element[0];
    }
    return run;
}

template <typename T, int N>
VEXA_DEVICE void storeRun(const PlanarRow<T, N>& row, int x, const Run<T, N>& run)
{
#pragma unroll
    for (int c = 0; c < N; ++c) {
        RunInMemory<T, 1> plane;
#pragma unroll
        for (int i = 0; i < pixelsPerThread; ++i) plane.run.pixel[i].element[0] = run.pixel[i].element[c];
        *reinterpret_cast<RunInMemory<T, 1>*>(row.first[c] + x) = plane;
    }
}

template <typename ToRow, typename Op, typename... Run>
VEXA_DEVICE void mapRuns(int x, const ToRow& to, const Op& op, const Run&... runs)
{
    decltype(loadRun(to, x)) result;
#pragma unroll
    for (int i = 0; i < pixelsPerThread; ++i) result.pixel[i] = op(runs.pixel[i]...);
    storeRun(to, x, result);
}

/// The pixels from x on, pixelsPerThread of them or what is left of the row.
template <typename Op, typename ToRow, typename... FromRow>
VEXA_DEVICE void mapPixelRun(bool inRuns, int x, int width, const Op& op, const ToRow& to, const FromRow&... from)
{
    if (inRuns && width - x >= pixelsPerThread) {
        mapRuns(x, to, op, loadRun(from, x)...);
        return;
    }
    for (int i = 0; i < pixelsPerThread && i < width - x; ++i) to.store(x + i, op(from.load(x + i)...));
}

}  // namespace detail

/// dst = op(src...) for every pixel; images are Interleaved or Planar.
template <typename Dst, typename Op, typename... Src>
VEXA_DEVICE void mapPixels(int width, int height, const Dst& dst, const Op& op, const Src&... src)
{
    const bool inRuns = detail::hasRuns(dst) && (detail::hasRuns(src) && ...);
    for (unsigned row = detail::firstRow(); row < detail::atLeastZero(height); row += detail::rowStride()) {
        const int y = static_cast<int>(row);
        for (unsigned x = pixelsPerThread * detail::firstColumn(); x < detail::atLeastZero(width);
             x += pixelsPerThread * detail::columnStride())
            detail::mapPixelRun(inRuns, static_cast<int>(x), width, op, dst.row(y), src.row(y)...);
    }
}

/// rule(i) for every item of a flat run.
template <typename Rule>
VEXA_DEVICE void forEachItem(long long count, const Rule& rule)
{
    const long long threadsPerBlock = blockDim.x * blockDim.y;
    const long long block = static_cast<long long>(blockIdx.y) * gridDim.x + blockIdx.x;
    const long long stride = threadsPerBlock * gridDim.x * gridDim.y;
    for (long long i = block * threadsPerBlock + threadIdx.y * blockDim.x + threadIdx.x; i < count; i += stride)
        rule(i);
}

/// Items that forEachItemRun hands out at a time: one a thread.
inline constexpr int itemsPerRun = 1;

/// rule(first, items) for runs of a flat run of items; for rules whose loops lie outside those over items.
template <typename Rule>
VEXA_DEVICE void forEachItemRun(long long count, const Rule& rule)
{
    forEachItem(count, [&](long long i) { rule(i, itemsPerRun); });
}

/// rule(x, y) for every pixel outside the interior.
template <typename Rule>
VEXA_DEVICE void forEachPixelOutside(Interior interior, int width, int height, const Rule& rule)
{
    forEachPixel(width, height, [&](int x, int y) {
        if (!interior.contains(x, y)) rule(x, y);
    });
}

/// One block of threads that share memory.
template <typename Shared>
struct Block {
    int x;  ///< of the block in the grid
    int y;
    Shared& shared;

    /// rule(x, y) for every thread of the block; all have done so when it returns.
    template <typename Rule>
    VEXA_DEVICE void phase(const Rule& rule) const
    {
        rule(static_cast<int>(threadIdx.x), static_cast<int>(threadIdx.y));
        __syncthreads();
    }
};

/// body(block) for every block of the standard grid over width and height. What is shared starts undefined.
template <typename Shared, typename Body>
VEXA_DEVICE void forEachBlock(int width, int height, const Body& body)
{
    __shared__ Shared shared;
    const unsigned columns = (detail::atLeastZero(width) + blockSide - 1) / blockSide;
    const unsigned rows = (detail::atLeastZero(height) + blockSide - 1) / blockSide;
    for (unsigned y = blockIdx.y; y < rows; y += gridDim.y)
        for (unsigned x = blockIdx.x; x < columns; x += gridDim.x)
            body(Block<Shared>{static_cast<int>(x), static_cast<int>(y), shared});
}

}  // namespace vexa
