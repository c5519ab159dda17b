// SPDX-License-Identifier: Apache-2.0
// The rows of methods: what the compiler refuses.

#include "checks.h"
#include "frame/method.h"

using namespace frame;

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
