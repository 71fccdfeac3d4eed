/// @file
/// ITU-R BT.601 in studio range for 8-bit colours, in integers with 8 fractional bits.

#pragma once

#include "sequence.h"

namespace vexa {

VEXA_DEVICE int bounded(int value)
{
    const int notAbove = value > 255 ? 255 : value;
    return notAbove < 0 ? 0 : notAbove;
}

VEXA_DEVICE u8 lumaOf(Color<int> c)
{
    return static_cast<u8>(bounded(((66 * c.red + 129 * c.green + 25 * c.blue + 128) >> 8) + 16));
}

VEXA_DEVICE u8 blueDifferenceOf(Color<int> c)
{
    return static_cast<u8>(bounded(((-38 * c.red - 74 * c.green + 112 * c.blue + 128) >> 8) + 128));
}

VEXA_DEVICE u8 redDifferenceOf(Color<int> c)
{
    return static_cast<u8>(bounded(((112 * c.red - 94 * c.green - 18 * c.blue + 128) >> 8) + 128));
}

/// A colour of bytes, for arithmetic.
VEXA_DEVICE Color<int> widened(Color<u8> c)
{
    return {c.red, c.green, c.blue};
}

}  // namespace vexa
