// SPDX-License-Identifier: Apache-2.0
// Type and place of every member and value of every constant of the CMPI headers, against the tables of the
// standard (layout.tsv, constants.tsv). The tables are read here again: no row of them is passed over.

#include "cmpimacs.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "layout_static.h"

extern "C" size_t cmpiSizeOfStatusInC(void);

// Structures that came with CMPI 2.1. If the headers declared them, these definitions would not compile.
struct CMPIPropertyList {
};
struct CMPIPropertyListFT {
};
struct CMPIEnumerationFilter {
};
struct CMPIEnumerationFilterFT {
};

namespace
{

using Name = std::pair<std::string, std::string>; // structure, member

struct Member {
    size_t offset;
    size_t size;
    size_t alignment; // of the structure
    size_t total;     // size of the structure
    bool asDeclared;  // the type of the member is the type of the table
};

std::map<Name, Member> declaredMembers()
{
    std::map<Name, Member> members;
#define CMPI_MEMBER(structure, member, offset64, offset32, ...)                                              \
    members[{#structure, #member}] = {offsetof(structure, member), sizeof(structure::member),                \
                                      alignof(structure), sizeof(structure),                                 \
                                      std::is_same_v<decltype(structure::member), __VA_ARGS__>};
#define CMPI_LATER_MEMBER(structure, member)
#define CMPI_CONSTANT(name, value)
#define CMPI_ENUMERATOR(type, name, value)
#define CMPI_TEXT(name, text)
#include "cmpi_rows.inc"
#undef CMPI_MEMBER
#undef CMPI_LATER_MEMBER
    return members;
}

#define CMPI_MEMBER(structure, member, offset64, offset32, ...)
#define CMPI_LATER_MEMBER(structure, member)                                                                 \
    template <typename T>                                                                                    \
    concept structure##_has_##member = requires                                                              \
    {                                                                                                        \
        &T::member;                                                                                          \
    };
#include "cmpi_rows.inc"
#undef CMPI_LATER_MEMBER

// Members of CMPI 2.1, and whether the headers declare them all the same.
std::map<Name, bool> laterMembers()
{
    std::map<Name, bool> members;
#define CMPI_LATER_MEMBER(structure, member)                                                                 \
    members[{#structure, #member}] = structure##_has_##member<structure>;
#include "cmpi_rows.inc"
#undef CMPI_LATER_MEMBER
    return members;
}
#undef CMPI_CONSTANT
#undef CMPI_ENUMERATOR
#undef CMPI_TEXT

struct Constant {
    std::string category;
    std::string value;
};

std::map<std::string, Constant> declaredConstants()
{
    std::map<std::string, Constant> constants;
#define CMPI_LATER_MEMBER(structure, member)
#define CMPI_CONSTANT(name, value) constants[#name] = {"constant", std::to_string(name)};
#define CMPI_ENUMERATOR(type, name, value)                                                                   \
    static_assert(std::is_same_v<decltype(name), type>);                                                     \
    constants[#name] = {#type, std::to_string(static_cast<int>(name))};
#define CMPI_TEXT(name, text) constants[#name] = {"text", std::string("\"") + (name) + "\""};
#include "cmpi_rows.inc"
    return constants;
}

// The rows of a table, cut at the tabs.
std::vector<std::vector<std::string>> readTable(const std::string &file)
{
    std::vector<std::vector<std::string>> rows;
    std::ifstream in(std::string(CMPI_TABLES_DIR) + "/" + file);
    EXPECT_TRUE(in.is_open()) << file;
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> cells{""};
        for (const char c : line) {
            if (c == '\t') {
                cells.emplace_back();
            } else {
                cells.back() += c;
            }
        }
        rows.push_back(std::move(cells));
    }
    return rows;
}

// The name that a C declaration of a member declares.
std::string declaredName(const std::string &declaration)
{
    const size_t function = declaration.find("(*");
    if (function != std::string::npos) {
        return declaration.substr(function + 2, declaration.find(')', function) - function - 2);
    }
    return declaration.substr(declaration.rfind(' ') + 1);
}

size_t roundedUp(size_t size, size_t alignment)
{
    return (size + alignment - 1) / alignment * alignment;
}

TEST(CmpiLayout, EveryRowOfTheTable)
{
    std::vector<std::vector<std::string>> rows = readTable("layout.tsv");
    ASSERT_EQ(rows.size(), 356u);
    ASSERT_EQ(rows[0], (std::vector<std::string>{"struct", "member (C declaration)", "offset x86-64",
                                                 "offset armel", "CMPI version"}));
    rows.erase(rows.begin());

    const std::map<Name, Member> declared = declaredMembers();
    const std::map<Name, bool> later = laterMembers();
    const size_t column = sizeof(void *) == 8 ? 2 : 3;
    size_t seen = 0;
    size_t seenLater = 0;
    for (const std::vector<std::string> &row : rows) {
        ASSERT_EQ(row.size(), 5u) << row[0];
        const Name name{row[0], declaredName(row[1])};
        SCOPED_TRACE(name.first + "." + name.second);
        if (row[4] == "2.1") {
            ++seenLater;
            const auto found = later.find(name);
            ASSERT_NE(found, later.end());
            EXPECT_FALSE(found->second) << "a member of CMPI 2.1 is declared";
            EXPECT_FALSE(declared.contains(name));
            continue;
        }
        ASSERT_EQ(row[4], "2.0");
        ++seen;
        const auto found = declared.find(name);
        ASSERT_NE(found, declared.end());
        EXPECT_EQ(found->second.offset, std::strtoul(row[column].c_str(), nullptr, 10));
        EXPECT_TRUE(found->second.asDeclared) << row[1];
    }
    EXPECT_EQ(seen, 324u);
    EXPECT_EQ(seenLater, 31u);
    EXPECT_EQ(declared.size(), seen);
    EXPECT_EQ(later.size(), seenLater);
}

// The members fill their structure: none follows the last one of the table, none hides between two of them.
TEST(CmpiLayout, NoMemberBeyondTheTable)
{
    std::map<std::string, std::vector<Member>> structures;
    for (const auto &[name, member] : declaredMembers()) {
        structures[name.first].push_back(member);
    }
    EXPECT_EQ(structures.size(), 47u);
    for (auto &[name, members] : structures) {
        SCOPED_TRACE(name);
        std::sort(members.begin(), members.end(),
                  [](const Member &a, const Member &b) { return a.offset < b.offset; });
        size_t end = 0;
        for (const Member &member : members) {
            if (member.offset > 0) {
                EXPECT_GE(member.offset, end);
                EXPECT_LT(member.offset - end, member.alignment) << "gap before offset " << member.offset;
            }
            end = std::max(end, member.offset + member.size);
        }
        EXPECT_EQ(members.front().total, roundedUp(end, members.front().alignment));
    }
}

TEST(CmpiConstants, EveryRowOfTheTable)
{
    const std::vector<std::vector<std::string>> rows = readTable("constants.tsv");
    ASSERT_EQ(rows.size(), 319u);
    const std::map<std::string, Constant> declared = declaredConstants();
    std::set<std::string> seen;
    for (const std::vector<std::string> &row : rows) {
        ASSERT_EQ(row.size(), 4u) << row[0];
        SCOPED_TRACE(row[1]);
        seen.insert(row[1]);
        const auto found = declared.find(row[1]);
        ASSERT_NE(found, declared.end());
        EXPECT_EQ(found->second.category, row[0]);
        if (row[1] == "CMPICurrentVersion") {
            // The table knows the highest version of the standard; these headers are of 2.0.
            EXPECT_EQ(row[2], "210");
            EXPECT_EQ(found->second.value, "200");
            continue;
        }
        EXPECT_EQ(found->second.value, row[2]);
        if (!row[3].empty()) {
            EXPECT_EQ(std::strtoul(row[2].c_str(), nullptr, 10), std::strtoul(row[3].c_str(), nullptr, 16));
        }
    }
    EXPECT_EQ(seen.size(), rows.size());
    EXPECT_EQ(declared.size(), rows.size());
}

TEST(CmpiLayout, CAndCxxAgree)
{
    EXPECT_EQ(cmpiSizeOfStatusInC(), sizeof(CMPIStatus));
}

} // namespace
