// SPDX-License-Identifier: Apache-2.0
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

/** The functions that paths, arguments and contexts have for their named values. */
template <typename T, ArenaList<NamedValue> *T::*list, CMPIrc absent>
struct NamedValues {
    using Cmpi = typename T::Cmpi;

    static CMPIData get(const Cmpi *object, const char *name, CMPIStatus *status)
    {
        const T *self = checked<T>(object, status);
        if (self == nullptr) {
            return nullData(CMPI_null, CMPI_badValue);
        }
        const NamedValue *value = name != nullptr ? findValue(*(self->*list), name) : nullptr;
        if (value == nullptr) {
            setStatus(status, name != nullptr ? absent : CMPI_RC_ERR_INVALID_PARAMETER);
            return nullData(CMPI_null, CMPI_notFound);
        }
        return value->data;
    }

    static CMPIData getAt(const Cmpi *object, CMPICount index, CMPIString **name, CMPIStatus *status)
    {
        const T *self = checked<T>(object, status);
        if (self == nullptr) {
            return nullData(CMPI_null, CMPI_badValue);
        }
        ArenaList<NamedValue> &values = *(self->*list);
        if (index >= values.size()) {
            setStatus(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
            return nullData(CMPI_null, CMPI_notFound);
        }
        if (name != nullptr) {
            *name = &values[index].name->cmpi;
        }
        return values[index].data;
    }

    static CMPICount count(const Cmpi *object, CMPIStatus *status)
    {
        const T *self = checked<T>(object, status);
        return self != nullptr ? static_cast<CMPICount>((self->*list)->size()) : 0;
    }

    static CMPIStatus add(const Cmpi *object, const char *name, const CMPIValue *value, CMPIType type)
    {
        const T *self = behind<T>(object);
        if (self == nullptr) {
            return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
        }
        if (name == nullptr || *name == '\0') {
            return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
        }
        ArenaList<NamedValue> &values = *(self->*list);
        if (values.arena().exhausted()) {
            return makeStatus(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED);
        }
        CMPIData data = {};
        const CMPIrc code = takeValue(values.arena(), value, type, data);
        if (code == CMPI_RC_OK) {
            setValue(values, name, data);
        }
        return makeStatus(code);
    }
};

} // namespace host

#endif
