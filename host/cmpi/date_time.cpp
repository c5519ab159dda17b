// SPDX-License-Identifier: Apache-2.0
#include "cmpi/date_time.h"

#include <cstddef>
#include <cstring>

namespace host
{
namespace
{

constexpr std::int64_t oneSecond = 1000000;
constexpr std::int64_t oneMinute = 60 * oneSecond;
constexpr std::int64_t oneHour = 60 * oneMinute;
constexpr std::int64_t oneDay = 24 * oneHour;

// Days between 1970-01-01 and a date of the proleptic Gregorian calendar. The year is taken to start in
// March, so that the leap day comes last.
constexpr std::int64_t daysFromDate(std::int64_t year, unsigned month, unsigned day)
{
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const auto yearOfEra = static_cast<unsigned>(year - era * 400);
    const unsigned dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + static_cast<std::int64_t>(dayOfEra) - 719468;
}

struct Date {
    std::int64_t year;
    unsigned month;
    unsigned day;
};

constexpr Date dateFromDays(std::int64_t days)
{
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const auto dayOfEra = static_cast<unsigned>(days - era * 146097);
    const unsigned yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned march = (5 * dayOfYear + 2) / 153;
    const unsigned month = march < 10 ? march + 3 : march - 9;
    return {static_cast<std::int64_t>(yearOfEra) + era * 400 + (month <= 2 ? 1 : 0), month,
            dayOfYear - (153 * march + 2) / 5 + 1};
}

static_assert(daysFromDate(1970, 1, 1) == 0);
static_assert(dateFromDays(-1).year == 1969 && dateFromDays(-1).month == 12 && dateFromDays(-1).day == 31);

void putDigits(char *text, std::size_t width, std::uint64_t value)
{
    for (std::size_t i = width; i > 0; --i) {
        text[i - 1] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
}

void putTimeOfDay(char *text, std::uint64_t microseconds)
{
    putDigits(text, 2, microseconds / oneHour);
    putDigits(text + 2, 2, microseconds / oneMinute % 60);
    putDigits(text + 4, 2, microseconds / oneSecond % 60);
    text[6] = '.';
    putDigits(text + 7, 6, microseconds % oneSecond);
}

/** Reads a field of digits, or of asterisks where those are allowed (then the value is `unknown`). */
bool readField(std::string_view text, std::uint64_t unknown, std::uint64_t maximum, std::uint64_t &value)
{
    if (text.find_first_not_of('*') == std::string_view::npos) {
        value = unknown;
        return true;
    }
    value = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9') {
            return false;
        }
        value = value * 10 + static_cast<unsigned>(digit - '0');
    }
    return value <= maximum;
}

/** The six digits of the fraction may end in asterisks (DSP0004: precision of the seconds). */
bool readFraction(std::string_view text, std::uint64_t &value)
{
    char digits[6];
    std::memcpy(digits, text.data(), sizeof digits);
    for (std::size_t i = sizeof digits; i > 0 && digits[i - 1] == '*'; --i) {
        digits[i - 1] = '0';
    }
    return readField({digits, sizeof digits}, 0, 999999, value);
}

bool readTimeOfDay(std::string_view text, std::uint64_t &microseconds)
{
    std::uint64_t hour = 0;
    std::uint64_t minute = 0;
    std::uint64_t second = 0;
    std::uint64_t fraction = 0;
    if (text[6] != '.' || !readField(text.substr(0, 2), 0, 23, hour) ||
        !readField(text.substr(2, 2), 0, 59, minute) || !readField(text.substr(4, 2), 0, 59, second) ||
        !readFraction(text.substr(7, 6), fraction)) {
        return false;
    }
    microseconds = hour * oneHour + minute * oneMinute + second * oneSecond + fraction;
    return true;
}

} // namespace

bool formatTimestamp(std::int64_t microseconds, char (&text)[dateTimeLength + 1])
{
    std::int64_t days = microseconds / oneDay;
    std::int64_t rest = microseconds % oneDay;
    if (rest < 0) {
        rest += oneDay;
        --days;
    }
    const Date date = dateFromDays(days);
    if (date.year < 0 || date.year > 9999) {
        return false;
    }
    putDigits(text, 4, static_cast<std::uint64_t>(date.year));
    putDigits(text + 4, 2, date.month);
    putDigits(text + 6, 2, date.day);
    putTimeOfDay(text + 8, static_cast<std::uint64_t>(rest));
    std::memcpy(text + 21, "+000", 5);
    return true;
}

bool formatInterval(std::uint64_t microseconds, char (&text)[dateTimeLength + 1])
{
    const std::uint64_t days = microseconds / oneDay;
    if (days > 99999999) {
        return false;
    }
    putDigits(text, 8, days);
    putTimeOfDay(text + 8, microseconds % oneDay);
    std::memcpy(text + 21, ":000", 5);
    return true;
}

bool parseDateTime(std::string_view text, std::uint64_t &microseconds, bool &isInterval)
{
    if (text.size() != dateTimeLength) {
        return false;
    }
    const char sign = text[21];
    std::uint64_t timeOfDay = 0;
    if (!readTimeOfDay(text.substr(8, 13), timeOfDay)) {
        return false;
    }
    if (sign == ':') {
        std::uint64_t days = 0;
        if (text.substr(22) != "000" || !readField(text.substr(0, 8), 0, 99999999, days)) {
            return false;
        }
        microseconds = days * oneDay + timeOfDay;
        isInterval = true;
        return true;
    }
    std::uint64_t year = 0;
    std::uint64_t month = 0;
    std::uint64_t day = 0;
    std::uint64_t offset = 0;
    if ((sign != '+' && sign != '-') || !readField(text.substr(0, 4), 0, 9999, year) ||
        !readField(text.substr(4, 2), 1, 12, month) || !readField(text.substr(6, 2), 1, 31, day) ||
        !readField(text.substr(22, 3), 0, 999, offset) || month == 0 || day == 0) {
        return false;
    }
    const std::int64_t days = daysFromDate(static_cast<std::int64_t>(year), static_cast<unsigned>(month),
                                           static_cast<unsigned>(day));
    if (dateFromDays(days).day != day) { // the 31st of a shorter month
        return false;
    }
    const std::int64_t local = days * oneDay + static_cast<std::int64_t>(timeOfDay);
    const std::int64_t east = static_cast<std::int64_t>(offset) * oneMinute;
    microseconds = static_cast<std::uint64_t>(sign == '+' ? local - east : local + east);
    isInterval = false;
    return true;
}

} // namespace host
