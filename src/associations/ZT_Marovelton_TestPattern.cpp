// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_TestPattern: ties the test-pattern generator to the monitor.

#include "associations/modules.h"

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_TestPattern";
constexpr const char *_RefLeft = "TestPatternGenerator";
constexpr const char *_RefLeftClass = "ZT_Marovelton_TestPatternGenerator";
constexpr const char *_RefRight = "Monitor";
constexpr const char *_RefRightClass[] = {"ZT_Marovelton_Monitor"};

STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(ZT_Marovelton_TestPattern)
STAMP_MODIFY_NOT_SUPPORTED(ZT_Marovelton_TestPattern, SetInstance)
