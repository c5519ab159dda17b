// SPDX-License-Identifier: Apache-2.0
// desk-engine: the display engine of the desk monitor as a program.
#include "engine/engine.h"

#include "support/environment.h"

#include <CLI/CLI.hpp>

#include <sys/time.h>

#include <cstdio>
#include <cstring>
#include <fstream>

namespace
{

volatile sig_atomic_t stopRequested = 0;

void requestStop(int)
{
    stopRequested = 1;
}

void interruptWait(int) {}

void onSignal(int signal, void (*handler)(int))
{
    struct sigaction action {
    };
    action.sa_handler = handler; // without SA_RESTART: signals are to interrupt the waiting
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

/** Ends a wait now and then, for the housekeeping, and so that a stop signal which arrives just before a wait
 * is not missed. */
void startTimer()
{
    const itimerval period{{1, 0}, {1, 0}};
    onSignal(SIGALRM, interruptWait);
    setitimer(ITIMER_REAL, &period, nullptr);
}

struct Options {
    std::string store;
    std::string queueKey;
    std::string readyFile;
    bool removeQueues = false;
    bool verbose = false;
};

void declare(CLI::App &app, Options &options)
{
    app.set_version_flag("--version", "desk-engine " DESK_VERSION);
    app.add_option("--store", options.store, "path of the settings store (default: $DESK_MONITOR_STORE)");
    app.add_option("--queue-key", options.queueKey,
                   "base key of the message queues, decimal or 0x... (default: $DESK_MONITOR_QUEUE_KEY)");
    app.add_option("--ready-file", options.readyFile, "written when the engine serves, with the queue key");
    app.add_flag("--remove-queues", options.removeQueues,
                 "remove the request and the reply queue at the end");
    app.add_flag("--verbose", options.verbose, "log every request");
}

/** The file comes into being whole. */
void announce(const std::string &file, key_t key)
{
    fprintf(stderr, "desk-engine: ready; settings in %s, queues from key 0x%x\n", desk::storePath().c_str(),
            static_cast<unsigned>(key));
    if (file.empty()) {
        return;
    }
    const std::string temporary = file + ".new";
    std::ofstream stream(temporary);
    stream << key << '\n';
    stream.close();
    if (!stream || rename(temporary.c_str(), file.c_str()) != 0) {
        throw std::runtime_error("the ready file " + file + " cannot be written: " + strerror(errno));
    }
}

int serve(const Options &options)
{
    const std::optional<key_t> key = desk::queueBaseKey();
    if (!key) {
        fprintf(stderr, "desk-engine: %s is not a usable queue key\n", getenv("DESK_MONITOR_QUEUE_KEY"));
        return 2;
    }
    onSignal(SIGTERM, requestStop);
    onSignal(SIGINT, requestStop);
    startTimer();
    desk::Engine engine({desk::storePath(), *key, desk::receiveTimeout(), options.verbose});
    announce(options.readyFile, *key);
    engine.run(stopRequested);
    if (options.removeQueues) {
        engine.removeQueues();
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app{
        "Display engine of the desk monitor: takes register writes and refresh requests from the request\n"
        "queue, applies them to the settings store and answers those whose senders wait.\n"
        "What cannot be applied is logged on standard error. SIGTERM and SIGINT end it."};
    Options options;
    declare(app, options);
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
        return serve(options);
    } catch (const std::exception &error) {
        fprintf(stderr, "desk-engine: %s\n", error.what());
        return 1;
    }
}
