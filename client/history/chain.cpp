// SPDX-License-Identifier: Apache-2.0
#include "history/chain.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <array>
#include <optional>

namespace displayctl::history
{

namespace
{

constexpr std::string_view hashMember = ",\"hash\":\"";
constexpr std::size_t hashLength = 64;

/** Texts of monitors may be no UTF-8; what is not is replaced. */
std::string written(const Json &document)
{
    return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/** What a line says about its place. */
struct Place {
    std::uint64_t number = 0;
    std::string previous;
    std::string hash;
};

/** None when the line does not have the hash that it names. */
std::optional<Place> placeOf(std::string_view line)
{
    const std::size_t tail = hashMember.size() + hashLength + 2; // and "}
    if (line.size() <= tail || !line.ends_with("\"}") ||
        line.substr(line.size() - tail, hashMember.size()) != hashMember) {
        return std::nullopt;
    }
    const std::string text = std::string{line.substr(0, line.size() - tail)} + '}';
    Place place;
    place.hash = line.substr(line.size() - 2 - hashLength, hashLength);
    if (sha256(text) != place.hash) {
        return std::nullopt;
    }
    const Json document = Json::parse(text, nullptr, false);
    const auto number = document.is_object() ? document.find("number") : document.end();
    const auto previous = document.is_object() ? document.find("previous") : document.end();
    if (!document.is_object() || number == document.end() || !number->is_number_unsigned() ||
        previous == document.end() || !previous->is_string()) {
        return std::nullopt;
    }
    place.number = number->get<std::uint64_t>();
    place.previous = previous->get<std::string>();
    return place;
}

Verification bad(std::uint64_t line, std::string problem)
{
    Verification result;
    result.firstBadLine = line;
    result.problem = std::move(problem);
    return result;
}

/** One line after the other; false when the chain is broken, with the reason in result. */
class Walk
{
  public:
    [[nodiscard]] bool step(std::string_view line, bool isEnded, Verification &result)
    {
        const std::uint64_t number = last_.number + 1;
        const std::optional<Place> place = isEnded ? placeOf(line) : std::nullopt;
        if (!place) {
            result = bad(number, "the line was altered");
        } else if (place->number != number) {
            result =
                bad(number, place->number > number ? "a line was removed here" : "a line was added here");
        } else if (place->previous != last_.hash) {
            // Its number is right, and it names another line before it: that one was put in the place of the
            // true one.
            result = number == 1 ? bad(1, "the line was altered") : bad(number - 1, "the line was altered");
        } else {
            last_ = {number, place->hash};
            return true;
        }
        return false;
    }

    [[nodiscard]] const End &last() const
    {
        return last_;
    }

  private:
    End last_;
};

std::uint64_t countLines(std::string_view text)
{
    std::uint64_t count = 0;
    for (const char c : text) {
        count += c == '\n' ? 1 : 0;
    }
    return count + (text.empty() || text.ends_with('\n') ? 0 : 1);
}

Verification findBreak(std::string_view text, const End &end)
{
    Walk walk;
    Verification result;
    while (!text.empty()) {
        const std::size_t newline = text.find('\n');
        const bool isEnded = newline != std::string_view::npos;
        if (walk.last().number == end.number) {
            return bad(end.number + 1, "a line was added here");
        }
        if (!walk.step(text.substr(0, newline), isEnded, result)) {
            return result;
        }
        text.remove_prefix(isEnded ? newline + 1 : text.size());
    }
    if (walk.last().number < end.number) {
        return bad(walk.last().number + 1, "a line was removed here");
    }
    if (walk.last().hash != end.hash) {
        return bad(end.number, "the line was altered");
    }
    return result;
}

} // namespace

std::string sha256(std::string_view text)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned length = 0;
    // Where it had no memory to begin with, OpenSSL follows a null pointer.
    if (OSSL_LIB_CTX_get0_global_default() == nullptr ||
        EVP_Digest(text.data(), text.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1) {
        throw Error("SHA-256 cannot be computed");
    }
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hexadecimal;
    for (unsigned i = 0; i < length; ++i) {
        (hexadecimal += digits[digest[i] >> 4U]) += digits[digest[i] & 0xFU];
    }
    return hexadecimal;
}

std::string seal(Json document, End &end)
{
    document["number"] = ++end.number;
    document["previous"] = end.hash;
    std::string line = written(document);
    end.hash = sha256(line);
    line.pop_back();
    ((line += hashMember) += end.hash) += "\"}\n";
    return line;
}

Verification verifyChain(std::string_view text, const End &end)
{
    Verification result = findBreak(text, end);
    result.lines = countLines(text);
    return result;
}

} // namespace displayctl::history
