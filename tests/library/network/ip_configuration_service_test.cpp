// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_IPConfigurationService and ZT_Marovelton_IPNetworkConnection.

#include "network/modules.h"
#include "support/checks.h"

METHOD_CLASS(IPConfigurationService);
METHOD_CLASS(IPNetworkConnection);

namespace
{

Path system(const char *className, const char *name)
{
    return path(className, {{"CreationClassName", className},
                            {"Name", name},
                            {"SystemName", "Studio 7"},
                            {"SystemCreationClassName", "Linux_ComputerSystem"}});
}

Path service()
{
    return system("ZT_Marovelton_IPConfigurationService", "Studio 7-IPConfigurationService");
}

Path connection()
{
    return system("ZT_Marovelton_IPNetworkConnection", "Studio 7-IPNetworkConnection");
}

Path staticSetting()
{
    return path("ZT_Marovelton_ExtendedStaticIPAssignmentSettingData",
                {{"InstanceID", "ZT:Marovelton_ExtendedStaticIPAssignmentSettingData"}});
}

Path dhcpSetting()
{
    return path("ZT_Marovelton_DHCPSettingData", {{"InstanceID", "ZT:Marovelton_DHCPSettingData"}});
}

const char *const applyMethod = "ApplySettingToIPNetworkConnection";
const char *const staticMode = "01 00 00 00 03 00 07 00 00 01 04 00 56 00 01 00 ...";
const char *const dhcpMode = "01 00 00 00 03 00 07 00 00 01 04 00 56 00 00 00 ...";

struct Arguments {
    Value connection = reference(::connection());
    Value mode = "2";
    Value setting = reference(staticSetting());
};

Entries entries(const Arguments &arguments)
{
    return {{"IPNetworkConnection", arguments.connection},
            {"Mode", arguments.mode},
            {"SettingData", arguments.setting}};
}

Answer apply(const Arguments &arguments = {}, const User &user = "admin")
{
    return invoke(IPConfigurationService, service(), applyMethod, entries(arguments), user);
}

/** An application that is refused before anything is sent. */
void refused(const Arguments &arguments, CMPIrc rc, const char *message)
{
    const Answer answer = apply(arguments);
    EXPECT_METHOD(answer, uint32(1), rc, message);
    EXPECT_SENT(answer, {});
}

/** Remote management has to be enabled for a setting to be applied. */
class IPConfiguration : public testing::Test
{
  protected:
    void SetUp() override
    {
        seam.remote.RemoteManagementEnabled = 1;
    }
};

} // namespace

// ---- the objects ----

TEST_F(IPConfiguration, HasTheSkeletonOfAProvider)
{
    checkSkeleton(IPConfigurationService);
    checkSkeleton(IPNetworkConnection);
}

TEST_F(IPConfiguration, EnumeratesItsOnePath)
{
    checkPaths(IPConfigurationService, {service()}, {"GetMoinitorInfo()"});
    checkPaths(IPNetworkConnection, {connection()}, {"GetMoinitorInfo()"});
}

TEST_F(IPConfiguration, TheServiceHasAllItsProperties)
{
    const Answer answer = get(IPConfigurationService, service());
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_PROPERTIES(
        answer.instance(),
        {{"SystemCreationClassName", chars("Linux_ComputerSystem")},
         {"CreationClassName", chars("ZT_Marovelton_IPConfigurationService")},
         {"ElementName", chars("ZT_Marovelton_IPConfigurationService")},
         {"InstanceID", chars("ZT:Marovelton_IPConfigurationService")},
         {"Name", chars("Studio 7-IPConfigurationService")},
         {"Status", chars("OK")},
         {"SystemName", chars("Studio 7")},
         {"Description", chars("A class derived from CIM IPConfigurationService that represents the "
                               "single node container of the Display management.")},
         {"AvailableRequestedStates", uint16Array({2})}});
}

TEST_F(IPConfiguration, TheConnectionHasAllItsProperties)
{
    const Answer answer = enumerate(IPNetworkConnection, path("ZT_Marovelton_IPNetworkConnection"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_PROPERTIES(
        answer.instance(),
        {{"SystemCreationClassName", chars("Linux_ComputerSystem")},
         {"CreationClassName", chars("ZT_Marovelton_IPNetworkConnection")},
         {"ElementName", chars("ZT_Marovelton_IPNetworkConnection")},
         {"InstanceID", chars("ZT:Marovelton_IPNetworkConnection")},
         {"Name", chars("Studio 7-IPNetworkConnection")},
         {"Status", chars("OK")},
         {"SystemName", chars("Studio 7")},
         {"Description", chars("A class derived from CIM IPNetworkConnectiom that represents the "
                               "single node container of the Display management.")}});
}

TEST_F(IPConfiguration, TheObjectsAreKeyedToTheSystem)
{
    checkKeysOfGetInstance(IPConfigurationService, service(), namedSystemKeys(1));
    checkKeysOfGetInstance(IPNetworkConnection, connection(), namedSystemKeys(1));
    checkKeysOfMethod(IPConfigurationService, service(), applyMethod, entries({}), "admin",
                      namedSystemKeys(1));
}

TEST_F(IPConfiguration, APathWithoutTheRecordGoesOutWithoutKeys)
{
    seam.returns("GetMoinitorInfo", 1);
    for (const TestedClass *tested : {&IPConfigurationService, &IPNetworkConnection}) {
        const Answer answer = enumerateNames(*tested, path(tested->name));
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Could not get monitor information from database.");
        EXPECT_KEYS(answer.path(), {});
    }
}

TEST_F(IPConfiguration, TheObjectsTakeTheNameOfTheSystem)
{
    const auto expectNames = [](const TestedClass &tested, const std::string &system, const char *suffix) {
        const Path key = enumerateNames(tested, path(tested.name)).path();
        EXPECT_KEYS(key, {{"CreationClassName", chars(tested.name)},
                          {"Name", chars(system + suffix)},
                          {"SystemName", chars(system)},
                          {"SystemCreationClassName", chars("Linux_ComputerSystem")}});
        const Answer answer = get(tested, key);
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        const Instance found = answer.instance();
        EXPECT_EQ(*found.find("Name"), chars(system + suffix));
        EXPECT_EQ(*found.find("SystemName"), chars(system));
    };
    setField(seam.monitor.DisplayName, "");
    expectNames(IPConfigurationService, "192.0.2.17", "-IPConfigurationService");
    expectNames(IPNetworkConnection, "192.0.2.17", "-IPNetworkConnection");
    fillField(seam.monitor.DisplayName, 'd');
    expectNames(IPConfigurationService, "ddddddddddddddddddddddddd", "-IPConfigurationService");
    expectNames(IPNetworkConnection, "ddddddddddddddddddddddddd", "-IPNetworkConnection");
}

TEST_F(IPConfiguration, WithoutTheRecordNoKeyCanBeChecked)
{
    const char *const text = "Could not get monitor information from database.";
    seam.returns("GetMoinitorInfo", 1);
    for (const Answer &answer :
         {get(IPConfigurationService, service()), get(IPNetworkConnection, connection())}) {
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, text);
        EXPECT_EQ(answer.returned.size(), 0u);
    }
    const Answer answer = apply();
    EXPECT_METHOD(answer, uint32(1), CMPI_RC_ERR_FAILED, text);
    EXPECT_CALLS(answer, {"GetMoinitorInfo()"});
}

TEST_F(IPConfiguration, GetInstanceSaysThatTheInstanceCannotBeBuilt)
{
    seam.returnsAt("GetMoinitorInfo", 2, 1); // the keys take the record once, the instance takes it again
    for (const Answer &answer :
         {get(IPConfigurationService, service()), get(IPNetworkConnection, connection())}) {
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Couldn't build instance");
        EXPECT_EQ(answer.returned.size(), 0u);
    }
}

TEST_F(IPConfiguration, ABuilderNamesWhatFailed)
{
    const std::vector<RecordRead> records = {
        {"GetMoinitorInfo()", "Could not get monitor information from database."}};
    checkBuilders({.tested = &IPConfigurationService,
                   .reference = path("ZT_Marovelton_IPConfigurationService"),
                   .makePath = _makePath_ZT_Marovelton_IPConfigurationService,
                   .makeInst = _makeInst_ZT_Marovelton_IPConfigurationService,
                   .records = records,
                   .arrays = 1});
    checkBuilders({.tested = &IPNetworkConnection,
                   .reference = path("ZT_Marovelton_IPNetworkConnection"),
                   .makePath = _makePath_ZT_Marovelton_IPNetworkConnection,
                   .makeInst = _makeInst_ZT_Marovelton_IPNetworkConnection,
                   .records = records});
}

TEST_F(IPConfiguration, TheConnectionHasThePlaceholderMethod)
{
    checkPlaceholderMethod(IPNetworkConnection, connection(), CMPI_RC_ERR_NOT_SUPPORTED, uint32(1));
}

// ---- applying a setting ----

TEST_F(IPConfiguration, TheSettingDataChoosesTheMode)
{
    Answer answer = apply();
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(answer, {staticMode});
    answer = apply({.setting = reference(dhcpSetting())});
    EXPECT_METHOD(answer, uint32(0), CMPI_RC_OK, "");
    EXPECT_SENT(answer, {dhcpMode});
}

TEST_F(IPConfiguration, NoReplyIsAwaited)
{
    EXPECT_CALLS(apply(), {"GetMoinitorInfo()", "IsAdminUser(admin)", "GetRemoteManagementServerInfo()",
                           "GetMonitorStatus(0)", "SpearEngineMessageQueueCreate(0)",
                           "SendStatusMessagetoSource(100)"});
}

TEST_F(IPConfiguration, AnyModeIsTaken)
{
    for (const char *mode : {"99", "0", "-1", "x", " ", "32769"}) {
        EXPECT_SENT(apply({.mode = mode}), {staticMode});
    }
}

TEST_F(IPConfiguration, OnlyAdministratorsApply)
{
    checkAdministratorOnly(IPConfigurationService, service(), applyMethod, entries({}), CMPI_uint32, 1);
    EXPECT_NE(apply().trace.find("AccountSetInstance: requesting user is admin\n"), std::string::npos);
}

TEST_F(IPConfiguration, TheUserIsCheckedBeforeTheArguments)
{
    EXPECT_METHOD(invoke(IPConfigurationService, service(), applyMethod, {}, "operator"), uint32(1),
                  CMPI_RC_ERR_ACCESS_DENIED, "Operation not allowed for non-admin user credentials");
}

TEST_F(IPConfiguration, TheConnectionIsAReference)
{
    refused({.connection = absent()}, CMPI_RC_ERR_INVALID_PARAMETER,
            "Required argument IPNetworkConnection missing.");
    refused({.connection = readFails(CMPI_RC_ERR_NOT_FOUND)}, CMPI_RC_ERR_INVALID_PARAMETER,
            "Required argument IPNetworkConnection missing.");
    refused({.connection = "text"}, CMPI_RC_ERR_INVALID_PARAMETER,
            "Invalid type of parameter(IPNetworkConnection).");
    refused({.connection = nullReference()}, CMPI_RC_ERR_INVALID_PARAMETER,
            "Invalid parameter(IPNetworkConnection).");
    refused({.connection = nullOf(CMPI_ref)}, CMPI_RC_ERR_INVALID_PARAMETER,
            "Invalid parameter(IPNetworkConnection).");
    Path nameless = connection();
    nameless.classNameForm = TextForm::noString;
    refused({.connection = reference(nameless)}, CMPI_RC_ERR_FAILED,
            "Could not get classname of IPNetworkConnection");
}

TEST_F(IPConfiguration, TheConnectionsClassIsNotCompared)
{
    EXPECT_SENT(apply({.connection = reference(path("CIM_Anything"))}), {staticMode});
}

TEST_F(IPConfiguration, TheModeIsAStringThatIsNotEmpty)
{
    for (const NamedValue &missing : everyMissingString()) {
        refused({.mode = missing.value}, CMPI_RC_ERR_INVALID_PARAMETER, "Required argument Mode  missing.");
    }
    refused({.mode = uint16(2)}, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid type of parameter(Mode).");
    refused({.mode = ""}, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter. Mode Value is empty.");
}

TEST_F(IPConfiguration, TheSettingDataIsAReferenceToOneOfTwoObjects)
{
    refused({.setting = absent()}, CMPI_RC_ERR_INVALID_PARAMETER, "Required argument SettingData missing.");
    refused({.setting = "text"}, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid type of parameter(SettingData).");
    refused({.setting = nullReference()}, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter(SettingData).");
    refused({.setting = nullOf(CMPI_ref)}, CMPI_RC_ERR_INVALID_PARAMETER, "Invalid parameter(SettingData).");
    Path nameless = staticSetting();
    nameless.classNameForm = TextForm::noCharacters;
    refused({.setting = reference(nameless)}, CMPI_RC_ERR_FAILED, "Could not get classname of SettingData");

    for (const char *other : {"ZT_Marovelton_IPAssignmentSettingData", "zt_marovelton_dhcpsettingdata", ""}) {
        refused({.setting = reference(dhcpSetting().ofClass(other))}, CMPI_RC_ERR_INVALID_PARAMETER,
                "Invalid classname for SettingData");
    }

    for (const NamedValue &missing : everyMissingString()) {
        refused({.setting = reference(staticSetting().with("InstanceID", missing.value))},
                CMPI_RC_ERR_INVALID_PARAMETER,
                "Could not get key of instance(ZT_Marovelton_ExtendedStaticIPAssignmentSettingData).");
        refused({.setting = reference(dhcpSetting().with("InstanceID", missing.value))},
                CMPI_RC_ERR_INVALID_PARAMETER,
                "Could not get key of instance(ZT_Marovelton_DHCPSettingData).");
    }
    for (const char *id :
         {"ZT:Marovelton_DHCPSettingData", "zt:marovelton_extendedstaticipassignmentsettingdata"}) {
        refused({.setting = reference(staticSetting().with("InstanceID", id))}, CMPI_RC_ERR_INVALID_PARAMETER,
                "This Input class does not exist (wrong InstanceID).");
    }
    refused({.setting = reference(
                 dhcpSetting().with("InstanceID", "ZT:Marovelton_ExtendedStaticIPAssignmentSettingData"))},
            CMPI_RC_ERR_INVALID_PARAMETER, "This Input class does not exist (wrong InstanceID).");
}

TEST_F(IPConfiguration, TheArgumentsAreCheckedInTheirOrder)
{
    refused({.connection = "text", .mode = "", .setting = absent()}, CMPI_RC_ERR_INVALID_PARAMETER,
            "Invalid type of parameter(IPNetworkConnection).");
    refused({.mode = "", .setting = absent()}, CMPI_RC_ERR_INVALID_PARAMETER,
            "Invalid parameter. Mode Value is empty.");
}

TEST_F(IPConfiguration, RemoteManagementHasToBeEnabled)
{
    seam.remote.RemoteManagementEnabled = 0;
    refused({}, CMPI_RC_ERR_FAILED, "Remote management status is disabled.");
    seam.remote.RemoteManagementEnabled = 2; // anything but zero
    EXPECT_SENT(apply(), {staticMode});
    seam.returns("GetRemoteManagementServerInfo", 1);
    refused({}, CMPI_RC_ERR_FAILED, "Failed to get remote management info.");
}

TEST_F(IPConfiguration, TheFirstCheckThatFailsDecides)
{
    const Value wrong = reference(dhcpSetting().with("InstanceID", "wrong"));
    seam.returns("GetRemoteManagementServerInfo", 1);
    refused({.setting = wrong}, CMPI_RC_ERR_INVALID_PARAMETER,
            "This Input class does not exist (wrong InstanceID).");
    seam.returns("GetRemoteManagementServerInfo", 0);
    seam.remote.RemoteManagementEnabled = 0;
    seam.status = BUSY;
    refused({}, CMPI_RC_ERR_FAILED, "Remote management status is disabled.");
}

TEST_F(IPConfiguration, EachStepOfTheSendMayFail)
{
    seam.status = BUSY;
    refused({}, CMPI_RC_ERR_FAILED, "Device is Busy. Please try after some time.");
    for (const int status : {2, -1, static_cast<int>(FREE)}) { // only BUSY is busy
        seam.status = status;
        EXPECT_SENT(apply(), {staticMode});
    }
    seam.returns("SpearEngineMessageQueueCreate", -1);
    refused({}, CMPI_RC_ERR_FAILED, "Unable to create a message queue for sending message.");
    seam.returns("SpearEngineMessageQueueCreate", 5); // only -1 is a failure
    EXPECT_METHOD(apply(), uint32(0), CMPI_RC_OK, "");
    seam.returns("SpearEngineMessageQueueCreate", 0);
    seam.returns("SendStatusMessagetoSource", -1);
    EXPECT_METHOD(apply(), uint32(1), CMPI_RC_ERR_FAILED, "Unable to send value to SPEAr.");
    seam.returns("SendStatusMessagetoSource", 5);
    EXPECT_METHOD(apply(), uint32(0), CMPI_RC_OK, "");
}

// ---- other methods ----

TEST_F(IPConfiguration, RequestStateChangeIsNotSupported)
{
    EXPECT_METHOD(invoke(IPConfigurationService, service(), "RequestStateChange", {}, noUser()), uint32(1),
                  CMPI_RC_ERR_NOT_SUPPORTED, "RequestStateChange");
}

TEST_F(IPConfiguration, MethodNamesHaveTheirCase)
{
    checkUnknownMethods(IPConfigurationService, service(),
                        {"applysettingtoipnetworkconnection", "requeststatechange", "StartService"},
                        CMPI_RC_ERR_NOT_FOUND, uint32(1));
}

TEST_F(IPConfiguration, AnotherClassIsRefused)
{
    checkOtherClass(IPConfigurationService, service(), applyMethod, entries({}), "admin",
                    CMPI_RC_ERR_NOT_FOUND, "Invalid class name", uint32(1));
}

// ---- the modes of the settings association ----

TEST_F(IPConfiguration, ModesMapToCurrentAndNext)
{
    struct {
        int mode, isCurrent, isNext;
    } const known[] = {{0, 1, 1}, {1, 1, 1}, {2, 0, 1},     {3, 2, 2},
                       {4, 2, 2}, {5, 0, 2}, {32768, 1, 0}, {32769, 2, 0}};
    for (const auto &row : known) {
        int isCurrent = 77;
        int isNext = 77;
        EXPECT_EQ(mode_to_iscurrent_isnext(row.mode, &isCurrent, &isNext), 1) << row.mode;
        EXPECT_EQ(isCurrent, row.isCurrent) << row.mode;
        EXPECT_EQ(isNext, row.isNext) << row.mode;
    }
    for (const int mode : {-1, 6, 100, 32767, 32770, 65536, -2147483647 - 1, 2147483647}) {
        int isCurrent = 77;
        int isNext = 78;
        EXPECT_EQ(mode_to_iscurrent_isnext(mode, &isCurrent, &isNext), 0) << mode;
        EXPECT_EQ(isCurrent, 77);
        EXPECT_EQ(isNext, 78);
    }
}

// ---- torture ----

TEST_F(IPConfiguration, EveryCallMayFail)
{
    checkTortureOfReads(IPConfigurationService, service());
    checkTortureOfReads(IPNetworkConnection, connection());
    checkTorture([] { return apply(); }, {.prepare = [] { seam.remote.RemoteManagementEnabled = 1; }});
}
