// SPDX-License-Identifier: Apache-2.0
// The settings store: one SQLite file that every process of the desk monitor reads and writes.
//
// It is in write-ahead mode, so that readers never wait for the writer and what a process has committed
// survives its kill -9. (Commits are not flushed to the disk one by one: after a power failure the newest may
// be missing, the file is whole.)
#ifndef DESK_SUPPORT_STORE_H
#define DESK_SUPPORT_STORE_H

#include "support/environment.h"
#include "support/faults.h"
#include "support/file_watch.h"
#include "support/settings.h"

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace desk
{

/** All that the store holds. */
struct Contents {
    Settings settings;
    Faults faults;
    std::map<std::string, bool, std::less<>> users; // name, administrator

    bool fault(std::string_view name) const
    {
        return !faults.empty() && faults.contains(name);
    }
    bool operator==(const Contents &) const = default;
};

/** One connection to the store, for one thread at a time. Every function throws StoreError when the store
 * cannot be used. */
class Store
{
  public:
    /** Opens the store; one that does not exist yet, or lacks settings, is filled with factory values. */
    explicit Store(const std::string &path);
    ~Store();
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    const std::string &path() const
    {
        return path_;
    }
    /** True when there was no such store, so that it holds factory values and factory accounts now. */
    bool isNew() const
    {
        return isNew_;
    }
    /** False when the file has been removed or replaced since. */
    bool inPlace();

    /** What the store holds now. While nobody writes the store, that costs one system call; after a change,
     * by whatever program, SQLite is asked, and the contents are loaded again when they are others. */
    const Contents &read();

    /** True when the store is in its place, as seen a second ago at most, and holds what was read last. */
    bool isUntouched();
    /** As read() has returned it; only when it is untouched. */
    const Contents &asRead() const
    {
        return *contents_;
    }

    /** Another number whenever read() or change() has brought other contents. */
    std::uint64_t version() const
    {
        return version_;
    }

    /** Changes the contents in one transaction: the function works on a copy of the newest contents, and what
     * it has changed is written unless it returns false. No other process can change the store meanwhile. */
    void change(const std::function<bool(Contents &)> &edit);

  private:
    struct Close {
        void operator()(sqlite3 *database) const;
        void operator()(sqlite3_stmt *statement) const;
    };
    using Database = std::unique_ptr<sqlite3, Close>;
    using Statement = std::unique_ptr<sqlite3_stmt, Close>;

    Statement prepare(const char *sql);
    void execute(const char *sql);
    class Transaction;
    void run(const Statement &statement, const char *failure = "cannot be written");
    template <class Take>
    void forEachRow(const Statement &query, Take take);
    [[noreturn]] void fail(const std::string &what) const;
    void create();
    void fill();
    int schemaVersion();
    void write(const Contents &before, const Contents &after);
    static int awaitOther(void *self, int attempts);
    bool beginWriteAtOnce();
    long long dataVersion();
    void look();
    void ask();
    void loadIfChanged();
    std::unique_ptr<Contents> load();

    std::string path_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
    std::chrono::steady_clock::time_point seenInPlace_{};
    bool isNew_ = false;
    Database database_;
    Statement dataVersionQuery_, settingRows_, faultRows_, userRows_, writeSetting_;
    Statement beginRead_, beginWrite_, commit_, rollback_;
    bool isPatient_ = true; // who is kept from the store by another waits for him
    FileWatch watch_;
    bool isSettled_ = false; // what was read is what the store holds, unless the watch has seen something
    long long loadedVersion_ = 0;
    std::uint64_t version_ = 0;
    std::unique_ptr<const Contents> contents_; // none: to be loaded
};

/** The store at the path: the one that is open, or opened, when there is none, it is of another path, or its
 * file was removed or replaced. What is to be known of a store that is not the one it was is said with the
 * function. */
Store &openedStore(std::unique_ptr<Store> &store, const std::string &path, void (*say)(const std::string &));

} // namespace desk

#endif
