// SPDX-License-Identifier: Apache-2.0
#include "completion/complete.h"

#include "model/names.h"
#include "model/values.h"
#include "site/monitors.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <set>

namespace displayctl::completion
{

namespace
{

using Words = std::vector<std::string>;

/** What a command's arguments are. */
struct Arguments {
    std::string_view command;
    bool areSettings = false;
    bool areAssignments = false;
    bool areActions = false;
    bool areCommands = false;
    bool areShells = false;
    bool areFiles = false;
};

constexpr std::array argumentsOfCommands{
    Arguments{.command = "show", .areSettings = true},
    Arguments{.command = "get", .areSettings = true},
    Arguments{.command = "watch", .areSettings = true},
    Arguments{.command = "set", .areAssignments = true},
    Arguments{.command = "why", .areAssignments = true, .areActions = true},
    Arguments{.command = "run", .areActions = true},
    Arguments{.command = "help", .areSettings = true, .areActions = true, .areCommands = true},
    Arguments{.command = "apply", .areFiles = true},
    Arguments{.command = "diff", .areFiles = true},
    Arguments{.command = "completion", .areShells = true},
};

/** The words before the one that is typed, understood as far as that is needed. */
struct Situation {
    const CLI::App *command = nullptr;   // the subcommand, if one was named
    const CLI::Option *option = nullptr; // the one whose value is typed
    Words arguments;                     // of the subcommand
    site::Options site;
};

const CLI::App *findCommand(const CLI::App &program, const std::string &name)
{
    const std::vector<const CLI::App *> commands =
        program.get_subcommands([&](const CLI::App *command) { return command->get_name() == name; });
    return commands.empty() ? nullptr : commands.front();
}

const CLI::Option *findOption(const CLI::App &program, const CLI::App *command, const std::string &word)
{
    const CLI::Option *option = command == nullptr ? nullptr : command->get_option_no_throw(word);
    return option == nullptr ? program.get_option_no_throw(word) : option;
}

Situation understand(const CLI::App &program, std::span<const std::string> words)
{
    Situation situation;
    for (const std::string &word : words) {
        if (situation.option != nullptr) {
            if (situation.option->check_name("--config")) {
                situation.site.configFile = word;
            }
            situation.option = nullptr;
        } else if (word.starts_with('-')) {
            const CLI::Option *option = findOption(program, situation.command, word);
            situation.option = option != nullptr && option->get_items_expected_max() > 0 ? option : nullptr;
        } else if (situation.command == nullptr) {
            situation.command = findCommand(program, word);
        } else {
            situation.arguments.push_back(word);
        }
    }
    return situation;
}

/** The file of monitors; an empty one where it cannot be read, for nobody would see why. */
site::Configuration configurationOf(const Situation &situation)
{
    try {
        return site::readConfiguration(situation.site);
    } catch (const site::Error &) {
        return {};
    }
}

void addMonitors(const Situation &situation, Words &words)
{
    std::set<std::string> labels;
    for (const site::Monitor &monitor : configurationOf(situation).monitors) {
        words.push_back(monitor.name);
        labels.insert(monitor.labels.begin(), monitor.labels.end());
    }
    for (const std::string &label : labels) {
        words.push_back("label=" + label);
    }
    words.emplace_back("all");
}

void addOptions(const CLI::App *app, Words &words)
{
    for (const CLI::Option *option : app->get_options()) {
        if (!option->get_group().empty()) {
            for (const std::string &name : option->get_lnames()) {
                words.push_back("--" + name);
            }
        }
    }
}

void addCommandNames(const CLI::App &program, Words &words)
{
    for (const CLI::App *command : program.get_subcommands({})) {
        if (!command->get_group().empty()) {
            words.push_back(command->get_name());
        }
    }
}

/** Whole names, and shortened ones once something was typed that only they begin with. */
void addSettings(const std::string &typed, const std::string &behind, Words &words)
{
    std::set<std::string> known;
    for (const model::Setting &setting : model::allSettings()) {
        known.insert(setting.name + behind);
    }
    const bool isWhole =
        std::ranges::any_of(known, [&](const std::string &name) { return name.starts_with(typed); });
    for (const std::string &name : isWhole ? Words{} : model::allNames()) {
        known.insert(name + behind);
    }
    words.insert(words.end(), known.begin(), known.end());
}

void addValues(const Situation &situation, const std::string &typed, Words &words)
{
    const std::string name = typed.substr(0, typed.find('='));
    try {
        const model::Setting &setting = *model::resolveName(name).setting;
        for (const std::string &value : model::valueWords(setting, configurationOf(situation).names)) {
            words.push_back(name + '=' + value);
        }
    } catch (const model::BadValue &) {
        return; // unknown, or not yet one name
    }
}

void addActions(const Situation &situation, Words &words)
{
    for (const model::ActionRow &action : model::allActions()) {
        if (situation.arguments.empty()) {
            words.emplace_back(action.name);
        } else if (action.name == situation.arguments.front() && situation.arguments.size() == 1) {
            words.emplace_back(action.argument);
        }
    }
}

void addArguments(const CLI::App &program, const Situation &situation, const std::string &typed,
                  Completion &result)
{
    const auto found =
        std::ranges::find(argumentsOfCommands, situation.command->get_name(), &Arguments::command);
    if (found == argumentsOfCommands.end()) {
        return;
    }
    result.isFile = found->areFiles;
    if (found->areSettings) {
        addSettings(typed, "", result.words);
    }
    if (found->areAssignments && typed.find('=') == std::string::npos) {
        addSettings(typed, "=", result.words);
    } else if (found->areAssignments) {
        addValues(situation, typed, result.words);
    }
    if (found->areActions) {
        addActions(situation, result.words);
    }
    if (found->areCommands) {
        addCommandNames(program, result.words);
    }
    if (found->areShells) {
        result.words.insert(result.words.end(), {"bash", "fish", "zsh"});
    }
}

void addOptionValues(const Situation &situation, Completion &result)
{
    if (situation.option->check_name("--monitor")) {
        addMonitors(situation, result.words);
        return;
    }
    for (const char *name :
         {"--config", "--ca-file", "--output", "-o", "--against", "--web-config", "--profiles"}) {
        result.isFile = result.isFile || situation.option->check_name(name);
    }
}

} // namespace

Completion complete(const CLI::App &program, std::span<const std::string> words)
{
    if (words.empty()) {
        return {};
    }
    const std::string &typed = words.back();
    const Situation situation = understand(program, words.first(words.size() - 1));
    Completion result;
    if (situation.option != nullptr) {
        addOptionValues(situation, result);
    } else if (typed.starts_with('-')) {
        addOptions(&program, result.words);
        if (situation.command != nullptr) {
            addOptions(situation.command, result.words);
        }
    } else if (situation.command == nullptr) {
        addCommandNames(program, result.words);
    } else {
        addArguments(program, situation, typed, result);
    }
    std::erase_if(result.words,
                  [&](const std::string &word) { return word.empty() || !word.starts_with(typed); });
    std::ranges::sort(result.words);
    result.words.erase(std::unique(result.words.begin(), result.words.end()), result.words.end());
    return result;
}

} // namespace displayctl::completion
