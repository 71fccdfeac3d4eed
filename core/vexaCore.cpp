/// @file
/// Streams, the timer and the devices.

#include "vexaCore.h"

#include <sys/time.h>

#include <atomic>

#include "platform.h"
#include "vexaDevice.h"

namespace platform = vexa::platform;

namespace {

/// The number of the next created stream.
std::atomic<Vexa32s> stream_count{1};

platform::Stream handle(void* stream)
{
    return static_cast<platform::Stream>(stream);
}

}  // namespace

VexaStream::VexaStream(bool create) : _stream(nullptr), _init(false), _isDefault(true), _id(0)
{
    if (create)
        this->create();
    else
        _init = true;
}

VexaStream::~VexaStream()
{
    destroy();
}

void VexaStream::create()
{
    if (_init) return;
    // The new handle is left behind and _stream stays null on purpose: all work runs on the default stream, in the
    // order of the calls.
    platform::Stream created = handle(_stream);
    _init = platform::createStream(created) == VEXA_SUCCESS;
    if (!_init) return;
    _isDefault = false;
    _id = stream_count++;
}

void VexaStream::destroy()
{
    if (_isDefault) return;
    if (_init) _init = platform::destroyStream(handle(_stream)) != VEXA_SUCCESS;
    if (!_init) --stream_count;
}

void* VexaStream::ptr() const
{
    return _isDefault ? nullptr : _stream;
}

void VexaStream::sync() const
{
    (void)platform::synchronize(handle(_stream));
}

bool VexaStream::finished() const
{
    return platform::finished(handle(_stream));
}

bool VexaStream::isDefault() const
{
    return _isDefault;
}

Vexa32s VexaStream::id() const
{
    return _id;
}

VexaTimer::TimeStamp VexaTimer::now()
{
    timeval time = {};
    gettimeofday(&time, nullptr);
    TimeStamp stamp;
    stamp.seconds = time.tv_sec;
    stamp.microseconds = time.tv_usec;
    return stamp;
}

void VexaTimer::Start()
{
    _start = now();
}

void VexaTimer::Stop()
{
    _stop = now();
}

void VexaTimer::Reset() {}

Vexa64f VexaTimer::GetElapsedTime()
{
    return static_cast<Vexa64f>(_stop.seconds - _start.seconds) +
           static_cast<Vexa64f>(_stop.microseconds - _start.microseconds) / 1000000.0;
}

namespace vexa::device {
namespace {

/// Cores of a multiprocessor; `unknown` for all but the first capabilities.
int coresPerMultiProcessor(int major, int minor, int unknown)
{
    switch (major) {
        case 1:
            return 8;
        case 2:
            return minor == 0 ? 32 : 48;
        case 3:
            return 192;
        default:
            return unknown;
    }
}

}  // namespace

int getCurentDevice()
{
    return platform::currentDevice();
}

int getDeviceCount()
{
    return platform::deviceCount();
}

VexaStatus getDeviceProperties(int device, VexaDeviceProperties& properties)
{
    const platform::Device described = platform::describeDevice(device);
    const VexaDeviceProperties before = properties;
    properties = described.properties;
    properties.reserved = before.reserved;
    properties.coresPerMultiProcessor =
        coresPerMultiProcessor(described.major, described.minor, before.coresPerMultiProcessor);
    // Unsigned, as whatever the caller had in the record may overflow.
    properties.totalCores = static_cast<int>(static_cast<unsigned>(properties.multiProcessorCount) *
                                             static_cast<unsigned>(properties.coresPerMultiProcessor));
    properties.computeCapability = static_cast<float>(described.major) + static_cast<float>(described.minor) / 10.0F;
    return VEXA_SUCCESS;
}

VexaStatus setCurrentDevice(int device)
{
    return platform::selectDevice(device);
}

VexaStatus resetCurrentDevice()
{
    platform::resetDevice();
    return VEXA_SUCCESS;
}

VexaStatus syncCurrentDevice()
{
    return platform::synchronizeDevice();
}

}  // namespace vexa::device
