// SPDX-License-Identifier: Apache-2.0
// Small faults for the library's sources: where one can be made, and a choice of them.
#ifndef TOOLS_MUTATION_MUTATION_H
#define TOOLS_MUTATION_MUTATION_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace mutation
{

enum class Kind {
    text,       // a letter of a text
    number,     // a number, one more or one less
    code,       // another CMPI return code
    constant,   // the neighbour of an enumerator: a register, a group, a state
    comparison, // == for !=, < for <=, && for || and the like
    order,      // two lines that are alike, in the other order
};
inline constexpr std::size_t kindCount = 6;

std::string_view nameOf(Kind kind);

/** A fault: a line, or two, in the place of others. */
struct Fault {
    Kind kind;
    std::string file; // as it was given
    std::size_t line; // the first, from 1
    std::vector<std::string> before;
    std::vector<std::string> after;
};

/** The enumerators of a header, each with the one that stands before or behind it in its enumeration. */
using Neighbours = std::map<std::string, std::string, std::less<>>;
Neighbours neighboursIn(std::string_view header);

/** Every fault that can be made in the text, in its order. Comments, #include and static_assert get none. */
std::vector<Fault> faultsIn(const std::string &file, std::string_view text, const Neighbours &neighbours);

/** So many of them, the same for the same seed: spread over the kinds first, then over the files. */
std::vector<Fault> choose(const std::vector<Fault> &all, std::size_t count, std::uint32_t seed);

/** The text with the fault in it. Nothing when the lines are not there. */
std::string applied(const Fault &fault, std::string_view text);

} // namespace mutation

#endif
