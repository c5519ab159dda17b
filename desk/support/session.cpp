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

/* SQLite forbids to carry a connection over a fork: it is closed before, and parent and child each open their
 * own when they need one. */
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

Session::Session() : lock(connection().mutex) {}

Store &Session::store()
{
    std::unique_ptr<Store> &store = connection().store;
    const std::string path = storePath();
    if (store == nullptr || store->path() != path || !store->inPlace()) {
        store.reset();
        makeStoreDirectory();
        store = std::make_unique<Store>(path);
    }
    return *store;
}

bool failsByFault(const Contents &contents, std::string_view fault, std::string_view function)
{
    if (contents.faults.empty())
        return false;
    const auto found = contents.faults.find(fault);
    if (found == contents.faults.end())
        return false;
    std::string_view names = found->second;
    if (names.empty())
        return true;
    while (!names.empty()) {
        const std::size_t comma = names.find(',');
        if (names.substr(0, comma) == function)
            return true;
        names = comma == names.npos ? std::string_view() : names.substr(comma + 1);
    }
    return false;
}

void report(std::string_view function, const char *reason) noexcept
{
    fprintf(stderr, "monitor_support: %.*s: %s\n", static_cast<int>(function.size()), function.data(),
            reason);
}

} // namespace desk
