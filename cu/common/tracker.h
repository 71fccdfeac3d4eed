/// @file
/// What tracking reads around a point: the window of a pair of images and of their gradients, sampled between pixels as
/// texture hardware samples, and its sums. A thread of the device samples gradient images. The host makes gradients
/// where a window lies and a pixel more around it, so that most steps of a point find them in the first cache: of a
/// pair of 1920x1080 they would be 33 MB. Both sum columns first.

#pragma once

#include "fetch.h"
#include "footprint.h"
#include "interpolation.h"

namespace vexa {

/// A level of one image, and its gradients where the platform reads them.
struct TrackedImage {
    FetchClamped<u8> pixels;
    const float* gradX;
    const float* gradY;
    int gradPitch;  ///< elements
};

/// A window reaches so far to either side. A negative half makes it empty.
struct HalfSize {
    int width;
    int height;

    VEXA_DEVICE bool isEmpty() const { return width < 0 || height < 0; }
    VEXA_DEVICE int columns() const { return isEmpty() ? 0 : 2 * width + 1; }
    VEXA_DEVICE int rows() const { return isEmpty() ? 0 : 2 * height + 1; }
};

/// Sums over a window: products of the gradients, of these with the difference of the images, and that difference
/// itself.
struct WindowSums {
    float xx;
    float xy;
    float yy;
    float ex;
    float ey;
    float residue;
};

VEXA_DEVICE WindowSums operator+(const WindowSums& a, const WindowSums& b)
{
    return {a.xx + b.xx, a.xy + b.xy, a.yy + b.yy, a.ex + b.ex, a.ey + b.ey, a.residue + b.residue};
}

namespace detail {

/// What both images have at one place.
struct PairOfPixels {
    float gradX;  ///< of both gradients the sum
    float gradY;
    float difference;
};

VEXA_DEVICE WindowSums accumulated(const WindowSums& sums, const PairOfPixels& at)
{
    return {multiplyAdd(at.gradX, at.gradX, sums.xx),      multiplyAdd(at.gradX, at.gradY, sums.xy),
            multiplyAdd(at.gradY, at.gradY, sums.yy),      multiplyAdd(at.gradX, at.difference, sums.ex),
            multiplyAdd(at.gradY, at.difference, sums.ey), sums.residue + fabsf(at.difference)};
}

// Gradients are central differences of an image that is itself sampled at integers, where a sample is the mean of four
// pixels, up and left of it: that is meant. Eighths of them are sums over two and four rows of these terms of a row.

/// Of the pixels two to the left, one to the left, here and to the right, whose differences over two rows make X.
VEXA_DEVICE int termOfX(int left2, int left, int here, int right)
{
    return here + right - left2 - left;
}

/// Of which the two rows up and left make Y, taken from those here and below.
VEXA_DEVICE int termOfY(int left, int here)
{
    return left + here;
}

/// Eighths of X.
VEXA_DEVICE int sumOfX(int above, int here)
{
    return above + here;
}

/// Eighths of Y.
VEXA_DEVICE int sumOfY(int above2, int above, int here, int below)
{
    return here + below - above2 - above;
}

VEXA_DEVICE float gradientOf(int eighths)
{
    return 0.125F * static_cast<float>(eighths);
}

/// Where the middle of a window lies: the pixel up and left of it, and the weights of the four around it, which are
/// those of all pixels of the window.
struct WindowPlace {
    int x;
    int y;
    float upperLeft;
    float upperRight;
    float lowerLeft;
    float lowerRight;

    /// A value and the pixel at a place between four.
    VEXA_DEVICE float plus(float value, float a, float b, float c, float d) const
    {
        return multiplyAdd(lowerRight, d,
                           multiplyAdd(lowerLeft, c, multiplyAdd(upperRight, b, multiplyAdd(upperLeft, a, value))));
    }

    /// A value without it.
    VEXA_DEVICE float minus(float value, float a, float b, float c, float d) const
    {
        return multiplyAdd(-lowerRight, d,
                           multiplyAdd(-lowerLeft, c, multiplyAdd(-upperRight, b, multiplyAdd(-upperLeft, a, value))));
    }
};

/// A position may be undefined.
VEXA_DEVICE WindowPlace windowPlace(float x, float y, int width, int height)
{
    const BetweenTexels column = betweenTexels(clamp(x, 0.0F, static_cast<float>(width)) - 0.5F);
    const BetweenTexels row = betweenTexels(clamp(y, 0.0F, static_cast<float>(height)) - 0.5F);
    constexpr float step = 1.0F / textureSteps;
    const float right = static_cast<float>(column.steps) * step;
    const float lower = static_cast<float>(row.steps) * step;
    const float left = 1.0F - right;
    const float upper = 1.0F - lower;
    return {column.before, row.before, upper * left, upper * right, lower * left, lower * right};
}

}  // namespace detail

/// Gradients of an image at all its pixels.
VEXA_DEVICE void writeTrackerGradients(const FetchClamped<u8>& image, Plane<float> gradX, Plane<float> gradY, int x,
                                       int y)
{
    const auto at = [&](int dx, int dy) { return static_cast<int>(image(x + dx, y + dy)); };
    const auto ofX = [&](int dy) { return detail::termOfX(at(-2, dy), at(-1, dy), at(0, dy), at(1, dy)); };
    const auto ofY = [&](int dy) { return detail::termOfY(at(-1, dy), at(0, dy)); };
    gradX.row(y)[x] = detail::gradientOf(detail::sumOfX(ofX(-1), ofX(0)));
    gradY.row(y)[x] = detail::gradientOf(detail::sumOfY(ofY(-2), ofY(-1), ofY(0), ofY(1)));
}

}  // namespace vexa

#if defined(__CUDACC__)
#include "tracker_device.h"
#else
#include "tracker_host.h"
#endif
