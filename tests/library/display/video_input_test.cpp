// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_VideoInput: the three video inputs.

#include "checks.h"
#include "display/modules.h"

METHOD_CLASS(VideoInput);

namespace
{

const char *const refreshed = "01 00 00 00 08 00 07 00 00 00 01 ...";
const char *const tracesOfValidation = "--- ZT_Marovelton_VideoInput ValidateVideoInputInstanceID() called\n"
                                       "--- ZT_Marovelton_VideoInputValidateVideoInputInstanceID() Leave\n";
const char *const identifiers[] = {"ZT:Marovelton_VideoInput:1", "ZT:Marovelton_VideoInput:2",
                                   "ZT:Marovelton_VideoInput:3"};

Path input(const std::string &identifier)
{
    return path("ZT_Marovelton_VideoInput", {{"InstanceID", identifier}});
}

void selectedInput(const std::string &text)
{
    seam.registers[{25, 1}] = text;
}

const std::vector<std::string> refresh = {"GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)",
                                          "SendStatusMessagetoSource(100)",
                                          "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"};

std::vector<std::string> refreshAnd(const std::vector<std::string> &rest)
{
    std::vector<std::string> calls = refresh;
    calls.insert(calls.end(), rest.begin(), rest.end());
    return calls;
}

} // namespace

TEST(VideoInput, HasTheSkeletonOfAClass)
{
    checkSkeleton(VideoInput);
}

// ---- identifiers ----

TEST(VideoInput, IdentifiersAreComparedExactly)
{
    for (int i = 0; i < 3; ++i) {
        int index = -5;
        const SetterAnswer answer =
            call([&](char *text) { return ValidateVideoInputInstanceID(identifiers[i], text, &index); });
        EXPECT_EQ(answer.result, 0);
        EXPECT_EQ(index, i);
        EXPECT_EQ(answer.errorText, " ");
        EXPECT_EQ(answer.trace, tracesOfValidation);
    }
    for (const char *wrong :
         {"ZT:Marovelton_VideoInput:0", "ZT:Marovelton_VideoInput:4", "ZT:Marovelton_VideoInput:01",
          "ZT:Marovelton_VideoInput:1 ", "ZT:Marovelton_VideoInput:", "ZT:Marovelton_VideoInput",
          "zt:marovelton_videoinput:1", "ZT:Marovelton_VideoInput:11", "1", ""}) {
        SCOPED_TRACE(wrong);
        int index = 0;
        const SetterAnswer answer =
            call([&](char *text) { return ValidateVideoInputInstanceID(wrong, text, &index); });
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.errorText, "This class name does not exist (wrong InstanceID).");
        EXPECT_EQ(answer.trace, tracesOfValidation);
    }
}

// ---- reads ----

TEST(VideoInput, EnumInstanceNamesGivesThreePathsInOrder)
{
    const Answer answer =
        enumerateNames(VideoInput, path("ZT_Marovelton_VideoInput").inNameSpace("root/other"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    const std::vector<Path> found = answer.paths();
    ASSERT_EQ(found.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(found[i].nameSpace, "root/other");
        EXPECT_EQ(found[i].className, "ZT_Marovelton_VideoInput");
        EXPECT_KEYS(found[i], {{"InstanceID", chars(identifiers[i])}});
    }
    EXPECT_SENT(answer, {refreshed});
    EXPECT_EQ(answer.calls, refresh);
    EXPECT_EQ(answer.trace, "--- ZT_Marovelton_VideoInput CMPI EnumInstanceNames() called\n"
                            "--- ZT_Marovelton_VideoInput makePath called\n"
                            "--- ZT_Marovelton_VideoInput makePath leave\n"
                            "--- ZT_Marovelton_VideoInput makePath called\n"
                            "--- ZT_Marovelton_VideoInput makePath leave\n"
                            "--- ZT_Marovelton_VideoInput makePath called\n"
                            "--- ZT_Marovelton_VideoInput makePath leave\n"
                            "--- ZT_Marovelton_VideoInput CMPI EnumInstanceNames() exited\n");
}

namespace
{

Entries propertiesOf(const char *identifier, int selected, const char *name, int active)
{
    return {{"Selected", boolean(selected)},
            {"Name", chars(name)},
            {"Active", boolean(active)},
            {"Caption", chars("ZT_Marovelton_VideoInput")},
            {"ElementName", chars("ZT_Marovelton_VideoInput")},
            {"InstanceID", chars(identifier)},
            {"Description",
             chars("A class derived from Logical Element that represents the single node container "
                   "of the Display Management System.")}};
}

} // namespace

TEST(VideoInput, EnumInstancesGivesEveryPropertyInOrder)
{
    selectedInput("2");
    seam.pip.DP1State = 1;
    seam.pip.DP2State = 0;
    seam.pip.HDMIState = 1;
    const Answer answer = enumerate(VideoInput, path("ZT_Marovelton_VideoInput"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.done, 1);
    const std::vector<Instance> found = answer.instances();
    ASSERT_EQ(found.size(), 3u);
    EXPECT_TRUE(hasEntries(found[0].properties, propertiesOf(identifiers[0], 0, "Display Port1", 1)));
    EXPECT_TRUE(hasEntries(found[1].properties, propertiesOf(identifiers[1], 0, "Display Port2", 0)));
    EXPECT_TRUE(hasEntries(found[2].properties, propertiesOf(identifiers[2], 1, "HDMI", 1)));
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(found[i].path.className, "ZT_Marovelton_VideoInput");
        EXPECT_KEYS(found[i].path, {{"InstanceID", chars(identifiers[i])}});
    }
    EXPECT_SENT(answer, {refreshed});
    EXPECT_EQ(answer.calls,
              refreshAnd({"GetPIPSettingsInfo()", "GetRegisterValue(25, 1)", "GetPIPSettingsInfo()",
                          "GetRegisterValue(25, 1)", "GetPIPSettingsInfo()", "GetRegisterValue(25, 1)"}));
    EXPECT_EQ(answer.trace, "--- ZT_Marovelton_VideoInput CMPI EnumInstances() called\n"
                            "--- ZT_Marovelton_VideoInput makeInst) called\n"
                            "--- ZT_Marovelton_VideoInput makeInst) exited\n"
                            "--- ZT_Marovelton_VideoInput makeInst) called\n"
                            "--- ZT_Marovelton_VideoInput makeInst) exited\n"
                            "--- ZT_Marovelton_VideoInput makeInst) called\n"
                            "--- ZT_Marovelton_VideoInput makeInst) exited\n"
                            "--- ZT_Marovelton_VideoInput CMPI EnumInstances() leave \n");
}

TEST(VideoInput, OneInputIsSelectedOrNone)
{
    const auto selected = [](const std::string &text) {
        selectedInput(text);
        std::string found;
        for (const Instance &each : enumerate(VideoInput, input(identifiers[0])).instances()) {
            found += *each.find("Selected") == boolean(1)   ? "1"
                     : *each.find("Selected") == boolean(0) ? "0"
                                                            : "?";
        }
        return found;
    };
    EXPECT_EQ(selected("0"), "100");
    EXPECT_EQ(selected("1"), "010");
    EXPECT_EQ(selected("2"), "001");
    EXPECT_EQ(selected("3"), "000");
    EXPECT_EQ(selected("-1"), "000");
    EXPECT_EQ(selected("258"), "000");
    EXPECT_EQ(selected("02"), "001");
    EXPECT_EQ(selected("2x"), "001");
    for (const char *noNumber : {"", " ", "x"}) {
        EXPECT_EQ(selected(noNumber), "100") << noNumber;
    }
    EXPECT_EQ(selected(std::string(40, '2')), "000"); // full to its width, without a terminating zero
}

TEST(VideoInput, EachInputHasItsOwnState)
{
    const auto active = [](int first, int second, int third) {
        seam.pip.DP1State = first;
        seam.pip.DP2State = second;
        seam.pip.HDMIState = third;
        std::vector<Value> found;
        for (const Instance &each : enumerate(VideoInput, input(identifiers[0])).instances()) {
            found.push_back(*each.find("Active"));
        }
        return found;
    };
    EXPECT_EQ(active(1, 0, 0), (std::vector<Value>{boolean(1), boolean(0), boolean(0)}));
    EXPECT_EQ(active(0, 1, 0), (std::vector<Value>{boolean(0), boolean(1), boolean(0)}));
    EXPECT_EQ(active(0, 0, 1), (std::vector<Value>{boolean(0), boolean(0), boolean(1)}));
    EXPECT_EQ(active(256, 2, -1), (std::vector<Value>{boolean(0), boolean(2), boolean(255)}))
        << "the low byte";
}

TEST(VideoInput, GetInstanceGivesTheInputThatIsAskedFor)
{
    const std::vector<Instance> all = enumerate(VideoInput, input(identifiers[0])).instances();
    ASSERT_EQ(all.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        const Answer answer = get(VideoInput, input(identifiers[i]));
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        EXPECT_EQ(answer.done, 1);
        EXPECT_EQ(answer.instance(), all[i]);
        EXPECT_SENT(answer, {refreshed});
        EXPECT_EQ(answer.calls, refreshAnd({"GetPIPSettingsInfo()", "GetRegisterValue(25, 1)"}));
        EXPECT_EQ(answer.trace, "--- ZT_Marovelton_VideoInput CMPI GetInstance() called\n"
                                "--- ZT_Marovelton_VideoInput ValidateVideoInputInstanceID() called\n"
                                "--- ZT_Marovelton_VideoInputValidateVideoInputInstanceID() Leave\n"
                                "--- ZT_Marovelton_VideoInput makeInst) called\n"
                                "--- ZT_Marovelton_VideoInput makeInst) exited\n"
                                "--- ZT_Marovelton_VideoInput CMPI GetInstance() exited\n");
    }
}

TEST(VideoInput, GetInstanceChecksTheKey)
{
    std::vector<KeyRule> rules = instanceIDOfReads();
    rules[0].wrongTrace = tracesOfValidation;
    for (const char *identifier : identifiers) {
        checkKeysOfGetInstance(VideoInput, input(identifier), rules);
    }
    EXPECT_STATUS(get(VideoInput, input("ZT:Marovelton_VideoInput:4")), CMPI_RC_ERR_NOT_FOUND,
                  "This class name does not exist (wrong InstanceID).");
}

TEST(VideoInput, ReadsFailWhenTheRefreshFails)
{
    checkFailuresOfRefresh(VideoInput, input(identifiers[0]));
}

TEST(VideoInput, EnumerationsStopAtTheFirstFailure)
{
    seam.returnsAt("GetRegisterValue", 2, -1);
    Answer answer = enumerate(VideoInput, input(identifiers[0]));
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build instance");
    EXPECT_EQ(answer.instances().size(), 1u) << "what was returned stays returned";
    EXPECT_EQ(answer.done, 0);
    EXPECT_EQ(seam.count("GetRegisterValue"), 2);

    faults.arm("newObjectPath", 3);
    answer = enumerateNames(VideoInput, input(identifiers[0]));
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build objectpath");
    EXPECT_EQ(answer.paths().size(), 2u);
    EXPECT_EQ(answer.done, 0);
}

TEST(VideoInput, BuildersTellWhatFailed)
{
    checkBuilders(
        {.tested = &VideoInput,
         .reference = input(identifiers[1]),
         .makePath =
             [](const CMPIObjectPath *reference, CMPIStatus *status) {
                 return _makePath_ZT_Marovelton_VideoInput(reference, 1, status);
             },
         .makeInst =
             [](const CMPIObjectPath *reference, CMPIStatus *status) {
                 return _makeInst_ZT_Marovelton_VideoInput(reference, 1, status);
             },
         .records = {{"GetPIPSettingsInfo()", "Failed to get videosource information from database."},
                     {"GetRegisterValue(25, 1)", "Failed to get videosource information from database."}}});
}

TEST(VideoInput, ReadsSurviveEveryFailure)
{
    checkTortureOfReads(VideoInput, input(identifiers[2]));
}

// ---- methods ----

TEST(VideoInput, HasNoMethodButThePlaceholder)
{
    checkPlaceholderMethod(VideoInput, input(identifiers[0]), CMPI_RC_ERR_NOT_FOUND, uint32(1));
    // The identifier plays no part.
    EXPECT_METHOD(invoke(VideoInput, path("ZT_Marovelton_VideoInput"), "insert_method_name"), uint32(1),
                  CMPI_RC_OK, "");
    EXPECT_METHOD(invoke(VideoInput, input(identifiers[0]), "SetSelectedVideoInput", {{"VideoInput", "1"}}),
                  uint32(1), CMPI_RC_ERR_NOT_FOUND, "SetSelectedVideoInput");
}
