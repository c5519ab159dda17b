// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_DisplayManagement: the management switches and their methods.

#include "display/modules.h"
#include "support/checks.h"

METHOD_CLASS(DisplayManagement);

namespace
{

Path target()
{
    return path("ZT_Marovelton_DisplayManagement", {{"InstanceID", "ZT:Marovelton_DisplayManagement"}});
}

Instance readSwitches()
{
    const Answer answer = get(DisplayManagement, target());
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    return answer.instance();
}

struct Switch {
    const char *method;
    const char *argument;
    ArgumentIs kind;
    bool administrator;
    const char *missing;
    const char *range;
    const char *reply;
    int (*setter)(int, char *);
    const char *sentFor0;
    const char *sentFor1;
};

const Switch switches[] = {
    {"SetAutoEDIDUpdateEnabled", "AutoEDIDUpdateEnabled", ArgumentIs::toggle, false,
     "Required argument AutoEDIDUpdateEnabled missing.",
     "Invalid input value range. Valid values are between 0 and 1.", "Failed to set AutoEDIDUpdateState.",
     setAutoEDIDUpdateState, "01 00 00 00 03 00 07 00 00 01 05 00 49 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 05 00 49 00 01 00 ..."},
    {"SetCalibrationEnabled", "CalibrationEnabled", ArgumentIs::toggle, true,
     "Required argument CalibrationEnabled missing.", "Invalid input value range, Valid values are 0 and 1.",
     "Failed to set the value to CalibrationState.", setCalibrationState,
     "01 00 00 00 03 00 07 00 00 01 05 00 4D 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 05 00 4D 00 01 00 ..."},
    {"SetDDCCICommunicationsEnabled", "DDCCICommunicationsEnabled", ArgumentIs::toggle, false,
     "Required argument DDCCICommunicationsEnabled missing.",
     "Invalid input value range. Valid values are 0 and 1.",
     "Failed to set the value to DDCCICommunicationsState.", setDDCCICommunicationsState,
     "01 00 00 00 03 00 07 00 00 01 05 00 48 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 05 00 48 00 01 00 ..."},
    {"SetHotPlugInitiateEnabled", "HotPlugInitiateEnabled", ArgumentIs::toggle, false,
     "Required argument HotPlugInitiateEnabled missing.",
     "Invalid input value range, Valid values are 0 and 1.",
     "Failed to set the values to HotPlugInitiateState.", setHotPlugInitiateState,
     "01 00 00 00 03 00 07 00 00 01 05 00 4A 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 05 00 4A 00 01 00 ..."},
    {"SetPowerOnRecallEnabled", "PowerOnRecallEnabled", ArgumentIs::toggle, false,
     "Required argument PowerOnRecallEnabled missing.",
     "Invalid input value range, Valid values are 0 and 1.", "Failed to set the value to PowerOnRecallState.",
     setPowerOnRecallState, "01 00 00 00 03 00 07 00 00 01 05 00 47 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 05 00 47 00 01 00 ..."},
    {"SetPowerSaverEnabled", "PowerSaverEnabled", ArgumentIs::toggle, false,
     "Required argument PowerSaverEnabled missing.",
     "Invalid input value range. Valid values are between 0 and 1.",
     "Failed to set the value to PowerSaverState.", setPowerSaverState,
     "01 00 00 00 03 00 07 00 00 01 05 00 46 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 05 00 46 00 01 00 ..."},
    {"SetDisplayPortHotPlugDetection", "DisplayPortHotPlugDetection", ArgumentIs::wholeDecimal, false,
     "Required argument DisplayPortHotPlugDetection missing.",
     "Invalid input value range. Valid values are 0 and 1.",
     "Failed to set the value to DisplayPortHotPlugDetection.", setDisplayPortHotPlugDetection,
     "01 00 00 00 03 00 07 00 00 01 05 00 4E 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 05 00 4E 00 01 00 ..."},
    {"SetDisplayPortComapatibility", "DisplayPortComapatibility", ArgumentIs::wholeDecimal, false,
     "Required argument DisplayPortComapatibility missing.",
     "Invalid input value range. Valid values are 0 and 1.",
     "Failed to set the value to DisplayPortComapatibility.", setDisplayPortComapatibility,
     "01 00 00 00 03 00 07 00 00 01 05 00 4F 00 00 00 ...",
     "01 00 00 00 03 00 07 00 00 01 05 00 4F 00 01 00 ..."},
};

/** Somebody who may call the method. */
User userOf(const Switch &row)
{
    return row.administrator ? User("admin") : noUser();
}

} // namespace

// ---- the skeleton ----

TEST(DisplayManagement, HasTheSkeletonOfAProvider)
{
    checkSkeleton(DisplayManagement);
}

// ---- reads ----

TEST(DisplayManagement, EnumeratesItsOnePath)
{
    checkPaths(DisplayManagement, {target()});
}

TEST(DisplayManagement, PublishesEverySwitchInOrder)
{
    // Distinct where two fields could be mistaken for each other; what is not published stays out.
    seam.management = {.PowerSaverEnabled = 2,
                       .PowerOnRecallEnabled = 3,
                       .DDCCICommunicationEnabled = 4,
                       .EDIDUpdateEnabled = 5,
                       .HotPlugInitiateEnabled = 6,
                       .ManageInternalProcessor = 7,
                       .FWUpdateEnabled = 8,
                       .CalibrationSupportEnabled = 9,
                       .DisplayPortHotPlugDetection = 10,
                       .DisplayPortComapatibility = 11};
    checkInstance(
        DisplayManagement, target(),
        {{"AutoEDIDUpdateEnabled", boolean(5)},
         {"CalibrationEnabled", boolean(9)},
         {"DDCCICommunicationsEnabled", boolean(4)},
         {"HotPlugInitiateEnabled", boolean(6)},
         {"PowerOnRecallEnabled", boolean(3)},
         {"PowerSaverEnabled", boolean(2)},
         {"DisplayPortHotPlugDetection", uint16(10)},
         {"Caption", chars("ZT_Marovelton_DisplayManagement")},
         {"ElementName", chars("ZT_Marovelton_DisplayManagement")},
         {"InstanceID", chars("ZT:Marovelton_DisplayManagement")},
         {"Description",
          chars("A class derived from Logical Element that represents the single node container of the "
                "Display Management System.")},
         {"Name", chars("Studio 7-DisplayManagement")}},
        {"GetDisplayManagementInfo()", "GetMoinitorInfo()"}, true);
}

TEST(DisplayManagement, ShowsSwitchesOnAndOff)
{
    seam.management = {1, 0, 1, 0, 1, 0, 1, 0, 1, 0};
    Instance instance = readSwitches();
    EXPECT_EQ(*instance.find("PowerSaverEnabled"), boolean(1));
    EXPECT_EQ(*instance.find("PowerOnRecallEnabled"), boolean(0));
    EXPECT_EQ(*instance.find("DDCCICommunicationsEnabled"), boolean(1));
    EXPECT_EQ(*instance.find("AutoEDIDUpdateEnabled"), boolean(0));
    EXPECT_EQ(*instance.find("HotPlugInitiateEnabled"), boolean(1));
    EXPECT_EQ(*instance.find("CalibrationEnabled"), boolean(0));
    EXPECT_EQ(*instance.find("DisplayPortHotPlugDetection"), uint16(1));

    seam.management = {0, 1, 0, 1, 0, 1, 0, 1, 0, 1};
    instance = readSwitches();
    EXPECT_EQ(*instance.find("PowerSaverEnabled"), boolean(0));
    EXPECT_EQ(*instance.find("PowerOnRecallEnabled"), boolean(1));
    EXPECT_EQ(*instance.find("DDCCICommunicationsEnabled"), boolean(0));
    EXPECT_EQ(*instance.find("AutoEDIDUpdateEnabled"), boolean(1));
    EXPECT_EQ(*instance.find("HotPlugInitiateEnabled"), boolean(0));
    EXPECT_EQ(*instance.find("CalibrationEnabled"), boolean(1));
    EXPECT_EQ(*instance.find("DisplayPortHotPlugDetection"), uint16(0));
}

TEST(DisplayManagement, PublishesTheLowBitsOfTheHotPlugDetection)
{
    seam.management.DisplayPortHotPlugDetection = 65536 + 7;
    EXPECT_EQ(*readSwitches().find("DisplayPortHotPlugDetection"), uint16(7));
    seam.management.DisplayPortHotPlugDetection = -1;
    EXPECT_EQ(*readSwitches().find("DisplayPortHotPlugDetection"), uint16(65535));
}

TEST(DisplayManagement, IsNamedAfterTheMonitorOrItsAddress)
{
    checkNameOfSystem(DisplayManagement, target(), "-DisplayManagement");
}

TEST(DisplayManagement, ReadsWhileTheEngineIsBusy)
{
    seam.status = BUSY;
    const Answer answer = enumerate(DisplayManagement, path("ZT_Marovelton_DisplayManagement"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_SENT(answer, {});
}

TEST(DisplayManagement, ChecksTheKeyOfGetInstance)
{
    checkKeysOfGetInstance(DisplayManagement, target(), instanceIDOfReads());
}

TEST(DisplayManagement, SaysWhichStepOfABuildFailed)
{
    checkBuilders({.tested = &DisplayManagement,
                   .reference = target(),
                   .makePath = _makePath_ZT_Marovelton_DisplayManagement,
                   .makeInst = _makeInst_ZT_Marovelton_DisplayManagement,
                   .records = {{"GetDisplayManagementInfo()",
                                "Failed to get display management information from database."},
                               {"GetMoinitorInfo()", "Could not get monitor information from database."}}});
}

// ---- methods ----

TEST(DisplayManagement, ChecksTheTargetOfAMethod)
{
    for (const Switch &row : switches) {
        checkKeysOfMethod(DisplayManagement, target(), row.method, {{row.argument, "1"}}, userOf(row),
                          instanceIDOfMethods());
        checkOtherClass(DisplayManagement, target(), row.method, {{row.argument, "1"}}, userOf(row),
                        CMPI_RC_ERR_NOT_FOUND, "Invalid class name", uint32(2));
    }
}

TEST(DisplayManagement, ChecksTheClassThenTheKeyThenTheMethodName)
{
    const Path withoutKey = path("ZT_Marovelton_DisplayManagement");
    EXPECT_METHOD(invoke(DisplayManagement, path("CIM_System"), "Reboot"), uint32(2), CMPI_RC_ERR_NOT_FOUND,
                  "Invalid class name");
    EXPECT_METHOD(invoke(DisplayManagement, withoutKey, "Reboot"), uint32(2), CMPI_RC_ERR_NOT_FOUND,
                  "Invalid selector(Could not get InstanceID of instance.)");
    EXPECT_METHOD(invoke(DisplayManagement, withoutKey.with("InstanceID", "other"), "Reboot"), uint32(2),
                  CMPI_RC_ERR_NOT_FOUND, "This class name does not exist (wrong InstanceID).");
}

TEST(DisplayManagement, AnswersUnknownMethodsWithTheirName)
{
    checkUnknownMethods(DisplayManagement, target(),
                        {"SetPowerSaver", "setpowersaverenabled", "SETPOWERSAVERENABLED",
                         "SetPowerSaverEnabled ", "SetDisplayPortCompatibility", "setPowerSaverState",
                         "insert_method_name"},
                        CMPI_RC_ERR_NOT_FOUND, uint32(1));
}

TEST(DisplayManagement, NeedsAnAdministratorForTheCalibrationSwitchAlone)
{
    for (const Switch &row : switches) {
        if (row.administrator) {
            checkAdministratorOnly(DisplayManagement, target(), row.method, {{row.argument, "1"}});
        } else {
            checkNoAdministratorNeeded(DisplayManagement, target(), row.method, {{row.argument, "1"}});
        }
    }
}

TEST(DisplayManagement, ChecksTheUserBeforeTheArgument)
{
    const Answer answer = invoke(DisplayManagement, target(), "SetCalibrationEnabled", {}, "operator");
    EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_ACCESS_DENIED,
                  "Operation not allowed for non-admin user credentials");
    EXPECT_EQ(answer.trace, "AccountSetInstance: requesting user is operator\n");
    EXPECT_METHOD(invoke(DisplayManagement, target(), "SetCalibrationEnabled", {}, noUser()), uint32(2),
                  CMPI_RC_ERR_FAILED, "Could not get user credentials");
    EXPECT_METHOD(invoke(DisplayManagement, target(), "SetCalibrationEnabled", {}, "stranger"), uint32(2),
                  CMPI_RC_ERR_FAILED, "The support library has failed.");
    EXPECT_METHOD(invoke(DisplayManagement, target(), "SetCalibrationEnabled", {}, "admin"), uint32(2),
                  CMPI_RC_ERR_INVALID_PARAMETER, "Required argument CalibrationEnabled missing.");
}

TEST(DisplayManagement, SendsEverySwitch)
{
    for (const Switch &row : switches) {
        SCOPED_TRACE(row.method);
        checkSender([&](char *errorText) { return row.setter(0, errorText); }, row.sentFor0,
                    {.reply = row.reply});
        checkSender([&](char *errorText) { return row.setter(1, errorText); }, row.sentFor1,
                    {.reply = row.reply});
    }
}

TEST(DisplayManagement, ReadsAndSendsEverySwitch)
{
    for (const Switch &row : switches) {
        SCOPED_TRACE(row.method);
        checkSettingMethod({.tested = &DisplayManagement,
                            .target = target(),
                            .method = row.method,
                            .argument = row.argument,
                            .kind = row.kind,
                            .min = 0,
                            .max = 1,
                            .missing = row.missing,
                            .range = row.range,
                            .steps = {.reply = row.reply},
                            .sentAtMin = row.sentFor0,
                            .sentAtMax = row.sentFor1,
                            .administrator = row.administrator});
    }
}

TEST(DisplayManagement, ChecksTheRangeOfEverySwitch)
{
    for (const Switch &row : switches) {
        SCOPED_TRACE(row.method);
        seam.reset();
        seam.returns("ValidateInputArgs(1, 0, 1)", -1);
        const Answer refused =
            invoke(DisplayManagement, target(), row.method, {{row.argument, "1"}}, userOf(row));
        EXPECT_METHOD(refused, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, row.range);
        EXPECT_SENT(refused, {});
        EXPECT_METHOD(invoke(DisplayManagement, target(), row.method, {{row.argument, "0"}}, userOf(row)),
                      uint32(0), CMPI_RC_OK, "");
    }
}

TEST(DisplayManagement, AcceptsSwitchWordsInAnyLetterCase)
{
    const Answer answer =
        invoke(DisplayManagement, target(), "SetPowerSaverEnabled", {{"PowerSaverEnabled", "False"}});
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(answer, {"01 00 00 00 03 00 07 00 00 01 05 00 46 00 00 00 ..."});
    EXPECT_CALLS(answer, {"ValidateInputArgs(0, 0, 1)", "GetMonitorStatus(0)",
                          "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                          "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"});
}

TEST(DisplayManagement, TakesNumbersOnlyForDisplayPort)
{
    for (const Switch &row : switches) {
        if (row.kind != ArgumentIs::wholeDecimal) {
            continue;
        }
        SCOPED_TRACE(row.method);
        for (const char *text : {"true", "false", "TRUE", "1x", "1 ", "0.0", "x"}) {
            EXPECT_METHOD(invoke(DisplayManagement, target(), row.method, {{row.argument, text}}), uint32(2),
                          CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.")
                << text;
        }
        for (const char *text : {"2", "-1", "10"}) {
            EXPECT_METHOD(invoke(DisplayManagement, target(), row.method, {{row.argument, text}}), uint32(2),
                          CMPI_RC_ERR_INVALID_PARAMETER, row.range)
                << text;
        }
    }
    const Answer answer = invoke(DisplayManagement, target(), "SetDisplayPortComapatibility",
                                 {{"DisplayPortComapatibility", "1"}});
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(answer, {"01 00 00 00 03 00 07 00 00 01 05 00 4F 00 01 00 ..."});
}

TEST(DisplayManagement, RefusesOtherTextsForSwitches)
{
    for (const Switch &row : switches) {
        if (row.kind != ArgumentIs::toggle) {
            continue;
        }
        SCOPED_TRACE(row.method);
        for (const char *text : {"yes", "2", "-1", "01", " 1", "1 ", "true ", "on"}) {
            EXPECT_METHOD(
                invoke(DisplayManagement, target(), row.method, {{row.argument, text}}, userOf(row)),
                uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.")
                << text;
        }
    }
}

TEST(DisplayManagement, ReportsABusyEngine)
{
    seam.status = BUSY;
    for (const Switch &row : switches) {
        const Answer answer =
            invoke(DisplayManagement, target(), row.method, {{row.argument, "1"}}, userOf(row));
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED, "Device is Busy. Please try after some time.")
            << row.method;
        EXPECT_SENT(answer, {});
    }
}

// ---- torture ----

TEST(DisplayManagement, SurvivesEveryFailure)
{
    checkTortureOfReads(DisplayManagement, target());
    for (const Switch &row : switches) {
        checkTorture([&] {
            return invoke(DisplayManagement, target(), row.method, {{row.argument, "1"}}, userOf(row));
        });
    }
}
