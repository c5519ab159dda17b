// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_Button: ties the monitor to its function buttons and its bezel buttons.

#include "associations/modules.h"

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_Button";
constexpr const char *_RefLeft = "Antecedent";
constexpr const char *_RefLeftClass = "ZT_Marovelton_Monitor";
constexpr const char *_RefRight = "Dependent";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_FunctionButton", "ZT_Marovelton_BezelButton"};

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_Button)
STAMP_MODIFY_NOT_SUPPORTED(ZT_Marovelton_Button, SetInstance)
