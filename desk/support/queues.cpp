// SPDX-License-Identifier: Apache-2.0
// The message queues: System V queues, one per number of the seam.
//
// Requests carry no correlation, so a reply that nobody fetched would be taken for the answer of the next
// request. Therefore whatever waits on the reply queue is removed before a request is sent: it answers a
// request whose sender gave up or died. This relies, as the reply queue itself does, on one request being
// outstanding at a time. The engine on its side sends no reply to a request it has held longer than a sender
// waits, and clears replies that nobody has fetched for long.
#include "support/environment.h"
#include "support/session.h"

#include <monitor_support.h>

#include <sched.h>
#include <sys/ipc.h>
#include <sys/msg.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>

using namespace desk;

namespace
{

/** The kernel's form of a message: a long type, which is not a part of the text, and the text. */
struct QueueMessage {
    long type;
    char text[sizeof(ProcessData)];
};
static_assert(offsetof(QueueMessage, text) == sizeof(long));

/** Calls use() unless the fault is switched on. */
template <class Use>
int unlessFault(const char *function, const char *fault, Use use) noexcept
{
    try {
        {
            Session session;
            if (session.store().read().fault(fault))
                return FAILURE;
        }
        return use();
    } catch (const std::exception &error) {
        report(function, error.what());
        return FAILURE;
    }
}

int queueOfNumber(int queue, int flags)
{
    const std::optional<key_t> base = queueBaseKey();
    if (!base) {
        report("DESK_MONITOR_QUEUE_KEY", "not a usable key");
        return -1;
    }
    return msgget(*base + queue, flags);
}

void discardStaleReplies()
{
    const int queue = queueOfNumber(MSG_QUEUE_WSMAN, 0);
    if (queue == -1)
        return;
    QueueMessage stale;
    while (msgrcv(queue, &stale, sizeof stale.text, 0, IPC_NOWAIT | MSG_NOERROR) != -1 || errno == EINTR) {
    }
}

using Clock = std::chrono::steady_clock;

/** The pause before the next look at the queue. An engine at work answers within some tens of microseconds,
 * so the first looks only give up the processor; then the pauses grow. */
void pauseBeforeLook(int look, Clock::duration left)
{
    constexpr int eagerLooks = 200;
    constexpr long long shortest = 20'000;
    constexpr long long longest = 2'000'000;
    if (look < eagerLooks) {
        sched_yield();
        return;
    }
    const int doublings = std::min((look - eagerLooks) / 8, 10);
    const long long pause = std::min(
        {shortest << doublings, longest, std::max<long long>(std::chrono::nanoseconds(left).count(), 1)});
    const timespec time{0, static_cast<long>(pause)};
    nanosleep(&time, nullptr);
}

} // namespace

int SpearEngineMessageQueueCreate(int queue, int *queueId)
{
    if (queueId == nullptr || queue < 0 || queue >= queueCount)
        return FAILURE;
    try {
        Session session;
        const Contents &contents = session.store().read();
        if (failsByFault(contents.faults, "fail-queue", std::to_string(queue)))
            return FAILURE;
    } catch (const std::exception &error) {
        report("SpearEngineMessageQueueCreate", error.what());
        return FAILURE;
    }
    const int identifier = queueOfNumber(queue, IPC_CREAT | 0600);
    if (identifier == -1)
        return FAILURE;
    *queueId = identifier;
    return SUCCESS;
}

int SendStatusMessagetoSource(SpearMessage message, int queueId)
{
    return unlessFault("SendStatusMessagetoSource", "fail-send", [&] {
        if (message.Data.Cmd == PROCESS_SET_REQUEST || message.Data.Cmd == PROCESS_GET_REQUEST)
            discardStaleReplies();
        QueueMessage queued{};
        queued.type = message.Type;
        memcpy(queued.text, &message.Data, sizeof queued.text);
        // A full queue means that no engine takes requests: waiting for it would hang the sender.
        while (msgsnd(queueId, &queued, sizeof queued.text, IPC_NOWAIT) == -1)
            if (errno != EINTR)
                return FAILURE;
        return SUCCESS;
    });
}

int RecvMessageFromSource(SpearMessage message, int queueId)
{
    static_cast<void>(message);
    return unlessFault("RecvMessageFromSource", "fail-receive", [&] {
        const Clock::time_point end = Clock::now() + receiveTimeout();
        QueueMessage received;
        for (int look = 0;; ++look) {
            if (msgrcv(queueId, &received, sizeof received.text, 0, IPC_NOWAIT | MSG_NOERROR) != -1)
                return SUCCESS;
            if (errno != ENOMSG && errno != EINTR)
                return FAILURE;
            const Clock::duration left = end - Clock::now();
            if (left <= Clock::duration::zero())
                return FAILURE;
            pauseBeforeLook(look, left);
        }
    });
}
