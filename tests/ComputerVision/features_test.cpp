/// @file
/// Feature detection: measures, cells, order and spacing by their definitions in double, corners of squares, flat
/// images, and the checks.

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "images.h"

namespace {

using namespace kit;
namespace cv = vexa::computerVision;

using Feature = VexaPointValue2D<float, float>;

struct Found {
    VexaStatus status = VEXA_SUCCESS;
    int count = 0;
    std::unique_ptr<Feature[]> list;
};

Found detect(const VexaImage& src, const VexaRect& roi, const VexaFeaturesCriteria& criteria, int maxFeatures)
{
    Found found;
    Feature* output = nullptr;
    found.count = maxFeatures;
    found.status = cv::goodFeaturesToTrack(src, roi, output, found.count, criteria);
    found.list.reset(output);
    return found;
}

/// The definition in double, step by step.
class Definition {
public:
    Definition(const VexaImage& src, const VexaRect& roi, const VexaFeaturesCriteria& criteria)
        : _pixels(download<u8>(src)), _width(src.width()), _height(src.height()), _roi(roi), _criteria(criteria)
    {}

    double measure(int x, int y) const
    {
        const int half = _criteria.blockSize >> 1;
        double xx = 0, xy = 0, yy = 0;
        for (int j = y - half; j <= y + half; ++j)
            for (int i = x - half; i <= x + half; ++i) {
                if (i < 0 || j < 0 || i >= _roi.width || j >= _roi.height) continue;
                const double gx = 0.5 * (pixel(i + 1, j) - pixel(i - 1, j));
                const double gy = 0.5 * (pixel(i, j + 1) - pixel(i, j - 1));
                xx += gx * gx;
                xy += gx * gy;
                yy += gy * gy;
            }
        const double determinant = xx * yy - xy * xy;
        switch (_criteria.algorithm) {
            case VEXA_FEATURES_KLT:
                return 0.5 * (xx + yy - std::sqrt((xx - yy) * (xx - yy) + 4 * xy * xy));
            case VEXA_FEATURES_HARRIS:
                return determinant - static_cast<double>(_criteria.k) * (xx + yy) * (xx + yy);
            default:
                return determinant / (xx + yy + 1e-9);
        }
    }

    std::vector<Feature> features() const
    {
        std::vector<Feature> sorted = cells();
        std::stable_sort(sorted.begin(), sorted.end(),
                         [](const Feature& a, const Feature& b) { return a.val > b.val; });
        const float threshold = _criteria.featureQuality * sorted[0].val;
        const float reach = static_cast<float>(_criteria.minimumDistance - 1);
        std::vector<Feature> accepted = {sorted[0]};
        for (std::size_t i = 1; i < sorted.size(); ++i) {
            const auto near = [&](const Feature& other) {
                return std::abs(other.x - sorted[i].x) <= reach && std::abs(other.y - sorted[i].y) <= reach;
            };
            if (std::none_of(accepted.begin(), accepted.end(), near) && sorted[i].val >= threshold)
                accepted.push_back(sorted[i]);
        }
        return accepted;
    }

private:
    int pixel(int x, int y) const
    {
        x = std::clamp(x + _roi.x, 0, _width - 1);
        y = std::clamp(y + _roi.y, 0, _height - 1);
        return _pixels[static_cast<std::size_t>(y * _width + x)];
    }

    /// The best pixel of each cell of 7 by 7. Slots lie as threads of blocks of 16 do; those past the list are lost.
    std::vector<Feature> cells() const
    {
        std::vector<Feature> list(
            static_cast<std::size_t>(static_cast<float>(_roi.width * _roi.height) / 49.0F + 7.0F));
        const int columns = (_roi.width + 6) / 7, rows = (_roi.height + 6) / 7;
        const int stride = (columns + 15) / 16 * 16;
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column) {
                const auto slot = static_cast<std::size_t>(row * stride + column);
                if (column * 7 + 3 >= _roi.width || row * 7 + 3 >= _roi.height || slot >= list.size()) continue;
                double best = 0;
                int bestX = column * 7 + 3, bestY = row * 7 + 3;
                for (int x = column * 7; x < column * 7 + 7; ++x)
                    for (int y = row * 7; y < row * 7 + 7; ++y) {
                        if (x >= _roi.width || y >= _roi.height || measure(x, y) <= best) continue;
                        best = measure(x, y);
                        bestX = x;
                        bestY = y;
                    }
                list[slot] = Feature(static_cast<float>(bestX + _roi.x), static_cast<float>(bestY + _roi.y),
                                     static_cast<float>(best));
            }
        return list;
    }

    std::vector<u8> _pixels;
    int _width, _height;
    VexaRect _roi;
    VexaFeaturesCriteria _criteria;
};

/// A picture with structure of all directions: noise, coarser than pixels.
VexaImage texture(VexaSize size, std::uint32_t seed)
{
    VexaImage blurred;
    EXPECT_EQ(vexa::imageFiltering::imageFilter(noise<u8>(size, 1, seed), blurred,
                                                VexaSpecialFilters::gaussian(VexaSize(5, 5), 1.2F)),
              VEXA_SUCCESS);
    return blurred;
}

void expectDefinition(const VexaImage& src, const VexaRect& roi, const VexaFeaturesCriteria& criteria)
{
    SCOPED_TRACE(testing::Message() << roi.width << "x" << roi.height << " at " << roi.x << ", " << roi.y
                                    << ", algorithm " << criteria.algorithm << ", quality " << criteria.featureQuality
                                    << ", distance " << criteria.minimumDistance << ", block " << criteria.blockSize);
    const std::vector<Feature> expected = Definition(src, roi, criteria).features();
    const Found found = detect(src, roi, criteria, 1000000);
    ASSERT_EQ(found.status, VEXA_SUCCESS);
    ASSERT_EQ(found.count, static_cast<int>(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(found.list[i].x, expected[i].x) << "feature " << i;
        ASSERT_EQ(found.list[i].y, expected[i].y) << "feature " << i;
        ASSERT_NEAR(found.list[i].val, expected[i].val, 1e-3 * std::abs(expected[i].val) + 1e-3) << "feature " << i;
    }
}

/// At 100x100 the last slots are lost: 14 rows of 16 slots, of which the list has 211.
TEST(GoodFeatures, AreThoseOfTheDefinition)
{
    const VexaImage src = texture({210, 160}, 21);
    for (const VexaFeaturesAlgorithm algorithm :
         {VEXA_FEATURES_KLT, VEXA_FEATURES_HARRIS, VEXA_FEATURES_HARRIS_PETER}) {
        expectDefinition(src, {0, 0, 210, 160}, {algorithm, 0.05F, 10, 3, 0.04F});
        expectDefinition(src, {11, 7, 100, 100}, {algorithm, 0.01F, 1, 5, 0.04F});
        expectDefinition(src, {150, 100, 60, 60}, {algorithm, 0.1F, 20, 4, 0.06F});
    }
    for (const int block : {0, 1, 2, 7, 15})
        expectDefinition(src, {3, 2, 75, 61}, {VEXA_FEATURES_KLT, 0.02F, 8, block, 0.0F});
    for (const int distance : {-5, 0, 1, 3, 40, 1000})
        expectDefinition(src, {0, 0, 210, 160}, {VEXA_FEATURES_KLT, 0.0F, distance, 3, 0.0F});
    expectDefinition(src, {5, 5, 90, 30}, {VEXA_FEATURES_KLT, 1.5F, 3, 3, 0.0F});
    expectDefinition(src, {5, 5, 4, 4}, {VEXA_FEATURES_KLT, 0.5F, 0, 3, 0.0F});
    expectDefinition(src, {5, 5, 3, 90}, {VEXA_FEATURES_KLT, 0.5F, 0, 3, 0.0F});
}

TEST(GoodFeatures, FindCornersOfSquares)
{
    std::vector<u8> pixels(112 * 84, 20);
    for (int y = 30; y < 60; ++y)
        for (int x = 40; x < 80; ++x) pixels[static_cast<std::size_t>(y * 112 + x)] = 220;
    const VexaImage src = imageOf<u8>({112, 84}, 1, pixels);
    for (const VexaFeaturesAlgorithm algorithm :
         {VEXA_FEATURES_KLT, VEXA_FEATURES_HARRIS, VEXA_FEATURES_HARRIS_PETER}) {
        const Found found = detect(src, {0, 0, 112, 84}, {algorithm, 0.5F, 10, 5, 0.04F}, 10);
        ASSERT_EQ(found.status, VEXA_SUCCESS);
        ASSERT_EQ(found.count, 4);
        for (const int cornerX : {40, 79})
            for (const int cornerY : {30, 59})
                EXPECT_TRUE(std::any_of(found.list.get(), found.list.get() + 4,
                                        [&](const Feature& feature) {
                                            return std::abs(feature.x - static_cast<float>(cornerX)) <= 2 &&
                                                   std::abs(feature.y - static_cast<float>(cornerY)) <= 2;
                                        }))
                    << cornerX << ", " << cornerY << ", algorithm " << algorithm;
    }
}

/// Cells without structure stand for their centre, and slots without a cell for the origin, all of value 0.
TEST(GoodFeatures, FlatImagesGiveCentresOfCells)
{
    expectDefinition(constant<u8>({64, 48}, 1, 90), {0, 0, 64, 48}, {VEXA_FEATURES_KLT, 0.1F, 1, 3, 0.0F});
    expectDefinition(constant<u8>({64, 48}, 1, 90), {8, 8, 3, 3}, {VEXA_FEATURES_KLT, 0.1F, 1, 3, 0.0F});
}

TEST(GoodFeatures, NoMoreThanAskedFor)
{
    const VexaImage src = texture({128, 96}, 22);
    const VexaRect roi(0, 0, 128, 96);
    const VexaFeaturesCriteria criteria(VEXA_FEATURES_KLT, 0.01F, 5, 3, 0.0F);
    const Found all = detect(src, roi, criteria, 100000);
    const Found some = detect(src, roi, criteria, 7);
    ASSERT_EQ(some.count, 7);
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(some.list[static_cast<std::size_t>(i)].x, all.list[static_cast<std::size_t>(i)].x);
    for (const int none : {0, -4}) {
        const Found found = detect(src, roi, criteria, none);
        EXPECT_EQ(found.status, VEXA_SUCCESS);
        EXPECT_EQ(found.count, 0);
        EXPECT_NE(found.list, nullptr);
    }
}

/// As many points as accepted ones take no more than a moment: a quadratic search would take minutes.
TEST(GoodFeatures, AHundredThousandPoints)
{
    const VexaImage src = noise<u8>({2560, 1920}, 1, 23);
    const Found found = detect(src, {0, 0, 2560, 1920}, {VEXA_FEATURES_KLT, 0.0F, 1, 3, 0.0F}, 1000000);
    ASSERT_EQ(found.status, VEXA_SUCCESS);
    EXPECT_GT(found.count, 95000);
}

TEST(GoodFeatures, RefuseWhatTheyDoNotServe)
{
    Feature* output = nullptr;
    int count = 3;
    const VexaFeaturesCriteria criteria(VEXA_FEATURES_KLT, 0.1F, 1, 3, 0.0F);
    const VexaRect roi(0, 0, 8, 8);
    EXPECT_EQ(cv::goodFeaturesToTrack(VexaImage(), roi, output, count, criteria), VEXA_IMAGE_NOT_INITIALIZED);
    for (const VexaType type : {VEXA_8UC3, VEXA_8SC1, VEXA_16UC1, VEXA_32FC1})
        EXPECT_EQ(cv::goodFeaturesToTrack(VexaImage(8, 8, type), roi, output, count, criteria),
                  VEXA_NOT_SUPPORTED_MODE_ERROR);
    EXPECT_EQ(output, nullptr);
    EXPECT_EQ(count, 3);
}

/// Rectangles are not checked, but do no harm: outside, huge, empty, turned around; nor do criteria that are absurd.
TEST(GoodFeatures, AbsurdArgumentsDoNoHarm)
{
    const VexaImage src = texture({40, 30}, 24);
    const VexaFeaturesCriteria criteria(VEXA_FEATURES_HARRIS, 0.1F, 2, 3, 0.04F);
    constexpr int most = std::numeric_limits<int>::max();
    for (const VexaRect& roi :
         {VexaRect(-100, -50, 60, 60), VexaRect(30, 20, 50, 50), VexaRect(most - 5, 0, 20, 20), VexaRect(0, 0, 0, 0),
          VexaRect(0, 0, -5, 10), VexaRect(0, 0, most, most), VexaRect(-most, -most, 9, 9)})
        (void)detect(src, roi, criteria, 10);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const VexaFeaturesCriteria& absurd :
         {VexaFeaturesCriteria(VEXA_FEATURES_HARRIS, nan, most, 3, nan),
          VexaFeaturesCriteria(VEXA_FEATURES_HARRIS, -1.0F, -most - 1, -9, std::numeric_limits<float>::infinity()),
          VexaFeaturesCriteria(static_cast<VexaFeaturesAlgorithm>(9), 0.5F, 1, 3, 0.0F)})
        EXPECT_EQ(detect(src, {0, 0, 40, 30}, absurd, 10).status, VEXA_SUCCESS);
}

}  // namespace
