// SPDX-License-Identifier: Apache-2.0
// The monitor as JSON, for the page.
#ifndef DESK_SCREEN_DESCRIBE_H
#define DESK_SCREEN_DESCRIBE_H

#include "support/board.h"
#include "support/store.h"

#include <span>
#include <string>

namespace desk::screen
{

/** What does not change while the program runs: settings, faults, actions of buttons, names of registers. */
std::string describeModel(const std::string &version);

/** Every setting by its name, the faults by theirs, and whether an engine runs. */
std::string describeState(const Contents &contents, bool engineRuns);

/** The messages; board is another number when the engine counts anew. */
std::string describeMessages(std::span<const LoggedMessage> messages, std::uint64_t board);

} // namespace desk::screen

#endif
