// SPDX-License-Identifier: Apache-2.0
// A text of a bounded length in a place of its own: comparable, copied as bytes, and made by the compiler
// too.
#ifndef DESK_SUPPORT_SHORT_TEXT_H
#define DESK_SUPPORT_SHORT_TEXT_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace desk
{

class ShortText
{
  public:
    static constexpr std::size_t capacity =
        51; // the longest setting has 50; with the length a multiple of four

    constexpr ShortText() = default;
    /** What is longer than the capacity is cut off: callers have checked the length. */
    constexpr ShortText(std::string_view text)
        : length_(static_cast<std::uint8_t>(std::min(text.size(), capacity)))
    {
        std::copy_n(text.begin(), length_, bytes_.begin());
    }
    constexpr operator std::string_view() const
    {
        return {bytes_.data(), length_};
    }
    constexpr void append(std::string_view text)
    {
        const std::size_t count = std::min(text.size(), capacity - length_);
        std::copy_n(text.begin(), count, bytes_.begin() + length_);
        length_ = static_cast<std::uint8_t>(length_ + count);
    }
    bool operator==(const ShortText &) const = default;

  private:
    std::uint8_t length_ = 0;
    std::array<char, capacity> bytes_{};
};

/** The decimal digits of a number. */
constexpr ShortText decimalText(long long number)
{
    std::array<char, 20> digits{};
    std::size_t at = digits.size();
    auto left =
        number < 0 ? 0 - static_cast<unsigned long long>(number) : static_cast<unsigned long long>(number);
    do {
        digits[--at] = static_cast<char>('0' + left % 10);
        left /= 10;
    } while (left != 0);
    ShortText text(number < 0 ? "-" : "");
    text.append({digits.data() + at, digits.size() - at});
    return text;
}

/** A number from 0 to 9 with four decimals. */
constexpr ShortText fourDecimals(double value)
{
    const auto scaled = static_cast<long long>(value * 10000 + 0.5);
    ShortText text = decimalText(scaled / 10000);
    const ShortText decimals = decimalText(10000 + scaled % 10000);
    text.append(".");
    text.append(std::string_view(decimals).substr(1));
    return text;
}

} // namespace desk

#endif
