// SPDX-License-Identifier: Apache-2.0
#include "core/xml_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace host
{
namespace
{

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/** The length of the UTF-8 sequence at the beginning of the text, 0 when there is none that XML allows. */
std::size_t sequenceLength(std::string_view text)
{
    const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) {
        return lead >= 0x20 || lead == '\t' || lead == '\n' || lead == '\r' ? 1 : 0;
    }
    const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() < length) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xc0u) != 0x80) {
            return 0;
        }
    }
    const unsigned second = byte(1);
    if ((lead == 0xe0 && second < 0xa0) || (lead == 0xed && second > 0x9f) ||
        (lead == 0xf0 && second < 0x90) || (lead == 0xf4 && second > 0x8f) ||
        (lead == 0xef && second == 0xbf && byte(2) >= 0xbe)) {
        return 0; // overlong, a surrogate, beyond Unicode, or U+FFFE and U+FFFF
    }
    return length;
}

bool isCharacter(std::uint32_t code)
{
    return code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code < 0xd800) ||
           (code >= 0xe000 && code < 0xfffe) || (code >= 0x10000 && code < 0x110000);
}

/** What a byte can be at the beginning of what follows. */
enum ByteKind : std::uint8_t {
    nameByte = 1,  // part of a name
    plainByte = 2, // part of a text or an attribute, and nothing else
};

constexpr std::array<std::uint8_t, 256> makeByteKinds()
{
    std::array<std::uint8_t, 256> kinds = {};
    for (unsigned i = 0; i < kinds.size(); ++i) {
        const bool isName = (i >= 'a' && i <= 'z') || (i >= 'A' && i <= 'Z') || (i >= '0' && i <= '9') ||
                            i == '.' || i == '_' || i == '-' || i == ':' || i >= 0x80;
        const bool isPlain =
            i >= 0x20 && i < 0x80 && i != '<' && i != '>' && i != '&' && i != '"' && i != '\'';
        kinds[i] = static_cast<std::uint8_t>((isName ? nameByte : 0) | (isPlain ? plainByte : 0));
    }
    return kinds;
}

constexpr std::array<std::uint8_t, 256> byteKinds = makeByteKinds();

class Checker
{
  public:
    Checker(std::string_view document, const XmlLimits &limits) : text_(document), limits_(limits) {}

    XmlProblem check()
    {
        return isGood() ? XmlProblem::none : problem_;
    }

  private:
    bool isGood()
    {
        if (text_.starts_with("\xef\xbb\xbf")) {
            place_ = 3;
        }
        while (place_ < text_.size()) {
            const char c = text_[place_];
            if (c == '<') {
                if (!markup()) {
                    return false;
                }
            } else if (c == '&') {
                if (depth_ == 0 || !reference()) {
                    return false;
                }
            } else {
                if (depth_ == 0 && !isBlank(c)) {
                    return false; // text outside the root element
                }
                if (!character()) {
                    return false;
                }
                if (depth_ != 0) {
                    pass(plainByte);
                }
            }
        }
        return depth_ == 0 && roots_ == 1;
    }

    bool isBeyond(XmlProblem limit)
    {
        problem_ = limit;
        return false;
    }

    /** Goes on behind the bytes of that kind. */
    void pass(ByteKind kind)
    {
        const auto isOther = [kind](char c) {
            return (byteKinds[static_cast<unsigned char>(c)] & kind) == 0;
        };
        const std::string_view rest = text_.substr(place_);
        place_ += static_cast<std::size_t>(std::ranges::find_if(rest, isOther) - rest.begin());
    }

    bool character()
    {
        const auto byte = static_cast<unsigned char>(text_[place_]);
        if (byte >= 0x20 && byte < 0x80) { // nearly all are
            ++place_;
            return true;
        }
        const std::size_t length = sequenceLength(text_.substr(place_, 4));
        place_ += length;
        return length != 0;
    }

    bool reference()
    {
        const std::size_t end = text_.find(';', place_);
        if (end == std::string_view::npos || end - place_ > 12) {
            return false;
        }
        const std::string_view name = text_.substr(place_ + 1, end - place_ - 1);
        place_ = end + 1;
        if (name.empty() || name.front() != '#') {
            return name == "lt" || name == "gt" || name == "amp" || name == "quot" || name == "apos";
        }
        const bool hexadecimal = name.size() > 1 && name[1] == 'x';
        const std::string_view digits = name.substr(hexadecimal ? 2 : 1);
        std::uint32_t code = 0;
        for (const char digit : digits) {
            std::uint32_t value = 0;
            if (digit >= '0' && digit <= '9') {
                value = static_cast<std::uint32_t>(digit - '0');
            } else if (hexadecimal && (digit | 0x20) >= 'a' && (digit | 0x20) <= 'f') {
                value = static_cast<std::uint32_t>((digit | 0x20) - 'a' + 10);
            } else {
                return false;
            }
            code = code * (hexadecimal ? 16 : 10) + value;
            if (code >= 0x110000) {
                return false;
            }
        }
        return !digits.empty() && isCharacter(code);
    }

    bool skip(std::string_view begin, std::string_view end)
    {
        const std::size_t found = text_.find(end, place_ + begin.size());
        if (found == std::string_view::npos) {
            return false;
        }
        place_ += begin.size();
        pass(plainByte);
        while (place_ < found) {
            if (!character()) {
                return false;
            }
        }
        place_ = found + end.size();
        return true;
    }

    bool markup()
    {
        const std::string_view rest = text_.substr(place_);
        const char kind = rest.size() > 1 ? rest[1] : '\0';
        if (kind == '/') {
            if (depth_ == 0) {
                return false;
            }
            --depth_;
            return endTag();
        }
        return kind == '!' || kind == '?' ? declaration(rest) : startTag();
    }

    /** Whatever is markup, but no tag. */
    bool declaration(std::string_view rest)
    {
        if (rest.starts_with("<!--")) {
            return skip("<!--", "-->");
        }
        if (rest.starts_with("<![CDATA[")) {
            return depth_ != 0 && skip("<![CDATA[", "]]>");
        }
        if (rest.starts_with("<?")) {
            return skip("<?", "?>");
        }
        if (rest.starts_with("<!DOCTYPE")) {
            const std::size_t end = text_.find('>', place_);
            return roots_ == 0 && end != std::string_view::npos &&
                   text_.substr(place_, end - place_).find('[') == std::string_view::npos &&
                   skip("<!DOCTYPE", ">");
        }
        return startTag();
    }

    bool endTag()
    {
        const std::size_t begin = place_;
        place_ += 2;
        pass(plainByte);
        if (place_ < text_.size() && text_[place_] == '>') { // as nearly all are
            ++place_;
            return true;
        }
        place_ = begin;
        return skip("</", ">");
    }

    bool startTag()
    {
        if (++elements_ > limits_.elements) {
            return isBeyond(XmlProblem::tooManyElements);
        }
        if (++depth_ > limits_.depth) {
            return isBeyond(XmlProblem::tooDeep);
        }
        if (depth_ == 1 && ++roots_ > 1) {
            return false;
        }
        ++place_;
        name();
        std::size_t count = 0;
        while (true) {
            blanks();
            if (place_ >= text_.size()) {
                return false;
            }
            if (text_[place_] == '>') {
                ++place_;
                return true;
            }
            if (text_[place_] == '/') {
                --depth_;
                if (!text_.substr(place_).starts_with("/>")) {
                    return false;
                }
                place_ += 2;
                return true;
            }
            const std::string_view attributeName = name();
            if (attributeName.empty()) {
                return false;
            }
            if (count >= limits_.attributes || count >= seen_.size()) {
                return isBeyond(XmlProblem::tooManyAttributes);
            }
            for (std::size_t i = 0; i < count; ++i) {
                if (seen_[i] == attributeName) {
                    return false;
                }
            }
            seen_[count++] = attributeName;
            blanks();
            if (place_ >= text_.size() || text_[place_] != '=') {
                return false;
            }
            ++place_;
            blanks();
            if (!attributeValue()) {
                return false;
            }
        }
    }

    bool attributeValue()
    {
        if (place_ >= text_.size() || (text_[place_] != '"' && text_[place_] != '\'')) {
            return false;
        }
        const char quote = text_[place_++];
        while (true) {
            pass(plainByte);
            if (place_ >= text_.size()) {
                return false;
            }
            const char c = text_[place_];
            if (c == quote) {
                ++place_;
                return true;
            }
            if (c == '<' || (c == '&' ? !reference() : !character())) {
                return false;
            }
        }
    }

    void blanks()
    {
        while (place_ < text_.size() && isBlank(text_[place_])) {
            ++place_;
        }
    }

    std::string_view name()
    {
        const std::size_t first = place_;
        pass(nameByte);
        return text_.substr(first, place_ - first);
    }

    std::string_view text_;
    const XmlLimits &limits_;
    std::size_t place_ = 0;
    std::size_t depth_ = 0;
    std::size_t elements_ = 0;
    std::size_t roots_ = 0;
    std::array<std::string_view, 32> seen_; // the attributes of the element at hand
    XmlProblem problem_ = XmlProblem::notWellFormed;
};

/** Bytes that need a second look: markup, controls, everything beyond ASCII. */
constexpr std::array<bool, 256> makeSpecialBytes()
{
    std::array<bool, 256> special = {};
    for (std::size_t i = 0; i < special.size(); ++i) {
        special[i] = i < 0x20 || i >= 0x7f || i == '<' || i == '>' || i == '&' || i == '"' || i == '\'';
    }
    return special;
}

constexpr std::array<bool, 256> specialBytes = makeSpecialBytes();

constexpr std::size_t blockSize = 16;

/** Whether sixteen bytes have a special one among them. */
bool hasSpecial(const char *bytes)
{
    using Block [[gnu::vector_size(blockSize)]] = unsigned char;
    using Halves [[gnu::vector_size(blockSize)]] = std::uint64_t;
    Block block;
    std::memcpy(&block, bytes, sizeof block);
    const auto special = (block < 0x20) | (block >= 0x7f) | (block == '<') | (block == '>') | (block == '&') |
                         (block == '"') | (block == '\'');
    const auto halves = reinterpret_cast<Halves>(special);
    return (halves[0] | halves[1]) != 0;
}

/** The bytes at the beginning of the text that stand for themselves. */
std::size_t plainLength(std::string_view text)
{
    std::size_t length = 0;
    if (text.size() >= blockSize) {
        const std::size_t lastBlock = text.size() - blockSize; // may begin in the one before
        while (length < lastBlock && !hasSpecial(text.data() + length)) {
            length += blockSize;
        }
        if (length >= lastBlock && !hasSpecial(text.data() + lastBlock)) {
            return text.size();
        }
    }
    while (length < text.size() && !specialBytes[static_cast<unsigned char>(text[length])]) {
        ++length;
    }
    return length;
}

std::string_view entityOf(char c)
{
    switch (c) {
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '&':
        return "&amp;";
    case '"':
        return "&quot;";
    case '\'':
        return "&apos;";
    default:
        return {};
    }
}

} // namespace

XmlProblem checkXml(std::string_view document, const XmlLimits &limits)
{
    return Checker(document, limits).check();
}

std::string limitText(XmlProblem problem, const XmlLimits &limits)
{
    switch (problem) {
    case XmlProblem::tooManyElements:
        return "The document has more than " + std::to_string(limits.elements) + " elements.";
    case XmlProblem::tooDeep:
        return "The document has elements that are nested more than " + std::to_string(limits.depth) +
               " deep.";
    case XmlProblem::tooManyAttributes:
        return "The document has an element with more than " + std::to_string(limits.attributes) +
               " attributes.";
    case XmlProblem::none:
    case XmlProblem::notWellFormed:
        break;
    }
    return "";
}

void appendEscaped(TextBuffer &buffer, std::string_view text)
{
    constexpr std::string_view replacement = "\xef\xbf\xbd";
    while (!text.empty()) {
        if (const std::size_t plain = plainLength(text); plain != 0) {
            buffer.append(text.substr(0, plain));
            text.remove_prefix(plain);
            continue;
        }
        if (const std::string_view entity = entityOf(text.front()); !entity.empty()) {
            buffer.append(entity);
            text.remove_prefix(1);
            continue;
        }
        const std::size_t length = sequenceLength(text);
        buffer.append(length != 0 ? text.substr(0, length) : replacement);
        text.remove_prefix(length != 0 ? length : 1);
    }
}

void appendEscaped(TextBuffer &buffer, std::uint16_t character)
{
    const unsigned code = character;
    const auto byte = [](unsigned value) { return static_cast<char>(value); };
    const char one[] = {byte(code)};
    const char two[] = {byte(0xc0 | code >> 6), byte(0x80 | (code & 0x3f))};
    const char three[] = {byte(0xe0 | code >> 12), byte(0x80 | (code >> 6 & 0x3f)),
                          byte(0x80 | (code & 0x3f))};
    appendEscaped(buffer, code < 0x80    ? std::string_view(one, sizeof one)
                          : code < 0x800 ? std::string_view(two, sizeof two)
                                         : std::string_view(three, sizeof three));
}

} // namespace host
