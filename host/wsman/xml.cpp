// SPDX-License-Identifier: Apache-2.0
#include "wsman/xml.h"

#include "wsman/uris.h"

#include <algorithm>

namespace host::wsman
{
namespace
{

std::string_view prefixOf(std::string_view name)
{
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
}

std::string_view withoutPrefix(std::string_view name)
{
    return name.substr(name.find(':') + 1); // npos + 1 is 0
}

/** True when the attribute declares the prefix, or the default namespace for the prefix "". */
bool declares(std::string_view attribute, std::string_view prefix)
{
    constexpr std::string_view declaration = "xmlns";
    if (!attribute.starts_with(declaration)) {
        return false;
    }
    attribute.remove_prefix(declaration.size());
    return prefix.empty() ? attribute.empty() : attribute.starts_with(':') && attribute.substr(1) == prefix;
}

/** The namespace that the prefix stands for at the element; of "" the default one. */
std::string_view resolve(pugi::xml_node element, std::string_view prefix)
{
    for (; element.type() == pugi::node_element; element = element.parent()) {
        for (const pugi::xml_attribute attribute : element.attributes()) {
            if (declares(attribute.name(), prefix)) {
                return attribute.value();
            }
        }
    }
    return {};
}

bool isText(pugi::xml_node node)
{
    return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

} // namespace

std::string_view localName(pugi::xml_node element)
{
    return withoutPrefix(element.name());
}

std::string_view nameSpaceOf(pugi::xml_node element)
{
    return resolve(element, prefixOf(element.name()));
}

bool isElement(pugi::xml_node node, std::string_view nameSpace, std::string_view name)
{
    return node.type() == pugi::node_element && localName(node) == name && nameSpaceOf(node) == nameSpace;
}

pugi::xml_node childOf(pugi::xml_node parent, std::string_view nameSpace, std::string_view name)
{
    for (const pugi::xml_node child : parent.children()) {
        if (isElement(child, nameSpace, name)) {
            return child;
        }
    }
    return {};
}

pugi::xml_node firstElement(pugi::xml_node parent)
{
    const pugi::xml_node first = parent.first_child();
    return !first || first.type() == pugi::node_element ? first : nextElement(first);
}

pugi::xml_node nextElement(pugi::xml_node element)
{
    do {
        element = element.next_sibling();
    } while (element && element.type() != pugi::node_element);
    return element;
}

pugi::xml_attribute attributeOf(pugi::xml_node element, std::string_view nameSpace, std::string_view name)
{
    for (const pugi::xml_attribute attribute : element.attributes()) {
        const std::string_view prefix = prefixOf(attribute.name());
        if (withoutPrefix(attribute.name()) == name &&
            (prefix.empty() ? nameSpace.empty() : resolve(element, prefix) == nameSpace)) {
            return attribute;
        }
    }
    return {};
}

bool isTrue(pugi::xml_attribute attribute)
{
    const std::string_view value = trim(attribute.value());
    return value == "true" || value == "1";
}

std::string_view wholeText(pugi::xml_node element, Arena &arena)
{
    std::string_view text;
    std::size_t parts = 0;
    std::size_t length = 0;
    for (const pugi::xml_node child : element.children()) {
        if (isText(child)) {
            text = child.value();
            length += text.size();
            ++parts;
        }
    }
    if (parts < 2) {
        return text;
    }
    char *joined = static_cast<char *>(arena.allocate(length, 1));
    char *end = joined;
    for (const pugi::xml_node child : element.children()) {
        if (isText(child)) {
            const std::string_view part = child.value();
            end = std::copy(part.begin(), part.end(), end);
        }
    }
    return {joined, length};
}

std::string_view trimmedText(pugi::xml_node element, Arena &arena)
{
    return trim(wholeText(element, arena));
}

std::string_view trim(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

} // namespace host::wsman
