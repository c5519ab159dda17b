// SPDX-License-Identifier: Apache-2.0
#include "cimxml/cimxml.h"

#include "cimxml/pull.h"
#include "cimxml/reader.h"
#include "core/xml_document.h"

#include <algorithm>

namespace host
{
namespace
{

constexpr unsigned httpBadRequest = 400;
constexpr unsigned httpContentTooLarge = 413;
constexpr unsigned httpNotImplemented = 501;
constexpr std::size_t firstChunk = std::size_t{32} * 1024; // of a request's memory

/** A reply without a body, whose CIMError header says what is wrong with the message (DSP0200). */
HttpReply refuse(unsigned status, const char *cimError)
{
    HttpReply reply;
    reply.status = status;
    reply.fields = {{"CIMError", cimError}};
    return reply;
}

HttpReply refuse(MessageVerdict verdict)
{
    switch (verdict) {
    case MessageVerdict::unsupportedCimVersion:
        return refuse(httpNotImplemented, "unsupported-cim-version");
    case MessageVerdict::unsupportedDtdVersion:
        return refuse(httpNotImplemented, "unsupported-dtd-version");
    case MessageVerdict::unsupportedProtocolVersion:
        return refuse(httpNotImplemented, "unsupported-protocol-version");
    case MessageVerdict::multipleRequests:
        return refuse(httpNotImplemented, "multiple-requests-unsupported");
    case MessageVerdict::unsupportedMessage:
        return refuse(httpNotImplemented, "unsupported-operation");
    case MessageVerdict::notValid:
    case MessageVerdict::good:
        break;
    }
    return refuse(httpBadRequest, "request-not-valid");
}

/** The reply to a document beyond a limit, with a body that names it. What the message is, and by which name
 * it wants to be answered, is not known then. */
HttpReply tooLarge()
{
    HttpReply reply;
    reply.status = httpContentTooLarge;
    reply.contentType = "text/plain; charset=utf-8";
    return reply;
}

/** DSP0200: a request has CIMOperation: MethodCall. */
bool isMethodCall(const HttpHeaders &headers)
{
    const char *operation = headers.value("CIMOperation");
    return operation != nullptr && cim::sameName(operation, "MethodCall");
}

int hexValue(char digit)
{
    return digit >= '0' && digit <= '9'   ? digit - '0'
           : digit >= 'a' && digit <= 'f' ? digit - 'a' + 10
           : digit >= 'A' && digit <= 'F' ? digit - 'A' + 10
                                          : -1;
}

/** The text with its %XX sequences replaced. */
std::string decoded(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 &&
            hexValue(text[i + 2]) >= 0) {
            plain += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
            i += 2;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

/** Compares the header fields that repeat what the body says. compat: they may be missing, for the body says
 * it all, and clients spell keys in ways of their own: of a path the namespace and the class count. */
bool agreesWithHeader(const CimXmlMessage &message, const HttpHeaders &headers)
{
    if (headers.value("CIMBatch") != nullptr) {
        return false; // of a message with several requests
    }
    if (const char *version = headers.value("CIMProtocolVersion");
        version != nullptr && message.protocolVersion != version) {
        return false;
    }
    if (const char *method = headers.value("CIMMethod");
        method != nullptr && decoded(method) != message.name) {
        return false;
    }
    const char *field = headers.value("CIMObject");
    if (field == nullptr) {
        return true;
    }
    const std::string object = decoded(field);
    std::string_view rest = object;
    rest.remove_prefix(rest.starts_with('/') ? 1 : 0);
    const std::string_view nameSpace = rest.substr(0, rest.find(':'));
    if (!cim::sameName(nameSpace, message.request.nameSpace)) {
        return false;
    }
    if (!message.isMethodCall) {
        return nameSpace.size() == rest.size();
    }
    rest.remove_prefix(std::min(nameSpace.size() + 1, rest.size()));
    return message.request.path == nullptr ||
           cim::sameName(rest.substr(0, rest.find('.')), message.request.path->className->view());
}

} // namespace

CimXmlFrontEnd::CimXmlFrontEnd(Dispatcher &dispatcher, const XmlLimits &limits,
                               const ContextLimits &contextLimits)
    : dispatcher_(dispatcher), limits_(limits), fragments_(dispatcher.nameSpaces()), contexts_(contextLimits)
{
}

bool CimXmlFrontEnd::serves(std::string_view path) const
{
    return path == "/cimom" || path == "/";
}

bool CimXmlFrontEnd::takes(std::string_view mediaType) const
{
    return mediaType == "application/xml" || mediaType == "text/xml";
}

void CimXmlFrontEnd::answer(const CimXmlMessage &message, Arena &arena, TextBuffer &out)
{
    CimXmlWriter writer(out, fragments_, dispatcher_.hostName());
    if (message.code != CMPI_RC_OK) {
        writer.writeError(message.id, message.name, message.isMethodCall, message.code, message.error);
    } else if (!message.operation) {
        writer.writeError(message.id, message.name, message.isMethodCall, CMPI_RC_ERR_NOT_SUPPORTED, nullptr);
    } else if (message.pull.step != PullStep::none) {
        answerPull(dispatcher_, contexts_, arena, message, writer, out);
    } else {
        Call call{&arena, nextRequestNumber()};
        Answer result(arena);
        dispatcher_.execute(call, message.request, result);
        writer.writeAnswer(message.id, message.name, message.request, result);
    }
}

HttpReply CimXmlFrontEnd::handle(const HttpRequest &request, TextBuffer &out)
{
    if (!isMethodCall(request.headers)) {
        return refuse(httpBadRequest, "unsupported-operation");
    }
    pugi::xml_document document;
    const XmlProblem problem = readXml(request.body, limits_, request.memory, document);
    if (problem == XmlProblem::notWellFormed) {
        return refuse(httpBadRequest, "request-not-well-formed");
    }
    if (problem != XmlProblem::none) {
        out.append(limitText(problem, limits_));
        return tooLarge();
    }
    Arena arena(firstChunk, request.memory);
    CimXmlMessage message;
    const MessageVerdict verdict = readCimXml(document, arena, dispatcher_.nameSpaces(), message);
    if (verdict != MessageVerdict::good) {
        return refuse(verdict);
    }
    if (!agreesWithHeader(message, request.headers)) {
        return refuse(httpBadRequest, "header-mismatch");
    }
    message.request.principal = request.principal;
    message.request.role = request.role;
    try {
        answer(message, arena, out);
    } catch (const MemoryExceeded &) {
        // Not before the document was understood: the client learns that it asks for too much.
        out.clear();
        CimXmlWriter(out, fragments_, dispatcher_.hostName())
            .writeError(message.id, message.name, message.isMethodCall, CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED,
                        "The answer needs more memory than a request may use; ask for less at once.");
    }
    HttpReply reply;
    reply.contentType = "application/xml; charset=\"utf-8\"";
    reply.fields = {{"CIMOperation", "MethodResponse"}};
    return reply;
}

} // namespace host
