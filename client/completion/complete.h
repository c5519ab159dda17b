// SPDX-License-Identifier: Apache-2.0
// What may stand in the place of the word that is being typed: for the completion of all shells.
#ifndef DISPLAYCTL_COMPLETION_COMPLETE_H
#define DISPLAYCTL_COMPLETION_COMPLETE_H

#include <span>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace displayctl::completion
{

struct Completion {
    std::vector<std::string> words; // those that begin with what was typed; one that ends with = goes on
    bool isFile = false;            // the name of a file is wanted
};

/** words: those behind the program's name, the last one as far as it was typed. */
[[nodiscard]] Completion complete(const CLI::App &program, std::span<const std::string> words);

} // namespace displayctl::completion

#endif
