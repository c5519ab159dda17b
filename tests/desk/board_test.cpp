// SPDX-License-Identifier: Apache-2.0
// What engine and senders share in memory: tickets, and the messages that have passed.
#include "desk_fixture.h"

#include "support/board.h"

#include <monitor_support.h>

#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <set>
#include <thread>

namespace
{

using desk::LoggedMessage;
using desk::Outcome;
using desk::SharedMemory;
using desk::Stage;
using desk::Ticket;

class Board : public DeskTest
{
  public:
    /** What was refused, and why; empty when nothing was. */
    std::string refusal()
    {
        try {
            const desk::Board board(queueKey);
            desk::obtainQueue(queueKey);
            const desk::EnginePlace place(queueKey);
        } catch (const desk::KernelError &error) {
            return error.what();
        }
        return {};
    }
};

TEST_F(Board, GivesEachTicketOnce)
{
    desk::Board first(queueKey), second(queueKey);
    std::set<Ticket> tickets;
    for (int i = 0; i < 128; ++i) {
        tickets.insert(first.open());
        tickets.insert(second.open());
    }
    EXPECT_EQ(tickets.size(), 256u);
    EXPECT_EQ(tickets.count(desk::noTicket), 0u);
    EXPECT_EQ(first.open(), desk::noTicket) << "so many may be under way";
    const Ticket any = *tickets.begin();
    second.close(any);
    const Ticket next = first.open();
    EXPECT_NE(next, desk::noTicket);
    EXPECT_EQ(tickets.count(next), 0u) << "a place may come again, a ticket not";
    EXPECT_EQ(second.stage(any), Stage::closed);
}

/* Tickets of a board that was removed are not those of the next one: their replies may still lie on a queue.
 */
TEST_F(Board, BeginsSomewhereElseAfterItWasRemoved)
{
    std::set<Ticket> firsts;
    for (int i = 0; i < 4; ++i) {
        desk::Board board(queueKey);
        firsts.insert(board.open());
        EXPECT_TRUE(board.inPlace());
        desk::removeSharedMemory(queueKey);
        EXPECT_FALSE(board.inPlace());
    }
    EXPECT_EQ(firsts.size(), 4u);
}

TEST_F(Board, LetsEitherSideDecide)
{
    desk::Board sender(queueKey), served(queueKey);
    const Ticket applied = sender.open(), refused = sender.open();
    EXPECT_TRUE(served.claim(applied));
    EXPECT_FALSE(sender.takeBack(applied));
    EXPECT_FALSE(served.claim(applied)) << "once";
    EXPECT_EQ(sender.stage(applied), Stage::claimed);
    served.finish(applied);
    EXPECT_EQ(sender.stage(applied), Stage::done);
    EXPECT_TRUE(sender.takeBack(refused));
    EXPECT_FALSE(served.claim(refused));
    EXPECT_EQ(sender.stage(refused), Stage::closed);
}

TEST_F(Board, WakesTheSenderThatWaits)
{
    desk::Board sender(queueKey), served(queueKey);
    const Ticket ticket = sender.open();
    std::thread other([&] {
        EXPECT_TRUE(served.claim(ticket));
        served.finish(ticket);
    });
    Stage stage = Stage::waiting;
    while (stage != Stage::done) {
        sender.waitForChange(ticket, stage, std::chrono::hours(1));
        stage = sender.stage(ticket);
    }
    other.join();
}

TEST_F(Board, EndsWhatAKilledEngineHadBegun)
{
    desk::Board board(queueKey);
    const Ticket begun = board.open(), waiting = board.open();
    ASSERT_TRUE(board.claim(begun));
    startEngine();
    EXPECT_EQ(board.stage(begun), Stage::done);
    EXPECT_EQ(board.stage(waiting), Stage::waiting);
}

TEST_F(Board, KeepsTheLastThousandMessages)
{
    desk::Board board(queueKey);
    EXPECT_EQ(board.newest(), 0u);
    EXPECT_TRUE(board.messagesAfter(0).empty());
    for (int i = 1; i <= 1500; ++i) {
        LoggedMessage message{};
        message.request[0] = static_cast<std::uint8_t>(i);
        message.outcome = Outcome::answered;
        board.log(message);
    }
    const desk::Board reader(queueKey, SharedMemory::Access::read);
    EXPECT_EQ(reader.newest(), 1500u);
    const std::vector<LoggedMessage> all = reader.messagesAfter(0);
    ASSERT_EQ(all.size(), 1000u);
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(all[i].number, 501 + i);
        EXPECT_EQ(all[i].request[0], static_cast<std::uint8_t>(501 + i));
    }
    EXPECT_EQ(reader.messagesAfter(1498).size(), 2u);
    EXPECT_TRUE(reader.messagesAfter(1500).empty());
}

/* A reader never sees half of one message and half of another. */
TEST_F(Board, ShowsMessagesWholeWhileTheyAreWritten)
{
    desk::Board board(queueKey);
    std::atomic<bool> stop = false;
    std::thread writer([&] {
        for (unsigned i = 1; !stop; ++i) {
            LoggedMessage message{};
            message.request.fill(static_cast<std::uint8_t>(i));
            message.answer.fill(static_cast<std::uint8_t>(i));
            message.duration = std::chrono::nanoseconds(i);
            board.log(message);
        }
    });
    const desk::Board reader(queueKey, SharedMemory::Access::read);
    std::size_t seen = 0;
    for (int round = 0; round < 200 || seen < 1000; ++round) {
        for (const LoggedMessage &message : reader.messagesAfter(0)) {
            const auto byte = static_cast<std::uint8_t>(message.number);
            const auto same = [=](std::uint8_t b) { return b == byte; };
            ASSERT_TRUE(std::all_of(message.request.begin(), message.request.end(), same));
            ASSERT_TRUE(std::all_of(message.answer.begin(), message.answer.end(), same));
            ASSERT_EQ(static_cast<std::uint64_t>(message.duration.count()), message.number);
            ++seen;
        }
    }
    stop = true;
    writer.join();
}

TEST_F(Board, AndQueuesOfAnotherUserAreNotUsed)
{
    EXPECT_EQ(refusal(), "");
    char key[16];
    snprintf(key, sizeof key, "0x%08x", static_cast<unsigned>(queueKey));
    const std::string anothers = std::string(" of key ") + key +
                                 " belongs to another user; choose another key with DESK_MONITOR_QUEUE_KEY";
    const std::string open =
        std::string(" of key ") + key + " lets other users in, which the desk never does; remove it";

    shmid_ds memory{};
    const int shared = shmget(queueKey, 0, 0);
    ASSERT_EQ(shmctl(shared, IPC_STAT, &memory), 0);
    const shmid_ds ownMemory = memory;
    memory.shm_perm.uid = 65534;
    ASSERT_EQ(shmctl(shared, IPC_SET, &memory), 0);
    EXPECT_EQ(refusal(), "the shared memory" + anothers);
    memory = ownMemory;
    ASSERT_EQ(shmctl(shared, IPC_SET, &memory), 0);

    msqid_ds state{};
    const int queue = msgget(queueKey, 0);
    ASSERT_EQ(msgctl(queue, IPC_STAT, &state), 0);
    const msqid_ds ownQueue = state;
    state.msg_perm.mode = 0622;
    ASSERT_EQ(msgctl(queue, IPC_SET, &state), 0);
    EXPECT_EQ(refusal(), "the message queue" + open);
    int identifier = -1;
    EXPECT_NE(SpearEngineMessageQueueCreate(0, &identifier), 0);
    const std::string log = directory + "/log";
    EXPECT_EQ(endOf(startProgram({DESK_ENGINE}, log)), 1);
    EXPECT_EQ(contentOf(log), "desk-engine: the message queue" + open + "\n");
    state = ownQueue;
    state.msg_perm.uid = 65534;
    ASSERT_EQ(msgctl(queue, IPC_SET, &state), 0);
    EXPECT_EQ(refusal(), "the message queue" + anothers);
    state = ownQueue;
    ASSERT_EQ(msgctl(queue, IPC_SET, &state), 0);
    EXPECT_EQ(refusal(), "");

    const int semaphore = semget(queueKey, 1, 0);
    semid_ds place{};
    union {
        int value;
        semid_ds *state;
    } argument{};
    argument.state = &place;
    ASSERT_EQ(semctl(semaphore, 0, IPC_STAT, argument), 0);
    place.sem_perm.uid = 65534;
    ASSERT_EQ(semctl(semaphore, 0, IPC_SET, argument), 0);
    EXPECT_EQ(refusal(), "the semaphore" + anothers);
}

/* A message of each outcome, by a real engine, seen from another process. */
class BoardOfAnEngine : public Board
{
  public:
    static constexpr const char *selectInputTwo =
        "01000000 0300 0700 00 01 01 00 19 00 02000000 00 00 00 00000000"
        "00 00 00 00000000 00 00 00 00000000 00";

    /** The one message that was logged after those that are known. */
    LoggedMessage next()
    {
        const desk::Board board(queueKey, SharedMemory::Access::read);
        std::vector<LoggedMessage> messages;
        EXPECT_TRUE(eventually([&] { return !(messages = board.messagesAfter(known)).empty(); }));
        EXPECT_EQ(messages.size(), 1u);
        ++known;
        return messages.empty() ? LoggedMessage{} : messages[0];
    }
    std::string nextOutcome()
    {
        return nameOf(next().outcome);
    }
    static std::vector<std::uint8_t> bytes(const desk::MessageBytes &message)
    {
        return {message.begin(), message.end()};
    }

    std::uint64_t known = 0;
};

TEST_F(BoardOfAnEngine, HasBytesTimeAndDuration)
{
    startEngine();
    const auto before = std::chrono::system_clock::now();
    request("01000000 0300 0700 00 02 01  00 19 00 02000000  00 1a 00 07000000");
    const LoggedMessage message = next();
    EXPECT_EQ(message.number, 1u);
    EXPECT_GE(message.time, before);
    EXPECT_LE(message.time, std::chrono::system_clock::now());
    EXPECT_GT(message.duration.count(), 0);
    EXPECT_LT(message.duration, std::chrono::minutes(2));
    EXPECT_EQ(message.outcome, Outcome::answered);
    EXPECT_EQ(bytes(message.request),
              bytesOf("01000000 0300 0700 00 02 01 00 19 00 02000000 00 1a 00 07000000"
                      "00 00 00 00000000 00 00 00 00000000 00"));
    EXPECT_EQ(bytes(message.answer), bytesOf("01000000 0300 0700 00 02 01 00 19 02 02000000 00 1a 01 07000000"
                                             "00 00 00 00000000 00 00 00 00000000 00"))
        << "the first entry not applied, the second refused";
}

TEST_F(BoardOfAnEngine, TellsWhatBecameOfEachMessage)
{
    sendRaw(selectInputTwo);
    startEngine();
    EXPECT_EQ(nextOutcome(), "too old");
    request(selectInputTwo);
    EXPECT_EQ(nextOutcome(), "answered");
    sendRaw("01000000 0300 0700 00 01 04 00 55 00 00000000 00 00 00 00000000"
            "00 00 00 00000000 00 00 00 00000000 00");
    EXPECT_EQ(nextOutcome(), "not awaited");
    sendRaw("01000000 0900 0700 00 01 04 00 55 00 00000000 00 00 00 00000000"
            "00 00 00 00000000 00 00 00 00000000 00");
    EXPECT_EQ(nextOutcome(), "not served");
    ASSERT_EQ(command("fault silent on"), 0);
    sendRaw(selectInputTwo);
    EXPECT_EQ(nextOutcome(), "silent");
    ASSERT_EQ(command("fault clear"), 0);
    ASSERT_EQ(command("fault lose-reply on"), 0);
    sendRaw(selectInputTwo);
    EXPECT_EQ(nextOutcome(), "reply lost");
    kill(engineProcess(), SIGSTOP);
    const long ticket = sendRaw(selectInputTwo);
    ASSERT_TRUE(desk::Board(queueKey).takeBack(static_cast<Ticket>(ticket)));
    kill(engineProcess(), SIGCONT);
    EXPECT_EQ(nextOutcome(), "taken back");
    for (const char *suffix : {"", "-wal", "-shm"}) {
        ASSERT_EQ(rename((store + suffix).c_str(), (directory + "/away" + suffix).c_str()), 0);
    }
    ASSERT_EQ(mkdir(store.c_str(), 0700), 0);
    sendRaw(selectInputTwo);
    EXPECT_EQ(nextOutcome(), "store failed");
    EXPECT_EQ(waiting(3), 0u);
}

} // namespace
