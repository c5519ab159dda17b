/* GetRegisterValue: the stored value of every register. Most registers show the setting of their row; those
 * below show a value that follows from others, and the ones that only start something read 0. */
#include "support/session.h"

#include <monitor_support.h>

#include <algorithm>
#include <cstring>

using namespace desk;

namespace
{

/* Calibration resets are allowed as their refusals say: the factory's when the active preset is no longer as
 * the factory left it, the last calibration's while its luminance is not user-adjusted. */
std::string factoryResetAllowed(const Settings &s)
{
    const int active = s.activePreset();
    const int factory = PresetRows[active].luminance;
    const bool same = s.number(presetKey(active, PresetLuminance)) == factory &&
                      s.number(presetKey(active, PresetCalibratedLuminance)) == factory;
    return same ? "0" : "1";
}

std::string lastResetAllowed(const Settings &s)
{
    const int active = s.activePreset();
    const bool adjusted = s.number(presetKey(active, PresetLuminance)) !=
                          s.number(presetKey(active, PresetCalibratedLuminance));
    return adjusted ? "0" : "1";
}

std::string activeLuminance(const Settings &s)
{
    return s.text(presetKey(s.activePreset(), PresetLuminance));
}

std::string nothing(const Settings &)
{
    return "0";
}

struct ShownRegister {
    int registerId;
    int group;
    std::string (*value)(const Settings &);
};

constexpr ShownRegister ShownRegisters[] = {
    {0, ColorSpaceGroup, activeLuminance},
    {19, ColorSpaceGroup, factoryResetAllowed},
    {19, ResetGroup, factoryResetAllowed},
    {20, ColorSpaceGroup, lastResetAllowed},
    {20, ResetGroup, lastResetAllowed},
    {41, ImageGroup, [](const Settings &s) { return s.text(inputHeight(s.number("video_input"))); }},
    {42, ImageGroup, [](const Settings &s) { return s.text(inputWidth(s.number("video_input"))); }},
    {58, PipGroup, nothing},
    {63, PipGroup, [](const Settings &s) { return s.text("video_input"); }},
    {64, PipGroup, [](const Settings &s) { return s.text(inputHeight(s.number("pip_source"))); }},
    {65, PipGroup, [](const Settings &s) { return s.text(inputWidth(s.number("pip_source"))); }},
    {131, InfoGroup, [](const Settings &s) { return s.text("active_color_space"); }},
    {136, VersionGroup, [](const Settings &s) { return s.text("pexal_version"); }},
    {140, ResetGroup, nothing},
    {141, ResetGroup, nothing},
    {142, ResetGroup, [](const Settings &s) { return s.text("display_port_compatibility"); }},
    {143, ResetGroup, nothing},
    {144, ResetGroup, nothing},
    {150, QuickActionGroup, nothing},
    {151, QuickActionGroup, [](const Settings &s) { return s.text("source_scaling_4k"); }},
    {152, QuickActionGroup, [](const Settings &s) { return s.text("video_input"); }},
    {153, QuickActionGroup, [](const Settings &s) { return s.text("use_video_levels"); }},
    {154, QuickActionGroup, [](const Settings &s) { return s.text("overscan"); }},
    {155, QuickActionGroup, [](const Settings &s) { return s.text("show_blue_channel"); }},
    {156, QuickActionGroup, [](const Settings &s) { return s.text("displayed_4k_corner"); }},
    {157, QuickActionGroup, [](const Settings &s) { return s.text("pip_mode"); }},
    {158, QuickActionGroup, nothing},
    {159, QuickActionGroup, [](const Settings &s) { return s.text("pip_position"); }},
    {175, TestPatternGroup, [](const Settings &s) { return s.text("test_pattern_enabled"); }},
    {180, GeneralGroup,
     [](const Settings &s) { return std::string(s.number("soft_power_state") ? "0" : "1"); }},
};

constexpr int FirstPresetRegister = 2;
constexpr int LastPresetRegister = 18;

/* Coordinates and gamma of the active preset: null unless the register is one of theirs. */
const std::string *presetValue(const Settings &s, int registerId, int group)
{
    if (registerId < FirstPresetRegister || registerId > LastPresetRegister ||
        (group != ColorSpaceGroup && group != ColorParameterGroup))
        return nullptr;
    return &s.text(
        presetKey(s.activePreset(), static_cast<PresetField>(RedX + registerId - FirstPresetRegister)));
}

bool registerText(const Settings &s, int registerId, int group, std::string &text)
{
    if (const SettingRow *row = findRegister(registerId, group)) {
        text = s.text(Key(static_cast<std::size_t>(row - SettingRows)));
        return true;
    }
    if (const std::string *value = presetValue(s, registerId, group)) {
        text = *value;
        return true;
    }
    for (const ShownRegister &shown : ShownRegisters) {
        if (shown.registerId == registerId && shown.group == group) {
            text = shown.value(s);
            return true;
        }
    }
    return false;
}

} // namespace

int GetRegisterValue(int registerId, int groupId, char *text)
{
    if (text == nullptr)
        return FAILURE;
    return withContents("GetRegisterValue", [=](const Contents &contents) {
        std::string value;
        if (!registerText(contents.settings, registerId, groupId, value))
            return static_cast<int>(FAILURE);
        const std::size_t length = std::min<std::size_t>(value.size(), REGISTER_TEXT_SIZE - 1);
        memcpy(text, value.data(), length);
        text[length] = '\0';
        return static_cast<int>(SUCCESS);
    });
}
