// SPDX-License-Identifier: Apache-2.0
#include "wbem/message.h"

#include <array>

namespace displayctl::wbem
{

namespace
{

/** How an intrinsic operation is called, and how its first argument is. */
struct Form {
    std::string_view name;
    std::string_view target;
};

Form formOf(OperationKind kind)
{
    switch (kind) {
    case OperationKind::getInstance:
        return {"GetInstance", "InstanceName"};
    case OperationKind::enumerateInstances:
        return {"EnumerateInstances", "ClassName"};
    case OperationKind::enumerateInstanceNames:
        return {"EnumerateInstanceNames", "ClassName"};
    case OperationKind::associators:
        return {"Associators", "ObjectName"};
    case OperationKind::associatorNames:
        return {"AssociatorNames", "ObjectName"};
    case OperationKind::references:
        return {"References", "ObjectName"};
    case OperationKind::referenceNames:
        return {"ReferenceNames", "ObjectName"};
    case OperationKind::modifyInstance:
        return {"ModifyInstance", "ModifiedInstance"};
    case OperationKind::invokeMethod:
        break;
    }
    return {"", ""}; // a method has its own name
}

void appendEscaped(std::string &out, std::string_view text)
{
    for (const char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\r': // a parser would make it a newline
            out += "&#13;";
            break;
        default:
            out += c;
        }
    }
}

/** Appends a request to the text; each function one element of DSP0201. */
class Writer
{
  public:
    Writer(std::string &out, std::string_view nameSpace) : out_(out), nameSpace_(nameSpace) {}

    void intrinsic(const Operation &operation)
    {
        const Form form = formOf(operation.kind);
        element("IMETHODCALL", form.name, [&] {
            localNameSpace(nameSpace_);
            element("IPARAMVALUE", form.target, [&] { target(operation); });
            associationFilter(operation);
            propertyList(operation.properties);
        });
    }

    void method(const Operation &operation)
    {
        element("METHODCALL", operation.method, [&] {
            localPath(operation.object);
            for (const Property &argument : operation.values) {
                if (!argument.value.isNull()) {
                    typed("PARAMVALUE", "PARAMTYPE", argument);
                }
            }
        });
    }

  private:
    void open(std::string_view tag)
    {
        ((out_ += '<') += tag) += '>';
    }

    void close(std::string_view tag)
    {
        ((out_ += "</") += tag) += '>';
    }

    void attribute(std::string_view name, std::string_view value)
    {
        ((out_ += ' ') += name) += "=\"";
        appendEscaped(out_, value);
        out_ += '"';
    }

    template <typename Content>
    void element(std::string_view tag, std::string_view name, const Content &content)
    {
        (out_ += '<') += tag;
        attribute("NAME", name);
        out_ += '>';
        content();
        close(tag);
    }

    void text(std::string_view tag, std::string_view value)
    {
        open(tag);
        appendEscaped(out_, value);
        close(tag);
    }

    void localNameSpace(std::string_view nameSpace)
    {
        open("LOCALNAMESPACEPATH");
        while (!nameSpace.empty()) {
            const std::size_t slash = nameSpace.find('/');
            out_ += "<NAMESPACE";
            attribute("NAME", nameSpace.substr(0, slash));
            out_ += "/>";
            nameSpace.remove_prefix(slash == std::string_view::npos ? nameSpace.size() : slash + 1);
        }
        close("LOCALNAMESPACEPATH");
    }

    void className(std::string_view name)
    {
        out_ += "<CLASSNAME";
        attribute("NAME", name);
        out_ += "/>";
    }

    void instanceName(const ObjectPath &path)
    {
        out_ += "<INSTANCENAME";
        attribute("CLASSNAME", path.className);
        out_ += '>';
        for (const Key &key : path.keys) {
            element("KEYBINDING", key.name, [&] { keyValue(key); });
        }
        close("INSTANCENAME");
    }

    void keyValue(const Key &key)
    {
        if (!key.reference.empty()) {
            reference(key.reference.front());
            return;
        }
        constexpr std::array<std::string_view, 4> types{"string", "boolean", "numeric", "string"};
        out_ += "<KEYVALUE";
        attribute("VALUETYPE", types[static_cast<std::size_t>(key.kind)]);
        out_ += '>';
        appendEscaped(out_, key.value);
        close("KEYVALUE");
    }

    /** The object with its namespace. */
    void localPath(const ObjectPath &path)
    {
        const std::string_view tag = path.keys.empty() ? "LOCALCLASSPATH" : "LOCALINSTANCEPATH";
        open(tag);
        localNameSpace(path.nameSpace.empty() ? nameSpace_ : std::string_view{path.nameSpace});
        object(path);
        close(tag);
    }

    void reference(const ObjectPath &path)
    {
        open("VALUE.REFERENCE");
        localPath(path);
        close("VALUE.REFERENCE");
    }

    void object(const ObjectPath &path)
    {
        if (path.keys.empty()) {
            className(path.className);
        } else {
            instanceName(path);
        }
    }

    void target(const Operation &operation)
    {
        if (operation.kind != OperationKind::modifyInstance) {
            object(operation.object);
            return;
        }
        open("VALUE.NAMEDINSTANCE");
        instanceName(operation.object);
        out_ += "<INSTANCE";
        attribute("CLASSNAME", operation.object.className);
        out_ += '>';
        for (const Property &property : operation.values) {
            typed("PROPERTY", "TYPE", property);
        }
        close("INSTANCE");
        close("VALUE.NAMEDINSTANCE");
    }

    /** A property or an argument: tag.ARRAY and tag.REFERENCE are elements of their own for properties alone.
     */
    void typed(std::string tag, std::string_view typeAttribute, const Property &property)
    {
        const Value &value = property.value;
        const bool isProperty = tag == "PROPERTY";
        if (isProperty && (value.isArray() || value.reference() != nullptr)) {
            tag += value.isArray() ? ".ARRAY" : ".REFERENCE";
        }
        (out_ += '<') += tag;
        attribute("NAME", property.name);
        if (!property.type.empty() && !(isProperty && value.reference() != nullptr)) {
            attribute(typeAttribute, property.type);
        }
        out_ += '>';
        content(value);
        close(tag);
    }

    void content(const Value &value)
    {
        if (value.reference() != nullptr) {
            reference(*value.reference());
        } else if (value.isArray()) {
            open("VALUE.ARRAY");
            for (const std::string &item : value.elements()) {
                text("VALUE", item);
            }
            close("VALUE.ARRAY");
        } else if (!value.isNull()) {
            text("VALUE", value.elements().front());
        }
    }

    void associationFilter(const Operation &operation)
    {
        const bool isReferences =
            operation.kind == OperationKind::references || operation.kind == OperationKind::referenceNames;
        const AssociationFilter &filter = operation.filter;
        classArgument(isReferences ? "ResultClass" : "AssocClass", filter.associationClass);
        textArgument("Role", filter.role);
        if (!isReferences) {
            classArgument("ResultClass", filter.resultClass);
            textArgument("ResultRole", filter.resultRole);
        }
    }

    void classArgument(std::string_view name, std::string_view value)
    {
        if (!value.empty()) {
            element("IPARAMVALUE", name, [&] { className(value); });
        }
    }

    void textArgument(std::string_view name, std::string_view value)
    {
        if (!value.empty()) {
            element("IPARAMVALUE", name, [&] { text("VALUE", value); });
        }
    }

    void propertyList(const std::vector<std::string> &properties)
    {
        if (!properties.empty()) {
            element("IPARAMVALUE", "PropertyList", [&] { content(Value::array(properties)); });
        }
    }

    std::string &out_;
    std::string_view nameSpace_;
};

} // namespace

std::string requestBody(const Operation &operation, std::string_view nameSpace)
{
    std::string body = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
                       "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\">"
                       "<SIMPLEREQ>";
    Writer writer{body, nameSpace};
    if (operation.kind == OperationKind::invokeMethod) {
        writer.method(operation);
    } else {
        writer.intrinsic(operation);
    }
    body += "</SIMPLEREQ></MESSAGE></CIM>\n";
    return body;
}

std::string_view methodHeader(const Operation &operation)
{
    return operation.kind == OperationKind::invokeMethod ? std::string_view{operation.method}
                                                         : formOf(operation.kind).name;
}

std::string objectHeader(const Operation &operation, std::string_view nameSpace)
{
    std::string object{nameSpace};
    if (operation.kind == OperationKind::invokeMethod) {
        object += ':' + operation.object.toText();
    }
    std::string header;
    for (const char c : object) {
        if (c > ' ' && c < 0x7F && c != '%') {
            header += c;
        } else {
            constexpr std::string_view digits = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(c);
            ((header += '%') += digits[byte >> 4U]) += digits[byte & 0xFU];
        }
    }
    return header;
}

} // namespace displayctl::wbem
