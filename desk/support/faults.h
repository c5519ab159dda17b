// SPDX-License-Identifier: Apache-2.0
// The faults that the desk monitor can be told to have. They stand in the store by name and argument.
#ifndef DESK_SUPPORT_FAULTS_H
#define DESK_SUPPORT_FAULTS_H

#include <map>
#include <span>
#include <string>
#include <string_view>

namespace desk
{

struct FaultRow {
    std::string_view name;
    std::string_view argument;        // what the argument is; empty: takes none
    std::string_view defaultArgument; // when none is given
    std::string_view meaning;
    /** What is wrong with an argument; empty when it is acceptable. */
    std::string (*complaint)(std::string_view argument);
};

std::span<const FaultRow> faultRows();

/** The row of a fault, null when there is none of that name. */
const FaultRow *findFault(std::string_view name);

/** Name and argument of what is switched on. */
using Faults = std::map<std::string, std::string, std::less<>>;

/** True when the fault is switched on for the function: its argument names the function, among others
 * perhaps, or names none and means all. */
bool failsByFault(const Faults &faults, std::string_view fault, std::string_view function);

/** Switches a fault on, with the default argument where none is given, or off. Returns what is wrong with it;
 * empty when it was done. */
[[nodiscard]] std::string switchFault(Faults &faults, std::string_view name, bool on,
                                      std::string_view argument);

} // namespace desk

#endif
