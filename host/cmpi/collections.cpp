// SPDX-License-Identifier: Apache-2.0
// The function tables of arrays, arguments and enumerations.
#include "cmpi/guarded.h"
#include "cmpi/object_tables.h"

namespace host
{
namespace
{

// ------------------------------------------------------------------------------------------------- arrays

CMPICount getSize(const CMPIArray *array, CMPIStatus *status)
{
    const Array *self = checked<Array>(array, status);
    return self != nullptr ? self->size : 0;
}

CMPIType getSimpleType(const CMPIArray *array, CMPIStatus *status)
{
    const Array *self = checked<Array>(array, status);
    return self != nullptr ? self->elementType : static_cast<CMPIType>(CMPI_null);
}

CMPIData getElementAt(const CMPIArray *array, CMPICount index, CMPIStatus *status)
{
    const Array *self = checked<Array>(array, status);
    if (self == nullptr) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    if (index >= self->size) {
        setStatus(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        return nullData(CMPI_null, CMPI_notFound);
    }
    return self->elements[index];
}

CMPIStatus setElementAt(const CMPIArray *array, CMPICount index, const CMPIValue *value, CMPIType type)
{
    Array *self = behind<Array>(array);
    if (self == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    if (index >= self->size) {
        return makeStatus(CMPI_RC_ERR_NO_SUCH_PROPERTY);
    }
    if (type == CMPI_null) {
        self->elements[index] = nullData(self->elementType);
        return makeStatus(CMPI_RC_OK);
    }
    if (storedType(type) != self->elementType) {
        return makeStatus(CMPI_RC_ERR_TYPE_MISMATCH);
    }
    if (self->arena->exhausted()) {
        return makeStatus(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED);
    }
    CMPIData data = {};
    const CMPIrc code = takeValue(*self->arena, value, type, data);
    if (code == CMPI_RC_OK) {
        self->elements[index] = data;
    }
    return makeStatus(code);
}

// ---------------------------------------------------------------------------------------------- arguments

using Arguments = NamedValues<Args, &Args::values, CMPI_RC_ERR_NOT_FOUND>;

// ------------------------------------------------------------------------------------------- enumerations

CMPIData getNext(const CMPIEnumeration *enumeration, CMPIStatus *status)
{
    Enumeration *self = checked<Enumeration>(enumeration, status);
    if (self == nullptr) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    if (self->next >= self->elements->size()) {
        setStatus(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
        return nullData(CMPI_null, CMPI_notFound);
    }
    return (*self->elements)[self->next++];
}

CMPIBoolean hasNext(const CMPIEnumeration *enumeration, CMPIStatus *status)
{
    const Enumeration *self = checked<Enumeration>(enumeration, status);
    return self != nullptr && self->next < self->elements->size() ? 1 : 0;
}

CMPIArray *toArray(const CMPIEnumeration *enumeration, CMPIStatus *status)
{
    const Enumeration *self = checked<Enumeration>(enumeration, status);
    if (self == nullptr) {
        return nullptr;
    }
    const auto size = static_cast<CMPICount>(self->elements->size());
    Array *array = makeArray(*self->arena, self->elementType, size);
    for (CMPICount i = 0; i < size; ++i) {
        array->elements[i] = (*self->elements)[i];
    }
    return &array->cmpi;
}

} // namespace

const CMPIArrayFT arrayTable = {
    tableVersion,  releaseObject<Array>,  guarded<cloneObject<Array>>, getSize,
    getSimpleType, guarded<getElementAt>, guarded<setElementAt>,
};

const CMPIArgsFT argsTable = {
    tableVersion,
    releaseObject<Args>,
    guarded<cloneObject<Args>>,
    guarded<Arguments::add>,
    guarded<Arguments::get>,
    guarded<Arguments::getAt>,
    Arguments::count,
};

const CMPIEnumerationFT enumerationTable = {
    tableVersion, releaseObject<Enumeration>, guarded<cloneObject<Enumeration>>, guarded<getNext>,
    hasNext,      guarded<toArray>,
};

} // namespace host
