/// @file
/// Moving single pixels on the host. Three elements move as four where the fourth may be read and is overwritten later:
/// one load and store of a register instead of three. An image may be sampled into itself, so they may overlap.

#pragma once

#include <cstring>

namespace vexa::detail {

template <int C, typename T>
inline void copyPixel(T* to, const T* from)
{
    std::memmove(to, from, C * sizeof(T));
}

/// Elements that copyWide moves.
template <int C>
inline constexpr int wideElements = C == 3 ? 4 : C;

template <int C, typename T>
inline void copyWide(T* to, const T* from)
{
    std::memmove(to, from, wideElements<C> * sizeof(T));
}

}  // namespace vexa::detail
