// SPDX-License-Identifier: Apache-2.0
// The values of settings and arguments as texts, whatever the locale.
#ifndef DESK_SUPPORT_VALUES_H
#define DESK_SUPPORT_VALUES_H

#include <cstdint>
#include <string_view>

namespace desk
{

/** Splits a dotted IPv4 address strictly: four decimal numbers of 0 to 255, no leading zeros, nothing else.
 * On failure the octets are zero. */
[[nodiscard]] bool parseAddress(std::string_view text, std::uint8_t octets[4]);

/** A whole decimal number within the range of int; left as it is when the text is none. */
bool parseNumber(std::string_view text, int &number);

/** Seconds, fractions after a point; left as they are when the text is no time. */
bool parseSeconds(std::string_view text, double &seconds);

/** Valid UTF-8 without control characters. */
[[nodiscard]] bool printable(std::string_view text);

} // namespace desk

#endif
