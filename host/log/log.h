// SPDX-License-Identifier: Apache-2.0
// Messages of the object manager to its operator, on standard error.
#ifndef HOST_LOG_LOG_H
#define HOST_LOG_LOG_H

#include <chrono>
#include <mutex>
#include <string>
#include <string_view>

namespace host
{

/** Writes one line in a single write. Until beginLog() it is a program's message, "display-host: " in front;
 * after it a line of a log, with the time (UTC) and the address of the client whom it concerns, "-" when it
 * concerns none. Bytes that are no printable characters are shown as question marks. */
void logLine(const char *format, ...) __attribute__((format(printf, 1, 2)));

/** Keeps lines that clients can cause from filling the log: so many in a second, and then how many more. Safe
 * to use by many threads. */
class LogLimiter
{
  public:
    /** what: what there were more of, "failed logins" for instance; a literal. */
    explicit LogLimiter(const char *what) : what_(what) {}

    using Clock = std::chrono::steady_clock;

    /** False when the line is to be left out. */
    bool permits(Clock::time_point now = Clock::now());

    /** Logs how many were left out; to be called every second or so. */
    void tellRest(Clock::time_point now = Clock::now());

  private:
    static constexpr unsigned perSecond = 10;

    const char *what_;
    std::mutex mutex_;
    Clock::time_point second_;
    unsigned inSecond_ = 0;
    unsigned leftOut_ = 0;
};

/** From now on lines have time and address. */
void beginLog();

/** The time as logs have it: 2026-11-22T04:45:11.123Z. */
std::string logTime();

/** As long as it lives, what this thread logs concerns the client with that numeric address, which must
 * outlive it. */
class LogClient
{
  public:
    explicit LogClient(std::string_view address);
    LogClient(const LogClient &) = delete;
    LogClient &operator=(const LogClient &) = delete;
    ~LogClient();

  private:
    std::string_view before_;
};

/** From now on what this thread logs concerns that client, if no LogClient says otherwise; "-": none. */
void setLogClient(std::string_view address);

/** The address that the present LogClient of this thread has named; "-" without one. */
std::string_view logClient();

} // namespace host

#endif
