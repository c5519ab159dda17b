// SPDX-License-Identifier: Apache-2.0
// Profiles of displayctl. The first byte of an input chooses:
//   t  the rest is the text of a profile; what is read, written again, is read as the same
//   s  the rest changes what a monitor tells; the profile that is made of it is read as that state
#include "profile/profile.h"

#include "model/plan.h"
#include "model/values.h"
#include "wbem/message.h"

#include "choices.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

namespace
{

using namespace displayctl;
using model::BadValue;
using model::Setting;

const site::CodeNames &codeNames()
{
    static const site::CodeNames names = {{"osd.language", {{1, "english"}, {2, "no: yes"}}},
                                          {"function.action", {{3, "7"}}}};
    return names;
}

/** The entries by their whole names, each value in quotes. */
std::string written(const std::vector<profile::Entry> &entries)
{
    std::string text = "displayctl: 1\nsettings:\n";
    for (const profile::Entry &entry : entries) {
        const std::string value = model::textOf(*entry.named.setting, entry.value, codeNames());
        text += "  " + entry.named.name() + ": " + model::Value(value).dump() + "\n";
    }
    return text;
}

void checkText(const std::string &text)
{
    std::vector<profile::Entry> entries;
    try {
        entries = profile::readText(text, "input", codeNames());
    } catch (const BadValue &error) {
        fuzz::require(std::string_view(error.what()).starts_with("input"), "what is wrong has its place",
                      error.what());
        return;
    }
    const std::string again = written(entries);
    try {
        const std::vector<profile::Entry> second = profile::readText(again, "again", codeNames());
        const auto isSame = [](const profile::Entry &left, const profile::Entry &right) {
            return left.named == right.named && model::sameValue(left.value, right.value);
        };
        fuzz::require(std::ranges::equal(entries, second, isSame),
                      "a profile that was read is read as the same", again);
    } catch (const BadValue &error) {
        fuzz::require(false, "a profile that was read can be read again",
                      std::string(error.what()) + "\n" + again);
    }
}

/** What a monitor told, by class without prefix. */
const std::map<std::string, std::vector<wbem::Instance>> &monitor()
{
    static const auto classes = [] {
        std::map<std::string, std::vector<wbem::Instance>> made;
        for (const auto &file : std::filesystem::directory_iterator(MONITOR_DATA_DIR)) {
            std::ifstream stream(file.path());
            std::string body{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
            const std::string name = file.path().stem();
            const wbem::Answer answer = wbem::parseAnswer(body, wbem::enumerateInstances(name));
            fuzz::require(answer.ok(), "what a monitor told can be read", answer.message);
            made[name.substr(name.find('_', name.find('_') + 1) + 1)] = answer.instances;
        }
        return made;
    }();
    return classes;
}

model::State stateOf(fuzz::Choices &choices)
{
    auto classes = monitor();
    std::vector<wbem::Property *> properties;
    for (auto &[name, instances] : classes) {
        for (wbem::Instance &instance : instances) {
            for (wbem::Property &property : instance.properties) {
                properties.push_back(&property);
            }
        }
    }
    while (!choices.isEmpty()) {
        wbem::Property &property = *properties[choices.below(properties.size())];
        property.value = choices.oneIn(8) ? wbem::Value() : wbem::Value(choices.text());
    }
    model::State state;
    for (auto &[name, instances] : classes) {
        state.put(name, instances);
    }
    return state;
}

/** The value as files can have it. */
model::Value inUtf8(const model::Value &value)
{
    return model::Value::parse(value.dump(-1, ' ', false, model::Value::error_handler_t::replace));
}

/** The settings that the profile of this state gives, and whether all of them are values that can be set. */
std::vector<const Setting *> givenSettings(const model::State &state, bool &areAllGood)
{
    std::vector<const Setting *> given;
    areAllGood = true;
    for (const Setting &setting : model::allSettings()) {
        if (!model::canBeSetBack(state, setting)) {
            continue;
        }
        given.push_back(&setting);
        try {
            static_cast<void>(model::parseValue(
                setting, model::textOf(setting, inUtf8(state.value(setting)), codeNames()), codeNames()));
        } catch (const BadValue &) {
            areAllGood = false;
        }
    }
    return given;
}

void checkState(const model::State &state)
{
    bool areAllGood = false;
    const std::vector<const Setting *> given = givenSettings(state, areAllGood);
    const std::string text = profile::write(state, "studio", "2026-01-31", codeNames());
    std::vector<profile::Entry> entries;
    try {
        entries = profile::readText(text, "input", codeNames());
    } catch (const BadValue &error) {
        fuzz::require(!areAllGood, "the profile of a monitor can be read",
                      std::string(error.what()) + "\n" + text);
        return;
    }
    fuzz::require(areAllGood && entries.size() == given.size(), "a profile has what can be set back", text);
    for (std::size_t i = 0; i < entries.size(); ++i) {
        fuzz::require(entries[i].named.setting == given[i], "a profile has the settings in their order",
                      text);
        fuzz::require(model::sameValue(entries[i].value, inUtf8(state.value(*given[i]))),
                      "a profile has the monitor's values", given[i]->name + "\n" + text);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size > 0 && *data == 't') {
        checkText(std::string(fuzz::textOf(data + 1, size - 1)));
    } else if (size > 0 && *data == 's') {
        fuzz::Choices choices(data + 1, size - 1);
        checkState(stateOf(choices));
    }
    return 0;
}
