// SPDX-License-Identifier: Apache-2.0
// Class definitions: what is read is sound, and what is not is told with its place.
#include "cim/mof_reader.h"

#include "fuzz.h"

#include <algorithm>

namespace
{

constexpr std::string_view name = "input.mof";

void checkMessages(const cim::MofResult &result, std::size_t lines)
{
    for (const cim::MofMessage &message : result.messages) {
        fuzz::require(!message.text.empty() && !message.file.empty(),
                      "a message says what is wrong and where", message.format());
        fuzz::require(message.file != name || message.line <= lines, "a message names a line that there is",
                      message.format());
    }
}

void checkClass(const cim::ClassRepository &classes, const cim::Class &one)
{
    const cim::Class *found = classes.find(one.name);
    fuzz::require(found == &one, "a class is found by its name", one.name);
    fuzz::require(one.superclass.empty() || classes.find(one.superclass) != nullptr, "a superclass is known",
                  one.name);
    fuzz::require(one.superclass.empty() || classes.isA(one.name, one.superclass),
                  "a class is one of its superclass", one.name);
    for (const cim::Property &property : one.properties) {
        fuzz::require(property.type != cim::Type::none, "a property has a type",
                      one.name + "." + property.name);
        fuzz::require(one.findProperty(property.name) == &property, "a property is found by its name",
                      one.name + "." + property.name);
        fuzz::require(property.type != cim::Type::reference ||
                          classes.find(property.referenceClass) != nullptr,
                      "a reference leads to a class that is known", one.name + "." + property.name);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string_view text = fuzz::textOf(data, size);
    if (text.find("include") != std::string_view::npos) {
        return 0; // the files of this machine are no input
    }
    cim::ClassRepository classes;
    const cim::MofResult result = cim::readMofText(classes, text, std::string(name));
    checkMessages(result, static_cast<std::size_t>(std::ranges::count(text, '\n')) + 1);
    if (result.ok()) {
        for (const cim::Class *one : classes.all()) {
            checkClass(classes, *one);
        }
    }
    cim::ClassRepository again;
    fuzz::require(cim::readMofText(again, text, std::string(name)).messages.size() == result.messages.size(),
                  "reading twice is the same");
    return 0;
}
