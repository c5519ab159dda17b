// SPDX-License-Identifier: Apache-2.0
#include "wsman/fault.h"

namespace host::wsman
{
namespace
{

constexpr std::string_view sender = "s:Sender";
constexpr std::string_view receiver = "s:Receiver";

constexpr std::string_view addressingFault = "http://schemas.xmlsoap.org/ws/2004/08/addressing/fault";
constexpr std::string_view enumerationFault = "http://schemas.xmlsoap.org/ws/2004/09/enumeration/fault";
constexpr std::string_view transferFault = "http://schemas.xmlsoap.org/ws/2004/09/transfer/fault";
constexpr std::string_view wsmanFault = "http://schemas.dmtf.org/wbem/wsman/1/wsman/fault";

constexpr FaultForm forms[] = {
    {FaultKind::accessDenied, sender, "wsman:AccessDenied", wsmanFault,
     "The sender was not authorized to access the resource."},
    {FaultKind::actionNotSupported, sender, "wsa:ActionNotSupported", addressingFault,
     "The action is not supported by the service."},
    {FaultKind::alreadyExists, sender, "wsman:AlreadyExists", wsmanFault,
     "The sender attempted to create a resource which already exists."},
    {FaultKind::cannotProcessFilter, sender, "wsen:CannotProcessFilter", enumerationFault,
     "The requested filter could not be processed."},
    {FaultKind::destinationUnreachable, sender, "wsa:DestinationUnreachable", addressingFault,
     "No route can be determined to reach the destination role defined by the WS-Addressing To."},
    {FaultKind::encodingLimit, sender, "wsman:EncodingLimit", wsmanFault,
     "An internal encoding limit was exceeded in a request or would be violated if the message were "
     "processed."},
    {FaultKind::filterDialectRequestedUnavailable, sender, "wsen:FilterDialectRequestedUnavailable",
     enumerationFault, "The requested filtering dialect is not supported."},
    {FaultKind::internalError, receiver, "wsman:InternalError", wsmanFault,
     "The service cannot comply with the request due to internal processing errors."},
    {FaultKind::invalidEnumerationContext, receiver, "wsen:InvalidEnumerationContext", enumerationFault,
     "The supplied enumeration context is invalid."},
    {FaultKind::invalidExpirationTime, sender, "wsen:InvalidExpirationTime", enumerationFault,
     "The expiration time requested is invalid."},
    {FaultKind::invalidMessageInformationHeader, sender, "wsa:InvalidMessageInformationHeader",
     addressingFault, "A message information header is not valid and the message cannot be processed."},
    {FaultKind::invalidOptions, sender, "wsman:InvalidOptions", wsmanFault,
     "One or more options are not valid."},
    {FaultKind::invalidParameter, sender, "wsman:InvalidParameter", wsmanFault,
     "An operation parameter is not valid."},
    {FaultKind::invalidRepresentation, sender, "wxf:InvalidRepresentation", transferFault,
     "The XML content is not valid."},
    {FaultKind::invalidSelectors, sender, "wsman:InvalidSelectors", wsmanFault,
     "The Selectors for the resource are not valid."},
    {FaultKind::messageInformationHeaderRequired, sender, "wsa:MessageInformationHeaderRequired",
     addressingFault, "A required header is missing."},
    {FaultKind::mustUnderstand, "s:MustUnderstand", "", addressingFault,
     "A header that must be understood is not supported by the service."},
    {FaultKind::quotaLimit, sender, "wsman:QuotaLimit", wsmanFault,
     "The service is busy servicing other requests."},
    {FaultKind::schemaValidationError, sender, "wsman:SchemaValidationError", wsmanFault,
     "The supplied SOAP violates the corresponding XML schema definition."},
    {FaultKind::timedOut, receiver, "wsman:TimedOut", wsmanFault, "The operation has timed out."},
    {FaultKind::unsupportedExpirationType, sender, "wsen:UnsupportedExpirationType", enumerationFault,
     "The specified expiration type is not supported."},
    {FaultKind::unsupportedFeature, sender, "wsman:UnsupportedFeature", wsmanFault,
     "The specified feature is not supported."},
    {FaultKind::versionMismatch, "s:VersionMismatch", "", addressingFault,
     "The message is not a SOAP 1.2 envelope."},
};

struct CimFault {
    CMPIrc code;
    FaultKind kind;
    std::string_view detail;
};

constexpr CimFault cimFaults[] = {
    {CMPI_RC_ERR_ACCESS_DENIED, FaultKind::accessDenied, ""},
    {CMPI_RC_ERR_INVALID_NAMESPACE, FaultKind::destinationUnreachable, "InvalidResourceURI"},
    {CMPI_RC_ERR_INVALID_PARAMETER, FaultKind::invalidParameter, ""},
    {CMPI_RC_ERR_INVALID_CLASS, FaultKind::destinationUnreachable, "InvalidResourceURI"},
    {CMPI_RC_ERR_NOT_FOUND, FaultKind::destinationUnreachable, ""},
    {CMPI_RC_ERR_NOT_SUPPORTED, FaultKind::actionNotSupported, ""},
    {CMPI_RC_ERR_ALREADY_EXISTS, FaultKind::alreadyExists, ""},
    {CMPI_RC_ERR_NO_SUCH_PROPERTY, FaultKind::invalidRepresentation, "InvalidValues"},
    {CMPI_RC_ERR_TYPE_MISMATCH, FaultKind::invalidParameter, "TypeMismatch"},
    {CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED, FaultKind::filterDialectRequestedUnavailable, ""},
    {CMPI_RC_ERR_INVALID_QUERY, FaultKind::cannotProcessFilter, ""},
    {CMPI_RC_ERR_METHOD_NOT_AVAILABLE, FaultKind::actionNotSupported, ""},
    {CMPI_RC_ERR_METHOD_NOT_FOUND, FaultKind::actionNotSupported, ""},
    {CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED, FaultKind::quotaLimit, ""},
};

} // namespace

const FaultForm &formOf(FaultKind kind)
{
    for (const FaultForm &form : forms) {
        if (form.kind == kind) {
            return form;
        }
    }
    return formOf(FaultKind::internalError);
}

unsigned httpStatus(FaultKind kind)
{
    constexpr unsigned badRequest = 400;
    constexpr unsigned internalServerError = 500;
    return formOf(kind).code == sender ? badRequest : internalServerError;
}

Fault faultOfCimError(CMPIrc code, std::string_view text)
{
    Fault fault;
    fault.kind = FaultKind::internalError;
    for (const CimFault &row : cimFaults) {
        if (row.code == code) {
            fault.kind = row.kind;
            fault.detail = row.detail;
        }
    }
    fault.text = text;
    fault.code = code;
    return fault;
}

} // namespace host::wsman
