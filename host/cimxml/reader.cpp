// SPDX-License-Identifier: Apache-2.0
#include "cimxml/reader.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace host
{
namespace
{

using pugi::xml_node;

bool is(const xml_node &node, const char *name)
{
    return std::strcmp(node.name(), name) == 0;
}

std::string_view attribute(const xml_node &node, const char *name)
{
    return node.attribute(name).value();
}

/** The first child that is an element. */
xml_node firstElement(const xml_node &node)
{
    for (const xml_node child : node.children()) {
        if (child.type() == pugi::node_element) {
            return child;
        }
    }
    return {};
}

/** True of "2.0" and later of the same major version, and so on. */
bool isVersion(std::string_view version, char major)
{
    return version.size() >= 2 && version[0] == major && version[1] == '.';
}

/** A request whose parts are read one after the other; the first thing that is wrong ends it. */
class Reader
{
  public:
    Reader(Arena &arena, const cim::NameSpaces &nameSpaces, CimXmlMessage &message)
        : arena_(arena), nameSpaces_(nameSpaces), message_(message)
    {
    }

    MessageVerdict readMessage(const pugi::xml_document &document)
    {
        const xml_node cim = firstElement(document);
        if (!is(cim, "CIM")) {
            return MessageVerdict::NotValid;
        }
        if (!isVersion(attribute(cim, "CIMVERSION"), '2')) {
            return MessageVerdict::UnsupportedCimVersion;
        }
        if (!isVersion(attribute(cim, "DTDVERSION"), '2')) {
            return MessageVerdict::UnsupportedDtdVersion;
        }
        const xml_node messageNode = firstElement(cim);
        if (!is(messageNode, "MESSAGE") || !messageNode.attribute("ID")) {
            return MessageVerdict::NotValid;
        }
        message_.id = attribute(messageNode, "ID");
        if (!isVersion(attribute(messageNode, "PROTOCOLVERSION"), '1')) {
            return MessageVerdict::UnsupportedProtocolVersion;
        }
        const xml_node request = firstElement(messageNode);
        if (is(request, "MULTIREQ")) {
            return MessageVerdict::MultipleRequests;
        }
        if (is(request, "SIMPLEEXPREQ") || is(request, "MULTIEXPREQ")) {
            return MessageVerdict::UnsupportedMessage;
        }
        if (!is(request, "SIMPLEREQ")) {
            return MessageVerdict::NotValid;
        }
        const xml_node call = simpleRequest(request);
        if (!call.attribute("NAME")) {
            return MessageVerdict::NotValid;
        }
        message_.name = attribute(call, "NAME");
        if (is(call, "IMETHODCALL")) {
            return readIntrinsic(call);
        }
        if (is(call, "METHODCALL")) {
            return readMethod(call);
        }
        return MessageVerdict::NotValid;
    }

  private:
    // ---------------------------------------------------------------------------------------------- errors

    void fail(CMPIrc code, const char *text)
    {
        if (message_.code == CMPI_RC_OK) {
            message_.code = code;
            message_.error = text;
        }
    }

    void failWith(const char *format, std::string_view name)
    {
        char text[320];
        const int length = static_cast<int>(std::min<std::size_t>(name.size(), 200));
        // Every format of this file has one %.*s, for the name.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        std::snprintf(text, sizeof text, format, length, name.data());
#pragma GCC diagnostic pop
        fail(CMPI_RC_ERR_INVALID_PARAMETER, arena_.copyText(text));
    }

    bool failed() const
    {
        return message_.code != CMPI_RC_OK;
    }

    // ------------------------------------------------------------------------------------------ small parts

    /** SIMPLEREQ may begin with CORRELATOR elements (DSP0201 2.4). */
    static xml_node simpleRequest(const xml_node &request)
    {
        for (const xml_node child : request.children()) {
            if (child.type() == pugi::node_element && !is(child, "CORRELATOR")) {
                return child;
            }
        }
        return {};
    }

    /** The text of an element, be it in one piece or in several (CDATA sections, comments in between). */
    std::string_view textOf(const xml_node &node)
    {
        const xml_node first = node.first_child();
        if (!first) {
            return "";
        }
        if (!first.next_sibling()) {
            return first.value();
        }
        ArenaList<char> text(arena_);
        for (const xml_node piece : node.children()) {
            if (piece.type() == pugi::node_pcdata || piece.type() == pugi::node_cdata) {
                for (const char *c = piece.value(); *c != '\0'; ++c) {
                    text.append(*c);
                }
            }
        }
        return {text.begin(), text.size()};
    }

    const char *zeroTerminated(std::string_view text)
    {
        return arena_.copyText(text);
    }

    std::string_view nameSpaceOf(const xml_node &localNameSpacePath)
    {
        ArenaList<char> path(arena_);
        for (const xml_node part : localNameSpacePath.children("NAMESPACE")) {
            if (!path.empty()) {
                path.append('/');
            }
            for (const char c : attribute(part, "NAME")) {
                path.append(c);
            }
        }
        return {path.begin(), path.size()};
    }

    // --------------------------------------------------------------------------------------------- values

    ItemText itemOf(const xml_node &node)
    {
        ItemText item;
        if (is(node, "VALUE")) {
            item.text = textOf(node);
        } else if (is(node, "VALUE.NULL")) {
            item.isNull = true;
        } else if (is(node, "VALUE.REFERENCE")) {
            item.reference = pathOf(firstElement(node));
        } else {
            failWith("The element %.*s cannot be a value here.", node.name());
        }
        return item;
    }

    /** The value that stands in an element: a scalar, an array, or nothing, which is null. Qualifiers may
     * come before it. */
    void readValue(const xml_node &holder, ValueText &value)
    {
        xml_node node;
        for (const xml_node child : holder.children()) {
            if (child.type() == pugi::node_element && !is(child, "QUALIFIER")) {
                node = child;
                break;
            }
        }
        if (!node) {
            value.isNull = true;
            return;
        }
        if (!is(node, "VALUE.ARRAY") && !is(node, "VALUE.REFARRAY")) {
            value.item = itemOf(node);
            value.isNull = value.item.isNull;
            return;
        }
        auto *items = makeList<ItemText>();
        for (const xml_node item : node.children()) {
            if (item.type() == pugi::node_element) {
                items->append(itemOf(item));
            }
        }
        value.isArray = true;
        value.items = items;
    }

    cim::Type typeOf(const xml_node &node, const char *attributeName)
    {
        const std::string_view name = attribute(node, attributeName);
        if (name.empty()) {
            return cim::Type::None;
        }
        const cim::Type type = cim::typeFromName(name);
        if (type == cim::Type::None) {
            failWith("There is no type %.*s.", name);
        }
        return type;
    }

    template <typename T>
    ArenaList<T> *makeList()
    {
        return new (arena_.allocate(sizeof(ArenaList<T>), alignof(ArenaList<T>))) ArenaList<T>(arena_);
    }

    // ---------------------------------------------------------------------------------------------- paths

    void readKeyValue(const xml_node &node, ValueText &key)
    {
        if (is(node, "VALUE.REFERENCE")) {
            key.item = itemOf(node);
            return;
        }
        if (!is(node, "KEYVALUE")) {
            failWith("The element %.*s cannot be a key.", node.name());
            return;
        }
        key.item.text = textOf(node);
        key.type = typeOf(node, "TYPE");
        if (key.type != cim::Type::None) {
            return;
        }
        const std::string_view valueType = attribute(node, "VALUETYPE");
        if (valueType == "numeric") {
            key.type = key.item.text.starts_with('-') ? cim::Type::Sint64 : cim::Type::Uint64;
        } else if (valueType == "boolean") {
            key.type = cim::Type::Boolean;
        } else {
            key.type = cim::Type::String;
        }
    }

    void readInstanceName(const xml_node &node, PathText &path)
    {
        path.className = attribute(node, "CLASSNAME");
        auto *keys = makeList<ValueText>();
        for (const xml_node child : node.children()) {
            if (child.type() != pugi::node_element) {
                continue;
            }
            ValueText key;
            if (is(child, "KEYBINDING")) {
                key.name = attribute(child, "NAME");
                if (key.name.empty()) {
                    fail(CMPI_RC_ERR_INVALID_PARAMETER, "A KEYBINDING has no name.");
                }
                readKeyValue(firstElement(child), key);
            } else {
                readKeyValue(child, key);
            }
            keys->append(key);
        }
        path.keys = keys;
    }

    /** INSTANCENAME or CLASSNAME, alone or with what names their namespace and host around them. */
    const PathText *pathOf(const xml_node &node)
    {
        auto *path = arena_.make<PathText>();
        readPath(node, *path);
        if (path->className.empty()) {
            fail(CMPI_RC_ERR_INVALID_PARAMETER, "A path has no class name.");
        }
        return path;
    }

    void readPath(const xml_node &node, PathText &path)
    {
        if (is(node, "INSTANCENAME")) {
            readInstanceName(node, path);
        } else if (is(node, "CLASSNAME")) {
            path.className = attribute(node, "NAME");
        } else if (is(node, "LOCALINSTANCEPATH") || is(node, "LOCALCLASSPATH")) {
            path.nameSpace = nameSpaceOf(node.child("LOCALNAMESPACEPATH"));
            readLastElement(node, path);
        } else if (is(node, "INSTANCEPATH") || is(node, "CLASSPATH")) {
            const xml_node nameSpacePath = node.child("NAMESPACEPATH");
            path.host = textOf(nameSpacePath.child("HOST"));
            path.nameSpace = nameSpaceOf(nameSpacePath.child("LOCALNAMESPACEPATH"));
            readLastElement(node, path);
        } else {
            failWith("The element %.*s is not a path.", node.name());
        }
    }

    void readLastElement(const xml_node &node, PathText &path)
    {
        for (const char *name : {"INSTANCENAME", "CLASSNAME"}) {
            if (const xml_node child = node.child(name); child) {
                readPath(child, path);
            }
        }
    }

    Path *typedPath(const PathText *text)
    {
        if (failed()) {
            return nullptr;
        }
        Typing typing(arena_, nameSpaces_);
        Path *path = typing.path(*text, message_.request.nameSpace);
        if (path == nullptr) {
            fail(typing.code(), typing.error());
        }
        return path;
    }

    // ------------------------------------------------------------------------------------------ parameters

    /** The IPARAMVALUE of that name. */
    xml_node parameter(const char *name)
    {
        for (const xml_node child : call_.children("IPARAMVALUE")) {
            if (cim::sameName(attribute(child, "NAME"), name)) {
                return child;
            }
        }
        return {};
    }

    /** Refuses parameters that the operation has not, and those that come twice (DSP0200). */
    void allow(std::initializer_list<const char *> names)
    {
        for (const xml_node child : call_.children("IPARAMVALUE")) {
            const std::string_view given = attribute(child, "NAME");
            bool known = false;
            for (const char *name : names) {
                known = known || cim::sameName(given, name);
            }
            if (!known) {
                failWith("The operation has no parameter %.*s.", given);
            } else if (parameter(zeroTerminated(given)) != child) {
                failWith("The parameter %.*s is given twice.", given);
            }
            if (failed()) {
                return;
            }
        }
    }

    void missing(const char *name)
    {
        failWith("The parameter %.*s is missing.", name);
    }

    bool booleanParameter(const char *name, bool otherwise)
    {
        const xml_node node = firstElement(parameter(name));
        if (!node) {
            return otherwise;
        }
        const std::string_view text = is(node, "VALUE") ? textOf(node) : std::string_view();
        if (cim::sameName(text, "true")) {
            return true;
        }
        if (!cim::sameName(text, "false")) {
            failWith("The parameter %.*s is not a boolean.", name);
        }
        return false;
    }

    /** The text of a VALUE, or the name of a CLASSNAME; null when there is none. */
    const char *textParameter(const char *name, bool required)
    {
        const xml_node node = firstElement(parameter(name));
        if (is(node, "CLASSNAME")) {
            const std::string_view text = attribute(node, "NAME");
            if (!text.empty()) {
                return zeroTerminated(text);
            }
        } else if (is(node, "VALUE")) {
            if (const std::string_view text = textOf(node); !text.empty() || !required) {
                return zeroTerminated(text);
            }
        } else if (node) {
            failWith("The parameter %.*s is of another form.", name);
        }
        if (required) {
            missing(name);
        }
        return nullptr;
    }

    std::string_view nameParameter(const char *name, bool required)
    {
        const char *text = textParameter(name, required);
        return text != nullptr ? std::string_view(text) : std::string_view();
    }

    const char **listParameter(const char *name)
    {
        const xml_node node = firstElement(parameter(name));
        if (!node) {
            return nullptr;
        }
        if (!is(node, "VALUE.ARRAY")) {
            failWith("The parameter %.*s is not an array.", name);
            return nullptr;
        }
        ArenaList<const char *> names(arena_);
        for (const xml_node value : node.children("VALUE")) {
            names.append(zeroTerminated(textOf(value)));
        }
        names.append(nullptr);
        return names.begin();
    }

    Path *pathParameter(const char *name)
    {
        const xml_node node = firstElement(parameter(name));
        if (!node) {
            missing(name);
            return nullptr;
        }
        return typedPath(pathOf(node));
    }

    // ------------------------------------------------------------------------------------------ operations

    MessageVerdict readIntrinsic(const xml_node &call)
    {
        call_ = call;
        const xml_node nameSpacePath = call.child("LOCALNAMESPACEPATH");
        if (!nameSpacePath) {
            return MessageVerdict::NotValid;
        }
        Request &request = message_.request;
        request.nameSpace = nameSpaceOf(nameSpacePath);
        for (const Operation operation :
             {Operation::EnumerateInstances, Operation::EnumerateInstanceNames, Operation::GetInstance,
              Operation::CreateInstance, Operation::ModifyInstance, Operation::DeleteInstance,
              Operation::GetProperty, Operation::SetProperty, Operation::ExecQuery, Operation::Associators,
              Operation::AssociatorNames, Operation::References, Operation::ReferenceNames,
              Operation::GetClass, Operation::EnumerateClasses, Operation::EnumerateClassNames,
              Operation::GetQualifier, Operation::EnumerateQualifiers}) {
            if (message_.name == operationName(operation)) {
                message_.operation = operation;
                request.operation = operation;
            }
        }
        // In a namespace that does not exist no class gives types; the dispatcher refuses it at once.
        if (message_.operation && nameSpaces_.find(request.nameSpace) != nullptr) {
            readParameters(request);
        }
        return MessageVerdict::Good;
    }

    void readFlags(Request &request, bool localOnly, bool includeQualifiers)
    {
        request.localOnly = booleanParameter("LocalOnly", localOnly);
        request.includeQualifiers = booleanParameter("IncludeQualifiers", includeQualifiers);
        request.includeClassOrigin = booleanParameter("IncludeClassOrigin", false);
        request.propertyList = listParameter("PropertyList");
    }

    void readParameters(Request &request)
    {
        switch (request.operation) {
        case Operation::EnumerateInstances:
            allow({"ClassName", "LocalOnly", "DeepInheritance", "IncludeQualifiers", "IncludeClassOrigin",
                   "PropertyList"});
            request.className = nameParameter("ClassName", true);
            request.deepInheritance = booleanParameter("DeepInheritance", true);
            // DSP0200 gave LocalOnly the default true and then deprecated it: clients that leave it out
            // expect whole instances.
            return readFlags(request, false, false);
        case Operation::EnumerateInstanceNames:
            allow({"ClassName"});
            request.className = nameParameter("ClassName", true);
            return;
        case Operation::GetInstance:
            allow({"InstanceName", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin", "PropertyList"});
            request.path = pathParameter("InstanceName");
            return readFlags(request, false, false);
        case Operation::CreateInstance:
            allow({"NewInstance"});
            return readNewInstance(request);
        case Operation::ModifyInstance:
            allow({"ModifiedInstance", "IncludeQualifiers", "PropertyList"});
            request.propertyList = listParameter("PropertyList");
            return readModifiedInstance(request);
        case Operation::DeleteInstance:
            allow({"InstanceName"});
            request.path = pathParameter("InstanceName");
            return;
        case Operation::GetProperty:
            allow({"InstanceName", "PropertyName"});
            request.path = pathParameter("InstanceName");
            request.propertyName = nameParameter("PropertyName", true);
            return;
        case Operation::SetProperty:
            allow({"InstanceName", "PropertyName", "NewValue"});
            request.path = pathParameter("InstanceName");
            request.propertyName = nameParameter("PropertyName", true);
            return readNewValue(request);
        case Operation::ExecQuery:
            allow({"QueryLanguage", "Query"});
            request.queryLanguage = textParameter("QueryLanguage", true);
            request.query = textParameter("Query", true);
            return;
        case Operation::Associators:
        case Operation::AssociatorNames:
        case Operation::References:
        case Operation::ReferenceNames:
            return readTraversal(request);
        case Operation::GetClass:
            allow({"ClassName", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin", "PropertyList"});
            request.className = nameParameter("ClassName", true);
            return readFlags(request, true, true);
        case Operation::EnumerateClasses:
            allow({"ClassName", "DeepInheritance", "LocalOnly", "IncludeQualifiers", "IncludeClassOrigin"});
            request.className = nameParameter("ClassName", false);
            request.deepInheritance = booleanParameter("DeepInheritance", false);
            return readFlags(request, true, true);
        case Operation::EnumerateClassNames:
            allow({"ClassName", "DeepInheritance"});
            request.className = nameParameter("ClassName", false);
            request.deepInheritance = booleanParameter("DeepInheritance", false);
            return;
        case Operation::GetQualifier:
            allow({"QualifierName"});
            request.qualifierName = nameParameter("QualifierName", true);
            return;
        case Operation::EnumerateQualifiers:
            allow({});
            return;
        case Operation::InvokeMethod:
            return;
        }
    }

    void readTraversal(Request &request)
    {
        const bool names =
            request.operation == Operation::AssociatorNames || request.operation == Operation::ReferenceNames;
        const bool associators =
            request.operation == Operation::Associators || request.operation == Operation::AssociatorNames;
        if (associators && names) {
            allow({"ObjectName", "AssocClass", "ResultClass", "Role", "ResultRole"});
        } else if (associators) {
            allow({"ObjectName", "AssocClass", "ResultClass", "Role", "ResultRole", "IncludeQualifiers",
                   "IncludeClassOrigin", "PropertyList"});
        } else if (names) {
            allow({"ObjectName", "ResultClass", "Role"});
        } else {
            allow({"ObjectName", "ResultClass", "Role", "IncludeQualifiers", "IncludeClassOrigin",
                   "PropertyList"});
        }
        request.path = pathParameter("ObjectName");
        request.filter.role = filterParameter("Role");
        if (associators) {
            request.filter.associationClass = filterParameter("AssocClass");
            request.filter.resultClass = filterParameter("ResultClass");
            request.filter.resultRole = filterParameter("ResultRole");
        } else {
            request.filter.associationClass = filterParameter("ResultClass");
        }
        if (!names) {
            readFlags(request, false, false);
        }
    }

    /** An empty filter is no filter. */
    const char *filterParameter(const char *name)
    {
        const char *text = textParameter(name, false);
        return text != nullptr && *text != '\0' ? text : nullptr;
    }

    const ArenaList<ValueText> *propertiesOf(const xml_node &instance)
    {
        auto *properties = makeList<ValueText>();
        for (const xml_node child : instance.children()) {
            if (child.type() != pugi::node_element || is(child, "QUALIFIER")) {
                continue;
            }
            if (!is(child, "PROPERTY") && !is(child, "PROPERTY.ARRAY") && !is(child, "PROPERTY.REFERENCE")) {
                failWith("The element %.*s is not a property.", child.name());
                return properties;
            }
            ValueText property;
            property.name = attribute(child, "NAME");
            property.type = typeOf(child, "TYPE");
            readValue(child, property);
            properties->append(property);
        }
        return properties;
    }

    void readInstance(Request &request, const xml_node &instance)
    {
        if (!cim::sameName(attribute(instance, "CLASSNAME"), request.path->className->view())) {
            fail(CMPI_RC_ERR_INVALID_PARAMETER, "The class of the instance is not the class of its path.");
            return;
        }
        const ArenaList<ValueText> *properties = propertiesOf(instance);
        if (failed() || request.path->klass == nullptr) {
            return; // an unknown class is the dispatcher's to report
        }
        Typing typing(arena_, nameSpaces_);
        request.instance = typing.instance(*request.path, *properties);
        if (request.instance == nullptr) {
            fail(typing.code(), typing.error());
        }
    }

    void readNewInstance(Request &request)
    {
        const xml_node instance = firstElement(parameter("NewInstance"));
        if (!is(instance, "INSTANCE") || attribute(instance, "CLASSNAME").empty()) {
            return missing("NewInstance");
        }
        request.path = makePath(arena_, nameSpaces_, request.nameSpace, attribute(instance, "CLASSNAME"));
        readInstance(request, instance);
        if (request.instance != nullptr) {
            completeKeys(*request.instance);
            request.path = copyObject(arena_, *request.instance->path);
        }
    }

    void readModifiedInstance(Request &request)
    {
        const xml_node named = firstElement(parameter("ModifiedInstance"));
        const xml_node name = named.child("INSTANCENAME");
        const xml_node instance = named.child("INSTANCE");
        if (!is(named, "VALUE.NAMEDINSTANCE") || !name || !instance) {
            return missing("ModifiedInstance");
        }
        request.path = typedPath(pathOf(name));
        if (!failed()) {
            readInstance(request, instance);
        }
    }

    void readNewValue(Request &request)
    {
        if (failed() || request.path->klass == nullptr) {
            return;
        }
        const std::size_t index = request.path->klass->placeOf(request.propertyName);
        if (index == cim::NO_PROPERTY) {
            return; // the dispatcher's to report
        }
        const cim::Property &property = request.path->klass->properties[index];
        ValueText text;
        text.name = request.propertyName;
        readValue(parameter("NewValue"), text);
        Typing typing(arena_, nameSpaces_);
        if (!failed() &&
            !typing.value(text, property.type, property.isArray, request.nameSpace, request.propertyValue)) {
            fail(typing.code(), typing.error());
        }
    }

    // --------------------------------------------------------------------------------------------- methods

    MessageVerdict readMethod(const xml_node &call)
    {
        message_.isMethodCall = true;
        message_.operation = Operation::InvokeMethod;
        Request &request = message_.request;
        request.operation = Operation::InvokeMethod;
        request.methodName = zeroTerminated(message_.name);
        const xml_node target = firstElement(call);
        if (!is(target, "LOCALINSTANCEPATH") && !is(target, "LOCALCLASSPATH")) {
            return MessageVerdict::NotValid;
        }
        const PathText *path = pathOf(target);
        request.nameSpace = path->nameSpace;
        if (nameSpaces_.find(request.nameSpace) == nullptr) {
            return MessageVerdict::Good;
        }
        request.path = typedPath(path);
        ArenaList<ValueText> values(arena_);
        for (const xml_node node : call.children()) {
            if (node.type() != pugi::node_element || node == target) {
                continue;
            }
            if (!is(node, "PARAMVALUE") || attribute(node, "NAME").empty()) {
                return MessageVerdict::NotValid;
            }
            ValueText value;
            value.name = attribute(node, "NAME");
            value.type = typeOf(node, "PARAMTYPE");
            readValue(node, value);
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
        return MessageVerdict::Good;
    }

    Arena &arena_;
    const cim::NameSpaces &nameSpaces_;
    CimXmlMessage &message_;
    xml_node call_;
};

} // namespace

MessageVerdict readCimXml(const pugi::xml_document &document, Arena &arena, const cim::NameSpaces &nameSpaces,
                          CimXmlMessage &message)
{
    return Reader(arena, nameSpaces, message).readMessage(document);
}

} // namespace host
