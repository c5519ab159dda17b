// SPDX-License-Identifier: Apache-2.0
// The store: several processes, sudden ends, damaged and replaced files, and what the libraries export.
#include "desk_fixture.h"

#include "support/shell.h"

#include <monitor_support.h>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sqlite3.h>
#include <sys/inotify.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <sstream>
#include <thread>

namespace
{

class Store : public DeskTest
{
};

TEST_F(Store, IsCreatedAtFirstUse)
{
    ASSERT_FALSE(std::filesystem::exists(store));
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_TRUE(std::filesystem::exists(store));
}

TEST_F(Store, HasADefaultPlaceInTheUsersState)
{
    unsetenv("DESK_MONITOR_STORE");
    setenv("XDG_STATE_HOME", (directory + "/state").c_str(), 1);
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_TRUE(std::filesystem::exists(directory + "/state/desk-monitor/store.db"));
    EXPECT_EQ(std::filesystem::status(directory + "/state/desk-monitor").permissions(),
              std::filesystem::perms::owner_all);
    unsetenv("XDG_STATE_HOME");
}

TEST_F(Store, KeepsWhatTheEngineWroteBeforeItWasKilled)
{
    startEngine();
    for (int luminance = 100; luminance < 130; ++luminance) {
        char hex[64];
        snprintf(hex, sizeof hex, "01000000 0300 0700 00 01 00  00 00 00 %02x000000",
                 static_cast<unsigned>(luminance));
        ASSERT_EQ(request(hex).bytes.at(9), 0);
        if (luminance % 10 != 9) {
            continue;
        }
        ASSERT_EQ(stopEngine(SIGKILL), 128 + SIGKILL);
        ASSERT_EQ(command("show preset1.luminance"), 0);
        EXPECT_EQ(commandOutput, std::to_string(luminance) + "\n");
        startEngine();
    }
    EXPECT_EQ(registerText(0, 0), "129");
}

/* Killed in the middle of whatever it does, again and again: the store is always whole, and holds the last
 * value that was answered or the one that was being written. */
TEST_F(Store, IsWholeWheneverTheEngineIsKilled)
{
    int value = 48;
    for (int round = 0; round < 10; ++round) {
        startEngine();
        int last = 0;
        for (int i = 0; i < round + 1; ++i) {
            last = value = value == 250 ? 48 : value + 1;
            char hex[64];
            snprintf(hex, sizeof hex, "01000000 0300 0700 00 01 00  00 00 00 %02x000000",
                     static_cast<unsigned>(value));
            request(hex);
        }
        const int next = value == 250 ? 48 : value + 1;
        char hex[128];
        snprintf(hex, sizeof hex,
                 "01000000 0300 0700 00 01 00 00 00 00 %02x000000 00 00 00 00000000"
                 "00 00 00 00000000 00 00 00 00000000 00",
                 static_cast<unsigned>(next));
        sendRaw(hex);
        if (round % 2 == 1) {
            std::this_thread::sleep_for(std::chrono::microseconds(100 * round));
        }
        stopEngine(SIGKILL);
        const std::string stored = registerText(0, 0);
        EXPECT_TRUE(stored == std::to_string(last) || stored == std::to_string(next))
            << stored << " after " << last;
        value = std::stoi(stored);
        command("queues remove");
    }
}

TEST_F(Store, ShowsAtOnceWhatAnotherProcessChanged)
{
    for (int input = 0; input < 12; ++input) {
        ASSERT_EQ(command("set video_input " + std::to_string(input % 3)), 0);
        EXPECT_EQ(registerText(25, 1), std::to_string(input % 3));
    }
    char error[ERROR_TEXT_SIZE];
    ASSERT_EQ(UpdateDisplayName("Seen", error), 0);
    ASSERT_EQ(command("show display_name"), 0);
    EXPECT_EQ(commandOutput, "Seen\n");
}

/* Whoever writes the store, by whatever means, and whatever becomes of its write-ahead log meanwhile. */
TEST_F(Store, ShowsAtOnceWhatWasWrittenByOtherMeans)
{
    ASSERT_EQ(registerText(25, 1), "0");
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(store.c_str(), &other), SQLITE_OK);
    const auto run = [&](const std::string &sql) {
        EXPECT_EQ(sqlite3_exec(other, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(other);
    };
    const auto set = [&](int input) {
        run("UPDATE setting SET value='" + std::to_string(input) + "' WHERE name='video_input'");
    };
    for (int i = 1; i < 24; ++i) {
        set(i % 3);
        EXPECT_EQ(registerText(25, 1), std::to_string(i % 3)) << i;
        if (i % 4 == 0) { /* the log is emptied and begins anew */
            {
                run("PRAGMA wal_checkpoint(TRUNCATE)");
                EXPECT_EQ(registerText(25, 1), std::to_string(i % 3)) << i;
            }
        }
        if (i % 5 == 0) { /* a change of one's own, and one of the other's after it */
            {
                char error[ERROR_TEXT_SIZE];
                ASSERT_EQ(UpdateDisplayName(std::to_string(i).c_str(), error), 0);
                set((i + 1) % 3);
                EXPECT_EQ(registerText(25, 1), std::to_string((i + 1) % 3)) << i;
            }
        }
    }
    for (int i = 1; i < 6; ++i) { /* the log is as long as it was, and another */
        {
            run("PRAGMA wal_checkpoint(TRUNCATE)");
            set(i % 3);
            EXPECT_EQ(registerText(25, 1), std::to_string(i % 3)) << i;
        }
    }
    run("BEGIN");
    set(0);
    EXPECT_EQ(registerText(25, 1), "2") << "not committed";
    run("ROLLBACK");
    EXPECT_EQ(registerText(25, 1), "2") << "taken back";
    run("BEGIN");
    set(1);
    run("COMMIT");
    EXPECT_EQ(registerText(25, 1), "1");
    EXPECT_EQ(sqlite3_close(other), SQLITE_OK);
    EXPECT_EQ(registerText(25, 1), "1");
}

// ---- who looks while another writes ----

/** A way for SQLite to write files that tells of each write of a log, after it. One at a time. */
class LogWrites
{
  public:
    explicit LogWrites(std::function<void()> afterWrite)
    {
        told = std::move(afterWrite);
        original = sqlite3_vfs_find(nullptr);
        vfs = *original;
        vfs.zName = name;
        vfs.xOpen = open;
        sqlite3_vfs_register(&vfs, 0);
    }
    ~LogWrites()
    {
        sqlite3_vfs_unregister(&vfs);
        told = nullptr;
    }
    LogWrites(const LogWrites &) = delete;
    LogWrites &operator=(const LogWrites &) = delete;

    static constexpr const char *name = "log-writes";

  private:
    static int open(sqlite3_vfs *, const char *path, sqlite3_file *file, int flags, int *outFlags)
    {
        const int result = original->xOpen(original, path, file, flags, outFlags);
        if (result == SQLITE_OK && (flags & SQLITE_OPEN_WAL) != 0) {
            plain = file->pMethods;
            telling = *plain;
            telling.xWrite = write;
            file->pMethods = &telling;
        }
        return result;
    }
    static int write(sqlite3_file *file, const void *bytes, int count, sqlite3_int64 offset)
    {
        const int result = plain->xWrite(file, bytes, count, offset);
        told();
        return result;
    }

    static inline std::function<void()> told;
    static inline sqlite3_vfs *original;
    static inline sqlite3_vfs vfs;
    static inline const sqlite3_io_methods *plain;
    static inline sqlite3_io_methods telling;
};

/* What is read between the writing of the log and the commit is the old value, and is not kept. */
TEST_F(Store, ShowsTheCommitOfWhoWasSeenWriting)
{
    ASSERT_EQ(registerText(25, 1), "0");
    std::vector<std::string> seen;
    const LogWrites log([&] { seen.push_back(registerText(25, 1)); });
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open_v2(store.c_str(), &other, SQLITE_OPEN_READWRITE, LogWrites::name), SQLITE_OK);
    for (const char *input : {"1", "2", "0"}) {
        const std::string before = registerText(25, 1);
        const std::string sql =
            "UPDATE setting SET value='" + std::string(input) + "' WHERE name='video_input'";
        EXPECT_EQ(sqlite3_exec(other, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(other);
        ASSERT_FALSE(seen.empty());
        EXPECT_EQ(std::count(seen.begin(), seen.end(), before), static_cast<std::ptrdiff_t>(seen.size()));
        EXPECT_EQ(registerText(25, 1), input);
        seen.clear();
    }
    EXPECT_EQ(sqlite3_close(other), SQLITE_OK);
}

/* Nor does who looks keep anybody from writing, however long the other takes. */
TEST_F(Store, IsReadWhileAnotherWrites)
{
    ASSERT_EQ(command("set video_input 1"), 0);
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(store.c_str(), &other), SQLITE_OK);
    const auto run = [&](const char *sql) {
        EXPECT_EQ(sqlite3_exec(other, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(other);
    };
    run("BEGIN IMMEDIATE");
    EXPECT_EQ(registerText(25, 1), "1");
    run("UPDATE setting SET value='2' WHERE name='video_input'");
    EXPECT_EQ(registerText(25, 1), "1");
    run("COMMIT");
    EXPECT_EQ(registerText(25, 1), "2");
    run("UPDATE setting SET value='0' WHERE name='video_input'"); // the read has let go of it
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_EQ(sqlite3_close(other), SQLITE_OK);
}

/** Lets the process have no descriptor of a kind, as the kernel refuses one to who has too many. */
void refuse(unsigned call)
{
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EMFILE),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{static_cast<unsigned short>(std::size(program)), program};
    ASSERT_EQ(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    ASSERT_EQ(prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter), 0);
    ASSERT_EQ(syscall(call, 0), -1);
    ASSERT_EQ(errno, EMFILE);
}

TEST_F(Store, ShowsAtOnceWhatWasWrittenWithoutAWatchToo)
{
    for (const unsigned call : {unsigned{SYS_inotify_init1}, unsigned{SYS_epoll_create1}}) {
        ASSERT_EQ(registerText(25, 1), call == SYS_inotify_init1 ? "0" : "2");
        const pid_t child = fork();
        if (child == 0) {
            refuse(call);
            sqlite3 *other = nullptr;
            bool good = !HasFailure() && sqlite3_open(store.c_str(), &other) == SQLITE_OK;
            for (const char *input : {"1", "2", "1", "0", "2"}) {
                const std::string sql =
                    "UPDATE setting SET value='" + std::string(input) + "' WHERE name='video_input'";
                good = good && sqlite3_exec(other, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK &&
                       registerText(25, 1) == input;
            }
            _exit(good ? 0 : 1);
        }
        EXPECT_EQ(endOf(child), 0) << call;
        EXPECT_EQ(registerText(25, 1), "2");
    }
}

/* Changes of several processes at the same moment add up: none is lost, none fails. */
TEST_F(Store, LosesNoChangeOfManyProcesses)
{
    ASSERT_EQ(command("show settings"), 0);
    const std::string loop = "for i in 1 2 3 4 5 6 7 8; do " DESK_MONITOR " user add $0$i || exit 1; done";
    std::vector<pid_t> writers;
    for (const char *name : {"anna", "bert", "cleo"}) {
        writers.push_back(startProgram({"/bin/sh", "-c", loop, name}, directory + "/writers.log"));
    }
    char error[ERROR_TEXT_SIZE];
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(UpdateDeploymentLocation(std::to_string(i).c_str(), error), 0);
    }
    for (pid_t writer : writers) {
        EXPECT_EQ(endOf(writer), 0) << contentOf(directory + "/writers.log");
    }
    for (const char *name : {"anna", "bert", "cleo"}) {
        for (int i = 1; i <= 8; ++i) {
            char administrator = 7;
            EXPECT_EQ(IsAdminUser((name + std::to_string(i)).c_str(), &administrator, error), 0) << name << i;
        }
    }
    MonitorInfo info;
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DeploymentLocation, "49");
}

TEST_F(Store, IsCreatedOnceByManyProcesses)
{
    std::vector<pid_t> creators;
    for (int i = 0; i < 8; ++i) {
        creators.push_back(startProgram({DESK_MONITOR, "show", "settings"}, directory + "/creators.log"));
    }
    EXPECT_EQ(registerText(25, 1), "0");
    for (pid_t creator : creators) {
        EXPECT_EQ(endOf(creator), 0) << contentOf(directory + "/creators.log");
    }
}

TEST_F(Store, MayBeAnotherFromOneCallToTheNext)
{
    const std::string other = directory + "/other.db";
    ASSERT_EQ(command("set video_input 1"), 0);
    ASSERT_EQ(command("--store " + other + " set video_input 2"), 0);
    EXPECT_EQ(registerText(25, 1), "1");
    setenv("DESK_MONITOR_STORE", other.c_str(), 1);
    EXPECT_EQ(registerText(25, 1), "2");
    setenv("DESK_MONITOR_STORE", store.c_str(), 1);
    EXPECT_EQ(registerText(25, 1), "1");
}

TEST_F(Store, MayBeRemovedAndBeginsAnew)
{
    ASSERT_EQ(command("set video_input 1"), 0);
    EXPECT_EQ(registerText(25, 1), "1");
    for (const char *suffix : {"", "-wal", "-shm"}) {
        std::filesystem::remove(store + suffix);
    }
    EXPECT_EQ(registerText(25, 1), "0");
}

/* Whoever wonders where his settings and users have gone finds it in the logs of the processes. */
TEST_F(Store, ThatVanishedAndBeganAnewIsSaid)
{
    const std::string news = "settings store " + store +
                             " has vanished; a new one begins with factory settings and the factory's users: "
                             "root (administrator), admin (administrator), operator\n";
    const std::string fresh = "settings store " + store +
                              " is new; it begins with factory settings and the factory's users: "
                              "root (administrator), admin (administrator), operator\n";
    const auto vanish = [&] {
        for (const char *suffix : {"", "-wal", "-shm"}) {
            std::filesystem::remove(store + suffix);
        }
    };
    testing::internal::CaptureStderr();
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "monitor_support: " + fresh);
    vanish();
    testing::internal::CaptureStderr();
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "monitor_support: " + news);

    startEngine();
    EXPECT_EQ(engineLog().find("settings store " + store + " "), std::string::npos) << "it is there";
    EXPECT_EQ(registerText(25, 1), "0");
    vanish();
    const char *getGroup9 = "01000000 0800 0700 00 00 09";
    request(getGroup9);
    EXPECT_TRUE(engineLogged("desk-engine: " + news)) << engineLog();
    ASSERT_EQ(command("--store " + directory + "/other.db show settings"), 0);
    std::filesystem::rename(directory + "/other.db", store);
    testing::internal::CaptureStderr();
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "monitor_support: settings store " + store +
                  " was replaced; settings and users are those of the new file\n");
}

/* Below /var/tmp everybody can make a directory of that name first. */
TEST_F(Store, IsNotMadeInADirectoryThatIsNotTheUsersAlone)
{
    unsetenv("DESK_MONITOR_STORE");
    setenv("XDG_STATE_HOME", directory.c_str(), 1);
    const std::string own = directory + "/desk-monitor";
    const auto complaint = [&] {
        EXPECT_EQ(command("show settings"), 1);
        EXPECT_EQ(registerText(25, 1), "failure");
        EXPECT_FALSE(std::filesystem::exists(own + "/store.db"));
        return commandErrors;
    };
    const std::string remedy = "; remove it, or name another store with DESK_MONITOR_STORE\n";
    ASSERT_TRUE(std::filesystem::create_directory(own));
    std::filesystem::permissions(own, std::filesystem::perms(0777));
    EXPECT_EQ(complaint(), "desk-monitor: the directory " + own + " can be written by other users" + remedy);
    std::filesystem::permissions(own, std::filesystem::perms(0755));
    if (geteuid() == 0) { /* who else could give it away? */
        {
            ASSERT_EQ(chown(own.c_str(), 65534, 65534), 0);
            EXPECT_EQ(complaint(),
                      "desk-monitor: the directory " + own + " belongs to another user" + remedy);
            ASSERT_EQ(chown(own.c_str(), 0, 0), 0);
        }
    }
    std::filesystem::remove(own);
    ASSERT_TRUE(std::filesystem::create_directory(directory + "/elsewhere"));
    std::filesystem::create_symlink(directory + "/elsewhere", own);
    EXPECT_EQ(complaint(), "desk-monitor: the directory " + own + " is no directory" + remedy);
    std::filesystem::remove(own);
    ASSERT_TRUE(std::filesystem::create_directory(own));
    EXPECT_EQ(registerText(25, 1), "0");
    unsetenv("XDG_STATE_HOME");
}

TEST_F(Store, ThatIsNoStoreFails)
{
    std::ofstream(store) << std::string(4096, 'x');
    EXPECT_EQ(registerText(25, 1), "failure");
    EXPECT_EQ(command("show settings"), 1);
    EXPECT_NE(commandErrors.find("desk-monitor: settings store "), std::string::npos) << commandErrors;
}

/* SQLite forbids to carry a connection over a fork. */
TEST_F(Store, IsNotOpenInAForkedChild)
{
    const auto opened = [this] {
        int count = 0;
        for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code gone; /* the iterator's own */
            const std::string target = std::filesystem::read_symlink(entry.path(), gone).string();
            count += target.starts_with(store) ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(registerText(25, 1), "0");
    EXPECT_GT(opened(), 0);
    const pid_t child = fork();
    if (child == 0) {
        _exit(opened());
    }
    EXPECT_EQ(endOf(child), 0);
}

/* A child that was forked off uses a connection of its own; the parent's is as good as before. */
TEST_F(Store, WorksOnBothSidesOfAFork)
{
    EXPECT_EQ(registerText(25, 1), "0");
    const pid_t child = fork();
    if (child == 0) {
        char error[ERROR_TEXT_SIZE];
        const bool good = registerText(25, 1) == "0" && UpdateDisplayName("Child", error) == 0;
        _exit(good ? 0 : 1);
    }
    EXPECT_EQ(endOf(child), 0);
    MonitorInfo info;
    ASSERT_EQ(GetMoinitorInfo(&info), 0);
    EXPECT_STREQ(info.DisplayName, "Child");
    char error[ERROR_TEXT_SIZE];
    EXPECT_EQ(UpdateDisplayName("Parent", error), 0);
}

TEST_F(Store, ServesSeveralThreads)
{
    std::vector<std::thread> threads;
    std::vector<int> failures(4);
    for (std::size_t t = 0; t < 4; ++t) {
        threads.emplace_back([&failures, t] {
            for (int i = 0; i < 200; ++i) {
                char text[REGISTER_TEXT_SIZE], error[ERROR_TEXT_SIZE];
                failures[t] += GetRegisterValue(0, 0, text) != 0 || strcmp(text, "250") != 0;
                if (i % 50 == 0) {
                    failures[t] += UpdateDisplayName("Thread", error) != 0;
                }
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures, std::vector<int>(4));
}

/* The defined dynamic symbols, as nm lists them. */
std::set<std::string> exported(const char *library)
{
    char **lines = nullptr;
    EXPECT_EQ(
        runcommand((std::string("nm -D --defined-only -j ") + library).c_str(), nullptr, &lines, nullptr), 0);
    std::set<std::string> symbols;
    for (char **line = lines; line != nullptr && *line != nullptr; ++line) {
        symbols.insert(std::string(*line, strcspn(*line, "\n")));
    }
    freeresultbuf(lines);
    return symbols;
}

TEST_F(Store, AndShellLibrariesExportTheSeamAlone)
{
    EXPECT_EQ(exported(MONITOR_SUPPORT), (std::set<std::string>{"GetMoinitorInfo",
                                                                "GetMonitorStatus",
                                                                "SpearEngineMessageQueueCreate",
                                                                "SendStatusMessagetoSource",
                                                                "RecvMessageFromSource",
                                                                "GetRegisterValue",
                                                                "GetDisplayManagementInfo",
                                                                "GetImageAdjustmentInfo",
                                                                "GetPIPSettingsInfo",
                                                                "GetOSDMenuAndMessagesInfo",
                                                                "GetColorSpaceInfoById",
                                                                "GetBezelButtonInfo",
                                                                "GetFunctionButtonInfoById",
                                                                "GetTestPatternInfo",
                                                                "GetRemoteManagementServerInfo",
                                                                "GetIPAddress",
                                                                "ParseIPV4Address",
                                                                "ValidateInputArgs",
                                                                "IsAdminUser",
                                                                "ValidateDisplayName",
                                                                "UpdateDisplayName",
                                                                "ValidateDeploymentDate",
                                                                "UpdateDeploymentDate",
                                                                "UpdateDeploymentLocation"}));
    EXPECT_EQ(exported(DESK_SHELL), (std::set<std::string>{"runcommand", "freeresultbuf"}));
}

} // namespace
