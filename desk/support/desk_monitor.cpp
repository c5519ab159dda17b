// SPDX-License-Identifier: Apache-2.0
// desk-monitor: shows and changes what the support library and the engine work with.
#include "support/changes.h"
#include "support/environment.h"
#include "support/show.h"
#include "support/usage_error.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <functional>
#include <memory>

using namespace desk;

namespace
{

/** What the command line may give; a command uses some of it. */
struct Arguments {
    std::string store, queueKey;
    std::string what, name, value, state, argument;
    bool administrator = false;
};

struct Command {
    CLI::App *parser;
    std::function<void(const Arguments &)> act;
};

Command declareShow(CLI::App &app, Arguments &arguments)
{
    CLI::App *parser = app.add_subcommand("show", "print what the monitor holds");
    parser->add_option(
        "what", arguments.what,
        shownParts() +
            ", a setting's name (prints its value alone) or a\npart of one; everything when left out");
    return {parser, [](const Arguments &a) { show(a.what); }};
}

Command declareSet(CLI::App &app, Arguments &arguments)
{
    CLI::App *parser = app.add_subcommand("set", "change a setting, read-only ones included");
    parser
        ->add_option("setting", arguments.name,
                     "name as show settings lists it; presets: preset1.luminance ...")
        ->required();
    parser
        ->add_option("value", arguments.value,
                     "the new value; deployment_date: DD/MM/YYYY, or seconds since 1970-01-01 UTC")
        ->required();
    return {parser, [](const Arguments &a) { setSetting(a.name, a.value); }};
}

Command declareFault(CLI::App &app, Arguments &arguments)
{
    CLI::App *parser = app.add_subcommand("fault", "let the monitor misbehave, for tests and demonstrations");
    parser->footer(
        "Faults:" + faultList() +
        "\n\nExamples:\n  desk-monitor fault busy on\n"
        "  desk-monitor fault slow on 0.5\n  desk-monitor fault fail-read on GetColorSpaceInfoById\n"
        "  desk-monitor fault clear");
    parser->add_option("name", arguments.name, "a fault, or clear: switches all off")->required();
    parser->add_option("state", arguments.state, "on or off");
    parser->add_option("argument", arguments.argument, "what the fault takes");
    return {parser, [](const Arguments &a) { switchFault(a.name, a.state, a.argument); }};
}

Command declareUserAdd(CLI::App &user, Arguments &arguments)
{
    CLI::App *parser = user.add_subcommand("add", "add a user, or change one");
    parser->add_option("name", arguments.name, "the user's name")->required();
    parser->add_flag("--administrator", arguments.administrator, "may do what administrators alone may");
    return {parser, [](const Arguments &a) { addUser(a.name, a.administrator); }};
}

Command declareUserRemove(CLI::App &user, Arguments &arguments)
{
    CLI::App *parser = user.add_subcommand("remove", "remove a user");
    parser->add_option("name", arguments.name, "the user's name")->required();
    return {parser, [](const Arguments &a) { removeUser(a.name); }};
}

std::vector<Command> declare(CLI::App &app, Arguments &arguments)
{
    app.require_subcommand(1);
    app.set_version_flag("--version", "desk-monitor " DESK_VERSION);
    app.add_option("--store", arguments.store, "path of the settings store (default: $DESK_MONITOR_STORE)");
    app.add_option("--queue-key", arguments.queueKey,
                   "base key of the message queues, decimal or 0x... (default: $DESK_MONITOR_QUEUE_KEY)");
    std::vector<Command> commands = {declareShow(app, arguments), declareSet(app, arguments),
                                     declareFault(app, arguments)};
    CLI::App *user = app.add_subcommand("user", "users whom the monitor knows");
    user->require_subcommand(1);
    commands.push_back(declareUserAdd(*user, arguments));
    commands.push_back(declareUserRemove(*user, arguments));
    commands.push_back({app.add_subcommand("reset", "restore all factory values; users and faults stay"),
                        [](const Arguments &) { resetSettings(); }});
    CLI::App *queues = app.add_subcommand("queues", "the message queues");
    queues->require_subcommand(1);
    commands.push_back({queues->add_subcommand("remove", "remove the queues and what waits on them"),
                        [](const Arguments &) { removeQueues(); }});
    return commands;
}

void act(const std::vector<Command> &commands, const Arguments &arguments)
{
    if (!arguments.store.empty()) {
        setenv("DESK_MONITOR_STORE", arguments.store.c_str(), 1);
    }
    if (!arguments.queueKey.empty()) {
        setenv("DESK_MONITOR_QUEUE_KEY", arguments.queueKey.c_str(), 1);
    }
    makeStoreDirectory();
    for (const Command &command : commands) {
        if (command.parser->parsed()) {
            command.act(arguments);
        }
    }
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app{"Shows and changes the desk monitor: its settings, users and faults.\n"
                 "Every change is seen at once by all processes that use the same store."};
    Arguments arguments;
    const std::vector<Command> commands = declare(app, arguments);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    try {
        act(commands, arguments);
    } catch (const UsageError &error) {
        fprintf(stderr, "desk-monitor: %s\n", error.what());
        return 2;
    } catch (const std::exception &error) {
        fprintf(stderr, "desk-monitor: %s\n", error.what());
        return 1;
    }
    return 0;
}
