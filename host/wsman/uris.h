// SPDX-License-Identifier: Apache-2.0
// The names that WS-Management goes by: XML namespaces, actions, dialects.
#ifndef HOST_WSMAN_URIS_H
#define HOST_WSMAN_URIS_H

#include <string_view>

namespace host::wsman::uri
{

inline constexpr std::string_view SOAP = "http://www.w3.org/2003/05/soap-envelope";
inline constexpr std::string_view ADDRESSING = "http://schemas.xmlsoap.org/ws/2004/08/addressing";
inline constexpr std::string_view ENUMERATION = "http://schemas.xmlsoap.org/ws/2004/09/enumeration";
inline constexpr std::string_view WSMAN = "http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd";
inline constexpr std::string_view BINDING = "http://schemas.dmtf.org/wbem/wsman/1/cimbinding.xsd";
inline constexpr std::string_view IDENTITY =
    "http://schemas.dmtf.org/wbem/wsman/identity/1/wsmanidentity.xsd";
inline constexpr std::string_view SCHEMA_INSTANCE = "http://www.w3.org/2001/XMLSchema-instance";

inline constexpr std::string_view ANONYMOUS =
    "http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous";

// Actions. The answer's is the request's with "Response" at its end.
inline constexpr std::string_view GET = "http://schemas.xmlsoap.org/ws/2004/09/transfer/Get";
inline constexpr std::string_view PUT = "http://schemas.xmlsoap.org/ws/2004/09/transfer/Put";
inline constexpr std::string_view CREATE = "http://schemas.xmlsoap.org/ws/2004/09/transfer/Create";
inline constexpr std::string_view DELETE = "http://schemas.xmlsoap.org/ws/2004/09/transfer/Delete";
inline constexpr std::string_view ENUMERATE = "http://schemas.xmlsoap.org/ws/2004/09/enumeration/Enumerate";
inline constexpr std::string_view PULL = "http://schemas.xmlsoap.org/ws/2004/09/enumeration/Pull";
inline constexpr std::string_view RELEASE = "http://schemas.xmlsoap.org/ws/2004/09/enumeration/Release";

// Filter dialects.
inline constexpr std::string_view ASSOCIATION_FILTER =
    "http://schemas.dmtf.org/wbem/wsman/1/cimbinding/associationFilter";
inline constexpr std::string_view SELECTOR_FILTER =
    "http://schemas.dmtf.org/wbem/wsman/1/wsman/SelectorFilter";
inline constexpr std::string_view CQL = "http://schemas.dmtf.org/wbem/cql/1/dsp0202.pdf";
inline constexpr std::string_view WQL = "http://schemas.microsoft.com/wbem/wsman/1/WQL";
inline constexpr std::string_view XPATH = "http://www.w3.org/TR/1999/REC-xpath-19991116";

// Resources.
inline constexpr std::string_view ALL_CLASSES = "http://schemas.dmtf.org/wbem/wscim/1/*";
inline constexpr std::string_view CIM_CLASSES = "http://schemas.dmtf.org/wbem/wscim/1/cim-schema/2/";
/** What the URI of a class has before the name of the class, whosever schema it belongs to. */
inline constexpr std::string_view CLASSES_TAIL = "/wbem/wscim/1/cim-schema/2/";

} // namespace host::wsman::uri

#endif
