// SPDX-License-Identifier: Apache-2.0
#include "screen/describe.h"

#include "screen/changes.h"
#include "screen/names.h"

#include <nlohmann/json.hpp>

namespace desk::screen
{

namespace
{

using Json = nlohmann::ordered_json;

Json namesOf(std::span<const NamedNumber> names)
{
    Json object = Json::object();
    for (const NamedNumber &each : names) {
        object[std::to_string(each.number)] = each.name;
    }
    return object;
}

std::string hexOf(const MessageBytes &bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
    }
    return text;
}

/** Texts that are no UTF-8 are shown, too. */
std::string textOf(const Json &json)
{
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace

std::string describeModel(const std::string &version)
{
    Json settings = Json::object();
    for (const SettingRow &row : settingRows) {
        Json &entry = settings[std::string(row.name)];
        entry = {
            {"register", row.registerId}, {"group", row.group}, {"writable", row.access == Access::writable}};
        if (row.kind == Kind::number) {
            entry.update({{"minimum", row.minimum}, {"maximum", row.maximum}, {"step", row.step}});
        }
    }
    Json faults = Json::array();
    for (const FaultRow &row : faultRows()) {
        faults.push_back({{"name", row.name},
                          {"argument", row.argument},
                          {"default", row.defaultArgument},
                          {"meaning", row.meaning}});
    }
    Json buttons = Json::object();
    for (const ButtonAction &action : buttonActions()) {
        buttons[std::to_string(action.setting)] = action.name;
    }
    return textOf({{"version", version},
                   {"settings", settings},
                   {"presets", presetCount},
                   {"luminance", {{"minimum", lowestLuminance}, {"maximum", highestLuminance}}},
                   {"inputs", inputCount},
                   {"buttons", functionButtonCount},
                   {"actions", buttons},
                   {"faults", faults},
                   {"registers", namesOf(registerNames())},
                   {"groups", namesOf(groupNames())},
                   {"commands", namesOf(commandNames())},
                   {"sources", namesOf(sourceNames())}});
}

std::string describeState(const Contents &contents, bool engineRuns)
{
    Json settings = Json::object();
    for (const SettingRow &row : settingRows) {
        const Key key = keyOf(row);
        if (row.kind == Kind::number) {
            settings[std::string(row.name)] = contents.settings.number(key);
        } else {
            settings[std::string(row.name)] = contents.settings.text(key);
        }
    }
    Json faults = Json::object();
    for (const auto &[name, argument] : contents.faults) {
        faults[name] = argument;
    }
    return textOf({{"settings", settings}, {"faults", faults}, {"engine", engineRuns}});
}

std::string describeMessages(std::span<const LoggedMessage> messages, std::uint64_t board)
{
    using std::chrono::duration_cast;
    Json list = Json::array();
    for (const LoggedMessage &message : messages) {
        const auto time = duration_cast<std::chrono::milliseconds>(message.time.time_since_epoch());
        const auto duration = duration_cast<std::chrono::microseconds>(message.duration);
        list.push_back({{"number", message.number},
                        {"time", time.count()},
                        {"duration", duration.count()},
                        {"outcome", nameOf(message.outcome)},
                        {"request", hexOf(message.request)},
                        {"answer", hexOf(message.answer)}});
    }
    return textOf({{"board", board}, {"messages", list}});
}

} // namespace desk::screen
