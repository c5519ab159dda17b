// SPDX-License-Identifier: Apache-2.0
// Profiles: settings in YAML, nested by group.
#ifndef DISPLAYCTL_PROFILE_PROFILE_H
#define DISPLAYCTL_PROFILE_PROFILE_H

#include "model/names.h"
#include "model/state.h"
#include "site/monitors.h"

#include <filesystem>
#include <string>
#include <vector>

namespace displayctl::profile
{

/** One setting of a profile. */
struct Entry {
    model::Named named;
    model::Value value;
};

/** Reads a profile; throws model::BadValue, with file and line, when it is none, when it names an unknown
 * setting or one that cannot be changed, or when a value is none that a monitor takes. */
[[nodiscard]] std::vector<Entry> read(const std::filesystem::path &file, const site::CodeNames &names);

/** The same from a text; name stands for the file in messages. */
[[nodiscard]] std::vector<Entry> readText(const std::string &text, const std::string &name,
                                          const site::CodeNames &names);

/** All settings of the monitor that can be written and read, as a profile with units and ranges as comments.
 */
[[nodiscard]] std::string write(const model::State &state, const std::string &monitor,
                                const std::string &date, const site::CodeNames &names);

/** Writes a file whole or not at all. Throws model::BadValue when it cannot. */
void writeFile(const std::filesystem::path &file, const std::string &text);

} // namespace displayctl::profile

#endif
