// SPDX-License-Identifier: Apache-2.0
#include "cimxml/reader.h"

#include "cimxml/document_type.h"
#include "cimxml/element_reader.h"
#include "cimxml/intrinsic_reader.h"

namespace host
{
namespace
{

/** True of "2.0" and later of the same major version, and so on. */
bool isVersion(std::string_view version, char major)
{
    return version.size() >= 2 && version[0] == major && version[1] == '.';
}

/** SIMPLEREQ may begin with CORRELATOR elements (DSP0201 2.4). */
xml_node simpleRequest(const xml_node &request)
{
    for (const xml_node child : request.children()) {
        if (child.type() == pugi::node_element && !is(child, "CORRELATOR")) {
            return child;
        }
    }
    return {};
}

class MessageReader : private ElementReader
{
  public:
    using ElementReader::ElementReader;

    MessageVerdict readMessage(const pugi::xml_document &document)
    {
        const xml_node cim = firstElement(document);
        if (!is(cim, "CIM")) {
            return MessageVerdict::notValid;
        }
        if (!isVersion(attribute(cim, "CIMVERSION"), '2')) {
            return MessageVerdict::unsupportedCimVersion;
        }
        if (!isVersion(attribute(cim, "DTDVERSION"), '2')) {
            return MessageVerdict::unsupportedDtdVersion;
        }
        const xml_node messageNode = firstElement(cim);
        if (!is(messageNode, "MESSAGE") || !messageNode.attribute("ID")) {
            return MessageVerdict::notValid;
        }
        message_.id = attribute(messageNode, "ID");
        message_.protocolVersion = attribute(messageNode, "PROTOCOLVERSION");
        if (!isVersion(message_.protocolVersion, '1')) {
            return MessageVerdict::unsupportedProtocolVersion;
        }
        const xml_node request = firstElement(messageNode);
        if (is(request, "MULTIREQ")) {
            return MessageVerdict::multipleRequests;
        }
        if (is(request, "SIMPLEEXPREQ") || is(request, "MULTIEXPREQ")) {
            return MessageVerdict::unsupportedMessage;
        }
        if (!isValidRequest(cim)) {
            return MessageVerdict::notValid;
        }
        const xml_node call = simpleRequest(request);
        if (!call.attribute("NAME")) {
            return MessageVerdict::notValid;
        }
        message_.name = attribute(call, "NAME");
        if (is(call, "IMETHODCALL")) {
            return readIntrinsic(call, arena_, nameSpaces_, message_);
        }
        if (is(call, "METHODCALL")) {
            return readMethod(call);
        }
        return MessageVerdict::notValid;
    }

  private:
    MessageVerdict readMethod(const xml_node &call)
    {
        message_.isMethodCall = true;
        message_.operation = Operation::invokeMethod;
        Request &request = message_.request;
        request.operation = Operation::invokeMethod;
        request.methodName = zeroTerminated(message_.name);
        const xml_node target = firstElement(call);
        if (!is(target, "LOCALINSTANCEPATH") && !is(target, "LOCALCLASSPATH")) {
            return MessageVerdict::notValid;
        }
        const PathText *path = pathOf(target);
        request.nameSpace = path->nameSpace;
        if (nameSpaces_.find(request.nameSpace) == nullptr) {
            return MessageVerdict::good;
        }
        request.path = typedPath(path);
        ArenaList<ValueText> values(arena_);
        for (const xml_node node : call.children()) {
            if (node.type() != pugi::node_element || node == target) {
                continue;
            }
            if (!is(node, "PARAMVALUE") || attribute(node, "NAME").empty()) {
                return MessageVerdict::notValid;
            }
            ValueText value;
            value.name = attribute(node, "NAME");
            value.type = typeOf(node, "PARAMTYPE");
            readValue(node, value);
            if (values.size() == maxArguments) {
                fail(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED, "A method call has more than 256 arguments.");
                break;
            }
            values.append(value);
        }
        if (!failed()) {
            Typing typing(arena_, nameSpaces_);
            request.arguments =
                typing.arguments(request.path->klass, message_.name, values, request.nameSpace);
            if (request.arguments == nullptr) {
                fail(typing.code(), typing.error());
            }
        }
        return MessageVerdict::good;
    }
};

} // namespace

MessageVerdict readCimXml(const pugi::xml_document &document, Arena &arena, const cim::NameSpaces &nameSpaces,
                          CimXmlMessage &message)
{
    return MessageReader(arena, nameSpaces, message).readMessage(document);
}

} // namespace host
