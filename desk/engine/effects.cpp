// SPDX-License-Identifier: Apache-2.0
#include "engine/effects.h"

#include "support/shown_registers.h"

#include <algorithm>
#include <cstdio>

namespace desk
{

namespace
{

// ---- the general case: the register's setting takes the value ----

std::string address(const wire::Entry &entry)
{
    char text[16];
    snprintf(text, sizeof text, "%u.%u.%u.%u", entry.octets[0], entry.octets[1], entry.octets[2],
             entry.octets[3]);
    return text;
}

std::string storeValue(Settings &settings, const SettingRow &row, const wire::Entry &entry)
{
    if (row.access == Access::readOnly) {
        return "cannot be written";
    }
    const bool isAddress = row.kind == Kind::address;
    if (entry.type != (isAddress ? wire::entryAddress : wire::entryNumber)) {
        return isAddress ? "takes an address" : "takes a number";
    }
    const std::string value = isAddress ? address(entry) : std::to_string(entry.value);
    if (const std::string wrong = complaint(row, value); !wrong.empty()) {
        return value + " " + wrong;
    }
    settings.set(keyOf(row), value);
    return {};
}

std::string storeRegister(Settings &settings, int registerId, int group, const wire::Entry &entry)
{
    return storeValue(settings, *findRegister(registerId, group), entry);
}

// ---- colour ----

std::string setLuminance(Settings &settings, const wire::Entry &entry)
{
    const Key key = presetKey(settings.activePreset(), "luminance");
    const std::string value = std::to_string(entry.value);
    if (const std::string wrong = complaint(key.row(), value); !wrong.empty()) {
        return value + " " + wrong;
    }
    settings.set(key, entry.value);
    return {};
}

std::string resetToFactoryCalibration(Settings &settings, const wire::Entry &)
{
    settings.reset(presetKey(settings.activePreset(), "luminance"));
    settings.reset(presetKey(settings.activePreset(), "calibrated_luminance"));
    return {};
}

std::string resetToLastCalibration(Settings &settings, const wire::Entry &)
{
    const int active = settings.activePreset();
    settings.set(presetKey(active, "luminance"), settings.number(presetKey(active, "calibrated_luminance")));
    return {};
}

std::string resetColorSpaces(Settings &settings, const wire::Entry &)
{
    for (int preset = 0; preset < presetCount; ++preset) {
        for (int field = 0; field < presetFieldCount; ++field) {
            settings.reset(presetKey(preset, Field(field)));
        }
    }
    settings.reset("active_color_space");
    return {};
}

// ---- inputs ----

std::string nextActiveInput(Settings &settings, const wire::Entry &)
{
    const int selected = settings.number("video_input");
    for (int step = 1; step < inputCount; ++step) {
        const int input = (selected + step) % inputCount;
        if (settings.number(inputActive(input)) != 0) {
            settings.set("video_input", input);
            return {};
        }
    }
    return {}; // no other input has a signal: the selected one stays
}

std::string swapInputs(Settings &settings, const wire::Entry &)
{
    const int main = settings.number("video_input");
    settings.set("video_input", settings.number("pip_source"));
    settings.set("pip_source", main);
    return {};
}

// ---- 4K region: a window of the panel's size on the larger picture ----

constexpr int panelWidth = 2560;
constexpr int panelHeight = 1440;

struct Span {
    int low, high;
};

/** Where the window's left edge may lie; a DCI region of kind 1 cuts the picture at both sides. */
Span windowColumns(int width, int dciRegion)
{
    const int rest = std::max(0, width - panelWidth);
    if (dciRegion == 1 && (width == 4096 || width == 4095)) {
        return {width == 4096 ? 50 : 49, rest - 50};
    }
    return {0, rest};
}

/** Where its upper edge may lie; a DCI region of kind 2 cuts the picture above and below. */
Span windowRows(int width, int height, int dciRegion)
{
    const int rest = std::max(0, height - panelHeight);
    if (dciRegion == 2 && (width == 4096 || width == 4095) && height == 2160) {
        return {222, rest - 222};
    }
    return {0, rest};
}

/** The corners clockwise from the upper left. */
std::string nextCorner(Settings &settings, const wire::Entry &)
{
    const int input = settings.number("video_input");
    const int width = settings.number(inputWidth(input));
    const int height = settings.number(inputHeight(input));
    const Span x = windowColumns(width, settings.number("dci_image_region"));
    const Span y = windowRows(width, height, settings.number("dci_image_region"));

    const int corner = (settings.number("displayed_4k_corner") + 1) % 4;
    settings.set("displayed_4k_corner", corner);
    settings.set("scroll_4k_position_x", corner == 1 || corner == 2 ? x.high : x.low);
    settings.set("scroll_4k_position_y", corner >= 2 ? y.high : y.low);
    return {};
}

// ---- picture in picture: a window 160 pixels or more from every edge of the panel ----

constexpr int pipMargin = 160;
constexpr int pipFreePosition = 4;

struct Extent {
    int width, height;
};
constexpr Extent pipSizes[] = {{1920, 1080}, {284, 160}, {712, 400}}; // maximum, minimum, default

int pipRight(const Settings &settings)
{
    return panelWidth - pipMargin - settings.number("pip_width");
}

int pipBottom(const Settings &settings)
{
    return panelHeight - pipMargin - settings.number("pip_height");
}

/** Puts the window where its position says: into its corner, or, where it is free, back inside the panel. */
void placePip(Settings &settings)
{
    const int position = settings.number("pip_position");
    int x = settings.number("pip_position_x");
    int y = settings.number("pip_position_y");
    if (position != pipFreePosition) {
        x = position == 1 || position == 2 ? pipRight(settings) : pipMargin;
        y = position >= 2 ? pipBottom(settings) : pipMargin;
    }
    settings.set("pip_position_x", std::clamp(x, pipMargin, pipRight(settings)));
    settings.set("pip_position_y", std::clamp(y, pipMargin, pipBottom(settings)));
}

std::string setPipPosition(Settings &settings, const wire::Entry &entry)
{
    std::string wrong = storeRegister(settings, 51, pipGroup, entry);
    if (wrong.empty()) {
        placePip(settings);
    }
    return wrong;
}

std::string outsidePanel(int value, int most)
{
    return std::to_string(value) + " is outside " + std::to_string(pipMargin) + ".." + std::to_string(most) +
           ", which the size of the picture leaves";
}

std::string setPipPositionX(Settings &settings, const wire::Entry &entry)
{
    if (entry.value < pipMargin || entry.value > pipRight(settings)) {
        return outsidePanel(entry.value, pipRight(settings));
    }
    settings.set("pip_position", pipFreePosition);
    return storeRegister(settings, 52, pipGroup, entry);
}

std::string setPipPositionY(Settings &settings, const wire::Entry &entry)
{
    if (entry.value < pipMargin || entry.value > pipBottom(settings)) {
        return outsidePanel(entry.value, pipBottom(settings));
    }
    settings.set("pip_position", pipFreePosition);
    return storeRegister(settings, 53, pipGroup, entry);
}

std::string setPipSize(Settings &settings, const wire::Entry &entry)
{
    std::string wrong = storeRegister(settings, 54, pipGroup, entry);
    if (!wrong.empty()) {
        return wrong;
    }
    settings.set("pip_width", pipSizes[entry.value].width);
    settings.set("pip_height", pipSizes[entry.value].height);
    placePip(settings);
    return {};
}

std::string setPipHeight(Settings &settings, const wire::Entry &entry)
{
    std::string wrong = storeRegister(settings, 55, pipGroup, entry);
    if (!wrong.empty()) {
        return wrong;
    }
    settings.set("pip_width", entry.value * 16 / 9);
    placePip(settings);
    return {};
}

std::string nextPipCorner(Settings &settings, const wire::Entry &)
{
    const int position = settings.number("pip_position");
    settings.set("pip_position", position == pipFreePosition ? 0 : (position + 1) % 4);
    placePip(settings);
    return {};
}

std::string pipOnOff(Settings &settings, const wire::Entry &)
{
    settings.set("pip_mode", settings.number("pip_mode") == 0 ? 1 : 0);
    return {};
}

// ---- quick actions on one setting ----

std::string toggle(Settings &settings, Key key)
{
    settings.set(key, settings.number(key) == 0 ? 1 : 0);
    return {};
}

std::string nextSourceScaling(Settings &settings, const wire::Entry &)
{
    settings.set("source_scaling_4k", (settings.number("source_scaling_4k") + 1) % 4);
    return {};
}

// ---- network ----

std::string setIpAddress(Settings &settings, const wire::Entry &entry)
{
    const int first = entry.octets[0];
    if (entry.type == wire::entryAddress && (first == 0 || first == 127 || first >= 224)) {
        return address(entry) + " is not an address of a host";
    }
    return storeRegister(settings, 87, remoteGroup, entry);
}

std::string setSubnetMask(Settings &settings, const wire::Entry &entry)
{
    const std::uint32_t mask = static_cast<std::uint32_t>(entry.octets[0]) << 24 |
                               static_cast<std::uint32_t>(entry.octets[1]) << 16 |
                               static_cast<std::uint32_t>(entry.octets[2]) << 8 | entry.octets[3];
    const std::uint32_t hosts = ~mask;
    if (entry.type == wire::entryAddress && (mask == 0 || (hosts & (hosts + 1)) != 0)) {
        return address(entry) + " is not a subnet mask";
    }
    return storeRegister(settings, 88, remoteGroup, entry);
}

// ---- the whole monitor ----

std::string factoryReset(Settings &settings, const wire::Entry &)
{
    settings = Settings();
    return {};
}

/** Picture, picture in picture, menu, buttons and test pattern; not the inputs' signals, which are the
 * desk's.
 */
std::string resetDisplaySettings(Settings &settings, const wire::Entry &)
{
    for (std::size_t i = 0; i < plainCount; ++i) {
        const SettingRow &row = plainRows[i];
        const bool signal = row.registerId >= 66 && row.registerId <= 68;
        const bool display = row.group == imageGroup || row.group == pipGroup || row.group == menuGroup ||
                             row.group == functionButtonGroup || row.group == bezelButtonGroup ||
                             row.group == testPatternGroup;
        if (display && !signal) {
            settings.reset(Key(i));
        }
    }
    return {};
}

/** 1 turns the monitor off softly, 0 on again; the state that is shown is 1 for on. */
std::string softPowerOff(Settings &settings, const wire::Entry &entry)
{
    if (entry.value != 0 && entry.value != 1) {
        return std::to_string(entry.value) + " is outside 0..1";
    }
    settings.set("soft_power_state", 1 - entry.value);
    return {};
}

/** What one register does alone. Every other register stores its value into the setting of its row. */
struct Effect {
    int registerId;
    int group;
    int type; // the entry's; anyType: left to the function
    std::string (*apply)(Settings &, const wire::Entry &);
};
constexpr int anyType = -1;

constexpr Effect effects[] = {
    {0, colorSpaceGroup, wire::entryNumber, setLuminance},
    {19, resetGroup, wire::entryNumber, resetToFactoryCalibration},
    {20, resetGroup, wire::entryNumber, resetToLastCalibration},
    {51, pipGroup, anyType, setPipPosition},
    {52, pipGroup, wire::entryNumber, setPipPositionX},
    {53, pipGroup, wire::entryNumber, setPipPositionY},
    {54, pipGroup, anyType, setPipSize},
    {55, pipGroup, anyType, setPipHeight},
    {58, pipGroup, wire::entryNumber, swapInputs},
    {87, remoteGroup, anyType, setIpAddress},
    {88, remoteGroup, anyType, setSubnetMask},
    {140, resetGroup, wire::entryNumber, factoryReset},
    {142, resetGroup, anyType,
     [](Settings &s, const wire::Entry &e) { return storeRegister(s, 79, managementGroup, e); }},
    {144, resetGroup, wire::entryNumber, resetDisplaySettings},
    {150, quickActionGroup, wire::entryNumber, resetColorSpaces},
    {151, quickActionGroup, wire::entryNumber, nextSourceScaling},
    {152, quickActionGroup, wire::entryNumber, nextActiveInput},
    {153, quickActionGroup, wire::entryNumber,
     [](Settings &s, const wire::Entry &) { return toggle(s, "use_video_levels"); }},
    {154, quickActionGroup, wire::entryNumber,
     [](Settings &s, const wire::Entry &) { return toggle(s, "overscan"); }},
    {155, quickActionGroup, wire::entryNumber,
     [](Settings &s, const wire::Entry &) { return toggle(s, "show_blue_channel"); }},
    {156, quickActionGroup, wire::entryNumber, nextCorner},
    {157, quickActionGroup, wire::entryNumber, pipOnOff},
    {158, quickActionGroup, wire::entryNumber, swapInputs},
    {159, quickActionGroup, wire::entryNumber, nextPipCorner},
    {180, generalGroup, wire::entryNumber, softPowerOff},
};

} // namespace

std::string applyEntry(Settings &settings, int group, const wire::Entry &entry)
{
    for (const Effect &effect : effects) {
        if (effect.registerId != entry.registerId || effect.group != group) {
            continue;
        }
        if (effect.type != anyType && effect.type != entry.type) {
            return "takes a number";
        }
        return effect.apply(settings, entry);
    }
    if (const SettingRow *row = findRegister(entry.registerId, group)) {
        return storeValue(settings, *row, entry);
    }
    return registerExists(entry.registerId, group) ? "cannot be written" : "does not belong to the group";
}

} // namespace desk
