// SPDX-License-Identifier: Apache-2.0
// The words of a MOF text, one after another (DSP0004, Annex A).
#ifndef HOST_CIM_MOF_LEXER_H
#define HOST_CIM_MOF_LEXER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace cim
{

enum class MofTokenKind {
    end,
    name,    // identifiers and keywords
    integer, // in any of the four bases
    real,
    string,    // adjacent literals joined, escapes resolved, UTF-8
    character, // a single character in single quotes, UTF-8
    symbol,    // one of { } ( ) [ ] , ; : = # $
    bad,       // no token at all; text says what is wrong
};

struct MofToken {
    MofTokenKind kind = MofTokenKind::end;
    std::string text; // the word; of a string or character what it stands for; of bad the message
    char symbol = 0;
    std::uint64_t magnitude = 0; // of an integer, without its sign
    bool isNegative = false;
    unsigned line = 1;
    unsigned column = 1;
};

/** What a literal, or adjacent ones, stand for. */
struct MofLiteral {
    std::string text;
    std::size_t letters = 0;
};

/** Splits a text into tokens. Never fails: what is not MOF comes as a bad token, and the reading goes on
 * after it. The text must outlive the lexer. */
class MofLexer
{
  public:
    explicit MofLexer(std::string_view text);

    /** The next token; end for ever after the last one. */
    MofToken next();

  private:
    char peek(std::size_t ahead = 0) const;
    void skip(std::size_t count);
    bool skipBlank(MofToken &bad);
    void readNumber(MofToken &token);
    void readQuoted(MofToken &token, char quote);
    bool readLiteral(char quote, MofLiteral &literal, std::string &message);
    void readCharacter(std::string &text, std::string &message);
    bool readEscape(std::string &text, std::string &message);
    bool isAtNextLiteral();

    std::string_view text_;
    std::size_t place_ = 0;
    unsigned line_ = 1;
    unsigned column_ = 1;
};

} // namespace cim

#endif
