// SPDX-License-Identifier: Apache-2.0
#include "support/session.h"

#include "support/environment.h"

#include <pthread.h>

#include <cstdio>
#include <memory>

namespace desk
{

namespace
{

struct Connection {
    std::mutex mutex;
    std::unique_ptr<Store> store;
};

Connection &connection();

/** SQLite forbids to carry a connection over a fork: it is closed before, and parent and child each open
 * their own when they need one. */
void beforeFork()
{
    connection().mutex.lock();
    connection().store.reset();
}

void afterFork()
{
    connection().mutex.unlock();
}

Connection &connection()
{
    static Connection instance;
    static const int registered = pthread_atfork(beforeFork, afterFork, afterFork);
    static_cast<void>(registered);
    return instance;
}

} // namespace

Session::Session() : lock_(connection().mutex) {}

Store &Session::store()
{
    return openedStore(connection().store, storePath(), [](const std::string &line) {
        fprintf(stderr, "monitor_support: %s\n", line.c_str());
    });
}

const Contents &Session::read()
{
    const std::unique_ptr<Store> &opened = connection().store;
    if (opened != nullptr && isStorePath(opened->path()) && opened->isUntouched()) {
        return opened->asRead();
    }
    return store().read();
}

void report(std::string_view function, const char *reason) noexcept
{
    fprintf(stderr, "monitor_support: %.*s: %s\n", static_cast<int>(function.size()), function.data(),
            reason);
}

} // namespace desk
