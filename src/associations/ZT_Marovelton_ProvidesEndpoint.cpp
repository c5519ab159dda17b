// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_ProvidesEndpoint: ties the management services to the protocol endpoint through which they
// are reached. From a service or an endpoint only the endpoint of the management interface is found; an
// enumeration lists all.

#include "associations/matchers.h"
#include "associations/modules.h"

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_ProvidesEndpoint";
constexpr const char *_RefLeft = "Dependent";
constexpr const char *_RefLeftClass = "ZT_Marovelton_IPProtocolEndpoint";
constexpr const char *_RefRight = "Antecedent";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_RemoteManagementService",
                                          "ZT_Marovelton_WSManagementService"};

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_ProvidesEndpoint,
                                        .matcher = &associations::endpointOfServices,
                                        .traces = &associations::endpointTraces)
