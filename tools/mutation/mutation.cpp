// SPDX-License-Identifier: Apache-2.0
#include "mutation.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <random>
#include <regex>
#include <set>

namespace mutation
{

namespace
{

constexpr std::array<std::string_view, kindCount> kindNames = {"text",     "number",     "code",
                                                               "constant", "comparison", "order"};

constexpr std::array codes = {"CMPI_RC_OK",
                              "CMPI_RC_ERR_FAILED",
                              "CMPI_RC_ERR_ACCESS_DENIED",
                              "CMPI_RC_ERR_INVALID_PARAMETER",
                              "CMPI_RC_ERR_INVALID_CLASS",
                              "CMPI_RC_ERR_NOT_FOUND",
                              "CMPI_RC_ERR_NOT_SUPPORTED",
                              "CMPI_RC_ERR_METHOD_NOT_FOUND"};

struct Exchange {
    std::string_view before;
    std::string_view after;
};
constexpr Exchange comparisons[] = {{" == ", " != "}, {" != ", " == "}, {" < ", " <= "},  {" <= ", " < "},
                                    {" > ", " >= "},  {" >= ", " > "},  {" && ", " || "}, {" || ", " && "}};

std::vector<std::string> linesOf(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

/** What each character of a line is: 't' of a text between quotation marks, 'c' of code, '-' of neither. */
class Marker
{
  public:
    std::string marks(const std::string &line)
    {
        std::string result(line.size(), '-');
        bool isText = false;
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (inComment_) {
                inComment_ = line.compare(i, 2, "*/") != 0;
                i += inComment_ ? 0 : 1;
            } else if (isText) {
                isText = line[i] != '"';
                result[i] = isText ? 't' : '-';
                if (line[i] == '\\' && i + 1 < line.size()) {
                    result[i++] = '-'; // neither the mark nor what it stands for
                }
            } else if (line.compare(i, 2, "//") == 0) {
                break;
            } else if (line.compare(i, 2, "/*") == 0) {
                inComment_ = true;
                ++i;
            } else if (line[i] == '"') {
                isText = true;
            } else if (line[i] == '\'') {
                i = std::min(line.find('\'', i + (i + 1 < line.size() && line[i + 1] == '\\' ? 3 : 1)),
                             line.size());
            } else {
                result[i] = 'c';
            }
        }
        return result;
    }

  private:
    bool inComment_ = false;
};

bool isWordCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

/** Looks for faults in one file. */
class Finder
{
  public:
    Finder(const std::string &file, const Neighbours &neighbours) : file_(file), neighbours_(neighbours) {}

    std::vector<Fault> find(std::string_view text)
    {
        const std::vector<std::string> lines = linesOf(text);
        Marker marker;
        bool inAssert = false;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            line_ = lines[i];
            marks_ = marker.marks(line_);
            number_ = i + 1;
            inAssert = inAssert || line_.find("static_assert") != std::string::npos;
            if (!inAssert && !line_.starts_with('#')) {
                findTexts();
                findWords();
                findComparisons();
                if (i + 1 < lines.size()) {
                    findOrder(lines[i + 1]);
                }
            }
            inAssert = inAssert && line_.find(';') == std::string::npos;
        }
        return std::move(faults_);
    }

  private:
    void add(Kind kind, std::size_t at, std::size_t length, std::string_view with)
    {
        std::string changed = line_;
        changed.replace(at, length, with);
        faults_.push_back({kind, file_, number_, {line_}, {changed}});
    }

    /** One letter of each text; which one depends on the text alone. */
    void findTexts()
    {
        for (std::size_t begin = marks_.find('t'); begin != std::string::npos;) {
            const std::size_t end = std::min(marks_.find_first_not_of('t', begin), marks_.size());
            std::vector<std::size_t> letters;
            for (std::size_t i = begin; i < end; ++i) {
                // What follows a per cent sign may be no letter of the text.
                if (std::isalpha(static_cast<unsigned char>(line_[i])) != 0 &&
                    (i == begin || line_[i - 1] != '%')) {
                    letters.push_back(i);
                }
            }
            if (!letters.empty()) {
                const std::size_t at = letters[(end - begin) * 7 % letters.size()];
                const char letter = line_[at];
                add(Kind::text, at, 1,
                    std::string(1, letter == 'z'   ? 'a'
                                   : letter == 'Z' ? 'A'
                                                   : static_cast<char>(letter + 1)));
            }
            begin = marks_.find('t', end);
        }
    }

    void findWords()
    {
        for (std::size_t begin = 0; begin < line_.size();) {
            if (marks_[begin] != 'c' || !isWordCharacter(line_[begin])) {
                ++begin;
                continue;
            }
            std::size_t end = begin;
            while (end < line_.size() && marks_[end] == 'c' && isWordCharacter(line_[end])) {
                ++end;
            }
            findInWord(begin, line_.substr(begin, end - begin));
            begin = end;
        }
    }

    void findInWord(std::size_t at, const std::string &word)
    {
        if (std::ranges::all_of(word, [](unsigned char c) { return std::isdigit(c) != 0; }) &&
            word.size() < 9) {
            const long value = std::stol(word);
            add(Kind::number, at, word.size(), std::to_string(value + 1));
            if (value > 0) {
                add(Kind::number, at, word.size(), std::to_string(value - 1));
            }
        } else if (const auto code = std::ranges::find(codes, word); code != codes.end()) {
            add(Kind::code, at, word.size(), *(code + 1 == codes.end() ? codes.begin() : code + 1));
        } else if (const auto found = neighbours_.find(word); found != neighbours_.end()) {
            add(Kind::constant, at, word.size(), found->second);
        }
    }

    void findComparisons()
    {
        if (line_.find("template") != std::string::npos) {
            return;
        }
        for (const Exchange &exchange : comparisons) {
            for (std::size_t at = line_.find(exchange.before); at != std::string::npos;
                 at = line_.find(exchange.before, at + 1)) {
                if (marks_[at + 1] == 'c') {
                    add(Kind::comparison, at, exchange.before.size(), exchange.after);
                }
            }
        }
    }

    /** Two calls of the same object, or two rows of a table, that stand whole in a line each. */
    void findOrder(const std::string &next)
    {
        static const std::regex call(R"(^\s+([a-zA-Z]+)\.[a-zA-Z0-9]+\(.*\);$)");
        static const std::regex row(R"(^\s+(\{).*\},$)");
        for (const std::regex *form : {&call, &row}) {
            std::smatch first;
            std::smatch second;
            if (std::regex_match(line_, first, *form) && std::regex_match(next, second, *form) &&
                first[1] == second[1] && line_ != next) {
                faults_.push_back({Kind::order, file_, number_, {line_, next}, {next, line_}});
            }
        }
    }

    const std::string &file_;
    const Neighbours &neighbours_;
    std::string line_;
    std::string marks_;
    std::size_t number_ = 0;
    std::vector<Fault> faults_;
};

/** The place of one of the faults of that kind that are left, in a file that has been chosen least. */
std::size_t pick(const std::vector<Fault> &left, Kind kind, std::map<std::string, unsigned> &chosen)
{
    std::size_t best = left.size();
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (left[i].kind == kind && (best == left.size() || chosen[left[i].file] < chosen[left[best].file])) {
            best = i;
        }
    }
    return best;
}

} // namespace

std::string_view nameOf(Kind kind)
{
    return kindNames[static_cast<std::size_t>(kind)];
}

Neighbours neighboursIn(std::string_view header)
{
    static const std::regex enumeration(R"(enum[^{};]*\{([^}]*)\})");
    static const std::regex enumerator(R"((?:^|,)\s*([A-Z][A-Z0-9_]+))");
    static const std::regex comment(R"(/\*[^*]*\*+(?:[^/*][^*]*\*+)*/|//[^\n]*)");
    const std::string text = std::regex_replace(std::string(header), comment, "");
    Neighbours neighbours;
    for (auto found = std::sregex_iterator(text.begin(), text.end(), enumeration);
         found != std::sregex_iterator(); ++found) {
        const std::string body = (*found)[1];
        std::vector<std::string> names;
        for (auto name = std::sregex_iterator(body.begin(), body.end(), enumerator);
             name != std::sregex_iterator(); ++name) {
            names.push_back((*name)[1]);
        }
        for (std::size_t i = 0; names.size() > 1 && i < names.size(); ++i) {
            neighbours[names[i]] = names[i + 1 < names.size() ? i + 1 : i - 1];
        }
    }
    return neighbours;
}

std::vector<Fault> faultsIn(const std::string &file, std::string_view text, const Neighbours &neighbours)
{
    return Finder(file, neighbours).find(text);
}

std::vector<Fault> choose(const std::vector<Fault> &all, std::size_t count, std::uint32_t seed)
{
    std::vector<Fault> left = all;
    std::minstd_rand random(seed);
    // Not std::shuffle, which every library does in its own way.
    for (std::size_t i = left.size(); i > 1; --i) {
        std::swap(left[i - 1], left[random() % i]);
    }
    std::vector<Fault> result;
    std::map<std::string, unsigned> chosen;
    for (std::size_t turn = 0; result.size() < count && !left.empty(); ++turn) {
        const std::size_t place = pick(left, static_cast<Kind>(turn % kindCount), chosen);
        if (place < left.size()) {
            ++chosen[left[place].file];
            result.push_back(left[place]);
            left.erase(left.begin() + static_cast<std::ptrdiff_t>(place));
        }
    }
    return result;
}

std::string applied(const Fault &fault, std::string_view text)
{
    const std::vector<std::string> lines = linesOf(text);
    if (fault.line == 0 || fault.line - 1 + fault.before.size() > lines.size() ||
        !std::equal(fault.before.begin(), fault.before.end(),
                    lines.begin() + static_cast<std::ptrdiff_t>(fault.line - 1))) {
        return {};
    }
    std::string result;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const bool isFaulty = i + 1 >= fault.line && i + 1 < fault.line + fault.after.size();
        result += (isFaulty ? fault.after[i + 1 - fault.line] : lines[i]) + "\n";
    }
    return result;
}

} // namespace mutation
