// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_ImageAdjustment: how the picture is shown, and the region of a 4K source.

#include "display/modules.h"
#include "support/checks.h"

// Not METHOD_CLASS: ImageAdjustment is the name of the monitor's record.
TESTED_FACTORY(ImageAdjustment, Instance);
TESTED_FACTORY(ImageAdjustment, Method);

namespace
{

const TestedClass picture = {"ZT_Marovelton_ImageAdjustment", ZT_Marovelton_ImageAdjustment_Create_InstanceMI,
                             ZT_Marovelton_ImageAdjustment_Create_MethodMI, nullptr};

const char *const refreshOfImage = "01 00 00 00 08 00 07 00 00 00 02 ...";
const char *const nextCorner = "01 00 00 00 03 00 07 00 00 01 0D 00 9C 00 00 00 ...";

const char *const notPixelForPixel = "4k not supported. (Pixel-for-Pixel should be enabled)";
const char *const notA4KSource = "4k not supported.(Unsupported Resolution)";
const char *const scalingRefused = "SourceScaling4K cannot be modified.(Unsupported Resolution)";

Path target()
{
    return path("ZT_Marovelton_ImageAdjustment", {{"InstanceID", "ZT:Marovelton_ImageAdjustment"}});
}

Instance readPicture()
{
    const Answer answer = get(picture, target());
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    return answer.instance();
}

/** A source of that size, shown in that aspect ratio, with that digital-cinema region. */
void source(int width, int height, int aspectRatio = 4, int dciOption = 0)
{
    seam.imageAdjustment.HorizontalResolution = width;
    seam.imageAdjustment.VerticalResolution = height;
    seam.imageAdjustment.DisplayAspectRatio = aspectRatio;
    seam.imageAdjustment.CurrentDCIOptions = dciOption;
}

Answer place(const Value &x, const Value &y)
{
    return invoke(picture, target(), "Set4KRegionPosition",
                  {{"Position4KRegionX", x}, {"Position4KRegionY", y}});
}

/** The methods that need nothing of the source: one argument, one register. */
struct Setting {
    const char *method;
    const char *argument;
    ArgumentIs kind;
    int min, max;
    bool administrator;
    const char *missing;
    const char *range;
    ChannelSteps steps;
    int (*setter)(int, char *);
    const char *sentAtMin;
    const char *sentAtMax;
};

const Setting settings[] = {
    {"SetCroppedRegionOpacity",
     "CroppedRegionOpacity",
     ArgumentIs::wholeDecimal,
     25,
     100,
     false,
     "Required argument CroppedRegionOpacity missing.",
     "Invalid input value range. Valid values are between 25 and 100.",
     {.reply = "Failed to set the value to CroppedRegionOpacity.",
      .busy = "Device is Busy. Please try after some time"},
     setCroppedRegionOpacity,
     "01 00 00 00 03 00 07 00 00 01 02 00 22 00 19 00 ...",
     "01 00 00 00 03 00 07 00 00 01 02 00 22 00 64 00 ..."},
    {"SetDCIImageRegion",
     "DCIImageRegion",
     ArgumentIs::wholeDecimal,
     0,
     2,
     false,
     "Required argument DCIImageRegion missing.",
     "Invalid input value range. Valid values are between 0 and 2.",
     {.reply = "Failed to set the value to DCIImageRegion."},
     setDCIImageRegion,
     "01 00 00 00 03 00 07 00 00 01 02 00 1F 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 02 00 1F 00 02 00 ..."},
    {"SetDisplayAspectRatio",
     "DisplayAspectRatio",
     ArgumentIs::wholeDecimal,
     0,
     4,
     false,
     "Required argument DisplayAspectRatio missing.",
     "Invalid input value range, Valid values are between 0 and 4.",
     {.reply = "Failed to set the value to DisplayAspectRatio."},
     setDisplayAspectRatio,
     "01 00 00 00 03 00 07 00 00 01 02 00 1E 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 02 00 1E 00 04 00 ..."},
    {"SetOverscanFrame",
     "OverscanFrame",
     ArgumentIs::toggle,
     0,
     1,
     false,
     "Required argument OverscanFrame missing.",
     "Invalid input value range. Valid value are 0 or 1.",
     {.reply = "Failed to set the value to OverscanFrame."},
     setOverscanFrame,
     "01 00 00 00 03 00 07 00 00 01 02 00 24 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 02 00 24 00 01 00 ..."},
    {"SetShowBlueChannel",
     "ShowBlueChannel",
     ArgumentIs::toggle,
     0,
     1,
     false,
     "Required argument ShowBlueChannel missing.",
     "Invalid input value. Valid values are 0 or 1.",
     {.reply = "Failed to set the value to ShowBlueChannel."},
     setShowBlueChannel,
     "01 00 00 00 03 00 07 00 00 01 02 00 25 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 02 00 25 00 01 00 ..."},
    {"SetShowCroppedRegion",
     "ShowCroppedRegion",
     ArgumentIs::toggle,
     0,
     1,
     false,
     "Required argument ShowCroppedRegion missing.",
     "Invalid input value range, Valid value are 0 or 1.",
     {.reply = "Failed to set the value to ShowCroppedRegion."},
     setShowCroppedRegionForImageAdjustment,
     "01 00 00 00 03 00 07 00 00 01 02 00 21 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 02 00 21 00 01 00 ..."},
    {"SetUseVideoLevels",
     "UseVideoLevels",
     ArgumentIs::toggle,
     0,
     1,
     false,
     "Required argument UseVideoLevels missing.",
     "Invalid input value range, Valid value are 0 or 1.",
     {.reply = "Failed to set the value to video level."},
     setUseVideoLevels,
     "01 00 00 00 03 00 07 00 00 01 02 00 23 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 02 00 23 00 01 00 ..."},
    {"SetOverdriveEnabled",
     "OverdriveEnabled",
     ArgumentIs::toggle,
     0,
     1,
     false,
     "Required argument OverdriveEnabled missing.",
     "Invalid input value range, Valid value are 0 or 1.",
     {.reply = "Failed to set the value of OverdriveEnabled property."},
     setOverdrive,
     "01 00 00 00 03 00 07 00 00 01 02 00 26 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 02 00 26 00 01 00 ..."},
    {"SetDeinterlacerEnabled",
     "DeinterlacerEnabled",
     ArgumentIs::toggle,
     0,
     1,
     true,
     "Required argument DeinterlacerEnabled missing.",
     "Invalid input value range, Valid value are 0 or 1.",
     {.reply = "Failed to set the value of DeinterlacerEnabled property."},
     setDeinterlacer,
     "01 00 00 00 03 00 07 00 00 01 02 00 27 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 02 00 27 00 01 00 ..."},
    {"SetCadenceDetectionEnabled",
     "CadenceDetectionEnabled",
     ArgumentIs::toggle,
     0,
     1,
     true,
     "Required argument CadenceDetectionEnabled missing.",
     "Invalid input value range, Valid value are 0 or 1.",
     {.reply = "Failed to set the value of CadenceDetectionEnabled property."},
     setCadence,
     "01 00 00 00 03 00 07 00 00 01 02 00 28 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 02 00 28 00 01 00 ..."},
};

/** Somebody who may call the method. */
User userOf(const Setting &setting)
{
    return setting.administrator ? User("admin") : noUser();
}

Entries argumentsOf(const Setting &setting)
{
    return {{setting.argument, std::to_string(setting.max)}};
}

/** The three methods that need a 4K source, with arguments that they accept. */
struct MethodOf4K {
    const char *method;
    Entries arguments;
    const char *setting; // the message that is sent after the refresh
    const char *wrongResolution;
    const char *replyMissing;
};
const MethodOf4K methodsOf4K[] = {
    {"SetDisplayed4KCorner", {}, nextCorner, notA4KSource, "Failed to set the value to Source Scaling."},
    {"Set4KRegionPosition",
     {{"Position4KRegionX", "640"}, {"Position4KRegionY", "360"}},
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 80 02 00 00 00 2D 00 68 01 ...",
     notA4KSource,
     "Failed to set the 4k Region Position."},
    {"Set4KSourceScaling",
     {{"SourceScaling4K", "3"}},
     "01 00 00 00 03 00 07 00 00 01 02 00 20 00 03 00 ...",
     scalingRefused,
     "Failed to set the value to Source Scaling."},
};

} // namespace

// ---- the skeleton ----

TEST(ImageAdjustment, HasTheSkeletonOfAProvider)
{
    checkSkeleton(picture);
}

// ---- reads ----

TEST(ImageAdjustment, EnumeratesItsOnePath)
{
    checkPaths(picture, {target()});
}

TEST(ImageAdjustment, PublishesEverySettingInOrder)
{
    // Every field another number, so that none can stand in for another.
    seam.imageAdjustment = {.DisplayAspectRatio = 11,
                            .CurrentDCIOptions = 12,
                            .CurrentDCIOptions4K = 13,
                            .ShowCroppedRegion = 14,
                            .CroppedRegionOpacity = 15,
                            .UseVideoLevels = 16,
                            .Overscan = 17,
                            .ShowBlueChannel = 18,
                            .Overdrive = 19,
                            .Deinterlacer = 20,
                            .Cadence = 21,
                            .DisplayMode4K = 22,
                            .Displayed4KCorner = 23,
                            .Region4KPositionX = 24,
                            .Region4KPositionY = 25,
                            .Show4KPositionOverlay = 26,
                            .SourceScaling4K = 27,
                            .HorizontalResolution = 28,
                            .VerticalResolution = 29};
    checkInstance(
        picture, target(),
        {{"Region4KPositionX", uint16(24)},
         {"Region4KPositionY", uint16(25)},
         {"CroppedRegionOpacity", uint16(15)},
         {"OverscanFrame", boolean(17)},
         {"ShowBlueChannel", boolean(18)},
         {"ShowCroppedRegion", boolean(14)},
         {"UseVideoLevels", boolean(16)},
         {"OverdriveEnabled", boolean(19)},
         {"DeinterlacerEnabled", boolean(20)},
         {"CadenceDetectionEnabled", boolean(21)},
         {"DisplayAspectRatio", uint16Array({11})},
         {"DCIImageRegion", uint16Array({12})},
         {"SourceScaling4K", uint16Array({13})},
         {"Caption", chars("ZT_Marovelton_ImageAdjustment")},
         {"ElementName", chars("ZT_Marovelton_ImageAdjustment")},
         {"InstanceID", chars("ZT:Marovelton_ImageAdjustment")},
         {"Description",
          chars("A class derived from Logical Element that represents the single node container of the "
                "Display Management System.")},
         {"Name", chars("Studio 7-ImageAdjustment")}},
        {"GetImageAdjustmentInfo()", "GetMoinitorInfo()"}, true);
}

TEST(ImageAdjustment, PublishesTheLowBitsOfNumbersThatDoNotFit)
{
    seam.imageAdjustment.Region4KPositionX = 65536 + 5;
    seam.imageAdjustment.Region4KPositionY = -1;
    seam.imageAdjustment.DisplayAspectRatio = 65536 + 4;
    const Instance instance = readPicture();
    EXPECT_EQ(*instance.find("Region4KPositionX"), uint16(5));
    EXPECT_EQ(*instance.find("Region4KPositionY"), uint16(65535));
    EXPECT_EQ(*instance.find("DisplayAspectRatio"), uint16Array({4}));
}

TEST(ImageAdjustment, IsNamedAfterTheMonitorOrItsAddress)
{
    checkNameOfSystem(picture, target(), "-ImageAdjustment");
}

TEST(ImageAdjustment, ReadsWhileTheEngineIsBusy)
{
    seam.status = BUSY;
    const Answer answer = enumerate(picture, path("ZT_Marovelton_ImageAdjustment"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_SENT(answer, {});
}

TEST(ImageAdjustment, ChecksTheKeyOfGetInstance)
{
    checkKeysOfGetInstance(picture, target(), instanceIDOfReads());
}

TEST(ImageAdjustment, SaysWhichStepOfABuildFailed)
{
    checkBuilders({.tested = &picture,
                   .reference = target(),
                   .makePath = _makePath_ZT_Marovelton_ImageAdjustment,
                   .makeInst = _makeInst_ZT_Marovelton_ImageAdjustment,
                   .records = {{"GetImageAdjustmentInfo()",
                                "Failed to get Image Adjustment information from database."},
                               {"GetMoinitorInfo()", "Could not get monitor information from database."}},
                   .arrays = 3});
}

// ---- what all methods have in common ----

TEST(ImageAdjustment, ChecksTheTargetOfAMethod)
{
    const std::vector<KeyRule> keys = instanceIDOfMethods();
    for (const Setting &setting : settings) {
        checkKeysOfMethod(picture, target(), setting.method, argumentsOf(setting), userOf(setting), keys);
        checkOtherClass(picture, target(), setting.method, argumentsOf(setting), userOf(setting),
                        CMPI_RC_ERR_NOT_FOUND, "Invalid class name", uint32(2));
    }
    for (const MethodOf4K &row : methodsOf4K) {
        checkKeysOfMethod(picture, target(), row.method, row.arguments, noUser(), keys);
    }
    // Those that are always refused check it too.
    for (const char *method : {"Set4KDisplayMode", "SetShow4KPositionOverlay", "NoSuchMethod"}) {
        EXPECT_METHOD(invoke(picture, target().without("InstanceID"), method), uint32(2),
                      CMPI_RC_ERR_NOT_FOUND, "Invalid selector(Could not get InstanceID of instance.)");
    }
}

TEST(ImageAdjustment, AnswersUnknownMethodsWithTheirName)
{
    checkUnknownMethods(picture, target(),
                        {"SetOverscan", "setoverscanframe", "SETOVERSCANFRAME", "SetOverscanFrame ",
                         "set4kdisplaymode", "SetOverdrive", "Get4kState", "insert_method_name"},
                        CMPI_RC_ERR_NOT_FOUND, uint32(1));
}

TEST(ImageAdjustment, NeedsAnAdministratorForTwoSwitches)
{
    checkAdministratorOnly(picture, target(), "SetDeinterlacerEnabled", {{"DeinterlacerEnabled", "true"}});
    checkAdministratorOnly(picture, target(), "SetCadenceDetectionEnabled",
                           {{"CadenceDetectionEnabled", "true"}});
    for (const Setting &setting : settings) {
        if (!setting.administrator) {
            checkNoAdministratorNeeded(picture, target(), setting.method, argumentsOf(setting));
        }
    }
    for (const MethodOf4K &row : methodsOf4K) {
        checkNoAdministratorNeeded(picture, target(), row.method, row.arguments);
    }
}

TEST(ImageAdjustment, ChecksTheUserBeforeTheArgument)
{
    for (const Setting &setting : settings) {
        if (!setting.administrator) {
            continue;
        }
        EXPECT_METHOD(invoke(picture, target(), setting.method, {}, "operator"), uint32(2),
                      CMPI_RC_ERR_ACCESS_DENIED, "Operation not allowed for non-admin user credentials");
        EXPECT_METHOD(invoke(picture, target(), setting.method, {}, "admin"), uint32(2),
                      CMPI_RC_ERR_INVALID_PARAMETER, setting.missing);
    }
}

// ---- settings ----

TEST(ImageAdjustment, SendsEverySetting)
{
    for (const Setting &setting : settings) {
        SCOPED_TRACE(setting.method);
        checkSender([&](char *errorText) { return setting.setter(setting.min, errorText); },
                    setting.sentAtMin, setting.steps);
        checkSender([&](char *errorText) { return setting.setter(setting.max, errorText); },
                    setting.sentAtMax, setting.steps);
    }
    checkSender([](char *errorText) { return set4KSourceScaling(2, errorText); },
                "01 00 00 00 03 00 07 00 00 01 02 00 20 00 02 00 ...",
                {.reply = "Failed to set the value to Source Scaling."});
    checkSender(setDisplayed4KCorner, nextCorner, {.reply = "Failed to set the value to Source Scaling."});
}

TEST(ImageAdjustment, SendsTheLow16Bits)
{
    for (const Setting &setting : settings) {
        SCOPED_TRACE(setting.method);
        std::array<uint8_t, 40> message = bytes(setting.sentAtMin);
        message[14] = 0x45;
        message[15] = 0x23;
        EXPECT_SENT(call([&](char *errorText) { return setting.setter(0x12345, errorText); }),
                    {hex(message)});
    }
    EXPECT_SENT(call([](char *errorText) { return set4KSourceScaling(0x12345, errorText); }),
                {"01 00 00 00 03 00 07 00 00 01 02 00 20 00 45 23 ..."});
    EXPECT_SENT(call([](char *errorText) { return Set4KRegionPosition(-1, 0x12345, errorText); }),
                {"01 00 00 00 03 00 07 00 00 02 02 00 2C 00 FF FF 00 00 00 2D 00 45 23 ..."});
}

TEST(ImageAdjustment, SendsBothCoordinatesInOneMessage)
{
    checkSender([](char *errorText) { return Set4KRegionPosition(1536, 498, errorText); },
                "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 06 00 00 00 2D 00 F2 01 ...",
                {.reply = "Failed to set the 4k Region Position."});
}

TEST(ImageAdjustment, ReadsAndSendsEverySetting)
{
    for (const Setting &setting : settings) {
        checkSettingMethod({.tested = &picture,
                            .target = target(),
                            .method = setting.method,
                            .argument = setting.argument,
                            .kind = setting.kind,
                            .min = setting.min,
                            .max = setting.max,
                            .missing = setting.missing,
                            .range = setting.range,
                            .steps = setting.steps,
                            .sentAtMin = setting.sentAtMin,
                            .sentAtMax = setting.sentAtMax,
                            .administrator = setting.administrator});
    }
}

TEST(ImageAdjustment, ChecksTheRangeOfEverySetting)
{
    for (const Setting &setting : settings) {
        SCOPED_TRACE(setting.method);
        const std::string most = std::to_string(setting.max);
        seam.reset();
        seam.returns("ValidateInputArgs(" + most + ", " + std::to_string(setting.min) + ", " + most + ")",
                     -1);
        const Answer answer =
            invoke(picture, target(), setting.method, argumentsOf(setting), userOf(setting));
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, setting.range);
        EXPECT_SENT(answer, {});
    }
}

TEST(ImageAdjustment, AcceptsTheTextsOfASwitch)
{
    for (const char *text : {"TRUE", "False", "1", "0", "true"}) {
        EXPECT_METHOD(invoke(picture, target(), "SetOverscanFrame", {{"OverscanFrame", text}}), uint32(0),
                      CMPI_RC_OK, "")
            << text;
    }
    for (const char *text : {"yes", " 1"}) {
        EXPECT_METHOD(invoke(picture, target(), "SetOverscanFrame", {{"OverscanFrame", text}}), uint32(2),
                      CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.")
            << text;
    }
}

TEST(ImageAdjustment, AcceptsOpacitiesFrom25To100)
{
    const auto set = [](const char *opacity) {
        return invoke(picture, target(), "SetCroppedRegionOpacity", {{"CroppedRegionOpacity", opacity}});
    };
    for (const char *outside : {"24", "101"}) {
        EXPECT_METHOD(set(outside), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Invalid input value range. Valid values are between 25 and 100.");
    }
    const Answer least = set("25");
    EXPECT_METHOD(least, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(least, {"01 00 00 00 03 00 07 00 00 01 02 00 22 00 19 00 ..."});
    const Answer most = set("100");
    EXPECT_METHOD(most, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(most, {"01 00 00 00 03 00 07 00 00 01 02 00 22 00 64 00 ..."});
    EXPECT_METHOD(set("12abc"), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.");
    EXPECT_METHOD(set(""), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter. Value is missing.");
}

TEST(ImageAdjustment, ReportsABusyEngineForEverySetting)
{
    seam.status = BUSY;
    for (const Setting &setting : settings) {
        const Answer answer =
            invoke(picture, target(), setting.method, argumentsOf(setting), userOf(setting));
        // The opacity's text lacks the full stop.
        const bool opacity = std::string(setting.method) == "SetCroppedRegionOpacity";
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED,
                      opacity ? "Device is Busy. Please try after some time"
                              : "Device is Busy. Please try after some time.")
            << setting.method;
        EXPECT_SENT(answer, {});
    }
}

// ---- what is never done ----

TEST(ImageAdjustment, RefusesTheDisplayModeWithABlank)
{
    for (const Entries &arguments :
         {Entries{}, Entries{{"DisplayMode4K", "1"}}, Entries{{"DisplayMode4K", ""}},
          Entries{{"DisplayMode4K", uint16(1)}}, Entries{{"DisplayMode4K", nullOf(CMPI_string)}}}) {
        const Answer answer = invoke(picture, target(), "Set4KDisplayMode", arguments);
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_NOT_SUPPORTED, " ");
        EXPECT_CALLS(answer, {});
    }
}

TEST(ImageAdjustment, FetchesTheDisplayModeAllTheSame)
{
    faults.arm("getArg", 1);
    EXPECT_METHOD(invoke(picture, target(), "Set4KDisplayMode", {{"DisplayMode4K", "1"}}), uint32(2),
                  CMPI_RC_ERR_NOT_SUPPORTED, " ");
    EXPECT_EQ(faults.struck(), "getArg");
}

TEST(ImageAdjustment, RefusesThePositionOverlayWithItsName)
{
    const Answer answer =
        invoke(picture, target(), "SetShow4KPositionOverlay", {{"Show4KPositionOverlay", "1"}});
    EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_NOT_SUPPORTED, "SetShow4KPositionOverlay");
    EXPECT_CALLS(answer, {});
}

TEST(ImageAdjustment, HasTwoSettingsThatDoNothing)
{
    for (auto *setter : {setDisplayMode4K, setShow4KPositionOverlay}) {
        const SetterAnswer answer = call([&](char *errorText) { return setter(1, errorText); });
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.errorText, " ");
        EXPECT_CALLS(answer, {});
        EXPECT_EQ(answer.trace, "");
    }
}

TEST(ImageAdjustment, ReadsTheStateOfScrolling)
{
    seam.registers[{43, 2}] = "3";
    EXPECT_EQ(Get4kState(), 3);
    EXPECT_EQ(seam.calls, std::vector<std::string>{"GetRegisterValue(43, 2)"});
    seam.registers[{43, 2}] = "12abc";
    EXPECT_EQ(Get4kState(), 12);
    seam.registers[{43, 2}] = "none";
    EXPECT_EQ(Get4kState(), 0);
    seam.registers[{43, 2}] = std::string(40, '0'); // fills the buffer without a terminating zero
    EXPECT_EQ(Get4kState(), 0);
    for (const int result : {-1, 1, 80000001}) {
        seam.returns("GetRegisterValue", result);
        EXPECT_EQ(Get4kState(), -1);
    }
}

// ---- the conditions of a 4K source ----

TEST(ImageAdjustment, RefreshesTheSettingsBeforeA4KMethod)
{
    for (const MethodOf4K &row : methodsOf4K) {
        const Answer answer = invoke(picture, target(), row.method, row.arguments);
        EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "") << row.method;
        EXPECT_SENT(answer, {refreshOfImage, row.setting});
        const std::vector<std::string> refresh = {"GetMonitorStatus(0)",
                                                  "SpearEngineMessageQueueCreate(0)",
                                                  "SendStatusMessagetoSource(100)",
                                                  "SpearEngineMessageQueueCreate(3)",
                                                  "RecvMessageFromSource(103)",
                                                  "GetImageAdjustmentInfo()"};
        ASSERT_GE(answer.calls.size(), 6u);
        EXPECT_EQ(std::vector<std::string>(answer.calls.begin(), answer.calls.begin() + 6), refresh)
            << row.method;
    }
}

TEST(ImageAdjustment, ReportsARefreshThatFails)
{
    for (const MethodOf4K &row : methodsOf4K) {
        SCOPED_TRACE(row.method);
        checkFailuresOfSend([&] { return invoke(picture, target(), row.method, row.arguments); },
                            refreshSteps);
        for (const int result : {-1, 1}) {
            seam.reset();
            seam.returns("GetImageAdjustmentInfo", result);
            const Answer answer = invoke(picture, target(), row.method, row.arguments);
            EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED,
                          "Failed to get Settings information from database.");
            EXPECT_SENT(answer, {refreshOfImage});
        }
    }
}

TEST(ImageAdjustment, ReportsASettingThatFailsAfterTheRefresh)
{
    for (const MethodOf4K &row : methodsOf4K) {
        SCOPED_TRACE(row.method);
        checkFailuresOfSend([&] { return invoke(picture, target(), row.method, row.arguments); },
                            {.reply = row.replyMissing}, 1);
    }
}

TEST(ImageAdjustment, Needs4KSources)
{
    for (const MethodOf4K &row : methodsOf4K) {
        SCOPED_TRACE(row.method);
        for (const int width : {4096, 4095, 3840}) {
            source(width, 2160);
            EXPECT_METHOD(invoke(picture, target(), row.method, row.arguments), uint32(0), CMPI_RC_OK, "")
                << width;
        }
        const struct {
            int width, height;
        } others[] = {{1920, 1080}, {3840, 2159}, {3840, 2161}, {4096, 1080},  {3839, 2160}, {3841, 2160},
                      {4094, 2160}, {4097, 2160}, {2160, 3840}, {-3840, 2160}, {0, 0},       {-1, 2160}};
        for (const auto &other : others) {
            source(other.width, other.height);
            const Answer answer = invoke(picture, target(), row.method, row.arguments);
            EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_NOT_SUPPORTED, row.wrongResolution)
                << other.width << " x " << other.height;
            EXPECT_SENT(answer, {refreshOfImage});
        }
    }
}

TEST(ImageAdjustment, NeedsPixelForPixelForTheRegion)
{
    for (const int aspectRatio : {0, 1, 2, 3, 5, -1}) {
        // Even on a 4K source; and where both are wrong, this is what the client learns.
        for (const int height : {2160, 1080}) {
            source(3840, height, aspectRatio);
            for (const char *method : {"SetDisplayed4KCorner", "Set4KRegionPosition"}) {
                const Answer answer = invoke(picture, target(), method,
                                             {{"Position4KRegionX", "0"}, {"Position4KRegionY", "0"}});
                EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_NOT_SUPPORTED, notPixelForPixel) << aspectRatio;
                EXPECT_SENT(answer, {refreshOfImage});
            }
        }
        // The source's scaling can be set in every aspect ratio.
        source(3840, 2160, aspectRatio);
        EXPECT_METHOD(invoke(picture, target(), "Set4KSourceScaling", {{"SourceScaling4K", "1"}}), uint32(0),
                      CMPI_RC_OK, "");
    }
}

// ---- Set4KSourceScaling ----

TEST(ImageAdjustment, ReadsAndSendsTheSourceScaling)
{
    checkSettingMethod({.tested = &picture,
                        .target = target(),
                        .method = "Set4KSourceScaling",
                        .argument = "SourceScaling4K",
                        .kind = ArgumentIs::wholeDecimal,
                        .min = 0,
                        .max = 3,
                        .missing = "Required argument SourceScaling4K missing.",
                        .range = "Invalid input value range. Valid values are between 0 and 3",
                        .steps = {.reply = "Failed to set the value to Source Scaling."},
                        .sentAtMin = "01 00 00 00 03 00 07 00 00 01 02 00 20 00 00 00 ...",
                        .sentAtMax = "01 00 00 00 03 00 07 00 00 01 02 00 20 00 03 00 ...",
                        .sentBefore = {refreshOfImage}});
}

TEST(ImageAdjustment, ReadsTheSourceScalingBeforeTheRefreshAndChecksItsRangeLast)
{
    const auto set = [](const Entries &arguments) {
        return invoke(picture, target(), "Set4KSourceScaling", arguments);
    };
    source(1920, 1080);
    const Answer missing = set({});
    EXPECT_METHOD(missing, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                  "Required argument SourceScaling4K missing.");
    EXPECT_CALLS(missing, {});
    const Answer malformed = set({{"SourceScaling4K", "3x"}});
    EXPECT_METHOD(malformed, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.");
    EXPECT_CALLS(malformed, {});
    for (const char *scaling : {"0", "3", "4", "-1", "99"}) {
        EXPECT_METHOD(set({{"SourceScaling4K", scaling}}), uint32(2), CMPI_RC_ERR_NOT_SUPPORTED,
                      scalingRefused)
            << scaling;
    }
    source(3840, 2160);
    const Answer outside = set({{"SourceScaling4K", "4"}});
    EXPECT_METHOD(outside, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                  "Invalid input value range. Valid values are between 0 and 3");
    EXPECT_SENT(outside, {refreshOfImage});
}

// ---- Set4KRegionPosition ----

namespace
{

struct Bounds {
    int width, dciOption;
    int minX, maxX, minY, maxY;
    const char *wrongX;
    const char *wrongY;
    const char *sentAtMin;
    const char *sentAtMax;
};
const Bounds bounds[] = {
    {4096, 0, 0, 1536, 0, 720, "Invalid Position4KRegionX value 0 and 1536",
     "Invalid Position4KRegionY value. Valid values are between 0 and 720",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 00 00 00 00 2D 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 06 00 00 00 2D 00 D0 02 ..."},
    {4095, 0, 0, 1535, 0, 720, "Invalid Position4KRegionX value 0 and 1535",
     "Invalid Position4KRegionY value. Valid values are between 0 and 720",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 00 00 00 00 2D 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 FF 05 00 00 00 2D 00 D0 02 ..."},
    {4096, 1, 50, 1486, 0, 720, "Invalid Position4KRegionX value 50 and 1486",
     "Invalid Position4KRegionY value. Valid values are between 0 and 720",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 32 00 00 00 00 2D 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 CE 05 00 00 00 2D 00 D0 02 ..."},
    {4095, 1, 49, 1485, 0, 720, "Invalid Position4KRegionX value 49 and 1485",
     "Invalid Position4KRegionY value. Valid values are between 0 and 720",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 31 00 00 00 00 2D 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 CD 05 00 00 00 2D 00 D0 02 ..."},
    {4096, 2, 0, 1536, 222, 498, "Invalid Position4KRegionX value 0 and 1536",
     "Invalid Position4KRegionY value. Valid values are between 222 and 498",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 00 00 00 00 2D 00 DE 00 ...",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 06 00 00 00 2D 00 F2 01 ..."},
    {4095, 2, 0, 1535, 222, 498, "Invalid Position4KRegionX value 0 and 1535",
     "Invalid Position4KRegionY value. Valid values are between 222 and 498",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 00 00 00 00 2D 00 DE 00 ...",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 FF 05 00 00 00 2D 00 F2 01 ..."},
    {3840, 0, 0, 1280, 0, 720, "Invalid Position4KRegionX value 0 and 1280",
     "Invalid Position4KRegionY value. Valid values are between 0 and 720",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 00 00 00 00 2D 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 05 00 00 00 2D 00 D0 02 ..."},
    {3840, 1, 0, 1280, 0, 720, "Invalid Position4KRegionX value 0 and 1280",
     "Invalid Position4KRegionY value. Valid values are between 0 and 720",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 00 00 00 00 2D 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 05 00 00 00 2D 00 D0 02 ..."},
    {3840, 2, 0, 1280, 0, 720, "Invalid Position4KRegionX value 0 and 1280",
     "Invalid Position4KRegionY value. Valid values are between 0 and 720",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 00 00 00 00 2D 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 02 02 00 2C 00 00 05 00 00 00 2D 00 D0 02 ..."},
};

} // namespace

TEST(ImageAdjustment, PlacesTheRegionWithinTheBoundsOfTheSource)
{
    for (const Bounds &row : bounds) {
        SCOPED_TRACE(std::to_string(row.width) + " wide, digital-cinema region " +
                     std::to_string(row.dciOption));
        source(row.width, 2160, 4, row.dciOption);
        const std::string minX = std::to_string(row.minX);
        const std::string maxX = std::to_string(row.maxX);
        const std::string minY = std::to_string(row.minY);
        const std::string maxY = std::to_string(row.maxY);

        const Answer least = place(minX, minY);
        EXPECT_METHOD(least, uint32(0), CMPI_RC_OK, "");
        EXPECT_SENT(least, {refreshOfImage, row.sentAtMin});
        const Answer most = place(maxX, maxY);
        EXPECT_METHOD(most, uint32(0), CMPI_RC_OK, "");
        EXPECT_SENT(most, {refreshOfImage, row.sentAtMax});

        for (const std::string &x : {std::to_string(row.minX - 1), std::to_string(row.maxX + 1),
                                     std::to_string(65536 + row.minX), std::string("4294967296")}) {
            const Answer answer = place(x, minY);
            EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, row.wrongX) << x;
            EXPECT_SENT(answer, {refreshOfImage});
        }
        for (const std::string &y : {std::to_string(row.minY - 1), std::to_string(row.maxY + 1),
                                     std::to_string(65536 + row.minY), std::string("4294967296")}) {
            const Answer answer = place(maxX, y);
            EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, row.wrongY) << y;
            EXPECT_SENT(answer, {refreshOfImage});
        }
    }
}

TEST(ImageAdjustment, RefusesEveryPositionWhereTheRegionHasNoBounds)
{
    // A digital-cinema region that does not exist leaves a range without a value, from 0 to -1.
    for (const int width : {4096, 4095}) {
        for (const int dciOption : {3, -1, 4096, 4095, 2147483647}) {
            source(width, 2160, 4, dciOption);
            for (const char *x : {"0", "-1", "50", "1485", "1536"}) {
                const Answer answer = place(x, "300");
                EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                              "Invalid Position4KRegionX value 0 and -1")
                    << width << " " << dciOption << " " << x;
                EXPECT_SENT(answer, {refreshOfImage});
            }
            // What is no position at all is said to be so.
            EXPECT_METHOD(place("x", "300"), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.");
        }
    }
    for (const int dciOption : {3, -1, 2147483647}) {
        source(3840, 2160, 4, dciOption);
        EXPECT_METHOD(place("1280", "720"), uint32(0), CMPI_RC_OK, "") << dciOption;
    }
}

TEST(ImageAdjustment, ReadsTheCoordinates)
{
    const std::vector<NamedValue> missing = everyMissingString();
    for (const NamedValue &value : missing) {
        EXPECT_METHOD(place(value.value, "0"), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Required argument Position4KRegionX missing.")
            << value.name;
        EXPECT_METHOD(place("0", value.value), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Required argument Position4KRegionY missing.")
            << value.name;
    }
    for (const Value &value : {uint16(0), uint32(0), boolean(0), reference(target())}) {
        EXPECT_METHOD(place(value, "0"), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Invalid type of parameter.");
        EXPECT_METHOD(place("0", value), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Invalid type of parameter.");
    }
    EXPECT_METHOD(place("", "0"), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                  "Invalid parameter. Value is missing.");
    EXPECT_METHOD(place("0", ""), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                  "Invalid parameter. Value is missing.");
    for (const char *text : {"12abc", "1.5", "1 ", "0x10", "x", "true"}) {
        EXPECT_METHOD(place(text, "0"), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.")
            << text;
        EXPECT_METHOD(place("0", text), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.")
            << text;
    }
}

TEST(ImageAdjustment, ChecksOneCoordinateAfterTheOther)
{
    // X is read and checked before Y is looked at.
    EXPECT_METHOD(place("1281", absent()), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                  "Invalid Position4KRegionX value 0 and 1280");
    EXPECT_METHOD(place(absent(), "721"), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                  "Required argument Position4KRegionX missing.");
    // The source is looked at before either.
    source(1920, 1080);
    EXPECT_METHOD(place(absent(), absent()), uint32(2), CMPI_RC_ERR_NOT_SUPPORTED, notA4KSource);
}

// ---- torture ----

TEST(ImageAdjustment, SurvivesEveryFailure)
{
    checkTortureOfReads(picture, target());
    for (const Setting &setting : settings) {
        checkTorture(
            [&] { return invoke(picture, target(), setting.method, argumentsOf(setting), userOf(setting)); });
    }
    for (const MethodOf4K &row : methodsOf4K) {
        checkTorture([&] { return invoke(picture, target(), row.method, row.arguments); });
    }
    checkTorture([&] { return invoke(picture, target(), "Set4KDisplayMode", {{"DisplayMode4K", "1"}}); });
    checkTorture([&] { return invoke(picture, target(), "SetShow4KPositionOverlay"); });
}
