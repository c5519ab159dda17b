// SPDX-License-Identifier: Apache-2.0
#include "frame/system_keys.h"

#include <cstdio>
#include <cstring>
#include <strings.h>

namespace frame
{

SystemName systemName(const MonitorInfo &info)
{
    SystemName name = {};
    if (info.DisplayName[0] != '\0') {
        memcpy(name.text, info.DisplayName, sizeof info.DisplayName);
    } else {
        char address[IP_ADDRESS_SIZE + 1] = {};
        GetIPAddress(address);
        address[IP_ADDRESS_SIZE] = '\0';
        copyText(name.text, sizeof name.text, address);
    }
    return name;
}

bool readSystemName(const CMPIBroker *broker, CMPIStatus *status, const char *failure, SystemName *name)
{
    MonitorInfo info = {};
    if (GetMoinitorInfo(&info) != 0) {
        return fail(broker, status, CMPI_RC_ERR_FAILED, failure);
    }
    *name = systemName(info);
    return true;
}

ObjectName::ObjectName(const char *format, const SystemName &system)
{
    snprintf(text, sizeof text, format, system.text);
}

void addSystemKeys(const CMPIObjectPath *path, std::span<const Key> keys, const SystemName &system)
{
    for (const Key &key : keys) {
        const bool ofSystem = strchr(key.value, '%') != nullptr;
        addKeys(path, {{key.name, ofSystem ? ObjectName(key.value, system).text : key.value}});
    }
}

CMPIObjectPath *makePathBySystemName(const CMPIBroker *broker, const char *className,
                                     const CMPIObjectPath *reference, std::span<const Key> keys,
                                     const char *failure, CMPIStatus *status)
{
    trace("--- %s makePath called\n", className);
    CMPIObjectPath *path = newPath(broker, className, reference, status);
    SystemName system;
    if (path && readSystemName(broker, status, failure, &system)) {
        addSystemKeys(path, keys, system);
    }
    return path;
}

bool checkSystemKeys(const CMPIBroker *broker, const CMPIObjectPath *path, const SystemKeyed &object,
                     CMPIStatus *status)
{
    SystemName system;
    if (!readSystemName(broker, status, "Could not get monitor information from database.", &system)) {
        return false;
    }
    const auto matches = [&](const char *key, const char *expected, const char *missing, const char *wrong) {
        const char *value = keyText(path, key);
        return (value && strcasecmp(value, expected) == 0) ||
               fail(broker, status, CMPI_RC_ERR_NOT_FOUND, value ? wrong : missing);
    };
    return (!object.nameFormat || matches("Name", ObjectName(object.nameFormat, system).text,
                                          "Invalid selectors(Could not get Name of instance.)",
                                          "This instance does not exist (wrong Name.)")) &&
           matches("SystemName", system.text, "Invalid selectors(Could not get systemName of instance.)",
                   "This instance does not exist (wrong SystemName).") &&
           matches("SystemCreationClassName", "Linux_ComputerSystem",
                   "Invalid selectors(Could not get SystemCreationClassName of instance.)",
                   "This class name does not exist (wrong SystemCreationClassName).") &&
           matches("CreationClassName", object.className,
                   "Invalid selectors(Could not get CreationClassName of instance.)",
                   "This class name does not exist (wrong CreationClassName).");
}

} // namespace frame
