// SPDX-License-Identifier: Apache-2.0
#include "frame/instance.h"

#include <cstdio>

namespace frame
{

InstanceBuilder::InstanceBuilder(const CMPIBroker *theBroker, const char *theClassName,
                                 const CMPIObjectPath *path, CMPIStatus *theStatus)
    : broker(theBroker), className(theClassName), status(theStatus), instance(nullptr)
{
    trace("--- %s makeInst) called\n", className);
    if (!path) {
        return;
    }
    instance = cmpi::newInstance(broker, path, status);
    static_cast<void>(require(!isNullObject(instance), "Create CMPIInstance failed."));
}

bool InstanceBuilder::require(bool ok, const char *text)
{
    if (!ok) {
        fail(broker, status, CMPI_RC_ERR_FAILED, text);
        instance = nullptr;
    }
    return ok;
}

bool InstanceBuilder::readSystemName(const char *failure, SystemName *name)
{
    if (!frame::readSystemName(broker, status, failure, name)) {
        instance = nullptr;
    }
    return instance != nullptr;
}

void InstanceBuilder::set(const char *name, const CMPIValue *value, CMPIType type)
{
    if (instance) {
        cmpi::setProperty(instance, name, value, type);
    }
}

void InstanceBuilder::boolean(const char *name, int value)
{
    CMPIValue data = {};
    data.boolean = static_cast<CMPIBoolean>(value);
    set(name, &data, CMPI_boolean);
}

void InstanceBuilder::uint16(const char *name, int value)
{
    CMPIValue data = {};
    data.uint16 = static_cast<CMPIUint16>(value);
    set(name, &data, CMPI_uint16);
}

void InstanceBuilder::real32(const char *name, float value)
{
    CMPIValue data = {};
    data.real32 = value;
    set(name, &data, CMPI_real32);
}

void InstanceBuilder::text(const char *name, const char *value)
{
    set(name, charsValue(value), CMPI_chars);
}

void InstanceBuilder::formatted(const char *name, const char *format, const char *value)
{
    char whole[100];
    snprintf(whole, sizeof whole, format, value);
    text(name, whole);
}

void InstanceBuilder::dateTime(const char *name, int64_t seconds)
{
    if (!instance) {
        return;
    }
    CMPIValue data = {};
    data.dateTime = cmpi::newDateTimeFromBinary(broker, seconds * 1000000, CMPIBoolean{0}, nullptr);
    // A date that the object manager cannot make stays null, the rest of the instance is right.
    if (data.dateTime) {
        set(name, &data, CMPI_dateTime);
    }
}

constexpr const char *arrayFailed = "Failed to initialize array.";

CMPIArray *InstanceBuilder::newArray(CMPICount size, CMPIType type)
{
    if (!instance) {
        return nullptr;
    }
    CMPIArray *array = cmpi::newArray(broker, size, type, status);
    return require(!isNullObject(array), arrayFailed) ? array : nullptr;
}

void InstanceBuilder::setElement(CMPIArray *array, CMPICount position, const CMPIValue &value, CMPIType type)
{
    static_cast<void>(
        require(cmpi::setElementAt(array, position, &value, type).rc == CMPI_RC_OK, arrayFailed));
}

void InstanceBuilder::uint16Array(const char *name, std::initializer_list<int> values)
{
    CMPIValue data = {};
    data.array = newArray(static_cast<CMPICount>(values.size()), CMPI_uint16);
    if (!data.array) {
        return;
    }
    CMPICount position = 0;
    for (const int value : values) {
        CMPIValue element = {};
        element.uint16 = static_cast<CMPIUint16>(value);
        setElement(data.array, position++, element, CMPI_uint16);
    }
    set(name, &data, CMPI_uint16A);
}

void InstanceBuilder::textArray(const char *name, const char *value)
{
    CMPIValue data = {};
    data.array = newArray(1, CMPI_string);
    if (!data.array) {
        return;
    }
    CMPIValue element = {};
    element.string = cmpi::newString(broker, value, nullptr);
    if (require(element.string != nullptr, arrayFailed)) {
        setElement(data.array, 0, element, CMPI_string);
    }
    set(name, &data, CMPI_stringA);
}

void InstanceBuilder::describe(const char *instanceID, const char *description)
{
    text("Caption", className);
    text("ElementName", className);
    text("InstanceID", instanceID);
    text("Description", description);
}

void InstanceBuilder::ownKeys(std::span<const Key> keys, const SystemName &system)
{
    CMPIStatus read = {CMPI_RC_OK, nullptr};
    const CMPIData data = instance ? cmpi::getProperty(instance, keys[0].name, &read) : CMPIData{};
    if (!instance || !isMissing(data, read)) {
        return;
    }
    for (const Key &key : keys) {
        formatted(key.name, key.value, system.text);
    }
}

CMPIInstance *InstanceBuilder::finish()
{
    trace("--- %s makeInst) exited\n", className);
    return instance;
}

} // namespace frame
