/// @file
/// How many bytes the buffer of an image holds. Kept apart, as the allocation and the clipping of kernels must agree.

#pragma once

#include <algorithm>

namespace vexa {

/// Bytes from the first row to the end of the last. A row may be longer than the pitch; then the last one needs room
/// behind the rows that the pitch counts.
constexpr long long bufferBytes(long long pitch, long long height, long long rowBytes)
{
    return pitch * (height - 1) + std::max(pitch, rowBytes);
}

}  // namespace vexa
