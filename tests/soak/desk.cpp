// SPDX-License-Identifier: Apache-2.0
#include "desk.h"

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

namespace soak
{

namespace
{

constexpr int queueCount = 4;

/** How long the library waits for the engine: shorter than a stopped engine stops at most. */
constexpr const char *receiveTimeout = "2";

std::string password()
{
    std::random_device random;
    std::ostringstream text;
    for (int i = 0; i < 3; ++i) {
        text << std::hex << random();
    }
    return text.str();
}

/** A base key of which no queue exists. */
int freeKey()
{
    for (int attempt = 0; attempt < 64; ++attempt) {
        const int key = 0x70000000 + ((getpid() + attempt * 977) % 0x100000) * 16;
        bool isFree = true;
        for (int i = 0; i < queueCount; ++i) {
            isFree = isFree && msgget(key + i, 0) == -1;
        }
        if (isFree) {
            return key;
        }
    }
    throw std::runtime_error("no free queue keys");
}

std::vector<std::string> linesOf(const std::string &file)
{
    std::vector<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string programOf(const char *variable)
{
    const char *value = std::getenv(variable);
    if (value == nullptr || access(value, R_OK) != 0) {
        throw std::runtime_error(std::string(variable) + " has to name a program or library that is there");
    }
    return value;
}

} // namespace

Programs findPrograms()
{
    Programs programs{programOf("DISPLAY_HOST"),
                      programOf("DESK_ENGINE"),
                      programOf("DESK_COMMAND"),
                      programOf("DESK_LIBRARY"),
                      programOf("DISPLAYCTL"),
                      SOAK_CLOCK_LIBRARY,
                      SOURCE_DIR};
    const char *sanitized = std::getenv("SANITIZED");
    programs.isSanitized = sanitized != nullptr && std::string_view(sanitized) == "1";
    if (programs.isSanitized) { // their runtime wants to be the first that is loaded
        programs.clock.clear();
    }
    return programs;
}

Desk::Desk(const Programs &programs, const std::string &directory, Ledger &ledger,
           std::vector<std::string> hostOptions)
    : programs_(programs), directory_(directory), ledger_(ledger), hostOptions_(std::move(hostOptions)),
      users_(3), key_(freeKey())
{
    setenv("DESK_MONITOR_STORE", store().c_str(), 1);
    setenv("DESK_MONITOR_QUEUE_KEY", std::to_string(key_).c_str(), 1);
    setenv("DESK_MONITOR_RECEIVE_TIMEOUT", receiveTimeout, 1);
    makeAccount("admin", {"--administrator"}, users_[0]);
    makeAccount("viewer", {}, users_[1]);
    makeAccount("operator", {}, users_[2]);
    makeAccount("watcher", {}, reader_);
    setenv("DISPLAYCTL_CONFIG", (directory_ + "/monitors.yaml").c_str(), 1);
    setenv("DISPLAYCTL_PASSWORD", users_[0].password.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (directory_ + "/config").c_str(), 1);
    setenv("XDG_STATE_HOME", (directory_ + "/state").c_str(), 1);
    if (!programs_.clock.empty()) {
        const std::string file = directory_ + "/clock";
        std::ofstream(file, std::ios::binary) << std::string(sizeof(std::int64_t), '\0');
        setenv("SOAK_CLOCK", file.c_str(), 1);
    }
    startEngine();
    startHost();
}

Desk::~Desk()
{
    for (int i = 0; i < queueCount; ++i) {
        engine_.signal(SIGKILL);
        host_.signal(SIGKILL);
    }
    engine_.wait();
    host_.wait();
    run({programs_.command, "--queue-key", std::to_string(key_), "queues", "remove"}, "", "/dev/null");
}

void Desk::makeAccount(const std::string &name, const std::vector<std::string> &role, User &user)
{
    user = {name, password()};
    std::vector<std::string> account = {programs_.host, "account", "add", "--accounts",
                                        directory_ + "/accounts"};
    if (name == "watcher") {
        account.insert(account.end(), {"--role", "reader"});
    }
    account.push_back(name);
    std::vector<std::string> monitorUser = {programs_.command, "user", "add", name};
    monitorUser.insert(monitorUser.end(), role.begin(), role.end());
    const std::string log = directory_ + "/accounts.log";
    if (run(account, user.password + "\n", log) != 0 || run(monitorUser, "", log) != 0) {
        throw std::runtime_error("no account can be made: see " + log);
    }
}

std::vector<std::string> Desk::withClock(std::vector<std::string> command) const
{
    if (!programs_.clock.empty()) {
        command.insert(command.begin(), {"env", "LD_PRELOAD=" + programs_.clock});
    }
    return command;
}

void Desk::awaitReady(Process &process, const std::string &file, const std::string &what)
{
    const bool isReady = eventually([&] {
        struct stat status {
        };
        return (stat(file.c_str(), &status) == 0 && status.st_size > 0) || process.hasEnded();
    });
    if (!isReady || process.hasEnded()) {
        throw std::runtime_error(what + " does not start: see its log in " + directory_);
    }
}

void Desk::startEngine()
{
    const std::string ready = directory_ + "/ready.engine";
    unlink(ready.c_str());
    engine_.start(withClock({programs_.engine, "--remove-queues", "--ready-file", ready}),
                  directory_ + "/engine.log");
    awaitReady(engine_, ready, "the engine");
}

void Desk::startHost()
{
    const std::string ready = directory_ + "/ready";
    unlink(ready.c_str());
    std::vector<std::string> command = {programs_.host,
                                        "--mof",
                                        programs_.source + "/mof/desk.mof",
                                        "--registration",
                                        programs_.source + "/mof/libcmpiDisplayManagement.reg",
                                        "--library",
                                        programs_.library,
                                        "--accounts",
                                        directory_ + "/accounts",
                                        "--port",
                                        "0",
                                        "--provider-calls",
                                        "8",
                                        "--audit",
                                        audit(),
                                        "--audit-size",
                                        "1500000",
                                        "--audit-files",
                                        "2",
                                        "--ready-file",
                                        ready};
    command.insert(command.end(), hostOptions_.begin(), hostOptions_.end());
    host_.start(withClock(command), directory_ + "/host.log");
    awaitReady(host_, ready, "the object manager");
    for (const std::string &line : linesOf(ready)) {
        const int port = std::atoi(line.c_str() + line.rfind(':') + 1);
        if (line.find("https:") != std::string::npos) {
            tlsPort_ = port;
        } else {
            ledger_.port = port;
        }
    }
    const std::string config = directory_ + "/monitors.yaml";
    std::ofstream(config + ".new") << "monitors:\n  desk: { url: \"http://admin@127.0.0.1:" << ledger_.port
                                   << "\" }\n";
    std::filesystem::rename(config + ".new", config);
}

void Desk::stop()
{
    host_.signal(SIGTERM);
    if (const int code = host_.wait(); code != 0) {
        ledger_.wrong("the object manager ended with " + std::to_string(code));
    }
    engine_.signal(SIGTERM);
    if (const int code = engine_.wait(); code != 0) {
        ledger_.wrong("the engine ended with " + std::to_string(code));
    }
    if (const int left = kernelObjects(); left != 0) {
        ledger_.wrong(std::to_string(left) + " queues, memories and semaphores are left");
    }
}

int Desk::queue(int number) const
{
    return msgget(key_ + number, 0);
}

long Desk::messagesIn(int number) const
{
    msqid_ds state{};
    return msgctl(queue(number), IPC_STAT, &state) == -1 ? -1 : static_cast<long>(state.msg_qnum);
}

int Desk::kernelObjects() const
{
    int count = 0;
    for (const char *kind : {"msg", "shm", "sem"}) {
        for (const std::string &line : linesOf(std::string("/proc/sysvipc/") + kind)) {
            const long key = std::strtol(line.c_str(), nullptr, 10);
            count += key >= key_ && key < key_ + 16;
        }
    }
    return count;
}

bool Desk::stepClock(std::chrono::seconds offset)
{
    if (programs_.clock.empty()) {
        return false;
    }
    const std::int64_t nanoseconds = std::chrono::nanoseconds(offset).count();
    const int file = open((directory_ + "/clock").c_str(), O_WRONLY | O_CLOEXEC);
    const bool written = file >= 0 && pwrite(file, &nanoseconds, sizeof nanoseconds, 0) == sizeof nanoseconds;
    close(file);
    return written;
}

std::vector<std::string> Desk::newRecords()
{
    std::vector<std::string> lines;
    for (const char *suffix : {".2", ".1", ""}) {
        const std::vector<std::string> more = linesOf(audit() + suffix);
        lines.insert(lines.end(), more.begin(), more.end());
    }
    const auto last = std::find(lines.rbegin(), lines.rend(), lastRecord_);
    if (last == lines.rend() && !lastRecord_.empty()) {
        ledger_.wrong("a line of the audit log has gone: " + lastRecord_);
    }
    if (!lines.empty()) {
        const std::string newest = lines.back();
        lines.erase(lines.begin(), last.base());
        lastRecord_ = newest;
    }
    return lines;
}

void Desk::trimLogs()
{
    for (const char *name : {"/engine.log", "/host.log"}) {
        const std::string file = directory_ + name;
        std::error_code problem;
        if (std::filesystem::file_size(file, problem) > 8U << 20U && !problem) {
            std::filesystem::resize_file(file, 0, problem);
        }
    }
}

} // namespace soak
