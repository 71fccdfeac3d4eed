/// @file
/// The checks of the call frame. An operation states them one a line, in its own order.

#pragma once

#include <initializer_list>

#include "vexaCore.h"

namespace vexa {

/// Every image must be initialised, else VEXA_IMAGE_NOT_INITIALIZED.
template <typename... Image>
[[nodiscard]] VexaStatus initialized(const Image&... images)
{
    return (images.isInitialized() && ...) ? VEXA_SUCCESS : VEXA_IMAGE_NOT_INITIALIZED;
}

/// Source and destination must be two objects, else VEXA_INPLACE_OP_NOT_SUPPORTED.
[[nodiscard]] inline VexaStatus notInPlace(const VexaImage& src, const VexaImage& dst)
{
    return &src == &dst ? VEXA_INPLACE_OP_NOT_SUPPORTED : VEXA_SUCCESS;
}

/// Else VEXA_CHANNEL_NOT_SUPPORTED_ERROR.
[[nodiscard]] inline VexaStatus hasThreeChannels(const VexaImage& image)
{
    return image.channels() == 3 ? VEXA_SUCCESS : VEXA_CHANNEL_NOT_SUPPORTED_ERROR;
}

/// One property in which an image must agree with a model, and the status if it doesn't.
struct Comparison {
    bool (*agree)(const VexaImage& image, const VexaImage& model);
    VexaStatus status = VEXA_NOT_SUPPORTED_MODE_ERROR;

    constexpr Comparison giving(VexaStatus other) const { return {agree, other}; }
};

namespace same {

inline constexpr Comparison width{[](const VexaImage& a, const VexaImage& b) { return a.width() == b.width(); }};
inline constexpr Comparison height{[](const VexaImage& a, const VexaImage& b) { return a.height() == b.height(); }};
inline constexpr Comparison depth{[](const VexaImage& a, const VexaImage& b) { return a.depth() == b.depth(); }};
inline constexpr Comparison channels{
    [](const VexaImage& a, const VexaImage& b) { return a.channels() == b.channels(); }};
inline constexpr Comparison type{[](const VexaImage& a, const VexaImage& b) { return a.type() == b.type(); }};

}  // namespace same

/// The image has 1 or 3 channels of 32-bit floats, whatever the model.
inline constexpr Comparison isFloat{[](const VexaImage& image, const VexaImage& /*model*/) {
    return image.type() == VEXA_32FC1 || image.type() == VEXA_32FC3;
}};

/// The image must agree with the model in all these properties, compared in this order.
[[nodiscard]] inline VexaStatus match(const VexaImage& image, const VexaImage& model,
                                      std::initializer_list<Comparison> comparisons)
{
    for (const Comparison& comparison : comparisons)
        if (!comparison.agree(image, model)) return comparison.status;
    return VEXA_SUCCESS;
}

/// A destination that is initialised must match the model. An empty one is created, by the arguments of a create().
/// The status of that is dropped: a destination that could not be made is null, and null images are not launched on.
template <typename... Shape>
[[nodiscard]] VexaStatus matchOrCreate(VexaImage& dst, const VexaImage& model,
                                       std::initializer_list<Comparison> comparisons, const Shape&... shape)
{
    if (dst.isInitialized()) return match(dst, model, comparisons);
    (void)dst.create(shape...);
    return VEXA_SUCCESS;
}

/// matchOrCreate for a destination like its source.
[[nodiscard]] inline VexaStatus matchOrCreateLike(VexaImage& dst, const VexaImage& src)
{
    return matchOrCreate(dst, src, {same::width, same::height, same::channels, same::depth}, src.size(), src.type());
}

}  // namespace vexa
