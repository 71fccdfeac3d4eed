/// @file
/// The vocabulary of the library: scalar types, pixel formats, status codes, selector enumerations, small value
/// records and the four-component VexaScalar. Needs neither CUDA nor OpenCV headers.

#pragma once

#if defined(__GNUC__)
#define VEXA_API __attribute__((visibility("default")))
#define VEXA_LOCAL __attribute__((visibility("hidden")))
#else
#define VEXA_API
#define VEXA_LOCAL
#endif

using Vexa8u = unsigned char;
using Vexa16u = unsigned short;
using Vexa32u = unsigned int;
using Vexa32s = int;
using Vexa32f = float;
using Vexa64f = double;

/// A CUDA stream handle, declared as the CUDA runtime declares it, so that callers need no CUDA header.
struct CUstream_st;
typedef struct CUstream_st* cudaStream_t;

/// Pixel formats: element kind and channel count, four rows a kind.
enum VEXA_API VexaType : int {
    VEXA_8UC1 = 0,
    VEXA_8UC2 = 1,
    VEXA_8UC3 = 2,
    VEXA_8UC4 = 3,
    VEXA_8SC1 = 4,
    VEXA_8SC2 = 5,
    VEXA_8SC3 = 6,
    VEXA_8SC4 = 7,
    VEXA_16UC1 = 8,
    VEXA_16UC2 = 9,
    VEXA_16UC3 = 10,
    VEXA_16UC4 = 11,
    VEXA_16SC1 = 12,
    VEXA_16SC2 = 13,
    VEXA_16SC3 = 14,
    VEXA_16SC4 = 15,
    VEXA_32FC1 = 16,
    VEXA_32FC2 = 17,
    VEXA_32FC3 = 18,
    VEXA_32FC4 = 19,
    VEXA_32SC1 = 20,
    VEXA_32SC2 = 21,
    VEXA_32SC3 = 22,
    VEXA_32SC4 = 23,
    VEXA_64FC1 = 24,
    VEXA_64FC2 = 25,
    VEXA_64FC3 = 26,
    VEXA_64FC4 = 27,
    VEXA_COMPLEX32 = VEXA_32FC2,  ///< interleaved real and imaginary 32-bit floats
    VEXA_COMPLEX64 = VEXA_64FC2,  ///< interleaved real and imaginary 64-bit floats
    VEXA_NO_TYPE = -1,
    VEXA_UNKNOWN_TYPE = -2  ///< a histogram sized by bin count and not by a pixel format
};

/// Result of nearly every public operation: 0 is success, negative is failure, the one positive value is a warning.
enum VEXA_API VexaStatus : int {
    VEXA_NO_ERROR = 0,
    VEXA_SUCCESS = 0,
    VEXA_MEM_ALLOC_ERR = -1,
    VEXA_ARRAY_ALLOC_ERR = -2,
    VEXA_MEMSET_ERR = -3,
    VEXA_MEMCPY_H2D_ERROR = -4,
    VEXA_MEMCPY_D2H_ERROR = -5,
    VEXA_MEMCPY_D2D_ERROR = -6,
    VEXA_MEMCPY_D2A_ERROR = -7,
    VEXA_MEMCPY_H2S_ERROR = -8,
    VEXA_MEMCPY_ERROR = -9,
    VEXA_MEMFREE_ERR = -10,
    VEXA_MEMFREE_ARRAY_ERR = -11,
    VEXA_TEXTURE_BIND_ERROR = -12,
    VEXA_TEXTURE_UNBIND_ERROR = -13,
    VEXA_IMAGE_NOT_INITIALIZED = -14,
    VEXA_NULL_POINTER_ERROR = -15,
    VEXA_INVALID_ARG_ERROR = -16,
    VEXA_NOT_SUPPORTED_MODE_ERROR = -17,
    VEXA_SIZE_ERROR = -18,
    VEXA_INVALID_ROI_ERROR = -19,
    VEXA_CUDA_KERNEL_EXECUTION_ERROR = -20,
    VEXA_INTERNAL_FUNCTION_CALL_ERROR = -21,
    VEXA_INTERNAL_CALL_ERROR = -22,
    VEXA_CHANNEL_NOT_SUPPORTED_ERROR = -23,
    VEXA_DEPTH_NOT_SUPPORTED_ERROR = -25,
    VEXA_MEMORY_PINNING_ERROR = -26,
    VEXA_MEMORY_UNPINNING_ERROR = -27,
    VEXA_STREAM_CREATE_ERROR = -28,
    VEXA_STREAM_DESTROY_ERROR = -29,
    VEXA_OPENCL_ERROR = -30,
    VEXA_DIFFERENT_IMAGE_SIZE_ERROR = -31,
    VEXA_DEVICE_NOT_FOUND_ERROR = -32,
    VEXA_INVALID_DEVICE_ERROR = -33,
    VEXA_DRIVER_NOT_FOUND_ERROR = -34,
    VEXA_DRIVER_NOT_SUPPORTED_ERROR = -35,
    VEXA_UNKNOWN_ERROR = -36,
    VEXA_TYPE_NOT_SUPPORTED_ERROR = -37,
    VEXA_INPLACE_OP_NOT_SUPPORTED = -38,
    VEXA_SINGULAR_MATRIX_ERROR = -39,
    VEXA_JPEG_PARAM_ERROR = -40,
    VEXA_JPEG_ENCODE_ERROR = -41,
    VEXA_JPEG_DECODE_ERROR = -42,
    VEXA_WARP_AFFINE_INCORRECT_QUAD_WARNING = 1
};

/// Order of the channels of a pixel.
enum VEXA_API VexaChannelSeq : int {
    VEXA_CHANNEL_SEQ_RGB = 0,
    VEXA_CHANNEL_SEQ_BGR = 1,
    VEXA_CHANNEL_SEQ_BGRA = 2,
    VEXA_CHANNEL_SEQ_RGBA = 3,
    VEXA_CHANNEL_SEQ_LUMINANCE = 4,
    VEXA_CHANNEL_SEQ_NONE = 5
};

/// What a file is converted to while it is loaded.
enum VEXA_API VexaLoadType : int {
    VEXA_LOAD_IMAGE_DEFAULT = -1,              ///< as the file has it
    VEXA_LOAD_IMAGE_GRAYSCALE = 0,             ///< 8-bit, one channel
    VEXA_LOAD_IMAGE_COLOR = 1,                 ///< 8-bit, blue, green, red
    VEXA_LOAD_IMAGE_GRAYSCALE_KEEP_DEPTH = 2,  ///< one channel, depth of the file
    VEXA_LOAD_IMAGE_COLOR_KEEP_DEPTH = 3       ///< channels and depth of the file
};

/// Where a pointer points.
enum VEXA_API VexaPointerType : int {
    VEXA_PTR_NONE = -1,
    VEXA_PTR_DEVICE = 0,
    VEXA_PTR_HOST = 1,
    VEXA_PTR_HOST_PAGE_LOCKED = 2
};

enum VEXA_API VexaInterpolationType : int { VEXA_INTER_NEAREST = 1, VEXA_INTER_LINEAR = 2, VEXA_INTER_CUBIC = 3 };

enum VEXA_API VexaFlipType : int { VEXA_FLIP_UP_DOWN = 0, VEXA_FLIP_LEFT_RIGHT = 1, VEXA_FLIP_BOTH_DIRECTIONS = 2 };

/// Stencils of the gradient operations.
enum VEXA_API VexaGradientKernelType : int {
    VEXA_GRADIENT_CENTRAL_DIFFERENCE = 0,
    VEXA_GRADIENT_SOBEL_3x3 = 1,
    VEXA_GRADIENT_SCHARR_3x3 = 2,
    VEXA_GRADIENT_PREWITT_3x3 = 3
};

/// Layouts of a Bayer mosaic, named by its first two rows; the HQ rows select the high-quality stencils.
enum VEXA_API VexaBayerSeq : int {
    VEXA_BAYER_BLANK = 0,
    VEXA_BAYER_BGGR = 1,
    VEXA_BAYER_GBRG = 2,
    VEXA_BAYER_GRBG = 3,
    VEXA_BAYER_RGGB = 4,
    VEXA_BAYER_BGGR_HQ = 5,
    VEXA_BAYER_GRBG_HQ = 6,
    VEXA_BAYER_RGGB_HQ = 7,
    VEXA_BAYER_GBRG_HQ = 8
};

enum VEXA_API VexaColor : int { VEXA_COLOR_RED = 0, VEXA_COLOR_GREEN = 1, VEXA_COLOR_BLUE = 2 };

/// Corner measures of the feature detector.
enum VEXA_API VexaFeaturesAlgorithm : int {
    VEXA_FEATURES_KLT = 0,
    VEXA_FEATURES_HARRIS = 1,
    VEXA_FEATURES_HARRIS_PETER = 2
};

/// Properties of a spectrum.
enum VEXA_API VexaFFTProp : int {
    VEXA_FFT_MAGNITUDE = 0,
    VEXA_FFT_SCALED_MAGNITUDE = 1,
    VEXA_FFT_PHASE = 2,
    VEXA_FFT_SCALED_PHASE = 3,
    VEXA_FFT_REAL = 4,
    VEXA_FFT_SCALED_REAL = 5,
    VEXA_FFT_IMAGINARY = 6,
    VEXA_FFT_SCALED_IMAGINARY = 7
};

/// Width and height in pixels. Destruction clears both.
struct VEXA_API VexaSize {
    Vexa32s width;
    Vexa32s height;

    VexaSize();
    VexaSize(Vexa32s width, Vexa32s height);
    VexaSize(const VexaSize&) = default;
    VexaSize& operator=(const VexaSize&) = default;
    ~VexaSize();
};

/// A point or offset, for T int or float. Destruction clears both coordinates.
template <typename T>
struct VEXA_API VexaPoint2D {
    T x;
    T y;

    VexaPoint2D();
    VexaPoint2D(T x, T y);
    VexaPoint2D(const VexaPoint2D&) = default;
    VexaPoint2D& operator=(const VexaPoint2D&) = default;
    ~VexaPoint2D();
};
extern template struct VexaPoint2D<int>;
extern template struct VexaPoint2D<float>;

/// A rectangle of pixels: its corner, width and height.
struct VEXA_API VexaRect {
    Vexa32s x;
    Vexa32s y;
    Vexa32s width;
    Vexa32s height;

    VexaRect();
    VexaRect(Vexa32s x, Vexa32s y, Vexa32s width, Vexa32s height);

    VexaPoint2D<int> origin() const;
};

/// A point that carries a value, for P and V float.
template <typename P, typename V>
struct VEXA_API VexaPointValue2D {
    P x;
    P y;
    V val;

    VexaPointValue2D();
    VexaPointValue2D(P x, P y, V val);
};
extern template struct VexaPointValue2D<float, float>;

/// What vexa::device::getDeviceProperties tells of a device. Starts from zero.
struct VexaDeviceProperties {
    char name[256] = {};
    int multiProcessorCount = 0;
    int coresPerMultiProcessor = 0;
    int totalCores = 0;
    float computeCapability = 0;
    int asyncEngineCount = 0;
    unsigned long long totalGlobalMem = 0;  ///< bytes
    unsigned long long reserved = 0;
    unsigned long long totalConstMem = 0;  ///< bytes
    int textureAlignment = 0;              ///< bytes
    int clockRate = 0;                     ///< kHz
};

/// Up to four 64-bit floats, one a channel: a constant for an operation or its result.
///
/// The elements lie in page-locked host memory of the object's own, so that a device can write into them. A scalar
/// that an operation fills asynchronously is valid once the stream has finished. Copies are deep; there is no
/// assignment: write through vals() or operator[].
class VEXA_API VexaScalar {
public:
    VexaScalar();                                    ///< 0, 0, 0, 0; integer
    VexaScalar(Vexa64f value);                       ///< value in all four
    VexaScalar(Vexa32s value);                       ///< value in all four; integer
    VexaScalar(Vexa64f v0, Vexa64f v1, Vexa64f v2);  ///< the fourth is 0: an alpha channel stays as it is
    VexaScalar(Vexa32s v0, Vexa32s v1, Vexa32s v2);  ///< the fourth is 0; integer
    VexaScalar(Vexa64f v0, Vexa64f v1, Vexa64f v2, Vexa64f v3);
    VexaScalar(Vexa32s v0, Vexa32s v1, Vexa32s v2, Vexa32s v3);  ///< integer
    VexaScalar(const VexaScalar& other);
    VexaScalar& operator=(const VexaScalar&) = delete;
    ~VexaScalar();

    /// Whether the scalar was built from integers.
    bool isInteger() const;

    Vexa64f* vals();
    const Vexa64f* vals() const;

    /// Element i; outside 0 to 3 a reference to a stand-in that reads 0.
    Vexa64f& operator[](int i);
    const Vexa64f& operator[](int i) const;

    /// The four elements negated, never integer.
    VexaScalar operator-() const;

private:
    Vexa64f* _vals;
    bool _isInteger;
};

/// The format of an absolute depth (8, 16, 32 or 64), 1 to 4 channels and a signedness; without sign 32 and 64 are
/// floats. Anything else, signed 64 too, is VEXA_NO_TYPE.
VEXA_API VexaType getType(int depth, int channels, bool isSigned);

/// Depth and channels of a format. The depth is negative for signed integers; both are 0 for a value that is no format.
VEXA_API void getParameters(VexaType type, int& depth, int& channels);

/// The words for a status, a static text; "VEXA: Unknown Error" where it has none.
VEXA_API const char* vexaStatusString(VexaStatus status);

/// value clamped to min and max, truncated toward zero between them; a NaN gives 0.
template <typename S, typename T>
T __vexaSaturate(S value, T min, T max)
{
    if (value < static_cast<S>(min)) return min;
    if (value > static_cast<S>(max)) return max;
    return value == value ? static_cast<T>(value) : T(0);
}
