// SPDX-License-Identifier: Apache-2.0
// Looks at the monitor for all who watch it: one thread, which sleeps while nobody does.
#ifndef DESK_SCREEN_WATCH_H
#define DESK_SCREEN_WATCH_H

#include "support/board.h"
#include "support/store.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace desk::screen
{

/** An event of the stream, as it is sent. */
using Event = std::shared_ptr<const std::string>;

/** What a watcher has been given last. */
struct Seen {
    std::uint64_t state = 0;   // 0: none
    std::uint64_t board = 0;   // which board the number is of
    std::uint64_t message = 0; // the number of the last message
};

class Watch
{
  public:
    struct Options {
        std::string store;
        key_t queueKey;
        std::chrono::milliseconds period = std::chrono::milliseconds(100);
    };

    /** afterLook is called by the thread, once a period and without a lock; news says whether there is
     * something new. Throws StoreError. */
    Watch(Options options, std::function<void(bool news)> afterLook);
    ~Watch();
    Watch(const Watch &) = delete;
    Watch &operator=(const Watch &) = delete;

    /** So many watch now: none lets the thread sleep. */
    void setWatchers(std::size_t count);

    /** The next event for a watcher; null when it has seen all. */
    Event next(Seen &seen);

    /** Applies a change as applyChange() takes it. Throws what that throws, and StoreError. */
    void change(std::string_view json);

  private:
    void run();
    bool look();
    bool lookAtStore();
    bool lookAtBoard();
    Store &store();

    Options options_;
    std::function<void(bool)> afterLook_;
    std::mutex mutex_; // of all that follows
    std::condition_variable wake_;
    std::unique_ptr<Store> opened_;
    std::unique_ptr<Board> board_;
    std::size_t watchers_ = 0;
    bool stopping_ = false;
    bool isAsleep_ = false;
    std::string problem_;
    unsigned untilInPlace_ = 0;      // periods until store and board are looked for anew
    std::uint64_t storeVersion_ = 0; // of the state that is told
    bool engineRuns_ = false;
    Event state_;
    std::uint64_t stateNumber_ = 0;
    std::uint64_t boardNumber_ = 0;
    std::uint64_t newest_ = 0;
    std::thread thread_;
};

} // namespace desk::screen

#endif
