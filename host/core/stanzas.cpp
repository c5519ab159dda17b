// SPDX-License-Identifier: Apache-2.0
#include "core/stanzas.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace host
{
namespace
{

constexpr std::string_view blanks = " \t\r\v\f";

} // namespace

std::string_view trimmedLine(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string> wordsOf(std::string_view text)
{
    std::vector<std::string> found;
    for (text = trimmedLine(text); !text.empty(); text = trimmedLine(text)) {
        const std::size_t end = std::min(text.find_first_of(blanks), text.size());
        found.emplace_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    return found;
}

std::string readStanzaFile(const std::string &file, std::vector<std::string> &problems)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    if (!stream || !(text << stream.rdbuf())) {
        problems.push_back(file + ": cannot be read: " + std::strerror(errno));
        return {};
    }
    return text.str();
}

void StanzaReader::readText(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        ++line_;
        readLine(trimmedLine(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    finish();
}

void StanzaReader::readLine(std::string_view line)
{
    if (line.empty() || line.front() == '#') {
        return;
    }
    if (line.front() == '[') {
        finish();
        if (line.back() != ']' || trimmedLine(line.substr(1, line.size() - 2)).empty()) {
            problem("a stanza begins with [" + head_ + "]");
            return;
        }
        name_ = trimmedLine(line.substr(1, line.size() - 2));
        where_ = file_ + ":" + std::to_string(line_);
        inStanza_ = true;
        bad_ = false;
        begin(name_);
        return;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) {
        problem("expected \"key: value\"");
        return;
    }
    if (!inStanza_) {
        problem("a value stands before the first [" + head_ + "]");
        return;
    }
    readValue(trimmedLine(line.substr(0, colon)), trimmedLine(line.substr(colon + 1)));
}

void StanzaReader::readValue(std::string_view key, std::string_view value)
{
    if (value.empty()) {
        problem(std::string("\"").append(key).append("\" has no value"));
    } else if (!take(key, value)) {
        problem(std::string("unknown key \"").append(key).append("\""));
    }
}

void StanzaReader::finish()
{
    if (!inStanza_) {
        return;
    }
    check();
    if (!bad_) {
        keep();
    }
    inStanza_ = false;
}

void StanzaReader::problem(const std::string &text)
{
    problems_.push_back(file_ + ":" + std::to_string(line_) + ": " + text);
    bad_ = true;
}

void StanzaReader::problemOfStanza(const std::string &text)
{
    problems_.push_back(where_ + ": [" + name_ + "] " + text);
    bad_ = true;
}

} // namespace host
