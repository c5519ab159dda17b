// SPDX-License-Identifier: Apache-2.0
// help and names.
#include "command/settings.h"
#include "model/rules.h"
#include "model/values.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <memory>

namespace displayctl::command
{

namespace
{

using model::Setting;

std::string label(std::string_view name)
{
    std::string text = "  " + std::string(name);
    return text.append(21 - text.size(), ' ');
}

std::string line(std::string_view name, std::string_view text)
{
    return text.empty() ? std::string() : label(name) + std::string(text) + "\n";
}

std::string propertiesOf(const Setting &setting)
{
    std::string text;
    for (const model::PropertyFacts *property : setting.properties) {
        text +=
            (text.empty() ? "" : ", ") + std::string(setting.owner->name) + "." + std::string(property->name);
    }
    return text;
}

std::string methodOf(const Setting &setting)
{
    if (setting.kind() == model::Kind::address) {
        return "ModifyInstance of " + std::string(setting.owner->name);
    }
    if (setting.arguments.empty()) {
        return "nothing: it cannot be changed";
    }
    std::string text = std::string(setting.arguments.front().owner->name) + "." +
                       std::string(setting.arguments.front().method->name) + "(";
    for (const model::MethodArgument &each : setting.arguments) {
        text += each.argument == nullptr
                    ? ""
                    : (text.back() == '(' ? "" : ", ") + std::string(each.argument->name);
    }
    return text + ")";
}

// The shortest name that stands for this setting alone.
std::string shortest(const model::Named &named)
{
    const std::string whole = named.name();
    for (std::size_t dot = whole.rfind('.'); dot != std::string::npos;
         dot = dot == 0 ? dot : whole.rfind('.', dot - 1)) {
        try {
            if (model::resolveName(whole.substr(dot + 1)) == named) {
                return whole.substr(dot + 1);
            }
        } catch (const model::BadValue &) { // ambiguous
        }
    }
    return whole;
}

std::string exampleOf(const Setting &setting, const std::string &name, const site::CodeNames &names)
{
    const auto words = model::valueWords(setting, names);
    std::string value = words.empty() ? "" : words.back();
    if (value.empty() && setting.minimum()) {
        value = setting.kind() == model::Kind::position ? "160,160"
                : setting.kind() == model::Kind::colour
                    ? "255,0,0"
                    : std::to_string(static_cast<long>(*setting.maximum()));
    }
    switch (setting.kind()) {
    case model::Kind::text:
        value = "'Grading 1'";
        break;
    case model::Kind::date:
        value = "2026-01-31";
        break;
    case model::Kind::address:
        value = "192.168.10.21";
        break;
    default:
        break;
    }
    return "displayctl set " + name + "=" + value;
}

std::string codesOf(const Setting &setting, const site::CodeNames &names)
{
    std::string text;
    if (setting.kind() != model::Kind::choice) {
        return text;
    }
    for (const model::CodeName &code : setting.codes()) {
        text += (text.empty() ? "" : ", ") +
                std::string(setting.row->words[static_cast<std::size_t>(code.code)]) +
                (code.name.empty() ? "" : " (" + std::string(code.name) + ")");
    }
    static_cast<void>(names);
    return text;
}

// What must hold for a setting or an action.
std::string rulesText(std::string_view subject)
{
    std::string text;
    for (const model::Rule *rule : model::rulesOf(subject)) {
        text += line("what must hold", rule->meaning);
        text += line("", rule->on.empty() ? "there is no way out" : "depends on " + std::string(rule->on));
        text += line("", rule->refusal.empty() ? "" : "the monitor says: " + std::string(rule->refusal));
    }
    return text;
}

std::string sideEffectsText(std::string_view subject, int number)
{
    std::string text;
    for (const Setting *other : model::sideEffectsOf(subject, number)) {
        text += line("changes as well", other->name);
    }
    return text;
}

// All about a setting.
std::string about(const model::Named &named, const site::CodeNames &names)
{
    const Setting &setting = *named.setting;
    std::string text = named.name() + "\n";
    text += line("what it is", setting.description());
    text += line("short name", shortest(named) == named.name() ? "" : shortest(named));
    text += line("unit", setting.unit());
    text += line("values", codesOf(setting, names).empty() ? model::allowedValues(setting, names)
                                                           : codesOf(setting, names));
    text +=
        line("read from", setting.isReadable() ? propertiesOf(setting) : "nothing: it can be set, not read");
    text += line("changed by", methodOf(setting));
    text += line("who may",
                 setting.isWritable()
                     ? setting.has(model::administrator) ? "administrators of the monitor" : "everybody"
                     : "");
    text += rulesText(setting.row->name) + sideEffectsText(setting.row->name, setting.number);
    if (setting.isWritable() && !setting.has(model::neverAccepted)) {
        text += line("example", exampleOf(setting, shortest(named), names));
    }
    return text;
}

bool isAction(std::string_view name)
{
    return std::ranges::any_of(model::allActions(),
                               [&](const model::ActionRow &action) { return action.name == name; });
}

// All about an action, with each argument it can have.
std::string aboutAction(std::string_view name)
{
    std::string text;
    for (const model::ActionRow &action : model::allActions()) {
        if (action.name != name) {
            continue;
        }
        const std::string subject =
            std::string(name) + (action.argument.empty() ? "" : " " + std::string(action.argument));
        text += subject + "\n" + line("what it does", action.description) + line("calls", action.method) +
                line("asks first",
                     action.cannotBeUndone ? "yes, and saves a profile: it cannot be undone" : "no");
        text += rulesText(subject) + sideEffectsText(subject, 1);
        text += line("example", "displayctl run " + subject);
    }
    return text;
}

std::string listOfSettings(const site::CodeNames &names)
{
    std::vector<std::vector<std::string>> rows;
    for (const Setting &setting : model::allSettings()) {
        if (setting.number <= 1) {
            std::string name(setting.row->name);
            rows.push_back({name, model::allowedValues(setting, names), std::string(setting.description())});
        }
    }
    return "N stands for a number; preset.active is the preset in use. Names may be shortened to their last\n"
           "components where that is not ambiguous: luminance is preset.active.luminance.\n\n" +
           table(rows);
}

int help(Call &call, const std::string &topic, const CLI::App &program)
{
    if (topic.empty()) {
        std::cout << program.help();
        return 0;
    }
    if (topic == "settings") {
        std::cout << listOfSettings(call.configuration().names);
        return 0;
    }
    for (const CLI::App *command : program.get_subcommands([](const CLI::App *) { return true; })) {
        if (command->get_name() == topic) {
            std::cout << command->help("displayctl");
            return 0;
        }
    }
    if (isAction(topic)) {
        std::cout << aboutAction(topic);
        return 0;
    }
    std::cout << about(model::resolveName(topic), call.configuration().names);
    return 0;
}

Report tellNames(Call &call, const site::Monitor &monitor)
{
    session::Session session(monitor, call.options.timeout());
    session::Classes classes;
    for (const Setting &setting : model::allSettings()) {
        if (setting.kind() == model::Kind::code) {
            model::addClasses(setting, classes);
        }
    }
    if (const auto failure = session.read(classes)) {
        return failureReport(*failure);
    }
    Report report;
    const site::CodeNames &names = call.configuration().names;
    std::vector<std::vector<std::string>> rows;
    for (const Setting &setting : model::allSettings()) {
        if (setting.kind() != model::Kind::code) {
            continue;
        }
        const model::Value value = session.state().value(setting);
        const model::Value named = model::documentOf(setting, value, names);
        const std::string codes = model::allowedValues(setting);
        rows.push_back({setting.name, "code " + model::textOf(setting, value, {}),
                        named.is_string() ? named.get<std::string>() : "no name", "of " + codes});
        history::member(report.document, "names")[setting.name] = {
            {"code", value}, {"name", named.is_string() ? named : model::Value()}, {"codes", codes}};
    }
    report.text = table(rows);
    if (!call.options.quiet && !call.options.json && !call.isMany()) {
        report.note = "Names for codes stand in the file that 'names:' of the file of monitors names, as in\n"
                      "  osd.language: { 1: English }\n";
    }
    return report;
}

} // namespace

void addHelp(CLI::App &program, Action &action)
{
    CLI::App *command = program.add_subcommand("help", "All about a setting, an action or a command");
    auto topic = std::make_shared<std::string>();
    command->add_option("SETTING|COMMAND", *topic,
                        "a setting, an action, a command, or 'settings' for a list of all");
    command->footer("Examples:\n"
                    "  displayctl help pip.size\n"
                    "  displayctl help apply\n"
                    "  displayctl help settings");
    command->callback([topic, &action, &program] {
        action = [topic, &program](Call &call) { return help(call, *topic, program); };
    });
}

void addNames(CLI::App &program, Action &action)
{
    CLI::App *command =
        program.add_subcommand("names", "The codes of a monitor that have no documented name");
    command->footer("Examples:\n"
                    "  displayctl names");
    command->callback([&action] {
        action = [](Call &call) {
            return call.forEachMonitor(
                [&](const site::Monitor &monitor) { return tellNames(call, monitor); });
        };
    });
}

} // namespace displayctl::command
