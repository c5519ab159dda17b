// SPDX-License-Identifier: Apache-2.0
// load-driver: good clients at an object manager of its own, first alone, then beside thousands of
// connections that are silent, slow, half-closed, or begin handshakes without end.
#include "connection.h"
#include "crowd.h"
#include "desk.h"

#include <CLI/CLI.hpp>

#include <sys/resource.h>

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <memory>
#include <thread>

namespace
{

using namespace soak;
using Clock = std::chrono::steady_clock;

struct Options {
    long connections = 10'000;
    long clients = 64;
    long requests = 0; // of each client in each half; 0: as many as the time allows
    long minutes = 10;
};

/** What the good clients of one half have seen. */
struct Seen {
    std::vector<double> milliseconds; // of those that were answered
    long refused = 0;                 // 503 or 429: come again
    long broken = 0;                  // the connection was ended, or there was none
    long wrong = 0;                   // any other answer
    long leastServed = -1;            // answers of the client that had fewest

    void add(const Seen &other)
    {
        const auto served = static_cast<long>(other.milliseconds.size());
        leastServed = leastServed < 0 ? served : std::min(leastServed, served);
        milliseconds.insert(milliseconds.end(), other.milliseconds.begin(), other.milliseconds.end());
        refused += other.refused;
        broken += other.broken;
        wrong += other.wrong;
    }
};

double percentile(std::vector<double> values, double part)
{
    if (values.empty()) {
        return 0;
    }
    const auto place =
        values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

class Load
{
  public:
    Load(const Options &options, Desk &desk, Ledger &ledger) : options_(options), desk_(desk), ledger_(ledger)
    {
    }

    bool run();

  private:
    Seen half(const std::string &name);
    Seen client(std::size_t number, Clock::time_point end) const;
    void reportHalf(const std::string &name, const Seen &seen);
    void reportCrowd(const Crowd &crowd) const;
    void compareUsage(const std::string &when, bool isAtRest);
    std::string crowdRequest() const;

    Options options_;
    Desk &desk_;
    Ledger &ledger_;
    long residentBefore_ = 0;
    int descriptorsBefore_ = 0;
};

template <class... Figures>
void row(const std::string &what, const Figures &...figures)
{
    std::cout << std::left << std::setw(56) << what;
    (std::cout << ... << figures) << '\n';
}

/** Enumerates, reads and changes, each client from an address of its own. */
Seen Load::client(std::size_t number, Clock::time_point end) const
{
    Seen seen;
    const std::string address = "127.3.0." + std::to_string(number % 250 + 1);
    auto connection = std::make_unique<Connection>(address);
    const Setting &setting = settings()[3 + number % 3];
    long done = 0;
    // By requests: until all are answered, as what is refused comes again. By time: until it has passed.
    const auto goesOn = [&] {
        return options_.requests > 0 ? done < options_.requests && Clock::now() < end : Clock::now() < end;
    };
    for (long i = 0; goesOn(); ++i) {
        const Protocol protocol = i % 2 == 0 ? Protocol::cimXml : Protocol::wsMan;
        const Message message = i % 5 == 4 ? changeMessage(protocol, setting, {static_cast<int>(i % 17) + 1})
                                : i % 5 == 3 ? readMessage(protocol, setting)
                                             : enumerateMessage(protocol, "ColorSpace");
        const auto begin = Clock::now();
        const Answer answer = connection->send(ledger_.port, desk_.user(number), message);
        const double took = std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
        if (answer.outcome == Outcome::done) {
            seen.milliseconds.push_back(took);
            ++done;
        } else if (answer.outcome == Outcome::notServed) {
            ++seen.refused;
            usleep(200'000);
        } else if (answer.outcome == Outcome::broken) {
            ++seen.broken;
            usleep(200'000);
        } else {
            ++seen.wrong;
            ledger_.failure(answer.text);
        }
    }
    return seen;
}

Seen Load::half(const std::string &name)
{
    std::cerr << name << std::endl;
    const auto end = Clock::now() + (options_.requests > 0 ? std::chrono::minutes(10)
                                                           : std::chrono::seconds(options_.minutes * 30));
    std::vector<Seen> seen(static_cast<std::size_t>(options_.clients));
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        threads.emplace_back([this, &seen, i, end] { seen[i] = client(i, end); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    Seen all;
    for (const Seen &one : seen) {
        all.add(one);
    }
    return all;
}

void Load::reportHalf(const std::string &name, const Seen &seen)
{
    row(name + ": requests answered", seen.milliseconds.size());
    row(name + ": told to come again (503, 429)", seen.refused);
    row(name + ": connections ended or not had", seen.broken);
    row(name + ": other answers", seen.wrong);
    row(name + ": answers of the client with fewest", seen.leastServed);
    row(name + ": half of them within, in ms", percentile(seen.milliseconds, 0.5));
    row(name + ": 99 of 100 within, in ms", percentile(seen.milliseconds, 0.99));
    row(name + ": the slowest, in ms", percentile(seen.milliseconds, 1));
    if (seen.wrong > 0) {
        ledger_.wrong(std::to_string(seen.wrong) + " answers that were neither right nor a refusal");
    }
    if (seen.leastServed < 1 || (options_.requests > 0 && seen.leastServed < options_.requests)) {
        ledger_.wrong(name + ": a client had only " + std::to_string(seen.leastServed) + " answers");
    }
}

void Load::reportCrowd(const Crowd &crowd) const
{
    row("connections opened, those that came back included", crowd.opened());
    row("at once at most", crowd.most());
    for (std::size_t i = 0; i < mannerCount; ++i) {
        const MannerCounts &counts = crowd.counts(static_cast<Manner>(i));
        row(std::string("  ") + nameOf(static_cast<Manner>(i)), counts.opened, " opened, ", counts.answered,
            " answered, ", counts.ended, " ended by the server, ", counts.refused, " not accepted");
        if (counts.opened == 0) {
            ledger_.wrong(std::string("no connection was opened: ") + nameOf(static_cast<Manner>(i)));
        }
    }
}

/** 64 connections with 512 kB each, and the budget of 64 MB; at rest a quarter of that for what the allocator
 * keeps. */
void Load::compareUsage(const std::string &when, bool isAtRest)
{
    const long resident = statusOf(desk_.host().pid(), isAtRest ? "VmRSS" : "VmHWM");
    const Descriptors descriptors = descriptorsOf(desk_.host().pid());
    row("object manager " + when + ": memory in kB", resident);
    row("object manager " + when + ": descriptors", descriptors.all);
    constexpr long budget = (64 + 32) * 1024L;
    if (!desk_.programs().isSanitized && resident > residentBefore_ + (isAtRest ? budget / 4 : budget)) {
        ledger_.wrong("memory " + when + ": " + std::to_string(resident) + " kB");
    }
    // Each connection may have its own, each of the eight places with the library the store's three.
    const int allowed = isAtRest ? 8 : 2 * 64 + 3 * 8 + 32;
    if (descriptors.all > descriptorsBefore_ + allowed) {
        ledger_.wrong("descriptors " + when + ": " + std::to_string(descriptors.all));
    }
}

/** A request with a login, long enough to be sent slowly, whose answer is long. */
std::string Load::crowdRequest() const
{
    const Message message = enumerateMessage(Protocol::cimXml, "ColorSpace");
    const User &user = desk_.ordinary();
    const std::string plain = user.name + ":" + user.password;
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string login;
    for (std::size_t i = 0; i < plain.size(); i += 3) {
        unsigned bits = 0;
        for (std::size_t j = 0; j < 3; ++j) {
            bits = bits << 8U | (i + j < plain.size() ? static_cast<unsigned char>(plain[i + j]) : 0U);
        }
        for (std::size_t j = 0; j < 4; ++j) {
            login += i + j > plain.size() ? '=' : letters[bits >> (18 - 6 * j) & 63U];
        }
    }
    return "POST /cimom HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/xml\r\nCIMOperation: MethodCall\r\n"
           "Authorization: Basic " +
           login + "\r\nContent-Length: " + std::to_string(message.body.size()) + "\r\n\r\n" + message.body;
}

bool Load::run()
{
    ledger_.setScene("load");
    Connection(std::string()).send(ledger_.port, desk_.administrator(), readMonitorMessage());
    residentBefore_ = statusOf(desk_.host().pid(), "VmRSS");
    descriptorsBefore_ = descriptorsOf(desk_.host().pid()).all;
    row("object manager before: memory in kB", residentBefore_);
    row("object manager before: descriptors", descriptorsBefore_);
    reportHalf("alone", half("The clients alone"));
    {
        CrowdPlan plan{ledger_.port, desk_.tlsPort(), options_.connections, crowdRequest()};
        const Crowd crowd(plan);
        if (!eventually([&] { return crowd.opened() >= options_.connections; })) {
            ledger_.wrong("not all connections of the crowd were opened");
        }
        reportHalf("in the crowd", half("The clients in the crowd"));
        compareUsage("in the crowd, at most", false);
        reportCrowd(crowd);
    }
    const bool rests = eventually([&] { return descriptorsOf(desk_.host().pid()).sockets <= 2; });
    if (!rests) {
        ledger_.wrong("connections are left");
    }
    compareUsage("at rest afterwards", true);
    Connection last;
    if (last.send(ledger_.port, desk_.administrator(), readMonitorMessage()).outcome != Outcome::done) {
        ledger_.wrong("the monitor does not answer any more");
    }
    last = Connection();
    for (const auto &[text, count] : ledger_.failures()) {
        row("other answer: " + text, count);
    }
    desk_.stop();
    row("wrong", ledger_.wrongs());
    return ledger_.wrongs() == 0;
}

/** A socket for each connection; the least that is needed if that many are not to be had. */
bool allowManyFiles(long count)
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const auto wanted = static_cast<rlim_t>(count + 1000);
    limit.rlim_cur = std::max(limit.rlim_cur, std::min(wanted, limit.rlim_max));
    setrlimit(RLIMIT_NOFILE, &limit);
    return limit.rlim_cur >= wanted;
}

int loadIn(const std::string &directory, const Options &options)
{
    Programs programs = findPrograms();
    programs.clock.clear();
    std::filesystem::create_directory(directory + "/store");
    std::filesystem::create_directory(directory + "/audit");
    if (run({programs.host, "certificate", "--certificate", directory + "/certificate.pem", "--key",
             directory + "/key.pem"},
            "", directory + "/certificate.log") != 0) {
        std::cerr << "load-driver: no certificate can be made\n";
        return 1;
    }
    if (!allowManyFiles(options.connections)) {
        std::cerr << "load-driver: so many files must not be open here; see ulimit -n\n";
        return 1;
    }
    Ledger ledger;
    Desk desk(programs, directory, ledger,
              {"--certificate", directory + "/certificate.pem", "--key", directory + "/key.pem",
               "--https-port", "0"});
    return Load(options, desk, ledger).run() ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    CLI::App app{
        "Good clients at an object manager of its own, alone and beside thousands of bad connections."};
    app.set_version_flag("--version", "load-driver " PROJECT_VERSION);
    app.add_option("--connections", options.connections, "Bad connections at once")
        ->check(CLI::Range(6L, 60'000L))
        ->capture_default_str();
    app.add_option("--clients", options.clients, "Good clients at once")
        ->check(CLI::Range(1L, 250L))
        ->capture_default_str();
    app.add_option("--minutes", options.minutes, "How long in all, half of it in the crowd")
        ->check(CLI::Range(1L, 100'000L))
        ->capture_default_str();
    app.add_option("--requests", options.requests, "Answers for each client in each half, instead of a time")
        ->check(CLI::Range(1L, 1'000'000L));
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &problem) {
        return app.exit(problem) == 0 ? 0 : 2;
    }
    curl_global_init(CURL_GLOBAL_DEFAULT);
    std::string directory = std::filesystem::temp_directory_path() / "load.XXXXXX";
    if (mkdtemp(directory.data()) == nullptr) {
        std::cerr << "load-driver: no directory can be made in " << std::filesystem::temp_directory_path()
                  << '\n';
        return 1;
    }
    int result = 1;
    try {
        result = loadIn(directory, options);
    } catch (const std::exception &problem) {
        std::cerr << "load-driver: " << problem.what() << '\n';
    }
    std::error_code ignored;
    std::filesystem::remove_all(directory, ignored);
    return result;
}
