// SPDX-License-Identifier: Apache-2.0
// What a row of the table of settings says, and the kinds of rows.
//
// Register and group numbers are typed here once more, not taken from the seam's header, so that a wrong
// number on either side shows.
#ifndef DESK_SUPPORT_SETTING_ROW_H
#define DESK_SUPPORT_SETTING_ROW_H

#include <cstdint>
#include <string_view>

namespace desk
{

enum class Kind : std::uint8_t {
    Number,  // minimum..maximum, a multiple of step
    Text,    // at most maximum bytes
    Address, // IPv4, dotted
};

enum class Access : std::uint8_t {
    Writable, // a set request may write it
    ReadOnly, // a set request may not; the desk's command and the support library may
};

/** Information groups of registers. */
enum Group : int {
    ColorSpaceGroup = 0,
    VideoInputGroup = 1,
    ImageGroup = 2,
    PipGroup = 3,
    RemoteGroup = 4,
    ManagementGroup = 5,
    MenuGroup = 6,
    FunctionButtonGroup = 7,
    BezelButtonGroup = 8,
    InfoGroup = 9,
    VersionGroup = 10,
    ResetGroup = 11,
    ColorParameterGroup = 12,
    QuickActionGroup = 13,
    FactoryGroup = 14,
    TestPatternGroup = 15,
    GeneralGroup = 16,
    LastGroup = GeneralGroup,
};

inline constexpr int noRegister = -1;
inline constexpr int noGroup = -1;

/** A setting: its name, the register and the information group it is reached by, its factory value and the
 * values it accepts. */
struct SettingRow {
    std::string_view name;
    int registerId;
    int group;
    Kind kind;
    Access access;
    int factoryNumber; // Kind::Number
    std::string_view factoryText;
    int minimum;
    int maximum;
    int step;
};

constexpr SettingRow range(std::string_view name, int reg, int group, int factory, int minimum, int maximum,
                           int step = 1)
{
    return {name, reg, group, Kind::Number, Access::Writable, factory, {}, minimum, maximum, step};
}

constexpr SettingRow onOff(std::string_view name, int reg, int group, int factory)
{
    return range(name, reg, group, factory, 0, 1);
}

constexpr SettingRow figure(std::string_view name, int reg, int group, int factory, int minimum, int maximum)
{
    return {name, reg, group, Kind::Number, Access::ReadOnly, factory, {}, minimum, maximum, 1};
}

constexpr SettingRow text(std::string_view name, int reg, int group, std::string_view factory, int width)
{
    return {name, reg, group, Kind::Text, Access::ReadOnly, 0, factory, 0, width, 1};
}

constexpr SettingRow address(std::string_view name, int reg, int group, std::string_view factory)
{
    return {name, reg, group, Kind::Address, Access::Writable, 0, factory, 0, 15, 1};
}

} // namespace desk

#endif
