// SPDX-License-Identifier: Apache-2.0
// Six states of the page as pictures, for the documentation. They are compared with nothing: letters look
// different from one machine to the next. What they show has been awaited.
#include "browser_fixture.h"

#include <fstream>

namespace
{

class ScreenPictures : public BrowserTest
{
  protected:
    void keep(const std::string &name, int width, int height, const char *scheme)
    {
        browser().show(width, height,
                       {{"prefers-color-scheme", scheme}, {"prefers-reduced-motion", "reduce"}});
        const std::string picture = browser().screenshot();
        EXPECT_TRUE(picture.starts_with("\x89PNG\r\n"));
        EXPECT_GT(picture.size(), 10'000u);
        std::ofstream(told("SCREEN_PICTURES") + "/" + name + ".png", std::ios::binary) << picture;
    }
    void scrollTo(const std::string &selector)
    {
        look("$('" + selector + "').scrollIntoView({ block: 'start' })");
    }
};

} // namespace

TEST_F(ScreenPictures, TheMonitorWithASecondPicture)
{
    EXPECT_EQ(call("PictureInPicture", "SetPIPMode", "PIPMode=\"1\""), "0");
    expectSeen(attribute("#second-picture", "display"), "inline");
    keep("screen", 1600, 1000, "light");
}

TEST_F(ScreenPictures, TheMenuInTheDark)
{
    monitor("set video_input 1");
    monitor("set display_aspect_ratio 4");
    monitor("set scroll_4k_position_x 768");
    monitor("set scroll_4k_position_y 360");
    monitor("set active_color_space 6");
    monitor("set preset7.luminance 200");
    expectSeen(text("[data-fact=luminance] dd"), "200 cd/m²");
    browser().click("#menu-button");
    keep("screen-menu", 1600, 1000, "dark");
}

TEST_F(ScreenPictures, ATestPattern)
{
    monitor("set test_pattern 8");
    monitor("set test_pattern_red 0");
    monitor("set test_pattern_enabled 1");
    expectSeen(attribute("#pattern", "data-pattern"), "8 0 255 255");
    keep("screen-pattern", 1600, 1000, "dark");
}

TEST_F(ScreenPictures, TheDiagramOf1976)
{
    monitor("set active_color_space 5");
    expectSeen(attribute("#presets .active", "data-preset"), "6");
    browser().click("#diagram-uv");
    expectSeen(attribute("#message", "visibility"), "visible");
    keep("screen-colour", 1600, 1000, "light");
}

TEST_F(ScreenPictures, TheWireWithAFault)
{
    browser().click("#fault-lose-reply");
    expectSeen(attribute("#fault-lose-reply", "aria-checked"), "true");
    EXPECT_EQ(call("OSDMenuAndMessages", "SetOSDPosition", "OSDPositionX=\"300\",OSDPositionY=\"200\""),
              "Failed to set the value to OSDPositions.");
    EXPECT_EQ(call("ImageAdjustment", "SetDisplayAspectRatio", "DisplayAspectRatio=\"4\""), "0");
    EXPECT_EQ(
        call("ImageAdjustment", "Set4KRegionPosition", "Position4KRegionX=\"640\",Position4KRegionY=\"360\""),
        "0");
    expectSeen(text("#messages .what"), "SCROLL_4K_POSITION_X = 640, SCROLL_4K_POSITION_Y = 360");
    browser().click("#messages summary");
    browser().show(1600, 1000, {{"prefers-color-scheme", "light"}});
    scrollTo("#wire");
    keep("screen-wire", 1600, 1000, "light");
}

TEST_F(ScreenPictures, OnATelephone)
{
    browser().show(390, 844, {{"prefers-color-scheme", "dark"}});
    keep("screen-narrow", 390, 844, "dark");
}
