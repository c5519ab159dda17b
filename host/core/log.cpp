#include "core/log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace host
{

void logLine(const char *format, ...)
{
    constexpr char NAME[] = "display-host: ";
    constexpr std::size_t PREFIX = sizeof NAME - 1;
    char line[2048];
    std::memcpy(line, NAME, PREFIX);
    va_list arguments;
    va_start(arguments, format);
    const int wanted = std::vsnprintf(line + PREFIX, sizeof line - PREFIX - 1, format, arguments);
    va_end(arguments);
    const std::size_t length =
        std::min(PREFIX + static_cast<std::size_t>(std::max(wanted, 0)), sizeof line - 2);
    line[length] = '\n';
    if (write(STDERR_FILENO, line, length + 1) < 0) {
        return; // there is nowhere left to say it
    }
}

} // namespace host
