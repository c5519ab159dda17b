// SPDX-License-Identifier: Apache-2.0
// In which order settings are changed so that each change is allowed when its turn comes.
#ifndef DISPLAYCTL_MODEL_PLAN_H
#define DISPLAYCTL_MODEL_PLAN_H

#include "model/rules.h"
#include "model/settings.h"
#include "model/state.h"

#include <span>
#include <vector>

namespace displayctl::model
{

/** A setting and the value that it is to have. */
struct Target {
    const Setting *setting;
    Value value;
};

/** One request. */
struct Step {
    std::vector<Target> changes; ///< one; the parts of a static address go together
    bool isTemporary = false;    ///< only there so that another step is allowed, or to take such a step back
};

/** Whether the target has to be sent: it differs, or nobody can know. */
[[nodiscard]] bool isNeeded(const State &state, const Target &target);

/** Whether the value that the setting has now could be set again: the monitor takes no empty text, and a name
 * that is the address is none. */
[[nodiscard]] bool canBeSetBack(const State &state, const Setting &setting);

/** The steps that bring the monitor from the state to the targets: an order in which every rule holds, by
 * what the rules and side effects state, with temporary steps where a rule holds neither before nor after. */
[[nodiscard]] std::vector<Step> makePlan(const State &state, std::span<const Target> targets);

} // namespace displayctl::model

#endif
