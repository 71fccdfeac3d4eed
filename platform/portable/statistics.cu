/// @file
/// The statistics of the seam, written with kernels: the host platform's own, and a GPU's where no vendor library is at
/// hand. A kernel folds the tiles of an image into partial results in the scratch block, a second one merges these.
///
/// Sums of integers are exact. Sums of floats are kept in double, in an order that depends on the size of the image
/// alone.

#include "fault.h"
#include "fold_image.h"
#include "platform.h"

using namespace vexa;
using namespace vexa::statistics;
using platform::Statistic;

namespace {

// ---- how a fold begins on a tile ----

template <typename T, int C>
struct FromBounds {
    Bounds<T, C> bounds;

    template <typename Input>
    VEXA_DEVICE CountWithin<T, C> operator()(Tile, Share, const Input&) const
    {
        return CountWithin<T, C>(bounds);
    }
};

template <int C>
VEXA_DEVICE unsigned countSelected(Tile tile, Share share, const Mask<C>& mask)
{
    CountSelected fold;
    foldTile<1>(fold, tile, share, Mask<1>{mask.plane});
    return fold.total();
}

VEXA_DEVICE unsigned countSelected(Tile tile, Share share, Everywhere)
{
    return static_cast<unsigned>(pixelsIn(tile, share));
}

/// From the number of selected pixels.
template <typename T, int C>
struct FromSelection {
    template <typename Selection>
    VEXA_DEVICE IntegerMoments<T, C> operator()(Tile tile, Share share, const Elements<T, C>&,
                                                const Selection& selection) const
    {
        IntegerMoments<T, C> fold;
        fold.count = countSelected(tile, share, selection);
        return fold;
    }
};

/// The same and from the first selected pixel. An infinite or undefined element is nothing to take others relative to.
template <int C>
struct FromSelection<f32, C> {
    template <typename Selection>
    VEXA_DEVICE FloatMoments<C> operator()(Tile tile, Share share, const Elements<f32, C>& elements,
                                           const Selection& selection) const
    {
        FloatMoments<C> fold;
        fold.count = countSelected(tile, share, selection);
        for (int y = share.row; y < tile.height; y += Share::rows)
            for (int x = share.column; x < tile.width; x += Share::columns) {
                if (!selection.row(tile.x, tile.y + y).pixel(x)(0)) continue;
                const auto pixel = elements.row(tile.x, tile.y + y).pixel(x);
                for (int i = 0; i < FloatMoments<C>::lanes * C; ++i)
                    fold.first[i] = pixel(i % C) - pixel(i % C) == 0 ? pixel(i % C) : 0.0F;
                return fold;
            }
        return fold;
    }
};

// ---- what is stored ----

template <typename T, int C, bool wantsMin, bool wantsMax>
struct StoreExtremes {
    T* min;
    T* max;

    VEXA_DEVICE void operator()(const typename Extremes<T, C>::Total& total) const
    {
        for (int c = 0; c < C; ++c) {
            if constexpr (wantsMin) min[c] = total.min[c];
            if constexpr (wantsMax) max[c] = total.max[c];
        }
    }
};

/// A sum divided by a number.
template <int C>
struct StoreQuotient {
    double* result;
    double divisor;

    template <typename Number>
    VEXA_DEVICE void operator()(const Numbers<Number, C>& total) const
    {
        for (int c = 0; c < C; ++c) result[c] = static_cast<double>(total.sum[c]) / divisor;
    }
};

template <int C>
struct StoreRoot {
    double* result;

    template <typename Number>
    VEXA_DEVICE void operator()(const Numbers<Number, C>& total) const
    {
        for (int c = 0; c < C; ++c) result[c] = sqrt(static_cast<double>(total.sum[c]));
    }
};

template <int C>
struct StoreMoments {
    double* mean;
    double* stdDev;

    template <typename Total>
    VEXA_DEVICE void operator()(const Total& total) const
    {
        for (int c = 0; c < C; ++c) {
            mean[c] = total.mean(c);
            stdDev[c] = sqrt(total.variance(c));
        }
    }
};

template <int C>
struct StoreCounts {
    Vexa32s* counts;

    VEXA_DEVICE void operator()(const Numbers<unsigned, C>& total) const
    {
        for (int c = 0; c < C; ++c) counts[c] = static_cast<Vexa32s>(total.sum[c]);
    }
};

// ---- launches ----

/// Whether rows can be read as they are told.
template <typename T>
bool isReadable(const platform::Pixels<T>& image)
{
    return image.first != nullptr && image.width > 0 && image.height > 0 && image.pitch >= 0 &&
           image.pitch % static_cast<int>(sizeof(T)) == 0;
}

template <typename T, int C>
Elements<T, C> elementsOf(const platform::Pixels<T>& image)
{
    return {{image.first, image.pitch / static_cast<int>(sizeof(T))}};
}

template <typename T, int C>
std::size_t bytesOfTotal(Statistic statistic)
{
    switch (statistic) {
        case Statistic::max:
        case Statistic::min:
        case Statistic::minMax:
            return sizeof(typename Extremes<T, C>::Total);
        case Statistic::sum:
        case Statistic::mean:
        case Statistic::norm:
            return sizeof(Numbers<Wide<T>, C>);
        case Statistic::countInRange:
            return sizeof(Numbers<unsigned, C>);
        case Statistic::dot:
            return sizeof(Numbers<double, C>);
        default:
            return sizeof(typename Moments<T, C>::Total);
    }
}

/// Whether a primitive fails before it begins: by fault injection, for rows that can't be read or for want of a block.
template <typename T, typename... Block>
bool isRefused(const platform::Pixels<T>& src, const Block*... blocks)
{
    using platform::fault::Call;
    return platform::fault::strikes(Call::statistic) || !isReadable(src) || ((blocks == nullptr) || ...);
}

/// A statistic of all elements of an image.
template <typename Fold, int C, typename T, typename Finish, typename... Result>
VexaStatus reduce(const platform::Pixels<T>& src, void* scratch, const Finish& finish, platform::Stream stream,
                  const Result*... results)
{
    if (isRefused(src, scratch, results...)) return VEXA_INTERNAL_CALL_ERROR;
    fold<Fold, C>(src.width, src.height, scratch, stream, FromNothing<Fold>{}, finish, elementsOf<T, C>(src));
    return VEXA_SUCCESS;
}

}  // namespace

namespace vexa::platform {

template <typename T, int C>
VexaStatus Statistics<T, C>::scratchSize(Statistic statistic, int width, int height, std::size_t& bytes,
                                         Stream /*stream*/)
{
    if (fault::strikes(fault::Call::scratchSize) || width < 1 || height < 1) return VEXA_INTERNAL_CALL_ERROR;
    bytes = static_cast<std::size_t>(tilesOf(width, height).count) * bytesOfTotal<T, C>(statistic);
    return VEXA_SUCCESS;
}

template <typename T, int C>
VexaStatus Statistics<T, C>::max(Pixels<T> src, void* scratch, T* max, Stream stream)
{
    return reduce<Extremes<T, C>, C>(src, scratch, StoreExtremes<T, C, false, true>{nullptr, max}, stream, max);
}

template <typename T, int C>
VexaStatus Statistics<T, C>::min(Pixels<T> src, void* scratch, T* min, Stream stream)
{
    return reduce<Extremes<T, C>, C>(src, scratch, StoreExtremes<T, C, true, false>{min, nullptr}, stream, min);
}

template <typename T, int C>
VexaStatus Statistics<T, C>::minMax(Pixels<T> src, void* scratch, T* min, T* max, Stream stream)
{
    return reduce<Extremes<T, C>, C>(src, scratch, StoreExtremes<T, C, true, true>{min, max}, stream, min, max);
}

template <typename T, int C>
VexaStatus Statistics<T, C>::sum(Pixels<T> src, void* scratch, Vexa64f* sum, Stream stream)
{
    return reduce<Sum<T, C>, C>(src, scratch, StoreQuotient<C>{sum, 1.0}, stream, sum);
}

template <typename T, int C>
VexaStatus Statistics<T, C>::mean(Pixels<T> src, void* scratch, Vexa64f* mean, Stream stream)
{
    const double pixels = static_cast<double>(src.width) * src.height;
    return reduce<Sum<T, C>, C>(src, scratch, StoreQuotient<C>{mean, pixels}, stream, mean);
}

template <typename T, int C>
VexaStatus Statistics<T, C>::norm(Pixels<T> src, void* scratch, Vexa64f* norm, Stream stream)
{
    return reduce<Squares<T, C>, C>(src, scratch, StoreRoot<C>{norm}, stream, norm);
}

template <typename T, int C>
VexaStatus Statistics<T, C>::meanStdDev(Pixels<T> src, void* scratch, Vexa64f* mean, Vexa64f* stdDev, Stream stream)
{
    if (isRefused(src, scratch, mean, stdDev)) return VEXA_INTERNAL_CALL_ERROR;
    fold<Moments<T, C>, C>(src.width, src.height, scratch, stream, FromSelection<T, C>{}, StoreMoments<C>{mean, stdDev},
                           elementsOf<T, C>(src), Everywhere{});
    return VEXA_SUCCESS;
}

template <typename T, int C>
VexaStatus Statistics<T, C>::meanStdDev(Pixels<T> src, Pixels<Vexa8u> mask, void* scratch, Vexa64f* mean,
                                        Vexa64f* stdDev, Stream stream)
{
    if (isRefused(src, scratch, mean, stdDev) || !isReadable(mask)) return VEXA_INTERNAL_CALL_ERROR;
    fold<Moments<T, C>, C>(src.width, src.height, scratch, stream, FromSelection<T, C>{}, StoreMoments<C>{mean, stdDev},
                           elementsOf<T, C>(src), Mask<C>{{mask.first, mask.pitch}});
    return VEXA_SUCCESS;
}

template <typename T, int C>
VexaStatus countInRange(Pixels<T> src, void* scratch, Vexa32s* counts, const T* lowest, const T* highest, Stream stream)
{
    if (isRefused(src, scratch, counts)) return VEXA_INTERNAL_CALL_ERROR;
    FromBounds<T, C> begin = {};
    for (int c = 0; c < C; ++c) {
        if (!(lowest[c] <= highest[c])) return VEXA_INTERNAL_CALL_ERROR;
        begin.bounds.lowest[c] = lowest[c];
        begin.bounds.highest[c] = highest[c];
    }
    fold<CountWithin<T, C>, C>(src.width, src.height, scratch, stream, begin, StoreCounts<C>{counts},
                               elementsOf<T, C>(src));
    return VEXA_SUCCESS;
}

template <int C>
VexaStatus dot(Pixels<Vexa32f> src1, const Vexa32f* src2, void* scratch, Vexa64f* result, Stream stream)
{
    if (isRefused(src1, src2, scratch, result)) return VEXA_INTERNAL_CALL_ERROR;
    const Pixels<Vexa32f> other{src2, src1.width, src1.height, src1.pitch};
    fold<Products<C>, C>(src1.width, src1.height, scratch, stream, FromNothing<Products<C>>{},
                         StoreQuotient<C>{result, 1.0}, elementsOf<f32, C>(src1), elementsOf<f32, C>(other));
    return VEXA_SUCCESS;
}

template struct Statistics<u8, 1>;
template struct Statistics<u8, 3>;
template struct Statistics<u16, 1>;
template struct Statistics<u16, 3>;
template struct Statistics<f32, 1>;
template struct Statistics<f32, 3>;

template VexaStatus countInRange<u8, 1>(Pixels<u8>, void*, Vexa32s*, const u8*, const u8*, Stream);
template VexaStatus countInRange<u8, 3>(Pixels<u8>, void*, Vexa32s*, const u8*, const u8*, Stream);
template VexaStatus countInRange<f32, 1>(Pixels<f32>, void*, Vexa32s*, const f32*, const f32*, Stream);
template VexaStatus countInRange<f32, 3>(Pixels<f32>, void*, Vexa32s*, const f32*, const f32*, Stream);

template VexaStatus dot<1>(Pixels<f32>, const f32*, void*, Vexa64f*, Stream);
template VexaStatus dot<3>(Pixels<f32>, const f32*, void*, Vexa64f*, Stream);

}  // namespace vexa::platform
