/// @file
/// Fault injection for tests of the host platform: makes one later call of the seam fail, as a device would.

#pragma once

namespace vexa::platform::fault {

enum class Call {
    allocate,
    release,
    allocatePinned,
    pin,
    copyToDevice,
    copyToHost,
    copyOnDevice,
    setBytes,
    uniform,
    createStream,
    destroyStream,
    synchronize,
    describeDevice,
    currentDevice,
    deviceCount,
    synchronizeDevice,
    pendingError,
    scratchSize,
    statistic,
    resize,
    warp,
    transpose,
    fourierForward,
    luFactor,
    luInvert,
    count
};

/// The n-th call of this kind from now on fails, the first for n = 1, and no other.
void arm(Call call, int n = 1);

/// Nothing fails any more.
void disarm();

/// Whether the call that asks is the one to fail. Asked once by each call of the seam.
bool strikes(Call call);

}  // namespace vexa::platform::fault
