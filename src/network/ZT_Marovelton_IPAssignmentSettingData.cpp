// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_IPAssignmentSettingData: the accumulated IPv4 configuration, one object.

#include "network/modules.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_IPAssignmentSettingData";
constexpr const char *_InstanceID = "ZT:Marovelton_IPAssignmentSettingData";

STAMP_PATH_BY_INSTANCE_ID(ZT_Marovelton_IPAssignmentSettingData)

CMPIInstance *_makeInst_ZT_Marovelton_IPAssignmentSettingData(const CMPIObjectPath *reference,
                                                              CMPIStatus *status)
{
    InstanceBuilder instance(_broker, _ClassName, newPath(_broker, _ClassName, reference, status), status);
    SystemName system;
    if (!instance || !instance.readSystemName("Could not get monitor information from database.", &system)) {
        return nullptr;
    }
    instance.formatted("ConfigurationName", "%s-IPConfigurationAccumulator", system.text);
    instance.text("InstanceID", _InstanceID);
    instance.uint16("AddressOrigin", 11);    // cumulative configuration
    instance.uint16("ProtocolIFType", 4096); // IPv4
    instance.uint16("ChangeableType", 0);
    return instance.finish();
}

STAMP_INSTANCE_AND_PLACEHOLDER_PROVIDER(ZT_Marovelton_IPAssignmentSettingData, CMPI_RC_ERR_NOT_SUPPORTED,
                                        .key = {.name = "InstanceID", .value = _InstanceID})
