// SPDX-License-Identifier: Apache-2.0
// The recording broker, the scripted monitor and the checks, so that a check that could not fail would show.

#include "checks.h"
#include "display/modules.h"
#include <gtest/gtest-spi.h>

METHOD_CLASS(DisplayManagement);
METHOD_CLASS(Monitor);

namespace
{

/** Every member of a function table but its version is a pointer, and none is null. */
template <typename Table>
void expectComplete(const char *name, const Table *table, size_t skipped)
{
    const auto *members = reinterpret_cast<const void *const *>(table);
    for (size_t i = skipped; i < sizeof(Table) / sizeof(void *); ++i) {
        EXPECT_NE(members[i], nullptr) << name << ", member " << i;
    }
}

const Path somePath = path("CIM_Thing", {{"InstanceID", "a"}, {"Number", uint16(7)}});

} // namespace

TEST(RecordingBroker, TablesAreComplete)
{
    constexpr size_t versionAndCapabilities = 8 / sizeof(void *);
    expectComplete("CMPIBrokerFT", broker.bft, versionAndCapabilities);
    expectComplete("CMPIBrokerEncFT", broker.eft, 1);
    expectComplete("CMPIBrokerExtFT", broker.xft, 1);
    expectComplete("CMPIBrokerMemFT", broker.mft, 1);
    expectComplete("CMPIStringFT", broker.newString("")->ft, 1);
    expectComplete("CMPIObjectPathFT", broker.newPath({})->ft, 1);
    expectComplete("CMPIInstanceFT", broker.newInstance({})->ft, 1);
    expectComplete("CMPIArgsFT", broker.newArgs({})->ft, 1);
    expectComplete("CMPIContextFT", broker.newContext({})->ft, 1);
    expectComplete("CMPIResultFT", broker.newResult()->ft, 1);
    expectComplete("CMPIArrayFT", broker.make<ArrayObject>()->ft, 1);
    expectComplete("CMPIDateTimeFT", broker.make<DateTimeObject>()->ft, 1);
    expectComplete("CMPIEnumerationFT", broker.make<EnumerationObject>()->ft, 1);
    EXPECT_EQ(broker.bft->brokerVersion, 200);
}

TEST(RecordingBroker, FormsOfData)
{
    broker.manners.reportsFailuresAlone = false;
    const CMPIObjectPath *made = broker.newPath(somePath.with("Null", nullOf(CMPI_string))
                                                    .with("Failing", readFails(CMPI_RC_ERR_FAILED))
                                                    .with("Chars", chars("c"))
                                                    .with("NoString", stringOf(TextForm::noString))
                                                    .with("NoCharacters", stringOf(TextForm::noCharacters)));
    CMPIStatus status = {CMPI_RC_ERR_ALREADY_EXISTS, nullptr};
    CMPIData data = made->ft->getKey(made, "instanceid", &status); // names in any letter case
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(data.type, CMPI_string);
    EXPECT_STREQ(data.value.string->ft->getCharPtr(data.value.string, nullptr), "a");
    EXPECT_EQ(made->ft->getKey(made, "Number", &status).value.uint16, 7);
    EXPECT_STREQ(made->ft->getKey(made, "Chars", &status).value.chars, "c");
    EXPECT_EQ(made->ft->getKey(made, "Null", &status).state, CMPI_nullValue);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(made->ft->getKey(made, "NoString", &status).value.string, nullptr);
    data = made->ft->getKey(made, "NoCharacters", &status);
    EXPECT_EQ(data.value.string->ft->getCharPtr(data.value.string, nullptr), nullptr);
    made->ft->getKey(made, "Failing", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    data = made->ft->getKey(made, "Absent", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_TRUE(data.state & CMPI_notFound);

    // Characters that a provider adds come back as a string.
    made->ft->addKey(made, "Added", reinterpret_cast<const CMPIValue *>("text"), CMPI_chars);
    EXPECT_EQ(made->ft->getKey(made, "Added", &status).type, CMPI_string);
    EXPECT_EQ(findEntry(static_cast<const PathObject *>(made)->path.keys, "Added")->value, chars("text"));
}

TEST(RecordingBroker, CanLeaveTheStatusOfACallThatSucceeds)
{
    broker.manners.reportsFailuresAlone = true;
    const CMPIObjectPath *made = broker.newPath(somePath);
    CMPIStatus status = {CMPI_RC_ERR_ALREADY_EXISTS, nullptr};
    EXPECT_EQ(made->ft->getKey(made, "Number", &status).value.uint16, 7);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_ALREADY_EXISTS);
    made->ft->getKey(made, "Absent", &status);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
}

TEST(RecordingBroker, FaultsStrikeTheCallThatIsMeant)
{
    broker.manners.reportsFailuresAlone = false;
    const CMPIObjectPath *made = broker.newPath(somePath);
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    faults.arm(2, Fault::fails);
    made->ft->getKey(made, "Number", &status);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(made->ft->getClassName(made, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(faults.struck(), "getClassName");
    EXPECT_NE(made->ft->getClassName(made, &status), nullptr);
    EXPECT_EQ(faults.calls(), 3);

    faults.arm("getClassName", 1, Fault::silent);
    EXPECT_EQ(made->ft->getClassName(made, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    faults.arm("getClassName", 1, Fault::noHandle);
    const CMPIString *name = made->ft->getClassName(made, &status);
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name->hdl, nullptr);
    EXPECT_EQ(name->ft->getCharPtr(name, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    faults.arm("getClassName", 1, Fault::noTable);
    EXPECT_EQ(made->ft->getClassName(made, &status)->ft, nullptr);
    faults.arm("GetMoinitorInfo", 2);
    MonitorInfo info;
    EXPECT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_EQ(GetMoinitorInfo(&info), -1);
    EXPECT_EQ(info.DisplayName[0], 'Z') << "a record that could not be read holds nothing of use";
}

TEST(RecordingBroker, ClonesHaveToBeReleased)
{
    const CMPIObjectPath *made = broker.newPath(somePath);
    CMPIObjectPath *clone = made->ft->clone(made, nullptr);
    EXPECT_EQ(broker.unreleasedClones(), 1);
    EXPECT_EQ(static_cast<PathObject *>(clone)->path, somePath);
    EXPECT_EQ(clone->ft->release(clone).rc, CMPI_RC_OK);
    EXPECT_EQ(broker.unreleasedClones(), 0);
    EXPECT_NONFATAL_FAILURE(clone->ft->getClassName(clone, nullptr), "released");
    EXPECT_NONFATAL_FAILURE(made->ft->release(const_cast<CMPIObjectPath *>(made)), "belongs to the broker");
}

TEST(RecordingBroker, MisuseIsReported)
{
    EXPECT_NONFATAL_FAILURE(broker.eft->newSelectExp(&broker, "", "", nullptr, nullptr), "newSelectExp");
    EXPECT_NONFATAL_FAILURE(broker.newPath({})->ft->getClassName(nullptr, nullptr), "without an object");
    const ResultObject *result = broker.newResult();
    result->ft->returnDone(result);
    EXPECT_NONFATAL_FAILURE(result->ft->returnObjectPath(result, broker.newPath(somePath)),
                            "after the result was done");
    const CMPIInstance *made = broker.newInstance({});
    const CMPIValue value = {};
    made->ft->setProperty(made, "Name", &value, CMPI_uint16);
    EXPECT_NONFATAL_FAILURE(made->ft->setProperty(made, "name", &value, CMPI_uint16), "set twice");
}

TEST(RecordingBroker, OtherClassesAnswerByTheScript)
{
    const auto names = [](const Path &asked, CMPIStatus *status) {
        const CMPIEnumeration *all =
            broker.bft->enumerateInstanceNames(&broker, nullptr, broker.newPath(asked), status);
        std::vector<Value> found;
        while (all && all->ft->hasNext(all, nullptr)) {
            const CMPIValue next = all->ft->getNext(all, nullptr).value;
            found.push_back(RecordingBroker::valueOf(&next, CMPI_ref));
        }
        return found;
    };
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    EXPECT_EQ(names(somePath, &status).size(), 0u);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_CLASS);

    ClassScript &script = broker.classes["CIM_Thing"];
    script.instances = {instance(somePath), instance(somePath.with("InstanceID", "b"))};
    EXPECT_EQ(names(path("cim_thing").inNameSpace("root/x"), &status),
              (std::vector<Value>{reference(somePath.inNameSpace("root/x")),
                                  reference(somePath.inNameSpace("root/x").with("InstanceID", "b"))}));
    EXPECT_EQ(broker.upCalls.back(), "enumerateInstanceNames(root/x:cim_thing)");
    script.emptyElement = 1;
    EXPECT_EQ(names(somePath, &status).at(1), nullOf(CMPI_ref));
    script.enumerateRc = CMPI_RC_ERR_ACCESS_DENIED;
    EXPECT_EQ(names(somePath, &status).size(), 0u);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_ACCESS_DENIED);

    const auto get = [&](const Path &asked) {
        return broker.bft->getInstance(&broker, nullptr, broker.newPath(asked), nullptr, &status);
    };
    EXPECT_NE(get(somePath), nullptr);
    EXPECT_EQ(get(somePath.with("InstanceID", "c")), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);

    broker.superclasses = {{"CIM_Special", "CIM_Thing"}, {"CIM_Thing", "CIM_ManagedElement"}};
    const auto isA = [&](const char *name, const char *ancestor) {
        return broker.eft->classPathIsA(&broker, broker.newPath(path(name)), ancestor, nullptr);
    };
    EXPECT_EQ(isA("CIM_Special", "cim_managedelement"), 1);
    EXPECT_EQ(isA("CIM_Thing", "CIM_Special"), 0);
    EXPECT_EQ(isA("CIM_Other", "CIM_Other"), 1);
}

TEST(Checks, MessagesAreFortyBytes)
{
    EXPECT_EQ(bytes("01 ...")[0], 1);
    EXPECT_EQ(bytes("01 ..."), bytes("01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
                                     "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"));
    EXPECT_NONFATAL_FAILURE(bytes("01 02"), "40 bytes");
    EXPECT_NONFATAL_FAILURE(bytes("0 ..."), "40 bytes");
    EXPECT_NONFATAL_FAILURE(bytes("0X ..."), "hexadecimal");
    SentMessage message = {100, bytes("01 00 00 00 03 ...")};
    EXPECT_TRUE(hasSent({message}, {"01 00 00 00 03 ..."}));
    EXPECT_FALSE(hasSent({message}, {"01 00 00 00 04 ..."}));
    EXPECT_FALSE(hasSent({message}, {}));
    EXPECT_FALSE(hasSent({}, {"01 ..."}));
    message.queueId = 103;
    EXPECT_FALSE(hasSent({message}, {"01 00 00 00 03 ..."}));
}

TEST(Checks, PropertiesAreComparedWithOrderAndType)
{
    const Entries entries = {{"A", uint16(5)}, {"B", chars("x")}};
    EXPECT_TRUE(hasEntries(entries, {{"A", uint16(5)}, {"B", chars("x")}}));
    EXPECT_FALSE(hasEntries(entries, {{"B", chars("x")}, {"A", uint16(5)}}));
    EXPECT_FALSE(hasEntries(entries, {{"A", uint16(5)}}));
    EXPECT_FALSE(hasEntries(entries, {{"A", uint16(5)}, {"B", chars("x")}, {"C", boolean(1)}}));
    EXPECT_FALSE(hasEntries(entries, {{"A", uint32(5)}, {"B", chars("x")}}));
    EXPECT_FALSE(hasEntries(entries, {{"A", uint16(6)}, {"B", chars("x")}}));
    EXPECT_FALSE(hasEntries(entries, {{"A", uint16(5)}, {"B", "x"}}));
    EXPECT_FALSE(hasEntries(entries, {{"a", uint16(5)}, {"B", chars("x")}}));
    EXPECT_FALSE(uint16Array({1}) == uint16Array({2}));
    EXPECT_FALSE(uint16Array({1}) == uint16Array({1, 1}));
    EXPECT_FALSE(dateTime(5) == interval(5));
    EXPECT_FALSE(real32(25.0f) == real32(31.25f));
    EXPECT_FALSE(reference(somePath) == reference(somePath.without("Number")));
    EXPECT_FALSE(nullOf(CMPI_string) == notFoundState(CMPI_string));
}

TEST(Checks, AnswersAreComparedWhole)
{
    Answer answer;
    answer.rc = CMPI_RC_ERR_FAILED;
    answer.hasMessage = true;
    answer.message = "text";
    answer.returned = {uint32(2)};
    answer.done = 1;
    EXPECT_TRUE(isMethodAnswer(answer, uint32(2), CMPI_RC_ERR_FAILED, "text"));
    EXPECT_FALSE(isMethodAnswer(answer, uint8(2), CMPI_RC_ERR_FAILED, "text"));
    EXPECT_FALSE(isMethodAnswer(answer, uint32(1), CMPI_RC_ERR_FAILED, "text"));
    EXPECT_FALSE(isMethodAnswer(answer, uint32(2), CMPI_RC_ERR_NOT_FOUND, "text"));
    EXPECT_FALSE(isMethodAnswer(answer, uint32(2), CMPI_RC_ERR_FAILED, "text."));
    EXPECT_FALSE(isMethodAnswer(answer, uint32(2), CMPI_RC_ERR_FAILED, ""));
    answer.done = 0;
    EXPECT_FALSE(isMethodAnswer(answer, uint32(2), CMPI_RC_ERR_FAILED, "text"));
    answer.done = 1;
    answer.returned.push_back(uint32(2));
    EXPECT_FALSE(isMethodAnswer(answer, uint32(2), CMPI_RC_ERR_FAILED, "text"));
}

namespace
{

/** An operation that forgets to look at what it gets: the answer lacks a path where newObjectPath fails. */
Answer careless()
{
    return collect([](const CMPIResult *result) {
        const CMPIObjectPath *made = broker.eft->newObjectPath(&broker, "root", "CIM_Thing", nullptr);
        if (made) {
            result->ft->returnObjectPath(result, made);
        }
        return CMPIStatus{CMPI_RC_OK, nullptr};
    });
}

SettingMethod autoSwitch()
{
    return {
        .tested = &Monitor,
        .target = path("ZT_Marovelton_Monitor", {{"CreationClassName", "ZT_Marovelton_Monitor"},
                                                 {"SystemName", "Studio 7"},
                                                 {"SystemCreationClassName", "Linux_ComputerSystem"}}),
        .method = "SetAutoSwitchSource",
        .argument = "AutoSwitchSource",
        .kind = ArgumentIs::toggle,
        .missing = "Required argument AutoSwitchSource missing.",
        .steps = {.reply = "Failed to set the value to AutoSwitchSource."},
        .sentAtMin = "01 00 00 00  03 00  07 00  00 01 01  00 1A 00 00 00 00 00  ...",
        .sentAtMax = "01 00 00 00  03 00  07 00  00 01 01  00 1A 00 01 00 00 00  ...",
    };
}

/** The number of failures that `check` reports. */
int failuresOf(const std::function<void()> &check)
{
    testing::TestPartResultArray failures;
    testing::ScopedFakeTestPartResultReporter reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
    check();
    return failures.size();
}

} // namespace

TEST(Checks, TortureFindsWhatIsNotLookedAt)
{
    EXPECT_GT(failuresOf([] { checkTorture(careless); }), 0);
    EXPECT_EQ(failuresOf([] { checkTorture(careless, {.harmless = {"newObjectPath"}}); }), 0);
}

TEST(Checks, SettingCheckFindsEveryDifference)
{
    EXPECT_EQ(failuresOf([] { checkSettingMethod(autoSwitch()); }), 0);
    const auto differs = [](const std::function<void(SettingMethod &)> &change) {
        SettingMethod changed = autoSwitch();
        change(changed);
        return failuresOf([&] { checkSettingMethod(changed); }) > 0;
    };
    EXPECT_TRUE(differs([](SettingMethod &s) { s.missing = "Required argument AutoSwitchSource missing"; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.empty += "."; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.invalidType += "."; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.malformed += "."; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.steps.reply += "."; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.steps.busy += "."; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.steps.send += "."; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.steps.sendQueue += "."; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.steps.receiveQueue += "."; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.steps.reply.clear(); }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.sentAtMin = s.sentAtMax; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.returnType = CMPI_uint8; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.kind = ArgumentIs::wholeDecimal; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.kind = ArgumentIs::leadingDecimal; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.range = "Invalid input value range."; }));
    EXPECT_TRUE(differs([](SettingMethod &s) { s.argument = "Name"; }));
}

TEST(Checks, KeyAndRightsChecksFindDifferences)
{
    const SettingMethod setting = autoSwitch();
    const Entries arguments = {{"AutoSwitchSource", "1"}};
    const auto keys = [&](const KeyRule &rule) {
        return failuresOf(
            [&] { checkKeysOfMethod(Monitor, setting.target, setting.method, arguments, "admin", {rule}); });
    };
    const KeyRule good = {.name = "SystemName",
                          .missing = "Invalid selectors(Could not get systemName of instance.)",
                          .wrong = "This instance does not exist (wrong SystemName).",
                          .ignoreCase = true};
    EXPECT_EQ(keys(good), 0);
    KeyRule bad = good;
    bad.ignoreCase = false;
    EXPECT_GT(keys(bad), 0);
    bad = good;
    bad.missing += ".";
    EXPECT_GT(keys(bad), 0);
    bad = good;
    bad.wrongCode = CMPI_RC_ERR_FAILED;
    EXPECT_GT(keys(bad), 0);
    bad = good;
    bad.missingValue = 1;
    EXPECT_GT(keys(bad), 0);

    EXPECT_GT(failuresOf([&] { checkAdministratorOnly(Monitor, setting.target, setting.method, arguments); }),
              0);
    EXPECT_GT(failuresOf([&] {
                  checkNoAdministratorNeeded(Monitor, setting.target, "SetName", {{"Name", "Studio 8"}});
              }),
              0);
    EXPECT_GT(failuresOf([&] {
                  checkUnknownMethods(Monitor, setting.target, {"FactoryReset"}, CMPI_RC_ERR_NOT_FOUND,
                                      uint32(1));
              }),
              0);
    EXPECT_GT(failuresOf([&] {
                  checkOtherClass(Monitor, setting.target, setting.method, arguments, noUser(),
                                  CMPI_RC_ERR_NOT_FOUND, "Invalid class name", uint32(2));
              }),
              0);
    EXPECT_GT(failuresOf([&] { checkBuildFailures(Monitor, setting.target, {"GetPIPSettingsInfo"}); }), 0);
}

TEST(Checks, ReadChecksFindDifferences)
{
    const Path target =
        path("ZT_Marovelton_DisplayManagement", {{"InstanceID", "ZT:Marovelton_DisplayManagement"}});
    const Entries properties = get(DisplayManagement, target).instance().properties;
    const std::vector<std::string> calls = {"GetDisplayManagementInfo()", "GetMoinitorInfo()"};

    const auto paths = [](const Path &expected, const std::vector<std::string> &made) {
        return failuresOf([&] { checkPaths(DisplayManagement, {expected}, made); });
    };
    EXPECT_EQ(paths(target, {}), 0);
    EXPECT_GT(paths(target.ofClass("CIM_System"), {}), 0);
    EXPECT_GT(paths(target.with("Name", "x"), {}), 0);
    EXPECT_GT(paths(target, {"GetMoinitorInfo()"}), 0);

    const auto instance = [&](const Path &at, size_t count, size_t made, bool pathIsTraced) {
        const Entries some(properties.begin(), properties.begin() + static_cast<std::ptrdiff_t>(count));
        const std::vector<std::string> first(calls.begin(),
                                             calls.begin() + static_cast<std::ptrdiff_t>(made));
        return failuresOf([&] { checkInstance(DisplayManagement, at, some, first, pathIsTraced); });
    };
    EXPECT_EQ(instance(target, 12, 2, true), 0);
    EXPECT_GT(instance(target.with("Name", "x"), 12, 2, true), 0);
    EXPECT_GT(instance(target, 11, 2, true), 0);
    EXPECT_GT(instance(target, 12, 1, true), 0);
    EXPECT_GT(instance(target, 12, 2, false), 0);

    const auto keys = [&](const char *wrongTrace) {
        std::vector<KeyRule> rules = instanceIDOfReads();
        rules[0].wrongTrace = wrongTrace;
        return failuresOf([&] { checkKeysOfGetInstance(DisplayManagement, target, rules); });
    };
    EXPECT_EQ(keys(""), 0);
    EXPECT_GT(keys("--- called\n"), 0);

    EXPECT_GT(failuresOf([&] { checkNameOfSystem(DisplayManagement, target, "-Display"); }), 0);
    EXPECT_GT(failuresOf([&] { checkFailuresOfRefresh(DisplayManagement, target); }), 0)
        << "its reads ask the engine for nothing";
}

TEST(Checks, BuilderCheckFindsDifferences)
{
    const Builders good = {
        .tested = &DisplayManagement,
        .reference =
            path("ZT_Marovelton_DisplayManagement", {{"InstanceID", "ZT:Marovelton_DisplayManagement"}}),
        .makePath = _makePath_ZT_Marovelton_DisplayManagement,
        .makeInst = _makeInst_ZT_Marovelton_DisplayManagement,
        .records = {
            {"GetDisplayManagementInfo()", "Failed to get display management information from database."},
            {"GetMoinitorInfo()", "Could not get monitor information from database."}}};
    const auto failures = [&](const std::function<void(Builders &)> &change) {
        Builders changed = good;
        change(changed);
        return failuresOf([&] { checkBuilders(changed); });
    };
    EXPECT_EQ(failures([](Builders &) {}), 0);
    EXPECT_GT(failures([](Builders &b) { b.records[1].failure += "."; }), 0);
    EXPECT_GT(failures([](Builders &b) { std::swap(b.records[0], b.records[1]); }), 0);
    EXPECT_GT(failures([](Builders &b) { b.records.pop_back(); }), 0);
    EXPECT_GT(failures([](Builders &b) { b.records.push_back({"GetPIPSettingsInfo()", "Failed."}); }), 0);
    EXPECT_GT(failures([](Builders &b) { b.arrays = 1; }), 0);
    EXPECT_GT(failures([](Builders &b) { b.recordsFirst = true; }), 0);
}

TEST(ScriptedSeam, CommandsAnswerByTheScript)
{
    EXPECT_NONFATAL_FAILURE(seam.returns("GetMonitorInfo", -1), "no such function");
    EXPECT_EQ(seam.count("GetMoinitorInfo"), 0);
    MonitorInfo info;
    EXPECT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_EQ(seam.count("GetMoinitorInfo"), 1);
    EXPECT_STREQ(info.DisplayName, "Studio 7");
    char text[REGISTER_TEXT_SIZE] = " ";
    EXPECT_EQ(GetRegisterValue(1, 0, text), 0);
    EXPECT_STREQ(text, "1");
    EXPECT_EQ(GetRegisterValue(2, 0, text), -1);
    seam.returnsAt("GetRegisterValue(1, 0)", 3, 9);
    EXPECT_EQ(GetRegisterValue(1, 0, text), 0);
    EXPECT_EQ(GetRegisterValue(1, 0, text), 9);
    EXPECT_EQ(seam.calls.back(), "GetRegisterValue(1, 0)");
}
