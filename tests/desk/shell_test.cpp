// SPDX-License-Identifier: Apache-2.0
// The stand-in of the shell helper.
#include "support/shell.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace
{

std::vector<std::string> take(char **lines)
{
    std::vector<std::string> taken;
    for (char **line = lines; line != nullptr && *line != nullptr; ++line) {
        taken.emplace_back(*line);
    }
    freeresultbuf(lines);
    return taken;
}

using Lines = std::vector<std::string>;

int openDescriptors()
{
    int count = 0;
    DIR *directory = opendir("/proc/self/fd");
    while (readdir(directory) != nullptr) {
        ++count;
    }
    closedir(directory);
    return count;
}

TEST(Shell, GivesLinesWithTheirNewlines)
{
    char **out = nullptr, **err = nullptr;
    EXPECT_EQ(runcommand("printf 'one\\n\\nthree\\n'; printf 'bad\\n' >&2", nullptr, &out, &err), 0);
    EXPECT_EQ(take(out), (Lines{"one\n", "\n", "three\n"}));
    EXPECT_EQ(take(err), (Lines{"bad\n"}));
}

TEST(Shell, GivesALastLineWithoutNewlineAsItIs)
{
    char **out = nullptr;
    EXPECT_EQ(runcommand("printf 'one\\ntwo'", nullptr, &out, nullptr), 0);
    EXPECT_EQ(take(out), (Lines{"one\n", "two"}));
}

TEST(Shell, GivesAnEmptyArrayForNoOutput)
{
    char **out = nullptr, **err = nullptr;
    EXPECT_EQ(runcommand("true", nullptr, &out, &err), 0);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out[0], nullptr);
    ASSERT_NE(err, nullptr);
    EXPECT_EQ(err[0], nullptr);
    freeresultbuf(out);
    freeresultbuf(err);
}

TEST(Shell, ReturnsTheExitStatus)
{
    EXPECT_EQ(runcommand("exit 3", nullptr, nullptr, nullptr), 3);
    EXPECT_EQ(runcommand("false", nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(runcommand("kill -9 $$", nullptr, nullptr, nullptr), 137);
    EXPECT_EQ(runcommand("/no/such/program", nullptr, nullptr, nullptr), 127);
    EXPECT_EQ(runcommand("echo x | grep y", nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(runcommand("", nullptr, nullptr, nullptr), 0);
}

/* The arrays tell it from a command that could not be run. */
TEST(Shell, GivesTheOutputWhereTheStatusIsNotToBeHad)
{
    const auto before = signal(SIGCHLD, SIG_IGN);
    char **out = nullptr;
    EXPECT_EQ(runcommand("echo out", nullptr, &out, nullptr), -1);
    signal(SIGCHLD, before);
    EXPECT_EQ(take(out), Lines{"out\n"});
}

TEST(Shell, RefusesNoCommand)
{
    char *line = nullptr;
    char **out = &line, **err = &line;
    EXPECT_EQ(runcommand(nullptr, nullptr, &out, &err), -1);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(err, nullptr);
    freeresultbuf(nullptr);
}

TEST(Shell, FeedsTheInput)
{
    char first[] = "b\n", second[] = "a\n", third[] = "c";
    char *input[] = {first, second, third, nullptr};
    char **out = nullptr;
    EXPECT_EQ(runcommand("sort", input, &out, nullptr), 0);
    EXPECT_EQ(take(out), (Lines{"a\n", "b\n", "c\n"}));
    EXPECT_EQ(runcommand("cat", nullptr, &out, nullptr), 0) << "no input is an empty one";
    EXPECT_EQ(take(out), Lines{});
    EXPECT_EQ(runcommand("true", input, nullptr, nullptr), 0) << "input that is not read";
}

/* More than any pipe holds, on both outputs by turns. */
TEST(Shell, DrainsBothOutputs)
{
    char **out = nullptr, **err = nullptr;
    EXPECT_EQ(runcommand("i=0; while [ $i -lt 3000 ]; do echo out$i-0123456789012345678901234567890123456789;"
                         "echo err$i-0123456789012345678901234567890123456789 >&2; i=$((i+1)); done; exit 4",
                         nullptr, &out, &err),
              4);
    const Lines outLines = take(out), errLines = take(err);
    ASSERT_EQ(outLines.size(), 3000u);
    ASSERT_EQ(errLines.size(), 3000u);
    EXPECT_EQ(outLines[2999], "out2999-0123456789012345678901234567890123456789\n");
    EXPECT_EQ(errLines[2999], "err2999-0123456789012345678901234567890123456789\n");
    EXPECT_EQ(runcommand("head -c 1000000 /dev/zero; head -c 1000000 /dev/zero >&2; exit 5", nullptr, nullptr,
                         nullptr),
              5);
}

TEST(Shell, KeepsAVeryLongLineWhole)
{
    char **out = nullptr;
    EXPECT_EQ(runcommand("head -c 300000 /dev/zero | tr '\\0' x; echo", nullptr, &out, nullptr), 0);
    const Lines lines = take(out);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], std::string(300000, 'x') + "\n");
}

TEST(Shell, BoundsWhatItKeeps)
{
    char **out = nullptr;
    EXPECT_EQ(runcommand("head -c 17000000 /dev/zero | tr '\\0' x; exit 6", nullptr, &out, nullptr), 6);
    const Lines lines = take(out);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].size(), 16u * 1024 * 1024);
}

/* However it keeps its caller: by running, by running without outputs, or by what it has left behind. */
TEST(Shell, KillsACommandThatTakesTooLong)
{
    setenv("DESK_SHELL_TIMEOUT", "0.3", 1);
    const int before = openDescriptors();
    const auto start = std::chrono::steady_clock::now();
    for (const char *command : {"echo out; sleep 600", "exec >&- 2>&-; sleep 600", "sleep 600 & echo out",
                                "trap '' TERM INT HUP; while :; do sleep 600; done"}) {
        char **out = nullptr, **err = nullptr;
        EXPECT_EQ(runcommand(command, nullptr, &out, &err), -1) << command;
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(err, nullptr);
    }
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4 * 300));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(500));
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    unsetenv("DESK_SHELL_TIMEOUT");
}

TEST(Shell, KillsWhatTheCommandHasStartedToo)
{
    char name[] = "/tmp/desk-shell-XXXXXX";
    const int file = mkstemp(name);
    ASSERT_NE(file, -1);
    char text[32] = "";
    for (int limit = 1; text[0] == '\0'; limit *= 2) { /* until the command comes so far */
        {
            ASSERT_LT(limit, 100);
            setenv("DESK_SHELL_TIMEOUT", std::to_string(limit).c_str(), 1);
            EXPECT_EQ(runcommand((std::string("sleep 600 & echo $! >") + name + "; wait").c_str(), nullptr,
                                 nullptr, nullptr),
                      -1);
            ASSERT_NE(pread(file, text, sizeof text - 1, 0), -1);
        }
    }
    unsetenv("DESK_SHELL_TIMEOUT");
    const std::string started = "/proc/" + std::to_string(atoi(text)) + "/stat";
    const auto alive = [&] { /* an orphan that is dead may wait for its reaper */
                             std::ifstream stream(started);
                             std::string identifier, program, state;
                             stream >> identifier >> program >> state;
                             return stream.good() && state != "Z" && state != "X";
    };
    for (int i = 0; alive() && i < 10'000; ++i) {
        usleep(1000);
    }
    EXPECT_FALSE(alive());
    close(file);
    unlink(name);
}

TEST(Shell, TakesATimeLimitThatIsNoneAsTheUsualOne)
{
    for (const char *limit : {"", "soon", "-1", "nan", "1e"}) {
        setenv("DESK_SHELL_TIMEOUT", limit, 1);
        EXPECT_EQ(runcommand("exit 3", nullptr, nullptr, nullptr), 3) << limit;
    }
    unsetenv("DESK_SHELL_TIMEOUT");
}

TEST(Shell, LeavesNoDescriptorAndNoChildBehind)
{
    const int before = openDescriptors();
    for (int i = 0; i < 20; ++i) {
        char **out = nullptr, **err = nullptr;
        runcommand("echo x; echo y >&2", nullptr, &out, &err);
        freeresultbuf(out);
        freeresultbuf(err);
    }
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST(Shell, GivesTheCommandNoDescriptorOfOurs)
{
    const int ours = open("/dev/null", O_RDONLY); /* without close-on-exec */
    char **out = nullptr;
    EXPECT_EQ(runcommand(("test -e /proc/self/fd/" + std::to_string(ours) + " && echo there; true").c_str(),
                         nullptr, &out, nullptr),
              0);
    close(ours);
    EXPECT_EQ(take(out), Lines{});
}

TEST(Shell, WorksWithStandardDescriptorsClosed)
{
    const pid_t child = fork();
    if (child == 0) {
        close(0);
        close(1);
        close(2);
        char **out = nullptr, **err = nullptr;
        const int status = runcommand("read x; echo out; echo err >&2; exit 3", nullptr, &out, &err);
        const bool good = status == 3 && out != nullptr && out[0] != nullptr &&
                          strcmp(out[0], "out\n") == 0 && err != nullptr && err[0] != nullptr &&
                          strcmp(err[0], "err\n") == 0;
        _exit(good ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

} // namespace
