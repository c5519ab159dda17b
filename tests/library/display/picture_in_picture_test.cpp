// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_PictureInPicture: the second picture and the methods that change it.

#include "checks.h"
#include "display/modules.h"
#include <algorithm>

METHOD_CLASS(PictureInPicture);

namespace
{

const char *const refreshed = "01 00 00 00 08 00 07 00 00 00 03 ...";

Path target()
{
    return path("ZT_Marovelton_PictureInPicture", {{"InstanceID", "ZT:Marovelton_PictureInPicture"}});
}

void liveMode(const std::string &mode)
{
    seam.registers[{50, 3}] = mode;
}

void liveSize(const std::string &size)
{
    seam.registers[{54, 3}] = size;
}

void liveResolution(const std::string &width, const std::string &height)
{
    seam.registers[{65, 3}] = width;
    seam.registers[{64, 3}] = height;
}

/** An inset at default size that shows a DCI picture: every method is possible. */
void everythingIsPossible()
{
    liveMode("1");
    liveSize("2");
    liveResolution("4096", "2160");
}

Answer setPosition(const Value &x, const Value &y)
{
    return invoke(PictureInPicture, target(), "SetPIPPosition", {{"PIPPositionX", x}, {"PIPPositionY", y}});
}

} // namespace

TEST(PictureInPicture, HasTheSkeletonOfAClass)
{
    checkSkeleton(PictureInPicture);
}

// ---- reads ----

TEST(PictureInPicture, EnumInstanceNamesGivesTheOnePath)
{
    checkPaths(PictureInPicture, {target()});
}

TEST(PictureInPicture, ReadsGiveEveryPropertyInOrder)
{
    seam.pip = {2, 3, 1688, 880, 1, 2, 1, 0, 1, 0, 1, 1, 1};
    checkInstance(PictureInPicture, target(),
                  {{"PIPOverscanEnabled", boolean(0)},
                   {"PIPSize", uint16(1)},
                   {"PIPPositionX", uint16(1688)},
                   {"PIPPositionY", uint16(880)},
                   {"PIPMode", uint16Array({2})},
                   {"UseVideoLevels", boolean(1)},
                   {"ShowDCICroppedRegion", boolean(0)},
                   {"DigitalCinemaOption", uint16Array({1})},
                   {"PIPInputSource", uint16Array({2})},
                   {"Caption", chars("ZT_Marovelton_PictureInPicture")},
                   {"ElementName", chars("ZT_Marovelton_PictureInPicture")},
                   {"InstanceID", chars("ZT:Marovelton_PictureInPicture")},
                   {"Description",
                    chars("A class derived from Logical Element that represents the single node container "
                          "of the Display Management System.")},
                   {"Name", chars("Studio 7-PictureInPicture")}},
                  {"GetPIPSettingsInfo()", "GetMoinitorInfo()"});
}

TEST(PictureInPicture, EachPropertyHasItsOwnField)
{
    seam.pip = {11, 12, 13, 14, 15, 16, 0, 1, 17, 1, 0, 0, 0};
    const Instance found = get(PictureInPicture, target()).instance();
    const auto is = [&](const char *name, const Value &expected) {
        const Value *value = found.find(name);
        return value && *value == expected;
    };
    EXPECT_TRUE(is("PIPMode", uint16Array({11})));
    EXPECT_TRUE(is("PIPPositionX", uint16(13)));
    EXPECT_TRUE(is("PIPPositionY", uint16(14)));
    EXPECT_TRUE(is("PIPSize", uint16(15)));
    EXPECT_TRUE(is("PIPInputSource", uint16Array({16})));
    EXPECT_TRUE(is("UseVideoLevels", boolean(0)));
    EXPECT_TRUE(is("PIPOverscanEnabled", boolean(1)));
    EXPECT_TRUE(is("DigitalCinemaOption", uint16Array({17})));
    EXPECT_TRUE(is("ShowDCICroppedRegion", boolean(1)));
}

TEST(PictureInPicture, NumbersKeepTheirLowBits)
{
    seam.pip = {65536 + 2, 0, -1, 65536, INT32_MIN, INT32_MAX, 256, -1, 65535, 2, 0, 0, 0};
    const Instance found = get(PictureInPicture, target()).instance();
    ASSERT_EQ(found.properties.size(), 14u);
    EXPECT_EQ(found.properties[0].value, boolean(255)) << "PIPOverscanEnabled";
    EXPECT_EQ(found.properties[1].value, uint16(0)) << "PIPSize";
    EXPECT_EQ(found.properties[2].value, uint16(65535)) << "PIPPositionX";
    EXPECT_EQ(found.properties[3].value, uint16(0)) << "PIPPositionY";
    EXPECT_EQ(found.properties[4].value, uint16Array({2})) << "PIPMode";
    EXPECT_EQ(found.properties[5].value, boolean(0)) << "UseVideoLevels";
    EXPECT_EQ(found.properties[6].value, boolean(2)) << "ShowDCICroppedRegion";
    EXPECT_EQ(found.properties[7].value, uint16Array({65535})) << "DigitalCinemaOption";
    EXPECT_EQ(found.properties[8].value, uint16Array({65535})) << "PIPInputSource";
}

TEST(PictureInPicture, NameFollowsTheSystemName)
{
    checkNameOfSystem(PictureInPicture, target(), "-PictureInPicture");
}

TEST(PictureInPicture, GetInstanceChecksTheKey)
{
    checkKeysOfGetInstance(PictureInPicture, target(), instanceIDOfReads());
}

TEST(PictureInPicture, BuildersTellWhatFailed)
{
    checkBuilders(
        {.tested = &PictureInPicture,
         .reference = target(),
         .makePath = _makePath_ZT_Marovelton_PictureInPicture,
         .makeInst = _makeInst_ZT_Marovelton_PictureInPicture,
         .records = {{"GetPIPSettingsInfo()", "Failed to get PIPSettings information from database."},
                     {"GetMoinitorInfo()", "Could not get monitor information from database."}},
         .arrays = 3});
}

TEST(PictureInPicture, ReadsSurviveEveryFailure)
{
    checkTortureOfReads(PictureInPicture, target());
}

// ---- live values ----

TEST(PictureInPicture, LiveReadersGiveTheRegisterOrMinusOne)
{
    liveMode("2");
    liveSize("1");
    EXPECT_EQ(GetPIPMode(), 2);
    EXPECT_EQ(GetPIPSize(), 1);
    EXPECT_EQ(seam.calls, (std::vector<std::string>{"GetRegisterValue(50, 3)", "GetRegisterValue(54, 3)"}));
    liveMode("7x");
    liveSize("text");
    EXPECT_EQ(GetPIPMode(), 7);
    EXPECT_EQ(GetPIPSize(), 0);
    liveMode(std::string(40, '1')); // full to its width, without a terminating zero
    EXPECT_EQ(GetPIPMode(), INT32_MAX);
    for (const int result : {-1, 1, 80000001}) {
        seam.returns("GetRegisterValue", result);
        EXPECT_EQ(GetPIPMode(), -1);
        EXPECT_EQ(GetPIPSize(), -1);
    }
}

// ---- settings by themselves ----

TEST(PictureInPicture, SettingsSendTheirRegisters)
{
    checkSender([](char *text) { return SetPIPInputSource(2, text); },
                "01 00 00 00 03 00 07 00 00 01 03 00 39 00 02 00 ...",
                {.reply = "Failed to set the value to InputSource.",
                 .busy = "Device is Busy. Please try after some Time."});
    checkSender([](char *text) { return SetSwapInputSource(text); },
                "01 00 00 00 03 00 07 00 00 01 03 00 3A 00 00 00 ...",
                {.reply = "Failed to set the value to SwapInputSource."});
    checkSender(
        [](char *text) { return SetPIPPosition(300, 1120, text); },
        "01 00 00 00 03 00 07 00 00 03 03 00 33 00 04 00 00 00 00 34 00 2C 01 00 00 00 35 00 60 04 ...",
        {.reply = "Failed to set the value to PIPPositions."});
    checkSender([](char *text) { return SetPIPSize(1, text); },
                "01 00 00 00 03 00 07 00 00 01 03 00 36 00 01 00 ...",
                {.reply = "Failed to set the value to PIP Size."});
    checkSender([](char *text) { return SetPIPMode(1, text); },
                "01 00 00 00 03 00 07 00 00 01 03 00 32 00 01 00 ...",
                {.reply = "Failed to set the value to PIPMode.",
                 .busy = "Device is Busy. Plese try after some time."});
    checkSender([](char *text) { return SetOverScan(1, text); },
                "01 00 00 00 03 00 07 00 00 01 03 00 3C 00 01 00 ...",
                {.reply = "Failed to set the value to OverScan."});
    checkSender([](char *text) { return SetUseVideoLevels(1, text); },
                "01 00 00 00 03 00 07 00 00 01 03 00 3B 00 01 00 ...",
                {.reply = "Failed to set the value to video level."});
    checkSender([](char *text) { return SetDigitalCinemaOption(2, text); },
                "01 00 00 00 03 00 07 00 00 01 03 00 3D 00 02 00 ...",
                {.reply = "Failed to set the value to DigitalCinemaOption."});
}

TEST(PictureInPicture, SettingsSendTheLow16Bits)
{
    EXPECT_SENT(call([](char *text) { return SetPIPSize(0x12345, text); }),
                {"01 00 00 00 03 00 07 00 00 01 03 00 36 00 45 23 ..."});
    EXPECT_SENT(
        call([](char *text) { return SetPIPPosition(-1, 65537, text); }),
        {"01 00 00 00 03 00 07 00 00 03 03 00 33 00 04 00 00 00 00 34 00 FF FF 00 00 00 35 00 01 00 ..."});
}

// ---- methods ----

TEST(PictureInPicture, MethodsOfOneArgument)
{
    const SettingMethod refreshing = {.tested = &PictureInPicture,
                                      .target = target(),
                                      .sentBefore = {refreshed},
                                      .prepare = everythingIsPossible};
    SettingMethod method = refreshing;
    method.method = "SetPIPInputSource";
    method.argument = "PIPInputSource";
    method.max = 2;
    method.missing = "Required argument PIPInputSource missing.";
    method.range = "Invalid input value range, Enter valid values 0 to 2.";
    method.steps = {.reply = "Failed to set the value to InputSource.",
                    .busy = "Device is Busy. Please try after some Time."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 03 00 39 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 03 00 39 00 02 00 ...";
    checkSettingMethod(method);

    method = refreshing;
    method.method = "SetPIPSize";
    method.argument = "PIPSize";
    method.max = 2;
    method.missing = "Required argument PIPSize missing.";
    method.range = "Invalid input value range. Valid values are between 0 and 2.";
    method.steps = {.reply = "Failed to set the value to PIP Size."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 03 00 36 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 03 00 36 00 02 00 ...";
    checkSettingMethod(method);

    method = refreshing;
    method.method = "SetPIPOverscanEnabled";
    method.argument = "PIPOverscanEnabled";
    method.kind = ArgumentIs::toggle;
    method.missing = "Required argument PIPOverscanEnabled missing.";
    method.malformed = "Invalid Parameter.";
    method.range = "Invalid input value range. Valid values are 0 and 1.";
    method.steps = {.reply = "Failed to set the value to OverScan."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 03 00 3C 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 03 00 3C 00 01 00 ...";
    checkSettingMethod(method);

    method = refreshing;
    method.method = "SetDigitalCinemaOption";
    method.argument = "DigitalCinemaOption";
    method.max = 2;
    method.missing = "Required argument DigitalCinemaOption missing.";
    method.range = "Invalid input value range. Valid values are between 0 and 2.";
    method.steps = {.reply = "Failed to set the value to DigitalCinemaOption."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 03 00 3D 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 03 00 3D 00 02 00 ...";
    checkSettingMethod(method);

    const SettingMethod unconditional = {.tested = &PictureInPicture, .target = target()};
    method = unconditional;
    method.method = "SetPIPMode";
    method.argument = "PIPMode";
    method.max = 2;
    method.missing = "Required argument PIPMode missing.";
    method.range = "Invalid input value range, Valid values are between 0 and 2.";
    method.steps = {.reply = "Failed to set the value to PIPMode.",
                    .busy = "Device is Busy. Plese try after some time."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 03 00 32 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 03 00 32 00 02 00 ...";
    checkSettingMethod(method);

    method = unconditional;
    method.method = "SetUseVideoLevels";
    method.argument = "UseVideoLevels";
    method.kind = ArgumentIs::toggle;
    method.missing = "Required argument UseVideoLevels missing.";
    method.range = "Invalid input value range, Valid value are 0 or 1.";
    method.steps = {.reply = "Failed to set the value to video level."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 03 00 3B 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 03 00 3B 00 01 00 ...";
    checkSettingMethod(method);
}

TEST(PictureInPicture, TheCallsOfASettingHaveTheirOrder)
{
    everythingIsPossible();
    const std::vector<std::string> exchange = {
        "GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
        "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"};
    const auto expected = [&](const std::vector<std::string> &middle) {
        std::vector<std::string> calls = exchange;
        calls.insert(calls.end(), middle.begin(), middle.end());
        calls.insert(calls.end(), exchange.begin(), exchange.end());
        return calls;
    };
    EXPECT_EQ(
        invoke(PictureInPicture, target(), "SetDigitalCinemaOption", {{"DigitalCinemaOption", "1"}}).calls,
        expected({"GetRegisterValue(50, 3)", "GetRegisterValue(65, 3)", "GetRegisterValue(64, 3)",
                  "ValidateInputArgs(1, 0, 2)"}));
    EXPECT_EQ(invoke(PictureInPicture, target(), "SetPIPSize", {{"PIPSize", "1"}}).calls,
              expected({"GetRegisterValue(50, 3)", "ValidateInputArgs(1, 0, 2)"}));
    EXPECT_EQ(invoke(PictureInPicture, target(), "SwapPrimaryPIPInputs").calls,
              expected({"GetRegisterValue(50, 3)"}));
    EXPECT_EQ(setPosition("200", "300").calls,
              expected({"GetRegisterValue(50, 3)", "GetRegisterValue(54, 3)",
                        "ValidateInputArgs(200, 160, 1688)", "ValidateInputArgs(300, 160, 880)"}));
}

namespace
{

/** The methods that look at the live mode, with arguments that are good. */
struct ModalMethod {
    const char *name;
    Entries arguments;
    bool refusedBesideThePicture;
    const char *refusal;
};

std::vector<ModalMethod> modalMethods()
{
    return {
        {"SetPIPInputSource",
         {{"PIPInputSource", "1"}},
         true,
         "PIP mode is off. Unable to set the value for PIPInput source"},
        {"SwapPrimaryPIPInputs", {}, false, "PIP mode is off. Unable to set the value for Swap input source"},
        {"SetPIPPosition",
         {{"PIPPositionX", "200"}, {"PIPPositionY", "200"}},
         true,
         "PIP mode or picture in picture is off. Unable to set the value for pip positions"},
        {"SetPIPSize",
         {{"PIPSize", "1"}},
         true,
         "PIP mode or picture beside picture is off. Unable to set the value for pip size"},
        {"SetPIPOverscanEnabled",
         {{"PIPOverscanEnabled", "1"}},
         false,
         "PIP mode is off. Unable to set the value for OverScan"},
        {"SetDigitalCinemaOption",
         {{"DigitalCinemaOption", "1"}},
         false,
         "PIP mode is off. Unable to set the value"},
    };
}

} // namespace

TEST(PictureInPicture, MethodsAreRefusedInModesThatDoNotHaveTheirPicture)
{
    for (const ModalMethod &method : modalMethods()) {
        SCOPED_TRACE(method.name);
        const auto inMode = [&](const char *mode) {
            everythingIsPossible();
            liveMode(mode);
            return invoke(PictureInPicture, target(), method.name, method.arguments);
        };
        const auto refuses = [&](const char *mode) {
            const Answer answer = inMode(mode);
            EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_NOT_SUPPORTED, method.refusal);
            EXPECT_SENT(answer, {refreshed});
        };
        const auto sends = [&](const char *mode) {
            const Answer answer = inMode(mode);
            EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
            EXPECT_EQ(answer.sent.size(), 2u);
        };
        refuses("0");
        refuses("");
        sends("1");
        sends("3");
        sends("-1");
        if (method.refusedBesideThePicture) {
            refuses("2");
        } else {
            sends("2");
        }

        SCOPED_TRACE("a mode that cannot be read");
        for (const int result : {-1, 1}) {
            everythingIsPossible();
            seam.returns("GetRegisterValue(50, 3)", result);
            EXPECT_METHOD(invoke(PictureInPicture, target(), method.name, method.arguments), uint32(0),
                          CMPI_RC_OK, "");
            seam.reset();
        }
    }
}

TEST(PictureInPicture, MethodsFailWhenTheRefreshFails)
{
    for (const ModalMethod &method : modalMethods()) {
        const auto fails = [&](const std::string &function, int nth, int result, const char *text) {
            SCOPED_TRACE(std::string(method.name) + ", " + function);
            seam.reset();
            everythingIsPossible();
            seam.returnsAt(function, nth, result);
            const Answer answer = invoke(PictureInPicture, target(), method.name, method.arguments);
            EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED, text);
            EXPECT_EQ(seam.count("GetRegisterValue"), 0);
        };
        fails("GetMonitorStatus", 1, BUSY, "Device is Busy. Please try after some time..");
        fails("SpearEngineMessageQueueCreate", 1, -1,
              "Unable to create a message queue for sending message.");
        fails("SendStatusMessagetoSource", 1, -1, "Unable to send value to SPEAr.");
        fails("SpearEngineMessageQueueCreate", 2, -1,
              "Unable to create a message queue for receiving message.");
        fails("RecvMessageFromSource", 1, -1, "Failed to read the value from spear.");
    }
}

TEST(PictureInPicture, ArgumentsAreReadBeforeTheRefresh)
{
    liveMode("0");
    const auto refusesAtOnce = [](const char *method, const Entries &arguments, const char *text) {
        SCOPED_TRACE(method);
        const Answer answer = invoke(PictureInPicture, target(), method, arguments);
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, text);
        EXPECT_CALLS(answer, {});
    };
    refusesAtOnce("SetPIPInputSource", {}, "Required argument PIPInputSource missing.");
    refusesAtOnce("SetPIPSize", {{"PIPSize", "1x"}}, "Invalid parameter.");
    refusesAtOnce("SetPIPOverscanEnabled", {{"PIPOverscanEnabled", "yes"}}, "Invalid Parameter.");
    refusesAtOnce("SetDigitalCinemaOption", {{"DigitalCinemaOption", ""}},
                  "Invalid parameter. Value is missing.");
    refusesAtOnce("SetPIPPosition", {{"PIPPositionX", "200"}}, "Required argument PIPPositionY missing.");
    refusesAtOnce("SetPIPPosition", {{"PIPPositionX", "200"}, {"PIPPositionY", "y"}}, "Invalid parameter.");
    refusesAtOnce("SwapPrimaryPIPInputs", {{"Anything", "1"}},
                  "Argument not Required for SwapPrimaryPIPInputs method");
}

TEST(PictureInPicture, SwitchesAreCheckedAgainstZeroAndOne)
{
    everythingIsPossible();
    const auto checks = [](const char *method, const char *argument) {
        SCOPED_TRACE(method);
        invoke(PictureInPicture, target(), method, {{argument, "true"}});
        EXPECT_EQ(seam.count("ValidateInputArgs"), 1);
        EXPECT_NE(std::find(seam.calls.begin(), seam.calls.end(), "ValidateInputArgs(1, 0, 1)"),
                  seam.calls.end());
    };
    checks("SetPIPOverscanEnabled", "PIPOverscanEnabled");
    checks("SetUseVideoLevels", "UseVideoLevels");
}

TEST(PictureInPicture, TheModeIsLookedAtBeforeTheRange)
{
    liveMode("0");
    EXPECT_METHOD(invoke(PictureInPicture, target(), "SetPIPInputSource", {{"PIPInputSource", "3"}}),
                  uint32(2), CMPI_RC_ERR_NOT_SUPPORTED,
                  "PIP mode is off. Unable to set the value for PIPInput source");
    EXPECT_METHOD(setPosition("0", "0"), uint32(2), CMPI_RC_ERR_NOT_SUPPORTED,
                  "PIP mode or picture in picture is off. Unable to set the value for pip positions");
}

TEST(PictureInPicture, ModeBesideThePictureCanBeChosenWhilePIPIsOff)
{
    liveMode("0");
    const Answer answer = invoke(PictureInPicture, target(), "SetPIPMode", {{"PIPMode", "2"}});
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(answer, {"01 00 00 00 03 00 07 00 00 01 03 00 32 00 02 00 ..."});

    everythingIsPossible();
    liveMode("2");
    EXPECT_METHOD(invoke(PictureInPicture, target(), "SetPIPSize", {{"PIPSize", "1"}}), uint32(2),
                  CMPI_RC_ERR_NOT_SUPPORTED,
                  "PIP mode or picture beside picture is off. Unable to set the value for pip size");
    EXPECT_METHOD(setPosition("200", "200"), uint32(2), CMPI_RC_ERR_NOT_SUPPORTED,
                  "PIP mode or picture in picture is off. Unable to set the value for pip positions");
    EXPECT_METHOD(invoke(PictureInPicture, target(), "SetPIPInputSource", {{"PIPInputSource", "1"}}),
                  uint32(2), CMPI_RC_ERR_NOT_SUPPORTED,
                  "PIP mode is off. Unable to set the value for PIPInput source");
    EXPECT_METHOD(
        invoke(PictureInPicture, target(), "SetPIPOverscanEnabled", {{"PIPOverscanEnabled", "true"}}),
        uint32(0), CMPI_RC_OK, "");
}

// ---- SwapPrimaryPIPInputs ----

TEST(PictureInPicture, SwapSendsTheRegisterAlone)
{
    liveMode("1");
    const Answer answer = invoke(PictureInPicture, target(), "SwapPrimaryPIPInputs");
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(answer, {refreshed, "01 00 00 00 03 00 07 00 00 01 03 00 3A 00 00 00 ..."});
}

TEST(PictureInPicture, SwapTakesNoArguments)
{
    liveMode("1");
    const auto refuses = [](const Entries &arguments) {
        const Answer answer = invoke(PictureInPicture, target(), "SwapPrimaryPIPInputs", arguments);
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Argument not Required for SwapPrimaryPIPInputs method");
        EXPECT_SENT(answer, {});
    };
    refuses({{"PIPInputSource", "1"}});
    refuses({{"Anything", ""}});
    refuses({{"Anything", nullOf(CMPI_string)}});
    refuses({{"One", "1"}, {"Two", uint16(2)}});
    faults.arm("getArgCount", 1);
    refuses({});
}

TEST(PictureInPicture, SwapFailsWithTheStepsOfItsSend)
{
    checkFailuresOfSend([] { return invoke(PictureInPicture, target(), "SwapPrimaryPIPInputs"); },
                        {.reply = "Failed to set the value to SwapInputSource."}, 1, [] { liveMode("1"); });
}

// ---- SetPIPPosition ----

TEST(PictureInPicture, PositionArgumentsAreReadOneAfterTheOther)
{
    everythingIsPossible();
    checkStringArgument(PictureInPicture, target(), "SetPIPPosition", "PIPPositionX",
                        "Required argument PIPPositionX missing.", {{"PIPPositionY", "200"}}, noUser());
    checkStringArgument(PictureInPicture, target(), "SetPIPPosition", "PIPPositionY",
                        "Required argument PIPPositionY missing.", {{"PIPPositionX", "200"}}, noUser());
    const auto refuses = [](const Value &x, const Value &y, const char *text) {
        const Answer answer = setPosition(x, y);
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, text);
        EXPECT_SENT(answer, {});
    };
    refuses("200x", "200", "Invalid parameter.");
    refuses("200", "200 ", "Invalid parameter.");
    refuses("", absent(), "Invalid parameter. Value is missing.");
    refuses("x", absent(), "Invalid parameter.");
    refuses(absent(), uint16(200), "Required argument PIPPositionX missing.");
}

TEST(PictureInPicture, PositionLimitsFollowTheLiveSize)
{
    struct Limits {
        const char *size;
        int maxX, maxY;
        const char *both, *onlyX, *onlyY;
    };
    const Limits table[] = {
        {"0", 480, 200,
         "Invalid values, PIP Size is maximum. Valid Values of PIPPositionX are between 160 and 480 and "
         "Valid values "
         "of PIPPositionY are between 160 and 200.",
         "Invalid values, PIP Size is maximum. Valid Values of PIPPositionX are between 160 and 480.",
         "Invalid values, PIP Size is maximum. Valid values of PIPPositionY are between 160 and 200."},
        {"1", 2116, 1120,
         "Invalid values, PIP Size is minimum. Valid Values of PIPPositionX are between 160 and 2116 and "
         "Valid values "
         "of PIPPositionY are between 160 and 1120.",
         "Invalid values, PIP Size is minimum. Valid Values of PIPPositionX are between 160 and 2116.",
         "Invalid values, PIP Size is minimum. Valid values of PIPPositionY are between 160 and 1120."},
        {"2", 1688, 880,
         "Invalid values, PIP Size is default. Valid Values of PIPPositionX are between 160 and 1688 and "
         "Valid values "
         "of PIPPositionY are between 160 and 880.",
         "Invalid values, PIP Size is default. Valid Values of PIPPositionX are between 160 and 1688.",
         "Invalid values, PIP Size is default. Valid values of PIPPositionY are between 160 and 880."},
    };
    liveMode("1");
    for (const Limits &limits : table) {
        SCOPED_TRACE(std::string("size ") + limits.size);
        liveSize(limits.size);
        const auto sends = [](int x, int y) {
            const Answer answer = setPosition(std::to_string(x), std::to_string(y));
            EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
            EXPECT_EQ(answer.sent.size(), 2u);
        };
        const auto refuses = [](int x, int y, const char *text) {
            const Answer answer = setPosition(std::to_string(x), std::to_string(y));
            EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, text);
            EXPECT_SENT(answer, {refreshed});
            EXPECT_EQ(seam.count("ValidateInputArgs"), 2) << "both are checked before either is refused";
        };
        sends(160, 160);
        sends(limits.maxX, limits.maxY);
        sends(160, limits.maxY);
        sends(limits.maxX, 160);
        refuses(159, 160, limits.onlyX);
        refuses(limits.maxX + 1, limits.maxY, limits.onlyX);
        refuses(160, 159, limits.onlyY);
        refuses(limits.maxX, limits.maxY + 1, limits.onlyY);
        refuses(159, 159, limits.both);
        refuses(159, limits.maxY + 1, limits.both);
        refuses(limits.maxX + 1, 159, limits.both);
        refuses(limits.maxX + 1, limits.maxY + 1, limits.both);
        refuses(-200, 65536 + 160, limits.both);
    }
}

TEST(PictureInPicture, PositionsBeyondIntAreOutOfRange)
{
    everythingIsPossible();
    const auto refuses = [](const char *x, const char *y, const char *text) {
        SCOPED_TRACE(std::string(x) + ", " + y);
        const Answer answer = setPosition(x, y);
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER, text);
        EXPECT_SENT(answer, {refreshed});
    };
    // 4294967496 keeps 200 in its low 32 bits.
    for (const char *beyond : {"4294967496", "2147483648", "-2147483649", "99999999999999999999"}) {
        refuses(
            beyond, "200",
            "Invalid values, PIP Size is default. Valid Values of PIPPositionX are between 160 and 1688.");
        refuses("200", beyond,
                "Invalid values, PIP Size is default. Valid values of PIPPositionY are between 160 and 880.");
        refuses(beyond, beyond,
                "Invalid values, PIP Size is default. Valid Values of PIPPositionX are between 160 and 1688 "
                "and Valid values of PIPPositionY are between 160 and 880.");
    }
}

TEST(PictureInPicture, PositionIsSentWithItsPreset)
{
    everythingIsPossible();
    const Answer answer = setPosition("160", "880");
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(
        answer,
        {refreshed,
         "01 00 00 00 03 00 07 00 00 03 03 00 33 00 04 00 00 00 00 34 00 A0 00 00 00 00 35 00 70 03 ..."});
    EXPECT_METHOD(
        setPosition("159", "881"), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
        "Invalid values, PIP Size is default. Valid Values of PIPPositionX are between 160 and 1688 and "
        "Valid values of PIPPositionY are between 160 and 880.");
}

TEST(PictureInPicture, PositionIsRefusedWhenNoLimitsAreKnown)
{
    const auto refuses = [] {
        const Answer answer = setPosition("200", "200");
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED,
                      "Failed to get PIPSettings information from database.");
        EXPECT_SENT(answer, {refreshed});
    };
    for (const char *size : {"-1", "3", "99", "-2147483648", "99999999999"}) {
        SCOPED_TRACE(size);
        everythingIsPossible();
        liveSize(size);
        refuses();
    }
    for (const int result : {-1, 1}) {
        everythingIsPossible();
        seam.returns("GetRegisterValue(54, 3)", result);
        refuses();
    }
}

TEST(PictureInPicture, PositionFailsWithTheStepsOfItsSend)
{
    checkFailuresOfSend([] { return setPosition("200", "200"); },
                        {.reply = "Failed to set the value to PIPPositions."}, 1, everythingIsPossible);
}

// ---- SetDigitalCinemaOption ----

TEST(PictureInPicture, DigitalCinemaNeedsADCIResolution)
{
    struct Resolution {
        const char *width, *height;
        bool dci;
    };
    const Resolution resolutions[] = {
        {"4096", "2160", true},  {"4095", "2160", true},  {"2048", "1080", true},  {"3840", "2160", false},
        {"4096", "1080", false}, {"4095", "1080", false}, {"2048", "2160", false}, {"1920", "1080", false},
        {"4097", "2160", false}, {"4094", "2160", false}, {"2047", "1080", false}, {"2160", "4096", false},
        {"0", "0", false},       {"-1", "-1", false},
    };
    liveMode("1");
    for (const Resolution &resolution : resolutions) {
        SCOPED_TRACE(std::string(resolution.width) + " x " + resolution.height);
        liveResolution(resolution.width, resolution.height);
        const Answer answer =
            invoke(PictureInPicture, target(), "SetDigitalCinemaOption", {{"DigitalCinemaOption", "2"}});
        if (resolution.dci) {
            EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
            EXPECT_SENT(answer, {refreshed, "01 00 00 00 03 00 07 00 00 01 03 00 3D 00 02 00 ..."});
        } else {
            EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_NOT_SUPPORTED,
                          "PIP active resolution does not support DCI. Unable to set the value");
            EXPECT_SENT(answer, {refreshed});
        }
        EXPECT_NE(answer.trace.find(std::string("ZT_Marovelton_PictureInPictureInvokeMethod:x = ") +
                                    resolution.width + ", y = " + resolution.height + "\n"),
                  std::string::npos);
    }
}

TEST(PictureInPicture, DigitalCinemaLooksAtTheResolutionBeforeTheRange)
{
    liveMode("1");
    liveResolution("3840", "2160");
    for (const char *option : {"1", "3", "-1"}) {
        EXPECT_METHOD(
            invoke(PictureInPicture, target(), "SetDigitalCinemaOption", {{"DigitalCinemaOption", option}}),
            uint32(2), CMPI_RC_ERR_NOT_SUPPORTED,
            "PIP active resolution does not support DCI. Unable to set the value");
    }
}

TEST(PictureInPicture, DigitalCinemaLooksAtTheModeBeforeTheResolution)
{
    everythingIsPossible();
    liveMode("0");
    const auto refuses = [] {
        const Answer answer =
            invoke(PictureInPicture, target(), "SetDigitalCinemaOption", {{"DigitalCinemaOption", "1"}});
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_NOT_SUPPORTED,
                      "PIP mode is off. Unable to set the value");
        ASSERT_FALSE(answer.calls.empty());
        EXPECT_EQ(answer.calls.back(), "GetRegisterValue(50, 3)") << "the resolution is not read";
    };
    liveResolution("3840", "2160");
    refuses();
    seam.returns("GetRegisterValue(65, 3)", -1);
    refuses();
}

TEST(PictureInPicture, DigitalCinemaFailsWhenTheResolutionCannotBeRead)
{
    for (const char *read : {"GetRegisterValue(65, 3)", "GetRegisterValue(64, 3)"}) {
        seam.reset();
        everythingIsPossible();
        seam.returns(read, -1);
        const Answer answer =
            invoke(PictureInPicture, target(), "SetDigitalCinemaOption", {{"DigitalCinemaOption", "1"}});
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED, "Could not get info from DB");
        EXPECT_SENT(answer, {refreshed});
    }
}

// ---- the dispatcher ----

TEST(PictureInPicture, UnknownMethodsAreNotFound)
{
    checkUnknownMethods(
        PictureInPicture, target(),
        {"Reboot", "setpipmode", "SETPIPMODE", "SetPIPModes", "SetPIPMod", "SetSwapInputSource"},
        CMPI_RC_ERR_NOT_FOUND, uint32(1));
}

TEST(PictureInPicture, AnotherClassIsAnsweredWithoutAnError)
{
    checkOtherClass(PictureInPicture, target(), "SetPIPMode", {{"PIPMode", "1"}}, noUser(), CMPI_RC_OK, "",
                    uint32(2));
    EXPECT_METHOD(invoke(PictureInPicture, target().ofClass("CIM_System"), "Reboot"), uint32(2), CMPI_RC_OK,
                  "");
}

TEST(PictureInPicture, MethodsCheckTheKey)
{
    checkKeysOfMethod(PictureInPicture, target(), "SetPIPMode", {{"PIPMode", "1"}}, noUser(),
                      instanceIDOfMethods());
}

TEST(PictureInPicture, EverybodyMayCallTheMethods)
{
    everythingIsPossible();
    checkNoAdministratorNeeded(PictureInPicture, target(), "SetPIPMode", {{"PIPMode", "1"}});
    for (const ModalMethod &method : modalMethods()) {
        checkNoAdministratorNeeded(PictureInPicture, target(), method.name, method.arguments);
    }
}

TEST(PictureInPicture, MethodsSurviveEveryFailure)
{
    const auto survives = [](const char *name, const Entries &arguments) {
        SCOPED_TRACE(name);
        checkTorture([&] { return invoke(PictureInPicture, target(), name, arguments); },
                     {.prepare = everythingIsPossible});
    };
    for (const ModalMethod &method : modalMethods()) {
        survives(method.name, method.arguments);
    }
    survives("SetPIPMode", {{"PIPMode", "1"}});
    survives("SetUseVideoLevels", {{"UseVideoLevels", "false"}});
}
