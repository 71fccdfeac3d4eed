/// @file
/// What operations are for, on the photographs: spoilt by a known model, they come back closer to the original.

#include "images.h"
#include "quality/photometric.h"
#include "quality/stacking.h"
#include "raw.h"

namespace {

namespace co = vexa::colorOperations;

VexaImage photograph(const char* file)
{
    return vexa::io::loadImage(std::string(VEXA_IMAGES "/") + file, VEXA_LOAD_IMAGE_COLOR);
}

constexpr const char* files[] = {"coffee.png", "chelsea.png"};

TEST(Photographs, ArePhotometricallyRestored)
{
    for (const char* const file : files)
        for (const Figure& figure : photometricFigures(photograph(file)))
            EXPECT_GT(figure.psnrAfter, figure.psnrBefore) << file << ", " << figure.operation;
}

/// In every layout, as the frame and the result agree on what is blue only then.
TEST(Photographs, AreDevelopedFromRawFrames)
{
    for (const char* const file : files) {
        const VexaImage photo = photograph(file);
        const Picture truth = pictureOf(photo);
        for (const VexaBayerSeq layout : {VEXA_BAYER_RGGB, VEXA_BAYER_BGGR, VEXA_BAYER_GRBG, VEXA_BAYER_GBRG}) {
            VexaImage raw, plain, directional;
            ASSERT_EQ(mosaic(photo, layout, raw), VEXA_SUCCESS);
            ASSERT_EQ(co::demosaic(raw, plain, layout), VEXA_SUCCESS);
            ASSERT_EQ(co::demosaicDFPD(raw, directional, layout, false), VEXA_SUCCESS);
            const double ratio = psnr(pictureOf(directional), truth);
            EXPECT_GT(ratio, 33.0) << file << ", layout " << layout;
            EXPECT_GT(ratio, psnr(pictureOf(plain), truth)) << file << ", layout " << layout;
        }
    }
}

/// Level by level: filtered, then shrunk.
TEST(Photographs, FormPyramids)
{
    for (const char* const file : files) {
        const VexaImage photo = photograph(file);
        VexaPyramid pyramid;
        ASSERT_EQ(pyramid.createGaussian(photo, 5, 0.5F, VexaSize(5, 5), 1.0F, VEXA_INTER_LINEAR), VEXA_SUCCESS);
        EXPECT_EQ(kit::download<kit::u8>(pyramid[0]), kit::download<kit::u8>(photo));
        for (int i = 1; i < 5; ++i) {
            VexaImage blurred, shrunk(pyramid[i].size(), VEXA_8UC3);
            ASSERT_EQ(vexa::imageFiltering::imageFilter(pyramid[i - 1], blurred,
                                                        VexaSpecialFilters::gaussian(VexaSize(5, 5), 1.0F)),
                      VEXA_SUCCESS);
            ASSERT_EQ(vexa::geometryTransforms::resize(blurred, shrunk, VEXA_INTER_LINEAR), VEXA_SUCCESS);
            EXPECT_EQ(kit::download<kit::u8>(pyramid[i]), kit::download<kit::u8>(shrunk)) << file << ", level " << i;
        }
    }
}

/// A part of a photograph, turned, sheared and moved, is found again to a tenth of a pixel.
TEST(Photographs, AreAligned)
{
    for (const char* const file : files) {
        VexaImage input = vexa::io::loadImage(std::string(VEXA_IMAGES "/") + file, VEXA_LOAD_IMAGE_GRAYSCALE);
        double warp[2][3] = {{1.01, -0.02, 42.3}, {0.015, 0.99, 37.6}};
        double found[2][3] = {{1, 0, 40}, {0, 1, 40}};
        VexaImage templ(input.width() - 90, input.height() - 90, VEXA_8UC1);
        ASSERT_EQ(vexa::geometryTransforms::warpAffineBack(input, templ, warp, VEXA_INTER_LINEAR), VEXA_SUCCESS);
        ASSERT_EQ(vexa::computerVision::findTransformECC(templ, input, found, 100, 1e-7), VEXA_SUCCESS);
        for (const double x : {0.0, templ.width() - 1.0})
            for (const double y : {0.0, templ.height() - 1.0})
                for (int axis = 0; axis < 2; ++axis)
                    EXPECT_NEAR(found[axis][0] * x + found[axis][1] * y + found[axis][2],
                                warp[axis][0] * x + warp[axis][1] * y + warp[axis][2], 0.07)
                        << file << ", corner " << x << ", " << y;
    }
}

/// On even surfaces the frames hardly differ and the measure, which is taken at a coarse scale, may prefer either; that
/// must not be seen.
TEST(Photographs, AreStacked)
{
    for (const char* const file : files) {
        testing::internal::CaptureStdout();
        const StackFigure figure = stackFigure(photograph(file));
        testing::internal::GetCapturedStdout();
        EXPECT_GE(figure.equal, 0.9) << file;
        EXPECT_GE(figure.alike, 0.96) << file;
        EXPECT_GT(figure.psnrStack, figure.psnrFrame + 10) << file;
    }
}

}  // namespace
