// SPDX-License-Identifier: Apache-2.0
#include "command/program.h"

#include "command/command.h"
#include "model/values.h"
#include "session/session.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string_view>

namespace displayctl
{

namespace
{

constexpr int wrongUsage = 2;

/** The exit code when this program itself cannot go on. */
int cannotGoOn()
{
    return exitCodeOf(session::Sent::atAll() ? session::Outcome::unknown : session::Outcome::refused);
}

/** Where no exception can get through, as before main(), when tables are filled, lack of memory ends here.
 * What else gets here is a mistake in the program, and ends as those do. */
[[noreturn]] void onTerminate()
{
    try {
        if (const std::exception_ptr problem = std::current_exception()) {
            std::rethrow_exception(problem);
        }
    } catch (const std::bad_alloc &error) {
        constexpr std::string_view told = "displayctl: there is not enough memory\n";
        static_cast<void>(!write(STDERR_FILENO, told.data(), told.size()));
        _exit(cannotGoOn());
    } catch (...) {
    }
    std::abort();
}

/** Before all others. */
[[gnu::init_priority(101)]] const struct Ending {
    Ending() noexcept
    {
        std::set_terminate(onTerminate);
    }
} ending;

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

/** Reads the command line, and does what it says. */
static int run(int argc, const char *const *argv)
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
    }
    return wrongUsage;
}

/** What was printed may still be on its way to a disk without room. */
static int ended(int code)
{
    if (std::cout.flush()) {
        return code;
    }
    std::cerr << "displayctl: the results cannot be written\n";
    return code == 0 ? cannotGoOn() : code;
}

int runProgram(int argc, const char *const *argv)
{
    try {
        return ended(run(argc, argv));
    } catch (const std::exception &error) {
        std::cerr << "displayctl: " << command::problemOf(error) << '\n';
        return cannotGoOn();
    }
}

} // namespace displayctl
