// SPDX-License-Identifier: Apache-2.0
// Identify, and the operations on one object: Get, Put, Create, Delete.
#include "core/xml_text.h"
#include "wsman/exchange.h"
#include "wsman/uris.h"
#include "wsman/xml.h"

#include <charconv>

namespace host::wsman
{
namespace
{

class Properties final : public Declarations
{
  public:
    explicit Properties(const cim::Class &klass) : klass_(klass) {}

    Declared find(std::string_view name) const override
    {
        const std::size_t place = klass_.placeOf(name);
        if (place == cim::noProperty) {
            return {};
        }
        return {klass_.properties[place].type, klass_.properties[place].isArray};
    }

  private:
    const cim::Class &klass_;
};

/** What a fragment transfer is about. */
struct Fragment {
    std::size_t place = 0; // of the property
    std::size_t index = 0; // of the element of an array, from 1; 0: all of the property
    bool textOnly = false;
};

/** Takes "[3]" off the end of the text; false when there is a bracket, but no number in it. */
bool takeIndex(std::string_view &text, std::size_t &index)
{
    if (!text.ends_with(']')) {
        return true;
    }
    const std::size_t open = text.rfind('[');
    if (open == std::string_view::npos) {
        return false;
    }
    const std::string_view number = text.substr(open + 1, text.size() - open - 2);
    const auto [end, problem] = std::from_chars(number.data(), number.data() + number.size(), index);
    text = text.substr(0, open);
    return problem == std::errc() && end == number.data() + number.size() && index != 0;
}

/** Reads the part of XPath that names a property: [/Class/]Property[n][/text()], with or without prefixes. */
bool readFragment(Exchange &exchange, const cim::Class &klass, Fragment &fragment)
{
    constexpr std::string_view textStep = "/text()";
    std::string_view text = *exchange.message.fragment;
    if (text.ends_with(textStep)) {
        fragment.textOnly = true;
        text.remove_suffix(textStep.size());
    }
    const bool isGood = takeIndex(text, fragment.index);
    const std::size_t slash = text.rfind('/');
    if (slash != std::string_view::npos) {
        text.remove_prefix(slash + 1);
    }
    text.remove_prefix(text.find(':') + 1); // npos + 1 is 0
    fragment.place = klass.placeOf(text);
    if (!isGood || fragment.place == cim::noProperty) {
        return exchange.refuse(FaultKind::invalidRepresentation, "InvalidFragment",
                               "The fragment " + std::string(exchange.message.fragment->substr(0, 200)) +
                                   " names no property of the class " + klass.name + ".");
    }
    return true;
}

/** The property list with that one property. */
const char **listOf(Exchange &exchange, const cim::Class &klass, std::size_t place)
{
    const char **list = exchange.arena.makeArray<const char *>(2);
    list[0] = klass.properties[place].name.c_str();
    return list;
}

/** The header that answers a fragment transfer. */
std::string fragmentHeader(const Exchange &exchange)
{
    TextBuffer text;
    text.append("<wsman:FragmentTransfer s:mustUnderstand=\"true\">");
    appendEscaped(text, *exchange.message.fragment);
    text.append("</wsman:FragmentTransfer>");
    return std::string(text.view());
}

/** The header that answers RequestEPR. */
std::string endpointHeader(Exchange &exchange, const Path &path)
{
    TextBuffer text;
    Writer writer(text, exchange.service.fragments, exchange.vendorBase);
    text.append("<wsman:RequestedEPR>");
    writer.endpoint(path);
    text.append("</wsman:RequestedEPR>");
    return std::string(text.view());
}

/** Reads the object and writes the answer to a Get or Put. */
bool answerWithObject(Exchange &exchange, const Target &target, const Fragment &fragment)
{
    const Message &message = exchange.message;
    Request request;
    request.operation = Operation::getInstance;
    request.nameSpace = target.nameSpace;
    request.path = target.path;
    if (message.fragment) {
        request.propertyList = listOf(exchange, *target.klass, fragment.place);
    }
    Answer answer(exchange.arena);
    if (!exchange.run(request, answer)) {
        return false;
    }
    const Instance &found = *answer.instances[0];
    std::string headers;
    if (message.wantsEndpoint && message.action == uri::putAction) {
        headers = endpointHeader(exchange, *found.path);
    }
    Writer writer = exchange.writer();
    if (!message.fragment) {
        writer.instance(found);
        writer.finish(message.action, "Response", message.messageId, headers);
        return true;
    }
    // The object may be of a subclass, where the property stands elsewhere.
    const std::size_t place = found.klass->placeOf(target.klass->properties[fragment.place].name);
    writer.fragment(found, place, fragment.index, fragment.textOnly);
    writer.finish(message.action, "Response", message.messageId, fragmentHeader(exchange) + headers);
    return true;
}

/** The instance that stands in the body. needsTarget: it is the one of the target, whose keys it cannot
 * change. */
Instance *readInstance(Exchange &exchange, const Target &target, bool needsTarget)
{
    const pugi::xml_node element = firstElement(exchange.message.body);
    if (localName(element) != target.klass->name) {
        exchange.refuse(FaultKind::invalidRepresentation, "InvalidNamespace",
                        "The body holds no object of the class " + target.klass->name + ".");
        return nullptr;
    }
    ArenaList<ValueText> values(exchange.arena);
    if (!readValues(exchange, element, Properties(*target.klass), FaultKind::invalidRepresentation, values)) {
        return nullptr;
    }
    Typing typing(exchange.arena, exchange.service.dispatcher.nameSpaces());
    Instance *instance = typing.instance(*target.path, values);
    if (instance == nullptr) {
        exchange.refuse(FaultKind::invalidRepresentation, "InvalidValues", typing.error());
        exchange.fault.code = typing.code();
        return nullptr;
    }
    if (needsTarget && !samePath(*instance->path, *target.path)) {
        exchange.refuse(FaultKind::invalidRepresentation, "InvalidValues",
                        "The keys of an object cannot be changed.");
        return nullptr;
    }
    return instance;
}

/** The element of an array that the fragment holds; false with the fault when it holds none. */
bool readElement(Exchange &exchange, const Target &target, const cim::Property &property,
                 pugi::xml_node fragmentNode, CMPIData &data)
{
    const pugi::xml_node inner = firstElement(fragmentNode);
    if (!property.isArray ||
        (inner && (!cim::sameName(localName(inner), property.name) || nextElement(inner)))) {
        return exchange.refuse(FaultKind::invalidRepresentation, "InvalidFragment",
                               "The body holds something else than one element of the array " +
                                   property.name + ".");
    }
    ValueText value;
    value.name = property.name;
    if (!readItem(exchange, inner ? inner : fragmentNode, property.type, FaultKind::invalidRepresentation,
                  value.item)) {
        return false;
    }
    value.isNull = value.item.isNull;
    Typing typing(exchange.arena, exchange.service.dispatcher.nameSpaces());
    if (!typing.value(value, property.type, false, target.nameSpace, data)) {
        exchange.refuse(FaultKind::invalidRepresentation, "InvalidValues", typing.error());
        exchange.fault.code = typing.code();
        return false;
    }
    return true;
}

/** The instance with the array of the fragment as it is, but for the one element that is in the body. */
Instance *readElementInstance(Exchange &exchange, const Target &target, const Fragment &fragment,
                              pugi::xml_node fragmentNode)
{
    const cim::Property &property = target.klass->properties[fragment.place];
    CMPIData element = {};
    Request request;
    request.operation = Operation::getInstance;
    request.nameSpace = target.nameSpace;
    request.path = target.path;
    request.propertyList = listOf(exchange, *target.klass, fragment.place);
    Answer answer(exchange.arena);
    if (!readElement(exchange, target, property, fragmentNode, element) || !exchange.run(request, answer)) {
        return nullptr;
    }
    const Instance &found = *answer.instances[0];
    const CMPIData data = copyData(exchange.arena, found.values[found.klass->placeOf(property.name)]);
    const Array *array = arrayOf(data);
    if (array == nullptr || fragment.index > array->size) {
        exchange.refuse(FaultKind::invalidRepresentation, "InvalidFragment",
                        "The array " + property.name + " has no element " + std::to_string(fragment.index) +
                            ".");
        return nullptr;
    }
    array->elements[fragment.index - 1] = element;
    Instance *instance = makeInstance(exchange.arena, *target.path);
    setProperty(*instance, fragment.place, data);
    return instance;
}

/** The instance with the one property of the fragment, which is in the body. */
Instance *readFragmentInstance(Exchange &exchange, const Target &target, const Fragment &fragment)
{
    const cim::Property &property = target.klass->properties[fragment.place];
    const pugi::xml_node element = childOf(exchange.message.body, uri::wsman, "XmlFragment");
    if (!element) {
        exchange.refuse(FaultKind::invalidRepresentation, "MissingValues",
                        "The body holds no wsman:XmlFragment.");
        return nullptr;
    }
    if (fragment.index != 0) {
        return readElementInstance(exchange, target, fragment, element);
    }
    ArenaList<ValueText> values(exchange.arena);
    if (firstElement(element)) {
        if (!readValues(exchange, element, Properties(*target.klass), FaultKind::invalidRepresentation,
                        values)) {
            return nullptr;
        }
    } else {
        ValueText value;
        value.name = property.name;
        value.isArray = property.isArray;
        if (!readItem(exchange, element, property.type, FaultKind::invalidRepresentation, value.item)) {
            return nullptr;
        }
        value.isNull = value.item.isNull || property.isArray;
        values.append(value);
    }
    if (values.size() != 1 || !cim::sameName(values[0].name, property.name)) {
        exchange.refuse(FaultKind::invalidRepresentation, "InvalidFragment",
                        "The body holds something else than the property " + property.name + ".");
        return nullptr;
    }
    Typing typing(exchange.arena, exchange.service.dispatcher.nameSpaces());
    Instance *instance = typing.instance(*target.path, values);
    if (instance == nullptr) {
        exchange.refuse(FaultKind::invalidRepresentation, "InvalidValues", typing.error());
        exchange.fault.code = typing.code();
    }
    return instance;
}

} // namespace

bool identify(Exchange &exchange)
{
    exchange.out.append("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                        "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\""
                        " xmlns:wsmid=\"http://schemas.dmtf.org/wbem/wsman/identity/1/wsmanidentity.xsd\">"
                        "<s:Header/><s:Body><wsmid:IdentifyResponse>");
    Writer writer = exchange.writer();
    writer.element("wsmid:ProtocolVersion", uri::wsman);
    writer.element("wsmid:ProductVendor", exchange.service.vendor);
    writer.element("wsmid:ProductVersion", exchange.service.version);
    exchange.out.append("</wsmid:IdentifyResponse></s:Body></s:Envelope>\n");
    return true;
}

bool get(Exchange &exchange)
{
    Target target;
    Fragment fragment;
    return findTarget(exchange, exchange.message.resource, true, target) &&
           (!exchange.message.fragment || readFragment(exchange, *target.klass, fragment)) &&
           answerWithObject(exchange, target, fragment);
}

bool put(Exchange &exchange)
{
    Target target;
    Fragment fragment;
    if (!findTarget(exchange, exchange.message.resource, true, target) ||
        (exchange.message.fragment && !readFragment(exchange, *target.klass, fragment))) {
        return false;
    }
    Request request;
    request.operation = Operation::modifyInstance;
    request.nameSpace = target.nameSpace;
    request.path = target.path;
    if (exchange.message.fragment) {
        request.instance = readFragmentInstance(exchange, target, fragment);
        request.propertyList = listOf(exchange, *target.klass, fragment.place);
    } else {
        request.instance = readInstance(exchange, target, true);
    }
    Answer answer(exchange.arena);
    if (request.instance == nullptr || !exchange.run(request, answer)) {
        return false;
    }
    if (!answerWithObject(exchange, target, fragment)) { // changed all the same
        exchange.fault = {};
        exchange.out.clear();
        exchange.writer().finish(exchange.message.action, "Response", exchange.message.messageId);
    }
    return true;
}

bool create(Exchange &exchange)
{
    Target target;
    if (!findTarget(exchange, exchange.message.resource, false, target)) {
        return false;
    }
    Request request;
    request.operation = Operation::createInstance;
    request.nameSpace = target.nameSpace;
    request.path = target.path;
    request.instance = readInstance(exchange, target, false);
    Answer answer(exchange.arena);
    if (request.instance == nullptr || !exchange.run(request, answer)) {
        return false;
    }
    Writer writer = exchange.writer();
    writer.raw("<wxf:ResourceCreated>");
    writer.endpointParts(*answer.paths[0]);
    writer.raw("</wxf:ResourceCreated>");
    writer.finish(exchange.message.action, "Response", exchange.message.messageId);
    return true;
}

bool remove(Exchange &exchange)
{
    Target target;
    if (!findTarget(exchange, exchange.message.resource, true, target)) {
        return false;
    }
    Request request;
    request.operation = Operation::deleteInstance;
    request.nameSpace = target.nameSpace;
    request.path = target.path;
    Answer answer(exchange.arena);
    if (!exchange.run(request, answer)) {
        return false;
    }
    exchange.writer().finish(exchange.message.action, "Response", exchange.message.messageId);
    return true;
}

} // namespace host::wsman
