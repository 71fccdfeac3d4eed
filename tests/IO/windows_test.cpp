/// @file
/// Windows where there is no display: the calls fail with their statuses, and the process lives on. The toolkit below
/// would end it.

#include <gtest/gtest.h>

#include <cstdlib>

#include "images.h"

namespace {

TEST(Windows, FailQuietlyWithoutADisplay)
{
    const VexaImage image = kit::constant<kit::u8>({8, 6}, 3, 100);
    struct Setting {
        const char* variable;
        const char* value;
    };
    const Setting settings[] = {{"UNRELATED", "1"},
                                {"DISPLAY", ""},
                                {"DISPLAY", ":4087"},
                                {"DISPLAY", "no display"},
                                {"WAYLAND_DISPLAY", "wayland-87"},
                                {"QT_QPA_PLATFORM", "xcb"},
                                {"QT_QPA_PLATFORM", "nonsense"}};
    for (const Setting& setting : settings) {
        SCOPED_TRACE(testing::Message() << setting.variable << "=" << setting.value);
        for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) unsetenv(variable);
        setenv(setting.variable, setting.value, 1);
        EXPECT_EQ(vexa::createWindow("a", true), VEXA_SUCCESS);
        EXPECT_EQ(vexa::createWindow("b", false), VEXA_SUCCESS);
        EXPECT_EQ(vexa::showImage("a", image), VEXA_UNKNOWN_ERROR);
        EXPECT_EQ(vexa::showImage("never opened", image), VEXA_UNKNOWN_ERROR);
        EXPECT_EQ(vexa::showImage("a", VexaImage()), VEXA_IMAGE_NOT_INITIALIZED);
        EXPECT_EQ(vexa::waitKeyPress(1), -1);
        EXPECT_EQ(vexa::waitKeyPress(0), -1) << "must not wait for a key that nobody can press";
    }
}

}  // namespace
