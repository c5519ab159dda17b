// SPDX-License-Identifier: Apache-2.0
#include "screen/watch.h"

#include "screen/changes.h"
#include "screen/describe.h"

#include <cstdio>

namespace desk::screen
{

namespace
{

/** As many messages as one event brings; the rest comes with the next. */
constexpr std::size_t messagesAtOnce = 50;

void say(const std::string &line)
{
    fprintf(stderr, "desk-screen: %s\n", line.c_str());
}

Event eventOf(const char *name, const std::string &data)
{
    return std::make_shared<const std::string>("event: " + std::string(name) + "\ndata: " + data + "\n\n");
}

} // namespace

Watch::Watch(Options options, std::function<void(bool)> afterLook)
    : options_(std::move(options)), afterLook_(std::move(afterLook))
{
    lookAtStore();
    lookAtBoard();
    thread_ = std::thread([this] { run(); });
}

Watch::~Watch()
{
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void Watch::setWatchers(std::size_t count)
{
    {
        const std::lock_guard lock(mutex_);
        watchers_ = count;
    }
    wake_.notify_one();
}

void Watch::run()
{
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        if (watchers_ == 0) {
            isAsleep_ = true;
            wake_.wait(lock);
            continue;
        }
        const bool news = look();
        lock.unlock();
        afterLook_(news);
        lock.lock();
        wake_.wait_for(lock, options_.period, [this] { return stopping_; });
    }
}

/** Whether there is something new. A store that cannot be read is told of, and tried again. */
bool Watch::look()
{
    try {
        const bool store = lookAtStore();
        const bool board = lookAtBoard();
        isAsleep_ = false;
        return store || board;
    } catch (const std::exception &error) {
        if (problem_ != error.what()) {
            problem_ = error.what();
            say(problem_);
        }
        opened_.reset();
        return false;
    }
}

/** Whether the files are still those that are open costs a look at the directory; it is taken once a second.
 */
Store &Watch::store()
{
    if (opened_ == nullptr || untilInPlace_ == 0) {
        openedStore(opened_, options_.store, say);
    }
    return *opened_;
}

bool Watch::lookAtStore()
{
    const Store *before = opened_.get();
    Store &now = store();
    const Contents &contents = now.read();
    const bool engineRuns = untilInPlace_ == 0 ? EnginePlace::isTaken(options_.queueKey) : engineRuns_;
    if (&now == before && now.version() == storeVersion_ && engineRuns == engineRuns_ && state_ != nullptr) {
        return false;
    }
    storeVersion_ = now.version();
    engineRuns_ = engineRuns;
    Event told = eventOf("state", describeState(contents, engineRuns));
    if (state_ != nullptr && *told == *state_) {
        return false;
    }
    state_ = std::move(told);
    ++stateNumber_;
    return true;
}

bool Watch::lookAtBoard()
{
    if (untilInPlace_ == 0) {
        if (board_ != nullptr && !board_->inPlace()) {
            board_.reset();
        }
        if (board_ == nullptr) {
            try {
                board_ = std::make_unique<Board>(options_.queueKey, SharedMemory::Access::read);
                ++boardNumber_;
                newest_ = 0;
            } catch (const KernelError &) { // no engine has run yet
            }
        }
        untilInPlace_ = static_cast<unsigned>(std::chrono::seconds(1) / options_.period);
    } else {
        --untilInPlace_;
    }
    const std::uint64_t newest = board_ != nullptr ? board_->newest() : 0;
    const bool news = newest != newest_;
    newest_ = newest;
    return news;
}

Event Watch::next(Seen &seen)
{
    const std::lock_guard lock(mutex_);
    if (isAsleep_) { // what was known before is old
        untilInPlace_ = 0;
        look();
    }
    if (seen.state != stateNumber_) {
        seen.state = stateNumber_;
        return state_;
    }
    if (board_ == nullptr) {
        return nullptr;
    }
    if (seen.board != boardNumber_) {
        seen.board = boardNumber_;
        seen.message = 0;
    }
    const std::vector<LoggedMessage> messages = board_->messagesAfter(seen.message, messagesAtOnce);
    if (messages.empty()) {
        return nullptr;
    }
    seen.message = messages.back().number;
    return eventOf("messages", describeMessages(messages, boardNumber_));
}

void Watch::change(std::string_view json)
{
    const std::lock_guard lock(mutex_);
    store().change([&](Contents &contents) {
        applyChange(contents, json);
        return true;
    });
}

} // namespace desk::screen
