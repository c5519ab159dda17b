// SPDX-License-Identifier: Apache-2.0
#include "cimxml/element_reader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace host
{

bool is(const xml_node &node, const char *name)
{
    return std::strcmp(node.name(), name) == 0;
}

std::string_view attribute(const xml_node &node, const char *name)
{
    return node.attribute(name).value();
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blank);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blank) - first + 1);
}

xml_node firstElement(const xml_node &node)
{
    xml_node child = node.first_child();
    while (child && child.type() != pugi::node_element) {
        child = child.next_sibling();
    }
    return child;
}

void ElementReader::fail(CMPIrc code, const char *text)
{
    if (message_.code == CMPI_RC_OK) {
        message_.code = code;
        message_.error = text;
    }
}

void ElementReader::failWith(const char *format, std::string_view name)
{
    char text[320];
    const int length = static_cast<int>(std::min<std::size_t>(name.size(), 200));
    // Every format of this file has one %.*s, for the name.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(text, sizeof text, format, length, name.data());
#pragma GCC diagnostic pop
    fail(CMPI_RC_ERR_INVALID_PARAMETER, arena_.copyText(text));
}

std::string_view ElementReader::textOf(const xml_node &node)
{
    const xml_node first = node.first_child();
    if (!first) {
        return "";
    }
    if (!first.next_sibling()) {
        return first.value();
    }
    ArenaList<char> text(arena_);
    for (const xml_node piece : node.children()) {
        if (piece.type() == pugi::node_pcdata || piece.type() == pugi::node_cdata) {
            for (const char *c = piece.value(); *c != '\0'; ++c) {
                text.append(*c);
            }
        }
    }
    return {text.begin(), text.size()};
}

const char *ElementReader::zeroTerminated(std::string_view text)
{
    return arena_.copyText(text);
}

std::string_view ElementReader::nameSpaceOf(const xml_node &localNameSpacePath)
{
    ArenaList<char> path(arena_);
    for (xml_node part = localNameSpacePath.child("NAMESPACE"); part; part = part.next_sibling("NAMESPACE")) {
        if (!path.empty()) {
            path.append('/');
        }
        const std::string_view name = attribute(part, "NAME");
        path.append(name.data(), name.size());
    }
    return {path.begin(), path.size()};
}

ItemText ElementReader::itemOf(const xml_node &node)
{
    ItemText item;
    if (is(node, "VALUE")) {
        item.text = textOf(node);
    } else if (is(node, "VALUE.NULL")) {
        item.isNull = true;
    } else if (is(node, "VALUE.REFERENCE")) {
        item.reference = pathOf(firstElement(node));
    } else {
        failWith("The element %.*s cannot be a value here.", node.name());
    }
    return item;
}

void ElementReader::readValue(const xml_node &holder, ValueText &value)
{
    xml_node node;
    for (const xml_node child : holder.children()) {
        if (child.type() == pugi::node_element && !is(child, "QUALIFIER")) {
            node = child;
            break;
        }
    }
    if (!node) {
        value.isNull = true;
        return;
    }
    if (!is(node, "VALUE.ARRAY") && !is(node, "VALUE.REFARRAY")) {
        value.item = itemOf(node);
        value.isNull = value.item.isNull;
        return;
    }
    auto *items = makeList<ItemText>();
    for (const xml_node item : node.children()) {
        if (arena_.exhausted()) {
            fail(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED, "The values need too much memory.");
            break;
        }
        if (item.type() == pugi::node_element) {
            items->append(itemOf(item));
        }
    }
    value.isArray = true;
    value.items = items;
}

cim::Type ElementReader::typeOf(const xml_node &node, const char *attributeName)
{
    const std::string_view name = attribute(node, attributeName);
    if (name.empty()) {
        return cim::Type::none;
    }
    const cim::Type type = cim::typeFromName(name);
    if (type == cim::Type::none) {
        failWith("There is no type %.*s.", name);
    }
    return type;
}

void ElementReader::readKeyValue(const xml_node &node, ValueText &key)
{
    if (is(node, "VALUE.REFERENCE")) {
        key.item = itemOf(node);
        return;
    }
    if (!is(node, "KEYVALUE")) {
        failWith("The element %.*s cannot be a key.", node.name());
        return;
    }
    key.item.text = textOf(node);
    key.type = typeOf(node, "TYPE");
    if (key.type != cim::Type::none) {
        return;
    }
    const std::string_view valueType = attribute(node, "VALUETYPE");
    if (valueType == "numeric") {
        key.type = key.item.text.starts_with('-') ? cim::Type::sint64 : cim::Type::uint64;
    } else if (valueType == "boolean") {
        key.type = cim::Type::boolean;
    } else {
        key.type = cim::Type::string;
    }
}

void ElementReader::readInstanceName(const xml_node &node, PathText &path)
{
    path.className = attribute(node, "CLASSNAME");
    auto *keys = makeList<ValueText>();
    for (const xml_node child : node.children()) {
        if (child.type() != pugi::node_element) {
            continue;
        }
        ValueText key;
        if (is(child, "KEYBINDING")) {
            key.name = attribute(child, "NAME");
            if (key.name.empty()) {
                fail(CMPI_RC_ERR_INVALID_PARAMETER, "A KEYBINDING has no name.");
            }
            readKeyValue(firstElement(child), key);
        } else {
            readKeyValue(child, key);
        }
        if (keys->size() == maxKeys) {
            fail(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED, "A path has more than 64 keys.");
            break;
        }
        keys->append(key);
    }
    path.keys = keys;
}

const PathText *ElementReader::pathOf(const xml_node &node)
{
    auto *path = arena_.make<PathText>();
    readPath(node, *path);
    if (path->className.empty()) {
        fail(CMPI_RC_ERR_INVALID_PARAMETER, "A path has no class name.");
    }
    return path;
}

void ElementReader::readPath(const xml_node &node, PathText &path)
{
    if (is(node, "INSTANCENAME")) {
        readInstanceName(node, path);
    } else if (is(node, "CLASSNAME")) {
        path.className = attribute(node, "NAME");
    } else if (is(node, "LOCALINSTANCEPATH") || is(node, "LOCALCLASSPATH")) {
        path.nameSpace = nameSpaceOf(node.child("LOCALNAMESPACEPATH"));
        readLastElement(node, path);
    } else if (is(node, "INSTANCEPATH") || is(node, "CLASSPATH")) {
        const xml_node nameSpacePath = node.child("NAMESPACEPATH");
        path.host = textOf(nameSpacePath.child("HOST"));
        path.nameSpace = nameSpaceOf(nameSpacePath.child("LOCALNAMESPACEPATH"));
        readLastElement(node, path);
    } else {
        failWith("The element %.*s is not a path.", node.name());
    }
}

void ElementReader::readLastElement(const xml_node &node, PathText &path)
{
    for (const char *name : {"INSTANCENAME", "CLASSNAME"}) {
        if (const xml_node child = node.child(name); child) {
            readPath(child, path);
        }
    }
}

Path *ElementReader::typedPath(const PathText *text)
{
    if (failed()) {
        return nullptr;
    }
    Typing typing(arena_, nameSpaces_);
    Path *path = typing.path(*text, message_.request.nameSpace);
    if (path == nullptr) {
        fail(typing.code(), typing.error());
    }
    return path;
}

} // namespace host
