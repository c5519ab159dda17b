// SPDX-License-Identifier: Apache-2.0
#include "model/names.h"

#include "model/values.h"

#include <fnmatch.h>

#include <algorithm>

namespace displayctl::model
{

namespace
{

constexpr std::string_view presetGroup = "preset.";
constexpr std::string_view activeGroup = "preset.active.";
constexpr std::size_t mostSuggestions = 8;

// What the name of a preset's setting says after its number.
std::string_view presetSuffix(const Setting &setting)
{
    return std::string_view(setting.name).substr(setting.name.find('.', presetGroup.size()) + 1);
}

// Every setting, those of the preset in use before those of the numbered presets.
const std::vector<Named> &allNamed()
{
    static const std::vector<Named> named = [] {
        std::vector<Named> result;
        for (const Setting &setting : allSettings()) {
            if (setting.name.starts_with(presetGroup) && setting.number == 1) {
                result.push_back({&setting, true});
            }
        }
        for (const Setting &setting : allSettings()) {
            result.push_back({&setting});
        }
        return result;
    }();
    return named;
}

bool endsWithComponents(std::string_view name, std::string_view last)
{
    return name.ends_with(last) && (name.size() == last.size() || name[name.size() - last.size() - 1] == '.');
}

bool beginsWithComponents(std::string_view name, std::string_view first)
{
    return name.starts_with(first) && (name.size() == first.size() || name[first.size()] == '.');
}

template <typename Fits>
std::vector<Named> select(Fits fits)
{
    std::vector<Named> result;
    std::ranges::copy_if(allNamed(), std::back_inserter(result),
                         [&](const Named &each) { return fits(each.name()); });
    return result;
}

// One setting of every preset is that of the preset in use; all else stays.
std::vector<Named> withoutPresets(const std::vector<Named> &matches)
{
    const bool isAnyActive = std::ranges::any_of(matches, &Named::isActive);
    std::vector<Named> result;
    std::ranges::copy_if(matches, std::back_inserter(result), [&](const Named &each) {
        return each.isActive || !isAnyActive || !each.setting->name.starts_with(presetGroup);
    });
    return result;
}

// How many letters have to be changed, added or left out to make one word of the other.
std::size_t distance(std::string_view one, std::string_view other)
{
    std::vector<std::size_t> row(other.size() + 1);
    for (std::size_t i = 0; i < row.size(); ++i) {
        row[i] = i;
    }
    for (std::size_t i = 1; i <= one.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j < row.size(); ++j) {
            const std::size_t changed = diagonal + (one[i - 1] == other[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
        }
    }
    return row.back();
}

std::string listed(const std::vector<Named> &all)
{
    std::string result;
    for (const Named &each : all) {
        result += (result.empty() ? "" : ", ") + each.name();
    }
    return result;
}

// The settings whose names are most like this one.
std::vector<Named> suggestions(std::string_view name)
{
    const std::string_view last = name.substr(name.rfind('.') + 1);
    std::vector<Named> near = withoutPresets(select([&](std::string_view full) {
        const std::string_view own = full.substr(full.rfind('.') + 1);
        return distance(own, last) <= std::max<std::size_t>(1, last.size() / 3) ||
               full.find(name) != full.npos || beginsWithComponents(full, name);
    }));
    near.resize(std::min(near.size(), mostSuggestions));
    return near;
}

[[noreturn]] void refuseUnknown(std::string_view name)
{
    const std::vector<Named> near = name.empty() ? std::vector<Named>() : suggestions(name);
    throw BadValue(
        "there is no setting '" + std::string(name) + "'" +
        (near.empty() ? "; displayctl help settings lists them" : "; do you mean " + listed(near) + "?"));
}

} // namespace

const Setting &Named::at(int activePreset) const
{
    if (!isActive) {
        return *setting;
    }
    return *findSetting(std::string(presetGroup) + std::to_string(activePreset) + "." +
                        std::string(presetSuffix(*setting)));
}

std::string Named::name() const
{
    return isActive ? std::string(activeGroup) + std::string(presetSuffix(*setting)) : setting->name;
}

Named resolveName(std::string_view name)
{
    for (const Named &each : allNamed()) {
        if (each.name() == name) {
            return each;
        }
    }
    const std::vector<Named> matches =
        name.empty()
            ? std::vector<Named>()
            : withoutPresets(select([&](std::string_view full) { return endsWithComponents(full, name); }));
    if (matches.empty()) {
        refuseUnknown(name);
    }
    if (matches.size() > 1) {
        throw BadValue("'" + std::string(name) + "' may be " + listed(matches) + ": say which");
    }
    return matches.front();
}

std::vector<Named> matchPattern(std::string_view pattern)
{
    const std::string text(pattern);
    if (pattern.find_first_of("*?") != std::string_view::npos) {
        auto matches =
            select([&](const std::string &full) { return fnmatch(text.c_str(), full.c_str(), 0) == 0; });
        std::erase_if(matches,
                      [&](const Named &each) { return each.isActive && !pattern.starts_with(activeGroup); });
        if (matches.empty()) {
            refuseUnknown(pattern);
        }
        return matches;
    }
    std::vector<Named> matches =
        select([&](std::string_view full) { return beginsWithComponents(full, pattern); });
    if (pattern == "preset") {
        std::erase_if(matches, &Named::isActive);
    }
    if (matches.empty()) {
        matches =
            withoutPresets(select([&](std::string_view full) { return endsWithComponents(full, pattern); }));
    }
    if (matches.empty()) {
        refuseUnknown(pattern);
    }
    return matches;
}

std::vector<std::string> allNames()
{
    std::vector<std::string> result;
    for (const Named &each : allNamed()) {
        std::string name = each.name();
        for (;;) {
            try {
                if (resolveName(name) == each) {
                    result.push_back(name);
                }
            } catch (const BadValue &) { // ambiguous: no name
            }
            const std::size_t dot = name.find('.');
            if (dot == std::string::npos) {
                break;
            }
            name.erase(0, dot + 1);
        }
    }
    return result;
}

} // namespace displayctl::model
