// SPDX-License-Identifier: Apache-2.0
// Answers as displayctl reads them. The first line of an input names the operation that is answered.
#include "wbem/message.h"

#include "fuzz.h"

#include <pugixml.hpp>

#include <algorithm>
#include <iterator>

namespace
{

using displayctl::wbem::Answer;
using displayctl::wbem::Instance;
using displayctl::wbem::ObjectPath;
using displayctl::wbem::Operation;
using displayctl::wbem::OperationKind;
using displayctl::wbem::Status;
using displayctl::wbem::Value;

struct NamedKind {
    std::string_view name;
    OperationKind kind;
};

constexpr NamedKind kinds[] = {
    {"GetInstance", OperationKind::getInstance},
    {"EnumerateInstances", OperationKind::enumerateInstances},
    {"EnumerateInstanceNames", OperationKind::enumerateInstanceNames},
    {"Associators", OperationKind::associators},
    {"AssociatorNames", OperationKind::associatorNames},
    {"References", OperationKind::references},
    {"ReferenceNames", OperationKind::referenceNames},
    {"ModifyInstance", OperationKind::modifyInstance},
    {"InvokeMethod", OperationKind::invokeMethod},
};

/** All readings of a value; none may fail. */
void read(const Value &value)
{
    const auto text = value.text();
    fuzz::require(!value.number() || text, "what is a number has a text");
    fuzz::require(!value.boolean() || text, "what is true or false has a text");
    if (text) {
        const auto date = displayctl::wbem::dateOf(*text);
        fuzz::require(!date || (date->size() == 10 && (*date)[4] == '-' && (*date)[7] == '-'),
                      "a date is YYYY-MM-DD", *text);
    }
    if (value.reference() != nullptr) {
        fuzz::require(!value.reference()->toText().empty(), "a reference can be told");
    }
}

bool isSame(const Instance &left, const Instance &right)
{
    return left.path == right.path &&
           std::ranges::equal(left.properties, right.properties, [](const auto &one, const auto &other) {
               return one.name == other.name && one.type == other.type && one.value == other.value;
           });
}

void check(const Answer &answer, OperationKind kind)
{
    fuzz::require(answer.status == Status::ok || answer.status == Status::cimError ||
                      answer.status == Status::broken,
                  "a message is an answer, an error or broken");
    fuzz::require(answer.status != Status::broken || !answer.message.empty(), "what is broken is told");
    fuzz::require(answer.status != Status::cimError || answer.code != 0, "an error has a code");
    fuzz::require(!answer.ok() || kind != OperationKind::getInstance || answer.instances.size() == 1,
                  "GetInstance answers one instance");
    for (const Instance &instance : answer.instances) {
        for (const auto &property : instance.properties) {
            fuzz::require(!property.name.empty(), "a property has a name");
            fuzz::require(instance.find(property.name) != nullptr, "a property is found by its name",
                          property.name);
            read(property.value);
        }
    }
    for (const ObjectPath &path : answer.paths) {
        fuzz::require(path == path && !path.className.empty(), "a path has a class");
    }
    for (const auto &output : answer.outputs) {
        read(output.value);
    }
    read(answer.returnValue);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view input = fuzz::textOf(data, size);
    const std::size_t end = std::min(input.find('\n'), input.size());
    const auto *named = std::ranges::find(kinds, input.substr(0, end), &NamedKind::name);
    Operation operation{};
    operation.kind = named == std::end(kinds) ? OperationKind::invokeMethod : named->kind;
    operation.object.className = "ZT_Marovelton_Monitor";
    operation.method = "SetName";
    const std::string body(input.substr(std::min(end + 1, input.size())));

    std::string copy = body;
    const Answer first = displayctl::wbem::parseAnswer(copy, operation);
    copy = body;
    const Answer second = displayctl::wbem::parseAnswer(copy, operation);
    check(first, operation.kind);
    fuzz::require(first.status == second.status && first.code == second.code &&
                      first.message == second.message && first.returnValue == second.returnValue &&
                      first.paths == second.paths &&
                      std::ranges::equal(first.instances, second.instances, isSame),
                  "reading twice is the same");
    if (first.ok()) {
        pugi::xml_document document;
        fuzz::require(document.load_buffer(body.data(), body.size()),
                      "what is taken for an answer is well-formed", body);
    }
    return 0;
}
