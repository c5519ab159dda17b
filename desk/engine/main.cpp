#include "engine/engine.h"

#include "support/environment.h"

#include <CLI/CLI.hpp>

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <cstddef>
#include <cstdio>
#include <cstring>

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
    action.sa_handler = handler; /* without SA_RESTART: signals are to interrupt the waiting */
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

/* The timer ends a wait now and then, for the housekeeping, and so that a stop signal which arrives just
 * before a wait is not missed. */
void startTimer()
{
    constexpr suseconds_t microseconds = 250'000;
    const itimerval period{{0, microseconds}, {0, microseconds}};
    onSignal(SIGALRM, interruptWait);
    setitimer(ITIMER_REAL, &period, nullptr);
}

/* Two engines on the same queues would take one another's requests. The name is bound while the process lives
 * and gone with it, however it ends. */
bool claimQueues(key_t key)
{
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    const int length =
        snprintf(name.sun_path + 1, sizeof name.sun_path - 1, "desk-engine-%x", static_cast<unsigned>(key));
    const int claim = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (claim == -1)
        return false;
    const auto size =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + static_cast<std::size_t>(length));
    return bind(claim, reinterpret_cast<const sockaddr *>(&name), size) == 0;
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app{
        "Display engine of the desk monitor: takes register writes and refresh requests from the request\n"
        "queue, applies them to the settings store and answers those whose senders wait.\n"
        "What cannot be applied is logged on standard error. SIGTERM and SIGINT end it."};
    std::string store, queueKey;
    bool removeQueues = false, verbose = false;
    app.add_option("--store", store, "path of the settings store (default: $DESK_MONITOR_STORE)");
    app.add_option("--queue-key", queueKey,
                   "base key of the message queues, decimal or 0x... (default: $DESK_MONITOR_QUEUE_KEY)");
    app.add_flag("--remove-queues", removeQueues, "remove the request and the reply queue at the end");
    app.add_flag("--verbose", verbose, "log every request");
    CLI11_PARSE(app, argc, argv);

    if (!store.empty())
        setenv("DESK_MONITOR_STORE", store.c_str(), 1);
    if (!queueKey.empty())
        setenv("DESK_MONITOR_QUEUE_KEY", queueKey.c_str(), 1);
    const std::optional<key_t> key = desk::queueBaseKey();
    if (!key) {
        fprintf(stderr, "desk-engine: %s is not a usable queue key\n", getenv("DESK_MONITOR_QUEUE_KEY"));
        return 2;
    }
    if (!claimQueues(*key)) {
        fprintf(stderr, "desk-engine: another engine serves the queues of key 0x%x\n",
                static_cast<unsigned>(*key));
        return 1;
    }
    onSignal(SIGTERM, requestStop);
    onSignal(SIGINT, requestStop);
    startTimer();
    try {
        desk::Engine engine({desk::storePath(), *key, desk::receiveTimeout(), verbose});
        fprintf(stderr, "desk-engine: ready; settings in %s, queues from key 0x%x\n",
                desk::storePath().c_str(), static_cast<unsigned>(*key));
        engine.run(stopRequested);
        if (removeQueues)
            engine.removeQueues();
    } catch (const std::exception &error) {
        fprintf(stderr, "desk-engine: %s\n", error.what());
        return 1;
    }
    return 0;
}
