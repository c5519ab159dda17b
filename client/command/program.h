// SPDX-License-Identifier: Apache-2.0
#ifndef DISPLAYCTL_COMMAND_PROGRAM_H
#define DISPLAYCTL_COMMAND_PROGRAM_H

namespace displayctl
{

/** Runs displayctl with the arguments of main, and gives its exit code. */
[[nodiscard]] int runProgram(int argc, const char *const *argv);

} // namespace displayctl

#endif
