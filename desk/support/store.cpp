#include "support/store.h"

#include <sqlite3.h>

#include <sys/stat.h>
#include <unistd.h>

namespace desk
{

namespace
{

constexpr int SchemaVersion = 1;
constexpr int BusyMilliseconds = 10'000;

constexpr const char *Schema =
    "CREATE TABLE IF NOT EXISTS setting(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS fault(name TEXT PRIMARY KEY, argument TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS user(name TEXT PRIMARY KEY, administrator INTEGER NOT NULL) WITHOUT ROWID;";

/* The text of a column, there until the next step. */
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

/* Ends the use of a statement, and with it what the statement holds of the store. */
struct Reset {
    sqlite3_stmt *statement;

    ~Reset()
    {
        sqlite3_reset(statement);
    }
};

/* Rolls back unless it was told that the transaction is committed. */
struct Transaction {
    sqlite3 *database;
    bool open = true;

    ~Transaction()
    {
        if (open)
            sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    }
};

} // namespace

void Store::Close::operator()(sqlite3 *database) const
{
    sqlite3_close_v2(database);
}

void Store::Close::operator()(sqlite3_stmt *statement) const
{
    sqlite3_finalize(statement);
}

Store::Store(const std::string &path) : file(path)
{
    sqlite3 *opened = nullptr;
    const int result = sqlite3_open_v2(
        path.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    database.reset(opened);
    if (result != SQLITE_OK)
        fail("cannot be opened");
    sqlite3_busy_timeout(opened, BusyMilliseconds);
    create();
    version = prepare("PRAGMA data_version");
    settingRows = prepare("SELECT name, value FROM setting");
    faultRows = prepare("SELECT name, argument FROM fault");
    userRows = prepare("SELECT name, administrator FROM user");
    writeSetting = prepare("INSERT OR REPLACE INTO setting(name, value) VALUES(?1, ?2)");

    struct stat status {
    };
    if (stat(path.c_str(), &status) == 0) {
        device = status.st_dev;
        inode = status.st_ino;
    }
}

Store::~Store() = default;

bool Store::inPlace() const
{
    struct stat status {
    };
    return stat(file.c_str(), &status) == 0 && status.st_dev == device && status.st_ino == inode;
}

void Store::fail(const std::string &what) const
{
    const char *reason = database == nullptr ? "no memory" : sqlite3_errmsg(database.get());
    throw StoreError("settings store " + file + " " + what + ": " + reason);
}

Store::Statement Store::prepare(const char *sql)
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v3(database.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
        SQLITE_OK)
        fail("cannot be read");
    return Statement(statement);
}

void Store::execute(const char *sql)
{
    if (sqlite3_exec(database.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail("cannot be used");
}

void Store::run(const Statement &statement)
{
    const int result = sqlite3_step(statement.get());
    sqlite3_reset(statement.get());
    if (result != SQLITE_DONE)
        fail("cannot be written");
}

void Store::create()
{
    /* Two processes that turn a new file to write-ahead mode at once are not made to wait for one another by
     * the busy time alone: one of them is told at once, and tries again. */
    for (int attempt = 1;; ++attempt) {
        const int result = sqlite3_exec(database.get(), "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr);
        if (result == SQLITE_OK)
            break;
        if (result != SQLITE_BUSY || attempt == 1000)
            fail("cannot be used");
        usleep(5000);
    }
    execute("PRAGMA synchronous=NORMAL");

    const auto schemaVersion = [this] {
        const Statement statement = prepare("PRAGMA user_version");
        if (sqlite3_step(statement.get()) != SQLITE_ROW)
            fail("cannot be read");
        return sqlite3_column_int(statement.get(), 0);
    };
    if (schemaVersion() == SchemaVersion)
        return;
    execute("BEGIN IMMEDIATE");
    Transaction transaction{database.get()};
    const int found = schemaVersion();
    if (found > SchemaVersion)
        throw StoreError("settings store " + file + " was made by a newer desk monitor");
    if (found < SchemaVersion)
        fill();
    execute("COMMIT");
    transaction.open = false;
}

void Store::fill()
{
    execute(Schema);
    const Settings factory;
    const Statement setting = prepare("INSERT OR IGNORE INTO setting(name, value) VALUES(?1, ?2)");
    for (std::size_t i = 0; i < SettingCount; ++i) {
        bindText(setting.get(), 1, allSettings()[i].name);
        bindText(setting.get(), 2, factory.text(Key(i)));
        run(setting);
    }
    const Statement user = prepare("INSERT OR IGNORE INTO user(name, administrator) VALUES(?1, ?2)");
    for (const UserRow &row : UserRows) {
        bindText(user.get(), 1, row.name);
        sqlite3_bind_int(user.get(), 2, row.administrator);
        run(user);
    }
    execute(("PRAGMA user_version=" + std::to_string(SchemaVersion)).c_str());
}

template <class Take>
void Store::forEachRow(const Statement &query, Take take)
{
    const Reset reset{query.get()};
    int result;
    while ((result = sqlite3_step(query.get())) == SQLITE_ROW)
        take(query.get());
    if (result != SQLITE_DONE)
        fail("cannot be read");
}

long long Store::dataVersion()
{
    long long value = 0;
    forEachRow(version, [&](sqlite3_stmt *row) { value = sqlite3_column_int64(row, 0); });
    return value;
}

/* SQLite's connections learn of a commit by the index of the write-ahead log, which they share in memory: its
 * header stands there twice, and every commit changes both. That the header is as it was is what SQLite goes
 * by to keep the pages it has read; here it is what saves the calls to SQLite and to the system by which a
 * process would otherwise ask, at every read, whether something has changed. Zeros when there is no such
 * header, or one of another form than the one the file format describes. */
Store::IndexHeader Store::indexHeader()
{
    constexpr int regionSize = 32 * 1024; /* the first part of the index, as every connection maps it */
    constexpr std::uint32_t knownForm = 3007000;
    IndexHeader header{};
    if (index == nullptr) {
        sqlite3_file *handle = nullptr;
        volatile void *region = nullptr;
        if (sqlite3_file_control(database.get(), "main", SQLITE_FCNTL_FILE_POINTER, &handle) == SQLITE_OK &&
            handle->pMethods != nullptr && handle->pMethods->iVersion >= 2 &&
            handle->pMethods->xShmMap(handle, 0, regionSize, 0, &region) == SQLITE_OK)
            index = static_cast<const volatile std::uint32_t *>(region);
    }
    if (index != nullptr && index[0] == knownForm)
        for (std::size_t i = 0; i < header.size(); ++i)
            header[i] = index[i];
    return header;
}

const Contents &Store::read()
{
    /* The header and the version, which counts what other connections committed, are taken before the load:
     * what is committed meanwhile is loaded now and once more at the next read. */
    const IndexHeader header = indexHeader();
    if (loaded && header == seen && header[0] != 0)
        return contents;
    const long long current = dataVersion();
    if (!loaded || current != loadedVersion) {
        loaded = false;
        execute("BEGIN");
        Transaction transaction{database.get()};
        contents = load();
        loadedVersion = current;
        loaded = true;
    }
    seen = header;
    return contents;
}

Contents Store::load()
{
    Contents loading;
    forEachRow(settingRows, [&](sqlite3_stmt *row) {
        const int place = findSetting(columnText(row, 0));
        const std::string_view value = columnText(row, 1);
        if (place < 0)
            return;
        const Key key(static_cast<std::size_t>(place));
        /* A value that its row does not allow, edited in from outside, reads as the factory value. */
        if (value != loading.settings.text(key) && complaint(allSettings()[key.index()], value).empty())
            loading.settings.set(key, std::string(value));
    });
    forEachRow(faultRows, [&](sqlite3_stmt *row) {
        loading.faults[std::string(columnText(row, 0))] = columnText(row, 1);
    });
    forEachRow(userRows, [&](sqlite3_stmt *row) {
        loading.users[std::string(columnText(row, 0))] = sqlite3_column_int(row, 1) != 0;
    });
    return loading;
}

void Store::change(const std::function<bool(Contents &)> &edit)
{
    execute("BEGIN IMMEDIATE");
    Transaction transaction{database.get()};
    const long long current = dataVersion();
    if (!loaded || current != loadedVersion) {
        loaded = false;
        contents = load();
        loadedVersion = current;
        loaded = true;
    }
    Contents after = contents;
    if (!edit(after) || after == contents)
        return;
    write(contents, after);
    execute("COMMIT");
    transaction.open = false;
    contents = std::move(after); /* still of that version: its own commits do not count for a connection */
}

void Store::write(const Contents &before, const Contents &after)
{
    for (std::size_t i = 0; i < SettingCount; ++i) {
        if (before.settings.text(Key(i)) == after.settings.text(Key(i)))
            continue;
        bindText(writeSetting.get(), 1, allSettings()[i].name);
        bindText(writeSetting.get(), 2, after.settings.text(Key(i)));
        run(writeSetting);
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

} // namespace desk
