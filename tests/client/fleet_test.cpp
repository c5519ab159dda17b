// SPDX-License-Identifier: Apache-2.0
// displayctl and many monitors: what it asks them, over how many connections, and what it makes of their
// answers. How long that takes is measured elsewhere.
#include "monitors.h"
#include "scratch.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <sstream>

namespace responder
{
namespace
{

struct Result {
    int code = -1;
    std::string output;
    std::string errors;

    [[nodiscard]] std::vector<std::string> sortedLines() const
    {
        std::vector<std::string> lines;
        std::istringstream stream{output};
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        std::ranges::sort(lines);
        return lines;
    }
};

class Fleet : public testing::Test
{
  protected:
    Fleet()
    {
        setenv("XDG_STATE_HOME", scratch_.path().c_str(), 1);
        setenv("XDG_CONFIG_HOME", scratch_.path().c_str(), 1);
        for (const char *name : {"DISPLAYCTL_CONFIG", "DISPLAYCTL_MONITOR", "DISPLAYCTL_PASSWORD"}) {
            unsetenv(name);
        }
    }

    [[nodiscard]] Result run(const std::string &arguments) const
    {
        const std::string errors = scratch_.path() / "errors";
        const std::string command = std::string{DISPLAYCTL} + " -c " +
                                    (scratch_.path() / "monitors.yaml").string() + ' ' + arguments + " 2>" +
                                    errors + " </dev/null";
        Result result;
        FILE *pipe = popen(command.c_str(), "r");
        std::array<char, 65536> buffer{};
        while (const std::size_t size = fread(buffer.data(), 1, buffer.size(), pipe)) {
            result.output.append(buffer.data(), size);
        }
        const int status = pclose(pipe);
        result.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.errors = Scratch::read(errors);
        return result;
    }

    void writeConfig(const std::vector<std::string> &addresses, unsigned port) const
    {
        std::string text = "monitors:\n";
        for (std::size_t i = 0; i < addresses.size(); ++i) {
            text += "  m" + std::to_string(1000 + i) + ": { url: \"http://" + addresses[i] + ':' +
                    std::to_string(port) + "\" }\n";
        }
        static_cast<void>(scratch_.write("monitors.yaml", text));
    }

    Scratch scratch_;
};

TEST_F(Fleet, ShowAsksForEachClassOnceOverOneConnection)
{
    Monitors monitors{MONITOR_DATA_DIR};
    const Responder server{[&](const Request &request) { return monitors.answer(request); }};
    writeConfig({"127.0.0.1"}, server.port());
    for (const char *command : {"show", "show --all"}) {
        const Counts before = server.counts();
        const Result result = run(command);
        EXPECT_EQ(result.code, 0) << result.errors;
        EXPECT_NE(result.output.find("preset.1.luminance"), std::string::npos);
        const Counts after = server.counts();
        EXPECT_EQ(after.connections, before.connections + 1);
        EXPECT_GE(after.total(), before.total() + 10);
        for (const auto &[what, count] : after.requests) {
            const auto known = before.requests.find(what);
            EXPECT_LE(count, (known == before.requests.end() ? 0 : known->second) + 1) << what;
        }
    }
}

TEST_F(Fleet, OtherObjectManagersTellTheSameInAnotherManner)
{
    Monitors usual{MONITOR_DATA_DIR};
    Monitors other{MONITOR_DATA_DIR, Manner::different};
    const Responder server{{"127.0.0.1", "127.0.0.2"}, [&](const Request &request) {
                               return request.address == "127.0.0.1" ? usual.answer(request)
                                                                     : other.answer(request);
                           }};
    writeConfig({}, 0);
    const std::string port = std::to_string(server.port());
    const Result one = run("-m http://127.0.0.1:" + port + " show --all");
    const Result two = run("-m http://127.0.0.2:" + port + " show --all");
    EXPECT_EQ(one.code, 0) << one.errors;
    EXPECT_EQ(two.code, 0) << two.errors;
    EXPECT_EQ(one.output, two.output);
    EXPECT_NE(one.output.find("preset.1.luminance"), std::string::npos);
}

TEST_F(Fleet, AThousandMonitorsAreAskedOnceEach)
{
    Monitors monitors{MONITOR_DATA_DIR};
    const std::vector<std::string> addresses = loopbackAddresses(1000);
    const Responder server{addresses, [&](const Request &request) { return monitors.answer(request); }};
    writeConfig(addresses, server.port());
    const Result result = run("get luminance -m all");
    EXPECT_EQ(result.code, 0) << result.errors;
    const std::vector<std::string> lines = result.sortedLines();
    ASSERT_EQ(lines.size(), 1000U);
    EXPECT_EQ(lines.front(), "m1000  250");
    EXPECT_EQ(lines.back(), "m1999  250");
    EXPECT_EQ(server.counts().connections, 1000U);
    EXPECT_EQ(server.counts().total(), 1000U);
}

TEST_F(Fleet, ManyMonitorsAreSetAndASecondRunChangesNothing)
{
    Monitors monitors{MONITOR_DATA_DIR};
    const std::vector<std::string> addresses = loopbackAddresses(40);
    const Responder server{addresses, [&](const Request &request) { return monitors.answer(request); }};
    writeConfig(addresses, server.port());
    EXPECT_EQ(run("-m m1007 set luminance=120").code, 0);

    const Result first = run("set luminance=120 -m all");
    EXPECT_EQ(first.code, 0) << first.errors;
    std::vector<std::string> lines = first.sortedLines();
    ASSERT_EQ(lines.size(), 40U);
    EXPECT_EQ(lines[6], "m1006  preset.1.luminance  250 -> 120");
    EXPECT_EQ(lines[7], "m1007  preset.1.luminance  unchanged");
    EXPECT_EQ(server.counts().requests.at("SetDisplayLuminance ZT_Marovelton_ColorSpace"), 40U);

    const Result second = run("set luminance=120 -m all");
    EXPECT_EQ(second.code, 0) << second.errors;
    lines = second.sortedLines();
    ASSERT_EQ(lines.size(), 40U);
    EXPECT_TRUE(
        std::ranges::all_of(lines, [](const std::string &line) { return line.ends_with("  unchanged"); }));
    EXPECT_EQ(server.counts().requests.at("SetDisplayLuminance ZT_Marovelton_ColorSpace"), 40U);

    const Result verified = run("history --verify");
    EXPECT_EQ(verified.output, "40 lines, none of them altered, removed or added\n");
}

TEST_F(Fleet, AProfileIsAppliedToManyAndAsksOnlyWhereSomethingDiffers)
{
    Monitors monitors{MONITOR_DATA_DIR};
    const std::vector<std::string> addresses = loopbackAddresses(5);
    const Responder server{addresses, [&](const Request &request) { return monitors.answer(request); }};
    writeConfig(addresses, server.port());
    const std::string profile =
        scratch_.write("house.yaml", "displayctl: 1\nsettings:\n  preset: { 1: { luminance: 120 } }\n");
    EXPECT_EQ(run("-m m1003 --yes apply " + profile).code, 0);
    const auto changes = [&] {
        return server.counts().requests.at("SetDisplayLuminance ZT_Marovelton_ColorSpace");
    };

    const Result unasked = run("-m all apply " + profile);
    EXPECT_EQ(unasked.code, 2);
    EXPECT_EQ(unasked.output, "");
    EXPECT_EQ(unasked.errors, "displayctl: this asks before it changes anything: give --yes where there is "
                              "no terminal\n");
    EXPECT_EQ(changes(), 1U);

    const Result applied = run("-m all --yes apply " + profile);
    EXPECT_EQ(applied.code, 0) << applied.errors;
    EXPECT_EQ(applied.sortedLines(),
              (std::vector<std::string>{"5 monitors: 4 ok, 1 unchanged", "m1000  1 setting changed",
                                        "m1001  1 setting changed", "m1002  1 setting changed",
                                        "m1003  unchanged", "m1004  1 setting changed"}));
    EXPECT_EQ(changes(), 5U);

    const Result again = run("-m all apply " + profile);
    EXPECT_EQ(again.code, 0) << again.errors;
    EXPECT_EQ(again.sortedLines(),
              (std::vector<std::string>{"5 monitors: 5 unchanged", "m1000  unchanged", "m1001  unchanged",
                                        "m1002  unchanged", "m1003  unchanged", "m1004  unchanged"}));
    EXPECT_EQ(changes(), 5U);
}

TEST_F(Fleet, ASilentMonitorDelaysNobodyAndIsNamed)
{
    // With two jobs, one of them busy with the silent monitor, all others are told before it.
    Monitors monitors{MONITOR_DATA_DIR};
    const std::vector<std::string> addresses = loopbackAddresses(20);
    const Responder server{addresses, [&](const Request &request) {
                               return request.address == "127.1.0.3" ? silence() : monitors.answer(request);
                           }};
    writeConfig(addresses, server.port());
    const Result result = run("--json --jobs 2 --timeout 5 get luminance -m all");
    EXPECT_EQ(result.code, 5);
    const std::vector<std::string> lines = result.sortedLines();
    ASSERT_EQ(lines.size(), 20U);
    EXPECT_EQ(lines[2], R"({"monitor":"m1002","outcome":"unreachable","message":"no answer from 127.1.0.3:)" +
                            std::to_string(server.port()) + R"( within 5 s"})");
    EXPECT_TRUE(result.output.ends_with(lines[2] + '\n')) << result.output;
    EXPECT_EQ(server.counts().total(), 20U);
}

TEST_F(Fleet, AllSilentIsUnreachable)
{
    const std::vector<std::string> addresses = loopbackAddresses(3);
    const Responder server{addresses, [](const Request &) { return silence(); }};
    writeConfig(addresses, server.port());
    EXPECT_EQ(run("--timeout 0.2 get luminance -m all").code, 3);
    EXPECT_EQ(run("--timeout 0.2 show -m all").code, 3);
    EXPECT_EQ(server.counts().total(), 6U); // each costs its time limit once
}

} // namespace
} // namespace responder
