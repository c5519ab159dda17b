// SPDX-License-Identifier: Apache-2.0
#include "support/values.h"

#include <charconv>
#include <cmath>

namespace desk
{

namespace
{

template <class Value>
bool parseWhole(std::string_view text, Value &value)
{
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && rest == end;
}

} // namespace

bool parseNumber(std::string_view text, int &number)
{
    return parseWhole(text, number);
}

bool parseSeconds(std::string_view text, double &seconds)
{
    double number = 0;
    if (!parseWhole(text, number) || !std::isfinite(number) || number < 0) {
        return false;
    }
    seconds = number;
    return true;
}

bool parseAddress(std::string_view text, std::uint8_t octets[4])
{
    std::uint8_t parsed[4] = {};
    std::size_t at = 0;
    for (int i = 0; i < 4; ++i) {
        octets[i] = 0;
    }
    for (int i = 0; i < 4; ++i) {
        if (i > 0 && (at >= text.size() || text[at++] != '.')) {
            return false;
        }
        const std::size_t start = at;
        unsigned value = 0;
        while (at < text.size() && at - start < 3 && text[at] >= '0' && text[at] <= '9') {
            value = value * 10 + static_cast<unsigned>(text[at++] - '0');
        }
        const bool leadingZero = at - start > 1 && text[start] == '0';
        if (at == start || leadingZero || value > 255) {
            return false;
        }
        parsed[i] = static_cast<std::uint8_t>(value);
    }
    if (at != text.size()) {
        return false;
    }
    for (int i = 0; i < 4; ++i) {
        octets[i] = parsed[i];
    }
    return true;
}

bool printable(std::string_view text)
{
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x20 || lead == 0x7f) {
            return false;
        }
        const std::size_t length = lead < 0x80   ? 1
                                   : lead < 0xc2 ? 0
                                   : lead < 0xe0 ? 2
                                   : lead < 0xf0 ? 3
                                   : lead < 0xf5 ? 4
                                                 : 0;
        if (length == 0 || length > text.size() - i) {
            return false;
        }
        unsigned code = length == 1 ? lead : lead & (0x7fu >> length);
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xc0) != 0x80) {
                return false;
            }
            code = code << 6 | (next & 0x3fu);
        }
        const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
        const bool surrogate = code >= 0xd800 && code <= 0xdfff;
        const bool control = code >= 0x80 && code < 0xa0;
        if (overlong || surrogate || control || code > 0x10ffff) {
            return false;
        }
        i += length;
    }
    return true;
}

} // namespace desk
