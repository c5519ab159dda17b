// SPDX-License-Identifier: Apache-2.0
#include "support/program.h"

#include "support/environment.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace desk
{

void declareOptions(CLI::App &app, const std::string &program, const std::string &announced,
                    ProgramOptions &options)
{
    app.set_version_flag("--version", program + " " DESK_VERSION);
    app.add_option("--store", options.store, "path of the settings store (default: $DESK_MONITOR_STORE)");
    app.add_option("--queue-key", options.queueKey,
                   "base key of the message queues, decimal or 0x... (default: $DESK_MONITOR_QUEUE_KEY)");
    app.add_option("--ready-file", options.readyFile, "written when the program serves, with " + announced);
}

void announce(const std::string &readyFile, const std::string &line, bool forOwnerAlone)
{
    if (readyFile.empty()) {
        return;
    }
    const std::string temporary = readyFile + ".new";
    const mode_t usual = umask(077);
    umask(forOwnerAlone ? usual | 077 : usual);
    std::ofstream stream(temporary);
    umask(usual);
    stream << line << '\n';
    stream.close();
    if (!stream || rename(temporary.c_str(), readyFile.c_str()) != 0) {
        throw std::runtime_error("the ready file " + readyFile + " cannot be written: " + strerror(errno));
    }
}

int runProgram(CLI::App &app, int argc, char **argv, const std::string &program,
               const ProgramOptions &options, const std::function<void(key_t baseKey)> &serve)
{
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    if (!options.store.empty()) {
        setenv("DESK_MONITOR_STORE", options.store.c_str(), 1);
    }
    if (!options.queueKey.empty()) {
        setenv("DESK_MONITOR_QUEUE_KEY", options.queueKey.c_str(), 1);
    }
    try {
        const std::optional<key_t> key = queueBaseKey();
        if (!key) {
            fprintf(stderr, "%s: %s is not a usable queue key\n", program.c_str(),
                    getenv("DESK_MONITOR_QUEUE_KEY"));
            return 2;
        }
        serve(*key);
        return 0;
    } catch (const std::exception &error) {
        fprintf(stderr, "%s: %s\n", program.c_str(), error.what());
        return 1;
    }
}

} // namespace desk
