// SPDX-License-Identifier: Apache-2.0
#include "wsman/writer.h"

#include "core/contexts.h"
#include "core/xml_text.h"
#include "wsman/duration.h"
#include "wsman/uris.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace host::wsman
{
namespace
{

constexpr std::string_view HEAD =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\""
    " xmlns:wsa=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\""
    " xmlns:wsman=\"http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd\""
    " xmlns:wsen=\"http://schemas.xmlsoap.org/ws/2004/09/enumeration\""
    " xmlns:wxf=\"http://schemas.xmlsoap.org/ws/2004/09/transfer\""
    " xmlns:cim=\"http://schemas.dmtf.org/wbem/wscim/1/common\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">"
    "<s:Header><wsa:To>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</wsa:To><wsa:Action>";

constexpr std::string_view FAULT_DETAIL = "http://schemas.dmtf.org/wbem/wsman/1/wsman/faultDetail/";

/** A uuid: URI that no other message of this process has, nor of another one. */
std::string_view makeMessageId(char (&text)[48])
{
    static const std::string process = randomName();
    static std::atomic<unsigned long long> counter = 0;
    const unsigned long long number = ++counter;
    const int length = std::snprintf(text, sizeof text, "uuid:%.8s-%.4s-4%.3s-8%.3s-%012llx", process.c_str(),
                                     process.c_str() + 8, process.c_str() + 12, process.c_str() + 15,
                                     number & 0xffffffffffffu);
    return {text, static_cast<std::size_t>(length)};
}

std::size_t encode(unsigned code, char (&text)[4])
{
    if (code < 0x80) {
        text[0] = static_cast<char>(code);
        return 1;
    }
    if (code < 0x800) {
        text[0] = static_cast<char>(0xc0 | code >> 6);
        text[1] = static_cast<char>(0x80 | (code & 0x3f));
        return 2;
    }
    text[0] = static_cast<char>(0xe0 | code >> 12);
    text[1] = static_cast<char>(0x80 | (code >> 6 & 0x3f));
    text[2] = static_cast<char>(0x80 | (code & 0x3f));
    return 3;
}

} // namespace

ClassFragments::ClassFragments(const cim::Class &klass)
{
    for (std::size_t i = 0; i < klass.properties.size(); ++i) {
        const std::string &name = klass.properties[i].name;
        properties.push_back(
            {i, "<p:" + name + ">", "</p:" + name + ">", "<p:" + name + " xsi:nil=\"true\"/>"});
    }
    std::sort(properties.begin(), properties.end(), [&](const Property &left, const Property &right) {
        return klass.properties[left.place].name < klass.properties[right.place].name;
    });
}

FragmentCache::FragmentCache(const cim::NameSpaces &nameSpaces)
{
    for (const cim::NameSpace &nameSpace : nameSpaces.all()) {
        for (const cim::Class *klass : nameSpace.classes->all()) {
            entries_.try_emplace(klass);
        }
    }
}

const ClassFragments &FragmentCache::of(const cim::Class &klass)
{
    Entry &entry = entries_.at(&klass);
    std::call_once(entry.made, [&] { entry.fragments.emplace(klass); });
    return *entry.fragments;
}

std::string_view baseUri(std::string_view className, std::string_view vendorBase)
{
    return className.starts_with("CIM_") || className.starts_with("PRS_") ? uri::CIM_CLASSES : vendorBase;
}

// ------------------------------------------------------------------------------------------------- envelope

void Writer::open(std::string_view action, std::string_view suffix, std::string_view relatesTo)
{
    out_.append(HEAD);
    appendEscaped(out_, action);
    out_.append(suffix);
    out_.append("</wsa:Action>");
    if (!relatesTo.empty()) {
        element("wsa:RelatesTo", relatesTo);
    }
    char id[48];
    element("wsa:MessageID", makeMessageId(id));
}

void Writer::beginBody()
{
    out_.append("</s:Header><s:Body>");
}

void Writer::end()
{
    out_.append("</s:Body></s:Envelope>\n");
}

void Writer::element(std::string_view name, std::string_view text)
{
    out_.append('<');
    out_.append(name);
    out_.append('>');
    appendEscaped(out_, text);
    out_.append("</");
    out_.append(name);
    out_.append('>');
}

void Writer::escaped(std::string_view text)
{
    appendEscaped(out_, text);
}

// --------------------------------------------------------------------------------------------------- faults

void Writer::fault(const Fault &fault, std::string_view relatesTo)
{
    const FaultForm &form = formOf(fault.kind);
    open(form.action, "", relatesTo);
    if (fault.kind == FaultKind::MustUnderstand) {
        out_.append("<s:NotUnderstood qname=\"p:");
        appendEscaped(out_, fault.subject);
        out_.append("\" xmlns:p=\"");
        appendEscaped(out_, fault.subjectNameSpace);
        out_.append("\"/>");
    } else if (fault.kind == FaultKind::VersionMismatch) {
        out_.append("<s:Upgrade><s:SupportedEnvelope qname=\"s:Envelope\"/></s:Upgrade>");
    }
    beginBody();
    out_.append("<s:Fault><s:Code>");
    element("s:Value", form.code);
    if (!form.subcode.empty()) {
        out_.append("<s:Subcode>");
        element("s:Value", form.subcode);
        out_.append("</s:Subcode>");
    }
    out_.append("</s:Code><s:Reason><s:Text xml:lang=\"en\">");
    appendEscaped(out_, fault.text.empty() ? form.reason : fault.text);
    out_.append("</s:Text></s:Reason>");
    faultDetail(fault);
    out_.append("</s:Fault>");
    end();
}

void Writer::faultDetail(const Fault &fault)
{
    const bool namesAction = fault.kind == FaultKind::ActionNotSupported && !fault.subject.empty();
    const bool namesHeader = fault.kind == FaultKind::MessageInformationHeaderRequired ||
                             fault.kind == FaultKind::InvalidMessageInformationHeader;
    const bool namesDialects = fault.kind == FaultKind::FilterDialectRequestedUnavailable;
    if (fault.detail.empty() && fault.code == CMPI_RC_OK && !namesAction && !namesHeader && !namesDialects) {
        return; // SOAP wants no empty detail
    }
    out_.append("<s:Detail>");
    if (namesAction) {
        element("wsa:Action", fault.subject);
    }
    if (namesHeader && !fault.subject.empty()) {
        element("wsa:ProblemHeaderQName", fault.subject);
    }
    if (namesDialects) {
        for (const std::string_view dialect :
             {uri::SELECTOR_FILTER, uri::ASSOCIATION_FILTER, uri::CQL, uri::WQL}) {
            element("wsen:SupportedDialect", dialect);
        }
    }
    if (!fault.detail.empty()) {
        out_.append("<wsman:FaultDetail>");
        out_.append(FAULT_DETAIL);
        out_.append(fault.detail);
        out_.append("</wsman:FaultDetail>");
    }
    if (fault.code != CMPI_RC_OK) {
        out_.append("<p:CIM_Error xmlns:p=\"http://schemas.dmtf.org/wbem/wscim/1/cim-schema/2/CIM_Error\">");
        element("p:CIMStatusCode", std::to_string(static_cast<int>(fault.code)));
        element("p:CIMStatusCodeDescription", statusDescription(fault.code));
        element("p:Message", fault.text.empty() ? statusDescription(fault.code) : fault.text);
        out_.append("</p:CIM_Error>");
    }
    out_.append("</s:Detail>");
}

// -------------------------------------------------------------------------------------------------- objects

void Writer::resourceUri(std::string_view className)
{
    out_.append(baseUri(className, vendorBase_));
    appendEscaped(out_, className);
}

void Writer::instance(const Instance &instance, const cim::Class *as)
{
    const cim::Class &shown = as != nullptr ? *as : *instance.klass;
    out_.append("<p:");
    out_.append(shown.name);
    out_.append(" xmlns:p=\"");
    resourceUri(shown.name);
    out_.append("\">");
    for (const ClassFragments::Property &property : fragments_.of(*instance.klass).properties) {
        if ((instance.visible == nullptr || instance.visible->contains(property.place)) &&
            (as == nullptr ||
             as->placeOf(instance.klass->properties[property.place].name) != cim::NO_PROPERTY)) {
            items(instance.values[property.place], property.open, property.close, property.null);
        }
    }
    out_.append("</p:");
    out_.append(shown.name);
    out_.append('>');
}

void Writer::fragment(const Instance &instance, std::size_t place, std::size_t index, bool textOnly)
{
    CMPIData data = instance.values[place];
    if (const Array *array = arrayOf(data); array != nullptr && index != 0) {
        data = index <= array->size ? array->elements[index - 1] : nullData(array->elementType);
    }
    const Array *array = arrayOf(data);
    if (isNull(data) || (array != nullptr && array->size == 0)) {
        out_.append("<wsman:XmlFragment xsi:nil=\"true\"/>");
        return;
    }
    const std::string &name = instance.klass->properties[place].name;
    out_.append("<wsman:XmlFragment xmlns:p=\"");
    resourceUri(instance.klass->name);
    out_.append("\">");
    if (textOnly) {
        items(data, "", "", "");
    } else {
        value(name, data);
    }
    out_.append("</wsman:XmlFragment>");
}

void Writer::endpoint(const Path &path)
{
    out_.append("<wsa:EndpointReference>");
    endpointParts(path);
    out_.append("</wsa:EndpointReference>");
}

void Writer::endpointParts(const Path &path)
{
    out_.append("<wsa:Address>");
    out_.append(uri::ANONYMOUS);
    out_.append("</wsa:Address><wsa:ReferenceParameters><wsman:ResourceURI>");
    resourceUri(path.className->view());
    out_.append("</wsman:ResourceURI><wsman:SelectorSet>");
    if (path.nameSpace != nullptr) {
        out_.append("<wsman:Selector Name=\"__cimnamespace\">");
        appendEscaped(out_, path.nameSpace->view());
        out_.append("</wsman:Selector>");
    }
    for (const NamedValue &key : *path.keys) {
        if (isNull(key.data)) {
            continue;
        }
        out_.append("<wsman:Selector Name=\"");
        appendEscaped(out_, key.name->view());
        out_.append("\">");
        if (key.data.type == CMPI_ref) {
            endpoint(*behind<Path>(key.data.value.ref));
        } else if (key.data.type == CMPI_dateTime) {
            out_.append(behind<DateTime>(key.data.value.dateTime)->text);
        } else {
            scalar(key.data);
        }
        out_.append("</wsman:Selector>");
    }
    out_.append("</wsman:SelectorSet></wsa:ReferenceParameters>");
}

// --------------------------------------------------------------------------------------------------- values

void Writer::value(std::string_view name, const CMPIData &data)
{
    std::string tag(name);
    items(data, "<p:" + tag + ">", "</p:" + tag + ">", "<p:" + tag + " xsi:nil=\"true\"/>");
}

void Writer::items(const CMPIData &data, std::string_view open, std::string_view close, std::string_view null)
{
    if (isNull(data)) {
        out_.append(null);
        return;
    }
    if ((data.type & CMPI_ARRAY) == 0) {
        out_.append(open);
        scalar(data);
        out_.append(close);
        return;
    }
    const Array *array = arrayOf(data);
    for (CMPICount i = 0; array != nullptr && i < array->size; ++i) {
        if (isNull(array->elements[i])) {
            out_.append(null);
        } else {
            out_.append(open);
            scalar(array->elements[i]);
            out_.append(close);
        }
    }
}

void Writer::scalar(const CMPIData &data)
{
    constexpr std::size_t LONGEST = 64;
    char *place = out_.grow(LONGEST);
    const auto number = [&](auto value) {
        out_.extend(static_cast<std::size_t>(std::to_chars(place, place + LONGEST, value).ptr - place));
    };
    const auto real = [&](auto value) {
        if (std::isfinite(value)) {
            number(value);
        } else {
            out_.append(std::isnan(value) ? "NaN" : value < 0 ? "-INF" : "INF");
        }
    };
    switch (data.type) {
    case CMPI_boolean:
        return out_.append(data.value.boolean != 0 ? "true" : "false");
    case CMPI_uint8:
        return number(static_cast<unsigned>(data.value.uint8));
    case CMPI_uint16:
        return number(data.value.uint16);
    case CMPI_uint32:
        return number(data.value.uint32);
    case CMPI_uint64:
        return number(data.value.uint64);
    case CMPI_sint8:
        return number(static_cast<int>(data.value.sint8));
    case CMPI_sint16:
        return number(data.value.sint16);
    case CMPI_sint32:
        return number(data.value.sint32);
    case CMPI_sint64:
        return number(data.value.sint64);
    case CMPI_real32:
        return real(data.value.real32);
    case CMPI_real64:
        return real(data.value.real64);
    case CMPI_char16: {
        char text[4];
        return appendEscaped(out_, {text, encode(data.value.char16, text)});
    }
    case CMPI_string:
        return appendEscaped(out_, behind<String>(data.value.string)->view());
    case CMPI_dateTime: {
        const SchemaTime time = schemaTime(behind<DateTime>(data.value.dateTime)->text);
        return element("cim:" + std::string(time.element), time.text);
    }
    case CMPI_ref:
        return endpointParts(*behind<Path>(data.value.ref));
    default:
        return;
    }
}

} // namespace host::wsman
