// Messages of the object manager to its operator, on standard error.
#ifndef HOST_CORE_LOG_H
#define HOST_CORE_LOG_H

namespace host
{

/** Writes one line, "display-host: " in front, in a single write. */
void logLine(const char *format, ...) __attribute__((format(printf, 1, 2)));

} // namespace host

#endif
