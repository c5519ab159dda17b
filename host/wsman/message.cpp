// SPDX-License-Identifier: Apache-2.0
#include "wsman/message.h"

#include "wsman/duration.h"
#include "wsman/uris.h"
#include "wsman/xml.h"

#include <charconv>

namespace host::wsman
{
namespace
{

constexpr std::size_t maxSelectors = 64;
constexpr std::size_t smallestEnvelope = 8192; // that a client may insist on (DSP0226)
constexpr unsigned maxNestedEndpoints = 8;     // an association whose ends are associations, and so on

bool refuse(Fault &fault, FaultKind kind, std::string_view detail, std::string_view text)
{
    fault = {};
    fault.kind = kind;
    fault.detail = detail;
    fault.text = text;
    return false;
}

bool refuseHeader(Fault &fault, FaultKind kind, std::string_view detail, std::string_view name,
                  std::string_view text)
{
    refuse(fault, kind, detail, text);
    fault.subject = name;
    return false;
}

bool readEndpoint(pugi::xml_node parent, Arena &arena, Endpoint &endpoint, Fault &fault, unsigned depth);

bool readSelectors(pugi::xml_node set, Arena &arena, ArenaList<Selector> &selectors, Fault &fault,
                   unsigned depth)
{
    for (pugi::xml_node element = firstElement(set); element; element = nextElement(element)) {
        if (!isElement(element, uri::wsman, "Selector")) {
            return refuse(fault, FaultKind::schemaValidationError, "",
                          "A SelectorSet has another child than Selector.");
        }
        Selector selector;
        selector.name = trim(attributeOf(element, "", "Name").value());
        if (selector.name.empty()) {
            return refuse(fault, FaultKind::schemaValidationError, "", "A Selector has no Name.");
        }
        if (holdsEndpoint(element)) {
            auto *reference = arena.make<Endpoint>(arena);
            if (!readEndpoint(element, arena, *reference, fault, depth + 1)) {
                return false;
            }
            selector.reference = reference;
        } else {
            selector.text = wholeText(element, arena);
        }
        if (selectors.size() == maxSelectors) {
            return refuse(fault, FaultKind::invalidSelectors, "UnexpectedSelectors",
                          "There are more than 64 selectors.");
        }
        selectors.append(selector);
    }
    return true;
}

bool readEndpoint(pugi::xml_node parent, Arena &arena, Endpoint &endpoint, Fault &fault, unsigned depth)
{
    if (depth > maxNestedEndpoints) {
        return refuse(fault, FaultKind::invalidSelectors, "InvalidValue",
                      "Endpoint references are nested more than 8 deep.");
    }
    if (const pugi::xml_node inner = childOf(parent, uri::addressing, "EndpointReference")) {
        parent = inner;
    }
    const pugi::xml_node parameters = childOf(parent, uri::addressing, "ReferenceParameters");
    endpoint.resourceUri = trimmedText(childOf(parameters, uri::wsman, "ResourceURI"), arena);
    if (endpoint.resourceUri.empty()) {
        return refuse(fault, FaultKind::invalidMessageInformationHeader, "",
                      "An endpoint reference has no ResourceURI.");
    }
    return readSelectors(childOf(parameters, uri::wsman, "SelectorSet"), arena, endpoint.selectors, fault,
                         depth);
}

// ------------------------------------------------------------------------------------------------- headers

bool readReplyTo(pugi::xml_node header, Arena &arena, Message &, Fault &fault)
{
    const std::string_view address = trimmedText(childOf(header, uri::addressing, "Address"), arena);
    if (address != uri::anonymous) {
        return refuse(fault, FaultKind::unsupportedFeature, "AddressingMode",
                      "Answers go back on the connection of the request only.");
    }
    return true;
}

bool readTimeout(pugi::xml_node header, Arena &arena, Message &message, Fault &fault)
{
    message.timeout = readDuration(trimmedText(header, arena));
    if (!message.timeout) {
        return refuseHeader(fault, FaultKind::invalidMessageInformationHeader, "", "OperationTimeout",
                            "The OperationTimeout is no duration, such as PT30S.");
    }
    return true;
}

bool readMaxEnvelopeSize(pugi::xml_node header, Arena &arena, Message &message, Fault &fault)
{
    const std::string_view text = trimmedText(header, arena);
    std::uint64_t size = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), size);
    if (problem == std::errc::result_out_of_range) {
        return true; // more than there will ever be
    }
    if (problem != std::errc() || end != text.data() + text.size()) {
        return refuseHeader(fault, FaultKind::invalidMessageInformationHeader, "", "MaxEnvelopeSize",
                            "The MaxEnvelopeSize is no number of octets.");
    }
    if (size < smallestEnvelope) {
        return refuse(fault, FaultKind::encodingLimit, "MinimumEnvelopeLimit",
                      "A MaxEnvelopeSize below 8192 octets is not supported.");
    }
    message.maxEnvelopeSize = static_cast<std::size_t>(std::min<std::uint64_t>(size, SIZE_MAX));
    return true;
}

bool readLocale(pugi::xml_node header, Arena &, Message &, Fault &fault)
{
    const std::string_view language = header.attribute("xml:lang").value();
    if (isTrue(attributeOf(header, uri::soap, "mustUnderstand")) && !language.starts_with("en")) {
        return refuse(fault, FaultKind::unsupportedFeature, "Locale", "The service speaks English only.");
    }
    return true;
}

bool readOptions(pugi::xml_node header, Arena &, Message &, Fault &fault)
{
    for (pugi::xml_node option = firstElement(header); option; option = nextElement(option)) {
        if (isTrue(attributeOf(option, "", "MustComply"))) {
            return refuse(fault, FaultKind::invalidOptions, "NotSupported",
                          "The service has no options that a client could insist on.");
        }
    }
    return true;
}

bool readFragment(pugi::xml_node header, Arena &arena, Message &message, Fault &fault)
{
    const std::string_view dialect = attributeOf(header, "", "Dialect").value();
    if (!dialect.empty() && dialect != uri::xpath) {
        return refuse(fault, FaultKind::unsupportedFeature, "FragmentLevelAccess",
                      "Fragments are named by XPath only.");
    }
    message.fragment = trimmedText(header, arena);
    return true;
}

bool readResourceUri(pugi::xml_node header, Arena &arena, Message &message, Fault &)
{
    message.resource.resourceUri = trimmedText(header, arena);
    return true;
}

bool readSelectorSet(pugi::xml_node header, Arena &arena, Message &message, Fault &fault)
{
    return readSelectors(header, arena, message.resource.selectors, fault, 0);
}

bool readAction(pugi::xml_node header, Arena &arena, Message &message, Fault &)
{
    message.action = trimmedText(header, arena);
    return true;
}

bool readMessageId(pugi::xml_node header, Arena &arena, Message &message, Fault &)
{
    message.messageId = trimmedText(header, arena);
    return true;
}

bool readItemCount(pugi::xml_node, Arena &, Message &message, Fault &)
{
    message.wantsItemCount = true;
    return true;
}

bool readEndpointRequest(pugi::xml_node, Arena &, Message &message, Fault &)
{
    message.wantsEndpoint = true;
    return true;
}

bool passOver(pugi::xml_node, Arena &, Message &, Fault &)
{
    return true;
}

struct Header {
    std::string_view nameSpace;
    std::string_view name;
    bool (*read)(pugi::xml_node header, Arena &arena, Message &message, Fault &fault);
};

constexpr Header knownHeaders[] = {
    {uri::addressing, "Action", readAction},
    {uri::addressing, "MessageID", readMessageId},
    {uri::wsman, "ResourceURI", readResourceUri},
    {uri::wsman, "SelectorSet", readSelectorSet},
    {uri::addressing, "To", passOver},
    {uri::addressing, "From", passOver},
    {uri::addressing, "ReplyTo", readReplyTo},
    {uri::addressing, "FaultTo", readReplyTo},
    {uri::wsman, "OperationTimeout", readTimeout},
    {uri::wsman, "MaxEnvelopeSize", readMaxEnvelopeSize},
    {uri::wsman, "FragmentTransfer", readFragment},
    {uri::wsman, "Locale", readLocale},
    {uri::wsman, "OptionSet", readOptions},
    {uri::wsman, "RequestTotalItemsCountEstimate", readItemCount},
    {uri::wsman, "RequestEPR", readEndpointRequest},
};

const Header *findHeader(pugi::xml_node element)
{
    const std::string_view name = localName(element);
    for (const Header &header : knownHeaders) {
        if (header.name == name && header.nameSpace == nameSpaceOf(element)) {
            return &header;
        }
    }
    return nullptr;
}

/** The MessageID is read before anything can go wrong, so that every fault can say what it relates to. */
bool readHeaders(pugi::xml_node headers, Arena &arena, Message &message, Fault &fault)
{
    message.messageId = trimmedText(childOf(headers, uri::addressing, "MessageID"), arena);
    for (pugi::xml_node element = firstElement(headers); element; element = nextElement(element)) {
        const Header *header = findHeader(element);
        if (header == nullptr) {
            if (isTrue(attributeOf(element, uri::soap, "mustUnderstand"))) {
                refuseHeader(fault, FaultKind::mustUnderstand, "", localName(element), "");
                fault.subjectNameSpace = nameSpaceOf(element);
                return false;
            }
            continue;
        }
        for (pugi::xml_node other = nextElement(element); other; other = nextElement(other)) {
            if (findHeader(other) == header) {
                return refuseHeader(fault, FaultKind::invalidMessageInformationHeader, "", header->name,
                                    "A header is given twice.");
            }
        }
        if (!header->read(element, arena, message, fault)) {
            return false;
        }
    }
    return true;
}

constexpr std::size_t maxHeaders = 32;

} // namespace

bool holdsEndpoint(pugi::xml_node parent)
{
    return childOf(parent, uri::addressing, "ReferenceParameters") ||
           childOf(parent, uri::addressing, "EndpointReference");
}

bool readEndpoint(pugi::xml_node parent, Arena &arena, Endpoint &endpoint, Fault &fault)
{
    return readEndpoint(parent, arena, endpoint, fault, 0);
}

bool readSelectors(pugi::xml_node set, Arena &arena, ArenaList<Selector> &selectors, Fault &fault)
{
    return readSelectors(set, arena, selectors, fault, 0);
}

bool readMessage(const pugi::xml_document &document, Arena &arena, Message &message, Fault &fault)
{
    const pugi::xml_node envelope = document.document_element();
    if (!isElement(envelope, uri::soap, "Envelope")) {
        return localName(envelope) == "Envelope"
                   ? refuse(fault, FaultKind::versionMismatch, "", "")
                   : refuse(fault, FaultKind::schemaValidationError, "", "The document is no SOAP envelope.");
    }
    const pugi::xml_node headers = childOf(envelope, uri::soap, "Header");
    message.body = childOf(envelope, uri::soap, "Body");
    if (!message.body) {
        return refuse(fault, FaultKind::schemaValidationError, "", "The envelope has no Body.");
    }
    message.isIdentify = isElement(firstElement(message.body), uri::identity, "Identify");
    std::size_t count = 0;
    for (pugi::xml_node element = firstElement(headers); element; element = nextElement(element)) {
        if (++count > maxHeaders) {
            return refuse(fault, FaultKind::schemaValidationError, "", "There are more than 32 headers.");
        }
    }
    if (!readHeaders(headers, arena, message, fault)) {
        return false;
    }
    if (message.isIdentify) {
        return true; // needs no header
    }
    if (message.action.empty() || message.messageId.empty()) {
        const std::string_view missing = message.action.empty() ? "Action" : "MessageID";
        return refuseHeader(fault, FaultKind::messageInformationHeaderRequired, "", missing,
                            message.action.empty() ? "The header wsa:Action is missing."
                                                   : "The header wsa:MessageID is missing.");
    }
    if (message.resource.resourceUri.empty()) {
        return refuse(fault, FaultKind::destinationUnreachable, "InvalidResourceURI",
                      "The header wsman:ResourceURI is missing.");
    }
    return true;
}

} // namespace host::wsman
