// What the function tables of the encapsulated types share.
#ifndef HOST_CMPI_OBJECT_TABLES_H
#define HOST_CMPI_OBJECT_TABLES_H

#include "cmpi/objects.h"

namespace host
{

/** release: gives a clone back. An object that belongs to a call lives on until the call returns; to
 * release it is right, and does nothing. */
template <typename T>
CMPIStatus releaseObject(typename T::Cmpi *object)
{
    T *self = behind<T>(object);
    if (self == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    if (self->isClone) {
        delete self->arena; // the object itself lives in it
    }
    return makeStatus(CMPI_RC_OK);
}

/** clone: a copy that lives until it is released. */
template <typename T>
typename T::Cmpi *cloneObject(const typename T::Cmpi *object, CMPIStatus *status)
{
    const T *self = behind<T>(object);
    if (self == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    auto *arena = new Arena;
    T *copy = copyObject(*arena, *self);
    copy->isClone = true;
    setStatus(status, CMPI_RC_OK);
    return &copy->cmpi;
}

/** The object behind the pointer; fills the status either way. */
template <typename T>
T *checked(const typename T::Cmpi *object, CMPIStatus *status)
{
    T *self = behind<T>(object);
    setStatus(status, self != nullptr ? CMPI_RC_OK : CMPI_RC_ERR_INVALID_HANDLE);
    return self;
}

/** The value of a name, for getKey, getArg and getEntry. */
inline CMPIData namedData(ArenaList<NamedValue> *values, const char *name, CMPIrc absent, CMPIStatus *status)
{
    if (name == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullData(CMPI_null, CMPI_notFound);
    }
    const NamedValue *value = findValue(*values, name);
    if (value == nullptr) {
        setStatus(status, absent);
        return nullData(CMPI_null, CMPI_notFound);
    }
    return value->data;
}

/** The value at a place, for getKeyAt, getArgAt and getEntryAt. */
inline CMPIData dataAt(ArenaList<NamedValue> *values, CMPICount index, CMPIString **name, CMPIStatus *status)
{
    if (index >= values->size()) {
        setStatus(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        return nullData(CMPI_null, CMPI_notFound);
    }
    if (name != nullptr) {
        *name = &(*values)[index].name->cmpi;
    }
    return (*values)[index].data;
}

/** Takes a value in under a name, for addKey, addArg and addEntry. */
inline CMPIStatus addNamed(ArenaList<NamedValue> *values, const char *name, const CMPIValue *value,
                           CMPIType type)
{
    if (name == nullptr || *name == '\0') {
        return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
    }
    if (values->arena().exhausted()) {
        return makeStatus(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED);
    }
    CMPIData data = {};
    const CMPIrc code = takeValue(values->arena(), value, type, data);
    if (code == CMPI_RC_OK) {
        setValue(*values, name, data);
    }
    return makeStatus(code);
}

} // namespace host

#endif
