// SPDX-License-Identifier: Apache-2.0
#include "wsman/wsman.h"

#include "core/xml_document.h"
#include "wsman/uris.h"

namespace host
{
namespace
{

using wsman::Exchange;
using wsman::FaultKind;

constexpr std::size_t firstChunk = std::size_t{32} * 1024; // of a request's memory

struct Action {
    std::string_view name;
    bool (*run)(Exchange &exchange);
    bool changes; // then the answer may be too long, but what was done is done
};

constexpr Action actions[] = {
    {wsman::uri::getAction, wsman::get, false},
    {wsman::uri::putAction, wsman::put, true},
    {wsman::uri::createAction, wsman::create, true},
    {wsman::uri::deleteAction, wsman::remove, true},
    {wsman::uri::pullAction, wsman::pull, false},
    {wsman::uri::enumerateAction, wsman::enumerate, false},
    {wsman::uri::releaseAction, wsman::release, false},
};

constexpr Action invokeAction = {"", wsman::invoke, true};

const Action &actionOf(std::string_view name)
{
    for (const Action &action : actions) {
        if (action.name == name) {
            return action;
        }
    }
    return invokeAction;
}

/** Does what the message asks. False with the fault when it cannot be done. */
bool answer(Exchange &exchange)
{
    const wsman::Message &message = exchange.message;
    if (message.isIdentify) {
        return wsman::identify(exchange);
    }
    const Action &action = actionOf(message.action);
    if (message.fragment && message.action != wsman::uri::getAction &&
        message.action != wsman::uri::putAction) {
        return exchange.refuse(FaultKind::unsupportedFeature, "FragmentLevelAccess",
                               "Get and Put have fragments, other actions have not.");
    }
    if (!action.run(exchange)) {
        return false;
    }
    if (exchange.out.size() > message.maxEnvelopeSize) {
        return exchange.refuse(FaultKind::encodingLimit,
                               action.changes ? "UnreportableSuccess" : "MaxEnvelopeSize",
                               "The answer is longer than the MaxEnvelopeSize of the request allows.");
    }
    return true;
}

} // namespace

WsmanFrontEnd::WsmanFrontEnd(Dispatcher &dispatcher, const WsmanOptions &options)
    : limits_(options.xml), service_{dispatcher,
                                     Contexts(options.contexts, options.now),
                                     wsman::FragmentCache(dispatcher.nameSpaces()),
                                     options.vendorBase,
                                     options.vendor,
                                     options.version}
{
}

bool WsmanFrontEnd::serves(std::string_view path) const
{
    return path == "/wsman";
}

bool WsmanFrontEnd::takes(std::string_view mediaType) const
{
    return mediaType == "application/soap+xml";
}

HttpReply WsmanFrontEnd::handle(const HttpRequest &request, TextBuffer &out)
{
    pugi::xml_document document;
    Arena arena(firstChunk, request.memory);
    Exchange exchange(service_, request, arena, out);
    HttpReply reply;
    reply.contentType = "application/soap+xml;charset=UTF-8";
    const XmlProblem problem = readXml(request.body, limits_, request.memory, document);
    if (problem == XmlProblem::notWellFormed) {
        exchange.refuse(FaultKind::schemaValidationError, "", "The document is no well-formed XML.");
    } else if (problem != XmlProblem::none) {
        exchange.refuse(FaultKind::encodingLimit, "", limitText(problem, limits_));
    }
    if (problem != XmlProblem::none ||
        !wsman::readMessage(document, arena, exchange.message, exchange.fault) || !answer(exchange)) {
        out.clear();
        reply.status = wsman::httpStatus(exchange.fault.kind);
        exchange.writer().fault(exchange.fault, exchange.message.messageId);
    }
    return reply;
}

} // namespace host
