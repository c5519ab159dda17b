// SPDX-License-Identifier: Apache-2.0
#include "checkpoint.h"

#include <algorithm>
#include <filesystem>

namespace soak
{

namespace
{

// What a process may take more than when it was first looked at.
constexpr long moreMemory = 16L * 1024; // kB
constexpr long moreDescriptors = 8;
constexpr long moreThreads = 2;
// Bytes: the write-ahead log is 4 MB, and what was not yet taken over; the audit log is put aside twice.
constexpr long largestStore = 12L << 20U;
constexpr long largestAudit = 5L << 20U;
// Requests and replies, the board with its memory and semaphores.
constexpr int mostKernelObjects = 8;

long sizeOf(const std::string &directory)
{
    long size = 0;
    for (const auto &entry : std::filesystem::directory_iterator(directory)) {
        std::error_code problem;
        const auto bytes = entry.file_size(problem);
        size += problem ? 0 : static_cast<long>(bytes);
    }
    return size;
}

Usage usageOf(pid_t pid)
{
    return {statusOf(pid, "VmRSS"), descriptorsOf(pid).all, statusOf(pid, "Threads")};
}

} // namespace

/** True when nothing is under way any more and a request goes all the way to the engine and back. */
bool Checkpoint::comesToRest()
{
    const bool hostRests = eventually([&] { return descriptorsOf(desk_.host().pid()).sockets <= 1; });
    if (!hostRests) {
        ledger_.wrong("the object manager keeps connections that have gone");
    }
    const bool answers = eventually([&] {
        Connection connection;
        return connection.send(desk_.ledger().port, desk_.administrator(), readMonitorMessage()).outcome ==
               Outcome::done;
    });
    if (!answers) {
        ledger_.wrong("the monitor does not answer any more");
        return false;
    }
    if (!eventually([&] { return desk_.messagesIn(0) == 0 && desk_.messagesIn(3) == 0; })) {
        ledger_.wrong(std::to_string(desk_.messagesIn(0)) + " requests and " +
                      std::to_string(desk_.messagesIn(3)) + " replies are left in the queues");
    }
    return true;
}

Value Checkpoint::shownBy(const Account &account)
{
    Answer answer;
    eventually([&] {
        answer = connection_.send(desk_.ledger().port, desk_.administrator(),
                                  readMessage(protocol_, account.setting()));
        return answer.outcome == Outcome::done;
    });
    return shownValue(account.setting(), propertiesOf(answer.body, account.setting().properties));
}

void Checkpoint::compareSettings()
{
    for (Account &account : accounts_) {
        const Value shown = shownBy(account);
        if (!account.mayShow(shown)) {
            std::string expected;
            for (const Value &value : account.possible()) {
                expected += (expected.empty() ? "" : " or ") + describe(account.setting(), value);
            }
            ledger_.wrong("at rest the monitor has " + describe(account.setting(), shown) + " instead of " +
                          expected);
        }
        account.settle(shown);
    }
}

void Checkpoint::adopt()
{
    for (Account &account : accounts_) {
        account.settle(shownBy(account));
    }
    desk_.newRecords();
    compareUsage();
    connection_ = Connection();
}

/** Each change that was acknowledged has its line in the audit log. */
void Checkpoint::compareRecords()
{
    // Lines that the disk had no room for are written before the next change, whatever becomes of that one.
    const Setting &setting = std::ranges::find_if(accounts_, [](const Account &account) {
                                 return !account.setting().isAdministrators;
                             })->setting();
    const Answer answer = connection_.send(desk_.ledger().port, desk_.administrator(),
                                           changeMessage(protocol_, setting, refusedValue(setting)));
    if (answer.outcome != Outcome::refused) {
        ledger_.wrong("a change at rest that has to be refused was not");
    }
    std::map<std::string, long> expected = ledger_.takeExpectedRecords();
    for (const std::string &line : desk_.newRecords()) {
        const auto part = [&](const char *from, const char *to) {
            const std::size_t begin = line.find(from);
            const std::size_t end = begin == std::string::npos ? begin : line.find(to, begin);
            return end == std::string::npos ? std::string() : line.substr(begin, end - begin);
        };
        const auto found =
            expected.find(part("\"user\"", ",\"address\"") + " " + part("\"method\"", ",\"value\""));
        if (found != expected.end()) {
            --found->second;
        }
        ++recordsChecked;
    }
    for (const auto &[record, missing] : expected) {
        if (missing > 0) {
            ledger_.wrong("the audit log does not have " + record + ", " + std::to_string(missing) +
                          " times");
        }
    }
    const std::string log = desk_.directory() + "/verify.log";
    std::filesystem::remove(log);
    if (run({desk_.programs().host, "audit", "verify", desk_.audit()}, "", log) != 0) {
        ledger_.wrong("the audit log does not verify: see " + log);
    }
}

void Checkpoint::bound(const std::string &what, long value, long before, long allowed)
{
    if (value > before + allowed) {
        ledger_.wrong(what + ": " + std::to_string(value) + ", and " + std::to_string(before) + " before");
    }
}

void Checkpoint::compareUsage()
{
    const Usage host = usageOf(desk_.host().pid());
    const Usage engine = usageOf(desk_.engine().pid());
    if (knownHost_ != desk_.host().pid()) {
        knownHost_ = desk_.host().pid();
        host_ = host;
    }
    if (knownEngine_ != desk_.engine().pid()) {
        knownEngine_ = desk_.engine().pid();
        engine_ = engine;
    }
    if (!desk_.programs().isSanitized) { // the sanitizers keep memory that is given back
        bound("memory of the object manager in kB", host.resident, host_.resident, moreMemory);
        bound("memory of the engine in kB", engine.resident, engine_.resident, moreMemory);
    }
    bound("descriptors of the object manager", host.descriptors, host_.descriptors, moreDescriptors);
    bound("descriptors of the engine", engine.descriptors, engine_.descriptors, moreDescriptors);
    bound("threads of the object manager", host.threads, host_.threads, moreThreads);
    bound("queues, memories and semaphores", desk_.kernelObjects(), mostKernelObjects, 0);
    bound("bytes of the store", sizeOf(desk_.storeDirectory()), largestStore, 0);
    bound("bytes of the audit log", sizeOf(desk_.auditDirectory()), largestAudit, 0);
    hostMemory.take(host.resident);
    hostDescriptors.take(host.descriptors);
    hostThreads.take(host.threads);
    engineMemory.take(engine.resident);
    engineDescriptors.take(engine.descriptors);
    storeSize.take(sizeOf(desk_.storeDirectory()));
    auditSize.take(sizeOf(desk_.auditDirectory()));
}

bool Checkpoint::look()
{
    if (desk_.host().hasEnded() || desk_.engine().hasEnded()) {
        ledger_.wrong(desk_.host().hasEnded() ? "the object manager has ended by itself"
                                              : "the engine has ended by itself");
        return false;
    }
    connection_ = Connection(); // a new process may be there
    if (!comesToRest()) {
        return false;
    }
    protocol_ = protocol_ == Protocol::cimXml ? Protocol::wsMan : Protocol::cimXml;
    compareSettings();
    compareRecords();
    connection_ = Connection();
    compareUsage();
    desk_.trimLogs();
    return true;
}

} // namespace soak
