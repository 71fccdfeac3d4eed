/// @file
/// Dense Lucas-Kanade: every pixel finds by itself how far its window moves from one image to another.
///
/// The mean between four texels weighs alike in the whole window of a pixel, whose displacement has one fraction. So
/// the sums of gradient times difference are those at four whole displacements, weighed. These are whole numbers and
/// therefore exact in any order, which lets the host share them between pixels (flow_host.h).

#pragma once

#include "footprint.h"
#include "interpolation.h"

namespace vexa {

/// A level of the images and its flow. Windows reach `radiusX` columns and `radiusY` rows from their pixel.
struct LucasKanade {
    Plane<const float> gradientX;  ///< of `from`, whole numbers
    Plane<const float> gradientY;
    FetchClamped<u8> from;
    FetchClamped<u8> to;
    Plane<float> flowX;
    Plane<float> flowY;
    int radiusX;
    int radiusY;
    int iterations;
    float errorThreshold;
    bool interpolates;  ///< between texels of `to`; else the nearest is taken

    VEXA_DEVICE int width() const { return from.width; }
    VEXA_DEVICE int height() const { return from.height; }

    /// The pixels whose windows lie inside.
    VEXA_DEVICE Interior interior() const { return {radiusX, width() - radiusX, radiusY, height() - radiusY}; }
};

/// A displacement along an axis: whole pixels, and the weight of the texel behind them.
struct Displacement {
    int whole;
    float weight;
};

/// The texels of a displacement as texture hardware takes them: they are centred at halves, so that one of 0 is the
/// mean of a pixel and the one before. That is meant. The fraction counts in steps of 1/256.
VEXA_DEVICE Displacement displacementOf(float flow, int size, bool interpolates)
{
    // Twice the image is as far as any. A NaN goes there too.
    const auto far = static_cast<float>(size) * 2.0F;
    const BetweenTexels between = betweenTexels(detail::clamp(interpolates ? flow - 0.5F : flow, -far, far));
    const float weight = static_cast<float>(between.steps) * (1.0F / textureSteps);
    return {between.before, interpolates ? weight : 0.0F};
}

/// The mean of values at a displacement's four texels.
VEXA_DEVICE float meanOf(float upperLeft, float upperRight, float lowerLeft, float lowerRight, float right, float lower)
{
    const float upperRow = (1.0F - right) * upperLeft + right * upperRight;
    const float lowerRow = (1.0F - right) * lowerLeft + right * lowerRight;
    return (1.0F - lower) * upperRow + lower * lowerRow;
}

/// The sums of products of gradients over a window: the matrix of the step's equations.
struct Structure {
    float xx;
    float xy;
    float yy;

    /// Of a singular matrix it is infinite; that is not tested, and the flow becomes infinite or NaN.
    VEXA_DEVICE float inverseDeterminant() const { return reciprocal(xx * yy - xy * xy); }
};

/// The displacement of a pixel, round by round.
struct Flow {
    float x;
    float y;
    bool moves;  ///< another round may change it

    /// One more round, whose sums of gradient times difference are `errorX` and `errorY`.
    VEXA_DEVICE Flow moved(const Structure& structure, float inverseDeterminant, float errorX, float errorY,
                           float threshold) const
    {
        const float stepX = (structure.yy * errorX - structure.xy * errorY) * inverseDeterminant;
        const float stepY = (structure.xx * errorY - structure.xy * errorX) * inverseDeterminant;
        const float nextX = x + stepX;
        const float nextY = y + stepY;
        const bool hasConverged = (fabsf(stepX) < threshold) & (fabsf(stepY) < threshold);
        // What is not a number stays so.
        const bool isLost = (nextX != nextX) & (nextY != nextY);
        return {nextX, nextY, !(hasConverged | isLost)};
    }
};

/// A component of the flow at a position along its axis: 0 if it leads out of the image. A NaN doesn't.
VEXA_DEVICE float keptInside(float flow, int position, int size)
{
    const float target = static_cast<float>(position) + flow;
    const bool leaves = (target < 0.0F) | (target > static_cast<float>(size - 1));
    return leaves ? 0.0F : flow;
}

namespace detail {

/// The largest window whose sums of products of two differences of bytes fit into an int.
inline constexpr long long largestNarrowWindow = 2147483647 / (255 * 255);

VEXA_DEVICE bool isNarrow(int radiusX, int radiusY)
{
    return (2LL * radiusX + 1) * (2LL * radiusY + 1) <= largestNarrowWindow;
}

/// The flow of one pixel of the interior, by itself. Sum holds any sum of its window.
template <typename Sum>
struct PixelFlow {
    LucasKanade level;

    VEXA_DEVICE void operator()(int x, int y) const
    {
        Flow flow{level.flowX.row(y)[x], level.flowY.row(y)[x], true};
        if (level.iterations > 0) {
            const Structure structure = structureAt(x, y);
            const float inverse = structure.inverseDeterminant();
            for (int round = 0; round < level.iterations && flow.moves; ++round) {
                const Errors errors = errorsAt(x, y, flow);
                flow = flow.moved(structure, inverse, errors.x, errors.y, level.errorThreshold);
            }
        }
        level.flowX.row(y)[x] = keptInside(flow.x, x, level.width());
        level.flowY.row(y)[x] = keptInside(flow.y, y, level.height());
    }

private:
    struct Errors {
        float x;
        float y;
    };

    VEXA_DEVICE Sum gradientX(int x, int y) const { return static_cast<Sum>(level.gradientX.row(y)[x]); }
    VEXA_DEVICE Sum gradientY(int x, int y) const { return static_cast<Sum>(level.gradientY.row(y)[x]); }

    VEXA_DEVICE Structure structureAt(int x, int y) const
    {
        Sum xx = 0;
        Sum xy = 0;
        Sum yy = 0;
        for (int i = y - level.radiusY; i <= y + level.radiusY; ++i)
            for (int j = x - level.radiusX; j <= x + level.radiusX; ++j) {
                const Sum p = gradientX(j, i);
                const Sum q = gradientY(j, i);
                xx += p * p;
                xy += p * q;
                yy += q * q;
            }
        return {static_cast<float>(xx), static_cast<float>(xy), static_cast<float>(yy)};
    }

    VEXA_DEVICE Errors errorsAt(int x, int y, const Flow& flow) const
    {
        const Displacement across = displacementOf(flow.x, level.width(), level.interpolates);
        const Displacement down = displacementOf(flow.y, level.height(), level.interpolates);
        Sum sumX[4] = {0, 0, 0, 0};
        Sum sumY[4] = {0, 0, 0, 0};
        for (int i = y - level.radiusY; i <= y + level.radiusY; ++i)
            for (int j = x - level.radiusX; j <= x + level.radiusX; ++j) {
                const Sum p = gradientX(j, i);
                const Sum q = gradientY(j, i);
                const int pixel = level.from(j, i);
                for (int k = 0; k < 4; ++k) {
                    const int difference = pixel - level.to(j + across.whole + k % 2, i + down.whole + k / 2);
                    sumX[k] += p * difference;
                    sumY[k] += q * difference;
                }
            }
        return {meanOf(sumX, across, down), meanOf(sumY, across, down)};
    }

    static VEXA_DEVICE float meanOf(const Sum (&sum)[4], const Displacement& across, const Displacement& down)
    {
        return vexa::meanOf(static_cast<float>(sum[0]), static_cast<float>(sum[1]), static_cast<float>(sum[2]),
                            static_cast<float>(sum[3]), across.weight, down.weight);
    }
};

}  // namespace detail

}  // namespace vexa

#if defined(__CUDACC__)
#include "flow_device.h"
#else
#include "flow_host.h"
#endif
