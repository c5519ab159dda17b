// SPDX-License-Identifier: Apache-2.0
#include "http_message.h"

#include <strings.h>

namespace fuzz
{

namespace
{

/** The text up to the next line feed, without a carriage return; takes it from the rest. */
std::string_view takeLine(std::string_view &rest)
{
    const std::size_t end = rest.find('\n');
    std::string_view line = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    return line;
}

} // namespace

HttpMessage::HttpMessage(std::string_view text)
{
    const std::string_view first = takeLine(text);
    const std::size_t blank = first.find(' ');
    if (blank != std::string_view::npos) {
        path = first.substr(blank + 1, first.find(' ', blank + 1) - blank - 1);
    }
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.empty()) {
            break;
        }
        const std::size_t colon = std::min(line.find(':'), line.size());
        std::string_view content = line.substr(std::min(colon + 1, line.size()));
        content.remove_prefix(std::min(content.find_first_not_of(' '), content.size()));
        // A value ends where a C string does.
        fields.emplace_back(line.substr(0, colon), content.substr(0, content.find('\0')));
    }
    body = text;
}

const char *HttpMessage::value(const char *name) const
{
    for (const auto &[field, content] : fields) {
        if (strcasecmp(field.c_str(), name) == 0) {
            return content.c_str();
        }
    }
    return nullptr;
}

std::vector<HttpMessage> messagesOf(std::string_view input)
{
    std::vector<HttpMessage> messages;
    while (!input.empty()) {
        const std::size_t end = input.find(separator);
        messages.emplace_back(input.substr(0, end));
        input.remove_prefix(end == std::string_view::npos ? input.size() : end + separator.size());
    }
    return messages;
}

} // namespace fuzz
