// SPDX-License-Identifier: Apache-2.0
// The clients: each has settings of its own, which nobody else changes.
#ifndef TESTS_SOAK_CLIENTS_H
#define TESTS_SOAK_CLIENTS_H

#include "account.h"
#include "connection.h"
#include "desk.h"

#include <chrono>
#include <string>
#include <vector>

namespace soak
{

/** A client of one of the two protocols, on a connection that it keeps. */
class ProtocolClient
{
  public:
    ProtocolClient(Desk &desk, Ledger &ledger, Protocol protocol, const User &user, std::uint64_t seed);

    void owns(Account &account)
    {
        accounts_.push_back(&account);
    }
    const User &user() const
    {
        return user_;
    }

    /** So many operations, one after the other. The connection ends with them. */
    void work(long operations);

    std::chrono::milliseconds slowest() const
    {
        return slowest_;
    }

  private:
    Answer ask(const User &user, const Message &message, bool mayBreakOff);
    void one();
    void readOwn();
    void readOther();
    void enumerate();
    void change();
    void changeThatIsRefused();
    Answer refusedRequest(const Account &account, std::string &what);
    void failed(const Answer &answer);

    Desk &desk_;
    Ledger &ledger_;
    Protocol protocol_;
    User user_;
    Random random_;
    std::vector<Account *> accounts_;
    std::unique_ptr<Connection> connection_;
    std::chrono::milliseconds slowest_{};
};

/** displayctl, one process for each operation. */
class CommandClient
{
  public:
    CommandClient(Desk &desk, Ledger &ledger, std::uint64_t seed);

    void owns(Account &account)
    {
        accounts_.push_back(&account);
    }
    void work(long operations);

    /** The process of the moment, to be stopped or killed. */
    Process &process()
    {
        return process_;
    }

    /** The history that displayctl keeps is whole. */
    void verifyHistory();

  private:
    int command(const std::vector<std::string> &arguments);
    std::vector<std::string> output() const;
    void get();
    void set();
    void setThatIsRefused();

    Desk &desk_;
    Ledger &ledger_;
    Random random_;
    std::vector<Account *> accounts_;
    Process process_;
};

/** The line that a change leaves in the audit log, as far as it can be known beforehand. */
std::string recordOf(const std::string &user, const Setting &setting, const Value &value);

} // namespace soak

#endif
