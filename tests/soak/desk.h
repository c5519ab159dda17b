// SPDX-License-Identifier: Apache-2.0
// The monitor that is soaked: engine, object manager, store, audit log and queues of its own.
#ifndef TESTS_SOAK_DESK_H
#define TESTS_SOAK_DESK_H

#include "account.h"
#include "connection.h"
#include "process.h"

#include <chrono>
#include <string>
#include <vector>

namespace soak
{

/** Enough for a machine that has much else to do. Nothing waits so long where all is well. */
constexpr std::chrono::seconds patience{120};

struct Programs {
    std::string host;
    std::string engine;
    std::string command;
    std::string library;
    std::string displayctl;
    std::string clock; // preloaded; "" where that cannot be
    std::string source;
    bool isSanitized = false;
};

/** Those that the environment names. Throws std::runtime_error when one is not there. */
Programs findPrograms();

class Desk
{
  public:
    /** Makes the accounts and starts both processes. Throws std::runtime_error. */
    Desk(const Programs &programs, const std::string &directory, Ledger &ledger,
         std::vector<std::string> hostOptions = {});
    ~Desk();
    Desk(const Desk &) = delete;
    Desk &operator=(const Desk &) = delete;

    void startEngine();
    void startHost();

    /** Ends both as a service is ended. */
    void stop();

    Process &engine()
    {
        return engine_;
    }
    Process &host()
    {
        return host_;
    }

    int tlsPort() const
    {
        return tlsPort_;
    }
    const User &user(std::size_t index) const
    {
        return users_[index % users_.size()];
    }
    const User &administrator() const
    {
        return users_[0];
    }
    const User &ordinary() const
    {
        return users_[1];
    }
    /** An account that may only read. */
    const User &reader() const
    {
        return reader_;
    }

    /** The queue of that number, 0 for requests and 3 for replies; -1 when there is none. */
    int queue(int number) const;
    /** How many messages it holds. */
    long messagesIn(int number) const;
    /** Queues, shared memory and semaphores of this desk. */
    int kernelObjects() const;

    std::string storeDirectory() const
    {
        return directory_ + "/store";
    }
    std::string store() const
    {
        return storeDirectory() + "/monitor.db";
    }
    std::string auditDirectory() const
    {
        return directory_ + "/audit";
    }
    std::string audit() const
    {
        return auditDirectory() + "/audit.log";
    }
    Ledger &ledger()
    {
        return ledger_;
    }
    const Programs &programs() const
    {
        return programs_;
    }
    const std::string &directory() const
    {
        return directory_;
    }

    /** Sets the clock of the processes forth or back; false where that cannot be. */
    bool stepClock(std::chrono::seconds offset);

    /** The lines of the audit log since the last call. */
    std::vector<std::string> newRecords();

    /** Logs that have become large are emptied. */
    void trimLogs();

  private:
    void makeAccount(const std::string &name, const std::vector<std::string> &role, User &user);
    std::vector<std::string> withClock(std::vector<std::string> command) const;
    void awaitReady(Process &process, const std::string &file, const std::string &what);

    Programs programs_;
    std::string directory_;
    Ledger &ledger_;
    Process engine_;
    Process host_;
    std::vector<std::string> hostOptions_;
    int tlsPort_ = 0;
    std::vector<User> users_;
    User reader_;
    int key_ = 0;
    std::string lastRecord_;
};

/** Waits until something is so; false when it is not in time. */
template <class Condition>
bool eventually(Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        timespec pause{0, 5'000'000};
        nanosleep(&pause, nullptr);
    }
    return true;
}

} // namespace soak

#endif
