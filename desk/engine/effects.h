// SPDX-License-Identifier: Apache-2.0
// What register writes do to the settings. Nothing here touches the store, a queue or this machine.
#ifndef DESK_ENGINE_EFFECTS_H
#define DESK_ENGINE_EFFECTS_H

#include "engine/wire.h"
#include "support/settings.h"

#include <string>

namespace desk
{

/** Applies one entry of a set request of the group to the settings. Returns why it cannot be applied, empty
 * when it was; the settings are then as they were, or as far as they were changed: the caller drops them. */
std::string applyEntry(Settings &settings, int group, const wire::Entry &entry);

} // namespace desk

#endif
