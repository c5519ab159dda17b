// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_HostedAccessPoint: ties the hosting computer system to its network connection.

#include "associations/modules.h"

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_HostedAccessPoint";
constexpr const char *_RefLeft = "Antecedent";
constexpr const char *_RefLeftClass = "Linux_ComputerSystem";
constexpr const char *_RefRight = "Dependent";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_IPNetworkConnection"};

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_HostedAccessPoint)
