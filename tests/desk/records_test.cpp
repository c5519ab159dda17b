// SPDX-License-Identifier: Apache-2.0
// The readers of the support library: what a new monitor holds, and their failures.
#include "desk_fixture.h"

#include <monitor_support.h>

#include <cstring>
#include <functional>

namespace
{

class Records : public DeskTest
{
};

TEST_F(Records, OfTheMonitor)
{
    MonitorInfo info;
    memset(&info, 0xff, sizeof info);
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DisplayMode, "Single");
    EXPECT_EQ(+info.ActiveColorSpace, 0);
    EXPECT_EQ(+info.ActiveVideoInput, 0);
    EXPECT_EQ(+info.VideoPipelineDelay, 24);
    EXPECT_EQ(+info.LastCalibration, 312);
    EXPECT_EQ(+info.BacklightHours, 1460);
    EXPECT_EQ(+info.Deployment_Date, 1704067200);
    EXPECT_STREQ(info.SerialNumber, "DSK2840017");
    EXPECT_STREQ(info.DisplayName, "");
    EXPECT_STREQ(info.DeploymentLocation, "");
    EXPECT_EQ(+info.AutoSwitchSource, 0);
    EXPECT_EQ(+info.SoftPowerState, 1);
    EXPECT_EQ(+info.RecalibrationAlarmDuration, 1000);
    EXPECT_STREQ(info.PexalVersion, "1.4.2");
}

TEST_F(Records, OfDisplayManagement)
{
    ManagementInfo info;
    ASSERT_EQ(GetDisplayManagementInfo(&info), 0);
    EXPECT_EQ(info.PowerSaverEnabled, 1);
    EXPECT_EQ(info.PowerOnRecallEnabled, 1);
    EXPECT_EQ(info.DDCCICommunicationEnabled, 1);
    EXPECT_EQ(info.EDIDUpdateEnabled, 1);
    EXPECT_EQ(info.HotPlugInitiateEnabled, 0);
    EXPECT_EQ(info.ManageInternalProcessor, 1);
    EXPECT_EQ(info.FWUpdateEnabled, 1);
    EXPECT_EQ(info.CalibrationSupportEnabled, 1);
    EXPECT_EQ(info.DisplayPortHotPlugDetection, 1);
    EXPECT_EQ(info.DisplayPortComapatibility, 0);
}

/* Fields and settings one by one: each setting moves its own field and no other. */
struct Field {
    const char *setting;
    int value;
    int index; /* of the record's 32-bit fields */
};

template <class Record>
void expectFields(const std::vector<Field> &fields, int (*get)(Record *),
                  const std::function<int(const std::string &)> &command)
{
    for (const Field &field : fields) {
        SCOPED_TRACE(field.setting);
        Record before, after;
        ASSERT_EQ(get(&before), 0);
        ASSERT_EQ(command(std::string("set ") + field.setting + " " + std::to_string(field.value)), 0);
        ASSERT_EQ(get(&after), 0);
        for (int i = 0; i < static_cast<int>(sizeof(Record) / 4); ++i) {
            std::int32_t a, b;
            memcpy(&a, reinterpret_cast<const char *>(&before) + 4 * i, 4);
            memcpy(&b, reinterpret_cast<const char *>(&after) + 4 * i, 4);
            if (i == field.index) {
                EXPECT_NE(a, field.value) << "would prove nothing";
                EXPECT_EQ(b, field.value);
            } else {
                EXPECT_EQ(a, b) << "field " << i;
            }
        }
    }
}

TEST_F(Records, OfDisplayManagementFollowTheirSettings)
{
    expectFields<ManagementInfo>({{"power_saver", 0, 0},
                                  {"power_on_recall", 0, 1},
                                  {"ddc_ci_communication", 0, 2},
                                  {"auto_edid_update", 0, 3},
                                  {"hot_plug_initiate", 1, 4},
                                  {"manage_internal_processor", 0, 5},
                                  {"firmware_update_enabled", 3, 6},
                                  {"calibration_support", 0, 7},
                                  {"display_port_hot_plug_detection", 0, 8},
                                  {"display_port_compatibility", 1, 9}},
                                 GetDisplayManagementInfo,
                                 [this](const std::string &c) { return command(c); });
}

TEST_F(Records, OfTheImageFollowTheirSettings)
{
    ImageAdjustment info;
    ASSERT_EQ(GetImageAdjustmentInfo(&info), 0);
    EXPECT_EQ(info.CroppedRegionOpacity, 50);
    EXPECT_EQ(info.HorizontalResolution, 3840);
    EXPECT_EQ(info.VerticalResolution, 2160);
    expectFields<ImageAdjustment>({{"display_aspect_ratio", 4, 0},
                                   {"dci_image_region", 2, 1},
                                   {"show_cropped_region", 1, 3},
                                   {"cropped_region_opacity", 25, 4},
                                   {"use_video_levels", 1, 5},
                                   {"overscan", 1, 6},
                                   {"show_blue_channel", 1, 7},
                                   {"overdrive", 1, 8},
                                   {"deinterlacer", 0, 9},
                                   {"cadence_detection", 0, 10},
                                   {"scroll_4k_state", 1, 11},
                                   {"displayed_4k_corner", 3, 12},
                                   {"scroll_4k_position_x", 1536, 13},
                                   {"scroll_4k_position_y", 720, 14},
                                   {"show_4k_position_overlay", 1, 15},
                                   {"input1.width", 4096, 17},
                                   {"input1.height", 1080, 18}},
                                  GetImageAdjustmentInfo,
                                  [this](const std::string &c) { return command(c); });
    ASSERT_EQ(command("set source_scaling_4k 3"), 0);
    ASSERT_EQ(GetImageAdjustmentInfo(&info), 0);
    EXPECT_EQ(info.CurrentDCIOptions4K, 3);
    EXPECT_EQ(info.SourceScaling4K, 3);
}

TEST_F(Records, OfPictureInPictureFollowTheirSettings)
{
    PexalPIPSettings info;
    ASSERT_EQ(GetPIPSettingsInfo(&info), 0);
    EXPECT_EQ(info.PipMode, 0);
    EXPECT_EQ(info.PipPositionX, 1688);
    EXPECT_EQ(info.PipPositionY, 880);
    EXPECT_EQ(info.PipSize, 2);
    EXPECT_EQ(info.PipInputSource, 1);
    expectFields<PexalPIPSettings>({{"pip_mode", 2, 0},
                                    {"pip_position", 4, 1},
                                    {"pip_position_x", 161, 2},
                                    {"pip_position_y", 162, 3},
                                    {"pip_size", 0, 4},
                                    {"pip_source", 2, 5},
                                    {"pip_video_levels", 1, 6},
                                    {"pip_overscan", 1, 7},
                                    {"pip_dci_image_region", 2, 8},
                                    {"pip_show_cropped_region", 1, 9},
                                    {"input1.active", 0, 10},
                                    {"input2.active", 0, 11},
                                    {"input3.active", 1, 12}},
                                   GetPIPSettingsInfo, [this](const std::string &c) { return command(c); });
}

TEST_F(Records, OfTheMenuFollowTheirSettings)
{
    expectFields<OSDMenuAndMessageInfo>({{"show_power_on_info", 0, 0},
                                         {"show_source_info", 0, 1},
                                         {"show_color_space_info", 0, 2},
                                         {"warm_up_reminder", 0, 3},
                                         {"calibration_notification", 0, 4},
                                         {"osd_position_x", 2560, 5},
                                         {"osd_position_y", 1440, 6},
                                         {"menu_timeout", 5, 7},
                                         {"menu_opacity", 2500, 8},
                                         {"display_rotation", 1, 9},
                                         {"menu_language", 9, 10}},
                                        GetOSDMenuAndMessagesInfo,
                                        [this](const std::string &c) { return command(c); });
}

TEST_F(Records, OfBezelButtonsFollowTheirSettings)
{
    expectFields<BezelButtonInfo>(
        {{"bezel_button_color", 2, 0}, {"bezel_button_brightness", 20, 1}, {"bezel_button_auto_fade", 0, 2}},
        GetBezelButtonInfo, [this](const std::string &c) { return command(c); });
}

TEST_F(Records, OfColorSpaces)
{
    const char *names[] = {"Native", "AdobeRGB", "Rec.709", "sRGB D65", "sRGB D50", "DCI P3", "Rec.2020"};
    const int luminances[] = {250, 160, 100, 80, 80, 48, 100};
    const char *gammas[] = {"2.20", "2.20", "2.40", "2.20", "2.20", "2.60", "2.40"};
    for (int i = 0; i < 7; ++i) {
        ColorSpaceInfo info;
        ASSERT_EQ(GetColorSpaceInfoById(&info, i), 0);
        EXPECT_EQ(+info.ActiveColorSpace, i);
        EXPECT_EQ(info.DisplayLuminance, luminances[i]);
        EXPECT_STREQ(info.ColorSpaceName, names[i]);
        EXPECT_STREQ(info.Gamma, gammas[i]);
    }
    ColorSpaceInfo p3;
    ASSERT_EQ(GetColorSpaceInfoById(&p3, 5), 0);
    EXPECT_STREQ(p3.RedPrimaryX, "0.6800");
    EXPECT_STREQ(p3.RedPrimaryY, "0.3200");
    EXPECT_STREQ(p3.GreenPrimaryX, "0.2650");
    EXPECT_STREQ(p3.GreenPrimaryY, "0.6900");
    EXPECT_STREQ(p3.BluePrimaryX, "0.1500");
    EXPECT_STREQ(p3.BluePrimaryY, "0.0600");
    EXPECT_STREQ(p3.WhitePointX, "0.3140");
    EXPECT_STREQ(p3.WhitePointY, "0.3510");
    EXPECT_STREQ(p3.RedPrimaryU, "0.4964");
    EXPECT_STREQ(p3.RedPrimaryV, "0.5255");
    EXPECT_STREQ(p3.GreenPrimaryU, "0.0986");
    EXPECT_STREQ(p3.GreenPrimaryV, "0.5777");
    EXPECT_STREQ(p3.BluePrimaryU, "0.1754");
    EXPECT_STREQ(p3.BluePrimaryV, "0.1579");
    EXPECT_STREQ(p3.WhitePointU, "0.1908");
    EXPECT_STREQ(p3.WhitePointV, "0.4798");
}

TEST_F(Records, OfFunctionButtons)
{
    ASSERT_EQ(command("set function_button4.setting 17"), 0);
    ASSERT_EQ(command("set function_button_mode 1"), 0);
    ASSERT_EQ(command("set function_button2.name Zoom"), 0);
    const char *names[] = {"Function Button 1", "Zoom", "Function Button 3", "Function Button 4"};
    const int settings[] = {1, 2, 3, 17};
    for (int i = 0; i < 4; ++i) {
        FunctionButtonInfo info;
        ASSERT_EQ(GetFunctionButtonInfoById(&info, i), 0);
        EXPECT_EQ(info.ButtonMode, 1);
        EXPECT_EQ(info.Setting, settings[i]);
        EXPECT_STREQ(info.Name, names[i]);
    }
}

TEST_F(Records, OfTheTestPattern)
{
    ASSERT_EQ(command("set test_pattern 8"), 0);
    ASSERT_EQ(command("set test_pattern_enabled 1"), 0);
    ASSERT_EQ(command("set test_pattern_green 0"), 0);
    TestPatternInfo info;
    ASSERT_EQ(GetTestPatternInfo(&info), 0);
    EXPECT_EQ(info.TestPatternGenerator, 8);
    EXPECT_EQ(info.Enabled, 1);
    EXPECT_STREQ(info.RValue, "255");
    EXPECT_STREQ(info.GValue, "0");
    EXPECT_STREQ(info.BValue, "255");
    EXPECT_EQ(info.Status, 1);
}

TEST_F(Records, OfRemoteManagement)
{
    RemoteManagementServer info;
    ASSERT_EQ(GetRemoteManagementServerInfo(&info), 0);
    EXPECT_EQ(info.RemoteManagementEnabled, 1);
    EXPECT_EQ(info.IPConfigurationMode, 1);
    EXPECT_STREQ(info.IPv4Address, "192.168.10.20");
    EXPECT_STREQ(info.IPv4Subnet, "255.255.255.0");
    EXPECT_STREQ(info.IPv4Gateway, "192.168.10.1");
    EXPECT_STREQ(info.MACAddress, "02005E10A64C");
    EXPECT_EQ(info.WSManagementStatus, 1);
    EXPECT_EQ(info.WSIdentifySupport, 1);
    char address[IP_ADDRESS_SIZE];
    EXPECT_EQ(GetIPAddress(address), 0);
    EXPECT_STREQ(address, "192.168.10.20");
}

/* A text may fill its field, then without a terminating zero, and touches nothing behind it. */
TEST_F(Records, HoldTextsUpToTheirWidth)
{
    const char *full = "1234567890123456789012345";
    ASSERT_EQ(command(std::string("set display_name ") + full), 0);
    ASSERT_EQ(command(std::string("set deployment_location abc")), 0);
    MonitorInfo info;
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_EQ(memcmp(info.DisplayName, full, 25), 0);
    EXPECT_STREQ(info.DeploymentLocation, "abc");
    EXPECT_EQ(command(std::string("set display_name ") + full + "6"), 2);
}

TEST_F(Records, RefuseIndicesAndNullPointers)
{
    ColorSpaceInfo preset;
    FunctionButtonInfo button;
    for (int index : {-1, 7, 1000}) {
        EXPECT_NE(GetColorSpaceInfoById(&preset, index), 0) << index;
        EXPECT_NE(GetFunctionButtonInfoById(&button, index), 0) << index;
    }
    EXPECT_NE(GetFunctionButtonInfoById(&button, 4), 0);
    EXPECT_NE(GetMoinitorInfo(nullptr), 0);
    EXPECT_NE(GetColorSpaceInfoById(nullptr, 0), 0);
    EXPECT_NE(GetIPAddress(nullptr), 0);
}

struct Reader {
    const char *name;
    std::function<int()> call;
};

const std::vector<Reader> &readers()
{
    static MonitorInfo monitor;
    static ManagementInfo management;
    static ImageAdjustment image;
    static PexalPIPSettings pip;
    static OSDMenuAndMessageInfo menu;
    static ColorSpaceInfo color;
    static BezelButtonInfo bezel;
    static FunctionButtonInfo function;
    static TestPatternInfo pattern;
    static RemoteManagementServer remote;
    static char text[REGISTER_TEXT_SIZE];
    static const std::vector<Reader> all = {
        {"GetMoinitorInfo", [] { return GetMoinitorInfo(&monitor); }},
        {"GetDisplayManagementInfo", [] { return GetDisplayManagementInfo(&management); }},
        {"GetImageAdjustmentInfo", [] { return GetImageAdjustmentInfo(&image); }},
        {"GetPIPSettingsInfo", [] { return GetPIPSettingsInfo(&pip); }},
        {"GetOSDMenuAndMessagesInfo", [] { return GetOSDMenuAndMessagesInfo(&menu); }},
        {"GetColorSpaceInfoById", [] { return GetColorSpaceInfoById(&color, 0); }},
        {"GetBezelButtonInfo", [] { return GetBezelButtonInfo(&bezel); }},
        {"GetFunctionButtonInfoById", [] { return GetFunctionButtonInfoById(&function, 0); }},
        {"GetTestPatternInfo", [] { return GetTestPatternInfo(&pattern); }},
        {"GetRemoteManagementServerInfo", [] { return GetRemoteManagementServerInfo(&remote); }},
        {"GetRegisterValue", [] { return GetRegisterValue(25, 1, text); }},
        {"GetIPAddress", [] { return GetIPAddress(text); }},
    };
    return all;
}

TEST_F(Records, FailOneByOneWhenToldTo)
{
    for (const Reader &told : readers()) {
        ASSERT_EQ(command(std::string("fault fail-read on ") + told.name), 0);
        for (const Reader &reader : readers()) {
            EXPECT_EQ(reader.call() != 0, &reader == &told) << reader.name << " when told of " << told.name;
        }
    }
}

TEST_F(Records, FailAllWhenToldTo)
{
    ASSERT_EQ(command("fault fail-read on"), 0);
    for (const Reader &reader : readers()) {
        EXPECT_NE(reader.call(), 0) << reader.name;
    }
    EXPECT_EQ(GetMonitorStatus(SPEAR_STATE), FREE);
    ASSERT_EQ(command("fault clear"), 0);
    for (const Reader &reader : readers()) {
        EXPECT_EQ(reader.call(), 0) << reader.name;
    }
}

TEST_F(Records, FailWithoutAStore)
{
    setenv("DESK_MONITOR_STORE", (directory + "/none/store.db").c_str(), 1);
    for (const Reader &reader : readers()) {
        EXPECT_NE(reader.call(), 0) << reader.name;
    }
    EXPECT_EQ(GetMonitorStatus(SPEAR_STATE), -1);
    char address[IP_ADDRESS_SIZE] = "x";
    EXPECT_NE(GetIPAddress(address), 0);
    EXPECT_STREQ(address, "") << "callers do not examine the result";
}

TEST_F(Records, OfTheStateSayBusyOnlyWhenTold)
{
    EXPECT_EQ(GetMonitorStatus(SPEAR_STATE), FREE);
    EXPECT_EQ(GetMonitorStatus(FWU_STATUS), FREE);
    ASSERT_EQ(command("fault busy on"), 0);
    EXPECT_EQ(GetMonitorStatus(SPEAR_STATE), BUSY);
    EXPECT_EQ(GetMonitorStatus(FWU_STATUS), FREE);
    EXPECT_EQ(GetMonitorStatus(2), -1);
    ASSERT_EQ(command("fault busy off"), 0);
    EXPECT_EQ(GetMonitorStatus(SPEAR_STATE), FREE);
}

} // namespace
