// SPDX-License-Identifier: Apache-2.0
// CIM-XML requests, headers included, up to the answer. Several requests of one input follow each other in a
// session;
// @CONTEXT@ stands for the enumeration context that the last answer named.
#include "cimxml/cimxml.h"

#include "fuzz.h"
#include "http_message.h"
#include "test_classes.h"

#include <pugixml.hpp>

#include <cstring>
#include <set>

namespace
{

constexpr host::XmlLimits generous{.depth = 10'000, .elements = 10'000'000, .attributes = 1000};
constexpr int lastCimCode = 29;

void replaceAll(std::string &text, std::string_view what, std::string_view with)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
}

/** What changes the monitor, or calls a method, is not for readers. */
bool isForReaders(const pugi::xml_node &response)
{
    static const std::set<std::string_view> changes = {"CreateInstance", "DeleteInstance", "ModifyInstance",
                                                       "SetProperty"};
    return std::strcmp(response.name(), "IMETHODRESPONSE") == 0 &&
           !changes.contains(response.attribute("NAME").value());
}

/** A message that answers the request. Returns the context that it names, if any. */
std::string checkAnswer(const fuzz::HttpMessage &message, const std::string &body)
{
    pugi::xml_document document;
    std::string copy = body;
    fuzz::require(host::checkXml(copy, generous) == host::XmlProblem::none &&
                      document.load_string(body.c_str()),
                  "an answer is well-formed", body);
    const pugi::xml_node answer = document.child("CIM").child("MESSAGE");
    const pugi::xml_node response = answer.child("SIMPLERSP").first_child();
    fuzz::require(!response.empty() && response == answer.child("SIMPLERSP").last_child(),
                  "an answer has one response", body);
    pugi::xml_document request;
    fuzz::require(request.load_buffer(message.body.data(), message.body.size()),
                  "what was answered is well-formed", message.body);
    const pugi::xml_node asked = request.child("CIM").child("MESSAGE");
    // What the encoding cannot hold is replaced; all else comes back.
    fuzz::require(std::strcmp(asked.attribute("ID").value(), answer.attribute("ID").value()) == 0,
                  "an answer has the request's ID", body);
    const pugi::xml_node error = response.child("ERROR");
    if (!error.empty()) {
        const int code = error.attribute("CODE").as_int();
        fuzz::require(code >= 1 && code <= lastCimCode, "an error has a code of CIM", body);
        fuzz::require(error == response.last_child(), "after an error comes nothing", body);
    }
    const char *role = message.value("X-Role");
    if (role != nullptr && std::strcmp(role, "reader") == 0) {
        fuzz::require(!error.empty() || isForReaders(response),
                      "a reader changes nothing and calls no method", body);
    }
    return response.find_child_by_attribute("PARAMVALUE", "NAME", "EnumerationContext")
        .child("VALUE")
        .text()
        .get();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    host::CimXmlFrontEnd frontEnd(fuzz::testManager().dispatcher());
    std::string context;
    for (fuzz::HttpMessage &message : fuzz::messagesOf(fuzz::textOf(data, size))) {
        replaceAll(message.body, "@CONTEXT@", context);
        const fuzz::Reply reply = fuzz::answerOf(frontEnd, message);
        if (!reply.body.empty() && reply.head.status == 200) {
            context = checkAnswer(message, reply.body);
        }
    }
    return 0;
}
