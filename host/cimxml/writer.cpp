// SPDX-License-Identifier: Apache-2.0
#include "cimxml/writer.h"

#include "cimxml/tags.h"
#include "core/xml_text.h"

#include <cstdio>

namespace host
{
namespace
{

constexpr std::string_view openValue = "<VALUE>";
constexpr std::string_view closeValue = "</VALUE>\n";
constexpr std::string_view closeScalarProperty = "</VALUE>\n</PROPERTY>\n";

std::string escaped(std::string_view text)
{
    TextBuffer buffer;
    appendEscaped(buffer, text);
    return std::string(buffer.view());
}

/** The CIM type of a CMPI type code, array or not. */
cim::Type cimType(CMPIType type)
{
    return static_cast<cim::Type>(type & ~CMPI_ARRAY);
}

bool isOperationWithoutResult(Operation operation)
{
    return operation == Operation::modifyInstance || operation == Operation::deleteInstance ||
           operation == Operation::setProperty;
}

InstanceDetail detailOf(const Request &request)
{
    return {request.includeClassOrigin, request.includeQualifiers};
}

} // namespace

// --------------------------------------------------------------------------------------------------
// fragments

ClassFragments::ClassFragments(const cim::Class &definition)
    : open("<INSTANCE CLASSNAME=\"" + escaped(definition.name) + "\">\n")
{
    properties.reserve(definition.properties.size());
    for (const cim::Property &property : definition.properties) {
        const Tags tags = propertyTags(property);
        std::string text(tags.open);
        text.append(" NAME=\"").append(escaped(property.name)).append("\"");
        const std::size_t nameEnd = text.size();
        if (property.type != cim::Type::reference) {
            text.append(" TYPE=\"").append(cim::typeName(property.type)).append("\"");
        }
        // compat: wbemcli refuses EmbeddedObject at PROPERTY.ARRAY; the qualifiers of the class tell the
        // same.
        text.append(property.isArray ? "" : embeddedObject(property.qualifiers)).append(">\n");
        text.append(openValue).shrink_to_fit();
        properties.push_back({std::move(text), nameEnd, tags.close});
    }
}

std::string_view ClassFragments::Property::open() const
{
    return std::string_view(openValue).substr(0, openValue.size() - host::openValue.size());
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

// ----------------------------------------------------------------------------------------------------- frame

void CimXmlWriter::writeAnswer(std::string_view messageId, std::string_view name, const Request &request,
                               const Answer &answer)
{
    const bool isMethodCall = request.operation == Operation::invokeMethod;
    begin(messageId, name, isMethodCall);
    if (!answer.ok()) {
        error(answer.code, answer.message);
    } else if (isMethodCall) {
        methodResult(answer);
    } else if (!isOperationWithoutResult(request.operation)) {
        out_.append("<IRETURNVALUE>\n");
        result(request, answer);
        out_.append("</IRETURNVALUE>\n");
    }
    end(isMethodCall);
}

void CimXmlWriter::writeError(std::string_view messageId, std::string_view name, bool isMethodCall,
                              CMPIrc code, const char *message)
{
    begin(messageId, name, isMethodCall);
    error(code, message);
    end(isMethodCall);
}

void CimXmlWriter::begin(std::string_view messageId, std::string_view name, bool isMethodCall)
{
    out_.append("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
                "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
                "<MESSAGE ID=\"");
    appendEscaped(out_, messageId);
    out_.append("\" PROTOCOLVERSION=\"1.0\">\n"
                "<SIMPLERSP>\n");
    out_.append(isMethodCall ? "<METHODRESPONSE NAME=\"" : "<IMETHODRESPONSE NAME=\"");
    appendEscaped(out_, name);
    out_.append("\">\n");
}

void CimXmlWriter::end(bool isMethodCall)
{
    out_.append(isMethodCall ? "</METHODRESPONSE>\n" : "</IMETHODRESPONSE>\n");
    out_.append("</SIMPLERSP>\n"
                "</MESSAGE>\n"
                "</CIM>\n");
}

void CimXmlWriter::error(CMPIrc code, const char *message)
{
    // What a provider answers may be a code of CMPI alone, which clients do not know.
    constexpr int lastCode = CMPI_RC_ERR_QUERY_FEATURE_NOT_SUPPORTED;
    char number[16];
    std::snprintf(number, sizeof number, "%d",
                  static_cast<int>(code <= lastCode ? code : CMPI_RC_ERR_FAILED));
    out_.append("<ERROR");
    attribute("CODE", number);
    attribute("DESCRIPTION", message != nullptr ? message : statusDescription(code));
    out_.append("/>\n");
}

void CimXmlWriter::attribute(std::string_view name, std::string_view value)
{
    out_.append(' ');
    out_.append(name);
    out_.append("=\"");
    appendEscaped(out_, value);
    out_.append('"');
}

void CimXmlWriter::result(const Request &request, const Answer &answer)
{
    switch (request.operation) {
    case Operation::enumerateInstances:
        for (const Instance *each : answer.instances) {
            out_.append("<VALUE.NAMEDINSTANCE>\n");
            instanceName(*each->path);
            instance(*each, detailOf(request));
            out_.append("</VALUE.NAMEDINSTANCE>\n");
        }
        return;
    case Operation::getInstance:
        return instance(*answer.instances[0], detailOf(request));
    case Operation::enumerateInstanceNames:
    case Operation::createInstance:
        for (const Path *path : answer.paths) {
            instanceName(*path);
        }
        return;
    case Operation::execQuery:
    case Operation::associators:
    case Operation::references:
    case Operation::associatorNames:
    case Operation::referenceNames:
        return traversalResult(request, answer);
    case Operation::getProperty:
        if (answer.hasReturnValue) {
            value(answer.returnValue);
        }
        return;
    case Operation::getClass:
    case Operation::enumerateClasses:
        for (const cim::Class *klass : answer.classes) {
            classDefinition(*klass, request);
        }
        return;
    case Operation::enumerateClassNames:
        for (const cim::Class *klass : answer.classes) {
            out_.append("<CLASSNAME");
            attribute("NAME", klass->name);
            out_.append("/>\n");
        }
        return;
    case Operation::getQualifier:
    case Operation::enumerateQualifiers:
        for (const cim::QualifierDeclaration *declaration : answer.qualifiers) {
            qualifierDeclaration(*declaration);
        }
        return;
    default:
        return;
    }
}

/** Objects with their paths, or the paths alone; of a class: classes. */
void CimXmlWriter::traversalResult(const Request &request, const Answer &answer)
{
    for (const Instance *each : answer.instances) {
        out_.append("<VALUE.OBJECTWITHPATH>\n");
        instancePath(*each->path);
        instance(*each, detailOf(request));
        out_.append("</VALUE.OBJECTWITHPATH>\n");
    }
    for (const Path *path : answer.paths) {
        out_.append("<OBJECTPATH>\n");
        instancePath(*path);
        out_.append("</OBJECTPATH>\n");
    }
    if (!request.isOfClass) {
        return;
    }
    const bool names =
        request.operation == Operation::associatorNames || request.operation == Operation::referenceNames;
    for (const cim::Class *klass : answer.classes) {
        out_.append(names ? "<OBJECTPATH>\n" : "<VALUE.OBJECTWITHPATH>\n");
        classPath(*klass, request.nameSpace);
        if (!names) {
            classDefinition(*klass, request);
        }
        out_.append(names ? "</OBJECTPATH>\n" : "</VALUE.OBJECTWITHPATH>\n");
    }
}

void CimXmlWriter::classPath(const cim::Class &klass, std::string_view nameSpace)
{
    out_.append("<CLASSPATH>\n<NAMESPACEPATH>\n<HOST>");
    appendEscaped(out_, hostName_);
    out_.append("</HOST>\n");
    nameSpacePath(nameSpace);
    out_.append("</NAMESPACEPATH>\n<CLASSNAME");
    attribute("NAME", klass.name);
    out_.append("/>\n</CLASSPATH>\n");
}

void CimXmlWriter::methodResult(const Answer &answer)
{
    if (answer.hasReturnValue && !isNull(answer.returnValue)) {
        out_.append("<RETURNVALUE");
        typeAttribute("PARAMTYPE", answer.returnValue.type);
        out_.append(">\n");
        value(answer.returnValue);
        out_.append("</RETURNVALUE>\n");
    }
    for (const NamedValue &argument : *answer.outArguments->values) {
        parameter(argument.name->view(), argument.data);
    }
}

void CimXmlWriter::parameter(std::string_view name, const CMPIData &data)
{
    out_.append("<PARAMVALUE");
    attribute("NAME", name);
    typeAttribute("PARAMTYPE", data.type);
    out_.append(">\n");
    value(data);
    out_.append("</PARAMVALUE>\n");
}

void CimXmlWriter::beginPart(std::string_view messageId, std::string_view name)
{
    begin(messageId, name, false);
}

void CimXmlWriter::part(const ArenaList<Instance *> &instances, const ArenaList<Path *> &paths,
                        ObjectForm form, bool includeClassOrigin, std::size_t first, std::size_t count)
{
    out_.append("<IRETURNVALUE>\n");
    for (std::size_t i = first; i < first + count; ++i) {
        switch (form) {
        case ObjectForm::paths:
            instancePath(*paths[i]);
            break;
        case ObjectForm::instances:
            instance(*instances[i], {includeClassOrigin, false});
            break;
        case ObjectForm::instancesWithPath:
            out_.append("<VALUE.INSTANCEWITHPATH>\n");
            instancePath(*instances[i]->path);
            instance(*instances[i], {includeClassOrigin, false});
            out_.append("</VALUE.INSTANCEWITHPATH>\n");
            break;
        }
    }
    out_.append("</IRETURNVALUE>\n");
}

void CimXmlWriter::queryResultClass(const Answer &answer)
{
    Request plain;
    plain.propertyList = answer.selected;
    out_.append("<PARAMVALUE NAME=\"QueryResultClass\">\n");
    for (const cim::Class *klass : answer.classes) {
        classDefinition(*klass, plain, false);
    }
    out_.append("</PARAMVALUE>\n");
}

void CimXmlWriter::sequence(std::string_view context, bool isEnd)
{
    out_.append("<PARAMVALUE NAME=\"EnumerationContext\" PARAMTYPE=\"string\">\n<VALUE>");
    appendEscaped(out_, context);
    out_.append(
        "</VALUE>\n</PARAMVALUE>\n<PARAMVALUE NAME=\"EndOfSequence\" PARAMTYPE=\"boolean\">\n<VALUE>");
    out_.append(isEnd ? "TRUE" : "FALSE");
    out_.append("</VALUE>\n</PARAMVALUE>\n");
}

void CimXmlWriter::endPart()
{
    end(false);
}

// ----------------------------------------------------------------------------------------------------- paths

void CimXmlWriter::nameSpacePath(std::string_view nameSpace)
{
    out_.append("<LOCALNAMESPACEPATH>\n");
    while (!nameSpace.empty()) {
        const std::size_t end = std::min(nameSpace.find('/'), nameSpace.size());
        if (end != 0) {
            out_.append("<NAMESPACE");
            attribute("NAME", nameSpace.substr(0, end));
            out_.append("/>\n");
        }
        nameSpace.remove_prefix(std::min(end + 1, nameSpace.size()));
    }
    out_.append("</LOCALNAMESPACEPATH>\n");
}

void CimXmlWriter::instanceName(const Path &path)
{
    out_.append("<INSTANCENAME CLASSNAME=\"");
    appendEscaped(out_, path.className->view());
    out_.append("\">\n");
    for (const NamedValue &key : *path.keys) {
        if (isNull(key.data)) {
            continue;
        }
        out_.append("<KEYBINDING NAME=\"");
        appendEscaped(out_, key.name->view());
        out_.append("\">\n");
        if (key.data.type == CMPI_ref) {
            reference(*pathOf(key.data));
        } else {
            const cim::Type type = cimType(key.data.type);
            out_.append(cim::isInteger(type) || cim::isReal(type) ? "<KEYVALUE VALUETYPE=\"numeric\">"
                        : type == cim::Type::boolean              ? "<KEYVALUE VALUETYPE=\"boolean\">"
                                                                  : "<KEYVALUE VALUETYPE=\"string\">");
            scalar(key.data);
            out_.append("</KEYVALUE>\n");
        }
        out_.append("</KEYBINDING>\n");
    }
    out_.append("</INSTANCENAME>\n");
}

void CimXmlWriter::instancePath(const Path &path)
{
    out_.append("<INSTANCEPATH>\n<NAMESPACEPATH>\n<HOST>");
    appendEscaped(out_, path.host != nullptr ? path.host->view() : hostName_);
    out_.append("</HOST>\n");
    nameSpacePath(path.nameSpace->view());
    out_.append("</NAMESPACEPATH>\n");
    instanceName(path);
    out_.append("</INSTANCEPATH>\n");
}

/** A path without namespace stands alone: its namespace is the one of the request. */
void CimXmlWriter::localPath(const Path &path)
{
    const bool isClassPath = path.keys->empty();
    if (path.nameSpace != nullptr) {
        out_.append(isClassPath ? "<LOCALCLASSPATH>\n" : "<LOCALINSTANCEPATH>\n");
        nameSpacePath(path.nameSpace->view());
    }
    if (isClassPath) {
        out_.append("<CLASSNAME");
        attribute("NAME", path.className->view());
        out_.append("/>\n");
    } else {
        instanceName(path);
    }
    if (path.nameSpace != nullptr) {
        out_.append(isClassPath ? "</LOCALCLASSPATH>\n" : "</LOCALINSTANCEPATH>\n");
    }
}

void CimXmlWriter::reference(const Path &path)
{
    out_.append("<VALUE.REFERENCE>\n");
    localPath(path);
    out_.append("</VALUE.REFERENCE>\n");
}

// --------------------------------------------------------------------------------------------------
// instances

void CimXmlWriter::instance(const Instance &instance, const InstanceDetail &detail)
{
    const ClassFragments &fragments = fragments_.of(*instance.klass);
    out_.append(fragments.open);
    if (detail.qualifiers) {
        qualifiers(instance.klass->qualifiers);
    }
    for (std::size_t i = 0; i < fragments.properties.size(); ++i) {
        if (instance.visible != nullptr && !instance.visible->contains(i)) {
            continue;
        }
        const ClassFragments::Property &property = fragments.properties[i];
        if (!detail.classOrigin && !detail.qualifiers) {
            plainProperty(property, instance.values[i]);
            continue;
        }
        const std::string_view open = property.open();
        out_.append(open.substr(0, property.nameEnd));
        if (detail.classOrigin) {
            attribute("CLASSORIGIN", instance.klass->properties[i].classOrigin);
        }
        out_.append(open.substr(property.nameEnd));
        if (detail.qualifiers) {
            qualifiers(instance.klass->properties[i].qualifiers);
        }
        value(instance.values[i]);
        out_.append(property.close);
    }
    out_.append("</INSTANCE>\n");
}

void CimXmlWriter::plainProperty(const ClassFragments::Property &fragments, const CMPIData &data)
{
    if (!isNull(data) && (data.type & CMPI_ARRAY) == 0 && data.type != CMPI_ref) {
        out_.append(fragments.openValue);
        scalar(data);
        out_.append(closeScalarProperty);
    } else {
        out_.append(fragments.open());
        value(data);
        out_.append(fragments.close);
    }
}

void CimXmlWriter::scalar(const CMPIData &data)
{
    if (data.type == CMPI_string) { // most are
        return appendEscaped(out_, stringOf(data)->view());
    }
    NumberText buffer;
    if (const std::string_view number = numberText(data, buffer); !number.empty()) {
        return out_.append(number);
    }
    switch (data.type) {
    case CMPI_boolean:
        return out_.append(data.value.boolean != 0 ? "TRUE" : "FALSE");
    case CMPI_char16:
        return appendEscaped(out_, data.value.char16);
    case CMPI_dateTime:
        return out_.append(dateTimeOf(data)->text);
    case CMPI_instance:
        return embedded(*instanceOf(data));
    default:
        return;
    }
}

/** The instance as a text. */
void CimXmlWriter::embedded(const Instance &object)
{
    TextBuffer text;
    CimXmlWriter(text, fragments_, hostName_).instance(object, {});
    appendEscaped(out_, text.view());
}

/** The value's element; nothing for null. */
void CimXmlWriter::value(const CMPIData &data)
{
    if (isNull(data)) {
        return;
    }
    if ((data.type & CMPI_ARRAY) != 0) {
        const Array &array = *arrayOf(data);
        const bool references = array.elementType == CMPI_ref;
        out_.append(references ? "<VALUE.REFARRAY>\n" : "<VALUE.ARRAY>\n");
        for (CMPICount i = 0; i < array.size; ++i) {
            if (isNull(array.elements[i])) {
                out_.append("<VALUE.NULL></VALUE.NULL>\n");
            } else {
                value(array.elements[i]);
            }
        }
        out_.append(references ? "</VALUE.REFARRAY>\n" : "</VALUE.ARRAY>\n");
        return;
    }
    if (data.type == CMPI_ref) {
        return reference(*pathOf(data));
    }
    out_.append(openValue);
    scalar(data);
    out_.append(closeValue);
}

void CimXmlWriter::typeAttribute(std::string_view name, CMPIType type)
{
    if (type == CMPI_instance || type == CMPI_instanceA) {
        attribute(name, "string");
        return attribute("EmbeddedObject", "instance");
    }
    const char *typeName = cim::typeName(cimType(type));
    if (*typeName != '\0') {
        attribute(name, typeName);
    }
}

} // namespace host
