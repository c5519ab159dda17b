// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_ElementSettingData: ties the network connection to its settings, and tells which is the
// current one.

#include "associations/matchers.h"
#include "associations/modules.h"

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_ElementSettingData";
constexpr const char *_RefLeft = "ManagedElement";
constexpr const char *_RefLeftClass = "ZT_Marovelton_IPNetworkConnection";
constexpr const char *_RefRight = "SettingData";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_IPAssignmentSettingData",
                                          "ZT_Marovelton_DHCPSettingData",
                                          "ZT_Marovelton_ExtendedStaticIPAssignmentSettingData"};

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_ElementSettingData, .own = &associations::currentByEnds)
