/// @file
/// Gradients by differences of the nine pixels around each pixel. The stencils of 3 by 3 give as X the row above minus
/// the row below, a derivative along y, and as Y one along x; the central difference gives them by their names. That is
/// meant.

#include "arguments.h"
#include "checks.h"
#include "pitch.h"
#include "windows.h"

using namespace vexa;

namespace {

template <int bits>
using ElementOf = std::conditional_t<bits == 8, u8, f32>;

/// Three neighbours in a line.
template <int end, int middle>
VEXA_DEVICE float weighted(float first, float second, float third)
{
    constexpr auto outer = static_cast<float>(end);
    constexpr auto inner = static_cast<float>(middle);
    return outer * first + inner * second + outer * third;
}

struct CentralDifference {
    template <typename At>
    VEXA_DEVICE float x(const At& at) const
    {
        return at(1, 0) - at(-1, 0);
    }
    template <typename At>
    VEXA_DEVICE float y(const At& at) const
    {
        return at(0, 1) - at(0, -1);
    }
};

template <int end, int middle>
struct Stencil {
    template <typename At>
    VEXA_DEVICE float x(const At& at) const
    {
        return weighted<end, middle>(at(-1, -1), at(0, -1), at(1, -1)) -
               weighted<end, middle>(at(-1, 1), at(0, 1), at(1, 1));
    }
    template <typename At>
    VEXA_DEVICE float y(const At& at) const
    {
        return weighted<end, middle>(at(1, -1), at(1, 0), at(1, 1)) -
               weighted<end, middle>(at(-1, -1), at(-1, 0), at(-1, 1));
    }
};

/// Both derivatives of every element; the pitch of the results is in elements.
template <int C, typename Derivative, typename T>
VEXA_DEVICE void differentiate(const T* src, float* X, float* Y, int width, int height, int srcPitch, int pitch)
{
    const Plane<float> alongX{X, pitch};
    const Plane<float> alongY{Y, pitch};
    forEachWindow<Reach<C, C, 1, 1>, float>(FetchClamped<T>{src, C * width, height, srcPitch},
                                            [=](int x, int y, const auto& window) {
                                                const auto at = [&](int dx, int dy) { return window(C * dx, dy); };
                                                alongX.row(y)[x] = Derivative().x(at);
                                                alongY.row(y)[x] = Derivative().y(at);
                                            });
}

}  // namespace

template <int bits, int C>
VEXA_KERNEL kernel_central(const ElementOf<bits>* src, float* X, float* Y, int width, int height, int srcPitch,
                           int pitch)
{
    differentiate<C, CentralDifference>(src, X, Y, width, height, srcPitch, pitch);
}

template <int bits, int C>
VEXA_KERNEL kernel_sobel3(const ElementOf<bits>* src, float* X, float* Y, int width, int height, int srcPitch,
                          int pitch)
{
    differentiate<C, Stencil<1, 2>>(src, X, Y, width, height, srcPitch, pitch);
}

template <int bits, int C>
VEXA_KERNEL kernel_scharr(const ElementOf<bits>* src, float* X, float* Y, int width, int height, int srcPitch,
                          int pitch)
{
    differentiate<C, Stencil<3, 10>>(src, X, Y, width, height, srcPitch, pitch);
}

template <int bits, int C>
VEXA_KERNEL kernel_prewitt(const ElementOf<bits>* src, float* X, float* Y, int width, int height, int srcPitch,
                           int pitch)
{
    differentiate<C, Stencil<1, 1>>(src, X, Y, width, height, srcPitch, pitch);
}

namespace {

/// The images of a call, pitches in bytes.
template <int bits>
struct Gradients {
    ElementOf<bits>* src;
    Vexa32f* dstX;
    Vexa32f* dstY;
    int width;
    int height;
    int srcPitch;
    int dstPitch;
    cudaStream_t stream;

    template <int C>
    VexaStatus start(VexaGradientKernelType type) const
    {
        switch (type) {
            case VEXA_GRADIENT_CENTRAL_DIFFERENCE:
                return start<C>(kernel_central<bits, C>);
            case VEXA_GRADIENT_SOBEL_3x3:
                return start<C>(kernel_sobel3<bits, C>);
            case VEXA_GRADIENT_SCHARR_3x3:
                return start<C>(kernel_scharr<bits, C>);
            case VEXA_GRADIENT_PREWITT_3x3:
                return start<C>(kernel_prewitt<bits, C>);
        }
        return VEXA_SUCCESS;
    }

    template <int C, typename Kernel>
    VexaStatus start(Kernel kernel) const
    {
        launch(kernel, Extent{C * width, height}, stream, src, dstX, dstY, width, height,
               elements<ElementOf<bits>>(srcPitch), elements<Vexa32f>(dstPitch));
        return VEXA_SUCCESS;
    }
};

template <int bits>
VexaStatus compute(const Gradients<bits>& gradients, int channels, VexaGradientKernelType type)
{
    // Unknown types do nothing, whatever the channels.
    if (type < VEXA_GRADIENT_CENTRAL_DIFFERENCE || type > VEXA_GRADIENT_PREWITT_3x3) return VEXA_SUCCESS;
    if (channels == 1) return gradients.template start<1>(type);
    if (channels == 3) return gradients.template start<3>(type);
    return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
}

}  // namespace

VexaStatus vexa_grad_8u32f(Vexa8u* src, Vexa32f* dstX, Vexa32f* dstY, const int width, const int height,
                           Vexa32s srcPitch, Vexa32s dstPitch, Vexa32s channels, VexaGradientKernelType type,
                           cudaStream_t stream)
{
    return compute(Gradients<8>{src, dstX, dstY, width, height, srcPitch, dstPitch, stream}, channels, type);
}

VexaStatus vexa_grad_32f(float* src, float* dstX, float* dstY, const int width, const int height, const int pitch,
                         Vexa32s channels, VexaGradientKernelType type, cudaStream_t stream)
{
    return compute(Gradients<32>{src, dstX, dstY, width, height, pitch, pitch, stream}, channels, type);
}

namespace {

[[nodiscard]] VexaStatus matchOrCreateGradient(VexaImage& gradient, const VexaImage& src)
{
    constexpr int depth = 32;
    return matchOrCreate(gradient, src, {same::width, same::height, same::channels}, src.size(), depth, src.channels());
}

}  // namespace

namespace vexa::imageFiltering {

VexaStatus imageGradients(const VexaImage& src, VexaImage& gradX, VexaImage& gradY, const VexaGradientKernelType type,
                          const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (const VexaStatus failed = matchOrCreateGradient(gradX, src)) return failed;
    if (const VexaStatus failed = matchOrCreateGradient(gradY, src)) return failed;
    if (gradX.depth() != 32 || gradY.depth() != 32) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    if (src.depth() == 8)
        return withPitch(gradY, gradX.pitch(), stream, [&](VexaImage& toY) {
            return vexa_grad_8u32f(src.ptr<u8>(), gradX.ptr<f32>(), toY.ptr<f32>(), src.width(), src.height(),
                                   src.pitch(), gradX.pitch(), src.channels(), type, handle(stream));
        });
    if (src.depth() != 32) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    return withPitch(gradX, src.pitch(), stream, [&](VexaImage& toX) {
        return withPitch(gradY, src.pitch(), stream, [&](VexaImage& toY) {
            return vexa_grad_32f(src.ptr<f32>(), toX.ptr<f32>(), toY.ptr<f32>(), src.width(), src.height(), src.pitch(),
                                 src.channels(), type, handle(stream));
        });
    });
}

}  // namespace vexa::imageFiltering
