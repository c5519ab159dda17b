// SPDX-License-Identifier: Apache-2.0
// Why an exchange brought no CIM answer, in words for a person.
#ifndef DISPLAYCTL_WBEM_FAILURE_H
#define DISPLAYCTL_WBEM_FAILURE_H

#include "wbem/connection.h"

#include <curl/curl.h>

#include <string>

namespace displayctl::wbem
{

/** How a transfer ended. */
struct Ending {
    CURLcode result = CURLE_OK;
    std::string problem; // libcurl's own words
    long httpStatus = 0;
    std::string cimErrorHeader; // of an HTTP error
    long systemError = 0;       // errno of a failed connection
    long certificateError = 0;  // X509_V_ERR_...
    bool wasSent = false;
    bool wasKept = false; // whether the connection had served before
};

[[nodiscard]] Ending endingOf(CURL *handle, CURLcode result, const char *problem);
[[nodiscard]] long bytesSent(CURL *handle);

/** Of a transfer that did not end with HTTP 200. maybeDone: whether the request may have been carried out, if
 * it is one that changes something. */
[[nodiscard]] Answer failure(const Endpoint &endpoint, const Ending &ending);

[[nodiscard]] Answer noAnswerInTime(const Endpoint &endpoint, std::chrono::milliseconds limit);
[[nodiscard]] Answer noConnectionInTime(const Endpoint &endpoint, std::chrono::milliseconds limit);
[[nodiscard]] Answer noPassword(const Endpoint &endpoint);

} // namespace displayctl::wbem

#endif
