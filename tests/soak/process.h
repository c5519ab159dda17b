// SPDX-License-Identifier: Apache-2.0
// The programs that are run, stopped and killed.
#ifndef TESTS_SOAK_PROCESS_H
#define TESTS_SOAK_PROCESS_H

#include <sys/types.h>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace soak
{

/** A child process. It ends with the thread that has started it, however that ends. */
class Process
{
  public:
    Process() = default;
    ~Process();
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    /** Starts a program; its output is appended to a file. Throws std::runtime_error. */
    void start(std::vector<std::string> command, const std::string &output);

    /** Sends a signal, if there is a process. */
    void signal(int number);

    /** True when it has ended; how is then in status. */
    bool hasEnded();

    /** Waits for the end: the exit code, or 128 and the signal. */
    int wait();

    bool isStarted() const
    {
        return pid_ > 0;
    }
    pid_t pid() const
    {
        return pid_;
    }

  private:
    // Signals come from another thread than the one that waits.
    std::mutex mutex_;
    pid_t pid_ = 0;
    std::optional<int> status_;
};

/** Runs a program to its end: the exit code, or 128 and the signal. Its input is the text. */
int run(const std::vector<std::string> &command, const std::string &input, const std::string &output);

/** A number of /proc/PID/status: VmRSS in kB, Threads. */
long statusOf(pid_t pid, const std::string &name);

/** How many descriptors a process has open, and how many of these are connections. */
struct Descriptors {
    int all = 0;
    int sockets = 0;
};
Descriptors descriptorsOf(pid_t pid);

} // namespace soak

#endif
