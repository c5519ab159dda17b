// SPDX-License-Identifier: Apache-2.0
#include "network/network_objects.h"

using namespace frame;

const char *appliedSettingID(int mode)
{
    return mode == 0   ? "ZT:Marovelton_DHCPSettingData"
           : mode == 1 ? "ZT:Marovelton_ExtendedStaticIPAssignmentSettingData"
                       : nullptr;
}

// ---- services ----

CMPIObjectPath *makeServicePath(const CMPIBroker *broker, const SwitchedService &service,
                                const CMPIObjectPath *reference, CMPIStatus *status)
{
    const Key keys[] = {{"SystemName", "%s"},
                        {"SystemCreationClassName", "Linux_ComputerSystem"},
                        {"CreationClassName", service.keyed.className},
                        {"Name", service.keyed.nameFormat}};
    return makePathBySystemName(broker, service.keyed.className, reference, keys,
                                "Failed to get monitor information from database.", status);
}

CMPIInstance *makeServiceInst(const CMPIBroker *broker, const SwitchedService &service,
                              const CMPIObjectPath *reference, CMPIStatus *status)
{
    InstanceBuilder instance(broker, service.keyed.className,
                             newPath(broker, service.keyed.className, reference, status), status);
    RemoteManagementServer server = {};
    SystemName system;
    if (!instance ||
        !instance.require(GetRemoteManagementServerInfo(&server) == 0,
                          "Failed to get remote management info.") ||
        !instance.readSystemName("Failed to get monitor information from database.", &system)) {
        return nullptr;
    }

    if (service.showsIdentify) {
        instance.boolean("WSIdentifySupportEnabled", server.WSIdentifySupport);
    }
    instance.uint16("EnabledState", server.*service.enabled == 1 ? 2 : 3);
    instance.text("SystemName", system.text);
    instance.text("SystemCreationClassName", "Linux_ComputerSystem");
    instance.text("CreationClassName", service.keyed.className);
    instance.formatted("Name", service.keyed.nameFormat, system.text);
    instance.describe(
        service.instanceID,
        "A class derived from CIM Service that represents the single node container of the Display Management System.");
    instance.uint16Array("AvailableRequestedStates", {2, 3});
    return instance.finish();
}

int requestServiceState(const SwitchedService &service, int requestedState, Setting *setEnabledState,
                        char *errorText)
{
    RemoteManagementServer server = {};
    if (GetRemoteManagementServerInfo(&server) != 0) {
        copyText(errorText, ERROR_TEXT_SIZE, "Failed to get remote management info.");
        return -1;
    }
    const bool nothingToDo = server.*service.enabled == 1 && requestedState == 2;
    if (!nothingToDo) {
        static_cast<void>(setEnabledState(requestedState, errorText));
    }
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
    const Key keys[] = {{"CreationClassName", object.keyed.className},
                        {"Name", object.keyed.nameFormat},
                        {"SystemName", "%s"},
                        {"SystemCreationClassName", "Linux_ComputerSystem"}};
    return makePathBySystemName(broker, object.keyed.className, reference, keys,
                                "Could not get monitor information from database.", status);
}

InstanceBuilder makeNetworkObjectInst(const CMPIBroker *broker, const NetworkObject &object,
                                      const CMPIObjectPath *reference, CMPIStatus *status)
{
    InstanceBuilder instance(broker, object.keyed.className,
                             newPath(broker, object.keyed.className, reference, status), status);
    SystemName system;
    if (!instance || !instance.readSystemName("Could not get monitor information from database.", &system)) {
        return instance;
    }
    instance.text("SystemCreationClassName", "Linux_ComputerSystem");
    instance.text("CreationClassName", object.keyed.className);
    instance.text("ElementName", object.keyed.className);
    instance.text("InstanceID", object.instanceID);
    instance.formatted("Name", object.keyed.nameFormat, system.text);
    instance.text("Status", "OK");
    instance.text("SystemName", system.text);
    instance.text("Description", object.description);
    return instance;
}
