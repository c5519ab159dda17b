// SPDX-License-Identifier: Apache-2.0
#include "model/rules.h"

#include "model/values.h"

#include <algorithm>
#include <array>

namespace displayctl::model
{

namespace
{

using Answer = std::optional<bool>;
using Values = std::vector<Value>;

/* ---- presets ---- */

Answer isActivePreset(const View &view, int number, const Value &)
{
    return view.value("monitor.preset") == number;
}

Values toThisPreset(const View &, int number, const Value &)
{
    return {number};
}

/* ---- the second picture ---- */

Answer isPip(const View &view, int, const Value &)
{
    return view.value("pip.mode") == "pip";
}

Values toPip(const View &, int, const Value &)
{
    return {"pip"};
}

Answer isPipOn(const View &view, int, const Value &)
{
    return view.value("pip.mode") != "off";
}

Values toPipOrPbp(const View &, int, const Value &)
{
    return {"pip", "pbp"};
}

// Where the upper left corner of the second picture may be, by its size.
struct PipBounds {
    std::string_view size;
    int right, bottom;
};
constexpr int pipMargin = 160;
constexpr std::array pipBounds = {PipBounds{"default", 1688, 880}, PipBounds{"minimum", 2116, 1120},
                                  PipBounds{"maximum", 480, 200}};

bool fits(const PipBounds &bounds, const Value &position)
{
    return position[0] >= pipMargin && position[0] <= bounds.right && position[1] >= pipMargin &&
           position[1] <= bounds.bottom;
}

Answer fitsPipSize(const View &view, int, const Value &position)
{
    const auto found = std::ranges::find_if(
        pipBounds, [&](const PipBounds &each) { return view.value("pip.size") == each.size; });
    return found == pipBounds.end() ? Answer() : fits(*found, position);
}

Values toFittingSize(const View &, int, const Value &position)
{
    Values sizes;
    for (const PipBounds &each : pipBounds) {
        if (fits(each, position)) {
            sizes.emplace_back(each.size);
        }
    }
    return sizes;
}

/* ---- inputs: no class tells the resolution of an input that is not shown ---- */

constexpr std::array inputNames = {"dp1", "dp2", "hdmi"};

// The inputs with a signal, without the one that is in use.
Values otherActiveInputs(const View &view, const Value &used)
{
    Values inputs;
    for (std::size_t i = 0; i < inputNames.size(); ++i) {
        const bool isActive = view.value("input." + std::to_string(i + 1) + ".active") == true;
        if (isActive && used != inputNames[i]) {
            inputs.emplace_back(inputNames[i]);
        }
    }
    return inputs;
}

Values toOtherInput(const View &view, int, const Value &)
{
    return otherActiveInputs(view, view.value("monitor.input"));
}

Answer isNotPublished(const View &, int, const Value &)
{
    return std::nullopt;
}

Values toOtherPipInput(const View &view, int, const Value &)
{
    Values inputs = otherActiveInputs(view, view.value("pip.input"));
    // The main picture's resolution is the one that is known: where it is DCI's, its input comes first.
    const Value resolution = view.value("monitor.resolution");
    if (resolution == Value::array({4096, 2160}) || resolution == Value::array({4095, 2160}) ||
        resolution == Value::array({2048, 1080})) {
        std::stable_partition(inputs.begin(), inputs.end(),
                              [&](const Value &input) { return input == view.value("monitor.input"); });
    }
    return inputs;
}

/* ---- 4K pictures ---- */

constexpr int pixelForPixel = 4;

Answer isPixelForPixel(const View &view, int, const Value &)
{
    return view.value("picture.aspect") == pixelForPixel;
}

Values toPixelForPixel(const View &, int, const Value &)
{
    return {pixelForPixel};
}

// Width of the picture; 0 where it is not known.
int widthOf(const View &view)
{
    const Value resolution = view.value("monitor.resolution");
    return view.isChanged("monitor.input") || !resolution.is_array() ? 0 : resolution[0].get<int>();
}

Answer is4K(const View &view, int, const Value &)
{
    const int width = widthOf(view);
    if (width == 0) {
        return std::nullopt;
    }
    return view.value("monitor.resolution")[1] == 2160 && (width == 4096 || width == 4095 || width == 3840);
}

// Where the shown part of a 4K picture may begin, by the width of the picture and the DCI region.
struct RegionBounds {
    int width, dciRegion, left, right, top, bottom;
};
constexpr std::array regionBounds = {
    RegionBounds{4096, 0, 0, 1536, 0, 720},   RegionBounds{4095, 0, 0, 1535, 0, 720},
    RegionBounds{4096, 1, 50, 1486, 0, 720},  RegionBounds{4095, 1, 49, 1485, 0, 720},
    RegionBounds{4096, 2, 0, 1536, 222, 498}, RegionBounds{4095, 2, 0, 1535, 222, 498},
    RegionBounds{3840, 0, 0, 1280, 0, 720},   RegionBounds{3840, 1, 0, 1280, 0, 720},
    RegionBounds{3840, 2, 0, 1280, 0, 720},
};

bool fits(const RegionBounds &bounds, const Value &position)
{
    return position[0] >= bounds.left && position[0] <= bounds.right && position[1] >= bounds.top &&
           position[1] <= bounds.bottom;
}

Answer fitsDciRegion(const View &view, int, const Value &position)
{
    const int width = widthOf(view);
    const auto found = std::ranges::find_if(regionBounds, [&](const RegionBounds &each) {
        return each.width == width && view.value("picture.dci-region") == each.dciRegion;
    });
    return found == regionBounds.end() ? Answer() : fits(*found, position);
}

Values toFittingDciRegion(const View &view, int, const Value &position)
{
    Values regions;
    for (const RegionBounds &each : regionBounds) {
        if (each.width == widthOf(view) && fits(each, position)) {
            regions.emplace_back(each.dciRegion);
        }
    }
    return regions;
}

/* ---- the network ---- */

Answer isWebOn(const View &view, int, const Value &)
{
    return view.value("services.web") == true;
}

Values toWebOn(const View &, int, const Value &)
{
    return {true};
}

/* ---- never ---- */

Answer never(const View &, int, const Value &)
{
    return false;
}

Values noWay(const View &, int, const Value &)
{
    return {};
}

constexpr std::string_view pipNeeded = "the second picture must be in picture-in-picture mode";
constexpr std::string_view pipOrPbpNeeded = "the second picture must be on";
constexpr std::string_view pixelForPixelNeeded = "the picture must be shown pixel for pixel (aspect 4)";
constexpr std::string_view input4KNeeded = "the input must carry a 4K picture";
constexpr std::string_view regionNeeded =
    "where the shown part may begin depends on the DCI region and on the input";
constexpr std::string_view activeNeeded = "only the preset in use can be changed";
constexpr std::string_view neverAccepts = "this monitor does not support it";

constexpr Rule rules[] = {
    {"preset.N.luminance", "Luminance value changing allowed to active colorspace only.", activeNeeded,
     "monitor.preset", isActivePreset, toThisPreset},

    {"pip.size", "PIP mode or picture beside picture is off. Unable to set the value for pip size", pipNeeded,
     "pip.mode", isPip, toPip},
    {"pip.input", "PIP mode is off. Unable to set the value for PIPInput source", pipNeeded, "pip.mode",
     isPip, toPip},
    {"pip.position", "PIP mode or picture in picture is off. Unable to set the value for pip positions",
     pipNeeded, "pip.mode", isPip, toPip},
    {"pip.position", "Invalid values, PIP Size is", "where the second picture may be depends on its size",
     "pip.size", fitsPipSize, toFittingSize, false},
    {"pip.overscan", "PIP mode is off. Unable to set the value for OverScan", pipOrPbpNeeded, "pip.mode",
     isPipOn, toPipOrPbp},
    {"pip.dci", "PIP mode is off. Unable to set the value", pipOrPbpNeeded, "pip.mode", isPipOn, toPipOrPbp},
    {"pip.dci", "PIP active resolution does not support DCI. Unable to set the value",
     "the second picture's input must carry a DCI picture (4096 or 2048 wide); no class tells which one does",
     "pip.input", isNotPublished, toOtherPipInput, false},
    {"swap-inputs", "PIP mode is off. Unable to set the value for Swap input source", pipOrPbpNeeded,
     "pip.mode", isPipOn, toPipOrPbp},

    {"picture.region-4k", "4k not supported. (Pixel-for-Pixel should be enabled)", pixelForPixelNeeded,
     "picture.aspect", isPixelForPixel, toPixelForPixel},
    {"picture.region-4k", "4k not supported.(Unsupported Resolution)", input4KNeeded, "monitor.input", is4K,
     toOtherInput, false},
    {"picture.region-4k", "Invalid Position4KRegion", regionNeeded, "picture.dci-region", fitsDciRegion,
     toFittingDciRegion, false},
    {"picture.scaling-4k", "SourceScaling4K cannot be modified.(Unsupported Resolution)", input4KNeeded,
     "monitor.input", is4K, toOtherInput, false},
    {"4k-corner", "4k not supported. (Pixel-for-Pixel should be enabled)", pixelForPixelNeeded,
     "picture.aspect", isPixelForPixel, toPixelForPixel},
    {"4k-corner", "4k not supported.(Unsupported Resolution)", input4KNeeded, "monitor.input", is4K,
     toOtherInput, false},

    {"reset-calibration last", "Operation not allowed.Current store have user-adjusted luminance",
     "only while the user has not adjusted the luminance of the preset; no class tells this beforehand",
     "reset-calibration factory", isNotPublished, noWay, false},
    {"reset-calibration last", "ResetToLastCalibration allowed for active colorspace only.", activeNeeded,
     "monitor.preset", isActivePreset, toThisPreset},
    {"reset-calibration factory", "Operation not allowed.Current store is same as factory store",
     "the preset is as the factory calibrated it; no class tells this beforehand", "", isNotPublished, noWay},

    {"network.mode", "Remote management status is disabled.",
     "the web server for remote management must be on", "services.web", isWebOn, toWebOn},

    {"picture.mode-4k", "", neverAccepts, "", never, noWay},
    {"picture.overlay-4k", "SetShow4KPositionOverlay", neverAccepts, "", never, noWay},
    {"services.network", "RequestStateChange", neverAccepts, "", never, noWay},
};

constexpr SideEffect sideEffects[] = {
    {"pip.size", "pip.position"},
    {"network.address", "network.mode"},
    {"network.mask", "network.mode"},
    {"network.gateway", "network.mode"},
    {"swap-inputs", "monitor.input"},
    {"swap-inputs", "pip.input"},
    {"4k-corner", "picture.region-4k"},
    {"reset-calibration last", "preset.N.luminance"},
    {"reset-calibration factory", "preset.N.luminance"},
};

const Setting *settingOf(std::string_view row, int number)
{
    std::string name(row);
    if (const std::size_t place = name.find(".N."); place != std::string::npos) {
        name.replace(place + 1, 1, std::to_string(number));
    }
    return findSetting(name);
}

bool isBlank(std::string_view text)
{
    return text.find_first_not_of(' ') == std::string_view::npos;
}

} // namespace

Value View::value(std::string_view name) const
{
    return value(*findSetting(name));
}

Value View::value(const Setting &setting) const
{
    const auto found = changed_.find(setting.name);
    return found == changed_.end() ? state_->value(setting) : found->second;
}

void View::change(const Setting &setting, Value value)
{
    if (state_->value(setting) == value) {
        changed_.erase(setting.name); // as it was read, so that what follows from it is known again
    } else {
        changed_.insert_or_assign(setting.name, std::move(value));
    }
}

bool View::isChanged(std::string_view name) const
{
    return changed_.contains(name);
}

std::span<const Rule> allRules()
{
    return rules;
}

std::vector<const Rule *> rulesOf(std::string_view subject)
{
    std::vector<const Rule *> result;
    for (const Rule &rule : rules) {
        if (rule.subject == subject) {
            result.push_back(&rule);
        }
    }
    return result;
}

const Rule *ruleOf(std::string_view subject, std::string_view refusal)
{
    for (const Rule &rule : rules) {
        if (rule.subject == subject &&
            (rule.refusal.empty() ? isBlank(refusal) : refusal.starts_with(rule.refusal))) {
            return &rule;
        }
    }
    return nullptr;
}

std::string wayOut(const Rule &rule, const View &view, int number, const Value &value)
{
    if (findSetting(rule.on) == nullptr) {
        return std::string(rule.on);
    }
    const std::vector<Value> ways = rule.ways(view, number, value);
    if (ways.empty() || rule.on.empty()) {
        return {};
    }
    return std::string(rule.on) + "=" + textOf(*findSetting(rule.on), ways.front(), {});
}

std::span<const SideEffect> allSideEffects()
{
    return sideEffects;
}

std::vector<const Setting *> sideEffectsOf(std::string_view subject, int number)
{
    std::vector<const Setting *> result;
    for (const SideEffect &effect : sideEffects) {
        if (effect.subject == subject) {
            result.push_back(settingOf(effect.changed, number));
        }
    }
    return result;
}

void addRuleClasses(std::string_view subject, std::set<std::string> &classes)
{
    for (const Rule *rule : rulesOf(subject)) {
        if (findSetting(rule->on) == nullptr) {
            continue;
        }
        addClasses(*findSetting(rule->on), classes);
        if (rule->on == "monitor.input" || rule->on == "pip.input") {
            classes.insert({"Monitor", "VideoInput"});
        }
        if (rule->on == "picture.dci-region") {
            classes.insert("Monitor");
        }
        addRuleClasses(rule->on, classes);
    }
    for (const Setting *setting : sideEffectsOf(subject, 1)) {
        addClasses(*setting, classes);
    }
}

} // namespace displayctl::model
