/// @file
/// What operations are for, on the photographs: spoilt by a known model, they come back closer to the original.

#include "images.h"
#include "quality/photometric.h"
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

}  // namespace
