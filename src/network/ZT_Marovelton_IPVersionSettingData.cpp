// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_IPVersionSettingData: the IP version setting, one object without any property.

#include "network/modules.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_IPVersionSettingData";

CMPIObjectPath *_makePath_ZT_Marovelton_IPVersionSettingData(const CMPIObjectPath *reference,
                                                             CMPIStatus *status)
{
    // Clients know the path by this key, with an underscore, although GetInstance asks for the other.
    return makePathByInstanceID(_broker, _ClassName, reference, "ZT_Marovelton_IPVersionSettingData", status);
}

CMPIInstance *_makeInst_ZT_Marovelton_IPVersionSettingData(const CMPIObjectPath *reference,
                                                           CMPIStatus *status)
{
    return InstanceBuilder(_broker, _ClassName, newPath(_broker, _ClassName, reference, status), status)
        .finish();
}

STAMP_INSTANCE_AND_PLACEHOLDER_PROVIDER(ZT_Marovelton_IPVersionSettingData, CMPI_RC_ERR_NOT_SUPPORTED,
                                        .key = {.name = "InstanceID",
                                                .value = "ZT:Marovelton_IPVersionSettingData"})
