// SPDX-License-Identifier: Apache-2.0
// history: what was changed, by whom, and whether the record is whole.
#include "history/history.h"
#include "command/settings.h"
#include "site/directories.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ctime>
#include <iostream>
#include <memory>
#include <set>

namespace displayctl::command
{

namespace
{

struct Wish {
    std::string since; // as the history writes times; empty: all
    bool verify = false;
};

/** A member as text; empty where it is missing or null. */
std::string member(const Json &document, const char *name)
{
    const auto found = document.find(name);
    if (found == document.end() || found->is_null()) {
        return "";
    }
    return found->is_string() ? found->get<std::string>() : found->dump();
}

/** A value as people write it. */
std::string shown(const Json &value)
{
    if (value.is_boolean()) {
        return value.get<bool>() ? "on" : "off";
    }
    if (value.is_array()) {
        std::string text;
        for (const Json &part : value) {
            text += (text.empty() ? "" : ",") + shown(part);
        }
        return text;
    }
    if (value.is_null()) {
        return "-";
    }
    return value.is_string() ? value.get<std::string>() : value.dump();
}

/** 2026-01-31 13:00:00, here. */
std::string localTime(const std::string &stored)
{
    std::tm parts{};
    if (strptime(stored.c_str(), "%Y-%m-%dT%H:%M:%S", &parts) == nullptr) {
        return stored;
    }
    const std::time_t time = timegm(&parts);
    localtime_r(&time, &parts);
    std::string text(20, '\0');
    text.resize(std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts));
    return text;
}

/** Which lines are wanted. */
class Filter
{
  public:
    /** Of the monitors that -m names, by name and address; without it, of all. */
    Filter(Call &call, std::string since) : since_(std::move(since))
    {
        if (!call.options.site.monitors.empty()) {
            isLimited_ = true;
            for (const site::Monitor &monitor :
                 site::chooseMonitors(call.configuration(), call.options.site)) {
                monitors_.insert(monitor.name);
                monitors_.insert(monitor.endpoint.authority());
            }
        }
    }

    [[nodiscard]] bool fits(const Json &document) const
    {
        return document.is_object() && member(document, "time") >= since_ &&
               (!isLimited_ || monitors_.contains(member(document, "monitor")) ||
                monitors_.contains(member(document, "address")));
    }

  private:
    std::string since_;
    bool isLimited_ = false;
    std::set<std::string> monitors_;
};

std::vector<std::string> rowOf(const Json &document)
{
    const std::string answer = member(document, "answer");
    return {localTime(member(document, "time")),
            member(document, "user"),
            member(document, "monitor"),
            member(document, "setting"),
            shown(document.value("old", Json())) + " -> " + shown(document.value("new", Json())),
            member(document, "result") + (answer.empty() ? "" : ": " + answer)};
}

int verify(const Call &call, const history::History &history)
{
    const history::Verification result = history.verify();
    const bool isGood = result.firstBadLine == 0;
    if (call.options.json) {
        Json document{{"monitor", nullptr}, {"outcome", isGood ? "ok" : "different"}}; // of all monitors
        if (!isGood) {
            document["message"] = result.problem;
            document["line"] = result.firstBadLine;
        }
        document["lines"] = result.lines;
        std::cout << document.dump() << '\n';
    } else if (isGood) {
        std::cout << result.lines << (result.lines == 1 ? " line" : " lines")
                  << ", none of them altered, removed or added\n";
    } else {
        std::cout << "history.jsonl, line " << result.firstBadLine << ": " << result.problem << '\n';
    }
    return isGood ? 0 : 1;
}

int print(const Call &call, const history::History &history, const Filter &filter)
{
    std::vector<std::vector<std::string>> rows;
    for (const std::string &line : history.lines()) {
        const Json document = Json::parse(line, nullptr, false);
        if (!filter.fits(document)) {
            continue;
        }
        if (call.options.json) {
            std::cout << line << '\n';
        } else {
            rows.push_back(rowOf(document));
        }
    }
    std::cout << table(rows) << std::flush;
    return 0;
}

std::string readSince(const std::string &text)
{
    const auto time = history::parseSince(text);
    if (!time) {
        throw UsageError(
            "--since: '" + text +
            "' is no point in time; there are dates and times as 2026-01-31 and 2026-01-31T12:00, and "
            "30s, 15m, 2h, 3d, 1w before now");
    }
    return *time;
}

} // namespace

void addHistory(CLI::App &program, Action &action)
{
    CLI::App *command =
        program.add_subcommand("history", "Tells what was changed with displayctl, and by whom");
    auto wish = std::make_shared<Wish>();
    command
        ->add_option("--since", wish->since,
                     "only what came later: an ISO date or time, or 2h, 3d before now")
        ->type_name("T");
    command->add_flag(
        "--verify", wish->verify,
        "find the first line that was altered, removed or added; exit code 1 when there is one");
    command->footer(
        "Of all monitors, or of those that -m names. Each line is tied to the one before by its SHA-256.\n"
        "Examples:\n"
        "  displayctl history --since 2h\n"
        "  displayctl -m suite4-a --json history\n"
        "  displayctl history --verify");
    command->callback([wish, &action] {
        action = [wish](Call &call) {
            const std::string since = wish->since.empty() ? "" : readSince(wish->since);
            const history::History history{site::stateDirectory()};
            return wish->verify ? verify(call, history) : print(call, history, Filter{call, since});
        };
    });
}

} // namespace displayctl::command
