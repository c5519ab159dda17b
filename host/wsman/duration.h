// SPDX-License-Identifier: Apache-2.0
// Times as XML Schema writes them, and as CIM does.
#ifndef HOST_WSMAN_DURATION_H
#define HOST_WSMAN_DURATION_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace host::wsman
{

/** The time that an xs:duration says; none when the text is no duration. Years and months count 365 and 30
 * days; what is too long to be told becomes the longest that can. */
std::optional<std::chrono::milliseconds> readDuration(std::string_view text);

/** The duration as xs:duration, in seconds: PT1.500S. */
std::string durationText(std::chrono::milliseconds duration);

/** The CIM datetime of an xs:dateTime, xs:date or xs:duration; "" when the text is none of them, or has no
 * CIM text. */
std::string cimDateTime(std::string_view text);

/** The element of DSP0230's common schema that holds a CIM datetime, and its text. */
struct SchemaTime {
    std::string_view element; // Datetime, Interval, or CIM_DateTime for what only CIM can say
    std::string text;
};

SchemaTime schemaTime(std::string_view cimText);

} // namespace host::wsman

#endif
