// SPDX-License-Identifier: Apache-2.0
#include "command/settings.h"

#include "model/values.h"

#include <algorithm>
#include <cmath>

namespace displayctl::command
{

namespace
{

using model::Setting;
using model::Target;
using model::Value;
using session::Change;
using session::Result;

constexpr std::size_t labelWidth = 19;

std::string labelled(std::string_view label, const std::string &text)
{
    std::string line = "  " + std::string(label);
    return line.append(std::max<std::size_t>(labelWidth + 2, line.size() + 1) - line.size(), ' ') + text +
           "\n";
}

bool isActivePreset(const Assignment &assignment)
{
    return assignment.named.isActive;
}

} // namespace

std::string quotedForShell(const std::string &text)
{
    const bool isPlain =
        text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                               "-_.,:/@=+%") == std::string::npos;
    if (isPlain && !text.empty()) {
        return text;
    }
    std::string result = "'";
    for (const char c : text) {
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return result + "'";
}

Assignment parseAssignment(std::string_view text, const site::CodeNames &names)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos || equals == 0) {
        throw UsageError("'" + std::string(text) + "' is no SETTING=VALUE");
    }
    const model::Named named = model::resolveName(text.substr(0, equals));
    return {named, model::parseValue(*named.setting, text.substr(equals + 1), names)};
}

void addNameClasses(std::span<const Assignment> assignments, session::Classes &classes)
{
    for (const Assignment &assignment : assignments) {
        if (assignment.named.isActive || assignment.named.setting->kind() == model::Kind::preset) {
            classes.insert("ColorSpace");
        }
    }
}

std::vector<Target> targetsOf(std::span<const Assignment> assignments, const model::State &state)
{
    int active = state.activePreset();
    std::vector<Target> targets;
    for (const Assignment &assignment : assignments) {
        if (assignment.named.setting->kind() == model::Kind::preset) {
            targets.push_back(
                {assignment.named.setting, model::presetNumber(assignment.value, state.presetNames())});
            active = targets.back().value.get<int>();
        }
    }
    if (active == 0 && std::ranges::any_of(assignments, isActivePreset)) {
        throw model::BadValue("the monitor does not tell which preset is in use; say preset.1 to preset.7");
    }
    for (const Assignment &assignment : assignments) {
        if (assignment.named.setting->kind() != model::Kind::preset) {
            targets.push_back({&assignment.named.at(active), assignment.value});
        }
    }
    for (std::size_t i = 0; i < targets.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (targets[i].setting == targets[j].setting) {
                throw model::BadValue(targets[i].setting->name + " is given twice");
            }
        }
    }
    return targets;
}

Report failureReport(const wbem::Answer &answer)
{
    Report report;
    report.outcome = session::outcomeOf(answer);
    report.message = session::messageOf(answer);
    if (const std::string_view reason = session::reasonOf(answer); !reason.empty()) {
        report.documentMessage = report.message;
        report.document["rule"] = reason;
        report.message += "\n" + labelled("the rule", std::string(reason));
        report.message.pop_back();
    }
    return report;
}

Json settingDocument(const Setting &setting, const Value &value, const site::CodeNames &names)
{
    Json document = {{"value", model::documentOf(setting, value, names)}};
    if (!setting.unit().empty()) {
        document["unit"] = setting.unit();
    }
    const bool isWritable = setting.isWritable() && !setting.has(model::neverAccepted);
    document["writable"] = isWritable;
    const bool isNumber = setting.kind() == model::Kind::number || setting.kind() == model::Kind::decimal ||
                          setting.kind() == model::Kind::code;
    if (isNumber && isWritable) {
        const auto number = [](double bound) {
            return bound == std::trunc(bound) ? Json(static_cast<long>(bound)) : Json(bound);
        };
        if (!setting.codes().empty()) {
            document["min"] = setting.codes().front().code;
            document["max"] = setting.codes().back().code;
        } else if (setting.minimum() && setting.maximum()) {
            document["min"] = number(*setting.minimum());
            document["max"] = number(*setting.maximum());
        }
    } else if (isWritable && !model::valueWords(setting, names).empty()) {
        document["values"] = model::valueWords(setting, names);
    }
    return document;
}

Json changesDocument(std::span<const Change> changes, const site::CodeNames &names)
{
    Json document = Json::array();
    for (const Change &change : changes) {
        Json each = {{"setting", change.setting->name},
                     {"old", model::documentOf(*change.setting, change.before, names)},
                     {"new", model::documentOf(*change.setting, change.after, names)},
                     {"result", session::nameOf(change.result)}};
        if (!change.message.empty()) {
            each["message"] = change.message;
        }
        if (!change.rule.empty()) {
            each["rule"] = change.rule;
        }
        if (!change.first.empty()) {
            each["first"] = Json::array({change.first});
        }
        document.push_back(std::move(each));
    }
    return document;
}

std::string changeLine(const Change &change, const site::CodeNames &names)
{
    const Setting &setting = *change.setting;
    const auto text = [&](const Value &value) {
        const std::string shown = model::textOf(setting, value, names);
        return shown.empty() ? "-" : shown;
    };
    switch (change.result) {
    case Result::unchanged:
        return setting.name + "  unchanged\n";
    case Result::set:
        if (!setting.isReadable()) {
            return setting.name + "  " + text(change.wanted) + ": set, cannot be read back\n";
        }
        return setting.name + "  " + text(change.before) + " -> " + text(change.after) + "\n";
    case Result::restored:
        return setting.name + "  restored: " + text(change.after) + "\n";
    case Result::refused:
    case Result::unknown:
        break;
    }
    return {};
}

std::string commandFor(const std::string &selector, const std::vector<std::string> &ways)
{
    const bool isAction = !ways.empty() && ways.front().find('=') == std::string::npos;
    if (isAction) {
        return "displayctl -m " + selector + " run " + ways.front();
    }
    std::string command = "displayctl -m " + selector + " set";
    for (const std::string &way : ways) {
        command += " " + quotedForShell(way);
    }
    return command;
}

std::string refusalText(const Refusal &refusal, const std::string &monitor, const std::string &selector)
{
    const Change &change = refusal.change;

    const bool isRefused = change.result == Result::refused;
    std::string text =
        std::string(isRefused ? "refused: " : "unknown: ") + refusal.what + " (" + monitor + ")\n";
    const bool isMonitors =
        isRefused && (change.outcome == Outcome::refused || change.outcome == Outcome::busy ||
                      change.outcome == Outcome::login);
    if (change.isBlankText) {
        text += labelled("the monitor says", "nothing: its text is blank");
    } else {
        text += labelled(isMonitors ? "the monitor says" : "what happened", change.message);
    }
    if (!change.rule.empty()) {
        text += labelled("the rule", change.rule);
    }
    if (!change.first.empty()) {
        text += labelled("first", commandFor(selector, {change.first}));
    } else if (change.hasNoWayOut) {
        text += labelled("first", "nothing: there is no way out");
    }
    text.pop_back();
    return text;
}

Report changeReport(Call &call, const site::Monitor &monitor, const session::WorkReport &result,
                    bool tellsUnchanged)
{
    Report report;
    report.outcome = result.outcome;
    const site::CodeNames &names = call.configuration().names;
    const std::string selector = selectorOf(monitor, call.configuration());
    for (const Change &change : result.changes) {
        report.text += change.result != Result::unchanged || tellsUnchanged ? changeLine(change, names) : "";
        if (!change.isGood() && !change.wanted.is_null()) {
            report.note += refusalText({change.setting->name, change}, monitor.name, selector) + "\n";
            report.documentMessage += (report.documentMessage.empty() ? "" : "; ") + change.message;
        }
    }
    if (report.note.empty()) {
        report.message = result.message; // nothing was sent, and why
    }
    for (const session::Beside &each : result.beside) {
        report.text += each.setting->name + "  " + model::textOf(*each.setting, each.before, names) + " -> " +
                       model::textOf(*each.setting, each.after, names) + "  (beside it)\n";
    }
    report.document["changes"] = changesDocument(result.changes, names);
    for (const std::string &each : result.notRestored) {
        report.note += "not restored: " + each + "\n";
        history::member(report.document, "not-restored", Json::array()).push_back(each);
    }
    return report;
}

std::string selectorOf(const site::Monitor &monitor, const site::Configuration &configuration)
{
    if (std::ranges::find(configuration.monitors, monitor.name, &site::Monitor::name) !=
        configuration.monitors.end()) {
        return quotedForShell(monitor.name);
    }
    const wbem::Endpoint &endpoint = monitor.endpoint;
    std::string url = endpoint.tls ? "https://" : "http://";
    url += endpoint.user.empty() ? "" : endpoint.user + "@";
    url += endpoint.authority();
    url += endpoint.nameSpace == wbem::Endpoint().nameSpace ? "" : "/" + endpoint.nameSpace;
    return quotedForShell(url);
}

std::size_t width(std::string_view text)
{
    // Every byte that does not continue a character; the texts of monitors have no wide ones.
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

std::string table(const std::vector<std::vector<std::string>> &rows)
{
    std::vector<std::size_t> widths;
    for (const auto &row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size() && row.size() > 1; ++i) {
            widths[i] = std::max(widths[i], width(row[i]));
        }
    }
    std::string result;
    for (const auto &row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (widths[i] != 0 || row.size() == 1) { // a column without a text is none
                line += row[i] + std::string(i + 1 == row.size() ? 0 : widths[i] - width(row[i]) + 2, ' ');
            }
        }
        line.erase(line.find_last_not_of(' ') + 1);
        result += line + "\n";
    }
    return result;
}

} // namespace displayctl::command
