/// @file
/// Fixed-pattern noise of a sensor: flat-field correction by a white and a black image, and the offset of a black one.
/// Results take the low bits first and are bounded after that, so that the bound of 8 bits never acts. That is meant.

#include <cstdio>

#include "arguments.h"
#include "arithmetic.h"
#include "checks.h"
#include "clip.h"
#include "dataBits.h"
#include "kernels.h"

using namespace vexa;

namespace {

template <typename T>
struct CorrectFlatField {
    float gain;
    T highest;

    VEXA_DEVICE T operator()(T element, T white, T black) const
    {
        const auto signal = static_cast<float>(static_cast<int>(element) - static_cast<int>(black));
        const auto range = static_cast<float>(static_cast<int>(white) - static_cast<int>(black));
        const T corrected = static_cast<T>(truncateToUnsigned(signal * gain * reciprocal(range)));
        return corrected > highest ? highest : corrected;
    }
};

/// The sum of two bytes in a byte.
struct AddWrapping {
    VEXA_DEVICE u8 operator()(u8 a, u8 b) const { return static_cast<u8>(a + b); }
};

/// Bytes of a flat run that are mapped as one row.
constexpr int runBytes = 1 << 12;

}  // namespace

template <typename T, int C>
VEXA_KERNEL kernel_fpn_correction(T* src, T* dst, int width, int height, int pitch, float gain, T bitsConv,
                                  T* whiteImage, T* blackImage)
{
    mapElements<C>(width, height, Plane<T>{dst, pitch}, CorrectFlatField<T>{gain, bitsConv}, Plane<T>{src, pitch},
                   Plane<T>{whiteImage, pitch}, Plane<T>{blackImage, pitch});
}

VEXA_KERNEL fpnCUDA(Vexa8u* output, Vexa8u* input, Vexa8u* blackImage, long long n)
{
    const long long inRuns = n / runBytes * runBytes;
    mapElements<1>(runBytes, static_cast<int>(n / runBytes), Plane<u8>{output, runBytes}, AddWrapping{},
                   Plane<u8>{input, runBytes}, Plane<u8>{blackImage, runBytes});
    mapElements<1>(static_cast<int>(n - inRuns), 1, Plane<u8>{output + inRuns, runBytes}, AddWrapping{},
                   Plane<u8>{input + inRuns, runBytes}, Plane<u8>{blackImage + inRuns, runBytes});
}

namespace {

template <typename T, int C>
VexaStatus launchCorrection(T* src, T* dst, T* white, T* black, const VexaSize& size, int pitch, float gain,
                            int dataBits, cudaStream_t stream)
{
    launch(kernel_fpn_correction<T, C>, elementExtent<C, T>(size.width, size.height), stream, src, dst, size.width,
           size.height, elements<T>(pitch), gain, highestOf<T>(dataBits), white, black);
    return VEXA_SUCCESS;
}

}  // namespace

VexaStatus vexaFPNCorrection8u(Vexa8u* pSrc, Vexa8u* pDst, Vexa8u* whiteImage, Vexa8u* blackImage, VexaSize imgSize,
                               Vexa32s pitch, Vexa32f gain, cudaStream_t stream)
{
    if (pSrc == nullptr) return VEXA_NULL_POINTER_ERROR;
    if (imgSize.width < 1 || imgSize.height < 1) return VEXA_SIZE_ERROR;
    return launchCorrection<u8, 1>(pSrc, pDst, whiteImage, blackImage, imgSize, pitch, gain, 8, stream);
}

VexaStatus vexaFPNCorrection16u(Vexa16u* pSrc, Vexa16u* pDst, Vexa16u* whiteImage, Vexa16u* blackImage,
                                VexaSize imgSize, Vexa32s pitch, Vexa32s channels, Vexa32f gain, Vexa32s dataBits,
                                cudaStream_t stream)
{
    switch (channels) {
        case 1:
            return launchCorrection<u16, 1>(pSrc, pDst, whiteImage, blackImage, imgSize, pitch, gain, dataBits, stream);
        case 3:
            return launchCorrection<u16, 3>(pSrc, pDst, whiteImage, blackImage, imgSize, pitch, gain, dataBits, stream);
        default:
            return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    }
}

namespace {

/// Prints an error that waits to be asked for, after the words that say where.
void printPendingError(const char* where)
{
    const platform::PendingError error = platform::pendingError();
    if (error.number != 0) std::printf("%s%d %s\n", where, error.number, error.text);
}

/// Bytes of the rows that the pitch counts, which is less than the buffer where a row is longer than that.
long long pitchedBytes(const VexaImage& image)
{
    return static_cast<long long>(image.pitch()) * image.height();
}

}  // namespace

namespace vexa::colorOperations {

VexaStatus FPNCorrection(const VexaImage& src, VexaImage& dst, const VexaImage& white, const VexaImage& black,
                         const Vexa32f gain, const VexaStream& stream)
{
    if (const VexaStatus failed = initialized(src)) return failed;
    const bool creates = !dst.isInitialized();
    if (const VexaStatus failed =
            matchOrCreate(dst, src, {same::width, same::height}, src.size(), src.depth(), src.channels()))
        return failed;
    if (src.depth() != 8 && src.depth() != 16) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    // The kernel of 8 bits has one channel: of other images it corrects as many elements of a row as that has pixels.
    const int corrected = src.depth() == 8 ? 1 : src.channels();
    const VexaSize size =
        commonSize(src.size(), corrected * src.depth() / 8, src.pitch(), {&src, &dst, &white, &black});
    const bool whole = size.width * corrected == elementsOf(src) && size.height == src.height();
    if (creates && !whole) clear(dst, handle(stream));
    if (src.depth() == 16)
        return vexaFPNCorrection16u(src.ptr<u16>(), dst.ptr<u16>(), white.ptr<u16>(), black.ptr<u16>(), size,
                                    src.pitch(), src.channels(), gain, src.dataBits(), handle(stream));
    // Nothing in common is nothing to do, and no size that the worker would refuse.
    if (size.width < 1 || size.height < 1) return VEXA_SUCCESS;
    return vexaFPNCorrection8u(src.ptr<u8>(), dst.ptr<u8>(), white.ptr<u8>(), black.ptr<u8>(), size, src.pitch(), gain,
                               handle(stream));
}

VexaStatus fpn(VexaImage& output, const VexaImage& input, const VexaImage& blackImage)
{
    const long long bytes = std::min({pitchedBytes(output), bytesOf(input), bytesOf(blackImage)});
    printPendingError("FPN before ");
    const int runs = static_cast<int>(bytes / runBytes) + 1;
    launch(fpnCUDA, elementExtent<1, u8>(runBytes, runs), nullptr, output.ptr<u8>(), input.ptr<u8>(),
           blackImage.ptr<u8>(), bytes);
    printPendingError("FPN kernel ");
    return VEXA_SUCCESS;
}

}  // namespace vexa::colorOperations
