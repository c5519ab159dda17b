// SPDX-License-Identifier: Apache-2.0
#include "support/dates.h"

#include "support/values.h"

#include <chrono>
#include <cstdio>

namespace desk
{

std::optional<int> dateSeconds(std::string_view text)
{
    using namespace std::chrono;
    if (text.size() != 10 || text[2] != '/' || text[5] != '/') {
        return std::nullopt;
    }
    for (char c : {text[0], text[1], text[3], text[4], text[6], text[7], text[8], text[9]}) {
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
    }
    int dayNumber = 0, monthNumber = 0, yearNumber = 0;
    parseNumber(text.substr(0, 2), dayNumber);
    parseNumber(text.substr(3, 2), monthNumber);
    parseNumber(text.substr(6, 4), yearNumber);
    const year_month_day date{year(yearNumber), month(static_cast<unsigned>(monthNumber)),
                              day(static_cast<unsigned>(dayNumber))};
    if (!date.ok()) {
        return std::nullopt;
    }
    const seconds since = sys_days(date).time_since_epoch();
    if (since.count() < INT32_MIN || since.count() > INT32_MAX) {
        return std::nullopt;
    }
    return static_cast<int>(since.count());
}

std::string dateText(int seconds)
{
    using namespace std::chrono;
    const year_month_day date(floor<days>(sys_seconds(std::chrono::seconds(seconds))));
    char text[32];
    snprintf(text, sizeof text, "%02u/%02u/%04d", static_cast<unsigned>(date.day()),
             static_cast<unsigned>(date.month()), static_cast<int>(date.year()));
    return text;
}

} // namespace desk
