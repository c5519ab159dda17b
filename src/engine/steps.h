// SPDX-License-Identifier: Apache-2.0
// The registers that take only some of the values in their range.
#ifndef ENGINE_STEPS_H
#define ENGINE_STEPS_H

namespace engine
{

/** Refuses a value between the steps of its register: 0, or -1 with the register's text in `errorText`. A
 * register without steps takes every value. */
[[nodiscard]] int checkStep(int registerId, int value, char *errorText);

} // namespace engine

#endif
