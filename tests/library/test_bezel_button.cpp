// ZT_Marovelton_BezelButton: the buttons of the front bezel and the methods that change them.

#include "checks.h"

int setButtonAutoFadeMode(int value, char *errorText);
int setButtonBrightness(int value, char *errorText);
int setButtonColor(int value, char *errorText);
int SetButtonMode(int value, char *errorText);
CMPIObjectPath *_makePath_ZT_Marovelton_BezelButton(const CMPIObjectPath *reference, CMPIStatus *status);
CMPIInstance *_makeInst_ZT_Marovelton_BezelButton(const CMPIObjectPath *reference, CMPIStatus *status);

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
    const Answer answer =
        enumerateNames(BezelButton, path("ZT_Marovelton_BezelButton").inNameSpace("root/other"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    const Path found = answer.path();
    EXPECT_EQ(found.nameSpace, "root/other");
    EXPECT_EQ(found.className, "ZT_Marovelton_BezelButton");
    EXPECT_KEYS(found, {{"InstanceID", chars("ZT:Marovelton_BezelButton")}});
    EXPECT_CALLS(answer, {});
    EXPECT_EQ(answer.trace, "--- ZT_Marovelton_BezelButton CMPI EnumInstanceNames() called\n"
                            "--- ZT_Marovelton_BezelButton makePath called\n"
                            "--- ZT_Marovelton_BezelButton CMPI EnumInstanceNames() exited\n");
}

TEST(BezelButton, EnumInstancesGivesEveryPropertyInOrder)
{
    seam.bezel = {2, 18, 1};
    buttonMode("3");
    const Answer answer = enumerate(BezelButton, path("ZT_Marovelton_BezelButton"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    const Instance found = answer.instance();
    EXPECT_EQ(found.path.className, "ZT_Marovelton_BezelButton");
    EXPECT_KEYS(found.path, {{"InstanceID", chars("ZT:Marovelton_BezelButton")}});
    EXPECT_PROPERTIES(
        found, {{"ButtonBrightness", uint16(18)},
                {"ButtonColor", uint16Array({2})},
                {"ButtonAutoFadeMode", uint16Array({1})},
                {"ButtonMode", uint16Array({3})},
                {"Caption", chars("ZT_Marovelton_BezelButton")},
                {"ElementName", chars("ZT_Marovelton_BezelButton")},
                {"InstanceID", chars("ZT:Marovelton_BezelButton")},
                {"Description",
                 chars("A class derived from Logical Element that represents the single node container "
                       "of the Display Managemet System.")},
                {"Name", chars("Studio 7-BezelButton")}});
    EXPECT_CALLS(answer, {"GetBezelButtonInfo()", "GetMoinitorInfo()", "GetRegisterValue(119, 7)"});
    EXPECT_EQ(answer.trace, "--- ZT_Marovelton_BezelButton CMPI EnumInstances() called\n"
                            "--- ZT_Marovelton_BezelButton makeInst) called\n"
                            "--- ZT_Marovelton_BezelButton makeInst) exited\n"
                            "--- ZT_Marovelton_BezelButton CMPI EnumInstances() leave \n");
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
    const auto name = [] { return get(BezelButton, target()).instance().find("Name")->text; };
    EXPECT_EQ(name(), "Studio 7-BezelButton");
    setField(seam.monitor.DisplayName, "");
    EXPECT_EQ(name(), "192.0.2.17-BezelButton");
    fillField(seam.monitor.DisplayName, 'd');
    EXPECT_EQ(name(), "ddddddddddddddddddddddddd-BezelButton");
}

TEST(BezelButton, GetInstanceGivesWhatTheEnumerationGives)
{
    buttonMode("1");
    const Answer answer = get(BezelButton, target());
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.instance(), enumerate(BezelButton, target()).instance());
    EXPECT_EQ(answer.trace, "--- ZT_Marovelton_BezelButton CMPI GetInstance() called\n"
                            "--- ZT_Marovelton_BezelButton makeInst) called\n"
                            "--- ZT_Marovelton_BezelButton makeInst) exited\n"
                            "--- ZT_Marovelton_BezelButton CMPI GetInstance() exited\n");
}

TEST(BezelButton, GetInstanceChecksTheKey)
{
    buttonMode("1");
    checkKeysOfGetInstance(BezelButton, target(),
                           {{.name = "InstanceID",
                             .missing = "Could not get InstanceID of instance.",
                             .wrong = "This class name does not exist (wrong InstanceID)."}});
}

TEST(BezelButton, NothingIsReturnedThatCannotBeBuilt)
{
    buttonMode("1");
    checkBuildFailures(BezelButton, target(), {"GetBezelButtonInfo", "GetMoinitorInfo", "GetRegisterValue"},
                       true);
    seam.returns("GetBezelButtonInfo", -1);
    const Answer answer = get(BezelButton, target());
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build instance");
    EXPECT_EQ(answer.returned.size(), 0u);
}

TEST(BezelButton, BuildersTellWhatFailed)
{
    buttonMode("1");
    const auto instanceFails = [](const char *text) {
        const Built built = build(BezelButton, target(), _makeInst_ZT_Marovelton_BezelButton);
        EXPECT_FALSE(built.instance);
        EXPECT_EQ(built.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(built.message, text);
    };
    faults.arm("newObjectPath", 1);
    const Built built = build(BezelButton, target(), _makePath_ZT_Marovelton_BezelButton);
    EXPECT_FALSE(built.path);
    EXPECT_EQ(built.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(built.message, "Create CMPIObjectPath failed.");
    faults.arm("newObjectPath", 1);
    instanceFails("Create CMPIObjectPath failed.");
    faults.arm("newInstance", 1);
    instanceFails("Create CMPIInstance failed.");
    for (const int array : {1, 2, 3}) {
        faults.arm("newArray", array);
        instanceFails("Failed to initialize array.");
    }
    faults.disarm();
    for (const int result : {-1, 1}) {
        seam.returns("GetRegisterValue", result);
        instanceFails("Failed to get Function Button information from database.");
    }
    seam.returns("GetMoinitorInfo", 1);
    instanceFails("Could not get monitor information from database.");
    seam.returns("GetBezelButtonInfo", 1);
    instanceFails("Faied to get BezelButton information from database.");
}

TEST(BezelButton, ReadsSurviveEveryFailure)
{
    const Torture torture = {.prepare = [] { buttonMode("1"); }};
    checkTorture([] { return enumerateNames(BezelButton, target()); }, torture);
    checkTorture([] { return enumerate(BezelButton, target()); }, torture);
    checkTorture([] { return get(BezelButton, target()); }, torture);
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
    for (const char *odd : {"21", "-1"})
        EXPECT_METHOD(setBrightness(odd), uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Invalid input value range. Valid values are between 0 and 20.");
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
                      {{.name = "InstanceID",
                        .missing = "Invalid selector(Could not get InstanceID of instance.)",
                        .wrong = "This class name does not exist (wrong InstanceID).",
                        .missingValue = 1}});
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
    for (const auto &[method, argument] : goodCalls)
        checkNoAdministratorNeeded(BezelButton, target(), method, {{argument.text, "0"}});
}

TEST(BezelButton, MethodsSurviveEveryFailure)
{
    for (const auto &[method, argument] : goodCalls) {
        SCOPED_TRACE(method);
        const Entries arguments = {{argument.text, "0"}};
        checkTorture([&] { return invoke(BezelButton, target(), method, arguments); });
    }
}
