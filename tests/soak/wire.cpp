// SPDX-License-Identifier: Apache-2.0
#include "wire.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cstring>
#include <functional>

namespace soak
{

namespace
{

const std::string prefix = "ZT_Marovelton_";
const std::string schema = "http://schemas.marovelton.example/wbem/wscim/1/cim-schema/2/";
const std::string transfer = "http://schemas.xmlsoap.org/ws/2004/09/transfer/";
const std::string enumeration = "http://schemas.xmlsoap.org/ws/2004/09/enumeration/";

using Keys = std::vector<std::pair<std::string, std::string>>;

Keys keysOf(const Setting &setting)
{
    const std::string className = prefix + setting.className;
    if (std::strcmp(setting.className, "Monitor") == 0) {
        return {{"DeviceID", "ZT:Marovelton_Monitor"},
                {"CreationClassName", className},
                {"SystemName", "192.168.10.20"},
                {"SystemCreationClassName", "Linux_ComputerSystem"}};
    }
    const std::string number = setting.number;
    return {{"InstanceID",
             "ZT:Marovelton_" + std::string(setting.className) + (number.empty() ? "" : ":") + number}};
}

// ---- CIM-XML ----

Message cimXml(const std::string &request)
{
    return {
        "/cimom", "Content-Type: application/xml; charset=\"utf-8\"",
        R"(<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0"><MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ>)" +
            request + "</SIMPLEREQ></MESSAGE></CIM>"};
}

std::string instanceName(const Setting &setting)
{
    std::string text = "<INSTANCENAME CLASSNAME=\"" + prefix + setting.className + "\">";
    for (const auto &[name, value] : keysOf(setting)) {
        text += "<KEYBINDING NAME=\"" + name + "\"><KEYVALUE VALUETYPE=\"string\">" + value +
                "</KEYVALUE></KEYBINDING>";
    }
    return text + "</INSTANCENAME>";
}

const std::string nameSpace =
    R"(<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="cimv2"/></LOCALNAMESPACEPATH>)";

std::string intrinsic(const std::string &operation, const std::string &parameter, const std::string &value)
{
    return "<IMETHODCALL NAME=\"" + operation + "\">" + nameSpace + "<IPARAMVALUE NAME=\"" + parameter +
           "\">" + value + "</IPARAMVALUE></IMETHODCALL>";
}

std::string methodCall(const Setting &setting, const std::string &method, const Value &value)
{
    std::string text = "<METHODCALL NAME=\"" + method + "\"><LOCALINSTANCEPATH>" + nameSpace +
                       instanceName(setting) + "</LOCALINSTANCEPATH>";
    for (std::size_t i = 0; i < value.size(); ++i) {
        text += std::string("<PARAMVALUE NAME=\"") + setting.arguments[i] +
                "\" PARAMTYPE=\"string\"><VALUE>" + argumentText(setting, value[i]) + "</VALUE></PARAMVALUE>";
    }
    return text + "</METHODCALL>";
}

std::string classNameValue(std::string_view className)
{
    return "<CLASSNAME NAME=\"" + prefix + std::string(className) + "\"/>";
}

// ---- WS-Management ----

Message wsMan(const std::string &action, std::string_view className, const Keys &keys,
              const std::string &body)
{
    std::string selectors;
    for (const auto &[name, value] : keys) {
        selectors += "<w:Selector Name=\"" + name + "\">" + value + "</w:Selector>";
    }
    return {
        "/wsman", "Content-Type: application/soap+xml;charset=UTF-8",
        R"(<s:Envelope xmlns:s="http://www.w3.org/2003/05/soap-envelope" xmlns:a="http://schemas.xmlsoap.org/ws/2004/08/addressing" xmlns:w="http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd" xmlns:n="http://schemas.xmlsoap.org/ws/2004/09/enumeration"><s:Header><a:Action s:mustUnderstand="true">)" +
            action +
            R"(</a:Action><a:To s:mustUnderstand="true">http://127.0.0.1/wsman</a:To><w:ResourceURI s:mustUnderstand="true">)" +
            schema + prefix + std::string(className) +
            R"(</w:ResourceURI><a:MessageID s:mustUnderstand="true">uuid:1</a:MessageID><a:ReplyTo><a:Address>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</a:Address></a:ReplyTo>)" +
            (selectors.empty() ? "" : "<w:SelectorSet>" + selectors + "</w:SelectorSet>") +
            "</s:Header><s:Body>" + body + "</s:Body></s:Envelope>"};
}

Message wsManCall(const Setting &setting, const std::string &method, const Value &value)
{
    const std::string uri = schema + prefix + setting.className;
    std::string input = "<p:" + method + "_INPUT xmlns:p=\"" + uri + "\">";
    for (std::size_t i = 0; i < value.size(); ++i) {
        const std::string name = setting.arguments[i];
        input += "<p:" + name + ">" + argumentText(setting, value[i]) + "</p:" + name + ">";
    }
    return wsMan(uri + "/" + method, setting.className, keysOf(setting), input + "</p:" + method + "_INPUT>");
}

Message wsManEnumerate(std::string_view className, const std::string &mode)
{
    return wsMan(enumeration + "Enumerate", className, {},
                 "<n:Enumerate><w:OptimizeEnumeration/><w:MaxElements>100</w:MaxElements>" + mode +
                     "</n:Enumerate>");
}

// ---- answers ----

std::string_view localName(const pugi::xml_node &node)
{
    const std::string_view name = node.name();
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

pugi::xml_node firstNamed(const pugi::xml_node &from, std::string_view name)
{
    return from.find_node([&](const pugi::xml_node &node) { return localName(node) == name; });
}

/** The library's texts for an answer of the engine that did not come. */
bool saysNoAnswer(std::string_view text)
{
    return text.starts_with("Failed to set") || text.starts_with("Failed to to set");
}

Outcome refusalOf(std::string_view text)
{
    return saysNoAnswer(text) ? Outcome::noAnswer : Outcome::refused;
}

Answer readCimXml(const pugi::xml_document &document)
{
    if (const pugi::xml_node error = firstNamed(document, "ERROR")) {
        const std::string text = error.attribute("DESCRIPTION").value();
        return {refusalOf(text), text, {}};
    }
    const pugi::xml_node result = firstNamed(document, "RETURNVALUE");
    const std::string value = result ? result.child_value("VALUE") : "0";
    return {value == "0" ? Outcome::done : Outcome::refused, value == "0" ? "" : "returned " + value, {}};
}

Answer readWsMan(const pugi::xml_document &document)
{
    if (const pugi::xml_node fault = firstNamed(document, "Fault")) {
        const std::string text = firstNamed(firstNamed(fault, "Reason"), "Text").child_value();
        return {refusalOf(text), text, {}};
    }
    const pugi::xml_node result = firstNamed(document, "ReturnValue");
    const std::string value = result ? result.child_value() : "0";
    return {value == "0" ? Outcome::done : Outcome::refused, value == "0" ? "" : "returned " + value, {}};
}

} // namespace

Message readMessage(Protocol protocol, const Setting &setting)
{
    if (protocol == Protocol::wsMan) {
        return wsMan(transfer + "Get", setting.className, keysOf(setting), "");
    }
    return cimXml(intrinsic("GetInstance", "InstanceName", instanceName(setting)));
}

Message readMonitorMessage()
{
    const auto rows = settings();
    const auto monitor = std::find_if(rows.begin(), rows.end(), [](const Setting &row) {
        return std::strcmp(row.className, "Monitor") == 0;
    });
    return readMessage(Protocol::cimXml, *monitor);
}

Message changeMessage(Protocol protocol, const Setting &setting, const Value &value)
{
    return protocol == Protocol::wsMan ? wsManCall(setting, setting.method, value)
                                       : cimXml(methodCall(setting, setting.method, value));
}

Message unknownMethodMessage(Protocol protocol, const Setting &setting)
{
    const std::string method = "SetNothing";
    return protocol == Protocol::wsMan ? wsManCall(setting, method, {})
                                       : cimXml(methodCall(setting, method, {}));
}

Message enumerateMessage(Protocol protocol, std::string_view className)
{
    return protocol == Protocol::wsMan
               ? wsManEnumerate(className, "")
               : cimXml(intrinsic("EnumerateInstances", "ClassName", classNameValue(className)));
}

Message namesMessage(Protocol protocol, std::string_view className)
{
    return protocol == Protocol::wsMan
               ? wsManEnumerate(className, "<n:EnumerationMode>EnumerateEPR</n:EnumerationMode>")
               : cimXml(intrinsic("EnumerateInstanceNames", "ClassName", classNameValue(className)));
}

Answer readAnswer(long status, std::string body)
{
    if (status == 503 || status == 429) {
        return {Outcome::notServed, "status " + std::to_string(status), {}};
    }
    pugi::xml_document document;
    if (!document.load_buffer(body.data(), body.size())) {
        return {
            Outcome::refused, "status " + std::to_string(status) + ", no XML: " + body.substr(0, 200), {}};
    }
    const bool isSoap = localName(document.document_element()) == "Envelope";
    Answer answer = isSoap ? readWsMan(document) : readCimXml(document);
    if (answer.outcome == Outcome::done && status != 200) {
        return {Outcome::refused, "status " + std::to_string(status), {}};
    }
    answer.body = std::move(body);
    return answer;
}

std::vector<std::string> propertiesOf(const std::string &body, const std::vector<const char *> &names)
{
    pugi::xml_document document;
    document.load_buffer(body.data(), body.size());
    std::vector<std::string> texts;
    for (const char *name : names) {
        const pugi::xml_node property = document.find_node([&](const pugi::xml_node &node) {
            return node.attribute("NAME").value() == std::string_view(name) || localName(node) == name;
        });
        if (property) {
            const pugi::xml_node value = firstNamed(property, "VALUE");
            texts.emplace_back(value ? value.child_value() : property.child_value());
        }
    }
    return texts;
}

int objectsIn(Protocol protocol, const std::string &body)
{
    pugi::xml_document document;
    document.load_buffer(body.data(), body.size());
    if (protocol == Protocol::wsMan) {
        const pugi::xml_node items = firstNamed(document, "Items");
        return static_cast<int>(std::distance(items.begin(), items.end()));
    }
    const pugi::xml_node objects = firstNamed(document, "IRETURNVALUE");
    return static_cast<int>(std::distance(objects.begin(), objects.end()));
}

} // namespace soak
