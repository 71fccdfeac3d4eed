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
