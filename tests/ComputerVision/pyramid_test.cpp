/// @file
/// Pyramids against their definition by public operations, their sizes and order, and what they hand back without a
/// level.

#include <limits>

#include "images.h"

namespace {

using namespace kit;
namespace al = vexa::arithmeticLogical;
namespace gt = vexa::geometryTransforms;

constexpr VexaStatus success = VEXA_SUCCESS;
constexpr VexaStatus invalid = VEXA_INVALID_ARG_ERROR;
constexpr VexaInterpolationType linear = VEXA_INTER_LINEAR;
constexpr VexaInterpolationType nearest = VEXA_INTER_NEAREST;

template <typename T>
void expectEqual(const VexaImage& one, const VexaImage& other)
{
    ASSERT_EQ(one.width(), other.width());
    ASSERT_EQ(one.height(), other.height());
    EXPECT_EQ(download<T>(one), download<T>(other));
}

void expectSizes(const VexaPyramid& pyramid, const std::vector<VexaSize>& sizes)
{
    ASSERT_EQ(pyramid.levels(), static_cast<int>(sizes.size()));
    for (int i = 0; i < pyramid.levels(); ++i) {
        const VexaSize& size = sizes[static_cast<std::size_t>(i)];
        EXPECT_EQ(pyramid[i].isInitialized(), size.width > 0 && size.height > 0) << "level " << i;
        EXPECT_EQ(pyramid[i].width(), pyramid[i].isInitialized() ? size.width : 0) << "level " << i;
        EXPECT_EQ(pyramid[i].height(), pyramid[i].isInitialized() ? size.height : 0) << "level " << i;
    }
}

/// Level 0 is the largest; sizes are cut down to whole pixels from level to level, and levels without pixels are empty.
TEST(Pyramid, Sizes)
{
    const struct {
        VexaSize size;
        int levels;
        float scale;
        std::vector<VexaSize> expected;
    } cases[] = {{{101, 64}, 4, 0.5F, {{101, 64}, {50, 32}, {25, 16}, {12, 8}}},
                 {{100, 30}, 3, 0.7F, {{100, 30}, {70, 21}, {49, 14}}},
                 {{10, 7}, 3, 1.5F, {{22, 15}, {15, 10}, {10, 7}}},
                 {{10, 7}, 2, 1.0F, {{10, 7}, {10, 7}}},
                 {{5, 9}, 4, 0.25F, {{5, 9}, {1, 2}, {0, 0}, {0, 0}}}};
    for (const auto& one : cases) {
        SCOPED_TRACE(testing::Message() << one.size.width << "x" << one.size.height << ", scale " << one.scale);
        VexaPyramid pyramid;
        ASSERT_EQ(pyramid.create(one.size, VEXA_16UC3, one.levels, one.scale), success);
        EXPECT_TRUE(pyramid.isInitialized());
        EXPECT_EQ(pyramid.scale(), one.scale);
        expectSizes(pyramid, one.expected);
        EXPECT_EQ(pyramid.largest().type(), VEXA_16UC3);
        EXPECT_EQ(&pyramid.largest(), &pyramid[0]);
        EXPECT_EQ(&pyramid.smallest(), &pyramid[one.levels - 1]);
        const VexaPyramid constructed(one.size, VEXA_16UC3, one.levels, one.scale);
        expectSizes(constructed, one.expected);
    }
}

TEST(Pyramid, RefusedArgumentsLeaveItEmpty)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const VexaImage src = noise<u8>({16, 16}, 1, 1);
    VexaPyramid pyramid;
    EXPECT_EQ(pyramid.create(VexaSize(16, 16), VEXA_8UC1, 0, 0.5F), invalid);
    EXPECT_EQ(pyramid.create(VexaSize(16, 16), VEXA_8UC1, -3, 0.5F), invalid);
    for (const float scale : {0.0F, -0.5F, nan}) {
        EXPECT_EQ(pyramid.create(VexaSize(16, 16), VEXA_8UC1, 2, scale), invalid);
        EXPECT_EQ(pyramid.create(src, 2, scale, linear), invalid);
        EXPECT_EQ(pyramid.createGaussian(src, 2, scale, VexaSize(3, 3), 1.0F, linear), invalid);
        EXPECT_EQ(pyramid.createLaplacian(src, 2, scale, VexaSize(3, 3), 1.0F, linear), invalid);
    }
    EXPECT_FALSE(pyramid.isInitialized());
    EXPECT_EQ(pyramid.levels(), 0);
    EXPECT_EQ(pyramid.release(), success);
    EXPECT_FALSE(VexaPyramid(src, 0, 0.5F, linear).isInitialized());
}

/// A filled pyramid stays as it is until it is released.
TEST(Pyramid, IsFilledOnce)
{
    VexaPyramid pyramid(VexaSize(16, 12), VEXA_8UC1, 2, 0.5F);
    EXPECT_EQ(pyramid.create(VexaSize(99, 99), VEXA_32FC1, -1, -1.0F), success);
    EXPECT_EQ(pyramid.create(VexaImage(), 0, 0.0F, linear), success);
    expectSizes(pyramid, {{16, 12}, {8, 6}});
    EXPECT_EQ(pyramid.release(), success);
    EXPECT_FALSE(pyramid.isInitialized());
    EXPECT_EQ(pyramid.levels(), 0);
    EXPECT_EQ(pyramid.scale(), 0.0F);
    EXPECT_EQ(pyramid.release(), success);
    EXPECT_EQ(pyramid.create(VexaSize(4, 4), VEXA_32FC1, 1, 0.5F), success);
    expectSizes(pyramid, {{4, 4}});
}

/// What is written into the stand-in of a missing level is gone with the next one that is asked for.
TEST(Pyramid, MissingLevelsAreANullImage)
{
    VexaPyramid empty;
    VexaPyramid pyramid(VexaSize(8, 8), VEXA_8UC1, 2, 0.5F);
    const VexaPyramid& constant = pyramid;
    EXPECT_EQ(&empty.largest(), &empty.smallest());
    EXPECT_EQ(&empty[0], &empty.largest());
    EXPECT_EQ(&pyramid[-1], &empty.largest());
    EXPECT_EQ(&constant[2], &empty.largest());
    pyramid[2].create(3, 3, VEXA_8UC1);
    EXPECT_TRUE(constant[-1].isInitialized());
    EXPECT_FALSE(pyramid[-1].isInitialized());
}

/// Every level is resized from the source; enlarging is linear, whatever is asked for.
TEST(Pyramid, OfAnImage)
{
    const VexaImage src = noise<u8>({37, 23}, 3, 2);
    for (const float scale : {0.5F, 1.0F, 1.5F})
        for (const VexaInterpolationType type : {nearest, linear}) {
            SCOPED_TRACE(testing::Message() << "scale " << scale << ", interpolation " << type);
            VexaPyramid pyramid;
            ASSERT_EQ(pyramid.create(src, 3, scale, type), success);
            for (int i = 0; i < 3; ++i) {
                VexaImage level(pyramid[i].width(), pyramid[i].height(), VEXA_8UC3);
                ASSERT_EQ(gt::resize(src, level, scale < 1.0F ? type : linear), success);
                expectEqual<u8>(pyramid[i], level);
            }
        }
    EXPECT_EQ(VexaPyramid(src, 2, 0.5F, linear).smallest().width(), 18);
    VexaPyramid ofNothing;
    EXPECT_EQ(ofNothing.create(VexaImage(), 2, 0.5F, linear), success);
    EXPECT_FALSE(ofNothing[0].isInitialized());
}

/// The steps of Gaussian and Laplacian pyramids, with the filter and the interpolation of the tests.
class Steps {
public:
    VexaImage blurred(const VexaImage& image) const
    {
        VexaImage result;
        EXPECT_EQ(vexa::imageFiltering::imageFilter(image, result, _filter), success);
        return result;
    }

    static VexaImage resized(const VexaImage& image, int width, int height)
    {
        VexaImage result(width, height, image.type());
        EXPECT_EQ(gt::resize(image, result, nearest), success);
        return result;
    }

    static VexaImage resized(const VexaImage& image, const VexaImage& like)
    {
        return resized(image, like.width(), like.height());
    }

    static VexaImage difference(const VexaImage& image, const VexaImage& other)
    {
        VexaImage result;
        EXPECT_EQ(al::subtract(image, other, result), success);
        return result;
    }

private:
    VexaFilter _filter = VexaSpecialFilters::gaussian(VexaSize(5, 3), 0.8F);
};

template <typename T>
void expectGaussian(const VexaImage& src, float scale)
{
    const Steps steps;
    VexaPyramid pyramid;
    ASSERT_EQ(pyramid.createGaussian(src, 3, scale, VexaSize(5, 3), 0.8F, nearest), success);
    if (scale < 1.0F) {
        expectEqual<T>(pyramid[0], src);
        for (int i = 1; i < 3; ++i)
            expectEqual<T>(pyramid[i], steps.resized(steps.blurred(pyramid[i - 1]), pyramid[i]));
    } else {
        expectEqual<T>(pyramid[2], src);
        for (int i = 1; i >= 0; --i)
            expectEqual<T>(pyramid[i], steps.blurred(steps.resized(pyramid[i + 1], pyramid[i])));
    }
}

template <typename T>
void expectLaplacian(const VexaImage& src, float scale)
{
    const Steps steps;
    VexaPyramid bands, sizes;
    ASSERT_EQ(bands.createLaplacian(src, 3, scale, VexaSize(5, 3), 0.8F, nearest), success);
    ASSERT_EQ(sizes.create(src, 3, scale, nearest), success);
    VexaImage level = src;
    if (scale < 1.0F) {
        for (int i = 0; i < 3; ++i) {
            const VexaImage blurred = steps.blurred(level);
            const VexaImage next = i < 2 ? steps.resized(blurred, sizes[i + 1])
                                         : steps.resized(blurred, level.width() / 2, level.height() / 2);
            expectEqual<T>(bands[i], steps.difference(level, steps.resized(next, level)));
            level = next;
        }
    } else {
        for (int i = 2; i >= 0; --i) {
            const VexaImage next = i > 0 ? steps.resized(level, sizes[i - 1])
                                         : steps.resized(level, 2 * level.width(), 2 * level.height());
            expectEqual<T>(bands[i], steps.difference(level, steps.resized(steps.blurred(next), level)));
            level = next;
        }
    }
}

TEST(Pyramid, GaussianAndLaplacian)
{
    for (const float scale : {0.5F, 0.7F, 1.0F, 1.6F}) {
        SCOPED_TRACE(testing::Message() << "scale " << scale);
        expectGaussian<u8>(noise<u8>({61, 47}, 3, 3), scale);
        // Levels of exactly half the size.
        expectGaussian<u8>(noise<u8>({64, 48}, 1, 9), scale);
        expectGaussian<u16>(noise<u16>({132, 68}, 3, 10), scale);
        expectGaussian<f32>(noise<f32>({40, 32}, 1, 4), scale);
        expectLaplacian<u8>(noise<u8>({61, 47}, 3, 5), scale);
        expectLaplacian<f32>(noise<f32>({40, 32}, 1, 6), scale);
    }
}

TEST(Pyramid, OneLevel)
{
    const VexaImage src = noise<u8>({16, 16}, 1, 7);
    VexaPyramid pyramid;
    ASSERT_EQ(pyramid.createGaussian(src, 1, 0.5F, VexaSize(3, 3), 1.0F, linear), success);
    expectEqual<u8>(pyramid[0], src);
}

/// Levels that have no pixels are passed over.
TEST(Pyramid, MoreLevelsThanPixels)
{
    const VexaImage src = noise<u8>({9, 5}, 1, 8);
    VexaPyramid gaussian, laplacian;
    EXPECT_EQ(gaussian.createGaussian(src, 8, 0.5F, VexaSize(3, 3), 1.0F, linear), success);
    EXPECT_EQ(laplacian.createLaplacian(src, 8, 0.5F, VexaSize(3, 3), 1.0F, linear), success);
    EXPECT_EQ(gaussian.levels(), 8);
    EXPECT_FALSE(gaussian.smallest().isInitialized());
    EXPECT_FALSE(laplacian.smallest().isInitialized());
    EXPECT_EQ(gaussian[2].width(), 2);
}

}  // namespace
