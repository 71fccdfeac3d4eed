/// @file
/// Copies and fills of the host platform. All are done when they return, those on a stream too.

#include <cstring>
#include <limits>

#include "fault.h"
#include "memory.h"
#include "parallel.h"
#include "platform.h"

namespace vexa::platform {
namespace {

/// The largest pitch that the device side of the library accepts.
constexpr std::size_t largestPitch = std::numeric_limits<int>::max();

/// Bytes from the first byte of the first row to the last byte of the last.
std::size_t span(std::size_t pitch, Extent2D extent)
{
    return pitch * (extent.rows - 1) + extent.rowBytes;
}

bool isEmpty(Extent2D extent)
{
    return extent.rowBytes == 0 || extent.rows == 0;
}

template <typename Byte>
bool fits(Rows<Byte> rows, Extent2D extent)
{
    return rows.first != nullptr && rows.pitch <= largestPitch && extent.rowBytes <= rows.pitch &&
           extent.rows <= std::numeric_limits<std::size_t>::max() / 2 / (rows.pitch + 1);
}

template <typename Byte>
bool fitsAllocation(Rows<Byte> rows, Extent2D extent)
{
    return fits(rows, extent) && isInsideAllocation(rows.first, span(rows.pitch, extent));
}

void copy(Target to, Source from, Extent2D extent)
{
    const auto copyRows = [=](std::size_t begin, std::size_t end) {
        for (std::size_t y = begin; y < end; ++y)
            std::memmove(static_cast<char*>(to.first) + y * to.pitch,
                         static_cast<const char*>(from.first) + y * from.pitch, extent.rowBytes);
    };
    parallelRanges(extent.rows, extent.rowBytes, copyRows);
}

/// A run of bytes as one row.
Extent2D oneRow(std::size_t bytes)
{
    return {bytes, 1};
}

bool isRun(const void* device, const void* host, std::size_t bytes)
{
    return host != nullptr && device != nullptr && isInsideAllocation(device, bytes);
}

}  // namespace

VexaStatus copyToDevice(void* device, const void* host, std::size_t bytes)
{
    if (fault::strikes(fault::Call::copyToDevice)) return VEXA_MEMCPY_H2D_ERROR;
    if (bytes == 0) return VEXA_SUCCESS;
    if (!isRun(device, host, bytes)) return VEXA_MEMCPY_H2D_ERROR;
    copy({device, bytes}, {host, bytes}, oneRow(bytes));
    return VEXA_SUCCESS;
}

VexaStatus copyToDevice(void* device, const void* host, std::size_t bytes, Stream /*stream*/)
{
    return copyToDevice(device, host, bytes);
}

VexaStatus copyToDevice(Target device, Source host, Extent2D extent)
{
    if (fault::strikes(fault::Call::copyToDevice)) return VEXA_MEMCPY_H2D_ERROR;
    if (isEmpty(extent)) return VEXA_SUCCESS;
    if (!fits(host, extent) || !fitsAllocation(device, extent)) return VEXA_MEMCPY_H2D_ERROR;
    copy(device, host, extent);
    return VEXA_SUCCESS;
}

VexaStatus copyToDevice(Target device, Source host, Extent2D extent, Stream /*stream*/)
{
    return copyToDevice(device, host, extent);
}

VexaStatus copyToHost(void* host, const void* device, std::size_t bytes)
{
    if (fault::strikes(fault::Call::copyToHost)) return VEXA_MEMCPY_D2H_ERROR;
    if (bytes == 0) return VEXA_SUCCESS;
    if (!isRun(device, host, bytes)) return VEXA_MEMCPY_D2H_ERROR;
    copy({host, bytes}, {device, bytes}, oneRow(bytes));
    return VEXA_SUCCESS;
}

VexaStatus copyToHost(void* host, const void* device, std::size_t bytes, Stream /*stream*/)
{
    return copyToHost(host, device, bytes);
}

VexaStatus copyToHost(Target host, Source device, Extent2D extent)
{
    if (fault::strikes(fault::Call::copyToHost)) return VEXA_MEMCPY_D2H_ERROR;
    if (isEmpty(extent)) return VEXA_SUCCESS;
    if (!fits(host, extent) || !fitsAllocation(device, extent)) return VEXA_MEMCPY_D2H_ERROR;
    copy(host, device, extent);
    return VEXA_SUCCESS;
}

VexaStatus copyToHost(Target host, Source device, Extent2D extent, Stream /*stream*/)
{
    return copyToHost(host, device, extent);
}

VexaStatus copyOnDevice(Target to, Source from, Extent2D extent)
{
    if (fault::strikes(fault::Call::copyOnDevice)) return VEXA_MEMCPY_D2D_ERROR;
    if (isEmpty(extent)) return VEXA_SUCCESS;
    if (!fitsAllocation(to, extent) || !fitsAllocation(from, extent)) return VEXA_MEMCPY_D2D_ERROR;
    copy(to, from, extent);
    return VEXA_SUCCESS;
}

VexaStatus copyOnDevice(Target to, Source from, Extent2D extent, Stream /*stream*/)
{
    return copyOnDevice(to, from, extent);
}

VexaStatus setBytes(Target device, unsigned char value, Extent2D extent, Stream /*stream*/)
{
    if (fault::strikes(fault::Call::setBytes)) return VEXA_MEMSET_ERR;
    if (isEmpty(extent)) return VEXA_SUCCESS;
    if (!fitsAllocation(device, extent)) return VEXA_MEMSET_ERR;
    const auto setRows = [=](std::size_t begin, std::size_t end) {
        for (std::size_t y = begin; y < end; ++y)
            std::memset(static_cast<char*>(device.first) + y * device.pitch, value, extent.rowBytes);
    };
    parallelRanges(extent.rows, extent.rowBytes, setRows);
    return VEXA_SUCCESS;
}

}  // namespace vexa::platform
