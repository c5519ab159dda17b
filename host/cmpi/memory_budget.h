// SPDX-License-Identifier: Apache-2.0
// The memory that requests use: one budget for all of them together, and a limit for each.
#ifndef HOST_CMPI_MEMORY_BUDGET_H
#define HOST_CMPI_MEMORY_BUDGET_H

#include <atomic>
#include <cstddef>
#include <new>

namespace host
{

/** A request wants more memory than there is for it. */
class MemoryExceeded : public std::bad_alloc
{
  public:
    const char *what() const noexcept override
    {
        return "the request needs more memory than it may use";
    }
};

/** What all requests together may take. Safe to use by many threads. */
class MemoryBudget
{
  public:
    static constexpr std::size_t defaultTotal = std::size_t{64} * 1024 * 1024;
    static constexpr std::size_t defaultPerRequest = std::size_t{8} * 1024 * 1024;

    explicit MemoryBudget(std::size_t total = defaultTotal, std::size_t perRequest = defaultPerRequest)
        : total_(total), perRequest_(perRequest)
    {
    }

    MemoryBudget(const MemoryBudget &) = delete;
    MemoryBudget &operator=(const MemoryBudget &) = delete;

    std::size_t total() const
    {
        return total_;
    }

    std::size_t perRequest() const
    {
        return perRequest_;
    }

    /** Bytes that requests have now. */
    std::size_t used() const
    {
        return used_.load(std::memory_order_relaxed);
    }

  private:
    friend class MemoryShare;

    const std::size_t total_;
    const std::size_t perRequest_;
    std::atomic<std::size_t> used_ = 0;
};

/** What one request has taken of the budget; all of it is given back when the share ends. Not for use by two
 * threads at once. */
class MemoryShare
{
  public:
    explicit MemoryShare(MemoryBudget &budget) : budget_(budget) {}
    MemoryShare(const MemoryShare &) = delete;
    MemoryShare &operator=(const MemoryShare &) = delete;

    ~MemoryShare()
    {
        budget_.used_ -= taken_;
    }

    /** Takes the bytes, or none when the request or all requests together would have too many. */
    [[nodiscard]] bool take(std::size_t bytes)
    {
        if (bytes > budget_.perRequest_ || taken_ > budget_.perRequest_ - bytes) {
            isOwnFault_ = true;
            return false;
        }
        if (budget_.used_.fetch_add(bytes) + bytes > budget_.total_) {
            budget_.used_ -= bytes;
            return false;
        }
        taken_ += bytes;
        return true;
    }

    /** Takes the bytes in any case; for what must not fail half-way. Whoever takes so asks exhausted() before
     * it begins. */
    void force(std::size_t bytes)
    {
        budget_.used_ += bytes;
        taken_ += bytes;
        isOwnFault_ = isOwnFault_ || taken_ > budget_.perRequest_;
    }

    void giveBack(std::size_t bytes)
    {
        budget_.used_ -= bytes;
        taken_ -= bytes;
    }

    /** True when the request, or all requests together, have more than they may. */
    bool exhausted() const
    {
        return taken_ > budget_.perRequest_ || budget_.used() > budget_.total_;
    }

    /** True when the request has wanted more than one may have, whatever it has given back since: to try
     * again later would not help. */
    bool isOwnFault() const
    {
        return isOwnFault_;
    }

    std::size_t taken() const
    {
        return taken_;
    }

  private:
    MemoryBudget &budget_;
    std::size_t taken_ = 0;
    bool isOwnFault_ = false;
};

} // namespace host

#endif
