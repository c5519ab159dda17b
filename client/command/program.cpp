// SPDX-License-Identifier: Apache-2.0
#include "command/program.h"

#include "command/command.h"
#include "history/history.h"
#include "model/values.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace displayctl
{

namespace
{

constexpr int wrongUsage = 2;
constexpr int internalError = 1;

void addOptions(CLI::App &program, command::Options &options)
{
    program
        .add_option("-m,--monitor", options.site.monitors,
                    "a name, label=LABEL, all, or a URL (http[s]://[user@]host:port[/namespace]); repeatable")
        ->allow_extra_args(false);
    program.add_option("-c,--config", options.site.configFile, "the file of monitors");
    program.add_flag("--json", options.json, "JSON on standard output; of several monitors one line each");
    program.add_option("-j,--jobs", options.jobs, "monitors at once")
        ->check(CLI::Range(1U, 10000U))
        ->capture_default_str();
    program.add_option("--timeout", options.timeoutSeconds, "seconds for each request")
        ->check(CLI::Range(0.001, 86400.0))
        ->capture_default_str();
    program.add_option("--ca-file", options.site.caFile, "certificates of the authorities that are trusted");
    program.add_flag("--insecure", options.site.insecure, "do not verify certificates");
    program.add_flag("--yes", options.yes, "do not ask");
    program.add_flag("--no-color", options.noColor, "no colours; also where NO_COLOR is set");
    program.add_flag("--quiet", options.quiet, "no progress, no notes");
}

/** Help and version, or what is wrong with the command line; the exit code. */
int tell(const CLI::App &program, const CLI::ParseError &error)
{
    if (error.get_exit_code() == 0) {
        return program.exit(error);
    }
    std::string text = error.what();
    if (const auto extra = program.remaining(); program.get_subcommands().empty() && !extra.empty()) {
        text = "there is no command '" + extra.front() + "'";
    }
    std::cerr << "displayctl: " << text << "\nRun with --help for more information.\n";
    return wrongUsage;
}

} // namespace

int runProgram(int argc, const char *const *argv)
{
    command::Call call;
    command::Action action;
    CLI::App program{"Reads, changes, explains and watches monitors by name.", "displayctl"};
    program.set_version_flag("--version", "displayctl " DISPLAYCTL_VERSION);
    program.require_subcommand(1);
    program.fallthrough();
    addOptions(program, call.options);
    command::addCommands(program, action);
    try {
        program.parse(argc, argv);
        return action(call);
    } catch (const CLI::ParseError &error) {
        return tell(program, error);
    } catch (const command::UsageError &error) {
        std::cerr << "displayctl: " << error.what() << '\n';
    } catch (const model::BadValue &error) {
        std::cerr << "displayctl: " << error.what() << '\n';
    } catch (const site::Error &error) {
        std::cerr << "displayctl: " << error.what() << '\n';
    } catch (const history::Error &error) {
        std::cerr << "displayctl: " << error.what() << '\n';
        return internalError;
    }
    return wrongUsage;
}

} // namespace displayctl
