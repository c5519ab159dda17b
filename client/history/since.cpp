// SPDX-License-Identifier: Apache-2.0
#include "history/history.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <ctime>

namespace displayctl::history
{

namespace
{

/** Reads a text from its beginning. */
class Cursor
{
  public:
    explicit Cursor(std::string_view text) : rest_(text) {}

    [[nodiscard]] bool isAtEnd() const
    {
        return rest_.empty();
    }

    /** Takes one of the characters; none: it is not there. */
    bool take(std::string_view characters)
    {
        if (rest_.empty() || characters.find(rest_.front()) == std::string_view::npos) {
            return false;
        }
        taken_ = rest_.front();
        rest_.remove_prefix(1);
        return true;
    }

    [[nodiscard]] char taken() const
    {
        return taken_;
    }

    /** Takes a number of so many digits; 0: any. */
    bool takeNumber(int &number, std::size_t digits)
    {
        const std::size_t end = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
        if (end == 0 || (digits != 0 && end != digits)) {
            return false;
        }
        const auto [rest, problem] = std::from_chars(rest_.data(), rest_.data() + end, number);
        rest_.remove_prefix(end);
        return problem == std::errc{};
    }

  private:
    std::string_view rest_;
    char taken_ = '\0';
};

constexpr std::int64_t lastSecond = 253'402'300'799; // of the year 9999

/** As the history has it, which is older than 1970 nowhere, and whose years have four digits. */
std::string formatted(std::int64_t seconds)
{
    const auto time = static_cast<std::time_t>(std::clamp(seconds, std::int64_t{0}, lastSecond));
    std::tm parts{};
    gmtime_r(&time, &parts);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S.000Z", &parts);
    return {text.data(), length};
}

/** 2h, 3d and so on: so long before now. */
std::optional<std::int64_t> parseAge(std::string_view text)
{
    Cursor cursor{text};
    int count = 0;
    if (!cursor.takeNumber(count, 0) || !cursor.take("smhdw") || !cursor.isAtEnd()) {
        return std::nullopt;
    }
    const char unit = cursor.taken();
    const std::int64_t seconds = unit == 's'   ? 1
                                 : unit == 'm' ? 60
                                 : unit == 'h' ? 3600
                                 : unit == 'd' ? 86400
                                               : 604800;
    return std::time(nullptr) - count * seconds;
}

/** Hours, minutes, and seconds with or without a fraction; false when there is something else. */
bool parseClock(Cursor &cursor, std::tm &parts)
{
    int fraction = 0;
    if (!cursor.takeNumber(parts.tm_hour, 2) || !cursor.take(":") || !cursor.takeNumber(parts.tm_min, 2)) {
        return false;
    }
    if (cursor.take(":") &&
        (!cursor.takeNumber(parts.tm_sec, 2) || (cursor.take(".,") && !cursor.takeNumber(fraction, 0)))) {
        return false;
    }
    return parts.tm_hour < 24 && parts.tm_min < 60 && parts.tm_sec < 60;
}

/** Z or +hh:mm behind a time makes it independent of where the program runs. */
std::optional<std::time_t> withOffset(Cursor &cursor, std::tm &parts)
{
    if (cursor.isAtEnd()) {
        parts.tm_isdst = -1;
        return std::mktime(&parts);
    }
    if (cursor.take("Zz")) {
        return cursor.isAtEnd() ? std::optional{timegm(&parts)} : std::nullopt;
    }
    int hours = 0;
    int minutes = 0;
    if (!cursor.take("+-")) {
        return std::nullopt;
    }
    const int sign = cursor.taken() == '-' ? -1 : 1;
    if (!cursor.takeNumber(hours, 2) || !cursor.take(":") || !cursor.takeNumber(minutes, 2) ||
        !cursor.isAtEnd() || hours > 14 || minutes > 59) {
        return std::nullopt;
    }
    return timegm(&parts) - sign * (hours * 3600 + minutes * 60);
}

std::optional<std::time_t> parseIso(std::string_view text)
{
    Cursor cursor{text};
    std::tm parts{};
    int year = 0;
    int month = 0;
    if (!cursor.takeNumber(year, 4) || !cursor.take("-") || !cursor.takeNumber(month, 2) ||
        !cursor.take("-") || !cursor.takeNumber(parts.tm_mday, 2)) {
        return std::nullopt;
    }
    const std::chrono::year_month_day day{std::chrono::year{year},
                                          std::chrono::month{static_cast<unsigned>(month)},
                                          std::chrono::day{static_cast<unsigned>(parts.tm_mday)}};
    if (!day.ok() || (cursor.take("Tt ") && !parseClock(cursor, parts))) {
        return std::nullopt;
    }
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    return withOffset(cursor, parts);
}

} // namespace

std::optional<std::string> parseSince(std::string_view text)
{
    std::optional<std::int64_t> time = parseAge(text);
    if (!time) {
        time = parseIso(text);
    }
    return time ? std::optional{formatted(*time)} : std::nullopt;
}

} // namespace displayctl::history
