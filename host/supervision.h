// SPDX-License-Identifier: Apache-2.0
// What systemd gives a service, and wants to hear of it (sd_notify(3), sd_listen_fds(3)); and whose rights
// the program has. Without systemd all this does nothing.
#ifndef HOST_SUPERVISION_H
#define HOST_SUPERVISION_H

#include <string>

namespace host
{

/** The listening socket that was handed over under that name, "http" or "https"; -1: none. Each can be had
 * once. */
int inheritedSocket(const char *name);

/** Tells the service manager: "READY=1", "WATCHDOG=1", "STOPPING=1". */
void notifySupervisor(const char *state);

/** As root, becomes that user for good; "": the user display-host if there is one. As another user it can
 * only be that user. False, with the reason in problem, on failure; what should be known otherwise is logged.
 */
[[nodiscard]] bool becomeUser(const std::string &user, std::string &problem);

} // namespace host

#endif
