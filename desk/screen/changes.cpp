// SPDX-License-Identifier: Apache-2.0
#include "screen/changes.h"

#include "engine/effects.h"

#include <nlohmann/json.hpp>

namespace desk::screen
{

namespace
{

using Json = nlohmann::json;

constexpr int softPowerRegister = 180;

std::string write(Settings &settings, int group, int registerId, int value)
{
    return applyEntry(settings, group, {wire::entryNumber, registerId, value, {}});
}

template <int registerId>
std::string quickAction(Settings &settings)
{
    return write(settings, quickActionGroup, registerId, 0);
}

/** The next value of a setting, the first again after the last. */
std::string next(Settings &settings, Key key)
{
    const SettingRow &row = key.row();
    const int value = settings.number(key) + row.step;
    return write(settings, row.group, row.registerId, value > row.maximum ? row.minimum : value);
}

/** Brighter or darker, as far as it goes. */
std::string addLuminance(Settings &settings, int step)
{
    const int now = settings.number(presetKey(settings.activePreset(), "luminance"));
    return write(settings, colorSpaceGroup, 0, std::clamp(now + step, lowestLuminance, highestLuminance));
}

constexpr ButtonAction actions[] = {
    {1, "Next input", quickAction<152>},
    {2, "Next colour preset", [](Settings &s) { return next(s, "active_color_space"); }},
    {3, "Second picture on, off", quickAction<157>},
    {4, "Second picture: next corner", quickAction<159>},
    {5, "Swap the two pictures", quickAction<158>},
    {6, "Blue only", quickAction<155>},
    {7, "Overscan", quickAction<154>},
    {8, "Video levels", quickAction<153>},
    {9, "4K: next corner", quickAction<156>},
    {10, "4K: next scaling", quickAction<151>},
    {11, "Next aspect", [](Settings &s) { return next(s, "display_aspect_ratio"); }},
    {12, "Cropped region", [](Settings &s) { return next(s, "show_cropped_region"); }},
    {13, "Test pattern on, off", [](Settings &s) { return next(s, "test_pattern_enabled"); }},
    {14, "Next test pattern", [](Settings &s) { return next(s, "test_pattern"); }},
    {15, "Brighter", [](Settings &s) { return addLuminance(s, 10); }},
    {16, "Darker", [](Settings &s) { return addLuminance(s, -10); }},
    {17, "Reset the colour presets", quickAction<150>},
};

/** The value of a member, of the kind that is wanted. */
template <class Value>
Value member(const Json &object, const char *name, const char *kind)
{
    const auto found = object.find(name);
    bool fits = found != object.end();
    if constexpr (std::is_same_v<Value, bool>) {
        fits = fits && found->is_boolean();
    } else if constexpr (std::is_same_v<Value, int>) {
        fits = fits && found->is_number_integer() && *found >= INT16_MIN && *found <= INT16_MAX;
    } else {
        fits = fits && found->is_string();
    }
    if (!fits) {
        throw BadRequest(std::string("\"") + name + "\" must be " + kind);
    }
    return found->get<Value>();
}

int number(const Json &object, const char *name, int least, int most)
{
    const std::string kind = "a whole number from " + std::to_string(least) + " to " + std::to_string(most);
    const int value = member<int>(object, name, kind.c_str());
    if (value < least || value > most) {
        throw BadRequest(std::string("\"") + name + "\" must be " + kind);
    }
    return value;
}

void expectDone(const std::string &wrong)
{
    if (!wrong.empty()) {
        throw Refused(wrong);
    }
}

void set(Contents &contents, const Json &change)
{
    const auto name = member<std::string>(change, "set", "the name of a setting");
    const int value = member<int>(change, "value", "a whole number of 16 bits");
    if (name == "luminance") { // of the active preset
        expectDone(write(contents.settings, colorSpaceGroup, 0, value));
        return;
    }
    const int place = findSetting(name);
    if (place < 0 || settingRows[static_cast<std::size_t>(place)].access != Access::writable) {
        throw BadRequest("there is no setting " + name + " that can be written");
    }
    const SettingRow &row = settingRows[static_cast<std::size_t>(place)];
    expectDone(write(contents.settings, row.group, row.registerId, value));
}

void power(Contents &contents, const Json &change)
{
    const bool on = member<bool>(change, "power", "true or false");
    expectDone(write(contents.settings, generalGroup, softPowerRegister, on ? 0 : 1));
}

void press(Contents &contents, const Json &change)
{
    static constexpr Key settings[functionButtonCount] = {
        "function_button1.setting", "function_button2.setting", "function_button3.setting",
        "function_button4.setting"};
    const int button = number(change, "press", 1, functionButtonCount);
    if (contents.settings.number("soft_power_state") == 0) {
        throw Refused("the monitor is in standby: only its power button does something");
    }
    const int setting = contents.settings.number(settings[button - 1]);
    expectDone(actions[setting - 1].act(contents.settings));
}

void connect(Contents &contents, const Json &change)
{
    const int input = number(change, "connect", 1, inputCount);
    contents.settings.set(inputActive(input - 1), member<bool>(change, "on", "true or false") ? 1 : 0);
}

void fault(Contents &contents, const Json &change)
{
    const auto name = member<std::string>(change, "fault", "the name of a fault");
    const bool on = member<bool>(change, "on", "true or false");
    const std::string argument =
        change.contains("argument") ? member<std::string>(change, "argument", "a text") : std::string();
    expectDone(switchFault(contents.faults, name, on, argument));
}

struct Kind {
    const char *member;
    void (*apply)(Contents &, const Json &);
};
constexpr Kind kinds[] = {
    {"set", set}, {"power", power}, {"press", press}, {"connect", connect}, {"fault", fault},
};

} // namespace

std::span<const ButtonAction> buttonActions()
{
    return actions;
}

void applyChange(Contents &contents, std::string_view json)
{
    const Json change = Json::parse(json, nullptr, false);
    if (!change.is_object()) {
        throw BadRequest("the body must be an object of JSON");
    }
    for (const Kind &kind : kinds) {
        if (change.contains(kind.member)) {
            kind.apply(contents, change);
            return;
        }
    }
    throw BadRequest("a change has one of \"set\", \"power\", \"press\", \"connect\" and \"fault\"");
}

} // namespace desk::screen
