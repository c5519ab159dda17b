// SPDX-License-Identifier: Apache-2.0
#include "engine/engine.h"

#include "engine/effects.h"
#include "support/environment.h"
#include "support/values.h"

#include <sys/ipc.h>
#include <sys/msg.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace desk
{

namespace
{

using Clock = std::chrono::steady_clock;

__attribute__((format(printf, 1, 2))) void log(const char *format, ...)
{
    char line[512];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    fprintf(stderr, "desk-engine: %s\n", line);
}

/** Registers of group 4 that the network services write. */
constexpr int WebServerStatus = 85;
constexpr int IpConfigurationMode = 86;
constexpr int IpAddress = 87;
constexpr int SubnetMask = 88;
constexpr int Gateway = 89;
constexpr int WsManagementStatus = 91;

} // namespace

Engine::Engine(Options chosen) : options(std::move(chosen))
{
    openQueues();
    store();
}

Store &Engine::store()
{
    if (opened == nullptr || !opened->inPlace()) {
        opened.reset();
        makeStoreDirectory();
        opened = std::make_unique<Store>(options.store);
    }
    return *opened;
}

void Engine::openQueues()
{
    requests = msgget(options.queueKey + wire::RequestQueue, IPC_CREAT | 0600);
    replies = msgget(options.queueKey + wire::ReplyQueue, IPC_CREAT | 0600);
    if (requests == -1 || replies == -1)
        throw std::runtime_error(std::string("message queues cannot be obtained: ") + strerror(errno));
}

void Engine::removeQueues()
{
    msgctl(requests, IPC_RMID, nullptr);
    msgctl(replies, IPC_RMID, nullptr);
}

void Engine::run(const volatile sig_atomic_t &stop)
{
    static QueueMessage message;
    while (stop == 0) {
        const ssize_t size = msgrcv(requests, &message, sizeof message.bytes, 0, MSG_NOERROR);
        if (size >= 0) {
            handle(message, static_cast<std::size_t>(size), stop);
        } else if (errno == EINTR) {
            clearForgottenReplies(); // the timer's signal
        } else if (errno == EIDRM || errno == EINVAL) {
            log("the request queue was removed; it is created again");
            openQueues();
        } else {
            throw std::runtime_error(std::string("requests cannot be received: ") + strerror(errno));
        }
    }
}

/** The senders that do not wait: those of the two services' on/off switches, of the change between DHCP and
 * static addresses, and of a whole static configuration. Every other sender waits for one reply. */
bool Engine::senderWaits(const wire::Request &request) const
{
    if (request.command != wire::SetRequest || request.group != 4)
        return true;
    const wire::Entry *e = request.entries;
    if (request.count == 1)
        return e[0].registerId != WebServerStatus && e[0].registerId != WsManagementStatus &&
               e[0].registerId != IpConfigurationMode;
    if (request.count == 4)
        return !(e[0].registerId == IpConfigurationMode && e[1].registerId == IpAddress &&
                 e[2].registerId == SubnetMask && e[3].registerId == Gateway);
    return true;
}

void Engine::handle(const QueueMessage &message, std::size_t size, const volatile sig_atomic_t &stop)
{
    const Clock::time_point taken = Clock::now();
    if (message.type != wire::MessageType || size != wire::MessageSize) {
        log("a message of type %ld and %zu bytes instead of type %ld and %zu bytes; dropped", message.type,
            size, wire::MessageType, wire::MessageSize);
        return;
    }
    wire::Bytes bytes;
    memcpy(bytes.data(), message.bytes, bytes.size());
    const wire::Request request = wire::decode(bytes);
    if (request.source != wire::SourceWsMan) {
        log("a message from source %d, which is not served here; dropped", request.source);
        return;
    }
    if (request.command != wire::SetRequest && request.command != wire::GetRequest) {
        log("a message with process command %d, which is not served here; dropped", request.command);
        return;
    }
    if (options.verbose)
        log("%s request, group %d, %d entries", request.command == wire::SetRequest ? "set" : "get",
            request.group, request.count);

    try {
        waitWhenSlow(stop);
        apply(request, bytes);
        if (!senderWaits(request))
            return;
        if (store().read().fault("silent")) {
            log("told to be silent: a request of group %d is not answered", request.group);
            return;
        }
        if (loseReply()) {
            log("told to lose a reply: a request of group %d is not answered", request.group);
            return;
        }
    } catch (const StoreError &error) {
        // The sender takes any answer as success, so that only silence can tell it of the failure.
        log("%s; a request of group %d is not answered", error.what(), request.group);
        opened.reset();
        return;
    }
    if (Clock::now() - taken >= options.senderPatience) {
        log("a request of group %d took too long: its sender has given up and is not answered",
            request.group);
        return;
    }
    reply(bytes);
}

/** Applies a request, whole or not at all, and puts into its bytes what became of each entry. */
void Engine::apply(const wire::Request &request, wire::Bytes &answer)
{
    if (request.group > LastGroup)
        log("group %d does not exist", request.group);
    if (request.command == wire::GetRequest)
        return; // readers find the store as it is: nothing to refresh
    if (request.count > static_cast<int>(wire::MostEntries)) {
        log("a message says it has %d entries, %zu are possible; nothing was applied", request.count,
            wire::MostEntries);
        for (std::size_t i = 0; i < wire::MostEntries; ++i)
            wire::putStatus(answer, i, wire::Refused);
        return;
    }
    const std::span<const wire::Entry> entries = request.used();
    std::array<bool, wire::MostEntries> accepted{};
    bool whole = true;
    store().change([&](Contents &contents) {
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const std::string reason = applyEntry(contents.settings, request.group, entries[i]);
            accepted[i] = reason.empty();
            if (accepted[i])
                continue;
            log("register %d in group %d: %s; the message was not applied", entries[i].registerId,
                request.group, reason.c_str());
            whole = false;
        }
        return whole;
    });
    for (std::size_t i = 0; i < entries.size(); ++i)
        wire::putStatus(answer, i, whole ? wire::Applied : accepted[i] ? wire::NotApplied : wire::Refused);
}

void Engine::waitWhenSlow(const volatile sig_atomic_t &stop)
{
    const auto &faults = store().read().faults;
    const auto slow = faults.find("slow");
    if (slow == faults.end())
        return;
    constexpr double longest = 3600;
    double seconds = 0;
    parseSeconds(slow->second, seconds);
    const Clock::time_point end =
        Clock::now() + std::chrono::nanoseconds(static_cast<long long>(std::fmin(seconds, longest) * 1e9));
    while (stop == 0) {
        const auto left = std::chrono::nanoseconds(end - Clock::now()).count();
        if (left <= 0)
            return;
        const timespec pause{static_cast<time_t>(left / 1'000'000'000),
                             static_cast<long>(left % 1'000'000'000)};
        nanosleep(&pause, nullptr);
    }
}

bool Engine::loseReply()
{
    if (!store().read().fault("lose-reply"))
        return false;
    store().change([](Contents &contents) {
        const auto fault = contents.faults.find("lose-reply");
        int left = 1;
        if (fault == contents.faults.end())
            return false;
        parseNumber(fault->second, left);
        if (left <= 1)
            contents.faults.erase(fault);
        else
            fault->second = std::to_string(left - 1);
        return true;
    });
    return true;
}

void Engine::reply(const wire::Bytes &bytes)
{
    struct {
        long type;
        std::uint8_t bytes[wire::MessageSize];
    } answer;
    answer.type = wire::MessageType;
    memcpy(answer.bytes, bytes.data(), bytes.size());
    while (msgsnd(replies, &answer, sizeof answer.bytes, IPC_NOWAIT) == -1) {
        if (errno == EINTR)
            continue;
        if (errno == EIDRM || errno == EINVAL) {
            log("the reply queue was removed; it is created again");
            openQueues();
            continue;
        }
        log("a reply cannot be sent: %s", strerror(errno));
        return;
    }
}

/** A sender that died or gave up leaves its reply behind. One that nobody fetched for much longer than a
 * sender waits is removed. */
void Engine::clearForgottenReplies()
{
    msqid_ds state;
    if (msgctl(replies, IPC_STAT, &state) == -1 || state.msg_qnum == 0)
        return;
    const double age = difftime(time(nullptr), state.msg_stime);
    if (age < 2 * std::chrono::duration<double>(options.senderPatience).count() + 1)
        return;
    static QueueMessage forgotten;
    int count = 0;
    while (msgrcv(replies, &forgotten, sizeof forgotten.bytes, 0, IPC_NOWAIT | MSG_NOERROR) != -1)
        ++count;
    log("%d forgotten replies removed", count);
}

} // namespace desk
