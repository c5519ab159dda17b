// SPDX-License-Identifier: Apache-2.0
// Accounts whose passwords are quick to look at.
#ifndef FUZZ_QUICK_ACCOUNTS_H
#define FUZZ_QUICK_ACCOUNTS_H

#include "core/accounts.h"

#include <memory>

namespace fuzz
{

/** "operator" with the password "secret: word", and "locked", whom none lets in. The file goes with the
 * program. */
std::unique_ptr<host::Accounts> quickAccounts();

} // namespace fuzz

#endif
