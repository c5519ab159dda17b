// SPDX-License-Identifier: Apache-2.0
// The value of a header Authorization: nobody is let in but who names an account and its password.
#include "http/login.h"

#include "fuzz.h"
#include "quick_accounts.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <strings.h>

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t most,
                                               unsigned seed);

namespace
{

constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view scheme = "Basic ";
constexpr std::string_view credentials = "operator:secret: word";

std::string encoded(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); i += 3) {
        unsigned group = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            group = group << 8 | (i + j < text.size() ? static_cast<unsigned char>(text[i + j]) : 0U);
        }
        for (std::size_t j = 0; j < 4; ++j) {
            result += i + j > text.size() ? '=' : digits[group >> (18 - 6 * j) & 63];
        }
    }
    return result;
}

/** What the text stands for, blanks and line ends left out, read as far as it goes; our own, beside that of
 * GnuTLS. */
std::string decoded(std::string_view text)
{
    std::string result;
    unsigned group = 0;
    unsigned bits = 0;
    for (const char c : text) {
        const std::size_t digit = digits.find(c);
        if (digit == std::string_view::npos) {
            break;
        }
        group = group << 6 | static_cast<unsigned>(digit);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            result += static_cast<char>(group >> bits & 255);
        }
    }
    return result;
}

bool isBasic(std::string_view header)
{
    return header.size() >= scheme.size() && strncasecmp(header.data(), scheme.data(), scheme.size()) == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const std::unique_ptr<host::Accounts> accounts = fuzz::quickAccounts();
    host::LoginLimits limits;
    limits.freeFailures = ~0U; // nobody is slowed
    host::Login login(*accounts, limits);
    const std::string header(fuzz::textOf(data, size).substr(0, fuzz::textOf(data, size).find('\0')));

    host::RememberedLogin remembered;
    const host::LoginAnswer answer = login.check(header.c_str(), "192.0.2.1", remembered);
    const bool isGood = answer.kind == host::LoginAnswer::Kind::good;
    const std::string text =
        isBasic(header) ? header.substr(std::min(header.find_first_not_of(' ', scheme.size()), header.size()))
                        : "";
    fuzz::require(!isGood || (decoded(text) == credentials &&
                              text.find_first_not_of(std::string(digits) + "=") == std::string::npos),
                  "who is let in has named an account and its password", header);
    fuzz::require(!isGood || (answer.user == "operator" && answer.role == host::Role::operatorUser),
                  "who is let in is the account's user");
    const bool isExact = isBasic(header) && header.substr(scheme.size()) == encoded(credentials);
    fuzz::require(isGood || !isExact, "who names an account and its password is let in", header);
    fuzz::require(login.check(header.c_str(), "192.0.2.1", remembered).kind == answer.kind,
                  "asking twice is the same", header);
    return 0;
}

/** Changes what the header stands for, as often as the header itself. */
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t most,
                                               unsigned seed)
{
    const std::string header(fuzz::textOf(data, size));
    if (seed % 2 == 0 || !isBasic(header)) {
        return LLVMFuzzerMutate(data, size, most);
    }
    std::string inside = decoded(header.substr(scheme.size()));
    const std::size_t length = inside.size();
    inside.resize(length + 16);
    inside.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t *>(inside.data()), length, inside.size()));
    const std::string result = std::string(scheme) + encoded(inside);
    if (result.size() > most) {
        return LLVMFuzzerMutate(data, size, most);
    }
    std::memcpy(data, result.data(), result.size());
    return result.size();
}
