// SPDX-License-Identifier: Apache-2.0
#include "wbem/failure.h"

#include <openssl/x509_vfy.h>

#include <string_view>
#include <system_error>

namespace displayctl::wbem
{

namespace
{

Answer failed(Status status, std::string message)
{
    Answer answer;
    answer.status = status;
    answer.message = std::move(message);
    return answer;
}

std::string seconds(std::chrono::milliseconds limit)
{
    std::string text = std::to_string(limit.count() / 1000);
    if (const auto rest = limit.count() % 1000; rest != 0) {
        text += '.' + std::to_string(1000 + rest).substr(1);
        text.erase(text.find_last_not_of('0') + 1);
    }
    return text + " s";
}

/** What is wrong with the certificate, and what to do. */
std::string certificateProblem(const Endpoint &endpoint, const Ending &ending)
{
    const std::string subject = "the certificate of " + endpoint.authority();
    switch (ending.certificateError) {
    case X509_V_ERR_CERT_HAS_EXPIRED:
        return subject + " has expired; it has to be renewed there";
    case X509_V_ERR_CERT_NOT_YET_VALID:
        return subject + " is not valid yet; is the clock right, here and there?";
    case X509_V_ERR_UNSPECIFIED: // the name is compared before libcurl asks for the result
    case X509_V_OK:
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH:
        return subject + " is not for " + endpoint.host + " (" + ending.problem + ")";
    default:
        return subject + " is not trusted (" + X509_verify_cert_error_string(ending.certificateError) +
               "); ca-file or --ca-file names the authorities to trust";
    }
}

Answer httpFailure(const Endpoint &endpoint, const Ending &ending)
{
    const std::string server = endpoint.authority();
    Answer answer;
    switch (ending.httpStatus) {
    case 401:
        answer = failed(Status::unauthorized,
                        endpoint.user.empty()
                            ? server + " wants a login; name the user in the URL or in the file of monitors"
                            : server + " does not accept the login of " + endpoint.user +
                                  "; is the password right?");
        break;
    case 403:
        answer = failed(Status::forbidden,
                        server + " forbids this" + (endpoint.user.empty() ? "" : " to " + endpoint.user));
        break;
    case 429:
    case 503:
        answer = failed(Status::busy, server + " has too much to do; try again later");
        break;
    default:
        answer =
            failed(Status::broken, server + " answers with HTTP status " + std::to_string(ending.httpStatus) +
                                       (ending.cimErrorHeader.empty() ? "" : ": ") + ending.cimErrorHeader);
        answer.maybeDone = ending.httpStatus >= 500;
    }
    answer.code = static_cast<int>(ending.httpStatus);
    return answer;
}

} // namespace

long bytesSent(CURL *handle)
{
    long size = 0;
    curl_easy_getinfo(handle, CURLINFO_REQUEST_SIZE, &size);
    return size;
}

Ending endingOf(CURL *handle, CURLcode result, const char *problem)
{
    Ending ending;
    ending.result = result;
    ending.problem = *problem != '\0' ? problem : curl_easy_strerror(result);
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &ending.httpStatus);
    curl_easy_getinfo(handle, CURLINFO_OS_ERRNO, &ending.systemError);
    curl_easy_getinfo(handle, CURLINFO_SSL_VERIFYRESULT, &ending.certificateError);
    ending.wasSent = bytesSent(handle) > 0;
    long connections = 0;
    curl_easy_getinfo(handle, CURLINFO_NUM_CONNECTS, &connections);
    ending.wasKept = connections == 0;
    curl_header *header = nullptr;
    if (curl_easy_header(handle, "CIMError", 0, CURLH_HEADER, -1, &header) == CURLHE_OK) {
        ending.cimErrorHeader = header->value;
    }
    return ending;
}

Answer failure(const Endpoint &endpoint, const Ending &ending)
{
    const std::string server = endpoint.authority();
    Answer answer;
    switch (ending.result) {
    case CURLE_OK:
        return httpFailure(endpoint, ending);
    case CURLE_PEER_FAILED_VERIFICATION:
        return failed(Status::untrusted, certificateProblem(endpoint, ending));
    case CURLE_SSL_CACERT_BADFILE:
        return failed(Status::untrusted, "the authorities to trust cannot be read from " + endpoint.caFile +
                                             " (" + ending.problem + ")");
    case CURLE_SSL_CONNECT_ERROR:
        return failed(Status::untrusted, server + " does not speak TLS as it should (" + ending.problem +
                                             "); is it an http: URL?");
    case CURLE_COULDNT_RESOLVE_HOST:
        return failed(Status::unreachable, "there is no host of the name " + endpoint.host);
    case CURLE_COULDNT_CONNECT:
        return failed(Status::unreachable,
                      "no connection to " + server + ": " +
                          (ending.systemError == 0
                               ? ending.problem // there was not even a socket
                               : std::error_code{static_cast<int>(ending.systemError), std::system_category()}
                                     .message()));
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY:
        answer = failed(Status::broken, server + " does not answer in HTTP (" + ending.problem + ")" +
                                            (endpoint.tls ? "" : "; is it an https: URL?"));
        break;
    case CURLE_WRITE_ERROR:
        answer = failed(Status::broken, server + " answers with more than 16 MiB");
        break;
    case CURLE_OUT_OF_MEMORY:
        answer = failed(Status::noAnswer, "there is not enough memory here for the answer of " + server);
        break;
    case CURLE_PARTIAL_FILE:
        answer = failed(Status::broken, "the answer of " + server + " is cut off");
        break;
    default:
        answer = failed(Status::noAnswer,
                        server + " closed the connection without an answer (" + ending.problem + ")" +
                            (endpoint.tls || ending.wasKept ? "" : "; is it an https: URL?"));
    }
    answer.maybeDone = ending.wasSent;
    return answer;
}

Answer noAnswerInTime(const Endpoint &endpoint, std::chrono::milliseconds limit)
{
    return failed(Status::noAnswer, "no answer from " + endpoint.authority() + " within " + seconds(limit));
}

Answer noConnectionInTime(const Endpoint &endpoint, std::chrono::milliseconds limit)
{
    return failed(Status::unreachable,
                  "no connection to " + endpoint.authority() + " within " + seconds(limit));
}

Answer noPassword(const Endpoint &endpoint)
{
    return failed(Status::unauthorized,
                  "there is no password for " + endpoint.user + " at " + endpoint.authority() +
                      "; set DISPLAYCTL_PASSWORD, or name a password-file in the file of monitors");
}

} // namespace displayctl::wbem
