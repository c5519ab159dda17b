// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_SAPSAPDependency: ties the network connection to its protocol endpoint. From either only the
// endpoint of the management interface is found; an enumeration lists all.

#include "associations/matchers.h"
#include "associations/modules.h"

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_SAPSAPDependency";
constexpr const char *_RefLeft = "Antecedent";
constexpr const char *_RefLeftClass = "ZT_Marovelton_IPNetworkConnection";
constexpr const char *_RefRight = "Dependent";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_IPProtocolEndpoint"};

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_SAPSAPDependency,
                                        .matcher = &associations::endpointOfConnection,
                                        .traces = &associations::endpointTraces)
