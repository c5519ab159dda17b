// SPDX-License-Identifier: Apache-2.0
// Lets requests into the providers.
#ifndef HOST_CORE_PROVIDER_GATE_H
#define HOST_CORE_PROVIDER_GATE_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace host
{

/** Lets a number of requests at a time into the providers, in the order of their arrival. The up-calls of a
 * request, which come from within, pass.
 *
 * No user keeps the others out: a user has at most half of the places inside and as many in the queue (but
 * always one); further requests of his line up behind those. So with one place inside, a newcomer waits for
 * the request inside and for one of each user who is before him. */
class ProviderGate
{
  public:
    explicit ProviderGate(unsigned calls = 1);

    /** How many requests may be inside, at least one. */
    void setCalls(unsigned calls);

    /** Waits for the turn of the request; false when it has not come in time. */
    [[nodiscard]] bool enter(std::uint64_t request, std::string_view user,
                             std::chrono::milliseconds patience);

    /** For each enter() that returned true. */
    void leave(std::uint64_t request);

    /** How many requests wait. */
    std::size_t waiting();

  private:
    struct User;
    using Users = std::map<std::string, User, std::less<>>;

    struct Inside {
        unsigned entries;
        Users::iterator user;
    };
    using Requests = std::map<std::uint64_t, Inside>;

    // All memory is taken before a request lines up: whatever moves it on cannot fail.
    struct Waiter {
        Requests::node_type place; // among those inside, of the request
        Users::iterator user{};
        bool isQueued = false;
        bool isAdmitted = false;
        std::condition_variable turn{};
    };

    struct User {
        unsigned inside = 0;
        unsigned queued = 0;
        std::list<Waiter *> behind; // who waits for a place in the queue
    };

    void moveUp(User &user);
    void admit();
    void letIn(Waiter &waiter);
    void giveUp(Waiter &waiter);
    void forgetIfIdle(Users::iterator user);

    std::mutex mutex_;
    unsigned calls_ = 1;
    unsigned share_ = 1; // of one user
    Requests inside_;
    std::list<Waiter *> queue_;
    Users users_;
};

} // namespace host

#endif
