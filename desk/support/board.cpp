// SPDX-License-Identifier: Apache-2.0
#include "support/board.h"

#include <linux/futex.h>
#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>
#include <ctime>
#include <iterator>

namespace desk
{

namespace
{

// A word of a ticket's place holds its number and its stage: one comparison decides both.
constexpr unsigned stageBits = 2;
constexpr Ticket highestTicket = (Ticket{1} << 30) - 1;

constexpr std::uint32_t wordOf(Ticket ticket, Stage stage)
{
    return ticket << stageBits | static_cast<std::uint32_t>(stage);
}
constexpr Ticket ticketOf(std::uint32_t word)
{
    return word >> stageBits;
}
constexpr Stage stageOf(std::uint32_t word)
{
    return static_cast<Stage>(word & ((1u << stageBits) - 1));
}

std::int64_t now()
{
    return Clock::now().time_since_epoch().count();
}

// A logged message as words that are written and read one by one: a reader who comes in between finds another
// number after them than before.
struct PlainMessage {
    std::int64_t time;
    std::int64_t duration;
    MessageBytes request, answer;
    std::uint64_t outcome;
};
constexpr std::size_t plainWords = sizeof(PlainMessage) / sizeof(std::uint64_t);
static_assert(sizeof(PlainMessage) % sizeof(std::uint64_t) == 0);
using PlainWords = std::array<std::uint64_t, plainWords>;

} // namespace

struct Board::Slot {
    std::atomic<std::uint32_t> word;
    std::atomic<std::int64_t> sentAt;
};

// All zeros, as the kernel gives it, is an empty board.
struct Board::Contents {
    struct Entry {
        std::atomic<std::uint64_t> number; // of the message; 0 while it is written
        std::array<std::atomic<std::uint64_t>, plainWords> words;
    };

    std::atomic<Ticket> lastTicket;
    std::array<Slot, ticketCount> slots;
    std::atomic<std::uint64_t> newest;
    std::array<Entry, loggedCount> entries;
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free &&
              std::atomic<std::uint32_t>::is_always_lock_free);

const char *nameOf(Outcome outcome)
{
    static constexpr const char *names[] = {"none",    "answered",   "not awaited",
                                            "silent",  "reply lost", "taken back",
                                            "too old", "not served", "store failed"};
    const auto place = static_cast<std::size_t>(outcome);
    return place < std::size(names) ? names[place] : "unknown";
}

Board::Board(key_t key, SharedMemory::Access access)
    : memory_(key, sizeof(Contents), access), contents_(*static_cast<Contents *>(memory_.address()))
{
    // Not from 1: a reply of an earlier board may still lie on a queue.
    Ticket random = 0;
    if (access == SharedMemory::Access::write && contents_.lastTicket.load() == noTicket &&
        getrandom(&random, sizeof random, 0) == sizeof random) {
        Ticket none = noTicket;
        contents_.lastTicket.compare_exchange_strong(none, 1 + random % (highestTicket / 2));
    }
}

Board::Slot &Board::slotOf(Ticket ticket) const
{
    return contents_.slots[ticket % ticketCount];
}

bool Board::advance(Ticket ticket, Stage from, Stage to)
{
    std::uint32_t expected = wordOf(ticket, from);
    return slotOf(ticket).word.compare_exchange_strong(expected, wordOf(ticket, to));
}

Ticket Board::open()
{
    for (std::size_t attempt = 0; attempt < ticketCount; ++attempt) {
        const Ticket ticket = contents_.lastTicket.fetch_add(1) % highestTicket + 1;
        Slot &slot = slotOf(ticket);
        std::uint32_t word = slot.word.load();
        if (stageOf(word) == Stage::closed &&
            slot.word.compare_exchange_strong(word, wordOf(ticket, Stage::waiting))) {
            slot.sentAt.store(now());
            return ticket;
        }
    }
    return noTicket;
}

bool Board::takeBack(Ticket ticket)
{
    return advance(ticket, Stage::waiting, Stage::closed);
}

void Board::close(Ticket ticket)
{
    Slot &slot = slotOf(ticket);
    std::uint32_t word = slot.word.load();
    if (ticketOf(word) == ticket) {
        slot.word.compare_exchange_strong(word, wordOf(ticket, Stage::closed));
    }
}

void Board::waitForChange(Ticket ticket, Stage stage, std::chrono::nanoseconds longest) const
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(longest);
    const timespec time{static_cast<time_t>(seconds.count()), static_cast<long>((longest - seconds).count())};
    if (stage == Stage::closed) { // and the place perhaps another ticket's: there is nothing to look at
        nanosleep(&time, nullptr);
        return;
    }
    syscall(SYS_futex, &slotOf(ticket).word, FUTEX_WAIT, wordOf(ticket, stage), &time, nullptr, 0);
}

Stage Board::stage(Ticket ticket) const
{
    const std::uint32_t word = slotOf(ticket).word.load();
    return ticketOf(word) == ticket ? stageOf(word) : Stage::closed;
}

bool Board::claim(Ticket ticket)
{
    return advance(ticket, Stage::waiting, Stage::claimed);
}

void Board::finish(Ticket ticket)
{
    if (advance(ticket, Stage::claimed, Stage::done) || advance(ticket, Stage::waiting, Stage::done)) {
        syscall(SYS_futex, &slotOf(ticket).word, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
    }
}

Clock::time_point Board::sentAt(Ticket ticket) const
{
    const bool there = stage(ticket) != Stage::closed;
    return Clock::time_point(Clock::duration(there ? slotOf(ticket).sentAt.load() : 0));
}

void Board::finishClaimed()
{
    for (Slot &slot : contents_.slots) {
        const std::uint32_t word = slot.word.load();
        if (stageOf(word) == Stage::claimed) {
            finish(ticketOf(word));
        }
    }
}

std::vector<Ticket> Board::closeForgotten(Clock::time_point before)
{
    std::vector<Ticket> closed;
    for (Slot &slot : contents_.slots) {
        const std::uint32_t word = slot.word.load();
        if (stageOf(word) == Stage::done && slot.sentAt.load() < before.time_since_epoch().count() &&
            advance(ticketOf(word), Stage::done, Stage::closed)) {
            closed.push_back(ticketOf(word));
        }
    }
    return closed;
}

void Board::log(const LoggedMessage &message)
{
    const PlainMessage plain{message.time.time_since_epoch().count(), message.duration.count(),
                             message.request, message.answer, static_cast<std::uint64_t>(message.outcome)};
    PlainWords words;
    memcpy(words.data(), &plain, sizeof plain);
    const std::uint64_t number = contents_.newest.load(std::memory_order_relaxed) + 1;
    Contents::Entry &entry = contents_.entries[number % loggedCount];
    entry.number.store(0, std::memory_order_relaxed);
    for (std::size_t i = 0; i < plainWords; ++i) {
        entry.words[i].store(words[i], std::memory_order_release); // none before the zero
    }
    entry.number.store(number, std::memory_order_release);
    contents_.newest.store(number, std::memory_order_release);
}

std::uint64_t Board::newest() const
{
    return contents_.newest.load(std::memory_order_acquire);
}

std::vector<LoggedMessage> Board::messagesAfter(std::uint64_t number, std::size_t most) const
{
    std::vector<LoggedMessage> messages;
    const std::uint64_t last = newest();
    for (std::uint64_t i = std::max(number + 1, last < loggedCount ? 1 : last - loggedCount + 1);
         i <= last && messages.size() < most; ++i) {
        const Contents::Entry &entry = contents_.entries[i % loggedCount];
        if (entry.number.load(std::memory_order_acquire) != i) {
            continue; // overwritten meanwhile
        }
        PlainWords words;
        for (std::size_t k = 0; k < plainWords; ++k) {
            words[k] = entry.words[k].load(std::memory_order_acquire); // none after the second look
        }
        if (entry.number.load(std::memory_order_relaxed) != i) {
            continue;
        }
        PlainMessage plain;
        memcpy(&plain, words.data(), sizeof plain);
        messages.push_back(
            {i, std::chrono::system_clock::time_point(std::chrono::system_clock::duration(plain.time)),
             std::chrono::nanoseconds(plain.duration), static_cast<Outcome>(plain.outcome), plain.request,
             plain.answer});
    }
    return messages;
}

} // namespace desk
