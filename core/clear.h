/// @file
/// Clearing of records that are destroyed.

#pragma once

namespace vexa {

/// Clears a field of an object that is about to die. A plain store would be dropped, as nothing may read it.
template <typename T>
void clear(T& field)
{
    static_cast<volatile T&>(field) = T();
}

}  // namespace vexa
