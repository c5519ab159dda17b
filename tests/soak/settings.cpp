// SPDX-License-Identifier: Apache-2.0
#include "settings.h"

#include <charconv>
#include <cstring>
#include <string_view>

namespace soak
{

namespace
{

constexpr std::string_view locationStart = "stage ";

const std::vector<Setting> rows = {
    {"TestPatternGenerator",
     "",
     "SetRGBValue",
     {"RValue", "GValue", "BValue"},
     {"RValue", "GValue", "BValue"},
     0,
     255},
    {.className = "Monitor",
     .number = "",
     .method = "SetDeploymentLocation",
     .arguments = {"DeploymentLocation"},
     .properties = {"DeploymentLocation"},
     .first = 0,
     .last = 9'999'999,
     .isAdministrators = true},
    {"OSDMenuAndMessages",
     "",
     "SetOSDPosition",
     {"OSDPositionX", "OSDPositionY"},
     {"OSDPositionX", "OSDPositionY"},
     0,
     1440},
    {"FunctionButton", "1", "SetSetting", {"Setting"}, {"Setting"}, 1, 17},
    {"FunctionButton", "2", "SetSetting", {"Setting"}, {"Setting"}, 1, 17},
    {"FunctionButton", "3", "SetSetting", {"Setting"}, {"Setting"}, 1, 17},
    {"BezelButton", "", "SetButtonBrightness", {"ButtonBrightness"}, {"ButtonBrightness"}, 0, 20, 2},
    {"BezelButton", "", "SetButtonColor", {"ButtonColor"}, {"ButtonColor"}, 0, 2},
    {"ImageAdjustment",
     "",
     "SetCroppedRegionOpacity",
     {"CroppedRegionOpacity"},
     {"CroppedRegionOpacity"},
     25,
     100},
    {"ImageAdjustment", "", "SetDisplayAspectRatio", {"DisplayAspectRatio"}, {"DisplayAspectRatio"}, 0, 4},
    {"ImageAdjustment", "", "SetShowBlueChannel", {"ShowBlueChannel"}, {"ShowBlueChannel"}, 0, 1},
    {"ImageAdjustment", "", "SetUseVideoLevels", {"UseVideoLevels"}, {"UseVideoLevels"}, 0, 1},
    {"TestPatternGenerator", "", "SetTestPattern", {"TestPattern"}, {"TestPattern"}, 0, 8},
    {"OSDMenuAndMessages",
     "",
     "SetShowInfoWhenColorSpaceChanges",
     {"ShowInfoWhenColorSpaceChanges"},
     {"ShowInfoWhenColorSpaceChanges"},
     0,
     1},
    {"DisplayManagement", "", "SetPowerSaverEnabled", {"PowerSaverEnabled"}, {"PowerSaverEnabled"}, 0, 1},
    {"DisplayManagement",
     "",
     "SetPowerOnRecallEnabled",
     {"PowerOnRecallEnabled"},
     {"PowerOnRecallEnabled"},
     0,
     1},
    {.className = "OSDMenuAndMessages",
     .number = "",
     .method = "SetMenuAndMessageTimeOut",
     .arguments = {"MenuAndMessageTimeOut"},
     .properties = {"MenuAndMessageTimeOut"},
     .first = 5,
     .last = 30,
     .name = "osd.timeout"},
    {.className = "ColorSpace",
     .number = "1",
     .method = "SetDisplayLuminance",
     .arguments = {"Luminance"},
     .properties = {"DisplayLuminance"},
     .first = 48,
     .last = 250,
     .name = "preset.1.luminance"},
    {.className = "FunctionButton",
     .number = "4",
     .method = "SetSetting",
     .arguments = {"Setting"},
     .properties = {"Setting"},
     .first = 1,
     .last = 17,
     .name = "function.4.action"},
};

constexpr ClassRow classRows[] = {
    {"Monitor", 1},
    {"DisplayManagement", 1},
    {"VideoInput", 3},
    {"ImageAdjustment", 1},
    {"PictureInPicture", 1},
    {"OSDMenuAndMessages", 1},
    {"ColorSpace", 7},
    {"BezelButton", 1},
    {"FunctionButton", 4},
    {"TestPatternGenerator", 1},
    {"IPNetworkConnection", 1},
    {"WSManagementService", 1},
    {"ColorModel", 7, true},
    {"Button", 5, true},
    {"InputSource", 3, true},
    {"TestPattern", 1, true},
};

bool isText(const Setting &setting)
{
    return std::strcmp(setting.className, "Monitor") == 0;
}

} // namespace

int anyOf(Random &random, int first, int last)
{
    return std::uniform_int_distribution<int>(first, last)(random);
}

std::span<const Setting> settings()
{
    return rows;
}

Value anotherValue(const Setting &setting, const Value &now, Random &random)
{
    Value value;
    do {
        value.clear();
        for (std::size_t i = 0; i < setting.arguments.size(); ++i) {
            const int steps = (setting.last - setting.first) / setting.step;
            value.push_back(setting.first + setting.step * anyOf(random, 0, steps));
        }
    } while (value == now);
    return value;
}

Value refusedValue(const Setting &setting)
{
    return Value(setting.arguments.size(), 9999);
}

std::string argumentText(const Setting &setting, int number)
{
    return (isText(setting) ? std::string(locationStart) : "") + std::to_string(number);
}

Value shownValue(const Setting &setting, const std::vector<std::string> &texts)
{
    Value value;
    for (std::string_view text : texts) {
        if (text == "TRUE" || text == "true") {
            text = "1";
        } else if (text == "FALSE" || text == "false") {
            text = "0";
        } else if (isText(setting)) {
            text = text.starts_with(locationStart) ? text.substr(locationStart.size()) : "0";
        }
        int number = 0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
        if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
            return {};
        }
        value.push_back(number);
    }
    return value.size() == setting.properties.size() ? value : Value();
}

std::string describe(const Setting &setting, const Value &value)
{
    std::string text = std::string(setting.className) + setting.number + "." + setting.method + "(";
    for (const int number : value) {
        text += (text.back() == '(' ? "" : ",") + std::to_string(number);
    }
    return text + ")";
}

std::span<const ClassRow> classes()
{
    return classRows;
}

} // namespace soak
