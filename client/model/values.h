// SPDX-License-Identifier: Apache-2.0
// Values as people write them: from text, to text, and what a setting takes.
#ifndef DISPLAYCTL_MODEL_VALUES_H
#define DISPLAYCTL_MODEL_VALUES_H

#include "model/settings.h"
#include "model/state.h"
#include "site/monitors.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace displayctl::model
{

/** A value that no monitor takes, an unknown name: wrong usage, exit code 2. */
class BadValue : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

/** The value that the text means for the setting, checked against everything that does not depend on the
 * monitor's state. The name of a preset stays a text, because only the monitor knows it. Throws BadValue with
 * the values there are. */
[[nodiscard]] Value parseValue(const Setting &setting, std::string_view text, const site::CodeNames &names);

/** The number of a preset that was given by name or number; throws BadValue with the names there are. */
[[nodiscard]] Value presetNumber(const Value &value, const std::vector<std::string> &presetNames);

/** The value as people write it, without its unit; empty when it is null. */
[[nodiscard]] std::string textOf(const Setting &setting, const Value &value, const site::CodeNames &names);

/** The value in JSON: codes that the site has a name for as that name, all else as it is. */
[[nodiscard]] Value documentOf(const Setting &setting, const Value &value, const site::CodeNames &names);

/** What the setting takes, for a table or an error: "48 to 250", "off pip pbp", "on off". */
[[nodiscard]] std::string allowedValues(const Setting &setting, const site::CodeNames &names = {});

/** The words that complete a value of the setting; empty where there is no list of them. */
[[nodiscard]] std::vector<std::string> valueWords(const Setting &setting, const site::CodeNames &names);

/** The texts that the method takes for the value, one for each argument. Not for references. */
[[nodiscard]] std::vector<std::string> sentTexts(const Setting &setting, const Value &value);

/** Whether both mean the same. */
[[nodiscard]] bool sameValue(const Value &one, const Value &other);

} // namespace displayctl::model

#endif
