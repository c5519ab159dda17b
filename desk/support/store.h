/* The settings store: one SQLite file that every process of the desk monitor reads and writes.
 *
 * It is in write-ahead mode, so that readers never wait for the writer and what a process has committed
 * survives its kill -9. (Commits are not flushed to the disk one by one: after a power failure the newest may
 * be missing, the file is whole.) */
#ifndef DESK_SUPPORT_STORE_H
#define DESK_SUPPORT_STORE_H

#include "support/settings.h"

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace desk
{

struct StoreError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/* All that the store holds. */
struct Contents {
    Settings settings;
    std::map<std::string, std::string, std::less<>> faults; /* name and argument of what is switched on */
    std::map<std::string, bool, std::less<>> users;         /* name, administrator */

    bool fault(std::string_view name) const
    {
        return !faults.empty() && faults.contains(name);
    }
    bool operator==(const Contents &) const = default;
};

/* One connection to the store, for one thread at a time. Every function throws StoreError when the store
 * cannot be used. */
class Store
{
  public:
    /* Opens the store; one that does not exist yet, or lacks settings, is filled with factory values. */
    explicit Store(const std::string &path);
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    const std::string &path() const
    {
        return file;
    }
    /* False when the file has been removed or replaced since. */
    bool inPlace() const;

    /* What the store holds now. Read again only when another connection has changed it. */
    const Contents &read();

    /* Changes the contents in one transaction: the function works on a copy of the newest contents, and what
     * it has changed is written unless it returns false. No other process can change the store meanwhile. */
    void change(const std::function<bool(Contents &)> &edit);

  private:
    struct Close {
        void operator()(sqlite3 *database) const;
        void operator()(sqlite3_stmt *statement) const;
    };
    using Database = std::unique_ptr<sqlite3, Close>;
    using Statement = std::unique_ptr<sqlite3_stmt, Close>;

    /* What the index of the write-ahead log says of the newest commit. */
    using IndexHeader = std::array<std::uint32_t, 24>;

    Statement prepare(const char *sql);
    void execute(const char *sql);
    void run(const Statement &statement);
    template <class Take>
    void forEachRow(const Statement &query, Take take);
    [[noreturn]] void fail(const std::string &what) const;
    void create();
    void fill();
    void write(const Contents &before, const Contents &after);
    long long dataVersion();
    IndexHeader indexHeader();
    Contents load();

    std::string file;
    dev_t device = 0;
    ino_t inode = 0;
    Database database;
    Statement version, settingRows, faultRows, userRows, writeSetting;
    const volatile std::uint32_t *index = nullptr; /* in shared memory, the connection's */
    bool loaded = false;
    IndexHeader seen{}; /* no later than what was loaded */
    long long loadedVersion = 0;
    Contents contents;
};

} // namespace desk

#endif
