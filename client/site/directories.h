// SPDX-License-Identifier: Apache-2.0
// Where this user's files are.
#ifndef DISPLAYCTL_SITE_DIRECTORIES_H
#define DISPLAYCTL_SITE_DIRECTORIES_H

#include <filesystem>
#include <string>

namespace displayctl::site
{

/** The home of the user who runs the program. */
[[nodiscard]] std::filesystem::path homeDirectory();

/** $XDG_STATE_HOME/displayctl (~/.local/state/displayctl), made, for this user alone, when it is not there.
 * Throws Error when it cannot be made. */
[[nodiscard]] std::filesystem::path stateDirectory();

/** The file of monitors when none is named: DISPLAYCTL_CONFIG, else $XDG_CONFIG_HOME/displayctl/monitors.yaml
 * (~/.config/displayctl/monitors.yaml). */
[[nodiscard]] std::filesystem::path usualConfigFile();

/** The name of the user of this machine who runs the program. */
[[nodiscard]] std::string machineUser();

} // namespace displayctl::site

#endif
