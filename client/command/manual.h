// SPDX-License-Identifier: Apache-2.0
#ifndef DISPLAYCTL_COMMAND_MANUAL_H
#define DISPLAYCTL_COMMAND_MANUAL_H

#include "command/command.h"

namespace displayctl::command
{

/** The manual page, and what --help tells of exit codes and the environment. */
void addManual(CLI::App &program, Action &action);

} // namespace displayctl::command

#endif
