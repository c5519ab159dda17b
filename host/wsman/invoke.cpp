// SPDX-License-Identifier: Apache-2.0
// Method calls.
#include "wsman/exchange.h"
#include "wsman/uris.h"
#include "wsman/xml.h"

namespace host::wsman
{
namespace
{

class Parameters final : public Declarations
{
  public:
    explicit Parameters(const cim::Method &method) : method_(method) {}

    Declared find(std::string_view name) const override
    {
        const cim::Parameter *parameter = method_.findParameter(name);
        return parameter != nullptr ? Declared{parameter->type, parameter->isArray} : Declared{};
    }

  private:
    const cim::Method &method_;
};

/** The name of the method, when the action is the resource URI, a slash, and a name. */
std::string_view methodName(const Message &message)
{
    const std::string_view uri = message.resource.resourceUri;
    const std::string_view action = message.action;
    if (action.size() > uri.size() + 1 && action.starts_with(uri) && action[uri.size()] == '/' &&
        action.find('/', uri.size() + 1) == std::string_view::npos) {
        return action.substr(uri.size() + 1);
    }
    return {};
}

/** The element with the arguments; null when there is none, which is a call without arguments. */
bool findInput(Exchange &exchange, std::string_view method, pugi::xml_node &input)
{
    constexpr std::string_view tail = "_INPUT";
    input = firstElement(exchange.message.body);
    const std::string_view name = localName(input);
    if (input && (!name.ends_with(tail) || name.substr(0, name.size() - tail.size()) != method)) {
        return exchange.refuse(FaultKind::schemaValidationError, "",
                               "The body holds something else than " + std::string(method) + "_INPUT.");
    }
    return true;
}

void writeOutput(Exchange &exchange, const cim::Class &klass, const cim::Method &method, const Answer &answer)
{
    Writer writer = exchange.writer();
    const std::string element = method.name + "_OUTPUT";
    writer.openElement(klass, element);
    if (answer.hasReturnValue) {
        writer.value(klass, "ReturnValue", answer.returnValue);
    }
    for (const NamedValue &argument : *answer.outArguments->values) {
        writer.value(klass, argument.name->view(), argument.data);
    }
    writer.closeElement(klass, element);
    writer.finish(exchange.message.action, "Response", exchange.message.messageId);
}

/** compat: the names of the root classes are asked for as a method of a resource that several services have,
 * whose URI ends the same everywhere. */
constexpr std::string_view intrinsicTail = "/wbem/wscim/1/intrinsic";

bool enumerateClassNames(Exchange &exchange)
{
    Request request;
    request.operation = Operation::enumerateClassNames;
    request.deepInheritance = false;
    Answer answer(exchange.arena);
    if (!findNameSpace(exchange, exchange.message.resource.selectors, request.nameSpace) ||
        !exchange.run(request, answer)) {
        return false;
    }
    Writer writer = exchange.writer();
    writer.raw("<p:EnumerateClassNames xmlns:p=\"");
    writer.escaped(exchange.message.resource.resourceUri);
    writer.raw("\">");
    for (const cim::Class *klass : answer.classes) {
        writer.element("p:name", klass->name);
    }
    writer.raw("</p:EnumerateClassNames>");
    writer.finish(exchange.message.action, "Response", exchange.message.messageId);
    return true;
}

} // namespace

bool invoke(Exchange &exchange)
{
    const std::string_view name = methodName(exchange.message);
    if (name.empty()) {
        return exchange.refuse(FaultKind::actionNotSupported, "",
                               "The action is none of WS-Management's; a method is called by the resource "
                               "URI of its class, a slash, and its name.");
    }
    if (exchange.message.resource.resourceUri.ends_with(intrinsicTail) && name == "EnumerateClassNames") {
        return enumerateClassNames(exchange);
    }
    Target target;
    if (!findClass(exchange, exchange.message.resource, target)) {
        return false;
    }
    const cim::Method *method = target.klass->findMethod(name);
    if (method == nullptr) {
        return exchange.refuse(CMPI_RC_ERR_METHOD_NOT_FOUND, "The class " + target.klass->name +
                                                                 " has no method " +
                                                                 std::string(name.substr(0, 200)) + ".");
    }
    pugi::xml_node input;
    ArenaList<ValueText> values(exchange.arena);
    if (!findTarget(exchange, exchange.message.resource, !method->isStatic, target) ||
        !findInput(exchange, name, input) ||
        !readValues(exchange, input, Parameters(*method), FaultKind::invalidParameter, values)) {
        return false;
    }
    Request request;
    request.operation = Operation::invokeMethod;
    request.nameSpace = target.nameSpace;
    request.path = target.path;
    request.methodName = method->name.c_str();
    Typing typing(exchange.arena, exchange.service.dispatcher.nameSpaces());
    request.arguments = typing.arguments(target.klass, name, values, target.nameSpace);
    if (request.arguments == nullptr) {
        return exchange.refuse(typing.code(), typing.error());
    }
    Answer answer(exchange.arena);
    if (!exchange.run(request, answer)) {
        return false;
    }
    writeOutput(exchange, *target.klass, *method, answer);
    return true;
}

} // namespace host::wsman
