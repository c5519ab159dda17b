// SPDX-License-Identifier: Apache-2.0
// What is known of each setting: the soak's own account of what was acknowledged.
#ifndef TESTS_SOAK_ACCOUNT_H
#define TESTS_SOAK_ACCOUNT_H

#include "settings.h"

#include <array>
#include <atomic>
#include <map>
#include <mutex>
#include <set>
#include <string>

namespace soak
{

/** One setting, which one client at a time changes: the values that it may have. */
class Account
{
  public:
    explicit Account(const Setting &setting) : setting_(&setting) {}

    const Setting &setting() const
    {
        return *setting_;
    }

    /** A change was acknowledged: the monitor has this value and no other. */
    void acknowledged(const Value &value)
    {
        possible_ = {value};
    }

    /** Nobody can know, but it is decided: the value before, or this one. */
    void either(const Value &value)
    {
        possible_.insert(value);
    }

    /** The same, and it is not decided yet: the setting is left alone until everything has come to rest. */
    void maybeLater(const Value &value)
    {
        possible_.insert(value);
        isSettled_ = false;
    }

    /** What the monitor shows when everything has come to rest. */
    void settle(const Value &shown)
    {
        possible_ = {shown};
        isSettled_ = true;
    }

    bool isSettled() const
    {
        return isSettled_;
    }
    bool mayShow(const Value &shown) const
    {
        return possible_.contains(shown);
    }
    const std::set<Value> &possible() const
    {
        return possible_;
    }

  private:
    const Setting *setting_;
    std::set<Value> possible_;
    bool isSettled_ = true;
};

/** What is counted, by all threads. */
enum class Count {
    reads,
    enumerations,
    acknowledged,
    refused,
    otherwiseRefused,
    unanswered,
    notServed,
    broken,
    abandoned,
    failedReads,
    shorter,
    commands,
    end
};
const char *nameOf(Count count);

/** Findings, counts, and what the threads have in common. */
class Ledger
{
  public:
    void count(Count what)
    {
        ++counts_[static_cast<std::size_t>(what)];
    }
    long counted(Count what) const
    {
        return counts_[static_cast<std::size_t>(what)];
    }

    /** Something is wrong. It is told at once. */
    void wrong(const std::string &what);
    long wrongs() const
    {
        return wrongs_;
    }

    /** A text of a failure, to be counted. */
    void failure(const std::string &text);
    std::map<std::string, long> failures();

    /** A change by a protocol was acknowledged: its line has to be in the audit log. */
    void expectRecord(const std::string &line);
    std::map<std::string, long> takeExpectedRecords();

    std::atomic<int> port{0};
    std::atomic<long> operations{0};
    std::atomic<bool> clientsAreKilled{false};
    /** While the engine may be killed between a change and its answer, a missing answer says nothing. */
    std::atomic<bool> missingAnswerSaysNothing{false};

    /** What is going on, for what is found wrong. */
    void setScene(const std::string &scene);

  private:
    std::array<std::atomic<long>, static_cast<std::size_t>(Count::end)> counts_{};
    std::atomic<long> wrongs_{0};
    std::mutex mutex_;
    std::map<std::string, long> failures_;
    std::map<std::string, long> records_;
    std::string scene_;
};

} // namespace soak

#endif
