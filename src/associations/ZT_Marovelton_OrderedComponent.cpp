// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_OrderedComponent: ties the accumulated setting data to the setting data it is made of.

#include "associations/matchers.h"
#include "associations/modules.h"

namespace
{

const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_OrderedComponent";
constexpr const char *_RefLeft = "GroupComponent";
constexpr const char *_RefLeftClass = "ZT_Marovelton_IPAssignmentSettingData";
constexpr const char *_RefRight = "PartComponent";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_DHCPSettingData",
                                          "ZT_Marovelton_ExtendedStaticIPAssignmentSettingData"};

constexpr frame::AssociationClass association = {_ClassName,    _RefLeft,       _RefRight,
                                                 _RefLeftClass, _RefRightClass, &associations::sequence};

} // namespace

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_OrderedComponent, association)
