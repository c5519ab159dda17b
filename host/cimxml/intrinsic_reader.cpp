// SPDX-License-Identifier: Apache-2.0
#include "cimxml/intrinsic_reader.h"

#include "cimxml/element_reader.h"

#include <algorithm>
#include <charconv>

namespace host
{
namespace
{

/** An operation as clients name it. */
struct IntrinsicCall {
    std::string_view name;
    Operation operation; // of a pull: the one that is answered part by part
    PullStep step = PullStep::none;
    ObjectForm form = ObjectForm::instancesWithPath;
    std::string_view parameters; // each followed by a blank
};

#define ENUMERATION_PARAMETERS                                                                               \
    "ClassName LocalOnly DeepInheritance IncludeQualifiers IncludeClassOrigin PropertyList "
#define ASSOCIATOR_PARAMETERS "AssocClass ResultClass Role ResultRole "
#define REFERENCE_PARAMETERS "ResultClass Role "
#define SHAPE_PARAMETERS "IncludeQualifiers " OPEN_SHAPE_PARAMETERS
#define OPEN_SHAPE_PARAMETERS "IncludeClassOrigin PropertyList "
#define OPEN_PARAMETERS "FilterQueryLanguage FilterQuery OperationTimeout ContinueOnError MaxObjectCount "
#define PULL_PARAMETERS "EnumerationContext MaxObjectCount "

constexpr IntrinsicCall calls[] = {
    {"EnumerateInstances", Operation::enumerateInstances, {}, {}, ENUMERATION_PARAMETERS},
    {"EnumerateInstanceNames", Operation::enumerateInstanceNames, {}, {}, "ClassName "},
    {"GetInstance", Operation::getInstance, {}, {}, "InstanceName LocalOnly " SHAPE_PARAMETERS},
    {"CreateInstance", Operation::createInstance, {}, {}, "NewInstance "},
    {"ModifyInstance", Operation::modifyInstance, {}, {}, "ModifiedInstance IncludeQualifiers PropertyList "},
    {"DeleteInstance", Operation::deleteInstance, {}, {}, "InstanceName "},
    {"GetProperty", Operation::getProperty, {}, {}, "InstanceName PropertyName "},
    {"SetProperty", Operation::setProperty, {}, {}, "InstanceName PropertyName NewValue "},
    {"ExecQuery", Operation::execQuery, {}, {}, "QueryLanguage Query "},
    {"Associators", Operation::associators, {}, {}, "ObjectName " ASSOCIATOR_PARAMETERS SHAPE_PARAMETERS},
    {"AssociatorNames", Operation::associatorNames, {}, {}, "ObjectName " ASSOCIATOR_PARAMETERS},
    {"References", Operation::references, {}, {}, "ObjectName " REFERENCE_PARAMETERS SHAPE_PARAMETERS},
    {"ReferenceNames", Operation::referenceNames, {}, {}, "ObjectName " REFERENCE_PARAMETERS},
    {"GetClass", Operation::getClass, {}, {}, "ClassName LocalOnly " SHAPE_PARAMETERS},
    {"EnumerateClasses",
     Operation::enumerateClasses,
     {},
     {},
     "ClassName DeepInheritance LocalOnly IncludeQualifiers IncludeClassOrigin "},
    {"EnumerateClassNames", Operation::enumerateClassNames, {}, {}, "ClassName DeepInheritance "},
    {"GetQualifier", Operation::getQualifier, {}, {}, "QualifierName "},
    {"EnumerateQualifiers", Operation::enumerateQualifiers, {}, {}, ""},

    {"OpenEnumerateInstances", Operation::enumerateInstances, PullStep::open, ObjectForm::instancesWithPath,
     "ClassName DeepInheritance " OPEN_SHAPE_PARAMETERS OPEN_PARAMETERS},
    {"OpenEnumerateInstancePaths", Operation::enumerateInstanceNames, PullStep::open, ObjectForm::paths,
     "ClassName " OPEN_PARAMETERS},
    {"OpenReferenceInstances", Operation::references, PullStep::open, ObjectForm::instancesWithPath,
     "InstanceName " REFERENCE_PARAMETERS OPEN_SHAPE_PARAMETERS OPEN_PARAMETERS},
    {"OpenReferenceInstancePaths", Operation::referenceNames, PullStep::open, ObjectForm::paths,
     "InstanceName " REFERENCE_PARAMETERS OPEN_PARAMETERS},
    {"OpenAssociatorInstances", Operation::associators, PullStep::open, ObjectForm::instancesWithPath,
     "InstanceName " ASSOCIATOR_PARAMETERS OPEN_SHAPE_PARAMETERS OPEN_PARAMETERS},
    {"OpenAssociatorInstancePaths", Operation::associatorNames, PullStep::open, ObjectForm::paths,
     "InstanceName " ASSOCIATOR_PARAMETERS OPEN_PARAMETERS},
    {"OpenQueryInstances", Operation::execQuery, PullStep::open, ObjectForm::instances,
     "ReturnQueryResultClass " OPEN_PARAMETERS},
    {"PullInstancesWithPath", Operation::enumerateInstances, PullStep::pull, ObjectForm::instancesWithPath,
     PULL_PARAMETERS},
    {"PullInstancePaths", Operation::enumerateInstanceNames, PullStep::pull, ObjectForm::paths,
     PULL_PARAMETERS},
    {"PullInstances", Operation::execQuery, PullStep::pull, ObjectForm::instances, PULL_PARAMETERS},
    {"CloseEnumeration", Operation::enumerateInstances, PullStep::close, {}, "EnumerationContext "},
};

class IntrinsicReader : private ElementReader
{
  public:
    IntrinsicReader(const xml_node &call, Arena &arena, const cim::NameSpaces &nameSpaces,
                    CimXmlMessage &message)
        : ElementReader(arena, nameSpaces, message), call_(call)
    {
    }

    MessageVerdict read()
    {
        Request &request = message_.request;
        request.nameSpace = nameSpaceOf(call_.child("LOCALNAMESPACEPATH"));
        const auto *known = std::ranges::find(calls, message_.name, &IntrinsicCall::name);
        if (known == std::end(calls)) {
            return MessageVerdict::good;
        }
        message_.operation = known->operation;
        request.operation = known->operation;
        message_.pull.step = known->step;
        message_.pull.form = known->form;
        // In a namespace that does not exist no class gives types; the dispatcher refuses it at once.
        if (nameSpaces_.find(request.nameSpace) == nullptr) {
            return MessageVerdict::good;
        }
        takeParameters(known->parameters);
        if (known->step != PullStep::none) {
            readPull(message_.pull);
        }
        if (!failed() && known->step != PullStep::pull && known->step != PullStep::close) {
            readParameters(request);
        }
        return MessageVerdict::good;
    }

  private:
    /** The IPARAMVALUE of that name. */
    xml_node parameter(std::string_view name) const;

    /** Refuses parameters that the operation has not, and those that come twice (DSP0200): no more are looked
     * at than an operation has. */
    void takeParameters(std::string_view names);

    void missing(const char *name);

    bool booleanParameter(const char *name, bool otherwise);

    /** The text of a VALUE, or the name of a CLASSNAME; null when there is none. */
    const char *textParameter(const char *name, bool required);

    std::string_view nameParameter(const char *name, bool required);

    const char **listParameter(const char *name);

    Path *pathParameter(const char *name);

    /** A number of 32 bits, or nothing. */
    std::optional<std::uint32_t> numberParameter(const char *name);

    void readFlags(Request &request, bool localOnly, bool includeQualifiers);

    /** An empty filter is no filter. */
    const char *filterParameter(const char *name);

    const ArenaList<ValueText> *propertiesOf(const xml_node &instance);

    void readInstance(Request &request, const xml_node &instance);

    void readNewInstance(Request &request);

    void readModifiedInstance(Request &request);

    void readNewValue(Request &request);

    void readParameters(Request &request);
    void readTraversal(Request &request);
    void readPull(PullRequest &pull);

    struct Parameter {
        std::string_view name;
        xml_node node;
    };

    xml_node call_;
    ArenaList<Parameter> parameters_{arena_}; // that the operation has
};

/** True when the name is one of the words, each of which has a blank behind it. */
bool isAmong(std::string_view words, std::string_view name)
{
    while (!words.empty()) {
        const std::size_t end = words.find(' ');
        if (cim::sameName(name, words.substr(0, end))) {
            return true;
        }
        words.remove_prefix(end + 1);
    }
    return false;
}

void IntrinsicReader::takeParameters(std::string_view names)
{
    for (xml_node child = call_.child("IPARAMVALUE"); child; child = child.next_sibling("IPARAMVALUE")) {
        const std::string_view given = attribute(child, "NAME");
        if (!isAmong(names, given)) {
            return failWith("The operation has no parameter %.*s.", given);
        }
        if (parameter(given)) {
            return failWith("The parameter %.*s is given twice.", given);
        }
        parameters_.append({given, child});
    }
}

bool IntrinsicReader::booleanParameter(const char *name, bool otherwise)
{
    const xml_node node = firstElement(parameter(name));
    if (!node) {
        return otherwise;
    }
    const std::string_view text = is(node, "VALUE") ? trimmed(textOf(node)) : std::string_view();
    if (cim::sameName(text, "true")) {
        return true;
    }
    if (!cim::sameName(text, "false")) {
        failWith("The parameter %.*s is not a boolean.", name);
    }
    return false;
}

std::optional<std::uint32_t> IntrinsicReader::numberParameter(const char *name)
{
    const xml_node node = firstElement(parameter(name));
    if (!node) {
        return std::nullopt;
    }
    const std::string_view text = is(node, "VALUE") ? trimmed(textOf(node)) : std::string_view();
    std::uint32_t number = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (problem != std::errc() || end != text.data() + text.size() || text.empty()) {
        failWith("The parameter %.*s is not a number of 32 bits.", name);
    }
    return number;
}

xml_node IntrinsicReader::parameter(std::string_view name) const
{
    for (const Parameter &each : parameters_) {
        if (cim::sameName(each.name, name)) {
            return each.node;
        }
    }
    return {};
}

void IntrinsicReader::missing(const char *name)
{
    failWith("The parameter %.*s is missing.", name);
}

const char *IntrinsicReader::textParameter(const char *name, bool required)
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

std::string_view IntrinsicReader::nameParameter(const char *name, bool required)
{
    const char *text = textParameter(name, required);
    return text != nullptr ? std::string_view(text) : std::string_view();
}

const char **IntrinsicReader::listParameter(const char *name)
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

Path *IntrinsicReader::pathParameter(const char *name)
{
    const xml_node node = firstElement(parameter(name));
    if (!node) {
        missing(name);
        return nullptr;
    }
    return typedPath(pathOf(node));
}

void IntrinsicReader::readFlags(Request &request, bool localOnly, bool includeQualifiers)
{
    request.localOnly = booleanParameter("LocalOnly", localOnly);
    request.includeQualifiers = booleanParameter("IncludeQualifiers", includeQualifiers);
    request.includeClassOrigin = booleanParameter("IncludeClassOrigin", false);
    request.propertyList = listParameter("PropertyList");
}

const char *IntrinsicReader::filterParameter(const char *name)
{
    const char *text = textParameter(name, false);
    return text != nullptr && *text != '\0' ? text : nullptr;
}

const ArenaList<ValueText> *IntrinsicReader::propertiesOf(const xml_node &instance)
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

void IntrinsicReader::readInstance(Request &request, const xml_node &instance)
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

void IntrinsicReader::readNewInstance(Request &request)
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

void IntrinsicReader::readModifiedInstance(Request &request)
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

void IntrinsicReader::readNewValue(Request &request)
{
    if (failed() || request.path->klass == nullptr) {
        return;
    }
    const std::size_t index = request.path->klass->placeOf(request.propertyName);
    if (index == cim::noProperty) {
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

void IntrinsicReader::readPull(PullRequest &pull)
{
    pull.maxObjectCount = numberParameter("MaxObjectCount").value_or(0);
    if (pull.step == PullStep::open) {
        pull.timeout = numberParameter("OperationTimeout");
        pull.continueOnError = booleanParameter("ContinueOnError", false);
        pull.returnsQueryResultClass = booleanParameter("ReturnQueryResultClass", false);
        message_.request.query = filterParameter("FilterQuery");
        message_.request.queryLanguage = filterParameter("FilterQueryLanguage");
        return;
    }
    if (pull.step == PullStep::pull && !failed() && !parameter("MaxObjectCount")) {
        missing("MaxObjectCount");
    }
    pull.context = nameParameter("EnumerationContext", true);
}

void IntrinsicReader::readParameters(Request &request)
{
    switch (request.operation) {
    case Operation::enumerateInstances:
        request.className = nameParameter("ClassName", true);
        request.deepInheritance = booleanParameter("DeepInheritance", true);
        // DSP0200 gave LocalOnly the default true and then deprecated it: clients that leave it out expect
        // whole instances.
        return readFlags(request, false, false);
    case Operation::enumerateInstanceNames:
        request.className = nameParameter("ClassName", true);
        return;
    case Operation::getInstance:
        request.path = pathParameter("InstanceName");
        return readFlags(request, false, false);
    case Operation::createInstance:
        return readNewInstance(request);
    case Operation::modifyInstance:
        request.propertyList = listParameter("PropertyList");
        return readModifiedInstance(request);
    case Operation::deleteInstance:
        request.path = pathParameter("InstanceName");
        return;
    case Operation::getProperty:
    case Operation::setProperty:
        request.path = pathParameter("InstanceName");
        request.propertyName = nameParameter("PropertyName", true);
        return request.operation == Operation::setProperty ? readNewValue(request) : void();
    case Operation::execQuery:
        if (message_.pull.step == PullStep::none) {
            request.queryLanguage = textParameter("QueryLanguage", true);
            request.query = textParameter("Query", true);
        } else if (request.query == nullptr) {
            missing("FilterQuery");
        } else if (request.queryLanguage == nullptr) {
            missing("FilterQueryLanguage");
        }
        return;
    case Operation::associators:
    case Operation::associatorNames:
    case Operation::references:
    case Operation::referenceNames:
        return readTraversal(request);
    case Operation::getClass:
        request.className = nameParameter("ClassName", true);
        return readFlags(request, true, true);
    case Operation::enumerateClasses:
        request.className = nameParameter("ClassName", false);
        request.deepInheritance = booleanParameter("DeepInheritance", false);
        return readFlags(request, true, true);
    case Operation::enumerateClassNames:
        request.className = nameParameter("ClassName", false);
        request.deepInheritance = booleanParameter("DeepInheritance", false);
        return;
    case Operation::getQualifier:
        request.qualifierName = nameParameter("QualifierName", true);
        return;
    case Operation::enumerateQualifiers:
    case Operation::invokeMethod:
        return;
    }
}

void IntrinsicReader::readTraversal(Request &request)
{
    const char *source = message_.pull.step == PullStep::none ? "ObjectName" : "InstanceName";
    request.path = pathParameter(source);
    request.isOfClass = is(firstElement(parameter(source)), "CLASSNAME");
    request.filter.role = filterParameter("Role");
    if (request.operation == Operation::associators || request.operation == Operation::associatorNames) {
        request.filter.associationClass = filterParameter("AssocClass");
        request.filter.resultClass = filterParameter("ResultClass");
        request.filter.resultRole = filterParameter("ResultRole");
    } else {
        request.filter.associationClass = filterParameter("ResultClass");
    }
    if (request.operation == Operation::associators || request.operation == Operation::references) {
        readFlags(request, false, false);
    }
}

} // namespace

MessageVerdict readIntrinsic(const pugi::xml_node &call, Arena &arena, const cim::NameSpaces &nameSpaces,
                             CimXmlMessage &message)
{
    return IntrinsicReader(call, arena, nameSpaces, message).read();
}

} // namespace host
