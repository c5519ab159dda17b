// SPDX-License-Identifier: Apache-2.0
// The document of a request, parsed; what it needs counts among what the request uses.
#ifndef HOST_CORE_XML_DOCUMENT_H
#define HOST_CORE_XML_DOCUMENT_H

#include "cmpi/memory_budget.h"
#include "core/xml_text.h"

#include <pugixml.hpp>

#include <string>

namespace host
{

/** Reads the text, to which the document then points, and which is changed meanwhile. The document counts as
 * the request's, until the request ends. MemoryExceeded is thrown when that is more than there is for it. */
[[nodiscard]] XmlProblem readXml(std::string &text, const XmlLimits &limits, MemoryShare &memory,
                                 pugi::xml_document &document);

} // namespace host

#endif
