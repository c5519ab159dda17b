// SPDX-License-Identifier: Apache-2.0
#include "frame/values.h"

#include <cstdio>

namespace frame
{

const char *textOf(const CMPIString *string)
{
    return string && string->ft ? cmpi::getCharPtr(string, nullptr) : nullptr;
}

bool isMissing(const CMPIData &data, const CMPIStatus &status)
{
    return status.rc != CMPI_RC_OK || (data.state & (CMPI_nullValue | CMPI_notFound | CMPI_badValue));
}

const char *textOf(const CMPIData &data, const CMPIStatus &status)
{
    if (isMissing(data, status)) {
        return nullptr;
    }
    if (data.type == CMPI_string) {
        return textOf(data.value.string);
    }
    return data.type == CMPI_chars ? data.value.chars : nullptr;
}

bool fail(const CMPIBroker *broker, CMPIStatus *status, CMPIrc code, const char *text)
{
    status->rc = code;
    // Without memory for the message the code alone reaches the client.
    status->msg = cmpi::newString(broker, text, nullptr);
    return false;
}

void trace(const char *format, const char *className)
{
    if (format) {
        printf(format, className);
    }
}

} // namespace frame
