/// @file
/// What the library knows of an element type: its depth, its range, whether stores saturate, and the pixel formats
/// made of it.

#pragma once

#include "target.h"

namespace vexa {

template <typename T>
struct Element;

template <>
struct Element<u8> {
    static constexpr int min = 0;
    static constexpr int max = 255;
    static constexpr bool saturates = true;
    static constexpr VexaType oneChannel = VEXA_8UC1;
};

template <>
struct Element<u16> {
    static constexpr int min = 0;
    static constexpr int max = 65535;
    static constexpr bool saturates = true;
    static constexpr VexaType oneChannel = VEXA_16UC1;
};

/// Float stores take every value as it is, so the range has no meaning.
template <>
struct Element<f32> {
    static constexpr int min = 0;
    static constexpr int max = 0;
    static constexpr bool saturates = false;
    static constexpr VexaType oneChannel = VEXA_32FC1;
};

/// The pixel format of C elements of type T.
template <typename T, int C>
inline constexpr VexaType formatOf = static_cast<VexaType>(Element<T>::oneChannel + C - 1);

}  // namespace vexa
