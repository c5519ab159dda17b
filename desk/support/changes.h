// SPDX-License-Identifier: Apache-2.0
// What desk-monitor changes. Every function throws UsageError when it is told something that cannot be.
#ifndef DESK_SUPPORT_CHANGES_H
#define DESK_SUPPORT_CHANGES_H

#include <string>

namespace desk
{

void setSetting(const std::string &name, std::string value);

/** state: on or off; nothing for the name clear, which switches all faults off. */
void switchFault(const std::string &name, const std::string &state, const std::string &argument);

/** A line for each fault: name, argument, meaning. */
std::string faultList();

void addUser(const std::string &name, bool administrator);
void removeUser(const std::string &name);

/** Restores the factory values of all settings. */
void resetSettings();

/** Removes the queues of the base key and what waits on them. */
void removeQueues();

} // namespace desk

#endif
