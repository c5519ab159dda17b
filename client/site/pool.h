// SPDX-License-Identifier: Apache-2.0
// Many monitors at once: one thread for each monitor in work, straight sequential code in each.
#ifndef DISPLAYCTL_SITE_POOL_H
#define DISPLAYCTL_SITE_POOL_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace displayctl::site
{

/** Calls work(0) to work(count - 1) on at most `jobs` threads at once, and done(i) on the calling thread as
 * soon as work(i) has returned, one at a time. Returns when all are done. What work or done throws is thrown
 * again here, when what was begun has returned; nothing more is begun then. With one item, or one job, no
 * thread is made. */
void forEach(std::size_t count, unsigned jobs, const std::function<void(std::size_t)> &work,
             const std::function<void(std::size_t)> &done);

/** The exit code of a call from those of its monitors: theirs where all agree; differences (7) beside none
 * (0) are 7; all else is 5. */
[[nodiscard]] int combinedExitCode(std::span<const int> codes);

/** A bar on standard error, on a terminal only, once the work has taken more than a second. Its line is gone
 * after hide() and when it ends; used from one thread. */
class Progress
{
  public:
    /** quiet: never a bar. */
    Progress(std::size_t total, bool quiet);
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;
    ~Progress();

    /** So much of the total is done now. */
    void show(std::size_t finished);
    /** Takes the bar away, before other output. */
    void hide();

  private:
    std::size_t total_;
    bool isEnabled_;
    bool isShown_ = false;
    std::int64_t begin_; // milliseconds of the steady clock
};

} // namespace displayctl::site

#endif
