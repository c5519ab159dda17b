// SPDX-License-Identifier: Apache-2.0
#include "wsman/wsman_client.h"

#include <regex>

namespace test
{

std::string classUri(std::string_view className)
{
    return "http://schemas.example.org/wbem/wscim/1/cim-schema/2/" + std::string(className);
}

std::string selectors(const std::vector<std::string> &namesAndValues)
{
    std::string set = "<wsman:SelectorSet>";
    for (std::size_t i = 0; i + 1 < namesAndValues.size(); i += 2) {
        set += "<wsman:Selector Name=\"" + namesAndValues[i] + "\">" + namesAndValues[i + 1] +
               "</wsman:Selector>";
    }
    return set + "</wsman:SelectorSet>";
}

std::string thingSelectors(int number)
{
    return selectors({"DeviceID", "thing" + std::to_string(number), "SystemName", "desk", "CreationClassName",
                      "Test_Thing", "SystemCreationClassName", "Linux_ComputerSystem"});
}

std::string envelope(const std::string &action, const std::string &resourceUri, const std::string &headers,
                     const std::string &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\""
           " xmlns:wsa=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\""
           " xmlns:wsman=\"http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd\""
           " xmlns:wsen=\"http://schemas.xmlsoap.org/ws/2004/09/enumeration\""
           " xmlns:wsmb=\"http://schemas.dmtf.org/wbem/wsman/1/cimbinding.xsd\""
           " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><s:Header>"
           "<wsa:Action s:mustUnderstand=\"true\">" +
           action +
           "</wsa:Action><wsa:To s:mustUnderstand=\"true\">http://127.0.0.1/wsman</wsa:To>"
           "<wsman:ResourceURI s:mustUnderstand=\"true\">" +
           resourceUri +
           "</wsman:ResourceURI><wsa:MessageID s:mustUnderstand=\"true\">uuid:1</wsa:MessageID><wsa:ReplyTo>"
           "<wsa:Address>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</wsa:Address>"
           "</wsa:ReplyTo>" +
           headers + "</s:Header><s:Body>" + body + "</s:Body></s:Envelope>";
}

std::string postWsman(std::string_view body, std::string_view user, std::string_view password)
{
    std::string request = "POST /wsman HTTP/1.1\r\nHost: localhost\r\n";
    request += "Content-Type: application/soap+xml;charset=UTF-8\r\nAuthorization: Basic ";
    request += base64(std::string(user) + ":" + std::string(password));
    request += "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n";
    request += body;
    return request;
}

std::string recordedWsman(const std::string &name, const std::string &context)
{
    const std::string request = recorded(name);
    if (context.empty()) {
        return request;
    }
    std::string body = request.substr(request.find("\r\n\r\n") + 4);
    const std::string tag = "EnumerationContext>";
    const std::size_t start = body.find(tag) + tag.size();
    return postWsman(body.replace(start, body.find('<', start) - start, context));
}

std::string textOf(const std::string &body, const std::string &element)
{
    const std::string open = "<" + element + ">";
    const std::size_t start = body.find(open);
    if (start == std::string::npos) {
        return "";
    }
    const std::size_t end = body.find("</" + element + ">", start);
    return body.substr(start + open.size(), end - start - open.size());
}

std::string withoutIds(std::string body)
{
    body = std::regex_replace(body, std::regex("<wsa:MessageID>uuid:[-0-9a-f]{36}<"), "<wsa:MessageID>ID<");
    return std::regex_replace(body, std::regex("EnumerationContext>[0-9a-f]{32}<"),
                              "EnumerationContext>CONTEXT<");
}

std::string withOnePrefix(const std::string &body)
{
    return std::regex_replace(std::regex_replace(body, std::regex("(</?)n[0-9]+:"), "$1p:"),
                              std::regex("xmlns:n[0-9]+="), "xmlns:p=");
}

void PrintTo(const FaultSeen &fault, std::ostream *stream)
{
    *stream << fault.status << " " << fault.subcode << " " << fault.detail << " \"" << fault.text << "\" "
            << fault.cimCode;
}

namespace
{

std::string withoutEntities(std::string text)
{
    text = std::regex_replace(text, std::regex("&quot;"), "\"");
    text = std::regex_replace(text, std::regex("&apos;"), "'");
    return std::regex_replace(text, std::regex("&amp;"), "&");
}

} // namespace

FaultSeen faultOf(const HttpAnswer &answer)
{
    const std::string code = textOf(answer.body, "s:Code");
    const std::string subcode = textOf(code, "s:Subcode");
    const std::string detail = textOf(answer.body, "wsman:FaultDetail");
    const std::size_t text = answer.body.find("xml:lang=\"en\">") + 14;
    return {answer.status, subcode.empty() ? textOf(code, "s:Value") : textOf(subcode, "s:Value"),
            detail.substr(detail.rfind('/') + 1),
            withoutEntities(answer.body.substr(text, answer.body.find("</s:Text>") - text)),
            textOf(answer.body, "p:CIMStatusCode")};
}

} // namespace test
