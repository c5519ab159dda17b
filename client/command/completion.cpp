// SPDX-License-Identifier: Apache-2.0
// completion: prints the scripts for the shells, and answers them.
#include "command/command.h"
#include "completion/complete.h"
#include "completion/scripts.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <memory>

namespace displayctl::command
{

namespace
{

int printScript(const std::string &shell)
{
    std::cout << std::ranges::find(completion::scripts(), shell, &completion::Script::shell)->text;
    return 0;
}

int printWords(const CLI::App &program, const std::vector<std::string> &words)
{
    const completion::Completion found = completion::complete(program, words);
    if (found.isFile) {
        std::cout << completion::filesWanted << '\n';
    }
    for (const std::string &word : found.words) {
        std::cout << word << '\n';
    }
    return 0;
}

} // namespace

void addCompletion(CLI::App &program, Action &action)
{
    CLI::App *command = program.add_subcommand("completion", "Prints the completion script of a shell");
    auto shell = std::make_shared<std::string>();
    command->add_option("SHELL", *shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    command->footer("It completes commands, options, settings, their values and the names of monitors.\n"
                    "Examples:\n"
                    "  eval \"$(displayctl completion bash)\"          # in ~/.bashrc\n"
                    "  eval \"$(displayctl completion zsh)\"           # in ~/.zshrc, after compinit\n"
                    "  displayctl completion fish | source           # in ~/.config/fish/config.fish");
    command->callback([shell, &action] { action = [shell](Call &) { return printScript(*shell); }; });

    CLI::App *asked = program.add_subcommand("__complete", "What may come next, for the scripts");
    asked->group("");
    auto words = std::make_shared<std::vector<std::string>>();
    asked->add_option("WORD", *words);
    asked->callback([words, &program, &action] {
        action = [words, &program](Call &) { return printWords(program, *words); };
    });
}

} // namespace displayctl::command
