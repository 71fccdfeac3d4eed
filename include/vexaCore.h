/// @file
/// The classes of the library: VexaStream, VexaTimer, VexaImage and VexaHistogram. This header alone gives a caller
/// everything: it includes the headers of the operations and of the other classes at its end.

#pragma once

#include <string>

#include "vexaDefs.h"

/// Stands for the stream that an operation is queued on.
///
/// Every stream, created or not, runs its work on the default stream of the current device, in the order of the calls:
/// ptr() is always null. A created stream differs from a default one by its number.
class VEXA_API VexaStream {
public:
    VexaStream(bool create = false);
    VexaStream(const VexaStream&) = delete;
    VexaStream& operator=(const VexaStream&) = delete;
    ~VexaStream();

    /// Makes a created stream of one whose creation failed; leaves a usable one alone.
    void create();
    void destroy();

    void* ptr() const;
    void sync() const;      ///< Waits until the queued work is done.
    bool finished() const;  ///< Whether the queued work is done.
    bool isDefault() const;
    Vexa32s id() const;  ///< 0 for the default stream, else the number of the created stream, from 1 on.

private:
    void* _stream;
    bool _init;
    bool _isDefault;
    Vexa32s _id;
};

/// A stop watch of host wall-clock time. It does not wait for the device: sync first to time an operation.
class VEXA_API VexaTimer {
public:
    void Start();
    void Stop();
    void Reset();  ///< Does nothing.

    /// Seconds from the last Start() to the last Stop().
    Vexa64f GetElapsedTime();

private:
    struct TimeStamp {
        long long seconds = 0;
        long long microseconds = 0;
    };
    VEXA_LOCAL static TimeStamp now();

    TimeStamp _start;
    TimeStamp _stop;
};

/// A rectangle of interleaved pixels in device memory.
///
/// An image is either initialised, owning a buffer, or empty. Element c of pixel (x, y) lies at byte
/// `pitch * y + (channels * x + c) * depth / 8` of the buffer; rows count downward. Copies are deep. An object has no
/// lock: calls on one image from several threads must be ordered by the caller.
class VEXA_API VexaImage {
public:
    /// An empty image.
    VexaImage();

    /// Constructors with arguments call the create() of the same arguments and drop its status: an image that could
    /// not be made is empty.
    VexaImage(Vexa32s width, Vexa32s height, Vexa32s depth, Vexa32s channels);
    VexaImage(Vexa32s width, Vexa32s height, Vexa32s pitch, Vexa32s depth, Vexa32s channels);
    VexaImage(const VexaSize& size, Vexa32s depth, Vexa32s channels);
    VexaImage(Vexa32s width, Vexa32s height, VexaType type);
    VexaImage(const VexaSize& size, VexaType type);
    VexaImage(const std::string& file, VexaLoadType load);

    /// A deep copy with a pitch of its own; empty if the source is or the allocation fails. Blocks.
    VexaImage(const VexaImage& other);

    /// A deep copy in place of what this image held. An empty source leaves this image as it is. Blocks.
    VexaImage& operator=(const VexaImage& other);

    ~VexaImage();

    /// An empty image, to pass where an operation asks for an optional one.
    static const VexaImage null();

    /// Allocates the image; its pixels are not cleared. On an initialised image nothing happens, whatever the
    /// arguments: release() comes first.
    ///
    /// @param depth bits of an element; negative for signed integers
    /// @return VEXA_INVALID_ARG_ERROR for a width or height below 1, VEXA_CHANNEL_NOT_SUPPORTED_ERROR for channels
    ///         outside 1 to 4, VEXA_DEPTH_NOT_SUPPORTED_ERROR for a depth that is not a power of two from 8 on (0
    ///         passes), VEXA_MEM_ALLOC_ERR
    VexaStatus create(Vexa32s width, Vexa32s height, Vexa32s depth, Vexa32s channels);

    /// As above with `pitch` bytes from one row to the next, whatever the size of a row: for callers that know what
    /// they do, since operations address all their images by the pitch of the first.
    VexaStatus create(Vexa32s width, Vexa32s height, Vexa32s pitch, Vexa32s depth, Vexa32s channels);
    VexaStatus create(const VexaSize& size, Vexa32s depth, Vexa32s channels);
    VexaStatus create(Vexa32s width, Vexa32s height, VexaType type);
    VexaStatus create(const VexaSize& size, VexaType type);

    /// Loads a file; into an initialised image the pixels are uploaded as it stands.
    /// @return VEXA_INVALID_ARG_ERROR if the file can't be read or decoded, else as create() and upload()
    VexaStatus create(const std::string& file, VexaLoadType load);

    /// Frees the buffer, after the device has finished with it.
    /// @return VEXA_IMAGE_NOT_INITIALIZED, VEXA_MEMFREE_ERR
    VexaStatus release();

    Vexa32s width() const;
    Vexa32s height() const;
    VexaSize size() const;
    Vexa32s pitch() const;     ///< Bytes from one row to the next.
    Vexa32s depth() const;     ///< Bits of an element, never negative.
    Vexa32s channels() const;  ///< Elements of a pixel.
    Vexa32s dataBits() const;  ///< Bits of an element that carry data, at most depth().
    VexaType type() const;
    VexaChannelSeq channelSeq() const;
    bool isSigned() const;
    bool isInitialized() const;
    void* ptr() const;  ///< Start of the buffer in device memory.

    /// The same, for T unsigned char, unsigned short or float.
    template <typename T>
    T* ptr() const;

    /// @return VEXA_INVALID_ARG_ERROR for bits outside 0 to depth()
    VexaStatus setDataBits(Vexa32s bits);

    /// Names the order of the channels. Nothing converts pixels.
    void setChannelSequence(VexaChannelSeq seq);

    /// @name Upload and download
    /// Between this image and host memory. Pitches of the host are in bytes. The forms without a stream block; those
    /// with one need page-locked host memory to overlap with other work. The forms without a pitch copy the buffer
    /// byte for byte, pitch() * height() of them. Rectangles and offsets are in pixels.
    ///
    /// All give VEXA_IMAGE_NOT_INITIALIZED on an empty image. A failed copy gives VEXA_MEMCPY_H2D_ERROR in upload of
    /// the whole image and in the forms without a pitch, VEXA_MEMCPY_D2H_ERROR in download with a pitch and in all
    /// forms with a rectangle, and goes unreported in the two whole-image forms with pitch and stream.
    /// @{
    VexaStatus upload(const void* src, Vexa32s pitch);
    VexaStatus upload(const void* src, Vexa32s pitch, const VexaStream& stream);
    VexaStatus upload(const void* src, VexaRect roi, Vexa32s pitch, VexaPoint2D<int> offset);
    VexaStatus upload(const void* src, VexaRect roi, Vexa32s pitch, VexaPoint2D<int> offset, const VexaStream& stream);
    VexaStatus upload(const void* src);
    VexaStatus upload(const void* src, const VexaStream& stream);

    VexaStatus download(void* dst, Vexa32s pitch) const;
    VexaStatus download(void* dst, Vexa32s pitch, const VexaStream& stream) const;
    VexaStatus download(void* dst, VexaPoint2D<int> offset, Vexa32s pitch, VexaRect roi) const;
    VexaStatus download(void* dst, VexaPoint2D<int> offset, Vexa32s pitch, VexaRect roi,
                        const VexaStream& stream) const;
    VexaStatus download(void* dst) const;
    VexaStatus download(void* dst, const VexaStream& stream) const;
    /// @}

    /// Copies a rectangle of this image to an offset in another, which is created at the size of the rectangle if
    /// empty. The formats are not compared. Within one image the two rectangles must not overlap.
    /// @return VEXA_IMAGE_NOT_INITIALIZED, VEXA_MEMCPY_D2H_ERROR
    VexaStatus copyTo(VexaImage& dst, VexaPoint2D<int> dstOffset, VexaRect srcRoi,
                      const VexaStream& stream = VexaStream(false)) const;

    /// One element as a double, 0.0 outside the image. Blocks; meant for inspection, as all single-pixel calls.
    Vexa64f get(Vexa32s x, Vexa32s y, Vexa32s channel) const;

    /// One pixel; the elements past the channels are 0.
    VexaScalar get(Vexa32s x, Vexa32s y) const;

    /// Writes one element, saturated and truncated to its type.
    /// @return VEXA_INVALID_ARG_ERROR outside the image, VEXA_DEPTH_NOT_SUPPORTED_ERROR
    VexaStatus set(Vexa32s x, Vexa32s y, Vexa32s channel, Vexa64f value);

    /// Writes one pixel.
    /// @return VEXA_INVALID_ARG_ERROR outside the image
    VexaStatus set(Vexa32s x, Vexa32s y, const VexaScalar& values);

    /// @name Fills
    /// Of 8u, 16u and 32f images with 1 or 3 channels. Values saturate and are truncated, except where one channel is
    /// set: there an integer element takes the low bits of the truncated value, 0 for a negative one. One-channel
    /// images take the first of the values. They return without waiting.
    /// @return VEXA_IMAGE_NOT_INITIALIZED, VEXA_TYPE_NOT_SUPPORTED_ERROR
    /// @{
    VexaStatus set(const Vexa64f value, const VexaStream& stream = VexaStream(false));
    VexaStatus set(const VexaScalar& values, const VexaStream& stream = VexaStream(false));

    /// One channel of every pixel. The channel is not compared with those of the image: one past them counts on into
    /// the next pixels, as far as the row goes.
    VexaStatus set(const Vexa32s channel, const Vexa64f value, const VexaStream& stream = VexaStream(false));
    /// @}

    /// A channel as a new image, by vexa::dataExchange::getChannel: an empty one if there is no such channel. Where
    /// that refuses the type, as of one-channel images, the pixels of the result are not written.
    VexaImage operator[](Vexa32s channel) const;

    /// @name Operators in place
    /// Each is an operation of vexa::arithmeticLogical with this image as source and destination, its status dropped.
    /// The type of the image stays: `image8u += 0.5` truncates, and an operation that the types have no row for does
    /// nothing. Differences of constants are sums with the negated constant, quotients are products with the
    /// reciprocal.
    /// @{
    VexaImage& operator++();
    VexaImage& operator--();
    VexaImage operator++(int);
    VexaImage operator--(int);

    VexaImage& operator+=(const VexaImage& image);
    VexaImage& operator+=(Vexa32s value);
    VexaImage& operator+=(Vexa64f value);
    VexaImage& operator+=(const VexaScalar& values);
    VexaImage& operator-=(const VexaImage& image);
    VexaImage& operator-=(Vexa32s value);
    VexaImage& operator-=(Vexa64f value);
    VexaImage& operator-=(const VexaScalar& values);
    VexaImage& operator*=(const VexaImage& image);
    VexaImage& operator*=(Vexa32s value);
    VexaImage& operator*=(Vexa64f value);
    VexaImage& operator*=(const VexaScalar& values);
    VexaImage& operator/=(const VexaImage& image);
    VexaImage& operator/=(Vexa32s value);
    VexaImage& operator/=(Vexa64f value);
    VexaImage& operator/=(const VexaScalar& values);

    VexaImage& operator&=(const VexaImage& image);
    VexaImage& operator&=(Vexa32s value);
    VexaImage& operator|=(const VexaImage& image);
    VexaImage& operator|=(Vexa32s value);
    VexaImage& operator^=(const VexaImage& image);
    VexaImage& operator^=(Vexa32s value);
    VexaImage& operator<<=(Vexa32s bits);
    VexaImage& operator>>=(Vexa32s bits);
    /// @}

    /// The product with -1 as a new image of the same type, so all zeros for an unsigned one.
    VexaImage operator-() const;

    /// This image as another element type: value * scale + offset, saturated and truncated (see
    /// vexa::dataExchange::convertScale). `dst` may be this image. A destination of another type is made anew.
    /// @return VEXA_IMAGE_NOT_INITIALIZED, VEXA_CHANNEL_NOT_SUPPORTED_ERROR if the channels of `type` are not this
    ///         image's, else as convertScale
    VexaStatus convertTo(VexaImage& dst, VexaType type, Vexa32f scale, Vexa32f offset,
                         const VexaStream& stream = VexaStream(false));

    /// The same by depth: 8, 16, 32 or 64, unsigned or float.
    /// @return VEXA_DEPTH_NOT_SUPPORTED_ERROR for any other depth, else as above
    VexaStatus convertTo(VexaImage& dst, Vexa32s depth, Vexa32f scale, Vexa32f offset,
                         const VexaStream& stream = VexaStream(false));

    /// Does nothing; vexa::showImage displays an image.
    VexaStatus show(const std::string& name, Vexa32s wait) const;

private:
    VEXA_LOCAL void clear();
    VEXA_LOCAL void adopt(void* data, Vexa32s width, Vexa32s height, Vexa32s pitch, Vexa32s depth, Vexa32s channels);
    VEXA_LOCAL void copyFrom(const VexaImage& other);
    VEXA_LOCAL VexaStatus convertInPlace(Vexa32s depth, Vexa32f scale, Vexa32f offset, const VexaStream& stream);

    bool _init;
    bool _signed;
    void* _data;
    Vexa32s _width;
    Vexa32s _height;
    Vexa32s _pitch;
    Vexa32s _depth;
    Vexa32s _channels;
    Vexa32s _dataBits;
    VexaChannelSeq _channelSequence;
    VexaType _type;
};

/// Counts of values, 32 bits each, in device memory or in ordinary or page-locked host memory.
///
/// A histogram of an image holds its channels one after the other: bin v of channel c of an 8-bit image is element
/// `256 * c + v`, of a 16-bit image `65536 * c + v`.
class VEXA_API VexaHistogram {
public:
    /// An empty histogram.
    VexaHistogram();

    /// Constructors with arguments call the create() of the same arguments and drop its status.
    VexaHistogram(Vexa32s bins, VexaPointerType location);
    VexaHistogram(VexaType type, VexaPointerType location);
    VexaHistogram(const VexaHistogram&) = delete;
    VexaHistogram& operator=(const VexaHistogram&) = delete;
    ~VexaHistogram();

    /// Bins of 0. The type of such a histogram is VEXA_UNKNOWN_TYPE.
    /// @return VEXA_INVALID_ARG_ERROR for fewer than 1 bin, VEXA_PTR_NONE or an initialised histogram
    VexaStatus create(Vexa32s bins, VexaPointerType location);

    /// As many bins of 0 as images of this format need. An initialised histogram stays as it is, which is a success
    /// here.
    /// @return VEXA_TYPE_NOT_SUPPORTED_ERROR for types other than 8u and 16u with 1 or 3 channels; else as above
    VexaStatus create(VexaType type, VexaPointerType location);

    /// Frees the bins, after the device has finished with them. Of an empty histogram it is a success.
    VexaStatus release();

    bool isInitialized() const;
    Vexa32u* hist();
    const Vexa32u* hist() const;
    Vexa32s binCount() const;
    VexaType type() const;
    VexaPointerType location() const;

private:
    bool _init;
    Vexa32u* _hist;
    Vexa32s _bins;
    VexaType _type;
    VexaPointerType _loc;
};

#include "vexaArithmeticLogical.h"
#include "vexaColorOperations.h"
#include "vexaComputerVision.h"
#include "vexaDataExchange.h"
#include "vexaDevice.h"
#include "vexaGeometryTransforms.h"
#include "vexaIO.h"
#include "vexaImageFiltering.h"
#include "vexaImageStatistics.h"
#include "vexaImageTransforms.h"
#include "vexaOperators.h"
#include "vexaPyramid.h"
