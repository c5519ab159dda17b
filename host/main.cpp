// SPDX-License-Identifier: Apache-2.0
// display-host: the object manager as a program.
#include "cim/mof_reader.h"
#include "cimxml/cimxml.h"
#include "core/accounts.h"
#include "core/object_manager.h"
#include "core/provider_output.h"
#include "http/server.h"
#include "log/log.h"
#include "options.h"
#include "process/unused_memory.h"
#include "supervision.h"
#include "wsman/wsman.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <malloc.h>
#include <new>
#include <string_view>
#include <thread>
#include <unistd.h>

namespace
{

using host::Options;

/** Says what is wrong; the exit code. */
int refuse(const std::string &problem)
{
    host::logLine("%s", problem.c_str());
    return 1;
}

bool readClasses(const std::vector<std::string> &files, cim::ClassRepository &repository)
{
    const cim::MofResult result = cim::readMofFiles(repository, files);
    for (const cim::MofMessage &message : result.messages) {
        host::logLine("%s", message.format().c_str());
    }
    return result.ok();
}

std::string urlOf(const host::Endpoint &endpoint, bool isSecure)
{
    const bool isIpv6 = endpoint.address.find(':') != std::string::npos;
    return std::string(isSecure ? "https" : "http") + "://" + (isIpv6 ? "[" : "") + endpoint.address +
           (isIpv6 ? "]" : "") + ":" + std::to_string(endpoint.port) + "/cimom";
}

/** Says where the server listens: lines on standard output, and in the ready file, which comes into being
 * complete. */
bool announce(const Options &options, const std::vector<host::Endpoint> &endpoints, int output)
{
    std::string lines;
    for (std::size_t i = 0; i < endpoints.size(); ++i) {
        const bool isSecure = i > 0 || options.noHttp;
        lines += "listening on " + urlOf(endpoints[i], isSecure) + "\n";
    }
    if (write(output, lines.data(), lines.size()) < 0) {
        host::logLine("%.*s", static_cast<int>(lines.size() - 1), lines.c_str());
    }
    if (options.readyFile.empty()) {
        return true;
    }
    const std::string temporary = options.readyFile + ".new";
    std::ofstream stream(temporary);
    stream << lines;
    stream.close();
    if (!stream || rename(temporary.c_str(), options.readyFile.c_str()) != 0) {
        host::logLine("the ready file %s cannot be written: %s", options.readyFile.c_str(),
                      std::strerror(errno));
        return false;
    }
    return true;
}

/** The object manager with its classes and providers; null, with messages, when they are not all there. */
std::unique_ptr<host::ObjectManager> makeManager(const Options &options)
{
    cim::ClassRepository repository;
    if (!readClasses(options.mofFiles, repository)) {
        return nullptr;
    }
    std::vector<std::string> problems;
    std::vector<host::Registration> registrations;
    for (const std::string &file : options.registrations) {
        for (host::Registration &registration : host::readRegistrationFile(file, problems)) {
            registrations.push_back(std::move(registration));
        }
    }
    host::ObjectManagerOptions managerOptions;
    managerOptions.nameSpace = options.nameSpace;
    managerOptions.libraryDirectories = options.libraryDirectories;
    managerOptions.libraryFile = options.library;
    managerOptions.version = DISPLAY_VERSION;
    for (const std::string &file : options.profiles) {
        for (host::Profile &profile : host::readProfileFile(file, problems)) {
            managerOptions.profiles.push_back(std::move(profile));
        }
    }
    auto manager = std::make_unique<host::ObjectManager>(std::move(repository), managerOptions);
    for (const std::string &text : manager->load(registrations)) {
        problems.push_back(text);
    }
    for (const std::string &text : problems) {
        host::logLine("%s", text.c_str());
    }
    std::fflush(stdout); // what the providers printed when they were loaded
    return problems.empty() ? std::move(manager) : nullptr;
}

/** Begins to listen for HTTP, HTTPS, or both; also on sockets that were handed over. */
bool listen(const Options &options, host::HttpServer &server, std::string &problem)
{
    host::Endpoint http = options.http;
    host::Endpoint https = options.https;
    http.socket = host::inheritedSocket("http");
    https.socket = host::inheritedSocket("https");
    if (http.socket >= 0 && !options.noHttp && !host::listen(http, problem)) {
        return false; // before it is asked how far it can be reached
    }
    if (!options.noHttp && !options.insecure && !host::isLoopback(http)) {
        problem =
            "HTTP beyond this machine lets everybody on the way read passwords: give --certificate and --key "
            "and use --https-address, with --address 127.0.0.1 or --no-http; or say --insecure";
        return false;
    }
    for (const std::string &name : options.serverNames) {
        server.addName(name);
    }
    const bool isSecured = !options.tls.certificateFile.empty();
    return (!isSecured || server.setTls(options.tls, problem)) &&
           (options.noHttp || server.start(http, problem)) && (!isSecured || server.startTls(https, problem));
}

/** A provider may wait for the display engine without end. Then nothing is left to do but to go. */
void leaveAfter(std::chrono::seconds time)
{
    std::thread([time] {
        std::this_thread::sleep_for(time);
        host::logLine("a provider has not returned; leaving without it");
        if (ftrylockfile(stdout) == 0) { // unless it is the very printing that does not return
            fflush_unlocked(stdout);
        }
        _exit(0);
    }).detach();
}

/** The signals that ask for the end. All threads leave them to the one that waits for them; a client that has
 * gone, or a file that may not grow, is no reason to end. */
sigset_t blockSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    return signals;
}

void waitForTheEnd(const sigset_t &signals)
{
    process::releaseUnusedMemory(); // what only the start needed
    int signal = 0;
    sigwait(&signals, &signal);
}

/** Runs until a signal asks for the end. Returns the exit code. */
int serve(const Options &options)
{
    const sigset_t signals = blockSignals();
    // What a large request gives back, the system has back; without a word, the allocator keeps ever larger
    // pieces, and for many connections several heaps, none of which gets what is free in the others.
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    mallopt(M_TRIM_THRESHOLD, 128 * 1024);

    std::string problem;
    host::ProviderOutput output;
    if (!host::becomeUser(options.user, problem) ||
        !output.redirect(options.providerOutput, options.providerOutputBytes, problem)) {
        return refuse(problem);
    }
    host::Accounts accounts(options.accounts);
    const bool hasAccounts = accounts.load(problem);
    if (!hasAccounts) {
        host::logLine("%s (display-host account add --accounts %s USER makes an account)", problem.c_str(),
                      options.accounts.c_str());
    }
    const std::unique_ptr<host::ObjectManager> manager = makeManager(options);
    if (!hasAccounts || manager == nullptr) {
        return 1;
    }
    manager->dispatcher().setPatience(std::chrono::seconds(options.patienceSeconds));
    manager->dispatcher().setProviderCalls(options.providerCalls);
    host::Audit audit(options.audit, options.auditLimits);
    if (!options.audit.empty()) {
        if (!audit.open(problem)) {
            return refuse(problem);
        }
        manager->dispatcher().setAudit(&audit);
    }
    host::CimXmlFrontEnd cimXml(manager->dispatcher());
    host::WsmanOptions wsmanOptions;
    wsmanOptions.version = DISPLAY_VERSION;
    host::WsmanFrontEnd wsman(manager->dispatcher(), wsmanOptions);
    host::HttpServer server(accounts, {&cimXml, &wsman}, options.limits);
    const bool isAudited = !options.audit.empty();
    server.setTask([&output, &audit, isAudited] {
        output.rotate();
        if (isAudited) {
            audit.retry();
        }
        host::notifySupervisor("WATCHDOG=1");
    });
    if (!listen(options, server, problem)) {
        return refuse(problem);
    }
    if (!announce(options, server.endpoints(), output.ownOutput())) {
        return 1;
    }
    host::beginLog();
    host::notifySupervisor("READY=1");
    waitForTheEnd(signals);
    host::notifySupervisor("STOPPING=1");
    leaveAfter(std::chrono::seconds(5));
    server.stop();
    return 0;
}

int addAccount(const Options &options)
{
    std::string password;
    if (!std::getline(std::cin, password)) {
        return refuse("the password is read from standard input, and there is none");
    }
    std::string problem;
    const bool done =
        host::addAccount(options.accounts, options.account, password, host::roleNamed(options.role), problem);
    return done ? 0 : refuse(problem);
}

int removeAccount(const Options &options)
{
    std::string problem;
    return host::removeAccount(options.accounts, options.account, problem) ? 0 : refuse(problem);
}

int listAccounts(const Options &options)
{
    std::string problem;
    host::AccountMap accounts;
    if (!host::readAccounts(options.accounts, accounts, problem)) {
        return refuse(problem);
    }
    for (const auto &[user, account] : accounts) {
        std::printf("%s %s%s\n", user.c_str(), host::roleName(account.role),
                    host::isUsableHash(account.hash) ? "" : " locked");
    }
    return 0;
}

int makeCertificate(const Options &options)
{
    std::string problem;
    const bool done = host::makeCertificate(options.tls.certificateFile, options.tls.keyFile,
                                            options.certificateNames, options.replaces, problem);
    return done ? 0 : refuse(problem);
}

int verifyAudit(const Options &options)
{
    const host::AuditVerdict verdict = host::verifyAudit(options.audit);
    std::printf("%s\n", verdict.text.c_str());
    return verdict.good ? 0 : 1;
}

int run(const Options &options)
{
    switch (options.command) {
    case host::Command::serve:
        return serve(options);
    case host::Command::accountAdd:
        return addAccount(options);
    case host::Command::accountRemove:
        return removeAccount(options);
    case host::Command::accountList:
        return listAccounts(options);
    case host::Command::certificate:
        return makeCertificate(options);
    case host::Command::auditVerify:
        return verifyAudit(options);
    }
    return 1;
}

/** Before main(), when libraries fill their tables, no exception gets through: lack of memory ends here. */
[[noreturn]] void onTerminate()
{
    try {
        if (const std::exception_ptr problem = std::current_exception()) {
            std::rethrow_exception(problem);
        }
    } catch (const std::bad_alloc &) {
        constexpr std::string_view told = "display-host: there is not enough memory\n";
        static_cast<void>(!write(STDERR_FILENO, told.data(), told.size()));
        _exit(1);
    } catch (...) {
    }
    std::abort();
}

/** Before all others. */
[[gnu::init_priority(101)]] const struct Ending {
    Ending() noexcept
    {
        std::set_terminate(onTerminate);
    }
} ending;

} // namespace

int main(int argc, char **argv)
{
    try {
        Options options;
        if (const std::optional<int> code = host::readOptions(argc, argv, options)) {
            return *code;
        }
        return run(options);
    } catch (const std::exception &problem) {
        return refuse(problem.what());
    }
}
