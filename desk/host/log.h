// Messages of the object manager to its operator, on standard error.
#ifndef DESK_HOST_LOG_H
#define DESK_HOST_LOG_H

namespace host
{

/** Writes one line, "desk-host: " in front, in a single write. */
void logLine(const char *format, ...) __attribute__((format(printf, 1, 2)));

} // namespace host

#endif
