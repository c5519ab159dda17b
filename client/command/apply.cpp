// SPDX-License-Identifier: Apache-2.0
// apply: makes a monitor what a profile says, all or nothing.
#include "command/profiles.h"
#include "model/values.h"
#include "site/directories.h"
#include "site/pool.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <memory>

namespace displayctl::command
{

namespace
{

using model::Step;
using model::Target;

struct ApplyOptions {
    std::string file;
    bool isDryRun = false;
    bool keepsGoing = false;
    Identity identity;
};

std::string planText(const std::vector<Step> &steps, const site::CodeNames &names)
{
    std::vector<std::vector<std::string>> rows;
    for (const Step &step : steps) {
        for (const Target &target : step.changes) {
            rows.push_back({"  " + target.setting->name, model::textOf(*target.setting, target.value, names),
                            step.isTemporary ? "temporary" : ""});
        }
    }
    return table(rows);
}

Json planDocument(const std::vector<Step> &steps, const site::CodeNames &names)
{
    Json plan = Json::array();
    for (const Step &step : steps) {
        for (const Target &target : step.changes) {
            plan.push_back({{"setting", target.setting->name},
                            {"new", model::documentOf(*target.setting, target.value, names)},
                            {"temporary", step.isTemporary}});
        }
    }
    return plan;
}

// What cannot be read, or cannot be set back should a later step fail.
std::string warnings(const std::vector<Step> &steps, const model::State &state)
{
    std::string text;
    for (const Step &step : steps) {
        for (const Target &target : step.changes) {
            const model::Setting &setting = *target.setting;
            if (!setting.isReadable()) {
                text += "  " + setting.name + " cannot be read: it cannot be checked, nor set back\n";
            } else if (!model::canBeSetBack(state, setting)) {
                text += "  " + setting.name + " is empty now: it cannot be set back\n";
            }
        }
    }
    return text;
}

std::string summary(const session::WorkReport &result)
{
    if (result.isTakenBack) {
        return result.notRestored.empty() ? "restored\n" : "not restored\n";
    }
    const auto count = std::ranges::count(result.changes, session::Result::set, &session::Change::result);
    return count == 0 ? std::string(session::nameOf(result.outcome)) + "\n"
                      : std::to_string(count) + (count == 1 ? " setting changed\n" : " settings changed\n");
}

bool changesNetwork(const Step &step)
{
    return std::ranges::any_of(step.changes,
                               [](const Target &target) { return target.setting->has(model::network); });
}

class Apply
{
  public:
    Apply(Call &call, const ApplyOptions &options, const Selected &selected)
        : call_(call), options_(options), selected_(selected), names_(call.configuration().names)
    {
    }

    /** Brings the monitor to the profile; with isLook only where that changes nothing there, else nothing is
     * done and there is no report. */
    std::optional<Report> work(const site::Monitor &monitor, bool isLook = false)
    {
        session::Session session(monitor, call_.options.timeout());
        const auto leftOver = session::Work::leftOver(monitor, site::stateDirectory());
        if (const auto failure = session.read(classes())) {
            return failureReport(*failure);
        }
        std::vector<Target> targets = targetsOf(selected_.assignments, session.state());
        const std::size_t asked = targets.size();
        // Where one was cut off: what it had switched only for a moment gets back what it had.
        for (Target &target : session::Work::borrowedBy(leftOver)) {
            if (std::ranges::find(targets, target.setting, &Target::setting) == targets.end()) {
                targets.push_back(std::move(target));
            }
        }
        if (const auto failure = session::readFor(session, targets)) {
            return failureReport(*failure);
        }
        std::optional<site::Progress> progress; // of many monitors, it is the caller's
        session::Work work(session, site::stateDirectory(),
                           {.command = "apply",
                            .profile = options_.file,
                            .isAllOrNothing = !options_.keepsGoing,
                            .onStep = [&progress](std::size_t done) {
                                if (progress) {
                                    progress->show(done);
                                }
                            }});
        const std::vector<Step> steps = work.plan(targets);
        if (options_.isDryRun) {
            return dryRun(steps, session.state());
        }
        if (isLook && !steps.empty()) {
            return std::nullopt;
        }
        if (!steps.empty() && !call_.isMany() && !agrees(steps, session.state())) {
            Report report;
            report.outcome = Outcome::refused;
            report.message = "nothing was changed";
            return report;
        }
        std::string before;
        if (std::ranges::any_of(steps, changesNetwork)) {
            std::optional<wbem::Answer> failure;
            before = saveBefore(call_, session, failure);
            if (failure) {
                return failureReport(*failure);
            }
        }
        if (!call_.isMany()) {
            progress.emplace(steps.size(), call_.options.quiet);
        }
        session::WorkReport result = work.carryOut(targets, steps);
        if (steps.empty() && !leftOver.empty()) {
            work.forgetLeftOver();
        }
        result.changes.resize(asked);
        return tell(monitor, result, before);
    }

  private:
    [[nodiscard]] session::Classes classes() const
    {
        session::Classes result;
        addNameClasses(selected_.assignments, result);
        for (const Assignment &assignment : selected_.assignments) {
            session::addChangeClasses(*assignment.named.setting, result);
            model::addRuleClasses(assignment.named.setting->row->name, result);
        }
        return result;
    }

    [[nodiscard]] Report dryRun(const std::vector<Step> &steps, const model::State &state) const
    {
        Report report;
        report.outcome = steps.empty() ? Outcome::unchanged : Outcome::ok;
        report.text = steps.empty() ? "unchanged\n" : planText(steps, names_);
        report.document["plan"] = planDocument(steps, names_);
        const std::string notes = warnings(steps, state);
        report.note = notes.empty() ? "" : "Note:\n" + notes;
        return report;
    }

    // Of one monitor the plan is shown before anything is sent.
    [[nodiscard]] bool agrees(const std::vector<Step> &steps, const model::State &state) const
    {
        const std::string plan = "The plan:\n" + planText(steps, names_) + warnings(steps, state);
        (call_.options.json ? std::cerr : std::cout) << plan << std::flush;
        return call_.confirm("Apply it?");
    }

    [[nodiscard]] Report tell(const site::Monitor &monitor, const session::WorkReport &result,
                              const std::string &before) const
    {
        Report report = changeReport(call_, monitor, result, false);
        if (call_.isMany() || report.outcome == Outcome::unchanged || result.isTakenBack) {
            report.text = summary(result);
        }
        if (!before.empty()) {
            report.text = "before: " + before + "\n" + report.text;
            report.document["before"] = before;
        }
        return report;
    }

    Call &call_;
    const ApplyOptions &options_;
    const Selected &selected_;
    const site::CodeNames &names_;
};

using Reports = std::vector<std::optional<Report>>;

// Which monitors need a change, before anybody is asked: those without a report.
Reports look(Call &call, Apply &each)
{
    const std::vector<site::Monitor> &monitors = call.monitors();
    Reports reports(monitors.size());
    site::Progress progress(monitors.size(), call.options.quiet);
    std::size_t done = 0;
    site::forEach(
        monitors.size(), call.options.jobs, [&](std::size_t i) { reports[i] = each.work(monitors[i], true); },
        [&](std::size_t) { progress.show(++done); });
    return reports;
}

int apply(Call &call, const ApplyOptions &options)
{
    const auto entries = profile::read(options.file, call.configuration().names);
    const Selected selected = selectFor(entries, call.isMany(), options.identity);
    if (!selected.skipped.empty() && !call.options.quiet) {
        std::string names;
        for (const std::string &name : selected.skipped) {
            names += (names.empty() ? "" : ", ") + name;
        }
        std::cerr << "displayctl: skipped, because it belongs to one monitor: " << names
                  << (options.identity.isSkipped ? "\n" : " (--include-identity takes it in)\n");
    }
    Apply each(call, options, selected);
    Reports known;
    if (call.isMany() && !options.isDryRun && !call.options.yes) {
        known = look(call, each);
        const auto count = std::ranges::count_if(known, [](const auto &report) { return !report; });
        if (count != 0 && !call.confirm("Apply " + options.file + " to " + std::to_string(count) + " of " +
                                        std::to_string(known.size()) +
                                        " monitors? The others need nothing, or cannot be read.")) {
            std::cerr << "displayctl: nothing was changed\n";
            return session::exitCodeOf(Outcome::refused);
        }
    }
    known.resize(call.monitors().size());
    const site::Monitor *first = call.monitors().data();
    return call.forEachMonitor(
        [&](const site::Monitor &monitor) {
            const std::optional<Report> &report = known[static_cast<std::size_t>(&monitor - first)];
            return report ? *report : *each.work(monitor);
        },
        true);
}

} // namespace

void addApply(CLI::App &program, Action &action)
{
    CLI::App *command =
        program.add_subcommand("apply", "Makes a monitor what a profile says, all or nothing");
    auto options = std::make_shared<ApplyOptions>();
    command->add_option("FILE", options->file, "the profile")->required();
    command->add_flag("--dry-run", options->isDryRun, "print the steps and do nothing");
    command->add_flag("--keep-going", options->keepsGoing,
                      "go on after a failed step instead of taking all back");
    options->identity.addTo(*command);
    command->footer("Examples:\n"
                    "  displayctl apply house.yaml --dry-run\n"
                    "  displayctl --yes apply house.yaml\n"
                    "  displayctl -m all --yes apply house.yaml");
    command->callback(
        [options, &action] { action = [options](Call &call) { return apply(call, *options); }; });
}

} // namespace displayctl::command
