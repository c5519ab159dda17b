// SPDX-License-Identifier: Apache-2.0
// What a monitor told about itself: the objects of the classes that were read, and the values of settings in
// them.
#ifndef DISPLAYCTL_MODEL_STATE_H
#define DISPLAYCTL_MODEL_STATE_H

#include "model/settings.h"
#include "wbem/value.h"

#include <nlohmann/json.hpp>

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace displayctl::model
{

/** A value as people write it, in JSON's kinds: true, 110, "dp1", [160,880]; null where there is none. */
using Value = nlohmann::ordered_json;

/** What was read of a monitor. */
class State
{
  public:
    /** Puts the objects of a class (without prefix) in the place of those read before. */
    void put(std::string_view className, std::vector<wbem::Instance> objects);

    [[nodiscard]] bool has(std::string_view className) const;
    [[nodiscard]] const std::vector<wbem::Instance> &objects(std::string_view className) const;
    /** The one with that number in its InstanceID; of a class with one instance (number 0) that one. Null
     * when the monitor has none. */
    [[nodiscard]] const wbem::Instance *find(std::string_view className, int number) const;

    /** The value that the monitor gave; null when there is none. */
    [[nodiscard]] Value value(const Setting &setting) const;
    /** The number of the preset in use, 0 when it is not known. */
    [[nodiscard]] int activePreset() const;
    /** The names of the presets, from the first. */
    [[nodiscard]] std::vector<std::string> presetNames() const;

  private:
    std::map<std::string, std::vector<wbem::Instance>, std::less<>> objects_;
};

/** Adds the class that has to be read to know the value of the setting. */
void addClasses(const Setting &setting, std::set<std::string> &classes);

} // namespace displayctl::model

#endif
