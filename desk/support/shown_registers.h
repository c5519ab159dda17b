// SPDX-License-Identifier: Apache-2.0
// What every register shows. Most show the setting of their row; some a value that follows from others.
#ifndef DESK_SUPPORT_SHOWN_REGISTERS_H
#define DESK_SUPPORT_SHOWN_REGISTERS_H

#include "support/settings.h"

#include <optional>

namespace desk
{

/** The value of a register in a group as text; nothing when the group has no such register. */
std::optional<ShortText> registerText(const Settings &settings, int registerId, int group);

/** True when the group has the register. */
bool registerExists(int registerId, int group);

} // namespace desk

#endif
