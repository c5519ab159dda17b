// SPDX-License-Identifier: Apache-2.0
// soak-driver: operations by both protocols and displayctl on a desk monitor of its own, while things go
// wrong.
//
// It works in rounds. In each, all clients do their share at once, something goes wrong in the middle, and at
// the end everything has to be as it was acknowledged. The seed decides who does what and what goes wrong
// when.
#include "checkpoint.h"
#include "clients.h"
#include "desk.h"
#include "faults.h"

#include <CLI/CLI.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <thread>

namespace
{

using namespace soak;
using Clock = std::chrono::steady_clock;

struct Options {
    long operations = 5000;
    long minutes = 0;
    long perRound = 4000;
    std::uint64_t seed = 1;
    bool keep = false;
};

class Soak
{
  public:
    Soak(const Options &options, const Programs &programs, const std::string &directory)
        : options_(options), random_(options.seed), accounts_(settings().begin(), settings().end()),
          desk_(programs, directory, ledger_), commands_(desk_, ledger_, options.seed * 1000 + 99),
          checkpoint_(desk_, ledger_, accounts_)
    {
        constexpr std::size_t protocolClients = 8;
        for (std::size_t i = 0; i < protocolClients; ++i) {
            const Protocol protocol = i % 2 == 0 ? Protocol::cimXml : Protocol::wsMan;
            clients_.push_back(std::make_unique<ProtocolClient>(desk_, ledger_, protocol, desk_.user(i),
                                                                options.seed * 1000 + i));
        }
        distribute();
    }

    /** True when nothing was found wrong. */
    bool run();
    void report() const;

  private:
    void distribute();
    void round(long operations, const FaultKind &kind);
    void workTogether(long operations, const FaultKind &kind);
    const FaultKind &nextKind();
    void progress(const FaultKind &kind);

    Options options_;
    Random random_;
    Ledger ledger_;
    std::vector<Account> accounts_;
    Desk desk_;
    std::vector<std::unique_ptr<ProtocolClient>> clients_;
    CommandClient commands_;
    Checkpoint checkpoint_;
    std::vector<const FaultKind *> deck_;
    std::map<std::string, long> happened_;
    std::map<std::string, long> impossible_;
    long rounds_ = 0;
    Clock::time_point begin_ = Clock::now();
};

/** Each setting has one client that changes it; the administrator's an administrator. */
void Soak::distribute()
{
    std::size_t next = 0;
    for (Account &account : accounts_) {
        if (*account.setting().name != '\0') {
            commands_.owns(account);
        } else if (account.setting().isAdministrators) {
            clients_[0]->owns(account);
        } else {
            clients_[++next % clients_.size()]->owns(account);
        }
    }
}

/** Every kind comes once before one comes again. */
const FaultKind &Soak::nextKind()
{
    if (deck_.empty()) {
        for (const FaultKind &kind : faultKinds()) {
            deck_.push_back(&kind);
        }
        std::shuffle(deck_.begin(), deck_.end(), random_);
    }
    const FaultKind &kind = *deck_.back();
    deck_.pop_back();
    return kind;
}

void Soak::workTogether(long operations, const FaultKind &kind)
{
    // displayctl is a process for each operation.
    const long byCommand = std::max(operations / 100, 4L);
    const long byProtocol = std::max(operations - byCommand, 0L);
    const long share = byProtocol / static_cast<long>(clients_.size());
    const long begin = ledger_.operations;
    const long moment = operations * anyOf(random_, 5, 60) / 100;
    const bool isLong = anyOf(random_, 0, 9) == 0 && options_.operations > 100'000;
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < clients_.size(); ++i) {
        const long rest = i == 0 ? byProtocol % static_cast<long>(clients_.size()) : 0;
        threads.emplace_back([this, i, count = share + rest] { clients_[i]->work(count); });
    }
    threads.emplace_back([this, byCommand] { commands_.work(byCommand); });
    while (ledger_.operations < begin + moment) {
        usleep(500);
    }
    Trouble trouble{desk_, commands_, ledger_, random_, isLong};
    if (kind.happen(trouble)) {
        ++happened_[kind.name];
    } else {
        ++impossible_[kind.name];
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

void Soak::round(long operations, const FaultKind &kind)
{
    ledger_.setScene("seed " + std::to_string(options_.seed) + ", round " + std::to_string(++rounds_) + ", " +
                     kind.name);
    ledger_.missingAnswerSaysNothing = kind.missingAnswerSaysNothing;
    workTogether(operations, kind);
    ledger_.clientsAreKilled = false;
}

void Soak::progress(const FaultKind &kind)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - begin_).count();
    std::cerr << std::setw(5) << seconds << " s  " << std::setw(8) << ledger_.operations << " operations  "
              << ledger_.wrongs() << " wrong  " << kind.name << std::endl;
}

bool Soak::run()
{
    checkpoint_.adopt();
    while (ledger_.operations < options_.operations) {
        if (options_.minutes > 0 && Clock::now() - begin_ > std::chrono::minutes(options_.minutes)) {
            break;
        }
        const FaultKind &kind = nextKind();
        round(std::min(options_.perRound, options_.operations - ledger_.operations), kind);
        if (!checkpoint_.look()) {
            break;
        }
        if (rounds_ % 25 == 0) {
            commands_.verifyHistory();
        }
        progress(kind);
    }
    commands_.verifyHistory();
    desk_.stop();
    if (ledger_.counted(Count::acknowledged) * 10 < ledger_.operations) {
        ledger_.wrong("fewer than one operation in ten was an acknowledged change");
    }
    return ledger_.wrongs() == 0;
}

void Soak::report() const
{
    const auto row = [](const std::string &what, const auto &...figures) {
        std::cout << std::left << std::setw(48) << what;
        (std::cout << ... << figures) << '\n';
    };
    const auto span = [&](const std::string &what, const Span &figure) {
        row(what, figure.least, " to ", figure.most);
    };
    row("seed", options_.seed);
    row("operations", ledger_.operations.load());
    row("rounds", rounds_);
    row("seconds", std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - begin_).count());
    for (std::size_t i = 0; i < static_cast<std::size_t>(Count::end); ++i) {
        row(nameOf(static_cast<Count>(i)), ledger_.counted(static_cast<Count>(i)));
    }
    for (const auto &[name, count] : happened_) {
        row("fault: " + name, count);
    }
    for (const auto &[name, count] : impossible_) {
        row("fault: " + name, "SKIPPED, cannot be made here, ", count, " times");
    }
    std::chrono::milliseconds slowest{};
    for (const auto &client : clients_) {
        slowest = std::max(slowest, client->slowest());
    }
    row("slowest request, faults included, in ms", slowest.count());
    row("lines of the audit log compared", checkpoint_.recordsChecked);
    span("object manager at rest: memory in kB", checkpoint_.hostMemory);
    span("object manager at rest: descriptors", checkpoint_.hostDescriptors);
    span("object manager at rest: threads", checkpoint_.hostThreads);
    span("engine at rest: memory in kB", checkpoint_.engineMemory);
    span("engine at rest: descriptors", checkpoint_.engineDescriptors);
    span("store in bytes", checkpoint_.storeSize);
    span("audit log in bytes", checkpoint_.auditSize);
    row("wrong", ledger_.wrongs());
}

int soakIn(const std::string &directory, const Options &options)
{
    const Programs programs = findPrograms();
    std::filesystem::create_directory(directory + "/store");
    std::filesystem::create_directory(directory + "/audit");
    if (!makeSmallDisks(directory + "/store", directory + "/audit")) {
        std::cerr << "No file systems can be made here: the full disks are skipped.\n";
    }
    if (programs.clock.empty()) {
        std::cerr << "Sanitizers: the steps of the clock are skipped.\n";
    }
    Soak soak(options, programs, directory);
    const bool isRight = soak.run();
    soak.report();
    return isRight ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    CLI::App app{
        "Operations by both protocols and displayctl on a desk monitor of its own, while things go wrong."};
    app.add_option("--operations", options.operations, "How many in all")
        ->check(CLI::Range(1L, 1'000'000'000L))
        ->capture_default_str();
    app.add_option("--per-round", options.perRound, "How many between two checks")
        ->check(CLI::Range(10L, 1'000'000L))
        ->capture_default_str();
    app.add_option("--minutes", options.minutes, "Ends after so long, even if there were fewer")
        ->check(CLI::Range(1L, 100'000L));
    app.add_option("--seed", options.seed, "Decides what is done and what goes wrong")->capture_default_str();
    app.add_flag("--keep", options.keep, "Leaves its directory, with the logs, behind");
    app.set_version_flag("--version", "soak-driver " PROJECT_VERSION);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &problem) {
        return app.exit(problem) == 0 ? 0 : 2;
    }
    curl_global_init(CURL_GLOBAL_DEFAULT);
    std::string directory = std::filesystem::temp_directory_path() / "soak.XXXXXX";
    if (mkdtemp(directory.data()) == nullptr) {
        std::cerr << "soak-driver: no directory can be made in " << std::filesystem::temp_directory_path()
                  << '\n';
        return 1;
    }
    int result = 1;
    try {
        result = soakIn(directory, options);
    } catch (const std::exception &problem) {
        std::cerr << "soak-driver: " << problem.what() << '\n';
    }
    std::error_code ignored;
    if (options.keep) {
        std::cerr << "Its files are in " << directory << '\n';
    } else {
        removeSmallDisks(directory + "/store", directory + "/audit");
        std::filesystem::remove_all(directory, ignored);
    }
    return result;
}
