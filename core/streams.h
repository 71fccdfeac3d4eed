/// @file
/// The stream of a call, as the platform takes it.

#pragma once

#include "platform.h"
#include "vexaCore.h"

namespace vexa {

/// The stream handle that platform calls and launches take.
inline platform::Stream handle(const VexaStream& stream)
{
    return static_cast<platform::Stream>(stream.ptr());
}

}  // namespace vexa
