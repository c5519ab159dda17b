// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_DHCPSettingData: the setting that takes the IPv4 configuration from DHCP, one object.

#include "network/modules.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_DHCPSettingData";
constexpr const char *_InstanceID = "ZT:Marovelton_DHCPSettingData";

STAMP_PATH_BY_INSTANCE_ID(ZT_Marovelton_DHCPSettingData)

CMPIInstance *_makeInst_ZT_Marovelton_DHCPSettingData(const CMPIObjectPath *reference, CMPIStatus *status)
{
    InstanceBuilder instance(_broker, _ClassName, newPath(_broker, _ClassName, reference, status), status);
    SystemName system;
    if (!instance || !instance.readSystemName("Could not get monitor information from database.", &system)) {
        return nullptr;
    }
    instance.text("CreationClassName", _ClassName);
    instance.formatted("Name", "%s-DHCPSettingData", system.text);
    instance.formatted("ConfigurationName", "%s-IPConfigurationMode", system.text);
    instance.text("Status", "OK");
    instance.uint16("AddressOrigin", 4);     // DHCP
    instance.uint16("ProtocolIFType", 4096); // IPv4
    instance.text("InstanceID", _InstanceID);
    instance.text("Caption", _ClassName);
    instance.text(
        "Description",
        "A class derived from CIM DHCPSettingData that represents the single node container of the Display Management.");
    instance.uint16("ChangeableType", 0);
    return instance.finish();
}

STAMP_INSTANCE_AND_PLACEHOLDER_PROVIDER(ZT_Marovelton_DHCPSettingData, CMPI_RC_ERR_NOT_SUPPORTED,
                                        .key = {.name = "InstanceID", .value = _InstanceID})
