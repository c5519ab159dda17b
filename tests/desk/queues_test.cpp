// SPDX-License-Identifier: Apache-2.0
// The message queues through the support library, with and without an engine.
#include "desk_fixture.h"

#include "support/board.h"

#include <monitor_support.h>

#include <sys/ipc.h>
#include <sys/msg.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <thread>

namespace
{

using Clock = std::chrono::steady_clock;

SpearMessage getRequest()
{
    SpearMessage message{};
    message.Type = 1;
    message.Data.Cmd = PROCESS_GET_REQUEST;
    message.Data.Source = WSMAN;
    message.Data.Arg.sWebCmd.GroupId = PEXAL_INFO_ID;
    return message;
}

SpearMessage selectInput(int input)
{
    SpearMessage message{};
    message.Type = 1;
    message.Data.Cmd = PROCESS_SET_REQUEST;
    message.Data.Source = WSMAN;
    message.Data.Arg.sWebCmd.Count = 1;
    message.Data.Arg.sWebCmd.GroupId = VIDEO_INPUT_ID;
    message.Data.Arg.sWebCmd.sRegdetails[0].Register = VIDEO_INPUT;
    message.Data.Arg.sWebCmd.sRegdetails[0].RegisterValue.Value = static_cast<std::int16_t>(input);
    return message;
}

class Queues : public DeskTest
{
  public:
    void SetUp() override
    {
        DeskTest::SetUp();
        ASSERT_EQ(SpearEngineMessageQueueCreate(MSG_QUEUE_SPEAR_APP, &requests), 0);
        ASSERT_EQ(SpearEngineMessageQueueCreate(MSG_QUEUE_WSMAN, &replies), 0);
    }

    void receiveTimeout(const char *seconds)
    {
        setenv("DESK_MONITOR_RECEIVE_TIMEOUT", seconds, 1);
    }

    int requests = -1;
    int replies = -1;
};

TEST_F(Queues, HaveTheBaseKeyPlusTheirNumber)
{
    for (int queue = 0; queue < 4; ++queue) {
        int identifier = -1;
        ASSERT_EQ(SpearEngineMessageQueueCreate(queue, &identifier), 0);
        EXPECT_EQ(identifier, msgget(queueKey + queue, 0));
        msqid_ds state;
        ASSERT_EQ(msgctl(identifier, IPC_STAT, &state), 0);
        EXPECT_EQ(state.msg_perm.mode & 0777, 0600);
        int again = -1;
        ASSERT_EQ(SpearEngineMessageQueueCreate(queue, &again), 0);
        EXPECT_EQ(again, identifier);
    }
}

TEST_F(Queues, ThatDoNotExistFail)
{
    int identifier = 77;
    EXPECT_NE(SpearEngineMessageQueueCreate(-1, &identifier), 0);
    EXPECT_NE(SpearEngineMessageQueueCreate(4, &identifier), 0);
    EXPECT_EQ(identifier, 77);
    EXPECT_NE(SpearEngineMessageQueueCreate(0, nullptr), 0);
    setenv("DESK_MONITOR_QUEUE_KEY", "several", 1);
    EXPECT_NE(SpearEngineMessageQueueCreate(0, &identifier), 0);
    setenv("DESK_MONITOR_QUEUE_KEY", std::to_string(queueKey).c_str(), 1);
}

TEST_F(Queues, TakeTheKeyInHexadecimalToo)
{
    char hex[32];
    snprintf(hex, sizeof hex, "0x%x", static_cast<unsigned>(queueKey));
    setenv("DESK_MONITOR_QUEUE_KEY", hex, 1);
    int identifier = -1;
    ASSERT_EQ(SpearEngineMessageQueueCreate(0, &identifier), 0);
    EXPECT_EQ(identifier, requests);
}

/* The bytes on the queue, typed from the layout. */
TEST_F(Queues, CarryTheMessageByteForByte)
{
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(2), requests), 0);
    struct {
        long ticket;
        std::uint8_t bytes[64];
    } message;
    ASSERT_EQ(msgrcv(requests, &message, sizeof message.bytes, 0, IPC_NOWAIT), 40);
    EXPECT_GT(message.ticket, 0);
    const std::uint8_t expected[40] = {1, 0, 0, 0, 3, 0, 7, 0, 0, 1, 1, 0, 25, 0, 2, 0};
    EXPECT_EQ(memcmp(message.bytes, expected, 40), 0);
}

TEST_F(Queues, RefuseAMessageWithoutAType)
{
    SpearMessage message = getRequest();
    for (std::int32_t type : {0, -1}) {
        message.Type = type;
        EXPECT_NE(SendStatusMessagetoSource(message, requests), 0);
    }
    EXPECT_EQ(waiting(0), 0u);
}

TEST_F(Queues, FailWhenTheyAreNone)
{
    EXPECT_NE(SendStatusMessagetoSource(getRequest(), -1), 0);
    EXPECT_NE(RecvMessageFromSource(getRequest(), -1), 0);
}

TEST_F(Queues, RefuseAMessageWhenTheyAreFull)
{
    int sent = 0;
    while (sent < 100000 && SendStatusMessagetoSource(getRequest(), requests) == 0) {
        ++sent;
    }
    EXPECT_GT(sent, 10);
    EXPECT_LT(sent, 100000);
    EXPECT_EQ(waiting(0), static_cast<unsigned long>(sent));
}

TEST_F(Queues, BringAReply)
{
    startEngine();
    for (int input : {1, 2, 0}) {
        ASSERT_EQ(SendStatusMessagetoSource(selectInput(input), requests), 0);
        ASSERT_EQ(RecvMessageFromSource(SpearMessage{}, replies), 0);
        EXPECT_EQ(registerText(25, 1), std::to_string(input));
    }
    ASSERT_EQ(SendStatusMessagetoSource(getRequest(), requests), 0);
    EXPECT_EQ(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_EQ(waiting(3), 0u);
}

TEST_F(Queues, GiveUpAfterTheTimeout)
{
    receiveTimeout("0.2");
    const Clock::time_point start = Clock::now();
    EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(200));
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
}

TEST_F(Queues, WaitWithoutBurningTheProcessor)
{
    receiveTimeout("1");
    const clock_t before = clock();
    EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_LT(static_cast<double>(clock() - before) / CLOCKS_PER_SEC, 0.2);
}

TEST_F(Queues, TakeATimeoutThatIsNoneAsTheDefault)
{
    receiveTimeout("soon");
    startEngine();
    ASSERT_EQ(SendStatusMessagetoSource(getRequest(), requests), 0);
    EXPECT_EQ(RecvMessageFromSource(SpearMessage{}, replies), 0);
}

TEST_F(Queues, RemovedWhileWaitingFailAtOnce)
{
    receiveTimeout("600");
    const std::string log = directory + "/log";
    const pid_t remover = startProgram(
        {"/bin/sh", "-c", std::string("sleep 0.2; exec ") + DESK_MONITOR + " queues remove"}, log);
    const Clock::time_point start = Clock::now();
    EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(500)) << "before its time is over";
    EXPECT_EQ(endOf(remover), 0);
}

/* Replies that nobody has fetched are not those to the next request. */
TEST_F(Queues, DoNotBringTheReplyToAnEarlierRequest)
{
    startEngine();
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(1), requests), 0);
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(2), requests), 0);
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(1), requests), 0);
    ASSERT_TRUE(eventually([&] { return registerText(25, 1) == "1" && waiting(0) == 0; }));
    ASSERT_TRUE(eventually([&] { return waiting(3) == 3; }));
    ASSERT_EQ(command("fault silent on"), 0);
    receiveTimeout("0.2");
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(1), requests), 0);
    EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0) << "a reply to an earlier request was taken";
    EXPECT_EQ(waiting(3), 3u);
}

/* What was refused is never applied later, whether the engine has not seen it yet or is slow. */
TEST_F(Queues, TakeBackARequestThatIsNotAnsweredInTime)
{
    receiveTimeout("0.2");
    startEngine();
    ASSERT_EQ(command("fault slow on 0.6"), 0);
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(1), requests), 0);
    ASSERT_TRUE(eventually([&] { return waiting(0) == 0; })) << "the engine has it";
    EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0);
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(2), requests), 0);
    EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0) << "it waits on the queue";
    EXPECT_EQ(waiting(0), 0u) << "and was taken off";
    EXPECT_TRUE(
        engineLogged("a request of group 1 was taken back, as its sender waits no longer; not applied"));
    ASSERT_EQ(command("fault clear"), 0);
    receiveTimeout("5");
    ASSERT_EQ(SendStatusMessagetoSource(getRequest(), requests), 0);
    EXPECT_EQ(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_EQ(waiting(3), 0u);
}

TEST_F(Queues, TakeBackARequestWhoseReplyCannotBeReceived)
{
    startEngine();
    kill(engineProcess(), SIGSTOP);
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(1), requests), 0);
    ASSERT_EQ(command("fault fail-receive on"), 0);
    EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_EQ(waiting(0), 0u);
    ASSERT_EQ(command("fault clear"), 0);
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(2), requests), 0);
    ASSERT_EQ(command("fault fail-queue on 3"), 0);
    int identifier = -1;
    EXPECT_NE(SpearEngineMessageQueueCreate(MSG_QUEUE_WSMAN, &identifier), 0);
    EXPECT_EQ(waiting(0), 0u);
    kill(engineProcess(), SIGCONT);
    ASSERT_EQ(command("fault clear"), 0);
    ASSERT_EQ(SendStatusMessagetoSource(getRequest(), requests), 0);
    EXPECT_EQ(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_EQ(registerText(25, 1), "0");
}

/* An engine that was killed while it applied a request does not keep its sender. */
TEST_F(Queues, DoNotWaitForAnEngineThatWasKilled)
{
    receiveTimeout("0.1");
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(1), requests), 0);
    struct {
        long ticket;
        char bytes[40];
    } message;
    ASSERT_EQ(msgrcv(requests, &message, sizeof message.bytes, 0, IPC_NOWAIT), 40);
    ASSERT_TRUE(desk::Board(queueKey).claim(static_cast<desk::Ticket>(message.ticket)));
    const Clock::time_point start = Clock::now();
    EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(25));
}

/* One that has begun is waited for: what it applies is not refused. */
TEST_F(Queues, WaitForAnEngineThatIsApplyingARequest)
{
    receiveTimeout("0.1");
    desk::Board board(queueKey);
    const desk::EnginePlace place(queueKey);
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(1), requests), 0);
    struct {
        long ticket;
        char bytes[40];
    } message;
    ASSERT_EQ(msgrcv(requests, &message, sizeof message.bytes, 0, IPC_NOWAIT), 40);
    const auto ticket = static_cast<desk::Ticket>(message.ticket);
    ASSERT_TRUE(board.claim(ticket));
    std::thread served([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
        ASSERT_EQ(msgsnd(replies, &message, sizeof message.bytes, IPC_NOWAIT), 0);
        board.finish(ticket);
    });
    EXPECT_EQ(RecvMessageFromSource(SpearMessage{}, replies), 0);
    served.join();
    EXPECT_EQ(board.stage(ticket), desk::Stage::closed);
}

/* An engine of the test's own, whose answers are wrong in one way each. */
class QueuesWithFalseReplies : public Queues
{
  public:
    struct Message {
        long ticket;
        std::uint8_t bytes[64];
    };

    /** Sends a request and takes it from the queue. */
    Message taken()
    {
        Message message{};
        EXPECT_EQ(SendStatusMessagetoSource(selectInput(2), requests), 0);
        EXPECT_EQ(msgrcv(requests, &message, sizeof message.bytes, 0, IPC_NOWAIT), 40);
        return message;
    }
    void answer(const Message &message, std::size_t size = 40)
    {
        ASSERT_EQ(msgsnd(replies, &message, size, IPC_NOWAIT), 0);
    }
};

TEST_F(QueuesWithFalseReplies, AreNotTaken)
{
    receiveTimeout("0.1");
    const auto refused = [&](const char *what, auto spoil, std::size_t size = 40) {
        Message message = taken();
        spoil(message);
        answer(message, size);
        EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0) << what;
    };
    refused("another ticket", [](Message &m) { m.ticket += 100; });
    refused("the type of a message as ticket", [](Message &m) { m.ticket = 1; });
    refused(
        "an empty message", [](Message &) {}, 0);
    refused(
        "a byte too few", [](Message &) {}, 39);
    refused(
        "a byte too many", [](Message &) {}, 41);
    refused("another message type", [](Message &m) { m.bytes[0] = 2; });
    refused("another command", [](Message &m) { m.bytes[4] = 8; });
    refused("another source", [](Message &m) { m.bytes[6] = 1; });
    refused("another sequence number", [](Message &m) { m.bytes[8] = 1; });
    refused("another count", [](Message &m) { m.bytes[9] = 2; });
    refused("another group", [](Message &m) { m.bytes[10] = 2; });
    refused("another register", [](Message &m) { m.bytes[12] = 26; });
    refused("another value", [](Message &m) { m.bytes[14] = 1; });
    refused("another entry", [](Message &m) { m.bytes[39] = 1; });
}

TEST_F(QueuesWithFalseReplies, DoNotKeepARightOneOut)
{
    receiveTimeout("5");
    Message right = taken(), wrong = right;
    wrong.bytes[10] = 2;
    answer(wrong);
    answer(wrong, 0);
    right.bytes[13] = 1; /* what became of the entry may be said */
    answer(right);
    EXPECT_EQ(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_EQ(waiting(3), 0u);
}

TEST_F(Queues, WaitForASlowEngineWithinTheTimeout)
{
    startEngine();
    ASSERT_EQ(command("fault slow on 0.3"), 0);
    const Clock::time_point start = Clock::now();
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(1), requests), 0);
    EXPECT_EQ(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(300));
}

TEST_F(Queues, LoseTheReplyThatIsToldToGetLost)
{
    startEngine();
    receiveTimeout("0.2");
    ASSERT_EQ(command("fault lose-reply on"), 0);
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(1), requests), 0);
    EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_TRUE(engineLogged("told to lose a reply"));
    receiveTimeout("5");
    ASSERT_EQ(SendStatusMessagetoSource(selectInput(2), requests), 0);
    EXPECT_EQ(RecvMessageFromSource(SpearMessage{}, replies), 0);
}

/* The reply to a sender that is no more does not lie there for ever. */
TEST_F(Queues, AreClearedOfForgottenReplies)
{
    receiveTimeout("0.2");
    startEngine();
    sendRaw("01000000 0800 0700 00 00 09 00 00 00 00000000 00 00 00 00000000"
            "00 00 00 00000000 00 00 00 00000000 00");
    ASSERT_TRUE(eventually([&] { return waiting(3) == 1; }));
    EXPECT_TRUE(engineLogged("1 forgotten replies removed"));
    EXPECT_EQ(waiting(3), 0u);
}

TEST_F(Queues, FailWhenToldTo)
{
    int identifier = -1;
    ASSERT_EQ(command("fault fail-queue on 3"), 0);
    EXPECT_EQ(SpearEngineMessageQueueCreate(0, &identifier), 0);
    EXPECT_NE(SpearEngineMessageQueueCreate(3, &identifier), 0);
    ASSERT_EQ(command("fault fail-queue on"), 0);
    EXPECT_NE(SpearEngineMessageQueueCreate(0, &identifier), 0);
    ASSERT_EQ(command("fault clear"), 0);
    ASSERT_EQ(command("fault fail-send on"), 0);
    EXPECT_NE(SendStatusMessagetoSource(getRequest(), requests), 0);
    EXPECT_EQ(waiting(0), 0u);
    ASSERT_EQ(command("fault clear"), 0);
    ASSERT_EQ(command("fault fail-receive on"), 0);
    const Clock::time_point start = Clock::now();
    EXPECT_NE(RecvMessageFromSource(SpearMessage{}, replies), 0);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(4)) << "at once";
    ASSERT_EQ(command("fault clear"), 0);
    startEngine();
    ASSERT_EQ(SendStatusMessagetoSource(getRequest(), requests), 0);
    EXPECT_EQ(RecvMessageFromSource(SpearMessage{}, replies), 0);
}

TEST_F(Queues, SendAndReceiveNothingWithoutAStore)
{
    int identifier = -1;
    setenv("DESK_MONITOR_STORE", (directory + "/none/store.db").c_str(), 1);
    EXPECT_EQ(SpearEngineMessageQueueCreate(0, &identifier), 0) << "a queue does not need a store";
    EXPECT_EQ(identifier, requests);
    EXPECT_NE(SendStatusMessagetoSource(getRequest(), requests), 0);
    EXPECT_NE(RecvMessageFromSource(getRequest(), replies), 0);
}

} // namespace
