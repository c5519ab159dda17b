// SPDX-License-Identifier: Apache-2.0
#include "cimxml/cimxml.h"

#include "cimxml/reader.h"

namespace host
{
namespace
{

constexpr unsigned HTTP_BAD_REQUEST = 400;
constexpr unsigned HTTP_NOT_IMPLEMENTED = 501;
constexpr std::size_t FIRST_CHUNK = std::size_t{32} * 1024; // of a request's memory

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
    case MessageVerdict::UnsupportedCimVersion:
        return refuse(HTTP_NOT_IMPLEMENTED, "unsupported-cim-version");
    case MessageVerdict::UnsupportedDtdVersion:
        return refuse(HTTP_NOT_IMPLEMENTED, "unsupported-dtd-version");
    case MessageVerdict::UnsupportedProtocolVersion:
        return refuse(HTTP_NOT_IMPLEMENTED, "unsupported-protocol-version");
    case MessageVerdict::MultipleRequests:
        return refuse(HTTP_NOT_IMPLEMENTED, "multiple-requests-unsupported");
    case MessageVerdict::UnsupportedMessage:
        return refuse(HTTP_NOT_IMPLEMENTED, "unsupported-operation");
    case MessageVerdict::NotValid:
    case MessageVerdict::Good:
        break;
    }
    return refuse(HTTP_BAD_REQUEST, "request-not-valid");
}

} // namespace

CimXmlFrontEnd::CimXmlFrontEnd(Dispatcher &dispatcher, const XmlLimits &limits)
    : dispatcher_(dispatcher), limits_(limits), fragments_(dispatcher.nameSpaces())
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

HttpReply CimXmlFrontEnd::handle(const HttpRequest &request, TextBuffer &out)
{
    constexpr unsigned OPTIONS = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute |
                                 pugi::parse_eol |
                                 pugi::parse_ws_pcdata_single; // a value may consist of blanks
    pugi::xml_document document;
    if (!checkXml(request.body, limits_) ||
        !document.load_buffer_inplace(request.body.data(), request.body.size(), OPTIONS,
                                      pugi::encoding_utf8)) {
        return refuse(HTTP_BAD_REQUEST, "request-not-well-formed");
    }
    Arena arena(FIRST_CHUNK, request.memory);
    CimXmlMessage message;
    const MessageVerdict verdict = readCimXml(document, arena, dispatcher_.nameSpaces(), message);
    if (verdict != MessageVerdict::Good) {
        return refuse(verdict);
    }
    CimXmlWriter writer(out, fragments_, dispatcher_.hostName());
    if (message.code != CMPI_RC_OK) {
        writer.writeError(message.id, message.name, message.isMethodCall, message.code, message.error);
    } else if (!message.operation) {
        writer.writeError(message.id, message.name, message.isMethodCall, CMPI_RC_ERR_NOT_SUPPORTED, nullptr);
    } else {
        Call call{&arena, nextRequestNumber()};
        message.request.principal = request.principal;
        message.request.role = request.role;
        Answer answer(arena);
        dispatcher_.execute(call, message.request, answer);
        writer.writeAnswer(message.id, message.name, message.request, answer);
    }
    HttpReply reply;
    reply.contentType = "application/xml; charset=\"utf-8\"";
    reply.fields = {{"CIMOperation", "MethodResponse"}};
    return reply;
}

} // namespace host
