// SPDX-License-Identifier: Apache-2.0
// The rows of methods: what the compiler refuses, and how they stand in memory.

#include "frame/provider.h"
#include "checks.h"

namespace
{

int setNothing(int, char *)
{
    return 0;
}

int actNothing(char *)
{
    return 0;
}

bool runNothing(Call &)
{
    return true;
}

bool never(Call &)
{
    return false;
}

constexpr Method set = {
    .name = "Set",
    .argument = {ArgumentKind::integer, "Value", "Required argument Value missing."},
    .range = {-3, 300, "Out of range."},
    .set = setNothing,
};

/** The row after a change. */
template <typename Change>
constexpr bool isSound(Change change)
{
    Method rows[] = {set};
    change(rows[0]);
    return methodsAreSound(rows);
}

constexpr Method rows[] = {
    set,
    {.name = "Act", .administrator = true, .precondition = never, .act = actNothing},
    {.name = "Run", .run = runNothing},
    {.name = "SetAgain",
     .argument = {ArgumentKind::toggle, "Value", "Required argument Value missing.", "Not a switch."},
     .set = setNothing},
};

const char *textAt(const MethodTable &table, uint16_t place)
{
    return table.texts + place;
}

} // namespace

TEST(MethodRows, ASoundRowIsAccepted)
{
    static_assert(isSound([](Method &) {}));
    static_assert(methodsAreSound(rows));
}

TEST(MethodRows, WhatIsMissingIsRefused)
{
    static_assert(!isSound([](Method &row) { row.name = nullptr; }));
    static_assert(!isSound([](Method &row) { row.name = ""; }));
    static_assert(!isSound([](Method &row) { row.argument.name = nullptr; }));
    static_assert(!isSound([](Method &row) { row.argument.missing = nullptr; }));
    static_assert(!isSound([](Method &row) { row.argument.missing = ""; }));
    static_assert(!isSound([](Method &row) { row.argument.invalid = ""; }));
    static_assert(!isSound([](Method &row) { row.argument.kind = ArgumentKind::none; }));
    static_assert(!isSound([](Method &row) { row.range.text = ""; }));
    static_assert(!isSound([](Method &row) { row.set = nullptr; }));
}

TEST(MethodRows, TwoThingsToDoAreRefused)
{
    static_assert(!isSound([](Method &row) { row.act = actNothing; }));
    static_assert(!isSound([](Method &row) { row.run = runNothing; }));
}

TEST(MethodRows, AStepThatWouldNeverBeReachedIsRefused)
{
    constexpr auto withoutArgument = [](Method &row) { row = {.name = "Run", .run = runNothing}; };
    static_assert(isSound(withoutArgument));
    static_assert(!isSound([=](Method &row) { withoutArgument(row), row.precondition = never; }));
    static_assert(!isSound([=](Method &row) { withoutArgument(row), row.range.text = "Out of range."; }));
    static_assert(!isSound([](Method &row) {
        row = {.name = "Act", .range = {0, 1, "Out of range."}, .act = actNothing};
    }));
}

TEST(MethodRows, RangesAreOrderedAndFitARegister)
{
    static_assert(!isSound([](Method &row) { row.range.min = 301; }));
    static_assert(isSound([](Method &row) { row.range = {-32768, 32767, "Out of range."}; }));
    static_assert(!isSound([](Method &row) { row.range.min = -32769; }));
    static_assert(!isSound([](Method &row) { row.range.max = 32768; }));
}

TEST(MethodRows, ANameStandsOnce)
{
    constexpr Method twice[] = {set, set};
    static_assert(!methodsAreSound(twice));
}

TEST(MethodTable, RowsNameTheirTextsByTheirPlaces)
{
    constexpr const MethodTable &table = packed<rows>;
    ASSERT_EQ(table.rows.size(), 4u);
    EXPECT_EQ(table.texts[0], '\0');

    const PackedMethod &first = table.rows[0];
    EXPECT_STREQ(textAt(table, first.name), "Set");
    EXPECT_STREQ(textAt(table, first.argument), "Value");
    EXPECT_STREQ(textAt(table, first.missing), "Required argument Value missing.");
    EXPECT_STREQ(textAt(table, first.invalid), "Invalid parameter.");
    EXPECT_STREQ(textAt(table, first.rangeText), "Out of range.");
    EXPECT_EQ(first.min, -3);
    EXPECT_EQ(first.max, 300);
    EXPECT_EQ(first.kind, ArgumentKind::integer);
    EXPECT_FALSE(first.administrator);
    EXPECT_FALSE(first.runs);
    EXPECT_EQ(first.precondition, nullptr);
    EXPECT_EQ(first.set, setNothing);

    const PackedMethod &second = table.rows[1];
    EXPECT_STREQ(textAt(table, second.name), "Act");
    EXPECT_EQ(second.argument, 0);
    EXPECT_EQ(second.missing, 0);
    EXPECT_EQ(second.rangeText, 0);
    EXPECT_EQ(second.kind, ArgumentKind::none);
    EXPECT_TRUE(second.administrator);
    EXPECT_FALSE(second.runs);
    EXPECT_EQ(second.precondition, never);
    EXPECT_EQ(second.act, actNothing);

    const PackedMethod &third = table.rows[2];
    EXPECT_STREQ(textAt(table, third.name), "Run");
    EXPECT_TRUE(third.runs);
    EXPECT_EQ(third.run, runNothing);
}

TEST(MethodTable, ATextStandsOnce)
{
    constexpr const MethodTable &table = packed<rows>;
    const PackedMethod &last = table.rows[3];
    EXPECT_EQ(last.argument, table.rows[0].argument);
    EXPECT_EQ(last.missing, table.rows[0].missing);
    EXPECT_STREQ(textAt(table, last.name), "SetAgain"); // not found in "Set"
    EXPECT_STREQ(textAt(table, last.invalid), "Not a switch.");
    // The end of another text is no text by itself.
    EXPECT_NE(last.name, table.rows[0].name);
}
