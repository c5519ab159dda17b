// SPDX-License-Identifier: Apache-2.0
// started RUNS FILE COMMAND [ARGUMENT...]: starts a program so many times, and ends it when the file has come
// into being, by which it says that it serves. Prints the milliseconds from start to file of the fastest and
// of the median run. The program's output is thrown away. Fails when the program ends before.
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

pid_t start(char **command)
{
    const pid_t process = fork();
    if (process == 0) {
        const int nothing = open("/dev/null", O_WRONLY);
        dup2(nothing, STDOUT_FILENO);
        dup2(nothing, STDERR_FILENO);
        execvp(command[0], command);
        _exit(127);
    }
    return process;
}

/** Waits until the file is there; false when the process has ended before. */
bool comesIntoBeing(const std::filesystem::path &file, int notes, pid_t process)
{
    while (!std::filesystem::exists(file)) {
        constexpr int now = 0;
        constexpr int longestWait = 100; // until it is seen that the process has ended
        siginfo_t ended{};
        if (waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
            ended.si_pid != 0) {
            return false;
        }
        pollfd events{notes, POLLIN, 0};
        char note[4096];
        while (poll(&events, 1, longestWait) > 0 && read(notes, note, sizeof note) > 0 &&
               poll(&events, 1, now) > 0) {
        }
    }
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    const int runs = argc > 3 ? std::atoi(argv[1]) : 0;
    if (runs < 1) {
        std::fputs("usage: started RUNS FILE COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    const std::filesystem::path file = std::filesystem::absolute(argv[2]);
    const int notes = inotify_init1(IN_CLOEXEC);
    if (inotify_add_watch(notes, file.parent_path().c_str(), IN_MOVED_TO) < 0) {
        std::perror("started");
        return 1;
    }
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        std::filesystem::remove(file);
        const Clock::time_point begin = Clock::now();
        const pid_t process = start(argv + 3);
        const bool serves = comesIntoBeing(file, notes, process);
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
        if (serves) {
            kill(process, SIGTERM);
        }
        waitpid(process, nullptr, 0);
        if (!serves) {
            std::fprintf(stderr, "started: %s has ended before it served\n", argv[3]);
            return 1;
        }
    }
    std::sort(times.begin(), times.end());
    std::printf("%.1f %.1f\n", times.front(), times[times.size() / 2]);
}
