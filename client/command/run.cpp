// SPDX-License-Identifier: Apache-2.0
// run: actions.
#include "command/actions.h"
#include "command/profiles.h"
#include "model/values.h"
#include "session/change.h"
#include "site/directories.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <memory>

namespace displayctl::command
{

namespace
{

using model::Setting;
using session::Beside;

// What the action may change: for one that changes everything, all that can be set.
std::vector<const Setting *> watched(const RunAction &action, int preset)
{
    std::vector<const Setting *> settings = model::sideEffectsOf(action.subject(), preset);
    if (action.row->name == "power-off") {
        settings.push_back(model::findSetting("monitor.power"));
    }
    if (action.row->name == "factory-reset") {
        for (const Setting &setting : model::allSettings()) {
            if (setting.isWritable() && setting.isReadable()) {
                settings.push_back(&setting);
            }
        }
    }
    return settings;
}

std::vector<Beside> valuesOf(const std::vector<const Setting *> &settings, const model::State &state)
{
    std::vector<Beside> values;
    for (const Setting *setting : settings) {
        values.push_back({setting, state.value(*setting), nullptr});
    }
    return values;
}

// Reads again and leaves what has changed.
std::optional<wbem::Answer> readAfter(session::Session &session, std::vector<Beside> &values)
{
    const auto failure = session.readAgain();
    for (Beside &each : values) {
        each.after = session.state().value(*each.setting);
    }
    std::erase_if(values, [](const Beside &each) { return model::sameValue(each.before, each.after); });
    return failure;
}

class Runner
{
  public:
    Runner(Call &call, const RunAction &action)
        : call_(call), action_(action), names_(call.configuration().names)
    {
    }

    Report run(const site::Monitor &monitor)
    {
        session::Session session(monitor, call_.options.timeout());
        session::Classes classes = {
            std::string(action_.row->method.substr(0, action_.row->method.find('.')))};
        for (const Setting *setting : watched(action_, 1)) {
            model::addClasses(*setting, classes);
        }
        if (const auto failure = session.read(classes)) {
            return failureReport(*failure);
        }
        Report report;
        report.document["action"] = action_.subject();
        if (action_.row->cannotBeUndone) {
            std::optional<wbem::Answer> failure;
            const std::string before = saveBefore(call_, session, failure);
            if (failure) {
                return failureReport(*failure);
            }
            report.text = "before: " + before + "\n";
            report.document["before"] = before;
        }
        const int preset = action_.preset == 0 ? session.state().activePreset() : action_.preset;
        std::vector<Beside> values = valuesOf(watched(action_, preset), session.state());
        session::Work(session, site::stateDirectory(), {.command = "run"}).prepareRecord();
        const wbem::Answer answer = session.run(*action_.row, preset);
        if (session::isDone(answer) || session::isDoubtful(answer)) {
            finish(session, answer, values, report);
        } else {
            refuse(session, answer, preset, report);
        }
        return report;
    }

  private:
    void finish(session::Session &session, const wbem::Answer &answer, std::vector<Beside> &values,
                Report &report)
    {
        const auto failure = readAfter(session, values);
        const bool isDone = session::isDone(answer);
        if (!isDone && (failure || values.empty())) {
            report.outcome = Outcome::unknown;
            report.message = session::messageOf(answer) + " Nobody can know whether it was done.";
            return;
        }
        report.text += action_.subject() + "  done\n";
        Json changes = Json::array();
        for (const Beside &each : values) {
            const auto text = [&](const model::Value &value) {
                const std::string shown = model::textOf(*each.setting, value, names_);
                return shown.empty() ? std::string("-") : shown;
            };
            report.text += each.setting->name + "  " + text(each.before) + " -> " + text(each.after) + "\n";
            changes.push_back({{"setting", each.setting->name},
                               {"old", model::documentOf(*each.setting, each.before, names_)},
                               {"new", model::documentOf(*each.setting, each.after, names_)},
                               {"result", "set"}});
        }
        report.document["changes"] = std::move(changes);
        session::Work(session, site::stateDirectory(), {.command = "run"})
            .recordAction(action_.subject(), values, session::messageOf(answer));
    }

    void refuse(session::Session &session, const wbem::Answer &answer, int preset, Report &report)
    {
        const std::string_view nothingToDo = action_.row->nothingToDo;
        if (!nothingToDo.empty() && answer.message.starts_with(nothingToDo)) {
            report.outcome = Outcome::unchanged;
            report.text += action_.subject() + "  unchanged\n";
            return;
        }
        Refusal refusal;
        refusal.what = action_.subject();
        session::explain(session, action_.subject(), preset, nullptr, answer, refusal.change);
        refusal.change.result = session::Result::refused;
        report.outcome = refusal.change.outcome;
        report.documentMessage = refusal.change.message;
        report.note = refusalText(refusal, session.monitor().name,
                                  selectorOf(session.monitor(), call_.configuration())) +
                      "\n";
        report.document["rule"] = refusal.change.rule;
        report.document["first"] =
            refusal.change.first.empty() ? Json::array() : Json::array({refusal.change.first});
    }

    Call &call_;
    const RunAction &action_;
    const site::CodeNames &names_;
};

int run(Call &call, const RunAction &action)
{
    static_cast<void>(call.monitors());
    if (action.row->cannotBeUndone) {
        const std::string which = call.isMany() ? std::to_string(call.monitors().size()) + " monitors"
                                                : call.monitors().front().name;
        if (!call.confirm(std::string(action.row->description) + " Do it on " + which + "?")) {
            std::cerr << "displayctl: nothing was changed\n";
            return session::exitCodeOf(Outcome::refused);
        }
    }
    Runner runner(call, action);
    return call.forEachMonitor([&](const site::Monitor &monitor) { return runner.run(monitor); });
}

std::string listOfActions()
{
    std::string text;
    for (const model::ActionRow &row : model::allActions()) {
        text += (text.empty() ? "" : ", ") + std::string(row.name) +
                (row.argument.empty() ? "" : " " + std::string(row.argument));
    }
    return text;
}

} // namespace

std::string RunAction::subject() const
{
    if (row == nullptr) {
        return {};
    }
    return std::string(row->name) + (row->argument.empty() ? "" : " " + std::string(row->argument));
}

RunAction parseAction(const std::vector<std::string> &words)
{
    RunAction action;
    std::size_t used = 1;
    action.row = model::findAction(words.front(), "");
    if (action.row == nullptr && words.size() > 1) {
        action.row = model::findAction(words[0], words[1]);
        used = 2;
    }
    if (action.row == nullptr) {
        std::string all;
        for (const std::string &word : words) {
            all += (all.empty() ? "" : " ") + word;
        }
        throw UsageError("there is no action '" + all + "'; there are " + listOfActions());
    }
    if (words.size() == used + 1 && action.row->name == "reset-calibration" && words[used].size() == 1 &&
        words[used][0] >= '1' && words[used][0] <= '7') {
        action.preset = words[used][0] - '0';
        ++used;
    }
    if (words.size() > used) {
        throw UsageError("'" + words[used] + "' is too much for the action " + action.subject());
    }
    return action;
}

void addRun(CLI::App &program, Action &action)
{
    CLI::App *command = program.add_subcommand("run", "Does something: " + listOfActions());
    auto words = std::make_shared<std::vector<std::string>>();
    command
        ->add_option("ACTION", *words, "the action; reset-calibration may be followed by a preset's number")
        ->required();
    std::string text = "Actions:\n";
    for (const model::ActionRow &row : model::allActions()) {
        std::string name =
            "  " + std::string(row.name) + (row.argument.empty() ? "" : " " + std::string(row.argument));
        text += name.append(30 - name.size(), ' ') + std::string(row.description) + "\n";
    }
    command->footer(text +
                    "factory-reset and power-off ask first, and save a profile whose name they print.\n"
                    "Examples:\n"
                    "  displayctl run swap-inputs\n"
                    "  displayctl run reset-calibration factory");
    command->callback(
        [words, &action] { action = [words](Call &call) { return run(call, parseAction(*words)); }; });
}

} // namespace displayctl::command
