// SPDX-License-Identifier: Apache-2.0
// Passwords: from DISPLAYCTL_PASSWORD, else from the password file, else asked on the terminal; never from
// the command line.
#ifndef DISPLAYCTL_SITE_CREDENTIALS_H
#define DISPLAYCTL_SITE_CREDENTIALS_H

#include "site/monitors.h"

#include <span>

namespace displayctl::site
{

/** Gives each monitor that has a user its password. What has to be asked is asked once for each user. A
 * monitor stays without where there is none and no terminal to ask on; its requests are then answered with
 * Status::unauthorized and what to do. Throws Error when a password file cannot be read or group or others
 * have any permission for it. */
void addPasswords(std::span<Monitor> monitors);

} // namespace displayctl::site

#endif
