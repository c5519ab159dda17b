// SPDX-License-Identifier: Apache-2.0
#include "wsman/exchange.h"

#include "wsman/duration.h"
#include "wsman/uris.h"
#include "wsman/xml.h"

#include <algorithm>
#include <map>

namespace host::wsman
{
namespace
{

constexpr std::string_view namespaceSelector = "__cimnamespace";

/** The order of names without regard to the case of ASCII letters. */
struct NameLess {
    bool operator()(std::string_view left, std::string_view right) const
    {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
        return std::ranges::lexicographical_compare(left, right, {}, lower, lower);
    }
};

bool isNameSpaceSelector(const Selector &selector)
{
    return cim::sameName(selector.name, namespaceSelector);
}

/** The URI in two parts, the base with the slash at its end, and the name of the class. */
struct ClassUri {
    std::string_view base;
    std::string_view className;
};

bool splitUri(std::string_view resourceUri, ClassUri &parts)
{
    const std::size_t slash = resourceUri.rfind('/');
    if (slash == std::string_view::npos || slash + 1 == resourceUri.size()) {
        return false;
    }
    parts.base = resourceUri.substr(0, slash + 1);
    parts.className = resourceUri.substr(slash + 1);
    return parts.base.size() > uri::classesTail.size() && parts.base.ends_with(uri::classesTail) &&
           parts.base.find("://") != std::string_view::npos &&
           parts.base == baseUri(parts.className, parts.base == uri::cimClasses ? "" : parts.base);
}

std::string quoted(std::string_view text)
{
    constexpr std::size_t longest = 200;
    return std::string(text.substr(0, longest));
}

bool readKeys(Exchange &exchange, const Endpoint &endpoint, PathText &path, unsigned depth);

/** The path that a reference names; its class is not looked up. */
const PathText *referencePath(Exchange &exchange, const Endpoint &endpoint, unsigned depth)
{
    ClassUri parts;
    if (!splitUri(endpoint.resourceUri, parts)) {
        exchange.refuse(FaultKind::destinationUnreachable, "InvalidResourceURI",
                        "The resource URI " + quoted(endpoint.resourceUri) + " names no class.");
        return nullptr;
    }
    auto *path = exchange.arena.make<PathText>();
    path->className = parts.className;
    return readKeys(exchange, endpoint, *path, depth) ? path : nullptr;
}

bool readKeys(Exchange &exchange, const Endpoint &endpoint, PathText &path, unsigned depth)
{
    auto *keys = exchange.arena.make<ArenaList<ValueText>>(exchange.arena);
    for (const Selector &selector : endpoint.selectors) {
        if (isNameSpaceSelector(selector)) {
            path.nameSpace = trim(selector.text);
            continue;
        }
        ValueText key;
        key.name = selector.name;
        key.item.text = selector.text;
        if (selector.reference != nullptr) {
            key.item.reference = referencePath(exchange, *selector.reference, depth + 1);
            if (key.item.reference == nullptr) {
                return false;
            }
        }
        keys->append(key);
    }
    path.keys = keys;
    return true;
}

bool isKey(const cim::Class &klass, std::string_view name)
{
    for (const std::size_t place : klass.keys) {
        if (cim::sameName(klass.properties[place].name, name)) {
            return true;
        }
    }
    return false;
}

bool hasSelector(const Endpoint &endpoint, std::string_view name)
{
    for (const Selector &selector : endpoint.selectors) {
        if (cim::sameName(selector.name, name)) {
            return true;
        }
    }
    return false;
}

/** Looks whether the selectors are the keys of the class, each once. */
bool checkSelectors(Exchange &exchange, const Endpoint &endpoint, const cim::Class &klass)
{
    for (std::size_t i = 0; i < endpoint.selectors.size(); ++i) {
        const Selector &selector = endpoint.selectors[i];
        for (std::size_t j = 0; j < i; ++j) {
            if (cim::sameName(endpoint.selectors[j].name, selector.name)) {
                return exchange.refuse(FaultKind::invalidSelectors, "DuplicateSelectors",
                                       "The selector " + quoted(selector.name) + " is given twice.");
            }
        }
        if (!isNameSpaceSelector(selector) && !klass.keys.empty() && !isKey(klass, selector.name)) {
            return exchange.refuse(FaultKind::invalidSelectors, "UnexpectedSelectors",
                                   "The class " + klass.name + " has no key " + quoted(selector.name) + ".");
        }
    }
    for (const std::size_t place : klass.keys) {
        if (!hasSelector(endpoint, klass.properties[place].name)) {
            return exchange.refuse(FaultKind::invalidSelectors, "InsufficientSelectors",
                                   "The selector " + klass.properties[place].name + ", a key of the class " +
                                       klass.name + ", is missing.");
        }
    }
    return true;
}

} // namespace

bool Exchange::refuse(FaultKind kind, std::string_view detail, std::string_view text)
{
    fault = {};
    fault.kind = kind;
    fault.detail = detail;
    fault.text = arena.copyText(text);
    if (kind == FaultKind::actionNotSupported) {
        fault.subject = message.action;
    }
    return false;
}

bool Exchange::refuse(CMPIrc code, std::string_view text)
{
    fault = faultOfCimError(code, arena.copyText(text));
    if (fault.kind == FaultKind::actionNotSupported) {
        fault.subject = message.action;
    }
    return false;
}

bool Exchange::run(Request &request, Answer &answer)
{
    request.principal = http.principal;
    request.role = http.role;
    request.patience = message.timeout;
    Call call{&arena, nextRequestNumber()};
    service.dispatcher.execute(call, request, answer);
    if (answer.ok()) {
        return true;
    }
    refuse(answer.code, answer.message != nullptr ? answer.message : statusDescription(answer.code));
    if (answer.timedOut) {
        fault.kind = FaultKind::timedOut;
    }
    return false;
}

bool namesAllClasses(std::string_view resourceUri)
{
    return resourceUri == uri::allClasses;
}

bool findNameSpace(Exchange &exchange, const ArenaList<Selector> &selectors, std::string_view &nameSpace)
{
    const cim::NameSpaces &nameSpaces = exchange.service.dispatcher.nameSpaces();
    const cim::NameSpace *found = &nameSpaces.standard();
    for (const Selector &selector : selectors) {
        if (isNameSpaceSelector(selector)) {
            found = nameSpaces.find(trim(selector.text));
            if (found == nullptr) {
                return exchange.refuse(CMPI_RC_ERR_INVALID_NAMESPACE,
                                       "There is no namespace " + quoted(trim(selector.text)) + ".");
            }
        }
    }
    nameSpace = found->name;
    return true;
}

bool findClass(Exchange &exchange, const Endpoint &endpoint, Target &target)
{
    ClassUri parts;
    if (!splitUri(endpoint.resourceUri, parts)) {
        return exchange.refuse(
            FaultKind::destinationUnreachable, "InvalidResourceURI",
            "The resource URI " + quoted(endpoint.resourceUri) +
                " names no class. It is http://schemas.dmtf.org/wbem/wscim/1/cim-schema/2/CLASS of CIM's own "
                "classes, and http://VENDOR/wbem/wscim/1/cim-schema/2/CLASS of others.");
    }
    if (!findNameSpace(exchange, endpoint.selectors, target.nameSpace)) {
        return false;
    }
    target.klass = exchange.service.dispatcher.nameSpaces().findClass(target.nameSpace, parts.className);
    if (target.klass == nullptr) {
        return exchange.refuse(CMPI_RC_ERR_INVALID_CLASS,
                               "The class " + quoted(parts.className) + " does not exist.");
    }
    if (parts.base != uri::cimClasses) {
        exchange.vendorBase = parts.base;
    }
    return true;
}

bool findTarget(Exchange &exchange, const Endpoint &endpoint, bool needsKeys, Target &target)
{
    if (!findClass(exchange, endpoint, target)) {
        return false;
    }
    bool hasKeys = false;
    for (const Selector &selector : endpoint.selectors) {
        hasKeys = hasKeys || !isNameSpaceSelector(selector);
    }
    if ((needsKeys || hasKeys) && !checkSelectors(exchange, endpoint, *target.klass)) {
        return false;
    }
    PathText text;
    if (!readKeys(exchange, endpoint, text, 0)) {
        return false;
    }
    text.className = target.klass->name;
    text.nameSpace = {};
    Typing typing(exchange.arena, exchange.service.dispatcher.nameSpaces());
    target.path = typing.path(text, target.nameSpace);
    if (target.path == nullptr) {
        exchange.refuse(FaultKind::invalidSelectors, "TypeMismatch", typing.error());
        exchange.fault.code = typing.code();
        return false;
    }
    return true;
}

// --------------------------------------------------------------------------------------------------- values

namespace
{

constexpr std::size_t maxValues = 1024; // different names

/** The text of a datetime in the element of the common schema. */
std::string_view dateTimeText(Exchange &exchange, pugi::xml_node element)
{
    const std::string_view text = trimmedText(element, exchange.arena);
    if (localName(element) == "CIM_DateTime") {
        return text;
    }
    return exchange.arena.copyText(cimDateTime(text));
}

} // namespace

bool readItem(Exchange &exchange, pugi::xml_node element, cim::Type type, FaultKind kind, ItemText &item)
{
    item.isNull = isTrue(attributeOf(element, uri::schemaInstance, "nil"));
    if (item.isNull) {
        return true;
    }
    const pugi::xml_node inner = firstElement(element);
    if (!inner) {
        item.text = wholeText(element, exchange.arena);
        if (type == cim::Type::dateTime) { // may be XML Schema's form
            const std::string converted = cimDateTime(trim(item.text));
            item.text = converted.empty() ? item.text : std::string_view(exchange.arena.copyText(converted));
        }
        return true;
    }
    if (holdsEndpoint(element)) {
        Endpoint endpoint(exchange.arena);
        if (!readEndpoint(element, exchange.arena, endpoint, exchange.fault)) {
            return false;
        }
        item.reference = referencePath(exchange, endpoint, 0);
        return item.reference != nullptr;
    }
    if (type == cim::Type::dateTime) {
        item.text = dateTimeText(exchange, inner);
        return true;
    }
    return exchange.refuse(kind, "InvalidValues",
                           "The element " + quoted(localName(element)) + " holds no value but the element " +
                               quoted(localName(inner)) + ".");
}

bool readValues(Exchange &exchange, pugi::xml_node parent, const Declarations &declarations, FaultKind kind,
                ArenaList<ValueText> &values)
{
    // Not by a hash: the names are the client's, who could choose ones that have the same.
    std::map<std::string_view, std::size_t, NameLess> places;
    for (pugi::xml_node element = firstElement(parent); element; element = nextElement(element)) {
        const std::string_view name = localName(element);
        const Declared declared = declarations.find(name);
        ItemText item;
        if (!readItem(exchange, element, declared.type, kind, item)) {
            return false;
        }
        const auto [found, isNew] = places.try_emplace(name, values.size());
        if (isNew) {
            if (places.size() > maxValues) {
                return exchange.refuse(kind, "", "There are more than 1024 values.");
            }
            ValueText value;
            value.name = name;
            value.isNull = item.isNull;
            value.isArray = declared.isArray;
            value.item = item;
            values.append(value);
        }
        ValueText &value = values[found->second];
        if (!isNew && declared.type != cim::Type::none && !declared.isArray) {
            return exchange.refuse(kind, "InvalidValues",
                                   "The element " + quoted(name) + " is given twice, and is no array.");
        }
        if (!isNew || (value.isArray && !item.isNull)) {
            auto *items = const_cast<ArenaList<ItemText> *>(value.items);
            if (items == nullptr) {
                items = exchange.arena.make<ArenaList<ItemText>>(exchange.arena);
                value.items = items;
                if (!isNew) { // the first one turns out to be of an array
                    items->append(value.item);
                }
            }
            items->append(item);
            value.isArray = true;
            value.isNull = false;
        }
    }
    return true;
}

} // namespace host::wsman
