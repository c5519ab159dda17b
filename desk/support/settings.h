// SPDX-License-Identifier: Apache-2.0
// The values of all settings at one moment.
#ifndef DESK_SUPPORT_SETTINGS_H
#define DESK_SUPPORT_SETTINGS_H

#include "support/settings_table.h"

#include <array>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace desk
{

class Settings
{
  public:
    /** The values a new monitor has. */
    Settings();

    /** The value of a number's setting; 0 for other kinds. */
    int number(Key key) const
    {
        return values_[key.index()].number;
    }
    /** The value as text, as the store holds it. */
    std::string_view text(Key key) const
    {
        return values_[key.index()].text;
    }
    void set(Key key, int value);
    /** The value must be one that the setting's row accepts. */
    void set(Key key, std::string_view value);
    /** Back to the factory value. */
    void reset(Key key);

    int activePreset() const
    {
        return number("active_color_space");
    }
    bool operator==(const Settings &other) const
    {
        return memcmp(&values_, &other.values_, sizeof values_) == 0;
    }
    /** True when both have the same value of one setting. */
    bool agrees(const Settings &other, Key key) const
    {
        return memcmp(&values_[key.index()], &other.values_[key.index()], sizeof(Value)) == 0;
    }

  private:
    struct Value {
        int number = 0;
        ShortText text;
    };
    static_assert(std::has_unique_object_representations_v<Value>, "compared as bytes");
    using Values = std::array<Value, settingCount>;
    static consteval Values factoryValues();
    static const Values factory;

    Values values_;
};

/** The three settings of one input, 0 to inputCount - 1. */
Key inputActive(int input);
Key inputWidth(int input);
Key inputHeight(int input);

} // namespace desk

#endif
