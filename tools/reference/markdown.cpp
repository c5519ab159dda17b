// SPDX-License-Identifier: Apache-2.0
#include "document.h"

namespace reference
{

namespace
{

/** Words as Markdown shows them unchanged, also in a cell of a table. */
std::string escaped(const std::string &text)
{
    std::string result;
    for (const char character : text) {
        if (character == '<') {
            result += "&lt;";
        } else if (character == '&') {
            result += "&amp;";
        } else if (std::string("\\*[]|").find(character) != std::string::npos) {
            result += std::string("\\") + character;
        } else {
            result += character;
        }
    }
    return result;
}

std::string codeSpan(const std::string &text)
{
    std::string result = "`";
    for (const char character : text) {
        result += character == '|' ? "\\|" : std::string(1, character);
    }
    return result + "`";
}

std::string text(const Line &line)
{
    std::string result;
    for (const Span &span : line) {
        switch (span.kind) {
        case Span::words:
            result += escaped(span.text);
            break;
        case Span::code:
        case Span::message:
            result += codeSpan(span.text);
            break;
        case Span::strong:
            result += "**" + escaped(span.text) + "**";
            break;
        case Span::link:
            result += "[" + escaped(span.text) + "](#" + span.target + ")";
            break;
        }
    }
    return result;
}

std::string anchor(const std::string &id)
{
    return id.empty() ? "" : "<a id=\"" + id + "\"></a>";
}

std::string tableRow(const std::vector<std::string> &cells)
{
    std::string result = "|";
    for (const std::string &cell : cells) {
        result += " " + cell + (cell.empty() ? "|" : " |");
    }
    return result + "\n";
}

std::string table(const Block &block)
{
    std::string result = tableRow(block.head);
    result += tableRow(std::vector<std::string>(block.head.size(), "---"));
    for (const Row &row : block.rows) {
        std::vector<std::string> cells;
        for (const Line &cell : row.cells) {
            cells.push_back((cells.empty() ? anchor(row.id) : "") + text(cell));
        }
        result += tableRow(cells);
    }
    return result;
}

} // namespace

std::string markdown(const Document &document)
{
    std::string result;
    for (const Block &block : document) {
        result += result.empty() ? "" : "\n";
        switch (block.kind) {
        case Block::heading:
            result += block.id.empty() ? "" : anchor(block.id) + "\n\n";
            result += std::string(static_cast<size_t>(block.level), '#') + " " + text(block.line) + "\n";
            break;
        case Block::paragraph:
            result += text(block.line) + "\n";
            break;
        case Block::items:
            for (const Row &row : block.rows) {
                result += "- " + anchor(row.id) + text(row.cells.at(0)) + "\n";
            }
            break;
        case Block::table:
            result += table(block);
            break;
        }
    }
    return result;
}

} // namespace reference
