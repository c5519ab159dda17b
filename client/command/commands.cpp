// SPDX-License-Identifier: Apache-2.0
// Every command, in the order of --help.
#include "command/command.h"

namespace displayctl::command
{

void addCommands(CLI::App &program, Action &action)
{
    addGet(program, action);
    addTree(program, action);
    addWatch(program, action);
    addHistory(program, action);
}

} // namespace displayctl::command
