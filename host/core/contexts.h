// SPDX-License-Identifier: Apache-2.0
// Enumerations that stay open between requests: what a client has asked for and not yet fetched.
#ifndef HOST_CORE_CONTEXTS_H
#define HOST_CORE_CONTEXTS_H

#include "cmpi/memory_budget.h"
#include "core/model.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace host
{

/** The objects that are still to be handed out, in an arena of their own. */
class OpenEnumeration
{
  public:
    explicit OpenEnumeration(MemoryBudget &budget) : memory_(budget), arena_(firstChunk, memory_) {}

    /** Copies an object in; false when the memory for open enumerations is used up. */
    [[nodiscard]] bool add(const Instance &instance);
    [[nodiscard]] bool add(const Path &path);

    Arena &arena()
    {
        return arena_;
    }

    /** Either instances or paths are there. */
    ArenaList<Instance *> instances{arena_};
    ArenaList<Path *> paths{arena_};
    /** How many have been handed out. */
    std::size_t next = 0;

    std::size_t remaining() const
    {
        return instances.size() + paths.size() - next;
    }

    /** Notes of the front end: what the enumeration hands out, and in which form. An enumeration is given
     * back for the kind that it was opened with only. */
    int kind = 0;
    std::string note;

  private:
    static constexpr std::size_t firstChunk = std::size_t{4} * 1024;

    MemoryShare memory_;
    Arena arena_;
};

struct ContextLimits {
    std::size_t perUser = 16;
    std::size_t total = 128;
    /** Of what the open enumerations hold, together and each. */
    std::size_t memory = std::size_t{16} * 1024 * 1024;
    std::size_t memoryEach = std::size_t{4} * 1024 * 1024;
    std::chrono::milliseconds lifetime = std::chrono::minutes(5);
};

/** The open enumerations of all users. A name of one cannot be guessed, and is good for its user alone. An
 * enumeration that nobody pulls for its lifetime is freed. Safe to use by many threads. */
class Contexts
{
  public:
    using Clock = std::chrono::steady_clock;

    explicit Contexts(const ContextLimits &limits = {}, std::function<Clock::time_point()> now = Clock::now);
    Contexts(const Contexts &) = delete;
    Contexts &operator=(const Contexts &) = delete;
    ~Contexts();

    /** An enumeration to be filled, and then kept or dropped. */
    std::unique_ptr<OpenEnumeration> make()
    {
        return std::make_unique<OpenEnumeration>(budget_);
    }

    /** Keeps the enumeration and returns its name; "" when the user, or all together, have as many as they
     * may. */
    [[nodiscard]] std::string open(std::string_view user, std::unique_ptr<OpenEnumeration> enumeration,
                                   std::chrono::milliseconds lifetime);

    /** Takes the enumeration out for a pull, so that no other request has it meanwhile; null when there is
     * none of that name, user and kind. */
    [[nodiscard]] std::unique_ptr<OpenEnumeration> take(std::string_view user, const std::string &name,
                                                        int kind);

    /** Gives a taken enumeration back, under its name, with its lifetime beginning anew. */
    void putBack(std::string_view user, const std::string &name,
                 std::unique_ptr<OpenEnumeration> enumeration);

    /** Ends the use of a taken enumeration that is not given back. */
    void close(const std::string &name);

    /** Frees what has expired; a thread does so in time, tests do it with a clock of their own. */
    void freeExpired();

    std::size_t size() const;

    const ContextLimits &limits() const
    {
        return limits_;
    }

  private:
    struct Entry {
        std::string user;
        std::unique_ptr<OpenEnumeration> enumeration; // null: taken
        std::chrono::milliseconds lifetime{};
        Clock::time_point expires;
    };

    void watch();
    Clock::time_point nextExpiry() const;

    const ContextLimits limits_;
    const std::function<Clock::time_point()> now_;
    MemoryBudget budget_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, Entry, std::less<>> entries_;
    bool stopping_ = false;
    std::thread watcher_; // begins with the first enumeration
};

/** The use of an enumeration by one request. At the end of the scope it is given back when something remains
 * in it, and closed otherwise; an exception on the way changes nothing of that. */
class ContextUse
{
  public:
    ContextUse(Contexts &contexts, std::string_view user, std::string name, int kind)
        : contexts_(contexts), user_(user), name_(std::move(name)),
          enumeration_(contexts.take(user, name_, kind))
    {
    }

    ContextUse(const ContextUse &) = delete;
    ContextUse &operator=(const ContextUse &) = delete;

    ~ContextUse()
    {
        if (enumeration_ != nullptr && enumeration_->remaining() != 0) {
            contexts_.putBack(user_, name_, std::move(enumeration_));
        } else if (enumeration_ != nullptr) {
            contexts_.close(name_);
        }
    }

    /** Null when there is none of that name, user and kind. */
    OpenEnumeration *get() const
    {
        return enumeration_.get();
    }

    const std::string &name() const
    {
        return name_;
    }

    /** Frees the enumeration, whatever remains in it. */
    void close()
    {
        enumeration_.reset();
        contexts_.close(name_);
    }

  private:
    Contexts &contexts_;
    const std::string_view user_;
    const std::string name_;
    std::unique_ptr<OpenEnumeration> enumeration_;
};

/** A text of 32 hexadecimal digits that cannot be guessed. */
std::string randomName();

} // namespace host

#endif
