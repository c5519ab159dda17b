// SPDX-License-Identifier: Apache-2.0
#include "words.h"

#include "probe.h"
#include "sources.h"
#include <algorithm>
#include <cctype>
#include <map>

namespace reference
{

namespace
{

constexpr const char *prefix = "ZT_Marovelton_";

/** The functions that fail in one way are listed together. */
std::vector<std::string> gathered(const std::vector<std::string> &causes)
{
    static const std::vector<std::pair<std::string, std::string>> ways = {
        {" of the object manager fails", "the object manager fails"},
        {"the monitor's record cannot be read (", "a record of the monitor cannot be read"}};
    std::vector<std::string> result;
    std::map<std::string, size_t> places;
    for (const std::string &cause : causes) {
        const auto way = std::find_if(ways.begin(), ways.end(), [&](const auto &candidate) {
            return cause.find(candidate.first) != std::string::npos;
        });
        if (way == ways.end()) {
            result.push_back(cause);
            continue;
        }
        const size_t begin = cause.find('`');
        const std::string function = cause.substr(begin, cause.find('`', begin + 1) + 1 - begin);
        const auto [place, isNew] = places.insert({way->second, result.size()});
        if (isNew) {
            result.push_back(way->second + " (" + function + ")");
        } else {
            result[place->second].insert(result[place->second].size() - 1, ", " + function);
        }
    }
    return result;
}

} // namespace

// ---- words ----

std::string shortName(const std::string &className)
{
    return className.starts_with(prefix) ? className.substr(std::string(prefix).size()) : className;
}

Line words(const std::string &text)
{
    return {{Span::words, text}};
}

Line statusName(int code)
{
    static const std::map<int, std::string> names = enumerators(CMPI_HEADER, "_CMPIrc");
    std::string name = names.at(code);
    for (const std::string skipped : {"CMPI_RC_", "ERR_"}) {
        if (name.starts_with(skipped)) {
            name.erase(0, skipped.size());
        }
    }
    return {code == 0 ? Span{Span::words, "OK"} : ::reference::code(name),
            {Span::words, " (" + std::to_string(code) + ")"}};
}

Line textLine(const std::string &text, const std::string &methodName)
{
    if (text.empty()) {
        return words("none");
    }
    if (text.find_first_not_of(' ') == std::string::npos) {
        return words("a blank");
    }
    if (text == supportLibraryText) {
        return words("what the support library says");
    }
    if (!methodName.empty() && text == methodName) {
        return words("the method's name as it was asked for");
    }
    return {message(text)};
}

Line value(const std::optional<unsigned> &returned)
{
    return words(returned ? std::to_string(*returned) : "");
}

Line causes(const std::vector<std::string> &all)
{
    std::vector<Line> lines;
    for (std::string cause : gathered(all)) {
        cause[0] = static_cast<char>(toupper(static_cast<unsigned char>(cause[0])));
        lines.push_back(marked(cause));
    }
    return joined(lines, "; ");
}

Line sentence(std::vector<std::string> parts)
{
    std::string text;
    for (size_t i = 0; i < parts.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == parts.size() ? ", then " : ", ") + parts[i];
    }
    return marked(text);
}

// ---- anchors ----

std::string idOf(const std::string &className)
{
    return shortName(className);
}

std::string idOf(const std::string &className, const std::string &member)
{
    return shortName(className) + "." + member;
}

Line classLink(const std::string &className)
{
    return {link(shortName(className), idOf(className))};
}

Line linkOrCode(const std::string &className)
{
    if (className.starts_with(prefix)) {
        return {link(className, idOf(className))};
    }
    return {code(className)};
}

Line classLinks(const std::set<std::string> &classNames)
{
    std::vector<Line> lines;
    for (const std::string &name : classNames) {
        lines.push_back(classLink(name));
    }
    return joined(lines, ", ");
}

} // namespace reference
