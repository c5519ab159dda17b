// SPDX-License-Identifier: Apache-2.0
#include "site/pool.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace displayctl::site
{

namespace
{

/** Hands out the items to the threads, and their ends to the caller. */
class Work
{
  public:
    Work(std::size_t count, const std::function<void(std::size_t)> &work) : count_(count), work_(work)
    {
        ended_.reserve(count); // a thread that has done its item needs no memory to say so
    }

    /** What one thread does until nothing is left. */
    void run()
    {
        std::unique_lock lock{mutex_};
        while (next_ < count_) {
            const std::size_t item = next_++;
            ++running_;
            lock.unlock();
            std::exception_ptr problem;
            try {
                work_(item);
            } catch (...) {
                problem = std::current_exception();
            }
            lock.lock();
            --running_;
            if (problem != nullptr) {
                stop(problem);
            } else {
                ended_.push_back(item);
            }
            change_.notify_one();
        }
    }

    /** The next item that has ended, in the order in which they end; count when none will come. */
    std::size_t waitForEnded()
    {
        std::unique_lock lock{mutex_};
        change_.wait(lock, [&] { return told_ < ended_.size() || (next_ >= count_ && running_ == 0); });
        return told_ < ended_.size() ? ended_[told_++] : count_;
    }

    void stopFor(const std::exception_ptr &problem)
    {
        const std::lock_guard lock{mutex_};
        stop(problem);
    }

    [[nodiscard]] std::exception_ptr problem() const
    {
        return problem_;
    }

  private:
    void stop(const std::exception_ptr &problem)
    {
        if (problem_ == nullptr) {
            problem_ = problem;
        }
        next_ = count_;
    }

    std::size_t count_;
    const std::function<void(std::size_t)> &work_;
    std::mutex mutex_;
    std::condition_variable change_;
    std::size_t next_ = 0;
    std::size_t running_ = 0;
    std::vector<std::size_t> ended_; // in the order in which they did
    std::size_t told_ = 0;           // how many of them the caller knows
    std::exception_ptr problem_;
};

std::int64_t now()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

/** As many threads as there can be: those that there are do all of the work, and without one the caller does.
 */
void begin(std::vector<std::jthread> &threads, std::size_t count, Work &work)
{
    try {
        threads.reserve(count);
        while (threads.size() < count) {
            threads.emplace_back([&work] { work.run(); });
        }
    } catch (const std::exception &) {
        if (threads.empty()) {
            work.run();
        }
    }
}

} // namespace

void forEach(std::size_t count, unsigned jobs, const std::function<void(std::size_t)> &work,
             const std::function<void(std::size_t)> &done)
{
    if (count <= 1 || jobs <= 1) {
        for (std::size_t item = 0; item < count; ++item) {
            work(item);
            done(item);
        }
        return;
    }
    Work shared{count, work};
    {
        std::vector<std::jthread> threads;
        try {
            begin(threads, std::min<std::size_t>(jobs, count), shared);
            for (std::size_t item = shared.waitForEnded(); item < count; item = shared.waitForEnded()) {
                done(item);
            }
        } catch (...) {
            shared.stopFor(std::current_exception());
        }
    }
    if (shared.problem() != nullptr) {
        std::rethrow_exception(shared.problem());
    }
}

int combinedExitCode(std::span<const int> codes)
{
    constexpr int different = 7;
    constexpr int mixed = 5;
    if (codes.empty()) {
        return 0;
    }
    const auto isOf = [](int code) { return code == 0 || code == different; };
    if (std::ranges::all_of(codes, [&](int code) { return code == codes.front(); })) {
        return codes.front();
    }
    return std::ranges::all_of(codes, isOf) ? different : mixed;
}

Progress::Progress(std::size_t total, bool quiet)
    : total_(total), isEnabled_(!quiet && total > 1 && isatty(STDERR_FILENO) == 1), begin_(now())
{
}

Progress::~Progress()
{
    hide();
}

void Progress::show(std::size_t finished)
{
    constexpr std::int64_t patience = 1000;
    constexpr std::size_t width = 40;
    if (!isEnabled_ || now() - begin_ < patience) {
        return;
    }
    const std::size_t filled = width * std::min(finished, total_) / total_;
    const std::string bar = std::string(filled, '#') + std::string(width - filled, '.');
    static_cast<void>(std::fprintf(stderr, "\r[%s] %zu/%zu", bar.c_str(), finished, total_));
    isShown_ = true;
}

void Progress::hide()
{
    if (isShown_) {
        static_cast<void>(std::fputs("\r\033[K", stderr));
        isShown_ = false;
    }
}

} // namespace displayctl::site
