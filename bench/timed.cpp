// SPDX-License-Identifier: Apache-2.0
// timed RUNS COMMAND [ARGUMENT...]: runs a program so many times, its output thrown away, and prints the
// milliseconds of the fastest and of the median run, and the most memory in MB that one of them had. It fails
// when one of them does.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

/** The wait status of one run; most: its memory in kB. */
int run(char **command, long &most)
{
    const pid_t process = fork();
    if (process == 0) {
        dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
        execvp(command[0], command);
        _exit(127);
    }
    int status = -1;
    rusage usage{};
    if (process < 0 || wait4(process, &status, 0, &usage) != process) {
        return -1;
    }
    most = std::max(most, usage.ru_maxrss);
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    const int runs = argc > 2 ? std::atoi(argv[1]) : 0;
    if (runs < 1) {
        std::fputs("usage: timed RUNS COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    std::vector<double> times;
    long most = 0;
    for (int i = 0; i < runs; ++i) {
        const Clock::time_point begin = Clock::now();
        if (run(argv + 2, most) != 0) {
            std::fprintf(stderr, "timed: %s has failed\n", argv[2]);
            return 1;
        }
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    }
    std::sort(times.begin(), times.end());
    std::printf("%.1f %.1f %.1f\n", times.front(), times[times.size() / 2], static_cast<double>(most) / 1000);
}
