/// @file
/// Windows on a display, which is started around this program: every format can be shown, garbled or not.

#include <gtest/gtest.h>

#include "images.h"

namespace {

TEST(WindowsOnDisplay, ShowEveryFormat)
{
    EXPECT_EQ(vexa::createWindow("resizable", true), VEXA_SUCCESS);
    EXPECT_EQ(vexa::createWindow("fixed", false), VEXA_SUCCESS);
    for (int type = VEXA_8UC1; type <= VEXA_64FC4; ++type) {
        SCOPED_TRACE(testing::Message() << "type " << type);
        VexaImage image(37, 21, static_cast<VexaType>(type));
        kit::fillBuffer(image, 60);
        EXPECT_EQ(vexa::showImage("resizable", image), VEXA_SUCCESS);
        EXPECT_EQ(vexa::showImage("fixed", image), VEXA_SUCCESS);
        EXPECT_EQ(vexa::waitKeyPress(5), -1);
    }
    EXPECT_EQ(vexa::showImage("fixed", VexaImage()), VEXA_IMAGE_NOT_INITIALIZED);
    EXPECT_EQ(vexa::showImage("never opened", VexaImage(8, 8, VEXA_8UC1)), VEXA_SUCCESS);
    EXPECT_EQ(vexa::waitKeyPress(50), -1);
}

}  // namespace
