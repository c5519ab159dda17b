// SPDX-License-Identifier: Apache-2.0
// What is looked at when everything has come to rest: is all as it was told to be, and is nothing left
// behind?
#ifndef TESTS_SOAK_CHECKPOINT_H
#define TESTS_SOAK_CHECKPOINT_H

#include "account.h"
#include "desk.h"

#include <string>
#include <vector>

namespace soak
{

/** What a process takes. */
struct Usage {
    long resident = 0; // kB
    int descriptors = 0;
    long threads = 0;
};

/** The least and the most of a figure. */
struct Span {
    long least = -1;
    long most = -1;

    void take(long value)
    {
        least = least < 0 ? value : std::min(least, value);
        most = std::max(most, value);
    }
};

class Checkpoint
{
  public:
    Checkpoint(Desk &desk, Ledger &ledger, std::vector<Account> &accounts)
        : desk_(desk), ledger_(ledger), accounts_(accounts)
    {
    }

    /** No client is at work. Waits for what is still under way, then looks at everything. False when the
     * monitor does not answer any more. */
    bool look();

    /** Takes what the monitor shows for what it should. */
    void adopt();

    Span hostMemory, hostDescriptors, hostThreads, engineMemory, engineDescriptors, storeSize, auditSize;
    long recordsChecked = 0;

  private:
    bool comesToRest();
    void compareSettings();
    void compareRecords();
    void compareUsage();
    void bound(const std::string &what, long value, long before, long allowed);
    Value shownBy(const Account &account);

    Desk &desk_;
    Ledger &ledger_;
    std::vector<Account> &accounts_;
    Connection connection_;
    Protocol protocol_ = Protocol::cimXml;
    pid_t knownHost_ = 0;
    pid_t knownEngine_ = 0;
    Usage host_;   // when the process was first looked at
    Usage engine_; // when the process was first looked at
};

} // namespace soak

#endif
