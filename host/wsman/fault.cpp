// SPDX-License-Identifier: Apache-2.0
#include "wsman/fault.h"

namespace host::wsman
{
namespace
{

constexpr std::string_view SENDER = "s:Sender";
constexpr std::string_view RECEIVER = "s:Receiver";

constexpr std::string_view ADDRESSING_FAULT = "http://schemas.xmlsoap.org/ws/2004/08/addressing/fault";
constexpr std::string_view ENUMERATION_FAULT = "http://schemas.xmlsoap.org/ws/2004/09/enumeration/fault";
constexpr std::string_view TRANSFER_FAULT = "http://schemas.xmlsoap.org/ws/2004/09/transfer/fault";
constexpr std::string_view WSMAN_FAULT = "http://schemas.dmtf.org/wbem/wsman/1/wsman/fault";

constexpr FaultForm FORMS[] = {
    {FaultKind::AccessDenied, SENDER, "wsman:AccessDenied", WSMAN_FAULT,
     "The sender was not authorized to access the resource."},
    {FaultKind::ActionNotSupported, SENDER, "wsa:ActionNotSupported", ADDRESSING_FAULT,
     "The action is not supported by the service."},
    {FaultKind::AlreadyExists, SENDER, "wsman:AlreadyExists", WSMAN_FAULT,
     "The sender attempted to create a resource which already exists."},
    {FaultKind::CannotProcessFilter, SENDER, "wsen:CannotProcessFilter", ENUMERATION_FAULT,
     "The requested filter could not be processed."},
    {FaultKind::DestinationUnreachable, SENDER, "wsa:DestinationUnreachable", ADDRESSING_FAULT,
     "No route can be determined to reach the destination role defined by the WS-Addressing To."},
    {FaultKind::EncodingLimit, SENDER, "wsman:EncodingLimit", WSMAN_FAULT,
     "An internal encoding limit was exceeded in a request or would be violated if the message were "
     "processed."},
    {FaultKind::FilterDialectRequestedUnavailable, SENDER, "wsen:FilterDialectRequestedUnavailable",
     ENUMERATION_FAULT, "The requested filtering dialect is not supported."},
    {FaultKind::InternalError, RECEIVER, "wsman:InternalError", WSMAN_FAULT,
     "The service cannot comply with the request due to internal processing errors."},
    {FaultKind::InvalidEnumerationContext, RECEIVER, "wsen:InvalidEnumerationContext", ENUMERATION_FAULT,
     "The supplied enumeration context is invalid."},
    {FaultKind::InvalidExpirationTime, SENDER, "wsen:InvalidExpirationTime", ENUMERATION_FAULT,
     "The expiration time requested is invalid."},
    {FaultKind::InvalidMessageInformationHeader, SENDER, "wsa:InvalidMessageInformationHeader",
     ADDRESSING_FAULT, "A message information header is not valid and the message cannot be processed."},
    {FaultKind::InvalidOptions, SENDER, "wsman:InvalidOptions", WSMAN_FAULT,
     "One or more options are not valid."},
    {FaultKind::InvalidParameter, SENDER, "wsman:InvalidParameter", WSMAN_FAULT,
     "An operation parameter is not valid."},
    {FaultKind::InvalidRepresentation, SENDER, "wxf:InvalidRepresentation", TRANSFER_FAULT,
     "The XML content is not valid."},
    {FaultKind::InvalidSelectors, SENDER, "wsman:InvalidSelectors", WSMAN_FAULT,
     "The Selectors for the resource are not valid."},
    {FaultKind::MessageInformationHeaderRequired, SENDER, "wsa:MessageInformationHeaderRequired",
     ADDRESSING_FAULT, "A required header is missing."},
    {FaultKind::MustUnderstand, "s:MustUnderstand", "", ADDRESSING_FAULT,
     "A header that must be understood is not supported by the service."},
    {FaultKind::QuotaLimit, SENDER, "wsman:QuotaLimit", WSMAN_FAULT,
     "The service is busy servicing other requests."},
    {FaultKind::SchemaValidationError, SENDER, "wsman:SchemaValidationError", WSMAN_FAULT,
     "The supplied SOAP violates the corresponding XML schema definition."},
    {FaultKind::TimedOut, RECEIVER, "wsman:TimedOut", WSMAN_FAULT, "The operation has timed out."},
    {FaultKind::UnsupportedExpirationType, SENDER, "wsen:UnsupportedExpirationType", ENUMERATION_FAULT,
     "The specified expiration type is not supported."},
    {FaultKind::UnsupportedFeature, SENDER, "wsman:UnsupportedFeature", WSMAN_FAULT,
     "The specified feature is not supported."},
    {FaultKind::VersionMismatch, "s:VersionMismatch", "", ADDRESSING_FAULT,
     "The message is not a SOAP 1.2 envelope."},
};

struct CimFault {
    CMPIrc code;
    FaultKind kind;
    std::string_view detail;
};

constexpr CimFault CIM_FAULTS[] = {
    {CMPI_RC_ERR_ACCESS_DENIED, FaultKind::AccessDenied, ""},
    {CMPI_RC_ERR_INVALID_NAMESPACE, FaultKind::DestinationUnreachable, "InvalidResourceURI"},
    {CMPI_RC_ERR_INVALID_PARAMETER, FaultKind::InvalidParameter, ""},
    {CMPI_RC_ERR_INVALID_CLASS, FaultKind::DestinationUnreachable, "InvalidResourceURI"},
    {CMPI_RC_ERR_NOT_FOUND, FaultKind::DestinationUnreachable, ""},
    {CMPI_RC_ERR_NOT_SUPPORTED, FaultKind::ActionNotSupported, ""},
    {CMPI_RC_ERR_ALREADY_EXISTS, FaultKind::AlreadyExists, ""},
    {CMPI_RC_ERR_NO_SUCH_PROPERTY, FaultKind::InvalidRepresentation, "InvalidValues"},
    {CMPI_RC_ERR_TYPE_MISMATCH, FaultKind::InvalidParameter, "TypeMismatch"},
    {CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED, FaultKind::FilterDialectRequestedUnavailable, ""},
    {CMPI_RC_ERR_INVALID_QUERY, FaultKind::CannotProcessFilter, ""},
    {CMPI_RC_ERR_METHOD_NOT_AVAILABLE, FaultKind::ActionNotSupported, ""},
    {CMPI_RC_ERR_METHOD_NOT_FOUND, FaultKind::ActionNotSupported, ""},
    {CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED, FaultKind::QuotaLimit, ""},
};

} // namespace

const FaultForm &formOf(FaultKind kind)
{
    for (const FaultForm &form : FORMS) {
        if (form.kind == kind) {
            return form;
        }
    }
    return formOf(FaultKind::InternalError);
}

unsigned httpStatus(FaultKind kind)
{
    constexpr unsigned BAD_REQUEST = 400;
    constexpr unsigned INTERNAL_SERVER_ERROR = 500;
    return formOf(kind).code == SENDER ? BAD_REQUEST : INTERNAL_SERVER_ERROR;
}

Fault faultOfCimError(CMPIrc code, std::string_view text)
{
    Fault fault;
    fault.kind = FaultKind::InternalError;
    for (const CimFault &row : CIM_FAULTS) {
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
