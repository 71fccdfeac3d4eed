/// @file
/// The most frequent and the middle value of a square window. The names are crossed: medianFilter and the kernels that
/// are called median give the most frequent value, modeFilter and its kernels the middle one. That is meant.

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "pitch.h"
#include "sorted_windows.h"

using namespace vexa;

namespace {

/// The middle of N sorted values.
template <int N>
struct MiddleValue : LooksAt<(N - 1) / 2, (N - 1) / 2> {
    template <typename Steps, typename T>
    VEXA_DEVICE T operator()(const Ordered<Steps, T>& values) const
    {
        return values.template at<(N - 1) / 2>();
    }
};

/// The longest run of equal values, and how long the current one is.
template <typename T>
struct Runs {
    T value;
    T length;
    T most;
    T result;

    VEXA_DEVICE void add(T next)
    {
        const T longer = static_cast<T>(length + 1);
        length = next == value ? longer : T(1);
        value = next;
        result = length > most ? next : result;
        most = length > most ? length : most;
    }
};

/// The most frequent of N sorted values, the smallest of those that are equally frequent.
template <int N>
struct MostFrequentValue : LooksAt<0, N - 1> {
    template <typename Steps, typename T>
    VEXA_DEVICE T operator()(const Ordered<Steps, T>& values) const
    {
        return of(values, std::make_index_sequence<N - 1>());
    }

private:
    template <typename Steps, typename T, std::size_t... I>
    static VEXA_DEVICE T of(const Ordered<Steps, T>& values, std::index_sequence<I...>)
    {
        const T first = values.template at<0>();
        Runs<T> runs{first, 1, 1, first};
        (runs.add(values.template at<static_cast<int>(I) + 1>()), ...);
        return runs.result;
    }
};

}  // namespace

template <typename T, int bits, int C, int w, int h>
VEXA_KERNEL kernel_median_small_shared(const T* src, T* dst, int width, int height, int pitch)
{
    static_assert(w == h);
    forEachSortedWindow<w>(C, FetchClamped<T>{src, C * width, height, pitch}, Plane<T>{dst, pitch},
                           MostFrequentValue<w * h>());
}

template <typename T, int bits, int C, int w, int h>
VEXA_KERNEL kernel_mode_small_shared(const T* src, T* dst, int width, int height, int pitch)
{
    static_assert(w == h);
    forEachSortedWindow<w>(C, FetchClamped<T>{src, C * width, height, pitch}, Plane<T>{dst, pitch},
                           MiddleValue<w * h>());
}

namespace {

using ToRank = void (*)(const u8* src, u8* dst, int width, int height, int pitch);

/// The kernels of a function, by the side of their window.
struct KernelOf {
    int side;
    ToRank kernel;
};

template <int C>
constexpr KernelOf medianKernels[] = {{3, kernel_median_small_shared<u8, 8, C, 3, 3>},
                                      {5, kernel_median_small_shared<u8, 8, C, 5, 5>},
                                      {7, kernel_median_small_shared<u8, 8, C, 7, 7>},
                                      {9, kernel_median_small_shared<u8, 8, C, 9, 9>}};

template <int C>
constexpr KernelOf modeKernels[] = {{3, kernel_mode_small_shared<u8, 8, C, 3, 3>},
                                    {5, kernel_mode_small_shared<u8, 8, C, 5, 5>},
                                    {7, kernel_mode_small_shared<u8, 8, C, 7, 7>},
                                    {9, kernel_mode_small_shared<u8, 8, C, 9, 9>}};

template <int C, std::size_t N>
VexaStatus rank(const KernelOf (&kernels)[N], const u8* src, u8* dst, int width, int height, int pitch,
                const VexaSize& filterSize, cudaStream_t stream)
{
    for (const auto& [side, kernel] : kernels) {
        if (filterSize.width != side || filterSize.height != side) continue;
        launch(kernel, Extent{C * width, height}, stream, src, dst, width, height, pitch);
        return VEXA_SUCCESS;
    }
    return VEXA_NOT_SUPPORTED_MODE_ERROR;
}

}  // namespace

template <int C>
VexaStatus vexa_median_filter_8u(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, const VexaSize& filterSize,
                                 cudaStream_t stream)
{
    return rank<C>(medianKernels<C>, src, dst, width, height, pitch, filterSize, stream);
}

template <int C>
VexaStatus vexa_mode_filter_8u(Vexa8u* src, Vexa8u* dst, int width, int height, int pitch, const VexaSize& filterSize,
                               cudaStream_t stream)
{
    return rank<C>(modeKernels<C>, src, dst, width, height, pitch, filterSize, stream);
}

namespace {

using Worker = VexaStatus(Vexa8u*, Vexa8u*, int, int, int, const VexaSize&, cudaStream_t);

}  // namespace

template Worker vexa_median_filter_8u<1>;
template Worker vexa_median_filter_8u<3>;
template Worker vexa_mode_filter_8u<1>;
template Worker vexa_mode_filter_8u<3>;

namespace {

/// The body of both functions, which differ in their workers for 1 and 3 channels.
VexaStatus rank(Worker* ofOne, Worker* ofThree, const VexaImage& src, VexaImage& dst, const VexaSize& filterSize,
                const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    const bool creates = !dst.isInitialized();
    if (const VexaStatus failed = matchOrCreateLike(dst, src)) return failed;
    if (creates) dst.setChannelSequence(src.channelSeq());
    if (src.type() != VEXA_8UC1 && src.type() != VEXA_8UC3) return VEXA_TYPE_NOT_SUPPORTED_ERROR;
    Worker* const worker = src.type() == VEXA_8UC1 ? ofOne : ofThree;
    return withPitch(dst, src.pitch(), stream, [&](VexaImage& to) {
        return worker(src.ptr<u8>(), to.ptr<u8>(), src.width(), src.height(), src.pitch(), filterSize, handle(stream));
    });
}

}  // namespace

namespace vexa::imageFiltering {

VexaStatus medianFilter(const VexaImage& src, VexaImage& dst, const VexaRect& /*roi*/, const VexaSize& filterSize,
                        const VexaStream& stream)
{
    return rank(vexa_median_filter_8u<1>, vexa_median_filter_8u<3>, src, dst, filterSize, stream);
}

VexaStatus modeFilter(const VexaImage& src, VexaImage& dst, const VexaRect& /*roi*/, const VexaSize& filterSize,
                      const VexaStream& stream)
{
    return rank(vexa_mode_filter_8u<1>, vexa_mode_filter_8u<3>, src, dst, filterSize, stream);
}

}  // namespace vexa::imageFiltering
