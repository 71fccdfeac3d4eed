/// @file
/// Focus stacking: a map of the image that is sharpest around each pixel, and the picture that is made of it. It tells
/// its progress on standard output; that is meant.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <new>

#include "arithmetic.h"
#include "checks.h"
#include "clip.h"
#include "dispatch.h"
#include "kernels.h"
#include "placement.h"
#include "temporaries.h"
#include "vexaComputerVision.h"

using namespace vexa;

VEXA_KERNEL kernel_order_stack_32f(const float* ImgBW, float* StackVal, float* Stack, int i, int width, int height,
                                   int /*step*/, int step32)
{
    const Plane<const float> measure{ImgBW, step32};
    const Plane<float> best{StackVal, step32};
    const Plane<float> map{Stack, step32};
    const auto index = static_cast<float>(i);
    forEachPixel(width, height, [=](int x, int y) {
        const float value = measure.row(y)[x];
        const bool wins = value > best.row(y)[x];
        best.row(y)[x] = wins ? value : best.row(y)[x];
        map.row(y)[x] = wins ? index : map.row(y)[x];
    });
}

VEXA_KERNEL kernel_remove_low_contrast(const float* StackVal, const float* Stack, float* StackClip, int NoImage,
                                       int LowCont, int width, int height, int step)
{
    const auto index = static_cast<float>(NoImage);
    const auto lowest = static_cast<float>(LowCont);
    mapElements<1>(
        width, height, Plane<float>{StackClip, step},
        [=](float value, float kept) { return value < lowest ? index : kept; }, Plane<const float>{StackVal, step},
        Plane<const float>{Stack, step});
}

namespace {

/// The image that a smoothed index names: the nearest, halves away from 0, of those that there are. A NaN names the
/// first.
VEXA_DEVICE int imageOf(float index, int count)
{
    const int nearest = saturate<int>(index + 0.5F, {0.0F, static_cast<float>(count - 1)});
    return nearest < count ? nearest : count - 1;
}

}  // namespace

template <typename T>
VEXA_KERNEL kernel_build_sharp_image(T** ImgArr, const float* StackClip, T* SharpImg, int width, int height,
                                     int stepImage, int step32f, int NoImage)
{
    const int pitch = stepImage / static_cast<int>(sizeof(T));
    const Plane<const float> map{StackClip, step32f};
    forEachPixel(width, height, [=](int x, int y) {
        const auto pixel = static_cast<std::ptrdiff_t>(y) * pitch + 3 * static_cast<std::ptrdiff_t>(x);
        const T* const from = ImgArr[imageOf(map.row(y)[x], NoImage)] + pixel;
        T* const to = SharpImg + pixel;
        to[0] = from[0];
        to[1] = from[1];
        to[2] = from[2];
    });
}

namespace {

/// Waits for what was launched.
VexaStatus waited(platform::Stream stream)
{
    return platform::synchronize(stream) == VEXA_SUCCESS ? VEXA_SUCCESS : VEXA_INTERNAL_FUNCTION_CALL_ERROR;
}

}  // namespace

VexaStatus vexa_order_stack_32fc1(const Vexa32f* ImgBW, Vexa32f* StackVal, Vexa32f* Stack, const int i, const int width,
                                  const int height, const int step, const int step32, cudaStream_t stream)
{
    launch(kernel_order_stack_32f, {width, height}, stream, ImgBW, StackVal, Stack, i, width, height, step,
           elements<f32>(step32));
    return waited(stream);
}

VexaStatus vexa_clip_stack(const Vexa32f* StackVal, const Vexa32f* Stack, Vexa32f* StackClip, const int NoImage,
                           const int LowCont, const int width, const int height, const int step, cudaStream_t stream)
{
    launch(kernel_remove_low_contrast, elementExtent<1, f32>(width, height), stream, StackVal, Stack, StackClip,
           NoImage, LowCont, width, height, elements<f32>(step));
    return waited(stream);
}

int validateImages(const VexaImage* /*ImgArr*/, const int /*numImages*/)
{
    return -1;
}

namespace {

/// A square filter of coefficient(a, b) in row a and column b.
template <typename Coefficient>
VexaFilter filterOf(int side, const Coefficient& coefficient)
{
    VexaFilter filter(side, side);
    for (int a = 0; a < side; ++a)
        for (int b = 0; b < side; ++b) filter(b, a) = static_cast<Vexa32f>(coefficient(a, b));
    return filter;
}

/// A Laplacian of Gaussian of sigma 1. Its centre is not the middle row; that is meant.
VexaFilter laplacianOfGaussian()
{
    const double pi = std::acos(-1.0);
    return filterOf(11, [pi](int a, int b) {
        const int row = a - 6;
        const int column = b - 5;
        const double half = (row * row + column * column) / 2.0;
        return -1 / pi * (1 - half) * std::exp(-half);
    });
}

/// A Gaussian of sigma 5.5, not normalised. Its centre is not the middle row, and half a squared column is truncated;
/// both are meant.
VexaFilter wideGaussian()
{
    return filterOf(19, [](int a, int b) {
        constexpr double sigma = 5.5;
        const int row = a - 10;
        const int column = b - 9;
        const int half = column * column / 2;
        return std::exp(-(row * row * 0.5 / sigma / sigma + half / sigma / sigma));
    });
}

/// Whether an image can be stacked with the first of a series. One that differs in type or size does not compete.
bool matches(const VexaImage& image, const VexaImage& first)
{
    return image.isInitialized() && match(image, first, {same::type, same::width, same::height}) == VEXA_SUCCESS;
}

/// The smoothed index of the sharpest image around each pixel. What fails is not looked at.
void mapSharpest(VexaImage* images, int count, const VexaFilter& denoiseFilter, VexaImage& map,
                 const VexaStream& stream)
{
    const VexaFilter laplacian = laplacianOfGaussian();
    const VexaFilter gaussian = wideGaussian();
    const VexaSize size = images[0].size();
    VexaImage response;
    {
        VexaImage best(size, VEXA_32FC1);
        VexaImage smooth(size, VEXA_32FC1);
        VexaImage scaled;
        for (VexaImage* const image : {&map, &best, &smooth}) (void)image->set(0.0);
        std::printf("\nCreating stack map from image: 1");
        for (int i = 0; i < count; ++i) {
            if (matches(images[i], images[0])) {
                (void)images[i].convertTo(scaled, VEXA_32FC3, 1.0F, 0.0F, stream);
                (void)colorOperations::rgb2gray(scaled, smooth, VexaScalar(1.0, 1.0, 1.0), stream);
                (void)imageFiltering::imageFilter(smooth, response, laplacian, stream);
                // The response is smoothed before its absolute value is taken; that is meant.
                (void)imageFiltering::imageFilter(response, smooth, gaussian, stream);
                (void)arithmeticLogical::abs(smooth, response, stream);
                (void)vexa_order_stack_32fc1(response.ptr<f32>(), best.ptr<f32>(), map.ptr<f32>(), i, size.width,
                                             size.height, map.pitch(), best.pitch(), handle(stream));
            }
            std::printf("%s%d", i > 9 ? "\b\b" : "\b", i + 1);
        }
    }
    std::printf("\nDenoising stack map..");
    if (denoiseFilter.width() > 1 || denoiseFilter.height() > 1) {
        (void)imageFiltering::imageFilter(map, response, denoiseFilter, stream);
        map = response;
    }
}

/// Makes the picture of a map from the series.
struct Assembly {
    VexaImage* images;
    int count;
    const VexaImage& map;
    VexaImage& sharp;
    platform::Stream stream;

    template <int C, typename T>
    VexaStatus operator()(ChannelCount<C>, Row<T>) const
    {
        const VexaImage& first = images[0];
        if (const VexaStatus failed = initialized(first)) return failed;
        if (const VexaStatus failed = sharp.create(first.size(), first.type())) return failed;
        if (const VexaStatus failed = match(sharp, first, {same::type, same::width, same::height})) return failed;
        if (sharp.pitch() < sharp.width() * C * static_cast<int>(sizeof(T))) return VEXA_NOT_SUPPORTED_MODE_ERROR;

        const auto size = static_cast<std::size_t>(count);
        const std::unique_ptr<T*[]> pixels(new (std::nothrow) T*[size]);
        const std::unique_ptr<VexaImage[]> standIns(new (std::nothrow) VexaImage[size]);
        if (pixels == nullptr || standIns == nullptr) return VEXA_MEM_ALLOC_ERR;
        for (std::size_t i = 0; i < size; ++i) {
            pixels[i] = fits(images[i]) ? images[i].ptr<T>() : standIn(images[i], standIns[i]).template ptr<T>();
            if (pixels[i] == nullptr) return VEXA_MEM_ALLOC_ERR;
        }
        T** onDevice = nullptr;
        if (const VexaStatus failed = allocateElements(onDevice, size)) return failed;
        if (const VexaStatus failed = platform::copyToDevice(onDevice, pixels.get(), size * sizeof(T*), stream))
            return failed;
        launch(kernel_build_sharp_image<T>, {sharp.width(), sharp.height()}, stream, onDevice, map.ptr<f32>(),
               sharp.ptr<T>(), sharp.width(), sharp.height(), sharp.pitch(), pitchOf<f32>(map), count);
        (void)platform::synchronize(stream);

        std::printf("\nGenerating %d-bit Output", first.depth());
        std::printf("\nError: %s", platform::pendingError().text);
        (void)platform::release(onDevice);
        // Refused, as this is no device memory. The runtime keeps the refusal for who asks next; that is meant.
        (void)platform::release(images);
        return VEXA_SUCCESS;
    }

private:
    /// Whether the kernel can read an image: it addresses all of them by the pitch of the result.
    bool fits(const VexaImage& image) const { return matches(image, images[0]) && image.pitch() == sharp.pitch(); }

    /// A copy with that pitch: of the image, or of the first of the series for one that does not match.
    VexaImage& standIn(const VexaImage& image, VexaImage& copy) const
    {
        const VexaImage& first = images[0];
        if (copy.create(first.width(), first.height(), sharp.pitch(), first.depth(), first.channels()) == VEXA_SUCCESS)
            (void)place(surfaceOf(matches(image, first) ? image : first), surfaceOf(copy), 0, 0, stream);
        return copy;
    }
};

using StackedTypes = Table<Row<u8>, Row<u16>>;

}  // namespace

namespace vexa::computerVision {

VexaStatus focusStack(VexaImage* ImgArr, const int numImages, VexaImage& sharpImage, VexaFilter denoiseFilter,
                      const VexaStream& stream)
{
    if (ImgArr == nullptr || numImages < 1) return VEXA_INVALID_ARG_ERROR;
    const int differing = validateImages(ImgArr, numImages);
    if (differing >= 0) {
        std::printf("Different Image Size Encountered At Index %d\n", differing);
        return VEXA_DIFFERENT_IMAGE_SIZE_ERROR;
    }
    VexaImage map(ImgArr[0].size(), VEXA_32FC1);
    mapSharpest(ImgArr, numImages, denoiseFilter, map, stream);
    std::printf("\nCreating final output from stack map..");
    return dispatch(StackedTypes{}, Channels<3>{}, VEXA_TYPE_NOT_SUPPORTED_ERROR,
                    Assembly{ImgArr, numImages, map, sharpImage, handle(stream)}, ImgArr[0]);
}

}  // namespace vexa::computerVision
