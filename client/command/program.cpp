// SPDX-License-Identifier: Apache-2.0
#include "command/program.h"

#include <CLI/CLI.hpp>

namespace displayctl
{

int runProgram(int argc, const char *const *argv)
{
    CLI::App app{"Reads, changes, explains and watches monitors by name.", "displayctl"};
    app.set_version_flag("--version", "displayctl " DISPLAYCTL_VERSION);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    return 0;
}

} // namespace displayctl
