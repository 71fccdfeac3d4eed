/// @file
/// Linear maps of pixels of three integers. Compilers take such pixels apart by many shuffles and bound the results as
/// floats; processors that permute bytes and saturate as they pack do without either, in half of the time.

#pragma once

#include <cstddef>

namespace vexa::platform {

/// For each slot of the result the weights of slots 0, 1 and 2, and an offset.
using MixRows = float[3][4];

/// Whether mixRow serves this processor and these weights: results must fit an integer of 32 bits before they are
/// bounded.
bool mixesRows(const MixRows& rows, float highestElement);

/// Each slot w1 * s1, then + w0 * s0 and + w2 * s2, both fused, then + offset; bounded to 0..highest and truncated.
/// `to` may be `from`. For T of 8 and 16 bits.
template <typename T>
void mixRow(const MixRows& rows, T highest, const T* from, T* to, std::size_t pixels);

}  // namespace vexa::platform
