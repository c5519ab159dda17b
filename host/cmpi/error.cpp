// SPDX-License-Identifier: Apache-2.0
// The function table of extended errors (CIM_Error).
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
    cloneObject<Error>,
    getPlain<&Error::type, CMPIErrorType>,
    getText<&Error::otherType>,
    getText<&Error::owner>,
    getText<&Error::messageId>,
    getText<&Error::message>,
    getPlain<&Error::severity, CMPIErrorSeverity>,
    getPlain<&Error::probableCause, CMPIErrorProbableCause>,
    getText<&Error::probableCauseDescription>,
    getArray<&Error::recommendedActions>,
    getText<&Error::source>,
    getPlain<&Error::sourceFormat, CMPIErrorSrcFormat>,
    getText<&Error::otherSourceFormat>,
    getPlain<&Error::statusCode, CMPIrc>,
    getText<&Error::statusCodeDescription>,
    getArray<&Error::messageArguments>,
    setPlain<&Error::type, CMPIErrorType>,
    setText<&Error::otherType>,
    setText<&Error::probableCauseDescription>,
    setArray<&Error::recommendedActions>,
    setText<&Error::source>,
    setPlain<&Error::sourceFormat, CMPIErrorSrcFormat>,
    setText<&Error::otherSourceFormat>,
    setText<&Error::statusCodeDescription>,
    setArray<&Error::messageArguments>,
};

} // namespace host
