// SPDX-License-Identifier: Apache-2.0
// What the page changes: what a hand at the monitor could, and the faults. A change goes the way of the
// engine's: the same effects on the same store.
#ifndef DESK_SCREEN_CHANGES_H
#define DESK_SCREEN_CHANGES_H

#include "support/store.h"

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace desk::screen
{

/** The request of a change cannot be understood. */
struct BadRequest : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** The monitor does not do it; the text says why. */
struct Refused : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** What a press of a function button does, by the number of its setting. What the numbers stand for is the
 * desk's own choice. */
struct ButtonAction {
    int setting;
    std::string_view name;
    std::string (*act)(Settings &);
};
std::span<const ButtonAction> buttonActions();

/** Applies the change that a JSON text tells to the contents; one of
 *
 *   {"set": NAME, "value": NUMBER}            a setting that can be written
 *   {"power": true or false}
 *   {"press": 1 to 4}                         a function button
 *   {"connect": 1 to 3, "on": true or false}  the cable of an input
 *   {"fault": NAME, "on": true or false, "argument": TEXT}
 *
 * Throws BadRequest or Refused; the contents then are to be dropped. */
void applyChange(Contents &contents, std::string_view json);

} // namespace desk::screen

#endif
