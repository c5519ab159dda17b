// SPDX-License-Identifier: Apache-2.0
// Calendar dates as people write them here, DD/MM/YYYY.
#ifndef DESK_SUPPORT_DATES_H
#define DESK_SUPPORT_DATES_H

#include <optional>
#include <string>
#include <string_view>

namespace desk
{

/** Seconds since 1970-01-01 UTC of the day's beginning. Nothing unless the text is two, two and four digits
 * with slashes between them that name a day of the calendar, and the seconds fit 32 bits: the days from
 * 14/12/1901 to 19/01/2038. */
std::optional<int> dateSeconds(std::string_view text);

/** The day of a number of seconds. */
std::string dateText(int seconds);

} // namespace desk

#endif
