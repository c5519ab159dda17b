// SPDX-License-Identifier: Apache-2.0
// A mistake of the one who gave the command.
#ifndef DESK_SUPPORT_USAGE_ERROR_H
#define DESK_SUPPORT_USAGE_ERROR_H

#include <stdexcept>

namespace desk
{

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace desk

#endif
