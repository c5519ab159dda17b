// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_ColorSpace: the seven presets, their luminance and the calibration resets.

#include "display/modules.h"
#include "support/checks.h"

#include <climits>

METHOD_CLASS(ColorSpace);

namespace
{

const char *const className = "ZT_Marovelton_ColorSpace";
const char *const databaseText = "Failed to get ColorSpace information from database.";
const char *const refreshOfColorSpaces = "01 00 00 00 08 00 07 00 00 00 00 ...";
const char *const lastCalibrationReset = "01 00 00 00 03 00 07 00 00 01 0B 00 14 00 00 00 ...";
const char *const factoryCalibrationReset = "01 00 00 00 03 00 07 00 00 01 0B 00 13 00 00 00 ...";

Path presetPath(const std::string &instanceID)
{
    return path(className, {{"InstanceID", instanceID}});
}

/** The preset that the scripted monitor uses: index 1. */
Path activePreset()
{
    return presetPath("ZT:Marovelton_ColorSpace:2");
}

Path inactivePreset()
{
    return presetPath("ZT:Marovelton_ColorSpace:5");
}

/** The instance of a preset, read by GetInstance. */
Instance readPreset(const std::string &instanceID)
{
    const Answer answer = get(ColorSpace, presetPath(instanceID));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    return answer.instance();
}

const std::vector<std::string> &identifiers()
{
    static const std::vector<std::string> all = {
        "ZT:Marovelton_ColorSpace:1", "ZT:Marovelton_ColorSpace:2", "ZT:Marovelton_ColorSpace:3",
        "ZT:Marovelton_ColorSpace:4", "ZT:Marovelton_ColorSpace:5", "ZT:Marovelton_ColorSpace:6",
        "ZT:Marovelton_ColorSpace:7",
    };
    return all;
}

void offerResets()
{
    seam.registers[{19, 0}] = "1";
    seam.registers[{20, 0}] = "1";
}

} // namespace

// ---- the skeleton ----

TEST(ColorSpace, HasTheSkeletonOfAProvider)
{
    checkSkeleton(ColorSpace);
}

TEST(ColorSpace, NamesItsFunctionTables)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    EXPECT_STREQ(ColorSpace.createInstanceMI(&broker, contextOf(noUser()), &status)->ft->miName,
                 "instanceZT_Marovelton_ColorSpace");
    EXPECT_STREQ(ColorSpace.createMethodMI(&broker, contextOf(noUser()), &status)->ft->miName,
                 "methodZT_Marovelton_ColorSpace");
}

// ---- reads ----

TEST(ColorSpace, EnumeratesSevenPathsInOrder)
{
    std::vector<Path> expected;
    for (const std::string &identifier : identifiers()) {
        expected.push_back(presetPath(identifier));
    }
    // Names need nothing of the monitor.
    checkPaths(ColorSpace, expected);
}

TEST(ColorSpace, PublishesEveryPropertyOfAPresetInOrder)
{
    const Answer answer = get(ColorSpace, presetPath("ZT:Marovelton_ColorSpace:4"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    const Instance preset = answer.instance();
    EXPECT_EQ(preset.path.className, "ZT_Marovelton_ColorSpace");
    EXPECT_KEYS(preset.path, {{"InstanceID", chars("ZT:Marovelton_ColorSpace:4")}});
    EXPECT_PROPERTIES(
        preset, {{"Active", boolean(0)},
                 {"ColorSpaceNumber", uint16(4)},
                 {"ColorSpaceName", chars("BT.709")},
                 {"DisplayLuminance", uint16(130)},
                 {"BluePrimaryU", chars("0.175")},
                 {"BluePrimaryV", chars("0.158")},
                 {"BluePrimaryX", chars("0.150")},
                 {"BluePrimaryY", chars("0.060")},
                 {"Gamma", chars("2.20")},
                 {"GreenPrimaryU", chars("0.076")},
                 {"GreenPrimaryV", chars("0.576")},
                 {"GreenPrimaryX", chars("0.210")},
                 {"GreenPrimaryY", chars("0.710")},
                 {"RedPrimaryU", chars("0.451")},
                 {"RedPrimaryV", chars("0.523")},
                 {"RedPrimaryX", chars("0.640")},
                 {"RedPrimaryY", chars("0.330")},
                 {"WhitePointU", chars("0.198")},
                 {"WhitePointV", chars("0.468")},
                 {"WhitePointX", chars("0.313")},
                 {"WhitePointY", chars("0.329")},
                 {"Caption", chars("ZT_Marovelton_ColorSpace")},
                 {"ElementName", chars("ZT_Marovelton_ColorSpace")},
                 {"InstanceID", chars("ZT:Marovelton_ColorSpace:4")},
                 {"Description",
                  chars("A class derived from Logical Element that represents the single node container "
                        "of the Display Management System.")},
                 {"Name", chars("ZT_Marovelton_ColorSpace-BT.709")}});
    EXPECT_CALLS(answer, {"GetColorSpaceInfoById(3)", "GetRegisterValue(1, 0)"});
    EXPECT_EQ(answer.trace, "--- ZT_Marovelton_ColorSpace CMPI GetInstance() called\n"
                            "--- ZT_Marovelton_ColorSpace makePath called\n"
                            "--- ZT_Marovelton_ColorSpace makeInst) called\n"
                            "--- ZT_Marovelton_ColorSpace makeInst) exited\n"
                            "--- ZT_Marovelton_ColorSpace CMPI GetInstance() exited\n");
}

TEST(ColorSpace, EnumeratesSevenInstancesInOrder)
{
    const Answer answer = enumerate(ColorSpace, path("ZT_Marovelton_ColorSpace"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    const std::vector<Instance> presets = answer.instances();
    ASSERT_EQ(presets.size(), 7u);
    const char *const names[] = {"ZT_Marovelton_ColorSpace-Adobe RGB", "ZT_Marovelton_ColorSpace-sRGB D65",
                                 "ZT_Marovelton_ColorSpace-sRGB D50",  "ZT_Marovelton_ColorSpace-BT.709",
                                 "ZT_Marovelton_ColorSpace-BT.2020",   "ZT_Marovelton_ColorSpace-DCI P3",
                                 "ZT_Marovelton_ColorSpace-User 1"};
    const char *const gammas[] = {"2.20", "sRGB", "sRGB", "2.20", "2.20", "2.20", "2.20"};
    std::string trace = "--- ZT_Marovelton_ColorSpace CMPI EnumInstances() called\n";
    for (size_t i = 0; i < 7; ++i) {
        EXPECT_EQ(*presets[i].find("InstanceID"), chars(identifiers()[i]));
        EXPECT_EQ(*presets[i].find("Active"), boolean(i == 1)) << i;
        EXPECT_EQ(*presets[i].find("ColorSpaceNumber"), uint16(static_cast<uint16_t>(i + 1)));
        EXPECT_EQ(*presets[i].find("DisplayLuminance"), uint16(static_cast<uint16_t>(100 + 10 * i)));
        EXPECT_EQ(*presets[i].find("Name"), chars(names[i]));
        EXPECT_EQ(*presets[i].find("Gamma"), chars(gammas[i])) << i;
        EXPECT_EQ(presets[i].properties.size(), 26u);
        trace += "--- ZT_Marovelton_ColorSpace makePath called\n"
                 "--- ZT_Marovelton_ColorSpace makeInst) called\n"
                 "--- ZT_Marovelton_ColorSpace makeInst) exited\n";
    }
    EXPECT_SENT(answer, {});
    EXPECT_EQ(answer.trace, trace + "--- ZT_Marovelton_ColorSpace CMPI EnumInstances() leave \n");
}

TEST(ColorSpace, ReadsWhileTheEngineIsBusy)
{
    seam.status = BUSY;
    EXPECT_EQ(enumerate(ColorSpace, path("ZT_Marovelton_ColorSpace")).instances().size(), 7u);
}

TEST(ColorSpace, ShowsWhichPresetIsActive)
{
    for (int active = 0; active < 7; ++active) {
        seam.registers[{1, 0}] = std::to_string(active);
        for (int i = 0; i < 7; ++i) {
            EXPECT_EQ(*readPreset(identifiers()[static_cast<size_t>(i)]).find("Active"),
                      boolean(i == active));
        }
    }
    for (const char *none : {"7", "-1", "10", "2147483648"}) {
        seam.registers[{1, 0}] = none;
        for (const std::string &identifier : identifiers()) {
            EXPECT_EQ(*readPreset(identifier).find("Active"), boolean(0)) << none;
        }
    }
}

TEST(ColorSpace, NumbersAPresetByItsRecord)
{
    seam.colorSpaces[0].ActiveColorSpace = 6;
    EXPECT_EQ(*readPreset("ZT:Marovelton_ColorSpace:1").find("ColorSpaceNumber"), uint16(7));
}

TEST(ColorSpace, PublishesTheLowBitsOfNumbersThatDoNotFit)
{
    seam.colorSpaces[0].ActiveColorSpace = INT_MAX;
    seam.colorSpaces[0].DisplayLuminance = 65536 + 120;
    const Instance wrapped = readPreset("ZT:Marovelton_ColorSpace:1");
    EXPECT_EQ(*wrapped.find("ColorSpaceNumber"), uint16(0));
    EXPECT_EQ(*wrapped.find("DisplayLuminance"), uint16(120));

    seam.colorSpaces[0].ActiveColorSpace = -2;
    seam.colorSpaces[0].DisplayLuminance = -1;
    const Instance negative = readPreset("ZT:Marovelton_ColorSpace:1");
    EXPECT_EQ(*negative.find("ColorSpaceNumber"), uint16(65535));
    EXPECT_EQ(*negative.find("DisplayLuminance"), uint16(65535));
}

TEST(ColorSpace, ReportsTheGammaOfPresetsNamedSRGBByName)
{
    for (const char *name : {"sRGB", "sRGB D65", "My sRGB", "xsRGBx", "ABCDEFGHIJKsRGB"}) {
        setField(seam.colorSpaces[3].ColorSpaceName, name);
        EXPECT_EQ(*readPreset("ZT:Marovelton_ColorSpace:4").find("Gamma"), chars("sRGB")) << name;
    }
    for (const char *name : {"SRGB", "srgb", "RGB", "sRG B", ""}) {
        setField(seam.colorSpaces[3].ColorSpaceName, name);
        EXPECT_EQ(*readPreset("ZT:Marovelton_ColorSpace:4").find("Gamma"), chars("2.20")) << name;
    }
}

TEST(ColorSpace, PublishesFieldsThatAreFullToTheirWidth)
{
    ColorSpaceInfo &preset = seam.colorSpaces[3];
    fillField(preset.ColorSpaceName, 'N');
    fillField(preset.RedPrimaryU, 'a');
    fillField(preset.GreenPrimaryU, 'b');
    fillField(preset.BluePrimaryU, 'c');
    fillField(preset.WhitePointU, 'd');
    fillField(preset.RedPrimaryV, 'e');
    fillField(preset.GreenPrimaryV, 'f');
    fillField(preset.BluePrimaryV, 'g');
    fillField(preset.WhitePointV, 'h');
    fillField(preset.RedPrimaryX, 'i');
    fillField(preset.GreenPrimaryX, 'j');
    fillField(preset.BluePrimaryX, 'k');
    fillField(preset.WhitePointX, 'l');
    fillField(preset.RedPrimaryY, 'm');
    fillField(preset.GreenPrimaryY, 'n');
    fillField(preset.BluePrimaryY, 'o');
    fillField(preset.WhitePointY, 'p');
    fillField(preset.Gamma, '2');
    EXPECT_PROPERTIES(
        readPreset("ZT:Marovelton_ColorSpace:4"),
        {{"Active", boolean(0)},
         {"ColorSpaceNumber", uint16(4)},
         {"ColorSpaceName", chars("NNNNNNNNNNNNNNN")},
         {"DisplayLuminance", uint16(130)},
         {"BluePrimaryU", chars("cccccccccc")},
         {"BluePrimaryV", chars("gggggggggg")},
         {"BluePrimaryX", chars("kkkkkkkkkk")},
         {"BluePrimaryY", chars("oooooooooo")},
         {"Gamma", chars("2222222222")},
         {"GreenPrimaryU", chars("bbbbbbbbbb")},
         {"GreenPrimaryV", chars("ffffffffff")},
         {"GreenPrimaryX", chars("jjjjjjjjjj")},
         {"GreenPrimaryY", chars("nnnnnnnnnn")},
         {"RedPrimaryU", chars("aaaaaaaaaa")},
         {"RedPrimaryV", chars("eeeeeeeeee")},
         {"RedPrimaryX", chars("iiiiiiiiii")},
         {"RedPrimaryY", chars("mmmmmmmmmm")},
         {"WhitePointU", chars("dddddddddd")},
         {"WhitePointV", chars("hhhhhhhhhh")},
         {"WhitePointX", chars("llllllllll")},
         {"WhitePointY", chars("pppppppppp")},
         {"Caption", chars("ZT_Marovelton_ColorSpace")},
         {"ElementName", chars("ZT_Marovelton_ColorSpace")},
         {"InstanceID", chars("ZT:Marovelton_ColorSpace:4")},
         {"Description",
          chars("A class derived from Logical Element that represents the single node container "
                "of the Display Management System.")},
         {"Name", chars("ZT_Marovelton_ColorSpace-NNNNNNNNNNNNNNN")}});
}

TEST(ColorSpace, FindsPresetsByTheirExactIdentifier)
{
    for (size_t i = 0; i < 7; ++i) {
        int index = -1;
        const SetterAnswer found = call([&](char *errorText) {
            return ValidateColorSpaceInstanceID(identifiers()[i].c_str(), errorText, &index);
        });
        EXPECT_EQ(found.result, 0);
        EXPECT_EQ(index, static_cast<int>(i));
        EXPECT_EQ(found.errorText, " ");
    }
    for (const char *wrong :
         {"ZT:Marovelton_ColorSpace:0", "ZT:Marovelton_ColorSpace:8", "ZT:Marovelton_ColorSpace:01",
          "ZT:Marovelton_ColorSpace:1 ", "ZT:Marovelton_ColorSpace:", "ZT:Marovelton_ColorSpace:11",
          "ZT:Marovelton_ColorSpace: 1", "ZT:Marovelton_ColorSpace:+1", "ZT:Marovelton_ColorSpace:-1",
          "ZT:Marovelton_ColorSpace:4294967297", "ZT:Marovelton_ColorSpace:18446744073709551617",
          "zt:marovelton_colorspace:1", "ZT:Marovelton_Colorspace:1", "ZT:Marovelton_ColorSpace:%d", ""}) {
        int index = -1;
        const SetterAnswer refused =
            call([&](char *errorText) { return ValidateColorSpaceInstanceID(wrong, errorText, &index); });
        EXPECT_EQ(refused.result, -1) << wrong;
        EXPECT_EQ(refused.errorText, "This class name does not exist (wrong InstanceID).") << wrong;

        const Answer answer = get(ColorSpace, presetPath(wrong));
        EXPECT_STATUS(answer, CMPI_RC_ERR_NOT_FOUND, "This class name does not exist (wrong InstanceID).");
        EXPECT_TRUE(answer.returned.empty()) << wrong;
    }
}

TEST(ColorSpace, ChecksTheKeyOfGetInstance)
{
    checkKeysOfGetInstance(ColorSpace, inactivePreset(), instanceIDOfReads());
}

TEST(ColorSpace, SaysWhichStepOfABuildFailed)
{
    checkBuilders(
        {.tested = &ColorSpace,
         .reference = inactivePreset(),
         .makePath =
             [](const CMPIObjectPath *reference, CMPIStatus *status) {
                 return _makePath_ZT_Marovelton_ColorSpace(reference, 2, status);
             },
         .makeInst =
             [](const CMPIObjectPath *reference, CMPIStatus *status) {
                 return _makeInst_ZT_Marovelton_ColorSpace(reference, 2, status);
             },
         .records = {{"GetColorSpaceInfoById(2)", databaseText}, {"GetRegisterValue(1, 0)", databaseText}}});
}

TEST(ColorSpace, BuildsPathsByIndex)
{
    const Built built = build(ColorSpace, path("ZT_Marovelton_ColorSpace"),
                              [](const CMPIObjectPath *reference, CMPIStatus *status) {
                                  return _makePath_ZT_Marovelton_ColorSpace(reference, 6, status);
                              });
    EXPECT_EQ(built.rc, CMPI_RC_OK);
    ASSERT_TRUE(built.path);
    EXPECT_KEYS(*built.path, {{"InstanceID", chars("ZT:Marovelton_ColorSpace:7")}});
}

TEST(ColorSpace, StopsAnEnumerationAtThePresetThatCannotBeRead)
{
    seam.returns("GetColorSpaceInfoById(3)", -1);
    const Answer answer = enumerate(ColorSpace, path("ZT_Marovelton_ColorSpace"));
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build instance");
    // Those before it stay returned.
    const std::vector<Instance> presets = answer.instances();
    ASSERT_EQ(presets.size(), 3u);
    EXPECT_EQ(answer.done, 0);
    EXPECT_EQ(*presets[2].find("InstanceID"), chars("ZT:Marovelton_ColorSpace:3"));
    EXPECT_EQ(seam.count("GetColorSpaceInfoById"), 4);
}

TEST(ColorSpace, StopsAnEnumerationOfNamesAtThePathThatCannotBeMade)
{
    faults.arm("newObjectPath", 3, Fault::fails);
    const Answer answer = enumerateNames(ColorSpace, path("ZT_Marovelton_ColorSpace"));
    EXPECT_EQ(faults.struck(), "newObjectPath");
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build objectpath");
    EXPECT_EQ(answer.paths().size(), 2u);
    EXPECT_EQ(answer.done, 0);
}

TEST(ColorSpace, ReportsAPresetThatCannotBeReadByGetInstance)
{
    seam.returns("GetColorSpaceInfoById(1)", -1);
    const Answer answer = get(ColorSpace, activePreset());
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build instance");
    EXPECT_TRUE(answer.returned.empty());
}

// ---- what all methods have in common ----

TEST(ColorSpace, ChecksTheTargetOfAMethod)
{
    const std::vector<KeyRule> keys = instanceIDOfMethods(1, CMPI_RC_ERR_INVALID_PARAMETER);
    checkKeysOfMethod(ColorSpace, activePreset(), "SetDisplayLuminance", {{"Luminance", "120"}}, noUser(),
                      keys);
    offerResets();
    checkKeysOfMethod(ColorSpace, activePreset(), "ResetToLastCalibration", {}, noUser(), keys);
    checkKeysOfMethod(ColorSpace, activePreset(), "ResetToFactoryCalibration", {}, noUser(), keys);
}

TEST(ColorSpace, ChecksTheClassOfAMethod)
{
    checkOtherClass(ColorSpace, activePreset(), "SetDisplayLuminance", {{"Luminance", "120"}}, noUser(),
                    CMPI_RC_ERR_NOT_FOUND, "Invalid class name", uint32(2));
}

TEST(ColorSpace, RejectsAnIdentifierInOtherLetterCaseButAcceptsTheClass)
{
    const Answer wrong = invoke(ColorSpace, presetPath("ZT:Marovelton_colorspace:2"), "SetDisplayLuminance",
                                {{"Luminance", "120"}});
    EXPECT_METHOD(wrong, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                  "This class name does not exist (wrong InstanceID).");
    const Answer right = invoke(ColorSpace, activePreset().ofClass("zt_marovelton_COLORSPACE"),
                                "SetDisplayLuminance", {{"Luminance", "120"}});
    EXPECT_METHOD(right, uint32(0), CMPI_RC_OK, "");
}

TEST(ColorSpace, AnswersUnknownMethodsWithTheirName)
{
    checkUnknownMethods(ColorSpace, activePreset(),
                        {"SetLuminance", "setdisplayluminance", "SETDISPLAYLUMINANCE", "SetDisplayLuminance ",
                         "ResetToLastcalibration", "ResetToFactory", "insert_method_name"},
                        CMPI_RC_ERR_NOT_FOUND, uint32(1));
}

TEST(ColorSpace, ChecksTheKeyBeforeTheMethodName)
{
    EXPECT_METHOD(invoke(ColorSpace, presetPath("ZT:Marovelton_ColorSpace:8"), "NoSuchMethod"), uint32(2),
                  CMPI_RC_ERR_INVALID_PARAMETER, "This class name does not exist (wrong InstanceID).");
}

TEST(ColorSpace, NeedsNoAdministrator)
{
    offerResets();
    checkNoAdministratorNeeded(ColorSpace, activePreset(), "SetDisplayLuminance", {{"Luminance", "120"}});
    checkNoAdministratorNeeded(ColorSpace, activePreset(), "ResetToLastCalibration", {});
    checkNoAdministratorNeeded(ColorSpace, activePreset(), "ResetToFactoryCalibration", {});
}

// ---- settings ----

TEST(ColorSpace, SendsTheLuminance)
{
    checkSender([](char *errorText) { return SetDisplayLuminance(120, errorText); },
                "01 00 00 00 03 00 07 00 00 01 00 00 00 00 78 00 ...",
                {.reply = "Failed to set the value to DisplayLuminance."});
}

TEST(ColorSpace, SendsTheLowBitsOfALuminanceThatDoesNotFit)
{
    const SetterAnswer answer =
        call([](char *errorText) { return SetDisplayLuminance(65536 + 513, errorText); });
    EXPECT_EQ(answer.result, 0);
    EXPECT_SENT(answer, {"01 00 00 00 03 00 07 00 00 01 00 00 00 00 01 02 ..."});
}

TEST(ColorSpace, SendsTheResets)
{
    checkSender(ResetToLastCalibration, lastCalibrationReset,
                {.reply = "Failed to set the value to DisplayLuminance."});
    checkSender(ResetToFactoryCalibration, factoryCalibrationReset,
                {.reply = "Failed to set the value to DisplayLuminance."});
}

// ---- SetDisplayLuminance ----

TEST(ColorSpace, SetsTheLuminanceOfTheActivePreset)
{
    const Answer answer = invoke(ColorSpace, activePreset(), "SetDisplayLuminance", {{"Luminance", "120"}});
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(answer, {"01 00 00 00 03 00 07 00 00 01 00 00 00 00 78 00 ..."});
    EXPECT_CALLS(answer, {"GetRegisterValue(1, 0)", "ValidateInputArgs(120, 48, 250)", "GetMonitorStatus(0)",
                          "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                          "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"});
}

TEST(ColorSpace, ReadsAndSendsTheLuminance)
{
    checkSettingMethod({.tested = &ColorSpace,
                        .target = activePreset(),
                        .method = "SetDisplayLuminance",
                        .argument = "Luminance",
                        .kind = ArgumentIs::wholeDecimal,
                        .min = 48,
                        .max = 250,
                        .missing = "Required argument Luminance missing.",
                        .range = "Invalid input value range. Valid values are between 48 and 250.",
                        .steps = {.reply = "Failed to set the value to DisplayLuminance."},
                        .sentAtMin = "01 00 00 00 03 00 07 00 00 01 00 00 00 00 30 00 ...",
                        .sentAtMax = "01 00 00 00 03 00 07 00 00 01 00 00 00 00 FA 00 ..."});
}

TEST(ColorSpace, RefusesLuminancesByTheirText)
{
    const struct {
        const char *luminance;
        const char *message;
    } refused[] = {
        {"47", "Invalid input value range. Valid values are between 48 and 250."},
        {"251", "Invalid input value range. Valid values are between 48 and 250."},
        {"-120", "Invalid input value range. Valid values are between 48 and 250."},
        {"100x", "Invalid parameter."},
        {"100.0", "Invalid parameter."},
        {"100 ", "Invalid parameter."},
        {"0x64", "Invalid parameter."},
        {"bright", "Invalid parameter."},
        {"", "Invalid parameter. Value is missing."},
    };
    for (const auto &row : refused) {
        const Answer answer =
            invoke(ColorSpace, activePreset(), "SetDisplayLuminance", {{"Luminance", row.luminance}});
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, row.message) << row.luminance;
        EXPECT_SENT(answer, {});
    }
    for (const char *luminance : {"48", "250", "+100", " 100", "0100"}) {
        EXPECT_METHOD(invoke(ColorSpace, activePreset(), "SetDisplayLuminance", {{"Luminance", luminance}}),
                      uint32(0), CMPI_RC_OK, "")
            << luminance;
    }
}

TEST(ColorSpace, RefusesTheLuminanceOfAnInactivePresetWhateverItsContent)
{
    for (const char *luminance : {"120", "", "0", "251", "100x"}) {
        const Answer answer =
            invoke(ColorSpace, inactivePreset(), "SetDisplayLuminance", {{"Luminance", luminance}});
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_NOT_SUPPORTED,
                      "Luminance value changing allowed to active colorspace only.")
            << luminance;
        EXPECT_SENT(answer, {});
    }
}

TEST(ColorSpace, ReadsTheActivePresetAfterTheArgumentsType)
{
    seam.returns("GetRegisterValue", -1);
    EXPECT_METHOD(invoke(ColorSpace, inactivePreset(), "SetDisplayLuminance"), uint32(2),
                  CMPI_RC_ERR_INVALID_PARAMETER, "Required argument Luminance missing.");
    EXPECT_METHOD(invoke(ColorSpace, inactivePreset(), "SetDisplayLuminance", {{"Luminance", uint16(120)}}),
                  uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, "Invalid type of parameter.");
    for (const char *luminance : {"120", "", "100x"}) {
        const Answer answer =
            invoke(ColorSpace, activePreset(), "SetDisplayLuminance", {{"Luminance", luminance}});
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED, databaseText) << luminance;
        EXPECT_SENT(answer, {});
    }
}

TEST(ColorSpace, ReportsABusyEngineForTheLuminance)
{
    seam.status = BUSY;
    const Answer answer = invoke(ColorSpace, activePreset(), "SetDisplayLuminance", {{"Luminance", "120"}});
    EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED, "Device is Busy. Please try after some time.");
    EXPECT_SENT(answer, {});
}

// ---- the resets ----

TEST(ColorSpace, ResetsTheLastCalibrationOfTheActivePreset)
{
    seam.registers[{20, 0}] = "1";
    const Answer answer = invoke(ColorSpace, activePreset(), "ResetToLastCalibration");
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(answer, {refreshOfColorSpaces, lastCalibrationReset});
    EXPECT_CALLS(answer,
                 {"GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                  "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)", "GetRegisterValue(20, 0)",
                  "GetRegisterValue(1, 0)", "GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)",
                  "SendStatusMessagetoSource(100)", "SpearEngineMessageQueueCreate(3)",
                  "RecvMessageFromSource(103)"});
}

TEST(ColorSpace, RefusesToResetTheLastCalibrationOfAnInactivePreset)
{
    seam.registers[{20, 0}] = "1";
    const Answer answer = invoke(ColorSpace, inactivePreset(), "ResetToLastCalibration");
    EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_NOT_SUPPORTED,
                  "ResetToLastCalibration allowed for active colorspace only.");
    EXPECT_SENT(answer, {refreshOfColorSpaces});
}

TEST(ColorSpace, ResetsTheFactoryCalibrationOfAnyPreset)
{
    seam.registers[{19, 0}] = "1";
    for (const std::string &identifier : identifiers()) {
        const Answer answer = invoke(ColorSpace, presetPath(identifier), "ResetToFactoryCalibration");
        EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "") << identifier;
        EXPECT_SENT(answer, {refreshOfColorSpaces, factoryCalibrationReset});
    }
    // Which preset is in use is not even read.
    const Answer answer = invoke(ColorSpace, inactivePreset(), "ResetToFactoryCalibration");
    EXPECT_CALLS(answer,
                 {"GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                  "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)", "GetRegisterValue(19, 0)",
                  "GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                  "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"});
}

namespace
{

struct Reset {
    const char *method;
    int registerId;
    const char *refused;
};
constexpr Reset resets[] = {
    {"ResetToLastCalibration", 20, "Operation not allowed.Current store have user-adjusted luminance"},
    {"ResetToFactoryCalibration", 19, "Operation not allowed.Current store is same as factory store"},
};

} // namespace

TEST(ColorSpace, RefusesResetsThatTheEngineDoesNotOffer)
{
    for (const Reset &reset : resets) {
        for (const char *stored : {"0", "2", "-1", "11", "", "yes"}) {
            seam.reset();
            offerResets();
            seam.registers[{reset.registerId, 0}] = stored;
            for (const Path &target : {activePreset(), inactivePreset()}) {
                const Answer answer = invoke(ColorSpace, target, reset.method);
                EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_NOT_SUPPORTED, reset.refused)
                    << reset.method << " " << stored;
                EXPECT_SENT(answer, {refreshOfColorSpaces});
            }
        }
    }
}

TEST(ColorSpace, ReportsRegistersThatCannotBeReadBeforeAReset)
{
    for (const Reset &reset : resets) {
        for (const int result : {-1, 1}) {
            seam.reset();
            offerResets();
            seam.returns("GetRegisterValue(" + std::to_string(reset.registerId) + ", 0)", result);
            const Answer answer = invoke(ColorSpace, activePreset(), reset.method);
            EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED, databaseText);
            EXPECT_SENT(answer, {refreshOfColorSpaces});
        }
    }
    seam.reset();
    offerResets();
    seam.returns("GetRegisterValue(1, 0)", -1);
    const Answer answer = invoke(ColorSpace, activePreset(), "ResetToLastCalibration");
    EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED, databaseText);
    EXPECT_SENT(answer, {refreshOfColorSpaces});
}

TEST(ColorSpace, ReportsARefreshThatFailsBeforeAReset)
{
    for (const Reset &reset : resets) {
        SCOPED_TRACE(reset.method);
        checkFailuresOfSend([&] { return invoke(ColorSpace, activePreset(), reset.method); }, refreshSteps, 0,
                            offerResets);
    }
}

TEST(ColorSpace, ReportsAResetThatFails)
{
    for (const Reset &reset : resets) {
        SCOPED_TRACE(reset.method);
        checkFailuresOfSend([&] { return invoke(ColorSpace, activePreset(), reset.method); },
                            {.reply = "Failed to set the value to DisplayLuminance."}, 1, offerResets);
    }
}

TEST(ColorSpace, IgnoresArgumentsOfTheResets)
{
    offerResets();
    EXPECT_METHOD(invoke(ColorSpace, activePreset(), "ResetToLastCalibration", {{"Luminance", uint16(3)}}),
                  uint32(0), CMPI_RC_OK, "");
}

// ---- torture ----

TEST(ColorSpace, SurvivesEveryFailure)
{
    checkTortureOfReads(ColorSpace, activePreset());
    checkTorture([&] {
        return invoke(ColorSpace, activePreset(), "SetDisplayLuminance", {{"Luminance", "120"}});
    });
    checkTorture([&] { return invoke(ColorSpace, activePreset(), "ResetToLastCalibration"); },
                 {.prepare = offerResets});
    checkTorture([&] { return invoke(ColorSpace, activePreset(), "ResetToFactoryCalibration"); },
                 {.prepare = offerResets});
}
