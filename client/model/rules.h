// SPDX-License-Identifier: Apache-2.0
// What must hold before the monitor accepts a change, what its refusals mean, and the way out.
#ifndef DISPLAYCTL_MODEL_RULES_H
#define DISPLAYCTL_MODEL_RULES_H

#include "model/settings.h"
#include "model/state.h"

#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace displayctl::model
{

/** A monitor as it would be after some changes: what was read, and what was changed since. */
class View
{
  public:
    explicit View(const State &state) : state_(&state) {}

    [[nodiscard]] Value value(std::string_view name) const;
    [[nodiscard]] Value value(const Setting &setting) const;
    void change(const Setting &setting, Value value);
    /** Whether it was changed since it was read, and what follows from it is therefore not known. */
    [[nodiscard]] bool isChanged(std::string_view name) const;
    [[nodiscard]] const State &state() const
    {
        return *state_;
    }

  private:
    const State *state_;
    std::map<std::string, Value, std::less<>> changed_;
};

/** A condition of a change. */
struct Rule {
    std::string_view subject; ///< the row of the setting, or the action
    std::string_view refusal; ///< what the monitor's refusal begins with; "" where it gives no text
    std::string_view meaning; ///< the rule in words
    std::string_view
        on; ///< the setting it depends on, or the action that unlocks it; empty: there is no way out
    /** Whether the monitor would accept the value; none where no class publishes what it depends on. */
    std::optional<bool> (*holds)(const View &view, int number, const Value &value);
    /** Values of `on` with which it would, the best first; empty where there is none. */
    std::vector<Value> (*ways)(const View &view, int number, const Value &value);
    /** Whether the way out can be taken for a moment and taken back. */
    bool isTemporary = true;
};

[[nodiscard]] std::span<const Rule> allRules();
/** The rules of a setting's row, or of an action, in the order in which the monitor checks them. */
[[nodiscard]] std::vector<const Rule *> rulesOf(std::string_view subject);
/** The rule that a refusal of the monitor means; null when it is none of them. */
[[nodiscard]] const Rule *ruleOf(std::string_view subject, std::string_view refusal);
/** The way out as people write it ("pip.mode=pip"); empty where there is none. */
[[nodiscard]] std::string wayOut(const Rule &rule, const View &view, int number, const Value &value);

/** What a change of one setting changes in others. */
struct SideEffect {
    std::string_view subject;
    std::string_view changed;
};
[[nodiscard]] std::span<const SideEffect> allSideEffects();
/** The settings that a change of this setting, or this action, changes too. Number: of the preset. */
[[nodiscard]] std::vector<const Setting *> sideEffectsOf(std::string_view subject, int number);

/** Adds the classes that have to be read to know whether a change is allowed. */
void addRuleClasses(std::string_view subject, std::set<std::string> &classes);

} // namespace displayctl::model

#endif
