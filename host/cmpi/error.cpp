// SPDX-License-Identifier: Apache-2.0
// The function table of extended errors (CIM_Error).
#include "cmpi/guarded.h"
#include "cmpi/object_tables.h"

namespace host
{
namespace
{

template <auto member, typename T>
T getPlain(const CMPIError *error, CMPIStatus *status)
{
    const Error *self = checked<Error>(error, status);
    return self != nullptr ? self->*member : T{};
}

/** A text that is not set is null, with the status to say so. */
template <auto member>
CMPIString *getText(const CMPIError *error, CMPIStatus *status)
{
    const Error *self = checked<Error>(error, status);
    if (self == nullptr) {
        return nullptr;
    }
    String *text = self->*member;
    return text != nullptr ? &text->cmpi : nullptr;
}

template <auto member>
CMPIArray *getArray(const CMPIError *error, CMPIStatus *status)
{
    const Error *self = checked<Error>(error, status);
    if (self == nullptr) {
        return nullptr;
    }
    Array *array = self->*member;
    return array != nullptr ? &array->cmpi : nullptr;
}

template <auto member, typename T>
CMPIStatus setPlain(const CMPIError *error, T value)
{
    CMPIStatus status = {};
    if (Error *self = checked<Error>(error, &status); self != nullptr) {
        self->*member = value;
    }
    return status;
}

template <auto member>
CMPIStatus setText(const CMPIError *error, const char *text)
{
    CMPIStatus status = {};
    if (Error *self = checked<Error>(error, &status); self != nullptr) {
        self->*member = text != nullptr ? makeString(*self->arena, text) : nullptr;
    }
    return status;
}

template <auto member>
CMPIStatus setArray(const CMPIError *error, const CMPIArray *array)
{
    CMPIStatus status = {};
    if (Error *self = checked<Error>(error, &status); self != nullptr) {
        const Array *given = behind<Array>(array);
        if (given != nullptr && given->elementType != CMPI_string) {
            return makeStatus(CMPI_RC_ERR_TYPE_MISMATCH);
        }
        self->*member = given != nullptr ? copyObject(*self->arena, *given) : nullptr;
    }
    return status;
}

} // namespace

const CMPIErrorFT errorTable = {
    tableVersion,
    releaseObject<Error>,
    guarded<cloneObject<Error>>,
    getPlain<&Error::type, CMPIErrorType>,
    guarded<getText<&Error::otherType>>,
    guarded<getText<&Error::owner>>,
    guarded<getText<&Error::messageId>>,
    guarded<getText<&Error::message>>,
    getPlain<&Error::severity, CMPIErrorSeverity>,
    getPlain<&Error::probableCause, CMPIErrorProbableCause>,
    guarded<getText<&Error::probableCauseDescription>>,
    guarded<getArray<&Error::recommendedActions>>,
    guarded<getText<&Error::source>>,
    getPlain<&Error::sourceFormat, CMPIErrorSrcFormat>,
    guarded<getText<&Error::otherSourceFormat>>,
    getPlain<&Error::statusCode, CMPIrc>,
    guarded<getText<&Error::statusCodeDescription>>,
    guarded<getArray<&Error::messageArguments>>,
    guarded<setPlain<&Error::type, CMPIErrorType>>,
    guarded<setText<&Error::otherType>>,
    guarded<setText<&Error::probableCauseDescription>>,
    guarded<setArray<&Error::recommendedActions>>,
    guarded<setText<&Error::source>>,
    guarded<setPlain<&Error::sourceFormat, CMPIErrorSrcFormat>>,
    guarded<setText<&Error::otherSourceFormat>>,
    guarded<setText<&Error::statusCodeDescription>>,
    guarded<setArray<&Error::messageArguments>>,
};

} // namespace host
