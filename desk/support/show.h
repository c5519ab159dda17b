// SPDX-License-Identifier: Apache-2.0
// What desk-monitor prints of the monitor.
#ifndef DESK_SUPPORT_SHOW_H
#define DESK_SUPPORT_SHOW_H

#include <string>

namespace desk
{

/** Prints a part of what the monitor holds, the value of one setting, or the settings with the text in their
 * names; everything when the text is empty. Throws UsageError when nothing is called so. */
void show(const std::string &what);

/** The names of the parts, with commas between them. */
std::string shownParts();

} // namespace desk

#endif
