// SPDX-License-Identifier: Apache-2.0
#include "document.h"

namespace reference
{

Line marked(const std::string &text)
{
    Line line;
    Span::Kind kind = Span::words;
    std::string piece;
    for (const char character : text) {
        if (character != '`') {
            piece += character;
            continue;
        }
        if (!piece.empty()) {
            line.push_back({kind, piece});
        }
        piece.clear();
        kind = kind == Span::words ? Span::code : Span::words;
    }
    if (!piece.empty()) {
        line.push_back({kind, piece});
    }
    return line;
}

Line &operator+=(Line &line, const Line &more)
{
    line.insert(line.end(), more.begin(), more.end());
    return line;
}

Line joined(const std::vector<Line> &lines, const std::string &separator)
{
    Line all;
    for (const Line &line : lines) {
        if (!all.empty()) {
            all.push_back({Span::words, separator});
        }
        all += line;
    }
    return all;
}

} // namespace reference
