// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_FunctionButton: the four function buttons and the method that assigns their actions.

#include "checks.h"
#include "display/modules.h"

METHOD_CLASS(FunctionButton);

namespace
{

const char *const identifiers[] = {"ZT:Marovelton_FunctionButton:1", "ZT:Marovelton_FunctionButton:2",
                                   "ZT:Marovelton_FunctionButton:3", "ZT:Marovelton_FunctionButton:4"};

Path button(const std::string &identifier)
{
    return path("ZT_Marovelton_FunctionButton", {{"InstanceID", identifier}});
}

Answer setSetting(const std::string &identifier, const Value &setting)
{
    return invoke(FunctionButton, button(identifier), "SetSetting", {{"Setting", setting}});
}

} // namespace

TEST(FunctionButton, HasTheSkeletonOfAClass)
{
    checkSkeleton(FunctionButton);
}

// ---- identifiers ----

TEST(FunctionButton, IdentifiersAreComparedExactly)
{
    for (int i = 0; i < 4; ++i) {
        int index = -5;
        const SetterAnswer answer =
            call([&](char *text) { return ValidateFunctionButtonInstanceID(identifiers[i], text, &index); });
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(index, i);
        EXPECT_EQ(answer.errorText, " ");
    }
    for (const char *wrong : {"ZT:Marovelton_FunctionButton:0", "ZT:Marovelton_FunctionButton:5",
                              "ZT:Marovelton_FunctionButton:01", "ZT:Marovelton_FunctionButton:1 ",
                              "ZT:Marovelton_FunctionButton:", "ZT:Marovelton_FunctionButton",
                              "zt:marovelton_functionbutton:1", "ZT:Marovelton_FunctionButton:11", "1", ""}) {
        SCOPED_TRACE(wrong);
        int index = 0;
        const SetterAnswer answer =
            call([&](char *text) { return ValidateFunctionButtonInstanceID(wrong, text, &index); });
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.errorText, "This class name does not exist (wrong InstanceID).");
    }
}

// ---- reads ----

TEST(FunctionButton, EnumInstanceNamesGivesFourPathsInOrder)
{
    checkPaths(FunctionButton, {button(identifiers[0]), button(identifiers[1]), button(identifiers[2]),
                                button(identifiers[3])});
}

namespace
{

Entries propertiesOf(const char *identifier, const char *name, uint16_t setting)
{
    return {{"Name", chars(name)},
            {"Setting", uint16Array({setting})},
            {"Caption", chars("ZT_Marovelton_FunctionButton")},
            {"ElementName", chars("ZT_Marovelton_FunctionButton")},
            {"InstanceID", chars(identifier)},
            {"Description",
             chars("A class derived from Logical Element that represents the single node container "
                   "of the Display Managemet System.")}};
}

} // namespace

TEST(FunctionButton, EnumInstancesGivesEveryPropertyInOrder)
{
    seam.functionButtons[0] = {1, 3, "Colour space"};
    seam.functionButtons[1] = {1, 9, "Video input"};
    seam.functionButtons[2] = {0, 12, "Crop"};
    seam.functionButtons[3] = {1, 17, "Test pattern"};
    const Answer answer = enumerate(FunctionButton, path("ZT_Marovelton_FunctionButton"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    const std::vector<Instance> found = answer.instances();
    ASSERT_EQ(found.size(), 4u);
    EXPECT_TRUE(hasEntries(found[0].properties, propertiesOf(identifiers[0], "Colour space", 3)));
    EXPECT_TRUE(hasEntries(found[1].properties, propertiesOf(identifiers[1], "Video input", 9)));
    EXPECT_TRUE(hasEntries(found[2].properties, propertiesOf(identifiers[2], "Crop", 12)));
    EXPECT_TRUE(hasEntries(found[3].properties, propertiesOf(identifiers[3], "Test pattern", 17)));
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(found[i].path.className, "ZT_Marovelton_FunctionButton");
        EXPECT_KEYS(found[i].path, {{"InstanceID", chars(identifiers[i])}});
    }
    // No refresh, and no system name in the names.
    EXPECT_CALLS(answer, {"GetFunctionButtonInfoById(0)", "GetFunctionButtonInfoById(1)",
                          "GetFunctionButtonInfoById(2)", "GetFunctionButtonInfoById(3)"});
    EXPECT_EQ(answer.trace, "--- ZT_Marovelton_FunctionButton CMPI EnumInstances() called\n"
                            "--- ZT_Marovelton_FunctionButton makeInst) called\n"
                            "--- ZT_Marovelton_FunctionButton makeInst) exited\n"
                            "--- ZT_Marovelton_FunctionButton makeInst) called\n"
                            "--- ZT_Marovelton_FunctionButton makeInst) exited\n"
                            "--- ZT_Marovelton_FunctionButton makeInst) called\n"
                            "--- ZT_Marovelton_FunctionButton makeInst) exited\n"
                            "--- ZT_Marovelton_FunctionButton makeInst) called\n"
                            "--- ZT_Marovelton_FunctionButton makeInst) exited\n"
                            "--- ZT_Marovelton_FunctionButton CMPI EnumInstances() leave \n");
}

TEST(FunctionButton, FieldsMayBeFull)
{
    const std::string full = fillField(seam.functionButtons[2].Name, 'n');
    seam.functionButtons[2].Setting = -1;
    const Instance found = get(FunctionButton, button(identifiers[2])).instance();
    EXPECT_EQ(*found.find("Name"), chars(full));
    EXPECT_EQ(full.size(), 50u);
    EXPECT_EQ(*found.find("Setting"), uint16Array({65535}));
    seam.functionButtons[2].Setting = 65536 + 4;
    setField(seam.functionButtons[2].Name, "");
    EXPECT_EQ(*get(FunctionButton, button(identifiers[2])).instance().find("Name"), chars(""));
    EXPECT_EQ(*get(FunctionButton, button(identifiers[2])).instance().find("Setting"), uint16Array({4}));
}

TEST(FunctionButton, GetInstanceGivesTheButtonThatIsAskedFor)
{
    const std::vector<Instance> all = enumerate(FunctionButton, button(identifiers[0])).instances();
    ASSERT_EQ(all.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        const Answer answer = get(FunctionButton, button(identifiers[i]));
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        EXPECT_EQ(answer.done, 1);
        EXPECT_EQ(answer.instance(), all[i]);
        EXPECT_CALLS(answer, {"GetFunctionButtonInfoById(" + std::to_string(i) + ")"});
        EXPECT_EQ(answer.trace, "--- ZT_Marovelton_FunctionButton CMPI GetInstance() called\n"
                                "--- ZT_Marovelton_FunctionButton makeInst) called\n"
                                "--- ZT_Marovelton_FunctionButton makeInst) exited\n"
                                "--- ZT_Marovelton_FunctionButton CMPI GetInstance() exited\n");
    }
}

TEST(FunctionButton, GetInstanceChecksTheKey)
{
    for (const char *identifier : identifiers) {
        checkKeysOfGetInstance(FunctionButton, button(identifier), instanceIDOfReads());
    }
    for (const char *number : {"0", "5", "11"}) {
        EXPECT_STATUS(get(FunctionButton, button(std::string("ZT:Marovelton_FunctionButton:") + number)),
                      CMPI_RC_ERR_NOT_FOUND, "This class name does not exist (wrong InstanceID).");
    }
}

TEST(FunctionButton, EnumerationsStopAtTheFirstFailure)
{
    seam.returns("GetFunctionButtonInfoById(2)", -1);
    Answer answer = enumerate(FunctionButton, button(identifiers[0]));
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build instance");
    EXPECT_EQ(answer.instances().size(), 2u) << "what was returned stays returned";
    EXPECT_EQ(answer.done, 0);
    EXPECT_EQ(seam.count("GetFunctionButtonInfoById"), 3);
    EXPECT_STATUS(get(FunctionButton, button(identifiers[2])), CMPI_RC_ERR_FAILED, "Couldn't build instance");
    EXPECT_STATUS(get(FunctionButton, button(identifiers[3])), CMPI_RC_OK, "");

    faults.arm("newObjectPath", 4);
    answer = enumerateNames(FunctionButton, button(identifiers[0]));
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build objectpath");
    EXPECT_EQ(answer.paths().size(), 3u);
    EXPECT_EQ(answer.done, 0);
}

TEST(FunctionButton, BuildersTellWhatFailed)
{
    checkBuilders({.tested = &FunctionButton,
                   .reference = button(identifiers[0]),
                   .makePath =
                       [](const CMPIObjectPath *reference, CMPIStatus *status) {
                           return _makePath_ZT_Marovelton_FunctionButton(reference, 1, status);
                       },
                   .makeInst =
                       [](const CMPIObjectPath *reference, CMPIStatus *status) {
                           return _makeInst_ZT_Marovelton_FunctionButton(reference, 1, status);
                       },
                   .records = {{"GetFunctionButtonInfoById(1)",
                                "Failed to get Function Button information from database."}},
                   .arrays = 1});
}

TEST(FunctionButton, ReadsSurviveEveryFailure)
{
    checkTortureOfReads(FunctionButton, button(identifiers[3]));
}

// ---- SetSetting ----

TEST(FunctionButton, TheSettingIsSentToTheRegisterThatIsNamed)
{
    checkSender([](char *text) { return SetButtonSetting(17, 118, text); },
                "01 00 00 00 03 00 07 00 00 01 07 00 76 00 11 00 ...",
                {.reply = "Failed to set the value to button setting."});
    EXPECT_SENT(call([](char *text) { return SetButtonSetting(-2, 115, text); }),
                {"01 00 00 00 03 00 07 00 00 01 07 00 73 00 FE FF ..."});
}

TEST(FunctionButton, SetSettingWritesTheButtonsOwnRegister)
{
    const char *const first[] = {"01 00 00 00 03 00 07 00 00 01 07 00 73 00 01 00 ...",
                                 "01 00 00 00 03 00 07 00 00 01 07 00 74 00 01 00 ...",
                                 "01 00 00 00 03 00 07 00 00 01 07 00 75 00 01 00 ...",
                                 "01 00 00 00 03 00 07 00 00 01 07 00 76 00 01 00 ..."};
    const char *const last[] = {"01 00 00 00 03 00 07 00 00 01 07 00 73 00 11 00 ...",
                                "01 00 00 00 03 00 07 00 00 01 07 00 74 00 11 00 ...",
                                "01 00 00 00 03 00 07 00 00 01 07 00 75 00 11 00 ...",
                                "01 00 00 00 03 00 07 00 00 01 07 00 76 00 11 00 ..."};
    for (size_t i = 0; i < 4; ++i) {
        checkSettingMethod({.tested = &FunctionButton,
                            .target = button(identifiers[i]),
                            .method = "SetSetting",
                            .argument = "Setting",
                            .min = 1,
                            .max = 17,
                            .missing = "Invalid parameter.",
                            .range = "Invalid input value range. Valid values are between 1 and 17.",
                            .steps = {.reply = "Failed to set the value to button setting."},
                            .sentAtMin = first[i],
                            .sentAtMax = last[i]});
    }
}

TEST(FunctionButton, SettingsZeroAndEighteenAreRefused)
{
    for (const char *setting : {"0", "18"}) {
        const Answer answer = setSetting(identifiers[1], setting);
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_INVALID_PARAMETER,
                      "Invalid input value range. Valid values are between 1 and 17.");
        EXPECT_SENT(answer, {});
    }
}

TEST(FunctionButton, AnUnknownButtonIsAFailureOfSetSetting)
{
    // Whatever the argument: the button is looked for before the argument is judged.
    for (const Value &setting : {Value("1"), Value("0"), Value(""), absent(), uint16(1)}) {
        const Answer answer = setSetting("ZT:Marovelton_FunctionButton:5", setting);
        EXPECT_METHOD(answer, uint32(2), CMPI_RC_ERR_FAILED,
                      "This class name does not exist (wrong InstanceID).");
        EXPECT_SENT(answer, {});
    }
    EXPECT_STATUS(get(FunctionButton, button("ZT:Marovelton_FunctionButton:5")), CMPI_RC_ERR_NOT_FOUND,
                  "This class name does not exist (wrong InstanceID).");
}

TEST(FunctionButton, SetSettingChecksTheKey)
{
    for (const char *identifier : identifiers) {
        checkKeysOfMethod(FunctionButton, button(identifier), "SetSetting", {{"Setting", "1"}}, noUser(),
                          instanceIDOfMethods(1, CMPI_RC_ERR_FAILED));
    }
}

// ---- the dispatcher ----

TEST(FunctionButton, UnknownMethodsGiveZero)
{
    const std::vector<std::string> unknown = {"Reboot", "setsetting", "SETSETTING", "SetSettin",
                                              "SetSettings"};
    checkUnknownMethods(FunctionButton, button(identifiers[0]), unknown, CMPI_RC_ERR_NOT_FOUND, uint32(0));
    // The identifier is not looked at for them, but it has to be there.
    checkUnknownMethods(FunctionButton, button("anything"), unknown, CMPI_RC_ERR_NOT_FOUND, uint32(0));
    EXPECT_METHOD(invoke(FunctionButton, path("ZT_Marovelton_FunctionButton"), "Reboot"), uint32(1),
                  CMPI_RC_ERR_NOT_FOUND, "Invalid selector(Could not get InstanceID of instance.)");
}

TEST(FunctionButton, AnotherClassIsNotFound)
{
    checkOtherClass(FunctionButton, button(identifiers[0]), "SetSetting", {{"Setting", "1"}}, noUser(),
                    CMPI_RC_ERR_NOT_FOUND, "Invalid class name", uint32(2));
}

TEST(FunctionButton, EverybodyMayCallSetSetting)
{
    checkNoAdministratorNeeded(FunctionButton, button(identifiers[0]), "SetSetting", {{"Setting", "1"}});
}

TEST(FunctionButton, SetSettingSurvivesEveryFailure)
{
    checkTorture([] { return setSetting(identifiers[0], "1"); });
}
