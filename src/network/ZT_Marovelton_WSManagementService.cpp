// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_WSManagementService: the WS-Management listener and its WS-Identify answer, one object.

#include "network/modules.h"
#include "network/network_objects.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_WSManagementService";

constexpr SwitchedService service = {
    .keyed = {_ClassName, "%s-WSManagementService"},
    .instanceID = "ZT:Marovelton_WSManagementService",
    .enabled = &RemoteManagementServer::WSManagementStatus,
    .showsIdentify = true,
};

int SetWSManagementEnabledState(int requestedState, char *errorText)
{
    return sendServiceState(WS_MANAGEMENT_STATUS, requestedState, errorText);
}

SETTING(SetWSIdentifyEnabledState, REMOTE_MGMENT_ID, WS_IDENTIFY_STATUS,
        .reply = "Failed to set the value to WSIdentifySuportEnabledState.",
        .busy = "Device is Busy. Please try after some Time.", .onlyMinusOneFails = true)

CMPIObjectPath *_makePath_ZT_Marovelton_WSManagementService(const CMPIObjectPath *reference,
                                                            CMPIStatus *status)
{
    return makeServicePath(_broker, service, reference, status);
}

CMPIInstance *_makeInst_ZT_Marovelton_WSManagementService(const CMPIObjectPath *reference, CMPIStatus *status)
{
    return makeServiceInst(_broker, service, reference, status);
}

// ---- methods ----

static int requestState(int requestedState, char *errorText)
{
    return requestServiceState(service, requestedState, SetWSManagementEnabledState, errorText);
}

constexpr Method methods[] = {
    {.name = "RequestStateChange",
     .administrator = true,
     // The text names the method where clients would expect the argument.
     .argument = {leadingInteger, "RequestedState", "Required argument RequestStateChange missing."},
     .range = {2, 3, "Invalid input value range. Valid values are 2 and 3"},
     .set = requestState},
    {.name = "SetWSIdentifyEnabledState",
     .administrator = true,
     .argument = {toggle, "WSIdentifySupportEnabled", "Required argument WSIdentifySupportEnabled missing."},
     .range = {0, 1, "Invalid input value range. Valid values are 0 and 1."},
     .set = SetWSIdentifyEnabledState},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_WSManagementService, .systemKeys = &service.keyed,
                                   .methods = methods, .compareMethodNames = strcasecmp,
                                   .refusals = {.wrongClass = nullptr})
