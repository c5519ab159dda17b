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
    number,  // minimum..maximum, a multiple of step
    text,    // at most maximum bytes
    address, // IPv4, dotted
};

enum class Access : std::uint8_t {
    writable, // a set request may write it
    readOnly, // a set request may not; the desk's command and the support library may
};

/** Information groups of registers. */
enum Group : int {
    colorSpaceGroup = 0,
    videoInputGroup = 1,
    imageGroup = 2,
    pipGroup = 3,
    remoteGroup = 4,
    managementGroup = 5,
    menuGroup = 6,
    functionButtonGroup = 7,
    bezelButtonGroup = 8,
    infoGroup = 9,
    versionGroup = 10,
    resetGroup = 11,
    colorParameterGroup = 12,
    quickActionGroup = 13,
    factoryGroup = 14,
    testPatternGroup = 15,
    generalGroup = 16,
    lastGroup = generalGroup,
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
    int factoryNumber; // Kind::number
    std::string_view factoryText;
    int minimum;
    int maximum;
    int step;
};

constexpr SettingRow range(std::string_view name, int reg, int group, int factory, int minimum, int maximum,
                           int step = 1)
{
    return {name, reg, group, Kind::number, Access::writable, factory, {}, minimum, maximum, step};
}

constexpr SettingRow onOff(std::string_view name, int reg, int group, int factory)
{
    return range(name, reg, group, factory, 0, 1);
}

constexpr SettingRow figure(std::string_view name, int reg, int group, int factory, int minimum, int maximum)
{
    return {name, reg, group, Kind::number, Access::readOnly, factory, {}, minimum, maximum, 1};
}

constexpr SettingRow text(std::string_view name, int reg, int group, std::string_view factory, int width)
{
    return {name, reg, group, Kind::text, Access::readOnly, 0, factory, 0, width, 1};
}

constexpr SettingRow address(std::string_view name, int reg, int group, std::string_view factory)
{
    return {name, reg, group, Kind::address, Access::writable, 0, factory, 0, 15, 1};
}

} // namespace desk

#endif
