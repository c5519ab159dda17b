// SPDX-License-Identifier: Apache-2.0
#include "model/plan.h"

#include "model/values.h"

#include <algorithm>

namespace displayctl::model
{

namespace
{

class Planner
{
  public:
    Planner(const State &state, std::span<const Target> targets)
        : view_(state), targets_(select(state, targets))
    {
    }

    std::vector<Step> plan()
    {
        for (const std::size_t place : order()) {
            change(targets_[place]);
        }
        while (!borrowed_.empty()) {
            giveBack();
        }
        return std::move(steps_);
    }

  private:
    // What is to be sent, and what is right now but would be changed beside it.
    static std::vector<Target> select(const State &state, std::span<const Target> targets)
    {
        std::vector<Target> result;
        for (const Target &target : targets) {
            const bool isTouched = std::ranges::any_of(targets, [&](const Target &other) {
                return isNeeded(state, other) && alters(*other.setting, *target.setting);
            });
            if (isNeeded(state, target) || isTouched) {
                result.push_back(target);
            }
        }
        return result;
    }

    static bool alters(const Setting &one, const Setting &other)
    {
        const auto effects = sideEffectsOf(one.row->name, one.number);
        return std::ranges::find(effects, &other) != effects.end();
    }

    [[nodiscard]] std::vector<const Rule *> dependencies(const Setting &setting) const
    {
        auto rules = rulesOf(setting.row->name);
        std::erase_if(rules, [](const Rule *rule) { return findSetting(rule->on) == nullptr; });
        return rules;
    }

    // Whether `first` has to be changed before `second`.
    [[nodiscard]] bool comesBefore(const Target &first, const Target &second) const
    {
        if (alters(*first.setting, *second.setting)) {
            return true;
        }
        if (alters(*second.setting, *first.setting)) {
            return false;
        }
        // What a rule depends on is changed first where the rule then holds; else it is changed afterwards.
        for (const Rule *rule : dependencies(*second.setting)) {
            if (findSetting(rule->on) == first.setting) {
                return holdsAfter(*rule, first, second);
            }
        }
        for (const Rule *rule : dependencies(*first.setting)) {
            if (findSetting(rule->on) == second.setting) {
                return !holdsAfter(*rule, second, first);
            }
        }
        return false;
    }

    [[nodiscard]] bool holdsAfter(const Rule &rule, const Target &condition, const Target &target) const
    {
        View after = view_;
        after.change(*condition.setting, condition.value);
        return rule.holds(after, target.setting->number, target.value) != false;
    }

    // A topological order, otherwise that of the targets. What depends on itself in a circle comes as it is
    // given.
    [[nodiscard]] std::vector<std::size_t> order() const
    {
        std::vector<std::size_t> result;
        std::vector<std::size_t> left(targets_.size());
        for (std::size_t i = 0; i < left.size(); ++i) {
            left[i] = i;
        }
        while (!left.empty()) {
            auto next = std::ranges::find_if(left, [&](std::size_t candidate) {
                return std::ranges::none_of(left, [&](std::size_t other) {
                    return other != candidate && comesBefore(targets_[other], targets_[candidate]);
                });
            });
            next = next == left.end() ? left.begin() : next;
            result.push_back(*next);
            left.erase(next);
        }
        return result;
    }

    void change(const Target &target)
    {
        if (std::ranges::find(merged_, target.setting) != merged_.end()) {
            return; // sent together with another one
        }
        allow(target);
        Step step{{target}};
        if (target.setting->kind() == Kind::address) {
            for (const Target &other : targets_) {
                if (other.setting->kind() == Kind::address && other.setting != target.setting) {
                    step.changes.push_back(other);
                    merged_.push_back(other.setting);
                }
            }
        }
        steps_.push_back(step);
        std::erase(borrowed_, target.setting);
        for (const Target &each : step.changes) {
            view_.change(*each.setting, each.value);
        }
    }

    // Makes every rule hold that can be made to.
    void allow(const Target &target)
    {
        for (const Rule *rule : dependencies(*target.setting)) {
            if (!rule->isTemporary || rule->holds(view_, target.setting->number, target.value) != false) {
                continue;
            }
            const auto ways = rule->ways(view_, target.setting->number, target.value);
            if (ways.empty()) {
                continue;
            }
            const Setting &condition = *findSetting(rule->on);
            allow({&condition, ways.front()});
            temporarily(condition, ways.front());
        }
    }

    void temporarily(const Setting &setting, const Value &value)
    {
        steps_.push_back({{{&setting, value}}, true});
        view_.change(setting, value);
        if (std::ranges::find(borrowed_, &setting) == borrowed_.end()) {
            borrowed_.push_back(&setting);
        }
    }

    // What was changed for a moment gets the value that it is to have in the end.
    void giveBack()
    {
        const Setting &setting = *borrowed_.back();
        const auto target = std::ranges::find(targets_, &setting, &Target::setting);
        const Value value = target == targets_.end() ? view_.state().value(setting) : target->value;
        if (!sameValue(view_.value(setting), value)) {
            allow({&setting, value});
            steps_.push_back({{{&setting, value}}, true});
            view_.change(setting, value);
        }
        std::erase(borrowed_, &setting);
    }

    View view_;
    std::vector<Target> targets_;
    std::vector<Step> steps_;
    std::vector<const Setting *> borrowed_; // changed temporarily, not given back yet
    std::vector<const Setting *> merged_;
};

} // namespace

bool isNeeded(const State &state, const Target &target)
{
    return !target.setting->isReadable() || !sameValue(state.value(*target.setting), target.value);
}

bool canBeSetBack(const State &state, const Setting &setting)
{
    const Value now = state.value(setting);
    const bool isAddress =
        setting.name == "monitor.name" && now == state.value(*findSetting("network.address"));
    return setting.isWritable() && setting.isReadable() && !now.is_null() && now != "" && !isAddress;
}

std::vector<Step> makePlan(const State &state, std::span<const Target> targets)
{
    return Planner(state, targets).plan();
}

} // namespace displayctl::model
