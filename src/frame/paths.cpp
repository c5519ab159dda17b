// SPDX-License-Identifier: Apache-2.0
#include "frame/paths.h"

#include <cstdio>
#include <cstring>
#include <strings.h>

namespace frame
{

CMPIObjectPath *newPath(const CMPIBroker *broker, const char *className, const CMPIObjectPath *reference,
                        CMPIStatus *status, std::initializer_list<Key> keys)
{
    const char *nameSpace = textOf(cmpi::getNameSpace(reference, nullptr));
    CMPIObjectPath *path = nameSpace ? cmpi::newObjectPath(broker, nameSpace, className, status) : nullptr;
    if (isNullObject(path)) {
        fail(broker, status, CMPI_RC_ERR_FAILED, "Create CMPIObjectPath failed.");
        return nullptr;
    }
    addKeys(path, keys);
    return path;
}

void addKeys(const CMPIObjectPath *path, std::initializer_list<Key> keys)
{
    for (const Key &key : keys) {
        cmpi::addKey(path, key.name, charsValue(key.value), CMPI_chars);
    }
}

CMPIObjectPath *makePathByInstanceID(const CMPIBroker *broker, const char *className,
                                     const CMPIObjectPath *reference, const char *instanceID,
                                     CMPIStatus *status)
{
    trace("--- %s makePath called\n", className);
    return newPath(broker, className, reference, status, {{"InstanceID", instanceID}});
}

InstanceID::InstanceID(const char *format, int index)
{
    snprintf(text, sizeof text, format, index + 1);
}

int matchInstanceID(const char *instanceID, const char *format, int count, char *errorText, int *index)
{
    const size_t width = strlen(format) - strlen("%d");
    const char *digits = strncmp(instanceID, format, width) == 0 ? instanceID + width : "";
    const int number = digits[strspn(digits, "0123456789")] == 0 ? decimalValue(digits) : 0;
    if (*digits != '0' && number > 0 && number <= count) {
        *index = number - 1;
        return 0;
    }
    copyText(errorText, ERROR_TEXT_SIZE, "This class name does not exist (wrong InstanceID).");
    return -1;
}

const char *keyText(const CMPIObjectPath *path, const char *name)
{
    CMPIStatus read = {CMPI_RC_OK, nullptr};
    const CMPIData data = cmpi::getKey(path, name, &read);
    return textOf(data, read);
}

bool isOfClass(const CMPIObjectPath *path, const char *className)
{
    const char *name = textOf(cmpi::getClassName(path, nullptr));
    return name && strcasecmp(name, className) == 0;
}

} // namespace frame
