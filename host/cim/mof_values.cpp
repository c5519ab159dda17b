// SPDX-License-Identifier: Apache-2.0
// Written values, typed.
#include "cim/mof_parser.h"

#include <charconv>
#include <system_error>

namespace cim
{
namespace
{

/** The range of an integer type: the greatest magnitude of its negative and of its positive values. */
void integerRange(Type type, std::uint64_t &negative, std::uint64_t &positive)
{
    unsigned bits = 64;
    switch (type) {
    case Type::uint8:
    case Type::sint8:
        bits = 8;
        break;
    case Type::uint16:
    case Type::sint16:
        bits = 16;
        break;
    case Type::uint32:
    case Type::sint32:
        bits = 32;
        break;
    default:
        break;
    }
    const bool isSigned =
        type == Type::sint8 || type == Type::sint16 || type == Type::sint32 || type == Type::sint64;
    positive = UINT64_MAX >> (64 - bits + (isSigned ? 1 : 0));
    negative = isSigned ? positive + 1 : 0;
}

/** True of a datetime as DSP0004 writes it: 25 characters, a time stamp or an interval, '*' for unknown
 * digits. */
bool isDateTime(std::string_view text)
{
    if (text.size() != 25 || text[14] != '.') {
        return false;
    }
    const char sign = text[21];
    if (sign != '+' && sign != '-' && sign != ':') {
        return false;
    }
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isDigitOrStar = (text[i] >= '0' && text[i] <= '9') || (text[i] == '*' && i < 21);
        if (i != 14 && i != 21 && !isDigitOrStar) {
            return false;
        }
    }
    return sign != ':' || text.ends_with("000");
}

} // namespace

bool MofParser::convert(const WrittenValue &written, Type type, bool isArray, const std::string &what,
                        Value &value)
{
    value = Value{};
    value.isArray = isArray;
    if (!written.isArray && written.items.front().isNull) {
        return true;
    }
    if (written.isArray != isArray) {
        error(written.where, what + ": expected " +
                                 (isArray ? "values in { }" : "a single value without { }") + " for " +
                                 typeWithArray(type, isArray));
        return false;
    }
    for (const Literal &literal : written.items) {
        std::string text;
        if (!convertItem(literal, type, what, text)) {
            return false;
        }
        value.items.push_back(std::move(text));
    }
    value.isNull = false;
    return true;
}

bool MofParser::convertItem(const Literal &literal, Type type, const std::string &what, std::string &text)
{
    const MofToken &token = literal.token;
    const auto fail = [&](const std::string &expected) {
        error(whereOf(token), what + ": expected " + expected + ", found " + shown(token));
        return false;
    };
    if (literal.isNull) {
        return fail("a value that is not NULL in an array");
    }
    if (type == Type::boolean) {
        text = literal.isTrue ? "true" : "false";
        return literal.isBoolean || fail("TRUE or FALSE");
    }
    if (isInteger(type)) {
        std::uint64_t negative = 0;
        std::uint64_t positive = 0;
        integerRange(type, negative, positive);
        if (token.kind != MofTokenKind::integer) {
            return fail(std::string("a number of type ") + typeName(type));
        }
        if (token.magnitude > (token.isNegative ? negative : positive)) {
            return fail(std::string("a ") + typeName(type) + " (" +
                        (negative == 0 ? "" : "-" + std::to_string(negative) + " to ") +
                        (negative == 0 ? "0 to " : "") + std::to_string(positive) + ")");
        }
        text = (token.isNegative && token.magnitude != 0 ? "-" : "") + std::to_string(token.magnitude);
        return true;
    }
    if (isReal(type)) {
        if (token.kind == MofTokenKind::integer) {
            text = (token.isNegative ? "-" : "") + std::to_string(token.magnitude);
            return true;
        }
        if (token.kind != MofTokenKind::real) {
            return fail(std::string("a number of type ") + typeName(type));
        }
        std::string_view digits = token.text;
        const bool isNegative = digits.front() == '-';
        digits.remove_prefix(digits.front() == '-' || digits.front() == '+' ? 1 : 0);
        text = std::string(isNegative ? "-" : "") + (digits.front() == '.' ? "0" : "") + std::string(digits);
        double real64 = 0;
        float real32 = 0;
        const char *end = text.data() + text.size();
        const auto read = type == Type::real64 ? std::from_chars(text.data(), end, real64)
                                               : std::from_chars(text.data(), end, real32);
        return read.ec == std::errc() || fail(std::string("a number in the range of ") + typeName(type));
    }
    text = token.text;
    if (type == Type::char16) {
        return token.kind == MofTokenKind::character || fail("a character in single quotes");
    }
    if (token.kind != MofTokenKind::string) {
        return fail(type == Type::reference ? "an object path in a string" : "a string");
    }
    if (type == Type::dateTime && !isDateTime(text)) {
        return fail("a datetime like \"20250131235959.000000+000\" or \"00000001235959.000000:000\"");
    }
    return true;
}

} // namespace cim
