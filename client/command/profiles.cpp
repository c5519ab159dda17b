// SPDX-License-Identifier: Apache-2.0
// export and diff.
#include "command/profiles.h"

#include "model/values.h"
#include "site/directories.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <memory>

namespace displayctl::command
{

namespace
{

using model::Setting;
using model::Target;

std::string timeText(const char *format)
{
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[32];
    return {text, std::strftime(text, sizeof text, format, &parts)};
}

// What a file may be called after a monitor.
std::string fileName(std::string name)
{
    for (char &c : name) {
        const bool isPlain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                             c == '-' || c == '_' || c == '.';
        c = isPlain ? c : '_';
    }
    return name;
}

Report exportProfile(Call &call, const site::Monitor &monitor, const std::string &file)
{
    session::Session session(monitor, call.options.timeout());
    if (const auto failure = session.read(writableClasses())) {
        return failureReport(*failure);
    }
    Report report;
    const site::CodeNames &names = call.configuration().names;
    const std::string text = profile::write(session.state(), monitor.name, today(), names);
    if (file.empty()) {
        report.text = text;
    } else {
        const std::filesystem::path path =
            std::filesystem::is_directory(file)
                ? std::filesystem::path(file) / (fileName(monitor.name) + ".yaml")
                : std::filesystem::path(file);
        profile::writeFile(path, text);
        report.document["file"] = path.string();
    }
    for (const Setting &setting : model::allSettings()) {
        if (setting.isWritable() && setting.isReadable()) {
            history::member(report.document, "settings")[setting.name] =
                settingDocument(setting, session.state().value(setting), names);
        }
    }
    return report;
}

Report diff(Call &call, const site::Monitor &monitor, const Selected &selected)
{
    session::Session session(monitor, call.options.timeout());
    session::Classes classes;
    addClassesOf(selected, classes);
    if (const auto failure = session.read(classes)) {
        return failureReport(*failure);
    }
    const site::CodeNames &names = call.configuration().names;
    Report report;
    report.outcome = Outcome::unchanged;
    Json differences = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (const Difference &difference : differencesOf(selected, session.state())) {
        const Setting &setting = *difference.setting;
        report.outcome = Outcome::different;
        const std::string shown = model::textOf(setting, difference.monitor, names);
        rows.push_back({setting.name, "profile " + model::textOf(setting, difference.profile, names),
                        "monitor " + (shown.empty() ? "-" : shown)});
        differences.push_back({{"setting", setting.name},
                               {"profile", model::documentOf(setting, difference.profile, names)},
                               {"monitor", model::documentOf(setting, difference.monitor, names)}});
    }
    report.documentMessage =
        std::to_string(rows.size()) + (rows.size() == 1 ? " setting differs" : " settings differ");
    report.text = rows.empty() ? "unchanged\n" : table(rows);
    report.document["differences"] = std::move(differences);
    return report;
}

} // namespace

std::string today()
{
    return timeText("%Y-%m-%d");
}

session::Classes writableClasses()
{
    session::Classes classes;
    for (const Setting &setting : model::allSettings()) {
        if (setting.isWritable() && setting.isReadable()) {
            model::addClasses(setting, classes);
        }
    }
    return classes;
}

std::string saveBefore(Call &call, session::Session &session, std::optional<wbem::Answer> &failure)
{
    failure = session.read(writableClasses());
    if (failure) {
        return {};
    }
    const std::string &name = session.monitor().name;
    const std::filesystem::path path =
        site::stateDirectory() / ("before-" + fileName(name) + "-" + timeText("%Y%m%dT%H%M%SZ") + "-" +
                                  std::to_string(getpid()) + ".yaml");
    profile::writeFile(path, profile::write(session.state(), name, today(), call.configuration().names));
    return path.string();
}

void Identity::addTo(CLI::App &command)
{
    CLI::Option *included = command.add_flag("--include-identity", isIncluded,
                                             "of several monitors also names, places and addresses");
    command.add_flag("--skip-identity", isSkipped, "no names, places and addresses, of one monitor neither")
        ->excludes(included);
}

Selected selectFor(const std::vector<profile::Entry> &entries, bool isMany, Identity identity)
{
    Selected selected;
    for (const profile::Entry &entry : entries) {
        const bool isSkipped = identity.isSkipped || (isMany && !identity.isIncluded);
        if (isSkipped && entry.named.setting->has(model::identity)) {
            selected.skipped.push_back(entry.named.name());
        } else {
            selected.assignments.push_back({entry.named, entry.value});
        }
    }
    return selected;
}

void addClassesOf(const Selected &selected, session::Classes &classes)
{
    addNameClasses(selected.assignments, classes);
    for (const Assignment &assignment : selected.assignments) {
        model::addClasses(*assignment.named.setting, classes);
    }
}

std::vector<Difference> differencesOf(const Selected &selected, const model::State &state)
{
    std::vector<Difference> differences;
    for (const Target &target : targetsOf(selected.assignments, state)) {
        model::Value now = state.value(*target.setting);
        if (target.setting->isReadable() && !model::sameValue(now, target.value)) {
            differences.push_back({target.setting, target.value, std::move(now)});
        }
    }
    return differences;
}

void addExport(CLI::App &program, Action &action)
{
    CLI::App *command = program.add_subcommand("export", "Writes all settings that can be set as a profile");
    auto file = std::make_shared<std::string>();
    command->add_option("-o,--output", *file, "the file; of several monitors the directory for their files");
    command->footer("Examples:\n"
                    "  displayctl export -o suite4-a.yaml\n"
                    "  displayctl -m all export -o profiles/");
    command->callback([file, &action] {
        action = [file](Call &call) {
            if (call.isMany() && !call.options.json && !std::filesystem::is_directory(*file)) {
                throw UsageError(
                    "of several monitors each profile is a file of its own: name a directory with -o");
            }
            return call.forEachMonitor(
                [&](const site::Monitor &monitor) { return exportProfile(call, monitor, *file); });
        };
    });
}

void addDiff(CLI::App &program, Action &action)
{
    CLI::App *command =
        program.add_subcommand("diff", "Tells what differs from a profile; exit code 7 when something does");
    auto file = std::make_shared<std::string>();
    auto identity = std::make_shared<Identity>();
    command->add_option("FILE", *file, "the profile")->required();
    identity->addTo(*command);
    command->footer("Examples:\n"
                    "  displayctl diff house.yaml\n"
                    "  displayctl -m all diff house.yaml");
    command->callback([file, identity, &action] {
        action = [file, identity](Call &call) {
            const auto entries = profile::read(*file, call.configuration().names);
            const Selected selected = selectFor(entries, call.isMany(), *identity);
            return call.forEachMonitor(
                [&](const site::Monitor &monitor) { return diff(call, monitor, selected); });
        };
    });
}

} // namespace displayctl::command
