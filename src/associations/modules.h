// SPDX-License-Identifier: Apache-2.0
// The operations of the association classes. Those of the monitor's components name their references after
// the component, not by role.
#ifndef ASSOCIATIONS_MODULES_H
#define ASSOCIATIONS_MODULES_H

#include "frame/stamp.h"

DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_Button);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_ColorModel);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_ElementSettingData);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_HostedAccessPoint);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_ImageAdjustmentModel);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_InputSource);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_Management);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_OnScreenDisplay);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_OrderedComponent);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_PIPFunctionality);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_ProvidesEndpoint);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_SAPSAPDependency);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_SystemDevice);
DECLARE_ASSOCIATION_PROVIDER(ZT_Marovelton_TestPattern);

INSTANCE_OPERATION(ZT_Marovelton_Button, SetInstance, const CMPIInstance *, const char **);
INSTANCE_OPERATION(ZT_Marovelton_ColorModel, SetInstance, const CMPIInstance *, const char **);
INSTANCE_OPERATION(ZT_Marovelton_ImageAdjustmentModel, SetInstance, const CMPIInstance *, const char **);
INSTANCE_OPERATION(ZT_Marovelton_InputSource, SetInstance, const CMPIInstance *, const char **);
INSTANCE_OPERATION(ZT_Marovelton_Management, SetInstance, const CMPIInstance *, const char **);
INSTANCE_OPERATION(ZT_Marovelton_OnScreenDisplay, SetInstance, const CMPIInstance *, const char **);
INSTANCE_OPERATION(ZT_Marovelton_PIPFunctionality, SetInstance, const CMPIInstance *, const char **);
INSTANCE_OPERATION(ZT_Marovelton_TestPattern, SetInstance, const CMPIInstance *, const char **);

#endif
