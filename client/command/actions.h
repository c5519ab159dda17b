// SPDX-License-Identifier: Apache-2.0
// Actions as they are named on the command line.
#ifndef DISPLAYCTL_COMMAND_ACTIONS_H
#define DISPLAYCTL_COMMAND_ACTIONS_H

#include "model/settings.h"

#include <string>
#include <vector>

namespace displayctl::command
{

/** An action with its argument, and the preset that a reset of the calibration is for. */
struct RunAction {
    const model::ActionRow *row = nullptr;
    int preset = 0; ///< 0: the one in use

    /** The action and its argument, as rules and history name it. */
    [[nodiscard]] std::string subject() const;
};

/** Reads ACTION [ARGUMENT] [PRESET]; throws UsageError with the actions there are. */
[[nodiscard]] RunAction parseAction(const std::vector<std::string> &words);

} // namespace displayctl::command

#endif
