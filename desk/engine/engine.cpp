// SPDX-License-Identifier: Apache-2.0
#include "engine/engine.h"

#include "engine/effects.h"
#include "support/environment.h"
#include "support/values.h"

#include <sys/ipc.h>
#include <sys/msg.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <iterator>

namespace desk
{

namespace
{

/** The kernel's form of a message, of any length that a queue takes by default. */
struct AnyMessage {
    long ticket;
    std::uint8_t bytes[8192];
};

__attribute__((format(printf, 1, 2))) void log(const char *format, ...)
{
    char line[512];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    fprintf(stderr, "desk-engine: %s\n", line);
}

void say(const std::string &line)
{
    log("%s", line.c_str());
}

constexpr int registerOf(Key setting)
{
    return setting.row().registerId;
}

/** The senders that do not wait: those of the two services' on/off switches, of the change between DHCP and
 * static addresses, and of a whole static configuration. Every other sender waits for one reply. */
bool senderWaits(const wire::Request &request)
{
    constexpr int mode = registerOf("ip_configuration_mode");
    constexpr int alone[] = {registerOf("remote_management"), registerOf("ws_management"), mode};
    constexpr int together[] = {mode, registerOf("ipv4_address"), registerOf("ipv4_subnet"),
                                registerOf("ipv4_gateway")};
    if (request.command != wire::setRequest || request.group != remoteGroup) {
        return true;
    }
    const wire::Entry *entries = request.entries;
    if (request.count == 1) {
        return std::find(std::begin(alone), std::end(alone), entries[0].registerId) == std::end(alone);
    }
    return request.count != static_cast<int>(std::size(together)) ||
           !std::equal(std::begin(together), std::end(together), entries,
                       [](int id, const wire::Entry &entry) { return id == entry.registerId; });
}

/** Why a request is not served here; empty when it is. */
std::string refusal(const wire::Request &request)
{
    if (request.type != wire::messageType) {
        return "a message of type " + std::to_string(request.type) + " instead of " +
               std::to_string(wire::messageType);
    }
    if (request.source != wire::sourceWsMan) {
        return "a message from source " + std::to_string(request.source) + ", which is not served here";
    }
    if (request.command != wire::setRequest && request.command != wire::getRequest) {
        return "a message with process command " + std::to_string(request.command) +
               ", which is not served here";
    }
    return {};
}

/** Returns after as long as the fault slow says, or when the engine is to stop. */
void waitWhenSlow(const Faults &faults, const volatile sig_atomic_t &stop)
{
    const auto slow = faults.find("slow");
    if (slow == faults.end()) {
        return;
    }
    constexpr double longest = 3600;
    double seconds = 0;
    parseSeconds(slow->second, seconds);
    const Clock::time_point end =
        Clock::now() + std::chrono::nanoseconds(static_cast<long long>(std::fmin(seconds, longest) * 1e9));
    while (stop == 0) {
        const auto left = std::chrono::nanoseconds(end - Clock::now()).count();
        if (left <= 0) {
            return;
        }
        const timespec pause{static_cast<time_t>(left / 1'000'000'000),
                             static_cast<long>(left % 1'000'000'000)};
        nanosleep(&pause, nullptr);
    }
}

} // namespace

Engine::Engine(Options chosen)
    : options_(std::move(chosen)), place_(options_.queueKey), started_(Clock::now())
{
    openQueues();
    board_->finishClaimed();
    store();
}

Store &Engine::store()
{
    return openedStore(opened_, options_.store, say);
}

void Engine::openQueues()
{
    board_ = std::make_unique<Board>(options_.queueKey);
    requests_ = obtainQueue(options_.queueKey + wire::requestQueue);
    replies_ = obtainQueue(options_.queueKey + wire::replyQueue);
}

void Engine::removeQueues()
{
    removeSharedMemory(options_.queueKey);
    msgctl(requests_, IPC_RMID, nullptr);
    msgctl(replies_, IPC_RMID, nullptr);
    place_.remove();
}

void Engine::run(const volatile sig_atomic_t &stop)
{
    static AnyMessage message;
    while (stop == 0) {
        const ssize_t size = msgrcv(requests_, &message, sizeof message.bytes, 0, MSG_NOERROR);
        if (size == static_cast<ssize_t>(wire::messageSize)) {
            wire::Bytes bytes;
            memcpy(bytes.data(), message.bytes, bytes.size());
            quiet_.end();
            handle(static_cast<Ticket>(message.ticket), bytes, stop);
        } else if (size >= 0) {
            log("a message of %zd bytes instead of %zu; dropped", size, wire::messageSize);
        } else if (errno == EINTR) {
            clearForgotten(); // the timer's signal
            quiet_.tick();
        } else if (errno == EIDRM || errno == EINVAL) {
            log("the request queue was removed; it is created again");
            openQueues();
        } else {
            throw std::runtime_error(std::string("requests cannot be received: ") + strerror(errno));
        }
    }
}

void Engine::handle(Ticket ticket, const wire::Bytes &bytes, const volatile sig_atomic_t &stop)
{
    LoggedMessage message{};
    message.time = std::chrono::system_clock::now();
    message.request = bytes;
    const Clock::time_point taken = Clock::now();
    Work work{ticket, wire::decode(bytes), bytes, board_->sentAt(ticket)};
    message.outcome = serve(work, stop);
    board_->finish(ticket);
    if (message.outcome == Outcome::notAwaited) {
        board_->close(ticket);
    }
    message.answer = work.answer;
    message.duration = Clock::now() - (work.sent == Clock::time_point() ? taken : work.sent);
    board_->log(message);
}

Outcome Engine::serve(Work &work, const volatile sig_atomic_t &stop)
{
    const wire::Request &request = work.request;
    if (const std::string reason = refusal(request); !reason.empty()) {
        log("%s; dropped", reason.c_str());
        return Outcome::notServed;
    }
    if (options_.verbose) {
        log("%s request, group %d, %d entries", request.command == wire::setRequest ? "set" : "get",
            request.group, request.count);
    }
    if (work.sent != Clock::time_point() && work.sent < started_) {
        log("a request of group %d is older than this engine; dropped", request.group);
        return Outcome::tooOld;
    }
    try {
        const Faults faults = store().read().faults;
        waitWhenSlow(faults, stop);
        if (!board_->claim(work.ticket)) {
            log("a request of group %d was taken back, as its sender waits no longer; not applied",
                request.group);
            return Outcome::takenBack;
        }
        apply(work);
        return answer(work, faults);
    } catch (const StoreError &error) {
        // The sender takes any answer as success, so that only silence can tell it of the failure.
        log("%s; a request of group %d is not answered", error.what(), request.group);
        opened_.reset();
        return Outcome::storeFailed;
    }
}

Outcome Engine::answer(const Work &work, const Faults &faults)
{
    if (!senderWaits(work.request)) {
        return Outcome::notAwaited;
    }
    if (faults.contains("silent")) {
        log("told to be silent: a request of group %d is not answered", work.request.group);
        return Outcome::silent;
    }
    if (faults.contains("lose-reply")) {
        loseReply();
        log("told to lose a reply: a request of group %d is not answered", work.request.group);
        return Outcome::lost;
    }
    reply(work);
    return Outcome::answered;
}

/** Applies a request, whole or not at all, and puts into its answer what became of each entry. */
void Engine::apply(Work &work)
{
    const wire::Request &request = work.request;
    if (request.group > lastGroup) {
        log("group %d does not exist", request.group);
    }
    if (request.command == wire::getRequest) {
        return; // readers find the store as it is: nothing to refresh
    }
    if (request.count > static_cast<int>(wire::mostEntries)) {
        log("a message says it has %d entries, %zu are possible; nothing was applied", request.count,
            wire::mostEntries);
        for (std::size_t i = 0; i < wire::mostEntries; ++i) {
            wire::putStatus(work.answer, i, wire::refused);
        }
        return;
    }
    const std::span<const wire::Entry> entries = request.used();
    Accepted accepted{};
    bool whole = true;
    store().change([&](Contents &contents) {
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const std::string reason = applyEntry(contents.settings, request.group, entries[i]);
            accepted[i] = reason.empty();
            if (!accepted[i]) {
                log("register %d in group %d: %s; the message was not applied", entries[i].registerId,
                    request.group, reason.c_str());
                whole = false;
            }
        }
        return whole;
    });
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const wire::Status refused = accepted[i] ? wire::notApplied : wire::refused;
        wire::putStatus(work.answer, i, whole ? wire::applied : refused);
    }
}

/** Counts one of the replies that are to be lost. */
void Engine::loseReply()
{
    store().change([](Contents &contents) {
        const auto fault = contents.faults.find("lose-reply");
        if (fault == contents.faults.end()) {
            return false;
        }
        int left = 1;
        parseNumber(fault->second, left);
        if (left <= 1) {
            contents.faults.erase(fault);
        } else {
            fault->second = std::to_string(left - 1);
        }
        return true;
    });
}

void Engine::reply(const Work &work)
{
    const Envelope envelope{static_cast<long>(work.ticket), work.answer};
    while (msgsnd(replies_, &envelope, sizeof envelope.bytes, IPC_NOWAIT) == -1) {
        if (errno == EINTR) {
            continue;
        }
        if (errno == EIDRM || errno == EINVAL) {
            log("the reply queue was removed; it is created again");
            replies_ = obtainQueue(options_.queueKey + wire::replyQueue);
            continue;
        }
        log("a reply cannot be sent: %s", strerror(errno));
        return;
    }
}

/** A sender that died leaves its ticket behind, and its reply. What nobody fetched for much longer than a
 * sender waits is removed. */
void Engine::clearForgotten()
{
    const auto age = 2 * options_.senderPatience + std::chrono::seconds(1);
    int count = 0;
    for (const Ticket ticket : board_->closeForgotten(Clock::now() - age)) {
        Envelope forgotten;
        count += msgrcv(replies_, &forgotten, sizeof forgotten.bytes, static_cast<long>(ticket),
                        IPC_NOWAIT | MSG_NOERROR) != -1;
    }
    if (count > 0) {
        log("%d forgotten replies removed", count);
    }
}

} // namespace desk
