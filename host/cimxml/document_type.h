// SPDX-License-Identifier: Apache-2.0
// The part of the document type of CIM-XML (DSP0203) that requests need.
#ifndef HOST_CIMXML_DOCUMENT_TYPE_H
#define HOST_CIMXML_DOCUMENT_TYPE_H

#include <pugixml.hpp>

namespace host
{

/** True when the CIM element holds one simple request, with the elements and attributes where the document
 * type has them. What a class declares is not looked at: classes are not written here. */
bool isValidRequest(const pugi::xml_node &cim);

} // namespace host

#endif
