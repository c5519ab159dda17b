// SPDX-License-Identifier: Apache-2.0
// The file of monitors, the choice of monitors, passwords, directories, and work on many monitors.
#include "scratch.h"
#include "site/credentials.h"
#include "site/directories.h"
#include "site/monitors.h"
#include "site/pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <latch>
#include <set>
#include <thread>

namespace displayctl::site
{
namespace
{

namespace fs = std::filesystem;

constexpr const char *contractFile = R"(defaults:
  user: admin
  password-file: secrets/password
  ca-file: /etc/ssl/certs/facility.pem
names: site-names.yaml            # what this site calls codes the maker gives no meaning
monitors:
  suite4-a: { url: "https://192.168.10.21:5989", labels: [suite4, hdr] }
  suite4-b: { url: "https://viewer@192.168.10.22:5990/root/display", labels: [suite4], insecure: true }
)";

class Site : public testing::Test
{
  protected:
    Site()
    {
        for (const char *name : {"DISPLAYCTL_CONFIG", "DISPLAYCTL_MONITOR", "DISPLAYCTL_PASSWORD"}) {
            unsetenv(name);
        }
        setenv("HOME", scratch_.path().c_str(), 1);
        setenv("XDG_CONFIG_HOME", (scratch_.path() / "config").c_str(), 1);
        setenv("XDG_STATE_HOME", (scratch_.path() / "state").c_str(), 1);
    }

    [[nodiscard]] fs::path write(const std::string &name, const std::string &content) const
    {
        return scratch_.write(name, content);
    }

    [[nodiscard]] Configuration read(const std::string &content) const
    {
        return readConfiguration({.configFile = write("monitors.yaml", content)});
    }

    /** What is wrong with the content, without the name of the directory. */
    [[nodiscard]] std::string problem(const std::string &content) const
    {
        try {
            static_cast<void>(read(content));
        } catch (const Error &error) {
            return scratch_.without(error.what());
        }
        return "nothing";
    }

    [[nodiscard]] std::string choiceProblem(const Configuration &configuration, const Options &options) const
    {
        try {
            static_cast<void>(chooseMonitors(configuration, options));
        } catch (const Error &error) {
            return scratch_.without(error.what());
        }
        return "nothing";
    }

    static std::string namesOf(const std::vector<Monitor> &monitors)
    {
        std::string names;
        for (const Monitor &monitor : monitors) {
            names += (names.empty() ? "" : " ") + monitor.name;
        }
        return names;
    }

    Scratch scratch_;
};

TEST_F(Site, ReadsTheFileOfMonitors)
{
    static_cast<void>(
        write("site-names.yaml",
              "osd.language: { 0: English, 4: German }\nfunction.action: { 3: \"blue only\" }\n"));
    const Configuration configuration = read(contractFile);
    EXPECT_TRUE(configuration.exists);
    ASSERT_EQ(configuration.monitors.size(), 2U);
    const Monitor &first = configuration.monitors[0];
    EXPECT_EQ(first.name, "suite4-a");
    EXPECT_TRUE(first.endpoint.tls);
    EXPECT_EQ(first.endpoint.host, "192.168.10.21");
    EXPECT_EQ(first.endpoint.port, 5989U);
    EXPECT_EQ(first.endpoint.nameSpace, "root/cimv2");
    EXPECT_EQ(first.endpoint.user, "admin");
    EXPECT_FALSE(first.endpoint.password.has_value());
    EXPECT_EQ(first.endpoint.caFile, "/etc/ssl/certs/facility.pem");
    EXPECT_FALSE(first.endpoint.insecure);
    EXPECT_EQ(first.passwordFile, scratch_.path() / "secrets/password");
    EXPECT_EQ(first.labels, (std::vector<std::string>{"suite4", "hdr"}));
    const Monitor &second = configuration.monitors[1];
    EXPECT_EQ(second.endpoint.user, "viewer");
    EXPECT_EQ(second.endpoint.nameSpace, "root/display");
    EXPECT_TRUE(second.endpoint.insecure);
    EXPECT_EQ(configuration.names.at("osd.language").at(4), "German");
    EXPECT_EQ(configuration.names.at("function.action").at(3), "blue only");
}

TEST_F(Site, AHomeDirectoryInAFileNameIsTheUsers)
{
    const Configuration configuration =
        read("monitors:\n  a: { url: \"http://127.0.0.1:1\", password-file: ~/secret, ca-file: /x }\n");
    EXPECT_EQ(configuration.monitors[0].passwordFile, scratch_.path() / "secret");
}

TEST_F(Site, WhatIsWrongInAFileIsToldWithItsLine)
{
    EXPECT_EQ(problem("monitors: [\n"), "monitors.yaml:2: this is not YAML: end of sequence flow not found");
    EXPECT_EQ(problem("- a\n"), "monitors.yaml:1: the file begins with names, such as `monitors:`");
    EXPECT_EQ(problem("monitor: {}\n"),
              "monitors.yaml:1: the file has no \"monitor\"; there are: defaults, names, monitors");
    EXPECT_EQ(problem("defaults:\n  url: x\n"),
              "monitors.yaml:2: defaults has no \"url\"; there are: user, password-file, ca-file, insecure");
    EXPECT_EQ(problem("monitors:\n  a: { labels: [x] }\n"), "monitors.yaml:2: the monitor a has no url");
    EXPECT_EQ(
        problem("monitors:\n  a: { url: \"http://h:1\" }\n  b: { url: \"http://h:2\", colour: red }\n"),
        "monitors.yaml:3: a monitor has no \"colour\"; there are: url, labels, user, password-file, ca-file, insecure");
    EXPECT_EQ(problem("monitors:\n  a: { url: \"http://h:1\" }\n  a: { url: \"http://h:2\" }\n"),
              "monitors.yaml:3: \"a\" stands twice in monitors");
    EXPECT_EQ(problem("monitors:\n  a: { url: \"http://h:1\", labels: x }\n"),
              "monitors.yaml:2: labels is a list, such as `labels: [suite4, hdr]`");
    EXPECT_EQ(problem("monitors:\n  a: { url: \"http://h:1\", insecure: maybe }\n"),
              "monitors.yaml:2: insecure is true or false");
    EXPECT_EQ(
        problem("monitors:\n  a: http://h:1\n"),
        "monitors.yaml:2: the monitor a is a list of names with what belongs to each, such as `name: value`");
    EXPECT_EQ(
        problem("monitors:\n  a b: { url: \"http://h:1\" }\n"),
        "monitors.yaml:2: a monitor cannot be called \"a b\"; names are without blanks and without = / @ , and "
        "none is `all` or begins with -");
    EXPECT_TRUE(problem("monitors:\n  all: { url: \"http://h:1\" }\n")
                    .starts_with("monitors.yaml:2: a monitor cannot"));
    EXPECT_EQ(
        problem("monitors:\n\n  a:\n    url: http://h:99999\n"),
        "monitors.yaml:4: the port of a URL is a number from 1 to 65535, not \"99999\"; a URL is http://HOST:PORT "
        "or https://HOST:PORT, with USER@ before and /NAMESPACE behind it where needed");
    EXPECT_EQ(problem("names: nowhere.yaml\n"), "nowhere.yaml: cannot be read");
    EXPECT_EQ(problem("names: /proc/self/mem # whose reading fails\n"), "/proc/self/mem: cannot be read");
    static_cast<void>(write("names.yaml", "osd.language:\n  four: German\n"));
    EXPECT_EQ(problem("names: names.yaml\n"), "names.yaml:2: the code \"four\" is no whole number");
}

TEST_F(Site, AnEmptyFileListsNothing)
{
    EXPECT_TRUE(read("").monitors.empty());
    EXPECT_TRUE(read("monitors:\n").monitors.empty());
}

TEST_F(Site, AFileThatWasNamedHasToBeThereTheUsualOneNot)
{
    const Configuration usual = readConfiguration({});
    EXPECT_FALSE(usual.exists);
    EXPECT_EQ(usual.file, scratch_.path() / "config/displayctl/monitors.yaml");
    EXPECT_THROW(static_cast<void>(readConfiguration({.configFile = "/nowhere/monitors.yaml"})), Error);
    setenv("DISPLAYCTL_CONFIG", "/nowhere/else.yaml", 1);
    EXPECT_THROW(static_cast<void>(readConfiguration({})), Error);
    setenv("DISPLAYCTL_CONFIG", write("other.yaml", "monitors:\n  x: { url: \"http://h:1\" }\n").c_str(), 1);
    EXPECT_EQ(namesOf(readConfiguration({}).monitors), "x");
}

constexpr const char *threeMonitors = "defaults: { user: boss }\nmonitors:\n"
                                      "  one: { url: \"http://127.0.0.1:1\", labels: [left, wall] }\n"
                                      "  two: { url: \"http://127.0.0.1:2\", labels: [wall] }\n"
                                      "  three: { url: \"http://127.0.0.1:3\" }\n";

TEST_F(Site, MonitorsAreChosenByNameLabelAllAndUrlEachOnce)
{
    const Configuration configuration = read(threeMonitors);
    const auto chosen = [&](std::vector<std::string> selectors) {
        return namesOf(chooseMonitors(configuration, {.monitors = std::move(selectors)}));
    };
    EXPECT_EQ(chosen({"two"}), "two");
    EXPECT_EQ(chosen({"three", "one"}), "one three");
    EXPECT_EQ(chosen({"label=wall"}), "one two");
    EXPECT_EQ(chosen({"label=wall", "two", "label=left"}), "one two");
    EXPECT_EQ(chosen({"all"}), "one two three");
    EXPECT_EQ(chosen({"http://me@[::1]:5/root/x", "two", "http://me@[::1]:5/root/x"}), "two [::1]:5");
}

TEST_F(Site, AMonitorCalledByUrlTakesTheDefaults)
{
    const Configuration configuration = read(threeMonitors);
    const std::vector<Monitor> chosen =
        chooseMonitors(configuration, {.monitors = {"http://host:7", "https://me@other"}});
    EXPECT_EQ(chosen[0].endpoint.user, "boss");
    EXPECT_EQ(chosen[1].endpoint.user, "me");
    EXPECT_EQ(chosen[1].name, "other:5989");
}

TEST_F(Site, WithoutASelectorItIsTheOneOfTheEnvironmentOrTheOnlyOneOfTheFile)
{
    const Configuration three = read(threeMonitors);
    EXPECT_EQ(choiceProblem(three, {}),
              "which monitor? -m NAME, -m label=LABEL or -m all; there are: one, two, three");
    setenv("DISPLAYCTL_MONITOR", "two", 1);
    EXPECT_EQ(namesOf(chooseMonitors(three, {})), "two");
    EXPECT_EQ(namesOf(chooseMonitors(three, {.monitors = {"one"}})), "one");
    unsetenv("DISPLAYCTL_MONITOR");
    const Configuration one = read("monitors:\n  only: { url: \"http://127.0.0.1:1\" }\n");
    EXPECT_EQ(namesOf(chooseMonitors(one, {})), "only");
}

TEST_F(Site, ASelectorThatFitsNothingIsToldWithWhatThereIs)
{
    const Configuration configuration = read(threeMonitors);
    EXPECT_EQ(choiceProblem(configuration, {.monitors = {"four"}}),
              "no monitor is called four in monitors.yaml; there are: one, two, three");
    EXPECT_EQ(choiceProblem(configuration, {.monitors = {"label=right"}}),
              "no monitor has the label right in monitors.yaml; there are: left, wall");
    EXPECT_EQ(choiceProblem(configuration, {.monitors = {"admin:secret@host"}}),
              "no monitor is called so in monitors.yaml; there are: one, two, three");
    EXPECT_EQ(choiceProblem(readConfiguration({}), {.monitors = {"all"}}),
              "there are no monitors; there is no file of monitors config/displayctl/monitors.yaml");
    EXPECT_EQ(choiceProblem(readConfiguration({}), {}),
              "which monitor? -m http://USER@HOST:PORT names one; there is no file of monitors "
              "config/displayctl/monitors.yaml");
    EXPECT_EQ(choiceProblem(read("monitors:\n"), {.monitors = {"x"}}),
              "no monitor is called x; monitors.yaml lists none");
}

TEST_F(Site, OptionsForCertificatesStandAboveTheFile)
{
    const Configuration configuration =
        read("monitors:\n  a: { url: \"https://h:1\", insecure: true, ca-file: /nowhere.pem }\n"
             "  b: { url: \"https://h:2\", ca-file: /nowhere.pem }\n");
    const fs::path authorities = write("ca.pem", "");
    const std::vector<Monitor> chosen =
        chooseMonitors(configuration, {.monitors = {"all"}, .caFile = authorities});
    EXPECT_EQ(chosen[0].endpoint.caFile, authorities);
    EXPECT_FALSE(chosen[0].endpoint.insecure);
    EXPECT_TRUE(chooseMonitors(configuration, {.monitors = {"b"}, .insecure = true})[0].endpoint.insecure);
    EXPECT_EQ(choiceProblem(configuration, {.monitors = {"b"}}),
              "the ca-file /nowhere.pem of b cannot be read");
}

TEST_F(Site, UrlsAreReadWithAllTheirParts)
{
    const wbem::Endpoint endpoint = parseUrl("HTTPS://some%20one@[fe80::1]:77/root/a/");
    EXPECT_TRUE(endpoint.tls);
    EXPECT_EQ(endpoint.user, "some one");
    EXPECT_EQ(endpoint.host, "fe80::1");
    EXPECT_EQ(endpoint.port, 77U);
    EXPECT_EQ(endpoint.nameSpace, "root/a");
    EXPECT_EQ(endpoint.authority(), "[fe80::1]:77");
    EXPECT_EQ(parseUrl("http://h").port, 5988U);
    EXPECT_EQ(parseUrl("https://h/").port, 5989U);
    for (const char *url :
         {"ftp://h:1", "http://", "http://:1", "http://h:0", "http://h:1x", "http://h:", "http://[::1",
          "http://@h:1", "http://%4@h:1", "http://h:1/a?b", "http://a b:1", "http://[::1]5"}) {
        EXPECT_THROW(static_cast<void>(parseUrl(url)), Error) << url;
    }
}

TEST_F(Site, AUrlWithAPasswordIsRefusedAndNotRepeated)
{
    for (const char *url : {"http://admin:s3cret@h:1", "http://admin:s3/cret@h:1", "http://admin:s3@cret@h:1",
                            "http://:s3cret@h:1", "http://admin:@h:1"}) {
        try {
            static_cast<void>(parseUrl(url));
            ADD_FAILURE() << url;
        } catch (const Error &error) {
            const std::string text = error.what();
            EXPECT_EQ(text.find("s3"), std::string::npos) << text;
            EXPECT_EQ(text.find("cret"), std::string::npos) << text;
            EXPECT_NE(text.find("DISPLAYCTL_PASSWORD"), std::string::npos) << text;
        }
    }
    const std::string inFile = problem("monitors:\n  a: { url: \"http://admin:s3cret@h:1\" }\n");
    EXPECT_TRUE(inFile.starts_with("monitors.yaml:2: a URL with a password is refused")) << inFile;
    EXPECT_EQ(inFile.find("s3cret"), std::string::npos);
}

Monitor withFile(const fs::path &file)
{
    Monitor monitor;
    monitor.endpoint.user = "admin";
    monitor.passwordFile = file;
    return monitor;
}

TEST_F(Site, PasswordsComeFromTheEnvironmentElseFromTheFile)
{
    const fs::path file = write("password", "from the file \r\nsecond line\n");
    fs::permissions(file, fs::perms::owner_read);
    std::vector<Monitor> monitors{withFile(file), Monitor{}, withFile(file)};
    addPasswords(monitors);
    EXPECT_EQ(monitors[0].endpoint.password, "from the file ");
    EXPECT_EQ(monitors[1].endpoint.password, std::nullopt); // no user
    EXPECT_EQ(monitors[2].endpoint.password, "from the file ");
    setenv("DISPLAYCTL_PASSWORD", "from outside", 1);
    addPasswords(monitors);
    EXPECT_EQ(monitors[0].endpoint.password, "from outside");
}

TEST_F(Site, APasswordFileWithAnyPermissionForOthersIsRefused)
{
    for (const fs::perms others : {fs::perms::group_read, fs::perms::group_write, fs::perms::group_exec,
                                   fs::perms::others_read, fs::perms::others_write, fs::perms::others_exec}) {
        const fs::path file = write("password", "secret\n");
        fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | others);
        std::vector<Monitor> monitors{withFile(file)};
        try {
            addPasswords(monitors);
            ADD_FAILURE() << static_cast<unsigned>(others);
        } catch (const Error &error) {
            EXPECT_EQ(
                scratch_.without(error.what()),
                "the password file password is open to others; `chmod 600 password` makes it yours alone");
        }
    }
}

TEST_F(Site, APasswordFileWithoutPasswordIsRefused)
{
    const auto problemOf = [&](const fs::path &file) -> std::string {
        std::vector<Monitor> monitors{withFile(file)};
        try {
            addPasswords(monitors);
        } catch (const Error &error) {
            return scratch_.without(error.what());
        }
        return "nothing";
    };
    const fs::path empty = write("empty", "\nsecond\n");
    fs::permissions(empty, fs::perms::owner_read);
    EXPECT_EQ(problemOf(empty), "the password file empty has no password in its first line");
    EXPECT_EQ(problemOf(scratch_.path() / "none"),
              "the password file none cannot be read: No such file or directory");
    EXPECT_EQ(problemOf("/"), "the password file / is no file");
}

TEST_F(Site, TheStateDirectoryIsMadeForTheUserAlone)
{
    const fs::path directory = stateDirectory();
    EXPECT_EQ(directory, scratch_.path() / "state/displayctl");
    EXPECT_EQ(fs::status(directory).permissions(), fs::perms::owner_all);
    EXPECT_EQ(stateDirectory(), directory);
    setenv("XDG_STATE_HOME", "relative", 1); // as if it were not set
    EXPECT_EQ(stateDirectory(), scratch_.path() / ".local/state/displayctl");
    setenv("XDG_STATE_HOME", write("file", "").c_str(), 1);
    EXPECT_THROW(static_cast<void>(stateDirectory()), Error);
}

TEST(Pool, DoesEachItemOnceAndTellsOfItOnTheCallingThread)
{
    std::vector<std::atomic<int>> times(500);
    std::multiset<std::size_t> done;
    const std::thread::id caller = std::this_thread::get_id();
    forEach(
        times.size(), 8, [&](std::size_t i) { ++times[i]; },
        [&](std::size_t i) {
            EXPECT_TRUE(std::this_thread::get_id() == caller);
            EXPECT_EQ(times[i], 1);
            done.insert(i);
        });
    EXPECT_EQ(done.size(), 500U);
    EXPECT_EQ(std::set<std::size_t>(done.begin(), done.end()).size(), 500U);
}

TEST(Pool, WorksOnAsManyAtOnceAsThereAreJobsAndTellsOfThemAsTheyEnd)
{
    // The first four items wait for one another, and the first three then until the fifth has been told of:
    // that ends only when four run at once, and results do not wait for their turn.
    std::latch four{4};
    std::atomic<int> now = 0;
    std::atomic<int> most = 0;
    std::atomic<bool> isFifthDone = false;
    forEach(
        20, 4,
        [&](std::size_t i) {
            const int running = ++now;
            int known = most;
            while (running > known && !most.compare_exchange_weak(known, running)) {
            }
            if (i < 4) {
                four.arrive_and_wait();
            }
            if (i < 3) {
                isFifthDone.wait(false);
            }
            --now;
        },
        [&](std::size_t i) {
            if (i == 4) {
                isFifthDone = true;
                isFifthDone.notify_all();
            }
        });
    EXPECT_EQ(most, 4);
}

TEST(Pool, WithOneJobThereIsNoThread)
{
    std::vector<std::size_t> order;
    const std::thread::id caller = std::this_thread::get_id();
    forEach(
        3, 1, [&](std::size_t) { EXPECT_TRUE(std::this_thread::get_id() == caller); },
        [&](std::size_t i) { order.push_back(i); });
    EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 2}));
    forEach(
        0, 8, [](std::size_t) { ADD_FAILURE(); }, [](std::size_t) { ADD_FAILURE(); });
}

TEST(Pool, AFailureIsThrownAgainAndNothingMoreIsBegun)
{
    std::atomic<int> begun = 0;
    EXPECT_THROW(forEach(
                     1000, 2,
                     [&](std::size_t i) {
                         ++begun;
                         if (i == 0) {
                             throw Error("no");
                         }
                     },
                     [](std::size_t) {}),
                 Error);
    EXPECT_THROW(forEach(
                     1000, 2, [](std::size_t) {}, [](std::size_t) { throw Error("no"); }),
                 Error);
}

TEST(ExitCode, OfSeveralMonitorsIsTheirsOrFive)
{
    const auto combined = [](std::vector<int> codes) { return combinedExitCode(codes); };
    EXPECT_EQ(combined({}), 0);
    EXPECT_EQ(combined({0, 0}), 0);
    EXPECT_EQ(combined({3, 3}), 3);
    EXPECT_EQ(combined({1}), 1);
    EXPECT_EQ(combined({0, 3}), 5);
    EXPECT_EQ(combined({1, 3}), 5);
    EXPECT_EQ(combined({0, 7}), 7);
    EXPECT_EQ(combined({7, 7}), 7);
    EXPECT_EQ(combined({7, 3}), 5);
    EXPECT_EQ(combined({6, 0}), 5);
}

} // namespace
} // namespace displayctl::site
