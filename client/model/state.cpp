// SPDX-License-Identifier: Apache-2.0
#include "model/state.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

namespace displayctl::model
{

namespace
{

// The number behind the last colon of an InstanceID, 0 where there is none.
int numberOf(const wbem::Instance &object)
{
    std::string id(object.path.text("InstanceID"));
    if (id.empty()) {
        id = object.value("InstanceID").text().value_or("");
    }
    const std::size_t colon = id.rfind(':');
    int number = 0;
    if (colon != std::string::npos) {
        std::from_chars(id.data() + colon + 1, id.data() + id.size(), number);
    }
    return number;
}

Value decimalOf(const wbem::Value &value)
{
    const std::string text = value.text().value_or("");
    double number = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || rest != text.data() + text.size()) {
        return text.empty() ? Value() : Value(text);
    }
    return number;
}

Value numberValue(const wbem::Value &value)
{
    const auto number = value.number();
    return number ? Value(*number) : Value();
}

Value textValue(const wbem::Value &value)
{
    const auto text = value.text();
    return text ? Value(*text) : Value();
}

// Whether a code with two values is the one that means on.
Value onOffOf(const Setting &setting, const wbem::Value &value)
{
    if (setting.properties.front()->type == "boolean") {
        const auto truth = value.boolean();
        return truth ? Value(*truth) : Value();
    }
    const auto code = value.number();
    const auto found =
        std::ranges::find_if(setting.codes(), [&](const CodeName &each) { return code == each.code; });
    if (!code || found == setting.codes().end()) {
        return numberValue(value);
    }
    return found->name == "On" || found->name == "Enabled";
}

Value choiceOf(const Setting &setting, const wbem::Value &value)
{
    const auto code = value.number();
    const auto &words = setting.row->words;
    if (!code || *code < 0 || static_cast<std::size_t>(*code) >= words.size()) {
        return numberValue(value);
    }
    return words[static_cast<std::size_t>(*code)];
}

Value partsOf(const Setting &setting, const wbem::Instance &object, Value (*read)(const wbem::Value &))
{
    Value parts = Value::array();
    for (const PropertyFacts *property : setting.properties) {
        parts.push_back(read(object.value(property->name)));
        if (parts.back().is_null()) {
            return nullptr;
        }
    }
    return parts;
}

// The class of the setting data that the association calls current.
// compat: with a static address the monitor calls the accumulated setting data current, never the static
// ones.
Value networkModeOf(const std::vector<wbem::Instance> &associations)
{
    for (const wbem::Instance &association : associations) {
        const wbem::ObjectPath *data = association.value("SettingData").reference();
        if (data == nullptr || association.value("IsCurrent").number() != 1) {
            continue;
        }
        if (data->className.find("DHCP") != std::string::npos) {
            return "dhcp";
        }
        return "static";
    }
    return nullptr;
}

} // namespace

void State::put(std::string_view className, std::vector<wbem::Instance> objects)
{
    objects_.insert_or_assign(std::string(className), std::move(objects));
}

bool State::has(std::string_view className) const
{
    return objects_.contains(className);
}

const std::vector<wbem::Instance> &State::objects(std::string_view className) const
{
    static const std::vector<wbem::Instance> none;
    const auto found = objects_.find(className);
    return found == objects_.end() ? none : found->second;
}

const wbem::Instance *State::find(std::string_view className, int number) const
{
    const std::vector<wbem::Instance> &all = objects(className);
    const auto found = std::ranges::find_if(
        all, [number](const wbem::Instance &object) { return number == 0 || numberOf(object) == number; });
    return found == all.end() ? nullptr : &*found;
}

int State::activePreset() const
{
    for (const wbem::Instance &preset : objects("ColorSpace")) {
        if (preset.value("Active").boolean() == true) {
            return numberOf(preset);
        }
    }
    return 0;
}

std::vector<std::string> State::presetNames() const
{
    std::vector<std::string> names;
    for (int number = 1; const wbem::Instance *preset = find("ColorSpace", number); ++number) {
        names.push_back(preset->value("ColorSpaceName").text().value_or(""));
    }
    return names;
}

Value State::value(const Setting &setting) const
{
    if (setting.kind() == Kind::preset) {
        return activePreset() == 0 ? Value() : Value(activePreset());
    }
    if (setting.kind() == Kind::networkMode) {
        return networkModeOf(objects("ElementSettingData"));
    }
    const wbem::Instance *object = find(setting.row->className, setting.number);
    if (object == nullptr || setting.properties.empty()) {
        return nullptr;
    }
    const wbem::Value &value = object->value(setting.properties.front()->name);
    switch (setting.kind()) {
    case Kind::date: {
        const auto date = wbem::dateOf(value.text().value_or(""));
        return date ? Value(*date) : Value();
    }
    case Kind::number:
    case Kind::code:
        return numberValue(value);
    case Kind::decimal:
        return decimalOf(value);
    case Kind::onOff:
        return onOffOf(setting, value);
    case Kind::choice:
        return choiceOf(setting, value);
    case Kind::position:
    case Kind::size:
    case Kind::colour:
        return partsOf(setting, *object, numberValue);
    case Kind::chromaticity:
        return partsOf(setting, *object, decimalOf);
    default:
        return textValue(value);
    }
}

void addClasses(const Setting &setting, std::set<std::string> &classes)
{
    classes.insert(std::string(setting.row->className));
}

} // namespace displayctl::model
