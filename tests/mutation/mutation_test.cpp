// SPDX-License-Identifier: Apache-2.0
// The seeding of faults: what it finds, and that the same seed finds the same.
#include "mutation.h"

#include <gtest/gtest.h>

using namespace mutation;

namespace
{

const Neighbours registers = {{"GAMMA", "LUMINANCE"}, {"LUMINANCE", "GAMMA"}};

/** The kinds and the changed lines of all faults of the text. */
std::vector<std::string> changed(std::string_view text)
{
    std::vector<std::string> result;
    for (const Fault &fault : faultsIn("a.cpp", text, registers)) {
        std::string told = std::to_string(fault.line) + " " + std::string(nameOf(fault.kind));
        for (const std::string &line : fault.after) {
            told += "|" + line;
        }
        result.push_back(told);
    }
    return result;
}

using Faults = std::vector<std::string>;

TEST(Mutation, ALetterOfATextIsChanged)
{
    EXPECT_EQ(changed("say(\"a\", \"z\");"),
              (Faults{"1 text|say(\"b\", \"z\");", "1 text|say(\"a\", \"a\");"}));
}

TEST(Mutation, ALetterBehindAPerCentSignOrABackslashIsNoLetter)
{
    EXPECT_EQ(changed("say(\"%d\\n\");"), Faults{});
}

TEST(Mutation, NumbersAreOneMoreAndOneLess)
{
    EXPECT_EQ(changed("f(5);"), (Faults{"1 number|f(6);", "1 number|f(4);"}));
    EXPECT_EQ(changed("f(0);"), Faults{"1 number|f(1);"});
    EXPECT_EQ(changed("f(uint16, a5);"), Faults{});
}

TEST(Mutation, CodesAndEnumeratorsAreExchanged)
{
    EXPECT_EQ(changed("fail(CMPI_RC_ERR_FAILED);"), Faults{"1 code|fail(CMPI_RC_ERR_ACCESS_DENIED);"});
    EXPECT_EQ(changed("set(LUMINANCE);"), Faults{"1 constant|set(GAMMA);"});
    EXPECT_EQ(changed("set(LUMINANCES);"), Faults{});
}

TEST(Mutation, ComparisonsAreExchanged)
{
    EXPECT_EQ(changed("if (a == b && c < d)"),
              (Faults{"1 comparison|if (a != b && c < d)", "1 comparison|if (a == b && c <= d)",
                      "1 comparison|if (a == b || c < d)"}));
}

TEST(Mutation, LinesThatAreAlikeChangePlaces)
{
    EXPECT_EQ(changed("    a.text(b);\n    a.field(c);\n    d.field(c);\n"),
              Faults{"1 order|    a.field(c);|    a.text(b);"});
    EXPECT_EQ(changed("    {a, b},\n    {c, d},\n"), Faults{"1 order|    {c, d},|    {a, b},"});
}

TEST(Mutation, CommentsIncludesAndAssertionsGetNone)
{
    EXPECT_EQ(changed("// f(5) \"a\"\n/* 5\n 6 */\n#include \"a5.h\"\nstatic_assert(a ==\n 5);\n"), Faults{});
}

TEST(Mutation, NeighboursAreOfTheSameEnumeration)
{
    EXPECT_EQ(
        neighboursIn(
            "enum { A_A = 1, /* one, ALONE */ B_B }; typedef enum X { C_C } X;\nenum Y { D_D,\n E_E // F_F\n};"),
        (Neighbours{{"A_A", "B_B"}, {"B_B", "A_A"}, {"D_D", "E_E"}, {"E_E", "D_D"}}));
}

TEST(Mutation, TheSameSeedChoosesTheSameSpreadOverKindsAndFiles)
{
    std::vector<Fault> all;
    for (const char *file : {"a.cpp", "b.cpp"}) {
        const auto found = faultsIn(file, "f(1);\nf(2);\nf(\"a\");\nf(\"b\");\n", registers);
        all.insert(all.end(), found.begin(), found.end());
    }
    const auto chosen = choose(all, 4, 7);
    ASSERT_EQ(chosen.size(), 4U);
    unsigned texts = 0;
    unsigned first = 0;
    for (const Fault &fault : chosen) {
        texts += fault.kind == Kind::text ? 1 : 0;
        first += fault.file == "a.cpp" ? 1 : 0;
    }
    EXPECT_EQ(texts, 2U);
    EXPECT_EQ(first, 2U);
    const auto again = choose(all, 4, 7);
    for (std::size_t i = 0; i < chosen.size(); ++i) {
        EXPECT_EQ(chosen[i].after, again[i].after);
    }
    EXPECT_EQ(choose(all, 1000, 7).size(), all.size());
}

TEST(Mutation, AFaultIsPutIntoItsFile)
{
    const std::string text = "f(5);\ng();\nf(5);\n";
    const auto faults = faultsIn("a.cpp", text, registers);
    ASSERT_EQ(faults.size(), 4U);
    EXPECT_EQ(applied(faults[2], text), "f(5);\ng();\nf(6);\n");
    EXPECT_EQ(applied(faults[2], "f(5);\n"), "");
    EXPECT_EQ(applied(faults[2], "f(5);\ng();\nf(7);\n"), "");
}

} // namespace
