// SPDX-License-Identifier: Apache-2.0
// The monitor: its one instance and its methods.

#include "checks.h"
#include "display/modules.h"
#include <climits>

METHOD_CLASS(Monitor);

namespace
{

// "Studio 7" is the display name of the scripted monitor.
Path monitorPath()
{
    return path("ZT_Marovelton_Monitor", {{"DeviceID", "ZT:Marovelton_Monitor"},
                                          {"CreationClassName", "ZT_Marovelton_Monitor"},
                                          {"SystemName", "Studio 7"},
                                          {"SystemCreationClassName", "Linux_ComputerSystem"}});
}

const Path monitorClass = path("ZT_Marovelton_Monitor");
const Value succeeded = uint32(0);
const Value unknown = uint32(1);
const Value failed = uint32(2);

const std::string refreshOfIdentity = "01 00 00 00  08 00  07 00  00 00 09  ...";
const std::string refreshOfImage = "01 00 00 00  08 00  07 00  00 00 02  ...";

/** The read operations by their names. */
struct Read {
    const char *name;
    std::function<Answer()> run;
    const char *cannotBuild;
};
const Read reads[] = {
    {"EnumInstanceNames", [] { return enumerateNames(Monitor, monitorClass); }, "Couldn't build objectpath"},
    {"EnumInstances", [] { return enumerate(Monitor, monitorClass); }, "Couldn't build instance"},
    {"GetInstance", [] { return get(Monitor, monitorPath()); }, "Couldn't build instance"},
};

} // namespace

TEST(Monitor, Skeleton)
{
    checkSkeleton(Monitor);
}

// ---- the instance ----

TEST(Monitor, Properties)
{
    broker.manners.keepsKeysInPaths = false;
    const Entries expected = {
        {"SoftPowerState", boolean(1)},
        {"VideoPipelineDelay", uint16(17)},
        {"LastCalibration", uint16(640)},
        {"BacklightHours", uint16(5210)},
        {"InputSource", uint16(2)},
        {"AutoSwitchSource", boolean(1)},
        {"DeploymentDate", dateTime(1400000000000000)},
        {"DeploymentLocation", chars("Grading room 2")},
        {"DisplayMode", uint16(8)},
        {"VerticalResolution", uint16(2160)},
        {"HorizontalResolution", uint16(3840)},
        {"Caption", chars("ZT_Marovelton_Monitor")},
        {"ElementName", chars("ZT_Marovelton_Monitor")},
        {"InstanceID", chars("ZT:Marovelton_Monitor")},
        {"Name", chars("Studio 7")},
        {"Description",
         chars("A class derived from FlatPanel that represents the single node container of the "
               "Display Management System.")},
    };
    for (const Read *read : {&reads[1], &reads[2]}) {
        SCOPED_TRACE(read->name);
        const Answer answer = read->run();
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        EXPECT_EQ(answer.done, 1);
        EXPECT_PROPERTIES(answer.instance(), {expected});
    }
}

TEST(Monitor, KeysArePropertiesWhereTheObjectManagerKeepsThemInThePath)
{
    broker.manners.keepsKeysInPaths = true;
    for (const Read *read : {&reads[1], &reads[2]}) {
        SCOPED_TRACE(read->name);
        const Answer answer = read->run();
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        Entries properties = answer.instance().properties;
        ASSERT_EQ(properties.size(), 20u);
        properties.resize(4);
        EXPECT_EQ(properties, (Entries{{"DeviceID", chars("ZT:Marovelton_Monitor")},
                                       {"CreationClassName", chars("ZT_Marovelton_Monitor")},
                                       {"SystemName", chars("Studio 7")},
                                       {"SystemCreationClassName", chars("Linux_ComputerSystem")}}));
    }
}

TEST(Monitor, Keys)
{
    const Entries expected = {
        {"DeviceID", chars("ZT:Marovelton_Monitor")},
        {"CreationClassName", chars("ZT_Marovelton_Monitor")},
        {"SystemName", chars("Studio 7")},
        {"SystemCreationClassName", chars("Linux_ComputerSystem")},
    };
    const Answer names = enumerateNames(Monitor, monitorClass);
    EXPECT_STATUS(names, CMPI_RC_OK, "");
    EXPECT_EQ(names.done, 1);
    EXPECT_KEYS(names.path(), {expected});
    EXPECT_KEYS(enumerate(Monitor, monitorClass).instance().path, {expected});
    EXPECT_KEYS(get(Monitor, monitorPath()).instance().path, {expected});
}

TEST(Monitor, NameSpaceOfTheRequest)
{
    const Path elsewhere = monitorClass.inNameSpace("root/other");
    EXPECT_EQ(enumerateNames(Monitor, elsewhere).path().nameSpace, "root/other");
    EXPECT_EQ(enumerateNames(Monitor, elsewhere).path().className, "ZT_Marovelton_Monitor");
    EXPECT_EQ(enumerate(Monitor, elsewhere).instance().path.nameSpace, "root/other");
    EXPECT_EQ(get(Monitor, monitorPath().inNameSpace("root/other")).instance().path.nameSpace, "root/other");
}

TEST(Monitor, EmptyDisplayNameShowsTheAddress)
{
    setField(seam.monitor.DisplayName, "");
    EXPECT_EQ(*enumerate(Monitor, monitorClass).instance().find("Name"), chars("192.0.2.17"));
    EXPECT_EQ(*enumerate(Monitor, monitorClass).instance().find("SystemName"), chars("192.0.2.17"));
    EXPECT_EQ(findEntry(enumerateNames(Monitor, monitorClass).path().keys, "SystemName")->value,
              chars("192.0.2.17"));
    EXPECT_STATUS(get(Monitor, monitorPath().with("SystemName", "192.0.2.17")), CMPI_RC_OK, "");
    EXPECT_STATUS(get(Monitor, monitorPath()), CMPI_RC_ERR_NOT_FOUND,
                  "This instance does not exist (wrong SystemName).");
}

TEST(Monitor, LowBytesAndWords)
{
    seam.monitor.SoftPowerState = 0;
    seam.monitor.AutoSwitchSource = 256;
    seam.monitor.VideoPipelineDelay = 65536 + 5;
    seam.monitor.LastCalibration = -1;
    seam.monitor.BacklightHours = INT_MIN;
    seam.monitor.ActiveVideoInput = 65535;
    seam.imageAdjustment.VerticalResolution = 65536 + 2160;
    seam.imageAdjustment.HorizontalResolution = -2;
    const Instance monitor = enumerate(Monitor, monitorClass).instance();
    EXPECT_EQ(*monitor.find("SoftPowerState"), boolean(0));
    EXPECT_EQ(*monitor.find("AutoSwitchSource"), boolean(0));
    EXPECT_EQ(*monitor.find("VideoPipelineDelay"), uint16(5));
    EXPECT_EQ(*monitor.find("LastCalibration"), uint16(65535));
    EXPECT_EQ(*monitor.find("BacklightHours"), uint16(0));
    EXPECT_EQ(*monitor.find("InputSource"), uint16(65535));
    EXPECT_EQ(*monitor.find("VerticalResolution"), uint16(2160));
    EXPECT_EQ(*monitor.find("HorizontalResolution"), uint16(65534));

    seam.monitor.SoftPowerState = 2;
    seam.monitor.AutoSwitchSource = -1;
    const Instance other = enumerate(Monitor, monitorClass).instance();
    EXPECT_EQ(*other.find("SoftPowerState"), boolean(2));
    EXPECT_EQ(*other.find("AutoSwitchSource"), boolean(255));
}

TEST(Monitor, DeploymentDateIsAPointInTime)
{
    const auto dateOf = [](int32_t seconds) {
        seam.monitor.Deployment_Date = seconds;
        return *enumerate(Monitor, monitorClass).instance().find("DeploymentDate");
    };
    EXPECT_EQ(dateOf(0), dateTime(0));
    EXPECT_EQ(dateOf(1), dateTime(1000000));
    EXPECT_EQ(dateOf(-1), dateTime(-1000000));
    EXPECT_EQ(dateOf(INT32_MAX), dateTime(2147483647000000));
    EXPECT_EQ(dateOf(INT32_MIN), dateTime(-2147483648000000));
    EXPECT_FALSE(dateOf(5).interval);
}

TEST(Monitor, DisplayModeIsAlwaysEight)
{
    for (const char *mode : {"", "8", "0", "Standard", "Calibrated at 6500 K now."}) {
        setField(seam.monitor.DisplayMode, mode);
        seam.monitor.SoftPowerState = !seam.monitor.SoftPowerState;
        EXPECT_EQ(*enumerate(Monitor, monitorClass).instance().find("DisplayMode"), uint16(8));
    }
}

TEST(Monitor, FieldsWithoutTerminators)
{
    const std::string name = fillField(seam.monitor.DisplayName, 'N');
    const std::string location = fillField(seam.monitor.DeploymentLocation, 'L');
    fillField(seam.monitor.DisplayMode, 'M');
    fillField(seam.monitor.SerialNumber, 'S');
    fillField(seam.monitor.PexalVersion, 'V');
    const Instance monitor = enumerate(Monitor, monitorClass).instance();
    EXPECT_EQ(*monitor.find("DeploymentLocation"), chars(location));
    EXPECT_EQ(*monitor.find("Name"), chars(name));
    EXPECT_EQ(*monitor.find("SystemName"), chars(name));
    EXPECT_EQ(findEntry(enumerateNames(Monitor, monitorClass).path().keys, "SystemName")->value, chars(name));

    setField(seam.monitor.DeploymentLocation, "");
    EXPECT_EQ(*enumerate(Monitor, monitorClass).instance().find("DeploymentLocation"), chars(""));
}

// ---- reading ----

TEST(Monitor, ReadsRefreshTwoGroupsFirst)
{
    const std::vector<std::string> refresh = {
        "GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
        "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"};
    for (const Read &read : reads) {
        SCOPED_TRACE(read.name);
        const Answer answer = read.run();
        EXPECT_SENT(answer, {refreshOfIdentity, refreshOfImage});
        std::vector<std::string> calls;
        if (std::string(read.name) == "GetInstance") {
            calls.push_back("GetMoinitorInfo()");
        }
        calls.insert(calls.end(), refresh.begin(), refresh.end());
        calls.insert(calls.end(), refresh.begin(), refresh.end());
        calls.push_back("GetMoinitorInfo()");
        if (std::string(read.name) != "EnumInstanceNames") {
            calls.push_back("GetImageAdjustmentInfo()");
        }
        EXPECT_EQ(answer.calls, calls);
    }
}

TEST(Monitor, RefreshThatFailsEndsTheRead)
{
    for (const int groupsBefore : {0, 1}) {
        SCOPED_TRACE(std::to_string(groupsBefore) + " groups before");
        checkFailuresOfRefresh(Monitor, monitorPath(), groupsBefore);
    }
    // The second group is not asked for when the first cannot be read.
    seam.returnsAt("RecvMessageFromSource", 1, -1);
    for (const Read &read : reads) {
        SCOPED_TRACE(read.name);
        EXPECT_SENT(read.run(), {refreshOfIdentity});
    }
}

TEST(Monitor, BusyEngineIsNotRead)
{
    seam.status = BUSY;
    for (const Read &read : reads) {
        SCOPED_TRACE(read.name);
        const Answer answer = read.run();
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Device is Busy. Please try after some time..");
        EXPECT_EQ(answer.returned.size(), 0u);
        EXPECT_SENT(answer, {});
    }
}

TEST(Monitor, PathWithoutKeysWhenTheRecordCannotBeRead)
{
    for (const int result : {-1, 1, 80000001}) {
        seam.returns("GetMoinitorInfo", result);
        const Answer answer = enumerateNames(Monitor, monitorClass);
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Failed to get monitor information from database.");
        EXPECT_EQ(answer.path().className, "ZT_Marovelton_Monitor");
        EXPECT_KEYS(answer.path(), {});
        EXPECT_EQ(answer.done, 1);
    }
}

TEST(Monitor, GetInstanceBuildFailures)
{
    // The first read of the record is the key check's.
    seam.returnsAt("GetMoinitorInfo", 1, -1);
    EXPECT_STATUS(get(Monitor, monitorPath()), CMPI_RC_ERR_FAILED,
                  "Could not get monitor information from database.");
    seam.reset();
    seam.returnsAt("GetMoinitorInfo", 2, -1);
    EXPECT_STATUS(get(Monitor, monitorPath()), CMPI_RC_ERR_FAILED, "Couldn't build instance");
    seam.reset();
    seam.returns("GetImageAdjustmentInfo", -1);
    EXPECT_STATUS(get(Monitor, monitorPath()), CMPI_RC_ERR_FAILED, "Couldn't build instance");
    seam.reset();
    for (const char *function : {"newObjectPath", "newInstance"}) {
        for (const Fault fault : everyFlaw) {
            faults.arm(function, 1, fault);
            const Answer answer = get(Monitor, monitorPath());
            faults.disarm();
            EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build instance");
            EXPECT_EQ(answer.returned.size(), 0u);
        }
    }
}

TEST(Monitor, BuildersThemselves)
{
    checkBuilders(
        {.tested = &Monitor,
         .reference = monitorClass,
         .makePath = _makePath_ZT_Marovelton_Monitor,
         .makeInst = _makeInst_ZT_Marovelton_Monitor,
         .records = {{"GetMoinitorInfo()", "Failed to get monitor information from database."},
                     {"GetImageAdjustmentInfo()", "Failed to get monitor information from database."}},
         .recordsFirst = true});
    seam.reset();
    seam.returns("GetMoinitorInfo", -1);
    const Built bare = build(Monitor, monitorClass, _makePath_ZT_Marovelton_Monitor);
    ASSERT_TRUE(bare.path.has_value());
    EXPECT_KEYS(*bare.path, {});
    EXPECT_EQ(bare.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(bare.message, "Failed to get monitor information from database.");
}

TEST(Monitor, KeysOfGetInstance)
{
    std::vector<KeyRule> rules = systemKeys();
    rules.push_back({.name = "DeviceID",
                     .missing = "Could not get DeviceID of instance.",
                     .wrong = "This class name does not exist (wrong DeviceID)."});
    checkKeysOfGetInstance(Monitor, monitorPath(), rules);
}

TEST(Monitor, GetInstanceNeedsNoName)
{
    EXPECT_STATUS(get(Monitor, monitorPath()), CMPI_RC_OK, "");
    EXPECT_STATUS(get(Monitor, monitorPath().with("Name", "anything")), CMPI_RC_OK, "");
    EXPECT_STATUS(get(Monitor, monitorPath().with("DeviceID", "zt:marovelton_monitor")),
                  CMPI_RC_ERR_NOT_FOUND, "This class name does not exist (wrong DeviceID).");
}

TEST(Monitor, TracesOfReads)
{
    EXPECT_EQ(enumerateNames(Monitor, monitorClass).trace,
              "--- ZT_Marovelton_Monitor makePath called\n"
              "--- ZT_Marovelton_Monitor CMPI EnumInstanceNames() exited");
    EXPECT_EQ(enumerate(Monitor, monitorClass).trace, "--- ZT_Marovelton_Monitor makeInst) called\n"
                                                      "--- ZT_Marovelton_Monitor makeInst) exited\n");
    EXPECT_EQ(get(Monitor, monitorPath()).trace, "--- ZT_Marovelton_Monitor CMPI GetInstance() called\n"
                                                 "--- ZT_Marovelton_Monitor makeInst) called\n"
                                                 "--- ZT_Marovelton_Monitor makeInst) exited\n"
                                                 "--- ZT_Marovelton_Monitor CMPI GetInstance() exited\n");
}

TEST(Monitor, TraceOfAGetInstanceThatIsRefused)
{
    EXPECT_EQ(get(Monitor, monitorPath().with("SystemName", "other")).trace,
              "--- ZT_Marovelton_Monitor CMPI GetInstance() called\n");
}

// ---- methods: the target ----

TEST(Monitor, AnotherClassIsAnsweredWithoutAnError)
{
    checkOtherClass(Monitor, monitorPath(), "SetAutoSwitchSource", {{"AutoSwitchSource", "1"}}, noUser(),
                    CMPI_RC_OK, "", failed);
    // Not even the key check or the method name is looked at.
    const Answer answer = invoke(Monitor, path("CIM_System"), "Reboot");
    EXPECT_METHOD(answer, failed, CMPI_RC_OK, "");
    EXPECT_CALLS(answer, {});
}

TEST(Monitor, KeysOfMethods)
{
    checkKeysOfMethod(Monitor, monitorPath(), "SetAutoSwitchSource", {{"AutoSwitchSource", "1"}}, noUser(),
                      systemKeys());
    // The keys come before the method name.
    EXPECT_METHOD(invoke(Monitor, monitorPath().with("SystemName", "other"), "Reboot"), failed,
                  CMPI_RC_ERR_NOT_FOUND, "This instance does not exist (wrong SystemName).");
}

TEST(Monitor, TheKeysComeBeforeTheRights)
{
    for (const User &user : {User("operator"), User("nobody"), noUser()}) {
        SCOPED_TRACE(describe(user));
        const Answer answer = invoke(Monitor, monitorPath().with("SystemName", "other"), "SetName",
                                     {{"Name", "Studio 8"}}, user);
        EXPECT_METHOD(answer, failed, CMPI_RC_ERR_NOT_FOUND,
                      "This instance does not exist (wrong SystemName).");
        EXPECT_CALLS(answer, {"GetMoinitorInfo()"});
    }
}

TEST(Monitor, MethodsDoNotLookAtTheDeviceID)
{
    for (const Path &target : {monitorPath().without("DeviceID"), monitorPath().with("DeviceID", "other")}) {
        EXPECT_METHOD(invoke(Monitor, target, "FactoryReset"), succeeded, CMPI_RC_OK, "");
    }
}

TEST(Monitor, MethodsNeedTheMonitorsRecord)
{
    seam.returns("GetMoinitorInfo", -1);
    EXPECT_METHOD(invoke(Monitor, monitorPath(), "FactoryReset"), failed, CMPI_RC_ERR_FAILED,
                  "Could not get monitor information from database.");
}

TEST(Monitor, UnknownMethods)
{
    checkUnknownMethods(Monitor, monitorPath(),
                        {"Reboot", "setName", "SETNAME", "SetNam", "SetName ", "factoryReset",
                         "SetautoSwitchSource", "insert_method_name", "SetSoftpowerState",
                         std::string(5000, 'x')},
                        CMPI_RC_ERR_NOT_FOUND, unknown);
}

// ---- methods: texts for the settings database ----

namespace
{

struct Store {
    const char *method;
    const char *argument;
    const char *missing;
    const char *validate; // nullptr: no check
    const char *refused;
    const char *update;
    const char *good;
    int (*setter)(const char *, char *);
};

const Store stores[] = {
    {"SetName", "Name", "Required argument Name missing.", "ValidateDisplayName",
     "Invalid String or String is outof range.", "UpdateDisplayName", "Studio 8", setDisplayName},
    {"SetDeploymentLocation", "DeploymentLocation", "Required argument DeploymentLocation missing.", nullptr,
     nullptr, "UpdateDeploymentLocation", "Grading room 3", setDeploymentLocation},
    {"SetDeploymentDate", "DeploymentDate", "Required argument DeploymentDate missing",
     "ValidateDeploymentDate", "Invalid date. date format is DD/MM/YYYY", "UpdateDeploymentDate",
     "31/12/2026", setDeploymentDate},
};

Answer store(const Store &each, const Value &text, const User &user = "admin")
{
    return invoke(Monitor, monitorPath(), each.method, {{each.argument, text}}, user);
}

std::string withArgument(const char *function, const std::string &argument)
{
    return std::string(function) + "(" + argument + ")";
}

} // namespace

TEST(Monitor, StoredTexts)
{
    for (const Store &each : stores) {
        SCOPED_TRACE(each.method);
        for (const std::string &text : {std::string(each.good), std::string(" "), std::string("0"),
                                        std::string("Gr\xC3\xB6\xC3\x9F"
                                                    "e"),
                                        std::string(5000, 'n')}) {
            const Answer answer = store(each, text);
            EXPECT_METHOD(answer, succeeded, CMPI_RC_OK, "");
            EXPECT_SENT(answer, {});
            std::vector<std::string> calls = {"GetMoinitorInfo()", "IsAdminUser(admin)"};
            if (each.validate) {
                calls.push_back(withArgument(each.validate, text));
            }
            calls.push_back(withArgument(each.update, text));
            EXPECT_EQ(answer.calls, calls);
        }
    }
}

TEST(Monitor, StoredTextsAreForAdministrators)
{
    for (const Store &each : stores) {
        checkAdministratorOnly(Monitor, monitorPath(), each.method, {{each.argument, each.good}});
    }
}

TEST(Monitor, StoredTextsHaveToBeThere)
{
    for (const Store &each : stores) {
        checkStringArgument(Monitor, monitorPath(), each.method, each.argument, each.missing, {}, "admin");
    }
}

TEST(Monitor, StoredTextsThatAreRefused)
{
    for (const Store &each : stores) {
        if (!each.validate) {
            continue;
        }
        for (const int result : {-1, 1, 80000011}) {
            SCOPED_TRACE(each.method);
            seam.returns(each.validate, result);
            const Answer answer = store(each, each.good);
            EXPECT_METHOD(answer, failed, CMPI_RC_ERR_INVALID_PARAMETER, each.refused);
            EXPECT_EQ(answer.calls.back(), withArgument(each.validate, each.good)) << "nothing is stored";
        }
    }
}

TEST(Monitor, StoresThatFail)
{
    for (const Store &each : stores) {
        for (const int result : {-1, 1, 80000000}) {
            SCOPED_TRACE(each.method);
            seam.reset();
            seam.returns(each.update, result);
            for (const std::string &written :
                 {std::string("Disk full."), std::string(), std::string(300, 'e')}) {
                seam.errorText = written;
                EXPECT_METHOD(store(each, each.good), failed, CMPI_RC_ERR_FAILED, "Failed to update.");
            }
        }
    }
}

TEST(Monitor, StoringFunctionsThemselves)
{
    for (const Store &each : stores) {
        SCOPED_TRACE(each.method);
        seam.reset();
        const SetterAnswer good = call([&](char *errorText) { return each.setter(each.good, errorText); });
        EXPECT_EQ(good.result, 0);
        EXPECT_EQ(good.errorText, " ");
        EXPECT_CALLS(good, {withArgument(each.update, each.good)});
        seam.returns(each.update, 5);
        const SetterAnswer bad = call([&](char *errorText) { return each.setter(each.good, errorText); });
        EXPECT_EQ(bad.result, -1);
        EXPECT_EQ(bad.errorText, "Failed to update.");
    }
}

TEST(Monitor, StoresDoNotAskTheEngine)
{
    seam.status = BUSY;
    for (const Store &each : stores) {
        EXPECT_METHOD(store(each, each.good), succeeded, CMPI_RC_OK, "");
    }
}

// ---- methods: settings of the engine ----

TEST(Monitor, SetAutoSwitchSource)
{
    checkSettingMethod({
        .tested = &Monitor,
        .target = monitorPath(),
        .method = "SetAutoSwitchSource",
        .argument = "AutoSwitchSource",
        .kind = ArgumentIs::toggle,
        .missing = "Required argument AutoSwitchSource missing.",
        .steps = {.reply = "Failed to set the value to AutoSwitchSource."},
        .sentAtMin = "01 00 00 00  03 00  07 00  00 01 01  00 1A 00 00 00 00 00  ...",
        .sentAtMax = "01 00 00 00  03 00  07 00  00 01 01  00 1A 00 01 00 00 00  ...",
    });
    checkNoAdministratorNeeded(Monitor, monitorPath(), "SetAutoSwitchSource", {{"AutoSwitchSource", "TRUE"}});
    EXPECT_METHOD(invoke(Monitor, monitorPath(), "SetAutoSwitchSource", {{"AutoSwitchSource", "yes"}}),
                  failed, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.");
}

TEST(Monitor, SetRecalibrationAlarmDuration)
{
    checkSettingMethod({
        .tested = &Monitor,
        .target = monitorPath(),
        .method = "SetRecalibrationAlarmDuration",
        .argument = "RecalibrationAlarmDuration",
        .kind = ArgumentIs::leadingDecimal,
        .min = 1,
        .max = 1000,
        .missing = "Required argument RecalibrationAlarmDuration missing",
        .range = "Invalid input value range. Valid values are between 1 and 1000.",
        .steps = {.reply = "Failed to perform the RecalibrationAlarmDuration operation."},
        .sentAtMin = "01 00 00 00  03 00  07 00  00 01 10  00 B7 00 01 00 00 00  ...",
        .sentAtMax = "01 00 00 00  03 00  07 00  00 01 10  00 B7 00 E8 03 00 00  ...",
        .administrator = true,
    });
    checkAdministratorOnly(Monitor, monitorPath(), "SetRecalibrationAlarmDuration",
                           {{"RecalibrationAlarmDuration", "500"}});
    for (const char *text : {"0", "1001", "none", "-1"}) {
        EXPECT_METHOD(invoke(Monitor, monitorPath(), "SetRecalibrationAlarmDuration",
                             {{"RecalibrationAlarmDuration", text}}, "admin"),
                      failed, CMPI_RC_ERR_INVALID_PARAMETER,
                      "Invalid input value range. Valid values are between 1 and 1000.");
    }
}

TEST(Monitor, SetRecalibrationAlarmDurationAsksForTheRange)
{
    const Answer answer = invoke(Monitor, monitorPath(), "SetRecalibrationAlarmDuration",
                                 {{"RecalibrationAlarmDuration", "77"}}, "admin");
    EXPECT_CALLS(answer,
                 {"GetMoinitorInfo()", "IsAdminUser(admin)", "ValidateInputArgs(77, 1, 1000)",
                  "GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)", "SendStatusMessagetoSource(100)",
                  "SpearEngineMessageQueueCreate(3)", "RecvMessageFromSource(103)"});
}

TEST(Monitor, SetSoftPowerState)
{
    const std::string powerOff = "01 00 00 00  03 00  07 00  00 01 10  00 B4 00 01 00 00 00  ...";
    const std::string range = "Invalid input value range. Valid values are between 0 and 1.";
    const auto set = [](const Value &value) {
        return invoke(Monitor, monitorPath(), "SetSoftPowerState", {{"SoftPowerState", value}});
    };
    // Text that is no number is 0 too.
    for (const char *text : {"0", " 0", "0x", "-0", "off", " "}) {
        SCOPED_TRACE(text);
        const Answer answer = set(text);
        EXPECT_METHOD(answer, succeeded, CMPI_RC_OK, "");
        EXPECT_SENT(answer, {powerOff});
    }
    for (const char *text : {"1", " 1", "1x", "001"}) {
        SCOPED_TRACE(text);
        const Answer answer = set(text);
        EXPECT_METHOD(answer, failed, CMPI_RC_ERR_NOT_SUPPORTED, "SetSoftPowerState");
        EXPECT_SENT(answer, {});
    }
    for (const char *text :
         {"2", "-1", "4294967296", "4294967297", "18446744073709551616", "-4294967296", "65536"}) {
        SCOPED_TRACE(text);
        const Answer answer = set(text);
        EXPECT_METHOD(answer, failed, CMPI_RC_ERR_INVALID_PARAMETER, range);
        EXPECT_SENT(answer, {});
    }
    checkStringArgument(Monitor, monitorPath(), "SetSoftPowerState", "SoftPowerState",
                        "Required argument SoftPowerState missing", {}, noUser());
    checkNoAdministratorNeeded(Monitor, monitorPath(), "SetSoftPowerState", {{"SoftPowerState", "0"}});
    seam.returns("ValidateInputArgs", -1);
    EXPECT_METHOD(set("1"), failed, CMPI_RC_ERR_INVALID_PARAMETER, range);
}

TEST(Monitor, FactoryReset)
{
    const Answer answer = invoke(Monitor, monitorPath(), "FactoryReset");
    EXPECT_METHOD(answer, succeeded, CMPI_RC_OK, "");
    EXPECT_SENT(answer, {"01 00 00 00  03 00  07 00  00 01 0B  00 8C 00 00 00 00 00  ..."});
    checkNoAdministratorNeeded(Monitor, monitorPath(), "FactoryReset", {});
    EXPECT_METHOD(invoke(Monitor, monitorPath(), "FactoryReset", {{"Anything", "at all"}}), succeeded,
                  CMPI_RC_OK, "");
}

TEST(Monitor, SettingsThatTheEngineDoesNotTake)
{
    struct {
        const char *method;
        Entries arguments;
        const char *reply;
    } const calls[] = {
        {"SetSoftPowerState", {{"SoftPowerState", "0"}}, "Failed to perform the softpowerstate operation."},
        {"FactoryReset", {}, "Failed to set the value to DisplayLuminance."},
        {"SetActiveColorSpace",
         {{"ColorSpace",
           reference(path("ZT_Marovelton_ColorSpace", {{"InstanceID", "ZT:Marovelton_ColorSpace:1"}}))}},
         "Failed to set the value to ActiveColorSpace."},
        {"SetSelectedVideoInput",
         {{"VideoInput",
           reference(path("ZT_Marovelton_VideoInput", {{"InstanceID", "ZT:Marovelton_VideoInput:1"}}))}},
         "Failed to set the value to video input."},
    };
    for (const auto &each : calls) {
        SCOPED_TRACE(each.method);
        checkFailuresOfSend([&] { return invoke(Monitor, monitorPath(), each.method, each.arguments); },
                            {.reply = each.reply});
    }
}

TEST(Monitor, SettingFunctionsThemselves)
{
    checkSender([](char *errorText) { return setAutoSwitchSource(1, errorText); },
                "01 00 00 00  03 00  07 00  00 01 01  00 1A 00 01 00 00 00  00 00 00 00 00 00 00"
                "  00 00 00 00 00 00 00  00 00 00 00 00 00 00  00",
                {.reply = "Failed to set the value to AutoSwitchSource."});
    checkSender([](char *errorText) { return SetActiveColorSpace(6, errorText); },
                "01 00 00 00  03 00  07 00  00 01 00  00 01 00 06 00 00 00  00 00 00 00 00 00 00"
                "  00 00 00 00 00 00 00  00 00 00 00 00 00 00  00",
                {.reply = "Failed to set the value to ActiveColorSpace."});
    checkSender([](char *errorText) { return SetSelectedVideoInput(2, errorText); },
                "01 00 00 00  03 00  07 00  00 01 01  00 19 00 02 00 00 00  00 00 00 00 00 00 00"
                "  00 00 00 00 00 00 00  00 00 00 00 00 00 00  00",
                {.reply = "Failed to set the value to video input."});
    checkSender([](char *errorText) { return DoRecalibrationAlarmDuration(1000, errorText); },
                "01 00 00 00  03 00  07 00  00 01 10  00 B7 00 E8 03 00 00  00 00 00 00 00 00 00"
                "  00 00 00 00 00 00 00  00 00 00 00 00 00 00  00",
                {.reply = "Failed to perform the RecalibrationAlarmDuration operation."});
    checkSender([](char *errorText) { return DoSoftPowerState(0, errorText); },
                "01 00 00 00  03 00  07 00  00 01 10  00 B4 00 01 00 00 00  00 00 00 00 00 00 00"
                "  00 00 00 00 00 00 00  00 00 00 00 00 00 00  00",
                {.reply = "Failed to perform the softpowerstate operation."});
    checkSender([](char *errorText) { return FactoryReset(errorText); },
                "01 00 00 00  03 00  07 00  00 01 0B  00 8C 00 00 00 00 00  00 00 00 00 00 00 00"
                "  00 00 00 00 00 00 00  00 00 00 00 00 00 00  00",
                {.reply = "Failed to set the value to DisplayLuminance."});
    // The low 16 bits travel.
    EXPECT_SENT(call([](char *errorText) { return setAutoSwitchSource(0x12345678, errorText); }),
                {"01 00 00 00  03 00  07 00  00 01 01  00 1A 00 78 56 00 00  ..."});
    EXPECT_SENT(call([](char *errorText) { return SetActiveColorSpace(-1, errorText); }),
                {"01 00 00 00  03 00  07 00  00 01 00  00 01 00 FF FF 00 00  ..."});
    // But the command to power off is 1, whatever the state.
    EXPECT_SENT(call([](char *errorText) { return DoSoftPowerState(1, errorText); }),
                {"01 00 00 00  03 00  07 00  00 01 10  00 B4 00 01 00 00 00  ..."});
    EXPECT_SENT(call([](char *errorText) { return DoSoftPowerState(7, errorText); }),
                {"01 00 00 00  03 00  07 00  00 01 10  00 B4 00 01 00 00 00  ..."});
}

// ---- methods: references ----

namespace
{

struct Choice {
    const char *method;
    const char *argument;
    const char *className;
    const char *otherClass;
    std::string instanceID; // without its number
    int count;
    const char *missing;
    const char *unreadableClass;
    const char *wrongClass;
    const char *range;
    std::string sent; // up to the value
};

const Choice choices[] = {
    {"SetActiveColorSpace", "ColorSpace", "ZT_Marovelton_ColorSpace", "ZT_Marovelton_VideoInput",
     "ZT:Marovelton_ColorSpace:", 7, "Required argument ColorSpace missing.",
     "Could not get classname of ColorSpaceInput", "Invalid classname for ColorSpaceInput",
     "Invalid input value range. Valid values are between 0 and 6.",
     "01 00 00 00  03 00  07 00  00 01 00  00 01 00 "},
    {"SetSelectedVideoInput", "VideoInput", "ZT_Marovelton_VideoInput", "ZT_Marovelton_ColorSpace",
     "ZT:Marovelton_VideoInput:", 3, "Required argument VideoInput missing.",
     "Could not get classname of VideoInput", "Invalid classname for VideoInput",
     "Invalid input value range. Valid values are between 0 and 2.",
     "01 00 00 00  03 00  07 00  00 01 01  00 19 00 "},
};

Path chosen(const Choice &choice, const std::string &instanceID)
{
    return path(choice.className, {{"InstanceID", instanceID}});
}

Answer choose(const Choice &choice, const Value &argument)
{
    return invoke(Monitor, monitorPath(), choice.method, {{choice.argument, argument}});
}

void expectChoiceRefused(const Choice &choice, const Value &argument, CMPIrc code, const std::string &text)
{
    const Answer answer = choose(choice, argument);
    EXPECT_METHOD(answer, failed, code, text);
    EXPECT_SENT(answer, {});
}

} // namespace

TEST(Monitor, ChoicesSendTheIndex)
{
    for (const Choice &choice : choices) {
        for (int number = 1; number <= choice.count; ++number) {
            SCOPED_TRACE(choice.instanceID + std::to_string(number));
            const std::string instanceID = choice.instanceID + std::to_string(number);
            const std::string golden = choice.sent + "0" + std::to_string(number - 1) + " 00 00 00  ...";
            for (const Value &key : {string(instanceID), chars(instanceID)}) {
                const Answer answer =
                    choose(choice, reference(path(choice.className, {{"InstanceID", key}})));
                EXPECT_METHOD(answer, succeeded, CMPI_RC_OK, "");
                EXPECT_SENT(answer, {golden});
            }
        }
        checkNoAdministratorNeeded(Monitor, monitorPath(), choice.method,
                                   {{choice.argument, reference(chosen(choice, choice.instanceID + "1"))}});
    }
}

TEST(Monitor, ChoicesCheckTheIndexOnceMore)
{
    for (const Choice &choice : choices) {
        const Value last = reference(chosen(choice, choice.instanceID + std::to_string(choice.count)));
        const Answer answer = choose(choice, last);
        const std::string index = std::to_string(choice.count - 1);
        EXPECT_CALLS(answer, {"GetMoinitorInfo()", "ValidateInputArgs(" + index + ", 0, " + index + ")",
                              "GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)",
                              "SendStatusMessagetoSource(100)", "SpearEngineMessageQueueCreate(3)",
                              "RecvMessageFromSource(103)"});
        seam.returns("ValidateInputArgs", -1);
        expectChoiceRefused(choice, last, CMPI_RC_ERR_INVALID_PARAMETER, choice.range);
        seam.returns("ValidateInputArgs", 0);
    }
}

TEST(Monitor, ChoicesHaveToBeReferences)
{
    for (const Choice &choice : choices) {
        SCOPED_TRACE(choice.method);
        for (const Value &missing :
             {absent(), readFails(CMPI_RC_ERR_NO_SUCH_PROPERTY), readFails(CMPI_RC_ERR_FAILED),
              notFoundState(CMPI_ref), notFoundState(CMPI_null), nullOf(CMPI_null), nullOf(CMPI_string),
              nullOf(CMPI_uint16)}) {
            SCOPED_TRACE(describe(missing));
            expectChoiceRefused(choice, missing, CMPI_RC_ERR_INVALID_PARAMETER, choice.missing);
        }
        const Path good = chosen(choice, choice.instanceID + "1");
        for (const Value &other :
             {string(choice.instanceID + "1"), chars(choice.instanceID + "1"), uint16(1), boolean(1),
              embedded(instance(good)), stringArray({choice.instanceID + "1"})}) {
            SCOPED_TRACE(describe(other));
            expectChoiceRefused(choice, other, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid type of parameter.");
        }
        for (const Value &null : {nullReference(), nullOf(CMPI_ref)}) {
            SCOPED_TRACE(describe(null));
            expectChoiceRefused(choice, null, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter.");
        }
    }
}

TEST(Monitor, ChoicesHaveToBeOfTheClass)
{
    for (const Choice &choice : choices) {
        SCOPED_TRACE(choice.method);
        Path good = chosen(choice, choice.instanceID + "1");
        for (const TextForm form : {TextForm::noString, TextForm::noCharacters, TextForm::noHandle}) {
            Path unreadable = good;
            unreadable.classNameForm = form;
            expectChoiceRefused(choice, reference(unreadable), CMPI_RC_ERR_FAILED, choice.unreadableClass);
        }
        std::string lowerCase = choice.className;
        lowerCase[0] = 'z';
        for (const std::string &name :
             {std::string(choice.otherClass), lowerCase, std::string(choice.className) + "2",
              std::string("ZT_Marovelton_"), std::string()}) {
            SCOPED_TRACE(name);
            expectChoiceRefused(choice, reference(good.ofClass(name)), CMPI_RC_ERR_INVALID_PARAMETER,
                                choice.wrongClass);
            // The class comes before the key.
            expectChoiceRefused(choice, reference(path(name)), CMPI_RC_ERR_INVALID_PARAMETER,
                                choice.wrongClass);
        }
    }
}

TEST(Monitor, ChoicesHaveToExist)
{
    for (const Choice &choice : choices) {
        SCOPED_TRACE(choice.method);
        const Path good = chosen(choice, choice.instanceID + "1");
        std::vector<NamedValue> missing = everyMissingString();
        missing.push_back({"a number", uint16(1)});
        for (const NamedValue &form : missing) {
            SCOPED_TRACE(form.name);
            expectChoiceRefused(choice, reference(good.with("InstanceID", form.value)),
                                CMPI_RC_ERR_INVALID_PARAMETER, "Could not get key of instance.");
        }
        std::string otherCase = choice.instanceID + "1";
        otherCase[0] = 'z';
        for (const std::string &wrong :
             {choice.instanceID + "0", choice.instanceID + std::to_string(choice.count + 1),
              choice.instanceID + "8", choice.instanceID, choice.instanceID + "01", choice.instanceID + "1 ",
              choice.instanceID + "11", choice.instanceID + "-1", otherCase, std::string(), std::string("1"),
              std::string(5000, 'x')}) {
            SCOPED_TRACE(wrong.substr(0, 80));
            expectChoiceRefused(choice, reference(good.with("InstanceID", wrong)),
                                CMPI_RC_ERR_INVALID_PARAMETER,
                                "This Input class does not exist (wrong InstanceID).");
        }
    }
}

TEST(Monitor, TracesOfChoices)
{
    EXPECT_EQ(choose(choices[0], reference(chosen(choices[0], "ZT:Marovelton_ColorSpace:3"))).trace,
              "inputClass is ZT_Marovelton_ColorSpace\n"
              "ColorSpaceInput is:ZT:Marovelton_ColorSpace:3\n");
    EXPECT_EQ(choose(choices[0], reference(chosen(choices[0], "other"))).trace,
              "inputClass is ZT_Marovelton_ColorSpace\n"
              "ColorSpaceInput is:other\n");
    EXPECT_EQ(choose(choices[1], reference(chosen(choices[1], "ZT:Marovelton_VideoInput:3"))).trace, "");
}

// ---- torture ----

TEST(Monitor, TortureOfReads)
{
    for (const Read &read : reads) {
        SCOPED_TRACE(read.name);
        // Where the keys cannot be seen in the instance they are set.
        checkTorture(read.run, {.harmless = {"getProperty"}});
        checkTorture(read.run, {.prepare = [] { setField(seam.monitor.DisplayName, ""); },
                                .harmless = {"getProperty"}});
    }
}

TEST(Monitor, TortureOfMethods)
{
    struct {
        const char *method;
        Entries arguments;
    } const calls[] = {
        {"SetAutoSwitchSource", {{"AutoSwitchSource", "true"}}},
        {"SetName", {{"Name", "Studio 8"}}},
        {"SetDeploymentLocation", {{"DeploymentLocation", "Grading room 3"}}},
        {"SetDeploymentDate", {{"DeploymentDate", "31/12/2026"}}},
        {"SetRecalibrationAlarmDuration", {{"RecalibrationAlarmDuration", "500"}}},
        {"SetActiveColorSpace",
         {{"ColorSpace", reference(chosen(choices[0], "ZT:Marovelton_ColorSpace:2"))}}},
        {"SetSelectedVideoInput",
         {{"VideoInput", reference(chosen(choices[1], "ZT:Marovelton_VideoInput:2"))}}},
        {"SetSoftPowerState", {{"SoftPowerState", "0"}}},
        {"FactoryReset", {}},
        // Calls that fail anyhow.
        {"Reboot", {}},
        {"SetSoftPowerState", {{"SoftPowerState", "1"}}},
        {"SetAutoSwitchSource", {}},
    };
    for (const auto &each : calls) {
        SCOPED_TRACE(each.method);
        checkTorture([&] { return invoke(Monitor, monitorPath(), each.method, each.arguments, "admin"); });
    }
}

TEST(Monitor, TortureOfTheRest)
{
    checkTorture([] { return create(Monitor, monitorPath(), instance(monitorPath())); });
    checkTorture([] { return modify(Monitor, monitorPath(), instance(monitorPath())); });
    checkTorture([] { return remove(Monitor, monitorPath()); });
    checkTorture([] { return query(Monitor, monitorPath(), "SELECT * FROM ZT_Marovelton_Monitor", "WQL"); });
}
