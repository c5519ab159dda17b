// SPDX-License-Identifier: Apache-2.0
// The settings of the desk monitor, as rows: the store's schema.
//
// The readers of the support library, the effects of the display engine, the store and the command all work
// from these rows; nothing else lists settings. The compiler checks them (settings_table.cpp) and refuses the
// name of a setting that has no row.
#ifndef DESK_SUPPORT_SETTINGS_TABLE_H
#define DESK_SUPPORT_SETTINGS_TABLE_H

#include "support/presets.h"
#include "support/setting_row.h"
#include "support/short_text.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

namespace desk
{

/** All settings but those of the presets. */
inline constexpr SettingRow plainRows[] = {
    // the monitor
    text("display_mode", 130, infoGroup, "Single", 25),
    text("serial_number", 133, infoGroup, "DSK2840017", 15),
    text("pexal_version", 136, infoGroup, "1.4.2", 15),
    text("display_name", noRegister, noGroup, "", 25),
    text("deployment_location", noRegister, noGroup, "", 25),
    figure("deployment_date", noRegister, noGroup, 1704067200, INT32_MIN, INT32_MAX), // 1 January 2024
    figure("video_pipeline_delay", 132, infoGroup, 24, 0, 65535),                     // milliseconds
    figure("last_calibration", 134, infoGroup, 312, 0, 65535),                        // hours since
    figure("backlight_hours", 135, infoGroup, 1460, 0, 65535),
    figure("soft_power_state", noRegister, noGroup, 1, 0, 1), // 1: on

    // colour; the presets' own values follow these rows, see presetRows
    range("active_color_space", 1, colorSpaceGroup, 0, 0, 6),

    // video inputs: 0 and 1 Display Port, 2 HDMI; what is connected there is the desk's to say
    range("video_input", 25, videoInputGroup, 0, 0, 2),
    onOff("auto_switch_source", 26, videoInputGroup, 0),
    figure("input1.active", 66, pipGroup, 1, 0, 1),
    figure("input2.active", 67, pipGroup, 1, 0, 1),
    figure("input3.active", 68, pipGroup, 0, 0, 1),
    figure("input1.width", noRegister, noGroup, 3840, 0, 4096), // pixels
    figure("input2.width", noRegister, noGroup, 4096, 0, 4096),
    figure("input3.width", noRegister, noGroup, 1920, 0, 4096),
    figure("input1.height", noRegister, noGroup, 2160, 0, 2160),
    figure("input2.height", noRegister, noGroup, 2160, 0, 2160),
    figure("input3.height", noRegister, noGroup, 1080, 0, 2160),

    // image adjustment
    range("display_aspect_ratio", 30, imageGroup, 0, 0, 4),
    range("dci_image_region", 31, imageGroup, 0, 0, 2),
    range("source_scaling_4k", 32, imageGroup, 0, 0, 3),
    onOff("show_cropped_region", 33, imageGroup, 0),
    range("cropped_region_opacity", 34, imageGroup, 50, 25, 100), // percent
    onOff("use_video_levels", 35, imageGroup, 0),
    onOff("overscan", 36, imageGroup, 0),
    onOff("show_blue_channel", 37, imageGroup, 0),
    onOff("overdrive", 38, imageGroup, 0),
    onOff("deinterlacer", 39, imageGroup, 1),
    onOff("cadence_detection", 40, imageGroup, 1),
    onOff("scroll_4k_state", 43, imageGroup, 0),
    range("scroll_4k_position_x", 44, imageGroup, 0, 0, 1536), // pixels
    range("scroll_4k_position_y", 45, imageGroup, 0, 0, 720),
    figure("displayed_4k_corner", noRegister, imageGroup, 0, 0, 3),
    figure("show_4k_position_overlay", noRegister, imageGroup, 0, 0, 1),

    // picture in picture, on a panel of 2560 x 1440
    range("pip_mode", 50, pipGroup, 0, 0, 2),
    range("pip_position", 51, pipGroup, 2, 0, 4), // 0..3 corners, clockwise from the upper left; 4 free
    range("pip_position_x", 52, pipGroup, 1688, 160, 2116),
    range("pip_position_y", 53, pipGroup, 880, 160, 1120),
    range("pip_size", 54, pipGroup, 2, 0, 2), // maximum, minimum, default
    range("pip_height", 55, pipGroup, 400, 160, 1080),
    figure("pip_width", 56, pipGroup, 712, 284, 1920),
    range("pip_source", 57, pipGroup, 1, 0, 2),
    onOff("pip_video_levels", 59, pipGroup, 0),
    onOff("pip_overscan", 60, pipGroup, 0),
    range("pip_dci_image_region", 61, pipGroup, 0, 0, 2),
    onOff("pip_show_cropped_region", 62, pipGroup, 0),

    // display management
    onOff("power_saver", 70, managementGroup, 1),
    onOff("power_on_recall", 71, managementGroup, 1),
    onOff("ddc_ci_communication", 72, managementGroup, 1),
    onOff("auto_edid_update", 73, managementGroup, 1),
    onOff("hot_plug_initiate", 74, managementGroup, 0),
    onOff("manage_internal_processor", 75, managementGroup, 1),
    range("firmware_update_enabled", 76, managementGroup, 1, 0, 3),
    onOff("calibration_support", 77, managementGroup, 1),
    onOff("display_port_hot_plug_detection", 78, managementGroup, 1),
    onOff("display_port_compatibility", 79, managementGroup, 0),

    // remote management and network; the desk's own network is never touched
    onOff("remote_management", 85, remoteGroup, 1),
    onOff("ip_configuration_mode", 86, remoteGroup, 1), // 0 DHCP, 1 static
    address("ipv4_address", 87, remoteGroup, "192.168.10.20"),
    address("ipv4_subnet", 88, remoteGroup, "255.255.255.0"),
    address("ipv4_gateway", 89, remoteGroup, "192.168.10.1"),
    text("mac_address", 90, remoteGroup, "02005E10A64C", 16),
    onOff("ws_management", 91, remoteGroup, 1),
    onOff("ws_identify", 92, remoteGroup, 1),
    onOff("ws_management_over_http", 93, remoteGroup, 1),
    onOff("ws_management_over_https", 94, remoteGroup, 0),

    // menu and messages
    onOff("show_power_on_info", 100, menuGroup, 1),
    onOff("show_source_info", 101, menuGroup, 1),
    onOff("show_color_space_info", 102, menuGroup, 1),
    onOff("warm_up_reminder", 103, menuGroup, 1),
    onOff("calibration_notification", 104, menuGroup, 1),
    range("osd_position_x", 105, menuGroup, 1920, 0, 2560), // pixels
    range("osd_position_y", 106, menuGroup, 120, 0, 1440),
    range("menu_timeout", 107, menuGroup, 15, 5, 30),               // seconds
    range("menu_opacity", 108, menuGroup, 10000, 2500, 10000, 625), // hundredths of a percent
    range("menu_language", 109, menuGroup, 1, 0, 9),                // the engine's code
    onOff("display_rotation", 110, menuGroup, 0),

    // buttons
    range("function_button1.setting", 115, functionButtonGroup, 1, 1, 17),
    range("function_button2.setting", 116, functionButtonGroup, 2, 1, 17),
    range("function_button3.setting", 117, functionButtonGroup, 3, 1, 17),
    range("function_button4.setting", 118, functionButtonGroup, 4, 1, 17),
    text("function_button1.name", noRegister, functionButtonGroup, "Function Button 1", 50),
    text("function_button2.name", noRegister, functionButtonGroup, "Function Button 2", 50),
    text("function_button3.name", noRegister, functionButtonGroup, "Function Button 3", 50),
    text("function_button4.name", noRegister, functionButtonGroup, "Function Button 4", 50),
    onOff("function_button_mode", 119, functionButtonGroup, 0),
    range("bezel_button_color", 120, bezelButtonGroup, 0, 0, 2),
    range("bezel_button_brightness", 121, bezelButtonGroup, 10, 0, 20, 2),
    onOff("bezel_button_auto_fade", 122, bezelButtonGroup, 1),

    // test pattern; register 171 carries the on/off state as it is, whatever its name says
    range("test_pattern", 170, testPatternGroup, 0, 0, 8),
    onOff("test_pattern_enabled", 171, testPatternGroup, 0),
    range("test_pattern_red", 172, testPatternGroup, 255, 0, 255),
    range("test_pattern_green", 173, testPatternGroup, 255, 0, 255),
    range("test_pattern_blue", 174, testPatternGroup, 255, 0, 255),

    // general
    onOff("color_management", 181, generalGroup, 1),
    range("dithering_mode", 182, generalGroup, 0, 0, 2),
    range("recalibration_alarm", 183, generalGroup, 1000, 1, 1000),
    figure("firmware_update_status", 165, generalGroup, 0, 0, 100),
    figure("calibration_process_status", 166, generalGroup, 0, 0, 100),
};

inline constexpr int inputCount = 3;
inline constexpr int functionButtonCount = 4;

inline constexpr std::size_t plainCount = std::size(plainRows);
inline constexpr std::size_t settingCount =
    plainCount + static_cast<std::size_t>(presetCount) * static_cast<std::size_t>(presetFieldCount);

namespace presets
{

/** What the rows of the presets' settings point into: the name and the factory value of each. */
struct Texts {
    std::array<ShortText, settingCount - plainCount> names, values;
};

consteval Texts makeTexts()
{
    Texts texts;
    std::size_t at = 0;
    for (int preset = 0; preset < presetCount; ++preset) {
        for (const PresetField &field : presetFields) {
            ShortText name("preset");
            name.append(decimalText(preset + 1));
            name.append(".");
            name.append(field.name);
            texts.names[at] = name;
            texts.values[at++] = field.factory(presetRows[preset]);
        }
    }
    return texts;
}
inline constexpr Texts texts = makeTexts();

} // namespace presets

consteval std::array<SettingRow, settingCount> makeSettingRows()
{
    std::array<SettingRow, settingCount> rows{};
    std::size_t at = 0;
    for (const SettingRow &row : plainRows) {
        rows[at++] = row;
    }
    for (const PresetRow &preset : presetRows) {
        for (const PresetField &field : presetFields) {
            const std::string_view name = presets::texts.names[at - plainCount];
            rows[at] = field.kind == Kind::number
                           ? figure(name, noRegister, colorSpaceGroup, preset.luminance, lowestLuminance,
                                    highestLuminance)
                           : text(name, noRegister, colorSpaceGroup, presets::texts.values[at - plainCount],
                                  field.width);
            ++at;
        }
    }
    return rows;
}

/** All settings: first the plain ones, then the presets', preset by preset. */
inline constexpr std::array<SettingRow, settingCount> settingRows = makeSettingRows();

/** A setting by its place among the rows. One made from a name is looked up by the compiler. */
class Key
{
  public:
    consteval Key(const char *name) : place_(find(name)) {}
    explicit constexpr Key(std::size_t index) : place_(index) {}
    constexpr std::size_t index() const
    {
        return place_;
    }
    constexpr const SettingRow &row() const
    {
        return settingRows[place_];
    }
    bool operator==(const Key &) const = default;

  private:
    static consteval std::size_t find(std::string_view name)
    {
        for (std::size_t i = 0; i < settingCount; ++i) {
            if (settingRows[i].name == name) {
                return i;
            }
        }
        throw "no setting of that name";
    }
    std::size_t place_;
};

/** A value that every preset stores, by its place among presetFields; its name is looked up by the compiler.
 */
class Field
{
  public:
    consteval Field(const char *name) : place_(find(name)) {}
    explicit constexpr Field(int index) : place_(index) {}
    constexpr int index() const
    {
        return place_;
    }

  private:
    static consteval int find(std::string_view name)
    {
        for (int i = 0; i < presetFieldCount; ++i) {
            if (presetFields[i].name == name) {
                return i;
            }
        }
        throw "no value of a preset has that name";
    }
    int place_;
};

/** The setting of one preset, 0 to presetCount - 1. */
constexpr Key presetKey(int preset, Field field)
{
    return Key(plainCount + static_cast<std::size_t>(preset * presetFieldCount + field.index()));
}

/** The place of the setting, -1 when there is none of that name. */
int findSetting(std::string_view name);

/** Finds settings one after another: with a single comparison each when they are asked for in the order of
 * their names. */
class SettingFinder
{
  public:
    /** As findSetting. */
    int find(std::string_view name);

  private:
    std::size_t next_ = 0; // among the names in their order
};

/** The row of a register in a group, null when there is none. */
const SettingRow *findRegister(int registerId, int group);

/** The key of a row of settingRows. */
inline Key keyOf(const SettingRow &row)
{
    return Key(static_cast<std::size_t>(&row - settingRows.data()));
}

/** What is wrong with a value for a setting; empty when it is acceptable. */
std::string complaint(const SettingRow &row, std::string_view value);

/** Users known to a new store. */
struct UserRow {
    std::string_view name;
    bool administrator;
};
inline constexpr UserRow userRows[] = {{"root", true}, {"admin", true}, {"operator", false}};

} // namespace desk

#endif
