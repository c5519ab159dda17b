// SPDX-License-Identifier: Apache-2.0
// What the seam calls the numbers of a message; made from its header when the program is built.
#ifndef DESK_SCREEN_NAMES_H
#define DESK_SCREEN_NAMES_H

#include <span>

namespace desk::screen
{

struct NamedNumber {
    int number;
    const char *name;
};

std::span<const NamedNumber> registerNames();
std::span<const NamedNumber> groupNames();
std::span<const NamedNumber> commandNames();
std::span<const NamedNumber> sourceNames();

} // namespace desk::screen

#endif
