// SPDX-License-Identifier: Apache-2.0
// A page as a list of blocks, written as Markdown or as HTML.
#ifndef REFERENCE_DOCUMENT_H
#define REFERENCE_DOCUMENT_H

#include <string>
#include <vector>

namespace reference
{

/** A piece of a line. A message is what a client receives: its blanks count. */
struct Span {
    enum Kind { words, code, message, strong, link };
    Kind kind = words;
    std::string text;
    std::string target = {}; // of a link: the id it leads to
};
using Line = std::vector<Span>;

inline Span code(const std::string &text)
{
    return {Span::code, text};
}
inline Span message(const std::string &text)
{
    return {Span::message, text};
}
inline Span strong(const std::string &text)
{
    return {Span::strong, text};
}
inline Span link(const std::string &text, const std::string &target)
{
    return {Span::link, text, target};
}

/** A text with code between backticks. */
Line marked(const std::string &text);
/** The lines one after the other, with a separator between them. */
Line joined(const std::vector<Line> &lines, const std::string &separator);
/** Appends to a line. */
Line &operator+=(Line &line, const Line &more);

struct Row {
    std::string id; // "" without one
    std::vector<Line> cells;
};

struct Block {
    enum Kind { heading, paragraph, items, table };
    Kind kind;
    Line line = {};                     // of a heading or paragraph
    int level = 0;                      // of a heading, from 1
    std::string id = {};                // of a heading
    std::string brief = {};             // of a heading, for a table of contents; else its line
    std::vector<std::string> head = {}; // of a table
    std::vector<Row> rows = {};         // of a table; of a list each row has one cell
};
using Document = std::vector<Block>;

std::string markdown(const Document &document);
/** One page that needs no other file. */
std::string html(const Document &document);

} // namespace reference

#endif
