// SPDX-License-Identifier: Apache-2.0
#include "process.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace soak
{

namespace
{

int resultOf(int status)
{
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

pid_t spawn(const std::vector<std::string> &command, int input, const std::string &output)
{
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (input >= 0) {
        posix_spawn_file_actions_adddup2(&actions, input, 0);
    } else {
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    }
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    posix_spawn_file_actions_addclosefrom_np(&actions, 3); // what libraries have open
    std::vector<char *> words;
    for (const std::string &word : command) {
        words.push_back(const_cast<char *>(word.c_str()));
    }
    words.push_back(nullptr);
    pid_t pid = 0;
    const int result = posix_spawnp(&pid, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (result != 0) {
        throw std::runtime_error(command[0] + ": " + std::strerror(result));
    }
    return pid;
}

} // namespace

Process::~Process()
{
    if (pid_ > 0) {
        signal(SIGKILL);
        wait();
    }
}

void Process::start(std::vector<std::string> command, const std::string &output)
{
    command.insert(command.begin(), {"setpriv", "--pdeathsig", "KILL"});
    const pid_t pid = spawn(command, -1, output);
    const std::lock_guard lock(mutex_);
    pid_ = pid;
    status_.reset();
}

void Process::signal(int number)
{
    const std::lock_guard lock(mutex_);
    if (pid_ > 0 && !status_) {
        kill(pid_, number);
    }
}

bool Process::hasEnded()
{
    const std::lock_guard lock(mutex_);
    int status = 0;
    if (pid_ > 0 && !status_ && waitpid(pid_, &status, WNOHANG) == pid_) {
        status_ = resultOf(status);
    }
    return pid_ <= 0 || status_.has_value();
}

int Process::wait()
{
    while (!hasEnded()) {
        usleep(2000);
    }
    const std::lock_guard lock(mutex_);
    pid_ = 0;
    return status_.value_or(0);
}

int run(const std::vector<std::string> &command, const std::string &input, const std::string &output)
{
    std::array<int, 2> pipeEnds{};
    if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t pid = spawn(command, pipeEnds[0], output);
    close(pipeEnds[0]);
    const ssize_t written = write(pipeEnds[1], input.data(), input.size());
    close(pipeEnds[1]);
    int status = 0;
    while (waitpid(pid, &status, 0) == -1 && errno == EINTR) {
    }
    return written < 0 && !input.empty() ? 1 : resultOf(status);
}

long statusOf(pid_t pid, const std::string &name)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name + ":")) {
            return std::strtol(line.c_str() + name.size() + 1, nullptr, 10);
        }
    }
    return 0;
}

Descriptors descriptorsOf(pid_t pid)
{
    Descriptors found;
    const std::string place = "/proc/" + std::to_string(pid) + "/fd";
    const std::unique_ptr<DIR, int (*)(DIR *)> directory(opendir(place.c_str()), closedir);
    if (directory == nullptr) {
        return found;
    }
    while (const dirent *entry = readdir(directory.get())) {
        std::array<char, 64> target{};
        const std::string link = place + "/" + entry->d_name;
        if (entry->d_name[0] == '.' || readlink(link.c_str(), target.data(), target.size() - 1) <= 0) {
            continue;
        }
        ++found.all;
        found.sockets += std::strncmp(target.data(), "socket:", 7) == 0;
    }
    return found;
}

} // namespace soak
