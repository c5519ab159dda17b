// SPDX-License-Identifier: Apache-2.0
#include "faults.h"

#include <fcntl.h>
#include <sched.h>
#include <sqlite3.h>
#include <sys/ipc.h>
#include <sys/mount.h>
#include <sys/msg.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <fstream>

namespace soak
{

namespace
{

bool haveSmallDisks = false;

void pause(int milliseconds)
{
    usleep(static_cast<useconds_t>(milliseconds) * 1000);
}

void kill(Process &process)
{
    process.signal(SIGKILL);
    process.wait();
}

void stopFor(Process &process, int milliseconds)
{
    process.signal(SIGSTOP);
    pause(milliseconds);
    process.signal(SIGCONT);
}

// ---- killed ----

bool killEngine(Trouble &trouble)
{
    kill(trouble.desk.engine());
    pause(anyOf(trouble.random, 0, 300));
    trouble.desk.startEngine();
    return true;
}

bool killHost(Trouble &trouble)
{
    kill(trouble.desk.host());
    pause(anyOf(trouble.random, 0, 200));
    trouble.desk.startHost();
    return true;
}

bool killBoth(Trouble &trouble)
{
    trouble.desk.host().signal(SIGKILL);
    kill(trouble.desk.engine());
    kill(trouble.desk.host());
    trouble.desk.startEngine();
    trouble.desk.startHost();
    return true;
}

bool killClients(Trouble &trouble)
{
    trouble.ledger.clientsAreKilled = true;
    for (int i = 0; i < 20; ++i) {
        pause(anyOf(trouble.random, 5, 60));
        trouble.commands.process().signal(SIGKILL);
    }
    return true;
}

// ---- stopped ----

bool stopEngine(Trouble &trouble)
{
    stopFor(trouble.desk.engine(), anyOf(trouble.random, 50, trouble.isLong ? 5000 : 2500));
    return true;
}

bool stopHost(Trouble &trouble)
{
    stopFor(trouble.desk.host(), anyOf(trouble.random, 50, trouble.isLong ? 8000 : 1500));
    return true;
}

bool stopClient(Trouble &trouble)
{
    for (int i = 0; i < 5; ++i) {
        pause(anyOf(trouble.random, 5, 60));
        stopFor(trouble.commands.process(), anyOf(trouble.random, 50, 300));
    }
    return true;
}

// ---- queues ----

struct Junk {
    long type = LONG_MAX; // which nobody waits for
    std::array<char, 100> bytes{};
};

void fill(int queue)
{
    const Junk junk;
    while (msgsnd(queue, &junk, sizeof junk.bytes, IPC_NOWAIT) == 0 || errno == EINTR) {
    }
}

bool fillRequests(Trouble &trouble)
{
    trouble.desk.engine().signal(SIGSTOP);
    fill(trouble.desk.queue(0));
    pause(anyOf(trouble.random, 50, 1500));
    trouble.desk.engine().signal(SIGCONT);
    return true;
}

bool fillReplies(Trouble &trouble)
{
    const int queue = trouble.desk.queue(3);
    fill(queue);
    pause(anyOf(trouble.random, 50, 1500));
    Junk junk;
    while (msgrcv(queue, &junk, sizeof junk.bytes, LONG_MAX, IPC_NOWAIT) != -1 || errno == EINTR) {
    }
    return true;
}

// ---- files ----

/** Takes all the room of a file system for some time. */
void fillDisk(const std::string &directory, int milliseconds)
{
    const std::string file = directory + "/ballast";
    const int ballast = open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const std::vector<char> bytes(4096, 'x');
    while (write(ballast, bytes.data(), bytes.size()) > 0) {
    }
    pause(milliseconds);
    close(ballast);
    unlink(file.c_str());
}

struct Database {
    explicit Database(const std::string &file)
    {
        sqlite3_open_v2(file.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr);
        sqlite3_busy_timeout(handle, 5000);
    }
    ~Database()
    {
        sqlite3_close_v2(handle);
    }
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;
    bool execute(const char *sql)
    {
        return sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    sqlite3 *handle = nullptr;
};

bool fillStoreDisk(Trouble &trouble)
{
    if (!haveSmallDisks) {
        return false;
    }
    // What is in the write-ahead log goes into the store, so that the next change needs room.
    Database(trouble.desk.store()).execute("PRAGMA wal_checkpoint(TRUNCATE)");
    fillDisk(trouble.desk.storeDirectory(), anyOf(trouble.random, 100, 1500));
    return true;
}

bool fillAuditDisk(Trouble &trouble)
{
    if (!haveSmallDisks) {
        return false;
    }
    fillDisk(trouble.desk.auditDirectory(), anyOf(trouble.random, 100, 1500));
    return true;
}

bool lockStore(Trouble &trouble)
{
    Database database(trouble.desk.store());
    if (!database.execute("BEGIN EXCLUSIVE")) {
        trouble.ledger.wrong(std::string("the store cannot be locked: ") + sqlite3_errmsg(database.handle));
        return true;
    }
    // The store is waited for 10 s.
    pause(trouble.isLong ? 11'000 : anyOf(trouble.random, 100, 3000));
    database.execute("ROLLBACK");
    return true;
}

// ---- the clock ----

bool stepClock(Trouble &trouble)
{
    const std::chrono::seconds offset{anyOf(trouble.random, -40'000'000, 40'000'000)};
    if (!trouble.desk.stepClock(offset)) {
        return false;
    }
    pause(anyOf(trouble.random, 50, 500));
    return trouble.desk.stepClock(std::chrono::seconds(0));
}

constexpr FaultKind kinds[] = {
    {"engine killed", killEngine, true},
    {"object manager killed", killHost},
    {"clients killed", killClients},
    {"engine stopped", stopEngine},
    {"object manager stopped", stopHost},
    {"client stopped", stopClient},
    {"request queue full", fillRequests},
    {"reply queue full", fillReplies, true},
    {"disk of the store full", fillStoreDisk},
    {"disk of the audit log full", fillAuditDisk},
    {"store locked by another", lockStore},
    {"clock set forth and back", stepClock},
    {"engine and object manager killed", killBoth, true},
};

void writeTo(const char *file, const std::string &text)
{
    std::ofstream(file) << text;
}

/** An ordinary user may do that as well, where the system lets him be alone with his view of the file
 * systems. */
bool takeOwnView()
{
    if (unshare(CLONE_NEWNS) == 0) {
        return true;
    }
    const std::string user = std::to_string(getuid());
    const std::string group = std::to_string(getgid());
    // Tried by another process first: who has half of it has lost more than he has gained.
    const pid_t child = fork();
    if (child == 0) {
        _exit(unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 ? 0 : 1);
    }
    int status = 1;
    waitpid(child, &status, 0);
    if (status != 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        return false;
    }
    writeTo("/proc/self/setgroups", "deny");
    writeTo("/proc/self/uid_map", user + " " + user + " 1");
    writeTo("/proc/self/gid_map", group + " " + group + " 1");
    return true;
}

} // namespace

std::span<const FaultKind> faultKinds()
{
    return kinds;
}

bool makeSmallDisks(const std::string &storeDirectory, const std::string &auditDirectory)
{
    haveSmallDisks = takeOwnView() && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                     mount("soak", storeDirectory.c_str(), "tmpfs", 0, "size=16m,mode=0700") == 0 &&
                     mount("soak", auditDirectory.c_str(), "tmpfs", 0, "size=8m,mode=0700") == 0;
    return haveSmallDisks;
}

void removeSmallDisks(const std::string &storeDirectory, const std::string &auditDirectory)
{
    if (haveSmallDisks) {
        umount2(storeDirectory.c_str(), MNT_DETACH);
        umount2(auditDirectory.c_str(), MNT_DETACH);
    }
}

} // namespace soak
