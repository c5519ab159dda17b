// SPDX-License-Identifier: Apache-2.0
// What a program that serves does not need while it waits, the kernel has back.
#ifndef PROCESS_UNUSED_MEMORY_H
#define PROCESS_UNUSED_MEMORY_H

#include <atomic>

namespace process
{

/** Gives the kernel back what the allocator keeps free, and the pages of code and constants of the program
 * and of all its libraries: they are in the page cache, or on disk, as they were read, and come back one by
 * one when they are next used. Any thread may call it while others run. */
void releaseUnusedMemory();

/** Calls releaseUnusedMemory() when a program has had nothing to do for a while: once, until it had. */
class QuietTime
{
  public:
    /** After so many seconds of nothing. */
    static constexpr int seconds = 10;

    /** There is something to do. Any thread may call it. */
    void end()
    {
        isOver_.store(true, std::memory_order_relaxed);
    }

    /** Every second, by one thread. True when this one was the last of a quiet time: memory was released. */
    bool tick();

  private:
    std::atomic<bool> isOver_ = false;
    int passed_ = 0;
};

} // namespace process

#endif
