// SPDX-License-Identifier: Apache-2.0
#include "core/provider_output.h"

#include "log/log.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace host
{

bool ProviderOutput::redirect(const std::string &file, std::uint64_t bytes, std::string &problem)
{
    ownOutput_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (ownOutput_ < 0) {
        ownOutput_ = STDOUT_FILENO; // standard output is closed: nobody listens
    }
    file_ = file;
    limit_ = bytes;
    if (!open(problem)) {
        return false;
    }
    // Whole requests at a time: the dispatcher sees to it that the file has the lines of every request that
    // is answered.
    std::setvbuf(stdout, nullptr, _IOFBF, std::size_t{64} * 1024);
    if (file.empty()) {
        // To a stream that cannot be written, printf() does not even put the text together.
        if (std::FILE *nowhere = std::fopen("/dev/null", "re"); nowhere != nullptr) {
            stdout = nowhere;
        }
    }
    return true;
}

bool ProviderOutput::open(std::string &problem)
{
    const char *name = file_.empty() ? "/dev/null" : file_.c_str();
    const int descriptor = ::open(name, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0640);
    if (descriptor < 0 || dup2(descriptor, STDOUT_FILENO) < 0) {
        problem = "the file for the output of providers, " + std::string(name) +
                  ", cannot be opened: " + std::strerror(errno);
        if (descriptor >= 0) {
            close(descriptor);
        }
        return false;
    }
    close(descriptor);
    return true;
}

void ProviderOutput::rotate()
{
    struct stat status = {};
    if (file_.empty() || fstat(STDOUT_FILENO, &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<std::uint64_t>(status.st_size) <= limit_) {
        return;
    }
    if (ftrylockfile(stdout) != 0) {
        return; // somebody prints; there is a next time
    }
    std::string problem;
    const bool done = std::rename(file_.c_str(), (file_ + ".1").c_str()) == 0 && open(problem);
    funlockfile(stdout);
    if (!done) {
        logLine("%s cannot be put aside: %s", file_.c_str(),
                problem.empty() ? std::strerror(errno) : problem.c_str());
    }
}

} // namespace host
