// SPDX-License-Identifier: Apache-2.0
// What the tests of the desk monitor stand on: a store, queues and an engine process of their own.
//
// MonitorInfo is packed: checks take its numbers by value, as in EXPECT_EQ(+info.BacklightHours, 1), not by a
// reference that would be misaligned.
#ifndef TESTS_DESK_DESK_FIXTURE_H
#define TESTS_DESK_DESK_FIXTURE_H

#include <gtest/gtest.h>

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/** A message as it came from a queue: the first four of its 40 bytes, and the others. */
struct RawMessage {
    long type;
    std::vector<std::uint8_t> bytes;
    long ticket;
};

/* Bytes from hexadecimal text; blanks are skipped. */
std::vector<std::uint8_t> bytesOf(const char *hex);

/* Starts a program with standard error in a file, standard output dropped. */
pid_t startProgram(const std::vector<std::string> &arguments, const std::string &errorFile);

/* The exit status, 128 + signal when a signal ended it. */
int endOf(pid_t process);

/* Waits until the condition holds; false after ten seconds. */
bool eventually(const std::function<bool()> &condition);

std::string contentOf(const std::string &file);

class DeskTest : public testing::Test
{
  public:
    void SetUp() override;
    void TearDown() override;

    /* The engine process. Options are added to its command line. */
    void startEngine(std::vector<std::string> options = {});
    int stopEngine(int signal);
    pid_t engineProcess() const
    {
        return engine_;
    }
    /* True when the engine has logged a line with the text. */
    bool engineLogged(const std::string &text);
    std::string engineLog() const
    {
        return contentOf(directory + "/engine.log");
    }

    /* The command of the desk monitor; its exit status. Its standard output goes to the variable. */
    int command(const std::string &arguments);
    std::string commandOutput;
    std::string commandErrors;

    /* Raw access to the queues, past the support library. The first four of the 40 bytes are the type. */
    long sendRaw(const char *fortyBytes);
    long sendRaw(long type, const std::vector<std::uint8_t> &bytes);
    std::optional<RawMessage> receiveRaw();
    unsigned long waiting(int queue);
    void makeQueue(int queue);
    /* Sends a request and expects its reply, with its ticket; the bytes that follow the given ones are zero
     * up to 40. */
    RawMessage request(const char *hex);

    static std::string registerText(int registerId, int group);

    std::string directory;
    std::string store;
    int queueKey = 0;

  private:
    int queueIdentifier(int queue, bool create);
    pid_t engine_ = -1;
};

#endif
