// SPDX-License-Identifier: Apache-2.0
// One run of a program with failing_calls.so: its n-th call of a kind fails, or it is killed there.
//
//   program_torture PAGE KIND NTH[+] ACTION OUTPUT ERRORS PROGRAM [ARGUMENT...]
//
// NTH is 0 when none is to fail; with a + all after it fail, too. ACTION is fail, kill-before or kill-after.
// OUTPUT and ERRORS are files that take what the program says. Prints one line: the exit code, or "signal N",
// or "silent" when it did not end in time and was killed; how many calls were counted; whether one was struck
// (0 or 1); and which. With NTH "places" the second line has the numbers of the calls that come from a place
// from which none has come before. With FAILING_CALLS_OTHER set, the calls of another process with that page
// fail while the program runs.

#include "page.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using namespace torture;

namespace
{

constexpr auto patience = std::chrono::seconds(120); // enough for a machine that has much else to do

[[noreturn]] void end(const char *what)
{
    perror(what);
    exit(2);
}

Action actionNamed(const std::string &name)
{
    if (name == "fail") {
        return fail;
    }
    if (name == "kill-before" || name == "kill-after") {
        return name == "kill-before" ? killBefore : killAfter;
    }
    fprintf(stderr, "no such action: %s\n", name.c_str());
    exit(2);
}

/** What the program says goes through pipes, for what goes to a file is counted as a file. They hold all of
 * it. */
class Said
{
  public:
    Said()
    {
        if (pipe2(ends_, O_CLOEXEC) != 0 || fcntl(ends_[1], F_SETPIPE_SZ, 1 << 20) < 0) {
            end("pipe");
        }
    }
    Said(const Said &) = delete;
    Said &operator=(const Said &) = delete;

    int takes() const
    {
        return ends_[1];
    }
    /** Once the program has ended. */
    void keep(const char *file) const
    {
        close(ends_[1]);
        const int output = open(file, O_WRONLY | O_CREAT | O_TRUNC, 0600);
        char bytes[65536];
        ssize_t size = 0;
        while (output >= 0 && (size = read(ends_[0], bytes, sizeof bytes)) > 0) {
            if (write(output, bytes, static_cast<size_t>(size)) != size) {
                break;
            }
        }
        if (output < 0 || size != 0) {
            end(file);
        }
        close(output);
    }

  private:
    int ends_[2] = {};
};

pid_t start(char **arguments, const char *page, const Said &output, const Said &errors)
{
    const pid_t process = fork();
    if (process != 0) {
        return process;
    }
    dup2(output.takes(), STDOUT_FILENO);
    dup2(errors.takes(), STDERR_FILENO);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    if (getenv("FAILING_CALLS_OTHER") == nullptr) {
        setenv(controlVariable, page, 1);
        setenv("LD_PRELOAD", getenv("FAILING_CALLS_LIBRARY"), 1);
    }
    execv(arguments[0], arguments);
    end(arguments[0]);
}

/** What has become of the process; it is ended when that takes too long. */
std::string ending(pid_t process)
{
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    const auto last = std::chrono::steady_clock::now() + patience;
    int status = 0;
    while (waitpid(process, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > last) {
            kill(process, SIGKILL);
            waitpid(process, &status, 0);
            return "silent";
        }
        const timespec pause = {1, 0};
        sigtimedwait(&child, nullptr, &pause);
    }
    return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                               : std::to_string(WEXITSTATUS(status));
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 8 || getenv("FAILING_CALLS_LIBRARY") == nullptr) {
        fprintf(
            stderr,
            "usage: FAILING_CALLS_LIBRARY=... program_torture PAGE KIND NTH ACTION OUTPUT ERRORS PROGRAM...\n");
        return 2;
    }
    const std::string nth = argv[3];
    Page page(argv[1]);
    const Fault fault = faultNamed(argv[2]);
    sigset_t child;
    sigemptyset(&child);
    sigaddset(&child, SIGCHLD);
    sigprocmask(SIG_BLOCK, &child, nullptr);
    const Said output;
    const Said errors;
    if (nth == "places") {
        page.survey(fault);
    } else {
        page.arm(fault, atol(nth.c_str()), actionNamed(argv[4]), nth.ends_with('+'));
    }
    const std::string result = ending(start(argv + 7, argv[1], output, errors));
    page.disarm();
    output.keep(argv[5]);
    errors.keep(argv[6]);
    printf("%s\t%ld\t%d\t%s\n", result.c_str(), page.count(), page.struck() ? 1 : 0, page.function().c_str());
    for (const long place : page.places()) {
        printf("%ld ", place);
    }
    return 0;
}
