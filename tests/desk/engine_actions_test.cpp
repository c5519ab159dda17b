// SPDX-License-Identifier: Apache-2.0
// Register writes that do more than store their value.
#include "desk_fixture.h"

#include <monitor_support.h>

namespace
{

class EngineActions : public DeskTest
{
  protected:
    void SetUp() override
    {
        DeskTest::SetUp();
        startEngine();
    }
};

TEST_F(EngineActions, LuminanceIsTheActivePresetsAlone)
{
    request("01000000 0300 0700 00 01 00  00 01 00 02000000"); /* Rec.709 becomes active */
    request("01000000 0300 0700 00 01 00  00 00 00 78000000"); /* 120 */
    ColorSpaceInfo info;
    ASSERT_EQ(GetColorSpaceInfoById(&info, 2), 0);
    EXPECT_EQ(info.DisplayLuminance, 120);
    ASSERT_EQ(GetColorSpaceInfoById(&info, 0), 0);
    EXPECT_EQ(info.DisplayLuminance, 250);
    EXPECT_EQ(registerText(0, 0), "120");
    MonitorInfo monitor;
    ASSERT_EQ(GetMoinitorInfo(&monitor), 0);
    EXPECT_EQ(+monitor.ActiveColorSpace, 2);
}

TEST_F(EngineActions, FactoryCalibrationIsAllowedAfterAnAdjustmentAndNotAfterTheReset)
{
    EXPECT_EQ(registerText(19, 0), "0");
    EXPECT_EQ(registerText(20, 0), "1");
    request("01000000 0300 0700 00 01 00  00 00 00 78000000");
    EXPECT_EQ(registerText(19, 0), "1");
    EXPECT_EQ(registerText(20, 0), "0");
    EXPECT_EQ(request("01000000 0300 0700 00 01 0b  00 13 00 00000000").bytes.at(9), 0);
    EXPECT_EQ(registerText(0, 0), "250");
    EXPECT_EQ(registerText(19, 0), "0");
    EXPECT_EQ(registerText(20, 0), "1");
}

TEST_F(EngineActions, LastCalibrationRestoresWhatWasCalibrated)
{
    ASSERT_EQ(command("set preset1.calibrated_luminance 200"), 0);
    request("01000000 0300 0700 00 01 00  00 00 00 78000000");
    EXPECT_EQ(request("01000000 0300 0700 00 01 0b  00 14 00 00000000").bytes.at(9), 0);
    EXPECT_EQ(registerText(0, 0), "200");
    EXPECT_EQ(registerText(20, 0), "1");
    EXPECT_EQ(registerText(19, 0), "1"); /* 200 is not the factory's */
    request("01000000 0300 0700 00 01 0b  00 13 00 00000000");
    EXPECT_EQ(registerText(0, 0), "250");
    EXPECT_EQ(registerText(19, 0), "0");
}

TEST_F(EngineActions, ColorSpaceResetRestoresAllPresets)
{
    request("01000000 0300 0700 00 01 00  00 00 00 78000000");
    request("01000000 0300 0700 00 01 00  00 01 00 01000000");
    request("01000000 0300 0700 00 01 00  00 00 00 79000000");
    request("01000000 0300 0700 00 01 01  00 19 00 01000000");
    EXPECT_EQ(request("01000000 0300 0700 00 01 0d  00 96 00 00000000").bytes.at(9), 0);
    EXPECT_EQ(registerText(1, 0), "0");
    ColorSpaceInfo info;
    ASSERT_EQ(GetColorSpaceInfoById(&info, 0), 0);
    EXPECT_EQ(info.DisplayLuminance, 250);
    ASSERT_EQ(GetColorSpaceInfoById(&info, 1), 0);
    EXPECT_EQ(info.DisplayLuminance, 160);
    EXPECT_EQ(registerText(25, 1), "1") << "the input is not a matter of colour";
}

TEST_F(EngineActions, InputsDecideTheResolution)
{
    request("01000000 0300 0700 00 01 01  00 19 00 02000000");
    ImageAdjustment image;
    ASSERT_EQ(GetImageAdjustmentInfo(&image), 0);
    EXPECT_EQ(image.HorizontalResolution, 1920);
    EXPECT_EQ(image.VerticalResolution, 1080);
    MonitorInfo monitor;
    ASSERT_EQ(GetMoinitorInfo(&monitor), 0);
    EXPECT_EQ(+monitor.ActiveVideoInput, 2);
}

TEST_F(EngineActions, SwapExchangesMainAndInsetInput)
{
    request("01000000 0300 0700 00 01 03  00 39 00 02000000"); /* inset: HDMI */
    EXPECT_EQ(request("01000000 0300 0700 00 01 03  00 3a 00 00000000").bytes.at(9), 0);
    EXPECT_EQ(registerText(25, 1), "2");
    EXPECT_EQ(registerText(57, 3), "0");
    EXPECT_EQ(request("01000000 0300 0700 00 01 0d  00 9e 00 00000000").bytes.at(9), 0);
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_EQ(registerText(57, 3), "2");
}

TEST_F(EngineActions, NextActiveInputPassesOverInputsWithoutSignal)
{
    const char *next = "01000000 0300 0700 00 01 0d  00 98 00 00000000";
    request(next);
    EXPECT_EQ(registerText(25, 1), "1");
    request(next); /* HDMI has no signal */
    EXPECT_EQ(registerText(25, 1), "0");
    ASSERT_EQ(command("set input2.active 0"), 0);
    request(next);
    EXPECT_EQ(registerText(25, 1), "0");
    ASSERT_EQ(command("set input3.active 1"), 0);
    request(next);
    EXPECT_EQ(registerText(25, 1), "2");
}

TEST_F(EngineActions, CornersOfThe4kPictureGoRoundClockwise)
{
    const char *next = "01000000 0300 0700 00 01 0d  00 9c 00 00000000";
    const char *expected[][2] = {{"1280", "0"}, {"1280", "720"}, {"0", "720"}, {"0", "0"}};
    for (const auto &[x, y] : expected) {
        request(next);
        EXPECT_EQ(registerText(44, 2), x);
        EXPECT_EQ(registerText(45, 2), y);
    }
    request(next);
    ImageAdjustment image;
    ASSERT_EQ(GetImageAdjustmentInfo(&image), 0);
    EXPECT_EQ(image.Displayed4KCorner, 1);
    EXPECT_EQ(image.Region4KPositionX, 1280);
    EXPECT_EQ(image.Region4KPositionY, 0);
}

TEST_F(EngineActions, CornersOfACinemaPictureLeaveTheCutRegionOut)
{
    const char *next = "01000000 0300 0700 00 01 0d  00 9c 00 00000000";
    request("01000000 0300 0700 00 01 01  00 19 00 01000000"); /* the second input: 4096 x 2160 */
    request("01000000 0300 0700 00 01 02  00 1f 00 01000000"); /* DCI region 1 */
    request(next);
    EXPECT_EQ(registerText(44, 2), "1486");
    request(next);
    request(next);
    EXPECT_EQ(registerText(44, 2), "50");
    EXPECT_EQ(registerText(45, 2), "720");
    request("01000000 0300 0700 00 01 02  00 1f 00 02000000"); /* DCI region 2 */
    request(next);
    EXPECT_EQ(registerText(44, 2), "0");
    EXPECT_EQ(registerText(45, 2), "222");
    request(next);
    request(next);
    EXPECT_EQ(registerText(44, 2), "1536");
    EXPECT_EQ(registerText(45, 2), "498");
}

TEST_F(EngineActions, PositionOf4kRegionComesInOneMessage)
{
    request("01000000 0300 0700 00 02 02  00 2c 00 64000000  00 2d 00 c8000000");
    EXPECT_EQ(registerText(44, 2), "100");
    EXPECT_EQ(registerText(45, 2), "200");
}

TEST_F(EngineActions, PipPositionComesInOneMessage)
{
    const RawMessage reply = request("01000000 0300 0700 00 03 03  00 33 00 04000000"
                                     "00 34 00 a0000000  00 35 00 70030000");
    EXPECT_EQ(reply.bytes.at(9), 0);
    EXPECT_EQ(registerText(51, 3), "4");
    EXPECT_EQ(registerText(52, 3), "160");
    EXPECT_EQ(registerText(53, 3), "880");
}

TEST_F(EngineActions, PipCoordinatesAloneMakeThePositionFree)
{
    request("01000000 0300 0700 00 01 03  00 34 00 c8000000");
    EXPECT_EQ(registerText(51, 3), "4");
    EXPECT_EQ(registerText(52, 3), "200");
}

TEST_F(EngineActions, PipCornersAndSizesMoveTheWindow)
{
    request("01000000 0300 0700 00 01 03  00 36 00 00000000"); /* maximum: 1920 x 1080, lower right */
    EXPECT_EQ(registerText(52, 3), "480");
    EXPECT_EQ(registerText(53, 3), "200");
    EXPECT_EQ(registerText(56, 3), "1920");
    EXPECT_EQ(registerText(55, 3), "1080");
    request("01000000 0300 0700 00 01 03  00 36 00 01000000"); /* minimum */
    EXPECT_EQ(registerText(52, 3), "2116");
    EXPECT_EQ(registerText(53, 3), "1120");
    request("01000000 0300 0700 00 01 0d  00 9f 00 00000000"); /* next corner: lower left */
    EXPECT_EQ(registerText(51, 3), "3");
    EXPECT_EQ(registerText(52, 3), "160");
    EXPECT_EQ(registerText(53, 3), "1120");
    request("01000000 0300 0700 00 01 03  00 33 00 01000000"); /* upper right */
    EXPECT_EQ(registerText(52, 3), "2116");
    EXPECT_EQ(registerText(53, 3), "160");
    /* a free position stays, as far as the larger window leaves it room */
    request("01000000 0300 0700 00 03 03  00 33 00 04000000  00 34 00 e8030000  00 35 00 90010000");
    request("01000000 0300 0700 00 01 03  00 36 00 02000000");
    EXPECT_EQ(registerText(52, 3), "1000");
    EXPECT_EQ(registerText(53, 3), "400");
    request("01000000 0300 0700 00 01 03  00 36 00 00000000");
    EXPECT_EQ(registerText(52, 3), "480");
    EXPECT_EQ(registerText(53, 3), "200");
}

TEST_F(EngineActions, PipHeightTakesTheWidthWithIt)
{
    request("01000000 0300 0700 00 01 03  00 37 00 d0020000"); /* 720 */
    EXPECT_EQ(registerText(56, 3), "1280");
    EXPECT_EQ(registerText(52, 3), "1120");
    EXPECT_EQ(registerText(53, 3), "560");
}

TEST_F(EngineActions, QuickActionsSwitchOverAndBack)
{
    struct {
        const char *bytes;
        int registerId, group;
    } const toggles[] = {{"01000000 0300 0700 00 01 0d  00 99 00 00000000", 35, 2},
                         {"01000000 0300 0700 00 01 0d  00 9a 00 00000000", 36, 2},
                         {"01000000 0300 0700 00 01 0d  00 9b 00 00000000", 37, 2},
                         {"01000000 0300 0700 00 01 0d  00 9d 00 00000000", 50, 3}};
    for (const auto &toggle : toggles) {
        EXPECT_EQ(registerText(toggle.registerId, toggle.group), "0");
        EXPECT_EQ(request(toggle.bytes).bytes.at(9), 0);
        EXPECT_EQ(registerText(toggle.registerId, toggle.group), "1");
        request(toggle.bytes);
        EXPECT_EQ(registerText(toggle.registerId, toggle.group), "0");
    }
    for (const char *scaling : {"1", "2", "3", "0"}) {
        request("01000000 0300 0700 00 01 0d  00 97 00 00000000");
        EXPECT_EQ(registerText(32, 2), scaling);
    }
}

TEST_F(EngineActions, SeveralRegistersComeInOneMessage)
{
    request("01000000 0300 0700 00 03 0f  00 ac 00 0a000000  00 ad 00 14000000  00 ae 00 ff000000");
    TestPatternInfo info;
    ASSERT_EQ(GetTestPatternInfo(&info), 0);
    EXPECT_STREQ(info.RValue, "10");
    EXPECT_STREQ(info.GValue, "20");
    EXPECT_STREQ(info.BValue, "255");
    request("01000000 0300 0700 00 02 06  00 69 00 01000000  00 6a 00 02000000");
    OSDMenuAndMessageInfo menu;
    ASSERT_EQ(GetOSDMenuAndMessagesInfo(&menu), 0);
    EXPECT_EQ(menu.OSDPositionX, 1);
    EXPECT_EQ(menu.OSDPositionY, 2);
}

TEST_F(EngineActions, AMessageIsAppliedWholeOrNotAtAll)
{
    const RawMessage reply =
        request("01000000 0300 0700 00 03 0f  00 ac 00 0a000000  00 ad 00 00010000  00 ae 00 14000000");
    EXPECT_EQ(reply.bytes.at(9), 2);  /* not applied for another's sake */
    EXPECT_EQ(reply.bytes.at(16), 1); /* 256: refused */
    EXPECT_EQ(reply.bytes.at(23), 2);
    EXPECT_EQ(registerText(172, 15), "255");
    EXPECT_EQ(registerText(173, 15), "255");
    EXPECT_EQ(registerText(174, 15), "255");
    EXPECT_TRUE(engineLogged("register 173 in group 15: 256 is outside 0..255; the message was not applied"));
}

TEST_F(EngineActions, OnlyTheCountedEntriesCount)
{
    request("01000000 0300 0700 00 01 0f  00 ac 00 0a000000  00 ad 00 14000000");
    EXPECT_EQ(registerText(172, 15), "10");
    EXPECT_EQ(registerText(173, 15), "255");
    request("01000000 0300 0700 00 00 0f  00 ac 00 0b000000");
    EXPECT_EQ(registerText(172, 15), "10");
}

TEST_F(EngineActions, SoftPowerGoesOffAndOn)
{
    MonitorInfo info;
    request("01000000 0300 0700 00 01 10  00 b4 00 01000000");
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_EQ(+info.SoftPowerState, 0);
    request("01000000 0300 0700 00 01 10  00 b4 00 00000000");
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_EQ(+info.SoftPowerState, 1);
}

TEST_F(EngineActions, TestPatternSwitchCarriesTheStateAsItIs)
{
    TestPatternInfo info;
    request("01000000 0300 0700 00 01 0f  00 ab 00 01000000");
    ASSERT_EQ(GetTestPatternInfo(&info), 0);
    EXPECT_EQ(info.Enabled, 1);
    EXPECT_EQ(registerText(175, 15), "1");
    request("01000000 0300 0700 00 01 0f  00 ab 00 00000000");
    ASSERT_EQ(GetTestPatternInfo(&info), 0);
    EXPECT_EQ(info.Enabled, 0);
}

TEST_F(EngineActions, DisplayPortCompatibilityHasTwoRegisters)
{
    request("01000000 0300 0700 00 01 0b  00 8e 00 01000000");
    EXPECT_EQ(registerText(79, 5), "1");
    EXPECT_EQ(request("01000000 0300 0700 00 01 0b  00 8e 00 02000000").bytes.at(9), 1);
    EXPECT_EQ(registerText(142, 11), "1");
}

TEST_F(EngineActions, DisplaySettingsResetLeavesTheRest)
{
    request("01000000 0300 0700 00 01 06  00 6b 00 05000000"); /* menu time-out */
    request("01000000 0300 0700 00 01 02  00 1e 00 04000000"); /* aspect ratio */
    request("01000000 0300 0700 00 01 05  00 46 00 00000000"); /* power saver */
    ASSERT_EQ(command("set input3.active 1"), 0);
    EXPECT_EQ(request("01000000 0300 0700 00 01 0b  00 90 00 00000000").bytes.at(9), 0);
    EXPECT_EQ(registerText(107, 6), "15");
    EXPECT_EQ(registerText(30, 2), "0");
    EXPECT_EQ(registerText(70, 5), "0");
    EXPECT_EQ(registerText(68, 3), "1");
}

TEST_F(EngineActions, FactoryResetRestoresEverythingButUsersAndFaults)
{
    char error[ERROR_TEXT_SIZE];
    request("01000000 0300 0700 00 01 00  00 01 00 06000000");
    request("01000000 0300 0700 00 01 00  00 00 00 78000000");
    request("01000000 0300 0700 00 01 04  01 57 00 0a010203");
    ASSERT_EQ(UpdateDisplayName("Grading 1", error), 0);
    ASSERT_EQ(command("user add mira --administrator"), 0);
    ASSERT_EQ(command("fault fail-read on GetBezelButtonInfo"), 0);

    EXPECT_EQ(request("01000000 0300 0700 00 01 0b  00 8c 00 00000000").bytes.at(9), 0);

    EXPECT_EQ(registerText(1, 0), "0");
    ColorSpaceInfo preset;
    ASSERT_EQ(GetColorSpaceInfoById(&preset, 6), 0);
    EXPECT_EQ(preset.DisplayLuminance, 100);
    EXPECT_EQ(registerText(87, 4), "192.168.10.20");
    MonitorInfo info;
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DisplayName, "");
    char administrator = 0;
    EXPECT_EQ(IsAdminUser("mira", &administrator, error), 0);
    EXPECT_NE(administrator, 0);
    BezelButtonInfo bezel;
    EXPECT_NE(GetBezelButtonInfo(&bezel), 0);
}

} // namespace
