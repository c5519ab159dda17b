// SPDX-License-Identifier: Apache-2.0
#include "session/change.h"

#include "model/values.h"

#include <algorithm>
#include <array>
#include <thread>

namespace displayctl::session
{

namespace
{

using model::Setting;
using model::Step;
using model::Target;
using Clock = std::chrono::steady_clock;

// How often the monitor is asked again for a value that it does not have yet, and for how long where it said
// that it has set it.
constexpr std::chrono::milliseconds pause{25};
constexpr std::chrono::milliseconds patience{500};

// What the monitor says when the display engine took the request and no reply came.
constexpr std::array noReplyTexts = {
    "Failed to set",
    "Failed to to set",
    "Failed to perform",
    "Unable to create a message queue for rec",
    "Failed to process. Unable to create a message queue for rec",
};

Classes classesOf(const Step &step)
{
    Classes classes;
    for (const Target &target : step.changes) {
        if (target.setting->isReadable()) {
            model::addClasses(*target.setting, classes);
        }
        for (const Setting *other : model::sideEffectsOf(target.setting->row->name, target.setting->number)) {
            model::addClasses(*other, classes);
        }
    }
    return classes;
}

bool stands(const Session &session, const Step &step)
{
    return std::ranges::all_of(step.changes, [&](const Target &target) {
        return !target.setting->isReadable() ||
               model::sameValue(session.state().value(*target.setting), target.value);
    });
}

// Reads back until the values stand or the time is over.
std::optional<wbem::Answer> readBack(Session &session, const Step &step)
{
    const bool isLate = std::ranges::any_of(
        step.changes, [](const Target &target) { return target.setting->has(model::late); });
    const bool isRenamed = std::ranges::any_of(step.changes, [](const Target &target) {
        return target.setting->name == "monitor.name" || target.setting->kind() == model::Kind::address;
    });
    const auto end = Clock::now() + (isLate ? session.timeout() : patience);
    for (;;) {
        // The name is part of the keys of other objects: what is known of them is not true any more.
        auto failure = isRenamed ? session.readAgain() : session.read(classesOf(step));
        if (failure || stands(session, step) || Clock::now() >= end) {
            return failure;
        }
        std::this_thread::sleep_for(pause);
    }
}

void refuse(Session &session, const wbem::Answer &answer, StepResult &result)
{
    result.beside.clear();
    for (Change &change : result.changes) {
        change.result = Result::refused;
        change.after = change.before;
        explain(session, change.setting->row->name, change.setting->number, change.wanted, answer, change);
    }
}

// What the values that were read back say.
void judge(const Session &session, const std::optional<wbem::Answer> &failure, const std::string &doubt,
           StepResult &result)
{
    for (Change &change : result.changes) {
        const Setting &setting = *change.setting;
        if (!setting.isReadable()) {
            change.result = doubt.empty() ? Result::set : Result::unknown;
            change.message = doubt.empty() ? "cannot be read back" : doubt;
            change.after = doubt.empty() ? change.wanted : model::Value();
        } else if (failure) {
            change.result = Result::unknown;
            change.message =
                (doubt.empty() ? "" : doubt + "; ") + "the value cannot be read back: " + messageOf(*failure);
            change.after = nullptr;
        } else {
            change.after = session.state().value(setting);
            const bool isSet = model::sameValue(change.after, change.wanted);
            change.result = isSet ? Result::set : Result::unknown;
            if (!isSet) {
                change.message = (doubt.empty() ? "the monitor took the change, but it has"
                                                : doubt + "; the monitor has") +
                                 " " + model::textOf(setting, change.after, {}) + " and not " +
                                 model::textOf(setting, change.wanted, {});
            }
        }
        change.outcome = change.result == Result::set ? Outcome::ok : Outcome::unknown;
    }
}

} // namespace

std::string_view nameOf(Result result)
{
    switch (result) {
    case Result::set:
        return "set";
    case Result::unchanged:
        return "unchanged";
    case Result::refused:
        return "refused";
    case Result::restored:
        return "restored";
    case Result::unknown:
        break;
    }
    return "unknown";
}

bool StepResult::isGood() const
{
    return std::ranges::all_of(changes, &Change::isGood);
}

bool isDone(const wbem::Answer &answer)
{
    return answer.ok() && answer.returnValue.number().value_or(0) == 0;
}

bool isDoubtful(const wbem::Answer &answer)
{
    if (answer.maybeDone) {
        return true;
    }
    return answer.status == wbem::Status::cimError &&
           std::ranges::any_of(noReplyTexts,
                               [&](const char *text) { return answer.message.starts_with(text); });
}

void explain(Session &session, std::string_view subject, int number, const model::Value &value,
             const wbem::Answer &answer, Change &change)
{
    change.outcome = answer.ok() ? Outcome::refused : outcomeOf(answer);
    change.message = answer.ok() ? "" : messageOf(answer);
    const bool isText = answer.status == wbem::Status::cimError || answer.ok();
    change.isBlankText = isText && answer.message.find_first_not_of(' ') == std::string::npos;
    change.rule = reasonOf(answer);
    const model::Rule *rule =
        change.outcome == Outcome::refused ? model::ruleOf(subject, answer.message) : nullptr;
    if (rule == nullptr) {
        return;
    }
    change.rule = rule->meaning;
    Classes classes;
    model::addRuleClasses(subject, classes);
    if (!session.readMissing(classes)) {
        change.first = model::wayOut(*rule, model::View(session.state()), number, value);
    }
    change.hasNoWayOut = change.first.empty();
}

std::optional<wbem::Answer> prepare(Session &session, const Step &step)
{
    Classes classes = classesOf(step);
    for (const Target &target : step.changes) {
        addChangeClasses(*target.setting, classes);
    }
    return session.readMissing(classes);
}

std::vector<Beside> besides(const Session &session, const Step &step)
{
    std::vector<Beside> result;
    for (const Target &target : step.changes) {
        for (const Setting *other : model::sideEffectsOf(target.setting->row->name, target.setting->number)) {
            if (std::ranges::find(result, other, &Beside::setting) == result.end()) {
                result.push_back({other, session.state().value(*other), nullptr});
            }
        }
    }
    return result;
}

StepResult perform(Session &session, const Step &step)
{
    StepResult result;
    result.beside = besides(session, step);
    for (const Target &target : step.changes) {
        result.changes.push_back({.setting = target.setting,
                                  .before = session.state().value(*target.setting),
                                  .wanted = target.value,
                                  .after = nullptr});
    }
    const wbem::Answer answer = session.send(step.changes);
    const bool isInDoubt = isDoubtful(answer);
    if (!isDone(answer) && !isInDoubt) {
        refuse(session, answer, result);
        return result;
    }
    judge(session, readBack(session, step), isInDoubt ? messageOf(answer) : std::string(), result);
    for (Change &change : result.changes) {
        change.rule = change.result == Result::unknown && isInDoubt ? reasonOf(answer) : "";
    }
    for (Beside &beside : result.beside) {
        beside.after = session.state().value(*beside.setting);
    }
    std::erase_if(result.beside,
                  [](const Beside &each) { return model::sameValue(each.before, each.after); });
    return result;
}

} // namespace displayctl::session
