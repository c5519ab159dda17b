// SPDX-License-Identifier: Apache-2.0
// The display engine: takes requests from the request queue, applies them to the store and answers those
// whose senders wait.
#ifndef DESK_ENGINE_ENGINE_H
#define DESK_ENGINE_ENGINE_H

#include "engine/wire.h"
#include "support/store.h"

#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <string>

namespace desk
{

/** The kernel's form of a message. */
struct QueueMessage {
    long type;
    std::uint8_t bytes[8192]; // the longest message a queue takes by default
};

class Engine
{
  public:
    struct Options {
        std::string store;
        key_t queueKey;
        std::chrono::nanoseconds senderPatience; // how long a sender waits for its reply
        bool verbose;
    };

    explicit Engine(Options options);

    /** Works until *stop is set; signals interrupt the waiting. Throws std::runtime_error when the queues
     * cannot be used. */
    void run(const volatile sig_atomic_t &stop);

    /** Removes the request and the reply queue. */
    void removeQueues();

  private:
    Store &store();
    void openQueues();
    bool senderWaits(const wire::Request &request) const;
    void handle(const QueueMessage &message, std::size_t size, const volatile sig_atomic_t &stop);
    void apply(const wire::Request &request, wire::Bytes &answer);
    void waitWhenSlow(const volatile sig_atomic_t &stop);
    bool loseReply();
    void reply(const wire::Bytes &bytes);
    void clearForgottenReplies();

    Options options;
    std::unique_ptr<Store> opened;
    int requests = -1;
    int replies = -1;
};

} // namespace desk

#endif
