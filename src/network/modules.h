// SPDX-License-Identifier: Apache-2.0
// What the modules of the network classes offer: builders, operations and setting functions. A setting
// function returns 0, or -1 with what failed in `errorText` (ERROR_TEXT_SIZE characters).
#ifndef NETWORK_MODULES_H
#define NETWORK_MODULES_H

#include "frame/stamp.h"
#include "network/ZT_Marovelton_IPProtocolEndpoint.h"

DECLARE_METHOD_PROVIDER(ZT_Marovelton_DHCPSettingData);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_ExtendedStaticIPAssignmentSettingData);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_IPAssignmentSettingData);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_IPConfigurationService);
/** Maps the CIM `Mode` of an apply request to the `IsCurrent` and `IsNext` answers (SettingsState) of the
 * settings association. Returns 1, or 0 with the outputs untouched for a mode that is not known. */
[[nodiscard]] int mode_to_iscurrent_isnext(int mode, int *isCurrent, int *isNext);

DECLARE_METHOD_PROVIDER(ZT_Marovelton_IPNetworkConnection);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_IPProtocolEndpoint, const cim_ipProtocolEndpoint *record);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_IPVersionSettingData);
[[nodiscard]] int SetRemoteManagementEnabledState(int requestedState, char *errorText);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_RemoteManagementService);
[[nodiscard]] int SetWSManagementEnabledState(int requestedState, char *errorText);
[[nodiscard]] int SetWSIdentifyEnabledState(int enabled, char *errorText);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_WSManagementService);

#endif
