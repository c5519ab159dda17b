// SPDX-License-Identifier: Apache-2.0
#include "sources.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <utility>

namespace reference
{

namespace
{

bool isNameCharacter(char character)
{
    return isalnum(static_cast<unsigned char>(character)) || character == '_' || character == ':';
}

/** The last name in a text that ends before `end`. */
std::string nameBefore(const std::string &text, size_t end)
{
    while (end > 0 && !isNameCharacter(text[end - 1])) {
        --end;
    }
    size_t begin = end;
    while (begin > 0 && isNameCharacter(text[begin - 1])) {
        --begin;
    }
    return text.substr(begin, end - begin);
}

bool isMacroName(const std::string &name)
{
    return name.size() > 1 && std::all_of(name.begin(), name.end(), [](unsigned char character) {
               return isupper(character) || isdigit(character) || character == '_';
           });
}

/** The name that a definition at the level of a namespace defines. A macro defines what its first argument
 * names, SETTING(SetPIPSize, ...), or the first two together, INSTANCE_OPERATION(ZT_Marovelton_Monitor,
 * GetInstance). */
std::string definedName(const std::string &statement)
{
    const size_t attribute = statement.find("]]"); // [[nodiscard]]
    const size_t end = statement.find_first_of("(={[", attribute == std::string::npos ? 0 : attribute + 2);
    const std::string name = nameBefore(statement, end == std::string::npos ? statement.size() : end);
    if (!isMacroName(name) || end == std::string::npos || statement[end] != '(') {
        return name;
    }
    const size_t first = statement.find_first_of(",)", end);
    const std::string argument = nameBefore(statement, std::min(first, statement.size()));
    if (!name.ends_with("_OPERATION") || first == std::string::npos) {
        return argument;
    }
    return argument +
           nameBefore(statement, std::min(statement.find_first_of(",)", first + 1), statement.size()));
}

/** Reads C++ far enough to know of each literal the definition and the call that it stands in. */
class Reader
{
  public:
    Reader(const std::string &theContent, const std::string &theFile) : content_(theContent), file_(theFile)
    {
    }

    std::vector<SourceText> read()
    {
        while (at_ < content_.size()) {
            step();
        }
        endLiteral();
        return found_;
    }

  private:
    void step()
    {
        const char character = content_[at_];
        if (content_.compare(at_, 2, "//") == 0 || (character == '#' && atLineStart())) {
            skipLine();
        } else if (content_.compare(at_, 2, "/*") == 0) {
            at_ = std::min(content_.find("*/", at_), content_.size() - 2) + 2;
        } else if (character == '"') {
            readLiteral();
        } else if (character == '\'') {
            const size_t begin = at_;
            for (++at_; content_[at_] != '\''; ++at_) {
                at_ += content_[at_] == '\\';
            }
            ++at_;
            add(content_.substr(begin, at_ - begin));
        } else {
            ++at_;
            if (!isspace(static_cast<unsigned char>(character))) {
                endLiteral();
            }
            nest(character);
        }
    }

    bool atLineStart() const
    {
        const size_t before = content_.find_last_not_of(" \t", at_ == 0 ? 0 : at_ - 1);
        return at_ == 0 || before == std::string::npos || content_[before] == '\n';
    }

    /** A comment or directive, with the lines that continue it. */
    void skipLine()
    {
        while (at_ < content_.size() && (content_[at_] != '\n' || content_[at_ - 1] == '\\')) {
            ++at_;
        }
    }

    void add(const std::string &text)
    {
        if (definition_.empty()) {
            statement_ += text;
        }
        code_ += text;
    }

    void nest(char character)
    {
        if (character == '(') {
            calls_.push_back(nameBefore(code_, code_.size()));
        } else if (character == ')' && !calls_.empty()) {
            calls_.pop_back();
        }
        add(std::string(1, character));
        if (character == ')' && isWholeMacro()) {
            statement_.clear();
        }
        if (character == '{') {
            open();
        } else if (character == '}') {
            close();
        }
        if (character == ';' && levels_.empty()) {
            statement_.clear();
        }
        if (code_.size() > 4096) {
            code_.erase(0, 2048);
        }
    }

    /** Whether a macro ends here that is a definition without braces and semicolon. */
    bool isWholeMacro() const
    {
        const size_t next = content_.find_first_not_of(" \t\n", at_);
        const size_t arguments = statement_.find('(');
        return levels_.empty() && calls_.empty() && arguments != std::string::npos &&
               isMacroName(nameBefore(statement_, arguments)) &&
               (next == std::string::npos || content_[next] != '{');
    }

    void open()
    {
        if (levels_.empty() && statement_.find("namespace") != std::string::npos && calls_.empty()) {
            statement_.clear();
            ++namespaces_;
            return;
        }
        if (levels_.empty()) {
            definition_ = definedName(statement_);
        }
        levels_.push_back('{');
    }

    void close()
    {
        if (levels_.empty()) {
            --namespaces_;
            return;
        }
        levels_.pop_back();
        if (levels_.empty()) {
            definition_.clear();
            statement_.clear();
        }
    }

    void readLiteral()
    {
        if (!inLiteral_) {
            measured_ = code_.ends_with("sizeof ");
        }
        for (++at_; content_[at_] != '"'; ++at_) {
            if (content_[at_] != '\\') {
                literal_ += content_[at_];
                continue;
            }
            ++at_;
            literal_ += content_[at_] == 'n' ? '\n' : content_[at_];
        }
        ++at_;
        inLiteral_ = true;
    }

    /** Adjacent literals are one text. */
    void endLiteral()
    {
        if (!inLiteral_) {
            return;
        }
        const std::string text = std::exchange(literal_, "");
        inLiteral_ = false;
        const std::string call = calls_.empty() ? "" : calls_.back();
        if (!measured_ && isAnswer(text, call)) {
            found_.push_back({text, file_, definition_.empty() ? definedName(statement_) : definition_});
        }
        add("\"\"");
    }

    static bool isAnswer(const std::string &text, const std::string &call)
    {
        static const std::set<std::string> ending = {"fail",  "failed",    "failedWith",
                                                     "fails", "setStatus", "usable"};
        static const std::set<std::string> printing = {"printf", "puts", "trace", "judge"};
        static const std::set<std::string> other = {"static_assert", "output",    "formatCommand",
                                                    "sizeof",        "sscanf",    "strspn",
                                                    "_Pragma",       "copyUntil", "strstr"};
        if (ending.contains(call)) {
            return true;
        }
        const bool words =
            text.find_first_not_of(' ') != std::string::npos && text.find(' ') != std::string::npos;
        const bool traceLine = text.starts_with("---") || text.ends_with("\n");
        return words && !traceLine && !printing.contains(call) && !other.contains(call) &&
               !call.starts_with("sizeof");
    }

    const std::string &content_;
    const std::string &file_;
    size_t at_ = 0;
    std::string statement_; // of the namespace level, up to here
    std::string code_;      // the last of what was read, without literals
    std::string definition_;
    std::vector<std::string> calls_;
    std::vector<char> levels_;
    int namespaces_ = 0;
    std::string literal_;
    bool inLiteral_ = false;
    bool measured_ = false; // only its size counts
    std::vector<SourceText> found_;
};

} // namespace

std::string contentOf(const std::string &file)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    if (!stream || !(content << stream.rdbuf())) {
        fprintf(stderr, "cannot read %s\n", file.c_str());
        exit(2);
    }
    return content.str();
}

std::vector<SourceText> textsOf(const std::string &content, const std::string &file)
{
    return Reader(content, file).read();
}

std::vector<SourceText> sourceTexts(const std::string &directory)
{
    std::set<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(directory)) {
        if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h") {
            files.insert(entry.path());
        }
    }
    std::vector<SourceText> all;
    for (const auto &file : files) {
        const std::vector<SourceText> texts = textsOf(contentOf(file), file.filename());
        all.insert(all.end(), texts.begin(), texts.end());
    }
    return all;
}

bool isMadeBy(const std::string &text, const std::string &format)
{
    const size_t fixed = std::min(format.find('%'), format.size());
    if (text.compare(0, fixed, format, 0, fixed) != 0) {
        return false;
    }
    if (fixed == format.size()) {
        return text.size() == fixed;
    }
    const bool number = format.compare(fixed, 2, "%d") == 0;
    const std::string rest = format.substr(fixed + 2);
    for (size_t end = fixed + number; end <= text.size(); ++end) {
        if (isMadeBy(text.substr(end), rest)) {
            return true;
        }
        if (number && end < text.size() && !isdigit(static_cast<unsigned char>(text[end]))) {
            return false;
        }
    }
    return false;
}

std::map<int, std::string> enumerators(const std::string &file, const std::string &enumeration)
{
    std::istringstream header(contentOf(file));
    std::string line;
    while (std::getline(header, line) && line.find("enum " + enumeration) == std::string::npos) {
        continue;
    }
    std::map<int, std::string> names;
    while (std::getline(header, line) && line.find('}') == std::string::npos) {
        if (const size_t equals = line.find(" = "); equals != std::string::npos) {
            names[atoi(line.c_str() + equals + 3)] = nameBefore(line, equals);
        }
    }
    if (names.empty()) {
        fprintf(stderr, "%s has no enumeration %s\n", file.c_str(), enumeration.c_str());
        exit(2);
    }
    return names;
}

} // namespace reference
