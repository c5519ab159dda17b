// SPDX-License-Identifier: Apache-2.0
// Every command, in the order of --help.
#include "command/command.h"
#include "command/manual.h"

namespace displayctl::command
{

void addCommands(CLI::App &program, Action &action)
{
    addShow(program, action);
    addGet(program, action);
    addSet(program, action);
    addWhy(program, action);
    addRun(program, action);
    addExport(program, action);
    addDiff(program, action);
    addApply(program, action);
    addUndo(program, action);
    addTree(program, action);
    addWatch(program, action);
    addHistory(program, action);
    addNames(program, action);
    addExporter(program, action);
    addCompletion(program, action);
    addHelp(program, action);
    addManual(program, action);
}

} // namespace displayctl::command
