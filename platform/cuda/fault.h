/// @file
/// Fault injection, which the portable primitives ask on every platform: on a GPU nothing is made to fail.

#pragma once

namespace vexa::platform::fault {

enum class Call { scratchSize, statistic, resize, warp, transpose };

inline bool strikes(Call /*call*/)
{
    return false;
}

}  // namespace vexa::platform::fault
