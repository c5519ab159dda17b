// SPDX-License-Identifier: Apache-2.0
#include "model/settings.h"

#include <algorithm>
#include <map>
#include <stdexcept>

namespace displayctl::model
{

namespace
{

// As people write the units that PUnit names.
struct UnitRow {
    std::string_view programmatic;
    std::string_view written;
};
constexpr UnitRow units[] = {
    {"candela / meter^2", "cd/m2"}, {"percent", "%"}, {"second", "s"}, {"hour", "h"}, {"pixel", "px"},
};

// How many instances the classes have whose names stand for one of several.
struct CountRow {
    std::string_view className;
    int count;
};
constexpr CountRow counts[] = {{"ColorSpace", 7}, {"VideoInput", 3}, {"FunctionButton", 4}};

// "Class.Method.Argument", the argument maybe left out, as the classes know it.
MethodArgument findArgument(std::string_view path)
{
    path.remove_prefix(path.starts_with(classPrefix) ? classPrefix.size() : 0);
    const std::size_t first = path.find('.');
    const std::size_t second = path.find('.', first + 1);
    MethodArgument result;
    result.owner = findClass(path.substr(0, first));
    result.method = result.owner != nullptr
                        ? findMethod(*result.owner, path.substr(first + 1, second - first - 1))
                        : nullptr;
    if (result.method != nullptr && second != std::string_view::npos) {
        const auto &all = result.method->arguments;
        const auto found = std::ranges::find(all, path.substr(second + 1), &ArgumentFacts::name);
        result.argument = found == all.end() ? nullptr : &*found;
    }
    if (result.method == nullptr || (second != std::string_view::npos && result.argument == nullptr)) {
        throw std::logic_error("no such method in the classes: " + std::string(path));
    }
    return result;
}

Setting makeSetting(const SettingRow &row, int number)
{
    Setting setting{
        .name = std::string(row.name), .row = &row, .number = number, .owner = findClass(row.className)};
    if (setting.owner == nullptr) {
        throw std::logic_error("no such class: " + std::string(row.className));
    }
    if (number != 0) {
        setting.name.replace(setting.name.find(".N.") + 1, 1, std::to_string(number));
    }
    for (const std::string_view name : row.properties) {
        const PropertyFacts *property = findProperty(*setting.owner, name);
        if (property == nullptr) {
            throw std::logic_error("no such property: " + setting.name + " " + std::string(name));
        }
        setting.properties.push_back(property);
        if (!property->correspondence.empty() && row.arguments.empty() && (row.traits & readOnly) == 0) {
            setting.arguments.push_back(findArgument(property->correspondence));
        }
    }
    if (!row.arguments.empty()) {
        setting.arguments.push_back(findArgument(row.arguments));
    }
    return setting;
}

// All settings: a group's rows for its first instance, then for the next one.
std::vector<Setting> makeSettings()
{
    std::vector<Setting> result;
    const std::span<const SettingRow> rows = settingRows();
    for (auto row = rows.begin(); row != rows.end();) {
        const std::size_t place = row->name.find(".N.");
        if (place == std::string_view::npos) {
            result.push_back(makeSetting(*row++, 0));
            continue;
        }
        const std::string_view group = row->name.substr(0, place + 3);
        const auto end =
            std::find_if(row, rows.end(), [&](const SettingRow &r) { return !r.name.starts_with(group); });
        const int count = std::ranges::find(counts, row->className, &CountRow::className)->count;
        for (int number = 1; number <= count; ++number) {
            for (auto each = row; each != end; ++each) {
                result.push_back(makeSetting(*each, number));
            }
        }
        row = end;
    }
    return result;
}

} // namespace

bool Setting::isWritable() const
{
    return kind() == Kind::address || !arguments.empty();
}

std::string_view Setting::unit() const
{
    if (properties.empty()) {
        return {};
    }
    const auto found = std::ranges::find(units, properties.front()->unit, &UnitRow::programmatic);
    return found == std::end(units) ? properties.front()->unit : found->written;
}

std::optional<double> Setting::minimum(std::size_t part) const
{
    if (row->minimum || part >= properties.size()) {
        return row->minimum;
    }
    const PropertyFacts &property = *properties[part];
    if (property.minimum) {
        return static_cast<double>(*property.minimum);
    }
    // No unsigned number is less; where there is an upper bound, that says something.
    return property.maximum ? std::optional<double>(0) : std::nullopt;
}

std::optional<double> Setting::maximum(std::size_t part) const
{
    if (row->maximum || part >= properties.size()) {
        return row->maximum;
    }
    const std::optional<long> bound = properties[part]->maximum;
    return bound ? std::optional<double>(static_cast<double>(*bound)) : std::nullopt;
}

std::span<const CodeName> Setting::codes() const
{
    if (!arguments.empty() && arguments.front().argument != nullptr && properties.empty()) {
        return arguments.front().argument->codes;
    }
    return properties.empty() ? std::span<const CodeName>() : properties.front()->codes;
}

std::string_view Setting::group() const
{
    return std::string_view(name).substr(0, name.rfind('.'));
}

std::string Setting::siteName() const
{
    std::string result(row->name);
    if (const std::size_t place = result.find(".N."); place != std::string::npos) {
        result.erase(place, 2);
    }
    return result;
}

std::string_view Setting::description() const
{
    if (!row->description.empty()) {
        return row->description;
    }
    if (!properties.empty()) {
        return properties.front()->description;
    }
    return arguments.empty() ? std::string_view() : arguments.front().method->description;
}

std::span<const Setting> allSettings()
{
    static const std::vector<Setting> settings = makeSettings();
    return settings;
}

const Setting *findSetting(std::string_view name)
{
    static const std::map<std::string_view, const Setting *> byName = [] {
        std::map<std::string_view, const Setting *> result;
        for (const Setting &setting : allSettings()) {
            result.emplace(setting.name, &setting);
        }
        return result;
    }();
    const auto found = byName.find(name);
    return found == byName.end() ? nullptr : found->second;
}

const ActionRow *findAction(std::string_view name, std::string_view argument)
{
    const auto found = std::ranges::find_if(allActions(), [&](const ActionRow &action) {
        return action.name == name && action.argument == argument;
    });
    return found == allActions().end() ? nullptr : &*found;
}

} // namespace displayctl::model
