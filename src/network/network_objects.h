// SPDX-License-Identifier: Apache-2.0
// What the network classes share: the objects that are keyed to the monitor's system name, and the values of
// the settings association.
#ifndef ZT_MAROVELTON_NETWORK_H
#define ZT_MAROVELTON_NETWORK_H

#include "frame/provider.h"

/** The answers of `IsCurrent` and `IsNext`. */
enum SettingsState { DONT_CHANGE = 0, YES = 1, NO = 2 };

/** The identifier of the setting data that a value of IP_CONFIGURATION_MODE applies, or null. */
const char *appliedSettingID(int mode);

/** A service that can be switched: the web server, the WS-Management listener. */
struct SwitchedService {
    frame::SystemKeyed keyed;
    const char *instanceID;
    int32_t RemoteManagementServer::*enabled;
    bool showsIdentify; // has WSIdentifySupportEnabled
};

[[nodiscard]] CMPIObjectPath *makeServicePath(const CMPIBroker *broker, const SwitchedService &service,
                                              const CMPIObjectPath *reference, CMPIStatus *status);
[[nodiscard]] CMPIInstance *makeServiceInst(const CMPIBroker *broker, const SwitchedService &service,
                                            const CMPIObjectPath *reference, CMPIStatus *status);

/** Hands a requested state, 2 enabled or 3 disabled, to `setEnabledState`, unless the service is enabled
 * already and shall be. The sender's result is not looked at: once the request is checked the method
 * succeeds. Returns 0, or -1 with `errorText` filled when the service's state cannot be read. */
[[nodiscard]] int requestServiceState(const SwitchedService &service, int requestedState,
                                      frame::Setting *setEnabledState, char *errorText);

/** Sends a service's new state, 2 enabled or 3 disabled, without waiting for the engine. Returns 0 when it
 * was handed over, whatever the send returned, else -1 with `errorText` filled. */
[[nodiscard]] int sendServiceState(int registerId, int requestedState, char *errorText);

/** The singleton that stands for the network connection or its configuration service. */
struct NetworkObject {
    frame::SystemKeyed keyed;
    const char *instanceID;
    const char *description;
};

[[nodiscard]] CMPIObjectPath *makeNetworkObjectPath(const CMPIBroker *broker, const NetworkObject &object,
                                                    const CMPIObjectPath *reference, CMPIStatus *status);
/** Starts the instance and sets all properties that both classes have; the builder has failed when it is
 * null. */
[[nodiscard]] frame::InstanceBuilder makeNetworkObjectInst(const CMPIBroker *broker,
                                                           const NetworkObject &object,
                                                           const CMPIObjectPath *reference,
                                                           CMPIStatus *status);

#endif
