// SPDX-License-Identifier: Apache-2.0
// The names that people write for settings: whole, shortened, or as patterns.
#ifndef DISPLAYCTL_MODEL_NAMES_H
#define DISPLAYCTL_MODEL_NAMES_H

#include "model/settings.h"

#include <string>
#include <string_view>
#include <vector>

namespace displayctl::model
{

/** A setting that a name stands for; of preset.active only the monitor knows which one it is. */
struct Named {
    const Setting *setting; ///< of preset.active that of the first preset
    bool isActive = false;  ///< whether it is that of the preset in use

    /** The setting, now that it is known which preset is in use. */
    [[nodiscard]] const Setting &at(int activePreset) const;
    /** As people write it: preset.active.luminance. */
    [[nodiscard]] std::string name() const;
    [[nodiscard]] bool operator==(const Named &) const = default;
};

/** The one setting that a name, maybe shortened to its last components, stands for. Throws BadValue when it
 * is unknown or ambiguous, with the candidates. */
[[nodiscard]] Named resolveName(std::string_view name);

/** The settings that a pattern stands for: what resolveName finds, a group (pip, preset.3), or a name with *
 * and ?. In their order, each once. Throws BadValue when there is none. */
[[nodiscard]] std::vector<Named> matchPattern(std::string_view pattern);

/** All names and every shortening of them that is not ambiguous, for completion. */
[[nodiscard]] std::vector<std::string> allNames();

} // namespace displayctl::model

#endif
