// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_OSDMenuAndMessages: the on-screen display and the methods that change it.

#include "checks.h"
#include "display/modules.h"
#include <limits>

METHOD_CLASS(OSDMenuAndMessages);

namespace
{

Path target()
{
    return path("ZT_Marovelton_OSDMenuAndMessages", {{"InstanceID", "ZT:Marovelton_OSDMenuAndMessages"}});
}

Answer setPosition(const Value &x, const Value &y)
{
    return invoke(OSDMenuAndMessages, target(), "SetOSDPosition", {{"OSDPositionX", x}, {"OSDPositionY", y}});
}

Answer setOpacity(const Value &opacity)
{
    return invoke(OSDMenuAndMessages, target(), "SetOpacity", {{"Opacity", opacity}});
}

const char *const opacitySteps = "Invalid Opacity Value. valid opacity values are 25, 31.25, 37.50, 43.75, "
                                 "50, 56.25, 62.50, 68.75, 81.25, 87.50, "
                                 "93.75, 100";

} // namespace

TEST(OSDMenuAndMessages, HasTheSkeletonOfAClass)
{
    checkSkeleton(OSDMenuAndMessages);
}

// ---- reads ----

TEST(OSDMenuAndMessages, EnumInstanceNamesGivesTheOnePath)
{
    checkPaths(OSDMenuAndMessages, {target()});
}

TEST(OSDMenuAndMessages, ReadsGiveEveryPropertyInOrder)
{
    seam.osd = {1, 0, 1, 0, 0, 2560, 1440, 30, 2500, 1, 4};
    checkInstance(OSDMenuAndMessages, target(),
                  {{"MenuAndMessageTimeOut", uint16(30)},
                   {"NotifyWhenReCalibrationIsDue", boolean(0)},
                   {"OSDPositionX", uint16(2560)},
                   {"OSDPositionY", uint16(1440)},
                   {"Opacity", real32(25.0F)},
                   {"ShowInfoWhenColorSpaceChanges", boolean(1)},
                   {"ShowInfoWhenInputSourceChanges", boolean(0)},
                   {"ShowInfoWhenPoweredOn", boolean(1)},
                   {"Language", uint16Array({4})},
                   {"DisplayRotation", uint16Array({1})},
                   {"Caption", chars("ZT_Marovelton_OSDMenuAndMessages")},
                   {"ElementName", chars("ZT_Marovelton_OSDMenuAndMessages")},
                   {"InstanceID", chars("ZT:Marovelton_OSDMenuAndMessages")},
                   {"Description",
                    chars("A class derived from Logical Element that represents the single node container "
                          "of the Display Management System.")},
                   {"Name", chars("Studio 7-OSDMenuAndMessages")}},
                  {"GetOSDMenuAndMessagesInfo()", "GetMoinitorInfo()"});
}

TEST(OSDMenuAndMessages, EachPropertyHasItsOwnField)
{
    // One switch after the other; MenuWarmupTime shows nowhere.
    const char *const switches[] = {"ShowInfoWhenPoweredOn", "ShowInfoWhenInputSourceChanges",
                                    "ShowInfoWhenColorSpaceChanges", nullptr, "NotifyWhenReCalibrationIsDue"};
    int32_t OSDMenuAndMessageInfo::*const fields[] = {
        &OSDMenuAndMessageInfo::PowerStatus, &OSDMenuAndMessageInfo::InputSourceStatus,
        &OSDMenuAndMessageInfo::MenuColorspaces, &OSDMenuAndMessageInfo::MenuWarmupTime,
        &OSDMenuAndMessageInfo::MenuCalibration};
    for (size_t i = 0; i < std::size(fields); ++i) {
        seam.osd = {};
        seam.osd.*fields[i] = 1;
        const Instance found = get(OSDMenuAndMessages, target()).instance();
        for (const char *name : switches) {
            if (!name) {
                continue;
            }
            EXPECT_EQ(*found.find(name), boolean(name == switches[i])) << name << ", field " << i;
        }
    }
    seam.osd = {0, 0, 0, 0, 0, 11, 12, 13, 1400, 15, 16};
    const Instance found = get(OSDMenuAndMessages, target()).instance();
    EXPECT_EQ(*found.find("OSDPositionX"), uint16(11));
    EXPECT_EQ(*found.find("OSDPositionY"), uint16(12));
    EXPECT_EQ(*found.find("MenuAndMessageTimeOut"), uint16(13));
    EXPECT_EQ(*found.find("Opacity"), real32(14.0F));
    EXPECT_EQ(*found.find("DisplayRotation"), uint16Array({15}));
    EXPECT_EQ(*found.find("Language"), uint16Array({16}));
}

TEST(OSDMenuAndMessages, OpacityIsShownInPercent)
{
    const auto opacity = [](int hundredths) {
        seam.osd.Opacity = hundredths;
        return *get(OSDMenuAndMessages, target()).instance().find("Opacity");
    };
    EXPECT_EQ(opacity(2500), real32(25.0F));
    EXPECT_EQ(opacity(3125), real32(31.25F));
    EXPECT_EQ(opacity(10000), real32(100.0F));
    EXPECT_EQ(opacity(0), real32(0.0F));
    EXPECT_EQ(opacity(-625), real32(-6.25F));
    EXPECT_EQ(opacity(2501), real32(25.01F));
}

TEST(OSDMenuAndMessages, NumbersKeepTheirLowBits)
{
    seam.osd = {256, -1, 2, 0, 257, -1, 65536, 65536 + 5, INT32_MAX, -1, 65536 + 9};
    const Instance found = get(OSDMenuAndMessages, target()).instance();
    EXPECT_EQ(*found.find("ShowInfoWhenPoweredOn"), boolean(0));
    EXPECT_EQ(*found.find("ShowInfoWhenInputSourceChanges"), boolean(255));
    EXPECT_EQ(*found.find("ShowInfoWhenColorSpaceChanges"), boolean(2));
    EXPECT_EQ(*found.find("NotifyWhenReCalibrationIsDue"), boolean(1));
    EXPECT_EQ(*found.find("OSDPositionX"), uint16(65535));
    EXPECT_EQ(*found.find("OSDPositionY"), uint16(0));
    EXPECT_EQ(*found.find("MenuAndMessageTimeOut"), uint16(5));
    EXPECT_EQ(*found.find("Opacity"), real32(21474836.48F));
    EXPECT_EQ(*found.find("DisplayRotation"), uint16Array({65535}));
    EXPECT_EQ(*found.find("Language"), uint16Array({9}));
}

TEST(OSDMenuAndMessages, NameFollowsTheSystemName)
{
    checkNameOfSystem(OSDMenuAndMessages, target(), "-OSDMenuAndMessages");
}

TEST(OSDMenuAndMessages, GetInstanceChecksTheKey)
{
    checkKeysOfGetInstance(OSDMenuAndMessages, target(), instanceIDOfReads());
}

TEST(OSDMenuAndMessages, BuildersTellWhatFailed)
{
    checkBuilders({.tested = &OSDMenuAndMessages,
                   .reference = target(),
                   .makePath = _makePath_ZT_Marovelton_OSDMenuAndMessages,
                   .makeInst = _makeInst_ZT_Marovelton_OSDMenuAndMessages,
                   .records = {{"GetOSDMenuAndMessagesInfo()",
                                "Failed to get OSDmenu and messages information from database."},
                               {"GetMoinitorInfo()", "Could not get monitor information from database."}},
                   .arrays = 2});
}

TEST(OSDMenuAndMessages, ReadsSurviveEveryFailure)
{
    checkTortureOfReads(OSDMenuAndMessages, target());
}

// ---- settings by themselves ----

TEST(OSDMenuAndMessages, SettingsSendTheirRegisters)
{
    checkSender([](char *text) { return SetMenuAndMessageTimeOut(30, text); },
                "01 00 00 00 03 00 07 00 00 01 06 00 6B 00 1E 00 ...",
                {.reply = "Failed to set the value to MenuAndMessageTimeOut."});
    checkSender([](char *text) { return SetLanguage(1, text); },
                "01 00 00 00 03 00 07 00 00 01 06 00 6D 00 04 00 ...",
                {.reply = "Failed to set the value to Language."});
    checkSender([](char *text) { return SetNotifyWhenRecalibrationIsDueState(1, text); },
                "01 00 00 00 03 00 07 00 00 01 06 00 68 00 01 00 ...",
                {.reply = "Failed to set the value to RecalibrationIsDueState."});
    checkSender([](char *text) { return SetOSDPosition(2560, 1440, text); },
                "01 00 00 00 03 00 07 00 00 02 06 00 69 00 00 0A 00 00 00 6A 00 A0 05 ...",
                {.reply = "Failed to set the value to OSDPositions."});
    checkSender([](char *text) { return SetOpacity(62.5F, text); },
                "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 6A 18 ...",
                {.reply = "Failed to set the value to Opacity."});
    checkSender([](char *text) { return SetShowInfoWhenColorSpaceChangeState(1, text); },
                "01 00 00 00 03 00 07 00 00 01 06 00 66 00 01 00 ...",
                {.reply = "Failed to to set the value to ShowInfoWhenColorSpaceChangeState."});
    checkSender([](char *text) { return SetShowInfoWhenInputSourceChangeState(1, text); },
                "01 00 00 00 03 00 07 00 00 01 06 00 65 00 01 00 ...",
                {.reply = "Failed to set the value to ShowInfoWhenInputSourceChangeState."});
    checkSender([](char *text) { return SetShowInfoWhenPoweredOnState(1, text); },
                "01 00 00 00 03 00 07 00 00 01 06 00 64 00 01 00 ...",
                {.reply = "Failed to set the value to ShowInfoWhenPoweredOnState.",
                 .busy = "Device is Busy. Please try aftrer some time."});
    checkSender([](char *text) { return setDisplayRotation(1, text); },
                "01 00 00 00 03 00 07 00 00 01 06 00 6E 00 01 00 ...",
                {.reply = "Failed to set value to display rotation."});
}

TEST(OSDMenuAndMessages, SettingsSendTheLow16Bits)
{
    const std::pair<int (*)(int, char *), const char *> settings[] = {
        {SetMenuAndMessageTimeOut, "01 00 00 00 03 00 07 00 00 01 06 00 6B 00 45 23 ..."},
        {SetNotifyWhenRecalibrationIsDueState, "01 00 00 00 03 00 07 00 00 01 06 00 68 00 45 23 ..."},
        {SetShowInfoWhenColorSpaceChangeState, "01 00 00 00 03 00 07 00 00 01 06 00 66 00 45 23 ..."},
        {SetShowInfoWhenInputSourceChangeState, "01 00 00 00 03 00 07 00 00 01 06 00 65 00 45 23 ..."},
        {SetShowInfoWhenPoweredOnState, "01 00 00 00 03 00 07 00 00 01 06 00 64 00 45 23 ..."},
        {setDisplayRotation, "01 00 00 00 03 00 07 00 00 01 06 00 6E 00 45 23 ..."},
    };
    for (const auto &[setter, golden] : settings) {
        EXPECT_SENT(call([setter = setter](char *text) { return setter(0x12345, text); }), {golden});
    }
    EXPECT_SENT(call([](char *text) { return SetOSDPosition(-1, 0x12345, text); }),
                {"01 00 00 00 03 00 07 00 00 02 06 00 69 00 FF FF 00 00 00 6A 00 45 23 ..."});
}

// ---- methods of one argument ----

TEST(OSDMenuAndMessages, MethodsOfOneArgument)
{
    const SettingMethod common = {
        .tested = &OSDMenuAndMessages, .target = target(), .returnType = CMPI_uint8};
    SettingMethod method = common;
    method.method = "SetMenuAndMessageTimeOut";
    method.argument = "MenuAndMessageTimeOut";
    method.min = 5;
    method.max = 30;
    method.missing = "Required argument MenuAndMessageTimeOut missing.";
    method.range = "Invalid input value range. Valid values are between 5 and 30.";
    method.steps = {.reply = "Failed to set the value to MenuAndMessageTimeOut."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 06 00 6B 00 05 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 06 00 6B 00 1E 00 ...";
    checkSettingMethod(method);

    method = common;
    method.method = "SetLanguage";
    method.argument = "Language";
    method.max = 9;
    method.missing = "Required argument Language missing.";
    method.range = "Invalid input value range.Valid values are between 0 and 9.";
    method.steps = {.reply = "Failed to set the value to Language."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 06 00 6D 00 01 00 ..."; // the engine's code of 0
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 06 00 6D 00 09 00 ...";
    checkSettingMethod(method);

    method = common;
    method.method = "SetDisplayRotation";
    method.argument = "DisplayRotation";
    method.missing = "Required argument DisplayRotation missing.";
    method.range = "Invalid input value range. Valid values are 0 or 1.";
    method.steps = {.reply = "Failed to set value to display rotation."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 06 00 6E 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 06 00 6E 00 01 00 ...";
    checkSettingMethod(method);
}

TEST(OSDMenuAndMessages, MethodsOfOneSwitch)
{
    SettingMethod method = {.tested = &OSDMenuAndMessages,
                            .target = target(),
                            .kind = ArgumentIs::toggle,
                            .returnType = CMPI_uint8};
    method.method = "SetNotifyWhenRecalibrationIsDue";
    method.argument = "NotifyWhenReCalibrationIsDue"; // not the letter case of the method
    method.missing = "Required argument NotifyWhenReCalibrationIsDue missing.";
    method.range = "Invalid input value range. Valid values are 0 or 1.";
    method.steps = {.reply = "Failed to set the value to RecalibrationIsDueState."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 06 00 68 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 06 00 68 00 01 00 ...";
    checkSettingMethod(method);

    method.method = "SetShowInfoWhenColorSpaceChanges";
    method.argument = "ShowInfoWhenColorSpaceChanges";
    method.missing = "Required argument ShowInfoWhenColorSpaceChanges missing.";
    method.range = "Invalid input value range.Valid values are 0 or 1.";
    method.steps = {.reply = "Failed to to set the value to ShowInfoWhenColorSpaceChangeState."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 06 00 66 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 06 00 66 00 01 00 ...";
    checkSettingMethod(method);

    method.method = "SetShowInfoWhenInputSourceChanges";
    method.argument = "ShowInfoWhenInputSourceChanges";
    method.missing = "Required argument ShowInfoWhenInputSourceChanges missing.";
    method.range = "Invalid input value range, Valid values are 0 or 1.";
    method.steps = {.reply = "Failed to set the value to ShowInfoWhenInputSourceChangeState."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 06 00 65 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 06 00 65 00 01 00 ...";
    checkSettingMethod(method);

    method.method = "SetShowInfoWhenPoweredOn";
    method.argument = "ShowInfoWhenPoweredOn";
    method.missing = "Required argument ShowInfoWhenPoweredOn missing.";
    method.range = "Invalid input value range. Valid values are 0 or 1.";
    method.steps = {.reply = "Failed to set the value to ShowInfoWhenPoweredOnState.",
                    .busy = "Device is Busy. Please try aftrer some time."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 06 00 64 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 06 00 64 00 01 00 ...";
    checkSettingMethod(method);
}

TEST(OSDMenuAndMessages, SwitchesAreCheckedAgainstZeroAndOne)
{
    const auto checks = [](const char *method, const char *argument) {
        SCOPED_TRACE(method);
        const Answer answer = invoke(OSDMenuAndMessages, target(), method, {{argument, "true"}});
        EXPECT_EQ(answer.calls.at(0), "ValidateInputArgs(1, 0, 1)");
    };
    checks("SetNotifyWhenRecalibrationIsDue", "NotifyWhenReCalibrationIsDue");
    checks("SetShowInfoWhenColorSpaceChanges", "ShowInfoWhenColorSpaceChanges");
    checks("SetShowInfoWhenInputSourceChanges", "ShowInfoWhenInputSourceChanges");
    checks("SetShowInfoWhenPoweredOn", "ShowInfoWhenPoweredOn");
}

TEST(OSDMenuAndMessages, TimeOutEndsAtFiveAndThirtySeconds)
{
    const auto set = [](const char *seconds) {
        return invoke(OSDMenuAndMessages, target(), "SetMenuAndMessageTimeOut",
                      {{"MenuAndMessageTimeOut", seconds}});
    };
    for (const char *seconds : {"4", "31"}) {
        EXPECT_METHOD(set(seconds), uint8(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Invalid input value range. Valid values are between 5 and 30.");
    }
    for (const char *seconds : {"5", "30"}) {
        EXPECT_METHOD(set(seconds), uint8(0), CMPI_RC_OK, "");
    }
}

TEST(OSDMenuAndMessages, NoMethodRefreshesFirst)
{
    const Answer answer =
        invoke(OSDMenuAndMessages, target(), "SetMenuAndMessageTimeOut", {{"MenuAndMessageTimeOut", "5"}});
    EXPECT_CALLS(answer, {"ValidateInputArgs(5, 5, 30)", "GetMonitorStatus(0)",
                          "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                          "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"});
}

// ---- SetLanguage ----

TEST(OSDMenuAndMessages, LanguagesAreConvertedToTheEnginesCodes)
{
    const std::pair<int, int> codes[] = {{0, 1}, {1, 4}, {2, 2}, {3, 0}, {4, 3},
                                         {5, 5}, {6, 6}, {7, 7}, {8, 8}, {9, 9}};
    for (const auto &[language, code] : codes) {
        SCOPED_TRACE(language);
        forgetTrace();
        EXPECT_EQ(GetLanguageValue(language), code);
        EXPECT_EQ(traceText(), "");
        const Answer answer =
            invoke(OSDMenuAndMessages, target(), "SetLanguage", {{"Language", std::to_string(language)}});
        EXPECT_METHOD(answer, uint8(0), CMPI_RC_OK, "");
        ASSERT_EQ(answer.sent.size(), 1u);
        EXPECT_EQ(answer.sent[0].bytes[12], 109);
        EXPECT_EQ(answer.sent[0].bytes[14], code);
        EXPECT_EQ(answer.sent[0].bytes[15], 0);
        EXPECT_EQ(answer.trace, "---------langval:" + std::to_string(language) +
                                    "\n--------- after langval:" + std::to_string(code) + "\n");
    }
}

TEST(OSDMenuAndMessages, LanguageThreeIsTheEnginesZeroAndOneItsFour)
{
    EXPECT_SENT(invoke(OSDMenuAndMessages, target(), "SetLanguage", {{"Language", "3"}}),
                {"01 00 00 00 03 00 07 00 00 01 06 00 6D 00 00 00 ..."});
    EXPECT_SENT(invoke(OSDMenuAndMessages, target(), "SetLanguage", {{"Language", "1"}}),
                {"01 00 00 00 03 00 07 00 00 01 06 00 6D 00 04 00 ..."});
    // What is stored is shown, not what was sent for it.
    seam.osd.Language = 4;
    EXPECT_EQ(*get(OSDMenuAndMessages, target()).instance().find("Language"), uint16Array({4}));
}

TEST(OSDMenuAndMessages, UnknownLanguagesHaveNoCode)
{
    for (const int language : {-1, 10, 255, INT32_MAX, INT32_MIN}) {
        forgetTrace();
        EXPECT_EQ(GetLanguageValue(language), -1);
        EXPECT_EQ(traceText(), "Invalid one\n");
    }
}

TEST(OSDMenuAndMessages, AnUnknownLanguageIsSentAsMinusOne)
{
    // The method's range keeps such a language from its sender.
    const SetterAnswer answer = call([](char *text) { return SetLanguage(10, text); });
    EXPECT_EQ(answer.result, 0);
    EXPECT_SENT(answer, {"01 00 00 00 03 00 07 00 00 01 06 00 6D 00 FF FF ..."});
    EXPECT_EQ(answer.trace, "---------langval:10\nInvalid one\n--------- after langval:-1\n");
}

TEST(OSDMenuAndMessages, ABusyEngineIsToldNoLanguage)
{
    seam.status = BUSY;
    const SetterAnswer answer = call([](char *text) { return SetLanguage(2, text); });
    EXPECT_EQ(answer.result, -1);
    EXPECT_EQ(answer.errorText, "Device is Busy. Please try after some time.");
    EXPECT_EQ(answer.trace, "");
}

// ---- SetOSDPosition ----

TEST(OSDMenuAndMessages, PositionArgumentsAreReadOneAfterTheOther)
{
    checkStringArgument(OSDMenuAndMessages, target(), "SetOSDPosition", "OSDPositionX",
                        "Required argument OSDPositionX missing.", {{"OSDPositionY", "200"}}, noUser(),
                        CMPI_uint8);
    checkStringArgument(OSDMenuAndMessages, target(), "SetOSDPosition", "OSDPositionY",
                        "Required argument OSDPositionY missing.", {{"OSDPositionX", "200"}}, noUser(),
                        CMPI_uint8);
    const auto refuses = [](const Value &x, const Value &y, const char *text) {
        const Answer answer = setPosition(x, y);
        EXPECT_METHOD(answer, uint8(2), CMPI_RC_ERR_INVALID_PARAMETER, text);
        EXPECT_CALLS(answer, {});
    };
    refuses("12x", "12", "Invalid parameter.");
    refuses("12", "1 2", "Invalid parameter.");
    refuses("9999", "x", "Invalid parameter.");
    refuses("x", absent(), "Invalid parameter.");
    refuses(absent(), uint16(12), "Required argument OSDPositionX missing.");
}

TEST(OSDMenuAndMessages, PositionIsCheckedAsAWhole)
{
    const char *const both =
        "Invalid input value range. Valid Values of OSDpositionX are between 0 and 2560 , Valid "
        "values of OSDpositionY are between 0 and 1440.";
    const char *const onlyX = "Invalid input value range, Valid values of OSDpositionX between 0 and 2560.";
    const char *const onlyY = "Invalid input value range. Valid values of OSDpositionY between  0 and 1440.";
    const auto refuses = [](const char *x, const char *y, const char *text) {
        SCOPED_TRACE(std::string(x) + ", " + y);
        const Answer answer = setPosition(x, y);
        EXPECT_METHOD(answer, uint8(2), CMPI_RC_ERR_INVALID_PARAMETER, text);
        EXPECT_EQ(answer.calls.size(), 2u) << "both are checked, nothing else is done";
    };
    refuses("2561", "1441", both);
    refuses("-1", "-1", both);
    refuses("-1", "1441", both);
    refuses("2561", "1440", onlyX);
    refuses("-1", "0", onlyX);
    refuses("2560", "1441", onlyY);
    refuses("0", "-1", onlyY);
    refuses("65536", "65536", both);
    refuses("4294967296", "0", onlyX);
}

TEST(OSDMenuAndMessages, PositionIsSentInOneMessage)
{
    Answer answer = setPosition("2560", "1440");
    EXPECT_METHOD(answer, uint8(0), CMPI_RC_OK, "");
    EXPECT_SENT(answer, {"01 00 00 00 03 00 07 00 00 02 06 00 69 00 00 0A 00 00 00 6A 00 A0 05 ..."});
    answer = setPosition("0", "0");
    EXPECT_METHOD(answer, uint8(0), CMPI_RC_OK, "");
    EXPECT_SENT(answer, {"01 00 00 00 03 00 07 00 00 02 06 00 69 00 00 00 00 00 00 6A 00 00 00 ..."});
    seam.status = BUSY;
    EXPECT_METHOD(setPosition("1", "1"), uint8(2), CMPI_RC_ERR_FAILED,
                  "Device is Busy. Please try after some time.");
    seam.status = FREE;
    seam.returns("RecvMessageFromSource", -1);
    EXPECT_METHOD(setPosition("1", "1"), uint8(2), CMPI_RC_ERR_FAILED,
                  "Failed to set the value to OSDPositions.");
}

// ---- SetOpacity ----

TEST(OSDMenuAndMessages, OpacityIsSentInHundredths)
{
    const auto sends = [](const char *opacity, const char *golden) {
        SCOPED_TRACE(opacity);
        const Answer answer = setOpacity(opacity);
        EXPECT_METHOD(answer, uint8(0), CMPI_RC_OK, "");
        EXPECT_SENT(answer, {golden});
    };
    sends("25", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 C4 09 ...");
    sends("31.25", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 35 0C ...");
    sends("37.5", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 A6 0E ...");
    sends("37.50", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 A6 0E ...");
    sends("43.75", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 17 11 ...");
    sends("50", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 88 13 ...");
    sends("56.25", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 F9 15 ...");
    sends("62.50", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 6A 18 ...");
    sends("68.75", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 DB 1A ...");
    sends("75", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 4C 1D ...");
    sends("81.25", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 BD 1F ...");
    sends("87.50", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 2E 22 ...");
    sends("93.75", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 9F 24 ...");
    sends("100", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 10 27 ...");
    sends("100.0", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 10 27 ...");
    sends("5e1", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 88 13 ...");
    sends("+50", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 88 13 ...");
    sends(" 50", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 88 13 ...");
    sends("25.001", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 C4 09 ...");     // cut off to 2500
    sends("25.009", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 C4 09 ...");     // not rounded to 2501
    sends("99.9999999", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 10 27 ..."); // 100 as a float, 99 percent
    // Whole percents are tested in 16 bits, in which this is 25, and hundredths in which it is 2500.
    sends("65561", "01 00 00 00 03 00 07 00 00 01 06 00 6C 00 C4 09 ...");
}

TEST(OSDMenuAndMessages, OpacityHasSteps)
{
    for (const char *opacity :
         {"40", "25.01", "26", "30", "99", "31.2", "31.24", "74.99", "100.9", "100.01"}) {
        SCOPED_TRACE(opacity);
        const Answer answer = setOpacity(opacity);
        EXPECT_METHOD(answer, uint8(2), CMPI_RC_ERR_FAILED, opacitySteps);
        EXPECT_SENT(answer, {});
    }
}

TEST(OSDMenuAndMessages, OpacityHasARange)
{
    for (const char *opacity :
         {"24.9",  "24.999", "18.75",    "0",   "-25",  "-0",         "101",        "106.25", "112.5",
          "65535", "65560",  "65637",    "1e9", "1e30", "1e39",       "-1e39",      "1e400",  "-1e400",
          "inf",   "-inf",   "infinity", "nan", "-nan", "2147483673", "4294967321", "1e-30"}) {
        SCOPED_TRACE(opacity);
        const Answer answer = setOpacity(opacity);
        EXPECT_METHOD(answer, uint8(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Invalid input value range. Valid values are between 25 and 100.");
        EXPECT_SENT(answer, {});
    }
}

TEST(OSDMenuAndMessages, OpacityIsADecimalNumber)
{
    checkStringArgument(OSDMenuAndMessages, target(), "SetOpacity", "Opacity",
                        "Required argument Opacity missing.", {}, noUser(), CMPI_uint8);
    for (const char *opacity : {"50abc", "abc", "50 ", " ", "50,5", "5o", "--50", "50%", ".", "e1", "true"}) {
        SCOPED_TRACE(opacity);
        const Answer answer = setOpacity(opacity);
        EXPECT_METHOD(answer, uint8(2), CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.");
        EXPECT_CALLS(answer, {});
    }
}

TEST(OSDMenuAndMessages, OpacityTestsTheEngineBeforeTheStep)
{
    EXPECT_CALLS(setOpacity("40"), {"ValidateInputArgs(40, 25, 100)", "GetMonitorStatus(0)"});
    seam.status = BUSY;
    EXPECT_METHOD(setOpacity("40"), uint8(2), CMPI_RC_ERR_FAILED,
                  "Device is Busy. Please try after some time.");
    EXPECT_METHOD(setOpacity("24"), uint8(2), CMPI_RC_ERR_INVALID_PARAMETER,
                  "Invalid input value range. Valid values are between 25 and 100.");
}

TEST(OSDMenuAndMessages, OpacityFailsWithTheStepsOfItsSend)
{
    const auto fails = [](const char *function, int nth, const char *text) {
        SCOPED_TRACE(function);
        seam.reset();
        seam.returnsAt(function, nth, -1);
        EXPECT_METHOD(setOpacity("50"), uint8(2), CMPI_RC_ERR_FAILED, text);
    };
    fails("SpearEngineMessageQueueCreate", 1, "Unable to create a message queue for sending message.");
    fails("SendStatusMessagetoSource", 1, "Unable to send value to SPEAr.");
    fails("SpearEngineMessageQueueCreate", 2, "Unable to create a message queue for receiving message.");
    fails("RecvMessageFromSource", 1, "Failed to set the value to Opacity.");
}

TEST(OSDMenuAndMessages, OpacitiesBeyondIntDoNotHarm)
{
    using Limits = std::numeric_limits<float>;
    for (const float opacity : {Limits::max(), Limits::infinity(), 3e7F}) {
        const SetterAnswer answer = call([&](char *text) { return SetOpacity(opacity, text); });
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.errorText, opacitySteps);
        EXPECT_SENT(answer, {});
    }
}

// ---- the dispatcher ----

TEST(OSDMenuAndMessages, UnknownMethodsAreNotFound)
{
    checkUnknownMethods(OSDMenuAndMessages, target(),
                        {"Reboot", "setopacity", "SETOPACITY", "SetOpacit", "SetOpacity1",
                         "SetNotifyWhenReCalibrationIsDue", "setDisplayRotation"},
                        CMPI_RC_ERR_NOT_FOUND, uint8(1));
}

TEST(OSDMenuAndMessages, AnotherClassIsAnsweredWithoutAnError)
{
    checkOtherClass(OSDMenuAndMessages, target(), "SetLanguage", {{"Language", "1"}}, noUser(), CMPI_RC_OK,
                    "", uint8(2));
}

TEST(OSDMenuAndMessages, MethodsCheckTheKey)
{
    checkKeysOfMethod(OSDMenuAndMessages, target(), "SetLanguage", {{"Language", "1"}}, noUser(),
                      instanceIDOfMethods(), CMPI_uint8);
}

namespace
{

const std::vector<Entry> goodCalls = {
    {"SetMenuAndMessageTimeOut", "MenuAndMessageTimeOut"},
    {"SetLanguage", "Language"},
    {"SetNotifyWhenRecalibrationIsDue", "NotifyWhenReCalibrationIsDue"},
    {"SetOpacity", "Opacity"},
    {"SetShowInfoWhenColorSpaceChanges", "ShowInfoWhenColorSpaceChanges"},
    {"SetShowInfoWhenInputSourceChanges", "ShowInfoWhenInputSourceChanges"},
    {"SetShowInfoWhenPoweredOn", "ShowInfoWhenPoweredOn"},
    {"SetDisplayRotation", "DisplayRotation"},
};

const char *goodValue(const std::string &method)
{
    return method == "SetMenuAndMessageTimeOut" ? "5" : method == "SetOpacity" ? "50" : "1";
}

} // namespace

TEST(OSDMenuAndMessages, EverybodyMayCallTheMethods)
{
    for (const auto &[method, argument] : goodCalls) {
        checkNoAdministratorNeeded(OSDMenuAndMessages, target(), method, {{argument.text, goodValue(method)}},
                                   CMPI_uint8);
    }
    checkNoAdministratorNeeded(OSDMenuAndMessages, target(), "SetOSDPosition",
                               {{"OSDPositionX", "1"}, {"OSDPositionY", "1"}}, CMPI_uint8);
}

TEST(OSDMenuAndMessages, MethodsSurviveEveryFailure)
{
    for (const auto &[method, argument] : goodCalls) {
        SCOPED_TRACE(method);
        const Entries arguments = {{argument.text, goodValue(method)}};
        checkTorture([&, name = method] { return invoke(OSDMenuAndMessages, target(), name, arguments); });
    }
    checkTorture([] { return setPosition("1", "1"); });
}
