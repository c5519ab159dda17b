// SPDX-License-Identifier: Apache-2.0
// WS-Management requests up to the answer. Several requests of one input follow each other; @CONTEXT@ stands
// for the enumeration context that the last answer named.
#include "wsman/wsman.h"

#include "fuzz.h"
#include "http_message.h"
#include "test_classes.h"

#include <pugixml.hpp>

#include <cstring>
#include <set>

namespace
{

constexpr host::XmlLimits generous{.depth = 10'000, .elements = 10'000'000, .attributes = 1000};

void replaceAll(std::string &text, std::string_view what, std::string_view with)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
}

/** The element of that name, whatever prefix it has. */
pugi::xml_node childOf(const pugi::xml_node &node, std::string_view name)
{
    return node.find_child([name](const pugi::xml_node &child) {
        const std::string_view whole = child.name();
        return whole.substr(whole.find(':') == std::string_view::npos ? 0 : whole.find(':') + 1) == name;
    });
}

bool isForReaders(const pugi::xml_node &header)
{
    static const std::set<std::string_view> reads = {
        "http://schemas.xmlsoap.org/ws/2004/09/transfer/GetResponse",
        "http://schemas.xmlsoap.org/ws/2004/09/enumeration/EnumerateResponse",
        "http://schemas.xmlsoap.org/ws/2004/09/enumeration/PullResponse",
        "http://schemas.xmlsoap.org/ws/2004/09/enumeration/ReleaseResponse",
    };
    return header.empty() || childOf(header, "Action").empty() ||
           reads.contains(childOf(header, "Action").text().get());
}

/** An envelope with an answer or a fault, as the status says. Returns the context that it names, if any. */
std::string checkAnswer(const fuzz::HttpMessage &message, const fuzz::Reply &reply)
{
    pugi::xml_document document;
    std::string copy = reply.body;
    fuzz::require(host::checkXml(copy, generous) == host::XmlProblem::none &&
                      document.load_string(reply.body.c_str()),
                  "an answer is well-formed", reply.body);
    const pugi::xml_node envelope = childOf(document, "Envelope");
    const pugi::xml_node body = childOf(envelope, "Body");
    fuzz::require(!body.empty() && body == envelope.last_child(), "an answer is an envelope", reply.body);
    const pugi::xml_node fault = childOf(body, "Fault");
    fuzz::require(fault.empty() == (reply.head.status == 200), "a fault has the status of a failure",
                  reply.body);
    const char *role = message.value("X-Role");
    if (role != nullptr && std::strcmp(role, "reader") == 0) {
        fuzz::require(!fault.empty() || isForReaders(childOf(envelope, "Header")),
                      "a reader changes nothing and calls no method", reply.body);
    }
    return childOf(body.first_child(), "EnumerationContext").text().get();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    host::WsmanFrontEnd frontEnd(fuzz::testManager().dispatcher());
    std::string context;
    for (fuzz::HttpMessage &message : fuzz::messagesOf(fuzz::textOf(data, size))) {
        replaceAll(message.body, "@CONTEXT@", context);
        const fuzz::Reply reply = fuzz::answerOf(frontEnd, message);
        if (!reply.body.empty()) {
            context = checkAnswer(message, reply);
        }
    }
    return 0;
}
