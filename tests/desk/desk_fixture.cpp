// SPDX-License-Identifier: Apache-2.0
#include "desk_fixture.h"

#include "support/board.h"
#include "support/shell.h"

#include <monitor_support.h>

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace
{

constexpr std::size_t messageSize = 40;
constexpr std::size_t typeSize = 4;

struct KernelMessage {
    long ticket;
    std::uint8_t bytes[8192];
};

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    ADD_FAILURE() << "not a hexadecimal digit: " << c;
    return 0;
}

} // namespace

std::vector<std::uint8_t> bytesOf(const char *hex)
{
    std::string digits;
    for (; *hex != '\0'; ++hex) {
        if (*hex != ' ') {
            digits += *hex;
        }
    }
    EXPECT_EQ(digits.size() % 2, 0u) << digits;
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(hexDigit(digits[i]) << 4 | hexDigit(digits[i + 1])));
    }
    return bytes;
}

pid_t startProgram(const std::vector<std::string> &arguments, const std::string &errorFile)
{
    std::vector<char *> pointers;
    for (const std::string &argument : arguments) {
        pointers.push_back(const_cast<char *>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    const pid_t process = fork();
    if (process != 0) {
        return process;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL); /* a test program that crashes leaves no engine behind */
    const int errors = open(errorFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    const int nothing = open("/dev/null", O_RDWR);
    dup2(nothing, STDIN_FILENO);
    dup2(nothing, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    execv(pointers[0], pointers.data());
    _exit(127);
}

int endOf(pid_t process)
{
    int status = 0;
    while (waitpid(process, &status, 0) == -1) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

bool eventually(const std::function<bool()> &condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

std::string contentOf(const std::string &file)
{
    std::ifstream stream(file);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

void DeskTest::SetUp()
{
    static int tests = 0;
    /* In memory where there is such a place: flushing to a disk is most of what a test would wait for. */
    std::string name =
        std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") + "/desk-tests-XXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    directory = name;
    store = directory + "/store.db";
    /* Four keys per test, apart from those of every other process. */
    queueKey = 0x10000000 | (static_cast<int>(getpid()) & 0x3fffff) << 6 | (tests++ % 16) * 4;
    setenv("DESK_MONITOR_STORE", store.c_str(), 1);
    setenv("DESK_MONITOR_QUEUE_KEY", std::to_string(queueKey).c_str(), 1);
    setenv("DESK_MONITOR_RECEIVE_TIMEOUT", "5", 1);
}

void DeskTest::TearDown()
{
    if (engine_ > 0) {
        stopEngine(SIGKILL);
    }
    for (int queue = 0; queue < 4; ++queue) {
        if (const int identifier = queueIdentifier(queue, false); identifier != -1) {
            msgctl(identifier, IPC_RMID, nullptr);
        }
    }
    desk::removeSharedMemory(queueKey);
    desk::EnginePlace::removeUnused(queueKey);
    std::filesystem::remove_all(directory);
    unsetenv("DESK_MONITOR_STORE");
    unsetenv("DESK_MONITOR_QUEUE_KEY");
    unsetenv("DESK_MONITOR_RECEIVE_TIMEOUT");
}

void DeskTest::startEngine(std::vector<std::string> options)
{
    std::filesystem::remove(directory + "/engine.log");
    options.insert(options.begin(), DESK_ENGINE);
    engine_ = startProgram(options, directory + "/engine.log");
    ASSERT_TRUE(engineLogged("desk-engine: ready")) << engineLog();
}

int DeskTest::stopEngine(int signal)
{
    // 0 and -1 would mean this process's group, and every process there is.
    if (engine_ <= 0) {
        ADD_FAILURE() << "no engine runs";
        return -1;
    }
    kill(engine_, signal);
    const int status = endOf(engine_);
    engine_ = -1;
    return status;
}

bool DeskTest::engineLogged(const std::string &text)
{
    return eventually([&] { return engineLog().find(text) != std::string::npos; });
}

int DeskTest::command(const std::string &arguments)
{
    char **out = nullptr, **err = nullptr;
    const int status = runcommand((DESK_MONITOR " " + arguments).c_str(), nullptr, &out, &err);
    commandOutput.clear();
    commandErrors.clear();
    for (char **line = out; line != nullptr && *line != nullptr; ++line) {
        commandOutput += *line;
    }
    for (char **line = err; line != nullptr && *line != nullptr; ++line) {
        commandErrors += *line;
    }
    freeresultbuf(out);
    freeresultbuf(err);
    return status;
}

int DeskTest::queueIdentifier(int queue, bool create)
{
    return msgget(queueKey + queue, create ? IPC_CREAT | 0600 : 0);
}

void DeskTest::makeQueue(int queue)
{
    ASSERT_NE(queueIdentifier(queue, true), -1);
}

long DeskTest::sendRaw(long type, const std::vector<std::uint8_t> &bytes)
{
    KernelMessage message;
    message.ticket = static_cast<long>(desk::Board(queueKey).open());
    EXPECT_GT(message.ticket, 0) << "too many requests under way";
    for (std::size_t i = 0; i < typeSize; ++i) {
        message.bytes[i] = static_cast<std::uint8_t>(type >> (8 * i));
    }
    const std::size_t size = std::min(bytes.size(), sizeof message.bytes - typeSize);
    std::copy_n(bytes.begin(), size, message.bytes + typeSize);
    EXPECT_EQ(msgsnd(queueIdentifier(0, true), &message, typeSize + size, IPC_NOWAIT), 0) << strerror(errno);
    return message.ticket;
}

long DeskTest::sendRaw(const char *fortyBytes)
{
    const std::vector<std::uint8_t> bytes = bytesOf(fortyBytes);
    EXPECT_EQ(bytes.size(), messageSize) << fortyBytes;
    const long type = bytes[0] | bytes[1] << 8 | bytes[2] << 16 | bytes[3] << 24;
    return sendRaw(type, {bytes.begin() + typeSize, bytes.end()});
}

std::optional<RawMessage> DeskTest::receiveRaw()
{
    KernelMessage message;
    ssize_t size = -1;
    const int queue = queueIdentifier(3, true);
    const bool came = eventually([&] {
        size = msgrcv(queue, &message, sizeof message.bytes, 0, IPC_NOWAIT);
        return size != -1;
    });
    if (!came || size < static_cast<ssize_t>(typeSize)) {
        return std::nullopt;
    }
    desk::Board(queueKey).close(static_cast<desk::Ticket>(message.ticket));
    const long type =
        message.bytes[0] | message.bytes[1] << 8 | message.bytes[2] << 16 | message.bytes[3] << 24;
    return RawMessage{type, {message.bytes + typeSize, message.bytes + size}, message.ticket};
}

unsigned long DeskTest::waiting(int queue)
{
    msqid_ds state{};
    const int identifier = queueIdentifier(queue, false);
    return identifier != -1 && msgctl(identifier, IPC_STAT, &state) == 0 ? state.msg_qnum : 0;
}

RawMessage DeskTest::request(const char *hex)
{
    std::vector<std::uint8_t> bytes = bytesOf(hex);
    EXPECT_LE(bytes.size(), messageSize) << hex;
    bytes.resize(messageSize);
    const long ticket = sendRaw(bytes[0], {bytes.begin() + typeSize, bytes.end()});
    const std::optional<RawMessage> reply = receiveRaw();
    EXPECT_TRUE(reply.has_value()) << "no reply to " << hex;
    if (reply) {
        EXPECT_EQ(reply->ticket, ticket) << "another request's reply";
    }
    return reply.value_or(RawMessage{0, std::vector<std::uint8_t>(messageSize - typeSize, 0xee), 0});
}

std::string DeskTest::registerText(int registerId, int group)
{
    char text[REGISTER_TEXT_SIZE] = "untouched";
    return GetRegisterValue(registerId, group, text) == 0 ? text : "failure";
}
