// SPDX-License-Identifier: Apache-2.0
// The names that WS-Management goes by: XML namespaces, actions, dialects.
#ifndef HOST_WSMAN_URIS_H
#define HOST_WSMAN_URIS_H

#include <string_view>

namespace host::wsman::uri
{

inline constexpr std::string_view soap = "http://www.w3.org/2003/05/soap-envelope";
inline constexpr std::string_view addressing = "http://schemas.xmlsoap.org/ws/2004/08/addressing";
inline constexpr std::string_view enumeration = "http://schemas.xmlsoap.org/ws/2004/09/enumeration";
inline constexpr std::string_view wsman = "http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd";
inline constexpr std::string_view binding = "http://schemas.dmtf.org/wbem/wsman/1/cimbinding.xsd";
inline constexpr std::string_view identity =
    "http://schemas.dmtf.org/wbem/wsman/identity/1/wsmanidentity.xsd";
inline constexpr std::string_view schemaInstance = "http://www.w3.org/2001/XMLSchema-instance";

inline constexpr std::string_view anonymous =
    "http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous";

// Actions. The answer's is the request's with "Response" at its end.
inline constexpr std::string_view getAction = "http://schemas.xmlsoap.org/ws/2004/09/transfer/Get";
inline constexpr std::string_view putAction = "http://schemas.xmlsoap.org/ws/2004/09/transfer/Put";
inline constexpr std::string_view createAction = "http://schemas.xmlsoap.org/ws/2004/09/transfer/Create";
inline constexpr std::string_view deleteAction = "http://schemas.xmlsoap.org/ws/2004/09/transfer/Delete";
inline constexpr std::string_view enumerateAction =
    "http://schemas.xmlsoap.org/ws/2004/09/enumeration/Enumerate";
inline constexpr std::string_view pullAction = "http://schemas.xmlsoap.org/ws/2004/09/enumeration/Pull";
inline constexpr std::string_view releaseAction = "http://schemas.xmlsoap.org/ws/2004/09/enumeration/Release";

// Filter dialects.
inline constexpr std::string_view associationFilter =
    "http://schemas.dmtf.org/wbem/wsman/1/cimbinding/associationFilter";
inline constexpr std::string_view selectorFilter =
    "http://schemas.dmtf.org/wbem/wsman/1/wsman/SelectorFilter";
inline constexpr std::string_view cql = "http://schemas.dmtf.org/wbem/cql/1/dsp0202.pdf";
inline constexpr std::string_view wql = "http://schemas.microsoft.com/wbem/wsman/1/WQL";
inline constexpr std::string_view xpath = "http://www.w3.org/TR/1999/REC-xpath-19991116";

// Resources.
inline constexpr std::string_view allClasses = "http://schemas.dmtf.org/wbem/wscim/1/*";
inline constexpr std::string_view cimClasses = "http://schemas.dmtf.org/wbem/wscim/1/cim-schema/2/";
/** What the URI of a class has before the name of the class, whosever schema it belongs to. */
inline constexpr std::string_view classesTail = "/wbem/wscim/1/cim-schema/2/";

} // namespace host::wsman::uri

#endif
