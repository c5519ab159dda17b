// SPDX-License-Identifier: Apache-2.0
#include "support/shown_registers.h"

namespace desk
{

namespace
{

/** Calibration resets are allowed as their refusals say: the factory's when the active preset is no longer as
 * the factory left it, the last calibration's while its luminance is not user-adjusted. */
ShortText factoryResetAllowed(const Settings &s)
{
    const int active = s.activePreset();
    const int factory = presetRows[active].luminance;
    const bool same = s.number(presetKey(active, "luminance")) == factory &&
                      s.number(presetKey(active, "calibrated_luminance")) == factory;
    return decimalText(same ? 0 : 1);
}

ShortText lastResetAllowed(const Settings &s)
{
    const int active = s.activePreset();
    const bool adjusted =
        s.number(presetKey(active, "luminance")) != s.number(presetKey(active, "calibrated_luminance"));
    return decimalText(adjusted ? 0 : 1);
}

ShortText activeLuminance(const Settings &s)
{
    return s.text(presetKey(s.activePreset(), "luminance"));
}

/** Registers that only start something. */
ShortText nothing(const Settings &)
{
    return decimalText(0);
}

struct ShownRegister {
    int registerId;
    int group;
    ShortText (*value)(const Settings &);
};

constexpr ShownRegister shownRegisters[] = {
    {0, colorSpaceGroup, activeLuminance},
    {19, colorSpaceGroup, factoryResetAllowed},
    {19, resetGroup, factoryResetAllowed},
    {20, colorSpaceGroup, lastResetAllowed},
    {20, resetGroup, lastResetAllowed},
    {41, imageGroup,
     [](const Settings &s) -> ShortText { return s.text(inputHeight(s.number("video_input"))); }},
    {42, imageGroup,
     [](const Settings &s) -> ShortText { return s.text(inputWidth(s.number("video_input"))); }},
    {58, pipGroup, nothing},
    {63, pipGroup, [](const Settings &s) -> ShortText { return s.text("video_input"); }},
    {64, pipGroup,
     [](const Settings &s) -> ShortText { return s.text(inputHeight(s.number("pip_source"))); }},
    {65, pipGroup, [](const Settings &s) -> ShortText { return s.text(inputWidth(s.number("pip_source"))); }},
    {131, infoGroup, [](const Settings &s) -> ShortText { return s.text("active_color_space"); }},
    {136, versionGroup, [](const Settings &s) -> ShortText { return s.text("pexal_version"); }},
    {140, resetGroup, nothing},
    {141, resetGroup, nothing},
    {142, resetGroup, [](const Settings &s) -> ShortText { return s.text("display_port_compatibility"); }},
    {143, resetGroup, nothing},
    {144, resetGroup, nothing},
    {150, quickActionGroup, nothing},
    {151, quickActionGroup, [](const Settings &s) -> ShortText { return s.text("source_scaling_4k"); }},
    {152, quickActionGroup, [](const Settings &s) -> ShortText { return s.text("video_input"); }},
    {153, quickActionGroup, [](const Settings &s) -> ShortText { return s.text("use_video_levels"); }},
    {154, quickActionGroup, [](const Settings &s) -> ShortText { return s.text("overscan"); }},
    {155, quickActionGroup, [](const Settings &s) -> ShortText { return s.text("show_blue_channel"); }},
    {156, quickActionGroup, [](const Settings &s) -> ShortText { return s.text("displayed_4k_corner"); }},
    {157, quickActionGroup, [](const Settings &s) -> ShortText { return s.text("pip_mode"); }},
    {158, quickActionGroup, nothing},
    {159, quickActionGroup, [](const Settings &s) -> ShortText { return s.text("pip_position"); }},
    {175, testPatternGroup, [](const Settings &s) -> ShortText { return s.text("test_pattern_enabled"); }},
    {180, generalGroup,
     [](const Settings &s) { return decimalText(s.number("soft_power_state") != 0 ? 0 : 1); }},
};

const ShownRegister *findShown(int registerId, int group)
{
    for (const ShownRegister &shown : shownRegisters) {
        if (shown.registerId == registerId && shown.group == group) {
            return &shown;
        }
    }
    return nullptr;
}

/** The value of the active preset that a register of the groups of colour shows, -1 when it shows none. */
int findPresetField(int registerId, int group)
{
    if (group != colorSpaceGroup && group != colorParameterGroup) {
        return -1;
    }
    for (int i = 0; i < presetFieldCount; ++i) {
        if (presetFields[i].shownBy == registerId && registerId != noRegister) {
            return i;
        }
    }
    return -1;
}

} // namespace

std::optional<ShortText> registerText(const Settings &settings, int registerId, int group)
{
    if (const SettingRow *row = findRegister(registerId, group)) {
        return settings.text(keyOf(*row));
    }
    if (const int field = findPresetField(registerId, group); field >= 0) {
        return settings.text(presetKey(settings.activePreset(), Field(field)));
    }
    if (const ShownRegister *shown = findShown(registerId, group)) {
        return shown->value(settings);
    }
    return std::nullopt;
}

bool registerExists(int registerId, int group)
{
    return findRegister(registerId, group) != nullptr || findPresetField(registerId, group) >= 0 ||
           findShown(registerId, group) != nullptr;
}

} // namespace desk
