/// @file
/// Arithmetic of two images: add, subtract, multiply, divide, absDiff. One body serves all five; they differ in the
/// operation code of their kernels.

#include <algorithm>

#include "arguments.h"
#include "checks.h"
#include "dispatch.h"
#include "kernels.h"
#include "operations.h"

using namespace vexa;

/// All three images have one type and one pitch.
template <typename T, int C, int min, int max, int op, bool sat>
VEXA_KERNEL kernel_arithmetic_st(T* src1, T* src2, T* dst, int width, int height, int pitch)
{
    mapElements<C>(width, height, Plane<T>{dst, pitch}, Combine<T, op, sat>{{min, max}}, Plane<T>{src1, pitch},
                   Plane<T>{src2, pitch});
}

/// The sources share type and pitch, the destination is wider.
template <typename S, typename D, int C, int min, int max, int op, bool sat>
VEXA_KERNEL kernel_arithmetic_dt(S* src1, S* src2, D* dst, int width, int height, int srcPitch, int dstPitch)
{
    mapElements<C>(width, height, Plane<D>{dst, dstPitch}, Combine<D, op, sat>{{min, max}}, Plane<S>{src1, srcPitch},
                   Plane<S>{src2, srcPitch});
}

/// The sources differ; each image has its own pitch.
template <typename S1, typename S2, typename D, int C, int min, int max, int op, bool sat>
VEXA_KERNEL kernel_arithmetic_dt(S1* src1, S2* src2, D* dst, int width, int height, int pitch1, int pitch2,
                                 int dstPitch)
{
    mapElements<C>(width, height, Plane<D>{dst, dstPitch}, Combine<D, op, sat>{{min, max}}, Plane<S1>{src1, pitch1},
                   Plane<S2>{src2, pitch2});
}

namespace {

// clang-format off
using ArithmeticTypes = Table<
    //  src1 src2 dst
    Row<u8,  u8,  u8 >,
    Row<u16, u16, u16>,
    Row<f32, f32, f32>,
    Row<u8,  u8,  u16>,
    Row<u8,  u8,  f32>,
    Row<u16, u16, f32>,
    Row<u8,  u16, u16>,
    Row<u16, u8,  u16>,
    Row<u8,  f32, f32>,
    Row<f32, u8,  f32>,
    Row<u8,  u16, f32>,
    Row<u16, u8,  f32>,
    Row<u16, f32, f32>,
    Row<f32, u16, f32>>;
// clang-format on

/// Picks the kernel family by the pattern of the row and launches it.
template <int op>
struct Arithmetic {
    const VexaImage& src1;
    const VexaImage& src2;
    VexaImage& dst;
    platform::Stream stream;

    template <int C, typename T>
    void operator()(ChannelCount<C>, Row<T, T, T>) const
    {
        const int rows = std::min(rowsInside(src2, src1), rowsInside(dst, src1));
        launch(kernel_arithmetic_st<T, C, Element<T>::min, Element<T>::max, op, Element<T>::saturates>,
               elementExtent<C, T>(src1.width(), rows), stream, src1.ptr<T>(), src2.ptr<T>(), dst.ptr<T>(),
               src1.width(), rows, pitchOf<T>(src1));
    }

    template <int C, typename S, typename D>
    void operator()(ChannelCount<C>, Row<S, S, D>) const
    {
        const int rows = rowsInside(src2, src1);
        launch(kernel_arithmetic_dt<S, D, C, Element<D>::min, Element<D>::max, op, Element<D>::saturates>,
               elementExtent<C, S, D>(src1.width(), rows), stream, src1.ptr<S>(), src2.ptr<S>(), dst.ptr<D>(),
               src1.width(), rows, pitchOf<S>(src1), pitchOf<D>(dst));
    }

    template <int C, typename S1, typename S2, typename D>
    void operator()(ChannelCount<C>, Row<S1, S2, D>) const
    {
        launch(kernel_arithmetic_dt<S1, S2, D, C, Element<D>::min, Element<D>::max, op, Element<D>::saturates>,
               elementExtent<C, S1, S2, D>(src1.width(), src1.height()), stream, src1.ptr<S1>(), src2.ptr<S2>(),
               dst.ptr<D>(), src1.width(), src1.height(), pitchOf<S1>(src1), pitchOf<S2>(src2), pitchOf<D>(dst));
    }
};

template <int op>
VexaStatus combineImages(const VexaImage& src1, const VexaImage& src2, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src1, src2)) return failed;
    if (const VexaStatus failed = match(src2, src1, {same::width, same::height, same::channels})) return failed;
    const int depth = std::max(src1.depth(), src2.depth());
    if (const VexaStatus failed =
            matchOrCreate(dst, src1, {same::width, same::height, same::channels}, src1.size(), depth, src1.channels()))
        return failed;
    return dispatch(ArithmeticTypes{}, Channels<1, 3>{}, VEXA_NOT_SUPPORTED_MODE_ERROR,
                    Arithmetic<op>{src1, src2, dst, handle(stream)}, src1, src2, dst);
}

}  // namespace

namespace vexa::arithmeticLogical {

VexaStatus add(const VexaImage& src1, const VexaImage& src2, VexaImage& dst, const VexaStream& stream)
{
    return combineImages<operation::add>(src1, src2, dst, stream);
}

VexaStatus subtract(const VexaImage& src1, const VexaImage& src2, VexaImage& dst, const VexaStream& stream)
{
    return combineImages<operation::subtract>(src1, src2, dst, stream);
}

VexaStatus multiply(const VexaImage& src1, const VexaImage& src2, VexaImage& dst, const VexaStream& stream)
{
    return combineImages<operation::multiply>(src1, src2, dst, stream);
}

VexaStatus divide(const VexaImage& src1, const VexaImage& src2, VexaImage& dst, const VexaStream& stream)
{
    return combineImages<operation::divide>(src1, src2, dst, stream);
}

VexaStatus absDiff(const VexaImage& src1, const VexaImage& src2, VexaImage& dst, const VexaStream& stream)
{
    return combineImages<operation::absDiff>(src1, src2, dst, stream);
}

}  // namespace vexa::arithmeticLogical
