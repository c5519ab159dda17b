// SPDX-License-Identifier: Apache-2.0
#include "core/provider_gate.h"

#include <algorithm>

namespace host
{

ProviderGate::ProviderGate(unsigned calls)
{
    setCalls(calls);
}

void ProviderGate::setCalls(unsigned calls)
{
    const std::lock_guard lock(mutex_);
    calls_ = std::max(calls, 1u);
    share_ = std::max(calls_ / 2, 1u);
    admit();
}

bool ProviderGate::enter(std::uint64_t request, std::string_view user, std::chrono::milliseconds patience)
{
    std::unique_lock lock(mutex_);
    if (const auto found = inside_.find(request); found != inside_.end()) {
        ++found->second.entries;
        return true;
    }
    Requests places;
    places.try_emplace(request, Inside{1, {}});
    Waiter waiter{.place = places.extract(request)};
    waiter.user = users_.try_emplace(std::string(user)).first;
    User &own = waiter.user->second;
    if (queue_.empty() && inside_.size() < calls_ && own.inside < share_) { // as nearly always
        letIn(waiter);
        return true;
    }
    own.behind.push_back(&waiter);
    moveUp(own);
    admit();
    if (waiter.turn.wait_for(lock, patience, [&waiter] { return waiter.isAdmitted; })) {
        return true;
    }
    giveUp(waiter);
    return false;
}

void ProviderGate::leave(std::uint64_t request)
{
    const std::lock_guard lock(mutex_);
    const auto found = inside_.find(request);
    if (found == inside_.end() || --found->second.entries != 0) {
        return;
    }
    const Users::iterator user = found->second.user;
    inside_.erase(found);
    --user->second.inside;
    admit();
    forgetIfIdle(user);
}

std::size_t ProviderGate::waiting()
{
    const std::lock_guard lock(mutex_);
    std::size_t count = queue_.size();
    for (const auto &[name, user] : users_) {
        count += user.behind.size();
    }
    return count;
}

/** Fills the user's places in the queue. */
void ProviderGate::moveUp(User &user)
{
    while (user.queued < share_ && !user.behind.empty()) {
        user.behind.front()->isQueued = true;
        ++user.queued;
        queue_.splice(queue_.end(), user.behind, user.behind.begin());
    }
}

/** Lets in who is first in the queue and has not got his share inside. */
void ProviderGate::admit()
{
    while (inside_.size() < calls_) {
        const auto next = std::find_if(queue_.begin(), queue_.end(), [this](const Waiter *waiter) {
            return waiter->user->second.inside < share_;
        });
        if (next == queue_.end()) {
            return;
        }
        Waiter &waiter = **next;
        User &user = waiter.user->second;
        queue_.erase(next);
        --user.queued;
        letIn(waiter);
        waiter.isAdmitted = true;
        waiter.turn.notify_one();
        moveUp(user);
    }
}

void ProviderGate::letIn(Waiter &waiter)
{
    ++waiter.user->second.inside;
    waiter.place.mapped().user = waiter.user;
    inside_.insert(std::move(waiter.place));
}

void ProviderGate::giveUp(Waiter &waiter)
{
    User &user = waiter.user->second;
    if (waiter.isQueued) {
        queue_.remove(&waiter);
        --user.queued;
        moveUp(user);
        admit();
    } else {
        user.behind.remove(&waiter);
    }
    forgetIfIdle(waiter.user);
}

void ProviderGate::forgetIfIdle(Users::iterator user)
{
    if (user->second.inside == 0 && user->second.queued == 0 && user->second.behind.empty()) {
        users_.erase(user);
    }
}

} // namespace host
