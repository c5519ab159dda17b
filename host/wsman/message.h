// SPDX-License-Identifier: Apache-2.0
// The envelope of a request: its headers, and where its body is.
#ifndef HOST_WSMAN_MESSAGE_H
#define HOST_WSMAN_MESSAGE_H

#include "cmpi/arena.h"
#include "wsman/fault.h"

#include <pugixml.hpp>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace host::wsman
{

struct Endpoint;

/** One selector: a text, or the endpoint of a key that is a reference. */
struct Selector {
    std::string_view name;
    std::string_view text;
    const Endpoint *reference = nullptr;
};

/** What names an object: the resource URI of its class, and its keys. */
struct Endpoint {
    explicit Endpoint(Arena &arena) : selectors(arena) {}

    std::string_view resourceUri;
    ArenaList<Selector> selectors;
};

struct Message {
    explicit Message(Arena &arena) : resource(arena) {}

    std::string_view action;
    std::string_view messageId;
    Endpoint resource;
    std::size_t maxEnvelopeSize = SIZE_MAX;
    std::optional<std::chrono::milliseconds> timeout;
    /** The expression of a fragment transfer; none: it concerns the whole object. */
    std::optional<std::string_view> fragment;
    bool wantsItemCount = false;
    /** After a Put the client wants to hear by which endpoint reference the object is found. */
    bool wantsEndpoint = false;
    bool isIdentify = false;
    pugi::xml_node body;
};

/** Reads the envelope. False, with the fault, when it is none, or asks for what this service has not. What
 * could be read stands in the message all the same. */
[[nodiscard]] bool readMessage(const pugi::xml_document &document, Arena &arena, Message &message,
                               Fault &fault);

/** Reads the reference parameters that are there, or in the EndpointReference that is there. */
[[nodiscard]] bool readEndpoint(pugi::xml_node parent, Arena &arena, Endpoint &endpoint, Fault &fault);

/** Reads the selectors of a SelectorSet. */
[[nodiscard]] bool readSelectors(pugi::xml_node set, Arena &arena, ArenaList<Selector> &selectors,
                                 Fault &fault);

/** True when the element holds an endpoint reference, directly or as an element of its own. */
bool holdsEndpoint(pugi::xml_node parent);

} // namespace host::wsman

#endif
