/* The stand-in of the shell helper. */
#include "support/shell.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>
#include <vector>

namespace
{

std::vector<std::string> take(char **lines)
{
    std::vector<std::string> taken;
    for (char **line = lines; line != nullptr && *line != nullptr; ++line)
        taken.emplace_back(*line);
    freeresultbuf(lines);
    return taken;
}

using Lines = std::vector<std::string>;

int openDescriptors()
{
    int count = 0;
    DIR *directory = opendir("/proc/self/fd");
    while (readdir(directory) != nullptr)
        ++count;
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
