// SPDX-License-Identifier: Apache-2.0
// The four classes of IP setting data.

#include "network/modules.h"
#include "support/checks.h"

METHOD_CLASS(ExtendedStaticIPAssignmentSettingData);
METHOD_CLASS(DHCPSettingData);
METHOD_CLASS(IPAssignmentSettingData);
METHOD_CLASS(IPVersionSettingData);

namespace
{

Path byInstanceID(const char *className, const char *instanceID)
{
    return path(className, {{"InstanceID", instanceID}});
}

struct Setting {
    const TestedClass &tested;
    const char *instanceID; // that GetInstance asks for
    const char *pathID;     // that the path carries
};

const Setting settings[] = {
    {ExtendedStaticIPAssignmentSettingData, "ZT:Marovelton_ExtendedStaticIPAssignmentSettingData",
     "ZT:Marovelton_ExtendedStaticIPAssignmentSettingData"},
    {DHCPSettingData, "ZT:Marovelton_DHCPSettingData", "ZT:Marovelton_DHCPSettingData"},
    {IPAssignmentSettingData, "ZT:Marovelton_IPAssignmentSettingData",
     "ZT:Marovelton_IPAssignmentSettingData"},
    {IPVersionSettingData, "ZT:Marovelton_IPVersionSettingData", "ZT_Marovelton_IPVersionSettingData"},
};

Path staticPath()
{
    return byInstanceID("ZT_Marovelton_ExtendedStaticIPAssignmentSettingData",
                        "ZT:Marovelton_ExtendedStaticIPAssignmentSettingData");
}

/** A new static configuration as clients send it. */
struct Addresses {
    Value address = stringArray({"192.168.7.20"});
    Value mask = stringArray({"255.255.255.0"});
    Value gateway = stringArray({"192.168.7.1"});
};

Instance given(const Addresses &addresses)
{
    return instance(staticPath(), {{"IPAddresses", addresses.address},
                                   {"SubnetMasks", addresses.mask},
                                   {"GatewayAddresses", addresses.gateway}});
}

Answer modifyStatic(const Addresses &addresses = {}, const User &user = "admin")
{
    return modify(ExtendedStaticIPAssignmentSettingData, staticPath(), given(addresses), user);
}

// type 1, command 3, source 7, sequence 0, count 4, group 4; then 86 = 1, and 87, 88, 89 with entry type 1
// and their octets, first octet first
const char *const staticConfiguration = "01 00 00 00 03 00 07 00 00 04 04 "
                                        "00 56 00 01 00 00 00 "
                                        "01 57 00 C0 A8 07 14 "
                                        "01 58 00 FF FF FF 00 "
                                        "01 59 00 C0 A8 07 01 "
                                        "00";

void refused(const Addresses &addresses, const char *message)
{
    const Answer answer = modifyStatic(addresses);
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, message);
    EXPECT_SENT(answer, {});
}

/** Every way in which an array property can be without a first element. */
std::vector<NamedValue> everyMissingArray()
{
    Value nullElement = stringArray({"x"});
    nullElement.elements = {nullOf(CMPI_string)};
    Value noString = stringArray({"x"});
    noString.elements = {stringOf(TextForm::noString)};
    return {
        {"absent", absent()},
        {"null array", nullOf(CMPI_stringA)},
        {"not found", notFoundState(CMPI_stringA)},
        {"read fails", readFails(CMPI_RC_ERR_NO_SUCH_PROPERTY)},
        {"empty", stringArray({})},
        {"null element", nullElement},
        {"element without a string", noString},
        {"a string", "192.168.7.20"},
        {"numbers", uint16Array({1, 2})},
    };
}

} // namespace

// ---- the skeleton, the paths and the keys ----

TEST(IPSettingData, HasTheSkeletonOfAProvider)
{
    checkSkeleton(ExtendedStaticIPAssignmentSettingData, true);
    checkSkeleton(DHCPSettingData);
    checkSkeleton(IPAssignmentSettingData);
    checkSkeleton(IPVersionSettingData);
}

TEST(IPSettingData, HasThePlaceholderMethod)
{
    for (const Setting &setting : settings) {
        checkPlaceholderMethod(setting.tested, byInstanceID(setting.tested.name, setting.instanceID),
                               CMPI_RC_ERR_NOT_SUPPORTED, uint32(1));
    }
}

TEST(IPSettingData, EnumeratesItsOnePath)
{
    for (const Setting &setting : settings) {
        checkPaths(setting.tested, {byInstanceID(setting.tested.name, setting.pathID)});
    }
}

TEST(IPSettingData, GetInstanceAsksForItsKey)
{
    for (const Setting &setting : settings) {
        checkKeysOfGetInstance(setting.tested, byInstanceID(setting.tested.name, setting.instanceID),
                               instanceIDOfReads());
    }
}

TEST(IPSettingData, TheIPVersionRefusesTheKeyOfItsOwnPath)
{
    const Path own = enumerateNames(IPVersionSettingData, path("ZT_Marovelton_IPVersionSettingData")).path();
    EXPECT_STATUS(get(IPVersionSettingData, own), CMPI_RC_ERR_NOT_FOUND,
                  "This class name does not exist (wrong InstanceID).");
}

// ---- the instances ----

TEST(IPSettingData, TheStaticSettingHasAllItsProperties)
{
    setField(seam.remote.IPv4Address, "10.1.2.3");
    setField(seam.remote.IPv4Subnet, "255.255.0.0");
    setField(seam.remote.IPv4Gateway, "10.1.0.1");
    const Answer answer = get(ExtendedStaticIPAssignmentSettingData, staticPath());
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_PROPERTIES(answer.instance(),
                      {{"CreationClassName", chars("ZT_Marovelton_ExtendedStaticIPAssignmentSettingData")},
                       {"Name", chars("Studio 7-ExtendedStaticIPAssignmentSettingData")},
                       {"Status", chars("NULL")},
                       {"Caption", chars("ZT_Marovelton_ExtendedStaticIPAssignmentSettingData")},
                       {"Description", chars(" ")},
                       {"InstanceID", chars("ZT:Marovelton_ExtendedStaticIPAssignmentSettingData")},
                       {"ChangeableType", uint16(2)},
                       {"GatewayAddresses", stringArray({"10.1.0.1"})},
                       {"IPAddresses", stringArray({"10.1.2.3"})},
                       {"SubnetMasks", stringArray({"255.255.0.0"})},
                       {"AddressOrigin", uint16(3)},
                       {"ProtocolIFType", uint16(4096)},
                       {"ConfigurationName", chars("Studio 7-IPConfigurationMode")}});
    EXPECT_CALLS(answer, {"GetRemoteManagementServerInfo()", "GetMoinitorInfo()"});
}

TEST(IPSettingData, AddressesMayFillTheirWidth)
{
    const std::string address = fillField(seam.remote.IPv4Address, '1');
    const std::string mask = fillField(seam.remote.IPv4Subnet, '2');
    const std::string gateway = fillField(seam.remote.IPv4Gateway, '3');
    const Instance setting = get(ExtendedStaticIPAssignmentSettingData, staticPath()).instance();
    EXPECT_EQ(*setting.find("IPAddresses"), stringArray({address}));
    EXPECT_EQ(*setting.find("SubnetMasks"), stringArray({mask}));
    EXPECT_EQ(*setting.find("GatewayAddresses"), stringArray({gateway}));
}

TEST(IPSettingData, TheDHCPSettingHasAllItsProperties)
{
    const Answer answer = enumerate(DHCPSettingData, path("ZT_Marovelton_DHCPSettingData"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_PROPERTIES(
        answer.instance(),
        {{"CreationClassName", chars("ZT_Marovelton_DHCPSettingData")},
         {"Name", chars("Studio 7-DHCPSettingData")},
         {"ConfigurationName", chars("Studio 7-IPConfigurationMode")},
         {"Status", chars("OK")},
         {"AddressOrigin", uint16(4)},
         {"ProtocolIFType", uint16(4096)},
         {"InstanceID", chars("ZT:Marovelton_DHCPSettingData")},
         {"Caption", chars("ZT_Marovelton_DHCPSettingData")},
         {"Description", chars("A class derived from CIM DHCPSettingData that represents the single "
                               "node container of the Display Management.")},
         {"ChangeableType", uint16(0)}});
    EXPECT_CALLS(answer, {"GetMoinitorInfo()"});
}

TEST(IPSettingData, TheAccumulatedSettingHasAllItsProperties)
{
    const Answer answer = enumerate(IPAssignmentSettingData, path("ZT_Marovelton_IPAssignmentSettingData"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_PROPERTIES(answer.instance(), {{"ConfigurationName", chars("Studio 7-IPConfigurationAccumulator")},
                                          {"InstanceID", chars("ZT:Marovelton_IPAssignmentSettingData")},
                                          {"AddressOrigin", uint16(11)},
                                          {"ProtocolIFType", uint16(4096)},
                                          {"ChangeableType", uint16(0)}});
    EXPECT_CALLS(answer, {"GetMoinitorInfo()"});
}

TEST(IPSettingData, TakesTheNameOfTheSystem)
{
    const auto expectTexts = [](const std::string &system) {
        const struct {
            const TestedClass &tested;
            const char *property;
            const char *suffix;
        } texts[] = {
            {ExtendedStaticIPAssignmentSettingData, "Name", "-ExtendedStaticIPAssignmentSettingData"},
            {ExtendedStaticIPAssignmentSettingData, "ConfigurationName", "-IPConfigurationMode"},
            {DHCPSettingData, "Name", "-DHCPSettingData"},
            {DHCPSettingData, "ConfigurationName", "-IPConfigurationMode"},
            {IPAssignmentSettingData, "ConfigurationName", "-IPConfigurationAccumulator"},
        };
        for (const auto &[tested, property, suffix] : texts) {
            EXPECT_EQ(*enumerate(tested, path(tested.name)).instance().find(property), chars(system + suffix))
                << tested.name;
        }
    };
    setField(seam.monitor.DisplayName, "");
    expectTexts("192.0.2.17");
    fillField(seam.monitor.DisplayName, 'd');
    expectTexts("ddddddddddddddddddddddddd");
}

TEST(IPSettingData, TheIPVersionHasNoProperties)
{
    const Answer answer = get(IPVersionSettingData, byInstanceID("ZT_Marovelton_IPVersionSettingData",
                                                                 "ZT:Marovelton_IPVersionSettingData"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_PROPERTIES(answer.instance(), {});
    EXPECT_CALLS(answer, {});
}

TEST(IPSettingData, BuildersNameTheRecordThatFailed)
{
    const RecordRead monitor = {"GetMoinitorInfo()", "Could not get monitor information from database."};
    checkBuilders(
        {.tested = &ExtendedStaticIPAssignmentSettingData,
         .reference = staticPath(),
         .makePath = _makePath_ZT_Marovelton_ExtendedStaticIPAssignmentSettingData,
         .makeInst = _makeInst_ZT_Marovelton_ExtendedStaticIPAssignmentSettingData,
         .records = {{"GetRemoteManagementServerInfo()", "Failed to get remote management info."}, monitor},
         .arrays = 3});
    checkBuilders(
        {.tested = &DHCPSettingData,
         .reference = byInstanceID("ZT_Marovelton_DHCPSettingData", "ZT:Marovelton_DHCPSettingData"),
         .makePath = _makePath_ZT_Marovelton_DHCPSettingData,
         .makeInst = _makeInst_ZT_Marovelton_DHCPSettingData,
         .records = {monitor}});
    checkBuilders({.tested = &IPAssignmentSettingData,
                   .reference = byInstanceID("ZT_Marovelton_IPAssignmentSettingData",
                                             "ZT:Marovelton_IPAssignmentSettingData"),
                   .makePath = _makePath_ZT_Marovelton_IPAssignmentSettingData,
                   .makeInst = _makeInst_ZT_Marovelton_IPAssignmentSettingData,
                   .records = {monitor}});
}

TEST(IPSettingData, TheIPVersionFailsToBuild)
{
    checkBuildFailures(
        IPVersionSettingData,
        byInstanceID("ZT_Marovelton_IPVersionSettingData", "ZT:Marovelton_IPVersionSettingData"), {});
}

// ---- modifying the static setting ----

TEST(StaticIPModification, SendsTheModeAndThreeAddresses)
{
    const Answer answer = modifyStatic();
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_SENT(answer, {staticConfiguration});
    EXPECT_CALLS(answer, {"IsAdminUser(admin)", "GetRemoteManagementServerInfo()", "GetMonitorStatus(0)",
                          "ParseIPV4Address(192.168.7.20)", "ParseIPV4Address(255.255.255.0)",
                          "ParseIPV4Address(192.168.7.1)", "SpearEngineMessageQueueCreate(0)",
                          "SendStatusMessagetoSource(100)"});
}

TEST(StaticIPModification, PrintsNoUser)
{
    EXPECT_EQ(modifyStatic().trace.find("requesting user"), std::string::npos);
}

TEST(StaticIPModification, LooksNeitherAtThePathNorAtTheClass)
{
    const Answer answer =
        modify(ExtendedStaticIPAssignmentSettingData, path("CIM_Other", {{"InstanceID", "x"}}),
               instance(path("CIM_Other"), given({}).properties), "admin");
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_SENT(answer, {staticConfiguration});
}

TEST(StaticIPModification, TakesTheFirstElementOnly)
{
    EXPECT_SENT(modifyStatic({.address = stringArray({"192.168.7.20", "10.0.0.1", "not one"})}),
                {staticConfiguration});
}

TEST(StaticIPModification, StandsAllOtherPropertiesOfTheClass)
{
    Instance whole = given({});
    for (const char *name : {"Caption", "Status", "ConfigurationName", "ElementName"}) {
        whole.properties.push_back({name, nullOf(CMPI_string)});
    }
    whole.properties.push_back({"ProtocolIFType", uint16(4096)});
    whole.properties.push_back({"OperationalStatus", nullOf(CMPI_uint16A)});
    EXPECT_SENT(modify(ExtendedStaticIPAssignmentSettingData, staticPath(), whole, "admin"),
                {staticConfiguration});
}

TEST(StaticIPModification, EachAddressHasToBeThere)
{
    for (const NamedValue &missing : everyMissingArray()) {
        SCOPED_TRACE(missing.name);
        refused({.address = missing.value}, "Could not get IPAddresses");
        refused({.mask = missing.value}, "Could not get SubnetMasks");
        refused({.gateway = missing.value}, "Could not get GatewayAddresses");
    }
    refused({.address = absent(), .mask = absent(), .gateway = absent()}, "Could not get IPAddresses");
    refused({.mask = absent(), .gateway = absent()}, "Could not get SubnetMasks");
}

TEST(StaticIPModification, SendsWhateverTheParserLeaves)
{
    seam.returns("ParseIPV4Address(nonsense)", -1);
    seam.octetsOfRefused = {0xDE, 0xAD, 0xBE, 0xEF};
    const Answer answer = modifyStatic({.address = stringArray({"nonsense"})});
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_SENT(answer, {"01 00 00 00 03 00 07 00 00 04 04 "
                         "00 56 00 01 00 00 00 "
                         "01 57 00 DE AD BE EF "
                         "01 58 00 FF FF FF 00 "
                         "01 59 00 C0 A8 07 01 "
                         "00"});
}

TEST(StaticIPModification, NeedsAnAdministrator)
{
    for (const NamedValue &missing : everyMissingString()) {
        const Answer answer = modifyStatic({}, missing.value);
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Could not get user credentials") << missing.name;
        EXPECT_SENT(answer, {});
    }
    EXPECT_STATUS(modifyStatic({}, uint16(1)), CMPI_RC_ERR_FAILED, "Could not get user credentials");
    EXPECT_STATUS(modifyStatic({}, chars("admin")), CMPI_RC_OK, "");

    Answer answer = modifyStatic({}, "operator");
    EXPECT_STATUS(answer, CMPI_RC_ERR_ACCESS_DENIED, "Operation not allowed for non-admin user credentials");
    EXPECT_SENT(answer, {});
    answer = modifyStatic({}, "nobody");
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "The support library has failed.");
    EXPECT_SENT(answer, {});
    seam.errorText = "";
    EXPECT_STATUS(modifyStatic({}, "nobody"), CMPI_RC_ERR_FAILED, " ");
    seam.errorText = std::string(300, 'e'); // fills the buffer without a terminator
    EXPECT_STATUS(modifyStatic({}, "nobody"), CMPI_RC_ERR_FAILED, std::string(249, 'e'));
}

TEST(StaticIPModification, TheUserIsCheckedBeforeTheInstance)
{
    EXPECT_STATUS(modifyStatic({.address = absent()}, "operator"), CMPI_RC_ERR_ACCESS_DENIED,
                  "Operation not allowed for non-admin user credentials");
}

TEST(StaticIPModification, NeedsTheRecord)
{
    seam.returns("GetRemoteManagementServerInfo", 1);
    refused({.address = absent()}, "Failed to get remote management info.");
}

TEST(StaticIPModification, EachStepOfTheSendMayFail)
{
    seam.status = BUSY;
    refused({}, "Device is Busy. Please try after some time");
    refused({.gateway = absent()}, "Could not get GatewayAddresses");
    for (const int status : {2, -1, static_cast<int>(FREE)}) { // only BUSY is busy
        seam.status = status;
        EXPECT_SENT(modifyStatic(), {staticConfiguration});
    }
    for (const int result : {-1, 5}) { // here every result but 0 is a failure
        seam.returns("SpearEngineMessageQueueCreate", result);
        refused({}, "Unable to create a message queue for sending message.");
        seam.returns("SpearEngineMessageQueueCreate", 0);
        seam.returns("SendStatusMessagetoSource", result);
        EXPECT_STATUS(modifyStatic(), CMPI_RC_ERR_FAILED, "Unable to send value to SPEAr.");
        seam.returns("SendStatusMessagetoSource", 0);
    }
}

// ---- torture ----

TEST(IPSettingData, EveryCallMayFail)
{
    for (const Setting &setting : settings) {
        checkTortureOfReads(setting.tested, byInstanceID(setting.tested.name, setting.instanceID));
    }
    checkTorture([] { return modifyStatic(); }, {.harmless = {"ParseIPV4Address"}});
}
