// SPDX-License-Identifier: Apache-2.0
// The function tables of strings, dates, contexts, results and select expressions.
#include "cmpi/guarded.h"
#include "cmpi/object_tables.h"

namespace host
{
namespace
{

// ------------------------------------------------------------------------------------------------ strings

const char *getCharPtr(const CMPIString *string, CMPIStatus *status)
{
    const String *self = checked<String>(string, status);
    return self != nullptr ? self->text : nullptr;
}

// -------------------------------------------------------------------------------------------------- dates

CMPIUint64 getBinaryFormat(const CMPIDateTime *dateTime, CMPIStatus *status)
{
    const DateTime *self = checked<DateTime>(dateTime, status);
    return self != nullptr ? self->microseconds : 0;
}

CMPIString *getStringFormat(const CMPIDateTime *dateTime, CMPIStatus *status)
{
    const DateTime *self = checked<DateTime>(dateTime, status);
    return self != nullptr ? &makeString(*self->arena, self->text)->cmpi : nullptr;
}

CMPIBoolean isInterval(const CMPIDateTime *dateTime, CMPIStatus *status)
{
    const DateTime *self = checked<DateTime>(dateTime, status);
    return self != nullptr && self->isInterval ? 1 : 0;
}

// ----------------------------------------------------------------------------------------------- contexts

using Entries = NamedValues<Context, &Context::entries, CMPI_RC_ERR_NO_SUCH_PROPERTY>;

// ------------------------------------------------------------------------------------------------ results

CMPIStatus releaseResult(CMPIResult *result)
{
    CMPIStatus status = {};
    checked<Result>(result, &status); // a result always belongs to the call
    return status;
}

CMPIResult *cloneResult(const CMPIResult *result, CMPIStatus *status)
{
    if (checked<Result>(result, status) != nullptr) {
        setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED); // there is one client, and it gets one answer
    }
    return nullptr;
}

CMPIStatus returnData(const CMPIResult *result, const CMPIValue *value, CMPIType type)
{
    const Result *self = behind<Result>(result);
    return makeStatus(self != nullptr ? self->sink->takeData(value, type) : CMPI_RC_ERR_INVALID_HANDLE);
}

CMPIStatus returnInstance(const CMPIResult *result, const CMPIInstance *instance)
{
    const Result *self = behind<Result>(result);
    const Instance *given = behind<Instance>(instance);
    if (self == nullptr || given == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    return makeStatus(self->sink->takeInstance(*given));
}

CMPIStatus returnObjectPath(const CMPIResult *result, const CMPIObjectPath *path)
{
    const Result *self = behind<Result>(result);
    const Path *given = behind<Path>(path);
    if (self == nullptr || given == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    return makeStatus(self->sink->takePath(*given));
}

CMPIStatus returnDone(const CMPIResult *result)
{
    const Result *self = behind<Result>(result);
    if (self == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    self->sink->done();
    return makeStatus(CMPI_RC_OK);
}

CMPIStatus returnError(const CMPIResult *result, const CMPIError *error)
{
    const Result *self = behind<Result>(result);
    const Error *given = behind<Error>(error);
    if (self == nullptr || given == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    self->sink->takeError(*given);
    return makeStatus(CMPI_RC_OK);
}

// ------------------------------------------------------------------------------------- select expressions

/** Queries are kept and handed on, not evaluated. */
CMPIBoolean evaluate(const CMPISelectExp *expression, const CMPIInstance *, CMPIStatus *status)
{
    if (checked<SelectExpression>(expression, status) != nullptr) {
        setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    }
    return 0;
}

CMPIString *getString(const CMPISelectExp *expression, CMPIStatus *status)
{
    const SelectExpression *self = checked<SelectExpression>(expression, status);
    return self != nullptr ? &self->query->cmpi : nullptr;
}

CMPISelectCond *getCondition(const CMPISelectExp *expression, CMPIStatus *status)
{
    if (checked<SelectExpression>(expression, status) != nullptr) {
        setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    }
    return nullptr;
}

CMPIBoolean evaluateUsingAccessor(const CMPISelectExp *expression, CMPIAccessor *, void *, CMPIStatus *status)
{
    if (checked<SelectExpression>(expression, status) != nullptr) {
        setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    }
    return 0;
}

} // namespace

const CMPIStringFT stringTable = {
    tableVersion,
    releaseObject<String>,
    guarded<cloneObject<String>>,
    getCharPtr,
};

const CMPIDateTimeFT dateTimeTable = {
    tableVersion,    releaseObject<DateTime>,  guarded<cloneObject<DateTime>>,
    getBinaryFormat, guarded<getStringFormat>, isInterval,
};

const CMPIContextFT contextTable = {
    tableVersion,          releaseObject<Context>,  guarded<cloneObject<Context>>,
    guarded<Entries::get>, guarded<Entries::getAt>, Entries::count,
    guarded<Entries::add>,
};

const CMPIResultFT resultTable = {
    tableVersion,        releaseResult,           guarded<cloneResult>,
    guarded<returnData>, guarded<returnInstance>, guarded<returnObjectPath>,
    guarded<returnDone>, guarded<returnError>,
};

const CMPISelectExpFT selectExpressionTable = {
    tableVersion,
    releaseObject<SelectExpression>,
    guarded<cloneObject<SelectExpression>>,
    guarded<evaluate>,
    guarded<getString>,
    guarded<getCondition>,
    guarded<getCondition>,
    guarded<evaluateUsingAccessor>,
};

} // namespace host
