// SPDX-License-Identifier: Apache-2.0
#include "network/network_objects.h"

#include <cstdio>

namespace
{

/** The value of `Name`. */
struct ObjectName {
    ObjectName(const char *format, const SystemName &system)
    {
        snprintf(text, sizeof text, format, system.text);
    }
    char text[100];
};

} // namespace

// ---- services ----

CMPIObjectPath *makeServicePath(const CMPIBroker *broker, const SwitchedService &service,
                                const CMPIObjectPath *reference, CMPIStatus *status)
{
    trace("--- %s makePath called\n", service.className);
    CMPIObjectPath *path = newPath(broker, service.className, reference, status);
    SystemName system;
    if (path && readSystemName(broker, status, "Failed to get monitor information from database.", &system))
        addKeys(path, {{"SystemName", system.text},
                       {"SystemCreationClassName", "Linux_ComputerSystem"},
                       {"CreationClassName", service.className},
                       {"Name", ObjectName(service.nameFormat, system).text}});
    return path;
}

CMPIInstance *makeServiceInst(const CMPIBroker *broker, const SwitchedService &service,
                              const CMPIObjectPath *reference, CMPIStatus *status)
{
    InstanceBuilder instance(broker, service.className, newPath(broker, service.className, reference, status),
                             status);
    RemoteManagementServer server = {};
    SystemName system;
    if (!instance ||
        !instance.require(GetRemoteManagementServerInfo(&server) == 0,
                          "Failed to get remote management info.") ||
        !instance.readSystemName("Failed to get monitor information from database.", &system))
        return nullptr;

    if (service.showsIdentify)
        instance.boolean("WSIdentifySupportEnabled", server.WSIdentifySupport);
    instance.uint16("EnabledState", server.*service.enabled == 1 ? 2 : 3);
    instance.text("SystemName", system.text);
    instance.text("SystemCreationClassName", "Linux_ComputerSystem");
    instance.text("CreationClassName", service.className);
    instance.formatted("Name", service.nameFormat, system.text);
    instance.text("Caption", service.className);
    instance.text("ElementName", service.className);
    instance.text("InstanceID", service.instanceID);
    instance.text(
        "Description",
        "A class derived from CIM Service that represents the single node container of the Display Management System.");
    instance.uint16Array("AvailableRequestedStates", {2, 3});
    return instance.finish();
}

int requestServiceState(const SwitchedService &service, int requestedState,
                        int (*setEnabledState)(int requestedState, char *errorText), char *errorText)
{
    RemoteManagementServer server = {};
    if (GetRemoteManagementServerInfo(&server) != 0) {
        copyText(errorText, ERROR_TEXT_SIZE, "Failed to get remote management info.");
        return -1;
    }
    const bool nothingToDo = server.*service.enabled == 1 && requestedState == 2;
    if (!nothingToDo)
        setEnabledState(requestedState, errorText);
    return 0;
}

int sendServiceState(int registerId, int requestedState, char *errorText)
{
    static constexpr ChannelTexts texts = {.reply = nullptr, .send = nullptr, .onlyMinusOneFails = true};
    return sendSetting(REMOTE_MGMENT_ID, {{registerId, requestedState == 2 ? 1 : 0}}, texts, errorText);
}

// ---- the network connection and its configuration service ----

CMPIObjectPath *makeNetworkObjectPath(const CMPIBroker *broker, const NetworkObject &object,
                                      const CMPIObjectPath *reference, CMPIStatus *status)
{
    trace("--- %s makePath called\n", object.className);
    CMPIObjectPath *path = newPath(broker, object.className, reference, status);
    SystemName system;
    if (path && readSystemName(broker, status, "Could not get monitor information from database.", &system))
        addKeys(path, {{"CreationClassName", object.className},
                       {"Name", ObjectName(object.nameFormat, system).text},
                       {"SystemName", system.text},
                       {"SystemCreationClassName", "Linux_ComputerSystem"}});
    return path;
}

InstanceBuilder makeNetworkObjectInst(const CMPIBroker *broker, const NetworkObject &object,
                                      const CMPIObjectPath *reference, CMPIStatus *status)
{
    InstanceBuilder instance(broker, object.className, newPath(broker, object.className, reference, status),
                             status);
    SystemName system;
    if (!instance || !instance.readSystemName("Could not get monitor information from database.", &system))
        return instance;
    instance.text("SystemCreationClassName", "Linux_ComputerSystem");
    instance.text("CreationClassName", object.className);
    instance.text("ElementName", object.className);
    instance.text("InstanceID", object.instanceID);
    instance.formatted("Name", object.nameFormat, system.text);
    instance.text("Status", "OK");
    instance.text("SystemName", system.text);
    instance.text("Description", object.description);
    return instance;
}
