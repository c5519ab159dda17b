// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_HostedAccessPoint: ties the hosting computer system to its network connection.

#include "associations/modules.h"

namespace
{

const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_HostedAccessPoint";
constexpr const char *_RefLeft = "Antecedent";
constexpr const char *_RefLeftClass = "Linux_ComputerSystem";
constexpr const char *_RefRight = "Dependent";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_IPNetworkConnection"};

constexpr frame::AssociationClass association = {_ClassName, _RefLeft, _RefRight, _RefLeftClass,
                                                 _RefRightClass};

} // namespace

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_HostedAccessPoint, association)
