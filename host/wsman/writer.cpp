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

constexpr std::string_view envelopeStart = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                           "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\""
                                           " xmlns:wsa=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\""
                                           " xmlns:wsman=\"http://schemas.dmtf.org/wbem/wsman/1/wsman.xsd\""
                                           " xmlns:wsen=\"http://schemas.xmlsoap.org/ws/2004/09/enumeration\""
                                           " xmlns:wxf=\"http://schemas.xmlsoap.org/ws/2004/09/transfer\""
                                           " xmlns:cim=\"http://schemas.dmtf.org/wbem/wscim/1/common\""
                                           " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"";

constexpr std::string_view headersStart =
    "><s:Header><wsa:To>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</wsa:To><wsa:Action>";

constexpr std::string_view faultDetails = "http://schemas.dmtf.org/wbem/wsman/1/wsman/faultDetail/";

/** What DSP0200 calls the code. */
std::string_view codeName(CMPIrc code)
{
    struct Named {
        CMPIrc code;
        std::string_view name;
    };
    constexpr Named names[] = {
        {CMPI_RC_ERR_ACCESS_DENIED, "CIM_ERR_ACCESS_DENIED"},
        {CMPI_RC_ERR_INVALID_NAMESPACE, "CIM_ERR_INVALID_NAMESPACE"},
        {CMPI_RC_ERR_INVALID_PARAMETER, "CIM_ERR_INVALID_PARAMETER"},
        {CMPI_RC_ERR_INVALID_CLASS, "CIM_ERR_INVALID_CLASS"},
        {CMPI_RC_ERR_NOT_FOUND, "CIM_ERR_NOT_FOUND"},
        {CMPI_RC_ERR_NOT_SUPPORTED, "CIM_ERR_NOT_SUPPORTED"},
        {CMPI_RC_ERR_ALREADY_EXISTS, "CIM_ERR_ALREADY_EXISTS"},
        {CMPI_RC_ERR_NO_SUCH_PROPERTY, "CIM_ERR_NO_SUCH_PROPERTY"},
        {CMPI_RC_ERR_TYPE_MISMATCH, "CIM_ERR_TYPE_MISMATCH"},
        {CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED, "CIM_ERR_QUERY_LANGUAGE_NOT_SUPPORTED"},
        {CMPI_RC_ERR_INVALID_QUERY, "CIM_ERR_INVALID_QUERY"},
        {CMPI_RC_ERR_METHOD_NOT_AVAILABLE, "CIM_ERR_METHOD_NOT_AVAILABLE"},
        {CMPI_RC_ERR_METHOD_NOT_FOUND, "CIM_ERR_METHOD_NOT_FOUND"},
        {CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED, "CIM_ERR_SERVER_LIMITS_EXCEEDED"},
    };
    const auto *named = std::ranges::find(names, code, &Named::code);
    return named != std::end(names) ? named->name : "CIM_ERR_FAILED";
}

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

} // namespace

ClassFragments::ClassFragments(const cim::Class &klass, std::size_t number)
    : prefix("n" + std::to_string(number) + ":"), name(klass.name)
{
    for (std::size_t i = 0; i < klass.properties.size(); ++i) {
        const std::string element = prefix + klass.properties[i].name;
        properties.push_back(
            {i, "<" + element + ">", "</" + element + ">", "<" + element + " xsi:nil=\"true\"/>"});
    }
    std::sort(properties.begin(), properties.end(), [&](const Property &left, const Property &right) {
        return klass.properties[left.place].name < klass.properties[right.place].name;
    });
}

FragmentCache::FragmentCache(const cim::NameSpaces &nameSpaces)
{
    for (const cim::NameSpace &nameSpace : nameSpaces.all()) {
        for (const cim::Class *klass : nameSpace.classes->all()) {
            const auto [entry, isNew] = entries_.try_emplace(klass); // a namespace may have two names
            if (isNew) {
                entry->second.number = entries_.size() - 1;
            }
        }
    }
}

const ClassFragments &FragmentCache::of(const cim::Class &klass)
{
    Entry &entry = entries_.at(&klass);
    std::call_once(entry.made, [&] { entry.fragments.emplace(klass, entry.number); });
    return *entry.fragments;
}

std::string_view baseUri(std::string_view className, std::string_view vendorBase)
{
    return className.starts_with("CIM_") || className.starts_with("PRS_") ? uri::cimClasses : vendorBase;
}

// ------------------------------------------------------------------------------------------------- envelope

std::string Writer::head(std::string_view action, std::string_view suffix, std::string_view relatesTo) const
{
    TextBuffer text;
    text.append(envelopeStart);
    for (const ClassFragments *fragments : declared_) {
        text.append(" xmlns:");
        text.append(std::string_view(fragments->prefix).substr(0, fragments->prefix.size() - 1));
        text.append("=\"");
        appendEscaped(text, baseUri(fragments->name, vendorBase_));
        text.append(fragments->name);
        text.append('"');
    }
    text.append(headersStart);
    appendEscaped(text, action);
    text.append(suffix);
    text.append("</wsa:Action>");
    if (!relatesTo.empty()) {
        text.append("<wsa:RelatesTo>");
        appendEscaped(text, relatesTo);
        text.append("</wsa:RelatesTo>");
    }
    char id[48];
    text.append("<wsa:MessageID>");
    text.append(makeMessageId(id));
    text.append("</wsa:MessageID>");
    return std::string(text.view());
}

void Writer::finish(std::string_view action, std::string_view suffix, std::string_view relatesTo,
                    std::string_view headers)
{
    out_.prepend(head(action, suffix, relatesTo).append(headers).append("</s:Header><s:Body>"));
    out_.append("</s:Body></s:Envelope>\n");
}

std::size_t Writer::envelopeSize(std::string_view action, std::string_view relatesTo) const
{
    constexpr std::size_t tagsSize = 512; // of the headers and the body
    constexpr std::size_t longest = 6;    // of an escaped character
    constexpr std::size_t declaredSize = 32;
    std::size_t size =
        envelopeStart.size() + headersStart.size() + tagsSize + (action.size() + relatesTo.size()) * longest;
    for (const ClassFragments *fragments : declared_) {
        size += declaredSize + vendorBase_.size() * longest + uri::cimClasses.size() + fragments->name.size();
    }
    return size;
}

const ClassFragments &Writer::fragmentsOf(const cim::Class &klass)
{
    const ClassFragments &fragments = fragments_.of(klass);
    if (std::find(declared_.rbegin(), declared_.rend(), &fragments) == declared_.rend()) {
        declared_.push_back(&fragments);
    }
    return fragments;
}

void Writer::openElement(const cim::Class &klass, std::string_view name)
{
    out_.append('<');
    out_.append(fragmentsOf(klass).prefix);
    out_.append(name);
    out_.append('>');
}

void Writer::closeElement(const cim::Class &klass, std::string_view name)
{
    out_.append("</");
    out_.append(fragmentsOf(klass).prefix);
    out_.append(name);
    out_.append('>');
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
    std::string header;
    if (fault.kind == FaultKind::mustUnderstand) {
        TextBuffer text;
        text.append("<s:NotUnderstood qname=\"p:");
        appendEscaped(text, fault.subject);
        text.append("\" xmlns:p=\"");
        appendEscaped(text, fault.subjectNameSpace);
        text.append("\"/>");
        header = text.view();
    } else if (fault.kind == FaultKind::versionMismatch) {
        header = "<s:Upgrade><s:SupportedEnvelope qname=\"s:Envelope\"/></s:Upgrade>";
    }
    finish(form.action, "", relatesTo, header);
}

void Writer::faultDetail(const Fault &fault)
{
    const bool namesAction = fault.kind == FaultKind::actionNotSupported && !fault.subject.empty();
    const bool namesHeader = fault.kind == FaultKind::messageInformationHeaderRequired ||
                             fault.kind == FaultKind::invalidMessageInformationHeader;
    const bool namesDialects = fault.kind == FaultKind::filterDialectRequestedUnavailable;
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
             {uri::selectorFilter, uri::associationFilter, uri::cql, uri::wql}) {
            element("wsen:SupportedDialect", dialect);
        }
    }
    if (!fault.detail.empty()) {
        out_.append("<wsman:FaultDetail>");
        out_.append(faultDetails);
        out_.append(fault.detail);
        out_.append("</wsman:FaultDetail>");
    }
    if (fault.code != CMPI_RC_OK) {
        out_.append("<p:CIM_Error xmlns:p=\"http://schemas.dmtf.org/wbem/wscim/1/cim-schema/2/CIM_Error\">");
        element("p:CIMStatusCode", std::to_string(static_cast<int>(fault.code)));
        element("p:CIMStatusCodeDescription", statusDescription(fault.code));
        element("p:Message", fault.text.empty() ? statusDescription(fault.code) : fault.text);
        // The schema requires an identity of the message, and who has given it.
        element("p:MessageID", codeName(fault.code));
        element("p:OwningEntity", "display-host");
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
    const ClassFragments &fragments = fragmentsOf(as != nullptr ? *as : *instance.klass);
    out_.append('<');
    out_.append(fragments.prefix);
    out_.append(fragments.name);
    out_.append('>');
    for (const ClassFragments::Property &property : fragments.properties) {
        std::size_t place = property.place;
        if (as != nullptr && as != instance.klass) {
            place = instance.klass->placeOf(as->properties[place].name);
        }
        if (place != cim::noProperty && (instance.visible == nullptr || instance.visible->contains(place))) {
            items(instance.values[place], property.open, property.close, property.null);
        }
    }
    out_.append("</");
    out_.append(fragments.prefix);
    out_.append(fragments.name);
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
    out_.append("<wsman:XmlFragment>");
    if (textOnly) {
        items(data, "", "", "");
    } else {
        value(*instance.klass, name, data);
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
    out_.append(uri::anonymous);
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

void Writer::value(const cim::Class &klass, std::string_view name, const CMPIData &data)
{
    const std::string element = fragmentsOf(klass).prefix + std::string(name);
    items(data, "<" + element + ">", "</" + element + ">", "<" + element + " xsi:nil=\"true\"/>");
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
    NumberText buffer;
    // A real number is as short as it can be, unlike in CIM-XML.
    const auto shortest = [&](auto value) {
        return std::isfinite(value)
                   ? std::string_view(buffer.data(),
                                      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr)
                   : numberText(data, buffer);
    };
    const std::string_view number = data.type == CMPI_real32   ? shortest(data.value.real32)
                                    : data.type == CMPI_real64 ? shortest(data.value.real64)
                                                               : numberText(data, buffer);
    if (!number.empty()) {
        return out_.append(number);
    }
    switch (data.type) {
    case CMPI_boolean:
        return out_.append(data.value.boolean != 0 ? "true" : "false");
    case CMPI_char16:
        return appendEscaped(out_, data.value.char16);
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
