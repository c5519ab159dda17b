// SPDX-License-Identifier: Apache-2.0
#include "log/log.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace host
{
namespace
{

std::atomic<bool> begun = false;
thread_local std::string_view client = "-";

/** What stands before the message; the bytes written. */
std::size_t writePrefix(char *line, std::size_t size)
{
    const int length =
        begun ? std::snprintf(line, size, "%s %.*s ", logTime().c_str(),
                              static_cast<int>(std::min<std::size_t>(client.size(), 64)), client.data())
              : std::snprintf(line, size, "display-host: ");
    return static_cast<std::size_t>(length);
}

} // namespace

std::string logTime()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    tm utc = {};
    gmtime_r(&now.tv_sec, &utc);
    char seconds[32];
    std::strftime(seconds, sizeof seconds, "%Y-%m-%dT%H:%M:%S", &utc);
    char text[48];
    std::snprintf(text, sizeof text, "%s.%03ldZ", seconds, now.tv_nsec / 1000000);
    return text;
}

void beginLog()
{
    begun = true;
}

LogClient::LogClient(std::string_view address) : before_(client)
{
    client = address;
}

LogClient::~LogClient()
{
    client = before_;
}

void setLogClient(std::string_view address)
{
    client = address;
}

std::string_view logClient()
{
    return client;
}

bool LogLimiter::permits(Clock::time_point now)
{
    tellRest(now);
    const std::lock_guard lock(mutex_);
    if (++inSecond_ <= perSecond) {
        return true;
    }
    ++leftOut_;
    return false;
}

void LogLimiter::tellRest(Clock::time_point now)
{
    const std::lock_guard lock(mutex_);
    if (now - second_ < std::chrono::seconds(1)) {
        return;
    }
    if (leftOut_ != 0) {
        const LogClient nobody("-");
        logLine("%u more %s than were logged", leftOut_, what_);
    }
    second_ = now;
    inSecond_ = 0;
    leftOut_ = 0;
}

void logLine(const char *format, ...)
{
    char line[2048];
    const std::size_t prefix = writePrefix(line, sizeof line);
    va_list arguments;
    va_start(arguments, format);
    const int wanted = std::vsnprintf(line + prefix, sizeof line - prefix - 1, format, arguments);
    va_end(arguments);
    const std::size_t length =
        std::min(prefix + static_cast<std::size_t>(std::max(wanted, 0)), sizeof line - 2);
    // What a client sent must not look like another line, or command a terminal.
    std::replace_if(
        line, line + length, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }, '?');
    line[length] = '\n';
    if (write(STDERR_FILENO, line, length + 1) < 0) {
        return; // there is nowhere left to say it
    }
}

} // namespace host
