// SPDX-License-Identifier: Apache-2.0
#include "outcomes.h"

#include <fstream>
#include <sstream>

namespace torture
{

namespace
{

std::vector<std::string> split(const std::string &text, char at)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, at);) {
        parts.push_back(part);
    }
    return parts;
}

std::set<std::string> names(const std::string &text, char at)
{
    const std::vector<std::string> parts = split(text, at);
    return {parts.begin(), parts.end()};
}

bool covers(const std::set<std::string> &names, const std::string &name)
{
    return names.contains("*") || names.contains(name);
}

} // namespace

std::string Outcome::line() const
{
    const std::string head = className + '\t' + operation + '\t' + call + '\t' + fault + '\t' + code;
    return code == "=" ? head : head + '\t' + value + '\t' + text;
}

OutcomeTable::OutcomeTable(const std::string &file)
{
    std::ifstream stream(file);
    EXPECT_TRUE(stream) << file;
    for (std::string line; std::getline(stream, line);) {
        if (line.empty() || line[0] == '#') {
            continue;
        }
        std::vector<std::string> columns = split(line, '\t');
        const bool whole = columns.size() == 5 && columns[4] == "=";
        if (columns.size() != 7 && !whole) {
            ADD_FAILURE() << file << ": a row has 7 columns, or 5 and ends with '=': " << line;
            continue;
        }
        columns.resize(7);
        rows_.insert({columns[2], Row{.classes = names(columns[0], ' '),
                                      .operations = names(columns[1], ' '),
                                      .faults = names(columns[3], ','),
                                      .code = columns[4],
                                      .value = columns[5],
                                      .text = columns[6],
                                      .line = line,
                                      .seen = {}}});
    }
    EXPECT_FALSE(rows_.empty()) << file;
}

bool OutcomeTable::allows(const Outcome &outcome)
{
    bool found = allowsAfter(outcome.call, outcome);
    if (outcome.call == "getCharPtr") {
        // A text that cannot be read is as one that was not delivered.
        for (const char *call :
             {"getArg", "getKey", "getEntry", "getProperty", "getClassName", "getNameSpace"}) {
            found = allowsAfter(call, outcome) || found;
        }
    }
    return found;
}

bool OutcomeTable::allowsAfter(const std::string &call, const Outcome &outcome)
{
    bool found = false;
    for (auto [at, end] = rows_.equal_range(call); at != end; ++at) {
        Row &row = at->second;
        const bool called = covers(row.classes, outcome.className) && covers(row.faults, outcome.fault) &&
                            (covers(row.operations, outcome.operation) ||
                             (outcome.method && row.operations.contains("methods")));
        const bool answered = row.code == outcome.code &&
                              (row.code == "=" || (row.value == outcome.value && row.text == outcome.text));
        if (called && answered) {
            row.seen.insert(outcome.className);
            found = true;
        }
    }
    return found;
}

std::vector<std::string> OutcomeTable::unseen(const std::string &className) const
{
    std::vector<std::string> lines;
    for (const auto &[call, row] : rows_) {
        if (row.classes.contains(className) && !row.seen.contains(className)) {
            lines.push_back(row.line);
        }
    }
    return lines;
}

} // namespace torture
