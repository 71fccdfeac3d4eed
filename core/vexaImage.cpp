/// @file
/// VexaImage: the device image, its allocation, copies, transfers and single pixels. The statuses of failed transfers
/// differ from call to call; that is the contract.

#include <climits>
#include <cstdint>
#include <limits>

#include "layout.h"
#include "platform.h"
#include "streams.h"
#include "vexaCore.h"

namespace platform = vexa::platform;
using vexa::handle;

namespace {

VexaStatus answer(VexaStatus result, VexaStatus failure)
{
    return result == VEXA_SUCCESS ? VEXA_SUCCESS : failure;
}

bool isDepth(Vexa32s depth)
{
    if (depth == INT_MIN) return false;
    const Vexa32s bits = depth < 0 ? -depth : depth;
    return bits == 0 || ((bits & (bits - 1)) == 0 && bits % 8 == 0);
}

VexaStatus shapeStatus(Vexa32s width, Vexa32s height, Vexa32s depth, Vexa32s channels)
{
    if (width < 1 || height < 1) return VEXA_INVALID_ARG_ERROR;
    if (channels < 1 || channels > 4) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (!isDepth(depth)) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    return VEXA_SUCCESS;
}

/// Bytes of `count` pixels, for offsets also negative.
long long pixelBytes(long long count, Vexa32s depth, Vexa32s channels)
{
    return count * channels * (depth / 8);
}

VexaChannelSeq usualSequence(Vexa32s channels)
{
    switch (channels) {
        case 3:
            return VEXA_CHANNEL_SEQ_BGR;
        case 4:
            return VEXA_CHANNEL_SEQ_BGRA;
        default:
            return VEXA_CHANNEL_SEQ_LUMINANCE;
    }
}

/// Bytes from the first pixel to pixel (x, y), at the pitch of the memory that holds them.
long long offsetOf(const VexaImage& format, long long pitch, VexaPoint2D<int> pixel)
{
    return pixel.y * pitch + pixelBytes(pixel.x, format.depth(), format.channels());
}

/// A pixel of a caller's memory. By integers, as it may be far from what the caller holds.
template <typename Byte>
Byte* hostPixel(Byte* pixels, long long offset)
{
    if (pixels == nullptr) return nullptr;
    return reinterpret_cast<Byte*>(reinterpret_cast<std::uintptr_t>(pixels) + static_cast<std::uintptr_t>(offset));
}

/// A pixel of an image's buffer, null if the extent from there on leaves the buffer. Rectangles are not compared with
/// the image, but nothing may reach into another one.
char* devicePixel(const VexaImage& image, long long offset, platform::Extent2D extent)
{
    const long long ownRow = pixelBytes(image.width(), image.depth(), image.channels());
    const long long held = image.isInitialized() ? vexa::bufferBytes(image.pitch(), image.height(), ownRow) : 0;
    const auto rows = static_cast<long long>(extent.rows);
    const auto rowBytes = static_cast<long long>(extent.rowBytes);
    const bool inside = offset >= 0 && offset <= held && rowBytes >= 0 && rowBytes <= held - offset && rows >= 0 &&
                        rows <= INT_MAX && offset + image.pitch() * (rows - 1) + rowBytes <= held;
    return inside ? static_cast<char*>(image.ptr()) + offset : nullptr;
}

/// The bytes of `width` by `height` pixels. A negative side becomes huge, and the copy is refused.
platform::Extent2D extentOf(const VexaImage& format, Vexa32s width, Vexa32s height)
{
    return {static_cast<std::size_t>(pixelBytes(width, format.depth(), format.channels())),
            static_cast<std::size_t>(static_cast<long long>(height))};
}

platform::Extent2D extentOf(const VexaImage& image)
{
    return extentOf(image, image.width(), image.height());
}

/// What the forms without a pitch copy.
std::size_t pitchedBytes(const VexaImage& image)
{
    return static_cast<std::size_t>(image.pitch()) * static_cast<std::size_t>(image.height());
}

platform::Target target(void* pixels, Vexa32s pitch)
{
    return {pixels, static_cast<std::size_t>(static_cast<long long>(pitch))};
}

platform::Source source(const void* pixels, Vexa32s pitch)
{
    return {pixels, static_cast<std::size_t>(static_cast<long long>(pitch))};
}

/// A rectangle of an image to write to. `format` tells the size of the pixels that the offset counts.
platform::Target targetAt(const VexaImage& image, const VexaImage& format, VexaPoint2D<int> offset,
                          platform::Extent2D extent)
{
    return target(devicePixel(image, offsetOf(format, image.pitch(), offset), extent), image.pitch());
}

/// A rectangle of an image to read from.
platform::Source sourceAt(const VexaImage& image, VexaPoint2D<int> offset, platform::Extent2D extent)
{
    return source(devicePixel(image, offsetOf(image, image.pitch(), offset), extent), image.pitch());
}

}  // namespace

VexaImage::VexaImage() : _type(VEXA_NO_TYPE)
{
    clear();
    _signed = false;
}

VexaImage::VexaImage(Vexa32s width, Vexa32s height, Vexa32s depth, Vexa32s channels) : VexaImage()
{
    (void)create(width, height, depth, channels);
}

VexaImage::VexaImage(Vexa32s width, Vexa32s height, Vexa32s pitch, Vexa32s depth, Vexa32s channels) : VexaImage()
{
    (void)create(width, height, pitch, depth, channels);
}

VexaImage::VexaImage(const VexaSize& size, Vexa32s depth, Vexa32s channels) : VexaImage()
{
    (void)create(size, depth, channels);
}

VexaImage::VexaImage(Vexa32s width, Vexa32s height, VexaType type) : VexaImage()
{
    (void)create(width, height, type);
}

VexaImage::VexaImage(const VexaSize& size, VexaType type) : VexaImage()
{
    (void)create(size, type);
}

VexaImage::VexaImage(const std::string& file, VexaLoadType load) : VexaImage()
{
    (void)create(file, load);
}

VexaImage::VexaImage(const VexaImage& other) : VexaImage()
{
    if (other._init && create(other.size(), other._type) == VEXA_SUCCESS) copyFrom(other);
}

VexaImage& VexaImage::operator=(const VexaImage& other)
{
    if (!other._init || this == &other) return *this;
    (void)release();
    if (create(other.size(), other._type) == VEXA_SUCCESS)
        copyFrom(other);
    else
        clear();
    return *this;
}

VexaImage::~VexaImage()
{
    (void)release();
}

const VexaImage VexaImage::null()
{
    static const VexaImage empty;
    return empty;
}

/// The empty state, but for the type and sign, which a released image keeps.
void VexaImage::clear()
{
    _init = false;
    _data = nullptr;
    _width = 0;
    _height = 0;
    _pitch = 0;
    _depth = 0;
    _channels = 0;
    _dataBits = 0;
    _channelSequence = VEXA_CHANNEL_SEQ_NONE;
}

/// Takes the pixels of an image of the same size and type.
void VexaImage::copyFrom(const VexaImage& other)
{
    _channelSequence = other._channelSequence;
    _dataBits = other._dataBits;
    const platform::Extent2D extent = extentOf(other);
    (void)platform::copyOnDevice(targetAt(*this, other, {0, 0}, extent), sourceAt(other, {0, 0}, extent), extent);
}

/// Becomes the owner of a buffer of this shape.
void VexaImage::adopt(void* data, Vexa32s width, Vexa32s height, Vexa32s pitch, Vexa32s depth, Vexa32s channels)
{
    _init = true;
    _signed = depth < 0;
    _data = data;
    _width = width;
    _height = height;
    _pitch = pitch;
    _depth = depth < 0 ? -depth : depth;
    _channels = channels;
    _dataBits = _depth;
    _channelSequence = usualSequence(channels);
    _type = getType(_depth, channels, _signed);
}

VexaStatus VexaImage::create(Vexa32s width, Vexa32s height, Vexa32s depth, Vexa32s channels)
{
    if (_init) return VEXA_SUCCESS;
    if (const VexaStatus failed = shapeStatus(width, height, depth, channels)) return failed;
    const long long rowBytes = pixelBytes(width, depth < 0 ? -depth : depth, channels);
    if (rowBytes > INT_MAX) return VEXA_MEM_ALLOC_ERR;
    void* data = nullptr;
    std::size_t pitch = 0;
    if (platform::allocateRows(data, pitch, static_cast<std::size_t>(rowBytes), static_cast<std::size_t>(height)))
        return VEXA_MEM_ALLOC_ERR;
    if (pitch > INT_MAX) {
        (void)platform::release(data);
        return VEXA_MEM_ALLOC_ERR;
    }
    adopt(data, width, height, static_cast<Vexa32s>(pitch), depth, channels);
    return VEXA_SUCCESS;
}

VexaStatus VexaImage::create(Vexa32s width, Vexa32s height, Vexa32s pitch, Vexa32s depth, Vexa32s channels)
{
    if (_init) return VEXA_SUCCESS;
    if (const VexaStatus failed = shapeStatus(width, height, depth, channels)) return failed;
    const long long rowBytes = pixelBytes(width, depth < 0 ? -depth : depth, channels);
    if (rowBytes > INT_MAX || pitch < 0) return VEXA_MEM_ALLOC_ERR;
    void* data = nullptr;
    if (platform::allocate(data, static_cast<std::size_t>(vexa::bufferBytes(pitch, height, rowBytes))))
        return VEXA_MEM_ALLOC_ERR;
    adopt(data, width, height, pitch, depth, channels);
    return VEXA_SUCCESS;
}

VexaStatus VexaImage::create(const VexaSize& size, Vexa32s depth, Vexa32s channels)
{
    return create(size.width, size.height, depth, channels);
}

VexaStatus VexaImage::create(Vexa32s width, Vexa32s height, VexaType type)
{
    int depth = 0;
    int channels = 0;
    getParameters(type, depth, channels);
    return create(width, height, depth, channels);
}

VexaStatus VexaImage::create(const VexaSize& size, VexaType type)
{
    return create(size.width, size.height, type);
}

VexaStatus VexaImage::release()
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    if (platform::release(_data)) return VEXA_MEMFREE_ERR;
    clear();
    return VEXA_SUCCESS;
}

Vexa32s VexaImage::width() const
{
    return _width;
}

Vexa32s VexaImage::height() const
{
    return _height;
}

VexaSize VexaImage::size() const
{
    return {_width, _height};
}

Vexa32s VexaImage::pitch() const
{
    return _pitch;
}

Vexa32s VexaImage::depth() const
{
    return _depth;
}

Vexa32s VexaImage::channels() const
{
    return _channels;
}

Vexa32s VexaImage::dataBits() const
{
    return _dataBits;
}

VexaType VexaImage::type() const
{
    return _type;
}

VexaChannelSeq VexaImage::channelSeq() const
{
    return _channelSequence;
}

bool VexaImage::isSigned() const
{
    return _signed;
}

bool VexaImage::isInitialized() const
{
    return _init;
}

void* VexaImage::ptr() const
{
    return _data;
}

template <typename T>
T* VexaImage::ptr() const
{
    return static_cast<T*>(_data);
}

template VEXA_API unsigned char* VexaImage::ptr<unsigned char>() const;
template VEXA_API unsigned short* VexaImage::ptr<unsigned short>() const;
template VEXA_API float* VexaImage::ptr<float>() const;

VexaStatus VexaImage::setDataBits(Vexa32s bits)
{
    if (bits < 0 || bits > _depth) return VEXA_INVALID_ARG_ERROR;
    _dataBits = bits;
    return VEXA_SUCCESS;
}

void VexaImage::setChannelSequence(VexaChannelSeq seq)
{
    _channelSequence = seq;
}

VexaStatus VexaImage::upload(const void* src, Vexa32s pitch)
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    return answer(platform::copyToDevice(target(_data, _pitch), source(src, pitch), extentOf(*this)),
                  VEXA_MEMCPY_H2D_ERROR);
}

VexaStatus VexaImage::upload(const void* src, Vexa32s pitch, const VexaStream& stream)
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    (void)platform::copyToDevice(target(_data, _pitch), source(src, pitch), extentOf(*this), handle(stream));
    return VEXA_SUCCESS;
}

VexaStatus VexaImage::upload(const void* src, VexaRect roi, Vexa32s pitch, VexaPoint2D<int> offset)
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    const platform::Extent2D extent = extentOf(*this, roi.width, roi.height);
    const platform::Source from = source(hostPixel(src, offsetOf(*this, pitch, roi.origin())), pitch);
    return answer(platform::copyToDevice(targetAt(*this, *this, offset, extent), from, extent), VEXA_MEMCPY_D2H_ERROR);
}

VexaStatus VexaImage::upload(const void* src, VexaRect roi, Vexa32s pitch, VexaPoint2D<int> offset,
                             const VexaStream& stream)
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    const platform::Extent2D extent = extentOf(*this, roi.width, roi.height);
    const platform::Source from = source(hostPixel(src, offsetOf(*this, pitch, roi.origin())), pitch);
    return answer(platform::copyToDevice(targetAt(*this, *this, offset, extent), from, extent, handle(stream)),
                  VEXA_MEMCPY_D2H_ERROR);
}

VexaStatus VexaImage::upload(const void* src)
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    return answer(platform::copyToDevice(_data, src, pitchedBytes(*this)), VEXA_MEMCPY_H2D_ERROR);
}

VexaStatus VexaImage::upload(const void* src, const VexaStream& /*stream*/)
{
    // The forms without a pitch use the default stream whatever they are given.
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    return answer(platform::copyToDevice(_data, src, pitchedBytes(*this), nullptr), VEXA_MEMCPY_H2D_ERROR);
}

VexaStatus VexaImage::download(void* dst, Vexa32s pitch) const
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    return answer(platform::copyToHost(target(dst, pitch), source(_data, _pitch), extentOf(*this)),
                  VEXA_MEMCPY_D2H_ERROR);
}

VexaStatus VexaImage::download(void* dst, Vexa32s pitch, const VexaStream& stream) const
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    (void)platform::copyToHost(target(dst, pitch), source(_data, _pitch), extentOf(*this), handle(stream));
    return VEXA_SUCCESS;
}

VexaStatus VexaImage::download(void* dst, VexaPoint2D<int> offset, Vexa32s pitch, VexaRect roi) const
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    const platform::Extent2D extent = extentOf(*this, roi.width, roi.height);
    const platform::Target to = target(hostPixel(dst, offsetOf(*this, pitch, offset)), pitch);
    return answer(platform::copyToHost(to, sourceAt(*this, roi.origin(), extent), extent), VEXA_MEMCPY_D2H_ERROR);
}

VexaStatus VexaImage::download(void* dst, VexaPoint2D<int> offset, Vexa32s pitch, VexaRect roi,
                               const VexaStream& stream) const
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    const platform::Extent2D extent = extentOf(*this, roi.width, roi.height);
    const platform::Target to = target(hostPixel(dst, offsetOf(*this, pitch, offset)), pitch);
    return answer(platform::copyToHost(to, sourceAt(*this, roi.origin(), extent), extent, handle(stream)),
                  VEXA_MEMCPY_D2H_ERROR);
}

VexaStatus VexaImage::download(void* dst) const
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    return answer(platform::copyToHost(dst, _data, pitchedBytes(*this)), VEXA_MEMCPY_H2D_ERROR);
}

VexaStatus VexaImage::download(void* dst, const VexaStream& /*stream*/) const
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    return answer(platform::copyToHost(dst, _data, pitchedBytes(*this), nullptr), VEXA_MEMCPY_H2D_ERROR);
}

VexaStatus VexaImage::copyTo(VexaImage& dst, VexaPoint2D<int> dstOffset, VexaRect srcRoi,
                             const VexaStream& stream) const
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    if (!dst._init) (void)dst.create(srcRoi.width, srcRoi.height, _type);
    // Offsets of both images count this image's pixels; the formats are not compared.
    const platform::Extent2D extent = extentOf(*this, srcRoi.width, srcRoi.height);
    return answer(platform::copyOnDevice(targetAt(dst, *this, dstOffset, extent),
                                         sourceAt(*this, srcRoi.origin(), extent), extent, handle(stream)),
                  VEXA_MEMCPY_D2H_ERROR);
}

namespace {

/// One element of any format, as its bytes.
union Element {
    signed char s8;
    unsigned char u8;
    short s16;
    unsigned short u16;
    int s32;
    float f32;
    double f64;
};

Vexa64f toDouble(const Element& element, Vexa32s depth, bool isSigned)
{
    switch (depth) {
        case 8:
            return isSigned ? element.s8 : element.u8;
        case 16:
            return isSigned ? element.s16 : element.u16;
        case 32:
            return isSigned ? static_cast<Vexa64f>(element.s32) : static_cast<Vexa64f>(element.f32);
        case 64:
            return element.f64;
        default:
            return 0.0;
    }
}

template <typename T>
T saturated(Vexa64f value)
{
    return __vexaSaturate<Vexa64f, T>(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
}

/// False for a depth that has no elements.
bool fromDouble(Element& element, Vexa32s depth, bool isSigned, Vexa64f value)
{
    switch (depth) {
        case 8:
            if (isSigned)
                element.s8 = saturated<signed char>(value);
            else
                element.u8 = saturated<unsigned char>(value);
            return true;
        case 16:
            if (isSigned)
                element.s16 = saturated<short>(value);
            else
                element.u16 = saturated<unsigned short>(value);
            return true;
        case 32:
            if (isSigned)
                element.s32 = saturated<int>(value);
            else
                element.f32 = static_cast<float>(value);
            return true;
        case 64:
            element.f64 = value;
            return true;
        default:
            return false;
    }
}

bool contains(const VexaImage& image, Vexa32s x, Vexa32s y)
{
    return x >= 0 && y >= 0 && x < image.width() && y < image.height();
}

bool contains(const VexaImage& image, Vexa32s x, Vexa32s y, Vexa32s channel)
{
    return contains(image, x, y) && channel >= 0 && channel < image.channels();
}

char* elementAt(const VexaImage& image, Vexa32s x, Vexa32s y, Vexa32s channel)
{
    const long long bytes = offsetOf(image, image.pitch(), {x, y}) + pixelBytes(channel, image.depth(), 1);
    return static_cast<char*>(image.ptr()) + bytes;
}

}  // namespace

Vexa64f VexaImage::get(Vexa32s x, Vexa32s y, Vexa32s channel) const
{
    Element element = {};
    if (!contains(*this, x, y, channel) || static_cast<std::size_t>(_depth) > 8 * sizeof element) return 0.0;
    (void)platform::copyToHost(&element, elementAt(*this, x, y, channel), static_cast<std::size_t>(_depth) / 8);
    return toDouble(element, _depth, _signed);
}

VexaScalar VexaImage::get(Vexa32s x, Vexa32s y) const
{
    VexaScalar pixel;
    for (Vexa32s channel = 0; channel < _channels; ++channel) pixel[channel] = get(x, y, channel);
    return pixel;
}

VexaStatus VexaImage::set(Vexa32s x, Vexa32s y, Vexa32s channel, Vexa64f value)
{
    if (!contains(*this, x, y, channel)) return VEXA_INVALID_ARG_ERROR;
    Element element = {};
    if (!fromDouble(element, _depth, _signed, value)) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    (void)platform::copyToDevice(elementAt(*this, x, y, channel), &element, static_cast<std::size_t>(_depth) / 8);
    return VEXA_SUCCESS;
}

VexaStatus VexaImage::set(Vexa32s x, Vexa32s y, const VexaScalar& values)
{
    if (!contains(*this, x, y)) return VEXA_INVALID_ARG_ERROR;
    for (Vexa32s channel = 0; channel < _channels; ++channel) (void)set(x, y, channel, values[channel]);
    return VEXA_SUCCESS;
}

VexaStatus VexaImage::convertTo(VexaImage& dst, VexaType type, Vexa32f scale, Vexa32f offset, const VexaStream& stream)
{
    if (!_init) return VEXA_IMAGE_NOT_INITIALIZED;
    if (dst._init && dst._type == type) return vexa::dataExchange::convertScale(*this, dst, scale, offset, stream);
    int depth = 0;
    int channels = 0;
    getParameters(type, depth, channels);
    if (channels != _channels) return VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
    if (&dst == this) return convertInPlace(depth, scale, offset, stream);
    (void)dst.release();
    (void)dst.create(size(), depth, channels);
    return vexa::dataExchange::convertScale(*this, dst, scale, offset, stream);
}

/// Converts a deep copy of this image into itself, made anew with another depth.
VexaStatus VexaImage::convertInPlace(Vexa32s depth, Vexa32f scale, Vexa32f offset, const VexaStream& stream)
{
    const VexaImage before(*this);
    if (!before._init) return VEXA_IMAGE_NOT_INITIALIZED;
    (void)release();
    (void)create(before.size(), depth, before._channels);
    _channelSequence = before._channelSequence;
    (void)setDataBits(before._dataBits);
    return vexa::dataExchange::convertScale(before, *this, scale, offset, stream);
}

VexaStatus VexaImage::convertTo(VexaImage& dst, Vexa32s depth, Vexa32f scale, Vexa32f offset, const VexaStream& stream)
{
    const VexaType type = getType(depth, _channels, depth < 0);
    if (type == VEXA_NO_TYPE) return VEXA_DEPTH_NOT_SUPPORTED_ERROR;
    return convertTo(dst, type, scale, offset, stream);
}

VexaImage VexaImage::operator[](Vexa32s channel) const
{
    VexaImage result;
    (void)vexa::dataExchange::getChannel(*this, result, channel);
    return result;
}

VexaStatus VexaImage::show(const std::string& /*name*/, Vexa32s /*wait*/) const
{
    return VEXA_SUCCESS;
}
