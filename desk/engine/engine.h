// SPDX-License-Identifier: Apache-2.0
// The display engine: takes requests from the request queue, applies them to the store and answers those
// whose senders wait.
#ifndef DESK_ENGINE_ENGINE_H
#define DESK_ENGINE_ENGINE_H

#include "engine/wire.h"
#include "process/unused_memory.h"
#include "support/board.h"
#include "support/store.h"

#include <sys/types.h>

#include <array>
#include <chrono>
#include <csignal>
#include <memory>
#include <string>

namespace desk
{

class Engine
{
  public:
    struct Options {
        std::string store;
        key_t queueKey;
        std::chrono::nanoseconds senderPatience; // how long a sender waits for its reply
        bool verbose;
    };

    /** Throws when another engine serves the queues, and when queues or store cannot be used. */
    explicit Engine(Options options);

    /** Works until stop is set; signals interrupt the waiting. Throws when the queues cannot be used. */
    void run(const volatile sig_atomic_t &stop);

    /** Removes the queues, and what else belongs to their key. */
    void removeQueues();

  private:
    /** A request that was taken from the queue. */
    struct Work {
        Ticket ticket;
        wire::Request request;
        wire::Bytes answer;     // the request's bytes, with what became of each entry
        Clock::time_point sent; // zero when unknown
    };
    using Accepted = std::array<bool, wire::mostEntries>;

    Store &store();
    void openQueues();
    void handle(Ticket ticket, const wire::Bytes &bytes, const volatile sig_atomic_t &stop);
    Outcome serve(Work &work, const volatile sig_atomic_t &stop);
    Outcome answer(const Work &work, const Faults &faults);
    void apply(Work &work);
    void loseReply();
    void reply(const Work &work);
    void clearForgotten();

    Options options_;
    EnginePlace place_;
    Clock::time_point started_;
    std::unique_ptr<Board> board_;
    std::unique_ptr<Store> opened_;
    int requests_ = -1;
    int replies_ = -1;
    process::QuietTime quiet_;
};

} // namespace desk

#endif
