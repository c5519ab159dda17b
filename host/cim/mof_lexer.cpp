// SPDX-License-Identifier: Apache-2.0
#include "cim/mof_lexer.h"

#include <cstdio>
#include <utility>

namespace cim
{
namespace
{

constexpr std::string_view symbols = "{}()[],;:=#$";

constexpr bool isDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

constexpr bool isNameStart(char letter)
{
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || letter == '_';
}

constexpr int hexDigit(char letter)
{
    if (isDigit(letter)) {
        return letter - '0';
    }
    if (letter >= 'a' && letter <= 'f') {
        return letter - 'a' + 10;
    }
    if (letter >= 'A' && letter <= 'F') {
        return letter - 'A' + 10;
    }
    return -1;
}

/** The length of the UTF-8 sequence at the start of the text, 0 when it is not one (RFC 3629). */
std::size_t utf8Length(std::string_view text)
{
    const auto byteAt = [&](std::size_t place) {
        return place < text.size() ? static_cast<unsigned char>(text[place]) : 0u;
    };
    const auto isTail = [&](std::size_t place, unsigned low = 0x80, unsigned high = 0xbf) {
        return byteAt(place) >= low && byteAt(place) <= high;
    };
    const unsigned first = byteAt(0);
    if (first < 0x80) {
        return text.empty() ? 0 : 1;
    }
    if (first >= 0xc2 && first <= 0xdf) {
        return isTail(1) ? 2 : 0;
    }
    if (first >= 0xe0 && first <= 0xef) {
        const unsigned low = first == 0xe0 ? 0xa0 : 0x80;
        const unsigned high = first == 0xed ? 0x9f : 0xbf;
        return isTail(1, low, high) && isTail(2) ? 3 : 0;
    }
    if (first >= 0xf0 && first <= 0xf4) {
        const unsigned low = first == 0xf0 ? 0x90 : 0x80;
        const unsigned high = first == 0xf4 ? 0x8f : 0xbf;
        return isTail(1, low, high) && isTail(2) && isTail(3) ? 4 : 0;
    }
    return 0;
}

/** Appends a character of the basic plane. */
void appendUtf8(std::string &text, unsigned code)
{
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xc0 | (code >> 6));
        text += static_cast<char>(0x80 | (code & 0x3f));
    } else {
        text += static_cast<char>(0xe0 | (code >> 12));
        text += static_cast<char>(0x80 | ((code >> 6) & 0x3f));
        text += static_cast<char>(0x80 | (code & 0x3f));
    }
}

/** A byte as a message shows it. */
std::string shown(char letter)
{
    const auto byte = static_cast<unsigned char>(letter);
    if (byte > 0x20 && byte < 0x7f) {
        return std::string("'") + letter + "'";
    }
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "0x%02x", byte);
    return buffer;
}

/** Whether the whole text is a realValue: *digit "." 1*digit [("e" | "E") [sign] 1*digit], its sign taken
 * off. */
bool isReal(std::string_view text)
{
    std::size_t place = 0;
    const auto skipDigits = [&] {
        const std::size_t start = place;
        while (place < text.size() && isDigit(text[place])) {
            ++place;
        }
        return place > start;
    };
    const auto skipOneOf = [&](char one, char other) {
        const bool isThere = place < text.size() && (text[place] == one || text[place] == other);
        place += isThere ? 1 : 0;
        return isThere;
    };
    skipDigits();
    if (!skipOneOf('.', '.') || !skipDigits()) {
        return false;
    }
    if (skipOneOf('e', 'E')) {
        skipOneOf('+', '-');
        if (!skipDigits()) {
            return false;
        }
    }
    return place == text.size();
}

/** The base that a whole number is written in; what says so is taken off its digits. */
unsigned takeBase(std::string_view &digits)
{
    if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
        digits.remove_prefix(2);
        return 16;
    }
    if (digits.size() > 1 && (digits.back() == 'b' || digits.back() == 'B')) {
        digits.remove_suffix(1);
        return 2;
    }
    if (digits.size() > 1 && digits[0] == '0') {
        digits.remove_prefix(1);
        return 8;
    }
    return 10;
}

void makeBad(MofToken &token, std::string message)
{
    token.kind = MofTokenKind::bad;
    token.text = std::move(message);
}

} // namespace

MofLexer::MofLexer(std::string_view text) : text_(text)
{
    if (text_.starts_with("\xef\xbb\xbf")) {
        text_.remove_prefix(3); // byte order mark
    }
}

char MofLexer::peek(std::size_t ahead) const
{
    return place_ + ahead < text_.size() ? text_[place_ + ahead] : '\0';
}

void MofLexer::skip(std::size_t count)
{
    for (; count > 0 && place_ < text_.size(); --count, ++place_) {
        const auto byte = static_cast<unsigned char>(text_[place_]);
        if (byte == '\n') {
            ++line_;
            column_ = 1;
        } else if ((byte & 0xc0) != 0x80) { // the tail of a UTF-8 sequence takes no column
            ++column_;
        }
    }
}

/** Skips blanks and comments. False, with the token made bad, when a comment does not end. */
bool MofLexer::skipBlank(MofToken &bad)
{
    while (place_ < text_.size()) {
        const char letter = peek();
        if (letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n' || letter == '\f') {
            skip(1);
        } else if (letter == '/' && peek(1) == '/') {
            const std::size_t end = text_.find('\n', place_);
            skip((end == std::string_view::npos ? text_.size() : end) - place_);
        } else if (letter == '/' && peek(1) == '*') {
            const std::size_t end = text_.find("*/", place_ + 2);
            if (end == std::string_view::npos) {
                bad.line = line_;
                bad.column = column_;
                makeBad(bad, "the comment that starts here has no end; expected */");
                skip(text_.size() - place_);
                return false;
            }
            skip(end + 2 - place_);
        } else {
            break;
        }
    }
    return true;
}

MofToken MofLexer::next()
{
    MofToken token;
    if (!skipBlank(token)) {
        return token;
    }
    token.line = line_;
    token.column = column_;
    if (place_ >= text_.size()) {
        return token;
    }
    const char letter = peek();
    if (isNameStart(letter)) {
        std::size_t length = 1;
        while (isNameStart(peek(length)) || isDigit(peek(length))) {
            ++length;
        }
        token.kind = MofTokenKind::name;
        token.text = text_.substr(place_, length);
        skip(length);
    } else if (isDigit(letter) || letter == '+' || letter == '-' || (letter == '.' && isDigit(peek(1)))) {
        readNumber(token);
    } else if (letter == '"' || letter == '\'') {
        readQuoted(token, letter);
    } else if (symbols.find(letter) != std::string_view::npos) {
        token.kind = MofTokenKind::symbol;
        token.symbol = letter;
        token.text = letter;
        skip(1);
    } else {
        makeBad(token, "unexpected character " + shown(letter));
        const std::size_t length = utf8Length(text_.substr(place_));
        skip(length == 0 ? 1 : length);
    }
    return token;
}

void MofLexer::readNumber(MofToken &token)
{
    std::size_t length = 0;
    while (peek(length) == '+' || peek(length) == '-' || peek(length) == '.' || isDigit(peek(length)) ||
           isNameStart(peek(length))) {
        const bool isSign = peek(length) == '+' || peek(length) == '-';
        if (isSign && length > 0 && peek(length - 1) != 'e' && peek(length - 1) != 'E') {
            break; // a sign stands at the start or after the exponent's letter
        }
        ++length;
    }
    token.text = text_.substr(place_, length);
    skip(length);

    std::string_view digits = token.text;
    token.isNegative = digits.front() == '-';
    if (digits.front() == '-' || digits.front() == '+') {
        digits.remove_prefix(1);
    }
    if (digits.find('.') != std::string_view::npos) {
        if (isReal(digits)) {
            token.kind = MofTokenKind::real;
        } else {
            makeBad(token, "\"" + token.text + "\" is not a number");
        }
        return;
    }
    const unsigned base = takeBase(digits);
    if (digits.empty()) {
        makeBad(token, "\"" + token.text + "\" is not a number");
        return;
    }
    std::uint64_t value = 0;
    for (const char letter : digits) {
        const int digit = hexDigit(letter);
        if (digit < 0 || static_cast<unsigned>(digit) >= base) {
            makeBad(token, "\"" + token.text + "\" is not a number");
            return;
        }
        if (value > (UINT64_MAX - static_cast<unsigned>(digit)) / base) {
            makeBad(token, "the number " + token.text.substr(0, 40) + " is too large; 64 bits are the most");
            return;
        }
        value = value * base + static_cast<unsigned>(digit);
    }
    token.kind = MofTokenKind::integer;
    token.magnitude = value;
}

/** Reads the escape after a backslash, which is still to be skipped. False with a message when it is none. */
bool MofLexer::readEscape(std::string &text, std::string &message)
{
    const char letter = peek(1);
    switch (letter) {
    case 'b':
        text += '\b';
        break;
    case 't':
        text += '\t';
        break;
    case 'n':
        text += '\n';
        break;
    case 'f':
        text += '\f';
        break;
    case 'r':
        text += '\r';
        break;
    case '"':
    case '\'':
    case '\\':
        text += letter;
        break;
    case 'x':
    case 'X': {
        unsigned code = 0;
        std::size_t length = 0;
        while (length < 4 && hexDigit(peek(2 + length)) >= 0) {
            code = code * 16 + static_cast<unsigned>(hexDigit(peek(2 + length)));
            ++length;
        }
        skip(length);
        if (length == 0 || code == 0 || (code >= 0xd800 && code <= 0xdfff)) {
            message = "\\x wants one to four hexadecimal digits of a character other than 0";
            skip(2);
            return false;
        }
        appendUtf8(text, code);
        break;
    }
    default:
        message = "unknown escape \\" + (letter == '\0' ? std::string() : shown(letter)) +
                  "; known are \\b \\t \\n \\f \\r \\\" \\' \\\\ and \\x with one to four hexadecimal digits";
        skip(1);
        return false;
    }
    skip(2);
    return true;
}

/** Reads a character of a literal that is neither its end nor an escape. */
void MofLexer::readCharacter(std::string &text, std::string &message)
{
    const char letter = peek();
    const auto byte = static_cast<unsigned char>(letter);
    const std::size_t length = utf8Length(text_.substr(place_));
    if (length == 0 && message.empty()) {
        message = "the literal is not valid UTF-8";
    }
    if (((byte < 0x20 && letter != '\t') || byte == 0x7f) && message.empty()) {
        message = "control character " + shown(letter) + " in the literal";
    }
    text.append(text_.substr(place_, length == 0 ? 1 : length));
    skip(length == 0 ? 1 : length);
}

/** Reads a literal from its first quote to behind its last one. False when it is not closed on its line.
 * message: of the first thing wrong; the reading goes on to the closing quote. */
bool MofLexer::readLiteral(char quote, MofLiteral &literal, std::string &message)
{
    skip(1);
    while (place_ < text_.size() && peek() != '\n' && peek() != '\r') {
        if (peek() == quote) {
            skip(1);
            return true;
        }
        if (peek() == '\\') {
            std::string escapeMessage;
            if (!readEscape(literal.text, escapeMessage) && message.empty()) {
                message = escapeMessage;
            }
        } else {
            readCharacter(literal.text, message);
        }
        ++literal.letters;
    }
    return false;
}

/** Goes on to the next literal of a string, and stays where it is when none follows. */
bool MofLexer::isAtNextLiteral()
{
    const std::size_t place = place_;
    const unsigned line = line_;
    const unsigned column = column_;
    MofToken bad;
    if (skipBlank(bad) && peek() == '"') {
        return true;
    }
    place_ = place;
    line_ = line;
    column_ = column;
    return false;
}

void MofLexer::readQuoted(MofToken &token, char quote)
{
    const bool isString = quote == '"';
    MofLiteral literal;
    std::string message;
    do {
        if (!readLiteral(quote, literal, message)) {
            makeBad(token, isString ? "the string is not closed on its line; expected \""
                                    : "the character is not closed on its line; expected '");
            return;
        }
        // Adjacent literals make one string, also with blanks and comments between them.
    } while (isString && isAtNextLiteral());
    if (!isString && literal.letters != 1 && message.empty()) {
        message = "a character literal holds exactly one character";
    }
    if (!message.empty()) {
        makeBad(token, std::move(message));
        return;
    }
    token.kind = isString ? MofTokenKind::string : MofTokenKind::character;
    token.text = std::move(literal.text);
}

} // namespace cim
