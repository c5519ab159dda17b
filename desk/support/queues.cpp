// SPDX-License-Identifier: Apache-2.0
// The message queues: System V queues, one per number of the seam.
//
// Callers come from many threads and processes at once, and what they send carries nothing that tells one
// from another. So each request gets a ticket (board.h), which its reply bears too: a thread takes the reply
// to the request that it sent last, and no other. When it waits no longer it takes the request back.
#include "support/board.h"
#include "support/environment.h"
#include "support/session.h"

#include <monitor_support.h>

#include <pthread.h>
#include <sys/ipc.h>
#include <sys/msg.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <utility>

using namespace desk;

namespace
{

static_assert(sizeof(SpearMessage) == messageSize);

/** What a thread has sent last, until its reply has come or it is given up. */
struct Request {
    std::shared_ptr<Board> board;
    Ticket ticket = noTicket;
    key_t key = 0; // of the board
    int queue = -1;
    SpearMessage message{};
};
thread_local Request outstanding;

struct CurrentBoard {
    std::mutex mutex;
    key_t key = 0;
    std::shared_ptr<Board> board;
};

CurrentBoard &currentBoard();

void beforeFork()
{
    currentBoard().mutex.lock();
}

void afterForkInParent()
{
    currentBoard().mutex.unlock();
}

/** The reply to what the parent has sent is the parent's. */
void afterForkInChild()
{
    currentBoard().mutex.unlock();
    outstanding = Request();
}

CurrentBoard &currentBoard()
{
    static CurrentBoard instance;
    static const int registered = pthread_atfork(beforeFork, afterForkInParent, afterForkInChild);
    static_cast<void>(registered);
    return instance;
}

/** The board of the queues that the environment names now. Throws KernelError. */
std::shared_ptr<Board> boardOf(key_t key)
{
    CurrentBoard &current = currentBoard();
    const std::lock_guard<std::mutex> lock(current.mutex);
    if (current.board == nullptr || current.key != key || !current.board->inPlace()) {
        current.board = std::make_shared<Board>(key);
        current.key = key;
    }
    return current.board;
}

key_t baseKey()
{
    const std::optional<key_t> base = queueBaseKey();
    if (!base) {
        throw KernelError("DESK_MONITOR_QUEUE_KEY is not a usable key");
    }
    return *base;
}

/** True when the fault is switched on. Throws StoreError. */
bool isTold(std::string_view fault)
{
    Session session;
    return session.read().fault(fault);
}

enum class Look { notYet, came, broken };

/** The reply says the same as the request, but for what became of the entries. */
bool echoes(SpearMessage reply, SpearMessage request)
{
    for (SpearMessage *message : {&reply, &request}) {
        for (RegisterDetails &entry : message->Data.Arg.sWebCmd.sRegdetails) {
            entry.Status = 0;
        }
    }
    return memcmp(&reply, &request, sizeof reply) == 0;
}

/** Takes the reply to the request from the queue, if it is there. What bears the ticket and is no reply to
 * the request is dropped. */
Look fetch(const Request &request, int queueId)
{
    struct {
        long ticket;
        char bytes[messageSize + 1]; // one more, so that a message which is too long shows
    } envelope;
    for (;;) {
        const ssize_t size = msgrcv(queueId, &envelope, sizeof envelope.bytes,
                                    static_cast<long>(request.ticket), IPC_NOWAIT | MSG_NOERROR);
        if (size == -1 && errno != EINTR) {
            return errno == ENOMSG ? Look::notYet : Look::broken;
        }
        if (size == -1) {
            continue;
        }
        SpearMessage reply;
        memcpy(&reply, envelope.bytes, sizeof reply);
        if (size == static_cast<ssize_t>(messageSize) && echoes(reply, request.message)) {
            return Look::came;
        }
        report("RecvMessageFromSource", "a message that is no reply to the request was dropped");
    }
}

/** A queue can be removed while somebody waits for it: so often is that looked at. */
constexpr std::chrono::milliseconds longestPause(100);

/** An engine that has claimed a request is about to answer, or has been killed. It may have to wait for the
 * store. */
constexpr std::chrono::seconds longestApplying(30);

/** Ends a request whose caller waits no longer. Unless the engine has claimed it already it is taken back,
 * and never applied; otherwise the engine is about to answer, and that is waited for. True when the reply has
 * come after all. */
bool giveUp(const Request &request, int queueId)
{
    if (request.ticket == noTicket) {
        return false;
    }
    if (request.board->takeBack(request.ticket)) {
        Envelope unread;
        msgrcv(request.queue, &unread, sizeof unread.bytes, static_cast<long>(request.ticket),
               IPC_NOWAIT | MSG_NOERROR);
        return false;
    }
    const Clock::time_point end = Clock::now() + longestApplying;
    while (request.board->stage(request.ticket) == Stage::claimed && EnginePlace::isTaken(request.key) &&
           Clock::now() < end) {
        request.board->waitForChange(request.ticket, Stage::claimed, longestPause);
    }
    const bool came = fetch(request, queueId) == Look::came;
    request.board->close(request.ticket);
    return came;
}

/** Nothing was sent, so nothing comes. */
int waitInVain(int queueId)
{
    const Clock::time_point end = Clock::now() + receiveTimeout();
    msqid_ds state;
    while (msgctl(queueId, IPC_STAT, &state) != -1) {
        const Clock::duration left = end - Clock::now();
        if (left <= Clock::duration::zero()) {
            break;
        }
        const Clock::duration pause = std::min<Clock::duration>(left, longestPause);
        const timespec time{0, static_cast<long>(std::chrono::nanoseconds(pause).count())};
        nanosleep(&time, nullptr);
    }
    return FAILURE;
}

int receive(const Request &request, int queueId)
{
    const Clock::time_point end = Clock::now() + receiveTimeout();
    for (;;) {
        const Stage stage = request.board->stage(request.ticket);
        const Look look = fetch(request, queueId);
        if (look == Look::came) {
            request.board->close(request.ticket);
            return SUCCESS;
        }
        const Clock::duration left = end - Clock::now();
        if (look == Look::broken || left <= Clock::duration::zero()) {
            return giveUp(request, queueId) ? SUCCESS : FAILURE;
        }
        request.board->waitForChange(request.ticket, stage, std::min<Clock::duration>(left, longestPause));
    }
}

int obtain(int queue)
{
    try {
        Session session;
        if (failsByFault(session.read().faults, "fail-queue", std::to_string(queue))) {
            return -1;
        }
    } catch (const StoreError &error) {
        // That has nothing to do with queues. Whoever sends is told.
        report("SpearEngineMessageQueueCreate", error.what());
    }
    return obtainQueue(baseKey() + queue);
}

} // namespace

int SpearEngineMessageQueueCreate(int queue, int *queueId)
{
    if (queueId == nullptr || queue < 0 || queue >= queueCount) {
        return FAILURE;
    }
    int identifier = -1;
    try {
        identifier = obtain(queue);
    } catch (const std::exception &error) {
        report("SpearEngineMessageQueueCreate", error.what());
    }
    if (identifier != -1) {
        *queueId = identifier;
        return SUCCESS;
    }
    if (queue == MSG_QUEUE_WSMAN) { // what was sent for a reply on it is refused
        giveUp(std::exchange(outstanding, {}), -1);
    }
    return FAILURE;
}

int SendStatusMessagetoSource(SpearMessage message, int queueId)
{
    if (message.Type <= 0) {
        return FAILURE;
    }
    try {
        if (isTold("fail-send")) {
            return FAILURE;
        }
        const key_t key = baseKey();
        Request request{boardOf(key), noTicket, key, queueId, message};
        request.ticket = request.board->open();
        if (request.ticket == noTicket) {
            report("SendStatusMessagetoSource", "too many requests are under way");
            return FAILURE;
        }
        Envelope envelope{static_cast<long>(request.ticket), {}};
        memcpy(envelope.bytes.data(), &message, sizeof message);
        // A full queue means that no engine takes requests: waiting for it would hang the sender.
        while (msgsnd(queueId, &envelope, sizeof envelope.bytes, IPC_NOWAIT) == -1) {
            if (errno != EINTR) {
                request.board->close(request.ticket);
                return FAILURE;
            }
        }
        outstanding = std::move(request);
        return SUCCESS;
    } catch (const std::exception &error) {
        report("SendStatusMessagetoSource", error.what());
        return FAILURE;
    }
}

int RecvMessageFromSource(SpearMessage message, int queueId)
{
    static_cast<void>(message);
    const Request request = std::exchange(outstanding, {});
    try {
        if (!isTold("fail-receive")) {
            return request.ticket == noTicket ? waitInVain(queueId) : receive(request, queueId);
        }
    } catch (const std::exception &error) {
        report("RecvMessageFromSource", error.what());
    }
    giveUp(request, queueId);
    return FAILURE;
}
