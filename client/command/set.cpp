// SPDX-License-Identifier: Apache-2.0
// set: changes settings, in an order in which the monitor accepts them.
#include "command/profiles.h"
#include "model/values.h"
#include "session/work.h"
#include "site/directories.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <memory>

namespace displayctl::command
{

namespace
{

constexpr const char *question = "This changes how the monitor is reached. Change it?";

Report set(Call &call, const site::Monitor &monitor, const std::vector<Assignment> &assignments,
           bool isDirect)
{
    session::Session session(monitor, call.options.timeout());
    session::Classes classes;
    addNameClasses(assignments, classes);
    for (const Assignment &assignment : assignments) {
        session::addChangeClasses(*assignment.named.setting, classes);
        if (!isDirect) {
            model::addRuleClasses(assignment.named.setting->row->name, classes);
        }
    }
    if (const auto failure = session.read(classes)) {
        return failureReport(*failure);
    }
    const std::vector<model::Target> targets = targetsOf(assignments, session.state());
    std::string before;
    if (std::ranges::any_of(targets, [&](const model::Target &target) {
            return target.setting->has(model::network) && model::isNeeded(session.state(), target);
        })) {
        if (!call.isMany() && !call.confirm(question)) {
            Report report;
            report.outcome = Outcome::refused;
            report.message = "nothing was changed";
            return report;
        }
        std::optional<wbem::Answer> failure;
        before = saveBefore(call, session, failure);
        if (failure) {
            return failureReport(*failure);
        }
    }
    session::Work work(session, site::stateDirectory(), {.command = "set", .isDirect = isDirect});
    const session::WorkReport result = work.carryOut(targets, work.plan(targets));

    Report report = changeReport(call, monitor, result);
    if (!before.empty()) {
        report.text = "before: " + before + "\n" + report.text;
        report.document["before"] = before;
    }
    return report;
}

} // namespace

void addSet(CLI::App &program, Action &action)
{
    CLI::App *command = program.add_subcommand("set", "Changes settings, and reads each one back");
    auto texts = std::make_shared<std::vector<std::string>>();
    auto isDirect = std::make_shared<bool>(false);
    command->add_option("SETTING=VALUE", *texts, "what is to be; the order does not matter")->required();
    command->add_flag("--direct", *isDirect, "only what is named here, in this order: nothing is set first");
    command->footer("Examples:\n"
                    "  displayctl set luminance=120\n"
                    "  displayctl set preset.5.luminance=100 osd.timeout=20s\n"
                    "  displayctl -m label=suite4 set pip.mode=pip pip.size=minimum pip.position=160,160");
    command->callback([texts, isDirect, &action] {
        action = [texts, isDirect](Call &call) {
            std::vector<Assignment> assignments;
            bool asks = false;
            for (const std::string &text : *texts) {
                assignments.push_back(parseAssignment(text, call.configuration().names));
                asks = asks || assignments.back().named.setting->has(model::network);
            }
            // One monitor is asked about when it is known that something would change.
            if (asks && call.isMany() && !call.confirm(question)) {
                std::cerr << "displayctl: nothing was changed\n";
                return exitCodeOf(Outcome::refused);
            }
            return call.forEachMonitor(
                [&](const site::Monitor &monitor) { return set(call, monitor, assignments, *isDirect); });
        };
    });
}

} // namespace displayctl::command
