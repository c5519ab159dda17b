// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_IPNetworkConnection: the monitor's network connection, one object.

#include "network/modules.h"
#include "network/network_objects.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_IPNetworkConnection";

constexpr NetworkObject connection = {
    .keyed = {_ClassName, "%s-IPNetworkConnection"},
    .instanceID = "ZT:Marovelton_IPNetworkConnection",
    .description =
        "A class derived from CIM IPNetworkConnectiom that represents the single node container of the Display management.",
};

CMPIObjectPath *_makePath_ZT_Marovelton_IPNetworkConnection(const CMPIObjectPath *reference,
                                                            CMPIStatus *status)
{
    return makeNetworkObjectPath(_broker, connection, reference, status);
}

CMPIInstance *_makeInst_ZT_Marovelton_IPNetworkConnection(const CMPIObjectPath *reference, CMPIStatus *status)
{
    return makeNetworkObjectInst(_broker, connection, reference, status).finish();
}

STAMP_INSTANCE_AND_PLACEHOLDER_PROVIDER(ZT_Marovelton_IPNetworkConnection, CMPI_RC_ERR_NOT_SUPPORTED,
                                        .systemKeys = &connection.keyed)
