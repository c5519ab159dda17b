// SPDX-License-Identifier: Apache-2.0
// The function table of instances.
#include "cmpi/guarded.h"
#include "cmpi/object_tables.h"

namespace host
{
namespace
{

bool isVisible(const Instance &instance, std::size_t index)
{
    return instance.visible == nullptr || instance.visible->contains(index);
}

CMPIData getProperty(const CMPIInstance *instance, const char *name, CMPIStatus *status)
{
    const Instance *self = checked<Instance>(instance, status);
    if (self == nullptr) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    if (name == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullData(CMPI_null, CMPI_badValue);
    }
    const std::size_t index = self->klass->placeOf(name);
    if (index == cim::noProperty || !isVisible(*self, index)) {
        setStatus(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        return nullData(CMPI_null, CMPI_notFound);
    }
    return self->values[index];
}

CMPIData getPropertyAt(const CMPIInstance *instance, CMPICount place, CMPIString **name, CMPIStatus *status)
{
    const Instance *self = checked<Instance>(instance, status);
    if (self == nullptr) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    for (std::size_t index = 0; index < self->klass->properties.size(); ++index) {
        if (!isVisible(*self, index) || place-- != 0) {
            continue;
        }
        if (name != nullptr) {
            *name = &makeString(*self->arena, self->klass->properties[index].name)->cmpi;
        }
        return self->values[index];
    }
    setStatus(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    return nullData(CMPI_null, CMPI_notFound);
}

CMPICount getPropertyCount(const CMPIInstance *instance, CMPIStatus *status)
{
    const Instance *self = checked<Instance>(instance, status);
    if (self == nullptr) {
        return 0;
    }
    CMPICount count = 0;
    for (std::size_t index = 0; index < self->klass->properties.size(); ++index) {
        count += isVisible(*self, index) ? 1u : 0u;
    }
    return count;
}

/** The class definition decides: what it has not is no property, what is of another type does not fit. Text
 * may be given as CMPI_chars. */
CMPIStatus setPropertyOfInstance(const CMPIInstance *instance, const char *name, const CMPIValue *value,
                                 CMPIType type)
{
    Instance *self = behind<Instance>(instance);
    if (self == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    if (name == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    const std::size_t index = self->klass->placeAfter(self->lastSet, name);
    if (index == cim::noProperty) {
        return makeStatus(CMPI_RC_ERR_NO_SUCH_PROPERTY);
    }
    self->lastSet = index;
    const cim::PropertySlot &property = self->klass->slots[index];
    if (self->settable != nullptr && !property.isKey && !self->settable->contains(index)) {
        return makeStatus(CMPI_RC_OK); // as CMPI wants it of a filtered property
    }
    const CMPIType declared = property.cmpiCode;
    if (type == CMPI_null) {
        type = declared;
        value = nullptr;
    }
    if (storedType(type) != declared) {
        return makeStatus(CMPI_RC_ERR_TYPE_MISMATCH);
    }
    if (self->arena->exhausted()) {
        return makeStatus(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED);
    }
    CMPIData data = {};
    const CMPIrc code = takeValue(*self->arena, value, type, data);
    if (code == CMPI_RC_OK) {
        setProperty(*self, index, data);
    }
    return makeStatus(code);
}

CMPIStatus setPropertyWithOrigin(const CMPIInstance *instance, const char *name, const CMPIValue *value,
                                 CMPIType type, const char *)
{
    return setPropertyOfInstance(instance, name, value, type); // the origin is the class definition's
}

CMPIObjectPath *getObjectPath(const CMPIInstance *instance, CMPIStatus *status)
{
    Instance *self = checked<Instance>(instance, status);
    if (self == nullptr) {
        return nullptr;
    }
    completeKeys(*self);
    return &copyObject(*self->arena, *self->path)->cmpi;
}

CMPIStatus setPropertyFilter(const CMPIInstance *instance, const char **properties, const char **keys)
{
    Instance *self = behind<Instance>(instance);
    if (self == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    if (properties == nullptr) {
        self->settable = nullptr;
        return makeStatus(CMPI_RC_OK);
    }
    PropertySet *settable = makePropertySet(*self->arena, *self->klass, properties);
    if (keys != nullptr) {
        const PropertySet *more = makePropertySet(*self->arena, *self->klass, keys);
        for (std::size_t word = 0; word < settable->words; ++word) {
            settable->bits[word] |= more->bits[word];
        }
    }
    self->settable = settable;
    for (const std::size_t place : self->klass->defaults) { // nor has a filtered property the default
        if (!settable->contains(place) && !self->klass->properties[place].isKey) {
            self->values[place] = nullData(self->klass->properties[place].cmpiCode());
        }
    }
    return makeStatus(CMPI_RC_OK);
}

CMPIStatus setObjectPath(const CMPIInstance *instance, const CMPIObjectPath *path)
{
    Instance *self = behind<Instance>(instance);
    const Path *given = behind<Path>(path);
    if (self == nullptr || given == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    if (given->klass != self->klass) {
        return makeStatus(CMPI_RC_ERR_INVALID_CLASS);
    }
    self->path = copyObject(*self->arena, *given);
    for (const NamedValue &key : *self->path->keys) {
        const std::size_t index = self->klass->placeOf(key.name->view());
        if (index != cim::noProperty && key.data.type == self->klass->properties[index].cmpiCode()) {
            self->values[index] = copyData(*self->arena, key.data);
        }
    }
    return makeStatus(CMPI_RC_OK);
}

} // namespace

const CMPIInstanceFT instanceTable = {
    tableVersion,
    releaseObject<Instance>,
    guarded<cloneObject<Instance>>,
    guarded<getProperty>,
    guarded<getPropertyAt>,
    getPropertyCount,
    guarded<setPropertyOfInstance>,
    guarded<getObjectPath>,
    guarded<setPropertyFilter>,
    guarded<setObjectPath>,
    guarded<setPropertyWithOrigin>,
};

} // namespace host
