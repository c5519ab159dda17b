// SPDX-License-Identifier: Apache-2.0
#include "model/values.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <chrono>
#include <cmath>
#include <iterator>

namespace displayctl::model
{

namespace
{

constexpr std::string_view decimals = "0123456789";

std::string lowered(std::string_view text)
{
    std::string result(text);
    std::ranges::transform(result, result.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return result;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

std::string decimalText(double number)
{
    std::array<char, 32> buffer;
    const auto [end, error] = std::to_chars(buffer.begin(), buffer.end(), number);
    return error == std::errc() ? std::string(buffer.begin(), end) : std::string();
}

[[noreturn]] void refuse(const Setting &setting, std::string_view text, const site::CodeNames &names)
{
    throw BadValue(setting.name + " cannot be '" + std::string(text) + "'; it takes " +
                   allowedValues(setting, names));
}

// The text without the setting's unit behind it.
std::string_view withoutUnit(const Setting &setting, std::string_view text)
{
    const std::string_view unit = setting.unit();
    if (!unit.empty() && text.size() > unit.size() && text.ends_with(unit)) {
        text = trimmed(text.substr(0, text.size() - unit.size()));
    }
    return text;
}

template <typename Number>
bool parseWhole(std::string_view text, Number &number)
{
    if (text.empty() || (decimals.find(text.front()) == std::string_view::npos && text.front() != '-')) {
        return false;
    }
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && rest == text.data() + text.size();
}

bool isWithin(const Setting &setting, double number, std::size_t part)
{
    const auto low = setting.minimum(part);
    const auto high = setting.maximum(part);
    return (!low || number >= *low) && (!high || number <= *high);
}

bool isCode(const Setting &setting, long number)
{
    const auto codes = setting.codes();
    return codes.empty() ||
           std::ranges::any_of(codes, [&](const CodeName &each) { return each.code == number; });
}

// Codes have names where the site gives them some.
const std::map<std::int64_t, std::string> *siteNames(const Setting &setting, const site::CodeNames &names)
{
    const auto found = names.find(setting.siteName());
    return setting.kind() != Kind::code || found == names.end() ? nullptr : &found->second;
}

Value parseNumber(const Setting &setting, std::string_view text, const site::CodeNames &names)
{
    if (const auto *known = siteNames(setting, names)) {
        for (const auto &[code, name] : *known) {
            if (lowered(name) == lowered(text)) {
                return code;
            }
        }
    }
    long number = 0;
    if (!parseWhole(withoutUnit(setting, text), number) ||
        !isWithin(setting, static_cast<double>(number), 0) || !isCode(setting, number)) {
        refuse(setting, text, names);
    }
    return number;
}

Value parseDecimal(const Setting &setting, std::string_view text, const site::CodeNames &names)
{
    double number = 0;
    if (!parseWhole(withoutUnit(setting, text), number) || !isWithin(setting, number, 0) ||
        (setting.row->step && std::fmod(number, *setting.row->step) != 0)) {
        refuse(setting, text, names);
    }
    return number;
}

Value parseParts(const Setting &setting, std::string_view text, const site::CodeNames &names)
{
    Value parts = Value::array();
    std::string_view rest = text;
    for (std::size_t part = 0; part < setting.properties.size(); ++part) {
        const bool isLast = part + 1 == setting.properties.size();
        const std::size_t comma = isLast ? rest.size() : rest.find(',');
        long number = 0;
        if (comma == std::string_view::npos || !parseWhole(trimmed(rest.substr(0, comma)), number) ||
            !isWithin(setting, static_cast<double>(number), part)) {
            refuse(setting, text, names);
        }
        parts.push_back(number);
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
    return parts;
}

Value parseOnOff(const Setting &setting, std::string_view text, const site::CodeNames &names)
{
    const std::string word = lowered(text);
    if (word == "on" || word == "true") {
        return true;
    }
    if (word != "off" && word != "false") {
        refuse(setting, text, names);
    }
    return false;
}

Value parseChoice(const Setting &setting, std::string_view text, const site::CodeNames &names)
{
    const std::string word = lowered(text);
    for (const CodeName &code : setting.codes()) {
        const std::string_view own = setting.row->words[static_cast<std::size_t>(code.code)];
        if (word == own || word == lowered(code.name)) {
            return own;
        }
    }
    refuse(setting, text, names);
}

Value parseDate(const Setting &setting, std::string_view text, const site::CodeNames &names)
{
    int year = 0;
    unsigned month = 0;
    unsigned day = 0;
    const bool shaped = text.size() == 10 && text[4] == '-' && text[7] == '-' &&
                        parseWhole(text.substr(0, 4), year) && parseWhole(text.substr(5, 2), month) &&
                        parseWhole(text.substr(8), day);
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month),
                                           std::chrono::day(day)};
    if (!shaped || !date.ok()) {
        refuse(setting, text, names);
    }
    return text;
}

Value parseAddress(const Setting &setting, std::string_view text, const site::CodeNames &names)
{
    std::string_view rest = text;
    std::uint32_t bits = 0;
    for (int octet = 0; octet < 4; ++octet) {
        const std::size_t dot = octet == 3 ? rest.size() : rest.find('.');
        unsigned number = 0;
        if (dot == std::string_view::npos || dot > 3 || (dot > 1 && rest.front() == '0') ||
            !parseWhole(rest.substr(0, dot), number) || number > 255) {
            refuse(setting, text, names);
        }
        bits = bits << 8 | number;
        rest.remove_prefix(std::min(dot + 1, rest.size()));
    }
    if (setting.has(mask) && std::countl_one(bits) != std::popcount(bits)) {
        refuse(setting, text, names);
    }
    return text;
}

bool isUtf8(std::string_view text)
{
    try {
        static_cast<void>(Value(text).dump());
        return true;
    } catch (const Value::type_error &) {
        return false;
    }
}

Value parsePreset(const Setting &setting, std::string_view text, const site::CodeNames &names)
{
    long number = 0;
    if (parseWhole(text, number)) {
        if (number < 1 || number > 7) {
            refuse(setting, text, names);
        }
        return number;
    }
    if (text.empty()) {
        refuse(setting, text, names);
    }
    return text;
}

} // namespace

Value parseValue(const Setting &setting, std::string_view text, const site::CodeNames &names)
{
    if (!setting.isWritable()) {
        throw BadValue(setting.name + " cannot be changed");
    }
    if (!isUtf8(text)) {
        throw BadValue(setting.name + " cannot be this text, which is no UTF-8");
    }
    if (setting.kind() == Kind::text) {
        if (text.empty()) {
            throw BadValue(setting.name + " cannot be empty: the monitor takes no empty text");
        }
        return text;
    }
    text = trimmed(text);
    switch (setting.kind()) {
    case Kind::number:
    case Kind::code:
        return parseNumber(setting, text, names);
    case Kind::decimal:
        return parseDecimal(setting, text, names);
    case Kind::onOff:
        return parseOnOff(setting, text, names);
    case Kind::choice:
        return parseChoice(setting, text, names);
    case Kind::position:
    case Kind::colour:
        return parseParts(setting, text, names);
    case Kind::date:
        return parseDate(setting, text, names);
    case Kind::address:
        return parseAddress(setting, text, names);
    case Kind::preset:
        return parsePreset(setting, text, names);
    case Kind::networkMode:
        if (lowered(text) != "dhcp" && lowered(text) != "static") {
            refuse(setting, text, names);
        }
        return lowered(text);
    default:
        return text;
    }
}

Value presetNumber(const Value &value, const std::vector<std::string> &presetNames)
{
    if (!value.is_string()) {
        return value;
    }
    std::string all;
    for (std::size_t i = 0; i < presetNames.size(); ++i) {
        if (lowered(presetNames[i]) == lowered(value.get<std::string>())) {
            return i + 1;
        }
        all += (i == 0 ? "" : ", ") + presetNames[i];
    }
    throw BadValue("monitor.preset cannot be '" + value.get<std::string>() + "'; it takes 1 to 7 or " + all);
}

Value documentOf(const Setting &setting, const Value &value, const site::CodeNames &names)
{
    if (const auto *known = siteNames(setting, names); known != nullptr && value.is_number_integer()) {
        const auto found = known->find(value.get<std::int64_t>());
        return found == known->end() ? value : Value(found->second);
    }
    return value;
}

std::string textOf(const Setting &setting, const Value &value, const site::CodeNames &names)
{
    const Value shown = documentOf(setting, value, names);
    if (shown.is_null()) {
        return {};
    }
    if (shown.is_boolean()) {
        return shown.get<bool>() ? "on" : "off";
    }
    if (shown.is_string()) {
        return shown.get<std::string>();
    }
    if (shown.is_array()) {
        std::string result;
        for (const Value &part : shown) {
            result += result.empty() ? "" : setting.kind() == Kind::size ? "x" : ",";
            result += part.is_string() ? part.get<std::string>() : part.dump();
        }
        return result;
    }
    return shown.is_number_float() ? decimalText(shown.get<double>()) : shown.dump();
}

std::vector<std::string> valueWords(const Setting &setting, const site::CodeNames &names)
{
    std::vector<std::string> result;
    switch (setting.kind()) {
    case Kind::onOff:
        return {"on", "off"};
    case Kind::networkMode:
        return {"dhcp", "static"};
    case Kind::choice:
        return {setting.row->words.begin(), setting.row->words.end()};
    case Kind::preset:
        return {"1", "2", "3", "4", "5", "6", "7"};
    case Kind::number:
    case Kind::code:
        for (const CodeName &code : setting.codes()) {
            result.push_back(textOf(setting, code.code, names));
        }
        return result;
    default:
        return result;
    }
}

namespace
{

std::string rangeText(const Setting &setting, std::size_t part = 0)
{
    const auto low = setting.minimum(part);
    const auto high = setting.maximum(part);
    return low && high ? decimalText(*low) + " to " + decimalText(*high) : std::string();
}

// The codes: as a range where none is left out and none has a name, else one by one.
std::string codesText(const Setting &setting, const site::CodeNames &names)
{
    const auto codes = setting.codes();
    const auto *known = siteNames(setting, names);
    if (codes.size() > 2 && known == nullptr &&
        codes.back().code - codes.front().code == static_cast<int>(codes.size()) - 1) {
        return std::to_string(codes.front().code) + " to " + std::to_string(codes.back().code);
    }
    std::string result;
    for (const CodeName &code : codes) {
        const std::string name = textOf(setting, code.code, names);
        result += result.empty() ? "" : " ";
        result += name;
    }
    return result;
}

} // namespace

std::string allowedValues(const Setting &setting, const site::CodeNames &names)
{
    if (!setting.isWritable()) {
        return {};
    }
    switch (setting.kind()) {
    case Kind::text:
        return "text";
    case Kind::date:
        return "YYYY-MM-DD";
    case Kind::onOff:
        return "on off";
    case Kind::preset:
        return "1 to 7, or a preset's name";
    case Kind::networkMode:
        return "dhcp static";
    case Kind::address:
        return setting.has(mask) ? "an IPv4 mask, as 255.255.255.0" : "an IPv4 address";
    case Kind::anything:
        return "nothing: the monitor refuses every value";
    case Kind::position:
        return "x,y of " + rangeText(setting, 0) + ", " + rangeText(setting, 1);
    case Kind::colour:
        return "r,g,b of " + rangeText(setting) + " each";
    case Kind::decimal:
        return rangeText(setting) + " in steps of " + decimalText(setting.row->step.value_or(1));
    case Kind::choice: {
        std::string result;
        for (const std::string_view word : setting.row->words) {
            result += (result.empty() ? "" : " ") + std::string(word);
        }
        return result;
    }
    default:
        return setting.codes().empty() ? rangeText(setting) : codesText(setting, names);
    }
}

std::vector<std::string> sentTexts(const Setting &setting, const Value &value)
{
    if (value.is_array()) {
        std::vector<std::string> texts;
        std::ranges::transform(value, std::back_inserter(texts),
                               [](const Value &part) { return part.dump(); });
        return texts;
    }
    switch (setting.kind()) {
    case Kind::onOff: {
        if (setting.codes().empty()) {
            return {value.get<bool>() ? "true" : "false"};
        }
        const bool on = value.get<bool>();
        for (const CodeName &code : setting.codes()) {
            if ((code.name == "On" || code.name == "Enabled") == on) {
                return {std::to_string(code.code)};
            }
        }
        return {};
    }
    case Kind::choice: {
        const auto &words = setting.row->words;
        const auto found = std::ranges::find(words, value.get<std::string>());
        return {std::to_string(found - words.begin())};
    }
    case Kind::date: {
        const auto text = value.get<std::string>();
        return {text.substr(8, 2) + "/" + text.substr(5, 2) + "/" + text.substr(0, 4)};
    }
    case Kind::code:
        if (const auto code = value.get<std::size_t>(); code < setting.row->sent.size()) {
            return {std::to_string(setting.row->sent[code])};
        }
        return {value.dump()};
    case Kind::number:
        return {value.dump()};
    case Kind::decimal:
        return {decimalText(value.get<double>())};
    default:
        return {value.get<std::string>()};
    }
}

bool sameValue(const Value &one, const Value &other)
{
    return one == other;
}

} // namespace displayctl::model
