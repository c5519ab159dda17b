// SPDX-License-Identifier: Apache-2.0
// What a standard client sets of the picture is seen in the document, without a reload.
#include "browser_fixture.h"

#include <cstdlib>

namespace
{

class ScreenPicture : public BrowserTest
{
  protected:
    void expectSet(const std::string &object, const std::string &method, const std::string &arguments)
    {
        EXPECT_EQ(call(object, method, arguments), "0") << object << " " << method << " " << arguments;
    }
    void expectPlace(const std::string &selector, const char *x, const char *y, const char *width,
                     const char *height)
    {
        expectSeen("['x', 'y', 'width', 'height'].map((each) => $('" + selector + "').getAttribute(each))",
                   {x, y, width, height});
    }
    static std::string reference(const std::string &object)
    {
        const std::string name = object.substr(0, object.find('/'));
        return told("SCREEN_REFERENCE_HOST") + "/root/cimv2:ZT_Marovelton_" + name +
               ".InstanceID=\"ZT:Marovelton_" + name + ":" + object.substr(object.find('/') + 1) + "\"";
    }
    void selectInput(const char *number)
    {
        expectSet("Monitor", "SetSelectedVideoInput",
                  "VideoInput=" + reference(std::string("VideoInput/") + number));
    }
    void expectMessage(const std::string &words)
    {
        expectSeen(text("#message"), words);
        expectSeen(attribute("#message", "visibility"), "visible");
    }
};

const std::string first = "#first-picture";
const std::string second = "#second-picture";

} // namespace

TEST_F(ScreenPicture, IsThatOfTheInput)
{
    expectSeen(attribute(first, "data-input"), "1");
    expectPlace(first + " > svg", "0", "0", "2560", "1440");
    EXPECT_EQ(look("document.title"), "Desk monitor (simulated)");
    selectInput("2");
    expectSeen(attribute(first, "data-input"), "2");
    expectSeen(attribute(first, "data-seen"), "0 0 4096 2160");
    expectPlace(first + " > svg", "0", "45", "2560", "1350");
    expectSeen(text(first + " .image-text"), "Display Port 2  4096 × 2160");
    expectSeen(text("[data-fact=input] dd"), "Display Port 2, 4096 × 2160");
    selectInput("3");
    expectSeen(attribute(first, "data-signal"), "none");
    expectSeen(attribute(first + " .no-signal", "visibility"), "visible");
    expectSeen(text("[data-fact=input] dd"), "HDMI, no signal");
}

TEST_F(ScreenPicture, HasItsAspect)
{
    selectInput("2");
    expectSet("ImageAdjustment", "SetDisplayAspectRatio", "DisplayAspectRatio=\"1\"");
    expectSeen(attribute(first, "data-seen"), "128 0 3840 2160");
    expectPlace(first + " > svg", "0", "0", "2560", "1440");
    expectSet("ImageAdjustment", "SetDisplayAspectRatio", "DisplayAspectRatio=\"2\"");
    expectSeen(attribute(first, "data-seen"), "0 0 4096 2160");
    expectPlace(first + " > svg", "0", "0", "2560", "1440");
    expectSet("ImageAdjustment", "SetDisplayAspectRatio", "DisplayAspectRatio=\"3\"");
    expectPlace(first + " > svg", "320", "0", "1920", "1440");
    expectSet("ImageAdjustment", "SetDisplayAspectRatio", "DisplayAspectRatio=\"4\"");
    expectSeen(attribute(first, "data-seen"), "0 0 2560 1440");
}

TEST_F(ScreenPicture, ShowsTheRegionOfA4KPicture)
{
    expectSeen(attribute("#region", "visibility"), "hidden");
    expectSet("ImageAdjustment", "SetDisplayAspectRatio", "DisplayAspectRatio=\"4\"");
    expectSeen(attribute("#region", "visibility"), "visible");
    expectSet("ImageAdjustment", "Set4KRegionPosition",
              "Position4KRegionX=\"640\",Position4KRegionY=\"360\"");
    expectSeen(attribute(first, "data-seen"), "640 360 2560 1440");
    // 240 units of the small map are 3840 pixels.
    expectPlace("#region .locator-window", "40", "22.5", "160", "90");
    expectSeen(text("[data-fact=aspect] dd"), "Pixel for pixel, from 640, 360");
    expectSet("ImageAdjustment", "SetDisplayed4KCorner", "");
    expectSeen(attribute(first, "data-seen"), "1280 0 2560 1440");
    expectSet("ImageAdjustment", "Set4KSourceScaling", "SourceScaling4K=\"2\"");
    expectSeen("$('[data-setting=source_scaling_4k]').selectedOptions[0].textContent", "Scaling 2");
}

TEST_F(ScreenPicture, HasOverscanLevelsAndBlueOnly)
{
    expectSet("ImageAdjustment", "SetOverscanFrame", "OverscanFrame=\"true\"");
    expectSeen(attribute(first, "data-seen"), "192 108 3456 1944");
    expectSeen(attribute(first, "filter"), "none");
    expectSet("ImageAdjustment", "SetUseVideoLevels", "UseVideoLevels=\"true\"");
    expectSeen(attribute(first, "filter"), "url(#video-levels)");
    expectSeen(attribute("#pictures", "filter"), "none");
    expectSet("ImageAdjustment", "SetShowBlueChannel", "ShowBlueChannel=\"true\"");
    expectSeen(attribute("#pictures", "filter"), "url(#blue-only)");
}

TEST_F(ScreenPicture, ShowsTheCroppedRegionWithItsOpacity)
{
    selectInput("2");
    const std::string cropped = first + " .cropped";
    expectSeen(attribute(first, "data-input"), "2");
    expectSeen(attribute(cropped, "visibility"), "hidden");
    expectSet("ImageAdjustment", "SetDCIImageRegion", "DCIImageRegion=\"2\"");
    expectSeen(attribute(cropped, "visibility"), "inherit");
    expectSeen(attribute(cropped, "fill-opacity"), "1");
    // In units of which 900 are 2160 pixels: 222 pixels are cut above and below.
    expectSeen(attribute(cropped, "d") + ".split('M')[2]",
               "0 92.5h1706.6666666666667v715h-1706.6666666666667Z");
    expectSet("ImageAdjustment", "SetShowCroppedRegion", "ShowCroppedRegion=\"true\"");
    expectSeen(attribute(cropped, "fill-opacity"), "0.5");
    expectSet("ImageAdjustment", "SetCroppedRegionOpacity", "CroppedRegionOpacity=\"75\"");
    expectSeen(attribute(cropped, "fill-opacity"), "0.75");
}

TEST_F(ScreenPicture, HasASecondInItOrBesideIt)
{
    expectSeen(attribute(second, "display"), "none");
    expectSet("PictureInPicture", "SetPIPMode", "PIPMode=\"1\"");
    expectSeen(attribute(second, "display"), "inline");
    expectSeen(attribute(second, "data-input"), "2");
    expectPlace(second + " > rect", "1688", "880", "712", "400");
    expectSet("PictureInPicture", "SetPIPPosition", "PIPPositionX=\"160\",PIPPositionY=\"161\"");
    expectPlace(second + " > rect", "160", "161", "712", "400");
    expectSet("PictureInPicture", "SetPIPSize", "PIPSize=\"1\"");
    expectPlace(second + " > rect", "160", "161", "284", "160");
    expectSet("PictureInPicture", "SetPIPOverscanEnabled", "PIPOverscanEnabled=\"true\"");
    expectSeen(attribute(second, "data-seen"), "205 108 3686 1944");
    expectSet("PictureInPicture", "SetUseVideoLevels", "UseVideoLevels=\"true\"");
    expectSeen(attribute(second, "filter"), "url(#video-levels)");
    expectSet("PictureInPicture", "SetDigitalCinemaOption", "DigitalCinemaOption=\"1\"");
    expectSeen(attribute(second + " .cropped", "visibility"), "inherit");
    expectSet("PictureInPicture", "SwapPrimaryPIPInputs", "");
    expectSeen(attribute(first, "data-input"), "2");
    expectSeen(attribute(second, "data-input"), "1");
    expectSet("PictureInPicture", "SetPIPInputSource", "PIPInputSource=\"2\"");
    expectSeen(attribute(second, "data-input"), "3");
    expectSeen(text("[data-fact=second] dd"), "In the picture, HDMI");
    expectSet("PictureInPicture", "SetPIPMode", "PIPMode=\"2\"");
    expectPlace(second + " > rect", "1280", "0", "1280", "1440");
    expectPlace(first + " > rect", "0", "0", "1280", "1440");
}

TEST_F(ScreenPicture, HasItsTestPatternsInTheirColour)
{
    // How many elements a pattern is drawn with, and the colour of the last.
    struct Pattern {
        const char *number;
        int elements;
        const char *last;
    };
    expectSeen(attribute("#pattern", "data-pattern"), "");
    expectSet("TestPatternGenerator", "SetEnabled", "Enabled=\"true\"");
    expectSeen(attribute("#pattern", "data-pattern"), "0 255 255 255");
    expectSet("TestPatternGenerator", "SetRGBValue", "RValue=\"200\",GValue=\"100\",BValue=\"50\"");
    for (const Pattern &each : {
             Pattern{"0", 1, "rgb(200 100 50)"},
             Pattern{"1", 2, "url(#pattern-ramp)"},
             Pattern{"2", 2, "url(#pattern-ramp)"},
             Pattern{"3", 11, "rgb(200 100 50)"},
             Pattern{"4", 8, "rgb(0 0 0)"},
             Pattern{"5", 73, "rgb(200 100 50)"},
             Pattern{"6", 28, "rgb(200 100 50)"},
             Pattern{"7", 2, "rgb(200 100 50)"},
             Pattern{"8", 8, "none"},
         }) {
        expectSet("TestPatternGenerator", "SetTestPattern",
                  std::string("TestPattern=\"") + each.number + "\"");
        expectSeen(attribute("#pattern", "data-pattern"), std::string(each.number) + " 200 100 50");
        EXPECT_EQ(look("$('#pattern').childElementCount"), each.elements) << each.number;
        EXPECT_EQ(look("$('#pattern').lastChild.getAttribute('fill')"), each.last) << each.number;
    }
    expectSet("TestPatternGenerator", "SetEnabled", "Enabled=\"false\"");
    expectSeen(attribute("#pattern", "data-pattern"), "");
}

TEST_F(ScreenPicture, HasItsMenuWhereClientsPutIt)
{
    expectSeen(attribute("#menu", "visibility"), "hidden");
    expectSet("OSDMenuAndMessages", "SetOSDPosition", "OSDPositionX=\"300\",OSDPositionY=\"200\"");
    expectSeen(attribute("#menu", "visibility"), "visible");
    expectSeen(attribute("#menu", "transform"), "translate(300 200)");
    expectSet("OSDMenuAndMessages", "SetOpacity", "Opacity=\"37.5\"");
    expectSeen(attribute("#menu", "opacity"), "0.375");
    expectSet("OSDMenuAndMessages", "SetDisplayRotation", "DisplayRotation=\"1\"");
    expectSeen(attribute("#menu", "transform"), "translate(888 200) rotate(90)");
    expectSet("OSDMenuAndMessages", "SetOSDPosition", "OSDPositionX=\"2560\",OSDPositionY=\"1440\"");
    expectSeen(attribute("#menu", "transform"), "translate(2560 740) rotate(90)"); // it stays on the panel
    expectSet("OSDMenuAndMessages", "SetLanguage", "Language=\"1\"");
    expectSeen("[...document.querySelectorAll('#menu .menu-value')].at(-1).textContent", "Code 4");
}

TEST_F(ScreenPicture, HasMessagesForTheirTime)
{
    expectSet("OSDMenuAndMessages", "SetMenuAndMessageTimeOut", "MenuAndMessageTimeOut=\"5\"");
    expectSet("Monitor", "SetActiveColorSpace", "ColorSpace=" + reference("ColorSpace/3"));
    expectMessage("Rec.709Gamma 2.40, 100 cd/m²");
    selectInput("2");
    expectMessage("Display Port 24096 × 2160");
    expectSeen(attribute("#message", "visibility"), "hidden"); // when its time is over
    for (const char *each : {"SetShowInfoWhenColorSpaceChanges", "SetShowInfoWhenInputSourceChanges",
                             "SetShowInfoWhenPoweredOn"}) {
        expectSet("OSDMenuAndMessages", each, std::string(each + 3) + "=\"false\"");
    }
    expectSet("Monitor", "SetActiveColorSpace", "ColorSpace=" + reference("ColorSpace/6"));
    expectSeen(text("[data-fact=preset] dd"), "DCI P3, gamma 2.60");
    selectInput("1");
    expectSeen(attribute(first, "data-input"), "1");
    EXPECT_EQ(look(attribute("#message", "visibility")), "hidden");
}

TEST_F(ScreenPicture, IsDarkInStandby)
{
    expectSet("Monitor", "SetSoftPowerState", "SoftPowerState=\"0\"");
    expectSeen(attribute("#picture", "data-power"), "standby");
    expectSeen(attribute("#dark", "fill-opacity"), "1.000");
    expectSeen(attribute("#picture", "aria-label"), "The monitor's picture: dark, as it is in standby.");
    monitor("set soft_power_state 1");
    expectSeen(attribute("#picture", "data-power"), "on");
    expectMessage("MaroveltonNative, 250 cd/m²");
}

TEST_F(ScreenPicture, SaysWhenRecalibrationIsDue)
{
    expectSeen(attribute("#recalibration", "visibility"), "hidden");
    expectSet("Monitor", "SetRecalibrationAlarmDuration", "RecalibrationAlarmDuration=\"300\"");
    expectSeen(attribute("#recalibration", "visibility"), "visible");
    expectSeen(text("[data-fact=calibration] dd"), "312 h ago, due");
    expectSet("OSDMenuAndMessages", "SetNotifyWhenRecalibrationIsDue",
              "NotifyWhenReCalibrationIsDue=\"false\"");
    expectSeen(attribute("#recalibration", "visibility"), "hidden");
}

TEST_F(ScreenPicture, HasItsLuminanceAsNumberAndAsLight)
{
    expectSeen(text("[data-fact=luminance] dd"), "250 cd/m²");
    expectSeen(attribute("#dark", "fill-opacity"), "0.000");
    expectSet("ColorSpace/1", "SetDisplayLuminance", "Luminance=\"48\"");
    expectSeen(text("[data-fact=luminance] dd"), "48 cd/m²");
    expectSeen(attribute("#dark", "fill-opacity"), "0.439"); // 1 - (48 / 250) ^ 0.35
    expectSeen("$('#halo').style.getPropertyValue('--light')", "0.561");
}
