/// @file
/// The processor as the one device of the host platform. Its work is done when a call returns, so streams are names
/// only.

#include <sys/sysinfo.h>

#include <cstdio>
#include <thread>

#include "fault.h"
#include "memory.h"
#include "platform.h"

namespace vexa::platform {

VexaStatus createStream(Stream& stream)
{
    if (fault::strikes(fault::Call::createStream)) return VEXA_STREAM_CREATE_ERROR;
    static char anyStream;
    stream = reinterpret_cast<Stream>(&anyStream);
    return VEXA_SUCCESS;
}

VexaStatus destroyStream(Stream stream)
{
    if (fault::strikes(fault::Call::destroyStream) || stream == nullptr) return VEXA_STREAM_DESTROY_ERROR;
    return VEXA_SUCCESS;
}

VexaStatus synchronize(Stream /*stream*/)
{
    return fault::strikes(fault::Call::synchronize) ? VEXA_UNKNOWN_ERROR : VEXA_SUCCESS;
}

bool finished(Stream /*stream*/)
{
    return true;
}

int currentDevice()
{
    return fault::strikes(fault::Call::currentDevice) ? -1 : 0;
}

int deviceCount()
{
    return fault::strikes(fault::Call::deviceCount) ? 0 : 1;
}

Device describeDevice(int device)
{
    Device described;
    if (device != 0 || fault::strikes(fault::Call::describeDevice)) return described;
    VexaDeviceProperties& properties = described.properties;
    const unsigned cores = std::thread::hardware_concurrency();
    std::snprintf(properties.name, sizeof properties.name, "CPU, %u threads", cores);
    properties.multiProcessorCount = static_cast<int>(cores);
    properties.textureAlignment = 512;
    struct sysinfo memory = {};
    if (sysinfo(&memory) == 0)
        properties.totalGlobalMem = static_cast<unsigned long long>(memory.totalram) * memory.mem_unit;
    return described;
}

VexaStatus selectDevice(int device)
{
    return device == 0 ? VEXA_SUCCESS : VEXA_INVALID_DEVICE_ERROR;
}

void resetDevice() {}

VexaStatus synchronizeDevice()
{
    return fault::strikes(fault::Call::synchronizeDevice) ? VEXA_UNKNOWN_ERROR : VEXA_SUCCESS;
}

PendingError pendingError()
{
    if (fault::strikes(fault::Call::pendingError)) return {1, "an injected fault"};
    return hasRefusedRelease() ? PendingError{1, "invalid argument"} : PendingError{0, "no error"};
}

}  // namespace vexa::platform
