// SPDX-License-Identifier: Apache-2.0
// The instance provider of Linux_ComputerSystem: the computer that the object manager runs on. Elsewhere it
// belongs to the operating system's providers; associations lean on it.
#ifndef HOST_CORE_COMPUTER_SYSTEM_H
#define HOST_CORE_COMPUTER_SYSTEM_H

#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>

namespace host
{

inline constexpr const char *computerSystemClass = "Linux_ComputerSystem";

/** The factory of the provider. */
CMPIInstanceMI *createComputerSystemProvider(const CMPIBroker *broker, const CMPIContext *context,
                                             CMPIStatus *status);

/** The name of this host. */
const char *localHostName();

} // namespace host

#endif
