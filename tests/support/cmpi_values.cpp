// SPDX-License-Identifier: Apache-2.0
#include "cmpi_values.h"

#include <cstdio>
#include <strings.h>

namespace test_support
{

Value::Value(const char *characters) : type(CMPI_string), text(characters) {}

Value::Value(const std::string &characters) : type(CMPI_string), text(characters) {}

bool Value::operator==(const Value &other) const
{
    const auto same = [](const auto &a, const auto &b) { return a && b ? *a == *b : !a && !b; };
    return type == other.type && state == other.state && rc == other.rc && integer == other.integer &&
           real == other.real && interval == other.interval && form == other.form && text == other.text &&
           elements == other.elements && same(path, other.path) && same(instance, other.instance);
}

const Entry *findEntry(const Entries &entries, const std::string &name)
{
    for (const Entry &entry : entries) {
        if (strcasecmp(entry.name.c_str(), name.c_str()) == 0) {
            return &entry;
        }
    }
    return nullptr;
}

Entry *findEntry(Entries &entries, const std::string &name)
{
    return const_cast<Entry *>(findEntry(static_cast<const Entries &>(entries), name));
}

Path Path::with(const std::string &key, const Value &value) const
{
    Path changed = *this;
    if (Entry *entry = findEntry(changed.keys, key)) {
        entry->value = value;
    } else {
        changed.keys.push_back({key, value});
    }
    return changed;
}

Path Path::without(const std::string &key) const
{
    Path changed = *this;
    std::erase_if(changed.keys, [&](const Entry &entry) { return entry.name == key; });
    return changed;
}

Path Path::ofClass(const std::string &name) const
{
    Path changed = *this;
    changed.className = name;
    return changed;
}

Path Path::inNameSpace(const std::string &name) const
{
    Path changed = *this;
    changed.nameSpace = name;
    return changed;
}

const Value *Instance::find(const std::string &name) const
{
    if (const Entry *property = findEntry(properties, name)) {
        return &property->value;
    }
    const Entry *key = findEntry(path.keys, name);
    return key ? &key->value : nullptr;
}

Path path(const std::string &className, const Entries &keys)
{
    Path made;
    made.className = className;
    made.keys = keys;
    return made;
}

Instance instance(const Path &path, const Entries &properties)
{
    return {path, properties};
}

namespace
{

Value ofType(CMPIType type)
{
    Value value;
    value.type = type;
    return value;
}

Value integerOf(CMPIType type, uint64_t integer)
{
    Value value = ofType(type);
    value.integer = integer;
    return value;
}

} // namespace

Value chars(const std::string &text)
{
    Value value = ofType(CMPI_chars);
    value.text = text;
    return value;
}

Value string(const std::string &text)
{
    return Value(text);
}

Value boolean(int value)
{
    return integerOf(CMPI_boolean, static_cast<uint8_t>(value));
}

Value uint8(uint8_t value)
{
    return integerOf(CMPI_uint8, value);
}

Value uint16(uint16_t value)
{
    return integerOf(CMPI_uint16, value);
}

Value uint32(uint32_t value)
{
    return integerOf(CMPI_uint32, value);
}

Value uint64(uint64_t value)
{
    return integerOf(CMPI_uint64, value);
}

Value sint32(int32_t value)
{
    return integerOf(CMPI_sint32, static_cast<uint64_t>(static_cast<int64_t>(value)));
}

Value real32(float value)
{
    Value made = ofType(CMPI_real32);
    made.real = static_cast<double>(value);
    return made;
}

Value dateTime(int64_t microseconds)
{
    return integerOf(CMPI_dateTime, static_cast<uint64_t>(microseconds));
}

Value interval(uint64_t microseconds)
{
    Value value = integerOf(CMPI_dateTime, microseconds);
    value.interval = true;
    return value;
}

Value reference(const Path &path)
{
    Value value = ofType(CMPI_ref);
    value.path = std::make_shared<Path>(path);
    return value;
}

Value embedded(const Instance &instance)
{
    Value value = ofType(CMPI_instance);
    value.instance = std::make_shared<Instance>(instance);
    return value;
}

Value uint16Array(const std::vector<uint16_t> &values)
{
    Value array = ofType(CMPI_uint16A);
    for (const uint16_t value : values) {
        array.elements.push_back(uint16(value));
    }
    return array;
}

Value stringArray(const std::vector<std::string> &values)
{
    Value array = ofType(CMPI_stringA);
    for (const std::string &value : values) {
        array.elements.push_back(string(value));
    }
    return array;
}

Value absent()
{
    Value value = notFoundState(CMPI_null);
    value.rc = CMPI_RC_ERR_NOT_FOUND;
    return value;
}

Value nullOf(CMPIType type)
{
    Value value = ofType(type);
    value.state = CMPI_nullValue;
    return value;
}

Value notFoundState(CMPIType type)
{
    Value value = ofType(type);
    value.state = CMPI_notFound;
    return value;
}

Value readFails(CMPIrc rc)
{
    Value value = ofType(CMPI_null);
    value.rc = rc;
    return value;
}

Value leftBehind(const std::string &text, CMPIrc rc, CMPIValueState state)
{
    Value value(text);
    value.rc = rc;
    value.state = state;
    return value;
}

Value stringOf(TextForm form)
{
    Value value = ofType(CMPI_string);
    value.form = form;
    return value;
}

Value nullReference()
{
    return ofType(CMPI_ref);
}

std::vector<NamedValue> everyMissingString()
{
    return {
        {"absent", absent()},
        {"status NO_SUCH_PROPERTY", readFails(CMPI_RC_ERR_NO_SUCH_PROPERTY)},
        {"status FAILED", readFails(CMPI_RC_ERR_FAILED)},
        {"state notFound with status OK", notFoundState(CMPI_string)},
        {"state notFound of no type with status OK", notFoundState(CMPI_null)},
        {"state nullValue", nullOf(CMPI_string)},
        {"state nullValue of no type", nullOf(CMPI_null)},
        {"state nullValue of a number", nullOf(CMPI_uint16)},
        {"null string pointer", stringOf(TextForm::noString)},
        {"string without characters", stringOf(TextForm::noCharacters)},
        {"string without a handle", stringOf(TextForm::noHandle)},
        {"status FAILED beside a string", leftBehind("1", CMPI_RC_ERR_FAILED, CMPI_goodValue)},
        {"state nullValue beside a string", leftBehind("1", CMPI_RC_OK, CMPI_nullValue)},
        {"state notFound beside a string", leftBehind("1", CMPI_RC_OK, CMPI_notFound)},
    };
}

std::string typeName(CMPIType type)
{
    if (type & CMPI_ARRAY) {
        return typeName(static_cast<CMPIType>(type & ~CMPI_ARRAY)) + "[]";
    }
    switch (type) {
    case CMPI_null:
        return "nothing";
    case CMPI_boolean:
        return "boolean";
    case CMPI_char16:
        return "char16";
    case CMPI_real32:
        return "real32";
    case CMPI_real64:
        return "real64";
    case CMPI_uint8:
        return "uint8";
    case CMPI_uint16:
        return "uint16";
    case CMPI_uint32:
        return "uint32";
    case CMPI_uint64:
        return "uint64";
    case CMPI_sint8:
        return "sint8";
    case CMPI_sint16:
        return "sint16";
    case CMPI_sint32:
        return "sint32";
    case CMPI_sint64:
        return "sint64";
    case CMPI_instance:
        return "instance";
    case CMPI_ref:
        return "reference";
    case CMPI_string:
        return "string";
    case CMPI_chars:
        return "chars";
    case CMPI_dateTime:
        return "dateTime";
    default:
        return "type " + std::to_string(type);
    }
}

namespace
{

std::string describeState(const Value &value)
{
    std::string text;
    if (value.rc != CMPI_RC_OK) {
        text += " read with status " + std::to_string(value.rc);
    }
    if (value.state & CMPI_nullValue) {
        text += " null";
    }
    if (value.state & CMPI_notFound) {
        text += " not found";
    }
    if (value.state & CMPI_badValue) {
        text += " bad";
    }
    return text;
}

std::string describeText(const Value &value)
{
    switch (value.form) {
    case TextForm::noString:
        return "(no string)";
    case TextForm::noCharacters:
        return "(no characters)";
    case TextForm::noHandle:
        return "(no handle)";
    case TextForm::characters:
        break;
    }
    return '"' + value.text + '"';
}

std::string describeContent(const Value &value)
{
    if (value.type & CMPI_ARRAY) {
        std::string text = "{";
        for (const Value &element : value.elements) {
            text += (text.size() > 1 ? ", " : "") + describe(element);
        }
        return text + "}";
    }
    char real[40];
    switch (value.type) {
    case CMPI_boolean:
        return value.integer > 1 ? std::to_string(value.integer) : value.integer ? "true" : "false";
    case CMPI_real32:
    case CMPI_real64:
        snprintf(real, sizeof real, "%.9g", value.real);
        return real;
    case CMPI_string:
    case CMPI_chars:
        return describeText(value);
    case CMPI_ref:
        return value.path ? describe(*value.path) : "(null pointer)";
    case CMPI_instance:
        return value.instance ? describe(*value.instance) : "(null pointer)";
    case CMPI_dateTime:
        return value.interval ? "interval " + std::to_string(value.integer)
                              : std::to_string(static_cast<int64_t>(value.integer));
    case CMPI_sint8:
    case CMPI_sint16:
    case CMPI_sint32:
    case CMPI_sint64:
        return std::to_string(static_cast<int64_t>(value.integer));
    default:
        return std::to_string(value.integer);
    }
}

} // namespace

std::string describe(const Value &value)
{
    const std::string state = describeState(value);
    if (!state.empty()) {
        return typeName(value.type) + state;
    }
    return typeName(value.type) + " " + describeContent(value);
}

std::string describe(const Entries &entries)
{
    std::string text;
    for (const Entry &entry : entries) {
        text += entry.name + " = " + describe(entry.value) + "\n";
    }
    return text;
}

std::string describe(const Path &path)
{
    std::string text = path.nameSpace + ":" + path.className;
    for (const Entry &key : path.keys) {
        text += (&key == path.keys.data() ? "." : ",") + key.name + "=" + describe(key.value);
    }
    return text;
}

std::string describe(const Instance &instance)
{
    return describe(instance.path) + "\n" + describe(instance.properties);
}

} // namespace test_support
