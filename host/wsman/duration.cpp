// SPDX-License-Identifier: Apache-2.0
#include "wsman/duration.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <iterator>

namespace host::wsman
{
namespace
{

constexpr std::uint64_t oneMinute = 60;
constexpr std::uint64_t oneHour = 60 * oneMinute;
constexpr std::uint64_t oneDay = 24 * oneHour;

/** The parts of an xs:duration. */
struct Parts {
    std::uint64_t years = 0;
    std::uint64_t months = 0;
    std::uint64_t days = 0;
    std::uint64_t hours = 0;
    std::uint64_t minutes = 0;
    std::uint64_t seconds = 0;
    std::uint64_t microseconds = 0;

    std::uint64_t wholeSeconds() const
    {
        return (years * 365 + months * 30 + days) * oneDay + hours * oneHour + minutes * oneMinute + seconds;
    }
};

struct Unit {
    char letter;
    std::uint64_t Parts::*part;
};

constexpr Unit dateUnits[] = {{'Y', &Parts::years}, {'M', &Parts::months}, {'D', &Parts::days}};
constexpr Unit timeUnits[] = {{'H', &Parts::hours}, {'M', &Parts::minutes}, {'S', &Parts::seconds}};

/** Takes the number at the beginning of the text; false when there is none. What is too big becomes the
 * biggest. */
bool takeNumber(std::string_view &text, std::uint64_t &number)
{
    constexpr std::uint64_t biggest = 4'000'000'000;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (problem == std::errc::invalid_argument) {
        return false;
    }
    if (problem == std::errc::result_out_of_range || number > biggest) {
        number = biggest;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

/** Takes ".123" as 123000 microseconds; digits after the sixth do not count. False when no digit follows. */
bool takeFraction(std::string_view &text, std::uint64_t &microseconds)
{
    text.remove_prefix(1);
    std::uint64_t unit = 100'000;
    std::size_t digits = 0;
    for (; digits < text.size() && text[digits] >= '0' && text[digits] <= '9'; ++digits) {
        microseconds += static_cast<std::uint64_t>(text[digits] - '0') * unit;
        unit /= 10;
    }
    text.remove_prefix(digits);
    return digits != 0;
}

/** Takes one number with its unit; next is the first unit that may still come. */
bool takePart(std::string_view &text, const Unit *units, std::size_t &next, Parts &parts)
{
    std::uint64_t number = 0;
    std::uint64_t microseconds = 0;
    if (!takeNumber(text, number)) {
        return false;
    }
    const bool hasFraction = text.starts_with('.');
    if ((hasFraction && !takeFraction(text, microseconds)) || text.empty()) {
        return false;
    }
    while (next < std::size(dateUnits) && units[next].letter != text.front()) {
        ++next;
    }
    if (next == std::size(dateUnits) || (hasFraction && text.front() != 'S')) {
        return false;
    }
    parts.*units[next++].part = number;
    parts.microseconds += microseconds;
    text.remove_prefix(1);
    return true;
}

std::optional<Parts> readParts(std::string_view text)
{
    if (!text.starts_with('P') || text.size() < 3 || text.back() == 'T') {
        return std::nullopt;
    }
    text.remove_prefix(1);
    Parts parts;
    const Unit *units = dateUnits;
    std::size_t next = 0;
    while (!text.empty()) {
        if (units == dateUnits && text.front() == 'T') {
            units = timeUnits;
            next = 0;
            text.remove_prefix(1);
        }
        if (!takePart(text, units, next, parts)) {
            return std::nullopt;
        }
    }
    return parts;
}

/** True when the text begins with digits where the pattern has 'd', and with the pattern's letters
 * elsewhere. */
bool matches(std::string_view text, std::string_view pattern)
{
    if (text.size() < pattern.size()) {
        return false;
    }
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool isDigit = text[i] >= '0' && text[i] <= '9';
        if (pattern[i] == 'd' ? !isDigit : text[i] != pattern[i]) {
            return false;
        }
    }
    return true;
}

/** The number of the two digits at that place. */
int twoDigits(std::string_view text, std::size_t place)
{
    return (text[place] - '0') * 10 + (text[place + 1] - '0');
}

/** The CIM text of the offset at the end of an xs:dateTime (nothing, Z, +hh:mm); "" when it is none. */
std::string cimOffset(std::string_view text)
{
    if (text.empty() || text == "Z") {
        return "+000";
    }
    if (text.size() != 6 || (text[0] != '+' && text[0] != '-') || !matches(text.substr(1), "dd:dd")) {
        return "";
    }
    const int minutes = twoDigits(text, 1) * 60 + twoDigits(text, 4);
    char offset[16];
    std::snprintf(offset, sizeof offset, "%c%03d", text[0], minutes);
    return minutes < 1000 ? offset : "";
}

std::string cimInterval(const Parts &parts)
{
    const std::uint64_t seconds = parts.wholeSeconds();
    if (seconds / oneDay > 99'999'999) {
        return "";
    }
    char text[128];
    std::snprintf(text, sizeof text, "%08llu%02llu%02llu%02llu.%06llu:000",
                  static_cast<unsigned long long>(seconds / oneDay),
                  static_cast<unsigned long long>(seconds % oneDay / oneHour),
                  static_cast<unsigned long long>(seconds % oneHour / oneMinute),
                  static_cast<unsigned long long>(seconds % oneMinute),
                  static_cast<unsigned long long>(parts.microseconds));
    return text;
}

} // namespace

std::optional<std::chrono::milliseconds> readDuration(std::string_view text)
{
    const std::optional<Parts> parts = readParts(text);
    if (!parts) {
        return std::nullopt;
    }
    return std::chrono::milliseconds(
        static_cast<std::int64_t>(parts->wholeSeconds() * 1000 + parts->microseconds / 1000));
}

std::string durationText(std::chrono::milliseconds duration)
{
    char text[48];
    std::snprintf(text, sizeof text, "PT%lld.%03dS", static_cast<long long>(duration.count() / 1000),
                  static_cast<int>(duration.count() % 1000));
    return text;
}

std::string cimDateTime(std::string_view text)
{
    if (const std::optional<Parts> parts = readParts(text)) {
        return cimInterval(*parts);
    }
    if (!matches(text, "dddd-dd-dd")) {
        return "";
    }
    std::string result = {text[0], text[1], text[2], text[3], text[5], text[6], text[8], text[9]};
    text.remove_prefix(10);
    std::uint64_t microseconds = 0;
    if (matches(text, "Tdd:dd:dd")) {
        result += {text[1], text[2], text[4], text[5], text[7], text[8]};
        text.remove_prefix(9);
        if (text.starts_with('.') && !takeFraction(text, microseconds)) {
            return "";
        }
    } else {
        result += "000000";
    }
    char fraction[32];
    std::snprintf(fraction, sizeof fraction, ".%06llu", static_cast<unsigned long long>(microseconds));
    const std::string offset = cimOffset(text);
    return offset.empty() ? "" : result + fraction + offset;
}

SchemaTime schemaTime(std::string_view cimText)
{
    constexpr std::size_t cimLength = 25;
    const auto part = [cimText](std::size_t first, std::size_t length) {
        return std::string(cimText.substr(first, length));
    };
    if (cimText.size() != cimLength || !matches(cimText, "dddddddddddddd.dddddd")) {
        return {"CIM_DateTime", std::string(cimText)};
    }
    if (cimText[21] == ':') {
        return {"Interval",
                "P" + part(0, 8) + "DT" + part(8, 2) + "H" + part(10, 2) + "M" + part(12, 9) + "S"};
    }
    const int offset = (cimText[22] - '0') * 100 + twoDigits(cimText, 23);
    char zone[32];
    std::snprintf(zone, sizeof zone, "%c%02d:%02d", cimText[21], offset / 60, offset % 60);
    return {"Datetime", part(0, 4) + "-" + part(4, 2) + "-" + part(6, 2) + "T" + part(8, 2) + ":" +
                            part(10, 2) + ":" + part(12, 9) + (offset == 0 ? "Z" : zone)};
}

} // namespace host::wsman
