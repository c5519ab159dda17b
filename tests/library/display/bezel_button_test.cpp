// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_BezelButton: the buttons of the front bezel and the methods that change them.

#include "checks.h"
#include "display/modules.h"

METHOD_CLASS(BezelButton);

namespace
{

Path target()
{
    return path("ZT_Marovelton_BezelButton", {{"InstanceID", "ZT:Marovelton_BezelButton"}});
}

void buttonMode(const std::string &mode)
{
    seam.registers[{119, 7}] = mode;
}

Answer setBrightness(const Value &brightness)
{
    return invoke(BezelButton, target(), "SetButtonBrightness", {{"ButtonBrightness", brightness}});
}

} // namespace

TEST(BezelButton, HasTheSkeletonOfAClass)
{
    checkSkeleton(BezelButton);
}

// ---- reads ----

TEST(BezelButton, EnumInstanceNamesGivesTheOnePath)
{
    checkPaths(BezelButton, {target()});
}

TEST(BezelButton, ReadsGiveEveryPropertyInOrder)
{
    seam.bezel = {2, 18, 1};
    buttonMode("3");
    checkInstance(BezelButton, target(),
                  {{"ButtonBrightness", uint16(18)},
                   {"ButtonColor", uint16Array({2})},
                   {"ButtonAutoFadeMode", uint16Array({1})},
                   {"ButtonMode", uint16Array({3})},
                   {"Caption", chars("ZT_Marovelton_BezelButton")},
                   {"ElementName", chars("ZT_Marovelton_BezelButton")},
                   {"InstanceID", chars("ZT:Marovelton_BezelButton")},
                   {"Description",
                    chars("A class derived from Logical Element that represents the single node container "
                          "of the Display Managemet System.")},
                   {"Name", chars("Studio 7-BezelButton")}},
                  {"GetBezelButtonInfo()", "GetMoinitorInfo()", "GetRegisterValue(119, 7)"});
}

TEST(BezelButton, NumbersKeepTheirLowBits)
{
    seam.bezel = {65536 + 2, -1, 65536};
    buttonMode("65537");
    const Instance found = get(BezelButton, target()).instance();
    EXPECT_EQ(*found.find("ButtonBrightness"), uint16(65535));
    EXPECT_EQ(*found.find("ButtonColor"), uint16Array({2}));
    EXPECT_EQ(*found.find("ButtonAutoFadeMode"), uint16Array({0}));
    EXPECT_EQ(*found.find("ButtonMode"), uint16Array({1}));
}

TEST(BezelButton, ButtonModeIsTheDecimalValueOfTheRegister)
{
    const auto mode = [](const std::string &text) {
        buttonMode(text);
        return *get(BezelButton, target()).instance().find("ButtonMode");
    };
    EXPECT_EQ(mode("0"), uint16Array({0}));
    EXPECT_EQ(mode("1"), uint16Array({1}));
    EXPECT_EQ(mode(" 1 "), uint16Array({1}));
    EXPECT_EQ(mode("1x"), uint16Array({1}));
    EXPECT_EQ(mode("text"), uint16Array({0}));
    EXPECT_EQ(mode(std::string(40, '1')), uint16Array({65535})); // full to its width
}

TEST(BezelButton, NameFollowsTheSystemName)
{
    buttonMode("1");
    checkNameOfSystem(BezelButton, target(), "-BezelButton");
}

TEST(BezelButton, GetInstanceChecksTheKey)
{
    buttonMode("1");
    checkKeysOfGetInstance(BezelButton, target(), instanceIDOfReads());
}

TEST(BezelButton, BuildersTellWhatFailed)
{
    buttonMode("1");
    checkBuilders(
        {.tested = &BezelButton,
         .reference = target(),
         .makePath = _makePath_ZT_Marovelton_BezelButton,
         .makeInst = _makeInst_ZT_Marovelton_BezelButton,
         .records = {{"GetBezelButtonInfo()", "Faied to get BezelButton information from database."},
                     {"GetMoinitorInfo()", "Could not get monitor information from database."},
                     {"GetRegisterValue(119, 7)",
                      "Failed to get Function Button information from database."}},
         .arrays = 3});
}

TEST(BezelButton, ReadsSurviveEveryFailure)
{
    checkTortureOfReads(BezelButton, target(), {.prepare = [] { buttonMode("1"); }});
}

// ---- settings by themselves ----

TEST(BezelButton, SettingsSendTheirRegisters)
{
    checkSender(
        [](char *text) { return setButtonAutoFadeMode(1, text); },
        "01 00 00 00 03 00 07 00 00 01 08 00 7A 00 01 00 ...",
        {.reply = "Failed to set the value to Button AutoFadeMode.",
         .sendQueue = "Failed to process. Unable to create a message queue for sending message.",
         .send = "Failed to process. Unable to send value to SPEAr.",
         .receiveQueue = "Failed to process. Unable to create a message queue for receiving message."});
    checkSender([](char *text) { return setButtonBrightness(20, text); },
                "01 00 00 00 03 00 07 00 00 01 08 00 79 00 14 00 ...",
                {.reply = "Failed to set the value to ButtonBrightness."});
    checkSender([](char *text) { return setButtonColor(2, text); },
                "01 00 00 00 03 00 07 00 00 01 08 00 78 00 02 00 ...",
                {.reply = "Failed to set the Button color.",
                 .receiveQueue = "Unable to create a message queue for receving message."});
    checkSender([](char *text) { return SetButtonMode(1, text); },
                "01 00 00 00 03 00 07 00 00 01 07 00 77 00 01 00 ...",
                {.reply = "Failed to set the value to ButtonMode."});
}

TEST(BezelButton, SettingsSendTheLow16Bits)
{
    EXPECT_SENT(call([](char *text) { return setButtonBrightness(-2, text); }),
                {"01 00 00 00 03 00 07 00 00 01 08 00 79 00 FE FF ..."});
    EXPECT_SENT(call([](char *text) { return setButtonColor(0x12345, text); }),
                {"01 00 00 00 03 00 07 00 00 01 08 00 78 00 45 23 ..."});
}

// ---- methods ----

TEST(BezelButton, MethodsOfOneArgument)
{
    const SettingMethod common = {.tested = &BezelButton, .target = target()};
    SettingMethod method = common;
    method.method = "SetButtonAutoFadeMode";
    method.argument = "ButtonAutoFadeMode";
    method.missing = "Required argument ButtonAutoFadeMode missing.";
    method.range = "Invalid input value range. Valid values are 0 and 1.";
    method.steps = {.reply = "Failed to set the value to Button AutoFadeMode.",
                    .sendQueue = "Failed to process. Unable to create a message queue for sending message.",
                    .send = "Failed to process. Unable to send value to SPEAr.",
                    .receiveQueue =
                        "Failed to process. Unable to create a message queue for receiving message."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 08 00 7A 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 08 00 7A 00 01 00 ...";
    checkSettingMethod(method);

    method = common;
    method.method = "SetButtonBrightness";
    method.argument = "ButtonBrightness";
    method.max = 20;
    method.missing = "Required argument ButtonBrightness missing.";
    method.range = "Invalid input value range. Valid values are between 0 and 20.";
    method.steps = {.reply = "Failed to set the value to ButtonBrightness."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 08 00 79 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 08 00 79 00 14 00 ...";
    checkSettingMethod(method);

    method = common;
    method.method = "SetButtonColor";
    method.argument = "ButtonColor";
    method.max = 2;
    method.missing = "Required argument ButtonColor missing.";
    method.range = "Invalid Input Value Range. valid values are between 0 and 2.";
    method.steps = {.reply = "Failed to set the Button color.",
                    .receiveQueue = "Unable to create a message queue for receving message."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 08 00 78 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 08 00 78 00 02 00 ...";
    checkSettingMethod(method);

    // A function-button register in the function-button group, although this is the bezel's class.
    method = common;
    method.method = "SetButtonMode";
    method.argument = "ButtonMode";
    method.missing = "Required argument ButtonMode missing.";
    method.range = "Invalid input value range. Valid values are 0 and 1.";
    method.steps = {.reply = "Failed to set the value to ButtonMode."};
    method.sentAtMin = "01 00 00 00 03 00 07 00 00 01 07 00 77 00 00 00 ...";
    method.sentAtMax = "01 00 00 00 03 00 07 00 00 01 07 00 77 00 01 00 ...";
    checkSettingMethod(method);
}

TEST(BezelButton, BrightnessIsEven)
{
    for (int brightness = 0; brightness <= 20; ++brightness) {
        SCOPED_TRACE(brightness);
        const Answer answer = setBrightness(std::to_string(brightness));
        if (brightness % 2 == 0) {
            EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
            ASSERT_EQ(answer.sent.size(), 1u);
            EXPECT_EQ(answer.sent[0].bytes[14], brightness);
        } else {
            EXPECT_METHOD(
                answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                "Invalid Button Brightness Value. Valid values are between 0,2,4,6,8,10,12,14 upto 20.");
            EXPECT_EQ(answer.calls.size(), 1u) << "the range is checked before, nothing else is done";
        }
    }
    for (const char *odd : {"21", "-1"}) {
        EXPECT_METHOD(setBrightness(odd), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Invalid input value range. Valid values are between 0 and 20.");
    }
}

TEST(BezelButton, ColorThreeIsRefused)
{
    EXPECT_METHOD(invoke(BezelButton, target(), "SetButtonColor", {{"ButtonColor", "3"}}), uint32(2),
                  CMPI_RC_ERR_INVALID_PARAMETER,
                  "Invalid Input Value Range. valid values are between 0 and 2.");
}

// ---- the dispatcher ----

TEST(BezelButton, UnknownMethodsAreNotFound)
{
    checkUnknownMethods(BezelButton, target(),
                        {"Reboot", "setbuttonmode", "SETBUTTONMODE", "SetButtonMod", "SetButtonModes"},
                        CMPI_RC_ERR_NOT_FOUND, uint32(1));
}

TEST(BezelButton, AnotherClassIsNotFound)
{
    checkOtherClass(BezelButton, target(), "SetButtonMode", {{"ButtonMode", "1"}}, noUser(),
                    CMPI_RC_ERR_NOT_FOUND, "Invalid class name", uint32(2));
}

TEST(BezelButton, MethodsCheckTheKey)
{
    checkKeysOfMethod(BezelButton, target(), "SetButtonMode", {{"ButtonMode", "1"}}, noUser(),
                      instanceIDOfMethods(1));
}

namespace
{

const std::vector<Entry> goodCalls = {
    {"SetButtonAutoFadeMode", "ButtonAutoFadeMode"},
    {"SetButtonBrightness", "ButtonBrightness"},
    {"SetButtonColor", "ButtonColor"},
    {"SetButtonMode", "ButtonMode"},
};

} // namespace

TEST(BezelButton, EverybodyMayCallTheMethods)
{
    for (const auto &[method, argument] : goodCalls) {
        checkNoAdministratorNeeded(BezelButton, target(), method, {{argument.text, "0"}});
    }
}

TEST(BezelButton, MethodsSurviveEveryFailure)
{
    for (const auto &[method, argument] : goodCalls) {
        SCOPED_TRACE(method);
        const Entries arguments = {{argument.text, "0"}};
        checkTorture([&, name = method] { return invoke(BezelButton, target(), name, arguments); });
    }
}
