// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_ExtendedStaticIPAssignmentSettingData: the static address, mask and gateway of the management
// interface, one object, the only setting data that can be modified.

#include "network/modules.h"
#include "network/network_objects.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_ExtendedStaticIPAssignmentSettingData";
constexpr const char *_InstanceID = "ZT:Marovelton_ExtendedStaticIPAssignmentSettingData";

STAMP_PATH_BY_INSTANCE_ID(ZT_Marovelton_ExtendedStaticIPAssignmentSettingData)

CMPIInstance *_makeInst_ZT_Marovelton_ExtendedStaticIPAssignmentSettingData(const CMPIObjectPath *reference,
                                                                            CMPIStatus *status)
{
    InstanceBuilder instance(_broker, _ClassName, newPath(_broker, _ClassName, reference, status), status);
    RemoteManagementServer server = {};
    SystemName system;
    if (!instance ||
        !instance.require(GetRemoteManagementServerInfo(&server) == 0,
                          "Failed to get remote management info.") ||
        !instance.readSystemName("Could not get monitor information from database.", &system)) {
        return nullptr;
    }
    instance.text("CreationClassName", _ClassName);
    instance.formatted("Name", "%s-ExtendedStaticIPAssignmentSettingData", system.text);
    instance.text("Status", "NULL"); // the text: clients compare against it
    instance.text("Caption", _ClassName);
    instance.text("Description", " ");
    instance.text("InstanceID", _InstanceID);
    instance.uint16("ChangeableType", 2);
    instance.fieldArray("GatewayAddresses", server.IPv4Gateway);
    instance.fieldArray("IPAddresses", server.IPv4Address);
    instance.fieldArray("SubnetMasks", server.IPv4Subnet);
    instance.uint16("AddressOrigin", 3);     // static
    instance.uint16("ProtocolIFType", 4096); // IPv4
    instance.formatted("ConfigurationName", "%s-IPConfigurationMode", system.text);
    return instance.finish();
}

// ---- modification ----

/** The first element of an array property as text. Object managers hand an instance with all properties of
 * the class, null ones, empty arrays and null elements among them: each counts as not given. */
static const char *firstElement(const CMPIInstance *instance, const char *name)
{
    CMPIStatus read = {CMPI_RC_OK, nullptr};
    const CMPIData data = cmpi::getProperty(instance, name, &read);
    if (isMissing(data, read) || !(data.type & CMPI_ARRAY) || isNullObject(data.value.array) ||
        cmpi::getSize(data.value.array, nullptr) == 0) {
        return nullptr;
    }
    const CMPIData element = cmpi::getElementAt(data.value.array, 0, &read);
    return textOf(element, read);
}

/** An address of the new configuration: where it comes from, and the register that takes it. */
constexpr struct {
    const char *property;
    const char *missing;
    RegisterId registerId;
} addresses[] = {
    {"IPAddresses", "Could not get IPAddresses", IP_ADDRESS},
    {"SubnetMasks", "Could not get SubnetMasks", SUBNET_MASK},
    {"GatewayAddresses", "Could not get GatewayAddresses", GATEWAY},
};
constexpr int addressCount = std::size(addresses);
static_assert(1 + addressCount <= REGISTERS_PER_MESSAGE);

/** Applies the addresses of an instance as the new static configuration; false with the status set. */
static bool applyStaticConfiguration(const CMPIInstance *instance, CMPIStatus *status, char *errorText)
{
    static constexpr ChannelTexts texts = {
        .reply = nullptr,                                     // not awaited
        .busy = "Device is Busy. Please try after some time", // no full stop
    };
    const auto fails = [status](const char *text) { return fail(_broker, status, CMPI_RC_ERR_FAILED, text); };

    RemoteManagementServer server = {};
    if (GetRemoteManagementServerInfo(&server) != 0) {
        return fails("Failed to get remote management info.");
    }
    const char *values[addressCount];
    for (int i = 0; i < addressCount; ++i) {
        values[i] = firstElement(instance, addresses[i].property);
        if (!values[i]) {
            return fails(addresses[i].missing);
        }
    }
    if (engineIsBusy(texts.busy, errorText)) {
        return fails(errorText);
    }

    SpearMessage message = setRequest(REMOTE_MGMENT_ID, {{IP_CONFIGURATION_MODE, 1}});
    WebCmd &command = message.Data.Arg.sWebCmd;
    for (int i = 0; i < addressCount; ++i) {
        // A malformed address is sent as whatever octets the monitor's parser makes of it.
        unsigned char octets[4] = {};
        ParseIPV4Address(values[i], octets);
        RegisterDetails &entry = command.sRegdetails[command.Count++];
        entry.Type = 1;
        entry.Register = static_cast<uint8_t>(addresses[i].registerId);
        memcpy(entry.RegisterValue.DataValue, octets, sizeof octets);
    }
    return exchange(message, texts, errorText) == 0 || fails(errorText);
}

INSTANCE_OPERATION(ZT_Marovelton_ExtendedStaticIPAssignmentSettingData, ModifyInstance,
                   const CMPIInstance *instance, const char **)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    char errorText[ERROR_TEXT_SIZE] = " ";
    if (requireAdministrator(_broker, context, &status, errorText, false)) {
        applyStaticConfiguration(instance, &status, errorText);
    }
    return status;
}

STAMP_CLASS(ZT_Marovelton_ExtendedStaticIPAssignmentSettingData,
            .key = {.name = "InstanceID", .value = _InstanceID})
STAMP_PLACEHOLDER_METHOD(ZT_Marovelton_ExtendedStaticIPAssignmentSettingData, CMPI_RC_ERR_NOT_SUPPORTED)
