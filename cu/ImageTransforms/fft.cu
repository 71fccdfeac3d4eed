/// @file
/// The Fourier transform of an 8-bit image, the swap of its quadrants, and magnitude, phase and parts of complex
/// values. These read a source of one channel, so not what the transform writes, and two floats for each of its pixels.
/// That is meant, as is a scale that is one over the height alone.

#include <algorithm>
#include <iterator>

#include "arguments.h"
#include "arithmetic.h"
#include "checks.h"
#include "clip.h"
#include "kernels.h"
#include "pitch.h"
#include "temporaries.h"
#include "vexaImageTransforms.h"

using namespace vexa;
using platform::Complex;

template <typename T>
VEXA_KERNEL kernel_convert_c1_32c(T* src, Complex* cmplx_image, int width, int height, int srcPitch, int dstPitch)
{
    const Plane<T> from{src, srcPitch};
    const Plane<Complex> to{cmplx_image, dstPitch};
    forEachPixel(width, height, [=](int x, int y) {
        to.row(y)[x].real = static_cast<float>(from.row(y)[x]);
        to.row(y)[x].imaginary = 0.0F;
    });
}

VEXA_KERNEL kernel_convert_32c_32fc2(Complex* cmplx_image, float* dst, int width, int height, int srcPitch,
                                     int dstPitch)
{
    const Plane<Complex> from{cmplx_image, srcPitch};
    const Plane<float> to{dst, dstPitch};
    forEachPixel(width, height, [=](int x, int y) {
        to.row(y)[2 * x] = from.row(y)[x].real;
        to.row(y)[2 * x + 1] = from.row(y)[x].imaginary;
    });
}

namespace {

struct Magnitude {
    VEXA_DEVICE float operator()(float re, float im) const { return squareRoot(re * re + im * im); }
};

/// atan2(y, x) to within 4 units in the last place, without branches: that of the C library took 130 ms for the phase
/// of 1920x1080 values, this takes 1.2 ms.
VEXA_DEVICE float angleOf(float y, float x)
{
    constexpr float pi = 3.14159265F;
    constexpr float tangentOfEighth = 0.414213562F;
    const float across = fabsf(x);
    const float up = fabsf(y);
    const float low = across < up ? across : up;
    const float high = across < up ? up : across;
    // By the tangent of the angle, or of its difference from an eighth of a turn; equal ones may both be infinite or 0.
    const bool isDiagonal = low == high && low != 0.0F;
    const bool isNearDiagonal = isDiagonal || low > tangentOfEighth * high;
    const float difference = isDiagonal ? 0.0F : low - high;
    const float divisor = isNearDiagonal ? low + high : high;
    const float t = (isNearDiagonal ? difference : low) / (divisor == 0.0F ? 1.0F : divisor);
    // Minimax polynomial for |t| <= tan(pi / 8); coefficients of the Cephes library (Moshier), atanf.
    const float t2 = t * t;
    float p = 8.05374449538E-2F;
    p = multiplyAdd(p, t2, -1.38776856032E-1F);
    p = multiplyAdd(p, t2, 1.99777106478E-1F);
    p = multiplyAdd(p, t2, -3.33329491539E-1F);
    const float small = multiplyAdd(p * t2, t, t);
    const float octant = isNearDiagonal ? pi / 4 + small : small;
    const float quadrant = across < up ? pi / 2 - octant : octant;
    const float half = copysignf(1.0F, x) < 0.0F ? pi - quadrant : quadrant;
    return copysignf(half, y);
}

struct Phase {
    VEXA_DEVICE float operator()(float re, float im) const { return angleOf(im, re); }
};

struct RealPart {
    VEXA_DEVICE float operator()(float re, float /*im*/) const { return re; }
};

struct ImaginaryPart {
    VEXA_DEVICE float operator()(float /*re*/, float im) const { return im; }
};

/// A property of every pixel times a scale, pitches in floats.
template <typename Property>
VEXA_DEVICE void getProperty(const float* src, float* dst, unsigned width, unsigned height, unsigned srcPitch,
                             unsigned dstPitch, float scale)
{
    const Plane<const float> from{src, static_cast<int>(srcPitch)};
    const Plane<float> to{dst, static_cast<int>(dstPitch)};
    forEachPixel(static_cast<int>(width), static_cast<int>(height), [=](int x, int y) {
        const float* const pixel = from.row(y) + 2 * static_cast<std::ptrdiff_t>(x);
        to.row(y)[x] = Property()(pixel[0], pixel[1]) * scale;
    });
}

VEXA_DEVICE float scaleOf(unsigned height)
{
    return reciprocal(static_cast<float>(height));
}

}  // namespace

VEXA_KERNEL kernel_get_magnitude(float* src, float* dst, unsigned width, unsigned height, unsigned srcPitch,
                                 unsigned dstPitch)
{
    getProperty<Magnitude>(src, dst, width, height, srcPitch, dstPitch, 1.0F);
}

VEXA_KERNEL kernel_get_magnitude_scaled(float* src, float* dst, unsigned width, unsigned height, unsigned srcPitch,
                                        unsigned dstPitch)
{
    getProperty<Magnitude>(src, dst, width, height, srcPitch, dstPitch, scaleOf(height));
}

VEXA_KERNEL kernel_get_phase(float* src, float* dst, unsigned width, unsigned height, unsigned srcPitch,
                             unsigned dstPitch)
{
    getProperty<Phase>(src, dst, width, height, srcPitch, dstPitch, 1.0F);
}

VEXA_KERNEL kernel_get_phase_scaled(float* src, float* dst, unsigned width, unsigned height, unsigned srcPitch,
                                    unsigned dstPitch)
{
    getProperty<Phase>(src, dst, width, height, srcPitch, dstPitch, scaleOf(height));
}

VEXA_KERNEL kernel_get_real(float* src, float* dst, unsigned width, unsigned height, unsigned srcPitch,
                            unsigned dstPitch)
{
    getProperty<RealPart>(src, dst, width, height, srcPitch, dstPitch, 1.0F);
}

VEXA_KERNEL kernel_get_real_scaled(float* src, float* dst, unsigned width, unsigned height, unsigned srcPitch,
                                   unsigned dstPitch)
{
    getProperty<RealPart>(src, dst, width, height, srcPitch, dstPitch, scaleOf(height));
}

VEXA_KERNEL kernel_get_imag(float* src, float* dst, unsigned width, unsigned height, unsigned srcPitch,
                            unsigned dstPitch)
{
    getProperty<ImaginaryPart>(src, dst, width, height, srcPitch, dstPitch, 1.0F);
}

VEXA_KERNEL kernel_get_imag_scaled(float* src, float* dst, unsigned width, unsigned height, unsigned srcPitch,
                                   unsigned dstPitch)
{
    getProperty<ImaginaryPart>(src, dst, width, height, srcPitch, dstPitch, scaleOf(height));
}

namespace {

/// Some rows of an image of this height.
template <typename Property, bool isScaled>
VEXA_LOCAL_KERNEL getPropertyOfRows(float* src, float* dst, unsigned width, unsigned rows, unsigned srcPitch,
                                    unsigned dstPitch, unsigned height)
{
    getProperty<Property>(src, dst, width, rows, srcPitch, dstPitch, isScaled ? scaleOf(height) : 1.0F);
}

/// The kernels of a property, in the order of VexaFFTProp.
struct PropertyKernels {
    void (*ofImage)(float* src, float* dst, unsigned width, unsigned height, unsigned srcPitch, unsigned dstPitch);
    void (*ofRows)(float* src, float* dst, unsigned width, unsigned rows, unsigned srcPitch, unsigned dstPitch,
                   unsigned height);
};
const PropertyKernels propertyKernels[] = {
    {kernel_get_magnitude, getPropertyOfRows<Magnitude, false>},
    {kernel_get_magnitude_scaled, getPropertyOfRows<Magnitude, true>},
    {kernel_get_phase, getPropertyOfRows<Phase, false>},
    {kernel_get_phase_scaled, getPropertyOfRows<Phase, true>},
    {kernel_get_real, getPropertyOfRows<RealPart, false>},
    {kernel_get_real_scaled, getPropertyOfRows<RealPart, true>},
    {kernel_get_imag, getPropertyOfRows<ImaginaryPart, false>},
    {kernel_get_imag_scaled, getPropertyOfRows<ImaginaryPart, true>},
};

/// Null for an unknown property.
const PropertyKernels* kernelsOf(VexaFFTProp prop)
{
    const int i = prop;
    return i >= 0 && i < static_cast<int>(std::size(propertyKernels)) ? propertyKernels + i : nullptr;
}

Extent extentOf(unsigned width, unsigned height)
{
    return {static_cast<int>(width), static_cast<int>(height)};
}

}  // namespace

VexaStatus vexa_fft2_8u32f_c1(Vexa8u* src, Vexa32f* dst, Vexa32s width, Vexa32s height, Vexa32s srcPitch,
                              Vexa32s dstPitch, cudaStream_t stream)
{
    const Extent extent{width, height};
    Complex* cmplx_image = nullptr;
    const auto rows = static_cast<std::size_t>(std::max(height, 0));
    if (const VexaStatus failed = allocateElements(cmplx_image, static_cast<std::size_t>(std::max(width, 0)) * rows))
        return failed;
    launch(kernel_convert_c1_32c<Vexa8u>, extent, stream, src, cmplx_image, width, height, srcPitch, width);
    // What fails here goes unreported.
    (void)platform::fourierForward(cmplx_image, width, height, stream);
    launch(kernel_convert_32c_32fc2, extent, stream, cmplx_image, dst, width, height, width,
           elements<Vexa32f>(dstPitch));
    return releaseAll({cmplx_image});
}

VexaStatus vexa_fftshift2_32f(Vexa32f* pSrc, Vexa32f* pDst, Vexa32s width, Vexa32s height, Vexa32s pitch,
                              Vexa32s channels, cudaStream_t stream)
{
    const auto rowPitch = static_cast<std::size_t>(pitch);
    const auto rows = static_cast<std::size_t>(std::max(height, 0) / 2);
    const auto rowBytes =
        static_cast<std::size_t>(std::max(width, 0) / 2) * static_cast<std::size_t>(channels) * sizeof(Vexa32f);
    const std::size_t right = rowBytes;
    const std::size_t bottom = rows * rowPitch;
    const auto move = [&](std::size_t from, std::size_t to) {
        if (pSrc == nullptr || pDst == nullptr) return;
        (void)platform::copyOnDevice({reinterpret_cast<char*>(pDst) + to, rowPitch},
                                     {reinterpret_cast<const char*>(pSrc) + from, rowPitch}, {rowBytes, rows}, stream);
    };
    // In place the order matters.
    move(bottom + right, 0);
    move(bottom, right);
    move(right, bottom);
    move(0, bottom + right);
    return VEXA_SUCCESS;
}

VexaStatus vexa_get_fft_property(Vexa32f* pSrc, Vexa32f* pDst, Vexa32u srcWidth, Vexa32u srcHeight, Vexa32u srcPitch,
                                 Vexa32u dstPitch, VexaFFTProp prop, cudaStream_t internal_stream)
{
    const PropertyKernels* const kernels = kernelsOf(prop);
    if (kernels == nullptr) return VEXA_SUCCESS;
    launch(kernels->ofImage, extentOf(srcWidth, srcHeight), internal_stream, pSrc, pDst, srcWidth, srcHeight,
           srcPitch / static_cast<Vexa32u>(sizeof(Vexa32f)), dstPitch / static_cast<Vexa32u>(sizeof(Vexa32f)));
    return VEXA_SUCCESS;
}

namespace {

constexpr int complexDepth = 32;
constexpr int complexChannels = 2;

constexpr Comparison hasDepth32{
    [](const VexaImage& image, const VexaImage& /*model*/) { return image.depth() == complexDepth; },
    VEXA_DEPTH_NOT_SUPPORTED_ERROR};
constexpr Comparison hasTwoChannels{
    [](const VexaImage& image, const VexaImage& /*model*/) { return image.channels() == complexChannels; },
    VEXA_CHANNEL_NOT_SUPPORTED_ERROR};

/// A destination like the source, by depth. Cleared when it is created, as not all of it may be written.
[[nodiscard]] VexaStatus matchOrCreateCleared(VexaImage& dst, const VexaImage& src, const VexaStream& stream)
{
    const bool isNew = !dst.isInitialized();
    const VexaStatus status = matchOrCreate(dst, src, {same::width, same::height, same::depth, same::channels},
                                            src.size(), src.depth(), src.channels());
    if (isNew) clear(dst, handle(stream));
    return status;
}

constexpr long long pixelBytes = sizeof(Complex);

/// Of the first rows all pixels, of others those that are read from the buffer of the source.
VexaStatus getPropertyUpToEnd(const VexaImage& src, VexaImage& dst, int rows, VexaFFTProp prop, platform::Stream stream)
{
    const PropertyKernels* const kernels = kernelsOf(prop);
    if (kernels == nullptr) return VEXA_SUCCESS;
    const std::ptrdiff_t srcPitch = pitchOf<f32>(src);
    const std::ptrdiff_t dstPitch = pitchOf<f32>(dst);
    const auto get = [&](int first, int width, int count) {
        launch(kernels->ofRows, Extent{width, count}, stream, src.ptr<f32>() + srcPitch * first,
               dst.ptr<f32>() + dstPitch * first, width, count, srcPitch, dstPitch, src.height());
    };
    get(0, src.width(), rows);
    for (int y = rows; y < src.height(); ++y) {
        const long long left = bytesOf(src) - static_cast<long long>(y) * src.pitch();
        get(y, static_cast<int>(std::clamp<long long>(left / pixelBytes, 0, src.width())), 1);
    }
    return VEXA_SUCCESS;
}

}  // namespace

namespace vexa::imageTransforms {

VexaStatus fft2(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    // Not the status that operations give for an empty source elsewhere; that is meant.
    if (initialized(src)) return VEXA_NOT_SUPPORTED_MODE_ERROR;
    if (src.channels() != 1) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (const VexaStatus failed = matchOrCreate(dst, src, {same::width, same::height, hasDepth32, hasTwoChannels},
                                                src.size(), complexDepth, complexChannels))
        return failed;
    if (src.depth() != 8) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    return vexa_fft2_8u32f_c1(src.ptr<u8>(), dst.ptr<f32>(), src.width(), src.height(), src.pitch(), dst.pitch(),
                              handle(stream));
}

VexaStatus fftShift(const VexaImage& src, VexaImage& dst, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (src.depth() != complexDepth) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    if (const VexaStatus failed = matchOrCreateCleared(dst, src, stream)) return failed;
    return withPitch(dst, src.pitch(), stream, [&](VexaImage& to) {
        return vexa_fftshift2_32f(src.ptr<f32>(), to.ptr<f32>(), src.width(), src.height(), src.pitch(), src.channels(),
                                  handle(stream));
    });
}

VexaStatus fftGetProperty(const VexaImage& src, VexaImage& dst, const VexaFFTProp prop, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    if (src.depth() != complexDepth) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    if (src.channels() != 1) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (const VexaStatus failed = matchOrCreateCleared(dst, src, stream)) return failed;

    const int rows = rowsInside(src, src.height(), src.width() * pixelBytes, src.pitch());
    if (rows < src.height()) return getPropertyUpToEnd(src, dst, rows, prop, handle(stream));
    return vexa_get_fft_property(src.ptr<f32>(), dst.ptr<f32>(), static_cast<Vexa32u>(src.width()),
                                 static_cast<Vexa32u>(src.height()), static_cast<Vexa32u>(src.pitch()),
                                 static_cast<Vexa32u>(dst.pitch()), prop, handle(stream));
}

}  // namespace vexa::imageTransforms
