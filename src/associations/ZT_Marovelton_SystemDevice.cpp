// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_SystemDevice: ties the computer system that hosts the management controller, whose object
// another provider serves, to the monitor.

#include "associations/modules.h"

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_SystemDevice";
constexpr const char *_RefLeft = "GroupComponent";
constexpr const char *_RefLeftClass = "Linux_ComputerSystem";
constexpr const char *_RefRight = "PartComponent";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_Monitor"};

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_SystemDevice)
