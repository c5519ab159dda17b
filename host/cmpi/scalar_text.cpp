// SPDX-License-Identifier: Apache-2.0
#include "cmpi/scalar_text.h"

#include <charconv>
#include <limits>

namespace host
{
namespace
{

std::string_view trim(std::string_view text)
{
    constexpr std::string_view blank = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blank);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(blank) - first + 1);
}

/** An integer as CIM-XML writes it: decimal, or hexadecimal after 0x. */
template <typename T>
bool readInteger(std::string_view text, T &value)
{
    text = trim(text);
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    int base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        text.remove_prefix(2);
    }
    std::uint64_t magnitude = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
    if (problem != std::errc() || end != text.data() + text.size() || text.empty()) {
        return false;
    }
    const auto maximum = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
    if (!negative) {
        value = static_cast<T>(magnitude);
        return magnitude <= maximum;
    }
    if constexpr (std::numeric_limits<T>::is_signed) {
        value = static_cast<T>(0 - magnitude);
        return magnitude <= maximum + 1;
    } else {
        value = 0;
        return magnitude == 0;
    }
}

/** A real number as CIM-XML writes it; NaN and the infinities included. */
bool readReal(std::string_view text, double &value)
{
    text = trim(text);
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return false;
        }
    }
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
    return problem == std::errc() && end == text.data() + text.size() && !text.empty();
}

bool readBoolean(std::string_view text, CMPIBoolean &value)
{
    text = trim(text);
    if (cim::sameName(text, "true")) {
        value = 1;
        return true;
    }
    value = 0;
    return cim::sameName(text, "false");
}

/** One character of UTF-8 that fits 16 bits; a number is not one. */
bool readChar16(std::string_view text, CMPIChar16 &value)
{
    const auto byte = [&](std::size_t i) {
        return static_cast<unsigned>(static_cast<unsigned char>(text[i]));
    };
    if (text.size() == 1 && byte(0) < 0x80) {
        value = static_cast<CMPIChar16>(byte(0));
        return true;
    }
    if (text.size() == 2 && (byte(0) & 0xe0u) == 0xc0 && (byte(1) & 0xc0u) == 0x80) {
        value = static_cast<CMPIChar16>((byte(0) & 0x1fu) << 6 | (byte(1) & 0x3fu));
        return true;
    }
    if (text.size() == 3 && (byte(0) & 0xf0u) == 0xe0 && (byte(1) & 0xc0u) == 0x80 &&
        (byte(2) & 0xc0u) == 0x80) {
        value = static_cast<CMPIChar16>((byte(0) & 0x0fu) << 12 | (byte(1) & 0x3fu) << 6 | (byte(2) & 0x3fu));
        return true;
    }
    return false;
}

} // namespace

bool readScalar(Arena &arena, std::string_view text, cim::Type type, CMPIData &data)
{
    data = nullData(cim::cmpiType(type, false), CMPI_goodValue);
    double real = 0;
    switch (type) {
    case cim::Type::boolean:
        return readBoolean(text, data.value.boolean);
    case cim::Type::char16:
        return readChar16(text, data.value.char16);
    case cim::Type::uint8:
        return readInteger(text, data.value.uint8);
    case cim::Type::uint16:
        return readInteger(text, data.value.uint16);
    case cim::Type::uint32:
        return readInteger(text, data.value.uint32);
    case cim::Type::uint64:
        return readInteger(text, data.value.uint64);
    case cim::Type::sint8:
        return readInteger(text, data.value.sint8);
    case cim::Type::sint16:
        return readInteger(text, data.value.sint16);
    case cim::Type::sint32:
        return readInteger(text, data.value.sint32);
    case cim::Type::sint64:
        return readInteger(text, data.value.sint64);
    case cim::Type::real32:
    case cim::Type::real64:
        if (!readReal(text, real)) {
            return false;
        }
        if (type == cim::Type::real32) {
            data.value.real32 = static_cast<CMPIReal32>(real);
        } else {
            data.value.real64 = real;
        }
        return true;
    case cim::Type::dateTime: {
        DateTime *dateTime = makeDateTime(arena, trim(text));
        data.value.dateTime = dateTime != nullptr ? &dateTime->cmpi : nullptr;
        return dateTime != nullptr;
    }
    default:
        data = stringData(makeString(arena, text));
        return true;
    }
}

void applyDefaults(Instance &instance)
{
    Arena &arena = *instance.arena;
    for (const std::size_t place : instance.klass->defaults) {
        const cim::Property &property = instance.klass->properties[place];
        CMPIData &data = instance.values[place];
        if (!isNull(data)) {
            continue; // a key that came with the path
        }
        const std::vector<std::string> &items = property.defaultValue.items;
        CMPIData read = {};
        bool good = true;
        if (property.isArray) {
            Array *array =
                makeArray(arena, cim::cmpiType(property.type, false), static_cast<CMPICount>(items.size()));
            for (std::size_t i = 0; i < items.size(); ++i) {
                good = good && readScalar(arena, items[i], property.type, array->elements[i]);
            }
            read = nullData(property.cmpiCode(), CMPI_goodValue);
            read.value.array = &array->cmpi;
        } else {
            good = readScalar(arena, items.front(), property.type, read);
        }
        if (good) { // the reader of the class definition has seen to it
            setProperty(instance, place, read);
        }
    }
}

} // namespace host
