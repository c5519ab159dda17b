// SPDX-License-Identifier: Apache-2.0
// The accounts file.
#include "test_host.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <crypt.h>
#include <ctime>
#include <mutex>
#include <sys/stat.h>
#include <thread>

namespace
{

using testing::HasSubstr;

class Accounts : public testing::Test
{
  protected:
    std::string file() const
    {
        return directory_.file("accounts");
    }

    /** What loading a file with that text complains about. */
    std::string problemOf(std::string_view text)
    {
        test::writeFile(file(), text);
        host::Accounts accounts(file());
        std::string problem;
        const bool loaded = accounts.load(problem);
        EXPECT_EQ(loaded, problem.empty());
        return problem;
    }

    test::TemporaryDirectory directory_;
};

TEST_F(Accounts, PasswordsAreVerified)
{
    test::writeFile(file(), "# people\n\n" + test::quickAccount("one", "first") +
                                test::quickAccount("two", "second: with colon"));
    host::Accounts accounts(file());
    std::string problem;
    ASSERT_TRUE(accounts.load(problem)) << problem;
    EXPECT_TRUE(accounts.verify("one", "first"));
    EXPECT_TRUE(accounts.verify("two", "second: with colon"));
    EXPECT_FALSE(accounts.verify("one", "second: with colon"));
    EXPECT_FALSE(accounts.verify("one", "First"));
    EXPECT_FALSE(accounts.verify("one", ""));
    EXPECT_FALSE(accounts.verify("One", "first"));
    EXPECT_FALSE(accounts.verify("", ""));
    EXPECT_FALSE(accounts.verify("three", "first"));
    EXPECT_FALSE(accounts.verify("# people", ""));
    EXPECT_FALSE(accounts.verify("one", std::string(10000, 'x')));
    EXPECT_FALSE(accounts.verify("one", std::string_view("first\0", 6)));
}

TEST_F(Accounts, GoodPairsAreHashedOnce)
{
    test::writeFile(file(), test::quickAccount("one", "first"));
    host::Accounts accounts(file());
    std::string problem;
    ASSERT_TRUE(accounts.load(problem)) << problem;
    EXPECT_EQ(accounts.hashCount(), 0u);
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(accounts.verify("one", "first"));
    }
    EXPECT_EQ(accounts.hashCount(), 1u);
    EXPECT_FALSE(accounts.verify("one", "wrong"));
    EXPECT_FALSE(accounts.verify("one", "wrong"));
    EXPECT_EQ(accounts.hashCount(), 3u) << "bad ones are not remembered";
    EXPECT_FALSE(accounts.verify("nobody", "first"));
    EXPECT_EQ(accounts.hashCount(), 4u) << "a user who does not exist costs the same";
    EXPECT_TRUE(accounts.verify("one", "first"));
    EXPECT_EQ(accounts.hashCount(), 4u);
}

TEST_F(Accounts, LockedAccountsStayOut)
{
    test::writeFile(file(), "locked:!\nstarred:*\nempty:\nstrange:abc\n");
    host::Accounts accounts(file());
    std::string problem;
    ASSERT_TRUE(accounts.load(problem)) << problem;
    for (const char *user : {"locked", "starred", "empty", "strange"}) {
        for (const char *password : {"", "!", "*", "abc", "*0", "*1"}) {
            EXPECT_FALSE(accounts.verify(user, password)) << user << " " << password;
        }
    }
}

/** Of every method: cut off anywhere it still looks like a hash, but nobody has a password for it. */
TEST_F(Accounts, AHashThatIsCutOffIsLocked)
{
    crypt_data memory = {};
    for (const char *prefix : {"$y$", "$gy$", "$7$", "$2b$", "$2y$", "$2a$", "$6$", "$5$"}) {
        char setting[CRYPT_GENSALT_OUTPUT_SIZE];
        ASSERT_NE(crypt_gensalt_rn(prefix, 0, nullptr, 0, setting, sizeof setting), nullptr) << prefix;
        const std::string hash = crypt_r("first", setting, &memory);
        EXPECT_TRUE(host::isUsableHash(hash)) << hash;
        for (std::size_t length = 0; length < hash.size(); ++length) {
            EXPECT_FALSE(host::isUsableHash(hash.substr(0, length))) << hash.substr(0, length);
        }
        EXPECT_FALSE(host::isUsableHash(hash + "a")) << hash;
    }
}

TEST_F(Accounts, ChangesAreNoticed)
{
    test::writeFile(file(), test::quickAccount("one", "first"));
    host::Accounts accounts(file());
    std::string problem;
    ASSERT_TRUE(accounts.load(problem)) << problem;
    EXPECT_TRUE(accounts.verify("one", "first"));
    ASSERT_TRUE(host::addAccount(file(), "one", "changed", {}, problem)) << problem;
    // The file is looked at once a second.
    for (int i = 0; i < 600 && accounts.verify("one", "first"); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_FALSE(accounts.verify("one", "first"));
    EXPECT_TRUE(accounts.verify("one", "changed"));
    unlink(file().c_str());
    testing::internal::CaptureStderr();
    for (int i = 0; i < 600 && accounts.verify("one", "changed"); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_FALSE(accounts.verify("one", "changed")) << "without a file there is no account";
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("accounts: No such file or directory"));
}

TEST_F(Accounts, AreAdded)
{
    std::string problem;
    ASSERT_TRUE(host::addAccount(file(), "one", "first", {}, problem)) << problem;
    ASSERT_TRUE(host::addAccount(file(), "two", "second", {}, problem)) << problem;
    ASSERT_TRUE(host::addAccount(file(), "one", "third", {}, problem)) << problem;
    struct stat status = {};
    stat(file().c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    const std::string text = test::readFile(file());
    EXPECT_EQ(test::count(text, "\n"), 2u);
    EXPECT_EQ(text.find("third"), std::string::npos);
    host::Accounts accounts(file());
    ASSERT_TRUE(accounts.load(problem)) << problem;
    EXPECT_TRUE(accounts.verify("one", "third"));
    EXPECT_FALSE(accounts.verify("one", "first"));
    EXPECT_TRUE(accounts.verify("two", "second"));
}

TEST_F(Accounts, BadAccountsAreNotAdded)
{
    std::string problem;
    EXPECT_FALSE(host::addAccount(file(), "a:b", "x", {}, problem));
    EXPECT_FALSE(host::addAccount(file(), "", "x", {}, problem));
    EXPECT_FALSE(host::addAccount(file(), "a b", "x", {}, problem));
    EXPECT_FALSE(host::addAccount(file(), "a\n", "x", {}, problem));
    EXPECT_EQ(problem, "a user name has no blanks, control characters or colons");
    EXPECT_FALSE(host::addAccount(file(), "a", "", {}, problem));
    EXPECT_EQ(problem, "the password is empty or too long");
    EXPECT_FALSE(host::addAccount(file(), "a", std::string(10000, 'x'), {}, problem));
    EXPECT_FALSE(host::addAccount("/nonexistent/accounts", "a", "x", {}, problem));
    EXPECT_THAT(problem, HasSubstr("/nonexistent/accounts"));
    test::writeFile(file(), "broken");
    EXPECT_FALSE(host::addAccount(file(), "a", "x", {}, problem)) << "a file that is not understood is kept";
    EXPECT_EQ(test::readFile(file()), "broken");
}

TEST_F(Accounts, BrokenFilesAreTold)
{
    EXPECT_EQ(problemOf("a:b\nnonsense\n"), file() + ":2: expected \"user:hash\"");
    EXPECT_EQ(problemOf(":b\n"), file() + ":1: expected \"user:hash\"");
    EXPECT_EQ(problemOf("a:b\na:c\n"), file() + ":2: the account a is there twice");
    EXPECT_EQ(problemOf("a:b:1000:more\n"), "");
    host::Accounts absent("/nonexistent/accounts");
    std::string problem;
    EXPECT_FALSE(absent.load(problem));
    EXPECT_EQ(problem, "/nonexistent/accounts: No such file or directory");
}

TEST_F(Accounts, RolesAreKept)
{
    std::string problem;
    ASSERT_TRUE(host::addAccount(file(), "one", "first", host::Role::reader, problem)) << problem;
    ASSERT_TRUE(host::addAccount(file(), "two", "second", {}, problem)) << problem;
    ASSERT_TRUE(host::addAccount(file(), "one", "changed", {}, problem)) << problem;
    host::AccountMap accounts;
    ASSERT_TRUE(host::readAccounts(file(), accounts, problem)) << problem;
    EXPECT_EQ(accounts["one"].role, host::Role::reader) << "a new password leaves the role";
    EXPECT_EQ(accounts["two"].role, host::Role::operatorUser);
    ASSERT_TRUE(host::addAccount(file(), "one", "changed", host::Role::administrator, problem)) << problem;
    host::Accounts loaded(file());
    ASSERT_TRUE(loaded.load(problem)) << problem;
    EXPECT_EQ(loaded.login("one", "changed"), host::Role::administrator);
    EXPECT_EQ(loaded.recall("one", "changed"), host::Role::administrator);
    EXPECT_EQ(loaded.recall("one", "first"), std::nullopt);
    EXPECT_EQ(problemOf("a:b:readr\n"),
              file() + ":1: \"readr\" is no role; there are administrator, operator and reader");
}

TEST_F(Accounts, AreRemoved)
{
    test::writeFile(file(),
                    "# people\n" + test::quickAccount("one", "first") + test::quickAccount("two", "second"));
    std::string problem;
    ASSERT_TRUE(host::removeAccount(file(), "one", problem)) << problem;
    EXPECT_EQ(test::readFile(file()), "# people\n" + test::quickAccount("two", "second"))
        << "the other lines stay as they are";
    EXPECT_FALSE(host::removeAccount(file(), "one", problem));
    EXPECT_EQ(problem, file() + ": there is no account one");
}

TEST_F(Accounts, ConcurrentChangesLoseNothing)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([this, i] {
            std::string problem;
            EXPECT_TRUE(host::addAccount(file(), "user" + std::to_string(i), "password", {}, problem))
                << problem;
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    host::AccountMap accounts;
    std::string problem;
    ASSERT_TRUE(host::readAccounts(file(), accounts, problem)) << problem;
    EXPECT_EQ(accounts.size(), 8u);
}

TEST_F(Accounts, WeakHashesAreRefused)
{
    for (const char *hash : {"$1$salt$qJH7.N4xYta3aEG/dfqo/0", "rqXexS6ZhobKA",
                             "$3$$8846f7eaee8fb117ad06bdd830b7586c", "_J9..rasmBYk8r9AiWNc"}) {
        EXPECT_EQ(problemOf(std::string("old:") + hash + "\n"),
                  file() + ":1: the hash of old is of a weak method; give the account a new password");
    }
    EXPECT_EQ(problemOf(test::quickAccount("one", "first")), "");
}

TEST_F(Accounts, AFileThatOthersCanWriteIsRefused)
{
    test::writeFile(file(), test::quickAccount("one", "first"));
    for (const mode_t mode : {0622u, 0660u, 0602u}) {
        chmod(file().c_str(), mode);
        host::Accounts accounts(file());
        std::string problem;
        EXPECT_FALSE(accounts.load(problem));
        EXPECT_EQ(problem, file() + ": others than its owner can write it; chmod go-w " + file());
        EXPECT_FALSE(host::addAccount(file(), "two", "second", {}, problem));
    }
    chmod(file().c_str(), 0640);
    std::string problem;
    ASSERT_TRUE(host::addAccount(file(), "two", "second", {}, problem)) << problem;
    struct stat status = {};
    stat(file().c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0640u) << "the mode stays";
}

TEST_F(Accounts, NamesAndPasswordsThatCannotBeKeptAreRefused)
{
    std::string problem;
    EXPECT_FALSE(host::addAccount(file(), "#one", "x", {}, problem));
    EXPECT_EQ(problem, "a user name does not begin with #");
    EXPECT_FALSE(host::addAccount(file(), "one", std::string("a\0b", 3), {}, problem));
    EXPECT_EQ(problem, "a password has no NUL");
}

/** As many hashes, with the same method and cost, for whoever it is: the times are equal by construction. */
TEST_F(Accounts, UnknownAndLockedUsersCostTheSame)
{
    const std::string known = test::quickAccount("known", "first");
    test::writeFile(file(), known + "locked:!" + known.substr(known.find(':') + 1) + "starred:*\n");
    host::Accounts accounts(file());
    std::string problem;
    ASSERT_TRUE(accounts.load(problem)) << problem;
    unsigned long hashes = 0;
    for (const char *user : {"known", "locked", "starred", "unknown"}) {
        EXPECT_FALSE(accounts.verify(user, "wrong"));
        EXPECT_EQ(accounts.hashCount(), ++hashes) << user;
    }
    EXPECT_FALSE(accounts.verify("locked", "first"));
}

/** And not only as many: hashes of the same method and cost. Compared is the processor time of this thread,
 * the least of several; a hash of another cost takes at least ten times as much, or a tenth. */
TEST_F(Accounts, UnknownAndLockedUsersTakeTheWorkOfKnownOnes)
{
    crypt_data memory = {};
    const std::string cheap = crypt_r("first", "$5$rounds=1000$0123456789abcdef$", &memory);
    const std::string dear = crypt_r("first", "$5$rounds=50000$0123456789abcdef$", &memory);
    for (const std::string &hash : {cheap, dear}) {
        test::writeFile(file(), "known:" + hash + "\nlocked:!" + hash + "\nstarred:*\n");
        host::Accounts accounts(file());
        std::string problem;
        ASSERT_TRUE(accounts.load(problem)) << problem;
        const auto work = [&accounts](const char *user) {
            double least = 1e9;
            for (int i = 0; i < 5; ++i) {
                timespec begin = {};
                timespec end = {};
                clock_gettime(CLOCK_THREAD_CPUTIME_ID, &begin);
                EXPECT_FALSE(accounts.verify(user, "wrong"));
                clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
                least = std::min(least, static_cast<double>(end.tv_sec - begin.tv_sec) +
                                            static_cast<double>(end.tv_nsec - begin.tv_nsec) / 1e9);
            }
            return least;
        };
        for (const char *user : {"locked", "starred", "unknown"}) {
            double ratio = 0;
            for (int i = 0; i < 5 && (ratio < 0.5 || ratio > 2);
                 ++i) { // what disturbs is not there every time
                ratio = work(user) / work("known");
            }
            EXPECT_GT(ratio, 0.5) << user;
            EXPECT_LT(ratio, 2) << user;
        }
    }
}

/** Whoever waits in the queue as preferred goes before those who came first. */
TEST(Turnstile, PreferredOnesGoFirst)
{
    host::Turnstile turnstile;
    turnstile.enter(true);
    std::mutex mutex;
    std::string order;
    std::atomic<int> started = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 6; ++i) {
        threads.emplace_back([&, isPreferred = i >= 3] {
            ++started;
            turnstile.enter(isPreferred);
            {
                const std::lock_guard lock(mutex);
                order += isPreferred ? 'p' : 'o';
            }
            turnstile.leave();
        });
        while (started <= i || turnstile.waiting() <= static_cast<unsigned>(i)) {
            std::this_thread::yield();
        }
    }
    turnstile.leave();
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(order, "pppooo");
}

} // namespace
