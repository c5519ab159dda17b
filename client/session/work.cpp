// SPDX-License-Identifier: Apache-2.0
#include "session/work.h"

#include "model/names.h"
#include "model/values.h"

#include <algorithm>
#include <map>

namespace displayctl::session
{

namespace
{

using history::Json;
using model::Setting;
using model::Step;
using model::Target;
using model::Value;

// What makes no sense to go on after: the monitor itself cannot be worked with.
bool isSerious(Outcome outcome)
{
    return outcome == Outcome::busy || outcome == Outcome::unreachable;
}

Json recordOf(const Session &session, const Step &step, std::size_t number)
{
    Json changes = Json::array();
    for (const Target &target : step.changes) {
        changes.push_back({{"setting", target.setting->name},
                           {"old", session.state().value(*target.setting)},
                           {"new", target.value}});
    }
    Json beside = Json::array();
    for (const Beside &each : besides(session, step)) {
        beside.push_back({{"setting", each.setting->name}, {"old", each.before}});
    }
    return {{"step", number}, {"temporary", step.isTemporary}, {"changes", changes}, {"beside", beside}};
}

// The settings of a journal with the values from before, the first step's first.
std::vector<Target> valuesBefore(const std::vector<Json> &records)
{
    std::vector<Target> result;
    for (const Json &record : records) {
        for (const char *part : {"changes", "beside"}) {
            for (const Json &each : record.value(part, Json::array())) {
                const Setting *setting = model::findSetting(each.value("setting", ""));
                if (setting != nullptr &&
                    std::ranges::find(result, setting, &Target::setting) == result.end()) {
                    result.push_back({setting, each.value("old", Json())});
                }
            }
        }
    }
    return result;
}

std::string describe(const Setting &setting, const Value &value)
{
    return value.is_null() ? "not known" : value == "" ? "empty" : model::textOf(setting, value, {});
}

// Takes what came of a step into the report. What is returned is why nothing more may be sent; empty: go on.
std::string takeIn(StepResult &result, const Step &step, const std::vector<Target> &targets,
                   WorkReport &report)
{
    std::string givenUp;
    for (Change &change : result.changes) {
        report.outcome = worse(report.outcome, change.outcome);
        if (!change.isGood() && (step.isTemporary || isSerious(change.outcome))) {
            givenUp = "not sent: " + change.setting->name + ": " + change.message;
            report.message = change.message;
        }
        const auto asked = std::ranges::find(report.changes, change.setting, &Change::setting);
        if (asked != report.changes.end() && (!step.isTemporary || change.isGood())) {
            change.before = asked->before;
            change.wanted = asked->wanted;
            if (change.result == Result::set && change.setting->isReadable() &&
                model::sameValue(change.before, change.after)) {
                change.result = Result::unchanged; // an earlier step had changed it
            }
            *asked = change;
        }
    }
    std::ranges::copy_if(result.beside, std::back_inserter(report.beside), [&](const Beside &each) {
        return std::ranges::find(targets, each.setting, &Target::setting) == targets.end();
    });
    return givenUp;
}

} // namespace

std::optional<wbem::Answer> readFor(Session &session, const std::vector<Target> &targets)
{
    Classes classes;
    for (const Target &target : targets) {
        addChangeClasses(*target.setting, classes);
        model::addRuleClasses(target.setting->row->name, classes);
    }
    return session.readMissing(classes);
}

Work::Work(Session &session, std::filesystem::path stateDirectory, WorkOptions options)
    : session_(session), stateDirectory_(std::move(stateDirectory)), options_(std::move(options))
{
}

std::vector<Step> Work::plan(const std::vector<Target> &targets)
{
    if (!options_.isDirect) {
        return model::makePlan(session_.state(), targets);
    }
    std::vector<Step> steps;
    for (const Target &target : targets) {
        if (model::isNeeded(session_.state(), target)) {
            steps.push_back({{target}});
        }
    }
    return steps;
}

void Work::write(Json record)
{
    if (journal_) {
        journal_->write(std::move(record));
    }
}

StepResult Work::carryOut(const Step &step, std::size_t number)
{
    StepResult result;
    if (const auto failure = prepare(session_, step)) {
        for (const Target &target : step.changes) {
            const Value now = session_.state().value(*target.setting);
            Change change{.setting = target.setting, .before = now, .wanted = target.value, .after = now};
            change.result = Result::refused;
            explain(session_, "", 0, target.value, *failure, change);
            result.changes.push_back(std::move(change));
        }
        return result;
    }
    write(recordOf(session_, step, number));
    result = perform(session_, step);
    write({{"done", number}});
    if (!step.isTemporary) {
        record(result, false);
    }
    return result;
}

void Work::record(const StepResult &result, bool isRestored)
{
    std::vector<history::Change> lines;
    for (const Change &change : result.changes) {
        if (change.result == Result::refused || change.result == Result::unchanged) {
            continue;
        }
        history::Change line{
            .monitor = session_.monitor().name,
            .address = session_.monitor().endpoint.authority(),
            .account = session_.monitor().endpoint.user,
            .setting = change.setting->name,
            .oldValue = change.before,
            .newValue = change.after,
            .result = std::string((isRestored || !undoes_.is_null()) && change.result == Result::set
                                      ? nameOf(Result::restored)
                                      : nameOf(change.result)),
            .answer = change.message,
            .profile = options_.profile};
        if (!undoes_.is_null()) {
            line.more["undoes"] = undoes_;
        }
        for (const Beside &each : result.beside) {
            history::member(line.more, "beside")[each.setting->name] = {{"old", each.before},
                                                                        {"new", each.after}};
        }
        lines.push_back(std::move(line));
    }
    if (!lines.empty()) {
        history::History(stateDirectory_).append(lines);
    }
}

void Work::prepareRecord() const
{
    history::History(stateDirectory_).prepare();
}

void Work::recordAction(const std::string &action, const std::vector<Beside> &changed,
                        const std::string &answer)
{
    history::Change line{.monitor = session_.monitor().name,
                         .address = session_.monitor().endpoint.authority(),
                         .account = session_.monitor().endpoint.user,
                         .setting = action,
                         .oldValue = nullptr,
                         .newValue = nullptr,
                         .result = "done",
                         .answer = answer,
                         .profile = ""};
    for (const Beside &each : changed) {
        history::member(line.more, "beside")[each.setting->name] = {{"old", each.before},
                                                                    {"new", each.after}};
    }
    history::History(stateDirectory_).append(line);
}

WorkReport Work::carryOut(const std::vector<Target> &targets, const std::vector<Step> &steps)
{
    WorkReport report;
    for (const Target &target : targets) {
        const Value now = session_.state().value(*target.setting);
        report.changes.push_back(
            {.setting = target.setting, .before = now, .wanted = target.value, .after = now});
    }
    if (steps.empty()) {
        return report;
    }
    prepareRecord(); // what cannot be recorded is not sent
    const bool isJournalled =
        options_.command == "apply" || leftOver(session_.monitor(), stateDirectory_).empty();
    if (isJournalled) {
        journal_ = history::Journal::open(stateDirectory_, session_.monitor().fileKey());
        if (!journal_) {
            report.outcome = Outcome::busy;
            report.message = "another displayctl is changing this monitor just now";
            return report;
        }
        write({{"begin", options_.command},
               {"profile", options_.profile},
               {"monitor", session_.monitor().name}});
    }
    std::string givenUp; // why nothing more is sent
    for (std::size_t i = 0; i < steps.size(); ++i) {
        const Step &step = steps[i];
        if (options_.onStep) {
            options_.onStep(i);
        }
        const bool isOver = std::ranges::none_of(
            step.changes, [&](const Target &target) { return model::isNeeded(session_.state(), target); });
        if (isOver) {
            continue;
        }
        StepResult result;
        if (!givenUp.empty() && !step.isTemporary) {
            for (const Target &target : step.changes) {
                result.changes.push_back(
                    {.setting = target.setting, .result = Result::refused, .message = givenUp});
            }
        } else {
            result = carryOut(step, i);
        }
        if (std::string reason = takeIn(result, step, targets, report); !reason.empty()) {
            givenUp = std::move(reason);
        }
        if (!result.isGood() && options_.isAllOrNothing) {
            takeBack(report);
            break;
        }
    }
    if (journal_ && report.notRestored.empty()) {
        journal_->finish();
    }
    return report;
}

bool Work::restore(const Target &target)
{
    if (target.value.is_null() || !target.setting->isWritable() ||
        (target.value == "" || !target.setting->isReadable())) {
        return false;
    }
    const std::vector<Target> targets = {target};
    if (readFor(session_, targets)) {
        return false;
    }
    for (const Step &step : model::makePlan(session_.state(), targets)) {
        if (prepare(session_, step)) {
            return false;
        }
        const StepResult result = perform(session_, step);
        if (!result.isGood()) {
            return false;
        }
        if (!step.isTemporary) {
            record(result, true);
        }
    }
    return true;
}

void Work::takeBack(WorkReport &report)
{
    report.isTakenBack = true;
    const std::vector<Json> records = journal_->records();
    for (auto entry = records.rbegin(); entry != records.rend(); ++entry) {
        for (const char *part : {"changes", "beside"}) {
            for (const Json &each : entry->value(part, Json::array())) {
                const Setting *setting = model::findSetting(each.value("setting", ""));
                if (setting != nullptr && !session_.read({std::string(setting->row->className)}) &&
                    !model::sameValue(session_.state().value(*setting), each.value("old", Json()))) {
                    static_cast<void>(
                        restore({setting, each.value("old", Json())})); // judged by reading back, below
                }
            }
        }
    }
    const auto failure = session_.readAgain();
    for (const Target &before : valuesBefore(records)) {
        const Value now = failure ? Value() : session_.state().value(*before.setting);
        const bool isAsBefore =
            before.setting->isReadable() && !failure && model::sameValue(now, before.value);
        if (!isAsBefore) {
            report.notRestored.push_back(before.setting->name + " is " + describe(*before.setting, now) +
                                         " and was " + describe(*before.setting, before.value));
        }
        const auto change = std::ranges::find(report.changes, before.setting, &Change::setting);
        if (change != report.changes.end() && change->result == Result::set) {
            change->result = isAsBefore ? Result::restored : Result::unknown;
            change->after = now;
        }
    }
    if (!report.notRestored.empty()) {
        report.outcome = worse(report.outcome, Outcome::unknown);
    }
    report.beside.clear();
}

std::vector<Json> Work::leftOver(const site::Monitor &monitor, const std::filesystem::path &stateDirectory)
{
    return history::Journal::leftOver(stateDirectory, monitor.fileKey());
}

std::vector<Target> Work::borrowedBy(const std::vector<Json> &records)
{
    std::vector<Target> all = valuesBefore(records);
    std::erase_if(all, [&](const Target &target) {
        return std::ranges::none_of(records, [&](const Json &record) {
            return record.value("temporary", false) &&
                   std::ranges::any_of(record.value("changes", Json::array()), [&](const Json &change) {
                       return change.value("setting", "") == target.setting->name;
                   });
        });
    });
    return all;
}

void Work::forgetLeftOver()
{
    if (auto journal = history::Journal::open(stateDirectory_, session_.monitor().fileKey())) {
        journal->finish();
    }
}

WorkReport Work::takeBackLeftOver()
{
    WorkReport report;
    journal_ = history::Journal::open(stateDirectory_, session_.monitor().fileKey());
    if (!journal_) {
        report.outcome = Outcome::busy;
        report.message = "another displayctl is changing this monitor just now";
        return report;
    }
    const std::vector<Target> before = valuesBefore(journal_->records());
    if (const auto failure = readFor(session_, before)) {
        report.outcome = outcomeOf(*failure);
        report.message = messageOf(*failure);
        return report;
    }
    std::map<const Setting *, Value> found;
    for (const Target &target : before) {
        found[target.setting] = session_.state().value(*target.setting);
    }
    takeBack(report);
    for (const Target &target : before) {
        const Value now = session_.state().value(*target.setting);
        const bool isAsBefore = target.setting->isReadable() && model::sameValue(now, target.value);
        Change change{
            .setting = target.setting, .before = found[target.setting], .wanted = target.value, .after = now};
        change.result = !isAsBefore                                             ? Result::unknown
                        : model::sameValue(found[target.setting], target.value) ? Result::unchanged
                                                                                : Result::restored;
        report.outcome =
            worse(report.outcome, change.result == Result::restored ? Outcome::ok : Outcome::unchanged);
        report.changes.push_back(std::move(change));
    }
    if (const auto failure = session_.readAgain()) {
        report.outcome =
            outcomeOf(*failure); // nobody knows what the state is: the journal stays for the next call
        report.message = messageOf(*failure);
    } else {
        journal_->finish();
    }
    return report;
}

} // namespace displayctl::session
