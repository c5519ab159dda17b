// SPDX-License-Identifier: Apache-2.0
// display-host: the desk object manager as a program.
#include "cim/mof_reader.h"
#include "cimxml/cimxml.h"
#include "core/accounts.h"
#include "core/log.h"
#include "core/object_manager.h"
#include "http/server.h"
#include "wsman/wsman.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <thread>
#include <unistd.h>

namespace
{

struct Options {
    std::vector<std::string> libraryDirectories;
    std::string library;
    std::vector<std::string> registrations;
    std::vector<std::string> mofFiles;
    std::string accounts;
    std::string address = "127.0.0.1";
    std::uint16_t port = 5988;
    std::string nameSpace = "root/cimv2";
    std::string providerOutput;
    std::string readyFile;
    host::HttpLimits limits;
    unsigned idleSeconds = 60;
    unsigned transferSeconds = 90;
    unsigned patienceSeconds = 60;
    unsigned providerCalls = 1; // a support library may rely on one request at a time
};

/** What the providers print goes to the file; what this program has to say itself, to the standard output of
 * its start. False, with a message, on failure. */
bool redirectProviderOutput(const std::string &file, int &ownOutput)
{
    ownOutput = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (ownOutput < 0) {
        ownOutput = STDOUT_FILENO; // standard output is closed: nobody listens
    }
    if (file.empty()) {
        return true;
    }
    const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (descriptor < 0 || dup2(descriptor, STDOUT_FILENO) < 0) {
        host::logLine("the file for the output of providers, %s, cannot be opened: %s", file.c_str(),
                      std::strerror(errno));
        return false;
    }
    close(descriptor);
    // Whole requests at a time: the dispatcher sees to it that the file has the lines of every request that
    // is answered.
    std::setvbuf(stdout, nullptr, _IOFBF, std::size_t{64} * 1024);
    return true;
}

bool readClasses(const std::vector<std::string> &files, cim::ClassRepository &repository)
{
    const cim::MofResult result = cim::readMofFiles(repository, files);
    for (const cim::MofMessage &message : result.messages) {
        host::logLine("%s", message.format().c_str());
    }
    return result.ok();
}

/** Says where the server listens: a line on standard output, and in the ready file, which comes into being
 * complete. */
bool announce(const Options &options, std::uint16_t port, int output)
{
    const bool isIpv6 = options.address.find(':') != std::string::npos;
    const std::string line = "listening on http://" + std::string(isIpv6 ? "[" : "") + options.address +
                             (isIpv6 ? "]" : "") + ":" + std::to_string(port) + "/cimom\n";
    if (write(output, line.data(), line.size()) < 0) {
        host::logLine("%.*s", static_cast<int>(line.size() - 1), line.c_str());
    }
    if (options.readyFile.empty()) {
        return true;
    }
    const std::string temporary = options.readyFile + ".new";
    std::ofstream stream(temporary);
    stream << line;
    stream.close();
    if (!stream || rename(temporary.c_str(), options.readyFile.c_str()) != 0) {
        host::logLine("the ready file %s cannot be written: %s", options.readyFile.c_str(),
                      std::strerror(errno));
        return false;
    }
    return true;
}

/** Runs until a signal asks for the end. Returns the exit code. */
int serve(const Options &options)
{
    // All threads leave these signals to sigwait() below; a client that has gone is no reason to end.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    int output = -1;
    if (!redirectProviderOutput(options.providerOutput, output)) {
        return 1;
    }
    cim::ClassRepository repository;
    if (!readClasses(options.mofFiles, repository)) {
        return 1;
    }
    std::vector<std::string> problems;
    std::vector<host::Registration> registrations;
    for (const std::string &file : options.registrations) {
        for (host::Registration &registration : host::readRegistrationFile(file, problems)) {
            registrations.push_back(std::move(registration));
        }
    }
    host::Accounts accounts(options.accounts);
    std::string problem;
    if (!accounts.load(problem)) {
        problems.push_back(problem + " (display-host account add --accounts " + options.accounts +
                           " USER makes an account)");
    }
    host::ObjectManagerOptions managerOptions;
    managerOptions.nameSpace = options.nameSpace;
    managerOptions.libraryDirectories = options.libraryDirectories;
    managerOptions.libraryFile = options.library;
    host::ObjectManager manager(std::move(repository), managerOptions);
    for (const std::string &text : manager.load(registrations)) {
        problems.push_back(text);
    }
    if (!problems.empty()) {
        for (const std::string &text : problems) {
            host::logLine("%s", text.c_str());
        }
        return 1;
    }
    std::fflush(stdout); // what the providers printed when they were loaded
    manager.dispatcher().setPatience(std::chrono::seconds(options.patienceSeconds));
    manager.dispatcher().setProviderCalls(options.providerCalls);

    host::CimXmlFrontEnd cimXml(manager.dispatcher());
    host::WsmanFrontEnd wsman(manager.dispatcher());
    host::HttpServer server(accounts, {&cimXml, &wsman}, options.limits);
    if (!server.start({options.address, options.port}, problem)) {
        host::logLine("%s", problem.c_str());
        return 1;
    }
    if (!announce(options, server.endpoints().front().port, output)) {
        return 1;
    }
    int signal = 0;
    sigwait(&signals, &signal);

    // A provider may wait for the display engine without end. Then nothing is left to do but to go.
    std::thread([] {
        std::this_thread::sleep_for(std::chrono::seconds(5));
        host::logLine("a provider has not returned; leaving without it");
        if (ftrylockfile(stdout) == 0) { // unless it is the very printing that does not return
            fflush_unlocked(stdout);
        }
        _exit(0);
    }).detach();
    server.stop();
    return 0;
}

int addAccount(const std::string &accounts, const std::string &user)
{
    std::string password;
    if (!std::getline(std::cin, password)) {
        host::logLine("the password is read from standard input, and there is none");
        return 1;
    }
    std::string problem;
    if (!host::addAccount(accounts, user, password, {}, problem)) {
        host::logLine("%s", problem.c_str());
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    CLI::App app("The desk object manager: loads CMPI providers and serves them by CIM-XML over HTTP.");
    app.name("display-host");
    app.add_option("--mof", options.mofFiles, "Files with the class definitions (MOF)")
        ->check(CLI::ExistingFile);
    app.add_option("--registration", options.registrations, "Files that register the providers")
        ->check(CLI::ExistingFile);
    app.add_option("--library-dir", options.libraryDirectories,
                   "Directories with the provider libraries; without, where the system looks");
    app.add_option("--library", options.library, "The provider library, whatever its place")
        ->check(CLI::ExistingFile);
    app.add_option("--accounts", options.accounts, "The file with the accounts, user:hash");
    app.add_option("--address", options.address, "The numeric IP address to listen on")
        ->capture_default_str();
    app.add_option("--port", options.port,
                   "The port to listen on; 0: any free one, see the \"listening\" line")
        ->capture_default_str();
    app.add_option("--namespace", options.nameSpace, "The CIM namespace")->capture_default_str();
    app.add_option("--provider-output", options.providerOutput,
                   "Where the standard output of the providers goes, request by request; without, where that "
                   "of display-host goes");
    app.add_option("--ready-file", options.readyFile, "Written when the server listens, with its URL");
    app.add_option("--max-body", options.limits.bodyBytes, "Bytes of a request body at most")
        ->capture_default_str()
        ->check(CLI::Range(1024, 1 << 30));
    app.add_option("--max-connections", options.limits.total, "Connections at most")
        ->capture_default_str()
        ->check(CLI::Range(1, 10000));
    app.add_option("--idle-timeout", options.idleSeconds, "Seconds after which a silent connection is closed")
        ->capture_default_str()
        ->check(CLI::Range(1, 86400));
    app.add_option("--transfer-timeout", options.transferSeconds,
                   "Seconds that a client may take to send a request, or to take an answer")
        ->capture_default_str()
        ->check(CLI::Range(1, 86400));
    app.add_option(
           "--provider-calls", options.providerCalls,
           "Requests with the providers at a time; more than 1 only where the support library pairs each "
           "reply with its caller")
        ->capture_default_str()
        ->check(CLI::Range(1, 64));
    app.add_option("--provider-timeout", options.patienceSeconds,
                   "Seconds that a request waits for those before it to leave the providers")
        ->capture_default_str()
        ->check(CLI::Range(1, 86400));

    CLI::App *account = app.add_subcommand("account", "Manages the accounts");
    account->require_subcommand(1);
    CLI::App *add =
        account->add_subcommand("add", "Adds an account, or gives it a new password, which is the "
                                       "first line of standard input");
    std::string user;
    std::string accountsOfAdd;
    add->add_option("--accounts", accountsOfAdd, "The file with the accounts")->required();
    add->add_option("user", user, "The name of the user")->required();
    CLI11_PARSE(app, argc, argv);

    try {
        if (add->parsed()) {
            return addAccount(accountsOfAdd, user);
        }
        if (options.mofFiles.empty() || options.registrations.empty() || options.accounts.empty()) {
            host::logLine("--mof, --registration and --accounts are needed; see --help");
            return 1;
        }
        options.limits.idle = std::chrono::seconds(options.idleSeconds);
        options.limits.transfer = std::chrono::seconds(options.transferSeconds);
        return serve(options);
    } catch (const std::exception &problem) {
        host::logLine("%s", problem.what());
        return 1;
    }
}
