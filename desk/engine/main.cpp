// SPDX-License-Identifier: Apache-2.0
// desk-engine: the display engine of the desk monitor as a program.
#include "engine/engine.h"

#include "process/unused_memory.h"
#include "support/environment.h"
#include "support/program.h"

#include <sys/time.h>

#include <csignal>
#include <cstdio>

namespace
{

constexpr const char *program = "desk-engine";

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

struct Options : desk::ProgramOptions {
    bool removeQueues = false;
    bool verbose = false;
};

void declare(CLI::App &app, Options &options)
{
    desk::declareOptions(app, program, "the queue key", options);
    app.add_flag("--remove-queues", options.removeQueues,
                 "remove the request and the reply queue at the end");
    app.add_flag("--verbose", options.verbose, "log every request");
}

void serve(const Options &options, key_t key)
{
    onSignal(SIGTERM, requestStop);
    onSignal(SIGINT, requestStop);
    startTimer();
    desk::Engine engine({desk::storePath(), key, desk::receiveTimeout(), options.verbose});
    fprintf(stderr, "%s: ready; settings in %s, queues from key 0x%x\n", program, desk::storePath().c_str(),
            static_cast<unsigned>(key));
    desk::announce(options.readyFile, std::to_string(key), false);
    process::releaseUnusedMemory(); // what only the start needed
    engine.run(stopRequested);
    if (options.removeQueues) {
        engine.removeQueues();
    }
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
    return desk::runProgram(app, argc, argv, program, options, [&](key_t key) { serve(options, key); });
}
