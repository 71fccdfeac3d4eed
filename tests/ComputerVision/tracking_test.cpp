/// @file
/// Tracking of points: known motion, a single step by its formula, what becomes of points that are lost, and the
/// checks.

#include <algorithm>
#include <limits>
#include <memory>

#include "waves.h"

namespace {

using namespace kit;
namespace cv = vexa::computerVision;

using Feature = VexaPointValue2D<float, float>;

constexpr float lost = -2.0F, notMoved = -3.0F, outside = -4.0F, different = -5.0F;

struct Tracked {
    VexaStatus status = VEXA_SUCCESS;
    std::vector<Feature> points;
    std::string output;
};

Tracked track(const VexaImage& previous, const VexaImage& next, std::vector<Feature> points,
              const VexaTrackingCriteria& criteria)
{
    Feature* tracked = nullptr;
    Tracked result;
    testing::internal::CaptureStdout();
    result.status =
        cv::trackFeatures(previous, next, points.data(), tracked, static_cast<int>(points.size()), criteria);
    result.output = testing::internal::GetCapturedStdout();
    const std::unique_ptr<Feature[]> owner(tracked);
    if (tracked) result.points.assign(tracked, tracked + points.size());
    return result;
}

std::vector<Feature> grid(int from, int toX, int toY, int step)
{
    std::vector<Feature> points;
    for (int y = from; y <= toY; y += step)
        for (int x = from; x <= toX; x += step) points.emplace_back(static_cast<float>(x), static_cast<float>(y), 1.0F);
    return points;
}

const VexaSize frame(160, 120);

const VexaTrackingCriteria usual(2, VexaSize(9, 9), 20, 20.0F, 0.01F, 0.5F);

void expectOutput(const Tracked& tracked, int levels)
{
    std::string lines;
    for (int i = 0; i < 2 * levels; ++i) lines += "NPP Error: 0 \n";
    EXPECT_EQ(tracked.output, lines);
}

TEST(TrackFeatures, FollowsShifts)
{
    // Levels are not filtered before they shrink: waves must stay longer than two of their pixels.
    const auto moved = [](double dx, double dy) {
        return waves(frame, [=](int x, int y) { return std::pair<double, double>(0.6 * (x - dx), 0.6 * (y - dy)); });
    };
    const VexaImage previous = moved(0, 0);
    const std::vector<Feature> points = grid(30, 130, 90, 10);
    VexaTrackingCriteria criteria = usual;
    criteria.windowSize = VexaSize(13, 13);
    for (const auto& shift : {std::pair<double, double>(0, 0), {0.4, -0.7}, {2.25, 1.5}, {-5.3, 4.6}, {5.0, -5.5}}) {
        SCOPED_TRACE(testing::Message() << shift.first << ", " << shift.second);
        const Tracked tracked = track(previous, moved(shift.first, shift.second), points, criteria);
        ASSERT_EQ(tracked.status, VEXA_SUCCESS);
        expectOutput(tracked, 3);
        for (std::size_t i = 0; i < points.size(); ++i) {
            ASSERT_EQ(tracked.points[i].val, 0.0F) << "point " << i;
            ASSERT_NEAR(tracked.points[i].x - points[i].x, shift.first, 0.08) << "point " << i;
            ASSERT_NEAR(tracked.points[i].y - points[i].y, shift.second, 0.08) << "point " << i;
        }
    }
}

/// Points are where linear sampling puts them, half a pixel before their coordinates.
TEST(TrackFeatures, FollowsRotationAndScale)
{
    const struct {
        double angle, scale;
    } motions[] = {{0.05, 1.0}, {0.0, 1.04}, {-0.03, 0.97}};
    const std::vector<Feature> points = grid(40, 120, 80, 8);
    for (const auto& motion : motions) {
        const double c = motion.scale * std::cos(motion.angle), s = motion.scale * std::sin(motion.angle);
        const double factor = c * c + s * s;
        const VexaImage next = waves(frame, [&](int x, int y) {
            const double dx = x - 80, dy = y - 60;
            return std::pair<double, double>(80 + (c * dx + s * dy) / factor, 60 + (-s * dx + c * dy) / factor);
        });
        const Tracked tracked = track(waves(frame), next, points, usual);
        ASSERT_EQ(tracked.status, VEXA_SUCCESS);
        // A window moves as a whole, so that single points are off by what turns or grows inside it.
        double error = 0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const double dx = points[i].x - 80.5, dy = points[i].y - 60.5;
            ASSERT_EQ(tracked.points[i].val, 0.0F) << "point " << i;
            error += std::hypot(tracked.points[i].x - (80.5 + c * dx - s * dy),
                                tracked.points[i].y - (60.5 + s * dx + c * dy));
        }
        EXPECT_LT(error / static_cast<double>(points.size()), 0.15) << motion.angle << ", " << motion.scale;
    }
}

/// A bilinear value at texture coordinates: elements lie half a pixel behind whole ones, edges repeat.
template <typename At>
double bilinear(const At& at, double u, double v)
{
    const double x = std::floor(u - 0.5), y = std::floor(v - 0.5);
    const double fx = u - 0.5 - x, fy = v - 0.5 - y;
    const int i = static_cast<int>(x), j = static_cast<int>(y);
    return (1 - fy) * ((1 - fx) * at(i, j) + fx * at(i + 1, j)) +
           fy * ((1 - fx) * at(i, j + 1) + fx * at(i + 1, j + 1));
}

/// An image with the gradients of what linear sampling reads at its whole coordinates.
class Plane {
public:
    explicit Plane(const VexaImage& image)
        : _width(image.width()), _height(image.height()), _pixels(download<u8>(image))
    {}
    double value(double u, double v) const
    {
        return bilinear([&](int x, int y) { return pixel(x, y); }, u, v);
    }
    double gradientX(double u, double v) const
    {
        return bilinear([&](int x, int y) { return 0.5 * difference(x, y, 1, 0); }, u, v);
    }
    double gradientY(double u, double v) const
    {
        return bilinear([&](int x, int y) { return 0.5 * difference(x, y, 0, 1); }, u, v);
    }

private:
    double pixel(int x, int y) const
    {
        return _pixels[static_cast<std::size_t>(std::clamp(y, 0, _height - 1) * _width + std::clamp(x, 0, _width - 1))];
    }
    double difference(int x, int y, int dx, int dy) const
    {
        const int i = std::clamp(x, 0, _width - 1), j = std::clamp(y, 0, _height - 1);
        return value(i + dx, j + dy) - value(i - dx, j - dy);
    }

    int _width, _height;
    std::vector<u8> _pixels;
};

/// One step on one level, with a window whose even height covers one row more, and points near all edges.
TEST(TrackFeatures, AStepSumsTheGradientsOfBothImages)
{
    const VexaImage previous = waves({64, 48}), next = waves({64, 48}, 0.7, -0.4);
    const Plane one(previous), two(next);
    const std::vector<Feature> points = {{20, 20, 0}, {31.3F, 17.8F, 7}, {0, 0, 0}, {63.9F, 47.5F, 0}, {5.5F, 40, -5}};
    const VexaTrackingCriteria single(0, VexaSize(7, 4), 1, 1e6F, 0.0F, 0.5F);
    const Tracked tracked = track(previous, next, points, single);
    ASSERT_EQ(tracked.status, VEXA_SUCCESS);
    expectOutput(tracked, 1);
    for (std::size_t i = 0; i < points.size(); ++i) {
        double xx = 0, xy = 0, yy = 0, ex = 0, ey = 0;
        for (int dx = -3; dx <= 3; ++dx)
            for (int dy = -2; dy <= 2; ++dy) {
                const double u = points[i].x + static_cast<float>(dx), v = points[i].y + static_cast<float>(dy);
                const double gx = one.gradientX(u, v) + two.gradientX(u, v);
                const double gy = one.gradientY(u, v) + two.gradientY(u, v);
                const double difference = one.value(u, v) - two.value(u, v);
                xx += gx * gx;
                xy += gx * gy;
                yy += gy * gy;
                ex += gx * difference;
                ey += gy * difference;
            }
        const double determinant = xx * yy - xy * xy;
        EXPECT_NEAR(tracked.points[i].x, points[i].x + (ex * yy - ey * xy) / determinant, 5e-3) << "point " << i;
        EXPECT_NEAR(tracked.points[i].y, points[i].y + (ey * xx - ex * xy) / determinant, 5e-3) << "point " << i;
        EXPECT_EQ(tracked.points[i].val, 0.0F) << "point " << i;
    }
}

void expectSame(const Feature& point, const Feature& expected)
{
    EXPECT_NEAR(point.x, expected.x, 1e-4);
    EXPECT_NEAR(point.y, expected.y, 1e-4);
    EXPECT_EQ(point.val, expected.val);
}

TEST(TrackFeatures, SaysWhyAPointIsLost)
{
    const VexaImage picture = waves(frame);
    const VexaImage flat = constant<u8>(frame, 1, 100);
    // Without structure there is no step.
    expectSame(track(flat, flat, {{50, 50, 1}}, usual).points[0], {50, 50, lost});
    // 0 is inside, the width is not.
    const Tracked edges = track(picture, picture, {{160, 50, 1}, {50, 120, 1}, {-0.5F, 50, 1}, {0, 0, 1}}, usual);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(edges.points[i].val, outside) << "point " << i;
    EXPECT_EQ(edges.points[0].x, 160.0F);
    EXPECT_EQ(edges.points[3].val, 0.0F);
    // Lost points that are fed back stay lost.
    const Tracked again = track(picture, picture, {{50, 50, lost}, {60, 60, outside}, {70, 70, different}}, usual);
    expectSame(again.points[0], {50, 50, lost});
    expectSame(again.points[1], {60, 60, outside});
    EXPECT_EQ(again.points[2].val, 0.0F);
    // What moves out of the image.
    const Tracked leaving = track(picture, waves(frame, -6, 0), {{3, 60, 1}}, usual);
    EXPECT_EQ(leaving.points[0].val, outside);
    // Found, but not alike enough.
    const VexaImage moved = waves(frame, [](int x, int y) { return std::pair<double, double>(x + 20, y + 9); });
    VexaTrackingCriteria strict = usual;
    strict.maxResidue = -1.0F;
    EXPECT_EQ(track(picture, moved, {{50, 50, 1}}, strict).points[0].val, different);
}

TEST(TrackFeatures, WithoutIterationsNothingMoves)
{
    const VexaImage picture = waves(frame);
    VexaTrackingCriteria none = usual;
    none.iterations = 0;
    const std::vector<Feature> points = {{50.25F, 60.5F, 1}, {500, 500, 0}, {20, 20, lost}, {30, 30, outside}};
    const Tracked tracked = track(picture, picture, points, none);
    expectSame(tracked.points[0], {50.25F, 60.5F, notMoved});
    expectSame(tracked.points[1], {500, 500, notMoved});
    expectSame(tracked.points[2], points[2]);
    expectSame(tracked.points[3], points[3]);
    none.maxResidue = -1.0F;
    expectSame(track(picture, picture, points, none).points[0], {50.25F, 60.5F, different});
}

TEST(TrackFeatures, EmptyWindowsAreSingular)
{
    VexaTrackingCriteria criteria = usual;
    criteria.windowSize = VexaSize(-4, 9);
    const Tracked tracked = track(waves(frame), waves(frame), {{50, 50, 1}, {200, 50, 1}}, criteria);
    EXPECT_EQ(tracked.points[0].val, lost);
    EXPECT_EQ(tracked.points[1].val, outside);
}

/// The image shrinks by other factors than 2 as well; the sizes of levels are cut down to whole pixels.
TEST(TrackFeatures, LevelsOfOtherRatios)
{
    const std::vector<Feature> points = grid(40, 110, 80, 10);
    for (const float ratio : {0.4F, 0.7F, 0.9F}) {
        const VexaTrackingCriteria criteria(1, VexaSize(11, 11), 30, 30.0F, 0.005F, ratio);
        const VexaSize odd(157, 119);
        const Tracked tracked = track(waves(odd), waves(odd, 1.3, -2.1), points, criteria);
        ASSERT_EQ(tracked.status, VEXA_SUCCESS);
        for (std::size_t i = 0; i < points.size(); ++i) {
            ASSERT_NEAR(tracked.points[i].x - points[i].x, 1.3, 0.08) << "ratio " << ratio;
            ASSERT_NEAR(tracked.points[i].y - points[i].y, -2.1, 0.08) << "ratio " << ratio;
        }
    }
}

TEST(TrackFeatures, RefusesWhatItDoesNotServe)
{
    const VexaImage one = constant<u8>({16, 16}, 1, 1);
    const struct {
        VexaImage previous, next;
        VexaStatus status;
    } cases[] = {{VexaImage(), one, VEXA_IMAGE_NOT_INITIALIZED},
                 {one, VexaImage(), VEXA_IMAGE_NOT_INITIALIZED},
                 {VexaImage(16, 16, VEXA_16UC3), one, VEXA_DEPTH_NOT_SUPPORTED_ERROR},
                 {VexaImage(16, 16, VEXA_8UC3), one, VEXA_CHANNEL_NOT_SUPPORTED_ERROR},
                 {one, VexaImage(17, 16, VEXA_8UC1), VEXA_NOT_SUPPORTED_MODE_ERROR},
                 {one, VexaImage(16, 17, VEXA_8UC1), VEXA_NOT_SUPPORTED_MODE_ERROR},
                 {one, VexaImage(16, 16, VEXA_16UC1), VEXA_NOT_SUPPORTED_MODE_ERROR},
                 {one, VexaImage(16, 16, VEXA_8UC3), VEXA_NOT_SUPPORTED_MODE_ERROR}};
    for (const auto& refused : cases)
        EXPECT_EQ(track(refused.previous, refused.next, {}, usual).status, refused.status);
    for (const float ratio : {0.0F, 1.0F, -0.5F, 2.0F, std::numeric_limits<float>::quiet_NaN()}) {
        VexaTrackingCriteria criteria = usual;
        criteria.subSampling = ratio;
        const Tracked tracked = track(one, one, {{8, 8, 0}}, criteria);
        EXPECT_EQ(tracked.status, VEXA_INVALID_ARG_ERROR);
        EXPECT_EQ(tracked.output, "");
    }
}

/// No points, too many levels, coordinates that are not numbers, windows larger than the image.
TEST(TrackFeatures, AbsurdArgumentsDoNoHarm)
{
    const VexaImage picture = waves(frame);
    EXPECT_EQ(track(picture, picture, {}, usual).status, VEXA_SUCCESS);
    VexaTrackingCriteria deep = usual;
    deep.pyramidLevels = 40;
    EXPECT_EQ(track(picture, picture, {{50, 50, 0}}, deep).status, VEXA_INTERNAL_CALL_ERROR);
    deep.pyramidLevels = -3;
    (void)track(picture, picture, {{50, 50, 0}}, deep);
    const float nan = std::numeric_limits<float>::quiet_NaN(), infinite = std::numeric_limits<float>::infinity();
    VexaTrackingCriteria wide = usual;
    wide.windowSize = VexaSize(400, 300);
    wide.iterations = 2;
    for (const VexaTrackingCriteria& criteria : {usual, wide})
        EXPECT_EQ(track(picture, picture, {{nan, 5, 0}, {infinite, -infinite, 0}, {1e30F, 1e30F, nan}, {50, nan, 0}},
                        criteria)
                      .status,
                  VEXA_SUCCESS);
}

}  // namespace
