// SPDX-License-Identifier: Apache-2.0
#include "support/store.h"

#include "support/environment.h"

#include <sqlite3.h>

#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace desk
{

namespace
{

constexpr int currentSchema = 1;

// Who writes has the store for some microseconds, and a reader who makes sure that nobody does for less: the
// first pauses are short. In all it is ten seconds.
constexpr int shortPauses = 100;
constexpr int longPauses = 10'000;
constexpr useconds_t shortPause = 50;
constexpr useconds_t longPause = 1'000;

// Directories above can be renamed, and links be set to others, without a sign of it at the file.
constexpr std::chrono::seconds placeInterval(1);

constexpr const char *schema =
    "CREATE TABLE IF NOT EXISTS setting(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS fault(name TEXT PRIMARY KEY, argument TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS user(name TEXT PRIMARY KEY, administrator INTEGER NOT NULL) WITHOUT ROWID;";

/** The text of a column, there until the next step. */
std::string_view columnText(sqlite3_stmt *statement, int column)
{
    const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return bytes == nullptr ? std::string_view() : std::string_view(bytes, length);
}

void bindText(sqlite3_stmt *statement, int parameter, std::string_view text)
{
    sqlite3_bind_text64(statement, parameter, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

/** Ends the use of a statement, and with it what the statement holds of the store. */
struct Reset {
    sqlite3_stmt *statement;

    ~Reset()
    {
        sqlite3_reset(statement);
    }
};

/** As they are shown: "root (administrator), operator". */
std::string factoryUsers()
{
    std::string names;
    for (const UserRow &row : userRows) {
        names += (names.empty() ? "" : ", ") + std::string(row.name) +
                 (row.administrator ? " (administrator)" : "");
    }
    return names;
}

} // namespace

/** A transaction, rolled back unless it is committed. */
class Store::Transaction
{
  public:
    Transaction(Store &store, const Statement &begin) : store_(store)
    {
        store_.run(begin, "cannot be used");
    }
    /** One that has begun. */
    explicit Transaction(Store &store) : store_(store) {}
    ~Transaction()
    {
        if (open_) {
            const Reset reset{store_.rollback_.get()};
            sqlite3_step(store_.rollback_.get());
        }
    }
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    void commit()
    {
        store_.run(store_.commit_, "cannot be used");
        open_ = false;
    }

  private:
    Store &store_;
    bool open_ = true;
};

void Store::Close::operator()(sqlite3 *database) const
{
    sqlite3_close_v2(database);
}

void Store::Close::operator()(sqlite3_stmt *statement) const
{
    sqlite3_finalize(statement);
}

Store::Store(const std::string &path) : path_(path)
{
    sqlite3 *opened = nullptr;
    const int result = sqlite3_open_v2(
        path.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(opened);
    if (result != SQLITE_OK) {
        fail("cannot be opened");
    }
    // SQLite would keep 48 kB for small pieces, where these few statements need next to none.
    sqlite3_db_config(opened, SQLITE_DBCONFIG_LOOKASIDE, nullptr, 0, 0);
    sqlite3_busy_handler(opened, &Store::awaitOther, this);
    beginRead_ = prepare("BEGIN");
    beginWrite_ = prepare("BEGIN IMMEDIATE");
    commit_ = prepare("COMMIT");
    rollback_ = prepare("ROLLBACK");
    create();
    dataVersionQuery_ = prepare("PRAGMA data_version");
    settingRows_ = prepare("SELECT name, value FROM setting ORDER BY name");
    faultRows_ = prepare("SELECT name, argument FROM fault");
    userRows_ = prepare("SELECT name, administrator FROM user");
    writeSetting_ = prepare("INSERT OR REPLACE INTO setting(name, value) VALUES(?1, ?2)");

    struct stat status {
    };
    if (stat(path.c_str(), &status) == 0) {
        device_ = status.st_dev;
        inode_ = status.st_ino;
    }
    // Whatever is committed is written to the log before. The files are there: this connection has read.
    constexpr std::uint32_t replaced = IN_ATTRIB | IN_MOVE_SELF | IN_DELETE_SELF;
    const char *file = sqlite3_db_filename(opened, "main");
    watch_.add(file, replaced);
    watch_.add(sqlite3_filename_wal(file), replaced | IN_MODIFY);
}

Store::~Store() = default;

bool Store::inPlace()
{
    struct stat status {
    };
    seenInPlace_ = std::chrono::steady_clock::now();
    return stat(path_.c_str(), &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
}

void Store::fail(const std::string &what) const
{
    const char *reason = database_ == nullptr ? "no memory" : sqlite3_errmsg(database_.get());
    throw StoreError("settings store " + path_ + " " + what + ": " + reason);
}

Store::Statement Store::prepare(const char *sql)
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v3(database_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
        SQLITE_OK) {
        fail("cannot be read");
    }
    return Statement(statement);
}

void Store::execute(const char *sql)
{
    if (sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail("cannot be used");
    }
}

void Store::run(const Statement &statement, const char *failure)
{
    const int result = sqlite3_step(statement.get());
    sqlite3_reset(statement.get());
    if (result != SQLITE_DONE) {
        fail(failure);
    }
}

int Store::schemaVersion()
{
    const Statement statement = prepare("PRAGMA user_version");
    if (sqlite3_step(statement.get()) != SQLITE_ROW) {
        fail("cannot be read");
    }
    return sqlite3_column_int(statement.get(), 0);
}

void Store::create()
{
    // Two processes that turn a new file to write-ahead mode at once are not made to wait for one another by
    // the busy time alone: one of them is told at once, and tries again.
    for (int attempt = 1;; ++attempt) {
        const int result =
            sqlite3_exec(database_.get(), "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
        if (result == SQLITE_OK) {
            break;
        }
        if (result != SQLITE_BUSY || attempt == 1000) {
            fail("cannot be used");
        }
        usleep(5000);
    }
    execute("PRAGMA synchronous=NORMAL");
    if (schemaVersion() == currentSchema) {
        return;
    }
    Transaction transaction(*this, beginWrite_);
    const int found = schemaVersion();
    if (found > currentSchema) {
        throw StoreError("settings store " + path_ + " was made by a newer desk monitor");
    }
    if (found < currentSchema) {
        fill();
    }
    transaction.commit();
    isNew_ = found == 0;
}

void Store::fill()
{
    execute(schema);
    const Settings factory;
    const Statement setting = prepare("INSERT OR IGNORE INTO setting(name, value) VALUES(?1, ?2)");
    for (const SettingRow &row : settingRows) {
        bindText(setting.get(), 1, row.name);
        bindText(setting.get(), 2, factory.text(keyOf(row)));
        run(setting);
    }
    const Statement user = prepare("INSERT OR IGNORE INTO user(name, administrator) VALUES(?1, ?2)");
    for (const UserRow &row : userRows) {
        bindText(user.get(), 1, row.name);
        sqlite3_bind_int(user.get(), 2, row.administrator);
        run(user);
    }
    execute(("PRAGMA user_version=" + std::to_string(currentSchema)).c_str());
}

template <class Take>
void Store::forEachRow(const Statement &query, Take take)
{
    const Reset reset{query.get()};
    int result;
    while ((result = sqlite3_step(query.get())) == SQLITE_ROW) {
        take(query.get());
    }
    if (result != SQLITE_DONE) {
        fail("cannot be read");
    }
}

/** A number that is another one after another connection, of whatever process and program, has committed a
 * change; the connection's own commits leave it as it is. */
long long Store::dataVersion()
{
    long long value = 0;
    forEachRow(dataVersionQuery_, [&](sqlite3_stmt *row) { value = sqlite3_column_int64(row, 0); });
    return value;
}

/** Called by SQLite while another connection has the store; 0: it is not to be waited for. */
int Store::awaitOther(void *self, int attempts)
{
    if (!static_cast<Store *>(self)->isPatient_ || attempts >= shortPauses + longPauses) {
        return 0;
    }
    usleep(attempts < shortPauses ? shortPause : longPause);
    return 1;
}

/** Begins a transaction that keeps others from writing, unless somebody writes. */
bool Store::beginWriteAtOnce()
{
    isPatient_ = false;
    const int result = sqlite3_step(beginWrite_.get());
    sqlite3_reset(beginWrite_.get());
    isPatient_ = true;
    return result == SQLITE_DONE;
}

void Store::loadIfChanged()
{
    // The version is taken before the load: what is committed between the two is loaded now, and once more
    // later.
    const long long current = dataVersion();
    if (contents_ != nullptr && current == loadedVersion_) {
        return;
    }
    contents_.reset();
    contents_ = load();
    loadedVersion_ = current;
    ++version_;
}

/** Notes whether the store was touched. */
void Store::look()
{
    if (watch_.saw()) {
        isSettled_ = false;
    }
}

bool Store::isUntouched()
{
    look();
    return isSettled_ && std::chrono::steady_clock::now() - seenInPlace_ < placeInterval;
}

const Contents &Store::read()
{
    look();
    if (!isSettled_) {
        ask();
    }
    return *contents_;
}

/** Who writes is seen when he writes his log, and has committed only some steps later. What was seen is
 * settled when nobody is between the two, which is when others are kept from writing. */
void Store::ask()
{
    if (watch_.works() && beginWriteAtOnce()) {
        const Transaction transaction(*this);
        loadIfChanged();
        isSettled_ = true;
    } else if (contents_ == nullptr || dataVersion() != loadedVersion_) {
        const Transaction transaction(*this, beginRead_); // the three tables as they were at one moment
        loadIfChanged();
    }
}

std::unique_ptr<Contents> Store::load()
{
    auto loaded = std::make_unique<Contents>();
    Contents &loading = *loaded;
    SettingFinder settings;
    forEachRow(settingRows_, [&](sqlite3_stmt *row) {
        const int place = settings.find(columnText(row, 0));
        const std::string_view value = columnText(row, 1);
        if (place < 0) {
            return;
        }
        const Key key(static_cast<std::size_t>(place));
        // A value that its row does not allow, edited in from outside, reads as the factory value.
        if (value != loading.settings.text(key) && complaint(key.row(), value).empty()) {
            loading.settings.set(key, value);
        }
    });
    forEachRow(faultRows_, [&](sqlite3_stmt *row) {
        loading.faults[std::string(columnText(row, 0))] = columnText(row, 1);
    });
    forEachRow(userRows_, [&](sqlite3_stmt *row) {
        loading.users[std::string(columnText(row, 0))] = sqlite3_column_int(row, 1) != 0;
    });
    return loaded;
}

void Store::change(const std::function<bool(Contents &)> &edit)
{
    isSettled_ = false;
    Transaction transaction(*this, beginWrite_);
    loadIfChanged();
    auto after = std::make_unique<Contents>(*contents_);
    if (!edit(*after) || *after == *contents_) {
        return;
    }
    write(*contents_, *after);
    transaction.commit();
    contents_ = std::move(after); // still of that version: its own commits do not count for a connection
    ++version_;
}

void Store::write(const Contents &before, const Contents &after)
{
    for (const SettingRow &row : settingRows) {
        if (before.settings.agrees(after.settings, keyOf(row))) {
            continue;
        }
        const std::string_view value = after.settings.text(keyOf(row));
        bindText(writeSetting_.get(), 1, row.name);
        bindText(writeSetting_.get(), 2, value);
        run(writeSetting_);
    }
    if (before.faults != after.faults) {
        execute("DELETE FROM fault");
        const Statement fault = prepare("INSERT INTO fault(name, argument) VALUES(?1, ?2)");
        for (const auto &[name, argument] : after.faults) {
            bindText(fault.get(), 1, name);
            bindText(fault.get(), 2, argument);
            run(fault);
        }
    }
    if (before.users != after.users) {
        execute("DELETE FROM user");
        const Statement user = prepare("INSERT INTO user(name, administrator) VALUES(?1, ?2)");
        for (const auto &[name, administrator] : after.users) {
            bindText(user.get(), 1, name);
            sqlite3_bind_int(user.get(), 2, administrator);
            run(user);
        }
    }
}

Store &openedStore(std::unique_ptr<Store> &store, const std::string &path, void (*say)(const std::string &))
{
    if (store != nullptr && store->path() == path && store->inPlace()) {
        return *store;
    }
    const bool vanished = store != nullptr && store->path() == path;
    store.reset();
    makeStoreDirectory();
    store = std::make_unique<Store>(path);
    if (store->isNew()) {
        say("settings store " + path + (vanished ? " has vanished; a new one" : " is new; it") +
            " begins with factory settings and the factory's users: " + factoryUsers());
    } else if (vanished) {
        say("settings store " + path + " was replaced; settings and users are those of the new file");
    }
    return *store;
}

} // namespace desk
