// SPDX-License-Identifier: Apache-2.0
// Dates and intervals as CIM writes them (DSP0004, datetime): 25 characters,
// "yyyymmddhhmmss.mmmmmmsutc" for a point in time, "ddddddddhhmmss.mmmmmm:000" for an interval.
#ifndef HOST_CMPI_DATE_TIME_H
#define HOST_CMPI_DATE_TIME_H

#include <cstdint>
#include <string_view>

namespace host
{

inline constexpr std::size_t dateTimeLength = 25;

/** Writes the text of a point in time, in UTC, with its terminating zero. microseconds: since 1970-01-01
 * UTC, negative before. False, and nothing written, outside the years 0 to 9999. */
bool formatTimestamp(std::int64_t microseconds, char (&text)[dateTimeLength + 1]);

/** Writes the text of an interval. False, and nothing written, beyond 99999999 days. */
bool formatInterval(std::uint64_t microseconds, char (&text)[dateTimeLength + 1]);

/** Reads either form. microseconds: of a point in time since 1970-01-01 UTC (two's complement), of an
 * interval its length; digits given as asterisks count as the smallest value of their field. False when the
 * text is not a CIM datetime. */
bool parseDateTime(std::string_view text, std::uint64_t &microseconds, bool &isInterval);

} // namespace host

#endif
