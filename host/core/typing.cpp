// SPDX-License-Identifier: Apache-2.0
#include "core/typing.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace host
{
namespace
{

std::string_view trim(std::string_view text)
{
    constexpr std::string_view BLANK = " \t\r\n";
    const std::size_t first = text.find_first_not_of(BLANK);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(BLANK) - first + 1);
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

/** The name for messages: %.*s wants an int, and a name may be long. */
int shown(std::string_view text)
{
    return static_cast<int>(std::min<std::size_t>(text.size(), 200));
}

} // namespace

void Typing::fail(CMPIrc code, const char *format, ...)
{
    char text[640];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    code_ = code;
    error_ = arena_.copyText(text);
}

bool Typing::scalar(const ItemText &item, cim::Type type, std::string_view name,
                    std::string_view defaultNameSpace, CMPIData &data)
{
    data = nullData(cim::cmpiType(type, false), CMPI_goodValue);
    if (item.isNull) {
        data.state = CMPI_nullValue;
        return true;
    }
    bool good = true;
    double real = 0;
    switch (type) {
    case cim::Type::Boolean:
        good = readBoolean(item.text, data.value.boolean);
        break;
    case cim::Type::Char16:
        good = readChar16(item.text, data.value.char16);
        break;
    case cim::Type::Uint8:
        good = readInteger(item.text, data.value.uint8);
        break;
    case cim::Type::Uint16:
        good = readInteger(item.text, data.value.uint16);
        break;
    case cim::Type::Uint32:
        good = readInteger(item.text, data.value.uint32);
        break;
    case cim::Type::Uint64:
        good = readInteger(item.text, data.value.uint64);
        break;
    case cim::Type::Sint8:
        good = readInteger(item.text, data.value.sint8);
        break;
    case cim::Type::Sint16:
        good = readInteger(item.text, data.value.sint16);
        break;
    case cim::Type::Sint32:
        good = readInteger(item.text, data.value.sint32);
        break;
    case cim::Type::Sint64:
        good = readInteger(item.text, data.value.sint64);
        break;
    case cim::Type::Real32:
        good = readReal(item.text, real);
        data.value.real32 = static_cast<CMPIReal32>(real);
        break;
    case cim::Type::Real64:
        good = readReal(item.text, real);
        data.value.real64 = real;
        break;
    case cim::Type::DateTime: {
        DateTime *dateTime = makeDateTime(arena_, trim(item.text));
        good = dateTime != nullptr;
        data.value.dateTime = good ? &dateTime->cmpi : nullptr;
        break;
    }
    case cim::Type::Reference: {
        Path *reference = path(*item.reference, defaultNameSpace);
        if (reference == nullptr) {
            return false;
        }
        data.value.ref = &reference->cmpi;
        break;
    }
    default:
        data.type = CMPI_string;
        data.value.string = &makeString(arena_, item.text)->cmpi;
        break;
    }
    if (!good) {
        fail(CMPI_RC_ERR_INVALID_PARAMETER, "The value \"%.*s\" of %.*s is not a %s.", shown(item.text),
             item.text.data(), shown(name), name.data(), cim::typeName(type));
    }
    return good;
}

bool Typing::value(const ValueText &text, cim::Type type, bool isArray, std::string_view defaultNameSpace,
                   CMPIData &data)
{
    if (text.isNull) {
        data = nullData(cim::cmpiType(type == cim::Type::None ? cim::Type::String : type, isArray));
        return true;
    }
    // The form of the value is the client's. A reference cannot be read as anything else, nor can a text be
    // read as a reference.
    const auto typeOf = [type](const ItemText &item) {
        if (item.reference != nullptr) {
            return cim::Type::Reference;
        }
        return type == cim::Type::None || type == cim::Type::Reference ? cim::Type::String : type;
    };
    if (!text.isArray) {
        return scalar(text.item, typeOf(text.item), text.name, defaultNameSpace, data);
    }
    const std::size_t count = text.items->size();
    cim::Type elementType = type == cim::Type::None ? cim::Type::String : type;
    for (const ItemText &item : *text.items) {
        if (!item.isNull) {
            elementType = typeOf(item);
            break;
        }
    }
    Array *array = makeArray(arena_, cim::cmpiType(elementType, false), static_cast<CMPICount>(count));
    for (std::size_t i = 0; i < count; ++i) {
        const ItemText &item = (*text.items)[i];
        if (!item.isNull && (item.reference != nullptr) != (elementType == cim::Type::Reference)) {
            fail(CMPI_RC_ERR_INVALID_PARAMETER, "The array %.*s mixes references and values.",
                 shown(text.name), text.name.data());
            return false;
        }
        if (!scalar(item, elementType, text.name, defaultNameSpace, array->elements[i])) {
            return false;
        }
    }
    data = nullData(cim::cmpiType(elementType, true), CMPI_goodValue);
    data.value.array = &array->cmpi;
    return true;
}

Path *Typing::path(const PathText &text, std::string_view defaultNameSpace)
{
    const std::string_view nameSpace = text.nameSpace.empty() ? defaultNameSpace : text.nameSpace;
    Path *path = makePath(arena_, nameSpaces_, nameSpace, text.className);
    if (!text.host.empty()) {
        path->host = makeString(arena_, text.host);
    }
    if (text.keys == nullptr) {
        return path;
    }
    const cim::Class *definition = path->klass != nullptr ? path->klass : nullptr;
    for (const ValueText &key : *text.keys) {
        std::string_view name = key.name;
        if (name.empty()) {
            if (definition == nullptr || definition->keys.size() != 1 || text.keys->size() != 1) {
                fail(CMPI_RC_ERR_INVALID_PARAMETER, "A key of %.*s has no name.", shown(text.className),
                     text.className.data());
                return nullptr;
            }
            name = definition->properties[definition->keys.front()].name;
        }
        if (findValue(*path->keys, name) != nullptr) {
            fail(CMPI_RC_ERR_INVALID_PARAMETER, "The key %.*s is given twice.", shown(name), name.data());
            return nullptr;
        }
        cim::Type type = key.type;
        if (definition != nullptr) {
            const std::size_t index = path->klass->placeOf(name);
            if (index != cim::NO_PROPERTY) {
                type = path->klass->properties[index].type;
            }
        }
        ValueText named = key;
        named.name = name;
        CMPIData data = {};
        if (!value(named, type, false, nameSpace, data)) {
            return nullptr;
        }
        setKey(*path, name, data);
    }
    return path;
}

Instance *Typing::instance(const Path &path, const ArenaList<ValueText> &properties)
{
    Instance *instance = makeInstance(arena_, path);
    const cim::Class &klass = *instance->klass;
    const std::string_view nameSpace =
        path.nameSpace != nullptr ? path.nameSpace->view() : std::string_view();
    for (const ValueText &text : properties) {
        const std::size_t index = klass.placeOf(text.name);
        if (index == cim::NO_PROPERTY) {
            fail(CMPI_RC_ERR_NO_SUCH_PROPERTY, "The class %s has no property %.*s.", klass.name.c_str(),
                 shown(text.name), text.name.data());
            return nullptr;
        }
        const cim::Property &property = klass.properties[index];
        CMPIData data = {};
        if (!value(text, property.type, property.isArray, nameSpace, data)) {
            return nullptr;
        }
        if (data.type != property.cmpiCode()) {
            fail(CMPI_RC_ERR_TYPE_MISMATCH, "The property %s of %s has the type %s%s.", property.name.c_str(),
                 klass.name.c_str(), typeName(property.type), property.isArray ? "[]" : "");
            return nullptr;
        }
        setProperty(*instance, index, data);
    }
    return instance;
}

Args *Typing::arguments(const cim::Class *klass, std::string_view method, const ArenaList<ValueText> &values,
                        std::string_view defaultNameSpace)
{
    const cim::Method *definition = klass != nullptr ? klass->findMethod(method) : nullptr;
    Args *args = makeArgs(arena_);
    for (const ValueText &text : values) {
        const cim::Parameter *parameter =
            definition != nullptr ? definition->findParameter(text.name) : nullptr;
        const cim::Type type = parameter != nullptr ? parameter->type : text.type;
        const bool isArray = parameter != nullptr ? parameter->isArray : text.isArray;
        CMPIData data = {};
        if (arena_.exhausted()) {
            fail(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED, "The arguments need too much memory.");
            return nullptr;
        }
        if (!value(text, type, isArray, defaultNameSpace, data)) {
            return nullptr;
        }
        if (const NamedValue *present = findValue(*args->values, text.name); present != nullptr) {
            // Some clients send the elements of an array one by one under the same name.
            const Array *before = arrayOf(present->data);
            const Array *more = arrayOf(data);
            if (before == nullptr || more == nullptr || present->data.type != data.type) {
                fail(CMPI_RC_ERR_INVALID_PARAMETER, "The argument %.*s is given twice.", shown(text.name),
                     text.name.data());
                return nullptr;
            }
            Array *joined = makeArray(arena_, before->elementType, before->size + more->size);
            for (CMPICount i = 0; i < before->size; ++i) {
                joined->elements[i] = before->elements[i];
            }
            for (CMPICount i = 0; i < more->size; ++i) {
                joined->elements[before->size + i] = more->elements[i];
            }
            data.value.array = &joined->cmpi;
        }
        setValue(*args->values, text.name, data);
    }
    return args;
}

} // namespace host
