// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_TestPatternGenerator: the test-pattern generator and the methods that drive it.

#include "checks.h"
#include "display/modules.h"

METHOD_CLASS(TestPatternGenerator);

namespace
{

Path target()
{
    return path("ZT_Marovelton_TestPatternGenerator", {{"InstanceID", "ZT:Marovelton_TestPatternGenerator"}});
}

Answer setLevels(const Value &red, const Value &green, const Value &blue)
{
    return invoke(TestPatternGenerator, target(), "SetRGBValue",
                  {{"RValue", red}, {"GValue", green}, {"BValue", blue}});
}

} // namespace

TEST(TestPatternGenerator, HasTheSkeletonOfAClass)
{
    checkSkeleton(TestPatternGenerator);
}

// ---- reads ----

TEST(TestPatternGenerator, EnumInstanceNamesGivesTheOnePath)
{
    checkPaths(TestPatternGenerator, {target()});
}

TEST(TestPatternGenerator, ReadsGiveEveryPropertyInOrder)
{
    seam.testPattern = {8, 1, "255", "128", "7", 1};
    checkInstance(TestPatternGenerator, target(),
                  {{"Caption", chars("ZT_Marovelton_TestPatternGenerator")},
                   {"ElementName", chars("ZT_Marovelton_TestPatternGenerator")},
                   {"InstanceID", chars("ZT:Marovelton_TestPatternGenerator")},
                   {"Description",
                    chars("A class derived from Logical Element that represents the single node container "
                          "of the Display Management System.")},
                   {"Name", chars("Studio 7-TestPatternGenerator")},
                   {"Enabled", boolean(1)},
                   {"RValue", chars("255")},
                   {"GValue", chars("128")},
                   {"BValue", chars("7")},
                   {"TestPattern", uint16Array({8})}},
                  {"GetMoinitorInfo()", "GetTestPatternInfo()"});
}

TEST(TestPatternGenerator, FieldsMayBeFull)
{
    const std::string red = fillField(seam.testPattern.RValue, 'r');
    const std::string green = fillField(seam.testPattern.GValue, 'g');
    const std::string blue = fillField(seam.testPattern.BValue, 'b');
    seam.testPattern.Enabled = 256;
    seam.testPattern.TestPatternGenerator = -1;
    const Instance found = get(TestPatternGenerator, target()).instance();
    EXPECT_EQ(*found.find("RValue"), chars("rrrrrrrrrr"));
    EXPECT_EQ(*found.find("GValue"), chars("gggggggggg"));
    EXPECT_EQ(*found.find("BValue"), chars("bbbbbbbbbb"));
    EXPECT_EQ(*found.find("Enabled"), boolean(0)) << "the low byte";
    EXPECT_EQ(*found.find("TestPattern"), uint16Array({65535}));
    seam.testPattern.Enabled = 255;
    EXPECT_EQ(*get(TestPatternGenerator, target()).instance().find("Enabled"), boolean(255));
}

TEST(TestPatternGenerator, NameFollowsTheSystemName)
{
    checkNameOfSystem(TestPatternGenerator, target(), "-TestPatternGenerator");
}

TEST(TestPatternGenerator, GetInstanceChecksTheKey)
{
    checkKeysOfGetInstance(TestPatternGenerator, target(), instanceIDOfReads());
}

TEST(TestPatternGenerator, BuildersTellWhatFailed)
{
    checkBuilders(
        {.tested = &TestPatternGenerator,
         .reference = target(),
         .makePath = _makePath_ZT_Marovelton_TestPatternGenerator,
         .makeInst = _makeInst_ZT_Marovelton_TestPatternGenerator,
         .records = {{"GetMoinitorInfo()", "Failed to get monitor information from database."},
                     {"GetTestPatternInfo()", "Failed to get test pattern information from database."}},
         .arrays = 1});
}

TEST(TestPatternGenerator, TheRecordIsReadAfterTheIdentity)
{
    // Five properties are set by then, which the count of calls to the broker shows.
    seam.returns("GetTestPatternInfo", -1);
    faults.arm("setProperty", 6);
    build(TestPatternGenerator, target(), _makeInst_ZT_Marovelton_TestPatternGenerator);
    EXPECT_EQ(faults.struck(), "") << "a sixth property was set";
    faults.arm("setProperty", 5);
    build(TestPatternGenerator, target(), _makeInst_ZT_Marovelton_TestPatternGenerator);
    EXPECT_EQ(faults.struck(), "setProperty") << "fewer than five properties were set";
}

TEST(TestPatternGenerator, ReadsSurviveEveryFailure)
{
    checkTortureOfReads(TestPatternGenerator, target());
}

// ---- settings by themselves ----

TEST(TestPatternGenerator, SettingsSendTheirRegisters)
{
    // All three know a missing reply by this text.
    const ChannelSteps steps = {.reply = "Failed to set the value to PowerSaverState."};
    checkSender([](char *text) { return SetTestPatternEnable(1, text); },
                "01 00 00 00 03 00 07 00 00 01 0F 00 AB 00 01 00 ...", steps);
    checkSender([](char *text) { return SetTestPattern(8, text); },
                "01 00 00 00 03 00 07 00 00 01 0F 00 AA 00 08 00 ...", steps);
    checkSender(
        [](char *text) { return SetRGBValue(1, 2, 255, text); },
        "01 00 00 00 03 00 07 00 00 03 0F 00 AC 00 01 00 00 00 00 AD 00 02 00 00 00 00 AE 00 FF 00 ...",
        steps);
}

TEST(TestPatternGenerator, SettingsSendTheLow16Bits)
{
    EXPECT_SENT(
        call([](char *text) { return SetRGBValue(-1, 65536, 0x12345, text); }),
        {"01 00 00 00 03 00 07 00 00 03 0F 00 AC 00 FF FF 00 00 00 AD 00 00 00 00 00 00 AE 00 45 23 ..."});
}

// ---- methods ----

TEST(TestPatternGenerator, SetEnabledSwitchesTheGenerator)
{
    // 1 switches it on, whatever the register is called.
    checkSettingMethod({.tested = &TestPatternGenerator,
                        .target = target(),
                        .method = "SetEnabled",
                        .argument = "Enabled",
                        .kind = ArgumentIs::toggle,
                        .missing = "Required argument Enabled missing.",
                        .range = "",
                        .steps = {.reply = "Failed to set the value to PowerSaverState."},
                        .sentAtMin = "01 00 00 00 03 00 07 00 00 01 0F 00 AB 00 00 00 ...",
                        .sentAtMax = "01 00 00 00 03 00 07 00 00 01 0F 00 AB 00 01 00 ..."});
}

TEST(TestPatternGenerator, SetTestPatternTakesTheLeadingNumber)
{
    checkSettingMethod({.tested = &TestPatternGenerator,
                        .target = target(),
                        .method = "SetTestPattern",
                        .argument = "TestPattern",
                        .kind = ArgumentIs::leadingDecimal,
                        .max = 8,
                        .missing = "Required argument TestPattern missing.",
                        .range = "Invalid input value range. Valid values are between 0 and 8.",
                        .steps = {.reply = "Failed to set the value to PowerSaverState."},
                        .sentAtMin = "01 00 00 00 03 00 07 00 00 01 0F 00 AA 00 00 00 ...",
                        .sentAtMax = "01 00 00 00 03 00 07 00 00 01 0F 00 AA 00 08 00 ..."});
    const auto set = [](const char *pattern) {
        return invoke(TestPatternGenerator, target(), "SetTestPattern", {{"TestPattern", pattern}});
    };
    EXPECT_METHOD(set("9"), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                  "Invalid input value range. Valid values are between 0 and 8.");
    EXPECT_SENT(set("8"), {"01 00 00 00 03 00 07 00 00 01 0F 00 AA 00 08 00 ..."});
    EXPECT_SENT(set("3abc"), {"01 00 00 00 03 00 07 00 00 01 0F 00 AA 00 03 00 ..."});
    EXPECT_SENT(set("abc"), {"01 00 00 00 03 00 07 00 00 01 0F 00 AA 00 00 00 ..."});
}

TEST(TestPatternGenerator, SetRGBValueSendsAllLevelsInOneMessage)
{
    Answer answer = setLevels("255", "128", "1");
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(
        answer,
        {"01 00 00 00 03 00 07 00 00 03 0F 00 AC 00 FF 00 00 00 00 AD 00 80 00 00 00 00 AE 00 01 00 ..."});
    EXPECT_CALLS(answer, {"ValidateInputArgs(255, 0, 255)", "ValidateInputArgs(128, 0, 255)",
                          "ValidateInputArgs(1, 0, 255)", "GetMonitorStatus(0)",
                          "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                          "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"});
    answer = setLevels("0", " 12x", "text");
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(
        answer,
        {"01 00 00 00 03 00 07 00 00 03 0F 00 AC 00 00 00 00 00 00 AD 00 0C 00 00 00 00 AE 00 00 00 ..."});
}

TEST(TestPatternGenerator, SetRGBValueReadsEachLevel)
{
    checkStringArgument(TestPatternGenerator, target(), "SetRGBValue", "RValue",
                        "Required argument RValue missing.", {{"GValue", "1"}, {"BValue", "1"}}, noUser());
    checkStringArgument(TestPatternGenerator, target(), "SetRGBValue", "GValue",
                        "Required argument GValue missing.", {{"RValue", "1"}, {"BValue", "1"}}, noUser());
    checkStringArgument(TestPatternGenerator, target(), "SetRGBValue", "BValue",
                        "Required argument BValue missing.", {{"RValue", "1"}, {"GValue", "1"}}, noUser());
}

TEST(TestPatternGenerator, SetRGBValueTestsOneLevelAfterTheOther)
{
    const auto refuses = [](const Value &red, const Value &green, const Value &blue, const char *text) {
        const Answer answer = setLevels(red, green, blue);
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, text);
        EXPECT_SENT(answer, {}); // nothing is written for the levels before either
    };
    const char *const range = "Invalid input value range. Valid values are between 0 and 255.";
    for (const char *beyond : {"256", "-1", "65536", "4294967296", "99999999999999999999"}) {
        SCOPED_TRACE(beyond);
        refuses(beyond, "1", "1", range);
        refuses("1", beyond, "1", range);
        refuses("1", "1", beyond, range);
    }
    refuses("256", absent(), uint16(1), range);
    refuses("1", "", "256", "Invalid parameter. Value is missing.");
    refuses("1", uint16(1), absent(), "Invalid type of parameter.");
    refuses("1", "1", absent(), "Required argument BValue missing.");
    refuses(absent(), "256", "256", "Required argument RValue missing.");
}

TEST(TestPatternGenerator, SetRGBValueFailsWithTheStepsOfItsSend)
{
    checkFailuresOfSend([] { return setLevels("1", "1", "1"); },
                        {.reply = "Failed to set the value to PowerSaverState."});
}

// ---- the dispatcher ----

TEST(TestPatternGenerator, MethodNamesMayHaveAnyLetterCase)
{
    for (const char *name : {"setenabled", "SETENABLED", "SetEnabled"}) {
        EXPECT_METHOD(invoke(TestPatternGenerator, target(), name, {{"Enabled", "true"}}), uint32(0),
                      CMPI_RC_OK, "");
    }
    for (const char *name : {"settestpattern", "SETTESTPATTERN"}) {
        EXPECT_METHOD(invoke(TestPatternGenerator, target(), name, {{"TestPattern", "1"}}), uint32(0),
                      CMPI_RC_OK, "");
    }
    for (const char *name : {"setrgbvalue", "SETRGBVALUE"}) {
        EXPECT_METHOD(
            invoke(TestPatternGenerator, target(), name, {{"RValue", "1"}, {"GValue", "1"}, {"BValue", "1"}}),
            uint32(0), CMPI_RC_OK, "");
    }
}

TEST(TestPatternGenerator, UnknownMethodsAreNotSupported)
{
    checkUnknownMethods(TestPatternGenerator, target(),
                        {"Reboot", "SetEnable", "SetEnabled1", "SetTestPatternEnable", "SetRGBValues"},
                        CMPI_RC_ERR_NOT_SUPPORTED, uint32(0));
}

TEST(TestPatternGenerator, AnotherClassIsAnsweredWithoutAnError)
{
    checkOtherClass(TestPatternGenerator, target(), "SetEnabled", {{"Enabled", "1"}}, noUser(), CMPI_RC_OK,
                    "", uint32(2));
}

TEST(TestPatternGenerator, MethodsCheckTheKey)
{
    checkKeysOfMethod(TestPatternGenerator, target(), "SetEnabled", {{"Enabled", "1"}}, noUser(),
                      instanceIDOfMethods());
}

TEST(TestPatternGenerator, EverybodyMayCallTheMethods)
{
    checkNoAdministratorNeeded(TestPatternGenerator, target(), "SetEnabled", {{"Enabled", "1"}});
    checkNoAdministratorNeeded(TestPatternGenerator, target(), "SetTestPattern", {{"TestPattern", "1"}});
    checkNoAdministratorNeeded(TestPatternGenerator, target(), "SetRGBValue",
                               {{"RValue", "1"}, {"GValue", "1"}, {"BValue", "1"}});
}

TEST(TestPatternGenerator, MethodsSurviveEveryFailure)
{
    checkTorture([] { return invoke(TestPatternGenerator, target(), "SetEnabled", {{"Enabled", "1"}}); });
    checkTorture([] {
        return invoke(TestPatternGenerator, target(), "SetTestPattern", {{"TestPattern", "1"}});
    });
    checkTorture([] { return setLevels("1", "2", "3"); });
}
