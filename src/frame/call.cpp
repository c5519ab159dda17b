// SPDX-License-Identifier: Apache-2.0
#include "frame/call.h"

#include <cstring>
#include <strings.h>

namespace frame
{

bool fail(Call &call, CMPIrc code, const char *text)
{
    return fail(call.broker, call.status, code, text);
}

bool requireAdministrator(const CMPIBroker *broker, const CMPIContext *context, CMPIStatus *status,
                          char *errorText, bool announce)
{
    CMPIStatus read = {CMPI_RC_OK, nullptr};
    const CMPIData data = cmpi::getEntry(context, CMPIPrincipal, &read);
    const char *user = textOf(data, read);
    if (!user) {
        return fail(broker, status, CMPI_RC_ERR_FAILED, "Could not get user credentials");
    }
    if (announce) {
        trace("AccountSetInstance: requesting user is %s\n", user);
    }
    char isAdmin = 0;
    if (IsAdminUser(user, &isAdmin, errorText) != 0) {
        errorText[ERROR_TEXT_SIZE - 1] = '\0';
        return fail(broker, status, CMPI_RC_ERR_FAILED, errorText);
    }
    return isAdmin || fail(broker, status, CMPI_RC_ERR_ACCESS_DENIED,
                           "Operation not allowed for non-admin user credentials");
}

/** Reads an argument; false when it was not given at all. */
static bool getArgument(Call &call, const char *name, CMPIData *data)
{
    CMPIStatus read = {CMPI_RC_OK, nullptr};
    *data = cmpi::getArg(call.in, name, &read);
    return read.rc == CMPI_RC_OK && !(data->state & (CMPI_notFound | CMPI_badValue));
}

const char *requireText(Call &call, const char *name, const char *missing, const char *invalidType)
{
    CMPIData data = {};
    // Object managers hand an argument that has no value as absent, as null or as an empty pointer.
    const char *text = nullptr;
    if (!getArgument(call, name, &data) || (data.state & CMPI_nullValue)) {
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, missing);
    } else if (data.type != CMPI_string) {
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, invalidType);
    } else if (!(text = textOf(data.value.string))) {
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, missing);
    }
    return text;
}

bool requireContent(Call &call, const char *text, const char *empty)
{
    return *text != '\0' || fail(call, CMPI_RC_ERR_INVALID_PARAMETER, empty);
}

bool convert(Call &call, const char *text, ArgumentKind kind, const char *invalid, int *value)
{
    *value = decimalValue(text);
    if (kind == toggle) {
        if (strcasecmp(text, "true") == 0) {
            *value = 1;
        } else if (strcasecmp(text, "false") == 0) {
            *value = 0;
        } else if (strcmp(text, "0") != 0 && strcmp(text, "1") != 0) {
            return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, invalid);
        }
    } else if (kind == integer && !isDecimal(text)) {
        return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, invalid);
    }
    return true;
}

bool readArgument(Call &call, const Argument &argument, int *value)
{
    const char *text = requireText(call, argument.name, argument.missing);
    return text && requireContent(call, text) && convert(call, text, argument.kind, argument.invalid, value);
}

const CMPIObjectPath *requireReference(Call &call, const char *name, const ReferenceTexts &texts,
                                       const char **className)
{
    CMPIData data = {};
    if (!getArgument(call, name, &data) || ((data.state & CMPI_nullValue) && data.type != CMPI_ref)) {
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, texts.missing);
    } else if (data.type != CMPI_ref) {
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, texts.invalidType);
    } else if ((data.state & CMPI_nullValue) || !data.value.ref || !data.value.ref->ft) {
        fail(call, CMPI_RC_ERR_INVALID_PARAMETER, texts.null);
    } else {
        *className = textOf(cmpi::getClassName(data.value.ref, nullptr));
        if (*className) {
            return data.value.ref;
        }
        fail(call, CMPI_RC_ERR_FAILED, texts.className);
    }
    return nullptr;
}

bool requireRange(Call &call, int value, const Range &range)
{
    return !range.text || ValidateInputArgs(value, range.min, range.max) == 0 ||
           fail(call, CMPI_RC_ERR_INVALID_PARAMETER, range.text);
}

bool requirePosition(Call &call, int x, const Range &xRange, int y, const Range &yRange, const char *both)
{
    const bool xFits = ValidateInputArgs(x, xRange.min, xRange.max) == 0;
    const bool yFits = ValidateInputArgs(y, yRange.min, yRange.max) == 0;
    if (xFits && yFits) {
        return true;
    }
    return fail(call, CMPI_RC_ERR_INVALID_PARAMETER, xFits ? yRange.text : yFits ? xRange.text : both);
}

bool settled(Call &call, int result)
{
    call.errorText[ERROR_TEXT_SIZE - 1] = '\0';
    return result == 0 || fail(call, CMPI_RC_ERR_FAILED, call.errorText);
}

} // namespace frame
