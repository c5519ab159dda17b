// SPDX-License-Identifier: Apache-2.0
// The manual page, made from what --help prints, and from the texts below, which --help prints as well.
#include "command/manual.h"

#include <CLI/CLI.hpp>

#include <array>
#include <iostream>

namespace displayctl::command
{

namespace
{

struct Entry {
    std::string_view name;
    std::string_view text;
};

constexpr std::array environment{
    Entry{
        "DISPLAYCTL_CONFIG",
        "the file of monitors; without it monitors.yaml in the directory displayctl of the user's configuration"},
    Entry{"DISPLAYCTL_MONITOR", "the monitor, where no --monitor is given"},
    Entry{"DISPLAYCTL_PASSWORD",
          "the password; else it is read from the file that the file of monitors names, or asked "
          "for on a terminal; it never stands on a command line"},
    Entry{"NO_COLOR", "no colours"},
};

constexpr std::array exitCodes{
    Entry{"0", "done, also when some monitors were changed and others already right"},
    Entry{"1", "refused by the monitor, or busy"},
    Entry{"2", "wrong usage, an unknown setting, a value that no monitor takes"},
    Entry{"3", "not reachable, or no answer in time"},
    Entry{"4", "login or rights"},
    Entry{"5", "of several monitors some failed in different ways, or beside others that did not"},
    Entry{"6", "the value read back is not the one set, or nobody can know"},
    Entry{"7", "differences were found"},
};

constexpr std::string_view names =
    "A setting has a dotted name, such as preset.3.luminance, which may be shortened to any unambiguous run of its last "
    "components. Results go to standard output, everything else to standard error.";

template <typename Entries>
std::string listed(std::string_view title, const Entries &entries)
{
    constexpr std::size_t column = 22;
    std::string text = std::string{title} + ":\n";
    for (const Entry &entry : entries) {
        std::string line = "  " + std::string{entry.name};
        line.resize(std::max(line.size() + 2, column), ' ');
        text += line + std::string{entry.text} + '\n';
    }
    return text;
}

/** Text for roff: signs that it would take for its own. */
std::string roff(std::string_view text)
{
    std::string result;
    bool isAtBegin = true;
    for (const char c : text) {
        if (isAtBegin && (c == '.' || c == '\'')) {
            result += "\\&";
        }
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
        isAtBegin = c == '\n';
    }
    return result;
}

void printOptions(const CLI::App &app)
{
    for (const CLI::Option *option : app.get_options()) {
        if (option->get_group().empty() || option->get_name().empty() || option->get_positional()) {
            continue;
        }
        std::string signs = option->get_name(false, true);
        if (const std::size_t comma = signs.find(','); comma != std::string::npos) {
            signs.replace(comma, 1, ", ");
        }
        const bool hasValue = option->get_items_expected_max() > 0;
        const std::string type = option->get_type_name().substr(0, option->get_type_name().find(':'));
        const std::string preset = option->get_default_str();
        std::cout << ".TP\n.B " << roff(signs) << (hasValue ? " \\fI" + roff(type) + "\\fR" : "") << '\n'
                  << roff(option->get_description())
                  << (preset.empty() ? "" : " (" + roff(preset) + " unless given)") << '\n';
    }
}

void printCommand(const CLI::App &command)
{
    std::string usage = "displayctl " + command.get_name();
    for (const CLI::Option *option : command.get_options()) {
        if (option->get_positional()) {
            const std::string name = option->get_name(true);
            const std::string several = option->get_items_expected_max() > 1 ? "..." : "";
            usage += option->get_required() ? ' ' + name + several : " [" + name + several + ']';
        }
    }
    std::cout << ".SS " << roff(usage) << '\n' << roff(command.get_description()) << ".\n";
    printOptions(command);
    if (!command.get_footer().empty()) {
        std::cout << ".PP\n.nf\n" << roff(command.get_footer()) << "\n.fi\n";
    }
}

template <typename Entries>
void printEntries(std::string_view title, const Entries &entries)
{
    std::cout << ".SH " << title << '\n';
    for (const Entry &entry : entries) {
        std::cout << ".TP\n.B " << roff(entry.name) << '\n' << roff(entry.text) << '\n';
    }
}

int printPage(const CLI::App &program)
{
    std::cout
        << ".\\\" Made by `displayctl __manual` from the texts of --help; the target displayctl-manual renews it.\n"
           ".TH DISPLAYCTL 1 2026-11-22 \"libcmpiDisplayManagement "
        << DISPLAYCTL_VERSION << "\" \"Display management\"\n.SH NAME\ndisplayctl \\- "
        << "read, change, explain and watch monitors by name\n"
           ".SH SYNOPSIS\n.B displayctl\n.RB [ \\-m\n.IR MONITOR ]...\n.RI [ OPTIONS ]\n.I COMMAND\n\\&...\n"
           ".SH DESCRIPTION\n"
        << roff(program.get_description()) << '\n'
        << roff(names) << "\n.SH OPTIONS\n";
    printOptions(program);
    std::cout << ".SH COMMANDS\n";
    for (const CLI::App *command : program.get_subcommands([](const CLI::App *) { return true; })) {
        if (!command->get_group().empty()) {
            printCommand(*command);
        }
    }
    printEntries("ENVIRONMENT", environment);
    printEntries("\"EXIT STATUS\"", exitCodes);
    std::cout << ".SH \"SEE ALSO\"\n.BR display\\-host (8)\n";
    return 0;
}

} // namespace

void addManual(CLI::App &program, Action &action)
{
    program.footer(std::string{names} + "\n\n" + listed("Environment", environment) + '\n' +
                   listed("Exit codes", exitCodes));
    CLI::App *page = program.add_subcommand("__manual", "Prints the manual page");
    page->group("");
    page->callback([&program, &action] { action = [&program](Call &) { return printPage(program); }; });
}

} // namespace displayctl::command
