/// @file
/// Dense flow: both estimators by their formulas, known motion through the levels, margins, flat regions, and the
/// checks.

#include <algorithm>
#include <limits>

#include "waves.h"

namespace {

using namespace kit;
namespace cv = vexa::computerVision;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus mode = VEXA_NOT_SUPPORTED_MODE_ERROR;
constexpr float untouched = -777.0F;

struct Flow {
    explicit Flow(VexaSize size)
        : size(size), x(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height), untouched), y(x)
    {}

    VexaSize size;
    std::vector<float> x, y;
};

// ---- Horn and Schunck ----

/// The pixels of an image as they lie in memory; behind them are zeros.
class FlatMemory {
public:
    explicit FlatMemory(const VexaImage& image)
        : _count(static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(image.height())),
          _bytes(static_cast<std::size_t>(image.pitch()) * static_cast<std::size_t>(image.height()))
    {
        EXPECT_EQ(image.download(_bytes.data()), success);
    }
    int operator[](std::size_t i) const { return i < _count ? _bytes[i] : 0; }

private:
    std::size_t _count;
    std::vector<u8> _bytes;
};

void expectHornSchunck(const VexaImage& previous, const VexaImage& next, float lambda, int iterations)
{
    const VexaSize size = previous.size();
    SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << ", lambda " << lambda << ", " << iterations
                                    << " iterations");
    Flow flow(size);
    ASSERT_EQ(cv::opticalFlowHS(previous, next, flow.x.data(), flow.y.data(), true, lambda, iterations), success);
    const FlatMemory a(previous), b(next);
    const auto w = static_cast<std::size_t>(size.width);
    for (std::size_t i = 0; i < flow.x.size(); ++i) {
        const int left = a[i] + b[i], right = a[i + 1] + b[i + 1];
        const int below = a[i + w] + b[i + w], across = a[i + w + 1] + b[i + w + 1];
        const double ey = (below + across - left - right) / 4, ex = (right + across - left - below) / 4;
        const double et = (b[i] + b[i + 1] + b[i + w] + b[i + w + 1] - a[i] - a[i + 1] - a[i + w] - a[i + w + 1]) / 4;
        double u = 0, v = 0;
        for (int round = 0; round < iterations; ++round) {
            const double scale = 1 / (static_cast<double>(lambda) * static_cast<double>(lambda) + ey * ey + ex * ex);
            u -= ey * (et + ey * u + ex * v) * scale;
            v -= ex * (et + ey * u + ex * v) * scale;
        }
        ASSERT_NEAR(flow.x[i], u, 1e-3 + 1e-4 * std::abs(u)) << "pixel " << i;
        ASSERT_NEAR(flow.y[i], v, 1e-3 + 1e-4 * std::abs(v)) << "pixel " << i;
    }
}

/// An image whose rows follow each other without gaps.
VexaImage packed(VexaSize size, std::uint32_t seed)
{
    VexaImage image(size.width, size.height, size.width, 8, 1);
    upload(image, download<u8>(noise<u8>(size, 1, seed)));
    return image;
}

TEST(HornSchunck, IsTheRelaxationOfEachPixel)
{
    for (const VexaSize& size : {VexaSize(16, 16), VexaSize(67, 33), VexaSize(256, 1), VexaSize(1, 300)})
        for (const int iterations : {1, 2, 25, 0, -3})
            expectHornSchunck(packed(size, 1), packed(size, 2), 3.0F, iterations);
    expectHornSchunck(packed({640, 48}, 3), packed({640, 48}, 4), 0.5F, 4);
}

/// Pitches are not looked at: the gaps behind rows count as pixels.
TEST(HornSchunck, TakesRowsAsTheyLieInMemory)
{
    VexaImage images[] = {VexaImage(20, 30, 24, 8, 1), VexaImage(20, 30, 24, 8, 1)};
    std::uint32_t state = 5;
    for (VexaImage& image : images) {
        std::vector<u8> bytes(24 * 30);
        for (u8& byte : bytes) byte = static_cast<u8>((state = state * 1664525U + 1013904223U) >> 24);
        ASSERT_EQ(image.upload(bytes.data()), success);
    }
    expectHornSchunck(images[0], images[1], 2.0F, 5);
}

TEST(HornSchunck, FlatRegionsWithoutLambdaAreNotNumbers)
{
    VexaImage flat(64, 64, 64, 8, 1);
    fillBuffer(flat, 50);
    Flow flow(flat.size());
    ASSERT_EQ(cv::opticalFlowHS(flat, flat, flow.x.data(), flow.y.data(), false, 0.0F, 2), success);
    EXPECT_TRUE(std::isnan(flow.x[0]));
    EXPECT_TRUE(std::isnan(flow.y[0]));
}

TEST(HornSchunck, RefusesWhatItDoesNotServe)
{
    const VexaImage one = constant<u8>({16, 16}, 1, 1);
    const struct {
        VexaImage previous, next;
        VexaStatus status;
    } cases[] = {{VexaImage(), one, VEXA_IMAGE_NOT_INITIALIZED},
                 {one, VexaImage(), VEXA_IMAGE_NOT_INITIALIZED},
                 {VexaImage(16, 16, VEXA_16UC3), one, VEXA_DEPTH_NOT_SUPPORTED_ERROR},
                 {VexaImage(16, 16, VEXA_8UC3), one, VEXA_CHANNEL_NOT_SUPPORTED_ERROR},
                 {one, VexaImage(17, 16, VEXA_8UC1), mode},
                 {one, VexaImage(16, 17, VEXA_8UC1), mode},
                 {one, VexaImage(16, 16, VEXA_16UC1), mode},
                 {one, VexaImage(16, 16, VEXA_8UC3), mode},
                 {constant<u8>({15, 17}, 1, 1), constant<u8>({15, 17}, 1, 1), VEXA_SIZE_ERROR}};
    Flow flow({16, 16});
    for (const auto& refused : cases) {
        EXPECT_EQ(cv::opticalFlowHS(refused.previous, refused.next, flow.x.data(), flow.y.data(), false, 1.0F, 1),
                  refused.status);
        EXPECT_EQ(flow.x[0], untouched);
    }
    EXPECT_EQ(cv::opticalFlowHS(one, one, flow.x.data(), flow.y.data(), false, 1.0F, 1), success);
    EXPECT_EQ(flow.x[255], 0.0F);
}

// ---- Lucas and Kanade ----

Flow lucasKanade(const VexaImage& previous, const VexaImage& next, const VexaTrackingCriteria& criteria)
{
    Flow flow(previous.size());
    EXPECT_EQ(cv::opticalFlowPyrLKDense(previous, next, flow.x.data(), flow.y.data(), criteria), success);
    return flow;
}

Flow lucasKanade2(const VexaImage& previous, const VexaImage& next, const VexaTrackingCriteria& criteria)
{
    Flow flow(previous.size());
    EXPECT_EQ(vexa_opticalFlowPyramidLK2(previous, next, flow.x.data(), flow.y.data(), criteria.windowSize,
                                         criteria.pyramidLevels, criteria.subSampling, criteria.iterations,
                                         criteria.errorThreshold, nullptr),
              success);
    return flow;
}

/// One level in double: the definition, pixel by pixel.
class SingleLevel {
public:
    SingleLevel(const VexaImage& previous, const VexaImage& next, const VexaTrackingCriteria& criteria)
        : _size(previous.size()), _one(download<u8>(previous)), _two(download<u8>(next)), _criteria(criteria)
    {}

    std::pair<double, double> at(int x, int y) const
    {
        const int wx = _criteria.windowSize.width, wy = _criteria.windowSize.height;
        if (x < wx || y < wy || x >= _size.width - wx || y >= _size.height - wy) return {0, 0};
        double gx = 0, gy = 0, xx = 0, xy = 0, yy = 0;
        for (int round = 0; round < _criteria.iterations; ++round) {
            double bx = 0, by = 0;
            for (int j = y - wy; j <= y + wy; ++j)
                for (int i = x - wx; i <= x + wx; ++i) {
                    const double p = pixel(_one, i + 1, j) - pixel(_one, i - 1, j);
                    const double q = pixel(_one, i, j + 1) - pixel(_one, i, j - 1);
                    const double difference = pixel(_one, i, j) - sampled(i + gx, j + gy);
                    bx += p * difference;
                    by += q * difference;
                    if (round > 0) continue;
                    xx += p * p;
                    xy += p * q;
                    yy += q * q;
                }
            const double determinant = xx * yy - xy * xy;
            const double dx = (yy * bx - xy * by) / determinant, dy = (xx * by - xy * bx) / determinant;
            gx += dx;
            gy += dy;
            if (std::abs(dx) < static_cast<double>(_criteria.errorThreshold) &&
                std::abs(dy) < static_cast<double>(_criteria.errorThreshold))
                break;
        }
        if (x + gx < 0 || x + gx > _size.width - 1) gx = 0;
        if (y + gy < 0 || y + gy > _size.height - 1) gy = 0;
        return {gx, gy};
    }

private:
    double pixel(const std::vector<u8>& pixels, int x, int y) const
    {
        return pixels[static_cast<std::size_t>(std::clamp(y, 0, _size.height - 1) * _size.width +
                                               std::clamp(x, 0, _size.width - 1))];
    }

    /// Elements lie half a pixel behind whole coordinates.
    double sampled(double u, double v) const
    {
        const double x = std::floor(u - 0.5), y = std::floor(v - 0.5), fx = u - 0.5 - x, fy = v - 0.5 - y;
        const int i = static_cast<int>(x), j = static_cast<int>(y);
        return (1 - fy) * ((1 - fx) * pixel(_two, i, j) + fx * pixel(_two, i + 1, j)) +
               fy * ((1 - fx) * pixel(_two, i, j + 1) + fx * pixel(_two, i + 1, j + 1));
    }

    VexaSize _size;
    std::vector<u8> _one, _two;
    VexaTrackingCriteria _criteria;
};

/// The size of a window is its reach: 2 * width + 1 columns.
TEST(LucasKanadeDense, OneLevelIsItsDefinition)
{
    for (const VexaSize& size : {VexaSize(61, 37), VexaSize(32, 32), VexaSize(130, 20)})
        for (const VexaSize& window : {VexaSize(3, 2), VexaSize(5, 5), VexaSize(1, 4)})
            for (const int iterations : {0, 1, 3}) {
                SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << ", window " << window.width
                                                << "x" << window.height << ", " << iterations << " iterations");
                const VexaImage previous = waves(size), next = waves(size, 0.4, -0.3);
                const VexaTrackingCriteria criteria(0, window, iterations, 0.0F, 0.001F, 7.0F);
                const Flow flow = lucasKanade(previous, next, criteria);
                const SingleLevel expected(previous, next, criteria);
                for (int y = 0; y < size.height; ++y)
                    for (int x = 0; x < size.width; ++x) {
                        const auto motion = expected.at(x, y);
                        const auto i = static_cast<std::size_t>(y * size.width + x);
                        ASSERT_NEAR(flow.x[i], motion.first, 0.03) << x << ", " << y;
                        ASSERT_NEAR(flow.y[i], motion.second, 0.03) << x << ", " << y;
                    }
            }
}

/// The mean distance from the true motion, away from the edges.
double meanError(const Flow& flow, double dx, double dy)
{
    double sum = 0;
    int count = 0;
    for (int y = 20; y < flow.size.height - 20; ++y)
        for (int x = 20; x < flow.size.width - 20; ++x, ++count) {
            const auto i = static_cast<std::size_t>(y * flow.size.width + x);
            sum += std::hypot(flow.x[i] - dx, flow.y[i] - dy);
        }
    return sum / count;
}

/// Flow follows the picture, less the half pixel by which linear sampling reads behind its coordinates.
TEST(LucasKanadeDense, FollowsShiftsAtEveryNumberOfLevels)
{
    const VexaSize size(160, 121);
    // Levels are not filtered before they shrink: waves must stay longer than two of their pixels.
    const auto moved = [&](double dx, double dy) {
        return waves(size, [=](int x, int y) { return std::pair<double, double>(0.5 * (x - dx), 0.5 * (y - dy)); });
    };
    const VexaImage previous = moved(0, 0);
    for (const auto& shift : {std::pair<double, double>(0.5, -0.25), {1.5, 1.0}, {-4.0, 3.5}})
        for (const int levels : {0, 1, 2, 3}) {
            SCOPED_TRACE(testing::Message() << shift.first << ", " << shift.second << ", " << levels << " levels");
            const VexaImage next = moved(shift.first, shift.second);
            const VexaTrackingCriteria criteria(levels, VexaSize(5, 5), 20, 0.0F, 0.01F, 0.5F);
            EXPECT_LT(meanError(lucasKanade(previous, next, criteria), shift.first + 0.5, shift.second + 0.5), 0.15);
        }
}

/// The second driver reads the pixel that a position lies in, so that it is half a pixel exact.
TEST(LucasKanadeDense, TheSecondDriverFollowsShifts)
{
    const VexaSize size(160, 121);
    const VexaImage previous = waves(size), next = waves(size, 3.0, -2.0);
    for (const int levels : {1, 2, 3}) {
        const VexaTrackingCriteria criteria(levels, VexaSize(5, 5), 10, 0.0F, 0.01F, 0.5F);
        EXPECT_LT(meanError(lucasKanade2(previous, next, criteria), 3.5, -1.5), 0.75) << levels << " levels";
    }
}

TEST(LucasKanadeDense, WithoutAnInteriorNothingMoves)
{
    const VexaImage one = waves({40, 30}), two = waves({40, 30}, 1, 1);
    for (const VexaSize& window : {VexaSize(20, 3), VexaSize(3, 15), VexaSize(400, 400)})
        for (const int levels : {0, 2}) {
            const VexaTrackingCriteria criteria(levels, window, 5, 0.0F, 0.01F, 0.5F);
            EXPECT_EQ(lucasKanade(one, two, criteria).x, std::vector<float>(40 * 30, 0.0F));
            EXPECT_EQ(lucasKanade2(one, two, criteria).y, std::vector<float>(40 * 30, 0.0F));
        }
}

/// Without structure there is no answer: the margin stays 0, the interior is no number, or 0 where it would be
/// infinite.
TEST(LucasKanadeDense, FlatImagesHaveNoFlow)
{
    const VexaImage flat = constant<u8>({32, 24}, 1, 90);
    const Flow flow = lucasKanade(flat, flat, VexaTrackingCriteria(0, VexaSize(2, 2), 3, 0.0F, 0.01F, 0.5F));
    EXPECT_EQ(flow.x[0], 0.0F);
    EXPECT_TRUE(std::isnan(flow.x[12 * 32 + 16]));
    EXPECT_TRUE(std::isnan(flow.y[12 * 32 + 16]));
}

TEST(LucasKanadeDense, RefusesWhatItDoesNotServe)
{
    const VexaImage one = constant<u8>({16, 16}, 1, 1);
    const struct {
        VexaImage previous, next;
        VexaStatus status;
    } cases[] = {{VexaImage(), one, VEXA_IMAGE_NOT_INITIALIZED},
                 {one, VexaImage(), VEXA_IMAGE_NOT_INITIALIZED},
                 {one, VexaImage(17, 16, VEXA_8UC1), mode},
                 {one, VexaImage(16, 17, VEXA_8UC1), mode},
                 {one, VexaImage(16, 16, VEXA_8SC1), mode},
                 {VexaImage(16, 16, VEXA_8UC3), VexaImage(16, 16, VEXA_8UC3), VEXA_TYPE_NOT_SUPPORTED_ERROR}};
    Flow flow({16, 16});
    for (const auto& refused : cases) {
        EXPECT_EQ(cv::opticalFlowPyrLKDense(refused.previous, refused.next, flow.x.data(), flow.y.data(),
                                            VexaTrackingCriteria(0, VexaSize(2, 2), 3, 0.0F, 0.01F, 0.5F)),
                  refused.status);
        EXPECT_EQ(flow.x[0], untouched);
    }
}

/// Levels without pixels, none at all, images of a single row, windows turned around.
TEST(LucasKanadeDense, AbsurdArgumentsDoNoHarm)
{
    constexpr int most = std::numeric_limits<int>::max();
    for (const VexaSize& size : {VexaSize(40, 30), VexaSize(5, 1), VexaSize(1, 9), VexaSize(2, 2)})
        for (const int levels : {-1, 0, 3, 12, 40})
            for (const VexaSize& window : {VexaSize(2, 2), VexaSize(0, 0), VexaSize(-1, -3), VexaSize(most, 1)}) {
                const VexaImage one = waves(size), two = waves(size, 0.5, 0.5);
                Flow flow(size);
                const VexaTrackingCriteria criteria(levels, window, 2, 0.0F, 0.01F, 0.5F);
                (void)cv::opticalFlowPyrLKDense(one, two, flow.x.data(), flow.y.data(), criteria);
                (void)vexa_opticalFlowPyramidLK2(one, two, flow.x.data(), flow.y.data(), window, levels, 0.5F, 2, 0.01F,
                                                 nullptr);
            }
}

}  // namespace
