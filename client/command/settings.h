// SPDX-License-Identifier: Apache-2.0
// What the commands that read and change settings share.
#ifndef DISPLAYCTL_COMMAND_SETTINGS_H
#define DISPLAYCTL_COMMAND_SETTINGS_H

#include "command/command.h"
#include "model/names.h"
#include "model/plan.h"
#include "session/work.h"

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace displayctl::command
{

/** SETTING=VALUE as it was given. */
struct Assignment {
    model::Named named;
    model::Value value;
};

/** Reads SETTING=VALUE; throws UsageError or BadValue. */
[[nodiscard]] Assignment parseAssignment(std::string_view text, const site::CodeNames &names);

/** The settings of assignments on a monitor, now that its presets and the one in use are known. With
 * monitor.preset among them, preset.active is the one that it will be. Throws BadValue. */
[[nodiscard]] std::vector<model::Target> targetsOf(std::span<const Assignment> assignments,
                                                   const model::State &state);

/** The classes that have to be read before targetsOf() can tell. */
void addNameClasses(std::span<const Assignment> assignments, session::Classes &classes);

/** A report that tells why the monitor cannot be read. */
[[nodiscard]] Report failureReport(const wbem::Answer &answer);

/** One setting in JSON: value, unit, what it takes. */
[[nodiscard]] Json settingDocument(const model::Setting &setting, const model::Value &value,
                                   const site::CodeNames &names);

/** Changes in JSON, as in set, apply and undo. */
[[nodiscard]] Json changesDocument(std::span<const session::Change> changes, const site::CodeNames &names);
/** One line of text for a change that was made or was not needed; empty for one that failed. */
[[nodiscard]] std::string changeLine(const session::Change &change, const site::CodeNames &names);
/** What failed, a setting or an action, and why. */
struct Refusal {
    std::string what;
    session::Change change;
};
/** What a person is told about it; selector: how the monitor is named on the command line. */
[[nodiscard]] std::string refusalText(const Refusal &refusal, const std::string &monitor,
                                      const std::string &selector);

/** The command that takes ways out as model::wayOut() gives them: changes of settings, or an action. */
[[nodiscard]] std::string commandFor(const std::string &selector, const std::vector<std::string> &ways);

/** The text as one word of a shell's command line. */
[[nodiscard]] std::string quotedForShell(const std::string &text);

/** What is told of a change of several settings: a line each, refusals with their way out, the document. */
[[nodiscard]] Report changeReport(Call &call, const site::Monitor &monitor, const session::WorkReport &result,
                                  bool tellsUnchanged = true);

/** How the monitor is named after -m: as the file has it, else as a URL, quoted for a shell. */
[[nodiscard]] std::string selectorOf(const site::Monitor &monitor, const site::Configuration &configuration);

/** What a table is made of; the columns are aligned, and nothing follows the last text of a line. */
[[nodiscard]] std::string table(const std::vector<std::vector<std::string>> &rows);

/** How many columns a text takes on a terminal. */
[[nodiscard]] std::size_t width(std::string_view text);

} // namespace displayctl::command

#endif
