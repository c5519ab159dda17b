// SPDX-License-Identifier: Apache-2.0
// What the engine and its senders share in memory, for each base key of queues: the tickets of the requests
// that are under way, and the messages that have passed.
//
// A request carries no correlation of its own, so the desk gives each a ticket. Its reply bears the same, and
// only the one who has the ticket takes it. The ticket is also where engine and sender agree on what becomes
// of a request: the engine claims it before it changes anything, the sender takes it back when it waits no
// longer, and whoever is first has decided. So what a sender was refused is never applied later.
#ifndef DESK_SUPPORT_BOARD_H
#define DESK_SUPPORT_BOARD_H

#include "support/kernel_objects.h"

#include <chrono>
#include <cstdint>
#include <vector>

namespace desk
{

using Ticket = std::uint32_t;
inline constexpr Ticket noTicket = 0;

/** Time since the machine was started: the same for all its processes. */
using Clock = std::chrono::steady_clock;

enum class Stage : std::uint32_t {
    closed,  // nobody's; also what a ticket shows that is no longer there
    waiting, // sent, or about to be
    claimed, // the engine is applying it
    done,    // the engine has done with it, and sent the reply if there is one
};

/** What became of a request. */
enum class Outcome : std::uint8_t {
    none,        // of the future; never logged
    answered,    // what became of each entry is in the answer
    notAwaited,  // applied or refused; its sender does not wait for an answer
    silent,      // the engine was told to be silent
    lost,        // the engine was told to lose the reply
    takenBack,   // its sender had given up; not applied
    tooOld,      // sent before this engine was started; not applied
    notServed,   // of a type, a source or a command that is not served; not applied
    storeFailed, // the settings store could not be used
};

/** The name of an outcome, as it is shown: "answered", "taken back". */
const char *nameOf(Outcome outcome);

/** One message and what became of it. */
struct LoggedMessage {
    std::uint64_t number;                       // from 1
    std::chrono::system_clock::time_point time; // when the engine took it
    std::chrono::nanoseconds
        duration; // from its sending to its end, or from its taking where that is unknown
    Outcome outcome;
    MessageBytes request;
    MessageBytes answer; // as the engine sent it, or would have; the request where nothing was applied
};

class Board
{
  public:
    static constexpr std::size_t ticketCount = 256;
    static constexpr std::size_t loggedCount = 1000;

    /** Throws KernelError. With Access::read the tickets must not be touched. */
    explicit Board(key_t key, SharedMemory::Access access = SharedMemory::Access::write);
    /** False when it was removed since: others use another one. */
    bool inPlace() const
    {
        return memory_.inPlace();
    }

    // ---- of the sender ----

    /** A ticket for a request that is sent now; noTicket when too many are under way. */
    [[nodiscard]] Ticket open();
    /** True when the engine has not claimed it and never will. */
    [[nodiscard]] bool takeBack(Ticket ticket);
    void close(Ticket ticket);
    /** Returns when the stage of the ticket is another one than the given, and after the time at the latest.
     */
    void waitForChange(Ticket ticket, Stage stage, std::chrono::nanoseconds longest) const;
    Stage stage(Ticket ticket) const;

    // ---- of the engine, of which there is one ----

    /** False when the sender has taken it back, or there is no such ticket. */
    [[nodiscard]] bool claim(Ticket ticket);
    /** Of a request that was claimed, or that is not going to be: wakes its sender. */
    void finish(Ticket ticket);
    /** When the request was sent; nothing before the machine was started when there is no such ticket. */
    Clock::time_point sentAt(Ticket ticket) const;
    /** Ends what an engine has left behind that was killed. */
    void finishClaimed();
    /** Closes the tickets of requests that were sent before and are done with: their senders have died. */
    std::vector<Ticket> closeForgotten(Clock::time_point before);
    void log(const LoggedMessage &message);

    // ---- of who watches ----

    /** The number of the newest message; 0 when there is none. */
    std::uint64_t newest() const;
    /** The messages after the one numbered, oldest first and not more than asked for, as far as they are
     * kept: the last loggedCount. */
    std::vector<LoggedMessage> messagesAfter(std::uint64_t number, std::size_t most = loggedCount) const;

  private:
    struct Contents;
    struct Slot;
    Slot &slotOf(Ticket ticket) const;
    bool advance(Ticket ticket, Stage from, Stage to);

    SharedMemory memory_;
    Contents &contents_;
};

} // namespace desk

#endif
