// SPDX-License-Identifier: Apache-2.0
// undo: takes one change of a monitor back, or what an interrupted one has left.
#include "command/settings.h"
#include "model/values.h"
#include "session/work.h"
#include "site/directories.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace displayctl::command
{

namespace
{

using model::Setting;
using model::Target;
using session::Result;

// The changes of this monitor that stand: what was taken back does not count, nor does taking it back.
std::vector<Json> changesOf(const site::Monitor &monitor)
{
    std::vector<Json> changes;
    for (const Json &line : history::History(site::stateDirectory()).read()) {
        if (line.value("address", "") != monitor.endpoint.authority()) {
            continue;
        }
        if (line.value("result", "") != "restored") {
            changes.push_back(line);
            continue;
        }
        const auto undone = std::find_if(changes.rbegin(), changes.rend(), [&](const Json &change) {
            return line.contains("undoes") ? change.value("number", Json()) == line["undoes"]
                                           : change.value("setting", "") == line.value("setting", "");
        });
        if (undone != changes.rend()) {
            changes.erase(std::next(undone).base());
        }
    }
    return changes;
}

/** One setting of a change: what it was, and what it became. */
struct Part {
    const Setting *setting;
    model::Value before;
    model::Value after;
};

// The setting of the change, and what was changed beside it.
std::vector<Part> partsOf(const Json &change)
{
    std::vector<Part> parts;
    if (const Setting *setting = model::findSetting(change.value("setting", ""))) {
        parts.push_back({setting, change.value("old", Json()), change.value("new", Json())});
    }
    const Json beside = change.value("beside", Json::object());
    for (const auto &[name, values] : beside.items()) {
        if (const Setting *setting = model::findSetting(name)) {
            parts.push_back({setting, values.value("old", Json()), values.value("new", Json())});
        }
    }
    return parts;
}

bool canBeRestored(const Part &part)
{
    return part.setting->isWritable() && part.setting->isReadable() && !part.before.is_null() &&
           part.before != "";
}

Report refusal(const std::string &message)
{
    Report report;
    report.outcome = Outcome::refused;
    report.message = message;
    return report;
}

class Undo
{
  public:
    Undo(Call &call, unsigned number) : call_(call), number_(number), names_(call.configuration().names) {}

    Report work(const site::Monitor &monitor)
    {
        session::Session session(monitor, call_.options.timeout());
        session::Work work(session, site::stateDirectory(), {.command = "undo"});
        if (!session::Work::leftOver(monitor, site::stateDirectory()).empty()) {
            return takeBackLeftOver(monitor, work);
        }
        const std::vector<Json> changes = changesOf(monitor);
        if (changes.size() < number_) {
            return refusal(changes.empty() ? "the history has no change of this monitor to take back"
                                           : "the history has only " + std::to_string(changes.size()) +
                                                 " changes of this monitor to take back");
        }
        const Json &change = changes[changes.size() - number_];
        work.undoes(change.value("number", Json()));
        const std::vector<Part> parts = partsOf(change);
        if (parts.empty() || !std::ranges::any_of(parts, canBeRestored)) {
            return refusal(change.value("setting", "") +
                           " cannot be taken back: what it was before is not known, or is empty");
        }
        return takeBack(monitor, session, work, parts);
    }

  private:
    Report takeBackLeftOver(const site::Monitor &monitor, session::Work &work)
    {
        if (!call_.isMany() &&
            !call_.confirm("Take back the change of " + monitor.name + " that was interrupted?")) {
            return refusal("nothing was changed");
        }
        return changeReport(call_, monitor, work.takeBackLeftOver());
    }

    Report takeBack(const site::Monitor &monitor, session::Session &session, session::Work &work,
                    const std::vector<Part> &parts)
    {
        std::vector<Target> targets;
        for (const Part &part : parts) {
            if (canBeRestored(part)) {
                targets.push_back({part.setting, part.before});
            }
        }
        if (const auto failure = session::readFor(session, targets)) {
            return failureReport(*failure);
        }
        std::string elsewhere;
        std::string question;
        for (const Part &part : parts) {
            const model::Value now = session.state().value(*part.setting);
            const std::string name = part.setting->name;
            question += (question.empty() ? "" : ", ") + name + " " + text(part, now) + " -> " +
                        text(part, part.before);
            if (part.setting->isReadable() && !part.after.is_null() && !model::sameValue(now, part.after)) {
                elsewhere += (elsewhere.empty() ? "" : "; ") + name + " was set to " +
                             text(part, part.after) + " and is " + text(part, now) + " now";
            }
        }
        if (!elsewhere.empty() && !call_.options.yes) {
            return refusal("something else has changed it since: " + elsewhere +
                           " (--yes takes it back all the same)");
        }
        if (!call_.isMany() && !call_.confirm("Take back " + question + "?")) {
            return refusal("nothing was changed");
        }
        session::WorkReport result = work.carryOut(targets, work.plan(targets));
        for (session::Change &change : result.changes) {
            change.result = change.result == Result::set ? Result::restored : change.result;
        }
        return changeReport(call_, monitor, result);
    }

    [[nodiscard]] std::string text(const Part &part, const model::Value &value) const
    {
        const std::string shown = model::textOf(*part.setting, value, names_);
        return shown.empty() ? "-" : shown;
    }

    Call &call_;
    unsigned number_;
    const site::CodeNames &names_;
};

} // namespace

void addUndo(CLI::App &program, Action &action)
{
    CLI::App *command =
        program.add_subcommand("undo", "Takes the last change of a monitor back, that one alone");
    auto number = std::make_shared<unsigned>(1);
    command->add_option("N", *number, "the N-th last change")
        ->check(CLI::Range(1U, 1000000U))
        ->capture_default_str();
    command->footer("Where a change was interrupted, it is that one that is taken back, with all its steps.\n"
                    "Examples:\n"
                    "  displayctl undo\n"
                    "  displayctl --yes undo 3");
    command->callback([number, &action] {
        action = [number](Call &call) {
            if (call.isMany() && !call.confirm("Take back a change of " +
                                               std::to_string(call.monitors().size()) + " monitors?")) {
                return session::exitCodeOf(Outcome::refused);
            }
            call.isUndo = true;
            Undo undo(call, *number);
            return call.forEachMonitor([&](const site::Monitor &monitor) { return undo.work(monitor); });
        };
    });
}

} // namespace displayctl::command
