// SPDX-License-Identifier: Apache-2.0
// The numbers that travel between the library, the support library and the display engine, and the records
// they share, each typed out once more.

#include "checks.h"
#include <cstddef>
#include <type_traits>

namespace
{

struct Named {
    const char *name;
    int value;
    int expected;
};

#define NAMED(name, expected)                                                                                \
    {                                                                                                        \
#name, name, expected                                                                                \
    }

void expectNumbers(const std::vector<Named> &table)
{
    for (const Named &row : table) {
        EXPECT_EQ(row.value, row.expected) << row.name;
    }
}

} // namespace

TEST(Records, MessageSources)
{
    expectNumbers({NAMED(WEB, 1), NAMED(USB, 2), NAMED(TALMOR, 3), NAMED(USB_HOST, 4),
                   NAMED(SOURCE_CLIENT_CERTIFICATE, 5), NAMED(SOURCE_SERVER_CERTIFICATE, 6),
                   NAMED(WSMAN, 7)});
}

TEST(Records, ProcessCommands)
{
    expectNumbers({NAMED(SYSTEM_REBOOT, 1), NAMED(PROCESS_FWU, 2), NAMED(PROCESS_SET_REQUEST, 3),
                   NAMED(PROCESS_QUENTAR, 4), NAMED(PROCESS_CALIBRATION, 5), NAMED(PROCESS_FWU_USB, 6),
                   NAMED(PROCESS_FWU_WEB, 7), NAMED(PROCESS_GET_REQUEST, 8), NAMED(PROCESS_FACTORY_RESET, 9),
                   NAMED(INSTALL_CERTIFICATE_FOUND, 10), NAMED(UPDATE_IP_SETTINGS, 11),
                   NAMED(PERFORM_FIRMWARE_UPDATE, 12), NAMED(PERFORM_SPEAR_SELFTEST, 13)});
}

TEST(Records, Queues)
{
    expectNumbers({NAMED(MSG_QUEUE_SPEAR_APP, 0), NAMED(MSG_QUEUE_WEB, 1), NAMED(MSG_QUEUE_USB_SDK, 2),
                   NAMED(MSG_QUEUE_WSMAN, 3)});
}

TEST(Records, InformationGroups)
{
    expectNumbers({NAMED(COLOR_SPACE_ID, 0), NAMED(VIDEO_INPUT_ID, 1), NAMED(IMAGE_ADJ_SETTINGS_ID, 2),
                   NAMED(PIP_INFO_ID, 3), NAMED(REMOTE_MGMENT_ID, 4), NAMED(MANAGEMENT_ID, 5),
                   NAMED(MENU_SETTINGS_ID, 6), NAMED(FUNCTION_BTN_ID, 7), NAMED(BEZEL_BTN_ID, 8),
                   NAMED(PEXAL_INFO_ID, 9), NAMED(VERSION_INFO_ID, 10), NAMED(RESET_GROUP_ID, 11),
                   NAMED(COLORSPACE_PARAMETER_ID, 12), NAMED(QUICK_ACTION_ID, 13), NAMED(FACTORY_UID, 14),
                   NAMED(TEST_PATTERN_ID, 15), NAMED(GENERAL_COMMANDS_ID, 16)});
}

TEST(Records, MonitorStatus)
{
    expectNumbers({NAMED(SPEAR_STATE, 0), NAMED(FWU_STATUS, 1), NAMED(FREE, 0), NAMED(BUSY, 1)});
}

TEST(Records, ResultCodes)
{
    expectNumbers({NAMED(ERROR_I2C_OPEN, 80000000),
                   NAMED(ERROR_I2C_READ, 80000001),
                   NAMED(ERROR_I2C_WRITE, 80000002),
                   NAMED(ERROR_I2C_IOCTL, 80000003),
                   NAMED(ERROR_GPIO_OPEN, 80000004),
                   NAMED(ERROR_GPIO_WRITE, 80000005),
                   NAMED(ERROR_GPIO_READ, 80000006),
                   NAMED(ERROR_GPIO_CLOSE, 80000007),
                   NAMED(ERROR_MMAP_FAILED, 80000008),
                   NAMED(ERROR_DIRECTORY_OPEN, 80000009),
                   NAMED(ERROR_CHECKSUM, 80000010),
                   NAMED(ERROR_INVALID_PARAM, 80000011),
                   NAMED(EINVALID_GAMMA, 80000012),
                   NAMED(CALIB_VALIDATION_FILE_WRITE_ERROR, 80000013),
                   NAMED(ELUT_EOF, 2000),
                   NAMED(ELUT_SYNTAX, -10000),
                   NAMED(ELUT_INVALID, -10001),
                   NAMED(ELUT_VALUE, -10002),
                   NAMED(ERR_NACK, -2),
                   NAMED(FAILURE, -1),
                   NAMED(SUCCESS, 0),
                   NAMED(HAS_STEEP_TABLE, 1),
                   NAMED(USB_FOR_VALIDATION_FOUND, 2),
                   NAMED(IGNORE, 3),
                   NAMED(RETRY_PROCESS, 4),
                   NAMED(DELTA_ERROR, 5),
                   NAMED(PASSWORD_ERROR, 6),
                   NAMED(CERTIFICATE_ALREADY_EXIST, 7)});
}

TEST(Records, PictureInPicture)
{
    expectNumbers({NAMED(PIP_MODE_OFF, 0), NAMED(PIP_PICTURE_IN_PICTURE, 1),
                   NAMED(PIP_PICTURE_BESIDE_PICTURE, 2), NAMED(PIP_SIZE_MAXIMUM, 0),
                   NAMED(PIP_SIZE_MINIMUM, 1), NAMED(PIP_SIZE_DEFAULT, 2)});
}

TEST(Records, Registers)
{
    const std::vector<Named> table = {NAMED(LUMINANCE, 0),
                                      NAMED(ACTIVE_COLORSPACE, 1),
                                      NAMED(RED_PRIMARY_X, 2),
                                      NAMED(RED_PRIMARY_Y, 3),
                                      NAMED(RED_PRIMARY_U, 4),
                                      NAMED(RED_PRIMARY_V, 5),
                                      NAMED(GREEN_PRIMARY_X, 6),
                                      NAMED(GREEN_PRIMARY_Y, 7),
                                      NAMED(GREEN_PRIMARY_U, 8),
                                      NAMED(GREEN_PRIMARY_V, 9),
                                      NAMED(BLUE_PRIMARY_X, 10),
                                      NAMED(BLUE_PRIMARY_Y, 11),
                                      NAMED(BLUE_PRIMARY_U, 12),
                                      NAMED(BLUE_PRIMARY_V, 13),
                                      NAMED(WHITE_PRIMARY_X, 14),
                                      NAMED(WHITE_PRIMARY_Y, 15),
                                      NAMED(WHITE_PRIMARY_U, 16),
                                      NAMED(WHITE_PRIMARY_V, 17),
                                      NAMED(GAMMA, 18),
                                      NAMED(RESET_FACTORY_CALIBRATION, 19),
                                      NAMED(RESET_LAST_CALIBRATION, 20),
                                      NAMED(VIDEO_INPUT, 25),
                                      NAMED(AUTO_SWITCH_STATUS, 26),
                                      NAMED(DISPLAY_FILL_STATUS, 30),
                                      NAMED(DCI_IMAGE_REGION, 31),
                                      NAMED(SOURCE_SCALING_4K, 32),
                                      NAMED(SHOW_CROPPED_REGION, 33),
                                      NAMED(OPACITY_CROPPED_REGION, 34),
                                      NAMED(VIDEO_LEVEL_STATUS, 35),
                                      NAMED(OVERSCAN_STATUS, 36),
                                      NAMED(BLUE_CHANNELS_STATUS, 37),
                                      NAMED(OVER_DRIVE, 38),
                                      NAMED(DEINTERLACING_STATUS, 39),
                                      NAMED(CADENCE_DETECTION_STATUS, 40),
                                      NAMED(IMG_VERTICAL_ACTIVE, 41),
                                      NAMED(IMG_HORIZONTAL_ACTIVE, 42),
                                      NAMED(SCROLL_4K_STATE, 43),
                                      NAMED(SCROLL_4K_POSITION_X, 44),
                                      NAMED(SCROLL_4K_POSITION_Y, 45),
                                      NAMED(PIP_STATE, 50),
                                      NAMED(PIP_POSITION, 51),
                                      NAMED(PIP_POSITION_X, 52),
                                      NAMED(PIP_POSITION_Y, 53),
                                      NAMED(PIP_SIZE, 54),
                                      NAMED(PIP_HEIGHT, 55),
                                      NAMED(PIP_WIDTH, 56),
                                      NAMED(PIP_SOURCE, 57),
                                      NAMED(SWAP_PIP_PRIMARY_INPUTS, 58),
                                      NAMED(PIP_VIDEO_LEVEL_STATUS, 59),
                                      NAMED(PIP_OVER_SCAN_STATUS, 60),
                                      NAMED(PIP_DCI_IMAGE_REGION, 61),
                                      NAMED(PIP_SHOW_CROPPED_REGION, 62),
                                      NAMED(PIP_MAIN_INPUT, 63),
                                      NAMED(PIP_VERTICAL_ACTIVE, 64),
                                      NAMED(PIP_HORIZONTAL_ACTIVE, 65),
                                      NAMED(DP1_STATE, 66),
                                      NAMED(DP2_STATE, 67),
                                      NAMED(HDMI_STATE, 68),
                                      NAMED(AUTO_SLEEP_MODE, 70),
                                      NAMED(POWER_ON_RECALL_STATUS, 71),
                                      NAMED(DDC_CI_COMM_STATUS, 72),
                                      NAMED(AUTO_EDID_STATUS, 73),
                                      NAMED(HOT_PLUG_INITIATE, 74),
                                      NAMED(MANAGEMENT_INTERNAL_PROCESSOR, 75),
                                      NAMED(FW_STATUS, 76),
                                      NAMED(CALIBRATION_STATUS, 77),
                                      NAMED(DP_HPD_STATUS, 78),
                                      NAMED(DP_COMPATABILITY_MODE, 79),
                                      NAMED(WEBSERVER_STATUS, 85),
                                      NAMED(IP_CONFIGURATION_MODE, 86),
                                      NAMED(IP_ADDRESS, 87),
                                      NAMED(SUBNET_MASK, 88),
                                      NAMED(GATEWAY, 89),
                                      NAMED(MAC_ADDRESS, 90),
                                      NAMED(WS_MANAGEMENT_STATUS, 91),
                                      NAMED(WS_IDENTIFY_STATUS, 92),
                                      NAMED(WS_MANAGEMENT_OVER_HTTP, 93),
                                      NAMED(WS_MANAGEMENT_OVER_HTTPS, 94),
                                      NAMED(SHOW_POWER_ON_INFO_STATUS, 100),
                                      NAMED(SHOW_SOURCE_INFO_STATUS, 101),
                                      NAMED(SHOW_COLORSPACE_INFO_STATUS, 102),
                                      NAMED(WARMUP_TIME_REMINDER, 103),
                                      NAMED(CALIBRATION_NOTIFICATION_STATUS, 104),
                                      NAMED(OSD_POSITION_X, 105),
                                      NAMED(OSD_POSITION_Y, 106),
                                      NAMED(MENU_TIMEOUT, 107),
                                      NAMED(OPACITY_VALUE, 108),
                                      NAMED(MENU_LANGUAGE, 109),
                                      NAMED(DISPLAY_ROTATION_STATUS, 110),
                                      NAMED(FUNCTION_BUTTON_F1, 115),
                                      NAMED(FUNCTION_BUTTON_F2, 116),
                                      NAMED(FUNCTION_BUTTON_F3, 117),
                                      NAMED(FUNCTION_BUTTON_F4, 118),
                                      NAMED(FUNCTION_BUTTON_MODE, 119),
                                      NAMED(BEZEL_BUTTON_COLOR, 120),
                                      NAMED(BEZEL_BUTTON_BRIGHTNESS, 121),
                                      NAMED(BEZEL_BUTTON_AUTOFADE_STATUS, 122),
                                      NAMED(INFO_DISPLAY_MODE, 130),
                                      NAMED(INFO_COLOR_SPACE, 131),
                                      NAMED(INFO_PIPELINE_DELAY, 132),
                                      NAMED(INFO_SERIAL_NUMBER, 133),
                                      NAMED(INFO_CALIBRATION_HOURS, 134),
                                      NAMED(INFO_BACKLIGHT_HOURS, 135),
                                      NAMED(INFO_FIRMWARE_REVISION, 136),
                                      NAMED(FACTORY_RESET_START, 140),
                                      NAMED(FACTORY_RESET_END, 141),
                                      NAMED(DP_COMPATIBILITY, 142),
                                      NAMED(RESET_ADMIN_PASSWORD, 143),
                                      NAMED(DISPLAY_SETTINGS_RESET, 144),
                                      NAMED(COLORSPACE_RESET, 150),
                                      NAMED(NEXT_4K, 151),
                                      NAMED(SWITCH_TO_NEXT_ACTIVE_VIDEO_INPUT, 152),
                                      NAMED(VIDEO_LEVEL_ON_OFF, 153),
                                      NAMED(OVERSCAN_ON_OFF, 154),
                                      NAMED(BLUE_CHANNEL_ON_OFF, 155),
                                      NAMED(NEXT_4K_CORNER, 156),
                                      NAMED(PIP_ON_OFF, 157),
                                      NAMED(SWAP_PRIMARY_PIP_INPUT, 158),
                                      NAMED(NEXT_PIP_CORNER, 159),
                                      NAMED(FIRMWARE_UPDATE_STATUS, 165),
                                      NAMED(CALIBRATION_PROCESS_STATUS, 166),
                                      NAMED(TEST_PATTERN_WEB, 170),
                                      NAMED(TEST_PATTERN_DISABLE, 171),
                                      NAMED(TEST_PATTERN_RED, 172),
                                      NAMED(TEST_PATTERN_GREEN, 173),
                                      NAMED(TEST_PATTERN_BLUE, 174),
                                      NAMED(TEST_PATTERN_STATUS, 175),
                                      NAMED(SOFT_POWER_OFF, 180),
                                      NAMED(COLOR_MANAGEMENT_STATUS, 181),
                                      NAMED(DITHERING_MODE, 182),
                                      NAMED(CALIBRATION_ALERT_LIMIT, 183)};
    expectNumbers(table);
    EXPECT_EQ(table.size(), 131u);
    // The identifier travels in one byte.
    for (const Named &row : table) {
        EXPECT_TRUE(row.value >= 0 && row.value <= 255) << row.name;
    }
}

// ---- layouts ----

namespace
{

struct Field {
    const char *name;
    size_t offset;
    size_t size;
};

#define FIELD(Record, field)                                                                                 \
    {                                                                                                        \
#field, offsetof(Record, field), sizeof(Record::field)                                               \
    }

/** The fields in their order, the first at 0, each right after the one before; `size` bytes in all. */
void expectDense(const char *record, size_t size, size_t actualSize, const std::vector<Field> &fields)
{
    SCOPED_TRACE(record);
    EXPECT_EQ(actualSize, size);
    size_t offset = 0;
    for (const Field &field : fields) {
        EXPECT_EQ(field.offset, offset) << field.name;
        offset += field.size;
    }
    // What is left is padding at the end, less than one int.
    EXPECT_LE(offset, size);
    EXPECT_LT(size - offset, 4u);
}

struct Placed {
    const char *name;
    size_t offset, expectedOffset;
    size_t size, expectedSize;
};

#define PLACED(Record, field, offset, size)                                                                  \
    {                                                                                                        \
#field, offsetof(Record, field), offset, sizeof(Record::field), size                                 \
    }

void expectPlaces(const std::vector<Placed> &fields)
{
    for (const Placed &field : fields) {
        EXPECT_EQ(field.offset, field.expectedOffset) << field.name;
        EXPECT_EQ(field.size, field.expectedSize) << field.name;
    }
}

} // namespace

TEST(Records, RegisterDetails)
{
    EXPECT_EQ(sizeof(RegisterDetails), 7u);
    expectPlaces({PLACED(RegisterDetails, Type, 0, 1), PLACED(RegisterDetails, Register, 1, 1),
                  PLACED(RegisterDetails, Status, 2, 1), PLACED(RegisterDetails, RegisterValue, 3, 4),
                  PLACED(RegisterDetails, RegisterValue.Value, 3, 2),
                  PLACED(RegisterDetails, RegisterValue.DataValue, 3, 4)});
    EXPECT_TRUE(std::is_signed_v<decltype(RegisterDetails::RegisterValue.Value)>);
    EXPECT_TRUE(std::is_unsigned_v<decltype(RegisterDetails::Register)>);
}

TEST(Records, WebCmd)
{
    EXPECT_EQ(sizeof(WebCmd), 31u);
    expectPlaces({PLACED(WebCmd, SequenceNo, 0, 1), PLACED(WebCmd, Count, 1, 1),
                  PLACED(WebCmd, GroupId, 2, 1), PLACED(WebCmd, sRegdetails, 3, 28)});
}

TEST(Records, ProcessData)
{
    EXPECT_EQ(sizeof(ProcessData), 36u);
    expectPlaces({PLACED(ProcessData, Cmd, 0, 2), PLACED(ProcessData, Source, 2, 2),
                  PLACED(ProcessData, Arg, 4, 32), PLACED(ProcessData, Arg.BusNumber, 4, 4),
                  PLACED(ProcessData, Arg.sWebCmd, 4, 31)});
    EXPECT_TRUE(std::is_signed_v<decltype(ProcessData::Cmd)>);
    EXPECT_TRUE(std::is_signed_v<decltype(ProcessData::Source)>);
}

TEST(Records, SpearMessage)
{
    EXPECT_EQ(sizeof(SpearMessage), 40u);
    expectPlaces({PLACED(SpearMessage, Type, 0, 4), PLACED(SpearMessage, Data, 4, 36),
                  PLACED(SpearMessage, Data.Cmd, 4, 2), PLACED(SpearMessage, Data.Source, 6, 2),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.SequenceNo, 8, 1),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.Count, 9, 1),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.GroupId, 10, 1),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.sRegdetails[0].Register, 12, 1),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.sRegdetails[0].RegisterValue.Value, 14, 2),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.sRegdetails[1].Register, 19, 1),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.sRegdetails[1].RegisterValue.Value, 21, 2),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.sRegdetails[2].Register, 26, 1),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.sRegdetails[2].RegisterValue.Value, 28, 2),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.sRegdetails[3].Register, 33, 1),
                  PLACED(SpearMessage, Data.Arg.sWebCmd.sRegdetails[3].RegisterValue.Value, 35, 2)});
}

TEST(Records, MonitorInfo)
{
    EXPECT_EQ(sizeof(MonitorInfo), 141u);
    expectPlaces({PLACED(MonitorInfo, DisplayMode, 0, 25), PLACED(MonitorInfo, ActiveColorSpace, 25, 4),
                  PLACED(MonitorInfo, ActiveVideoInput, 29, 4),
                  PLACED(MonitorInfo, VideoPipelineDelay, 33, 4), PLACED(MonitorInfo, LastCalibration, 37, 4),
                  PLACED(MonitorInfo, BacklightHours, 41, 4), PLACED(MonitorInfo, Deployment_Date, 45, 4),
                  PLACED(MonitorInfo, SerialNumber, 49, 15), PLACED(MonitorInfo, DisplayName, 64, 25),
                  PLACED(MonitorInfo, DeploymentLocation, 89, 25),
                  PLACED(MonitorInfo, AutoSwitchSource, 114, 4), PLACED(MonitorInfo, SoftPowerState, 118, 4),
                  PLACED(MonitorInfo, RecalibrationAlarmDuration, 122, 4),
                  PLACED(MonitorInfo, PexalVersion, 126, 15)});
    EXPECT_TRUE(std::is_signed_v<decltype(MonitorInfo::Deployment_Date)>);
}

TEST(Records, ManagementInfo)
{
    expectDense("ManagementInfo", 40, sizeof(ManagementInfo),
                {FIELD(ManagementInfo, PowerSaverEnabled), FIELD(ManagementInfo, PowerOnRecallEnabled),
                 FIELD(ManagementInfo, DDCCICommunicationEnabled), FIELD(ManagementInfo, EDIDUpdateEnabled),
                 FIELD(ManagementInfo, HotPlugInitiateEnabled),
                 FIELD(ManagementInfo, ManageInternalProcessor), FIELD(ManagementInfo, FWUpdateEnabled),
                 FIELD(ManagementInfo, CalibrationSupportEnabled),
                 FIELD(ManagementInfo, DisplayPortHotPlugDetection),
                 FIELD(ManagementInfo, DisplayPortComapatibility)});
}

TEST(Records, ImageAdjustment)
{
    expectDense("ImageAdjustment", 76, sizeof(ImageAdjustment),
                {FIELD(ImageAdjustment, DisplayAspectRatio), FIELD(ImageAdjustment, CurrentDCIOptions),
                 FIELD(ImageAdjustment, CurrentDCIOptions4K), FIELD(ImageAdjustment, ShowCroppedRegion),
                 FIELD(ImageAdjustment, CroppedRegionOpacity), FIELD(ImageAdjustment, UseVideoLevels),
                 FIELD(ImageAdjustment, Overscan), FIELD(ImageAdjustment, ShowBlueChannel),
                 FIELD(ImageAdjustment, Overdrive), FIELD(ImageAdjustment, Deinterlacer),
                 FIELD(ImageAdjustment, Cadence), FIELD(ImageAdjustment, DisplayMode4K),
                 FIELD(ImageAdjustment, Displayed4KCorner), FIELD(ImageAdjustment, Region4KPositionX),
                 FIELD(ImageAdjustment, Region4KPositionY), FIELD(ImageAdjustment, Show4KPositionOverlay),
                 FIELD(ImageAdjustment, SourceScaling4K), FIELD(ImageAdjustment, HorizontalResolution),
                 FIELD(ImageAdjustment, VerticalResolution)});
}

TEST(Records, PexalPIPSettings)
{
    expectDense("PexalPIPSettings", 52, sizeof(PexalPIPSettings),
                {FIELD(PexalPIPSettings, PipMode), FIELD(PexalPIPSettings, PipPosition),
                 FIELD(PexalPIPSettings, PipPositionX), FIELD(PexalPIPSettings, PipPositionY),
                 FIELD(PexalPIPSettings, PipSize), FIELD(PexalPIPSettings, PipInputSource),
                 FIELD(PexalPIPSettings, VideoLevel), FIELD(PexalPIPSettings, OverScan),
                 FIELD(PexalPIPSettings, ImageRegion), FIELD(PexalPIPSettings, ShowCroppedRegion),
                 FIELD(PexalPIPSettings, DP1State), FIELD(PexalPIPSettings, DP2State),
                 FIELD(PexalPIPSettings, HDMIState)});
}

TEST(Records, OSDMenuAndMessageInfo)
{
    expectDense("OSDMenuAndMessageInfo", 44, sizeof(OSDMenuAndMessageInfo),
                {FIELD(OSDMenuAndMessageInfo, PowerStatus), FIELD(OSDMenuAndMessageInfo, InputSourceStatus),
                 FIELD(OSDMenuAndMessageInfo, MenuColorspaces), FIELD(OSDMenuAndMessageInfo, MenuWarmupTime),
                 FIELD(OSDMenuAndMessageInfo, MenuCalibration), FIELD(OSDMenuAndMessageInfo, OSDPositionX),
                 FIELD(OSDMenuAndMessageInfo, OSDPositionY), FIELD(OSDMenuAndMessageInfo, MenuMessageTimeOut),
                 FIELD(OSDMenuAndMessageInfo, Opacity), FIELD(OSDMenuAndMessageInfo, DisplayRotation),
                 FIELD(OSDMenuAndMessageInfo, Language)});
}

TEST(Records, ColorSpaceInfo)
{
    expectPlaces({PLACED(ColorSpaceInfo, ColorSpaceName, 8, 15), PLACED(ColorSpaceInfo, RedPrimaryU, 23, 10),
                  PLACED(ColorSpaceInfo, Gamma, 183, 10)});
    expectDense("ColorSpaceInfo", 196, sizeof(ColorSpaceInfo),
                {FIELD(ColorSpaceInfo, ActiveColorSpace), FIELD(ColorSpaceInfo, DisplayLuminance),
                 FIELD(ColorSpaceInfo, ColorSpaceName),   FIELD(ColorSpaceInfo, RedPrimaryU),
                 FIELD(ColorSpaceInfo, GreenPrimaryU),    FIELD(ColorSpaceInfo, BluePrimaryU),
                 FIELD(ColorSpaceInfo, WhitePointU),      FIELD(ColorSpaceInfo, RedPrimaryV),
                 FIELD(ColorSpaceInfo, GreenPrimaryV),    FIELD(ColorSpaceInfo, BluePrimaryV),
                 FIELD(ColorSpaceInfo, WhitePointV),      FIELD(ColorSpaceInfo, RedPrimaryX),
                 FIELD(ColorSpaceInfo, GreenPrimaryX),    FIELD(ColorSpaceInfo, BluePrimaryX),
                 FIELD(ColorSpaceInfo, WhitePointX),      FIELD(ColorSpaceInfo, RedPrimaryY),
                 FIELD(ColorSpaceInfo, GreenPrimaryY),    FIELD(ColorSpaceInfo, BluePrimaryY),
                 FIELD(ColorSpaceInfo, WhitePointY),      FIELD(ColorSpaceInfo, Gamma)});
}

TEST(Records, ButtonRecords)
{
    expectDense("BezelButtonInfo", 12, sizeof(BezelButtonInfo),
                {FIELD(BezelButtonInfo, ButtonColor), FIELD(BezelButtonInfo, ButtonBrightness),
                 FIELD(BezelButtonInfo, ButtonAutoFade)});
    EXPECT_EQ(sizeof(FunctionButtonInfo::Name), 50u);
    expectDense("FunctionButtonInfo", 60, sizeof(FunctionButtonInfo),
                {FIELD(FunctionButtonInfo, ButtonMode), FIELD(FunctionButtonInfo, Setting),
                 FIELD(FunctionButtonInfo, Name)});
}

TEST(Records, TestPatternInfo)
{
    EXPECT_EQ(sizeof(TestPatternInfo), 44u);
    expectPlaces({PLACED(TestPatternInfo, TestPatternGenerator, 0, 4), PLACED(TestPatternInfo, Enabled, 4, 4),
                  PLACED(TestPatternInfo, RValue, 8, 10), PLACED(TestPatternInfo, GValue, 18, 10),
                  PLACED(TestPatternInfo, BValue, 28, 10), PLACED(TestPatternInfo, Status, 40, 4)});
}

TEST(Records, RemoteManagementServer)
{
    EXPECT_EQ(sizeof(RemoteManagementServer), 80u);
    expectPlaces({PLACED(RemoteManagementServer, RemoteManagementEnabled, 0, 4),
                  PLACED(RemoteManagementServer, IPConfigurationMode, 4, 4),
                  PLACED(RemoteManagementServer, IPv4Address, 8, 16),
                  PLACED(RemoteManagementServer, IPv4Subnet, 24, 16),
                  PLACED(RemoteManagementServer, IPv4Gateway, 40, 16),
                  PLACED(RemoteManagementServer, MACAddress, 56, 16),
                  PLACED(RemoteManagementServer, WSManagementStatus, 72, 4),
                  PLACED(RemoteManagementServer, WSIdentifySupport, 76, 4)});
}
