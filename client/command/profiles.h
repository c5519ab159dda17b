// SPDX-License-Identifier: Apache-2.0
// What export, diff, apply and the commands that save a profile first share.
#ifndef DISPLAYCTL_COMMAND_PROFILES_H
#define DISPLAYCTL_COMMAND_PROFILES_H

#include "command/settings.h"
#include "profile/profile.h"

#include <optional>
#include <string>
#include <vector>

namespace displayctl::command
{

/** Today in UTC, as YYYY-MM-DD. */
[[nodiscard]] std::string today();

/** Every class that a setting is read from that can be written. */
[[nodiscard]] session::Classes writableClasses();

/** Writes what can be set back to a file of the state directory, and gives its name. The answer that stood in
 * the way is put in failure. */
[[nodiscard]] std::string saveBefore(Call &call, session::Session &session,
                                     std::optional<wbem::Answer> &failure);

/** Which settings of a profile count that belong to one monitor: its name and place, its network. */
struct Identity {
    bool isIncluded = false; ///< of several monitors, too
    bool isSkipped = false;  ///< of one, too

    /** Adds the options for it. */
    void addTo(CLI::App &command);
};

/** The settings of a profile that are for a monitor: of several monitors not those that belong to one. */
struct Selected {
    std::vector<Assignment> assignments;
    std::vector<std::string> skipped; ///< names of settings that belong to one monitor
};
[[nodiscard]] Selected selectFor(const std::vector<profile::Entry> &entries, bool isMany, Identity identity);

/** A setting that is not as the profile has it. */
struct Difference {
    const model::Setting *setting;
    model::Value profile;
    model::Value monitor;
};

/** Adds the classes that have to be read to compare. */
void addClassesOf(const Selected &selected, session::Classes &classes);

/** What differs, of settings that can be read, in the order of the profile. Throws BadValue where the profile
 * names a preset that the monitor does not have. */
[[nodiscard]] std::vector<Difference> differencesOf(const Selected &selected, const model::State &state);

} // namespace displayctl::command

#endif
