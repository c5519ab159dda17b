// SPDX-License-Identifier: Apache-2.0
// An input as a row of choices, for targets whose input is a structure: each choice takes the next bytes, and
// an input that is used up chooses the first of everything.
#ifndef FUZZ_CHOICES_H
#define FUZZ_CHOICES_H

#include "fuzz.h"

#include <algorithm>
#include <span>
#include <string>

namespace fuzz
{

class Choices
{
  public:
    Choices(const std::uint8_t *data, std::size_t size) : rest_(data, size) {}

    bool isEmpty() const
    {
        return rest_.empty();
    }

    std::uint8_t byte()
    {
        if (rest_.empty()) {
            return 0;
        }
        const std::uint8_t first = rest_.front();
        rest_ = rest_.subspan(1);
        return first;
    }

    std::uint64_t number(std::size_t bytes = 8)
    {
        std::uint64_t result = 0;
        for (std::size_t i = 0; i < bytes; ++i) {
            result = result << 8 | byte();
        }
        return result;
    }

    /** Less than the count, which is at most 65536. */
    std::size_t below(std::size_t count)
    {
        const std::size_t chosen = count > 256 ? number(2) : byte();
        return count == 0 ? 0 : chosen % count;
    }

    /** True of one in so many. */
    bool oneIn(unsigned many)
    {
        return byte() % many == many - 1;
    }

    template <typename Container>
    auto &of(const Container &list)
    {
        return list[below(std::size(list))];
    }

    /** The next bytes, as many as the first of them says. */
    std::string text()
    {
        const std::size_t wanted = byte();
        const std::size_t length = std::min(wanted, rest_.size());
        const std::string result(reinterpret_cast<const char *>(rest_.data()), length);
        rest_ = rest_.subspan(length);
        return result;
    }

    /** All that is left. */
    std::string rest()
    {
        const std::string result(reinterpret_cast<const char *>(rest_.data()), rest_.size());
        rest_ = {};
        return result;
    }

  private:
    std::span<const std::uint8_t> rest_;
};

} // namespace fuzz

#endif
