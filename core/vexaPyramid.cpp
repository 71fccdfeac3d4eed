/// @file
/// VexaPyramid. Statuses of the operations on levels are dropped: levels may have no pixels.

#include "vexaPyramid.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "halve.h"

using namespace vexa;

namespace {

/// What stands for a level that does not exist.
VexaImage _null_image_;

/// A side of the next level. One that no integer holds has no pixels either.
Vexa32s scaled(Vexa32s side, Vexa32f scale)
{
    constexpr Vexa32f limit = 2147483648.0F;
    const Vexa32f product = static_cast<Vexa32f>(side) * scale;
    return std::abs(product) < limit ? static_cast<Vexa32s>(product) : 0;
}

/// visit(level, size) for every level from the source on.
template <typename Visit>
void forEachLevel(VexaSize size, Vexa32s levels, Vexa32f scale, const Visit& visit)
{
    for (Vexa32s i = 0; i < levels; ++i) {
        visit(scale < 1 ? i : levels - 1 - i, size);
        size = {scaled(size.width, scale), scaled(size.height, scale)};
    }
}

/// The filtered image.
VexaImage filtered(const VexaImage& src, const VexaFilter& filter)
{
    VexaImage dst(src.size(), src.type());
    // Black if refused, rather than memory that nothing wrote.
    if (imageFiltering::imageFilter(src, dst, filter)) (void)dst.set(0.0);
    return dst;
}

/// The image at another size.
VexaImage resized(const VexaImage& src, const VexaSize& size, VexaInterpolationType interpolation)
{
    VexaImage dst(size, src.type());
    if (geometryTransforms::resize(src, dst, interpolation)) (void)dst.set(0.0);
    return dst;
}

bool isInterpolation(VexaInterpolationType type)
{
    return type == VEXA_INTER_NEAREST || type == VEXA_INTER_LINEAR || type == VEXA_INTER_CUBIC;
}

/// Filters, then shrinks.
void reduce(const VexaImage& src, VexaImage& dst, const VexaFilter& filter, VexaInterpolationType interpolation)
{
    if (isInterpolation(interpolation) && filterToHalf(src, dst, filter)) return;
    (void)geometryTransforms::resize(filtered(src, filter), dst, interpolation);
}

void subtractFrom(VexaImage& image, const VexaImage& other)
{
    (void)arithmeticLogical::subtract(image, other, image);
}

/// The levels of a Gaussian pyramid whose first level is the source.
void gaussianDownwards(VexaImage* level, Vexa32s levels, const VexaFilter& filter, VexaInterpolationType interpolation)
{
    for (Vexa32s i = 1; i < levels; ++i) reduce(level[i - 1], level[i], filter, interpolation);
}

/// The levels of a Gaussian pyramid whose last level is the source.
void gaussianUpwards(VexaImage* level, Vexa32s levels, const VexaFilter& filter, VexaInterpolationType interpolation)
{
    for (Vexa32s i = levels - 2; i >= 0; --i)
        (void)imageFiltering::imageFilter(resized(level[i + 1], level[i].size(), interpolation), level[i], filter);
}

/// The band-pass levels of a pyramid whose first level is the source.
void differencesDownwards(VexaImage* level, Vexa32s levels, const VexaFilter& filter,
                          VexaInterpolationType interpolation)
{
    for (Vexa32s i = 1; i < levels; ++i) {
        VexaImage smooth = filtered(level[i - 1], filter);
        (void)geometryTransforms::resize(smooth, level[i], interpolation);
        (void)geometryTransforms::resize(level[i], smooth, interpolation);
        subtractFrom(level[i - 1], smooth);
    }
    VexaImage& last = level[levels - 1];
    VexaImage smooth = filtered(last, filter);
    const VexaImage half = resized(smooth, {last.width() / 2, last.height() / 2}, interpolation);
    (void)geometryTransforms::resize(half, smooth, interpolation);
    subtractFrom(last, smooth);
}

/// The band-pass levels of a pyramid whose last level is the source.
void differencesUpwards(VexaImage* level, Vexa32s levels, const VexaFilter& filter, VexaInterpolationType interpolation)
{
    for (Vexa32s i = levels - 2; i >= 0; --i) {
        (void)geometryTransforms::resize(level[i + 1], level[i], interpolation);
        subtractFrom(level[i + 1], resized(filtered(level[i], filter), level[i + 1].size(), interpolation));
    }
    VexaImage& first = level[0];
    const VexaImage twice = resized(first, {scaled(first.width(), 2), scaled(first.height(), 2)}, interpolation);
    subtractFrom(first, resized(filtered(twice, filter), first.size(), interpolation));
}

/// Makes all levels from one of them.
using Fill = void(VexaImage* level, Vexa32s levels, const VexaFilter& filter, VexaInterpolationType interpolation);

/// Puts the source at its end of the levels and fills them from there.
void fillFrom(const VexaImage& src, VexaImage* level, Vexa32s levels, Vexa32f scale, const VexaFilter& filter,
              VexaInterpolationType interpolation, Fill& downwards, Fill& upwards)
{
    const bool isLargest = scale < 1;
    level[isLargest ? 0 : levels - 1] = src;
    (isLargest ? downwards : upwards)(level, levels, filter, interpolation);
}

}  // namespace

VexaPyramid::VexaPyramid() : _pyramid(nullptr), _levels(0), _init(false), _scale(0) {}

VexaPyramid::VexaPyramid(const VexaImage& src, Vexa32s levels, Vexa32f scale, VexaInterpolationType interpolation)
    : VexaPyramid()
{
    (void)create(src, levels, scale, interpolation);
}

VexaPyramid::VexaPyramid(const VexaSize& size, VexaType type, Vexa32s levels, Vexa32f scale) : VexaPyramid()
{
    (void)create(size, type, levels, scale);
}

VexaPyramid::~VexaPyramid()
{
    (void)release();
}

VexaImage* VexaPyramid::images() const
{
    return static_cast<VexaImage*>(_pyramid);
}

VexaStatus VexaPyramid::create(const VexaSize& size, VexaType type, Vexa32s levels, Vexa32f scale)
{
    if (_init) return VEXA_SUCCESS;
    if (levels < 1 || !(scale > 0)) return VEXA_INVALID_ARG_ERROR;
    _pyramid = new VexaImage[static_cast<std::size_t>(levels)];
    _scale = scale;
    _levels = levels;
    _init = true;
    forEachLevel(size, levels, scale,
                 [this, type](Vexa32s i, const VexaSize& own) { (void)images()[i].create(own, type); });
    return VEXA_SUCCESS;
}

VexaStatus VexaPyramid::create(const VexaImage& src, Vexa32s levels, Vexa32f scale, VexaInterpolationType interpolation)
{
    if (_init) return VEXA_SUCCESS;
    if (const VexaStatus failed = create(src.size(), src.type(), levels, scale)) return failed;
    // Enlarging is linear whatever the caller asks for; that is meant.
    const VexaInterpolationType mode = scale < 1 ? interpolation : VEXA_INTER_LINEAR;
    for (Vexa32s i = 0; i < levels; ++i) (void)geometryTransforms::resize(src, images()[i], mode);
    return VEXA_SUCCESS;
}

VexaStatus VexaPyramid::createGaussian(const VexaImage& src, Vexa32s levels, Vexa32f scale, const VexaSize& filterSize,
                                       Vexa32f sigma, VexaInterpolationType interpolation)
{
    if (const VexaStatus failed = create(src.size(), src.type(), levels, scale)) return failed;
    fillFrom(src, images(), std::clamp(levels, 1, _levels), scale, VexaSpecialFilters::gaussian(filterSize, sigma),
             interpolation, gaussianDownwards, gaussianUpwards);
    return VEXA_SUCCESS;
}

VexaStatus VexaPyramid::createLaplacian(const VexaImage& src, Vexa32s levels, Vexa32f scale, const VexaSize& filterSize,
                                        Vexa32f sigma, VexaInterpolationType interpolation)
{
    if (const VexaStatus failed = create(src.size(), src.type(), levels, scale)) return failed;
    fillFrom(src, images(), std::clamp(levels, 1, _levels), scale, VexaSpecialFilters::gaussian(filterSize, sigma),
             interpolation, differencesDownwards, differencesUpwards);
    return VEXA_SUCCESS;
}

VexaStatus VexaPyramid::release()
{
    if (!_init) return VEXA_SUCCESS;
    delete[] images();
    _init = false;
    _levels = 0;
    _scale = 0;
    return VEXA_SUCCESS;
}

bool VexaPyramid::isInitialized() const
{
    return _init;
}

Vexa32s VexaPyramid::levels() const
{
    return _levels;
}

Vexa32f VexaPyramid::scale() const
{
    return _scale;
}

const VexaImage& VexaPyramid::largest() const
{
    return _init ? images()[0] : _null_image_;
}

const VexaImage& VexaPyramid::smallest() const
{
    return _init ? images()[_levels - 1] : _null_image_;
}

VexaImage& VexaPyramid::operator[](Vexa32s i)
{
    if (i >= 0 && i < _levels) return images()[i];
    (void)_null_image_.release();
    return _null_image_;
}

const VexaImage& VexaPyramid::operator[](Vexa32s i) const
{
    return i >= 0 && i < _levels ? images()[i] : _null_image_;
}
