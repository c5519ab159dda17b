// SPDX-License-Identifier: Apache-2.0
// The reader of answers. It takes what any object manager sends: elements in any order, properties and keys
// that nobody asked for, values without types, white space between elements.
#include "wbem/message.h"

#include <pugixml.hpp>

#include <algorithm>
#include <stdexcept>

namespace displayctl::wbem
{

namespace
{

/** Thrown inside the reader when the answer is not what it should be. */
class Broken : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

/** References in keys of references: none of a sound answer is deeper. */
constexpr unsigned maximumDepth = 8;

bool is(pugi::xml_node node, std::string_view name)
{
    return name == node.name();
}

/** The text of an element, whether it stands there plainly or as CDATA. */
std::string textOf(pugi::xml_node element)
{
    std::string text;
    for (const pugi::xml_node part : element.children()) {
        if (part.type() == pugi::node_pcdata || part.type() == pugi::node_cdata) {
            text += part.value();
        }
    }
    return text;
}

std::string nameSpaceOf(pugi::xml_node localNameSpacePath)
{
    std::string text;
    for (const pugi::xml_node part : localNameSpacePath.children("NAMESPACE")) {
        text += (text.empty() ? "" : "/");
        text += part.attribute("NAME").value();
    }
    return text;
}

/** The name that an element has to have; what: for the message. */
const char *nameOf(pugi::xml_node element, const char *what)
{
    const char *name = element.attribute("NAME").value();
    if (*name == '\0') {
        throw Broken(std::string{what} + " has no name");
    }
    return name;
}

ObjectPath readReference(pugi::xml_node valueReference, unsigned depth);

Key readKey(pugi::xml_node binding, unsigned depth)
{
    Key key;
    key.name = nameOf(binding, "a key");
    if (const pugi::xml_node reference = binding.child("VALUE.REFERENCE")) {
        key.kind = Key::Kind::reference;
        key.reference.push_back(readReference(reference, depth + 1));
        return key;
    }
    const pugi::xml_node value = binding.child("KEYVALUE");
    if (!value) {
        throw Broken("the key " + key.name + " has no value");
    }
    key.value = textOf(value);
    const std::string_view type = value.attribute("VALUETYPE").value();
    key.kind = type == "boolean"   ? Key::Kind::boolean
               : type == "numeric" ? Key::Kind::number
                                   : Key::Kind::text;
    return key;
}

ObjectPath readInstanceName(pugi::xml_node instanceName, unsigned depth)
{
    if (depth > maximumDepth) {
        throw Broken("references are nested too deeply");
    }
    ObjectPath path;
    path.className = instanceName.attribute("CLASSNAME").value();
    if (path.className.empty()) {
        throw Broken("a path names no class");
    }
    for (const pugi::xml_node binding : instanceName.children("KEYBINDING")) {
        Key key = readKey(binding, depth);
        if (path.find(key.name) != nullptr) {
            throw Broken("the key " + key.name + " is given twice");
        }
        path.keys.push_back(std::move(key));
    }
    return path;
}

/** INSTANCENAME, LOCALINSTANCEPATH or INSTANCEPATH, or the forms for classes. */
ObjectPath readPath(pugi::xml_node element, unsigned depth)
{
    if (is(element, "INSTANCENAME")) {
        return readInstanceName(element, depth);
    }
    if (is(element, "CLASSNAME")) {
        return {.className = nameOf(element, "a class"), .keys = {}};
    }
    const pugi::xml_node whole = element.child("NAMESPACEPATH");
    const pugi::xml_node space = (whole ? whole : element).child("LOCALNAMESPACEPATH");
    const pugi::xml_node name = element.child("INSTANCENAME");
    const pugi::xml_node object = name ? name : element.child("CLASSNAME");
    if (!object) {
        throw Broken("a path names no class");
    }
    ObjectPath path = readPath(object, depth);
    path.nameSpace = nameSpaceOf(space);
    return path;
}

pugi::xml_node firstElement(pugi::xml_node parent)
{
    return parent.find_child([](pugi::xml_node child) { return child.type() == pugi::node_element; });
}

bool isPath(pugi::xml_node element)
{
    return is(element, "INSTANCENAME") || is(element, "LOCALINSTANCEPATH") || is(element, "INSTANCEPATH") ||
           is(element, "CLASSNAME") || is(element, "LOCALCLASSPATH") || is(element, "CLASSPATH");
}

ObjectPath readReference(pugi::xml_node valueReference, unsigned depth)
{
    const pugi::xml_node path = firstElement(valueReference);
    if (!isPath(path)) {
        throw Broken("a reference holds no path");
    }
    return readPath(path, depth);
}

Value readValue(pugi::xml_node parent)
{
    if (const pugi::xml_node value = parent.child("VALUE")) {
        return Value{textOf(value)};
    }
    if (const pugi::xml_node array = parent.child("VALUE.ARRAY")) {
        std::vector<std::string> texts;
        for (const pugi::xml_node value : array.children("VALUE")) {
            texts.push_back(textOf(value));
        }
        return Value::array(std::move(texts));
    }
    if (const pugi::xml_node reference = parent.child("VALUE.REFERENCE")) {
        return Value{readReference(reference, 0)};
    }
    return {};
}

Property readTyped(pugi::xml_node element, const char *typeAttribute)
{
    Property property{nameOf(element, "a property or an argument"), element.attribute(typeAttribute).value(),
                      readValue(element)};
    if (property.value.reference() != nullptr) {
        property.type = "reference";
    }
    return property;
}

Instance readInstance(pugi::xml_node element)
{
    Instance instance;
    instance.path.className = element.attribute("CLASSNAME").value();
    for (const pugi::xml_node child : element.children()) {
        if (is(child, "PROPERTY") || is(child, "PROPERTY.ARRAY") || is(child, "PROPERTY.REFERENCE")) {
            instance.properties.push_back(readTyped(child, "TYPE"));
        }
    }
    return instance;
}

/** An instance, alone or in one of the elements that add its path. */
Instance readObject(pugi::xml_node element)
{
    if (is(element, "INSTANCE")) {
        return readInstance(element);
    }
    const pugi::xml_node content = element.child("INSTANCE");
    if (!content) {
        throw Broken(std::string{"an instance was expected in "} + element.name());
    }
    Instance instance = readInstance(content);
    for (const pugi::xml_node child : element.children()) {
        if (isPath(child)) {
            instance.path = readPath(child, 0);
        }
    }
    return instance;
}

void readObjects(pugi::xml_node returnValue, Answer &answer)
{
    for (const pugi::xml_node child : returnValue.children()) {
        if (child.type() == pugi::node_element) {
            answer.instances.push_back(readObject(child));
        }
    }
}

void readPaths(pugi::xml_node returnValue, Answer &answer)
{
    for (const pugi::xml_node child : returnValue.children()) {
        if (child.type() != pugi::node_element) {
            continue;
        }
        const pugi::xml_node path = is(child, "OBJECTPATH") ? firstElement(child) : child;
        if (!isPath(path)) {
            throw Broken(std::string{"a path was expected instead of "} + child.name());
        }
        answer.paths.push_back(readPath(path, 0));
    }
}

void readMethodResult(pugi::xml_node response, Answer &answer)
{
    const pugi::xml_node result = response.child("RETURNVALUE");
    if (!result) {
        throw Broken("the method returns nothing");
    }
    answer.returnValue = readValue(result);
    for (const pugi::xml_node output : response.children("PARAMVALUE")) {
        answer.outputs.push_back(readTyped(output, "PARAMTYPE"));
    }
}

void readResult(pugi::xml_node response, const Operation &operation, Answer &answer)
{
    const pugi::xml_node returnValue = response.child("IRETURNVALUE");
    switch (operation.kind) {
    case OperationKind::invokeMethod:
        readMethodResult(response, answer);
        break;
    case OperationKind::getInstance:
        readObjects(returnValue, answer);
        if (answer.instances.size() != 1) {
            throw Broken("it holds " + std::to_string(answer.instances.size()) + " instances instead of one");
        }
        if (answer.instances.front().path.keys.empty()) {
            answer.instances.front().path = operation.object;
        }
        break;
    case OperationKind::enumerateInstances:
    case OperationKind::associators:
    case OperationKind::references:
        readObjects(returnValue, answer);
        break;
    case OperationKind::enumerateInstanceNames:
    case OperationKind::associatorNames:
    case OperationKind::referenceNames:
        readPaths(returnValue, answer);
        break;
    case OperationKind::modifyInstance:
        break;
    }
}

void readResponse(const pugi::xml_document &document, const Operation &operation, Answer &answer)
{
    const pugi::xml_node message = document.child("CIM").child("MESSAGE").child("SIMPLERSP");
    const char *kind = operation.kind == OperationKind::invokeMethod ? "METHODRESPONSE" : "IMETHODRESPONSE";
    const pugi::xml_node response = message.child(kind);
    if (!response) {
        throw Broken(std::string{"it has no "} + kind);
    }
    if (!sameName(response.attribute("NAME").value(), methodHeader(operation))) {
        throw Broken(std::string{"it answers "} + response.attribute("NAME").value());
    }
    if (const pugi::xml_node error = response.child("ERROR")) {
        answer.status = Status::cimError;
        answer.code = std::max(error.attribute("CODE").as_int(), 1); // 1: it failed, for whatever reason
        answer.message = error.attribute("DESCRIPTION").value();
        return;
    }
    readResult(response, operation, answer);
}

} // namespace

Answer parseAnswer(std::string &body, const Operation &operation)
{
    Answer answer;
    try {
        pugi::xml_document document;
        // No character of XML; in the place of the last end of an element the parser takes it for the end of
        // the message.
        if (const std::size_t zero = body.find('\0'); zero != std::string::npos) {
            throw Broken("it is not well-formed XML (byte " + std::to_string(zero) + ")");
        }
        // A value of white space alone is a value.
        constexpr unsigned options = pugi::parse_default | pugi::parse_ws_pcdata_single;
        const pugi::xml_parse_result parsed = document.load_buffer_inplace(body.data(), body.size(), options);
        if (!parsed) {
            throw Broken("it is not well-formed XML (byte " + std::to_string(parsed.offset) + ")");
        }
        readResponse(document, operation, answer);
    } catch (const Broken &problem) {
        answer = {};
        answer.status = Status::broken;
        answer.message = std::string{"the answer to "} + std::string{methodHeader(operation)} +
                         " cannot be understood: " + problem.what();
        answer.maybeDone = operation.changes();
    }
    return answer;
}

} // namespace displayctl::wbem
