// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_Management: ties the display-management switches to the monitor.

#include "associations/modules.h"

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_Management";
constexpr const char *_RefLeft = "DisplayManagement";
constexpr const char *_RefLeftClass = "ZT_Marovelton_DisplayManagement";
constexpr const char *_RefRight = "Monitor";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_Monitor"};

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_Management)
STAMP_MODIFY_NOT_SUPPORTED(ZT_Marovelton_Management, SetInstance)
