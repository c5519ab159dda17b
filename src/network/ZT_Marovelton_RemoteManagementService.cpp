// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_RemoteManagementService: the embedded web server used for remote management, one object.

#include "network/modules.h"
#include "network/network_objects.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_RemoteManagementService";

constexpr SwitchedService service = {
    .keyed = {_ClassName, "%s-RemoteManagementService"},
    .instanceID = "ZT:Marovelton_RemoteManagementService",
    .enabled = &RemoteManagementServer::RemoteManagementEnabled,
    .showsIdentify = false,
};

int SetRemoteManagementEnabledState(int requestedState, char *errorText)
{
    return sendServiceState(WEBSERVER_STATUS, requestedState, errorText);
}

CMPIObjectPath *_makePath_ZT_Marovelton_RemoteManagementService(const CMPIObjectPath *reference,
                                                                CMPIStatus *status)
{
    return makeServicePath(_broker, service, reference, status);
}

CMPIInstance *_makeInst_ZT_Marovelton_RemoteManagementService(const CMPIObjectPath *reference,
                                                              CMPIStatus *status)
{
    return makeServiceInst(_broker, service, reference, status);
}

// ---- methods ----

static int requestState(int requestedState, char *errorText)
{
    return requestServiceState(service, requestedState, SetRemoteManagementEnabledState, errorText);
}

constexpr Method methods[] = {
    {.name = "RequestStateChange",
     .administrator = true,
     .argument = {leadingInteger, "RequestedState", "Required argument RequestedState missing."},
     .range = {2, 3, "Invalid input value range. Valid values are 2 and 3"},
     .set = requestState},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_RemoteManagementService, .systemKeys = &service.keyed,
                                   .methods = methods, .compareMethodNames = strcasecmp,
                                   .refusals = {.wrongClass = nullptr})
