// SPDX-License-Identifier: Apache-2.0
// get: the values alone.
#include "command/settings.h"
#include "model/values.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace displayctl::command
{

namespace
{

Report get(Call &call, const site::Monitor &monitor, const std::vector<model::Named> &wanted)
{
    session::Session session(monitor, call.options.timeout());
    session::Classes classes;
    for (const model::Named &named : wanted) {
        model::addClasses(*named.setting, classes);
    }
    if (const auto failure = session.read(classes)) {
        return failureReport(*failure);
    }
    Report report;
    const site::CodeNames &names = call.configuration().names;
    const int active = session.state().activePreset();
    for (const model::Named &named : wanted) {
        if (named.isActive && active == 0) {
            report.outcome = Outcome::unknown;
            report.message = "the monitor does not tell which preset is in use";
            return report;
        }
        const model::Setting &setting = named.at(active);
        const model::Value value = session.state().value(setting);
        report.text += model::textOf(setting, value, names) + "\n";
        history::member(report.document, "settings")[setting.name] = settingDocument(setting, value, names);
    }
    return report;
}

} // namespace

void addGet(CLI::App &program, Action &action)
{
    CLI::App *command = program.add_subcommand("get", "Prints the values of settings alone, one line each");
    auto wanted = std::make_shared<std::vector<std::string>>();
    command->add_option("SETTING", *wanted, "the settings; names may be shortened")->required();
    command->footer("Examples:\n"
                    "  displayctl get luminance\n"
                    "  displayctl -m all get luminance\n"
                    "  displayctl -m suite4-a --json get pip.mode pip.position");
    command->callback([wanted, &action] {
        action = [wanted](Call &call) {
            std::vector<model::Named> settings;
            for (const std::string &text : *wanted) {
                settings.push_back(model::resolveName(text));
                if (!settings.back().setting->isReadable()) {
                    throw model::BadValue(settings.back().name() + " can be set, but no monitor tells it");
                }
            }
            return call.forEachMonitor(
                [&](const site::Monitor &monitor) { return get(call, monitor, settings); });
        };
    });
}

} // namespace displayctl::command
