/// @file
/// VexaPyramid: an image at several sizes.

#pragma once

#include "vexaCore.h"

/// Images of one type, each larger than the next by a fixed ratio. Level 0 is the largest, whichever way the ratio
/// points: with a scale below 1 the source is level 0 and the sizes fall from there, with a scale of 1 or more it is
/// the last level and the sizes grow towards level 0.
///
/// The size of a level is that of its neighbour times the scale as 32-bit floats, truncated. Nothing stops at 0: a
/// level without pixels is an empty image. A pyramid is filled once; release() makes room for another shape. What fails
/// within a level is not reported and leaves that level empty or unwritten.
class VEXA_API VexaPyramid {
public:
    /// A pyramid without levels.
    VexaPyramid();

    /// Constructors with arguments call the create() of the same arguments and drop its status.
    VexaPyramid(const VexaImage& src, Vexa32s levels, Vexa32f scale = 0.5F,
                VexaInterpolationType interpolation = VEXA_INTER_LINEAR);
    VexaPyramid(const VexaSize& size, VexaType type, Vexa32s levels, Vexa32f scale = 0.5F);
    VexaPyramid(const VexaPyramid&) = delete;
    VexaPyramid& operator=(const VexaPyramid&) = delete;
    ~VexaPyramid();

    /// Allocates the levels; their pixels are not cleared. A filled pyramid stays as it is, which is a success whatever
    /// the arguments.
    /// @return VEXA_INVALID_ARG_ERROR for less than 1 level and for a scale that is not above 0
    VexaStatus create(const VexaSize& size, VexaType type, Vexa32s levels, Vexa32f scale = 0.5F);

    /// Also resizes `src` to every level, each straight from `src` and without a filter. A scale of 1 or more always
    /// interpolates linearly.
    VexaStatus create(const VexaImage& src, Vexa32s levels, Vexa32f scale = 0.5F,
                      VexaInterpolationType interpolation = VEXA_INTER_LINEAR);

    /// @name Pyramids from level to level
    /// `src` becomes level 0, or the last one for a scale of 1 or more, and each further level is made of its
    /// neighbour with a Gaussian filter. On a filled pyramid its levels are written anew; the arguments must be those
    /// that it was filled with.
    /// @return as create()
    /// @{

    /// Filters, then shrinks; or enlarges, then filters.
    VexaStatus createGaussian(const VexaImage& src, Vexa32s levels, Vexa32f scale = 0.5F,
                              const VexaSize& filterSize = VexaSize(5, 5), Vexa32f sigma = 1.0F,
                              VexaInterpolationType interpolation = VEXA_INTER_LINEAR);

    /// The differences between the levels of such a pyramid and their filtered selves at the size of the next level and
    /// back. The level at the end is compared with half its size, or double for a scale of 1 or more, so no level keeps
    /// the low frequencies. Subtracts as vexa::arithmeticLogical::subtract: differences of unsigned types stop at 0.
    VexaStatus createLaplacian(const VexaImage& src, Vexa32s levels, Vexa32f scale = 0.5F,
                               const VexaSize& filterSize = VexaSize(5, 5), Vexa32f sigma = 1.0F,
                               VexaInterpolationType interpolation = VEXA_INTER_LINEAR);
    /// @}

    /// Destroys the levels.
    /// @return VEXA_SUCCESS
    VexaStatus release();

    bool isInitialized() const;
    Vexa32s levels() const;
    Vexa32f scale() const;

    /// The first level or the last; an empty image if there are none.
    /// @{
    const VexaImage& largest() const;
    const VexaImage& smallest() const;
    /// @}

    /// Level i. One that does not exist is an empty image that all pyramids share; the first form empties it.
    /// @{
    VexaImage& operator[](Vexa32s i);
    const VexaImage& operator[](Vexa32s i) const;
    /// @}

private:
    VEXA_LOCAL VexaImage* images() const;

    void* _pyramid;
    Vexa32s _levels;
    bool _init;
    Vexa32f _scale;
};
