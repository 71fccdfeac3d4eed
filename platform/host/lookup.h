/// @file
/// Bytes by tables of all their values. Compilers make no vector code of such a loop, but processors that permute bytes
/// across a whole register look up 64 of them at a time.

#pragma once

#include <cstddef>

namespace vexa::platform {

/// Whether the processor permutes the bytes of a register of 64 (AVX-512 VBMI).
bool permutesBytes();

/// N tables, which serve the bytes of a row in turn.
template <int N>
struct ByteTables {
    alignas(64) unsigned char value[N][256];
};

/// to[i] = tables[i % N][from[i]], for N 1 or 3. `to` may be `from`.
template <int N>
void lookUp(const ByteTables<N>& tables, const unsigned char* from, unsigned char* to, std::size_t count);

}  // namespace vexa::platform
