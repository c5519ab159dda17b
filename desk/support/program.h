// SPDX-License-Identifier: Apache-2.0
// What the desk's programs that serve have in common: the options that all take, how they start and how they
// end.
#ifndef DESK_SUPPORT_PROGRAM_H
#define DESK_SUPPORT_PROGRAM_H

#include <CLI/CLI.hpp>

#include <sys/types.h>

#include <functional>
#include <string>

namespace desk
{

struct ProgramOptions {
    std::string store;
    std::string queueKey;
    std::string readyFile;
};

/** Declares --version, --store, --queue-key and --ready-file; `announced` is what the ready file holds. */
void declareOptions(CLI::App &app, const std::string &program, const std::string &announced,
                    ProgramOptions &options);

/** Writes the line into the ready file, which comes into being whole; without a name it writes none. Throws
 * std::runtime_error when it cannot be written. */
void announce(const std::string &readyFile, const std::string &line, bool forOwnerAlone);

/** Reads the command line, makes its store and its queues those of the process, and serves. Returns the
 *  program's exit status: 2 for wrong usage, 1 for an exception, which it tells. */
[[nodiscard]] int runProgram(CLI::App &app, int argc, char **argv, const std::string &program,
                             const ProgramOptions &options, const std::function<void(key_t baseKey)> &serve);

} // namespace desk

#endif
