// SPDX-License-Identifier: Apache-2.0
// Class definitions and qualifier declarations as CIM-XML.
#include "cimxml/tags.h"
#include "cimxml/writer.h"
#include "core/xml_text.h"

namespace host
{

void CimXmlWriter::textValue(const cim::Value &value)
{
    if (value.isNull) {
        return;
    }
    const auto item = [this](const std::string &text) {
        out_.append("<VALUE>");
        appendEscaped(out_, text);
        out_.append("</VALUE>\n");
    };
    if (!value.isArray) {
        return item(value.text());
    }
    out_.append("<VALUE.ARRAY>\n");
    for (const std::string &text : value.items) {
        item(text);
    }
    out_.append("</VALUE.ARRAY>\n");
}

void CimXmlWriter::qualifiers(const cim::Qualifiers &list)
{
    for (const cim::Qualifier &qualifier : list) {
        out_.append("<QUALIFIER");
        attribute("NAME", qualifier.name);
        attribute("TYPE", cim::typeName(qualifier.type));
        if (qualifier.propagated) {
            attribute("PROPAGATED", "true");
        }
        if (!qualifier.flavor.overridable) {
            attribute("OVERRIDABLE", "false");
        }
        if (!qualifier.flavor.toSubclass) {
            attribute("TOSUBCLASS", "false");
        }
        if (qualifier.flavor.translatable) {
            attribute("TRANSLATABLE", "true");
        }
        out_.append(">\n");
        textValue(qualifier.value);
        out_.append("</QUALIFIER>\n");
    }
}

void CimXmlWriter::propertyDefinition(const cim::Property &property, const Request &request)
{
    const Tags tags = propertyTags(property);
    out_.append(tags.open);
    attribute("NAME", property.name);
    if (property.type == cim::Type::reference) {
        attribute("REFERENCECLASS", property.referenceClass);
    } else {
        attribute("TYPE", cim::typeName(property.type));
    }
    if (property.isArray && property.arraySize != 0) {
        attribute("ARRAYSIZE", std::to_string(property.arraySize));
    }
    if (request.includeClassOrigin) {
        attribute("CLASSORIGIN", property.classOrigin);
    }
    if (property.propagated) {
        attribute("PROPAGATED", "true");
    }
    if (!property.isArray) { // compat: as in instances
        out_.append(embeddedObject(property.qualifiers));
    }
    out_.append(">\n");
    if (request.includeQualifiers) {
        qualifiers(property.qualifiers);
    }
    if (property.type != cim::Type::reference) {
        textValue(property.defaultValue);
    }
    out_.append(tags.close);
}

void CimXmlWriter::method(const cim::Method &method, const Request &request)
{
    out_.append("<METHOD");
    attribute("NAME", method.name);
    if (method.returnType != cim::Type::none) {
        attribute("TYPE", cim::typeName(method.returnType));
    }
    if (request.includeClassOrigin) {
        attribute("CLASSORIGIN", method.classOrigin);
    }
    if (method.propagated) {
        attribute("PROPAGATED", "true");
    }
    out_.append(">\n");
    if (request.includeQualifiers) {
        qualifiers(method.qualifiers);
    }
    for (const cim::Parameter &parameter : method.parameters) {
        const bool isReference = parameter.type == cim::Type::reference;
        const std::string_view element = isReference && parameter.isArray ? "PARAMETER.REFARRAY"
                                         : isReference                    ? "PARAMETER.REFERENCE"
                                         : parameter.isArray              ? "PARAMETER.ARRAY"
                                                                          : "PARAMETER";
        out_.append('<');
        out_.append(element);
        attribute("NAME", parameter.name);
        if (isReference) {
            attribute("REFERENCECLASS", parameter.referenceClass);
        } else {
            attribute("TYPE", cim::typeName(parameter.type));
        }
        if (parameter.isArray && parameter.arraySize != 0) {
            attribute("ARRAYSIZE", std::to_string(parameter.arraySize));
        }
        out_.append(">\n");
        if (request.includeQualifiers) {
            qualifiers(parameter.qualifiers);
        }
        out_.append("</");
        out_.append(element);
        out_.append(">\n");
    }
    out_.append("</METHOD>\n");
}

void CimXmlWriter::classDefinition(const cim::Class &definition, const Request &request, bool withMethods)
{
    out_.append("<CLASS");
    attribute("NAME", definition.name);
    if (!definition.superclass.empty()) {
        attribute("SUPERCLASS", definition.superclass);
    }
    out_.append(">\n");
    if (request.includeQualifiers) {
        qualifiers(definition.qualifiers);
    }
    const auto isListed = [&request](const cim::Property &property) {
        for (const char **name = request.propertyList; name != nullptr && *name != nullptr; ++name) {
            if (cim::sameName(*name, property.name)) {
                return true;
            }
        }
        return request.propertyList == nullptr;
    };
    for (const cim::Property &property : definition.properties) {
        if ((!request.localOnly || !property.propagated) && isListed(property)) {
            propertyDefinition(property, request);
        }
    }
    for (const cim::Method &each : definition.methods) {
        if (withMethods && (!request.localOnly || !each.propagated)) {
            method(each, request);
        }
    }
    out_.append("</CLASS>\n");
}

void CimXmlWriter::qualifierDeclaration(const cim::QualifierDeclaration &declaration)
{
    struct ScopeAttribute {
        std::uint16_t bit;
        std::string_view name;
    };
    static constexpr ScopeAttribute scopes[] = {
        {cim::QualifierDeclaration::scopeClass, "CLASS"},
        {cim::QualifierDeclaration::scopeAssociation, "ASSOCIATION"},
        {cim::QualifierDeclaration::scopeReference, "REFERENCE"},
        {cim::QualifierDeclaration::scopeProperty, "PROPERTY"},
        {cim::QualifierDeclaration::scopeMethod, "METHOD"},
        {cim::QualifierDeclaration::scopeParameter, "PARAMETER"},
        {cim::QualifierDeclaration::scopeIndication, "INDICATION"},
    };
    out_.append("<QUALIFIER.DECLARATION");
    attribute("NAME", declaration.name);
    attribute("TYPE", cim::typeName(declaration.type));
    attribute("ISARRAY", declaration.isArray ? "true" : "false");
    if (declaration.arraySize != 0) {
        attribute("ARRAYSIZE", std::to_string(declaration.arraySize));
    }
    attribute("OVERRIDABLE", declaration.flavor.overridable ? "true" : "false");
    attribute("TOSUBCLASS", declaration.flavor.toSubclass ? "true" : "false");
    attribute("TRANSLATABLE", declaration.flavor.translatable ? "true" : "false");
    out_.append(">\n<SCOPE");
    for (const ScopeAttribute &scope : scopes) {
        if ((declaration.scope & scope.bit) != 0) {
            attribute(scope.name, "true");
        }
    }
    out_.append("></SCOPE>\n");
    textValue(declaration.defaultValue);
    out_.append("</QUALIFIER.DECLARATION>\n");
}

} // namespace host
