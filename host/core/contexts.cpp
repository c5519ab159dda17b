// SPDX-License-Identifier: Apache-2.0
#include "core/contexts.h"

#include <algorithm>
#include <stdexcept>
#include <sys/random.h>
#include <vector>

namespace host
{

std::string randomName()
{
    static constexpr char digits[] = "0123456789abcdef";
    unsigned char bytes[16];
    if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes)) {
        throw std::runtime_error("the system gives no random numbers");
    }
    std::string name;
    for (const unsigned char byte : bytes) {
        name += digits[byte >> 4];
        name += digits[byte & 15];
    }
    return name;
}

bool OpenEnumeration::add(const Instance &instance)
{
    if (arena_.exhausted()) {
        return false;
    }
    instances.append(copyObject(arena_, instance));
    return !arena_.exhausted();
}

bool OpenEnumeration::add(const Path &path)
{
    if (arena_.exhausted()) {
        return false;
    }
    paths.append(copyObject(arena_, path));
    return !arena_.exhausted();
}

Contexts::Contexts(const ContextLimits &limits, std::function<Clock::time_point()> now)
    : limits_(limits), now_(std::move(now)), budget_(limits.memory, limits.memoryEach)
{
}

Contexts::~Contexts()
{
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    if (watcher_.joinable()) {
        watcher_.join();
    }
}

std::string Contexts::open(std::string_view user, std::unique_ptr<OpenEnumeration> enumeration,
                           std::chrono::milliseconds lifetime)
{
    const std::string name = randomName();
    freeExpired();
    {
        const std::lock_guard lock(mutex_);
        const auto users = std::count_if(entries_.begin(), entries_.end(),
                                         [user](const auto &entry) { return entry.second.user == user; });
        if (entries_.size() >= limits_.total || static_cast<std::size_t>(users) >= limits_.perUser) {
            return "";
        }
        entries_.emplace(name, Entry{std::string(user), std::move(enumeration), lifetime, now_() + lifetime});
        if (!watcher_.joinable()) {
            watcher_ = std::thread(&Contexts::watch, this);
        }
    }
    changed_.notify_all();
    return name;
}

std::unique_ptr<OpenEnumeration> Contexts::take(std::string_view user, const std::string &name, int kind)
{
    const std::lock_guard lock(mutex_);
    const auto found = entries_.find(name);
    if (found == entries_.end() || found->second.user != user || found->second.enumeration == nullptr ||
        found->second.enumeration->kind != kind || found->second.expires <= now_()) {
        return nullptr;
    }
    return std::move(found->second.enumeration);
}

void Contexts::putBack(std::string_view user, const std::string &name,
                       std::unique_ptr<OpenEnumeration> enumeration)
{
    {
        const std::lock_guard lock(mutex_);
        const auto found = entries_.find(name);
        if (found == entries_.end() || found->second.user != user) {
            return;
        }
        found->second.enumeration = std::move(enumeration);
        found->second.expires = now_() + found->second.lifetime;
    }
    changed_.notify_all();
}

void Contexts::close(const std::string &name)
{
    const std::lock_guard lock(mutex_);
    entries_.erase(name);
}

void Contexts::freeExpired()
{
    std::vector<std::unique_ptr<OpenEnumeration>> ended; // freed after the lock is left
    const std::lock_guard lock(mutex_);
    const Clock::time_point now = now_();
    for (auto entry = entries_.begin(); entry != entries_.end();) {
        if (entry->second.enumeration != nullptr && entry->second.expires <= now) {
            ended.push_back(std::move(entry->second.enumeration));
            entry = entries_.erase(entry);
        } else {
            ++entry;
        }
    }
}

std::size_t Contexts::size() const
{
    const std::lock_guard lock(mutex_);
    return entries_.size();
}

/** With the lock held; far away when nothing expires. */
Contexts::Clock::time_point Contexts::nextExpiry() const
{
    Clock::time_point next = now_() + std::chrono::hours(24);
    for (const auto &[name, entry] : entries_) {
        if (entry.enumeration != nullptr) {
            next = std::min(next, entry.expires);
        }
    }
    return next;
}

void Contexts::watch()
{
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        changed_.wait_for(lock, nextExpiry() - now_());
        lock.unlock();
        freeExpired();
        lock.lock();
    }
}

} // namespace host
