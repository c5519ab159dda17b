// SPDX-License-Identifier: Apache-2.0
// Who is answered, what is dropped, and how the engine starts, misbehaves and ends.
#include "desk_fixture.h"

#include <monitor_support.h>

#include <sys/ipc.h>
#include <sys/msg.h>

#include <csignal>

namespace
{

/* A whole get request of group 9, all 40 bytes. */
constexpr const char *getGroup9 = "01000000 0800 0700 00 00 09 00 00 00 00000000 00 00 00 00000000"
                                  "00 00 00 00000000 00 00 00 00000000 00";

class EngineReplies : public DeskTest
{
  protected:
    void SetUp() override
    {
        DeskTest::SetUp();
        startEngine();
    }

    /* Requests are answered in their order: when the reply to a get request that follows is the first, the
     * request before it was not answered. */
    void expectNoReply(const char *fortyBytes)
    {
        SCOPED_TRACE(fortyBytes);
        sendRaw(fortyBytes);
        expectNoReplySoFar();
    }

    void expectNoReplySoFar()
    {
        sendRaw(getGroup9);
        const std::optional<RawMessage> reply = receiveRaw();
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->bytes,
                  std::vector<std::uint8_t>(bytesOf("0800 0700 00 00 09 00 00 00 00000000 00 00 00"
                                                    "00000000 00 00 00 00000000 00 00 00 00000000"
                                                    "00")));
        EXPECT_EQ(waiting(3), 0u);
        EXPECT_EQ(waiting(0), 0u);
    }
};

TEST_F(EngineReplies, GoToEveryGetRequest)
{
    for (int group = 0; group <= 16; ++group) {
        std::vector<std::uint8_t> bytes = bytesOf("01000000 0800 0700 00 00");
        char hex[64];
        snprintf(hex, sizeof hex, "01000000 0800 0700 00 00 %02x", static_cast<unsigned>(group));
        const RawMessage reply = request(hex);
        EXPECT_EQ(reply.type, 1);
        ASSERT_EQ(reply.bytes.size(), 36u);
        EXPECT_EQ(reply.bytes[0], 8);
        EXPECT_EQ(reply.bytes[6], group);
    }
    EXPECT_EQ(waiting(3), 0u);
}

TEST_F(EngineReplies, DoNotGoToTheServiceSwitches)
{
    expectNoReply("01000000 0300 0700 00 01 04 00 55 00 00000000 00 00 00 00000000"
                  "00 00 00 00000000 00 00 00 00000000 00"); /* web server off */
    EXPECT_EQ(registerText(85, 4), "0");
    expectNoReply("01000000 0300 0700 00 01 04 00 55 00 01000000 00 00 00 00000000"
                  "00 00 00 00000000 00 00 00 00000000 00");
    EXPECT_EQ(registerText(85, 4), "1");
    expectNoReply("01000000 0300 0700 00 01 04 00 5b 00 00000000 00 00 00 00000000"
                  "00 00 00 00000000 00 00 00 00000000 00"); /* WS-Management off */
    EXPECT_EQ(registerText(91, 4), "0");
}

TEST_F(EngineReplies, DoNotGoToTheAddressChanges)
{
    expectNoReply("01000000 0300 0700 00 01 04 00 56 00 00000000 00 00 00 00000000"
                  "00 00 00 00000000 00 00 00 00000000 00"); /* DHCP */
    EXPECT_EQ(registerText(86, 4), "0");
    expectNoReply("01000000 0300 0700 00 04 04 00 56 00 01000000 01 57 00 c0a80132"
                  "01 58 00 ffffff00 01 59 00 c0a80101 00"); /* static 192.168.1.50 */
    RemoteManagementServer info;
    ASSERT_EQ(GetRemoteManagementServerInfo(&info), 0);
    EXPECT_EQ(info.IPConfigurationMode, 1);
    EXPECT_STREQ(info.IPv4Address, "192.168.1.50");
    EXPECT_STREQ(info.IPv4Subnet, "255.255.255.0");
    EXPECT_STREQ(info.IPv4Gateway, "192.168.1.1");
}

TEST_F(EngineReplies, DoNotGoToARefusedAddressChangeEither)
{
    expectNoReply("01000000 0300 0700 00 04 04 00 56 00 00000000 01 57 00 00000000"
                  "01 58 00 ffffff00 01 59 00 c0a80101 00");
    EXPECT_TRUE(engineLogged("register 87 in group 4: 0.0.0.0 is not an address of a host"));
    EXPECT_EQ(registerText(86, 4), "1");
    EXPECT_EQ(registerText(89, 4), "192.168.10.1");
}

TEST_F(EngineReplies, GoToTheRestOfTheNetworkGroup)
{
    EXPECT_EQ(request("01000000 0300 0700 00 01 04  00 5c 00 00000000").bytes.at(8), 92); /* WS-Identify */
    EXPECT_EQ(registerText(92, 4), "0");
    EXPECT_EQ(request("01000000 0300 0700 00 01 04  01 59 00 0a000001").bytes.at(8), 89);
    /* two switches at once are no sender's that does not wait */
    EXPECT_EQ(request("01000000 0300 0700 00 02 04  00 55 00 01000000  00 5b 00 01000000").bytes.at(5), 2);
    /* the same register numbers in another group are nobody's */
    EXPECT_EQ(request("01000000 0300 0700 00 01 05  00 55 00 01000000").bytes.at(9), 1);
    EXPECT_EQ(waiting(3), 0u);
}

TEST_F(EngineReplies, GoToRequestsWithTooManyEntriesWhichAreNotApplied)
{
    for (unsigned count : {5u, 6u, 127u, 128u, 255u}) {
        char hex[128];
        snprintf(hex, sizeof hex, "01000000 0300 0700 00 %02x 01  00 19 00 02000000", count);
        const RawMessage reply = request(hex);
        EXPECT_EQ(reply.bytes.at(5), count);
        EXPECT_EQ(reply.bytes.at(9), 1);
        EXPECT_EQ(registerText(25, 1), "0");
        EXPECT_TRUE(
            engineLogged("a message says it has " + std::to_string(count) + " entries, 4 are possible"));
    }
    /* also where a request of that register alone would go unanswered */
    EXPECT_EQ(request("01000000 0300 0700 00 05 04  00 55 00 00000000").bytes.at(5), 5);
    EXPECT_EQ(registerText(85, 4), "1");
}

TEST_F(EngineReplies, DoNotGoToWhatIsNoMessage)
{
    const std::vector<std::uint8_t> whole = bytesOf("0300 0700 00 01 01 00 19 00 02000000 00 00 00 00000000"
                                                    "00 00 00 00000000 00 00 00 00000000 00");
    ASSERT_EQ(whole.size(), 36u);
    for (std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{7}, std::size_t{35}}) {
        sendRaw(1, {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)});
        expectNoReplySoFar();
        EXPECT_TRUE(
            engineLogged("a message of " + std::to_string(size + 4) + " bytes instead of 40; dropped"));
    }
    std::vector<std::uint8_t> longer = whole;
    longer.resize(37);
    sendRaw(1, longer);
    longer.resize(8188);
    sendRaw(1, longer);
    for (long type : {2L, 0L, -1L, 257L}) {
        sendRaw(type, whole);
    }
    expectNoReplySoFar();
    EXPECT_TRUE(engineLogged("a message of 41 bytes instead of 40; dropped"));
    EXPECT_TRUE(engineLogged("a message of 8192 bytes instead of 40; dropped"));
    EXPECT_TRUE(engineLogged("a message of type 2 instead of 1; dropped"));
    EXPECT_TRUE(engineLogged("a message of type 0 instead of 1; dropped"));
    EXPECT_TRUE(engineLogged("a message of type -1 instead of 1; dropped"));
    EXPECT_TRUE(engineLogged("a message of type 257 instead of 1; dropped"));
    EXPECT_EQ(registerText(25, 1), "0");
}

TEST_F(EngineReplies, DoNotGoToOtherCommandsAndSources)
{
    for (int command : {0, 1, 2, 4, 9, 11, 13, 14, 255}) {
        char hex[128];
        snprintf(hex, sizeof hex,
                 "01000000 %02x00 0700 00 01 01 00 19 00 02000000 00 00 00 00000000"
                 "00 00 00 00000000 00 00 00 00000000 00",
                 static_cast<unsigned>(command));
        expectNoReply(hex);
        EXPECT_TRUE(engineLogged("process command " + std::to_string(command) + ","));
    }
    expectNoReply("01000000 0300 0100 00 01 01 00 19 00 02000000 00 00 00 00000000"
                  "00 00 00 00000000 00 00 00 00000000 00"); /* from the web pages */
    EXPECT_TRUE(engineLogged("a message from source 1"));
    expectNoReply("01000000 0300 f9ff 00 01 01 00 19 00 02000000 00 00 00 00000000"
                  "00 00 00 00000000 00 00 00 00000000 00"); /* source -7 */
    EXPECT_TRUE(engineLogged("a message from source -7"));
    EXPECT_EQ(registerText(25, 1), "0");
}

TEST_F(EngineReplies, KeepTheBytesOfTheRequest)
{
    const RawMessage reply = request("01000000 0300 0700 05 01 01  00 19 ff 02000900"
                                     "07 08 09 0a0b0c0d");
    EXPECT_EQ(reply.bytes,
              std::vector<std::uint8_t>(bytesOf("0300 0700 05 01 01 00 19 00 02000900 07 08 09 0a0b0c0d"
                                                "00 00 00 00000000 00 00 00 00000000 00")));
}

TEST_F(EngineReplies, StopWhenToldToBeSilent)
{
    ASSERT_EQ(command("fault silent on"), 0);
    sendRaw("01000000 0300 0700 00 01 01 00 19 00 02000000 00 00 00 00000000"
            "00 00 00 00000000 00 00 00 00000000 00");
    EXPECT_TRUE(engineLogged("told to be silent"));
    EXPECT_EQ(registerText(25, 1), "2");
    EXPECT_EQ(waiting(3), 0u);
    ASSERT_EQ(command("fault silent off"), 0);
    EXPECT_EQ(request(getGroup9).bytes.at(0), 8);
}

TEST_F(EngineReplies, GetLostAsManyAsTold)
{
    ASSERT_EQ(command("fault lose-reply on 2"), 0);
    sendRaw(getGroup9);
    sendRaw(getGroup9);
    const RawMessage reply = request("01000000 0800 0700 00 00 02");
    EXPECT_EQ(reply.bytes.at(6), 2);
    EXPECT_EQ(waiting(3), 0u);
    ASSERT_EQ(command("show faults"), 0);
    EXPECT_NE(commandOutput.find("lose-reply    off"), std::string::npos) << commandOutput;
}

TEST_F(EngineReplies, AreDroppedWhenTheQueueIsRemovedAndTheEngineGoesOn)
{
    request(getGroup9);
    ASSERT_EQ(command("queues remove"), 0);
    EXPECT_TRUE(engineLogged("the request queue was removed; it is created again"));
    EXPECT_EQ(request("01000000 0300 0700 00 01 01  00 19 00 01000000").bytes.at(9), 0);
    EXPECT_EQ(registerText(25, 1), "1");
}

class EngineProcess : public DeskTest
{
};

TEST_F(EngineProcess, EndsCleanlyOnSigterm)
{
    startEngine();
    request(getGroup9);
    EXPECT_EQ(stopEngine(SIGTERM), 0);
    sendRaw(getGroup9); /* its queues are still there */
    EXPECT_EQ(waiting(0), 1u);
}

TEST_F(EngineProcess, EndsCleanlyOnSigintAndRemovesItsQueuesWhenTold)
{
    startEngine({"--remove-queues"});
    sendRaw("01000000 0800 0700 00 00 09 00 00 00 00000000 00 00 00 00000000"
            "00 00 00 00000000 00 00 00 00000000 00");
    ASSERT_TRUE(eventually([&] { return waiting(3) == 1; }));
    EXPECT_EQ(stopEngine(SIGINT), 0);
    EXPECT_EQ(waiting(3), 0u);
    ASSERT_EQ(command("show queues"), 0);
    EXPECT_NE(commandOutput.find("none yet (replies)"), std::string::npos) << commandOutput;
    EXPECT_NE(commandOutput.find("none yet (requests to the engine)"), std::string::npos) << commandOutput;
}

TEST_F(EngineProcess, EndsAtOnceWhileItIsSlow)
{
    startEngine();
    ASSERT_EQ(command("fault slow on 3600"), 0);
    sendRaw(getGroup9);
    ASSERT_TRUE(eventually([&] { return waiting(0) == 0; }));
    EXPECT_EQ(stopEngine(SIGTERM), 0);
}

TEST_F(EngineProcess, TakesStoreAndQueueKeyFromItsOptions)
{
    const std::string key = std::to_string(queueKey), other = directory + "/other.db";
    setenv("DESK_MONITOR_STORE", (directory + "/wrong.db").c_str(), 1);
    setenv("DESK_MONITOR_QUEUE_KEY", "no key", 1);
    startEngine({"--store", other, "--queue-key", key});
    setenv("DESK_MONITOR_STORE", other.c_str(), 1);
    setenv("DESK_MONITOR_QUEUE_KEY", key.c_str(), 1);
    request("01000000 0300 0700 00 01 01  00 19 00 01000000");
    EXPECT_EQ(registerText(25, 1), "1");
}

TEST_F(EngineProcess, SaysInAFileThatItServes)
{
    const std::string file = directory + "/ready";
    startEngine({"--ready-file", file});
    ASSERT_TRUE(eventually([&] { return !contentOf(file).empty(); }));
    EXPECT_EQ(contentOf(file), std::to_string(queueKey) + "\n");
    request(getGroup9);
    EXPECT_EQ(stopEngine(SIGTERM), 0);
    const std::string log = directory + "/log";
    EXPECT_EQ(endOf(startProgram({DESK_ENGINE, "--ready-file", directory + "/none/ready"}, log)), 1);
    EXPECT_NE(contentOf(log).find("/none/ready cannot be written: No such file or directory"),
              std::string::npos)
        << contentOf(log);
}

TEST_F(EngineProcess, EndsWithTwoForACommandLineThatIsNone)
{
    const std::string log = directory + "/log";
    EXPECT_EQ(endOf(startProgram({DESK_ENGINE, "--dance"}, log)), 2);
    EXPECT_EQ(endOf(startProgram({DESK_ENGINE, "serve"}, log)), 2);
    EXPECT_EQ(endOf(startProgram({DESK_ENGINE, "--help"}, log)), 0);
    EXPECT_EQ(endOf(startProgram({DESK_ENGINE, "--version"}, log)), 0);
}

TEST_F(EngineProcess, RefusesKeysThatAreNone)
{
    const std::string log = directory + "/log";
    for (const char *key : {"0", "-1", "12x", "0x7fffffff", "99999999999999999999"}) {
        EXPECT_EQ(endOf(startProgram({DESK_ENGINE, "--queue-key", key}, log)), 2) << key;
    }
    EXPECT_NE(contentOf(log).find("is not a usable queue key"), std::string::npos);
}

TEST_F(EngineProcess, IsAloneOnItsQueues)
{
    startEngine();
    const std::string log = directory + "/second.log";
    EXPECT_EQ(endOf(startProgram({DESK_ENGINE}, log)), 1);
    EXPECT_NE(contentOf(log).find("another engine serves the queues"), std::string::npos);
    EXPECT_EQ(stopEngine(SIGKILL), 128 + SIGKILL);
    startEngine(); /* nothing of the killed one is in the way */
    request(getGroup9);
}

TEST_F(EngineProcess, FailsWithoutAStore)
{
    setenv("DESK_MONITOR_STORE", (directory + "/none/store.db").c_str(), 1);
    const std::string log = directory + "/log";
    EXPECT_EQ(endOf(startProgram({DESK_ENGINE}, log)), 1);
    EXPECT_NE(contentOf(log).find("cannot be opened"), std::string::npos) << contentOf(log);
}

/* Whoever sent them has been refused, or thinks that nobody listens. */
TEST_F(EngineProcess, DropsRequestsOlderThanItself)
{
    sendRaw("01000000 0300 0700 00 01 01 00 19 00 02000000 00 00 00 00000000"
            "00 00 00 00000000 00 00 00 00000000 00");
    sendRaw("01000000 0300 0700 00 01 04 00 55 00 00000000 00 00 00 00000000"
            "00 00 00 00000000 00 00 00 00000000 00"); /* one that is not waited for */
    startEngine();
    EXPECT_EQ(request(getGroup9).bytes.at(0), 8);
    EXPECT_TRUE(engineLogged("a request of group 1 is older than this engine; dropped"));
    EXPECT_TRUE(engineLogged("a request of group 4 is older than this engine; dropped"));
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_EQ(registerText(85, 4), "1");
    EXPECT_EQ(waiting(0), 0u);
    EXPECT_EQ(waiting(3), 0u);
}

/* What a queue holds that no ticket stands for was put there by nobody who waits for it. */
TEST_F(EngineProcess, DropsRequestsWithoutATicket)
{
    startEngine();
    const long ticket = sendRaw(getGroup9);
    ASSERT_TRUE(receiveRaw());
    struct {
        long ticket;
        std::uint8_t bytes[40];
    } message{ticket, {1, 0, 0, 0, 3, 0, 7, 0, 0, 1, 1, 0, 25, 0, 2}};
    ASSERT_EQ(msgsnd(msgget(queueKey, 0), &message, sizeof message.bytes, 0), 0);
    EXPECT_TRUE(
        engineLogged("a request of group 1 was taken back, as its sender waits no longer; not applied"));
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_EQ(waiting(3), 0u);
}

} // namespace
