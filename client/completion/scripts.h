// SPDX-License-Identifier: Apache-2.0
// The completion scripts of the shells, as they stand beside this file. They all ask the program what may
// come next.
#ifndef DISPLAYCTL_COMPLETION_SCRIPTS_H
#define DISPLAYCTL_COMPLETION_SCRIPTS_H

#include <span>
#include <string_view>

namespace displayctl::completion
{

struct Script {
    std::string_view shell;
    std::string_view text;
};

[[nodiscard]] std::span<const Script> scripts();

/** Told to the scripts instead of words where the name of a file is wanted. */
inline constexpr std::string_view filesWanted = ":files";

} // namespace displayctl::completion

#endif
