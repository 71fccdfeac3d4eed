/// @file
/// vexa::device: the devices of the machine. On a library built for the CPU the processor is the one device.

#pragma once

#include "vexaDefs.h"

namespace vexa {
namespace device {

/// The number of the current device, -1 without a usable one.
VEXA_API int getCurentDevice();

/// How many devices there are.
VEXA_API int getDeviceCount();

/// Fills the record; from zeros if the device can't be asked. `coresPerMultiProcessor` is written for compute
/// capabilities 1 to 3 only and otherwise left as the caller had it; `totalCores` is computed from it either way.
/// `reserved` is never written.
/// @return always VEXA_SUCCESS
VEXA_API VexaStatus getDeviceProperties(int device, VexaDeviceProperties& properties);

/// @return VEXA_INVALID_DEVICE_ERROR
VEXA_API VexaStatus setCurrentDevice(int device);

/// On a GPU all its memory is gone afterwards.
/// @return always VEXA_SUCCESS
VEXA_API VexaStatus resetCurrentDevice();

/// Waits until the device has done all queued work.
/// @return VEXA_UNKNOWN_ERROR if the work failed
VEXA_API VexaStatus syncCurrentDevice();

}  // namespace device
}  // namespace vexa
