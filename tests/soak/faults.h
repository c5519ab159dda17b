// SPDX-License-Identifier: Apache-2.0
// What goes wrong on purpose.
#ifndef TESTS_SOAK_FAULTS_H
#define TESTS_SOAK_FAULTS_H

#include "clients.h"
#include "desk.h"

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace soak
{

/** A thing to have trouble with, made by the driver. */
struct Trouble {
    Desk &desk;
    CommandClient &commands;
    Ledger &ledger;
    Random &random;
    bool isLong; // as long as limits of time are
};

struct FaultKind {
    const char *name;
    /** Makes the trouble, and puts an end to it. False where it cannot be made here. */
    bool (*happen)(Trouble &trouble);
    /** The engine may be gone, or its answer, after it has made a change. */
    bool missingAnswerSaysNothing = false;
};

std::span<const FaultKind> faultKinds();

/** Gives store and audit log file systems of their own, small ones, in a view of the file systems that is
 * this process's and its children's alone. Before any thread is started. False where that cannot be. */
bool makeSmallDisks(const std::string &storeDirectory, const std::string &auditDirectory);

/** Takes them away again, with all that is on them. */
void removeSmallDisks(const std::string &storeDirectory, const std::string &auditDirectory);

} // namespace soak

#endif
