/// @file
/// Integers whose arithmetic stays as wide as they are. C++ widens sums of short integers to 32 bits, which halves what
/// a vector register holds of them.

#pragma once

#include <type_traits>

#include "target.h"

namespace vexa {

/// An integer of type S; what does not fit wraps.
template <typename S>
struct Narrow {
    S value;

    Narrow() = default;
    VEXA_DEVICE explicit Narrow(int value) : value(static_cast<S>(value)) {}
    Narrow(const Narrow&) = default;
    // Of the value: GCC makes no vector code of copies of a class.
    VEXA_DEVICE Narrow& operator=(const Narrow& other)
    {
        value = other.value;
        return *this;
    }
};

template <typename S>
VEXA_DEVICE Narrow<S> operator+(Narrow<S> a, Narrow<S> b)
{
    return Narrow<S>(a.value + b.value);
}

template <typename S>
VEXA_DEVICE Narrow<S> operator-(Narrow<S> a, Narrow<S> b)
{
    return Narrow<S>(a.value - b.value);
}

template <typename S>
VEXA_DEVICE Narrow<S> operator*(int factor, Narrow<S> a)
{
    return Narrow<S>(factor * a.value);
}

/// Rounds toward minus infinity.
template <typename S>
VEXA_DEVICE Narrow<S> operator>>(Narrow<S> a, int bits)
{
    return Narrow<S>(a.value >> bits);
}

template <typename S>
VEXA_DEVICE bool operator<(Narrow<S> a, Narrow<S> b)
{
    return a.value < b.value;
}

/// condition ? a : b. GCC turns that into a choice of addresses, which is no vector code.
template <typename S>
VEXA_DEVICE Narrow<S> choose(bool condition, Narrow<S> a, Narrow<S> b)
{
    return Narrow<S>(condition ? a.value : b.value);
}

template <typename S>
VEXA_DEVICE Narrow<S> smaller(Narrow<S> a, Narrow<S> b)
{
    return choose(b < a, b, a);
}

template <typename S>
VEXA_DEVICE Narrow<S> larger(Narrow<S> a, Narrow<S> b)
{
    return choose(a < b, b, a);
}

template <typename S>
VEXA_DEVICE Narrow<S> distance(Narrow<S> a, Narrow<S> b)
{
    return larger(a, b) - smaller(a, b);
}

/// Twice as wide as an element, and signed: holds sums of elements of up to 128 times the largest.
template <typename T>
using Sum = Narrow<std::conditional_t<sizeof(T) == 1, short, int>>;

}  // namespace vexa
