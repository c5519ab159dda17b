// SPDX-License-Identifier: Apache-2.0
// why: would the monitor accept it, and if not, what unlocks it. Changes nothing.
#include "command/actions.h"
#include "command/settings.h"
#include "model/rules.h"
#include "model/values.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace displayctl::command
{

namespace
{

/** What is asked about: a change, or an action. */
struct Question {
    std::vector<Assignment> assignment; // one, or none
    RunAction action;
    std::string text; // as it was asked

    [[nodiscard]] bool isAction() const
    {
        return assignment.empty();
    }
};

/** What is known of one question on one monitor. */
struct Finding {
    std::optional<bool> accepted = true;
    std::string text; // of the monitor
    std::string rule; // why not, or why it cannot be known

    std::vector<std::string> steps;
};

// Goes through the rules in the order of the monitor's own checks; the first one that does not hold tells
// why.
Finding judge(const model::State &state, std::string_view subject, int number, const model::Value &value)
{
    Finding finding;
    const model::View view(state);
    for (const model::Rule *rule : model::rulesOf(subject)) {
        const std::optional<bool> holds = rule->holds(view, number, value);
        if (holds == true) {
            continue;
        }
        const bool isFirstOfItsKind =
            finding.accepted == true || (finding.accepted == std::nullopt && holds == false);
        if (isFirstOfItsKind) {
            finding.accepted = holds;
            finding.text = rule->refusal;
            finding.rule = rule->meaning;
            finding.steps.clear();
        }
        const std::string way = model::wayOut(*rule, view, number, value);
        if (!way.empty() && holds == finding.accepted) {
            finding.steps.push_back(way);
        }
    }
    return finding;
}

// The rights come first: the monitor checks them before anything else.
void judgeRights(session::Session &session, Finding &finding)
{
    const std::optional<bool> isAdministrator = session.isAdministrator();
    if (isAdministrator == true || (!isAdministrator && finding.accepted == false)) {
        return;
    }
    finding = Finding();
    finding.accepted = isAdministrator;
    finding.text = isAdministrator ? "Operation not allowed for non-admin user credentials" : "";
    finding.rule = isAdministrator
                       ? "only administrators of the monitor may do this"
                       : "only administrators may do this, and the monitor does not tell who is one";
}

std::string label(std::string_view name)
{
    std::string text = "  " + std::string(name);
    return text.append(21 - text.size(), ' ');
}

// what: the setting by its whole name, or the action as it was asked.
Report tell(const Question &question, const std::string &what, const Finding &finding,
            const std::string &monitor, const std::string &selector)
{
    Report report;
    report.document = {{"accepted", finding.accepted ? Json(*finding.accepted) : Json()}};
    report.document["rule"] = finding.rule;
    report.document["first"] = finding.steps;
    if (finding.accepted == true) {
        report.text = question.text + " would be accepted\n";
        return report;
    }
    const bool isRefused = finding.accepted == false;
    report.outcome = isRefused ? Outcome::refused : Outcome::unknown;
    report.documentMessage = !isRefused             ? "it cannot be known beforehand: " + finding.rule
                             : finding.text.empty() ? "the monitor gives no reason"
                                                    : finding.text;
    report.text = (isRefused ? "refused: " : "not known: ") + what + " (" + monitor + ")\n";
    if (isRefused) {
        const bool isBlank = finding.text.empty();
        report.text +=
            label("the monitor says") + (isBlank ? "nothing: its text is blank" : finding.text) + "\n";
        report.text += label("the rule") + finding.rule + "\n";
    } else {
        report.text += label("it cannot be known") + "beforehand: " + finding.rule + "\n";
    }
    if (!finding.steps.empty()) {
        report.text +=
            label(isRefused ? "first" : "if it is refused") + commandFor(selector, finding.steps) + "\n";
    } else if (isRefused) {
        report.text += label("first") + "nothing: there is no way out\n";
    }
    return report;
}

Report why(Call &call, const site::Monitor &monitor, const Question &question)
{
    session::Session session(monitor, call.options.timeout());
    session::Classes classes = {"Monitor"}; // which tells as well whether the display engine is busy
    std::string subject = question.action.subject();
    if (question.isAction()) {
        classes.insert("ColorSpace");
    } else {
        addNameClasses(question.assignment, classes);
        session::addChangeClasses(*question.assignment.front().named.setting, classes);
        subject = question.assignment.front().named.setting->row->name;
    }
    model::addRuleClasses(subject, classes);
    if (const auto failure = session.read(classes)) {
        return failureReport(*failure);
    }
    Finding finding;
    std::string what = question.text;
    if (question.isAction()) {
        const int active = session.state().activePreset();
        finding = judge(session.state(), subject,
                        question.action.preset == 0 ? active : question.action.preset, nullptr);
    } else {
        const model::Target target = targetsOf(question.assignment, session.state()).front();
        what = target.setting->name;
        finding = judge(session.state(), subject, target.setting->number, target.value);
        if (target.setting->has(model::administrator)) {
            judgeRights(session, finding);
        }
    }
    return tell(question, what, finding, monitor.name, selectorOf(monitor, call.configuration()));
}

Question parseQuestion(const std::vector<std::string> &words, const site::CodeNames &names)
{
    Question question;
    for (const std::string &word : words) {
        question.text += (question.text.empty() ? "" : " ") + word;
    }
    if (words.front().find('=') != std::string::npos) {
        if (words.size() > 1) {
            throw UsageError("one question at a time: '" + words[1] + "' is too much");
        }
        question.assignment.push_back(parseAssignment(words.front(), names));
    } else {
        question.action = parseAction(words);
    }
    return question;
}

} // namespace

void addWhy(CLI::App &program, Action &action)
{
    CLI::App *command =
        program.add_subcommand("why", "Says whether a change would be accepted, and if not, what unlocks it");
    auto words = std::make_shared<std::vector<std::string>>();
    command->add_option("SETTING=VALUE|ACTION", *words, "a change or an action")->required();
    command->footer("Changes nothing. Exit code 0: accepted; 1: refused; 6: nobody can know beforehand.\n"
                    "Examples:\n"
                    "  displayctl why pip.size=minimum\n"
                    "  displayctl why 4k-corner");
    command->callback([words, &action] {
        action = [words](Call &call) {
            const Question question = parseQuestion(*words, call.configuration().names);
            return call.forEachMonitor(
                [&](const site::Monitor &monitor) { return why(call, monitor, question); });
        };
    });
}

} // namespace displayctl::command
