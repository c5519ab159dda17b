// SPDX-License-Identifier: Apache-2.0
#include "wsman/filter.h"

#include "wsman/uris.h"
#include "wsman/xml.h"

namespace host::wsman
{
namespace
{

/** The text of the child element, for a request; null when there is none. */
const char *filterText(Exchange &exchange, pugi::xml_node parent, std::string_view name)
{
    const std::string_view text = trimmedText(childOf(parent, uri::binding, name), exchange.arena);
    return text.empty() ? nullptr : exchange.arena.copyText(text);
}

/** The names of IncludeResultProperty, ending with null; null when there are none. */
const char **resultProperties(Exchange &exchange, pugi::xml_node parent)
{
    ArenaList<const char *> names(exchange.arena);
    for (pugi::xml_node element = firstElement(parent); element; element = nextElement(element)) {
        if (isElement(element, uri::binding, "IncludeResultProperty")) {
            names.append(exchange.arena.copyText(trimmedText(element, exchange.arena)));
        }
    }
    if (names.empty()) {
        return nullptr;
    }
    names.append(nullptr);
    return names.begin();
}

bool readAssociationFilter(Exchange &exchange, pugi::xml_node element, bool wantsPaths, Filter &filter)
{
    const pugi::xml_node associated = childOf(element, uri::binding, "AssociatedInstances");
    const pugi::xml_node associations = childOf(element, uri::binding, "AssociationInstances");
    const pugi::xml_node kind = associated ? associated : associations;
    const pugi::xml_node object = childOf(kind, uri::binding, "Object");
    if (!object || (associated && associations)) {
        return exchange.refuse(FaultKind::cannotProcessFilter, "",
                               "An association filter has one AssociatedInstances or AssociationInstances, "
                               "with an Object.");
    }
    Endpoint endpoint(exchange.arena);
    Target source;
    if (!readEndpoint(object, exchange.arena, endpoint, exchange.fault) ||
        !findTarget(exchange, endpoint, true, source)) {
        return false;
    }
    Request &request = filter.request;
    request.nameSpace = source.nameSpace;
    request.path = source.path;
    request.propertyList = resultProperties(exchange, kind);
    request.filter.role = filterText(exchange, kind, "Role");
    if (associated) {
        request.operation = wantsPaths ? Operation::associatorNames : Operation::associators;
        request.filter.associationClass = filterText(exchange, kind, "AssociationClassName");
        request.filter.resultClass = filterText(exchange, kind, "ResultClassName");
        request.filter.resultRole = filterText(exchange, kind, "ResultRole");
    } else {
        request.operation = wantsPaths ? Operation::referenceNames : Operation::references;
        request.filter.associationClass = filterText(exchange, kind, "ResultClassName");
    }
    return true;
}

bool readSelectorFilter(Exchange &exchange, pugi::xml_node element, const Target &target, Filter &filter)
{
    const pugi::xml_node set = childOf(element, uri::wsman, "SelectorSet");
    if (!set || target.klass == nullptr) {
        return exchange.refuse(FaultKind::cannotProcessFilter, "",
                               "A selector filter has a SelectorSet, and the resource is a class.");
    }
    if (!readSelectors(set, exchange.arena, filter.selectors, exchange.fault)) {
        return false;
    }
    for (const Selector &selector : filter.selectors) {
        if (selector.reference != nullptr || target.klass->placeOf(selector.name) == cim::noProperty) {
            return exchange.refuse(FaultKind::cannotProcessFilter, "",
                                   "The selector filter cannot tell objects of the class " +
                                       target.klass->name + " by " +
                                       std::string(selector.name.substr(0, 200)) + ".");
        }
    }
    filter.request.operation = Operation::enumerateInstances; // the values are looked at
    return true;
}

bool readQuery(Exchange &exchange, pugi::xml_node element, const char *language, Filter &filter)
{
    filter.request.operation = Operation::execQuery;
    filter.request.queryLanguage = language;
    filter.request.query = exchange.arena.copyText(trimmedText(element, exchange.arena));
    return true;
}

/** Looks whether the instance has the values of the selectors. */
bool fits(Typing &typing, const Instance &instance, const ArenaList<Selector> &selectors, bool &matches)
{
    matches = true;
    for (const Selector &selector : selectors) {
        const std::size_t place = instance.klass->placeOf(selector.name);
        const cim::Property &property = instance.klass->properties[place];
        ValueText text;
        text.name = selector.name;
        text.item.text = selector.text;
        CMPIData wanted = {};
        if (!typing.value(text, property.type, false, "", wanted)) {
            return false;
        }
        const CMPIData &value = instance.values[place];
        Arena &arena = *instance.arena;
        matches = matches && !isNull(value) && value.type == wanted.type &&
                  valueText(arena, value)->view() == valueText(arena, wanted)->view();
    }
    return true;
}

} // namespace

bool Filter::apply(Exchange &exchange, Answer &answer) const
{
    if (selectors.empty()) {
        return true;
    }
    Typing typing(exchange.arena, exchange.service.dispatcher.nameSpaces());
    std::size_t kept = 0;
    for (std::size_t i = 0; i < answer.instances.size(); ++i) {
        bool matches = false;
        if (!fits(typing, *answer.instances[i], selectors, matches)) {
            exchange.refuse(FaultKind::cannotProcessFilter, "", typing.error());
            exchange.fault.code = typing.code();
            return false;
        }
        if (matches) {
            answer.instances[kept++] = answer.instances[i];
        }
    }
    answer.instances.truncate(kept);
    return true;
}

bool readFilter(Exchange &exchange, pugi::xml_node enumerate, const Target &target, bool wantsPaths,
                Filter &filter)
{
    pugi::xml_node element = childOf(enumerate, uri::wsman, "Filter");
    if (!element) {
        element = childOf(enumerate, uri::enumeration, "Filter");
    }
    filter.request.nameSpace = target.nameSpace;
    if (!element) {
        if (target.klass == nullptr) {
            return exchange.refuse(FaultKind::cannotProcessFilter, "",
                                   "An enumeration of all classes needs a filter.");
        }
        filter.request.operation =
            wantsPaths ? Operation::enumerateInstanceNames : Operation::enumerateInstances;
        filter.request.className = target.klass->name;
        return true;
    }
    filter.request.className = target.klass != nullptr ? std::string_view(target.klass->name) : "";
    const std::string_view dialect = trim(attributeOf(element, "", "Dialect").value());
    if (dialect == uri::associationFilter) {
        return readAssociationFilter(exchange, element, wantsPaths, filter);
    }
    if (dialect == uri::selectorFilter) {
        return readSelectorFilter(exchange, element, target, filter);
    }
    if (dialect == uri::cql) {
        return readQuery(exchange, element, "DMTF:CQL", filter);
    }
    if (dialect == uri::wql) {
        return readQuery(exchange, element, "WQL", filter);
    }
    return exchange.refuse(FaultKind::filterDialectRequestedUnavailable, "",
                           "There is no filter dialect " + std::string(dialect.substr(0, 200)) + ".");
}

} // namespace host::wsman
