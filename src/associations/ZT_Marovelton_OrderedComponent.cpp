// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_OrderedComponent: ties the accumulated setting data to the setting data it is made of.

#include "associations/matchers.h"
#include "associations/modules.h"

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_OrderedComponent";
constexpr const char *_RefLeft = "GroupComponent";
constexpr const char *_RefLeftClass = "ZT_Marovelton_IPAssignmentSettingData";
constexpr const char *_RefRight = "PartComponent";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_DHCPSettingData",
                                          "ZT_Marovelton_ExtendedStaticIPAssignmentSettingData"};

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_OrderedComponent, .own = &associations::sequence)
