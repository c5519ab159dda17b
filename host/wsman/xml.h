// SPDX-License-Identifier: Apache-2.0
// Reading XML whose elements have namespaces.
#ifndef HOST_WSMAN_XML_H
#define HOST_WSMAN_XML_H

#include "cmpi/arena.h"

#include <pugixml.hpp>

#include <string_view>

namespace host::wsman
{

/** The name without its prefix. */
std::string_view localName(pugi::xml_node element);

/** The URI of the element's namespace; "" when it has none. */
std::string_view nameSpaceOf(pugi::xml_node element);

bool isElement(pugi::xml_node node, std::string_view nameSpace, std::string_view name);

/** The first child element of that name, or a null node. */
pugi::xml_node childOf(pugi::xml_node parent, std::string_view nameSpace, std::string_view name);

/** The first child that is an element, and the next one after an element. */
pugi::xml_node firstElement(pugi::xml_node parent);
pugi::xml_node nextElement(pugi::xml_node element);

/** The attribute of that name, or a null attribute. */
pugi::xml_attribute attributeOf(pugi::xml_node element, std::string_view nameSpace, std::string_view name);

/** True when the attribute is there and says true. */
bool isTrue(pugi::xml_attribute attribute);

/** The text of the element, as it stands; sections are joined in the arena. */
std::string_view wholeText(pugi::xml_node element, Arena &arena);

/** The text without blanks around it. */
std::string_view trimmedText(pugi::xml_node element, Arena &arena);

std::string_view trim(std::string_view text);

} // namespace host::wsman

#endif
