/// @file
/// The order of channels as a template parameter: which slot of a pixel holds red and which blue.

#pragma once

#include <type_traits>

#include "kernels.h"
#include "vexaDefs.h"

namespace vexa {

template <VexaChannelSeq seq>
using Sequence = std::integral_constant<VexaChannelSeq, seq>;

/// The sequences that an operation has kernels for.
template <VexaChannelSeq... seq>
struct Sequences {};

using ColorSequences = Sequences<VEXA_CHANNEL_SEQ_RGB, VEXA_CHANNEL_SEQ_BGR>;
using AlphaSequences = Sequences<VEXA_CHANNEL_SEQ_BGRA, VEXA_CHANNEL_SEQ_RGBA>;

/// Calls work(Sequence) for a sequence that is served. Any other does nothing, which is no failure.
template <VexaChannelSeq... served, typename Work>
VexaStatus withSequence(VexaChannelSeq seq, Sequences<served...>, const Work& work)
{
    (void)((seq == served ? (work(Sequence<served>{}), true) : false) || ...);
    return VEXA_SUCCESS;
}

template <VexaChannelSeq seq>
inline constexpr int redSlot = seq == VEXA_CHANNEL_SEQ_RGB || seq == VEXA_CHANNEL_SEQ_RGBA ? 0 : 2;
inline constexpr int greenSlot = 1;
template <VexaChannelSeq seq>
inline constexpr int blueSlot = 2 - redSlot<seq>;

/// A colour by its primaries, whatever the order that they are stored in.
template <typename T>
struct Color {
    T red;
    T green;
    T blue;
};

template <VexaChannelSeq seq, typename T, int N>
VEXA_DEVICE Color<T> colorOf(Pixel<T, N> pixel)
{
    return {pixel.element[redSlot<seq>], pixel.element[greenSlot], pixel.element[blueSlot<seq>]};
}

template <VexaChannelSeq seq, typename T>
VEXA_DEVICE Pixel<T, 3> pixelOf(Color<T> color)
{
    if constexpr (redSlot<seq> == 0)
        return {{color.red, color.green, color.blue}};
    else
        return {{color.blue, color.green, color.red}};
}

}  // namespace vexa
