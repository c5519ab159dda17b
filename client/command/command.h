// SPDX-License-Identifier: Apache-2.0
// What all commands share: the options of the call, the monitors it is for, and how their answers are given.
#ifndef DISPLAYCTL_COMMAND_COMMAND_H
#define DISPLAYCTL_COMMAND_COMMAND_H

#include "session/outcome.h"
#include "site/monitors.h"
#include "wbem/connection.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace CLI
{
class App;
}

namespace displayctl::command
{

using Json = nlohmann::ordered_json;
using session::Outcome;

/** Wrong usage: the program says what() and ends with exit code 2. */
class UsageError : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

/** The options that every command takes. */
struct Options {
    site::Options site;
    bool json = false;
    unsigned jobs = 64;
    double timeoutSeconds = 5;
    bool yes = false;
    bool noColor = false;
    bool quiet = false;

    [[nodiscard]] std::chrono::milliseconds timeout() const;
};

/** What a command says about one monitor. */
struct Report {
    Outcome outcome = Outcome::ok;
    std::string text;               // for standard output
    std::string message;            // what went wrong, for standard error
    std::string documentMessage;    // with --json the member "message"; empty: that message
    std::string note;               // for standard error as it stands, also of several monitors
    Json document = Json::object(); // with --json, beside "monitor", "outcome" and "message"
    int exitCode = -1;              // -1: that of the outcome
};

/** Why this program itself cannot go on, in words for a person. */
[[nodiscard]] std::string_view problemOf(const std::exception &error);

/** One call of displayctl. */
class Call
{
  public:
    Options options;
    bool isUndo = false; ///< what was interrupted need not be told: it is about to be taken back

    /** Reads the file of monitors. Throws site::Error. */
    [[nodiscard]] const site::Configuration &configuration();
    /** The monitors that are meant, with their passwords. Throws site::Error. */
    [[nodiscard]] const std::vector<site::Monitor> &monitors();
    /** Whether several monitors were meant, so that each line has to name its own. */
    [[nodiscard]] bool isMany();

    /** Calls work for each monitor, several at once, prints each report as it comes, and gives the exit code
     * of the call. isSummed: of several monitors the last line counts the outcomes. */
    [[nodiscard]] int forEachMonitor(const std::function<Report(const site::Monitor &)> &work,
                                     bool isSummed = false);

    /** Asks on the terminal; true when answered with yes, or with --yes. Without a terminal and without --yes
     * throws UsageError. */
    [[nodiscard]] bool confirm(const std::string &question) const;

    /** Whether colours may be used on standard output. */
    [[nodiscard]] bool hasColor() const;

  private:
    [[nodiscard]] Report attempt(const std::function<Report(const site::Monitor &)> &work,
                                 const site::Monitor &monitor);
    void print(const site::Monitor &monitor, const Report &report);
    void tellInterrupted();

    site::Configuration configuration_;
    std::vector<site::Monitor> monitors_;
    bool isRead_ = false;
    bool isChosen_ = false;
};

/** What a command runs once its arguments are read; gives the exit code. */
using Action = std::function<int(Call &)>;

/** Adds all commands to the program; when one is called, its action is put in `action`. */
void addCommands(CLI::App &program, Action &action);

/* One for each file of commands. */
void addShow(CLI::App &program, Action &action);
void addExport(CLI::App &program, Action &action);
void addDiff(CLI::App &program, Action &action);
void addApply(CLI::App &program, Action &action);
void addUndo(CLI::App &program, Action &action);
void addWhy(CLI::App &program, Action &action);
void addRun(CLI::App &program, Action &action);
void addHelp(CLI::App &program, Action &action);
void addNames(CLI::App &program, Action &action);
void addGet(CLI::App &program, Action &action);
void addSet(CLI::App &program, Action &action);
void addTree(CLI::App &program, Action &action);
void addWatch(CLI::App &program, Action &action);
void addHistory(CLI::App &program, Action &action);
void addExporter(CLI::App &program, Action &action);
void addCompletion(CLI::App &program, Action &action);

} // namespace displayctl::command

#endif
