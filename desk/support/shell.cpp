// SPDX-License-Identifier: Apache-2.0
#include "support/shell.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <utility>

namespace
{

constexpr std::size_t longestOutput = std::size_t{16} * 1024 * 1024;

class Descriptor
{
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : fd_(number) {}
    Descriptor(Descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor()
    {
        close();
    }
    void close()
    {
        if (fd_ != -1) {
            ::close(std::exchange(fd_, -1));
        }
    }
    int number() const
    {
        return fd_;
    }
    bool valid() const
    {
        return fd_ != -1;
    }

  private:
    int fd_ = -1;
};

/** Moves a descriptor out of the way of standard input, output and error, which a host may have closed. */
Descriptor aboveStandard(Descriptor low)
{
    if (!low.valid() || low.number() > STDERR_FILENO) {
        return low;
    }
    return Descriptor(fcntl(low.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

/** One output of the command. */
struct Output {
    bool wanted;
    Descriptor readEnd, writeEnd;
    std::string bytes;

    explicit Output(bool keep) : wanted(keep) {}
    bool open()
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) == -1) {
            return false;
        }
        readEnd = aboveStandard(Descriptor(ends[0]));
        writeEnd = aboveStandard(Descriptor(ends[1]));
        return readEnd.valid() && writeEnd.valid();
    }
    // Takes what there is; closes at the end of the output.
    void take()
    {
        char buffer[65536];
        const ssize_t count = ::read(readEnd.number(), buffer, sizeof buffer);
        if (count > 0) {
            const std::size_t room = wanted ? longestOutput - bytes.size() : 0;
            bytes.append(buffer, std::min(static_cast<std::size_t>(count), room));
        } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            readEnd.close();
        }
    }
};

/** The standard input of the command: an unnamed file with the lines, which cannot block as a pipe could. */
Descriptor openInput(char **input)
{
    if (input == nullptr) {
        return Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    }
    Descriptor file(memfd_create("command-input", MFD_CLOEXEC));
    if (!file.valid()) {
        return file;
    }
    for (; *input != nullptr; ++input) {
        const char *at = *input;
        std::size_t left = strlen(at);
        while (left > 0) {
            const ssize_t count = write(file.number(), at, left);
            if (count == -1 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return Descriptor();
            }
            at += count;
            left -= static_cast<std::size_t>(count);
        }
    }
    if (lseek(file.number(), 0, SEEK_SET) == -1) {
        return Descriptor();
    }
    return file;
}

/** Starts the shell with these three descriptors and no other, in a process group of its own. -1 when it
 * cannot be started. */
pid_t startShell(const char *command, int input, int output, int errors)
{
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    if (posix_spawn_file_actions_init(&actions) != 0) {
        return -1;
    }
    if (posix_spawnattr_init(&attributes) != 0) {
        posix_spawn_file_actions_destroy(&actions);
        return -1;
    }
    sigset_t none, defaults;
    sigemptyset(&none);
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    sigaddset(&defaults, SIGCHLD);

    char shell[] = "sh", option[] = "-c";
    char *arguments[] = {shell, option, const_cast<char *>(command), nullptr};
    pid_t child = -1;
    const bool started =
        posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO) == 0 &&
        posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO) == 0 &&
        posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO) == 0 &&
        posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1) == 0 &&
        posix_spawnattr_setsigmask(&attributes, &none) == 0 &&
        posix_spawnattr_setsigdefault(&attributes, &defaults) == 0 &&
        posix_spawnattr_setpgroup(&attributes, 0) == 0 &&
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF |
                                                  POSIX_SPAWN_SETPGROUP) == 0 &&
        posix_spawn(&child, "/bin/sh", &actions, &attributes, arguments, environ) == 0;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return started ? child : -1;
}

using Clock = std::chrono::steady_clock;

/** How long a command may take: DESK_SHELL_TIMEOUT in seconds, with fractions; 30 unless it is set to a time.
 */
Clock::duration timeLimit()
{
    constexpr double usual = 30, longest = 24 * 3600;
    const char *text = getenv("DESK_SHELL_TIMEOUT");
    double seconds = usual;
    if (text != nullptr) {
        const char *end = text + strlen(text);
        const auto [rest, error] = std::from_chars(text, end, seconds);
        if (error != std::errc() || rest != end || !(seconds >= 0)) {
            seconds = usual;
        }
    }
    return std::chrono::nanoseconds(static_cast<long long>(std::min(seconds, longest) * 1e9));
}

/** Waits for one of the descriptors; false when the time is over. */
bool pollUntil(Clock::time_point end, pollfd *descriptors, nfds_t count)
{
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        const int result = poll(descriptors, count, static_cast<int>(std::max<long long>(left, 0)));
        if (result > 0 || (result == -1 && errno != EINTR)) {
            return true;
        }
        if (left <= 0) {
            return false;
        }
    }
}

/** Reads both outputs to their ends, whichever has something. False when the time is over. */
bool drain(Output &out, Output &err, Clock::time_point end)
{
    while (out.readEnd.valid() || err.readEnd.valid()) {
        pollfd ends[] = {{out.readEnd.number(), POLLIN, 0}, {err.readEnd.number(), POLLIN, 0}};
        if (!pollUntil(end, ends, 2)) {
            return false;
        }
        if (ends[0].revents != 0) {
            out.take();
        }
        if (ends[1].revents != 0) {
            err.take();
        }
    }
    return true;
}

/** Waits for the end of a process that may have closed its outputs long before. False when the time is over.
 */
bool endsUntil(Clock::time_point end, pid_t child)
{
    const Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
    pollfd descriptor{process.number(), POLLIN, 0};
    return !process.valid() || pollUntil(end, &descriptor, 1);
}

int waitForEnd(pid_t child)
{
    int status = 0;
    while (waitpid(child, &status, 0) == -1) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

/** The bytes as lines; null when there is no memory for them. */
char **splitLines(const std::string &bytes)
{
    std::size_t count = 0;
    for (std::size_t at = 0; at < bytes.size(); ++count) {
        at = std::min(bytes.find('\n', at), bytes.size() - 1) + 1;
    }
    char **lines = static_cast<char **>(calloc(count + 1, sizeof *lines));
    if (lines == nullptr) {
        return nullptr;
    }
    std::size_t at = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t end = std::min(bytes.find('\n', at), bytes.size() - 1) + 1;
        char *line = static_cast<char *>(malloc(end - at + 1));
        if (line == nullptr) {
            freeresultbuf(lines);
            return nullptr;
        }
        memcpy(line, bytes.data() + at, end - at);
        line[end - at] = '\0';
        lines[i] = line;
        at = end;
    }
    return lines;
}

/** A SIGPIPE is not possible here: the only writes go to an unnamed file. */
int run(const char *command, char **input, char ***out, char ***err)
{
    Output output(out != nullptr), errors(err != nullptr);
    Descriptor stdinFile = aboveStandard(openInput(input));
    if (!stdinFile.valid() || !output.open() || !errors.open()) {
        return -1;
    }
    const pid_t child =
        startShell(command, stdinFile.number(), output.writeEnd.number(), errors.writeEnd.number());
    output.writeEnd.close();
    errors.writeEnd.close();
    if (child == -1) {
        return -1;
    }
    const Clock::time_point end = Clock::now() + timeLimit();
    if (!drain(output, errors, end) || !endsUntil(end, child)) {
        kill(-child, SIGKILL); // with all that it has started
        waitForEnd(child);
        return -1;
    }
    output.readEnd.close();
    errors.readEnd.close();
    const int status = waitForEnd(child);

    char **outputLines = out != nullptr ? splitLines(output.bytes) : nullptr;
    char **errorLines = err != nullptr ? splitLines(errors.bytes) : nullptr;
    if ((out != nullptr && outputLines == nullptr) || (err != nullptr && errorLines == nullptr)) {
        freeresultbuf(outputLines);
        freeresultbuf(errorLines);
        return -1;
    }
    if (out != nullptr) {
        *out = outputLines;
    }
    if (err != nullptr) {
        *err = errorLines;
    }
    return status;
}

} // namespace

int runcommand(const char *command, char **input, char ***out, char ***err)
{
    if (out != nullptr) {
        *out = nullptr;
    }
    if (err != nullptr) {
        *err = nullptr;
    }
    if (command == nullptr) {
        return -1;
    }
    try {
        return run(command, input, out, err);
    } catch (const std::exception &) { // no memory
        return -1;
    }
}

void freeresultbuf(char **lines)
{
    if (lines == nullptr) {
        return;
    }
    for (char **line = lines; *line != nullptr; ++line) {
        free(*line);
    }
    free(lines);
}
