// SPDX-License-Identifier: Apache-2.0
#include "wbem/value.h"

#include <algorithm>
#include <charconv>

namespace displayctl::wbem
{

namespace
{

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool lessName(std::string_view left, std::string_view right)
{
    return std::ranges::lexicographical_compare(left, right, {}, lower, lower);
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

bool sameName(std::string_view left, std::string_view right)
{
    return std::ranges::equal(left, right, {}, lower, lower);
}

bool Key::operator==(const Key &other) const
{
    return sameName(name, other.name) && value == other.value && reference == other.reference;
}

const Key *ObjectPath::find(std::string_view name) const
{
    const auto found = std::ranges::find_if(keys, [&](const Key &key) { return sameName(key.name, name); });
    return found == keys.end() ? nullptr : &*found;
}

std::string_view ObjectPath::text(std::string_view name) const
{
    const Key *key = find(name);
    return key == nullptr ? std::string_view{} : std::string_view{key->value};
}

bool ObjectPath::operator==(const ObjectPath &other) const
{
    const bool sameSpace =
        nameSpace.empty() || other.nameSpace.empty() || sameName(nameSpace, other.nameSpace);
    return sameSpace && sameName(className, other.className) && keys.size() == other.keys.size() &&
           std::ranges::all_of(keys, [&](const Key &key) {
               const Key *same = other.find(key.name);
               return same != nullptr && *same == key;
           });
}

std::string ObjectPath::toText() const
{
    std::vector<const Key *> sorted;
    for (const Key &key : keys) {
        sorted.push_back(&key);
    }
    std::ranges::sort(sorted, lessName, [](const Key *key) -> std::string_view { return key->name; });

    std::string text = className;
    char separator = '.';
    for (const Key *key : sorted) {
        text += separator;
        text += key->name + "=\"";
        for (const char c : key->reference.empty() ? key->value : key->reference.front().toText()) {
            if (c == '"' || c == '\\') {
                text += '\\';
            }
            text += c;
        }
        text += '"';
        separator = ',';
    }
    return text;
}

Value Value::array(std::vector<std::string> texts)
{
    Value value;
    value.texts_ = std::move(texts);
    value.isNull_ = false;
    value.isArray_ = true;
    return value;
}

std::optional<std::string> Value::text() const
{
    return texts_.empty() ? std::nullopt : std::optional{texts_.front()};
}

std::optional<std::int64_t> Value::number() const
{
    if (texts_.empty()) {
        return std::nullopt;
    }
    const std::string &digits = texts_.front();
    const char *begin = digits.data();
    const char *end = begin + digits.size();
    if (begin != end && *begin == '+') {
        ++begin;
    }
    std::int64_t result = 0;
    const auto [rest, problem] = std::from_chars(begin, end, result);
    return problem == std::errc{} && rest == end ? std::optional{result} : std::nullopt;
}

std::optional<bool> Value::boolean() const
{
    if (texts_.empty()) {
        return std::nullopt;
    }
    if (sameName(texts_.front(), "true") || texts_.front() == "1") {
        return true;
    }
    if (sameName(texts_.front(), "false") || texts_.front() == "0") {
        return false;
    }
    return std::nullopt;
}

const Property *Instance::find(std::string_view name) const
{
    const auto found = std::ranges::find_if(
        properties, [&](const Property &property) { return sameName(property.name, name); });
    return found == properties.end() ? nullptr : &*found;
}

const Value &Instance::value(std::string_view name) const
{
    static const Value null;
    const Property *property = find(name);
    return property == nullptr ? null : property->value;
}

std::optional<std::string> dateOf(std::string_view dateTime)
{
    // yyyymmddhhmmss.mmmmmm and an offset. An interval has a colon in the place of its sign, and what is not
    // known is written as asterisks.
    constexpr std::size_t signPosition = 21;
    if (dateTime.size() <= signPosition || dateTime[14] != '.' ||
        (dateTime[signPosition] != '+' && dateTime[signPosition] != '-') ||
        !std::ranges::all_of(dateTime.substr(0, 8), isDigit)) {
        return std::nullopt;
    }
    const std::string text{dateTime};
    return text.substr(0, 4) + '-' + text.substr(4, 2) + '-' + text.substr(6, 2);
}

} // namespace displayctl::wbem
