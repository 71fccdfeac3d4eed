/// @file
/// Powers and logarithms of one image: gammaCorrect and logTransform.

#include "arguments.h"
#include "arithmetic.h"
#include "bytes.h"
#include "checks.h"
#include "dispatch.h"

using namespace vexa;

namespace {

/// Of the element as a fraction of full scale. By its reciprocal, so that an exponent of 1 may give one less.
template <typename T, bool saturates>
struct Gamma {
    float exponent;
    Range range;

    VEXA_DEVICE T operator()(T element) const
    {
        constexpr float toFraction = sizeof(T) == 1 ? 0.003921569F : 1.5259022e-5F;
        const float fraction = static_cast<float>(element) * toFraction;
        return store<T, saturates>(range.highest * power(fraction, exponent), range);
    }
};

/// c * ln(1 + element), of elements as they are and not of fractions.
template <typename T>
struct Logarithm {
    float c;

    VEXA_DEVICE float operator()(T element) const
    {
        constexpr float ln2 = 0.693147182F;
        return c * (vexa::log2(1.0F + static_cast<float>(element)) * ln2);
    }
};

}  // namespace

template <typename T, int C, int min, int max, bool sat>
VEXA_KERNEL kernel_gamma(T* src, T* dst, int width, int height, int pitch, float gammaInv)
{
    const Gamma<T, sat> gamma{gammaInv, {min, max}};
    if constexpr (sizeof(T) == 1)
        mapBytes<C>(width, height, Plane<T>{dst, pitch}, Plane<T>{src, pitch}, gamma);
    else
        mapElements<C>(width, height, Plane<T>{dst, pitch}, gamma, Plane<T>{src, pitch});
}

template <typename T, int C>
VEXA_KERNEL kernel_log(T* src, float* dst, int width, int height, int srcPitch, int dstPitch, float c)
{
    mapElements<C>(width, height, Plane<float>{dst, dstPitch}, Logarithm<T>{c}, Plane<T>{src, srcPitch});
}

namespace {

using IntegerTypes = Table<Row<u8>, Row<u16>>;
using AllTypes = Table<Row<u8>, Row<u16>, Row<f32>>;

struct CorrectGamma {
    const VexaImage& src;
    VexaImage& dst;
    float exponent;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        const int rows = rowsInside(dst, src);
        launch(kernel_gamma<T, C, Element<T>::min, Element<T>::max, Element<T>::saturates>,
               elementExtent<C, T>(src.width(), rows), stream, src.ptr<T>(), dst.ptr<T>(), src.width(), rows,
               pitchOf<T>(src), exponent);
    }
};

struct ToLogarithm {
    const VexaImage& src;
    VexaImage& dst;
    float c;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T>) const
    {
        launch(kernel_log<T, C>, elementExtent<C, T, f32>(src.width(), src.height()), stream, src.ptr<T>(),
               dst.ptr<f32>(), src.width(), src.height(), pitchOf<T>(src), pitchOf<f32>(dst), c);
    }
};

}  // namespace

namespace vexa::colorOperations {

VexaStatus gammaCorrect(const VexaImage& src, VexaImage& dst, const Vexa32f gamma, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreate(dst, src, {same::width, same::height, same::depth, same::channels},
                                                src.size(), src.depth(), src.channels()))
        return failed;
    return dispatch(IntegerTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    CorrectGamma{src, dst, 1.0F / gamma, handle(stream)}, src);
}

VexaStatus logTransform(const VexaImage& src, VexaImage& dst, const Vexa32f c, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (dst.isInitialized() && dst.depth() != 32) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height, same::channels}, src.size(), 32, src.channels()))
        return failed;
    return dispatch(AllTypes{}, Channels<1, 3>{}, VEXA_DEPTH_NOT_SUPPORTED_ERROR,
                    ToLogarithm{src, dst, c, handle(stream)}, src);
}

}  // namespace vexa::colorOperations
