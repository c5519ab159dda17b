// SPDX-License-Identifier: Apache-2.0
#include "program.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fcntl.h>
#include <pwd.h>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char **environ;

namespace test
{

Process::Process(const std::vector<std::string> &command, const TemporaryDirectory &directory,
                 const std::string &input, const std::vector<int> &handedOver)
    : output_(directory.file("output")), errors_(directory.file("errors"))
{
    writeFile(directory.file("input"), input);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, directory.file("input").c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, output_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, errors_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<int> high; // so that none lies where another is to go
    for (std::size_t i = 0; i < handedOver.size(); ++i) {
        high.push_back(fcntl(handedOver[i], F_DUPFD_CLOEXEC, 100));
        posix_spawn_file_actions_adddup2(&actions, high.back(), static_cast<int>(i) + 3);
    }
    std::vector<char *> arguments;
    for (const std::string &argument : command) {
        arguments.push_back(const_cast<char *>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    if (posix_spawnp(&process_, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) {
        process_ = -1;
        ADD_FAILURE() << "cannot run " << command[0];
    }
    posix_spawn_file_actions_destroy(&actions);
    for (const int descriptor : high) {
        close(descriptor);
    }
}

Process::~Process()
{
    if (process_ > 0) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
}

void Process::signal(int number) const
{
    ASSERT_GT(process_, 0) << "it has ended"; // a signal to -1 would end every process there is
    kill(process_, number);
}

Outcome Process::wait()
{
    Outcome outcome;
    int status = 0;
    if (process_ > 0 && waitpid(process_, &status, 0) == process_ && WIFEXITED(status)) {
        outcome.code = WEXITSTATUS(status);
    }
    process_ = -1;
    outcome.output = readFile(output_);
    outcome.errors = readFile(errors_);
    return outcome;
}

bool Process::running()
{
    if (process_ > 0 && waitpid(process_, nullptr, WNOHANG) == process_) {
        process_ = -1;
    }
    return process_ > 0;
}

bool Process::waitFor(const std::string &file)
{
    while (running()) {
        if (access(file.c_str(), F_OK) == 0) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return false;
}

std::vector<std::string> hostCommand(const std::vector<std::string> &arguments)
{
    std::vector<std::string> command;
    std::istringstream emulator(TEST_EMULATOR);
    for (std::string word; emulator >> word;) {
        command.push_back(word);
    }
    command.emplace_back(DISPLAY_HOST_PROGRAM);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

std::string postAsOperator(const std::string &body)
{
    return "POST /cimom HTTP/1.1\r\nHost: localhost\r\nCIMOperation: MethodCall\r\nAuthorization: Basic " +
           base64("operator:secret") + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
           body;
}

Program::Program()
{
    writeFile(directory_.file("accounts"), quickAccount("operator", "secret"));
}

Outcome Program::run(const std::vector<std::string> &arguments, const std::string &input)
{
    return Process(hostCommand(arguments), directory_, input).wait();
}

std::vector<std::string> Program::goodArguments() const
{
    return {"--mof",          TEST_DATA_DIR "/test.mof",
            "--registration", TEST_DATA_DIR "/test.reg",
            "--library-dir",  TEST_PROVIDER_DIR,
            "--accounts",     directory_.file("accounts"),
            "--port",         "0",
            "--ready-file",   directory_.file("ready"),
            "--user",         getpwuid(geteuid())->pw_name};
}

std::unique_ptr<Process> Program::start(const std::vector<std::string> &more)
{
    std::vector<std::string> arguments = goodArguments();
    arguments.insert(arguments.end(), more.begin(), more.end());
    auto process = std::make_unique<Process>(hostCommand(arguments), directory_);
    if (!process->waitFor(directory_.file("ready"))) {
        ADD_FAILURE() << "display-host has ended: " << readFile(directory_.file("errors"));
        return process;
    }
    const std::string ready = readFile(directory_.file("ready"));
    const std::string address = "listening on http://127.0.0.1:";
    EXPECT_THAT(ready, testing::StartsWith(address));
    EXPECT_THAT(ready, testing::EndsWith("/cimom\n"));
    port_ = static_cast<std::uint16_t>(std::atoi(ready.c_str() + address.size()));
    return process;
}

} // namespace test
