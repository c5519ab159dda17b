// SPDX-License-Identifier: Apache-2.0
// The settings that are changed, as rows.
#ifndef TESTS_SOAK_SETTINGS_H
#define TESTS_SOAK_SETTINGS_H

#include <random>
#include <span>
#include <string>
#include <vector>

namespace soak
{

using Random = std::mt19937_64;

/** A number from the first to the last. */
int anyOf(Random &random, int first, int last);

/** One setting: the object and the method that changes it, the properties that show it. */
struct Setting {
    const char *className; // without its prefix
    const char *number;    // of the object, where there are several; else ""
    const char *method;
    std::vector<const char *> arguments;
    std::vector<const char *> properties;
    int first;
    int last;
    int step = 1;
    bool isAdministrators = false;
    const char *name = ""; // as displayctl names it, for those that it changes
};

/** A value, one number for each argument. A text is made of its number, see argumentText. */
using Value = std::vector<int>;

std::span<const Setting> settings();

/** Another value than the given one. */
Value anotherValue(const Setting &setting, const Value &now, Random &random);

/** A value that the monitor refuses. */
Value refusedValue(const Setting &setting);

/** What a method takes for an argument. */
std::string argumentText(const Setting &setting, int number);

/** The value that properties show, by their texts; empty when they show none. */
Value shownValue(const Setting &setting, const std::vector<std::string> &texts);

std::string describe(const Setting &setting, const Value &value);

/** Classes, and how many objects each has. Of an association those are told whose ends can be read. */
struct ClassRow {
    const char *name;
    int objects;
    bool isAssociation = false;
};
std::span<const ClassRow> classes();

} // namespace soak

#endif
